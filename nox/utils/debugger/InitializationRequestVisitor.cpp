#include <nox/utils/debugger/InitializationRequestVisitor.h>

#include <nox/utils/debugger/InitializationRequest.h>

namespace nox::utils::debugger {

void InitializationRequestVisitor::visit(AbstractEventRequest& request) {
  if (request.getTypeId() == InitializationRequest::getClassTypeId())
    onRequest(static_cast<InitializationRequest&>(request));
}

void InitializationRequestVisitor::onRequest(InitializationRequest& request) { request.notify(); }

}  // namespace nox::utils::debugger
