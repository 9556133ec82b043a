#include <nox/utils/debugger/impl/HttpRequestHandler.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/PathCursor.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/HttpOptions.h>
#include <nox/utils/debugger/InspectionFramework.h>
#include <nox/utils/debugger/impl/FacilitiesLogger.h>
#include <nox/utils/debugger/impl/HttpAccessPolicy.h>
#include <nox/utils/debugger/impl/HttpRequest.h>
#include <nox/utils/debugger/impl/InspectorAssets.h>
#include <nox/utils/debugger/impl/JsonHttpReply.h>
#include <nox/utils/debugger/impl/Replies.h>
#include <nox/utils/debugger/impl/RequestBody.h>
#include <nox/utils/debugger/impl/RequestBodyBuilder.h>

#include <cstdio>
#include <limits>

namespace nox::utils::debugger::impl {
namespace {

const char* const optionsReply = "HTTP/1.1 %d %s\r\nContent-Length: 0\r\nAllow: GET,OPTIONS,POST,DELETE\r\n\r\n";

int hexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

// Percent-decodes `raw` into `decoded`; a "%" without two hex digits stands for itself.
// False when a byte decodes to NUL: the path would mean one thing to its bytes and
// another to every text function.
bool decodePath(std::string_view raw, String& decoded) {
  decoded.clear();
  decoded.reserve(raw.size());
  for (std::size_t i = 0; i < raw.size(); ++i) {
    char byte = raw[i];
    if (byte == '%' && i + 2 < raw.size() && hexValue(raw[i + 1]) >= 0 && hexValue(raw[i + 2]) >= 0) {
      byte = static_cast<char>(hexValue(raw[i + 1]) * 16 + hexValue(raw[i + 2]));
      i += 2;
    }
    if (byte == '\0') return false;
    decoded += byte;
  }
  return true;
}

}  // namespace

HttpRequestHandler::HttpRequestHandler(InspectionFramework& framework)
    : framework_(framework), maxBodySize_(std::numeric_limits<std::uint64_t>::max()) {}

HttpRequestHandler::HttpRequestHandler(InspectionFramework& framework, const HttpOptions& options)
    : framework_(framework),
      policy_(NOX_NEW HttpAccessPolicy(options)),
      maxBodySize_(options.maxBodySize),
      servesInspector_(options.serveInspector) {}

HttpRequestHandler::~HttpRequestHandler() = default;

void HttpRequestHandler::handle(const HttpRequest& request, AbstractHttpConnection& connection) {
  // Tested on the target logger: the framework's own logger lets every level through.
  if (framework_.getFacilities().getLogger().isLoggingTrace()) {
    NOX_LOG_TRACE(&framework_.getLogger(), "HTTP request:\n\t-method '" << request.method << "'\n\t-path: '"
                                                                        << request.rawPath << "'\n\t-query: '"
                                                                        << request.query << "'");
  }
  Method method = unsupported;
  if (request.method == "GET") {
    method = get;
  } else if (request.method == "POST") {
    method = post;
  } else if (request.method == "DELETE") {
    method = del;
  } else if (request.method == "OPTIONS") {
    method = options;
  }
  JsonHttpReply reply(connection, &framework_.getLogger());
  if (servesInspector_ && method != options && isInspectorPath(request.rawPath)) {
    serveInspectorFile(request, connection, reply);
    return;
  }
  // Without access checks a browser's preflight is answered whatever the request: it
  // only asks what is allowed.
  const int admitted = method == options && !policy_ ? JsonHttpReply::ok : admit(request, method);
  if (admitted != JsonHttpReply::ok) {
    reply.send(admitted);
  } else if (method == options) {
    char text[128];
    const int length = std::snprintf(text, sizeof text, optionsReply, 200, "OK");
    connection.write(text, static_cast<std::size_t>(length));
  } else {
    reply.send(answer(request, method, connection, reply));
  }
}

int HttpRequestHandler::admit(const HttpRequest& request, Method method) const {
  AbstractLogger* logger = &framework_.getLogger();
  // What came after the kept headers (its Content-Length, its Host...) is lost.
  if (request.headersTruncated) {
    NOX_LOG_WARNING(logger,
                    "HTTP request refused: it has more headers than the server keeps (" << request.headerCount << ").");
    return JsonHttpReply::badRequest;
  }
  return policy_ ? policy_->check(request, method == post || method == del, logger) : JsonHttpReply::ok;
}

void HttpRequestHandler::serveInspectorFile(const HttpRequest& request, AbstractHttpConnection& connection,
                                            JsonHttpReply& reply) {
  AbstractLogger* logger = &framework_.getLogger();
  const int admitted = request.headersTruncated ? admit(request, get) : policy_->checkHost(request, logger);
  if (admitted != JsonHttpReply::ok) {
    reply.send(admitted);
    return;
  }
  serveInspector(request.method, request.rawPath, connection, logger);
}

int HttpRequestHandler::answer(const HttpRequest& request, Method method, AbstractHttpConnection& connection,
                               JsonHttpReply& reply) {
  AbstractLogger* logger = &framework_.getLogger();
  if (method == unsupported) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << request.method << "' is not a supported method.");
    return JsonHttpReply::badRequest;
  }
  String path;
  if (!decodePath(request.rawPath, path)) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << request.rawPath << "' is not a valid path.");
    return JsonHttpReply::badRequest;
  }
  PathCursor cursor(path.data(), static_cast<unsigned int>(path.size()));
  if (!cursor.next()) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << path << "' is not a valid path.");
    return JsonHttpReply::badRequest;
  }
  // Kept on purpose: what a GET misses is not found, what a POST or DELETE misses had
  // nothing to act on.
  const int missing = method == get ? JsonHttpReply::notFound : JsonHttpReply::noContent;
  if (!cursor.is("api") && !cursor.is(getVersionNOX_UTILS())) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << path << "' is not a supported path.");
    return missing;
  }
  DynamicObject parameters;
  DynamicObjectBuilder parametersBuilder(parameters, 0);
  parametersBuilder.setLogger(logger);
  if (!Uri::parseQuery(request.query.empty() ? "" : request.query.data(),
                       static_cast<unsigned int>(request.query.size()), parametersBuilder)) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << request.query << "' is not a valid query.");
    return missing;
  }
  path.erase(0, path.size() - cursor.restLength());
  return dispatch(method, path, request, connection, parameters, reply);
}

