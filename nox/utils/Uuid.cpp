#include <nox/utils/Uuid.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/AssertingLogger.h>

#include <cstring>
#include <ostream>

namespace nox::utils {
namespace {

int hexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Reads the hexadecimal prefix of a fixed-width group; a group without one reads as 0.
// Only the text's length is validated, so this leniency is part of the format.
std::uint32_t parseHexGroup(const char* text, unsigned int width) {
  std::uint32_t value = 0;
  for (unsigned int i = 0; i < width; ++i) {
    int digit = hexDigitValue(text[i]);
    if (digit < 0) break;
    value = (value << 4) | static_cast<std::uint32_t>(digit);
  }
  return value;
}

char* writeHex(char* out, std::uint32_t value, unsigned int digits) {
  static const char kDigits[] = "0123456789abcdef";
  for (unsigned int i = digits; i > 0; --i) {
    out[i - 1] = kDigits[value & 0xF];
    value >>= 4;
  }
  return out + digits;
}

}  // namespace

const Uuid uniqueId = Uuid::create("0ba23f91-d30e-4574-b0ed-ee0aa81d00b9");

Uuid Uuid::create(const char* text) {
  Uuid uuid;
  AssertingLogger logger;
  uuid.set(text, &logger);
  return uuid;
}

void Uuid::clear() { std::memset(static_cast<void*>(this), 0, sizeof(Uuid)); }

bool Uuid::isValid() const {
  static const Uuid nil;
  return std::memcmp(this, &nil, sizeof(Uuid)) != 0;
}

bool Uuid::operator==(const Uuid& other) const { return std::memcmp(this, &other, sizeof(Uuid)) == 0; }

bool Uuid::operator<(const Uuid& other) const { return std::memcmp(this, &other, sizeof(Uuid)) < 0; }

void Uuid::computeString(char* buffer) const {
  char* out = writeHex(buffer, data1, 8);
  *out++ = '-';
  out = writeHex(out, data2, 4);
  *out++ = '-';
  out = writeHex(out, data3, 4);
  *out++ = '-';
  out = writeHex(out, data4[0], 2);
  out = writeHex(out, data4[1], 2);
  *out++ = '-';
  for (unsigned int i = 2; i < 8; ++i) out = writeHex(out, data4[i], 2);
  *out = '\0';
}

bool Uuid::set(const char* text, AbstractLogger* logger) {
  if (text == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given string parameter is NULL");
    return false;
  }
  if (std::strlen(text) != getStringLength()) {
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "The given string '" << text
                                       << "' doesn't have the right format of 36 characters "
                                          "(\"12345678-9ABC-DEF1-2345-6789ABCDEF12\").");
    return false;
  }
  data1 = parseHexGroup(text, 8);
  data2 = static_cast<std::uint16_t>(parseHexGroup(text + 9, 4));
  data3 = static_cast<std::uint16_t>(parseHexGroup(text + 14, 4));
  data4[0] = static_cast<std::uint8_t>(parseHexGroup(text + 19, 2));
  data4[1] = static_cast<std::uint8_t>(parseHexGroup(text + 21, 2));
  for (unsigned int i = 2; i < 8; ++i) {
    data4[i] = static_cast<std::uint8_t>(parseHexGroup(text + 24 + 2 * (i - 2), 2));
  }
  return true;
}

std::ostream& operator<<(std::ostream& out, const Uuid& uuid) {
  char text[37];
  uuid.computeString(text);
  return out.write(text, 36);
}

}  // namespace nox::utils
