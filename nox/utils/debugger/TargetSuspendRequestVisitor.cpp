#include <nox/utils/debugger/TargetSuspendRequestVisitor.h>

#include <nox/utils/debugger/TargetSuspendRequest.h>

namespace nox::utils::debugger {

void TargetSuspendRequestVisitor::visit(AbstractEventRequest& request) {
  if (request.getTypeId() == TargetSuspendRequest::getClassTypeId())
    onRequest(static_cast<TargetSuspendRequest&>(request));
}

void TargetSuspendRequestVisitor::onRequest(TargetSuspendRequest& request) { request.notify(entity_); }

}  // namespace nox::utils::debugger
