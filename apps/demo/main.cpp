// nox-demo: a host process as an engine writer would build it. It brings the library
// up, serves the inspection API over HTTP, registers a small agent simulation ("sim")
// stepped on its own thread, and comes down cleanly on SIGINT or SIGTERM (or after
// --ticks ticks). It serves the way a host should: on loopback unless told otherwise,
// refusing pages of other sites, and behind an access token when given one.
#include "SimEngine.h"

#include <nox/utils/Assertion.h>
#include <nox/utils/ErrorType.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/OstreamLogger.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/InspectionFramework.h>

#include <pthread.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

struct Options {
  unsigned long port = 8080;
  unsigned long entities = 4;
  unsigned long tickMilliseconds = 100;
  unsigned long ticks = 0;
  bool verbose = false;
  std::string bind = "127.0.0.1";
  // Empty: none required.
  std::string token;
  std::vector<std::string> allowedOrigins;
};

const char* const usage =
    "usage: nox-demo [--port N] [--bind ADDRESS] [--token TEXT] [--allow-origin ORIGIN]... [--entities N]\n"
    "                [--tick-ms N] [--ticks N] [--verbose] [--help]\n"
    "       nox-demo --version\n"
    "  --port N               inspection HTTP port (default 8080)\n"
    "  --bind ADDRESS         IPv4 address to listen on (default 127.0.0.1; 0.0.0.0 for every interface)\n"
    "  --token TEXT           require \"Authorization: Bearer TEXT\" on every API request, which\n"
    "                         the inspector page asks for\n"
    "                         (default: the NOX_INSPECT_TOKEN environment variable, else none)\n"
    "  --allow-origin ORIGIN  let pages of ORIGIN (such as http://localhost:3000, or *) POST and DELETE\n"
    "  --entities N           number of simulated agents (default 4)\n"
    "  --tick-ms N            pause between two ticks, in milliseconds (default 100)\n"
    "  --ticks N              stop after N ticks (default: run until SIGINT or SIGTERM)\n"
    "  --verbose              log every HTTP request\n";

bool parseNumber(const char* text, unsigned long minimum, unsigned long maximum, unsigned long& value) {
  if (text == nullptr || *text < '0' || *text > '9') return false;
  char* end = nullptr;
  value = std::strtoul(text, &end, 10);
  return *end == '\0' && value >= minimum && value <= maximum;
}

bool takeText(const char* text, std::string& value) {
  if (text == nullptr || *text == '\0') return false;
  value = text;
  return true;
}

bool parseOptions(int argc, char** argv, Options& options) {
  if (const char* token = std::getenv("NOX_INSPECT_TOKEN")) options.token = token;
  for (int i = 1; i < argc; ++i) {
    const char* option = argv[i];
    const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
    bool valid = true;
    if (std::strcmp(option, "--help") == 0) {
      std::cout << usage;
      std::exit(0);
    } else if (std::strcmp(option, "--version") == 0) {
      std::cout << "nox-demo " NOX_PROGRAM_VERSION "\n";
      std::exit(0);
    } else if (std::strcmp(option, "--verbose") == 0) {
      options.verbose = true;
      continue;
    } else if (std::strcmp(option, "--port") == 0) {
      valid = parseNumber(value, 1, 65535, options.port);
    } else if (std::strcmp(option, "--entities") == 0) {
      valid = parseNumber(value, 1, 10000, options.entities);
    } else if (std::strcmp(option, "--tick-ms") == 0) {
      valid = parseNumber(value, 0, 60000, options.tickMilliseconds);
    } else if (std::strcmp(option, "--ticks") == 0) {
      valid = parseNumber(value, 1, 1000000000, options.ticks);
    } else if (std::strcmp(option, "--bind") == 0) {
      valid = takeText(value, options.bind);
    } else if (std::strcmp(option, "--token") == 0) {
      valid = takeText(value, options.token);
    } else if (std::strcmp(option, "--allow-origin") == 0) {
      valid = takeText(value, options.allowedOrigins.emplace_back());
    } else {
      valid = false;
    }
    if (!valid) {
      std::cerr << "nox-demo: bad option " << option << (value != nullptr ? " " : "") << (value ? value : "") << "\n"
                << usage;
      return false;
    }
    ++i;
  }
  return true;
}

