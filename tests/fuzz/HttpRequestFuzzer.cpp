// One raw HTTP request (request line, headers, body) through the inspection server's
// request handling, into a running inspection framework: the debugger, the event engine
// and an engine with two entities and a stack of contexts. The request is handled on a
// thread with the stack size of the server's worker threads, once as startHttp(port)
// serves it and once as the options form does (Host, Origin and token checks, a small
// body limit). Whatever the request, the handling writes one well-formed reply and the
// framework answers afterwards; an assertion or a crash is a finding. The framework is
// put back in its first state after each input, so that inputs replay alike.
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/DebuggerFramework.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/HttpOptions.h>
#include <nox/utils/debugger/InspectionFramework.h>
#include <nox/utils/debugger/impl/EventFramework.h>
#include <nox/utils/debugger/impl/HttpRequest.h>
#include <nox/utils/debugger/impl/HttpRequestHandler.h>

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzSupport.h"

namespace {

namespace debugger = nox::utils::debugger;
using debugger::impl::HttpHeader;
using debugger::impl::HttpRequest;

// CivetWeb's worker threads, as the Debian package builds it.
constexpr std::size_t serverStackSize = 100 * 1024;
// What CivetWeb keeps of a request's headers.
constexpr unsigned int keptHeaders = 64;

// The request as CivetWeb would hand it over, parsed from the input's bytes.
struct RawRequest {
  HttpRequest request;
  std::vector<HttpHeader> headers;
  std::string_view body;
};

std::string_view takeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// False for what CivetWeb would not take for a request at all.
bool parse(std::string_view text, RawRequest& raw) {
  const std::string_view line = takeLine(text);
  const std::size_t first = line.find(' ');
  const std::size_t last = line.rfind(' ');
  if (first == std::string_view::npos || first == last) return false;
  raw.request.method = line.substr(0, first);
  const std::string_view target = line.substr(first + 1, last - first - 1);
  const std::size_t question = target.find('?');
  raw.request.rawPath = target.substr(0, question);
  if (question != std::string_view::npos) raw.request.query = target.substr(question + 1);
  for (std::string_view header = takeLine(text); !header.empty(); header = takeLine(text)) {
    const std::size_t colon = header.find(':');
    if (colon == std::string_view::npos || colon == 0) return false;
    if (raw.headers.size() == keptHeaders) continue;
    raw.headers.push_back(HttpHeader{header.substr(0, colon), trimmed(header.substr(colon + 1))});
  }
  raw.request.headers = raw.headers.data();
  raw.request.headerCount = static_cast<unsigned int>(raw.headers.size());
  raw.request.headersTruncated = raw.headers.size() == keptHeaders;
  raw.body = text;
  return true;
}

// The body as the connection gives it: to its end, de-chunked when chunked; a body
// that stops early ends as a timed-out read would.
class InputConnection final : public debugger::impl::AbstractHttpConnection {
 public:
  InputConnection(std::string_view body, bool chunked) : body_(body), chunked_(chunked) {}

  int readBody(char* buffer, std::size_t size) override {
    if (chunked_ && left_ == 0 && !nextChunk()) return failed_ ? -1 : 0;
    std::size_t count = std::min(size, chunked_ ? left_ : body_.size());
    count = std::min(count, body_.size());
    if (count == 0) return chunked_ ? -1 : 0;
    std::memcpy(buffer, body_.data(), count);
    body_.remove_prefix(count);
    if (chunked_) left_ -= count;
    return static_cast<int>(count);
  }
  bool write(const char* data, std::size_t size) override {
    reply_.append(data, size);
    return true;
  }

  const std::string& reply() const { return reply_; }

 private:
  // Steps to the next chunk; false at the last one or when the chunks are broken.
  bool nextChunk() {
    if (started_ && takeLine(body_).size() != 0) return !(failed_ = true);
    started_ = true;
    const std::string_view size = takeLine(body_);
    std::size_t value = 0;
    std::size_t digits = 0;
    for (char c : size) {
      const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
      if (digit < 0 || ++digits > 8) break;
      value = value * 16 + static_cast<std::size_t>(digit);
    }
    if (digits == 0) return !(failed_ = true);
    left_ = value;
    return value != 0;
  }

  std::string_view body_;
  const bool chunked_;
  std::size_t left_ = 0;
  bool started_ = false;
  bool failed_ = false;
  std::string reply_;
};

class FixedContext : public debugger::AbstractContext {
 public:
  explicit FixedContext(const char* location) : location_(nox::utils::Uri::create(location)) {}
  const nox::utils::Uri& getLocation() const override { return location_; }
  bool serialize(nox::utils::AbstractObjectBuilder& out) const override { return out.string("frame"); }

