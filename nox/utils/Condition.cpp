#include <nox/utils/Condition.h>

#include <nox/utils/Assertion.h>
#include <nox/utils/Mutex.h>

namespace nox::utils {

Condition::Condition() : condition_() {
  const int result = pthread_cond_init(&condition_, nullptr);
  NOX_ASSERT(result == 0, "Condition initialization failed");
  // Should the assertion handler return, carry on with a statically initialised
  // condition, which is as usable and as destroyable as a dynamic one.
  if (result != 0) condition_ = PTHREAD_COND_INITIALIZER;
}

Condition::~Condition() { pthread_cond_destroy(&condition_); }

bool Condition::wait(Mutex& mutex) { return pthread_cond_wait(&condition_, &mutex.mutex_) == 0; }

bool Condition::signal() { return pthread_cond_signal(&condition_) == 0; }

bool Condition::broadcast() { return pthread_cond_broadcast(&condition_) == 0; }

}  // namespace nox::utils
