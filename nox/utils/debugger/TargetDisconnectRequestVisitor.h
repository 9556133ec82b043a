// Reports the disconnection of the inspected target to the TargetDisconnectRequests of a registry. The typed hook
// notifies the request's listeners; override it to do more.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

namespace nox::utils::debugger {

class TargetDisconnectRequest;

class NOX_UTILS_API TargetDisconnectRequestVisitor : public AbstractEventRequestVisitor {
 public:
  // Passes requests of type TargetDisconnectRequest (by type id) to onRequest; ignores the others.
  void visit(AbstractEventRequest& request) final;

 protected:
  virtual void onRequest(TargetDisconnectRequest& request);
};

}  // namespace nox::utils::debugger
