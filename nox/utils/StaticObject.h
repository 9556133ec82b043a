// Base class of native objects that carry their own run-time type: code holding a
// StaticObject* (the debugger's inspection, say) finds the object's type id, type name
// and properties through the TypeManager.
//
// Every class of the hierarchy repeats one pattern: static getClassTypeId(),
// getClassTypeName() and getClassMetadataSetter(), and the three virtual operations
// returning them. NOX_STATIC_OBJECT writes it in one line:
//
//   class Car : public nox::utils::StaticObject {
//     NOX_STATIC_OBJECT("game::Car", "5b1f0e2a-8c7d-4e36-9a51-0d2c4b7f9e13", &Car::declareMetadata)
//    public:
//     static bool declareMetadata(nox::utils::TypeManager& types, nox::utils::AbstractLogger* logger) {
//       return types.addBaseType(getClassTypeId(), StaticObject::getClassTypeId(), logger) &&
//              types.registerProperty<Car>("speed", &Car::getSpeed, &Car::setSpeed, logger);
//     }
//     ...
//   };
//
// and TypeManager::registerStaticObjectType<Car>() registers the class, runs its
// metadata setter (bases, properties) and gives it a creator.
//
// The library destroys the static objects it owns (event filters, requests, the
// instances it creates) through its allocator. LibraryAllocated makes a plain `new` of
// any StaticObject class allocate from that allocator as well, so `new X(...)` and
// `NOX_NEW X(...)` may both be handed over.
#pragma once

#include <nox/allocator/LibraryAllocated.h>
#include <nox/utils/Export.h>
#include <nox/utils/Uuid.h>

namespace nox::utils {

class AbstractLogger;
class TypeManager;

class NOX_UTILS_API StaticObject : public nox::allocator::LibraryAllocated {
 public:
  // Registers a class's metadata (its bases and properties) with a type manager in
  // which the class itself is already registered.
  using MetadataSetter = bool (*)(TypeManager& types, AbstractLogger* logger);

  StaticObject() = default;
  StaticObject(const StaticObject&) = default;
  StaticObject& operator=(const StaticObject&) = default;

  virtual const char* getTypeName() const;
  virtual const Uuid& getTypeId() const;
  virtual MetadataSetter getMetadataSetter() const;
  virtual ~StaticObject();

  // "7027fee4-32de-4a3a-a634-65811d6429e2", "nox::utils::StaticObject"; the base's
  // metadata setter has nothing to register and succeeds.
  static const Uuid& getClassTypeId();
  static const char* getClassTypeName();
  static MetadataSetter getClassMetadataSetter();
};

}  // namespace nox::utils

// Declares the type identity of a class derived from StaticObject: the three static
// members and the three overrides. Leaves the access at public.
#define NOX_STATIC_OBJECT(typeName, typeIdText, metadataSetter)                                         \
 public:                                                                                                \
  static const ::nox::utils::Uuid& getClassTypeId() {                                                   \
    static const ::nox::utils::Uuid id = ::nox::utils::Uuid::create(typeIdText);                        \
    return id;                                                                                          \
  }                                                                                                     \
  static const char* getClassTypeName() { return typeName; }                                            \
  static ::nox::utils::StaticObject::MetadataSetter getClassMetadataSetter() { return metadataSetter; } \
  const char* getTypeName() const override { return getClassTypeName(); }                               \
  const ::nox::utils::Uuid& getTypeId() const override { return getClassTypeId(); }                     \
  ::nox::utils::StaticObject::MetadataSetter getMetadataSetter() const override { return getClassMetadataSetter(); }
