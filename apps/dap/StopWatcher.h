// Notices when the attached host stops and when it goes on again.
//
// The inspection API has no push channel, so the watcher polls, at most every 50 ms:
// first the suspension state, then the event queue. That order matters: a breakpoint
// hit is queued before the engine stops, so a stop seen by the first read has its
// event in the second. Breakpoint events of the adapter's own subscriptions tell a
// "function breakpoint" stop (and are deleted once read); any other stop is put down to
// the last command ("step" after a step, else "pause").
//
// A poll answered across an execution command would report the state from before it:
// polls are ignored while a command is in flight, and each command starts a new epoch
// that outdates the polls sent before it.
#pragma once

#include "HostLink.h"

#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <cstdint>

namespace nox::dap {

class FunctionBreakpoints;

class AbstractStopListener {
 public:
  virtual ~AbstractStopListener() = default;
  // `hits` are the ids of the adapter's breakpoints that stopped the entity; the reason
  // is "function breakpoint" when there are any.
  virtual void onStopped(unsigned int entity, const char* reason, const nox::utils::Vector<unsigned int>& hits) = 0;
  // The host went on without a command of the adapter (another client resumed it).
  virtual void onResumed() = 0;
  virtual void onHostLost(const nox::utils::String& reason) = 0;
};

class StopWatcher {
 public:
  enum class Command { none, pause, step, resume };

  static constexpr std::int64_t pollIntervalMilliseconds = 50;

  StopWatcher(HostLink& host, const FunctionBreakpoints& breakpoints, AbstractStopListener& listener)
      : host_(host), breakpoints_(breakpoints), listener_(listener) {}

  // Starts polling. Events up to `lastEventId` were queued before the adapter came.
  void start(std::uint32_t lastEventId, std::int64_t now);
  // Stops polling; replies still in flight are ignored.
  void stop();

  // Milliseconds until the next poll is due; -1 when none is waiting.
  std::int64_t millisecondsToNextPoll(std::int64_t now) const;
  void onTime(std::int64_t now);
  void onReply(const HostCall& call, const HttpReply& reply, std::int64_t now);

  void commandSent() { ++commandsInFlight_; }
  void commandAnswered(Command command, bool accepted);

  bool isStopped() const { return stopped_; }
  // Whether the adapter made the current stop (its pause, step or breakpoint), and so
  // must resume the host when it leaves.
  bool ownsSuspension() const { return stopped_ && owned_; }
  // Whether a pause was accepted and has not stopped the host yet.
  bool isPausePending() const { return !stopped_ && lastCommand_ == Command::pause; }

 private:
  void poll();
  void onSuspension(const HttpReply& reply);
  void onEventList(const HttpReply& reply);
  void onEvent(std::int64_t id, const HttpReply& reply);
  // Compares what the poll saw with what the adapter knew, and tells the listener.
  void decide();
  void finishPoll(std::int64_t now);
  void schedule(std::int64_t now);
  // Whether a reply of a poll sent in `epoch` still tells the truth.
  bool isCurrent(std::int64_t epoch) const;

  HostLink& host_;
  const FunctionBreakpoints& breakpoints_;
  AbstractStopListener& listener_;

  bool watching_ = false;
  bool polling_ = false;
  std::int64_t nextPollAt_ = 0;
  std::int64_t epoch_ = 0;
  std::int64_t pollEpoch_ = 0;
  unsigned int commandsInFlight_ = 0;
  unsigned int eventsInFlight_ = 0;
  std::uint32_t lastEventId_ = 0;

  // What the current poll saw.
  bool seenSuspended_ = false;
  unsigned int seenEntity_ = 0;
  // Breakpoint hits (entity, request id) read from the queue since the last stop.
  nox::utils::Vector<std::pair<unsigned int, unsigned int>> hits_;

  // What the adapter knows.
  bool stopped_ = false;
  unsigned int stoppedEntity_ = 0;
  bool owned_ = false;
  Command lastCommand_ = Command::none;
};

}  // namespace nox::dap
