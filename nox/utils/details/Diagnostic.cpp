#include <nox/utils/details/Diagnostic.h>

#include <cstring>

namespace nox::utils::details {

SourceUnit::SourceUnit(const char* path) {
  const char* begin = path;
  // The last "/nox/" directory starts the unit; a path inside the tree may also start
  // with "nox/" when compiled with relative paths.
  for (const char* found = std::strstr(path, "/nox/"); found != nullptr; found = std::strstr(found + 1, "/nox/")) {
    begin = found + 1;
  }
  if (begin == path) {
    const char* slash = std::strrchr(path, '/');
    if (std::strncmp(path, "nox/", 4) != 0 && slash != nullptr) begin = slash + 1;
  }
  const char* end = begin + std::strlen(begin);
  const char* dot = std::strrchr(begin, '.');
  if (dot != nullptr && std::strchr(dot, '/') == nullptr) end = dot;

  std::size_t length = static_cast<std::size_t>(end - begin);
  if (length >= sizeof(text_)) length = sizeof(text_) - 1;
  std::memcpy(text_, begin, length);
  text_[length] = '\0';
}

}  // namespace nox::utils::details
