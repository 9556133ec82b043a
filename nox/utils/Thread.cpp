#include <nox/utils/Thread.h>

#include <nox/utils/Assertion.h>

#include <sched.h>

namespace nox::utils {

// Default attributes: no priority, stack size or name is set.
Thread::Thread(void* (*function)(void*), void* argument) : thread_(), joinable_(false) {
  joinable_ = pthread_create(&thread_, nullptr, function, argument) == 0;
  NOX_ASSERT(joinable_, "Thread creation failed");
}

// Joining or detaching a handle that was already joined or detached is undefined (the
// handle may name a thread that is gone, or a new one), so the handle is released once.
Thread::~Thread() { detach(); }

bool Thread::join(void** result) {
  if (!joinable_) return false;
  if (pthread_join(thread_, result) != 0) return false;
  joinable_ = false;
  return true;
}

void Thread::detach() {
  if (!joinable_) return;
  pthread_detach(thread_);
  joinable_ = false;
}

// A released handle may already name another thread, so it is never cancelled.
bool Thread::cancel() { return joinable_ && pthread_cancel(thread_) == 0; }

void Thread::exit() { pthread_exit(nullptr); }

void Thread::yield() { sched_yield(); }

}  // namespace nox::utils
