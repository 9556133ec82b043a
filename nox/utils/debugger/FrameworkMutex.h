// The inspection framework's recursive mutex, with a side entrance for the engine
// thread. Engines push and pop a context at every step, nearly always while nobody is
// debugging; locking a mutex twice per step would cost them more than the step itself,
// since each lock and unlock is a locked instruction that drains the store buffer. One
// thread, the step thread, may instead enter *alone*: with plain stores and loads, when
// no other thread holds the mutex or waits for it. It then touches what the mutex
// guards without taking it, so everything the mutex guards must be reached through
// lock() (or ScopedLocker) or the alone entrance, never through a bare mutex.
//
// Exclusion: the step thread raises its alone flag, then looks at the count of lockers;
// a locker counts itself, then waits until the flag is down. Each side stores, then
// loads the other's word, which needs a full barrier between the two. The step thread
// only stops the compiler from reordering them; a locker forces the barrier onto every
// running thread of the process at once (an expedited membarrier), so that it is paid
// by the rare locker rather than at every step. Where the kernel offers no such
// barrier, the step thread raises its flag with an exchange instead.
//
// Lockers that come often (a client polling over HTTP) would each pay that barrier, a
// system call that interrupts the other cores. So the first one *revokes* the alone
// entrance once its barrier is done: while revoked, the step thread locks like everyone
// else and lockers pay nothing more. The step thread restores the entrance, under the
// lock, after stepsToRestore locked steps. The revocation is a bit of the lockers' word,
// so that the step thread reads both in one load, and every change of that word is a
// read-modify-write: a locker that finds the bit set skips the barrier safely, since
// the bit is set only after a completed barrier, and the step thread, reading the
// word, synchronises with the last change before it.
//
// The step thread is the first thread that takes stepsToClaim steps in a row under the
// lock; it stays so for the mutex's lifetime (or a thread that later reuses its
// control block, which cannot overlap it). Only it ever writes the alone flag, which
// is what makes plain stores enough: other threads' steps always lock. A step thread
// that calls back into lock() while alone (a context factory reading the framework) is
// let through without waiting for itself; no other thread can hold the mutex meanwhile.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/Mutex.h>

#include <atomic>
#include <mutex>

namespace nox::utils::debugger {

class NOX_UTILS_API FrameworkMutex {
 public:
  // Holds the mutex for its lifetime.
  using ScopedLocker = std::lock_guard<FrameworkMutex>;

  static constexpr unsigned int stepsToClaim = 64;
  static constexpr unsigned int stepsToRestore = 1024;

  FrameworkMutex();

  FrameworkMutex(const FrameworkMutex&) = delete;
  FrameworkMutex& operator=(const FrameworkMutex&) = delete;

  // Recursive. A failure of the underlying mutex is an assertion, as for ScopedMutex.
  void lock();
  void unlock();

  // Enters alone, never waiting: false unless the caller is the step thread, not in
  // already, and no other thread holds the mutex or waits for it. On false the caller
  // locks instead.
  bool tryLockAlone() {
    if (stepThread_.load(std::memory_order_relaxed) != currentThread()) return false;
    if (alone_.load(std::memory_order_relaxed)) return false;
    if (asymmetricFences_) {
      alone_.store(true, std::memory_order_relaxed);
      std::atomic_signal_fence(std::memory_order_seq_cst);
    } else {
      alone_.exchange(true);
    }
    if (lockers_.load() == 0) return true;
    alone_.store(false, std::memory_order_release);
    return false;
  }
  void unlockAlone() { alone_.store(false, std::memory_order_release); }
  // Called under the lock by a step that could not enter alone: counts towards making
  // the caller the step thread, or towards restoring a revoked alone entrance.
  void noteLockedStep();

 private:
  // Tells live threads apart: the thread pointer, one register read, where the
  // compiler offers it; otherwise the address of a thread-local object.
  static const void* currentThread() {
#if defined(__x86_64__) || defined(__aarch64__)
    return __builtin_thread_pointer();
#else
    return currentThreadMarker();
#endif
  }
  static const void* currentThreadMarker();
  // Waits until the step thread, unless it is the caller, is no longer alone.
  void awaitStepThreadOutside() const;

  Mutex mutex_{Mutex::Recursive};
  const bool asymmetricFences_;
  // Set by a locker after its barrier; cleared by the step thread under the lock.
  static constexpr unsigned int revokedBit = 1u << 31;
  // Threads holding or waiting for the mutex, and the revocation bit.
  std::atomic<unsigned int> lockers_{0};
  std::atomic<bool> alone_{false};
  // Written once, under the lock; null until claimed.
  std::atomic<const void*> stepThread_{nullptr};
  // Under the lock: the thread that took the last locked steps, and how many in a row
  // (before the claim); then the step thread's locked steps since the revocation.
  const void* streakThread_ = nullptr;
  unsigned int streak_ = 0;
};

}  // namespace nox::utils::debugger
