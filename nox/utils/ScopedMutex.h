// Holds a Mutex for the lifetime of a scope; a failed lock or unlock is an assertion.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/Mutex.h>

namespace nox::utils {

class NOX_UTILS_API ScopedMutex {
 public:
  explicit ScopedMutex(Mutex& mutex);
  ~ScopedMutex();

  ScopedMutex(const ScopedMutex&) = delete;
  ScopedMutex& operator=(const ScopedMutex&) = delete;

 private:
  Mutex& mutex_;
  bool locked_;
};

}  // namespace nox::utils
