#include <nox/utils/debugger/EntityStacks.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/AbstractContextVisitor.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/EntityRegistrationRequestVisitor.h>
#include <nox/utils/debugger/EntityUnregistrationRequestVisitor.h>
#include <nox/utils/debugger/RequestRegistry.h>
#include <nox/utils/debugger/TargetSuspendRequestVisitor.h>
#include <nox/utils/details/TextLength.h>

#include <algorithm>

namespace nox::utils::debugger {

void EntityStacks::SteppingState::reset() {
  suspendAll = false;
  entitiesToSuspend.clear();
  stepOutTarget = nullptr;
  stepOverTarget = nullptr;
  targetEntity = invalidEntity;
}

EntityStacks::EntityStacks(FrameworkMutex& frameworkMutex, RequestRegistry& registry, const StringTable& strings)
    : mutex_(frameworkMutex), registry_(registry), strings_(strings) {}

// ---- Entities.

void EntityStacks::registerEntities(const unsigned int* entities, unsigned int count) {
  FrameworkMutex::ScopedLocker lock(mutex_);
  for (unsigned int i = 0; i < count; ++i) {
    const unsigned int entity = entities[i];
    if (entity == invalidEntity) {
      NOX_FAIL("The invalid entity " << entity << " cannot be registered.");
      continue;
    }
    if (!stacks_.emplace(entity, Stack()).second) continue;
    entities_.push_back(entity);
    EntityRegistrationRequestVisitor visitor(entity);
    registry_.accept(visitor);
  }
}

void EntityStacks::unregisterEntities(const unsigned int* entities, unsigned int count) {
  FrameworkMutex::ScopedLocker lock(mutex_);
  for (unsigned int i = 0; i < count; ++i) {
    const unsigned int entity = entities[i];
    auto found = stacks_.find(entity);
    if (found == stacks_.end()) continue;
    for (const Frame& frame : found->second) forgetTarget(frame.context);
    if (cachedStack_ == &found->second) {
      cachedEntity_ = invalidEntity;
      cachedStack_ = nullptr;
    }
    stacks_.erase(found);
    entities_.erase(std::find(entities_.begin(), entities_.end(), entity));
    stepping_.entitiesToSuspend.erase(entity);
    EntityUnregistrationRequestVisitor visitor(entity);
    registry_.accept(visitor);
  }
}

unsigned int EntityStacks::countEntities() const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  return static_cast<unsigned int>(entities_.size());
}

Vector<unsigned int> EntityStacks::getEntities() const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  return entities_;
}

bool EntityStacks::isEntityRegistered(unsigned int entity) const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  return findStack(entity) != nullptr;
}

// ---- Contexts.

EntityStacks::Stack* EntityStacks::lookUpStack(unsigned int entity) {
  auto found = stacks_.find(entity);
  if (found == stacks_.end()) return nullptr;
  cachedEntity_ = entity;
  cachedStack_ = &found->second;
  return cachedStack_;
}

// Broken contracts of a push or pop, kept out of line: the engine's every step pays for
// the frame of the function it runs, not for the message it never builds.
[[gnu::cold, gnu::noinline]] static void failUnregisteredPush(unsigned int entity) {
  NOX_FAIL("Entity '" << entity << "' is not registered on the debugger.");
}
[[gnu::cold, gnu::noinline]] static void failNoContextMade(unsigned int entity) {
  NOX_FAIL("The context factory of entity '" << entity << "' made no context.");
}
[[gnu::cold, gnu::noinline]] static void failEmptyPop(unsigned int entity) {
  NOX_FAIL("Cannot pop context on a empty stack frames for entity '" << entity << "'.");
}

const EntityStacks::Stack* EntityStacks::findStack(unsigned int entity) const {
  auto found = stacks_.find(entity);
  return found != stacks_.end() ? &found->second : nullptr;
}

// Holds the framework for one push or pop: alone when nobody else is in it and no stop
// condition is set, locked otherwise. Alone is as exclusive as locked: a stop condition
// that the context factory itself sets meanwhile is still decided on safely.
class EntityStacks::StepEntry {
 public:
  StepEntry(FrameworkMutex& mutex, const SteppingState& stepping) : mutex_(mutex), alone_(mutex.tryLockAlone()) {
    if (alone_ && stepping.hasStopCondition()) {
      mutex_.unlockAlone();
      alone_ = false;
    }
    if (alone_) return;
    mutex_.lock();
    mutex_.noteLockedStep();
  }
  ~StepEntry() { alone_ ? mutex_.unlockAlone() : mutex_.unlock(); }

  StepEntry(const StepEntry&) = delete;
  StepEntry& operator=(const StepEntry&) = delete;

 private:
  FrameworkMutex& mutex_;
  bool alone_;
};

void EntityStacks::pushContext(AbstractEngine& engine, unsigned int entity, AbstractContextFactory& factory) {
  bool stop = false;
  {
    StepEntry entry(mutex_, stepping_);
    Stack* stack = findStack(entity);
    if (stack == nullptr) {
      failUnregisteredPush(entity);
      return;
    }
    AbstractContext* context = factory.createContext();
    if (context == nullptr) {
      failNoContextMade(entity);
      return;
    }
    stack->emplace_back(context, &engine);
    stop = stepping_.hasStopCondition() && prepareStop(engine, entity, context);
  }
  if (stop) stopAfterStep();
}

