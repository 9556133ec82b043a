// The state behind the inspection framework: the registered engines (keyed by the hash
// of their path), the registered entities and their context stacks, the request
// registry, the event filter creators, the debugger engine with its execution
// controller, and the stepping state its commands set and the step check reads.
//
// One recursive mutex (getMutex) serialises resource calls, registrations, context
// pushes and pops and the stepping state. Lock order, everywhere: framework mutex, then
// the request registry's, then a listener's own (the event framework's queue); and
// framework mutex, then the execution controls, then the controller's state. The
// framework mutex is never held while an engine thread is suspended.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/Mutex.h>
#include <nox/utils/ScopedMutex.h>
#include <nox/utils/debugger/DebuggerFramework.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/Entity.h>
#include <nox/utils/debugger/RequestRegistry.h>
#include <nox/utils/debugger/Status.h>

#include <atomic>
#include <cstdint>

namespace nox::utils {
class AbstractLogger;
class AbstractObjectBuilder;
class DynamicObject;
class StringTable;
class Uri;
}  // namespace nox::utils

namespace nox::utils::debugger {
class AbstractContext;
class AbstractContextFactory;
class AbstractContextVisitor;
class AbstractEngine;
class AbstractEventRequestVisitor;
}  // namespace nox::utils::debugger

namespace nox::utils::debugger::impl {

class NOX_UTILS_API InspectionFrameworkImpl {
 public:
  using EventFilterCreatorFactory = EngineDebuggerFacade::EventFilterCreatorFactory;

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

  // Engine paths are hashed in `strings`, which must outlive the framework; `logger`
  // receives the framework's reports (null: none). The debugger engine is registered
  // under "debug" from the start.
  InspectionFrameworkImpl(StringTable& strings, AbstractLogger* logger);
  // Reports contexts that were never popped.
  ~InspectionFrameworkImpl();

  InspectionFrameworkImpl(const InspectionFrameworkImpl&) = delete;
  InspectionFrameworkImpl& operator=(const InspectionFrameworkImpl&) = delete;

  AbstractLogger* getLogger() const { return logger_; }
  // Set before engine threads run: the logger is read without locking.
  void setLogger(AbstractLogger* logger) { logger_ = logger; }
  StringTable& getStringTable() const { return strings_; }
  Mutex& getMutex() { return mutex_; }
  RequestRegistry& getRequestRegistry() { return registry_; }
  EngineDebuggerFacade& getFacade() { return facade_; }
  DebuggerFramework& getDebugger() { return debugger_; }
  ExecutionController& getExecutionController() { return controller_; }
  EventFilterCreatorFactory& getEventFilterCreatorFactory() { return filterCreators_; }
  // The stop conditions; the caller holds the framework mutex.
  SteppingState& getSteppingState() { return stepping_; }
  // How many requests the registry may hold before clients' subscriptions are refused:
  // each one costs every event of every engine a little.
  unsigned int getSubscriptionLimit() const { return subscriptionLimit_; }
  void setSubscriptionLimit(unsigned int limit) { subscriptionLimit_ = limit; }

  // ---- Engines. Registration attaches the engine to the facade.

  bool registerEngine(AbstractEngine& engine, AbstractLogger* logger);
  void unregisterEngine(const char* path, AbstractLogger* logger);
  // Null when no engine is registered under that path.
  AbstractEngine* findEngine(const char* path, unsigned int length) const;
  void enableEngine(const char* path, AbstractLogger* logger);
  void disableEngine(const char* path, AbstractLogger* logger);
  bool isEngineEnabled(const char* path, AbstractLogger* logger) const;
  void enableAllEngines();
  void disableAllEngines();
  // Calls `visit(const AbstractEngine&)` for each registered engine, in registration
  // order, under the framework mutex.
  template <class Visit>
  void visitEngines(Visit visit) const {
    ScopedMutex lock(mutex_);
    for (const AbstractEngine* engine : registrationOrder_) visit(*engine);
  }

