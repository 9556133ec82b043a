// The run-time type system's record of one type: its id, name and value kind, its
// direct base types and its own properties. The TypeManager makes, owns and destroys
// every record; code outside it reads records, it does not build them.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/String.h>
#include <nox/utils/Type.h>
#include <nox/utils/Uuid.h>

namespace nox::utils {

class AbstractLogger;
class Property;

namespace details {

class NOX_UTILS_API TypeMetadata {
 public:
  // The kind is derived from the id: integer for int and int64, real for float and
  // double, boolean for bool, string for the library string, object for all others.
  TypeMetadata(const char* name, const Uuid& id);
  ~TypeMetadata();
  TypeMetadata(const TypeMetadata&) = delete;
  TypeMetadata& operator=(const TypeMetadata&) = delete;

  // The nameless record without bases or properties that lookups return after a failed
  // contract check.
  static const TypeMetadata& unknown();

  const Uuid& getTypeId() const { return id_; }
  const char* getName() const { return name_.c_str(); }
  type::Type getType() const { return type_; }

  unsigned int countBaseTypes() const { return static_cast<unsigned int>(bases_.size()); }
  const TypeMetadata& getBaseType(unsigned int index) const;
  // Refuses (logging the two names) a base that would close a cycle, this type itself
  // included; a base this type already derives from is accepted without a new entry.
  bool addBaseType(const TypeMetadata& base, AbstractLogger* logger);
  // Removes `base` itself (by address), if it is a direct base.
  void removeBaseType(const TypeMetadata& base);
  // Whether `other` is this type or one of its bases, direct or not.
  bool isDerivedFrom(const TypeMetadata& other) const;

  // Appends a copy; keys are not checked for duplicates.
  void addProperty(const Property& property);
  // Own properties plus, recursively, those of every base (a property inherited along
  // two paths counts twice).
  unsigned int countProperties() const;
  // Indexes the enumeration that countProperties() counts: own properties first, then
  // each base's in order, depth first. A walk up to countProperties() thus reaches the
  // inherited properties too, while the own ones keep their indices.
  const Property& getProperty(unsigned int index) const;
  // The first property whose key starts with the first `length` bytes of `name`
  // (compared as strncmp does, so "pos" finds "position"): own properties in order,
  // then each base's, recursively. Null when none.
  const Property* getProperty(const char* name, unsigned int length) const;
  const Property* getProperty(const char* name) const;
  bool hasProperty(const char* name, unsigned int length) const { return getProperty(name, length) != nullptr; }
  bool hasProperty(const char* name) const { return getProperty(name) != nullptr; }

 private:
  // The index-th property of the enumeration, or null, consuming `index` as it walks.
  const Property* findProperty(unsigned int& index) const;

  Uuid id_;
  type::Type type_;
  String name_;
  Vector<const TypeMetadata*> bases_;
  Vector<Property*> properties_;
};

}  // namespace details
}  // namespace nox::utils
