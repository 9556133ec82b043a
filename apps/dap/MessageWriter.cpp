#include "MessageWriter.h"

#include <nox/utils/DynamicObject.h>

namespace nox::dap {

MessageWriter::MessageWriter(std::int64_t seq, const char* type) : json_(text_, false) {
  check(json_.begin() && json_.beginObject());
  field("seq", seq);
  field("type", type);
}

MessageWriter::MessageWriter() : json_(text_, false) { check(json_.begin() && json_.beginObject()); }

MessageWriter& MessageWriter::check(bool written) {
  written_ = written_ && written;
  return *this;
}

MessageWriter& MessageWriter::key(const char* name) { return check(json_.objectChild(name)); }
MessageWriter& MessageWriter::element() { return check(json_.arrayChild()); }
MessageWriter& MessageWriter::value(std::int64_t number) { return check(json_.integer(number)); }
MessageWriter& MessageWriter::value(const char* text) { return check(json_.string(text)); }
MessageWriter& MessageWriter::boolean(bool flag) { return check(json_.boolean(flag)); }

MessageWriter& MessageWriter::value(const nox::utils::DynamicObject& object, unsigned int property) {
  return check(object.visitTrie(property, json_));
}

MessageWriter& MessageWriter::beginObject() { return check(json_.beginObject()); }
MessageWriter& MessageWriter::endObject() { return check(json_.endObject()); }
MessageWriter& MessageWriter::beginArray() { return check(json_.beginArray()); }
MessageWriter& MessageWriter::endArray() { return check(json_.endArray()); }

nox::utils::String MessageWriter::finish() {
  check(json_.endObject() && json_.end());
  if (!written_) return nox::utils::String();
  return nox::utils::String(text_.getData(), text_.getSize());
}

}  // namespace nox::dap
