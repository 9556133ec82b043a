// The registered entities, the stack of contexts each one's engine pushed, the stop
// conditions the debugger's commands set, and the step check that every push and pop
// runs against them. The debugger engine and the engines' facade work through this
// class; the inspection framework owns it beside its engine table and request registry.
//
// Locking: every member runs under the framework mutex given at construction (recursive,
// shared with the rest of the framework), with one exception: a push or pop from the
// step thread enters the mutex alone (see FrameworkMutex), without locking it, when no
// other thread is in the framework and no stop condition is set. That is the engine's
// every step while nobody debugs, and the step check then has nothing to decide;
// whenever a stop condition is set, the push or pop locks, and the order below holds.
// Lock order: framework mutex, then the request registry's, then a listener's own; and
// framework mutex, then the execution controls, then the controller's state. The framework mutex is never held while an
// engine thread is suspended: a push or pop that must stop takes the execution controls under the mutex, releases the
// mutex, and only then suspends.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/debugger/Entity.h>
#include <nox/utils/debugger/ExecutionController.h>
#include <nox/utils/debugger/FrameworkMutex.h>

#include <cstdint>

namespace nox::utils {
class StringTable;
}  // namespace nox::utils

namespace nox::utils::debugger {

class AbstractContext;
class AbstractContextFactory;
class AbstractContextVisitor;
class AbstractEngine;
class AbstractEventRequestVisitor;
class RequestRegistry;

class NOX_UTILS_API EntityStacks {
 public:
  // The stop conditions of the step check; read and written under the framework mutex.
  struct SteppingState {
    // Stop at the next step of any entity.
    bool suspendAll = false;
    // Stop at the next step of these entities.
    Set<unsigned int> entitiesToSuspend;
    // Stop when a step of `targetEntity` leaves one of these on top of its stack.
    const AbstractContext* stepOutTarget = nullptr;
    const AbstractContext* stepOverTarget = nullptr;
    unsigned int targetEntity = invalidEntity;
    // The entity whose step caused the current suspension.
    unsigned int suspendedEntity = invalidEntity;

    // Clears every stop condition (not the suspended entity).
    void reset();
    bool hasStopCondition() const {
      return suspendAll || !entitiesToSuspend.empty() || stepOutTarget != nullptr || stepOverTarget != nullptr;
    }
  };

  // Registrations are announced to `registry`'s requests, and a stop to its suspension
  // requests. Engine paths hash with `strings`' seed. All three must outlive the stacks.
  EntityStacks(FrameworkMutex& frameworkMutex, RequestRegistry& registry, const StringTable& strings);

  EntityStacks(const EntityStacks&) = delete;
  EntityStacks& operator=(const EntityStacks&) = delete;

  FrameworkMutex& getMutex() const { return mutex_; }
  ExecutionController& getExecutionController() { return controller_; }
  // The stop conditions; the caller holds the framework mutex.
  SteppingState& getSteppingState() { return stepping_; }
  // The step check stops only while `debugger` is enabled; none (null): never.
  void setDebugger(const AbstractEngine* debugger) { debugger_ = debugger; }

  // ---- Entities.

  void registerEntities(const unsigned int* entities, unsigned int count);
  void unregisterEntities(const unsigned int* entities, unsigned int count);
  unsigned int countEntities() const;
  // In registration order.
  Vector<unsigned int> getEntities() const;
  bool isEntityRegistered(unsigned int entity) const;

  // ---- Contexts (see EngineDebuggerFacade).

  void pushContext(AbstractEngine& engine, unsigned int entity, AbstractContextFactory& factory);
  AbstractContext* popContext(AbstractEngine& engine, unsigned int entity);
  AbstractContext* topContext(unsigned int entity, AbstractLogger* logger) const;
  AbstractContext* getContext(unsigned int entity, unsigned int index, AbstractLogger* logger) const;
  unsigned int countContexts(unsigned int entity) const;
  void visitContexts(unsigned int entity, AbstractContextVisitor& visitor) const;
  // Drops every context `engine` pushed; its pushes and pops run no step check from then
  // on, until forgetInvalidation() for its path hash (a new registration).
  void invalidateContexts(AbstractEngine& engine);
  void forgetInvalidation(std::uint64_t pathHash);
  // Whether some entity still has contexts on its stack.
  bool hasContextsLeft() const;

  // Visits the request registry under the framework mutex.
  void acceptRequests(AbstractEventRequestVisitor& visitor);

 private:
  struct Frame {
    Frame(AbstractContext* pushed, AbstractEngine* pusher) : context(pushed), engine(pusher) {}
    AbstractContext* context;
    AbstractEngine* engine;
  };
  using Stack = Vector<Frame>;
  class StepEntry;

  // The entity's stack, null when the entity is not registered. Engines push and pop
  // for one entity several times in a row: the last stack found spares most lookups on
  // the engine thread's path.
  Stack* findStack(unsigned int entity) { return entity == cachedEntity_ ? cachedStack_ : lookUpStack(entity); }
  Stack* lookUpStack(unsigned int entity);
  const Stack* findStack(unsigned int entity) const;
  std::uint64_t hashPath(const AbstractEngine& engine) const;
  bool isInvalidated(const AbstractEngine& engine) const;
  // Decides, under the framework mutex, whether the step that left `context` on top of
  // the entity's stack must stop; only called when some stop condition is set (the
  // common case, nobody debugging, costs one test). When it must, notifies the
  // suspension requests and takes the execution controls, which the caller hands to
  // stopAfterStep once it has released the framework mutex.
  bool prepareStop(const AbstractEngine& engine, unsigned int entity, const AbstractContext* context);
  void stopAfterStep();
  void forgetTarget(const AbstractContext* context);

  FrameworkMutex& mutex_;
  RequestRegistry& registry_;
  const StringTable& strings_;
  const AbstractEngine* debugger_ = nullptr;
  ExecutionController controller_;
  SteppingState stepping_;
  Vector<unsigned int> entities_;
  Map<unsigned int, Stack> stacks_;
  // The stack findStack found last (map nodes do not move).
  unsigned int cachedEntity_ = invalidEntity;
  Stack* cachedStack_ = nullptr;
  // Engines whose contexts were invalidated, by path hash: they run no step check.
  Set<std::uint64_t> invalidatedEngines_;
};

}  // namespace nox::utils::debugger
