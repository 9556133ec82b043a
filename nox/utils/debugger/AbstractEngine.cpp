#include <nox/utils/debugger/AbstractEngine.h>

#include <nox/utils/debugger/EngineDebuggerFacade.h>

namespace nox::utils::debugger {

AbstractEngine::AbstractEngine(const char* path, bool enabled)
    : path_(path != nullptr ? path : ""), hasPath_(path != nullptr), enabled_(enabled) {}

AbstractEngine::~AbstractEngine() = default;

void AbstractEngine::attach(EngineDebuggerFacade* facade) { facade_ = facade; }

void AbstractEngine::onEntitiesRegistration(const unsigned int* entities, unsigned int count) {
  if (facade_ != nullptr) facade_->onEntitiesRegistration(*this, entities, count);
}

void AbstractEngine::onEntitiesUnregistration(const unsigned int* entities, unsigned int count) {
  if (facade_ != nullptr) facade_->onEntitiesUnregistration(*this, entities, count);
}

resources::Status AbstractEngine::retrieveResource(const char*, unsigned int, const DynamicObject&,
                                                   AbstractObjectBuilder&) {
  return resources::unknown;
}

resources::Status AbstractEngine::createResource(const char*, unsigned int, const DynamicObject&,
                                                 AbstractObjectBuilder&) {
  return resources::unknown;
}

resources::Status AbstractEngine::deleteResource(const char*, unsigned int, const DynamicObject&,
                                                 AbstractObjectBuilder&) {
  return resources::unknown;
}

void AbstractEngine::enable() {
  if (!enabled_) doEnable(enabled_);
}

void AbstractEngine::disable() {
  if (enabled_) doDisable(enabled_);
}

void AbstractEngine::doEnable(bool& enabled) { enabled = true; }

void AbstractEngine::doDisable(bool& enabled) { enabled = false; }

}  // namespace nox::utils::debugger
