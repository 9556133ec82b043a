// Holds the one instance of a process-wide service. Installing a second instance or
// reading it before one is installed are assertions. The pointer is not locked: the
// instance is installed and removed once, before and after all other use.
#pragma once

#include <nox/utils/Assertion.h>

namespace nox::utils {

template <class T>
class Singleton {
 public:
  static void set(T* instance) {
    NOX_ASSERT(instance_ == nullptr || instance == nullptr, "trying to overwrite singleton instance");
    instance_ = instance;
  }
  static T& get() {
    NOX_ASSERT(instance_ != nullptr, "accessing uninitialized singleton");
    return *instance_;
  }
  static bool isSet() { return instance_ != nullptr; }

 private:
  static inline T* instance_ = nullptr;
};

}  // namespace nox::utils
