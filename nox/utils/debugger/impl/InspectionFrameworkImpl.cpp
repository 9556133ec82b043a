#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/PathCursor.h>
#include <nox/utils/ScopedMutex.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/AbstractContextVisitor.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/EntitiesFilter.h>
#include <nox/utils/debugger/EntityRegistrationRequestVisitor.h>
#include <nox/utils/debugger/EntityUnregistrationRequestVisitor.h>
#include <nox/utils/debugger/HitCountFilter.h>
#include <nox/utils/debugger/LocationFilter.h>
#include <nox/utils/debugger/TargetSuspendRequestVisitor.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace nox::utils::debugger::impl {
namespace {

// "entities": an array of entity ids.
class EntitiesFilterCreator : public AbstractEventFilterCreator {
 public:
  type::Type getValueType() const override { return type::array; }
  AbstractEventFilter* create(const DynamicObject& data, unsigned int property, AbstractLogger*) const override {
    if (data.getType(property) != type::array) return nullptr;
    Vector<unsigned int> entities;
    for (unsigned int i = 0, count = data.countChildren(property); i < count; ++i) {
      const unsigned int element = data.getChild(property, i);
      if (data.getType(element) != type::integer) return nullptr;
      const std::int64_t entity = data.getInt(element);
      if (entity < 0 || entity > std::numeric_limits<unsigned int>::max()) return nullptr;
      entities.push_back(static_cast<unsigned int>(entity));
    }
    return NOX_NEW EntitiesFilter(entities.data(), static_cast<unsigned int>(entities.size()));
  }
};

// "location": the text of a Uri.
class LocationFilterCreator : public AbstractEventFilterCreator {
 public:
  type::Type getValueType() const override { return type::string; }
  AbstractEventFilter* create(const DynamicObject& data, unsigned int property, AbstractLogger* logger) const override {
    if (data.getType(property) != type::string) return nullptr;
    Uri location;
    if (!location.set(data.getString(property), logger)) return nullptr;
    return NOX_NEW LocationFilter(location);
  }
};

// "hitcount": the count of a filter that passes from that hit on.
class HitCountFilterCreator : public AbstractEventFilterCreator {
 public:
  type::Type getValueType() const override { return type::integer; }
  AbstractEventFilter* create(const DynamicObject& data, unsigned int property, AbstractLogger*) const override {
    if (data.getType(property) != type::integer) return nullptr;
    const std::int64_t count = data.getInt(property);
    if (count < std::numeric_limits<std::int32_t>::min() || count > std::numeric_limits<std::int32_t>::max()) {
      return nullptr;
    }
    return NOX_NEW HitCountFilter(static_cast<std::int32_t>(count), HitCountFilter::atLeast);
  }
};

const char* const debuggerPath = "debug";

}  // namespace

void InspectionFrameworkImpl::SteppingState::reset() {
  suspendAll = false;
  entitiesToSuspend.clear();
  stepOutTarget = nullptr;
  stepOverTarget = nullptr;
  targetEntity = invalidEntity;
}

InspectionFrameworkImpl::InspectionFrameworkImpl(StringTable& strings, AbstractLogger* logger)
    : strings_(strings),
      logger_(logger),
      mutex_(Mutex::Recursive),
      facade_(*this),
      debugger_(*this),
      controller_(debugger_.getExecutionController()) {
  filterCreators_.registerCreator("entities", NOX_NEW EntitiesFilterCreator(), logger);
  filterCreators_.registerCreator("location", NOX_NEW LocationFilterCreator(), logger);
  filterCreators_.registerCreator("hitcount", NOX_NEW HitCountFilterCreator(), logger);
  registerEngine(debugger_, logger);
}

