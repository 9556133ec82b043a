#include <nox/utils/TypeManager.h>

#include <nox/utils/DynamicObject.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/AssertingLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/Quaternion.h>
#include <nox/utils/ScopedPtr.h>
#include <nox/utils/Vector2.h>
#include <nox/utils/Vector3.h>
#include <nox/utils/details/ClassTypeId.h>
#include <nox/utils/details/TypeMetadata.h>

#include <cstring>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace nox::utils {
namespace {

using details::getClassTypeId;
using details::TypeMetadata;

// A geometric type and its real components; registered once, even when asked again.
template <class Aggregate>
bool registerAggregate(TypeManager& types, const char* name,
                       std::initializer_list<std::pair<const char*, double Aggregate::*>> components,
                       AbstractLogger* logger) {
  const Uuid& id = getClassTypeId<Aggregate>();
  if (types.isTypeRegistered(id)) return types.registerType(id, name, logger);
  if (!types.registerType(id, name, logger)) return false;
  for (const auto& [key, member] : components) {
    if (!types.registerProperty<Aggregate>(key, member, member, logger)) return false;
  }
  return true;
}

}  // namespace

TypeManager::StaticObjectCreator::~StaticObjectCreator() = default;

StaticObject* TypeManager::StaticObjectCreator::operator()(AbstractLogger*) const { return nullptr; }

TypeManager::TypeManager() = default;

TypeManager::~TypeManager() { clearTypes(); }

bool TypeManager::registerBaseTypes(AbstractLogger* logger) {
  return registerType(getClassTypeId<int>(), "int", logger) &&
         registerType(getClassTypeId<std::int64_t>(), "int64", logger) &&
         registerType(getClassTypeId<double>(), "double", logger) &&
         registerType(getClassTypeId<float>(), "float", logger) &&
         registerType(getClassTypeId<bool>(), "bool", logger) &&
         registerType(getClassTypeId<String>(), "nox::utils::String", logger) &&
         registerAggregate<Vector3r>(*this, "nox::utils::Vector3r",
                                     {{"x", &Vector3r::x}, {"y", &Vector3r::y}, {"z", &Vector3r::z}}, logger) &&
         registerAggregate<Vector2r>(*this, "nox::utils::Vector2r", {{"x", &Vector2r::x}, {"y", &Vector2r::y}},
                                     logger) &&
         registerAggregate<Quaternionr>(
             *this, "nox::utils::Quaternionr",
             {{"x", &Quaternionr::x}, {"y", &Quaternionr::y}, {"z", &Quaternionr::z}, {"w", &Quaternionr::w}},
             logger) &&
         registerType(getClassTypeId<DynamicObject>(), "nox::utils::DynamicObject", logger) &&
         registerClass(StaticObject::getClassTypeId(), StaticObject::getClassTypeName(),
                       StaticObject::getClassMetadataSetter(), nullptr, logger);
}

void TypeManager::unregisterBaseTypes() {
  for (const Uuid* id :
       {&StaticObject::getClassTypeId(), &getClassTypeId<DynamicObject>(), &getClassTypeId<Quaternionr>(),
        &getClassTypeId<Vector2r>(), &getClassTypeId<Vector3r>(), &getClassTypeId<String>(), &getClassTypeId<bool>(),
        &getClassTypeId<float>(), &getClassTypeId<double>(), &getClassTypeId<std::int64_t>(), &getClassTypeId<int>()}) {
    unregisterType(*id);
  }
}

bool TypeManager::registerType(const Uuid& id, const char* name, AbstractLogger* logger) {
  if (name == nullptr) {
    NOX_FAIL("NULL type name given");
    return false;
  }
  if (const TypeMetadata* registered = findMetadata(id)) {
    if (std::strcmp(registered->getName(), name) == 0) return true;
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "While trying to register a type with name "
                      << name << ", another type named " << registered->getName() << ",  was found with the same id, "
                      << id << ".");
    return false;
  }
  auto named = typesByName_.find(name);
  if (named != typesByName_.end()) {
    const Uuid& other = named->second->getTypeId();
    if (other != id) {
      NOX_LOG_ERROR(logger, error::invalidArgument,
                    "While trying to register a type with id {" << id << "}, another type with id {" << other
                                                                << "}, was found with the same name '" << name << "'.");
      return false;
    }
    // Only reachable if the two maps ever disagreed: the id would have been found above.
    NOX_LOG_WARNING(logger, "Trying to register an already registered type: '" << name << "' {" << id << "}");
    return true;
  }
  TypeMetadata* record = NOX_NEW TypeMetadata(name, id);
  typesById_.emplace(id, record);
  typesByName_.emplace(record->getName(), record);
  return true;
}

