#include <nox/utils/debugger/AbstractEventFilter.h>

#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventFilterVisitor.h>

namespace nox::utils::debugger {

bool AbstractEventFilter::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), StaticObject::getClassTypeId(), logger);
}

AbstractEventFilter::~AbstractEventFilter() = default;

void AbstractEventFilter::update() {}

bool AbstractEventFilter::accept(AbstractEventFilterVisitor& visitor) const { return visitor.visit(*this); }

}  // namespace nox::utils::debugger
