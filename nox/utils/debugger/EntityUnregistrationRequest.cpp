#include <nox/utils/debugger/EntityUnregistrationRequest.h>

#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventListener.h>

namespace nox::utils::debugger {

bool EntityUnregistrationRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventRequest::getClassTypeId(), logger);
}

void EntityUnregistrationRequest::notify(unsigned int entity) const {
  forEachListener([&](AbstractEventListener& listener) { listener.onEntityUnregistration(getHandle(), entity); });
}

}  // namespace nox::utils::debugger
