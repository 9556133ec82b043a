// Subscribes to the suspensions of the engine thread, optionally only for some
// entities: it takes EntitiesFilter filters and no other.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequest.h>
#include <nox/utils/debugger/EventFilterList.h>

namespace nox::utils::debugger {

class NOX_UTILS_API TargetSuspendRequest : public AbstractEventRequest {
  NOX_STATIC_OBJECT("nox::utils::debugger::TargetSuspendRequest", "43672C42-C091-4BFB-A4FE-D3A38EA9B883",
                    &TargetSuspendRequest::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  explicit TargetSuspendRequest(unsigned int handle) : AbstractEventRequest(handle) {}

  bool addFilter(AbstractEventFilter* filter) override;

  // When the entity passes the entities filters, calls every listener's
  // onTargetSuspension and returns true; otherwise returns false.
  bool notify(unsigned int entity) const;

  Vector<AbstractEventFilter*> getFilters() const { return filters_.get(); }

 private:
  EventFilterList filters_;
};

}  // namespace nox::utils::debugger
