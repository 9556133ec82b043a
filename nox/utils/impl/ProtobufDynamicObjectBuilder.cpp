#include <nox/utils/impl/ProtobufDynamicObjectBuilder.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractDataInputOutput.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/Containers.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/details/SpareBlocks.h>
#include <nox/utils/details/Version.h>

#include "nox/utils/impl/DynamicObject.pb.h"

#include <google/protobuf/arena.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

namespace nox::utils {

namespace {

namespace pb = google::protobuf;
using proto::Property;

constexpr unsigned int currentMajor = details::versionMajor;
constexpr unsigned int currentMinor = details::versionMinor;
constexpr unsigned int currentPatch = details::versionPatch;

// Every nesting level of the tree is one message level for an array element and two for
// an object child (the named pair, then its value). The parser's limit follows the
// writer's, so that the deepest object written can be read back.
constexpr int parserRecursionLimit = 2 * static_cast<int>(ProtobufDynamicObjectBuilder::getMaximumDepth()) + 1;

// Messages live in arenas whose blocks come from the library allocator: one allocation
// per block instead of one per message. Like trie node blocks, freed arena blocks wait in
// the spare cache for the next build rather than going back to the system.
void* allocateArenaBlock(std::size_t size) {
  void* block = details::SpareBlocks::take(size);
  return block != nullptr ? block : NOX_ALLOCATE(size);
}
void freeArenaBlock(void* block, std::size_t size) { details::SpareBlocks::give(block, size); }

pb::ArenaOptions arenaOptions() {
  pb::ArenaOptions options;
  options.start_block_size = 1024;
  options.max_block_size = 64 * 1024;
  options.block_alloc = &allocateArenaBlock;
  options.block_dealloc = &freeArenaBlock;
  return options;
}

// The copying side of the zero-copy adaptor: hands each filled block to the data stream.
class DataStreamWriter : public pb::io::CopyingOutputStream {
 public:
  DataStreamWriter(AbstractDataInputOutput& output, AbstractLogger* logger) : output_(output), logger_(logger) {}

  bool Write(const void* buffer, int size) override {
    return output_.write(static_cast<const char*>(buffer), static_cast<unsigned int>(size), logger_);
  }

 private:
  AbstractDataInputOutput& output_;
  AbstractLogger* logger_;
};

}  // namespace

struct ProtobufDynamicObjectBuilder::Build {
  Build() : arena(arenaOptions()) {}

  // The property that the next value fills: the top of the stack, or the root for the
  // first value of the build.
  Property* slot(AbstractLogger* logger) {
    if (message == nullptr) {
      NOX_LOG_ERROR(logger, error::invalidOperation, "No build is ongoing.");
      return nullptr;
    }
    if (!open.empty()) return open.back();
    if (message->has_root()) {
      NOX_LOG_ERROR(logger, error::invalidOperation, "No current property.");
      return nullptr;
    }
    open.push_back(message->mutable_root());
    return open.back();
  }

  // The open container whose next child is due, when it has `type`.
  Property* container(Property::ValueType type, AbstractLogger* logger) {
    if (message == nullptr || open.empty()) {
      NOX_LOG_ERROR(logger, error::invalidOperation,
                    (message == nullptr ? "No build is ongoing." : "No current property."));
      return nullptr;
    }
    Property* current = open.back();
    if (!current->has_type() || current->type() != type) {
      NOX_LOG_ERROR(logger, error::invalidOperation,
                    (type == Property::Object ? "The current property is not an object."
                                              : "The current property is not an array."));
      return nullptr;
    }
    return current;
  }

  // Fills the current slot with a scalar and closes it.
  template <class Set>
  bool setScalar(Property::ValueType type, AbstractLogger* logger, Set set) {
    Property* property = slot(logger);
    if (property == nullptr) return false;
    property->set_type(type);
    set(*property);
    open.pop_back();
    return true;
  }

