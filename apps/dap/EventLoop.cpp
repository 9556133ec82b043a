#include "EventLoop.h"

#include "DebugSession.h"
#include "HttpTransfers.h"
#include "ProtocolConnection.h"

#include <cerrno>
#include <chrono>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nox::dap {

namespace {

// Longest sleep of the loop, so that a stop request is seen soon.
constexpr int longestWaitMilliseconds = 250;

// Whether `fd` has something to read (or has hung up), without waiting.
bool isReadable(int fd) {
  pollfd entry{fd, POLLIN, 0};
  return poll(&entry, 1, 0) > 0 && (entry.revents & (POLLIN | POLLHUP | POLLERR | POLLNVAL)) != 0;
}

}  // namespace

long long steadyMilliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void EventLoop::serve(int input, AbstractOutput& output, AbstractOutput* trace) {
  ProtocolConnection connection(output);
  connection.setTrace(trace);
  DebugSession session(connection, http_);
  connection.setHandler(&session);
  bool peerOpen = true;
  long long farewellDeadline = 0;
  nox::utils::Vector<HttpReply> replies;
  char buffer[65536];
  for (;;) {
    const long long now = steadyMilliseconds();
    const long long due = session.millisecondsToNextPoll(now);
    const int timeout = due < 0 || due > longestWaitMilliseconds ? longestWaitMilliseconds : static_cast<int>(due);
    curl_waitfd peer{input, CURL_WAIT_POLLIN, 0};
    http_.wait(&peer, peerOpen ? 1 : 0, timeout);
    // curl reports no hang-up of the extra descriptors (a closed pipe): ask poll itself.
    if (peerOpen && isReadable(input)) {
      const ssize_t count = read(input, buffer, sizeof buffer);
      if (count > 0) connection.receive(buffer, static_cast<std::size_t>(count));
      if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) peerOpen = false;
    }
    if (peerOpen && (stopping_ || !connection.isOpen())) peerOpen = false;
    if (!peerOpen && farewellDeadline == 0) {
      session.onPeerGone();
      farewellDeadline = steadyMilliseconds() + farewellMilliseconds;
    }
    replies.clear();
    http_.collect(replies);
    for (const HttpReply& reply : replies) session.onHttpReply(reply, steadyMilliseconds());
    session.onTime(steadyMilliseconds());
    if (!peerOpen && (!session.hasCallsInFlight() || steadyMilliseconds() > farewellDeadline)) return;
  }
}

int EventLoop::acceptPeer(int listener) {
  while (!stopping_) {
    pollfd entry{listener, POLLIN, 0};
    if (poll(&entry, 1, longestWaitMilliseconds) <= 0) continue;
    const int peer = accept(listener, nullptr, nullptr);
    if (peer >= 0) return peer;
  }
  return -1;
}

}  // namespace nox::dap
