// A 128-bit identifier laid out as the classic GUID record, with a fixed 36-character
// text form ("xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", lower-case hexadecimal). Error
// categories, run-time types and debugger request kinds are keyed by it.
#pragma once

#include <nox/utils/Export.h>

#include <cstdint>
#include <iosfwd>

namespace nox::utils {

class AbstractLogger;

class NOX_UTILS_API Uuid {
 public:
  Uuid() { clear(); }

  // Builds a value from a text that must be well formed: a malformed text is an
  // assertion failure rather than a silent nil. Used for constant identifiers.
  static Uuid create(const char* text);

  void clear();
  // Whether any byte is non-zero (the all-zero value is the nil identifier).
  bool isValid() const;

  bool operator==(const Uuid& other) const;
  bool operator!=(const Uuid& other) const { return !(*this == other); }
  // Byte-wise order of the stored record. Because the first three fields are stored
  // little-endian, this is deliberately not the order of the text forms.
  bool operator<(const Uuid& other) const;

  static unsigned int getStringLength() { return 36; }
  // Writes the 36 characters and a NUL: `buffer` must hold 37 characters.
  void computeString(char* buffer) const;

  // Parses `text`; only its length (36) is checked. Hexadecimal digits may be of
  // either case and the dash positions are not examined. On failure the value is
  // left unchanged.
  bool set(const char* text, AbstractLogger* logger);

  std::uint32_t data1;
  std::uint16_t data2;
  std::uint16_t data3;
  std::uint8_t data4[8];
};

static_assert(sizeof(Uuid) == 16, "a Uuid is exactly its 16 bytes");

NOX_UTILS_API std::ostream& operator<<(std::ostream& out, const Uuid& uuid);

// The library's own identifier.
NOX_UTILS_API extern const Uuid uniqueId;

}  // namespace nox::utils