InspectionFrameworkImpl::~InspectionFrameworkImpl() {
  // Engines still registered are left alone: they may already be gone.
  unregisterEngine(debuggerPath, logger_);
  const bool contextsLeft =
      std::any_of(stacks_.begin(), stacks_.end(), [](const auto& entry) { return !entry.second.empty(); });
  if (contextsLeft) {
    NOX_LOG_ERROR(logger_, error::invalidOperation, "There is a mismatch number of push/pop contexts.");
    NOX_LOG_ERROR(logger_, error::invalidOperation, "Not all contexts have been removed.");
  }
}

// ---- Engines.

bool InspectionFrameworkImpl::registerEngine(AbstractEngine& engine, AbstractLogger* logger) {
  const char* path = engine.getPath();
  if (path == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given engine returns a NULL path.");
    return false;
  }
  ScopedMutex lock(mutex_);
  const std::uint64_t hash = strings_.add(path, logger);
  if (hash == 0) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "Unable to hash the given engine's path: " << path);
    return false;
  }
  if (!engines_.emplace(hash, &engine).second) {
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "There is already a registered engine having path '" << strings_.retrieve(hash, "unknown") << "'.");
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "An engine having the same path (" << path << ") was already registered.");
    return false;
  }
  registrationOrder_.push_back(&engine);
  invalidatedEngines_.erase(hash);
  engine.attach(&facade_);
  return true;
}

void InspectionFrameworkImpl::unregisterEngine(const char* path, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given path is NULL.");
    return;
  }
  ScopedMutex lock(mutex_);
  const std::uint64_t hash = murmurHash64B(path, static_cast<unsigned int>(std::strlen(path)), strings_.getSeed());
  auto found = engines_.find(hash);
  if (found == engines_.end() || std::strcmp(found->second->getPath(), path) != 0) {
    NOX_LOG_WARNING(logger, "No registered engine having path '" << strings_.retrieve(hash, "unknown") << "'.");
    NOX_LOG_WARNING(logger, "No register engine having the path " << path << ", ignoring the unregistration.");
    return;
  }
  found->second->attach(nullptr);
  registrationOrder_.erase(std::find(registrationOrder_.begin(), registrationOrder_.end(), found->second));
  engines_.erase(found);
  invalidatedEngines_.erase(hash);
}

AbstractEngine* InspectionFrameworkImpl::findEngine(const char* path, unsigned int length) const {
  if (path == nullptr) return nullptr;
  ScopedMutex lock(mutex_);
  auto found = engines_.find(murmurHash64B(path, length, strings_.getSeed()));
  if (found == engines_.end()) return nullptr;
  // Guards against a hash collision with an unregistered text.
  const char* enginePath = found->second->getPath();
  return std::strlen(enginePath) == length && std::strncmp(enginePath, path, length) == 0 ? found->second : nullptr;
}

void InspectionFrameworkImpl::enableEngine(const char* path, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given path is NULL.");
    return;
  }
  ScopedMutex lock(mutex_);
  if (AbstractEngine* engine = findEngine(path, static_cast<unsigned int>(std::strlen(path)))) {
    engine->enable();
  } else {
    NOX_LOG_WARNING(logger, "No register engine having the path " << path << ", ignoring the enabling.");
  }
}

void InspectionFrameworkImpl::disableEngine(const char* path, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given path is NULL.");
    return;
  }
  ScopedMutex lock(mutex_);
  if (AbstractEngine* engine = findEngine(path, static_cast<unsigned int>(std::strlen(path)))) {
    engine->disable();
  } else {
    NOX_LOG_WARNING(logger, "No register engine having the path " << path << ", ignoring the disabling.");
  }
}

bool InspectionFrameworkImpl::isEngineEnabled(const char* path, AbstractLogger* logger) const {
  if (path == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given path is NULL.");
    return false;
  }
  ScopedMutex lock(mutex_);
  if (const AbstractEngine* engine = findEngine(path, static_cast<unsigned int>(std::strlen(path)))) {
    return engine->isEnabled();
  }
  NOX_LOG_WARNING(logger, "No register engine having the path " << path << ", considering it disabled.");
  return false;
}

void InspectionFrameworkImpl::enableAllEngines() {
  ScopedMutex lock(mutex_);
  for (AbstractEngine* engine : registrationOrder_) engine->enable();
}

