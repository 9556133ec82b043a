#include <nox/utils/debugger/impl/Replies.h>

#include <nox/utils/String.h>
#include <nox/utils/Uri.h>

#include <cstring>

namespace nox::utils::debugger::impl {

bool writeUri(AbstractObjectBuilder& builder, const Uri& uri) {
  const unsigned int length = uri.computeStringLength();
  // computeString also writes the terminating zero, which the string already has room for.
  String text(length, '\0');
  uri.computeString(text.data());
  return builder.string(text.data(), length);
}

bool parseUnsigned(const char* text, unsigned int length, unsigned int& value) {
  if (length == 0) return false;
  std::uint64_t result = 0;
  for (unsigned int i = 0; i < length; ++i) {
    if (text[i] < '0' || text[i] > '9') return false;
    result = result * 10 + static_cast<unsigned int>(text[i] - '0');
    if (result > 0xFFFFFFFFu) return false;
  }
  value = static_cast<unsigned int>(result);
  return true;
}

bool isSegment(const char* path, unsigned int begin, unsigned int end, const char* word) {
  const std::size_t length = end - begin;
  return std::strlen(word) == length && std::strncmp(path + begin, word, length) == 0;
}

bool hasSegmentAfter(const char* path, unsigned int length, unsigned int end) {
  unsigned int nextBegin = 0;
  unsigned int nextEnd = 0;
  return Uri::retrieveFirstPathSegment(path + end, length - end, nextBegin, nextEnd);
}

}  // namespace nox::utils::debugger::impl
