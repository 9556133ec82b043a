#include <nox/utils/debugger/EntityRegistrationRequestVisitor.h>

#include <nox/utils/debugger/EntityRegistrationRequest.h>

namespace nox::utils::debugger {

void EntityRegistrationRequestVisitor::visit(AbstractEventRequest& request) {
  if (request.getTypeId() == EntityRegistrationRequest::getClassTypeId())
    onRequest(static_cast<EntityRegistrationRequest&>(request));
}

void EntityRegistrationRequestVisitor::onRequest(EntityRegistrationRequest& request) { request.notify(entity_); }

}  // namespace nox::utils::debugger