  // Makes the current slot a container, which stays open.
  bool openContainer(Property::ValueType type, AbstractLogger* logger) {
    Property* property = slot(logger);
    if (property == nullptr) return false;
    if (open.size() > getMaximumDepth()) {
      NOX_LOG_ERROR(
          logger, error::invalidOperation,
          "Maximum nesting depth exceeded: objects and arrays nest at most " << getMaximumDepth() << " levels deep.");
      return false;
    }
    property->set_type(type);
    return true;
  }

  bool closeContainer() {
    if (!open.empty()) open.pop_back();
    return true;
  }

  // Stamps the version on the finished message and answers its size in bytes. Every
  // property of a finished build has its type, every named one its key and value: the
  // message is complete without asking the runtime to check it.
  std::size_t finish() {
    proto::Version* version = message->mutable_version();
    version->set_major(currentMajor);
    version->set_minor(currentMinor);
    version->set_patch(currentPatch);
    return message->ByteSizeLong();
  }

  // Writes the finished message to `output` and ends the build.
  bool write(AbstractDataInputOutput& output, AbstractLogger* logger) {
    finish();
    DataStreamWriter writer(output, logger);
    pb::io::CopyingOutputStreamAdaptor adaptor(&writer);
    bool written;
    {
      pb::io::CodedOutputStream coded(&adaptor);
      message->SerializeWithCachedSizes(&coded);
      written = !coded.HadError();
    }
    written = written && adaptor.Flush();
    if (!written) {
      // With a complete message the stream is to blame, and it reported why.
      const std::string missing = message->InitializationErrorString();
      NOX_LOG_ERROR(logger, error::ioProblem,
                    "Unable to serialize the given dynamic object: "
                        << (missing.empty() ? "the output stream refused the bytes" : missing));
    }
    reset();
    return written;
  }

  // Writes the finished message into a new buffer of exactly its size and ends the build.
  bool write(BufferTarget& target, AbstractLogger* logger) {
    const std::size_t size = finish();
    const bool fits = size <= UINT_MAX;
    if (fits) {
      target.size = static_cast<unsigned int>(size);
      target.bytes = static_cast<char*>(NOX_ALLOCATE(size));
      message->SerializeWithCachedSizesToArray(reinterpret_cast<std::uint8_t*>(target.bytes));
    } else {
      NOX_LOG_ERROR(logger, error::invalidOperation,
                    "The binary form of the dynamic object exceeds " << UINT_MAX << " bytes.");
    }
    reset();
    return fits;
  }

  void reset() {
    message = nullptr;
    open.clear();
    arena.Reset();
  }

  pb::Arena arena;
  // Lives in the arena; null while no build is under way.
  proto::DynamicObject* message = nullptr;
  // The open properties (inside the message), innermost last.
  Vector<Property*> open;
};

ProtobufDynamicObjectBuilder::ProtobufDynamicObjectBuilder(AbstractDataInputOutput& output)
    : build_(NOX_NEW Build()), output_(&output) {}

ProtobufDynamicObjectBuilder::ProtobufDynamicObjectBuilder(BufferTarget& target)
    : build_(NOX_NEW Build()), buffer_(&target) {}

ProtobufDynamicObjectBuilder::~ProtobufDynamicObjectBuilder() = default;

bool ProtobufDynamicObjectBuilder::begin() {
  if (build_->message != nullptr || !build_->open.empty()) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, "A build is already ongoing.");
    return false;
  }
  build_->message = pb::Arena::CreateMessage<proto::DynamicObject>(&build_->arena);
  return true;
}

bool ProtobufDynamicObjectBuilder::end() {
  if (build_->message == nullptr) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, "No build is ongoing.");
    return false;
  }
  if (!build_->open.empty()) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, "Build not finished");
    return false;
  }
  return output_ != nullptr ? build_->write(*output_, getLogger()) : build_->write(*buffer_, getLogger());
}

bool ProtobufDynamicObjectBuilder::null() {
  // The binary form has no null: an empty object stands for it.
  return build_->setScalar(Property::Object, getLogger(), [](Property&) {});
}

