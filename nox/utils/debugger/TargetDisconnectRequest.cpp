#include <nox/utils/debugger/TargetDisconnectRequest.h>

#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventListener.h>

namespace nox::utils::debugger {

bool TargetDisconnectRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventRequest::getClassTypeId(), logger);
}

void TargetDisconnectRequest::notify() const {
  forEachListener([this](AbstractEventListener& listener) { listener.onTargetDisconnection(getHandle()); });
}

}  // namespace nox::utils::debugger
