#include <nox/utils/debugger/TargetSuspendRequest.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventListener.h>
#include <nox/utils/debugger/EntitiesFilter.h>
#include <nox/utils/debugger/EntitiesFilterVisitor.h>

namespace nox::utils::debugger {

bool TargetSuspendRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventRequest::getClassTypeId(), logger);
}

bool TargetSuspendRequest::addFilter(AbstractEventFilter* filter) {
  if (filter != nullptr && filter->getTypeId() == EntitiesFilter::getClassTypeId()) return filters_.add(filter);
  NOX_DELETE(filter);
  return false;
}

bool TargetSuspendRequest::notify(unsigned int entity) const {
  EntitiesFilterVisitor entities(entity);
  filters_.acceptAll(entities);
  if (!entities.isValid()) return false;
  forEachListener([&](AbstractEventListener& listener) { listener.onTargetSuspension(getHandle(), entity); });
  return true;
}

}  // namespace nox::utils::debugger