bool ProtobufDynamicObjectBuilder::boolean(bool value) {
  return build_->setScalar(Property::Bool, getLogger(), [&](Property& p) { p.set_boolvalue(value); });
}

bool ProtobufDynamicObjectBuilder::integer(std::int64_t value) {
  return build_->setScalar(Property::Int, getLogger(), [&](Property& p) { p.set_intvalue(value); });
}

bool ProtobufDynamicObjectBuilder::real(double value) {
  return build_->setScalar(Property::Real, getLogger(), [&](Property& p) { p.set_realvalue(value); });
}

bool ProtobufDynamicObjectBuilder::string(const char* text, unsigned int length) {
  return build_->setScalar(Property::String, getLogger(), [&](Property& p) { p.set_stringvalue(text, length); });
}

bool ProtobufDynamicObjectBuilder::beginObject() { return build_->openContainer(Property::Object, getLogger()); }

bool ProtobufDynamicObjectBuilder::objectChild(const char* key, unsigned int length) {
  Property* object = build_->container(Property::Object, getLogger());
  if (object == nullptr) return false;
  Property::NamedProperty* child = object->add_objectvalue();
  child->set_key(key, length);
  build_->open.push_back(child->mutable_value());
  return true;
}

bool ProtobufDynamicObjectBuilder::endObject() { return build_->closeContainer(); }

bool ProtobufDynamicObjectBuilder::beginArray() { return build_->openContainer(Property::Array, getLogger()); }

bool ProtobufDynamicObjectBuilder::arrayChild() {
  Property* array = build_->container(Property::Array, getLogger());
  if (array == nullptr) return false;
  build_->open.push_back(array->add_arrayvalue());
  return true;
}

bool ProtobufDynamicObjectBuilder::endArray() { return build_->closeContainer(); }

bool serializeDynamicObjectToProtobuf(const DynamicObject& object, AbstractDataInputOutput& output,
                                      AbstractLogger* logger) {
  ProtobufDynamicObjectBuilder builder(output);
  builder.setLogger(logger);
  return serializeDynamicObject(object, builder);
}

char* serializeDynamicObject(unsigned int& size, const DynamicObject& object, AbstractLogger* logger) {
  size = 0;
  ProtobufDynamicObjectBuilder::BufferTarget target;
  ProtobufDynamicObjectBuilder builder(target);
  builder.setLogger(logger);
  if (!serializeDynamicObject(object, builder)) {
    NOX_DEALLOCATE(target.bytes);
    return nullptr;
  }
  size = target.size;
  return target.bytes;
}

