#include <nox/utils/debugger/EntitiesFilter.h>

#include <nox/utils/TypeManager.h>

#include <algorithm>

namespace nox::utils::debugger {

bool EntitiesFilter::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventFilter::getClassTypeId(), logger);
}

EntitiesFilter::EntitiesFilter(const unsigned int* entities, unsigned int count) {
  if (count > 0) entities_.assign(entities, entities + count);
}

bool EntitiesFilter::operator()(unsigned int entity) const {
  return std::find(entities_.begin(), entities_.end(), entity) != entities_.end();
}

}  // namespace nox::utils::debugger