void TypeManager::unregisterType(const Uuid& id) {
  if (isCreatorRegistered(id)) {
    AssertingLogger asserting;
    unregisterCreator(id, &asserting);
  }
  auto found = typesById_.find(id);
  if (found == typesById_.end()) return;
  TypeMetadata* record = found->second;
  for (auto& entry : typesById_) entry.second->removeBaseType(*record);
  typesByName_.erase(typesByName_.find(record->getName()));
  NOX_DELETE(record);
  typesById_.erase(found);
}

void TypeManager::clearTypes() {
  while (!typesById_.empty()) {
    const Uuid id = typesById_.begin()->first;
    unregisterType(id);
  }
}

bool TypeManager::registerClass(const Uuid& id, const char* name, StaticObject::MetadataSetter setter,
                                StaticObjectCreator* creator, AbstractLogger* logger) {
  ScopedPtr<StaticObjectCreator> ownedCreator(creator);
  // Known under its name: nothing to add (its setter must not run twice); under another
  // name: refused.
  if (isTypeRegistered(id)) return registerType(id, name, logger);
  if (!registerType(id, name, logger)) return false;
  const bool done = (setter == nullptr || setter(*this, logger)) &&
                    (creator == nullptr || registerCreator(id, ownedCreator.release(), logger));
  if (!done) unregisterType(id);
  return done;
}

bool TypeManager::addProperty(const Property& property, AbstractLogger* logger) {
  if (!property.isValid()) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "Invalid property.");
    return false;
  }
  TypeMetadata* owner = findMetadata(property.getOwnerTypeId());
  if (owner == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "Invalid owner type.");
    return false;
  }
  owner->addProperty(property);
  return true;
}

bool TypeManager::registerCreator(const Uuid& id, StaticObjectCreator* creator, AbstractLogger* logger) {
  ScopedPtr<StaticObjectCreator> owned(creator);
  if (creator == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "No creator given for the type {" << id << "}.");
    return false;
  }
  if (!isTypeRegistered(id)) {
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "Unable to register a creator for the type {" << id << "}, no type having this id is registered.");
    return false;
  }
  if (isCreatorRegistered(id)) {
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "A creator is already registered for the type " << getTypeName(id) << " {" << id << "}.");
    return false;
  }
  creators_.emplace(id, owned.release());
  return true;
}

bool TypeManager::unregisterCreator(const Uuid& id, AbstractLogger* logger) {
  auto found = creators_.find(id);
  if (found == creators_.end()) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "No creator is registered for the type {" << id << "}.");
    return false;
  }
  NOX_DELETE(found->second);
  creators_.erase(found);
  return true;
}

bool TypeManager::isCreatorRegistered(const Uuid& id) const { return creators_.count(id) != 0; }

bool TypeManager::isTypeRegistered(const Uuid& id) const { return typesById_.count(id) != 0; }

bool TypeManager::isTypeRegistered(const char* name) const {
  return name != nullptr && typesByName_.find(name) != typesByName_.end();
}

const Uuid& TypeManager::getTypeId(const char* name) const {
  static const Uuid nil;
  auto found = name != nullptr ? typesByName_.find(name) : typesByName_.end();
  if (found == typesByName_.end()) {
    NOX_FAIL("No type having the name " << (name != nullptr ? name : "NULL") << " is registered.");
    return nil;
  }
  return found->second->getTypeId();
}

const char* TypeManager::getTypeName(const Uuid& id) const { return getMetadata(id).getName(); }

type::Type TypeManager::getType(const Uuid& id) const { return getMetadata(id).getType(); }

