// Runs a piece of code on a thread whose stack is as small as the smallest one the
// library's code runs on: the HTTP server's worker threads. CivetWeb, as Debian builds
// it, gives them 100 KiB (measured with pthread_getattr_np from inside a request
// handler); the library's walks must fit there whatever the depth of the data.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

namespace nox::test {

constexpr std::size_t serverWorkerStackSize = 100 * 1024;

// Runs `work` on a new thread with a stack of `stackSize` bytes and waits for its end.
// Answers whether the thread could be started.
inline bool runOnStackOf(std::size_t stackSize, const std::function<void()>& work) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_attr_setstacksize(&attributes, stackSize);
  pthread_t thread;
  auto body = [](void* argument) -> void* {
    (*static_cast<const std::function<void()>*>(argument))();
    return nullptr;
  };
  const bool started = pthread_create(&thread, &attributes, body, const_cast<std::function<void()>*>(&work)) == 0;
  pthread_attr_destroy(&attributes);
  if (started) pthread_join(thread, nullptr);
  return started;
}

}  // namespace nox::test
