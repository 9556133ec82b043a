#include <nox/utils/debugger/FrameworkMutex.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using nox::utils::debugger::FrameworkMutex;

void takeLockedSteps(FrameworkMutex& mutex, unsigned int count) {
  for (unsigned int i = 0; i < count; ++i) {
    FrameworkMutex::ScopedLocker lock(mutex);
    mutex.noteLockedStep();
  }
}

void claimStepThread(FrameworkMutex& mutex) { takeLockedSteps(mutex, FrameworkMutex::stepsToClaim); }

TEST(FrameworkMutex, OnlyAThreadThatKeepsSteppingUnderTheLockMayEnterAlone) {
  FrameworkMutex mutex;
  EXPECT_FALSE(mutex.tryLockAlone());
  takeLockedSteps(mutex, FrameworkMutex::stepsToClaim - 1);
  // Another thread's step breaks the run.
  std::thread([&mutex] { takeLockedSteps(mutex, 1); }).join();
  takeLockedSteps(mutex, 1);
  EXPECT_FALSE(mutex.tryLockAlone());

  claimStepThread(mutex);
  ASSERT_TRUE(mutex.tryLockAlone());
  EXPECT_FALSE(mutex.tryLockAlone()) << "in alone already";
  mutex.unlockAlone();

  // The claim is for good: another thread's run of steps does not take it over.
  bool otherEntered = true;
  std::thread([&mutex, &otherEntered] {
    claimStepThread(mutex);
    otherEntered = mutex.tryLockAlone();
  }).join();
  EXPECT_FALSE(otherEntered);
  {
    FrameworkMutex::ScopedLocker lock(mutex);
    EXPECT_FALSE(mutex.tryLockAlone()) << "holding the lock";
  }
  // Another thread's locking may have closed the entrance for a while; a run of locked
  // steps opens it again.
  takeLockedSteps(mutex, FrameworkMutex::stepsToRestore);
  EXPECT_TRUE(mutex.tryLockAlone());
  mutex.unlockAlone();
}

// The step thread enters alone whenever it can, another thread always locks; a lost
// update of the unguarded counter (or, under ThreadSanitizer, a race report) means both
// were in at once.
TEST(FrameworkMutex, AloneAndLockedEntriesExcludeEachOther) {
  constexpr int rounds = 100000;
  FrameworkMutex mutex;
  claimStepThread(mutex);
  long counter = 0;
  const auto pause = [] {
    for (volatile int spin = 0; spin < 100; spin = spin + 1) {
    }
  };
  // Wide enough between read and write for overlapping entries to lose updates.
  const auto increment = [&counter, &pause] {
    const long seen = counter;
    pause();
    counter = seen + 1;
  };
  std::thread locker([&] {
    for (int i = 0; i < rounds; ++i) {
      FrameworkMutex::ScopedLocker lock(mutex);
      increment();
    }
  });
  for (int i = 0; i < rounds; ++i) {
    if (mutex.tryLockAlone()) {
      increment();
      mutex.unlockAlone();
    } else {
      FrameworkMutex::ScopedLocker lock(mutex);
      increment();
    }
    pause();  // Lets the locker in between entries.
  }
  locker.join();
  EXPECT_EQ(2 * rounds, counter);
}

TEST(FrameworkMutex, AThreadAloneLocksWithoutWaitingForItselfWhileOthersWait) {
  FrameworkMutex mutex;
  claimStepThread(mutex);
  ASSERT_TRUE(mutex.tryLockAlone());
  std::atomic<bool> otherEntered{false};
  std::thread other([&] {
    FrameworkMutex::ScopedLocker lock(mutex);
    otherEntered = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(otherEntered);
  {
    FrameworkMutex::ScopedLocker reentered(mutex);
    EXPECT_FALSE(otherEntered);
  }
  mutex.unlockAlone();
  other.join();
  EXPECT_TRUE(otherEntered);
}

}  // namespace
