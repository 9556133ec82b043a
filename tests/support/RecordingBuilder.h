// A builder that writes every build event as one line of text, for tests that check the
// exact event sequence a producer emits.
#pragma once

#include <nox/utils/AbstractObjectBuilder.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace nox::test {

// Writes every event as a line; refuses the event numbered `refuseAt` (0-based).
class RecordingBuilder : public nox::utils::AbstractObjectBuilder {
 public:
  using nox::utils::AbstractObjectBuilder::objectChild;
  using nox::utils::AbstractObjectBuilder::string;

  explicit RecordingBuilder(int refuseAt = -1) : refuseAt_(refuseAt) {}

  bool begin() override { return record("begin"); }
  bool end() override { return record("end"); }
  bool null() override { return record("null"); }
  bool boolean(bool value) override { return record(value ? "boolean true" : "boolean false"); }
  bool integer(std::int64_t value) override { return record("integer " + std::to_string(value)); }
  // Reals as a stream writes them by default ("0.5", "1e+20").
  bool real(double value) override {
    std::ostringstream text;
    text << "real " << value;
    return record(text.str());
  }
  bool string(const char* text, unsigned int length) override { return record("string " + std::string(text, length)); }
  bool beginObject() override { return record("beginObject"); }
  bool objectChild(const char* key, unsigned int length) override {
    return record("objectChild " + std::string(key, length));
  }
  bool endObject() override { return record("endObject"); }
  bool beginArray() override { return record("beginArray"); }
  bool arrayChild() override { return record("arrayChild"); }
  bool endArray() override { return record("endArray"); }

  std::vector<std::string> events;

 private:
  bool record(const std::string& event) {
    events.push_back(event);
    return static_cast<int>(events.size()) - 1 != refuseAt_;
  }

  int refuseAt_;
};

}  // namespace nox::test
