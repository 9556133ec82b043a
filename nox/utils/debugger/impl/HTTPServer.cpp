#include <nox/utils/debugger/impl/HTTPServer.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractDataInputOutput.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/Thread.h>
#include <nox/utils/Time.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/InspectionFramework.h>
#include <nox/utils/debugger/impl/EventFramework.h>
#include <nox/utils/debugger/impl/FacilitiesLogger.h>
#include <nox/utils/debugger/impl/JsonHttpReply.h>
#include <nox/utils/debugger/impl/Replies.h>

#include <civetweb.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace nox::utils::debugger::impl {
namespace {

// The request body as a byte stream read from the connection on demand. The first
// chunk is read ahead, so that a request without a body is told apart before parsing
// (an empty text is no JSON).
class RequestBodyInput final : public AbstractDataInputOutput {
 public:
  RequestBodyInput(mg_connection* connection, AbstractLogger* logger) : connection_(connection) {
    unsigned int size = sizeof ahead_;
    readLink(ahead_, size, logger);
    aheadSize_ = size;
  }

  bool empty() const { return aheadSize_ == 0 && !failed_; }

  bool isWritable() const override { return false; }
  bool write(const char*, unsigned int, AbstractLogger* logger) override {
    NOX_LOG_ERROR(logger, error::invalidOperation, "Not writable.");
    return false;
  }
  bool isReadable() const override { return true; }
  bool read(char* buffer, unsigned int& size, AbstractLogger* logger) override {
    if (aheadOffset_ < aheadSize_) {
      size = std::min(size, aheadSize_ - aheadOffset_);
      std::memcpy(buffer, ahead_ + aheadOffset_, size);
      aheadOffset_ += size;
      return true;
    }
    return readLink(buffer, size, logger);
  }

 private:
  bool readLink(char* buffer, unsigned int& size, AbstractLogger* logger) {
    const int read = failed_ ? 0 : mg_read(connection_, buffer, size);
    if (read < 0) {
      failed_ = true;
      NOX_LOG_ERROR(logger, error::ioProblem, "Error reading from the underlying link.");
    }
    size = read > 0 ? static_cast<unsigned int>(read) : 0;
    return read > 0;
  }

  mg_connection* connection_;
  char ahead_[1024];
  unsigned int aheadSize_ = 0;
  unsigned int aheadOffset_ = 0;
  bool failed_ = false;
};

// CivetWeb's listening thread notices a stop request only between two polls of its
// sockets, and a poll lasts up to two seconds. A connection to the port ends the poll
// at once, so while the server stops, the knocker connects every few milliseconds.
class Knocker {
 public:
  explicit Knocker(unsigned short port) : port_(port), thread_(&Knocker::run, this) {}
  ~Knocker() {
    done_ = true;
    thread_.join(nullptr);
  }

  Knocker(const Knocker&) = delete;
  Knocker& operator=(const Knocker&) = delete;

