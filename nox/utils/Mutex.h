// A strictly checked POSIX mutex, normal (non-recursive) or recursive. Every POSIX
// result is either a logged error with a fixed explanatory text or an assertion.
#pragma once

#include <nox/utils/Export.h>

#include <pthread.h>

namespace nox::utils {

class AbstractLogger;
class Condition;

class NOX_UTILS_API Mutex {
 public:
  enum Type { Normal = 0, Recursive = 1 };

  explicit Mutex(Type type = Normal);
  ~Mutex();

  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  // The success paths are inline: locks sit on hot paths (every context push and pop of
  // the debugger); reporting a failure is out of line.
  bool lock(AbstractLogger* logger) {
    const int code = pthread_mutex_lock(&mutex_);
    return code == 0 || lockFailed(code, logger);
  }
  // A mutex held elsewhere is reported as EBUSY on `logger`: pollers pass null.
  bool trylock(AbstractLogger* logger) {
    const int code = pthread_mutex_trylock(&mutex_);
    return code == 0 || trylockFailed(code, logger);
  }
  bool unlock(AbstractLogger* logger) {
    const int code = pthread_mutex_unlock(&mutex_);
    return code == 0 || unlockFailed(code, logger);
  }

 private:
  friend class Condition;

  // Each reports the non-zero `code` and returns false.
  static bool lockFailed(int code, AbstractLogger* logger);
  static bool trylockFailed(int code, AbstractLogger* logger);
  static bool unlockFailed(int code, AbstractLogger* logger);

  pthread_mutexattr_t attributes_;
  pthread_mutex_t mutex_;
  // A failed initialisation leaves nothing to destroy.
  bool attributesInitialised_;
};

}  // namespace nox::utils
