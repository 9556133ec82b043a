#include <nox/utils/StringPool.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/Assertion.h>

namespace nox::utils {

namespace {
// What the StringTable keeps: a key longer than this is rare enough to allocate afresh.
constexpr unsigned int defaultLengthThreshold = 128;
}  // namespace

StringPool::StringPool() : StringPool(0, defaultLengthThreshold) {}

StringPool::StringPool(unsigned int initialCount, unsigned int lengthThreshold) : lengthThreshold_(lengthThreshold) {
  for (unsigned int i = 0; i < initialCount; ++i) strings_.push_back(NOX_NEW String());
}

StringPool::~StringPool() {
  for (String* string : strings_) NOX_DELETE(string);
}

String* StringPool::obtain() {
  if (strings_.empty()) return NOX_NEW String();
  String* string = strings_.front();
  strings_.pop_front();
  return string;
}

void StringPool::recycle(String* string) {
  if (string == nullptr) {
    NOX_FAIL("null pointer not allowed for parameter 'string'");
    return;
  }
  if (string->size() <= lengthThreshold_) {
    strings_.push_back(string);
  } else {
    NOX_DELETE(string);
  }
}

}  // namespace nox::utils
