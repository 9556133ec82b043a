#include <nox/utils/DynamicObjectPropertyComparison.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/DynamicObject.h>

#include <cstring>

namespace nox::utils {

namespace {

// `left <comparator> right` for any type with the six relational operators; a NaN
// thus fails every comparison but notEqual.
template <class T>
bool compare(const T& left, DynamicObjectPropertyComparison::Comparator comparator, const T& right) {
  switch (comparator) {
    case DynamicObjectPropertyComparison::equal:
      return left == right;
    case DynamicObjectPropertyComparison::notEqual:
      return left != right;
    case DynamicObjectPropertyComparison::greater:
      return left > right;
    case DynamicObjectPropertyComparison::less:
      return left < right;
    case DynamicObjectPropertyComparison::greaterOrEqual:
      return left >= right;
    case DynamicObjectPropertyComparison::lessOrEqual:
      return left <= right;
  }
  NOX_FAIL("unexpected comparator detected " << static_cast<int>(comparator));
  return false;
}

}  // namespace

DynamicObjectPropertyComparison::DynamicObjectPropertyComparison(const char* key, Comparator comparator,
                                                                 const DynamicValue& value)
    : key_(key == nullptr ? "" : key), comparator_(comparator), value_(value) {
  NOX_ASSERT(key != nullptr, "null pointer not allowed as key when creating a simple condition");
}

bool DynamicObjectPropertyComparison::evaluate(const DynamicObject& object, AbstractLogger* logger) const {
  unsigned int property = object.getProperty(key_.c_str(), static_cast<unsigned int>(key_.size()));
  if (property == 0) {
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "object has no property " << key_ << ", unable to evaluate condition");
    return false;
  }
  switch (value_.getType()) {
    case type::integer:
      return compare(object.getInt(property), comparator_, value_.getInt());
    case type::real:
      return compare(object.getReal(property), comparator_, value_.getReal());
    case type::string: {
      // Byte-wise up to the first difference or the terminating zero, as strcmp does.
      const char* text = object.getString(property);
      return compare(std::strcmp(text == nullptr ? "" : text, value_.getString()), comparator_, 0);
    }
    case type::boolean:
      return compare(object.getBool(property), comparator_, value_.getBool());
    default:
      NOX_FAIL("unexpected value type detected " << static_cast<int>(value_.getType()));
      return false;
  }
}

}  // namespace nox::utils