 private:
  static void* run(void* self) {
    const Knocker& knocker = *static_cast<Knocker*>(self);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(knocker.port_);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    while (!knocker.done_) {
      const int knock = socket(AF_INET, SOCK_STREAM, 0);
      if (knock >= 0) {
        connect(knock, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        close(knock);
      }
      nox::utils::sleep(Time(0.005));
    }
    return nullptr;
  }

  const unsigned short port_;
  std::atomic<bool> done_{false};
  // Last: it starts running once the rest is ready.
  Thread thread_;
};

const char* orEmpty(const char* text) { return text != nullptr ? text : ""; }

unsigned int lengthOf(const char* text) { return static_cast<unsigned int>(std::strlen(text)); }

const char* const optionsReply = "HTTP/1.1 %d %s\r\nContent-Length: 0\r\nAllow: GET,OPTIONS,POST,DELETE\r\n\r\n";

}  // namespace

HTTPServer::HTTPServer(InspectionFramework& framework) : framework_(framework) {}

HTTPServer::~HTTPServer() { shutdown(); }

bool HTTPServer::start(unsigned short port) {
  AbstractLogger* logger = &framework_.getLogger();
  if (isStarted()) {
    NOX_LOG_ERROR(logger, error::invalidOperation, "The inspection HTTP server is already running on port " << port_);
    return false;
  }
  char portText[8];
  std::snprintf(portText, sizeof portText, "%u", static_cast<unsigned int>(port));
  const char* options[] = {
      "enable_directory_listing", "false", "listening_ports", portText, "num_threads", "1", nullptr};
  mg_callbacks callbacks;
  std::memset(&callbacks, 0, sizeof callbacks);
  callbacks.begin_request = &HTTPServer::onBeginRequest;
  callbacks.log_message = &HTTPServer::onLogMessage;
  // Registered before the first request can arrive, so that none meets a missing engine.
  registerEventEngine();
  context_ = mg_start(&callbacks, this, options);
  if (context_ == nullptr) {
    unregisterEventEngine();
    NOX_LOG_ERROR(logger, error::ioProblem, "Unable to start the inspection HTTP server on port " << port);
    return false;
  }
  port_ = port;
  NOX_LOG_INFO(logger, "Inspection HTTP server started on port " << port);
  return true;
}

void HTTPServer::shutdown() {
  if (!isStarted()) return;
  {
    Knocker knocker(port_);
    mg_stop(context_);
  }
  context_ = nullptr;
  NOX_LOG_INFO(&framework_.getLogger(), "Inspection HTTP server stopped.");
  unregisterEventEngine();
}

void HTTPServer::registerEventEngine() {
  events_.reset(NOX_NEW EventFramework(framework_.getImplementation()));
  // The path may be taken by a host's own engine (reported), which must stay.
  if (!framework_.registerEngine(*events_)) events_.reset();
}

void HTTPServer::unregisterEventEngine() {
  if (!events_) return;
  framework_.unregisterEngine(events_->getPath());
  events_.reset();
}

int HTTPServer::onBeginRequest(mg_connection* connection) {
  const mg_request_info* request = mg_get_request_info(connection);
  static_cast<HTTPServer*>(request->user_data)->handleRequest(connection, *request);
  // The whole reply is written: the server must add nothing.
  return 1;
}

int HTTPServer::onLogMessage(const mg_connection* connection, const char* message) {
  const mg_context* context = connection != nullptr ? mg_get_context(connection) : nullptr;
  const HTTPServer* server = context != nullptr ? static_cast<const HTTPServer*>(mg_get_user_data(context)) : nullptr;
  if (server != nullptr) {
    NOX_LOG_WARNING(&server->framework_.getLogger(), message);
  } else if (Facilities::isSet()) {
    NOX_LOG_WARNING(&Facilities::instance().getLogger(),
                    "No set user data while receiving log message from mongoose: " << message);
  }
  // Handled: the server must not print it again.
  return 1;
}

void HTTPServer::handleRequest(mg_connection* connection, const mg_request_info& request) {
  const char* method = orEmpty(request.request_method);
  // Tested on the target logger: the framework's own logger lets every level through.
  if (framework_.getFacilities().getLogger().isLoggingTrace()) {
    NOX_LOG_TRACE(&framework_.getLogger(), "HTTP request:\n\t-method '"
                                               << method << "'\n\t-path: '" << orEmpty(request.local_uri)
                                               << "'\n\t-query: '" << orEmpty(request.query_string) << "'");
  }
  Method code = unsupported;
  if (std::strcmp(method, "GET") == 0) {
    code = get;
  } else if (std::strcmp(method, "POST") == 0) {
    code = post;
  } else if (std::strcmp(method, "DELETE") == 0) {
    code = del;
  } else if (std::strcmp(method, "OPTIONS") == 0) {
    // Whatever the path: a browser's preflight only asks what is allowed.
    mg_printf(connection, optionsReply, 200, "OK");
    return;
  }
  JsonHttpReply reply(connection, &framework_.getLogger());
  reply.send(answer(connection, request, code, reply));
}

int HTTPServer::answer(mg_connection* connection, const mg_request_info& request, Method method, JsonHttpReply& reply) {
  AbstractLogger* logger = &framework_.getLogger();
  // Errors reported from here on, on this thread, belong to this request.
  const std::uint64_t errorsBefore = FacilitiesLogger::countErrorsOfThisThread();
  if (method == unsupported) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << orEmpty(request.request_method) << "' is not a supported method.");
    return JsonHttpReply::badRequest;
  }
  const char* path = orEmpty(request.local_uri);
  const unsigned int pathLength = lengthOf(path);
  unsigned int begin = 0;
  unsigned int end = 0;
  if (!Uri::retrieveFirstPathSegment(path, pathLength, begin, end)) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << path << "' is not a valid path.");
    return JsonHttpReply::badRequest;
  }
  // Kept on purpose: what a GET misses is not found, what a POST or DELETE misses had
  // nothing to act on.
  const int missing = method == get ? JsonHttpReply::notFound : JsonHttpReply::noContent;
  if (!isSegment(path, begin, end, "api") && !isSegment(path, begin, end, getVersionNOX_UTILS())) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << path << "' is not a supported path.");
    return missing;
  }
  const char* query = orEmpty(request.query_string);
  DynamicObject parameters;
  DynamicObjectBuilder parametersBuilder(parameters, 0);
  parametersBuilder.setLogger(logger);
  if (!Uri::parseQuery(query, lengthOf(query), parametersBuilder)) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << query << "' is not a valid query.");
    return missing;
  }
  const char* resource = path + end;
  const unsigned int resourceLength = pathLength - end;
  AbstractObjectBuilder& builder = reply.getBuilder();
  resources::Status status = resources::unknown;
  switch (method) {
    case get:
      if (Uri::retrieveFirstPathSegment(resource, resourceLength, begin, end) &&
          isSegment(resource, begin, end, "engines") && !hasSegmentAfter(resource, resourceLength, end)) {
        return listEngines(reply);
      }
      status = framework_.retrieveResource(resource, resourceLength, parameters, builder);
      break;
    case post:
      if (!readBody(connection, parameters)) {
        NOX_LOG_WARNING(logger, "HTTP request: invalid request data (see above for further information).");
        return JsonHttpReply::badRequest;
      }
      if (Uri::retrieveFirstPathSegment(resource, resourceLength, begin, end) &&
          isSegment(resource, begin, end, "engines")) {
        return switchEngines(parameters, reply);
      }
      status = framework_.createResource(resource, resourceLength, parameters, builder);
      break;
    case del:
      status = framework_.deleteResource(resource, resourceLength, parameters, builder);
      break;
    default:
      NOX_FAIL("unknown request, should have been handled before");
      return JsonHttpReply::internalServerError;
  }
  return replyTo(status, method, resource, FacilitiesLogger::countErrorsOfThisThread() != errorsBefore, reply);
}

