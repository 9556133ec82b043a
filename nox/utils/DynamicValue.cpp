#include <nox/utils/DynamicValue.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/Assertion.h>

#include <cstring>
#include <ostream>

namespace nox::utils {

namespace {

const char* const nullInitializerMessage = "null pointer not allowed as string value initializer for DynamicValue";

}  // namespace

DynamicValue::DynamicValue(int value) { setInt(value); }

DynamicValue::DynamicValue(std::int64_t value) { setInt(value); }

DynamicValue::DynamicValue(double value) { setReal(value); }

DynamicValue::DynamicValue(bool value) { setBool(value); }

DynamicValue::DynamicValue(const char* text) {
  // The value is a string even when the initializer was refused.
  setString(text != nullptr ? text : "");
  NOX_ASSERT(text != nullptr, nullInitializerMessage);
}

DynamicValue::DynamicValue(const char* text, unsigned int length) {
  if (text == nullptr) {
    setString("", 0);
    NOX_FAIL(nullInitializerMessage);
  } else {
    setString(text, length);
  }
}

DynamicValue::DynamicValue(const DynamicValue& other) { *this = other; }

DynamicValue::~DynamicValue() { freeAllocatedMemory(); }

DynamicValue& DynamicValue::operator=(const DynamicValue& other) {
  if (this == &other) return *this;
  switch (other.getType()) {
    case type::integer:
      setInt(other.getInt());
      break;
    case type::real:
      setReal(other.getReal());
      break;
    case type::string:
      // Deliberately the NUL-terminated form: an assigned string ends at its first zero.
      setString(other.getString());
      break;
    case type::boolean:
      setBool(other.getBool());
      break;
    default:
      reset();
      break;
  }
  return *this;
}

bool DynamicValue::isTypeCompatible(type::Type requested) const {
  // A value holds scalars only: any other code is compatible with nothing.
  return type_ <= type::boolean && areTypesCompatible(static_cast<type::Type>(type_), requested);
}

std::int64_t DynamicValue::getInt() const {
  if (type_ == type::integer) return payload_.integer;
  if (type_ == type::real) return details::truncateToInt64(payload_.real);
  NOX_FAIL("Unable the retrieve this value of type " << type_ << " as an int");
  return 0;
}

double DynamicValue::getReal() const {
  if (type_ == type::real) return payload_.real;
  if (type_ == type::integer) return static_cast<double>(payload_.integer);
  NOX_FAIL("Unable the retrieve this value of type " << type_ << " as a real");
  return 0.0;
}

bool DynamicValue::getBool() const {
  if (type_ == type::boolean) return payload_.boolean;
  NOX_FAIL("Unable the retrieve this value of type " << type_ << " as a bool");
  return false;
}

const char* DynamicValue::getString() const {
  if (type_ == type::string) return payload_.string->c_str();
  NOX_FAIL("Unable the retrieve this value of type " << type_ << " as a string");
  return nullptr;
}

unsigned int DynamicValue::getStringLength() const {
  if (type_ == type::string) return static_cast<unsigned int>(payload_.string->size());
  NOX_FAIL("Unable the retrieve this value of type " << type_ << " as a string");
  return 0;
}

void DynamicValue::setInt(std::int64_t value) {
  setScalarType(type::integer);
  payload_.integer = value;
}

void DynamicValue::setReal(double value) {
  setScalarType(type::real);
  payload_.real = value;
}

void DynamicValue::setBool(bool value) {
  setScalarType(type::boolean);
  payload_.boolean = value;
}

void DynamicValue::setString(const char* text) {
  if (text == nullptr) {
    NOX_FAIL("unable to set string value from null pointer");
    return;
  }
  setString(text, static_cast<unsigned int>(std::strlen(text)));
}

void DynamicValue::setString(const char* text, unsigned int length) {
  if (text == nullptr) {
    NOX_FAIL("unable to set string value from null pointer");
    return;
  }
  if (type_ == type::string) {
    payload_.string->assign(text, length);
    return;
  }
  type_ = type::string;
  payload_.string = NOX_NEW String(text, length);
}

void DynamicValue::reset() { setScalarType(type::null); }

bool DynamicValue::operator==(const DynamicValue& other) const {
  switch (type_) {
    case type::integer:
      return other.type_ == type::integer && payload_.integer == other.payload_.integer;
    case type::real:
      return other.type_ == type::real && payload_.real == other.payload_.real;
    case type::string:
      return other.type_ == type::string && *payload_.string == *other.payload_.string;
    case type::boolean:
      return other.type_ == type::boolean && payload_.boolean == other.payload_.boolean;
    default:
      return other.type_ == type::null;
  }
}

void DynamicValue::freeAllocatedMemory() {
  if (getType() != type::string) return;
  NOX_DELETE(payload_.string);
  payload_.string = nullptr;
}

void DynamicValue::setScalarType(type::Type type) {
  freeAllocatedMemory();
  type_ = static_cast<std::uint32_t>(type);
}

std::ostream& operator<<(std::ostream& out, const DynamicValue& value) {
  switch (value.getType()) {
    case type::integer:
      return out << value.getInt();
    case type::real:
      return out << value.getReal();
    case type::string:
      return out << value.getString();
    case type::boolean:
      return out << value.getBool();
    default:
      return out << "null";
  }
}

}  // namespace nox::utils
