// The debugger engine, registered under the path "debug": exposes the registered
// entities and their context stacks as resources, and runs the execution commands
// (suspend, resume, step in/over/out) on the framework's stepping state.
//
// Commands run on any thread other than the engine thread and never wait for the
// engine: they set stop conditions, which the engine thread meets at its next context
// push or pop (the step check), and wake it up. While the debugger engine is disabled,
// pushes and pops run no step check; disabling it also resumes execution, so it never
// leaves the engine thread blocked.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/ExecutionController.h>

#include <string_view>

namespace nox::utils {
class AbstractLogger;
class PathCursor;
}  // namespace nox::utils

namespace nox::utils::debugger {

class AbstractContext;
class EntityStacks;

class NOX_UTILS_API DebuggerFramework : public AbstractEngine {
 public:
  // Created enabled. Commands set the stop conditions of `stacks`, whose step check
  // stops the engine thread through its execution controller while this engine is
  // enabled; `stacks` must outlive the debugger.
  explicit DebuggerFramework(EntityStacks& stacks);
  ~DebuggerFramework() override;

  ExecutionController& getExecutionController() { return controller_; }

  unsigned int countEntities() const;
  // The registered entity ids, in registration order.
  Vector<unsigned int> getEntities() const;
  unsigned int countContexts(unsigned int entity) const;
  AbstractContext* getContext(unsigned int entity, unsigned int index, AbstractLogger* logger = nullptr) const;

  bool isSuspended() const;
  // The entity whose step caused the current suspension; invalidEntity when running.
  unsigned int getSuspendedEntity() const;

  // Every command first clears all stop conditions.
  // Stop at the next step of any entity; false when already suspended.
  bool suspend();
  // Stop at the next step of `entity`; false when already suspended or when the entity
  // is not registered.
  bool suspendEntity(unsigned int entity);
  // Whether execution was suspended; resumes in any case.
  bool resume();
  // The stepping commands are refused (false) while running.
  // Stop at the very next step of the suspended entity, at whatever depth.
  bool stepIn();
  // Stop when the entity is back in its current top context (or, if that context
  // returns, in the context below it). From an empty stack: a plain resume.
  bool stepOver();
  // Stop when the context below the current top is on top again. With fewer than two
  // contexts: a plain resume.
  bool stepOut();

  resources::Status retrieveResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                     AbstractObjectBuilder& reply) override;
  resources::Status createResource(const char* path, unsigned int length, const DynamicObject& request,
                                   AbstractObjectBuilder& reply) override;

 protected:
  void doDisable(bool& enabled) override;

 private:
  // Whether the engine thread is suspended, once any stop already decided has happened.
  bool isSuspendedSettled();
  // A stepping command: refused unless suspended; resets the stop conditions, lets
  // `setConditions` set the new ones under the framework mutex, then resumes.
  template <class SetConditions>
  bool resumeStepping(SetConditions setConditions);
  // The context `framesBelowTop` under the top of `entity`'s stack, or null.
  const AbstractContext* frameBelowTop(unsigned int entity, unsigned int framesBelowTop);
  resources::Status retrieveEntityResource(PathCursor& cursor, AbstractObjectBuilder& reply);
  bool writeContextList(unsigned int entity, AbstractObjectBuilder& reply) const;
  resources::Status runCommand(std::string_view command, const DynamicObject& request, AbstractObjectBuilder& reply);
  bool writeSuspension(AbstractObjectBuilder& reply);
  // The entity a suspend command's "entity" selects (left as is when there is none);
  // false when the member is there but holds no entity id.
  bool readSelectedEntity(const DynamicObject& request, unsigned int& entity) const;

  // Where warnings about clients' requests go: the framework's logger, once registered.
  AbstractLogger* getLogger() const;

  EntityStacks& stacks_;
  ExecutionController& controller_;
};

}  // namespace nox::utils::debugger