void InspectionFrameworkImpl::disableAllEngines() {
  ScopedMutex lock(mutex_);
  for (AbstractEngine* engine : registrationOrder_) engine->disable();
}

// ---- Resources.

template <class Call>
resources::Status InspectionFrameworkImpl::dispatch(const char* path, unsigned int length, Call call) {
  ScopedMutex lock(mutex_);
  PathCursor cursor(path, length);
  if (!cursor.next()) return resources::unknown;
  AbstractEngine* engine = findEngine(cursor.segment().data(), static_cast<unsigned int>(cursor.segment().size()));
  return engine != nullptr ? call(*engine, cursor.rest(), cursor.restLength()) : resources::unknown;
}

resources::Status InspectionFrameworkImpl::retrieveResource(const char* path, unsigned int length,
                                                            const DynamicObject& parameters,
                                                            AbstractObjectBuilder& reply) {
  return dispatch(path, length, [&](AbstractEngine& engine, const char* rest, unsigned int restLength) {
    return engine.retrieveResource(rest, restLength, parameters, reply);
  });
}

resources::Status InspectionFrameworkImpl::createResource(const char* path, unsigned int length,
                                                          const DynamicObject& request, AbstractObjectBuilder& reply) {
  return dispatch(path, length, [&](AbstractEngine& engine, const char* rest, unsigned int restLength) {
    return engine.createResource(rest, restLength, request, reply);
  });
}

resources::Status InspectionFrameworkImpl::deleteResource(const char* path, unsigned int length,
                                                          const DynamicObject& parameters,
                                                          AbstractObjectBuilder& reply) {
  return dispatch(path, length, [&](AbstractEngine& engine, const char* rest, unsigned int restLength) {
    return engine.deleteResource(rest, restLength, parameters, reply);
  });
}

bool InspectionFrameworkImpl::unsubscribe(unsigned int handle) {
  ScopedMutex lock(mutex_);
  return registry_.unsubscribe(handle);
}

void InspectionFrameworkImpl::unsubscribeAll() {
  ScopedMutex lock(mutex_);
  registry_.unsubscribeAll();
}

// ---- Entities.

