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

  bool lock(AbstractLogger* logger);
  // A mutex held elsewhere is reported as EBUSY on `logger`: pollers pass null.
  bool trylock(AbstractLogger* logger);
  bool unlock(AbstractLogger* logger);

 private:
  friend class Condition;

  pthread_mutexattr_t attributes_;
  pthread_mutex_t mutex_;
  // A failed initialisation leaves nothing to destroy.
  bool attributesInitialised_;
};

}  // namespace nox::utils
