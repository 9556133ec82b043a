#include <nox/utils/BufferLogger.h>
#include <nox/utils/Condition.h>
#include <nox/utils/Mutex.h>
#include <nox/utils/ScopedMutex.h>
#include <nox/utils/Thread.h>
#include <nox/utils/Time.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/AssertionRecorder.h"

namespace {

using nox::utils::BufferLogger;
using nox::utils::Condition;
using nox::utils::Mutex;
using nox::utils::ScopedMutex;
using nox::utils::Thread;

// ThreadSanitizer reports misuse of a mutex (unlock by a non-owner, destruction while
// locked) even when the call fails cleanly, which is exactly what some cases provoke.
#if defined(__SANITIZE_THREAD__)
#define SKIP_MUTEX_MISUSE_UNDER_TSAN() GTEST_SKIP() << "deliberate mutex misuse is reported by TSan"
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define SKIP_MUTEX_MISUSE_UNDER_TSAN() GTEST_SKIP() << "deliberate mutex misuse is reported by TSan"
#endif
#endif
#ifndef SKIP_MUTEX_MISUSE_UNDER_TSAN
#define SKIP_MUTEX_MISUSE_UNDER_TSAN() static_cast<void>(0)
#endif

// A one-shot event between threads, built on the primitives under test.
class Event {
 public:
  void raise() {
    ScopedMutex lock(mutex_);
    raised_ = true;
    ASSERT_TRUE(condition_.signal());  // one waiter per event
  }
  void await() {
    ScopedMutex lock(mutex_);
    while (!raised_) ASSERT_TRUE(condition_.wait(mutex_));
  }

 private:
  Mutex mutex_;
  Condition condition_;
  bool raised_ = false;
};

void* toResult(bool value) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(value)); }
bool fromResult(void* result) { return reinterpret_cast<std::intptr_t>(result) != 0; }

// Runs trylock(nullptr) on another thread and releases the lock there if it was taken.
bool trylockElsewhere(Mutex& mutex) {
  Thread thread(
      [](void* argument) -> void* {
        Mutex& mutex = *static_cast<Mutex*>(argument);
        const bool locked = mutex.trylock(nullptr);
        if (locked) mutex.unlock(nullptr);
        return toResult(locked);
      },
      &mutex);
  void* result = nullptr;
  EXPECT_TRUE(thread.join(&result));
  return fromResult(result);
}

void expectSingleThreadError(const BufferLogger& logger, const std::string& text) {
  ASSERT_EQ(logger.getEntries().size(), 1u);
  const BufferLogger::Entry& entry = logger.getEntries()[0];
  EXPECT_EQ(entry.kind, 'e');
  EXPECT_EQ(entry.error, nox::utils::error::threadError);
  EXPECT_STREQ(entry.error.getCaption(), "thread problem");
  EXPECT_EQ(entry.message.c_str(), text);
}

TEST(ThreadingTest, TrylockOnMutexHeldByAnotherThreadFailsAndLogsOnlyWithLogger) {
  struct Shared {
    Mutex mutex;
    Event held;
    Event release;
  } shared;
  Thread holder(
      [](void* argument) -> void* {
        Shared& shared = *static_cast<Shared*>(argument);
        shared.mutex.lock(nullptr);
        shared.held.raise();
        shared.release.await();
        shared.mutex.unlock(nullptr);
        return nullptr;
      },
      &shared);
  shared.held.await();

  BufferLogger logger(true, true, true);
  EXPECT_FALSE(shared.mutex.trylock(nullptr));
  EXPECT_FALSE(shared.mutex.trylock(&logger));
  expectSingleThreadError(logger, "[EBUSY] The mutex it already locked.");

  shared.release.raise();
  ASSERT_TRUE(holder.join(nullptr));
  EXPECT_TRUE(shared.mutex.trylock(&logger));
  EXPECT_TRUE(shared.mutex.unlock(&logger));
  EXPECT_EQ(logger.getEntries().size(), 1u);
}

TEST(ThreadingTest, RecursiveMutexNeedsAsManyUnlocksAsLocks) {
  Mutex mutex(Mutex::Recursive);
  ASSERT_TRUE(mutex.lock(nullptr));
  ASSERT_TRUE(mutex.lock(nullptr));
  EXPECT_TRUE(mutex.trylock(nullptr));
  EXPECT_TRUE(mutex.unlock(nullptr));
  EXPECT_TRUE(mutex.unlock(nullptr));
  EXPECT_FALSE(trylockElsewhere(mutex));
  EXPECT_TRUE(mutex.unlock(nullptr));
  EXPECT_TRUE(trylockElsewhere(mutex));
}

