#include "InspectionRequests.h"

#include "JsonFields.h"
#include "MessageWriter.h"

#include <nox/allocator/Allocator.h>
#include <nox/utils/DynamicObject.h>

#include <algorithm>
#include <cstring>

namespace nox::dap {

using nox::utils::DynamicObject;
using nox::utils::String;
using Purpose = HostCall::Purpose;

namespace {

constexpr std::int64_t invalidEntity = 4294967295;


// The text after "/api/" for an evaluated expression: a resource path, given with or
// without a leading "/" or "/api/". Empty when the text cannot be a path.
String resourcePath(const String& expression) {
  std::size_t begin = expression.find_first_not_of(" \t/");
  const std::size_t end = expression.find_last_not_of(" \t");
  if (begin == String::npos) return String();
  String path = expression.substr(begin, end - begin + 1);
  if (path.compare(0, 4, "api/") == 0) path.erase(0, 4);
  static const char allowed[] = "-._~/:?&=,%+";
  for (char c : path) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (!plain && std::strchr(allowed, c) == nullptr) return String();
  }
  return path;
}

}  // namespace

void InspectionRequests::onRequest(const Request& request) {
  if (request.command == "threads") threads(request);
  if (request.command == "stackTrace") stackTrace(request);
  if (request.command == "scopes") scopes(request);
  if (request.command == "variables") variables(request);
  if (request.command == "evaluate") evaluate(request);
}

void InspectionRequests::onReply(const HostCall& call, const HttpReply& reply) {
  switch (call.purpose) {
    case Purpose::threads: onThreads(call, reply); return;
    case Purpose::stackTrace: onStackTrace(call, reply); return;
    case Purpose::context: onContext(call, reply); return;
    default: onEvaluate(call, reply); return;
  }
}

void InspectionRequests::forget() {
  store_.clear();
  ++generation_;
}

void InspectionRequests::fail(const HostCall& call, const String& message) {
  connection_.respond(call.requestSeq, call.command.c_str(), false, message.c_str());
}

DynamicObject* InspectionRequests::readDocument(const HostCall& call, const HttpReply& reply) {
  DynamicObject* document = NOX_NEW DynamicObject();
  String problem;
  if (json::parse(reply.body.data(), reply.body.size(), *document, problem)) return document;
  NOX_DELETE(document);
  fail(call, "The host's reply is not JSON: " + problem);
  return nullptr;
}

void InspectionRequests::threads(const Request& request) {
  host_.send("GET", "/api/debug/entities", nullptr, HostCall{Purpose::threads, request.seq, request.command});
}

void InspectionRequests::onThreads(const HostCall& call, const HttpReply& reply) {
  if (reply.status != 200) return fail(call, describeRefusal(reply, "The host has no debugger."));
  DynamicObject entities;
  String problem;
  json::parse(reply.body.data(), reply.body.size(), entities, problem);
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, call.requestSeq, "threads", true);
  out.key("body").beginObject().key("threads").beginArray();
  const unsigned int root = entities.getRoot();
  const bool isList = entities.getType(root) == nox::utils::type::array;
  for (unsigned int i = 0, count = isList ? entities.countChildren(root) : 0; i < count; ++i) {
    std::int64_t id = 0;
    if (!json::readInteger(entities, entities.getChild(root, i), "index", id)) continue;
    out.element().beginObject().field("id", id).field("name", "entity " + decimal(id)).endObject();
  }
  out.endArray().endObject();
  connection_.send(out);
}

void InspectionRequests::stackTrace(const Request& request) {
  std::int64_t thread = -1;
  std::int64_t start = 0;
  std::int64_t levels = 0;
  if (!json::readInteger(request.message, request.arguments, "threadId", thread) || thread < 0 ||
      thread >= invalidEntity) {
    connection_.respond(request.seq, "stackTrace", false, "stackTrace needs a \"threadId\".");
    return;
  }
  json::readInteger(request.message, request.arguments, "startFrame", start);
  json::readInteger(request.message, request.arguments, "levels", levels);
  HostCall what{Purpose::stackTrace, request.seq, "stackTrace", thread};
  // The wanted slice: first frame in the high half, count (0 for all) in the low one.
  what.detail = (std::max<std::int64_t>(start, 0) << 32) | (std::max<std::int64_t>(levels, 0) & 0xFFFFFFFF);
  host_.send("GET", "/api/debug/entities/" + decimal(thread) + "/contexts", nullptr, std::move(what));
}

