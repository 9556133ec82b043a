#include <nox/utils/debugger/impl/EngineTable.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/details/TextLength.h>

#include <algorithm>
#include <cstring>

namespace nox::utils::debugger::impl {

std::uint64_t EngineTable::add(AbstractEngine& engine, AbstractLogger* logger) {
  const char* path = engine.getPath();
  FrameworkMutex::ScopedLocker lock(mutex_);
  const std::uint64_t hash = strings_.add(path, logger);
  if (hash == 0) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "Unable to hash the given engine's path: " << path);
    return 0;
  }
  if (!engines_.emplace(hash, &engine).second) {
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "There is already a registered engine having path '" << strings_.retrieve(hash, "unknown") << "'.");
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "An engine having the same path (" << path << ") was already registered.");
    return 0;
  }
  registrationOrder_.push_back(&engine);
  return hash;
}

AbstractEngine* EngineTable::remove(const char* path, AbstractLogger* logger, std::uint64_t& hash) {
  FrameworkMutex::ScopedLocker lock(mutex_);
  hash = murmurHash64B(path, details::textLength(path), strings_.getSeed());
  auto found = engines_.find(hash);
  if (found == engines_.end() || std::strcmp(found->second->getPath(), path) != 0) {
    NOX_LOG_WARNING(logger, "No registered engine having path '" << strings_.retrieve(hash, "unknown") << "'.");
    NOX_LOG_WARNING(logger, "No register engine having the path " << path << ", ignoring the unregistration.");
    return nullptr;
  }
  AbstractEngine* engine = found->second;
  registrationOrder_.erase(std::find(registrationOrder_.begin(), registrationOrder_.end(), engine));
  engines_.erase(found);
  return engine;
}

AbstractEngine* EngineTable::find(const char* path, unsigned int length) const {
  if (path == nullptr) return nullptr;
  FrameworkMutex::ScopedLocker lock(mutex_);
  auto found = engines_.find(murmurHash64B(path, length, strings_.getSeed()));
  if (found == engines_.end()) return nullptr;
  // Guards against a hash collision with an unregistered text.
  const char* enginePath = found->second->getPath();
  return std::strlen(enginePath) == length && std::strncmp(enginePath, path, length) == 0 ? found->second : nullptr;
}

AbstractEngine* EngineTable::findForCall(const char* path, AbstractLogger* logger, const char* consequence) const {
  if (path == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "The given path is NULL.");
    return nullptr;
  }
  AbstractEngine* engine = find(path, details::textLength(path));
  if (engine == nullptr) NOX_LOG_WARNING(logger, "No register engine having the path " << path << ", " << consequence);
  return engine;
}

void EngineTable::enable(const char* path, AbstractLogger* logger) {
  FrameworkMutex::ScopedLocker lock(mutex_);
  if (AbstractEngine* engine = findForCall(path, logger, "ignoring the enabling.")) engine->enable();
}

void EngineTable::disable(const char* path, AbstractLogger* logger) {
  FrameworkMutex::ScopedLocker lock(mutex_);
  if (AbstractEngine* engine = findForCall(path, logger, "ignoring the disabling.")) engine->disable();
}

bool EngineTable::isEnabled(const char* path, AbstractLogger* logger) const {
  FrameworkMutex::ScopedLocker lock(mutex_);
  const AbstractEngine* engine = findForCall(path, logger, "considering it disabled.");
  return engine != nullptr && engine->isEnabled();
}

void EngineTable::enableAll() {
  visit([](AbstractEngine& engine) { engine.enable(); });
}

void EngineTable::disableAll() {
  visit([](AbstractEngine& engine) { engine.disable(); });
}

}  // namespace nox::utils::debugger::impl
