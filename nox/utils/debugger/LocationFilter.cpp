#include <nox/utils/debugger/LocationFilter.h>

#include <nox/utils/TypeManager.h>

namespace nox::utils::debugger {

bool LocationFilter::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventFilter::getClassTypeId(), logger);
}

}  // namespace nox::utils::debugger
