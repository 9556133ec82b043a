#include <nox/utils/debugger/BreakpointRequestVisitor.h>

#include <nox/utils/debugger/BreakpointRequest.h>

namespace nox::utils::debugger {

void BreakpointRequestVisitor::visit(AbstractEventRequest& request) {
  if (request.getTypeId() == BreakpointRequest::getClassTypeId()) onRequest(static_cast<BreakpointRequest&>(request));
}

}  // namespace nox::utils::debugger
