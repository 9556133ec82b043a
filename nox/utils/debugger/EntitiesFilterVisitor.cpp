#include <nox/utils/debugger/EntitiesFilterVisitor.h>

#include <nox/utils/debugger/EntitiesFilter.h>

namespace nox::utils::debugger {

bool EntitiesFilterVisitor::visit(const AbstractEventFilter& filter) {
  if (filter.getTypeId() != EntitiesFilter::getClassTypeId()) return false;
  seen_ = true;
  result_ = result_ || static_cast<const EntitiesFilter&>(filter)(entity_);
  return true;
}

}  // namespace nox::utils::debugger
