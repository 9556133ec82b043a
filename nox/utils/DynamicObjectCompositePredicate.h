// The conjunction of property comparisons over a DynamicObject, evaluated in the order
// they were added. With no comparison it holds for every object.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/DynamicObjectPropertyComparison.h>
#include <nox/utils/Export.h>

namespace nox::utils {

class NOX_UTILS_API DynamicObjectCompositePredicate {
 public:
  DynamicObjectCompositePredicate() = default;

  void addPredicate(const DynamicObjectPropertyComparison& comparison);
  unsigned int countPredicates() const { return static_cast<unsigned int>(comparisons_.size()); }
  const DynamicObjectPropertyComparison& getPredicate(unsigned int index) const;

  // True when every comparison holds; stops at the first that does not.
  bool evaluate(const DynamicObject& object, AbstractLogger* logger) const;

 private:
  Vector<DynamicObjectPropertyComparison> comparisons_;
};

}  // namespace nox::utils