 private:
  nox::utils::Uri location_;
};

class FixedFactory : public debugger::AbstractContextFactory {
 public:
  explicit FixedFactory(FixedContext& context) : context_(context) {}
  debugger::AbstractContext* createContext() override { return &context_; }

 private:
  FixedContext& context_;
};

// An engine with entities 1 and 2; entity 1 stands in two contexts.
class StillEngine : public debugger::AbstractEngine {
 public:
  StillEngine() : AbstractEngine("sim", true) {}
  void populate() {
    const unsigned int entities[] = {1, 2};
    onEntitiesRegistration(entities, 2);
    FixedFactory outer(outer_);
    FixedFactory inner(inner_);
    getFacade()->pushContext(*this, 1, outer);
    getFacade()->pushContext(*this, 1, inner);
  }

 private:
  FixedContext outer_{"sim:agents/1"};
  FixedContext inner_{"sim:agents/1/think"};
};

struct Host {
  Host() {
    nox::utils::initialize(&logger);
    nox::utils::Facilities::instance().setLogger(logger);
    debugger::InspectionFramework& framework = nox::utils::Facilities::instance().getInspectionFramework();
    events = new debugger::impl::EventFramework(framework.getImplementation());
    framework.registerEngine(engine);
    framework.registerEngine(*events);
    engine.populate();
    options.accessToken = "fuzz-token";
    options.allowedOrigins.push_back("http://allowed.example");
    options.maxBodySize = 4096;
    portForm = new debugger::impl::HttpRequestHandler(framework);
    optionsForm = new debugger::impl::HttpRequestHandler(framework, options);
    framework.setSubscriptionLimit(64);
  }

  // What a request may have changed: stop conditions, subscriptions, queued events and
  // engines switched off.
  void reset() {
    debugger::InspectionFramework& framework = nox::utils::Facilities::instance().getInspectionFramework();
    framework.enableAllEngines();
    framework.getDebugger().resume();
    framework.unsubscribeAll();
    nox::utils::DynamicObject none;
    nox::utils::AbstractObjectBuilder ignored;
    framework.deleteResource("events/", 7, none, ignored);
  }

  nox::fuzz::SilentLogger logger;
  StillEngine engine;
  debugger::impl::EventFramework* events;
  debugger::HttpOptions options;
  debugger::impl::HttpRequestHandler* portForm;
  debugger::impl::HttpRequestHandler* optionsForm;
};

Host* host = nullptr;

struct Job {
  const RawRequest* raw;
  debugger::impl::HttpRequestHandler* handler;
  std::string reply;
};

void* serve(void* argument) {
  Job& job = *static_cast<Job*>(argument);
  InputConnection connection(job.raw->body, job.raw->request.isChunked());
  job.handler->handle(job.raw->request, connection);
  job.reply = connection.reply();
  return nullptr;
}

void serveOnServerStack(Job& job) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, serverStackSize);
  pthread_t thread;
  NOX_FUZZ_CHECK(pthread_create(&thread, &attributes, &serve, &job) == 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// One status line with a code of the reply table, then headers and what they announce.
void checkReply(const std::string& reply) {
  NOX_FUZZ_CHECK_SHOWING(reply.rfind("HTTP/1.1 ", 0) == 0 && reply.size() > 12, reply);
  const std::string code = reply.substr(9, 3);
  static const char* const codes[] = {"200", "201", "204", "400", "401", "403", "404", "405", "500", "501"};
  NOX_FUZZ_CHECK_SHOWING(std::find(std::begin(codes), std::end(codes), code) != std::end(codes), reply);
  const std::size_t end = reply.find("\r\n\r\n");
  NOX_FUZZ_CHECK_SHOWING(end != std::string::npos, reply);
  const std::size_t length = reply.find("Content-Length: ");
  NOX_FUZZ_CHECK_SHOWING(length != std::string::npos && length < end, reply);
  NOX_FUZZ_CHECK_SHOWING(std::stoul(reply.substr(length + 16)) == reply.size() - end - 4, reply);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  nox::fuzz::abortOnAssertion();
  host = new Host();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  RawRequest raw;
  if (!parse(std::string_view(reinterpret_cast<const char*>(data), size), raw)) return 0;
  for (debugger::impl::HttpRequestHandler* handler : {host->portForm, host->optionsForm}) {
    Job job{&raw, handler, std::string()};
    serveOnServerStack(job);
    checkReply(job.reply);
    host->reset();
  }
  // The framework still serves.
  nox::utils::DynamicObject none;
  nox::utils::AbstractObjectBuilder ignored;
  NOX_FUZZ_CHECK(nox::utils::Facilities::instance().getInspectionFramework().retrieveResource(
                     "debug/entities", 14, none, ignored) != debugger::resources::unknown);
  return 0;
}
