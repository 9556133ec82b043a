#include "ProtocolConnection.h"

#include "JsonFields.h"
#include "MessageWriter.h"

#include <nox/utils/DynamicObject.h>

namespace nox::dap {

using nox::utils::DynamicObject;
using nox::utils::String;

void ProtocolConnection::receive(const char* data, std::size_t size) {
  framer_.append(data, size);
  String body;
  String problem;
  for (;;) {
    const MessageFramer::Result result = framer_.next(body, problem);
    if (result == MessageFramer::Result::incomplete) return;
    if (result == MessageFramer::Result::badHeader) {
      respond(0, "", false, ("Invalid message header: " + problem).c_str());
    } else {
      dispatch(body);
    }
  }
}

void ProtocolConnection::traceMessage(const char* direction, const String& body) {
  if (trace_ == nullptr) return;
  const String line = direction + body + "\n";
  trace_->write(line.data(), line.size());
}

void ProtocolConnection::dispatch(const String& body) {
  traceMessage("<- ", body);
  DynamicObject message;
  String problem;
  if (!json::parse(body.data(), body.size(), message, problem)) {
    respond(0, "", false, ("Invalid JSON message: " + problem).c_str());
    return;
  }
  const unsigned int root = message.getRoot();
  std::int64_t seq = 0;
  String type;
  String command;
  const bool hasSeq = json::readInteger(message, root, "seq", seq);
  json::readString(message, root, "command", command);
  if (!hasSeq || !json::readString(message, root, "type", type) || type != "request" || command.empty()) {
    respond(hasSeq ? seq : 0, command.c_str(), false,
            "Invalid message: expected a request with \"seq\", \"type\" and \"command\".");
    return;
  }
  if (handler_ == nullptr) {
    respond(seq, command.c_str(), false, "No session to handle the request.");
    return;
  }
  handler_->onRequest(Request{message, seq, command, json::member(message, root, "arguments")});
}

void ProtocolConnection::writeResponseFields(MessageWriter& out, std::int64_t requestSeq, const char* command,
                                             bool success) {
  out.field("request_seq", requestSeq).field("command", command).flag("success", success);
}

void ProtocolConnection::send(MessageWriter& message) {
  const String text = message.finish();
  if (text.empty() || !open_) return;
  traceMessage("-> ", text);
  const String framed = MessageFramer::frame(text.data(), text.size());
  open_ = output_.write(framed.data(), framed.size());
}

void ProtocolConnection::respond(std::int64_t requestSeq, const char* command, bool success, const char* message) {
  MessageWriter out(nextSeq(), "response");
  writeResponseFields(out, requestSeq, command, success);
  if (!success && message != nullptr) out.field("message", message);
  send(out);
}

void ProtocolConnection::sendEvent(const char* event) {
  MessageWriter out(nextSeq(), "event");
  out.field("event", event);
  send(out);
}

}  // namespace nox::dap
