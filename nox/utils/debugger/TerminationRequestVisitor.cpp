#include <nox/utils/debugger/TerminationRequestVisitor.h>

#include <nox/utils/debugger/TerminationRequest.h>

namespace nox::utils::debugger {

void TerminationRequestVisitor::visit(AbstractEventRequest& request) {
  if (request.getTypeId() == TerminationRequest::getClassTypeId()) onRequest(static_cast<TerminationRequest&>(request));
}

void TerminationRequestVisitor::onRequest(TerminationRequest& request) { request.notify(); }

}  // namespace nox::utils::debugger
