#include <nox/utils/debugger/BreakpointRequest.h>

#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventFilter.h>
#include <nox/utils/debugger/AbstractEventListener.h>
#include <nox/utils/debugger/EntitiesFilterVisitor.h>
#include <nox/utils/debugger/HitCountFilterVisitor.h>
#include <nox/utils/debugger/LocationFilterVisitor.h>

namespace nox::utils::debugger {

bool BreakpointRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventRequest::getClassTypeId(), logger);
}

bool BreakpointRequest::addFilter(AbstractEventFilter* filter) {
  return filters_.add(allocator::Owned<AbstractEventFilter>(filter));
}

void BreakpointRequest::update() { filters_.updateAll(); }

bool BreakpointRequest::evaluate(unsigned int entity, const Uri& location, bool withHitCount) const {
  EntitiesFilterVisitor entities(entity);
  LocationFilterVisitor locations(location);
  HitCountFilterVisitor hitCounts;
  filters_.acceptAll(entities, locations, hitCounts);
  return entities.isValid() && locations.isValid() && (!withHitCount || hitCounts.isValid());
}

bool BreakpointRequest::canHit(unsigned int entity, const Uri& location) const {
  return evaluate(entity, location, false);
}

bool BreakpointRequest::isHit(unsigned int entity, const Uri& location) const {
  return evaluate(entity, location, true);
}

void BreakpointRequest::notify(unsigned int entity, const Uri& location) const {
  forEachListener([&](AbstractEventListener& listener) { listener.onBreakpoint(getHandle(), entity, location); });
}

}  // namespace nox::utils::debugger
