#include <nox/utils/Property.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/Quaternion.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/Vector2.h>
#include <nox/utils/Vector3.h>

#include <initializer_list>
#include <ostream>
#include <utility>

namespace nox::utils {
namespace details {
namespace {

bool putComponents(DynamicObject& target, unsigned int handle,
                   std::initializer_list<std::pair<const char*, double>> components) {
  target.resetProperty(handle);
  for (const auto& [name, value] : components) target.setReal(target.addChild(handle, name), value);
  return true;
}

}  // namespace

bool reportNotInspectable(const Uuid& typeId, const TypeManager& types, AbstractLogger* logger) {
  if (types.isTypeRegistered(typeId)) {
    NOX_LOG_ERROR(logger, error::invalidOperation,
                  "Values of the type " << types.getTypeName(typeId) << " cannot be put into a dynamic object.");
  } else {
    NOX_LOG_ERROR(logger, error::invalidOperation,
                  "Values of the type {" << typeId << "} cannot be put into a dynamic object.");
  }
  return false;
}

template <>
bool putInspectableObjectHelper<std::int64_t>(DynamicObject& target, unsigned int handle, const std::int64_t& value,
                                              const TypeManager&, AbstractLogger*) {
  target.setInt(handle, value);
  return true;
}

template <>
bool putInspectableObjectHelper<int>(DynamicObject& target, unsigned int handle, const int& value, const TypeManager&,
                                     AbstractLogger*) {
  target.setInt(handle, static_cast<std::int64_t>(value));
  return true;
}

template <>
bool putInspectableObjectHelper<bool>(DynamicObject& target, unsigned int handle, const bool& value, const TypeManager&,
                                      AbstractLogger*) {
  target.setBool(handle, value);
  return true;
}

template <>
bool putInspectableObjectHelper<float>(DynamicObject& target, unsigned int handle, const float& value,
                                       const TypeManager&, AbstractLogger*) {
  target.setReal(handle, static_cast<double>(value));
  return true;
}

template <>
bool putInspectableObjectHelper<double>(DynamicObject& target, unsigned int handle, const double& value,
                                        const TypeManager&, AbstractLogger*) {
  target.setReal(handle, value);
  return true;
}

template <>
bool putInspectableObjectHelper<String>(DynamicObject& target, unsigned int handle, const String& value,
                                        const TypeManager&, AbstractLogger*) {
  target.setString(handle, value.data(), static_cast<unsigned int>(value.size()));
  return true;
}

template <>
bool putInspectableObjectHelper<DynamicObject>(DynamicObject& target, unsigned int handle, const DynamicObject& value,
                                               const TypeManager&, AbstractLogger*) {
  return target.put(handle, value);
}

template <>
bool putInspectableObjectHelper<Vector2<double>>(DynamicObject& target, unsigned int handle,
                                                 const Vector2<double>& value, const TypeManager&, AbstractLogger*) {
  return putComponents(target, handle, {{"x", value.x}, {"y", value.y}});
}

template <>
bool putInspectableObjectHelper<Vector3<double>>(DynamicObject& target, unsigned int handle,
                                                 const Vector3<double>& value, const TypeManager&, AbstractLogger*) {
  return putComponents(target, handle, {{"x", value.x}, {"y", value.y}, {"z", value.z}});
}

template <>
bool putInspectableObjectHelper<Quaternion<double>>(DynamicObject& target, unsigned int handle,
                                                    const Quaternion<double>& value, const TypeManager&,
                                                    AbstractLogger*) {
  return putComponents(target, handle, {{"x", value.x}, {"y", value.y}, {"z", value.z}, {"w", value.w}});
}

AbstractPropertyAccessor::~AbstractPropertyAccessor() = default;

void* AbstractPropertyAccessor::getMutable(void*) const {
  NOX_FAIL("Mutable get not available");
  return nullptr;
}

}  // namespace details

Property::Property() = default;

Property::Property(const Property& other)
    : key_(other.key_),
      ownerTypeId_(other.ownerTypeId_),
      valueTypeId_(other.valueTypeId_),
      accessor_(other.accessor_ != nullptr ? other.accessor_->clone() : nullptr),
      typeManager_(other.typeManager_) {}

Property& Property::operator=(const Property& other) {
  if (this == &other) return *this;
  key_ = other.key_;
  ownerTypeId_ = other.ownerTypeId_;
  valueTypeId_ = other.valueTypeId_;
  typeManager_ = other.typeManager_;
  replaceAccessor(other.accessor_ != nullptr ? other.accessor_->clone() : nullptr);
  return *this;
}

Property::~Property() { NOX_DELETE(accessor_); }

const Property& Property::invalid() {
  static const Property none;
  return none;
}

bool Property::prepareSetUp(const char* key, bool hasGetter, bool hasSecond, const Uuid& ownerTypeId,
                            const Uuid& valueTypeId, TypeManager& types, AbstractLogger* logger) {
  if (key == nullptr || *key == '\0') {
    NOX_LOG_ERROR(logger, error::invalidArgument, "Invalid property name.");
    return false;
  }
  // One text for both pointers: the setter is reported as a getter too.
  if (!hasGetter || !hasSecond) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "Invalid getter pointer.");
    return false;
  }
  typeManager_ = &types;
  key_ = key;
  ownerTypeId_ = ownerTypeId;
  valueTypeId_ = valueTypeId;
  const char* refusal = nullptr;
  if (!ownerTypeId.isValid() || !types.isTypeRegistered(ownerTypeId)) {
    refusal = "Invalid owner type.";
  } else if (!valueTypeId.isValid() || !types.isTypeRegistered(valueTypeId)) {
    refusal = "Invalid value type.";
  }
  if (refusal == nullptr) return true;
  NOX_LOG_ERROR(logger, error::invalidArgument, refusal);
  // A previous accessor would no longer match the stored types: the property turns
  // invalid rather than read one type as another.
  replaceAccessor(nullptr);
  return false;
}

