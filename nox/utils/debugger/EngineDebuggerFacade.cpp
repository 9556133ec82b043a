#include <nox/utils/debugger/EngineDebuggerFacade.h>

#include <nox/utils/debugger/EntityStacks.h>

namespace nox::utils::debugger {

void EngineDebuggerFacade::onEntitiesRegistration(AbstractEngine&, const unsigned int* entities, unsigned int count) {
  stacks_.registerEntities(entities, count);
}

void EngineDebuggerFacade::onEntitiesUnregistration(AbstractEngine&, const unsigned int* entities, unsigned int count) {
  stacks_.unregisterEntities(entities, count);
}

void EngineDebuggerFacade::pushContext(AbstractEngine& engine, unsigned int entity, AbstractContextFactory& factory) {
  stacks_.pushContext(engine, entity, factory);
}

AbstractContext* EngineDebuggerFacade::popContext(AbstractEngine& engine, unsigned int entity) {
  return stacks_.popContext(engine, entity);
}

AbstractContext* EngineDebuggerFacade::topContext(unsigned int entity, AbstractLogger* logger) const {
  return stacks_.topContext(entity, logger);
}

AbstractContext* EngineDebuggerFacade::getContext(unsigned int entity, unsigned int index,
                                                  AbstractLogger* logger) const {
  return stacks_.getContext(entity, index, logger);
}

unsigned int EngineDebuggerFacade::countContexts(unsigned int entity) const { return stacks_.countContexts(entity); }

void EngineDebuggerFacade::visitContexts(unsigned int entity, AbstractContextVisitor& visitor) const {
  stacks_.visitContexts(entity, visitor);
}

void EngineDebuggerFacade::invalidateContexts(AbstractEngine& engine) { stacks_.invalidateContexts(engine); }

void EngineDebuggerFacade::accept(AbstractEventRequestVisitor& visitor) { stacks_.acceptRequests(visitor); }

}  // namespace nox::utils::debugger
