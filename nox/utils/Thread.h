// A POSIX thread running function(argument) from construction. Destroying the object
// detaches the thread, which runs on: join it first when its end matters.
#pragma once

#include <nox/utils/Export.h>

#include <pthread.h>

namespace nox::utils {

class NOX_UTILS_API Thread {
 public:
  Thread(void* (*function)(void*), void* argument);
  ~Thread();

  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  bool join(void** result);
  void detach();
  bool cancel();

  // Ends the calling thread with a null result.
  static void exit();
  // Gives up the rest of the calling thread's time slice.
  static void yield();

 private:
  pthread_t thread_;
  // Whether thread_ still names our thread: neither joined nor detached, and created.
  bool joinable_;
};

}  // namespace nox::utils
