#include <nox/utils/debugger/ExecutionController.h>

#include <nox/utils/Assertion.h>
#include <nox/utils/ScopedMutex.h>

namespace nox::utils::debugger {

ExecutionController::~ExecutionController() = default;

void ExecutionController::suspend() {
  if (lockControls()) suspendWithControlsLocked();
}

void ExecutionController::suspendWithControlsLocked() {
  if (!stateMutex_.lock(nullptr)) {
    NOX_FAIL("Can't lock the state mutex.");
    unlock();
    return;
  }
  suspended_ = true;
  unlock();
  while (suspended_) {
    if (!resumed_.wait(stateMutex_)) {
      // Waiting again would spin on the same failure.
      NOX_FAIL("Can't wait for the execution to be resumed.");
      suspended_ = false;
    }
  }
  if (!stateMutex_.unlock(nullptr)) NOX_FAIL("Can't unlock the state mutex.");
}

bool ExecutionController::isSuspended() const {
  ScopedMutex state(stateMutex_);
  return suspended_;
}

void ExecutionController::resume() {
  ScopedMutex controls(controlsMutex_);
  ScopedMutex state(stateMutex_);
  resumed_.broadcast();
  suspended_ = false;
}

void ExecutionController::lock() { lockControls(); }

bool ExecutionController::lockControls() {
  if (controlsMutex_.lock(nullptr)) return true;
  NOX_FAIL("Failed to lock the execution controls.");
  return false;
}

void ExecutionController::unlock() {
  if (!controlsMutex_.unlock(nullptr)) NOX_FAIL("Failed to unlock the execution controls.");
}

}  // namespace nox::utils::debugger
