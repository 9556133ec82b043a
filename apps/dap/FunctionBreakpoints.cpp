#include "FunctionBreakpoints.h"

#include "JsonFields.h"
#include "MessageWriter.h"

#include <nox/utils/Decimal.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/Uri.h>

#include <cstdint>
#include <cstdio>
#include <string_view>

namespace nox::dap {

using nox::utils::DynamicObject;
using nox::utils::String;

bool FunctionBreakpoints::parseHitCount(const String& text, std::int64_t& count) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == String::npos) return false;
  const std::string_view digits(text.data() + begin, text.find_last_not_of(" \t") + 1 - begin);
  std::uint32_t parsed = 0;
  if (!nox::utils::parseDecimal(digits, parsed) || parsed < 1 || parsed > 2147483647) return false;
  count = parsed;
  return true;
}

void FunctionBreakpoints::readBreakpoint(const DynamicObject& message, unsigned int entry) {
  Breakpoint breakpoint;
  String hitCondition;
  nox::utils::Uri location;
  if (!json::readString(message, entry, "name", breakpoint.location) || breakpoint.location.empty()) {
    breakpoint.problem = "A function breakpoint needs a location as its name, such as sim:agents/2/move.";
  } else if (!location.set(breakpoint.location.c_str(), nullptr)) {
    breakpoint.problem = "'" + breakpoint.location + "' is not a location, such as sim:agents/2/move.";
  } else if (json::readString(message, entry, "hitCondition", hitCondition) &&
             hitCondition.find_first_not_of(" \t") != String::npos &&
             !parseHitCount(hitCondition, breakpoint.hitCount)) {
    breakpoint.problem = "The hit condition '" + hitCondition + "' is not a number of hits, such as 3.";
  }
  breakpoints_.push_back(std::move(breakpoint));
}

bool FunctionBreakpoints::replace(const DynamicObject& message, unsigned int arguments, std::int64_t requestSeq,
                                  HostLink& host) {
  cancelAll(requestSeq, "setFunctionBreakpoints", host);
  breakpoints_.clear();
  const unsigned int list = json::member(message, arguments, "breakpoints");
  if (list != 0 && message.getType(list) == nox::utils::type::array) {
    for (unsigned int i = 0, count = message.countChildren(list); i < count; ++i) {
      readBreakpoint(message, message.getChild(list, i));
    }
  }
  for (std::size_t slot = 0; slot < breakpoints_.size(); ++slot) {
    if (breakpoints_[slot].problem.empty()) subscribe(slot, requestSeq, host);
  }
  return callsInFlight_ > 0;
}

void FunctionBreakpoints::subscribe(std::size_t slot, std::int64_t requestSeq, HostLink& host) {
  const Breakpoint& breakpoint = breakpoints_[slot];
  MessageWriter body;
  body.field("type", "breakpoint").key("filters").beginObject().field("location", breakpoint.location);
  if (breakpoint.hitCount > 0) body.field("hitcount", breakpoint.hitCount);
  body.endObject();
  const String text = body.finish();
  ++callsInFlight_;
  host.send(
      "POST", "/api/events/subscriptions", &text,
      HostCall{HostCall::Purpose::subscribe, requestSeq, "setFunctionBreakpoints", static_cast<std::int64_t>(slot)});
}

unsigned int FunctionBreakpoints::cancelAll(std::int64_t requestSeq, const char* command, HostLink& host) {
  unsigned int started = 0;
  for (Breakpoint& breakpoint : breakpoints_) {
    if (breakpoint.handle == 0) continue;
    char path[64];
    std::snprintf(path, sizeof path, "/api/events/subscriptions/%u", breakpoint.handle);
    host.send("DELETE", path, nullptr, HostCall{HostCall::Purpose::unsubscribe, requestSeq, command, 0});
    ++callsInFlight_;
    ++started;
    breakpoint.handle = 0;
  }
  return started;
}

bool FunctionBreakpoints::onReply(const HostCall& call, const HttpReply& reply) {
  if (call.purpose == HostCall::Purpose::subscribe && call.number >= 0 &&
      static_cast<std::size_t>(call.number) < breakpoints_.size()) {
    Breakpoint& breakpoint = breakpoints_[static_cast<std::size_t>(call.number)];
    DynamicObject answer;
    String problem;
    std::int64_t handle = 0;
    if (reply.status == 200 && json::parse(reply.body.data(), reply.body.size(), answer, problem) &&
        json::readInteger(answer, answer.getRoot(), "requestId", handle) && handle > 0) {
      breakpoint.handle = static_cast<unsigned int>(handle);
      everMade_.insert(breakpoint.handle);
    } else {
      breakpoint.problem =
          reply.status == 0 ? "The host did not answer: " + reply.error : String("The host refused the breakpoint.");
    }
  }
  // Every call counted is answered once, so exactly the last answer reports done.
  return callsInFlight_ > 0 && --callsInFlight_ == 0;
}

void FunctionBreakpoints::writeBreakpoints(MessageWriter& out) const {
  out.beginArray();
  for (const Breakpoint& breakpoint : breakpoints_) {
    out.element().beginObject().flag("verified", breakpoint.handle != 0);
    if (breakpoint.handle != 0) out.field("id", static_cast<std::int64_t>(breakpoint.handle));
    if (!breakpoint.problem.empty()) out.field("message", breakpoint.problem);
    out.endObject();
  }
  out.endArray();
}

void FunctionBreakpoints::reset() {
  breakpoints_.clear();
  everMade_.clear();
}

}  // namespace nox::dap
