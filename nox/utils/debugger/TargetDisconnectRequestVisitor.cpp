#include <nox/utils/debugger/TargetDisconnectRequestVisitor.h>

#include <nox/utils/debugger/TargetDisconnectRequest.h>

namespace nox::utils::debugger {

void TargetDisconnectRequestVisitor::visit(AbstractEventRequest& request) {
  if (request.getTypeId() == TargetDisconnectRequest::getClassTypeId())
    onRequest(static_cast<TargetDisconnectRequest&>(request));
}

void TargetDisconnectRequestVisitor::onRequest(TargetDisconnectRequest& request) { request.notify(); }

}  // namespace nox::utils::debugger
