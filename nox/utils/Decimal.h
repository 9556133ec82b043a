// Reading a whole text as an unsigned decimal number: the one parser behind array
// indices, ids in resource paths and counts typed by people. Digits only (no sign, no
// blank, at least one digit), and the value must fit the target type; anything else is
// refused and leaves the target as it was.
#pragma once

#include <charconv>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace nox::utils {

template <class Unsigned>
bool parseDecimal(std::string_view text, Unsigned& value) {
  static_assert(std::is_unsigned_v<Unsigned>, "decimal texts name unsigned values");
  // from_chars would take a leading "-" for a signed type only, but say it for all.
  if (text.empty() || text.front() < '0' || text.front() > '9') return false;
  Unsigned parsed = 0;
  const char* end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, parsed);
  if (result.ec != std::errc() || result.ptr != end) return false;
  value = parsed;
  return true;
}

}  // namespace nox::utils
