// The entry point of inspection, owned by the Facilities. The runtime's engines register
// with it under a path; an inspection client reaches them through its resource
// operations, usually over the HTTP server it starts on demand (JSON over HTTP, see
// startHttp). Two engines come with it: the debugger ("debug", registered from the
// start) and the event engine ("events", registered while the HTTP server runs).
//
// Every report goes to the framework's logger (getLogger), which passes it on to the
// current logger of the Facilities.
//
//   InspectionFramework& inspection = Facilities::instance().getInspectionFramework();
//   inspection.registerEngine(myEngine);     // myEngine.getPath() == "sim"
//   inspection.startHttp(8080);              // GET /api/sim/... reaches myEngine
//   ...
//   inspection.shutdownHttp();
//   inspection.unregisterEngine("sim");
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/ScopedPtr.h>
#include <nox/utils/String.h>
#include <nox/utils/debugger/HttpOptions.h>
#include <nox/utils/debugger/Status.h>

namespace nox::utils {
class AbstractLogger;
class AbstractObjectBuilder;
class DynamicObject;
class Facilities;
}  // namespace nox::utils

namespace nox::utils::debugger {

class AbstractEngine;
class DebuggerFramework;
class EngineDebuggerFacade;

namespace impl {
class FacilitiesLogger;
class HTTPServer;
class InspectionFrameworkImpl;
}  // namespace impl

class NOX_UTILS_API InspectionFramework {
 public:
  // One registered engine, as listEngines reports it.
  struct EngineState {
    String path;
    bool enabled = false;
  };

  explicit InspectionFramework(Facilities& facilities);
  // Stops the HTTP server, then reports contexts that engines never popped.
  ~InspectionFramework();

  InspectionFramework(const InspectionFramework&) = delete;
  InspectionFramework& operator=(const InspectionFramework&) = delete;

  Facilities& getFacilities() const { return facilities_; }
  // "default" until set.
  const char* getName() const { return name_.c_str(); }
  void setName(const char* name);
  AbstractLogger& getLogger() const;

  DebuggerFramework& getDebugger() const;
  // What engines call to report their entities and contexts.
  EngineDebuggerFacade& getFacade() const;
  impl::InspectionFrameworkImpl& getImplementation() const { return *impl_; }

  // ---- Engines, known by their path. The engine must stay alive while registered.

  // False for an engine without a path, a path that cannot be hashed in the
  // facilities' string table, or a path already taken.
  bool registerEngine(AbstractEngine& engine);
  // An unknown path is only a warning.
  void unregisterEngine(const char* path);
  void enableEngine(const char* path);
  void disableEngine(const char* path);
  // An unknown path counts as disabled (with a warning).
  bool isEngineEnabled(const char* path) const;
  void enableAllEngines();
  void disableAllEngines();
  // The registered engines and whether each is enabled, in registration order: a copy
  // taken at one moment (under the framework mutex).
  Vector<EngineState> listEngines() const;

  // ---- The HTTP server.

  // Serves the resources on `port` (every local address) with one worker thread and
  // no access checks. False when it already runs or the port cannot be used.
  bool startHttp(unsigned short port);
  // Serves the resources as `options` say (see HttpOptions for the safe defaults:
  // loopback only, Host and Origin checks, several worker threads, bounded bodies and
  // waits, an optional access token). False when it already runs, an option is
  // invalid, or the address and port cannot be used.
  bool startHttp(const HttpOptions& options);
  bool isHttpStarted() const;
  // The port the server listens on since the last successful startHttp (the one the
  // system chose for port 0 in the options form); 0 before.
  unsigned short getHttpPort() const;
  // Waits for the request being served, if any. Harmless when not started.
  void shutdownHttp();

  // ---- Resources. The first segment of `path` names the engine, which handles the
  // rest; no such engine answers unknown. Calls are serialised on the framework mutex.

  resources::Status retrieveResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                     AbstractObjectBuilder& reply);
  resources::Status createResource(const char* path, unsigned int length, const DynamicObject& request,
                                   AbstractObjectBuilder& reply);
  resources::Status deleteResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                   AbstractObjectBuilder& reply);

  // Event subscriptions (the request registry's).
  bool unsubscribe(unsigned int handle);
  void unsubscribeAll();
  // While the registry holds this many requests (1000 unless set), clients' new
  // subscriptions are refused with a warning (400 over HTTP).
  unsigned int getSubscriptionLimit() const;
  void setSubscriptionLimit(unsigned int limit);

 private:
  Facilities& facilities_;
  String name_;
  ScopedPtr<impl::FacilitiesLogger> logger_;
  ScopedPtr<impl::InspectionFrameworkImpl> impl_;
  ScopedPtr<impl::HTTPServer> http_;
};

}  // namespace nox::utils::debugger
