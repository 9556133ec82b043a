#include <nox/utils/debugger/TargetSuspendRequest.h>

#include <nox/allocator/Owned.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventListener.h>
#include <nox/utils/debugger/EntitiesFilter.h>
#include <nox/utils/debugger/EntitiesFilterVisitor.h>

#include <utility>

namespace nox::utils::debugger {

bool TargetSuspendRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventRequest::getClassTypeId(), logger);
}

bool TargetSuspendRequest::addFilter(AbstractEventFilter* filter) {
  allocator::Owned<AbstractEventFilter> owned(filter);
  if (owned == nullptr || owned->getTypeId() != EntitiesFilter::getClassTypeId()) return false;
  return filters_.add(std::move(owned));
}

bool TargetSuspendRequest::notify(unsigned int entity) const {
  EntitiesFilterVisitor entities(entity);
  filters_.acceptAll(entities);
  if (!entities.isValid()) return false;
  forEachListener([&](AbstractEventListener& listener) { listener.onTargetSuspension(getHandle(), entity); });
  return true;
}

}  // namespace nox::utils::debugger
