// The wire side of the inspection framework: an embedded CivetWeb server whose single
// worker thread turns each HTTP request into one resource call of the framework and
// writes the resource's JSON back.
//
//   GET|POST|DELETE|OPTIONS /api/<engine path>/<resource...>?<query>
//
// The first segment may also be the library version ("/0.4.0/debug"). The query
// becomes a DynamicObject of parameters; the members of a POST body (JSON) join them,
// replacing parameters of the same name. POST /api/engines is the engine switch
// board: {"events": true, "debug": 0} enables and disables engines by path, and
// GET /api/engines lists them: [{"path":"debug","enabled":true},...] in registration
// order (it hides an engine a host would register under the path "engines"). Every reply
// closes the connection and allows any origin.
//
// A request never changes the framework's state by failing: bad methods, paths,
// queries and bodies are answered (400, 404, or 204 for POST and DELETE) and logged as
// warnings. A handled request answers 200, or 500 when handling it reported an error
// on the framework's logger: the errors are counted on the serving thread around the
// request, so neither an error of an earlier request nor one an engine thread reports
// meanwhile turns the reply into 500.
#pragma once

#include <nox/utils/ScopedPtr.h>
#include <nox/utils/debugger/Status.h>

struct mg_connection;
struct mg_context;
struct mg_request_info;

namespace nox::utils {
class DynamicObject;
}

namespace nox::utils::debugger {
class InspectionFramework;
}

namespace nox::utils::debugger::impl {

class EventFramework;
class JsonHttpReply;

class HTTPServer {
 public:
  explicit HTTPServer(InspectionFramework& framework);
  // Stops the server when it runs.
  ~HTTPServer();

  HTTPServer(const HTTPServer&) = delete;
  HTTPServer& operator=(const HTTPServer&) = delete;

  // Listens on `port` and registers the event engine ("events") with the framework.
  bool start(unsigned short port);
  // Waits for the request in progress, then unregisters the event engine.
  void shutdown();
  bool isStarted() const { return context_ != nullptr; }
  unsigned short getPort() const { return port_; }

 private:
  enum Method { get = 0, post = 1, del = 2, options = 3, unsupported = 4 };

  static int onBeginRequest(mg_connection* connection);
  static int onLogMessage(const mg_connection* connection, const char* message);

  void handleRequest(mg_connection* connection, const mg_request_info& request);
  // The status index of the reply, its body written into `reply`.
  int answer(mg_connection* connection, const mg_request_info& request, Method method, JsonHttpReply& reply);
  // The status index for the resource layer's answer; `reportedErrors` when handling the
  // request reported an error.
  int replyTo(resources::Status status, Method method, const char* resource, bool reportedErrors, JsonHttpReply& reply);
  bool readBody(mg_connection* connection, DynamicObject& request);
  // GET /api/engines: every registered engine with its path and whether it is enabled.
  int listEngines(JsonHttpReply& reply);
  int switchEngines(const DynamicObject& board, JsonHttpReply& reply);

  void registerEventEngine();
  void unregisterEventEngine();

  InspectionFramework& framework_;
  mg_context* context_ = nullptr;
  unsigned short port_ = 0;
  ScopedPtr<EventFramework> events_;
};

}  // namespace nox::utils::debugger::impl
