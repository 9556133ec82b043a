// Binary form of a dynamic object: one protocol-buffers message (nox.utils.proto.
// DynamicObject, in DynamicObject.proto beside this header) holding the root property and
// the library's version as a stamp. There is no null kind: a null value is stored as an empty
// object. Files of any version 0.x.y are read.
//
// Objects and arrays nest at most getMaximumDepth() levels deep in this form: the writer
// refuses deeper data, so that everything written can be read back within the parser's
// nesting limit.
#pragma once

#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Export.h>
#include <nox/utils/ScopedPtr.h>

#include <cstdint>

namespace nox::utils {

class AbstractDataInputOutput;
class DynamicObject;

// Assembles the message from build events and writes it to a data stream on end().
class NOX_UTILS_API ProtobufDynamicObjectBuilder : public AbstractObjectBuilder {
 public:
  // Deepest nesting of objects and arrays in the binary form.
  static constexpr unsigned int getMaximumDepth() { return 127; }

  // Writes into `output`, which must outlive the builder.
  explicit ProtobufDynamicObjectBuilder(AbstractDataInputOutput& output);
  ~ProtobufDynamicObjectBuilder() override;

  ProtobufDynamicObjectBuilder(const ProtobufDynamicObjectBuilder&) = delete;
  ProtobufDynamicObjectBuilder& operator=(const ProtobufDynamicObjectBuilder&) = delete;

  bool begin() override;
  // Writes the message and ends the build; refused while a container is still open
  // (the build then goes on).
  bool end() override;

  using AbstractObjectBuilder::objectChild;
  using AbstractObjectBuilder::string;

  bool null() override;
  bool boolean(bool value) override;
  bool integer(std::int64_t value) override;
  bool real(double value) override;
  bool string(const char* text, unsigned int length) override;
  bool beginObject() override;
  bool objectChild(const char* key, unsigned int length) override;
  bool endObject() override;
  bool beginArray() override;
  bool arrayChild() override;
  bool endArray() override;

 private:
  friend NOX_UTILS_API char* serializeDynamicObject(unsigned int& size, const DynamicObject& object,
                                                    AbstractLogger* logger);
  // The message under construction and the stack of its open properties.
  struct Build;
  // A new buffer of exactly the message's size, which end() fills instead of a stream.
  struct BufferTarget {
    char* bytes = nullptr;
    unsigned int size = 0;
  };

  explicit ProtobufDynamicObjectBuilder(BufferTarget& target);

  ScopedPtr<Build> build_;
  // Exactly one of the two is set.
  AbstractDataInputOutput* output_ = nullptr;
  BufferTarget* buffer_ = nullptr;
};

// Writes `object` to `output` in binary form.
NOX_UTILS_API bool serializeDynamicObjectToProtobuf(const DynamicObject& object, AbstractDataInputOutput& output,
                                                    AbstractLogger* logger);

// Returns a new buffer (NOX_ALLOCATE; the caller frees it with NOX_DEALLOCATE) holding
// `object` in binary form, and stores its length in `size`. Null on failure.
NOX_UTILS_API char* serializeDynamicObject(unsigned int& size, const DynamicObject& object, AbstractLogger* logger);

// Reads the binary form in the `size` bytes of `data` into the root of `object`, through
// a DynamicObjectBuilder (which adds to what the object holds). A message without a
// root leaves `object` unchanged. On failure `object` keeps what was read before it.
NOX_UTILS_API bool deserializeDynamicObject(const char* data, unsigned int size, DynamicObject& object,
                                            AbstractLogger* logger);

}  // namespace nox::utils
