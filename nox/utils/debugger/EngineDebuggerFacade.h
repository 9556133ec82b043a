// What an engine calls to tell the debugger about its entities and contexts. Every
// push and pop of a context is a potential stop: when a stop condition set by the
// DebuggerFramework's commands matches, the calling (engine) thread blocks inside
// pushContext/popContext until it is resumed.
//
// Contexts must be popped in the reverse order of their pushing. They remain the
// engine's: the debugger references them from push to pop and never destroys them.
// An engine must not push or pop from inside accept() or visitContexts(): those run
// under the framework mutex, which must not be held while the thread is suspended.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventFilterCreator.h>
#include <nox/utils/debugger/CreatorAbstractFactory.h>

namespace nox::utils {
class AbstractLogger;
class Uri;
}  // namespace nox::utils

namespace nox::utils::debugger {

class AbstractContext;
class AbstractContextFactory;
class AbstractContextVisitor;
class AbstractEngine;
class AbstractEventRequestVisitor;
class DebuggerFramework;
class EntityStacks;

class NOX_UTILS_API EngineDebuggerFacade {
 public:
  using EventFilterCreatorFactory = CreatorAbstractFactory<AbstractEventFilterCreator>;

  // Works on `stacks`, suspends through `debugger`, makes filters with `creators`, and
  // reports on the framework's logger, which the host may replace: `logger` refers to
  // it. All of them belong to the inspection framework, which owns the facade too.
  EngineDebuggerFacade(EntityStacks& stacks, DebuggerFramework& debugger, EventFilterCreatorFactory& creators,
                       AbstractLogger* const& logger)
      : stacks_(stacks), debugger_(debugger), creators_(creators), logger_(logger) {}

  EngineDebuggerFacade(const EngineDebuggerFacade&) = delete;
  EngineDebuggerFacade& operator=(const EngineDebuggerFacade&) = delete;

  // Keep the list of registered entities (in registration order) and notify the
  // registration and unregistration requests. Registering an entity twice keeps one
  // entry; the invalid entity is refused (assertion).
  void onEntitiesRegistration(AbstractEngine& engine, const unsigned int* entities, unsigned int count);
  void onEntitiesUnregistration(AbstractEngine& engine, const unsigned int* entities, unsigned int count);

  // Makes the context through the factory and pushes it on the entity's stack, which
  // must be registered (assertion otherwise). Then the step check.
  void pushContext(AbstractEngine& engine, unsigned int entity, AbstractContextFactory& factory);
  // Pops the entity's top context and gives it back (null after an assertion when the
  // stack is empty). Then the step check.
  AbstractContext* popContext(AbstractEngine& engine, unsigned int entity);

  // Readers; a missing context is reported on `logger` and gives null.
  AbstractContext* topContext(unsigned int entity, AbstractLogger* logger = nullptr) const;
  AbstractContext* getContext(unsigned int entity, unsigned int index, AbstractLogger* logger = nullptr) const;
  unsigned int countContexts(unsigned int entity) const;
  // Offers the entity's contexts, bottom to top, to the visitor.
  void visitContexts(unsigned int entity, AbstractContextVisitor& visitor) const;

  // Forgets every context the engine pushed, on every stack. From then on (until the
  // engine is registered again) its pushes and pops run no step check, and its pops of
  // forgotten contexts are ignored: the engine may unwind frames the debugger dropped.
  void invalidateContexts(AbstractEngine& engine);

  // Reports an event to the subscribed requests.
  void accept(AbstractEventRequestVisitor& visitor);

  // The breakpoint check of a step: call it for `entity` at `location` just before
  // pushing the step's context. Each breakpoint request whose entity and location
  // filters pass is asked whether it hits before the step counts toward its hit-count
  // filters, so that a hit count of N stops at the Nth matching step. A hit is notified
  // to the request's listeners and marks the entity to suspend: the push that follows
  // stops. Returns whether a breakpoint hit.
  bool checkBreakpoints(unsigned int entity, const Uri& location);

  EventFilterCreatorFactory& getEventRequestFilterCreator() { return creators_; }
  AbstractLogger* getLogger() const { return logger_; }

 private:
  EntityStacks& stacks_;
  DebuggerFramework& debugger_;
  EventFilterCreatorFactory& creators_;
  AbstractLogger* const& logger_;
};

}  // namespace nox::utils::debugger