void InspectionRequests::onStackTrace(const HostCall& call, const HttpReply& reply) {
  if (reply.status != 200) {
    return fail(call, describeRefusal(reply, "Entity " + decimal(call.number) + " is not registered on the host."));
  }
  DynamicObject contexts;
  String problem;
  json::parse(reply.body.data(), reply.body.size(), contexts, problem);
  const unsigned int root = contexts.getRoot();
  const unsigned int count =
      contexts.getType(root) == nox::utils::type::array ? contexts.countChildren(root) : 0;
  const std::int64_t start = call.detail >> 32;
  const std::int64_t levels = call.detail & 0xFFFFFFFF;
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, call.requestSeq, "stackTrace", true);
  out.key("body").beginObject().key("stackFrames").beginArray();
  // The host lists contexts from the bottom of the stack; frames go from the top.
  for (std::int64_t shown = 0, position = static_cast<std::int64_t>(count) - 1 - start;
       position >= 0 && (levels == 0 || shown < levels); --position, ++shown) {
    const unsigned int context = contexts.getChild(root, static_cast<unsigned int>(position));
    std::int64_t index = position;
    String location;
    json::readInteger(contexts, context, "index", index);
    json::readString(contexts, context, "location", location);
    const std::int64_t id = store_.findOrAddFrame(static_cast<unsigned int>(call.number), static_cast<unsigned int>(index));
    out.element().beginObject().field("id", id).field("name", location);
    out.field("line", std::int64_t{0}).field("column", std::int64_t{0}).endObject();
  }
  out.endArray().field("totalFrames", static_cast<std::int64_t>(count)).endObject();
  connection_.send(out);
}

void InspectionRequests::scopes(const Request& request) {
  std::int64_t frame = 0;
  json::readInteger(request.message, request.arguments, "frameId", frame);
  if (store_.findFrame(frame) == nullptr) {
    connection_.respond(request.seq, "scopes", false,
                        ("Unknown frame " + decimal(frame) + ": frames last until execution goes on.").c_str());
    return;
  }
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, request.seq, "scopes", true);
  out.key("body").beginObject().key("scopes").beginArray().element().beginObject();
  out.field("name", "Context").field("variablesReference", store_.contextReference(frame));
  out.flag("expensive", false).endObject().endArray().endObject();
  connection_.send(out);
}

void InspectionRequests::variables(const Request& request) {
  std::int64_t reference = 0;
  json::readInteger(request.message, request.arguments, "variablesReference", reference);
  const VariableStore::Reference* found = store_.findReference(reference);
  if (found == nullptr) {
    const String message =
        "Unknown variables reference " + decimal(reference) + ": references last until execution goes on.";
    connection_.respond(request.seq, "variables", false, message.c_str());
  } else if (found->document >= 0) {
    respondVariables(request.seq, reference);
  } else {
    const VariableStore::Frame& frame = *store_.findFrame(found->frame);
    HostCall what{Purpose::context, request.seq, "variables", reference, generation_};
    host_.send("GET", "/api/debug/entities/" + decimal(frame.entity) + "/contexts/" + decimal(frame.index), nullptr,
               std::move(what));
  }
}

void InspectionRequests::onContext(const HostCall& call, const HttpReply& reply) {
  if (reply.status != 200) return fail(call, describeRefusal(reply, "The context is no longer on the host."));
  if (call.detail != generation_) {
    fail(call, "Execution went on: the context is gone.");
    return;
  }
  if (DynamicObject* document = readDocument(call, reply)) {
    store_.adopt(document, call.number);
    respondVariables(call.requestSeq, call.number);
  }
}

void InspectionRequests::respondVariables(std::int64_t requestSeq, std::int64_t reference) {
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, requestSeq, "variables", true);
  out.key("body").beginObject().key("variables");
  store_.writeVariables(*store_.findReference(reference), out);
  out.endObject();
  connection_.send(out);
}

void InspectionRequests::evaluate(const Request& request) {
  String expression;
  json::readString(request.message, request.arguments, "expression", expression);
  const String path = resourcePath(expression);
  if (path.empty()) {
    const String message = "'" + expression + "' is not a resource path; try one such as sim/agents/2 or debug/entities.";
    connection_.respond(request.seq, "evaluate", false, message.c_str());
    return;
  }
  host_.send("GET", "/api/" + path, nullptr, HostCall{Purpose::evaluate, request.seq, "evaluate"});
}

void InspectionRequests::onEvaluate(const HostCall& call, const HttpReply& reply) {
  if (reply.status != 200) return fail(call, describeRefusal(reply, "The host has no such resource."));
  DynamicObject* document = readDocument(call, reply);
  if (document == nullptr) return;
  const String result = VariableStore::describe(*document, document->getRoot());
  const char* type = VariableStore::typeName(*document, document->getRoot());
  const std::int64_t reference = store_.adopt(document);
  MessageWriter out(connection_.nextSeq(), "response");
  ProtocolConnection::writeResponseFields(out, call.requestSeq, "evaluate", true);
  out.key("body").beginObject().field("result", result).field("type", type);
  out.field("variablesReference", reference).endObject();
  connection_.send(out);
}

}  // namespace nox::dap
