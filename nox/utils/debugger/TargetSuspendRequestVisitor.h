// Reports a suspension of the engine thread caused by an entity to the TargetSuspendRequests of a registry. The typed
// hook notifies the request's listeners; override it to do more.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

namespace nox::utils::debugger {

class TargetSuspendRequest;

class NOX_UTILS_API TargetSuspendRequestVisitor : public AbstractEventRequestVisitor {
 public:
  explicit TargetSuspendRequestVisitor(unsigned int entity) : entity_(entity) {}

  // Passes requests of type TargetSuspendRequest (by type id) to onRequest; ignores the others.
  void visit(AbstractEventRequest& request) final;

  unsigned int getEntity() const { return entity_; }

 protected:
  virtual void onRequest(TargetSuspendRequest& request);

 private:
  unsigned int entity_;
};

}  // namespace nox::utils::debugger