// A host serving the inspection API must outlive whatever a client asks: the broken
// contracts a request can reveal (an entity or context that does not exist) are logged
// and execution goes on, the checking code returning its neutral result.
void logAssertion(const char* file, unsigned int line, const char* message) {
  if (nox::utils::Facilities::isSet()) {
    nox::utils::Facilities::instance().getLogger().logError(nox::utils::error::contractViolation, file, line, message);
  } else {
    std::cerr << file << "(" << line << "): [assertion failed] " << message << std::endl;
  }
}

nox::utils::debugger::HttpOptions toHttpOptions(const Options& options) {
  nox::utils::debugger::HttpOptions http;
  http.bindAddress = options.bind.c_str();
  http.port = static_cast<unsigned short>(options.port);
  http.accessToken = options.token.c_str();
  http.serveInspector = true;
  for (const std::string& origin : options.allowedOrigins) http.allowedOrigins.emplace_back(origin.c_str());
  return http;
}

void printWelcome(const Options& options, unsigned short port) {
  // Every interface includes loopback, where the examples reach it.
  const std::string host = options.bind == "0.0.0.0" ? "127.0.0.1" : options.bind;
  const std::string base = "http://" + host + ":" + std::to_string(port);
  // The token itself is never printed.
  const std::string curl = options.token.empty() ? "curl" : "curl -H 'Authorization: Bearer <token>'";
  std::cout << "Inspector: " << base << "/inspector/\n"
            << "nox-demo: " << options.entities << " agents, inspection API on " << base << "/api\n"
            << "Listening on " << options.bind << ":" << port << ", "
            << (options.token.empty() ? "no access token required" : "an access token is required") << ".\n"
            << "Try:\n"
            << "  " << curl << " " << base << "/api/debug/entities\n"
            << "  " << curl << " -X POST " << base << "/api/debug/suspend -d '{\"entity\":2}'\n"
            << "  " << curl << " " << base << "/api/sim/agents/2\n"
            << "Press Ctrl-C to stop." << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!parseOptions(argc, argv, options)) return 2;

  // Blocked in every thread (threads inherit the mask), taken by sigwait below:
  // SIGUSR1 is how the engine thread says it has run its ticks.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  // Traces (one per HTTP request) only on demand.
  nox::utils::OstreamLogger logger(&std::cerr, &std::cout, &std::cout, options.verbose ? &std::cout : nullptr);
  nox::utils::setAssertionFailedFunction(&logAssertion);
  if (!nox::utils::initialize(&logger)) return 1;
  nox::utils::Facilities& facilities = nox::utils::Facilities::instance();
  facilities.setLogger(logger);
  nox::utils::debugger::InspectionFramework& inspection = facilities.getInspectionFramework();

  int status = 1;
  {
    nox::demo::SimEngine sim(static_cast<unsigned int>(options.entities),
                             static_cast<unsigned int>(options.tickMilliseconds), options.ticks,
                             [] { kill(getpid(), SIGUSR1); });
    if (nox::demo::SimEngine::registerTypes(facilities.getTypeManager(), &logger) && inspection.registerEngine(sim)) {
      if (inspection.startHttp(toHttpOptions(options)) && sim.start()) {
        printWelcome(options, inspection.getHttpPort());
        int received = 0;
        sigwait(&signals, &received);
        std::cout << "nox-demo: " << (received == SIGUSR1 ? "ticks done" : "signal received") << ", stopping."
                  << std::endl;
        status = 0;
      }
      // No client may stop the engine once the server is down; a disabled debugger
      // resumes a stopped engine thread and stops it nowhere any more.
      inspection.shutdownHttp();
      inspection.disableEngine("debug");
      sim.stop();
      inspection.unregisterEngine("sim");
    }
  }
  facilities.clearLogger();
  nox::utils::terminate(&logger);
  return status;
}
