#include <nox/utils/debugger/FrameworkMutex.h>

#include <nox/utils/Assertion.h>

#include <thread>

#if defined(__linux__)
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace nox::utils::debugger {
namespace {

// Registers the process for expedited barriers, once; false where the kernel (or a
// sandbox's system call filter) refuses.
bool registerAsymmetricFences() {
#if defined(__linux__) && defined(SYS_membarrier)
  static const bool registered = syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0;
  return registered;
#else
  return false;
#endif
}

// A full barrier on every running thread of the process, the caller's included.
void heavyFence() {
#if defined(__linux__) && defined(SYS_membarrier)
  if (syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) != 0) {
    NOX_FAIL("The process-wide memory barrier failed after its registration succeeded.");
  }
#endif
}

}  // namespace

const void* FrameworkMutex::currentThreadMarker() {
  static thread_local const char marker = 0;
  return &marker;
}

FrameworkMutex::FrameworkMutex() : asymmetricFences_(registerAsymmetricFences()) {}

void FrameworkMutex::lock() {
  const bool revoked = (lockers_.fetch_add(1) & revokedBit) != 0;
  // The step thread knows whether it is alone itself.
  if (asymmetricFences_ && !revoked && stepThread_.load(std::memory_order_relaxed) != currentThread()) {
    heavyFence();
    lockers_.fetch_or(revokedBit);
  }
  awaitStepThreadOutside();
  if (!mutex_.lock(nullptr)) NOX_FAIL("Failed to lock mutex, see log for details.");
}

void FrameworkMutex::unlock() {
  if (!mutex_.unlock(nullptr)) NOX_FAIL("Failed to unlock mutex, see log for details.");
  lockers_.fetch_sub(1, std::memory_order_release);
}

// The step thread stays alone for one push or pop: a short wait, spent yielding.
void FrameworkMutex::awaitStepThreadOutside() const {
  while (alone_.load() && stepThread_.load(std::memory_order_relaxed) != currentThread()) {
    std::this_thread::yield();
  }
}

void FrameworkMutex::noteLockedStep() {
  const void* const self = currentThread();
  const void* const stepThread = stepThread_.load(std::memory_order_relaxed);
  if (stepThread == nullptr) {
    streak_ = self == streakThread_ ? streak_ + 1 : 1;
    streakThread_ = self;
    if (streak_ < stepsToClaim) return;
    stepThread_.store(self, std::memory_order_relaxed);
    streak_ = 0;
    lockers_.fetch_and(~revokedBit);  // As a restoration does.
  } else if (stepThread == self && (lockers_.load(std::memory_order_relaxed) & revokedBit) != 0 &&
             ++streak_ >= stepsToRestore) {
    lockers_.fetch_and(~revokedBit);
    streak_ = 0;
  }
}

}  // namespace nox::utils::debugger