unsigned int TypeManager::countProperties(const Uuid& id) const { return getMetadata(id).countProperties(); }

const Property& TypeManager::getProperty(const Uuid& id, unsigned int index) const {
  return getMetadata(id).getProperty(index);
}

bool TypeManager::addBaseType(const Uuid& type, const Uuid& base, AbstractLogger* logger) {
  TypeMetadata* record = requireMetadata(type);
  const TypeMetadata* baseRecord = requireMetadata(base);
  return record != nullptr && baseRecord != nullptr && record->addBaseType(*baseRecord, logger);
}

bool TypeManager::isDerivedFrom(const Uuid& type, const Uuid& base) const {
  const TypeMetadata* record = findMetadata(type);
  const TypeMetadata* baseRecord = findMetadata(base);
  return record != nullptr && baseRecord != nullptr && (type == base || record->isDerivedFrom(*baseRecord));
}

bool TypeManager::isStaticObject(const Uuid& id) const {
  return isTypeRegistered(id) && isDerivedFrom(id, StaticObject::getClassTypeId());
}

bool TypeManager::isPropertyRegistered(const Uuid& id, const char* key) const {
  return getPropertyPtr(id, key) != nullptr;
}

bool TypeManager::isPropertyRegistered(const Uuid& id, const char* key, unsigned int length) const {
  return getPropertyPtr(id, key, length) != nullptr;
}

const Property& TypeManager::getProperty(const Uuid& id, const char* key) const {
  return getProperty(id, key, key != nullptr ? static_cast<unsigned int>(std::strlen(key)) : 0);
}

const Property& TypeManager::getProperty(const Uuid& id, const char* key, unsigned int length) const {
  if (const Property* property = getPropertyPtr(id, key, length)) return *property;
  // A null key was reported as such already.
  if (key != nullptr) {
    NOX_FAIL("The type " << id << " have no registered property named " << std::string_view(key, length) << ".");
  }
  return Property::invalid();
}

StaticObject* TypeManager::createStaticObject(const Uuid& id, AbstractLogger* logger) const {
  // The two messages are crossed on purpose.
  if (!isTypeRegistered(id)) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "No registered creator for " << getMetadata(id).getName() << ".");
    return nullptr;
  }
  const StaticObjectCreator& creator = findCreator(id);
  if (&creator == &defaultCreator_) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "No type having the id " << id << " is registered.");
    return nullptr;
  }
  return creator(logger);
}

void TypeManager::destroyStaticObject(StaticObject* object) const { NOX_DELETE(object); }

const TypeMetadata& TypeManager::getMetadata(const Uuid& id) const {
  const TypeMetadata* record = requireMetadata(id);
  return record != nullptr ? *record : TypeMetadata::unknown();
}

TypeMetadata* TypeManager::requireMetadata(const Uuid& id) const {
  TypeMetadata* record = findMetadata(id);
  if (record == nullptr) NOX_FAIL("No type having the id " << id << " is registered.");
  return record;
}

TypeMetadata* TypeManager::findMetadata(const Uuid& id) const {
  auto found = typesById_.find(id);
  return found != typesById_.end() ? found->second : nullptr;
}

const TypeManager::StaticObjectCreator& TypeManager::findCreator(const Uuid& id) const {
  auto found = creators_.find(id);
  return found != creators_.end() ? *found->second : defaultCreator_;
}

const Property* TypeManager::getPropertyPtr(const Uuid& id, const char* key) const {
  return getPropertyPtr(id, key, key != nullptr ? static_cast<unsigned int>(std::strlen(key)) : 0);
}

const Property* TypeManager::getPropertyPtr(const Uuid& id, const char* key, unsigned int length) const {
  if (key == nullptr) {
    NOX_FAIL("Invalid key");
    return nullptr;
  }
  return getMetadata(id).getProperty(key, length);
}

// DynamicObject's compatibility with a run-time type lives with the type system, so that
// dynamic objects do not depend on it.
bool DynamicObject::isTypeCompatible(unsigned int property, const Uuid& typeId, const TypeManager& types) const {
  return isTypeCompatible(property, types.getType(typeId));
}

}  // namespace nox::utils
