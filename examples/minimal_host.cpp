// The smallest host worth inspecting: it brings the library up, registers one engine
// with one entity, pushes a context on that entity, serves the inspection API for a
// while, then takes everything down in the reverse order.
//
//   minimal_host [PORT [MILLISECONDS]]        (defaults: 8080, 10000)
//   curl http://127.0.0.1:8080/api/hello                      {"greeting":"hello"}
//   curl http://127.0.0.1:8080/api/debug/entities/1/contexts  the pushed context
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/OstreamLogger.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/InspectionFramework.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

namespace debugger = nox::utils::debugger;

namespace {

// Where the entity stands; shown by GET /api/debug/entities/1/contexts/0.
class GreetingContext : public debugger::AbstractContext {
 public:
  const nox::utils::Uri& getLocation() const override { return location_; }
  bool serialize(nox::utils::AbstractObjectBuilder& builder) const override {
    return builder.beginObject() && builder.objectChild("doing") && builder.string("greeting") && builder.endObject();
  }

 private:
  nox::utils::Uri location_ = nox::utils::Uri::create("hello:greeter/greet");
};

// The debugger makes a context only when it pushes one; this factory hands out the
// engine's own, which the debugger never frees.
class ContextFactory : public debugger::AbstractContextFactory {
 public:
  explicit ContextFactory(debugger::AbstractContext& context) : context_(context) {}
  debugger::AbstractContext* createContext() override { return &context_; }

 private:
  debugger::AbstractContext& context_;
};

// Answers GET /api/hello, the engine's only resource.
class HelloEngine : public debugger::AbstractEngine {
 public:
  HelloEngine() : AbstractEngine("hello", true) {}

  debugger::resources::Status retrieveResource(const char*, unsigned int length, const nox::utils::DynamicObject&,
                                               nox::utils::AbstractObjectBuilder& reply) override {
    if (length != 0) return debugger::resources::unknown;
    // A reply is one whole build: begin, one value, end.
    const bool written = reply.begin() && reply.beginObject() && reply.objectChild("greeting") &&
                         reply.string("hello") && reply.endObject() && reply.end();
    return written ? debugger::resources::done : debugger::resources::error;
  }
};

}  // namespace

int main(int argc, char** argv) {
  const unsigned short port = static_cast<unsigned short>(argc > 1 ? std::atoi(argv[1]) : 8080);
  const int milliseconds = argc > 2 ? std::atoi(argv[2]) : 10000;

  // The logger must outlive the library; initialize() comes before any other call.
  // Errors go to stderr, warnings and infos to stdout, traces nowhere.
  nox::utils::OstreamLogger logger(&std::cerr, &std::cout, &std::cout, nullptr);
  if (!nox::utils::initialize(&logger)) return 1;
  debugger::InspectionFramework& inspection = nox::utils::Facilities::instance().getInspectionFramework();

  int status = 1;
  {
    HelloEngine engine;
    const unsigned int entity = 1;
    GreetingContext context;
    ContextFactory factory(context);
    if (inspection.registerEngine(engine)) {
      engine.onEntitiesRegistration(&entity, 1);
      // Every push and pop is a place where a client may stop this thread.
      engine.getFacade()->pushContext(engine, entity, factory);
      if (inspection.startHttp(port)) {
        std::cout << "serving http://127.0.0.1:" << port << "/api for " << milliseconds << " ms" << std::endl;
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        status = 0;
      }
      // Once the server is down no client can stop the thread any more; disabling the
      // debugger resumes it in case one had.
      inspection.shutdownHttp();
      inspection.disableEngine("debug");
      engine.getFacade()->popContext(engine, entity);
      engine.onEntitiesUnregistration(&entity, 1);
      inspection.unregisterEngine("hello");
    }
  }
  nox::utils::terminate(&logger);
  return status;
}
