#include <nox/utils/debugger/EntityRegistrationRequest.h>

#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventListener.h>

namespace nox::utils::debugger {

bool EntityRegistrationRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventRequest::getClassTypeId(), logger);
}

void EntityRegistrationRequest::notify(unsigned int entity) const {
  forEachListener([&](AbstractEventListener& listener) { listener.onEntityRegistration(getHandle(), entity); });
}

}  // namespace nox::utils::debugger