void InspectionFrameworkImpl::registerEntities(const unsigned int* entities, unsigned int count) {
  ScopedMutex lock(mutex_);
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

void InspectionFrameworkImpl::unregisterEntities(const unsigned int* entities, unsigned int count) {
  ScopedMutex lock(mutex_);
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

unsigned int InspectionFrameworkImpl::countEntities() const {
  ScopedMutex lock(mutex_);
  return static_cast<unsigned int>(entities_.size());
}

Vector<unsigned int> InspectionFrameworkImpl::getEntities() const {
  ScopedMutex lock(mutex_);
  return entities_;
}

bool InspectionFrameworkImpl::isEntityRegistered(unsigned int entity) const {
  ScopedMutex lock(mutex_);
  return findStack(entity) != nullptr;
}

// ---- Contexts.

InspectionFrameworkImpl::Stack* InspectionFrameworkImpl::lookUpStack(unsigned int entity) {
  auto found = stacks_.find(entity);
  if (found == stacks_.end()) return nullptr;
  cachedEntity_ = entity;
  cachedStack_ = &found->second;
  return cachedStack_;
}

const InspectionFrameworkImpl::Stack* InspectionFrameworkImpl::findStack(unsigned int entity) const {
  auto found = stacks_.find(entity);
  return found != stacks_.end() ? &found->second : nullptr;
}

void InspectionFrameworkImpl::pushContext(AbstractEngine& engine, unsigned int entity,
                                          AbstractContextFactory& factory) {
  bool stop = false;
  {
    ScopedMutex lock(mutex_);
    Stack* stack = findStack(entity);
    if (stack == nullptr) {
      NOX_FAIL("Entity '" << entity << "' is not registered on the debugger.");
      return;
    }
    AbstractContext* context = factory.createContext();
    if (context == nullptr) {
      NOX_FAIL("The context factory of entity '" << entity << "' made no context.");
      return;
    }
    stack->emplace_back(context, &engine);
    stop = stepping_.hasStopCondition() && prepareStop(engine, entity, context);
  }
  if (stop) stopAfterStep();
}

AbstractContext* InspectionFrameworkImpl::popContext(AbstractEngine& engine, unsigned int entity) {
  AbstractContext* popped = nullptr;
  bool stop = false;
  {
    ScopedMutex lock(mutex_);
    Stack* stack = findStack(entity);
    if (stack == nullptr || stack->empty() || stack->back().engine != &engine) {
      // An invalidated engine unwinds frames the debugger already dropped.
      if (isInvalidated(engine)) return nullptr;
      if (stack == nullptr || stack->empty()) {
        NOX_FAIL("Cannot pop context on a empty stack frames for entity '" << entity << "'.");
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

AbstractContext* InspectionFrameworkImpl::topContext(unsigned int entity, AbstractLogger* logger) const {
  ScopedMutex lock(mutex_);
  const Stack* stack = findStack(entity);
  if (stack == nullptr || stack->empty()) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "There is no context for entity '" << entity << "'.");
    return nullptr;
  }
  return stack->back().context;
}

AbstractContext* InspectionFrameworkImpl::getContext(unsigned int entity, unsigned int index,
                                                     AbstractLogger* logger) const {
  ScopedMutex lock(mutex_);
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

unsigned int InspectionFrameworkImpl::countContexts(unsigned int entity) const {
  ScopedMutex lock(mutex_);
  const Stack* stack = findStack(entity);
  return stack != nullptr ? static_cast<unsigned int>(stack->size()) : 0;
}

void InspectionFrameworkImpl::visitContexts(unsigned int entity, AbstractContextVisitor& visitor) const {
  ScopedMutex lock(mutex_);
  const Stack* stack = findStack(entity);
  if (stack == nullptr) return;
  for (const Frame& frame : *stack) visitor.visit(*frame.context);
}

void InspectionFrameworkImpl::invalidateContexts(AbstractEngine& engine) {
  ScopedMutex lock(mutex_);
  for (auto& entry : stacks_) {
    Stack& stack = entry.second;
    for (const Frame& frame : stack) {
      if (frame.engine == &engine) forgetTarget(frame.context);
    }
    stack.erase(
        std::remove_if(stack.begin(), stack.end(), [&engine](const Frame& frame) { return frame.engine == &engine; }),
        stack.end());
  }
  if (const char* path = engine.getPath()) {
    invalidatedEngines_.insert(murmurHash64B(path, static_cast<unsigned int>(std::strlen(path)), strings_.getSeed()));
  }
}

void InspectionFrameworkImpl::accept(AbstractEventRequestVisitor& visitor) {
  ScopedMutex lock(mutex_);
  registry_.accept(visitor);
}

// ---- Step check.

bool InspectionFrameworkImpl::isInvalidated(const AbstractEngine& engine) const {
  if (invalidatedEngines_.empty()) return false;
  const char* path = engine.getPath();
  return path != nullptr && invalidatedEngines_.count(murmurHash64B(path, static_cast<unsigned int>(std::strlen(path)),
                                                                    strings_.getSeed())) != 0;
}

bool InspectionFrameworkImpl::prepareStop(const AbstractEngine& engine, unsigned int entity,
                                          const AbstractContext* context) {
  if (!debugger_.isEnabled() || isInvalidated(engine)) return false;
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

void InspectionFrameworkImpl::stopAfterStep() { controller_.suspendWithControlsLocked(); }

void InspectionFrameworkImpl::forgetTarget(const AbstractContext* context) {
  if (context == stepping_.stepOutTarget) stepping_.stepOutTarget = nullptr;
  if (context == stepping_.stepOverTarget) stepping_.stepOverTarget = nullptr;
}

}  // namespace nox::utils::debugger::impl
