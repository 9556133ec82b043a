// Answers what an editor reads of the attached host: threads (one per entity, id = the
// entity's id, name "entity <id>"), an entity's contexts as stack frames (top first,
// named by their locations), a frame's single scope "Context" (what the context writes
// about itself), variables, and evaluated resource paths ("sim/agents/2" reads
// GET /api/sim/agents/2).
//
// Frame ids and variable references live in a VariableStore that forget() empties
// whenever execution goes on; a reply that comes back after that finds its references
// gone and says so.
#pragma once

#include "HostLink.h"
#include "ProtocolConnection.h"
#include "VariableStore.h"

#include <nox/utils/String.h>

#include <cstdint>

namespace nox::utils {
class DynamicObject;
}

namespace nox::dap {

class InspectionRequests {
 public:
  InspectionRequests(ProtocolConnection& connection, HostLink& host) : connection_(connection), host_(host) {}

  // threads, stackTrace, scopes, variables or evaluate.
  void onRequest(const Request& request);
  // A reply to a call made for one of them.
  void onReply(const HostCall& call, const HttpReply& reply);
  void forget();

 private:
  void threads(const Request& request);
  void stackTrace(const Request& request);
  void scopes(const Request& request);
  void variables(const Request& request);
  void evaluate(const Request& request);

  void onThreads(const HostCall& call, const HttpReply& reply);
  void onStackTrace(const HostCall& call, const HttpReply& reply);
  void onContext(const HostCall& call, const HttpReply& reply);
  void onEvaluate(const HostCall& call, const HttpReply& reply);

  void fail(const HostCall& call, const nox::utils::String& message);
  // Parses a reply body into a new document; null (and the request answered) when not JSON.
  nox::utils::DynamicObject* readDocument(const HostCall& call, const HttpReply& reply);
  void respondVariables(std::int64_t requestSeq, std::int64_t reference);

  ProtocolConnection& connection_;
  HostLink& host_;
  VariableStore store_;
  // Bumped by forget(), so that late replies know their references went.
  std::int64_t generation_ = 0;
};

}  // namespace nox::dap
