// A condition on one property of a DynamicObject: the property named by a path compared
// with a fixed value, always read as "property <comparator> value". The comparison is
// made in the type of the value: the property is read with the matching getter, so a
// real property compared with an integer value is truncated first.
#pragma once

#include <nox/utils/DynamicValue.h>
#include <nox/utils/Export.h>
#include <nox/utils/String.h>

namespace nox::utils {

class AbstractLogger;
class DynamicObject;

class NOX_UTILS_API DynamicObjectPropertyComparison {
 public:
  enum Comparator {
    equal = 0,
    notEqual = 1,
    greater = 2,
    less = 3,
    greaterOrEqual = 4,
    lessOrEqual = 5,
  };

  // `key` is a property path; a null key stands for the root (and is a broken contract).
  DynamicObjectPropertyComparison(const char* key, Comparator comparator, const DynamicValue& value);

  const char* getKey() const { return key_.c_str(); }
  Comparator getComparator() const { return comparator_; }
  const DynamicValue& getValue() const { return value_; }

  // False when the object has no such property (logged on `logger`) or the comparison
  // does not hold.
  bool evaluate(const DynamicObject& object, AbstractLogger* logger) const;

 private:
  String key_;
  Comparator comparator_;
  DynamicValue value_;
};

}  // namespace nox::utils
