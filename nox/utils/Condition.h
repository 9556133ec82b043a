// A POSIX condition variable waited on with a Mutex.
#pragma once

#include <nox/utils/Export.h>

#include <pthread.h>

namespace nox::utils {

class Mutex;

class NOX_UTILS_API Condition {
 public:
  Condition();
  ~Condition();

  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  // Each returns whether the POSIX call succeeded; failures are not reported.
  bool wait(Mutex& mutex);
  bool signal();
  bool broadcast();

 private:
  pthread_cond_t condition_;
};

}  // namespace nox::utils
