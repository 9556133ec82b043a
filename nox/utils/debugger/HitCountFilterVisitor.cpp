#include <nox/utils/debugger/HitCountFilterVisitor.h>

#include <nox/utils/debugger/HitCountFilter.h>

namespace nox::utils::debugger {

bool HitCountFilterVisitor::visit(const AbstractEventFilter& filter) {
  if (filter.getTypeId() != HitCountFilter::getClassTypeId()) return false;
  seen_ = true;
  result_ = result_ && static_cast<const HitCountFilter&>(filter)();
  return true;
}

}  // namespace nox::utils::debugger
