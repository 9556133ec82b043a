// Reports a step of an entity at a location to the BreakpointRequests of a registry.
// The engine writes the hook: the order of canHit, update, isHit and notify, and what
// a hit does (usually DebuggerFramework::suspendEntity, so that the step check stops
// the entity), are its own.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

namespace nox::utils {
class Uri;
}

namespace nox::utils::debugger {

class BreakpointRequest;

class NOX_UTILS_API BreakpointRequestVisitor : public AbstractEventRequestVisitor {
 public:
  // `location` must outlive the visitor.
  BreakpointRequestVisitor(unsigned int entity, const Uri& location) : entity_(entity), location_(location) {}

  // Passes requests of type BreakpointRequest (by type id) to onRequest; ignores the others.
  void visit(AbstractEventRequest& request) final;

  unsigned int getEntity() const { return entity_; }
  const Uri& getLocation() const { return location_; }

 protected:
  virtual void onRequest(BreakpointRequest& request) = 0;

 private:
  unsigned int entity_;
  const Uri& location_;
};

}  // namespace nox::utils::debugger
