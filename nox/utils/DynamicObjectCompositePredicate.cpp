#include <nox/utils/DynamicObjectCompositePredicate.h>

#include <nox/utils/Assertion.h>

namespace nox::utils {

void DynamicObjectCompositePredicate::addPredicate(const DynamicObjectPropertyComparison& comparison) {
  comparisons_.push_back(comparison);
}

const DynamicObjectPropertyComparison& DynamicObjectCompositePredicate::getPredicate(unsigned int index) const {
  if (index < comparisons_.size()) return comparisons_[index];
  NOX_FAIL("index out of bounds when accessing simple conditions");
  // Something to hand back to a returning assertion handler: a condition on the root.
  static const DynamicObjectPropertyComparison none("", DynamicObjectPropertyComparison::equal, DynamicValue());
  return none;
}

bool DynamicObjectCompositePredicate::evaluate(const DynamicObject& object, AbstractLogger* logger) const {
  for (const DynamicObjectPropertyComparison& comparison : comparisons_) {
    if (!comparison.evaluate(object, logger)) return false;
  }
  return true;
}

}  // namespace nox::utils
