// Turns one HTTP request into one resource call of the inspection framework and writes
// the resource's JSON back (the protocol is described in HTTPServer.h). The handling
// knows nothing of the embedded server: HTTPServer feeds it the requests CivetWeb
// receives, and tests and the fuzzing target feed it requests of their own.
//
// Whatever a request holds, handling it ends in a reply and at most one resource call;
// a refused request changes nothing. With HttpOptions::serveInspector, a GET below
// "/inspector" is answered from the inspector's files instead (InspectorAssets.h).
// Before anything runs:
//   - a request whose headers the server had to cut is refused (400);
//   - with an access policy (the options form), its checks (403, 401);
//   - the path is percent-decoded with its length; an encoded NUL is refused (400);
//   - a POST body is read exactly (RequestBody.h) and must be a JSON object of bounded
//     depth without NUL bytes in its texts (RequestBodyBuilder.h); anything else is 400.
// Each refusal is logged as a warning that says why.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/ScopedPtr.h>
#include <nox/utils/String.h>
#include <nox/utils/debugger/Status.h>

#include <cstdint>
#include <string_view>

namespace nox::utils {
class DynamicObject;
}

namespace nox::utils::debugger {
class InspectionFramework;
struct HttpOptions;
}  // namespace nox::utils::debugger

namespace nox::utils::debugger::impl {

class AbstractHttpConnection;
class HttpAccessPolicy;
class JsonHttpReply;
struct HttpRequest;

class NOX_UTILS_API HttpRequestHandler {
 public:
  // No access checks, bodies of any size: what startHttp(port) serves with.
  explicit HttpRequestHandler(InspectionFramework& framework);
  // The checks and limits of `options`.
  HttpRequestHandler(InspectionFramework& framework, const HttpOptions& options);
  ~HttpRequestHandler();

  HttpRequestHandler(const HttpRequestHandler&) = delete;
  HttpRequestHandler& operator=(const HttpRequestHandler&) = delete;

  // Answers `request` on `connection`; the whole reply is written there.
  void handle(const HttpRequest& request, AbstractHttpConnection& connection);

 private:
  enum Method { get = 0, post = 1, del = 2, options = 3, unsupported = 4 };

  // The status index of the reply, its body written into `reply`.
  int answer(const HttpRequest& request, Method method, AbstractHttpConnection& connection, JsonHttpReply& reply);
  // What precedes any look at the path: header and access checks. JsonHttpReply::ok
  // when the request may go on.
  int admit(const HttpRequest& request, Method method) const;
  // Answers a request for the inspector's files, which only the header and Host
  // checks guard.
  void serveInspectorFile(const HttpRequest& request, AbstractHttpConnection& connection, JsonHttpReply& reply);
  // Calls the resource operation of `method` on `resource` (the path below "api").
  int dispatch(Method method, const String& resource, const HttpRequest& request, AbstractHttpConnection& connection,
               DynamicObject& parameters, JsonHttpReply& reply);
  // The status index for the resource layer's answer; `reportedErrors` when handling the
  // request reported an error.
  int replyTo(resources::Status status, Method method, std::string_view resource, bool reportedErrors,
              JsonHttpReply& reply);
  // Reads the body into `parameters`; JsonHttpReply::ok or the status of the refusal.
  int readBody(const HttpRequest& request, AbstractHttpConnection& connection, DynamicObject& parameters);
  // GET /api/engines: every registered engine with its path and whether it is enabled.
  int listEngines(JsonHttpReply& reply);
  int switchEngines(const DynamicObject& board, JsonHttpReply& reply);

  InspectionFramework& framework_;
  ScopedPtr<HttpAccessPolicy> policy_;
  std::uint64_t maxBodySize_;
  bool servesInspector_ = false;
};

}  // namespace nox::utils::debugger::impl
