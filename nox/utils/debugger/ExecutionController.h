// Holds the engine thread while execution is suspended. The engine thread blocks in
// suspend() until another thread calls resume(); only engine threads ever block here.
//
// Two mutexes, always taken in the order controls then state: the controls mutex
// serialises the control operations themselves (and is what lock()/unlock() hold, so a
// caller can keep suspend and resume still while it reads the state); the state mutex
// guards `suspended` and is what the resumed condition is waited on with. suspend()
// gives the controls up before it waits, so a resumer can always get them.
#pragma once

#include <nox/utils/Condition.h>
#include <nox/utils/Export.h>
#include <nox/utils/Mutex.h>

namespace nox::utils::debugger {

class NOX_UTILS_API ExecutionController {
 public:
  // Holds the controls for its lifetime: no suspend or resume can run meanwhile.
  class NOX_UTILS_API ScopedControlLocker {
   public:
    explicit ScopedControlLocker(ExecutionController& controller) : controller_(controller) { controller_.lock(); }
    ~ScopedControlLocker() { controller_.unlock(); }

    ScopedControlLocker(const ScopedControlLocker&) = delete;
    ScopedControlLocker& operator=(const ScopedControlLocker&) = delete;

   private:
    ExecutionController& controller_;
  };

  ExecutionController() = default;
  virtual ~ExecutionController();

  ExecutionController(const ExecutionController&) = delete;
  ExecutionController& operator=(const ExecutionController&) = delete;

  // Blocks the calling thread until resume(); wake-ups without a resume wait again.
  virtual void suspend();
  virtual bool isSuspended() const;
  // Wakes the suspended thread, if any; harmless otherwise. Does not wait for it.
  virtual void resume();
  virtual void lock();
  virtual void unlock();

  // suspend() for a caller that already holds the controls through lock(): the
  // suspension becomes visible (isSuspended) before the controls are released, so a
  // resume that gets the controls afterwards always finds the thread to wake.
  void suspendWithControlsLocked();

 private:
  bool lockControls();

  bool suspended_ = false;
  Mutex controlsMutex_;
  mutable Mutex stateMutex_;
  Condition resumed_;
};

}  // namespace nox::utils::debugger