AbstractContext* EntityStacks::popContext(AbstractEngine& engine, unsigned int entity) {
  AbstractContext* popped = nullptr;
  bool stop = false;
  {
    StepEntry entry(mutex_, stepping_);
    Stack* stack = findStack(entity);
    if (stack == nullptr || stack->empty() || stack->back().engine != &engine) {
      // An invalidated engine unwinds frames the debugger already dropped.
      if (isInvalidated(engine)) return nullptr;
      if (stack == nullptr || stack->empty()) {
        failEmptyPop(entity);
        return nullptr;
      }
    }
    popped = stack->back().context;
    stack->pop_back();
    AbstractContext* top = stack->empty() ? nullptr : stack->back().context;
    if (entity == stepping_.targetEntity) {
      // Stepping over a context that returns stops in its caller.
      if (popped == stepping_.stepOverTarget) stepping_.stepOverTarget = top;
      // The step-out target can only be popped after the stop it was set for.
      if (popped == stepping_.stepOutTarget) stepping_.stepOutTarget = nullptr;
    }
    stop = stepping_.hasStopCondition() && prepareStop(engine, entity, top);
  }
  if (stop) stopAfterStep();
  return popped;
}

AbstractContext* EntityStacks::topContext(unsigned int entity, AbstractLogger* logger) const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  const Stack* stack = findStack(entity);
  if (stack == nullptr || stack->empty()) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "There is no context for entity '" << entity << "'.");
    return nullptr;
  }
  return stack->back().context;
}

AbstractContext* EntityStacks::getContext(unsigned int entity, unsigned int index, AbstractLogger* logger) const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  const Stack* stack = findStack(entity);
  if (stack == nullptr || stack->empty()) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "There is no context for entity '" << entity << "'.");
    return nullptr;
  }
  if (index >= stack->size()) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "Index '" << index << "' is out of bound.");
    return nullptr;
  }
  return (*stack)[index].context;
}

unsigned int EntityStacks::countContexts(unsigned int entity) const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  const Stack* stack = findStack(entity);
  return stack != nullptr ? static_cast<unsigned int>(stack->size()) : 0;
}

void EntityStacks::visitContexts(unsigned int entity, AbstractContextVisitor& visitor) const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  const Stack* stack = findStack(entity);
  if (stack == nullptr) return;
  for (const Frame& frame : *stack) visitor.visit(*frame.context);
}

void EntityStacks::invalidateContexts(AbstractEngine& engine) {
  FrameworkMutex::ScopedLocker lock(mutex_);
  for (auto& entry : stacks_) {
    Stack& stack = entry.second;
    for (const Frame& frame : stack) {
      if (frame.engine == &engine) forgetTarget(frame.context);
    }
    stack.erase(
        std::remove_if(stack.begin(), stack.end(), [&engine](const Frame& frame) { return frame.engine == &engine; }),
        stack.end());
  }
  if (engine.getPath() != nullptr) invalidatedEngines_.insert(hashPath(engine));
}

void EntityStacks::forgetInvalidation(std::uint64_t pathHash) {
  FrameworkMutex::ScopedLocker lock(mutex_);
  invalidatedEngines_.erase(pathHash);
}

bool EntityStacks::hasContextsLeft() const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  return std::any_of(stacks_.begin(), stacks_.end(), [](const auto& entry) { return !entry.second.empty(); });
}

void EntityStacks::acceptRequests(AbstractEventRequestVisitor& visitor) {
  FrameworkMutex::ScopedLocker lock(mutex_);
  registry_.accept(visitor);
}

// ---- Step check.

std::uint64_t EntityStacks::hashPath(const AbstractEngine& engine) const {
  const char* path = engine.getPath();
  return path != nullptr ? murmurHash64B(path, details::textLength(path), strings_.getSeed()) : 0;
}

bool EntityStacks::isInvalidated(const AbstractEngine& engine) const {
  return !invalidatedEngines_.empty() && engine.getPath() != nullptr &&
         invalidatedEngines_.count(hashPath(engine)) != 0;
}

bool EntityStacks::prepareStop(const AbstractEngine& engine, unsigned int entity, const AbstractContext* context) {
  if (debugger_ == nullptr || !debugger_->isEnabled() || isInvalidated(engine)) return false;
  const bool reachedTarget = context != nullptr && entity == stepping_.targetEntity &&
                             (context == stepping_.stepOutTarget || context == stepping_.stepOverTarget);
  if (!stepping_.suspendAll && stepping_.entitiesToSuspend.count(entity) == 0 && !reachedTarget) return false;
  stepping_.suspendedEntity = entity;
  TargetSuspendRequestVisitor visitor(entity);
  registry_.accept(visitor);
  // Taken before the framework mutex is released, so that a command cannot slip in
  // between this decision and the suspension becoming visible.
  controller_.lock();
  return true;
}

void EntityStacks::stopAfterStep() { controller_.suspendWithControlsLocked(); }

void EntityStacks::forgetTarget(const AbstractContext* context) {
  if (context == stepping_.stepOutTarget) stepping_.stepOutTarget = nullptr;
  if (context == stepping_.stepOverTarget) stepping_.stepOverTarget = nullptr;
}

}  // namespace nox::utils::debugger
