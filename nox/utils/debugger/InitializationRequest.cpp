#include <nox/utils/debugger/InitializationRequest.h>

#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventListener.h>

namespace nox::utils::debugger {

bool InitializationRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventRequest::getClassTypeId(), logger);
}

void InitializationRequest::notify() const {
  forEachListener([this](AbstractEventListener& listener) { listener.onInitialization(getHandle()); });
}

}  // namespace nox::utils::debugger
