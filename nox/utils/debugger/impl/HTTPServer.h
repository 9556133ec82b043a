// The wire side of the inspection framework: an embedded CivetWeb server whose worker
// threads hand each HTTP request to an HttpRequestHandler, which turns it into one
// resource call of the framework and writes the resource's JSON back. startHttp(port)
// serves on every interface with one worker thread and no access checks; the options
// form serves as its HttpOptions say (loopback, several threads, checks and limits).
//
//   GET|POST|DELETE|OPTIONS /api/<engine path>/<resource...>?<query>
//
// The first segment may also be the library version ("/0.4.0/debug"). The query
// becomes a DynamicObject of parameters; the members of a POST body (a JSON object) join them,
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
#include <nox/utils/String.h>
#include <nox/utils/debugger/HttpOptions.h>

struct mg_connection;
struct mg_context;

namespace nox::utils::debugger {
class InspectionFramework;
}

namespace nox::utils::debugger::impl {

class EventFramework;
class HttpRequestHandler;

class HTTPServer {
 public:
  explicit HTTPServer(InspectionFramework& framework);
  // Stops the server when it runs.
  ~HTTPServer();

  HTTPServer(const HTTPServer&) = delete;
  HTTPServer& operator=(const HTTPServer&) = delete;

  // Listens on `port` and registers the event engine ("events") with the framework.
  bool start(unsigned short port);
  // The same, listening and checking requests as `options` say.
  bool start(const HttpOptions& options);
  // Waits for the request in progress, then unregisters the event engine.
  void shutdown();
  bool isStarted() const { return context_ != nullptr; }
  unsigned short getPort() const { return port_; }

 private:
  static int onBeginRequest(mg_connection* connection);
  static int onLogMessage(const mg_connection* connection, const char* message);

  // Reports the running server when it runs.
  bool isRunningAlready() const;
  // Starts CivetWeb with `options` (name and value pairs, then null), the event engine
  // and `handler` (made with NOX_NEW, owned from here on); `port` is the one asked for,
  // reported on failure.
  bool launch(const char** options, unsigned short port, HttpRequestHandler* handler);

  void registerEventEngine();
  void unregisterEventEngine();

  InspectionFramework& framework_;
  mg_context* context_ = nullptr;
  unsigned short port_ = 0;
  // Where the server listens (for the stop's knocker); loopback for the port form.
  String address_;
  ScopedPtr<EventFramework> events_;
  ScopedPtr<HttpRequestHandler> handler_;
};

}  // namespace nox::utils::debugger::impl
