#include <nox/utils/ScopedMutex.h>

#include <nox/utils/Assertion.h>

namespace nox::utils {

ScopedMutex::ScopedMutex(Mutex& mutex) : mutex_(mutex), locked_(mutex.lock(nullptr)) {
  NOX_ASSERT(locked_, "Failed to lock mutex, see log for details.");
}

ScopedMutex::~ScopedMutex() {
  // Unlocking a mutex this scope never got would release another owner's lock.
  if (!locked_) return;
  const bool unlocked = mutex_.unlock(nullptr);
  NOX_ASSERT(unlocked, "Failed to unlock mutex, see log for details.");
}

}  // namespace nox::utils
