// Passes the build events of a request body on to another builder, and stops the build
// at the first event that makes the body unfit to reach a resource:
//   - a body is an object of named parameters: any other value is refused;
//   - it nests at most getMaximumDepth() levels (the object itself is level 1). A
//     client must not choose how deep the server's walks over its parameters go: they
//     run on worker threads with small stacks;
//   - its keys and strings hold no NUL byte, which every text function would take for
//     the end of the text ("breakpoint\u0000junk" is not "breakpoint").
// A refusal is reported through the logger as invalid data, as the JSON reader reports
// a text it cannot read.
#pragma once

#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Export.h>

namespace nox::utils::debugger::impl {

class NOX_UTILS_API RequestBodyBuilder : public AbstractObjectBuilder {
 public:
  static constexpr unsigned int getMaximumDepth() { return 32; }

  // `target` must outlive the builder.
  explicit RequestBodyBuilder(AbstractObjectBuilder& target) : target_(target) {}

  void setLogger(AbstractLogger* logger) override { target_.setLogger(logger); }
  AbstractLogger* getLogger() override { return target_.getLogger(); }

  using AbstractObjectBuilder::objectChild;
  using AbstractObjectBuilder::string;

  bool begin() override { return target_.begin(); }
  bool end() override { return target_.end(); }
  bool null() override { return inObject() && target_.null(); }
  bool boolean(bool value) override { return inObject() && target_.boolean(value); }
  bool integer(std::int64_t value) override { return inObject() && target_.integer(value); }
  bool real(double value) override { return inObject() && target_.real(value); }
  bool string(const char* text, unsigned int length) override;
  bool beginObject() override { return open() && target_.beginObject(); }
  bool objectChild(const char* key, unsigned int length) override;
  bool endObject() override { return close() && target_.endObject(); }
  bool beginArray() override { return inObject() && open() && target_.beginArray(); }
  bool arrayChild() override { return target_.arrayChild(); }
  bool endArray() override { return close() && target_.endArray(); }

 private:
  // Reports `reason` and refuses the event.
  bool refuse(const char* reason);
  // A value other than an object is fine only inside the body object.
  bool inObject() { return depth_ > 0 || refuse("The request body is not a JSON object."); }
  bool open();
  bool close();
  bool holdsNoNul(const char* text, unsigned int length);

  AbstractObjectBuilder& target_;
  unsigned int depth_ = 0;
};

}  // namespace nox::utils::debugger::impl