void Property::replaceAccessor(details::AbstractPropertyAccessor* accessor) {
  details::AbstractPropertyAccessor* previous = accessor_;
  accessor_ = accessor;
  NOX_DELETE(previous);
}

bool Property::checkValid() const {
  if (isValid()) return true;
  NOX_FAIL("Invalid property.");
  return false;
}

bool Property::checkValueType(const Uuid& requested) const {
  if (!checkValid()) return false;
  if (requested == valueTypeId_) return true;
  NOX_FAIL("The property " << *this << " does not hold values of the type {" << requested << "}.");
  return false;
}

const void* Property::checkOwner(const void* owner) const {
  if (owner == nullptr) NOX_FAIL("The given instance holds no object of the type owning the property " << *this << ".");
  return owner;
}

const char* Property::getKey() const {
  checkValid();
  return key_.c_str();
}

const Uuid& Property::getTypeId() const {
  checkValid();
  return valueTypeId_;
}

const char* Property::getTypeName() const { return checkValid() ? typeManager_->getTypeName(valueTypeId_) : ""; }

type::Type Property::getType() const { return checkValid() ? typeManager_->getType(valueTypeId_) : type::null; }

const TypeManager& Property::getTypeManager() const {
  static const TypeManager none;
  return checkValid() ? *typeManager_ : none;
}

bool Property::hasMutableGet() const { return checkValid() && accessor_->hasMutableGet(); }

bool Property::isStaticObject() const { return checkValid() && typeManager_->isStaticObject(valueTypeId_); }

bool Property::isTypeCompatible(type::Type requested) const { return areTypesCompatible(getType(), requested); }

std::ostream& operator<<(std::ostream& out, const Property& property) {
  if (!property.isValid()) return out << "invalid property";
  const TypeManager& types = property.getTypeManager();
  out << property.getKey() << " (";
  if (types.isTypeRegistered(property.getTypeId())) {
    out << types.getTypeName(property.getTypeId());
  } else {
    out << "{" << property.getTypeId() << "}";
  }
  return out << ")";
}

}  // namespace nox::utils
