#include <nox/utils/debugger/EngineDebuggerFacade.h>

#include <nox/utils/debugger/BreakpointRequest.h>
#include <nox/utils/debugger/BreakpointRequestVisitor.h>
#include <nox/utils/debugger/DebuggerFramework.h>
#include <nox/utils/debugger/EntityStacks.h>

namespace nox::utils::debugger {

namespace {

// A hit-count filter's counter starts at 1, so asking before counting makes the Nth
// matching step the one that sees N.
class BreakpointCheck : public BreakpointRequestVisitor {
 public:
  using BreakpointRequestVisitor::BreakpointRequestVisitor;
  bool isHit() const { return hit_; }

 protected:
  void onRequest(BreakpointRequest& request) override {
    if (!request.canHit(getEntity(), getLocation())) return;
    const bool hit = request.isHit(getEntity(), getLocation());
    request.update();
    if (!hit) return;
    request.notify(getEntity(), getLocation());
    hit_ = true;
  }

 private:
  bool hit_ = false;
};

}  // namespace

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

bool EngineDebuggerFacade::checkBreakpoints(unsigned int entity, const Uri& location) {
  BreakpointCheck check(entity, location);
  accept(check);
  if (!check.isHit()) return false;
  debugger_.suspendEntity(entity);
  return true;
}

}  // namespace nox::utils::debugger
