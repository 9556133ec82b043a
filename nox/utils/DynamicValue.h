// A single self-describing scalar: null, 64-bit integer, double, byte string or boolean.
// It is how values enter and leave a DynamicObject and what builders hand over.
// Values copy deeply: two values never share a string.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/String.h>
#include <nox/utils/Type.h>

#include <cstdint>
#include <iosfwd>

namespace nox::utils {

class NOX_UTILS_API DynamicValue {
 public:
  DynamicValue() = default;
  DynamicValue(int value);
  DynamicValue(std::int64_t value);
  DynamicValue(double value);
  DynamicValue(bool value);
  // A null text is an assertion failure; the value then holds the empty string.
  DynamicValue(const char* text);
  // Copies exactly `length` bytes, zero bytes included.
  DynamicValue(const char* text, unsigned int length);
  DynamicValue(const DynamicValue& other);
  DynamicValue& operator=(const DynamicValue& other);
  ~DynamicValue();

  type::Type getType() const { return static_cast<type::Type>(static_cast<std::uint32_t>(type_)); }
  // A null value is compatible with every type (an absent value may be read as
  // anything); integers and reals are compatible with each other.
  bool isTypeCompatible(type::Type requested) const;

  // Each accessor asserts on a type it cannot convert and answers a neutral result.
  // Integers and reals convert into each other; nothing else converts.
  std::int64_t getInt() const;
  double getReal() const;
  bool getBool() const;
  // The owned text, NUL-terminated; valid until the value changes.
  const char* getString() const;
  unsigned int getStringLength() const;

  void setInt(std::int64_t value);
  void setReal(double value);
  void setBool(bool value);
  void setString(const char* text);
  void setString(const char* text, unsigned int length);
  // Becomes null; the payload bits are left as they were.
  void reset();

  // Values of different types are never equal (1 != 1.0); null equals only null.
  bool operator==(const DynamicValue& other) const;
  bool operator!=(const DynamicValue& other) const { return !(*this == other); }

 private:
  void freeAllocatedMemory();
  void setScalarType(type::Type type);

  union Payload {
    std::int64_t integer;
    double real;
    bool boolean;
    String* string;
  };

  Payload payload_{0};
  // Only the low 32 bits are ever set; the whole word is compared.
  std::uint64_t type_ = 0;
};

// Integers and reals as numbers, strings up to their first zero byte, booleans through
// the stream's bool insertion, anything else as "null".
NOX_UTILS_API std::ostream& operator<<(std::ostream& out, const DynamicValue& value);

namespace details {
// Truncates toward zero; values beyond the 64-bit range saturate and NaN gives 0, where
// a plain conversion would be undefined.
inline std::int64_t truncateToInt64(double value) {
  if (!(value == value)) return 0;
  if (value >= 9223372036854775808.0) return INT64_MAX;
  if (value < -9223372036854775808.0) return INT64_MIN;
  return static_cast<std::int64_t>(value);
}
}  // namespace details

}  // namespace nox::utils
