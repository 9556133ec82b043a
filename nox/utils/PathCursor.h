// Walks the "/"-separated segments of a resource path one at a time, the way every
// resource handler reads its path: take a segment, compare it with a fixed word or read
// it as a number, and refuse paths that go on past what they name.
//
//   PathCursor cursor(path, length);
//   if (!cursor.next()) return listEverything();
//   if (!cursor.is("agents")) return unknown;
//   unsigned int id = 0;
//   if (!cursor.nextUnsigned(id) || !cursor.done()) return unknown;
//
// Segments are found as Uri::retrieveFirstPathSegment finds them: runs of "/" separate
// them, and empty segments do not exist. The cursor never copies the path, which must
// outlive it.
#pragma once

#include <nox/utils/Export.h>

#include <string_view>

namespace nox::utils {

class NOX_UTILS_API PathCursor {
 public:
  PathCursor(const char* path, unsigned int length) : path_(path), length_(length) {}

  // Moves to the next segment. False, with an empty segment, when there is none.
  bool next();
  // The current segment (empty before the first next() and at the end).
  std::string_view segment() const { return segment_; }
  // Whether the current segment is exactly `word`.
  bool is(std::string_view word) const { return !segment_.empty() && segment_ == word; }
  // Moves to the next segment and reads it whole as an unsigned decimal number.
  bool nextUnsigned(unsigned int& value);
  // Whether no segment follows the current one.
  bool done() const;

  // The path after the current segment, for a handler one level down.
  const char* rest() const { return path_ + consumed_; }
  unsigned int restLength() const { return length_ - consumed_; }

 private:
  const char* path_;
  unsigned int length_;
  unsigned int consumed_ = 0;
  std::string_view segment_;
};

}  // namespace nox::utils