  // ---- Resources: the first segment of `path` names the engine, which gets the rest
  // of the path; no such engine answers unknown.

  resources::Status retrieveResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                     AbstractObjectBuilder& reply);
  resources::Status createResource(const char* path, unsigned int length, const DynamicObject& request,
                                   AbstractObjectBuilder& reply);
  resources::Status deleteResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                   AbstractObjectBuilder& reply);

  bool unsubscribe(unsigned int handle);
  void unsubscribeAll();

  // ---- Entities and contexts (see EngineDebuggerFacade).

  void registerEntities(const unsigned int* entities, unsigned int count);
  void unregisterEntities(const unsigned int* entities, unsigned int count);
  unsigned int countEntities() const;
  Vector<unsigned int> getEntities() const;
  bool isEntityRegistered(unsigned int entity) const;

  void pushContext(AbstractEngine& engine, unsigned int entity, AbstractContextFactory& factory);
  AbstractContext* popContext(AbstractEngine& engine, unsigned int entity);
  AbstractContext* topContext(unsigned int entity, AbstractLogger* logger) const;
  AbstractContext* getContext(unsigned int entity, unsigned int index, AbstractLogger* logger) const;
  unsigned int countContexts(unsigned int entity) const;
  void visitContexts(unsigned int entity, AbstractContextVisitor& visitor) const;
  void invalidateContexts(AbstractEngine& engine);

  // Visits the request registry under the framework mutex.
  void accept(AbstractEventRequestVisitor& visitor);

 private:
  struct Frame {
    Frame(AbstractContext* pushed, AbstractEngine* pusher) : context(pushed), engine(pusher) {}
    AbstractContext* context;
    AbstractEngine* engine;
  };
  using Stack = Vector<Frame>;

  template <class Call>
  resources::Status dispatch(const char* path, unsigned int length, Call call);
  // The entity's stack, null when the entity is not registered. Engines push and pop
  // for one entity several times in a row: the last stack found spares most lookups on
  // the engine thread's path.
  Stack* findStack(unsigned int entity) { return entity == cachedEntity_ ? cachedStack_ : lookUpStack(entity); }
  Stack* lookUpStack(unsigned int entity);
  const Stack* findStack(unsigned int entity) const;
  bool isInvalidated(const AbstractEngine& engine) const;
  // Decides, under the framework mutex, whether the step that left `context` on top of
  // the entity's stack must stop; only called when some stop condition is set (the
  // common case, nobody debugging, costs one test). When it must, notifies the suspension requests and
  // takes the execution controls, which the caller hands to stopAfterStep once it has
  // released the framework mutex.
  bool prepareStop(const AbstractEngine& engine, unsigned int entity, const AbstractContext* context);
  void stopAfterStep();
  void forgetTarget(const AbstractContext* context);

  Vector<unsigned int> entities_;
  RequestRegistry registry_;
  StringTable& strings_;
  AbstractLogger* logger_;
  mutable Mutex mutex_;
  EngineDebuggerFacade facade_;
  EventFilterCreatorFactory filterCreators_;
  DebuggerFramework debugger_;
  ExecutionController& controller_;
  SteppingState stepping_;
  Map<unsigned int, Stack> stacks_;
  // The stack findStack found last (map nodes do not move).
  unsigned int cachedEntity_ = invalidEntity;
  Stack* cachedStack_ = nullptr;
  // Engines whose contexts were invalidated, by path hash: they run no step check.
  Set<std::uint64_t> invalidatedEngines_;
  Map<std::uint64_t, AbstractEngine*> engines_;
  // The same engines, in the order they were registered: clients list them that way.
  Vector<AbstractEngine*> registrationOrder_;
  std::atomic<unsigned int> subscriptionLimit_{1000};
};

}  // namespace nox::utils::debugger::impl
