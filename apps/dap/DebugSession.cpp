#include "DebugSession.h"

#include "JsonFields.h"
#include "MessageWriter.h"

#include <nox/allocator/Allocator.h>
#include <nox/utils/DynamicObject.h>

#include <cstdlib>

namespace nox::dap {

using nox::utils::DynamicObject;
using nox::utils::String;
using Purpose = HostCall::Purpose;

namespace {

constexpr unsigned int invalidEntity = 4294967295u;

// A base URL as the adapter uses it: http or https, printable, no trailing slash.
bool normalizeUrl(String& url) {
  while (!url.empty() && url.back() == '/') url.pop_back();
  const bool scheme = url.compare(0, 7, "http://") == 0 || url.compare(0, 8, "https://") == 0;
  if (!scheme || url.size() < 9 || url.size() > 2048) return false;
  for (char c : url) {
    if (c <= ' ' || c > '~') return false;
  }
  return true;
}

}  // namespace

struct DebugSession::Route {
  const char* command;
  Handler handler;
  // Whether the request makes sense only while attached.
  bool needsHost;
};

const DebugSession::Route DebugSession::routes[] = {
    {"initialize", &DebugSession::initialize, false},
    {"attach", &DebugSession::attach, false},
    {"launch", &DebugSession::launch, false},
    {"configurationDone", &DebugSession::configurationDone, false},
    {"disconnect", &DebugSession::disconnect, false},
    {"setExceptionBreakpoints", &DebugSession::setExceptionBreakpoints, false},
    {"setBreakpoints", &DebugSession::setBreakpoints, false},
    {"threads", &DebugSession::inspect, true},
    {"pause", &DebugSession::pause, true},
    {"continue", &DebugSession::resume, true},
    {"next", &DebugSession::resume, true},
    {"stepIn", &DebugSession::resume, true},
    {"stepOut", &DebugSession::resume, true},
    {"stackTrace", &DebugSession::inspect, true},
    {"scopes", &DebugSession::inspect, true},
    {"variables", &DebugSession::inspect, true},
    {"evaluate", &DebugSession::inspect, true},
    {"setFunctionBreakpoints", &DebugSession::setFunctionBreakpoints, true},
};

DebugSession::DebugSession(ProtocolConnection& connection, AbstractHttpClient& http)
    : connection_(connection), host_(http), inspection_(connection, host_), watcher_(host_, breakpoints_, *this) {}

DebugSession::~DebugSession() {
  for (auto& queued : queuedBreakpoints_) NOX_DELETE(queued.second);
}

void DebugSession::onRequest(const Request& request) {
  for (const Route& route : routes) {
    if (request.command != route.command) continue;
    if (route.needsHost && (!host_.isOpen() || disconnecting_)) {
      fail(request.seq, route.command, "Not attached to a host: attach first, with the host's \"url\".");
    } else {
      (this->*route.handler)(request);
    }
    return;
  }
  fail(request.seq, request.command.c_str(), "The request '" + request.command + "' is not supported by nox-dap.");
}

void DebugSession::fail(std::int64_t requestSeq, const char* command, const String& message) {
  connection_.respond(requestSeq, command, false, message.c_str());
}

// ---- Session setup.

void DebugSession::initialize(const Request& request) {
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, request.seq, request.command.c_str(), true);
  out.key("body").beginObject();
  out.flag("supportsConfigurationDoneRequest", true).flag("supportsFunctionBreakpoints", true);
  out.flag("supportsHitConditionalBreakpoints", true).flag("supportsConditionalBreakpoints", false);
  out.flag("supportsTerminateRequest", false).flag("supportsEvaluateForHovers", false);
  out.flag("supportsSetVariable", false).flag("supportsRestartRequest", false);
  out.flag("supportTerminateDebuggee", false).flag("supportsStepBack", false);
  out.endObject();
  connection_.send(out);
}

