// Subscribes to the steps of the simulation that match its filters: any mix of
// entities, location and hit-count filters. The engine evaluates it in two stages so
// that hit counting only sees relevant steps: canHit() ignores the hit-count filters,
// update() counts a hit, isHit() includes them.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequest.h>
#include <nox/utils/debugger/EventFilterList.h>

namespace nox::utils {
class Uri;
}

namespace nox::utils::debugger {

class NOX_UTILS_API BreakpointRequest : public AbstractEventRequest {
  NOX_STATIC_OBJECT("nox::utils::debugger::BreakpointRequest", "33744771-C389-4914-96E8-CDCA5C59CF82",
                    &BreakpointRequest::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  explicit BreakpointRequest(unsigned int handle) : AbstractEventRequest(handle) {}

  // Any non-null filter.
  bool addFilter(AbstractEventFilter* filter) override;
  // Updates every filter.
  void update() override;

  // Whether the entity and the location pass their filters.
  bool canHit(unsigned int entity, const Uri& location) const;
  // canHit, and the hit-count filters are satisfied.
  bool isHit(unsigned int entity, const Uri& location) const;
  // Calls every listener's onBreakpoint.
  void notify(unsigned int entity, const Uri& location) const;

  Vector<AbstractEventFilter*> getFilters() const { return filters_.get(); }

 private:
  bool evaluate(unsigned int entity, const Uri& location, bool withHitCount) const;

  EventFilterList filters_;
};

}  // namespace nox::utils::debugger