TEST(ThreadingTest, UnlockByNonOwnerOfRecursiveMutexLogsEperm) {
  SKIP_MUTEX_MISUSE_UNDER_TSAN();
  struct Shared {
    Mutex mutex{Mutex::Recursive};
    BufferLogger logger{true, true, true};
  } shared;
  ASSERT_TRUE(shared.mutex.lock(nullptr));
  Thread intruder(
      [](void* argument) -> void* {
        Shared& shared = *static_cast<Shared*>(argument);
        return toResult(shared.mutex.unlock(&shared.logger));
      },
      &shared);
  void* unlocked = toResult(true);
  ASSERT_TRUE(intruder.join(&unlocked));
  EXPECT_FALSE(fromResult(unlocked));
  expectSingleThreadError(shared.logger, "[EPERM] The current thread does not own the mutex.");
  EXPECT_TRUE(shared.mutex.unlock(nullptr));
}

TEST(ThreadingTest, ScopedMutexHoldsForItsScopeAndAssertsWhenItCannotUnlock) {
  nox::test::AssertionRecorder recorder;
  Mutex mutex;
  {
    ScopedMutex lock(mutex);
    EXPECT_FALSE(trylockElsewhere(mutex));
  }
  EXPECT_TRUE(trylockElsewhere(mutex));
  EXPECT_EQ(recorder.count(), 0u);

  SKIP_MUTEX_MISUSE_UNDER_TSAN();
  Mutex recursive(Mutex::Recursive);
  {
    ScopedMutex lock(recursive);
    recursive.unlock(nullptr);
  }
  EXPECT_EQ(recorder.messages(), std::vector<std::string>{"Failed to unlock mutex, see log for details."});
}

TEST(ThreadingTest, DestroyingLockedMutexAsserts) {
  SKIP_MUTEX_MISUSE_UNDER_TSAN();
  nox::test::AssertionRecorder recorder;
  {
    Mutex mutex;
    mutex.lock(nullptr);
  }
  EXPECT_EQ(recorder.last(),
            "[EBUSY] The implementation has detected an attempt to destroy the object referenced by mutex while it is "
            "locked or referenced by another thread.");
}

TEST(ThreadingTest, BroadcastWakesEveryWaiter) {
  struct Shared {
    Mutex mutex;
    Condition changed;
    int waiting = 0;
    int woken = 0;
    bool go = false;
  } shared;
  auto waiter = [](void* argument) -> void* {
    Shared& shared = *static_cast<Shared*>(argument);
    ScopedMutex lock(shared.mutex);
    ++shared.waiting;
    shared.changed.broadcast();
    bool waited = true;
    while (!shared.go) waited &= shared.changed.wait(shared.mutex);
    ++shared.woken;
    return toResult(waited);
  };
  Thread threads[] = {{waiter, &shared}, {waiter, &shared}, {waiter, &shared}};
  {
    ScopedMutex lock(shared.mutex);
    while (shared.waiting < 3) ASSERT_TRUE(shared.changed.wait(shared.mutex));
    shared.go = true;
    EXPECT_TRUE(shared.changed.broadcast());
  }
  for (Thread& thread : threads) {
    void* waited = nullptr;
    ASSERT_TRUE(thread.join(&waited));
    EXPECT_TRUE(fromResult(waited));
  }
  EXPECT_EQ(shared.woken, 3);
}

TEST(ThreadingTest, JoinYieldsTheResultOnceAndExitGivesNull) {
  int value = 41;
  Thread returning(
      [](void* argument) -> void* {
        Thread::yield();
        ++*static_cast<int*>(argument);
        return argument;
      },
      &value);
  Thread exiting(
      [](void* argument) -> void* {
        Thread::exit();
        return argument;
      },
      &value);
  void* result = nullptr;
  ASSERT_TRUE(returning.join(&result));
  EXPECT_EQ(result, &value);
  EXPECT_EQ(value, 42);
  EXPECT_FALSE(returning.join(&result));
  EXPECT_FALSE(returning.cancel());
  ASSERT_TRUE(exiting.join(&result));
  EXPECT_EQ(result, nullptr);
}

TEST(ThreadingTest, CancelStopsThreadAtCancellationPoint) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "AddressSanitizer misreports the teardown of a cancelled thread (sigaltstack)";
#endif
  Thread thread(
      [](void*) -> void* {
        for (;;) nox::utils::sleep(nox::utils::Time(std::uint64_t{1000000}));
      },
      nullptr);
  EXPECT_TRUE(thread.cancel());
  void* result = nullptr;
  ASSERT_TRUE(thread.join(&result));
  EXPECT_EQ(result, PTHREAD_CANCELED);
}

TEST(ThreadingTest, DestroyedThreadObjectLeavesTheThreadRunning) {
  struct Shared {
    Event start;
    Event finished;
  } shared;
  {
    Thread thread(
        [](void* argument) -> void* {
          Shared& shared = *static_cast<Shared*>(argument);
          shared.start.await();
          shared.finished.raise();
          return nullptr;
        },
        &shared);
  }
  shared.start.raise();
  shared.finished.await();
}

}  // namespace
