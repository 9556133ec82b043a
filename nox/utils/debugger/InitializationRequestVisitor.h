// Reports the start of the simulation to the InitializationRequests of a registry. The typed hook
// notifies the request's listeners; override it to do more.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

namespace nox::utils::debugger {

class InitializationRequest;

class NOX_UTILS_API InitializationRequestVisitor : public AbstractEventRequestVisitor {
 public:
  // Passes requests of type InitializationRequest (by type id) to onRequest; ignores the others.
  void visit(AbstractEventRequest& request) final;

 protected:
  virtual void onRequest(InitializationRequest& request);
};

}  // namespace nox::utils::debugger