int HTTPServer::replyTo(resources::Status status, Method method, const char* resource, bool reportedErrors,
                        JsonHttpReply& reply) {
  AbstractLogger* logger = &framework_.getLogger();
  switch (status) {
    case resources::done:
      return reportedErrors ? JsonHttpReply::internalServerError : JsonHttpReply::ok;
    case resources::error:
      NOX_LOG_WARNING(logger, "HTTP request: error while " << (method == get    ? "retrieving"
                                                               : method == post ? "creating"
                                                                                : "deleting")
                                                           << " resource '" << resource << "'.");
      return JsonHttpReply::badRequest;
    default:
      NOX_LOG_WARNING(logger, "HTTP request: unknown resource '" << resource << "'.");
      if (method == get) return JsonHttpReply::notFound;
      // A 204 carries no body, whatever the handler wrote before giving up.
      reply.clearBody();
      return JsonHttpReply::noContent;
  }
}

bool HTTPServer::readBody(mg_connection* connection, DynamicObject& request) {
  AbstractLogger* logger = &framework_.getLogger();
  const std::uint64_t errorsBefore = FacilitiesLogger::countErrorsOfThisThread();
  RequestBodyInput input(connection, logger);
  // No body is no data, not bad data: commands such as "resume" take none.
  if (input.empty()) return true;
  // Read apart, then joined: read straight into the parameters, a member clashing with
  // a query parameter of another type would break the builder's contract. A member of
  // the body replaces the parameter of the same name.
  DynamicObject body;
  if (!deserializeDynamicObjectFromJson(body, input, logger) ||
      FacilitiesLogger::countErrorsOfThisThread() != errorsBefore) {
    return false;
  }
  const unsigned int root = request.getRoot();
  if (request.countChildren(root) == 0) return request.put(root, body);
  if (body.getType(body.getRoot()) != type::object) {
    NOX_LOG_ERROR(logger, error::invalidData, "A request body that is not an object cannot join query parameters.");
    return false;
  }
  for (DynamicObjectIterator member(body, 0, 0); !member.next().end();) {
    if (!request.put(request.addChild(root, member.getKey()), body, member.getProperty())) return false;
  }
  return true;
}

int HTTPServer::listEngines(JsonHttpReply& reply) {
  const Vector<InspectionFramework::EngineState> engines = framework_.listEngines();
  const resources::Status written = impl::reply(reply.getBuilder(), [&engines](AbstractObjectBuilder& out) {
    bool accepted = out.beginArray();
    for (auto engine = engines.begin(); accepted && engine != engines.end(); ++engine) {
      accepted = out.arrayChild() && out.beginObject() && out.objectChild("path") && out.string(engine->path.c_str()) &&
                 out.objectChild("enabled") && out.boolean(engine->enabled) && out.endObject();
    }
    return accepted && out.endArray();
  });
  return written == resources::done ? JsonHttpReply::ok : JsonHttpReply::internalServerError;
}

int HTTPServer::switchEngines(const DynamicObject& board, JsonHttpReply& reply) {
  for (DynamicObjectIterator member(board, 0, 0); !member.next().end();) {
    const unsigned int property = member.getProperty();
    const type::Type kind = board.getType(property);
    if (kind != type::integer && kind != type::boolean) continue;
    const bool enable = kind == type::integer ? board.getInt(property) != 0 : board.getBool(property);
    if (enable) {
      framework_.enableEngine(member.getKey());
    } else {
      framework_.disableEngine(member.getKey());
    }
  }
  AbstractObjectBuilder& builder = reply.getBuilder();
  builder.begin() && builder.beginObject() && builder.endObject() && builder.end();
  return JsonHttpReply::ok;
}

}  // namespace nox::utils::debugger::impl
