// Fills a DynamicObject from build events, and walks a DynamicObject into any builder:
// the bridge between dynamic objects and the builder interface.
//
// A DynamicObjectBuilder is good for one value. It starts with one open slot (the
// property it was given) and appends: objects get their children in event order,
// arrays grow by one element per arrayChild. Whatever was written before a refusal
// stays in the target; there is no rollback.
//
// A key that repeats addresses the same child again. What the child already holds
// decides what the new value may be, so that data from outside never meets the object's
// own contracts:
//   - scalar over scalar (null included): the last one wins, as the setters have it;
//   - object over object: the new children join the old ones; array over array: the
//     new elements come after the old ones;
//   - a value that would turn a container (object or array) into anything else, or
//     anything but null into a container, is refused with error::invalidData before
//     the property is touched: the event answers false, and the old value stays whole.
//     So {"a":1,"a":2} reads as {"a":2}, while {"a":1,"a":[1]}, {"a":{"c":1},"a":2} and
//     {"a":[1],"a":null} are refused.
// The same holds for the builder's own property: reading a text whose top level is an
// array into an object property, or a scalar into a container, is refused.
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

  // The scalar events answer true unless the value would replace a container (see
  // above): a value that clashes with the type declared for its slot by earlier events
  // is reported and still written through the object's own setters.
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
  // Whether a value of `type` would change the current property between a container
  // and anything else.
  bool changesKind(type::Type type) const;
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
