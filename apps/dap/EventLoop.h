// The program's one loop: the editor's bytes, the host's HTTP transfers and the poll
// timer of the session, all waited on together, so that no host, however slow or dead,
// holds up the editor.
#pragma once

#include <csignal>

namespace nox::dap {

class AbstractOutput;
class HttpTransfers;

class EventLoop {
 public:
  // Longest wait for the host's last replies once the editor is gone.
  static constexpr long farewellMilliseconds = 7000;

  // `stopping` is set (by a signal handler) to end the loop: the session then leaves
  // the host as a disconnect would.
  EventLoop(HttpTransfers& http, const volatile std::sig_atomic_t& stopping) : http_(http), stopping_(stopping) {}

  // Serves one editor reading from `input` and writing to `output` until it goes away
  // or the loop is stopped, then until the session has left its host. `trace`, when
  // not null, receives every message.
  void serve(int input, AbstractOutput& output, AbstractOutput* trace);

  // Waits for an editor on the listening socket `listener`; -1 once stopping.
  int acceptPeer(int listener);

 private:
  HttpTransfers& http_;
  const volatile std::sig_atomic_t& stopping_;
};

// Milliseconds of a monotonic clock.
long long steadyMilliseconds();

}  // namespace nox::dap
