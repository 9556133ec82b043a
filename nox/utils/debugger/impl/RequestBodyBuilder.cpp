#include <nox/utils/debugger/impl/RequestBodyBuilder.h>

#include <nox/utils/AbstractLogger.h>

#include <cstring>

namespace nox::utils::debugger::impl {

bool RequestBodyBuilder::refuse(const char* reason) {
  NOX_LOG_ERROR(getLogger(), error::invalidData, reason);
  return false;
}

bool RequestBodyBuilder::open() {
  if (depth_ == getMaximumDepth()) {
    NOX_LOG_ERROR(getLogger(), error::invalidData,
                  "The request body nests objects and arrays deeper than " << getMaximumDepth() << " levels.");
    return false;
  }
  ++depth_;
  return true;
}

bool RequestBodyBuilder::close() {
  if (depth_ > 0) --depth_;
  return true;
}

bool RequestBodyBuilder::holdsNoNul(const char* text, unsigned int length) {
  return length == 0 || std::memchr(text, '\0', length) == nullptr || refuse("The request body holds a NUL character in a text.");
}

bool RequestBodyBuilder::string(const char* text, unsigned int length) {
  return inObject() && holdsNoNul(text, length) && target_.string(text, length);
}

bool RequestBodyBuilder::objectChild(const char* key, unsigned int length) {
  return holdsNoNul(key, length) && target_.objectChild(key, length);
}

}  // namespace nox::utils::debugger::impl
