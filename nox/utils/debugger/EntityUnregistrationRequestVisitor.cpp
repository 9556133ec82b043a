#include <nox/utils/debugger/EntityUnregistrationRequestVisitor.h>

#include <nox/utils/debugger/EntityUnregistrationRequest.h>

namespace nox::utils::debugger {

void EntityUnregistrationRequestVisitor::visit(AbstractEventRequest& request) {
  if (request.getTypeId() == EntityUnregistrationRequest::getClassTypeId())
    onRequest(static_cast<EntityUnregistrationRequest&>(request));
}

void EntityUnregistrationRequestVisitor::onRequest(EntityUnregistrationRequest& request) { request.notify(entity_); }

}  // namespace nox::utils::debugger
