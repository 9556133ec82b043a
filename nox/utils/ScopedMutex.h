// Holds a Mutex for the lifetime of a scope; a failed lock or unlock is an assertion.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/Mutex.h>

namespace nox::utils {

class NOX_UTILS_API ScopedMutex {
 public:
  explicit ScopedMutex(Mutex& mutex) : mutex_(mutex), locked_(mutex.lock(nullptr)) {
    if (!locked_) lockFailed();
  }
  ~ScopedMutex() {
    // Unlocking a mutex this scope never got would release another owner's lock.
    if (locked_ && !mutex_.unlock(nullptr)) unlockFailed();
  }

  ScopedMutex(const ScopedMutex&) = delete;
  ScopedMutex& operator=(const ScopedMutex&) = delete;

 private:
  static void lockFailed();
  static void unlockFailed();

  Mutex& mutex_;
  bool locked_;
};

}  // namespace nox::utils
