// Reports the end of the simulation to the TerminationRequests of a registry. The typed hook
// notifies the request's listeners; override it to do more.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

namespace nox::utils::debugger {

class TerminationRequest;

class NOX_UTILS_API TerminationRequestVisitor : public AbstractEventRequestVisitor {
 public:
  // Passes requests of type TerminationRequest (by type id) to onRequest; ignores the others.
  void visit(AbstractEventRequest& request) final;

 protected:
  virtual void onRequest(TerminationRequest& request);
};

}  // namespace nox::utils::debugger
