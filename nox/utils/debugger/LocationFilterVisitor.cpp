#include <nox/utils/debugger/LocationFilterVisitor.h>

#include <nox/utils/debugger/LocationFilter.h>

namespace nox::utils::debugger {

bool LocationFilterVisitor::visit(const AbstractEventFilter& filter) {
  if (filter.getTypeId() != LocationFilter::getClassTypeId()) return false;
  seen_ = true;
  result_ = result_ && static_cast<const LocationFilter&>(filter)(location_);
  return true;
}

}  // namespace nox::utils::debugger
