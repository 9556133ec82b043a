// Narrows an event request: which entities, which location, how many hits. Filters are
// evaluated by filter visitors (EntitiesFilterVisitor and its siblings), which pick the
// filters of their own type by type id, so a request can hold any mix of them.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/StaticObject.h>

namespace nox::utils::debugger {

class AbstractEventFilterVisitor;

class NOX_UTILS_API AbstractEventFilter : public StaticObject {
  NOX_STATIC_OBJECT("nox::utils::debugger::AbstractEventFilter", "70CC68F4-F0B4-41EC-8EB8-A174CB0FD0DC",
                    &AbstractEventFilter::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  ~AbstractEventFilter() override;

  // Called once per relevant step by the request that owns the filter; only hit
  // counting cares.
  virtual void update();
  // Returns whether the visitor took the filter as one of its type.
  virtual bool accept(AbstractEventFilterVisitor& visitor) const;
};

}  // namespace nox::utils::debugger