void DebugSession::attach(const Request& request) {
  if (host_.isOpen() || disconnecting_) {
    fail(request.seq, "attach", "Already attached to the host at " + host_.getUrl() + ".");
    return;
  }
  String url;
  String token;
  if (!json::readString(request.message, request.arguments, "url", url) || !normalizeUrl(url)) {
    fail(request.seq, "attach", "attach needs the host's \"url\", such as http://127.0.0.1:8080.");
    return;
  }
  if (!json::readString(request.message, request.arguments, "token", token) && std::getenv("NOX_INSPECT_TOKEN")) {
    token = std::getenv("NOX_INSPECT_TOKEN");
  }
  for (char c : token) {
    if (c <= ' ' || c > '~') {
      fail(request.seq, "attach", "The token may hold only printable characters without blanks.");
      return;
    }
  }
  host_.open(url, token);
  const String enable = "{\"events\":true}";
  host_.send("POST", "/api/engines", &enable, HostCall{Purpose::enableEvents, request.seq, "attach"});
}

void DebugSession::onAttachReply(const HostCall& call, const HttpReply& reply, std::int64_t now) {
  const String url = host_.getUrl();
  if (reply.status != 200) {
    host_.close();
    String message = "Unable to reach the host at " + url + ": " + reply.error;
    if (reply.status == 401) {
      message = "The host at " + url + " refused the adapter (HTTP 401 Unauthorized): give its token as the " +
                "attach argument \"token\".";
    } else if (reply.status != 0) {
      message = "The host at " + url + " answered HTTP " + decimal(reply.status) + ": is it a nox inspection server?";
    }
    fail(call.requestSeq, "attach", message);
    return;
  }
  if (call.purpose == Purpose::enableEvents) {
    host_.send("GET", "/api/events", nullptr, HostCall{Purpose::readEventBaseline, call.requestSeq, "attach"});
    return;
  }
  // Events queued before the adapter came are not its own: polls start after them.
  DynamicObject ids;
  String problem;
  std::int64_t newest = 0;
  if (json::parse(reply.body.data(), reply.body.size(), ids, problem)) {
    for (unsigned int i = 0, count = ids.countChildren(ids.getRoot()); i < count; ++i) {
      const unsigned int id = ids.getChild(ids.getRoot(), i);
      if (ids.getType(id) == nox::utils::type::integer && ids.getInt(id) > newest) newest = ids.getInt(id);
    }
  }
  connection_.respond(call.requestSeq, "attach", true, nullptr);
  connection_.sendEvent("initialized");
  watcher_.start(static_cast<std::uint32_t>(newest), now);
}

void DebugSession::inspect(const Request& request) { inspection_.onRequest(request); }

void DebugSession::launch(const Request& request) {
  fail(request.seq, "launch", "nox-dap attaches to a running host: use an attach configuration with its \"url\".");
}

void DebugSession::configurationDone(const Request& request) {
  connection_.respond(request.seq, request.command.c_str(), true, nullptr);
}

void DebugSession::setExceptionBreakpoints(const Request& request) {
  connection_.respond(request.seq, request.command.c_str(), true, nullptr);
}

// Editors send these for open files; they are answered, each breakpoint unverified.
void DebugSession::setBreakpoints(const Request& request) {
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, request.seq, request.command.c_str(), true);
  out.key("body").beginObject().key("breakpoints").beginArray();
  const unsigned int list = json::member(request.message, request.arguments, "breakpoints");
  const unsigned int count = list != 0 ? request.message.countChildren(list) : 0;
  for (unsigned int i = 0; i < count; ++i) {
    out.element().beginObject().flag("verified", false);
    out.field("message", "Entities have no source lines: use a function breakpoint named by a location, such as "
                         "sim:agents/2/move.");
    out.endObject();
  }
  out.endArray().endObject();
  connection_.send(out);
}

// ---- Host replies.

void DebugSession::onHttpReply(const HttpReply& reply, std::int64_t now) {
  HostCall call{Purpose::threads, -1, "", 0, 0};
  if (!host_.take(reply.id, call)) return;
  switch (call.purpose) {
    case Purpose::pollSuspension:
    case Purpose::pollEvents:
    case Purpose::pollEvent:
    case Purpose::consumeEvent: watcher_.onReply(call, reply, now); return;
    case Purpose::enableEvents:
    case Purpose::readEventBaseline: onAttachReply(call, reply, now); return;
    case Purpose::subscribe:
    case Purpose::unsubscribe: onBreakpointsReply(call, reply); return;
    case Purpose::finalState:
    case Purpose::finalResume: onDisconnectReply(call, reply); return;
    default: break;
  }
  if (reply.status == 0) {
    if (call.purpose == Purpose::command) watcher_.commandAnswered(StopWatcher::Command::none, false);
    const String reason = reply.error;
    onHostLost(reason);
    fail(call.requestSeq, call.command.c_str(), "Lost the host: " + reason);
    return;
  }
  if (call.purpose == Purpose::command) {
    onCommand(call, reply);
  } else {
    inspection_.onReply(call, reply);
  }
}