int HttpRequestHandler::dispatch(Method method, const String& resource, const HttpRequest& request,
                                 AbstractHttpConnection& connection, DynamicObject& parameters, JsonHttpReply& reply) {
  // Errors reported from here on, on this thread, belong to this request.
  const std::uint64_t errorsBefore = FacilitiesLogger::countErrorsOfThisThread();
  const unsigned int length = static_cast<unsigned int>(resource.size());
  AbstractObjectBuilder& builder = reply.getBuilder();
  PathCursor cursor(resource.data(), length);
  const bool engines = cursor.next() && cursor.is("engines");
  resources::Status status = resources::unknown;
  switch (method) {
    case get:
      if (engines && cursor.done()) return listEngines(reply);
      status = framework_.retrieveResource(resource.data(), length, parameters, builder);
      break;
    case post: {
      const int refusal = readBody(request, connection, parameters);
      if (refusal != JsonHttpReply::ok) return refusal;
      if (engines) return switchEngines(parameters, reply);
      status = framework_.createResource(resource.data(), length, parameters, builder);
      break;
    }
    case del:
      status = framework_.deleteResource(resource.data(), length, parameters, builder);
      break;
    default:
      NOX_FAIL("unknown request, should have been handled before");
      return JsonHttpReply::internalServerError;
  }
  return replyTo(status, method, resource, FacilitiesLogger::countErrorsOfThisThread() != errorsBefore, reply);
}

int HttpRequestHandler::replyTo(resources::Status status, Method method, std::string_view resource, bool reportedErrors,
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

int HttpRequestHandler::readBody(const HttpRequest& request, AbstractHttpConnection& connection,
                                 DynamicObject& parameters) {
  AbstractLogger* logger = &framework_.getLogger();
  MemoryInputOutput text;
  switch (readRequestBody(request, connection, maxBodySize_, text)) {
    case BodyReading::complete:
      break;
    case BodyReading::tooLarge:
      NOX_LOG_WARNING(logger, "HTTP request refused: its body is larger than " << maxBodySize_ << " bytes.");
      return JsonHttpReply::badRequest;
    case BodyReading::unknownLength:
      NOX_LOG_WARNING(logger,
                      "HTTP request refused: a POST must give its body's Content-Length (0 for no body) or "
                      "send it in chunks.");
      return JsonHttpReply::badRequest;
    case BodyReading::cutShort:
      NOX_LOG_WARNING(logger, "HTTP request refused: its body was cut short after " << text.getSize() << " bytes.");
      return JsonHttpReply::badRequest;
  }
  // No body is no data, not bad data: commands such as "resume" take none.
  if (text.getSize() == 0) return JsonHttpReply::ok;
  // Read apart, then joined: read straight into the parameters, a member clashing with
  // a query parameter of another type would break the builder's contract. A member of
  // the body replaces the parameter of the same name.
  const std::uint64_t errorsBefore = FacilitiesLogger::countErrorsOfThisThread();
  DynamicObject body;
  DynamicObjectBuilder target(body, 0);
  RequestBodyBuilder builder(target);
  builder.setLogger(logger);
  if (!deserializeJson(builder, text) || FacilitiesLogger::countErrorsOfThisThread() != errorsBefore) {
    NOX_LOG_WARNING(logger, "HTTP request: invalid request data (see above for further information).");
    return JsonHttpReply::badRequest;
  }
  const unsigned int root = parameters.getRoot();
  for (DynamicObjectIterator member(body, 0, 0); !member.next().end();) {
    if (!parameters.put(parameters.addChild(root, member.getKey()), body, member.getProperty())) {
      NOX_LOG_WARNING(logger, "HTTP request: invalid request data (see above for further information).");
      return JsonHttpReply::badRequest;
    }
  }
  return JsonHttpReply::ok;
}

int HttpRequestHandler::listEngines(JsonHttpReply& reply) {
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

int HttpRequestHandler::switchEngines(const DynamicObject& board, JsonHttpReply& reply) {
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
