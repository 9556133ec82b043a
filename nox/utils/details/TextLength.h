// The length of a NUL-terminated text, typed as the library types lengths. A null text
// is empty: the forms that take NUL-terminated texts forward it to their (text, length)
// form, which decides what a null text means.
#pragma once

#include <cstring>

namespace nox::utils::details {

inline unsigned int textLength(const char* text) {
  return text != nullptr ? static_cast<unsigned int>(std::strlen(text)) : 0;
}

}  // namespace nox::utils::details
