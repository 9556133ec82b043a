// The editor's function breakpoints, kept on the host as breakpoint subscriptions.
//
// Each breakpoint name is a location ("sim:agents/3/move"), subscribed with a
// "location" filter, plus a "hitcount" filter when the hit condition is a whole number
// N: the host then stops on the Nth pass at the location and on every later one. A new set replaces the whole earlier one: the
// earlier subscriptions are cancelled and the new ones made, side by side, and the
// answer waits until the host has replied to each.
//
// A name that is not a location is refused here and never subscribed: the host would
// drop a filter it cannot read and stop on every step instead.
#pragma once

#include "HostLink.h"

#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <cstdint>

namespace nox::utils {
class DynamicObject;
}

namespace nox::dap {

struct HttpReply;
class MessageWriter;

class FunctionBreakpoints {
 public:
  struct Breakpoint {
    nox::utils::String location;
    // 0 when the breakpoint stops on every hit.
    std::int64_t hitCount = 0;
    // Why the breakpoint is not set; empty when it is (or is being) set.
    nox::utils::String problem;
    // The host's request id once subscribed.
    unsigned int handle = 0;
  };

  // Whether `text` is a hit count: a whole number from 1 on, blanks around allowed.
  static bool parseHitCount(const nox::utils::String& text, std::int64_t& count);

  // Starts replacing the set with the "breakpoints" of the request's `arguments`.
  // Returns false when nothing needs the host: the answer can be written at once.
  bool replace(const nox::utils::DynamicObject& message, unsigned int arguments, std::int64_t requestSeq,
               HostLink& host);
  // Cancels every subscription made; the number of calls started.
  unsigned int cancelAll(std::int64_t requestSeq, const char* command, HostLink& host);
  // Takes the reply to a subscribe or unsubscribe call; true when it was the last one
  // the current replacement waited for.
  bool onReply(const HostCall& call, const HttpReply& reply);
  bool isReplacing() const { return callsInFlight_ > 0; }

  // The "breakpoints" array of the answer, in the request's order.
  void writeBreakpoints(MessageWriter& out) const;
  // Whether `handle` is a subscription this adapter made since attaching.
  bool isOwn(unsigned int handle) const { return everMade_.count(handle) != 0; }
  // Forgets the breakpoints, as when the host is gone. Calls in flight still count:
  // their replies come all the same.
  void reset();

 private:
  void readBreakpoint(const nox::utils::DynamicObject& message, unsigned int entry);
  void subscribe(std::size_t slot, std::int64_t requestSeq, HostLink& host);

  nox::utils::Vector<Breakpoint> breakpoints_;
  nox::utils::Set<unsigned int> everMade_;
  unsigned int callsInFlight_ = 0;
};

}  // namespace nox::dap
