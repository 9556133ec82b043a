#include <nox/utils/debugger/TerminationRequest.h>

#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventListener.h>

namespace nox::utils::debugger {

bool TerminationRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventRequest::getClassTypeId(), logger);
}

void TerminationRequest::notify() const {
  forEachListener([this](AbstractEventListener& listener) { listener.onTermination(getHandle()); });
}

}  // namespace nox::utils::debugger
