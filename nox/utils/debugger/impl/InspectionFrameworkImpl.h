// The state behind the inspection framework, composed of its units: the engine table
// (EngineTable), the entities with their context stacks and stepping state
// (EntityStacks), the request registry with its filter creators (RequestRegistry,
// EventFilterCreators), and the two engines it creates, the debugger (whose execution
// controller lives with the stacks' step check) reached through the engines' facade.
// It dispatches resource calls to the engine named by a path's first segment.
//
// One recursive mutex (getMutex), shared by every unit, serialises resource calls,
// registrations, context pushes and pops and the stepping state. The engine thread's
// push or pop with no stop condition set enters it alone instead of locking it when
// nobody else is in (see EntityStacks and FrameworkMutex): exclusive all the same, for
// a few plain loads and stores at every step while nobody debugs. Lock order, everywhere:
// framework mutex, then the request registry's, then a listener's own (the event
// framework's queue); and framework mutex, then the execution controls, then the
// controller's state. The framework mutex is never held while an engine thread is
// suspended.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/debugger/DebuggerFramework.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/EntityStacks.h>
#include <nox/utils/debugger/FrameworkMutex.h>
#include <nox/utils/debugger/RequestRegistry.h>
#include <nox/utils/debugger/Status.h>
#include <nox/utils/debugger/impl/EngineTable.h>

#include <atomic>

namespace nox::utils {
class AbstractLogger;
class AbstractObjectBuilder;
class DynamicObject;
class StringTable;
}  // namespace nox::utils

namespace nox::utils::debugger {
class AbstractEngine;
class AbstractEventRequestVisitor;
}  // namespace nox::utils::debugger

namespace nox::utils::debugger::impl {

class NOX_UTILS_API InspectionFrameworkImpl {
 public:
  using EventFilterCreatorFactory = EngineDebuggerFacade::EventFilterCreatorFactory;
  using SteppingState = EntityStacks::SteppingState;

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
  FrameworkMutex& getMutex() { return mutex_; }
  RequestRegistry& getRequestRegistry() { return registry_; }
  EngineDebuggerFacade& getFacade() { return facade_; }
  DebuggerFramework& getDebugger() { return debugger_; }
  ExecutionController& getExecutionController() { return stacks_.getExecutionController(); }
  EventFilterCreatorFactory& getEventFilterCreatorFactory() { return filterCreators_; }
  EntityStacks& getEntityStacks() { return stacks_; }
  // The stop conditions; the caller holds the framework mutex.
  SteppingState& getSteppingState() { return stacks_.getSteppingState(); }
  // How many requests the registry may hold before clients' subscriptions are refused:
  // each one costs every event of every engine a little.
  unsigned int getSubscriptionLimit() const { return subscriptionLimit_; }
  void setSubscriptionLimit(unsigned int limit) { subscriptionLimit_ = limit; }

  // ---- Engines. Registration attaches the engine to the facade.

  bool registerEngine(AbstractEngine& engine, AbstractLogger* logger);
  void unregisterEngine(const char* path, AbstractLogger* logger);
  // Null when no engine is registered under that path.
  AbstractEngine* findEngine(const char* path, unsigned int length) const { return engines_.find(path, length); }
  void enableEngine(const char* path, AbstractLogger* logger) { engines_.enable(path, logger); }
  void disableEngine(const char* path, AbstractLogger* logger) { engines_.disable(path, logger); }
  bool isEngineEnabled(const char* path, AbstractLogger* logger) const { return engines_.isEnabled(path, logger); }
  void enableAllEngines() { engines_.enableAll(); }
  void disableAllEngines() { engines_.disableAll(); }
  // Calls `visit(const AbstractEngine&)` for each registered engine, in registration
  // order, under the framework mutex.
  template <class Visit>
  void visitEngines(Visit visit) const {
    engines_.visit([&visit](const AbstractEngine& engine) { visit(engine); });
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

  // ---- Entities and contexts: see EntityStacks.

  unsigned int countEntities() const { return stacks_.countEntities(); }
  Vector<unsigned int> getEntities() const { return stacks_.getEntities(); }
  bool isEntityRegistered(unsigned int entity) const { return stacks_.isEntityRegistered(entity); }
  unsigned int countContexts(unsigned int entity) const { return stacks_.countContexts(entity); }

  // Visits the request registry under the framework mutex.
  void accept(AbstractEventRequestVisitor& visitor) { stacks_.acceptRequests(visitor); }

 private:
  template <class Call>
  resources::Status dispatch(const char* path, unsigned int length, Call call);

  RequestRegistry registry_;
  StringTable& strings_;
  AbstractLogger* logger_;
  mutable FrameworkMutex mutex_;
  EngineTable engines_;
  EntityStacks stacks_;
  EventFilterCreatorFactory filterCreators_;
  EngineDebuggerFacade facade_;
  DebuggerFramework debugger_;
  std::atomic<unsigned int> subscriptionLimit_{1000};
};

}  // namespace nox::utils::debugger::impl
