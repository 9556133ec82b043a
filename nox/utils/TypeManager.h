// The registry of run-time types: maps type ids and names to their metadata records
// (name, value kind, bases, properties), holds the creators that make instances of
// static-object types, and answers derivation and property questions. The library's
// instance lives in Facilities; it is filled at start-up (registerBaseTypes, then the
// debugger's and the users' types) and only read afterwards.
//
// Registration problems are logged and answered false. Lookups of things that must
// exist (getTypeId, getTypeName, getProperty...) are contract checks: an unknown id or
// name is an assertion failure, after which a neutral placeholder is returned.
#pragma once

#include <nox/allocator/Allocator.h>
#include <nox/allocator/LibraryAllocated.h>
#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/Property.h>
#include <nox/utils/StaticObject.h>
#include <nox/utils/String.h>
#include <nox/utils/Type.h>
#include <nox/utils/Uuid.h>

#include <functional>
#include <type_traits>

namespace nox::utils {

class AbstractLogger;

namespace details {
class TypeMetadata;
}

class NOX_UTILS_API TypeManager {
 public:
  // Makes instances of one static-object type. This base makes none (null); a class
  // registers a subclass whose call operator returns a new instance. Creators are owned
  // by the type manager once registered; made with `new` or NOX_NEW, both are freed
  // correctly (LibraryAllocated).
  struct NOX_UTILS_API StaticObjectCreator : nox::allocator::LibraryAllocated {
    virtual ~StaticObjectCreator();
    virtual StaticObject* operator()(AbstractLogger* logger) const;
  };

  // The creator of a default-constructible class.
  template <class T>
  struct DefaultCreator : StaticObjectCreator {
    StaticObject* operator()(AbstractLogger*) const override { return NOX_NEW T(); }
  };

  TypeManager();
  // Destroys every record and creator that is left.
  ~TypeManager();
  TypeManager(const TypeManager&) = delete;
  TypeManager& operator=(const TypeManager&) = delete;

  // Registers, in order, int, int64, double, float, bool, nox::utils::String,
  // nox::utils::Vector3r (x, y, z), nox::utils::Vector2r (x, y),
  // nox::utils::Quaternionr (x, y, z, w), nox::utils::DynamicObject and
  // nox::utils::StaticObject (with its metadata setter), stopping at the first failure.
  bool registerBaseTypes(AbstractLogger* logger);
  void unregisterBaseTypes();

  // Registering an id again under its own name changes nothing and succeeds; an id or a
  // name already taken by another type is refused with error::invalidArgument.
  bool registerType(const Uuid& id, const char* name, AbstractLogger* logger);
  // Unregisters the type's creator, removes the type from the bases of every other
  // type, then forgets it. An unknown id is ignored.
  void unregisterType(const Uuid& id);
  // Unregisters every type.
  void clearTypes();

  // Registers T (a StaticObject class using NOX_STATIC_OBJECT or the same pattern):
  // its id and name, then its metadata setter, then, when T can be default-constructed,
  // a DefaultCreator<T>. A failing step undoes the registration. A class already
  // registered under its name is left as it is (its setter does not run twice).
  template <class T>
  bool registerStaticObjectType(AbstractLogger* logger);

  // Sets up a property of `Owner` (see Property::setUp) and adds it to Owner's record.
  template <class Owner, class Getter, class Second>
  bool registerProperty(const char* key, Getter getter, Second second, AbstractLogger* logger);
  // Adds a copy of a valid property to the record of its owner type.
  bool addProperty(const Property& property, AbstractLogger* logger);

  // Creators. registerCreator takes ownership of `creator` (made with new or NOX_NEW) in every
  // case: a refused creator is destroyed at once. A type has at most one creator.
  bool registerCreator(const Uuid& id, StaticObjectCreator* creator, AbstractLogger* logger);
  bool unregisterCreator(const Uuid& id, AbstractLogger* logger);
  bool isCreatorRegistered(const Uuid& id) const;

  bool isTypeRegistered(const Uuid& id) const;
  bool isTypeRegistered(const char* name) const;
  const Uuid& getTypeId(const char* name) const;
  const char* getTypeName(const Uuid& id) const;
  type::Type getType(const Uuid& id) const;
  unsigned int countProperties(const Uuid& id) const;
  // Indexes the same enumeration as countProperties (own properties first).
  const Property& getProperty(const Uuid& id, unsigned int index) const;

  bool addBaseType(const Uuid& type, const Uuid& base, AbstractLogger* logger);
  // False unless both are registered; a registered type derives from itself.
  bool isDerivedFrom(const Uuid& type, const Uuid& base) const;
  bool isStaticObject(const Uuid& id) const;

  // Property lookup by key prefix: "pos" finds "position" (the first match, own
  // properties before inherited ones). A null key is the assertion "Invalid key".
  bool isPropertyRegistered(const Uuid& id, const char* key) const;
  bool isPropertyRegistered(const Uuid& id, const char* key, unsigned int length) const;
  const Property& getProperty(const Uuid& id, const char* key) const;
  const Property& getProperty(const Uuid& id, const char* key, unsigned int length) const;

  // A new instance from the type's creator, null when there is none (logged). The two
  // messages are crossed on purpose: an unregistered id is reported as "No registered
  // creator for <name>." (after the failed lookup of its name), a registered type
  // without a creator as "No type having the id <id> is registered.".
  StaticObject* createStaticObject(const Uuid& id, AbstractLogger* logger) const;
  // Destroys an instance through its virtual destructor; null is ignored.
  void destroyStaticObject(StaticObject* object) const;

 private:
  // Registers a class, runs its metadata setter and registers its creator (owned; may
  // be null), undoing the registration when a step fails.
  bool registerClass(const Uuid& id, const char* name, StaticObject::MetadataSetter setter,
                     StaticObjectCreator* creator, AbstractLogger* logger);
  const details::TypeMetadata& getMetadata(const Uuid& id) const;
  // The record, or null after the assertion "No type having the id ... is registered.".
  details::TypeMetadata* requireMetadata(const Uuid& id) const;
  details::TypeMetadata* findMetadata(const Uuid& id) const;
  const StaticObjectCreator& findCreator(const Uuid& id) const;
  const Property* getPropertyPtr(const Uuid& id, const char* key) const;
  const Property* getPropertyPtr(const Uuid& id, const char* key, unsigned int length) const;

  Map<Uuid, details::TypeMetadata*> typesById_;
  // std::less<> finds names given as plain texts without building a String.
  Map<String, details::TypeMetadata*, std::less<>> typesByName_;
  Map<Uuid, StaticObjectCreator*> creators_;
  StaticObjectCreator defaultCreator_;
};

template <class T>
bool TypeManager::registerStaticObjectType(AbstractLogger* logger) {
  static_assert(std::is_base_of_v<StaticObject, T>, "only static-object classes have creators and metadata setters");
  StaticObjectCreator* creator = nullptr;
  if constexpr (std::is_default_constructible_v<T> && !std::is_abstract_v<T>) creator = NOX_NEW DefaultCreator<T>();
  return registerClass(T::getClassTypeId(), T::getClassTypeName(), T::getClassMetadataSetter(), creator, logger);
}

template <class Owner, class Getter, class Second>
bool TypeManager::registerProperty(const char* key, Getter getter, Second second, AbstractLogger* logger) {
  Property property;
  return property.setUp<Owner>(key, getter, second, *this, logger) && addProperty(property, logger);
}

}  // namespace nox::utils
