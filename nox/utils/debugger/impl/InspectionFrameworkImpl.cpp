#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/PathCursor.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/impl/EventFilterCreators.h>

namespace nox::utils::debugger::impl {
namespace {

const char* const debuggerPath = "debug";

}  // namespace

InspectionFrameworkImpl::InspectionFrameworkImpl(StringTable& strings, AbstractLogger* logger)
    : strings_(strings),
      logger_(logger),
      engines_(mutex_, strings),
      stacks_(mutex_, registry_, strings),
      facade_(stacks_, debugger_, filterCreators_, logger_),
      debugger_(stacks_) {
  registerBuiltInFilterCreators(filterCreators_, logger);
  registerEngine(debugger_, logger);
}

InspectionFrameworkImpl::~InspectionFrameworkImpl() {
  // Engines still registered are left alone: they may already be gone.
  unregisterEngine(debuggerPath, logger_);
  if (stacks_.hasContextsLeft()) {
    NOX_LOG_ERROR(logger_, error::invalidOperation, "There is a mismatch number of push/pop contexts.");
    NOX_LOG_ERROR(logger_, error::invalidOperation, "Not all contexts have been removed.");
  }
}

// ---- Engines.

bool InspectionFrameworkImpl::registerEngine(AbstractEngine& engine, AbstractLogger* logger) {
  if (engine.getPath() == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given engine returns a NULL path.");
    return false;
  }
  FrameworkMutex::ScopedLocker lock(mutex_);
  const std::uint64_t hash = engines_.add(engine, logger);
  if (hash == 0) return false;
  stacks_.forgetInvalidation(hash);
  engine.attach(&facade_);
  return true;
}

void InspectionFrameworkImpl::unregisterEngine(const char* path, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given path is NULL.");
    return;
  }
  FrameworkMutex::ScopedLocker lock(mutex_);
  std::uint64_t hash = 0;
  AbstractEngine* engine = engines_.remove(path, logger, hash);
  if (engine == nullptr) return;
  engine->attach(nullptr);
  stacks_.forgetInvalidation(hash);
}

// ---- Resources.

template <class Call>
resources::Status InspectionFrameworkImpl::dispatch(const char* path, unsigned int length, Call call) {
  FrameworkMutex::ScopedLocker lock(mutex_);
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
  FrameworkMutex::ScopedLocker lock(mutex_);
  return registry_.unsubscribe(handle);
}

void InspectionFrameworkImpl::unsubscribeAll() {
  FrameworkMutex::ScopedLocker lock(mutex_);
  registry_.unsubscribeAll();
}

}  // namespace nox::utils::debugger::impl
