#include <nox/utils/debugger/EngineDebuggerFacade.h>

#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>

namespace nox::utils::debugger {

void EngineDebuggerFacade::onEntitiesRegistration(AbstractEngine&, const unsigned int* entities, unsigned int count) {
  framework_.registerEntities(entities, count);
}

void EngineDebuggerFacade::onEntitiesUnregistration(AbstractEngine&, const unsigned int* entities, unsigned int count) {
  framework_.unregisterEntities(entities, count);
}

void EngineDebuggerFacade::pushContext(AbstractEngine& engine, unsigned int entity, AbstractContextFactory& factory) {
  framework_.pushContext(engine, entity, factory);
}

AbstractContext* EngineDebuggerFacade::popContext(AbstractEngine& engine, unsigned int entity) {
  return framework_.popContext(engine, entity);
}

AbstractContext* EngineDebuggerFacade::topContext(unsigned int entity, AbstractLogger* logger) const {
  return framework_.topContext(entity, logger);
}

AbstractContext* EngineDebuggerFacade::getContext(unsigned int entity, unsigned int index,
                                                  AbstractLogger* logger) const {
  return framework_.getContext(entity, index, logger);
}

unsigned int EngineDebuggerFacade::countContexts(unsigned int entity) const { return framework_.countContexts(entity); }

void EngineDebuggerFacade::visitContexts(unsigned int entity, AbstractContextVisitor& visitor) const {
  framework_.visitContexts(entity, visitor);
}

void EngineDebuggerFacade::invalidateContexts(AbstractEngine& engine) { framework_.invalidateContexts(engine); }

void EngineDebuggerFacade::accept(AbstractEventRequestVisitor& visitor) { framework_.accept(visitor); }

EngineDebuggerFacade::EventFilterCreatorFactory& EngineDebuggerFacade::getEventRequestFilterCreator() {
  return framework_.getEventFilterCreatorFactory();
}

AbstractLogger* EngineDebuggerFacade::getLogger() const { return framework_.getLogger(); }

}  // namespace nox::utils::debugger
