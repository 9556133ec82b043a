// One protocol peer, on whatever carries its bytes: incoming bytes become requests for
// a handler, outgoing messages get their sequence numbers and frames.
//
// The peer always hears back. A broken header, a body that is not JSON, or a message
// that is not a request is answered with a failed response (request_seq 0 when the
// message has no usable "seq") and nothing reaches the handler.
#pragma once

#include "MessageFramer.h"

#include <nox/utils/String.h>

#include <cstddef>
#include <cstdint>

namespace nox::utils {
class DynamicObject;
}

namespace nox::dap {

class MessageWriter;

// A request as the handler sees it. `arguments` is the handle of the "arguments"
// member in `message`, 0 when there is none.
struct Request {
  const nox::utils::DynamicObject& message;
  std::int64_t seq;
  nox::utils::String command;
  unsigned int arguments;
};

class AbstractRequestHandler {
 public:
  virtual ~AbstractRequestHandler() = default;
  virtual void onRequest(const Request& request) = 0;
};

// Where framed messages go: standard output, a socket, a test's buffer.
class AbstractOutput {
 public:
  virtual ~AbstractOutput() = default;
  // Writes all bytes; false when the peer is gone.
  virtual bool write(const char* data, std::size_t size) = 0;
};

class ProtocolConnection {
 public:
  explicit ProtocolConnection(AbstractOutput& output) : output_(output) {}

  void setHandler(AbstractRequestHandler* handler) { handler_ = handler; }
  // Copies every message body, in and out, to `trace` as lines "<- body" and "-> body".
  void setTrace(AbstractOutput* trace) { trace_ = trace; }

  // Frames, parses and dispatches what the peer sent.
  void receive(const char* data, std::size_t size);

  // Sequence number of the next outgoing message.
  std::int64_t nextSeq() { return seq_++; }
  // Writes the fields every response has, after the writer's "seq" and "type".
  static void writeResponseFields(MessageWriter& out, std::int64_t requestSeq, const char* command, bool success);

  void send(MessageWriter& message);
  // A response without a body, with a message when it failed.
  void respond(std::int64_t requestSeq, const char* command, bool success, const char* message);
  // An event without a body.
  void sendEvent(const char* event);

  // False once a write failed.
  bool isOpen() const { return open_; }

 private:
  void dispatch(const nox::utils::String& body);
  void traceMessage(const char* direction, const nox::utils::String& body);

  AbstractOutput& output_;
  AbstractRequestHandler* handler_ = nullptr;
  AbstractOutput* trace_ = nullptr;
  MessageFramer framer_;
  std::int64_t seq_ = 1;
  bool open_ = true;
};

}  // namespace nox::dap
