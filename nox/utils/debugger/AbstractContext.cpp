#include <nox/utils/debugger/AbstractContext.h>

#include <nox/utils/TypeManager.h>

namespace nox::utils::debugger {

bool AbstractContext::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), StaticObject::getClassTypeId(), logger);
}

AbstractContext::~AbstractContext() = default;

}  // namespace nox::utils::debugger
