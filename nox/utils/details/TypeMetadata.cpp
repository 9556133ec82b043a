#include <nox/utils/details/TypeMetadata.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/Property.h>
#include <nox/utils/details/ClassTypeId.h>

#include <algorithm>
#include <cstring>

namespace nox::utils::details {
namespace {

type::Type kindOf(const Uuid& id) {
  if (id == getClassTypeId<std::int64_t>() || id == getClassTypeId<int>()) return type::integer;
  if (id == getClassTypeId<float>() || id == getClassTypeId<double>()) return type::real;
  if (id == getClassTypeId<bool>()) return type::boolean;
  if (id == getClassTypeId<String>()) return type::string;
  return type::object;
}

}  // namespace

TypeMetadata::TypeMetadata(const char* name, const Uuid& id) : id_(id), type_(kindOf(id)), name_(name) {}

const TypeMetadata& TypeMetadata::unknown() {
  static const TypeMetadata none("", Uuid());
  return none;
}

TypeMetadata::~TypeMetadata() {
  for (Property* property : properties_) NOX_DELETE(property);
}

const TypeMetadata& TypeMetadata::getBaseType(unsigned int index) const {
  if (index >= bases_.size()) {
    NOX_FAIL("Invalid base type index");
    return unknown();
  }
  return *bases_[index];
}

bool TypeMetadata::addBaseType(const TypeMetadata& base, AbstractLogger* logger) {
  if (base.isDerivedFrom(*this)) {
    // The names stand in this order on purpose, whatever the wording suggests.
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "The given type," << getName() << ", derives from the current type, " << base.getName() << ".");
    return false;
  }
  if (!isDerivedFrom(base)) bases_.push_back(&base);
  return true;
}

void TypeMetadata::removeBaseType(const TypeMetadata& base) {
  auto found = std::find(bases_.begin(), bases_.end(), &base);
  if (found != bases_.end()) bases_.erase(found);
}

bool TypeMetadata::isDerivedFrom(const TypeMetadata& other) const {
  if (id_ == other.id_) return true;
  return std::any_of(bases_.begin(), bases_.end(),
                     [&other](const TypeMetadata* base) { return base->isDerivedFrom(other); });
}

void TypeMetadata::addProperty(const Property& property) { properties_.push_back(NOX_NEW Property(property)); }

unsigned int TypeMetadata::countProperties() const {
  unsigned int count = static_cast<unsigned int>(properties_.size());
  for (const TypeMetadata* base : bases_) count += base->countProperties();
  return count;
}

const Property& TypeMetadata::getProperty(unsigned int index) const {
  const Property* property = findProperty(index);
  if (property == nullptr) {
    NOX_FAIL("Invalid property index");
    return Property::invalid();
  }
  return *property;
}

const Property* TypeMetadata::findProperty(unsigned int& index) const {
  if (index < properties_.size()) return properties_[index];
  index -= static_cast<unsigned int>(properties_.size());
  for (const TypeMetadata* base : bases_) {
    if (const Property* property = base->findProperty(index)) return property;
  }
  return nullptr;
}

const Property* TypeMetadata::getProperty(const char* name, unsigned int length) const {
  if (name == nullptr && length != 0) return nullptr;
  for (const Property* property : properties_) {
    if (length == 0 || std::strncmp(name, property->getKey(), length) == 0) return property;
  }
  for (const TypeMetadata* base : bases_) {
    if (const Property* property = base->getProperty(name, length)) return property;
  }
  return nullptr;
}

const Property* TypeMetadata::getProperty(const char* name) const {
  return name == nullptr ? nullptr : getProperty(name, static_cast<unsigned int>(std::strlen(name)));
}

}  // namespace nox::utils::details
