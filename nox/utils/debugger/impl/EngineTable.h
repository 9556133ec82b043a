// The engines registered with the inspection framework: found by path, through the hash
// of the path in the string table (the text is compared too, against collisions with
// unregistered texts), and listed in the order they were registered, which is how
// clients see them. Every member runs under the framework mutex given at construction.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/debugger/FrameworkMutex.h>

#include <cstdint>

namespace nox::utils {
class AbstractLogger;
class StringTable;
}  // namespace nox::utils

namespace nox::utils::debugger {
class AbstractEngine;
}

namespace nox::utils::debugger::impl {

class NOX_UTILS_API EngineTable {
 public:
  // `strings` hashes the paths and must outlive the table.
  EngineTable(FrameworkMutex& frameworkMutex, StringTable& strings) : mutex_(frameworkMutex), strings_(strings) {}

  // The hash of the engine's path; 0, reported on `logger`, when the path is taken or
  // cannot be hashed.
  std::uint64_t add(AbstractEngine& engine, AbstractLogger* logger);
  // The engine removed, and the hash of its path; null (with a warning) when none has
  // that path.
  AbstractEngine* remove(const char* path, AbstractLogger* logger, std::uint64_t& hash);
  // Null when no engine is registered under that path.
  AbstractEngine* find(const char* path, unsigned int length) const;

  // Each reports a missing engine as a warning on `logger`.
  void enable(const char* path, AbstractLogger* logger);
  void disable(const char* path, AbstractLogger* logger);
  bool isEnabled(const char* path, AbstractLogger* logger) const;
  void enableAll();
  void disableAll();

  // Calls `visit(AbstractEngine&)` for each engine, in registration order.
  template <class Visit>
  void visit(Visit visit) const {
    FrameworkMutex::ScopedLocker lock(mutex_);
    for (AbstractEngine* engine : registrationOrder_) visit(*engine);
  }

 private:
  // The engine named by the NUL-terminated `path`; null after an error (no path) or a
  // warning (no such engine) that ends with `consequence`.
  AbstractEngine* findForCall(const char* path, AbstractLogger* logger, const char* consequence) const;

  FrameworkMutex& mutex_;
  StringTable& strings_;
  Map<std::uint64_t, AbstractEngine*> engines_;
  Vector<AbstractEngine*> registrationOrder_;
};

}  // namespace nox::utils::debugger::impl
