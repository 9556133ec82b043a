#include "StopWatcher.h"

#include "FunctionBreakpoints.h"
#include "JsonFields.h"

#include <nox/utils/DynamicObject.h>

#include <cstdio>
#include <cstring>

namespace nox::dap {

using nox::utils::DynamicObject;
using nox::utils::String;
using Purpose = HostCall::Purpose;

void StopWatcher::start(std::uint32_t lastEventId, std::int64_t now) {
  watching_ = true;
  polling_ = false;
  // Whatever was in flight belonged to an earlier attach.
  commandsInFlight_ = 0;
  eventsInFlight_ = 0;
  lastEventId_ = lastEventId;
  stopped_ = false;
  owned_ = false;
  lastCommand_ = Command::none;
  hits_.clear();
  nextPollAt_ = now;
}

void StopWatcher::stop() {
  watching_ = false;
  ++epoch_;
}

std::int64_t StopWatcher::millisecondsToNextPoll(std::int64_t now) const {
  if (!watching_ || polling_) return -1;
  return nextPollAt_ > now ? nextPollAt_ - now : 0;
}

void StopWatcher::onTime(std::int64_t now) {
  if (millisecondsToNextPoll(now) == 0) poll();
}

void StopWatcher::schedule(std::int64_t now) {
  polling_ = false;
  nextPollAt_ = now + pollIntervalMilliseconds;
}

void StopWatcher::poll() {
  polling_ = true;
  pollEpoch_ = epoch_;
  host_.send("GET", "/api/debug/suspend", nullptr, HostCall{Purpose::pollSuspension, -1, "", epoch_});
}

bool StopWatcher::isCurrent(std::int64_t epoch) const {
  return watching_ && epoch == epoch_ && commandsInFlight_ == 0;
}

void StopWatcher::commandAnswered(Command command, bool accepted) {
  if (commandsInFlight_ > 0) --commandsInFlight_;
  if (!accepted) return;
  ++epoch_;
  lastCommand_ = command;
  if (command != Command::pause) {
    stopped_ = false;
    owned_ = false;
  }
}

void StopWatcher::onReply(const HostCall& call, const HttpReply& reply, std::int64_t now) {
  if (call.purpose == Purpose::pollEvent) {
    if (eventsInFlight_ > 0) --eventsInFlight_;
    if (watching_) onEvent(call.number, reply);
    if (eventsInFlight_ == 0 && watching_) finishPoll(now);
    return;
  }
  if (call.purpose == Purpose::consumeEvent || !watching_) return;
  if (reply.status != 200) {
    listener_.onHostLost(reply.status == 0 ? reply.error
                                           : "it answered HTTP " + String(std::to_string(reply.status).c_str()));
    return;
  }
  if (!isCurrent(call.number)) {
    schedule(now);
  } else if (call.purpose == Purpose::pollSuspension) {
    onSuspension(reply);
  } else {
    onEventList(reply);
    if (eventsInFlight_ == 0) finishPoll(now);
  }
}

void StopWatcher::finishPoll(std::int64_t now) {
  if (isCurrent(pollEpoch_)) decide();
  schedule(now);
}

void StopWatcher::onSuspension(const HttpReply& reply) {
  DynamicObject state;
  String problem;
  std::int64_t entity = 0;
  bool suspended = false;
  if (!json::parse(reply.body.data(), reply.body.size(), state, problem) ||
      !json::readBoolean(state, state.getRoot(), "suspended", suspended)) {
    listener_.onHostLost("its suspension state is unreadable");
    return;
  }
  json::readInteger(state, state.getRoot(), "entity", entity);
  seenSuspended_ = suspended;
  seenEntity_ = static_cast<unsigned int>(entity);
  host_.send("GET", "/api/events", nullptr, HostCall{Purpose::pollEvents, -1, "", epoch_});
}

void StopWatcher::onEventList(const HttpReply& reply) {
  DynamicObject ids;
  String problem;
  if (!json::parse(reply.body.data(), reply.body.size(), ids, problem) ||
      ids.getType(ids.getRoot()) != nox::utils::type::array) {
    return;
  }
  std::uint32_t newest = lastEventId_;
  for (unsigned int i = 0, count = ids.countChildren(ids.getRoot()); i < count; ++i) {
    const unsigned int element = ids.getChild(ids.getRoot(), i);
    if (ids.getType(element) != nox::utils::type::integer) continue;
    const std::int64_t id = ids.getInt(element);
    if (id <= lastEventId_ || id > 0xFFFFFFFFll) continue;
    char path[48];
    std::snprintf(path, sizeof path, "/api/events/%lld", static_cast<long long>(id));
    ++eventsInFlight_;
    host_.send("GET", path, nullptr, HostCall{Purpose::pollEvent, -1, "", id});
    if (static_cast<std::uint32_t>(id) > newest) newest = static_cast<std::uint32_t>(id);
  }
  lastEventId_ = newest;
}

void StopWatcher::onEvent(std::int64_t id, const HttpReply& reply) {
  DynamicObject event;
  String problem;
  String type;
  std::int64_t request = 0;
  std::int64_t entity = 0;
  if (reply.status != 200 || !json::parse(reply.body.data(), reply.body.size(), event, problem) ||
      !json::readString(event, event.getRoot(), "type", type) || type != "breakpoint" ||
      !json::readInteger(event, event.getRoot(), "requestId", request) ||
      !breakpoints_.isOwn(static_cast<unsigned int>(request))) {
    return;
  }
  json::readInteger(event, event.getRoot(), "entity", entity);
  hits_.emplace_back(static_cast<unsigned int>(entity), static_cast<unsigned int>(request));
  char path[48];
  std::snprintf(path, sizeof path, "/api/events/%lld", static_cast<long long>(id));
  host_.send("DELETE", path, nullptr, HostCall{Purpose::consumeEvent, -1, "", id});
}

void StopWatcher::decide() {
  if (seenSuspended_ && (!stopped_ || seenEntity_ != stoppedEntity_)) {
    nox::utils::Vector<unsigned int> ids;
    for (const auto& hit : hits_) {
      if (hit.first == seenEntity_) ids.push_back(hit.second);
    }
    const char* reason = !ids.empty() ? "function breakpoint" : lastCommand_ == Command::step ? "step" : "pause";
    owned_ = !ids.empty() || lastCommand_ == Command::pause || lastCommand_ == Command::step;
    stopped_ = true;
    stoppedEntity_ = seenEntity_;
    lastCommand_ = Command::none;
    hits_.clear();
    listener_.onStopped(seenEntity_, reason, ids);
  } else if (!seenSuspended_ && stopped_) {
    stopped_ = false;
    owned_ = false;
    listener_.onResumed();
  }
}

}  // namespace nox::dap