namespace {

bool reportMissingValue(AbstractLogger* logger, const char* message) {
  NOX_LOG_ERROR(logger, error::fileFormatCorrupted, message);
  return false;
}

bool reportMalformedOrTooDeep(AbstractLogger* logger) {
  NOX_LOG_ERROR(logger, error::invalidData,
                "Unable to deserialize a dynamic object: malformed data or nesting deeper than "
                    << ProtobufDynamicObjectBuilder::getMaximumDepth() << " levels");
  return false;
}

// Replays a scalar property as its build event, or opens a container (its children
// come next). `opened` tells which.
bool replayValue(const Property& property, AbstractObjectBuilder& builder, AbstractLogger* logger, bool& opened) {
  opened = false;
  switch (property.type()) {
    case Property::Int:
      if (!property.has_intvalue()) {
        return reportMissingValue(logger, "Integer property not having an integer value in the protobuf file.");
      }
      return builder.integer(property.intvalue());
    case Property::Real:
      if (!property.has_realvalue()) {
        return reportMissingValue(logger, "Real property not having a real value in the protobuf file.");
      }
      return builder.real(property.realvalue());
    case Property::Bool:
      if (!property.has_boolvalue()) {
        return reportMissingValue(logger, "Boolean property not having a boolean value in the protobuf file.");
      }
      return builder.boolean(property.boolvalue());
    case Property::String:
      if (!property.has_stringvalue()) {
        return reportMissingValue(logger, "String property not having a string value in the protobuf file.");
      }
      return builder.string(property.stringvalue().data(), static_cast<unsigned int>(property.stringvalue().size()));
    case Property::Array:
      opened = true;
      return builder.beginArray();
    case Property::Object:
      opened = true;
      return builder.beginObject();
  }
  NOX_LOG_ERROR(
      logger, error::invalidData,
      "Unexpected type indicator for property of a dynamic object found: " << static_cast<int>(property.type()));
  return false;
}

// Replays a property tree as build events, without recursion: the parser bounds the
// depth, but not below what a small stack holds frame by frame.
bool replayProperty(const Property& root, AbstractObjectBuilder& builder, AbstractLogger* logger) {
  struct OpenContainer {
    const Property* container;
    int next;  // the child to replay next
  };
  constexpr std::size_t maximumDepth = ProtobufDynamicObjectBuilder::getMaximumDepth();
  Vector<OpenContainer> open;
  for (const Property* property = &root;;) {
    if (property != nullptr) {
      const Property::ValueType type = property->type();
      if ((type == Property::Array || type == Property::Object) && open.size() == maximumDepth) {
        // Arrays take one message level each, so the parser lets deeper ones through; but
        // what is read must be writable again.
        return reportMalformedOrTooDeep(logger);
      }
      bool opened;
      if (!replayValue(*property, builder, logger, opened)) return false;
      if (opened) open.push_back({property, 0});
      property = nullptr;
    }
    if (open.empty()) return true;
    OpenContainer& top = open.back();
    const bool isArray = top.container->type() == Property::Array;
    const int count = isArray ? top.container->arrayvalue_size() : top.container->objectvalue_size();
    if (top.next == count) {
      open.pop_back();
      if (!(isArray ? builder.endArray() : builder.endObject())) return false;
    } else if (isArray) {
      property = &top.container->arrayvalue(top.next++);
      if (!builder.arrayChild()) return false;
    } else {
      const Property::NamedProperty& child = top.container->objectvalue(top.next++);
      property = &child.value();
      if (!builder.objectChild(child.key().data(), static_cast<unsigned int>(child.key().size()))) return false;
    }
  }
}

}  // namespace

bool deserializeDynamicObject(const char* data, unsigned int size, DynamicObject& object, AbstractLogger* logger) {
  if (data == nullptr && size != 0) {
    NOX_FAIL("deserializing " << size << " bytes from a null buffer");
    return false;
  }
  pb::Arena arena(arenaOptions());
  auto* message = pb::Arena::CreateMessage<proto::DynamicObject>(&arena);
  pb::io::CodedInputStream input(reinterpret_cast<const std::uint8_t*>(data), static_cast<int>(size));
  input.SetRecursionLimit(parserRecursionLimit);
  // Parsed partially, then checked, so that the runtime does not print its own report.
  if (!message->ParsePartialFromCodedStream(&input) || !input.ConsumedEntireMessage()) {
    return reportMalformedOrTooDeep(logger);
  }
  if (!message->IsInitialized()) {
    NOX_LOG_ERROR(logger, error::invalidData,
                  "Unable to deserialize a dynamic object: " << message->InitializationErrorString());
    return false;
  }
  const proto::Version& version = message->version();
  if (version.major() != currentMajor) {
    NOX_LOG_ERROR(logger, error::invalidData,
                  "Error while deserializing: The file originates from a version, v"
                      << version.major() << "." << version.minor() << "." << version.patch()
                      << ", that is not compatible with the current version, v" << currentMajor << "." << currentMinor
                      << "." << currentPatch << ".");
    return false;
  }
  if (!message->has_root()) return true;
  DynamicObjectBuilder builder(object, 0);
  builder.setLogger(logger);
  return replayProperty(message->root(), builder, logger);
}

}  // namespace nox::utils