// ---- Leaving.

void DebugSession::disconnect(const Request& request) {
  if (disconnecting_) {
    fail(request.seq, "disconnect", "Already disconnecting.");
  } else if (!host_.isOpen()) {
    connection_.respond(request.seq, "disconnect", true, nullptr);
  } else {
    beginDisconnect(request.seq);
  }
}

void DebugSession::onPeerGone() {
  if (host_.isOpen() && !disconnecting_) beginDisconnect(-1);
}

void DebugSession::beginDisconnect(std::int64_t requestSeq) {
  disconnecting_ = true;
  disconnectSeq_ = requestSeq;
  watcher_.stop();
  disconnectCalls_ = breakpoints_.cancelAll(requestSeq, "disconnect", host_);
  host_.send("GET", "/api/debug/suspend", nullptr, HostCall{Purpose::finalState, requestSeq, "disconnect"});
  ++disconnectCalls_;
  finalSuspended_ = false;
}

// Counts down the unsubscriptions and the state read that leaving waits for, then
// resumes the host if the adapter left it stopped.
void DebugSession::onDisconnectReply(const HostCall& call, const HttpReply& reply) {
  if (call.purpose == Purpose::finalResume) {
    endDisconnect();
    return;
  }
  if (call.purpose == Purpose::finalState) {
    DynamicObject state;
    String problem;
    if (reply.status == 200 && json::parse(reply.body.data(), reply.body.size(), state, problem)) {
      json::readBoolean(state, state.getRoot(), "suspended", finalSuspended_);
    }
  }
  if (disconnectCalls_ > 0 && --disconnectCalls_ == 0) {
    const bool leftStopped = finalSuspended_ && (watcher_.ownsSuspension() || watcher_.isPausePending());
    const String nothing;
    if (leftStopped) {
      host_.send("POST", "/api/debug/resume", &nothing, HostCall{Purpose::finalResume, disconnectSeq_, "disconnect"});
    } else {
      endDisconnect();
    }
  }
}

void DebugSession::endDisconnect() {
  forgetHost();
  disconnecting_ = false;
  if (disconnectSeq_ >= 0) connection_.respond(disconnectSeq_, "disconnect", true, nullptr);
  disconnectSeq_ = -1;
}

void DebugSession::forgetHost() {
  host_.close();
  watcher_.stop();
  inspection_.forget();
  breakpoints_.reset();
  for (auto& queued : queuedBreakpoints_) {
    fail(queued.first, "setFunctionBreakpoints", "The session with the host ended.");
    NOX_DELETE(queued.second);
  }
  queuedBreakpoints_.clear();
}

void DebugSession::onHostLost(const String& reason) {
  if (!host_.isOpen() || disconnecting_) return;
  const String url = host_.getUrl();
  forgetHost();
  MessageWriter out(connection_.nextSeq(), "event");
  out.field("event", "output").key("body").beginObject().field("category", "console");
  out.field("output", "nox-dap: lost the host at " + url + ": " + reason + "\n").endObject();
  connection_.send(out);
  connection_.sendEvent("terminated");
}


// ---- Execution.

void DebugSession::pause(const Request& request) {
  std::int64_t thread = -1;
  const bool one = json::readInteger(request.message, request.arguments, "threadId", thread) && thread >= 0 &&
                   thread < invalidEntity;
  MessageWriter body;
  if (one) body.field("entity", thread);
  const String text = body.finish();
  watcher_.commandSent();
  host_.send("POST", "/api/debug/suspend", &text, HostCall{Purpose::command, request.seq, "pause", thread});
}

void DebugSession::resume(const Request& request) {
  const char* path = "/api/debug/resume";
  if (request.command == "next") path = "/api/debug/stepover";
  if (request.command == "stepIn") path = "/api/debug/stepin";
  if (request.command == "stepOut") path = "/api/debug/stepout";
  std::int64_t thread = lastStoppedEntity_;
  json::readInteger(request.message, request.arguments, "threadId", thread);
  const String nothing;
  watcher_.commandSent();
  host_.send("POST", path, &nothing, HostCall{Purpose::command, request.seq, request.command, thread});
}

