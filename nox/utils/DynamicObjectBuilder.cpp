#include <nox/utils/DynamicObjectBuilder.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/DynamicObject.h>

#include <string_view>

namespace nox::utils {

namespace {

constexpr const char* noCurrentProperty = "No current property.";

bool isContainer(type::Type type) { return type == type::array || type == type::object; }

// "an object", "a string", "null"...: a kind of value as a message names it.
const char* describeKind(type::Type type) {
  switch (type) {
    case type::null:
      return "null";
    case type::integer:
      return "an integer";
    case type::real:
      return "a real";
    case type::string:
      return "a string";
    case type::boolean:
      return "a boolean";
    case type::array:
      return "an array";
    case type::object:
      return "an object";
  }
  return "an unknown kind of value";
}

}  // namespace

DynamicObjectBuilder::DynamicObjectBuilder(DynamicObject& target, unsigned int property) : target_(&target) {
  unsigned int handle = property == 0 ? target.getRoot() : property;
  properties_.push_back(handle);
  types_.push_back(target.getType(handle));
}

bool DynamicObjectBuilder::hasConsistentStacks() const {
  NOX_ASSERT(properties_.size() == types_.size(), "Invalid state");
  return properties_.size() == types_.size();
}

bool DynamicObjectBuilder::beginProperty(type::Type type) {
  if (!hasConsistentStacks()) return false;
  if (types_.empty()) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, noCurrentProperty);
    return false;
  }
  type::Type& declared = types_.back();
  if (declared != type::null && declared != type) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, "The current property is not of the expected type");
    return false;
  }
  if (changesKind(type)) {
    const type::Type held = target_->getType(properties_.back());
    NOX_LOG_ERROR(getLogger(), error::invalidData,
                  "The current property already holds " << describeKind(held) << ", which " << describeKind(type)
                                                        << " may not replace.");
    return false;
  }
  declared = type;
  return true;
}

bool DynamicObjectBuilder::changesKind(type::Type type) const {
  const type::Type held = target_->getType(properties_.back());
  return held != type && held != type::null && (isContainer(held) || isContainer(type));
}

bool DynamicObjectBuilder::endProperty(type::Type type) {
  hasConsistentStacks();
  NOX_ASSERT(!types_.empty() && types_.back() == type, "Invalid call sequence");
  // The slot is closed whatever the checks said, so that a returning assertion handler
  // leaves the builder on the enclosing slot.
  if (!properties_.empty()) properties_.pop_back();
  if (!types_.empty()) types_.pop_back();
  return true;
}

template <class Write>
bool DynamicObjectBuilder::writeScalar(type::Type type, Write write) {
  // A value that would turn a container into anything else, or anything else into a
  // container, is refused before the property is touched (see the header).
  if (!properties_.empty() && changesKind(type)) return beginProperty(type);
  // Any other clash is reported by beginProperty; the value is written all the same,
  // the object's setters deciding what becomes of the former content. A value sent
  // after the outermost one has no slot: nothing is written, and closing the missing
  // slot breaks the call-sequence contract.
  beginProperty(type);
  if (!properties_.empty()) write(properties_.back());
  endProperty(type);
  return true;
}

bool DynamicObjectBuilder::null() {
  return writeScalar(type::null, [this](unsigned int property) { target_->resetProperty(property); });
}

bool DynamicObjectBuilder::boolean(bool value) {
  return writeScalar(type::boolean, [&](unsigned int property) { target_->setBool(property, value); });
}

bool DynamicObjectBuilder::integer(std::int64_t value) {
  return writeScalar(type::integer, [&](unsigned int property) { target_->setInt(property, value); });
}

bool DynamicObjectBuilder::real(double value) {
  return writeScalar(type::real, [&](unsigned int property) { target_->setReal(property, value); });
}

bool DynamicObjectBuilder::string(const char* text, unsigned int length) {
  return writeScalar(type::string, [&](unsigned int property) { target_->setString(property, text, length); });
}

bool DynamicObjectBuilder::beginObject() { return beginProperty(type::object); }

bool DynamicObjectBuilder::endObject() { return endProperty(type::object); }

bool DynamicObjectBuilder::beginArray() { return beginProperty(type::array); }

bool DynamicObjectBuilder::endArray() { return endProperty(type::array); }

bool DynamicObjectBuilder::objectChild(const char* key, unsigned int length) {
  if (types_.empty()) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, noCurrentProperty);
    return false;
  }
  if (types_.back() != type::object) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, "The current property is not an object.");
    return false;
  }
  std::string_view name(key, length);
  // Keys come from outside (JSON text, binary messages): a name that would read as a
  // path is refused here, before the object would treat it as a broken contract.
  if (char forbidden = details::findReservedKeyByte(key, length)) {
    NOX_LOG_ERROR(getLogger(), error::invalidArgument,
                  "Unable to create a child named " << name << " to the current property, invalid character '"
                                                    << forbidden << "' found.");
    return false;
  }
  unsigned int child = target_->addChild(properties_.back(), key, length);
  if (child == 0) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation,
                  "Unable to create a child named " << name << " to the current property.");
    return false;
  }
  properties_.push_back(child);
  types_.push_back(type::null);
  return true;
}

bool DynamicObjectBuilder::arrayChild() {
  if (types_.empty()) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, noCurrentProperty);
    return false;
  }
  if (types_.back() != type::array) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation, "The current property is not an array.");
    return false;
  }
  unsigned int array = properties_.back();
  unsigned int count = target_->countChildren(array);
  // The object cannot hold an element at the maximum index itself, so the array is
  // full one element before its count reaches the maximum.
  unsigned int child = 0;
  if (count != DynamicObject::getMaximumArraySize() && target_->resize(array, count + 1)) {
    child = target_->getChild(array, count);
  }
  if (child == 0) {
    NOX_LOG_ERROR(getLogger(), error::invalidOperation,
                  "The current array property ("
                      << array << ") reached its maximum size: " << DynamicObject::getMaximumArraySize());
    return false;
  }
  properties_.push_back(child);
  types_.push_back(type::null);
  return true;
}

bool serializeDynamicObject(const DynamicObject& object, AbstractObjectBuilder& builder) {
  return builder.begin() && object.visitTrie(object.getRoot(), builder) && builder.end();
}

}  // namespace nox::utils
