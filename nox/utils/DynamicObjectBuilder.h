// Fills a DynamicObject from build events, and walks a DynamicObject into any builder:
// the bridge between dynamic objects and the builder interface.
//
// A DynamicObjectBuilder is good for one value. It starts with one open slot (the
// property it was given) and appends: objects get their children in event order,
// arrays grow by one element per arrayChild. Whatever was written before a refusal
// stays in the target; there is no rollback.
#pragma once

#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/Type.h>

#include <cstdint>

namespace nox::utils {

class DynamicObject;

class NOX_UTILS_API DynamicObjectBuilder : public AbstractObjectBuilder {
 public:
  // Builds into the subtree rooted at `property`; 0 stands for the target's root. A
  // property that already has a type accepts only a value of that type (an object
  // property thus takes more children); a null one accepts any value. The target must
  // outlive the builder.
  DynamicObjectBuilder(DynamicObject& target, unsigned int property);

  using AbstractObjectBuilder::objectChild;
  using AbstractObjectBuilder::string;

  // The scalar events always answer true: a value that clashes with the type declared
  // for its slot is reported and still written through the object's own setters.
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
  // Declares the type of the current slot (null: not declared yet).
  bool beginProperty(type::Type type);
  // Closes the current slot; the events must have declared it as `type`.
  bool endProperty(type::Type type);
  template <class Write>
  bool writeScalar(type::Type type, Write write);
  bool hasConsistentStacks() const;

  Vector<unsigned int> properties_;
  Vector<type::Type> types_;
  DynamicObject* target_;
};

// Emits `object` as build events: begin, the value of its root, end. Returns true only
// when the builder accepted every event; stops at the first refusal, leaving any open
// container open.
NOX_UTILS_API bool serializeDynamicObject(const DynamicObject& object, AbstractObjectBuilder& builder);

}  // namespace nox::utils
