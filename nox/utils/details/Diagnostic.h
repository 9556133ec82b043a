// Building blocks of the assertion and logging macros: the reporting unit's name and
// a message assembled by stream insertion. Both are only built on the failure path.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/String.h>

namespace nox::utils::details {

// The reporting unit of a source file: "/any/where/nox/utils/Uuid.cpp" gives
// "nox/utils/Uuid". Paths outside the nox tree keep their file name without extension.
class NOX_UTILS_API SourceUnit {
 public:
  explicit SourceUnit(const char* path);
  const char* c_str() const { return text_; }

 private:
  char text_[160];
};

// A message assembled with <<, numbers in decimal.
class Message {
 public:
  template <class T>
  Message& operator<<(const T& value) {
    stream_ << value;
    return *this;
  }
  const char* c_str() {
    text_ = stream_.str();
    return text_.c_str();
  }

 private:
  OStringStream stream_;
  String text_;
};

}  // namespace nox::utils::details

#define NOX_SOURCE_UNIT ::nox::utils::details::SourceUnit(__FILE__).c_str()