void DebugSession::onCommand(const HostCall& call, const HttpReply& reply) {
  const bool isPause = call.command == "pause";
  const bool isContinue = call.command == "continue";
  const bool accepted = reply.status == 200;
  watcher_.commandAnswered(isPause      ? StopWatcher::Command::pause
                           : isContinue ? StopWatcher::Command::resume
                                        : StopWatcher::Command::step,
                           accepted);
  if (!accepted) {
    const String message = describeRefusal(
        reply, isPause ? "The host did not pause: it is stopped already, or has no such entity."
                       : "The host is not stopped: there is nothing to continue or step.");
    fail(call.requestSeq, call.command.c_str(), message);
    return;
  }
  if (isPause) {
    connection_.respond(call.requestSeq, "pause", true, nullptr);
    return;
  }
  inspection_.forget();
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, call.requestSeq, call.command.c_str(), true);
  if (isContinue) out.key("body").beginObject().flag("allThreadsContinued", true).endObject();
  connection_.send(out);
  if (isContinue) {
    MessageWriter event(connection_.nextSeq(), "event");
    event.field("event", "continued").key("body").beginObject().field("threadId", call.number);
    event.flag("allThreadsContinued", true).endObject();
    connection_.send(event);
  }
}

void DebugSession::onStopped(unsigned int entity, const char* reason, const nox::utils::Vector<unsigned int>& hits) {
  inspection_.forget();
  MessageWriter out(connection_.nextSeq(), "event");
  out.field("event", "stopped").key("body").beginObject().field("reason", reason);
  if (entity != invalidEntity) {
    lastStoppedEntity_ = entity;
    out.field("threadId", static_cast<std::int64_t>(entity));
  }
  out.flag("allThreadsStopped", true);
  if (!hits.empty()) {
    out.key("hitBreakpointIds").beginArray();
    for (unsigned int hit : hits) out.element().value(static_cast<std::int64_t>(hit));
    out.endArray();
  }
  out.endObject();
  connection_.send(out);
}

void DebugSession::onResumed() {
  inspection_.forget();
  MessageWriter out(connection_.nextSeq(), "event");
  out.field("event", "continued").key("body").beginObject();
  out.field("threadId", static_cast<std::int64_t>(lastStoppedEntity_)).flag("allThreadsContinued", true).endObject();
  connection_.send(out);
}

// ---- Function breakpoints.

void DebugSession::setFunctionBreakpoints(const Request& request) {
  if (breakpoints_.isReplacing()) {
    queuedBreakpoints_.emplace_back(request.seq, NOX_NEW DynamicObject(request.message));
    return;
  }
  if (!breakpoints_.replace(request.message, request.arguments, request.seq, host_)) respondBreakpoints(request.seq);
}

void DebugSession::onBreakpointsReply(const HostCall& call, const HttpReply& reply) {
  const bool done = breakpoints_.onReply(call, reply);
  if (call.command == "disconnect") {
    onDisconnectReply(call, reply);
  } else if (done) {
    respondBreakpoints(call.requestSeq);
    startQueuedBreakpoints();
  }
}

void DebugSession::respondBreakpoints(std::int64_t requestSeq) {
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, requestSeq, "setFunctionBreakpoints", true);
  out.key("body").beginObject().key("breakpoints");
  breakpoints_.writeBreakpoints(out);
  out.endObject();
  connection_.send(out);
}

void DebugSession::startQueuedBreakpoints() {
  while (!queuedBreakpoints_.empty() && !breakpoints_.isReplacing() && host_.isOpen() && !disconnecting_) {
    const std::pair<std::int64_t, DynamicObject*> next = queuedBreakpoints_.front();
    queuedBreakpoints_.pop_front();
    const unsigned int arguments = json::member(*next.second, next.second->getRoot(), "arguments");
    if (!breakpoints_.replace(*next.second, arguments, next.first, host_)) respondBreakpoints(next.first);
    NOX_DELETE(next.second);
  }
}

}  // namespace nox::dap
