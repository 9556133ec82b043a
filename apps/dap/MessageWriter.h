// Writes one outgoing protocol message as JSON text: a response or an event, with its
// body, through the library's JSON writer (and, the same way, the bodies sent to hosts).
//
//   MessageWriter out(seq, "event");
//   out.field("event", "stopped");
//   out.key("body"); out.beginObject(); out.field("reason", "pause"); out.endObject();
//   String text = out.finish();
//
// Keys come out in the order written, which keeps messages readable in traces. A
// writer that was handed something it cannot write (a NaN, broken nesting) fails at
// finish() instead of sending half a message.
#pragma once

#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/String.h>

#include <cstdint>

namespace nox::utils {
class DynamicObject;
}

namespace nox::dap {

class MessageWriter {
 public:
  // Opens the message object with "seq" and "type".
  MessageWriter(std::int64_t seq, const char* type);
  // Opens a plain object, for request bodies sent to a host.
  MessageWriter();

  MessageWriter(const MessageWriter&) = delete;
  MessageWriter& operator=(const MessageWriter&) = delete;

  // Inside an object: the key of the next value. Inside an array: nothing to write.
  MessageWriter& key(const char* name);
  // Inside an array: marks the next element.
  MessageWriter& element();

  MessageWriter& value(std::int64_t number);
  MessageWriter& value(const char* text);
  MessageWriter& value(const nox::utils::String& text) { return value(text.c_str()); }
  MessageWriter& boolean(bool flag);
  // A property of a dynamic object, subtree included.
  MessageWriter& value(const nox::utils::DynamicObject& object, unsigned int property);

  template <class T>
  MessageWriter& field(const char* name, const T& content) {
    key(name);
    return value(content);
  }
  MessageWriter& flag(const char* name, bool content) {
    key(name);
    return boolean(content);
  }

  MessageWriter& beginObject();
  MessageWriter& endObject();
  MessageWriter& beginArray();
  MessageWriter& endArray();

  // Closes the message object; empty when anything could not be written.
  nox::utils::String finish();

 private:
  MessageWriter& check(bool written);

  nox::utils::MemoryInputOutput text_;
  nox::utils::JsonObjectBuilder json_;
  bool written_ = true;
};

}  // namespace nox::dap
