// One debugging session: the protocol requests of an editor mapped onto the inspection
// API of one host: attaching and leaving, execution (pause, continue, steps) and its
// stops, and breakpoints. What the editor reads of a stopped host is answered by
// InspectionRequests.
//
// Nothing here waits: each request that needs the host starts HTTP calls and is
// answered when their replies come back (see HostLink). Every request is answered,
// those the adapter does not support with success false and a message.
//
// Leaving (disconnect, or the editor going away) cancels the adapter's breakpoint
// subscriptions and resumes the host if the adapter left it stopped; the host goes on
// running. A host that goes away ends the session with an output event telling why and
// a terminated event.
#pragma once

#include "FunctionBreakpoints.h"
#include "HostLink.h"
#include "InspectionRequests.h"
#include "ProtocolConnection.h"
#include "StopWatcher.h"

#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <cstdint>

namespace nox::utils {
class DynamicObject;
}

namespace nox::dap {

class DebugSession : public AbstractRequestHandler, public AbstractStopListener {
 public:
  DebugSession(ProtocolConnection& connection, AbstractHttpClient& http);
  ~DebugSession() override;

  void onRequest(const Request& request) override;
  void onHttpReply(const HttpReply& reply, std::int64_t now);
  void onTime(std::int64_t now) { watcher_.onTime(now); }
  // Milliseconds until the session needs onTime again; -1 when it does not.
  std::int64_t millisecondsToNextPoll(std::int64_t now) const { return watcher_.millisecondsToNextPoll(now); }

  // The editor went away: leaves the host as a disconnect would, answering no one.
  void onPeerGone();
  bool hasCallsInFlight() const { return host_.hasCallsInFlight(); }

  void onStopped(unsigned int entity, const char* reason, const nox::utils::Vector<unsigned int>& hits) override;
  void onResumed() override;
  void onHostLost(const nox::utils::String& reason) override;

 private:
  using Handler = void (DebugSession::*)(const Request&);
  struct Route;
  static const Route routes[];

  // ---- Requests.
  void initialize(const Request& request);
  void attach(const Request& request);
  void launch(const Request& request);
  void configurationDone(const Request& request);
  // threads, stackTrace, scopes, variables, evaluate.
  void inspect(const Request& request);
  void pause(const Request& request);
  void resume(const Request& request);
  void setFunctionBreakpoints(const Request& request);
  void setBreakpoints(const Request& request);
  void setExceptionBreakpoints(const Request& request);
  void disconnect(const Request& request);

  // ---- Host replies.
  void onAttachReply(const HostCall& call, const HttpReply& reply, std::int64_t now);
  void onCommand(const HostCall& call, const HttpReply& reply);
  void onBreakpointsReply(const HostCall& call, const HttpReply& reply);
  void onDisconnectReply(const HostCall& call, const HttpReply& reply);

  // ---- Helpers.
  void fail(std::int64_t requestSeq, const char* command, const nox::utils::String& message);
  void respondBreakpoints(std::int64_t requestSeq);
  void startQueuedBreakpoints();
  void beginDisconnect(std::int64_t requestSeq);
  void endDisconnect();
  void forgetHost();

  ProtocolConnection& connection_;
  HostLink host_;
  InspectionRequests inspection_;
  FunctionBreakpoints breakpoints_;
  StopWatcher watcher_;

  unsigned int lastStoppedEntity_ = 0;

  // setFunctionBreakpoints requests waiting for the one in progress (copies, owned).
  nox::utils::Deque<std::pair<std::int64_t, nox::utils::DynamicObject*>> queuedBreakpoints_;

  bool disconnecting_ = false;
  std::int64_t disconnectSeq_ = -1;
  unsigned int disconnectCalls_ = 0;
  bool finalSuspended_ = false;
};

}  // namespace nox::dap
