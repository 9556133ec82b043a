// One named, typed member of a registered type: which type owns it, which type its
// value has, and how to read and write it on an instance. A property is set up from
// pointers to members of the owner class (a const getter plus a setter or a mutable
// getter; a data member pointer serves as both) and copied into the owner's record by
// the TypeManager. It is valid once set up.
//
// Values cross the type-erased accessor by address: the typed front (getValue,
// setValue, getMutableValue, putValue) checks that the value type is exactly the
// property's and that the instance holds an object of the owner class, then hands the
// accessor pointers to both. Instances of StaticObject classes are found by dynamic
// cast, so an object may be given through its base or a derived class; any other owner
// must be given as exactly its own type.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/StaticObject.h>
#include <nox/utils/String.h>
#include <nox/utils/Type.h>
#include <nox/utils/Uuid.h>
#include <nox/utils/details/ClassTypeId.h>

#include <nox/allocator/Allocator.h>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <type_traits>

namespace nox::utils {

class AbstractLogger;
class DynamicObject;
class TypeManager;

namespace details {

// Logs that values of the type cannot be put into a dynamic object; returns false.
NOX_UTILS_API bool reportNotInspectable(const Uuid& typeId, const TypeManager& types, AbstractLogger* logger);

// Writes a reflected value into the property `handle` of `target`. The built-in value
// types are written as the dynamic object's own kinds; the geometric types as objects
// of real components (x, y, z, w). A type without a specialization is reported on
// `logger` and refused.
template <class T>
bool putInspectableObjectHelper(DynamicObject&, unsigned int, const T&, const TypeManager& types,
                                AbstractLogger* logger) {
  return reportNotInspectable(getClassTypeId<T>(), types, logger);
}

#define NOX_DETAILS_DECLARE_PUT_HELPER(Type)                                                                          \
  template <>                                                                                                         \
  NOX_UTILS_API bool putInspectableObjectHelper<Type>(DynamicObject & target, unsigned int handle, const Type& value, \
                                                      const TypeManager& types, AbstractLogger* logger);
NOX_DETAILS_DECLARE_PUT_HELPER(std::int64_t)
NOX_DETAILS_DECLARE_PUT_HELPER(int)
NOX_DETAILS_DECLARE_PUT_HELPER(bool)
NOX_DETAILS_DECLARE_PUT_HELPER(float)
NOX_DETAILS_DECLARE_PUT_HELPER(double)
NOX_DETAILS_DECLARE_PUT_HELPER(String)
NOX_DETAILS_DECLARE_PUT_HELPER(DynamicObject)
NOX_DETAILS_DECLARE_PUT_HELPER(Vector2<double>)
NOX_DETAILS_DECLARE_PUT_HELPER(Vector3<double>)
NOX_DETAILS_DECLARE_PUT_HELPER(Quaternion<double>)
#undef NOX_DETAILS_DECLARE_PUT_HELPER

// The type-erased access to one member. `owner` points to an object of the owner
// class, `value` to one of the value type; the Property has checked both.
class NOX_UTILS_API AbstractPropertyAccessor {
 public:
  virtual ~AbstractPropertyAccessor();
  virtual AbstractPropertyAccessor* clone() const = 0;
  // The owner-class object inside `object`, or null when it holds none (or the owner
  // class is not a StaticObject).
  virtual const void* findOwner(const StaticObject& object) const = 0;
  virtual void get(const void* owner, void* value) const = 0;
  virtual void set(void* owner, const void* value) const = 0;
  virtual bool hasMutableGet() const = 0;
  // The member itself; without a mutable getter an assertion failure and null.
  virtual void* getMutable(void* owner) const;
  virtual bool put(const void* owner, DynamicObject& target, unsigned int handle, const TypeManager& types,
                   AbstractLogger* logger) const = 0;
};

template <class Owner, class Value, class Second, class = void>
struct IsMutableGetter : std::false_type {};
template <class Owner, class Value, class Second>
struct IsMutableGetter<Owner, Value, Second,
                       std::enable_if_t<std::is_same_v<std::invoke_result_t<Second, Owner&>, Value&>>>
    : std::true_type {};

template <class Owner, class Getter>
using PropertyValue = std::decay_t<std::invoke_result_t<Getter, const Owner&>>;

template <class Owner, class Getter, class Second>
class MemberAccessor final : public AbstractPropertyAccessor {
 public:
  using Value = PropertyValue<Owner, Getter>;
  static constexpr bool kMutableGet = IsMutableGetter<Owner, Value, Second>::value;
  static_assert(kMutableGet || std::is_invocable_v<Second, Owner&, const Value&>,
                "the second accessor must be a setter taking the value or a getter returning a mutable reference");

  MemberAccessor(Getter getter, Second second) : getter_(getter), second_(second) {}

  AbstractPropertyAccessor* clone() const override { return NOX_NEW MemberAccessor(*this); }
  const void* findOwner(const StaticObject& object) const override {
    if constexpr (std::is_base_of_v<StaticObject, Owner>) {
      return dynamic_cast<const Owner*>(&object);
    } else {
      return nullptr;
    }
  }
  void get(const void* owner, void* value) const override {
    *static_cast<Value*>(value) = std::invoke(getter_, *static_cast<const Owner*>(owner));
  }
  void set(void* owner, const void* value) const override {
    Owner& object = *static_cast<Owner*>(owner);
    if constexpr (kMutableGet) {
      std::invoke(second_, object) = *static_cast<const Value*>(value);
    } else {
      std::invoke(second_, object, *static_cast<const Value*>(value));
    }
  }
  bool hasMutableGet() const override { return kMutableGet; }
  void* getMutable(void* owner) const override {
    if constexpr (kMutableGet) {
      return &std::invoke(second_, *static_cast<Owner*>(owner));
    } else {
      return AbstractPropertyAccessor::getMutable(owner);
    }
  }
  bool put(const void* owner, DynamicObject& target, unsigned int handle, const TypeManager& types,
           AbstractLogger* logger) const override {
    return putInspectableObjectHelper<Value>(target, handle, std::invoke(getter_, *static_cast<const Owner*>(owner)),
                                             types, logger);
  }

 private:
  Getter getter_;
  Second second_;
};

}  // namespace details

class NOX_UTILS_API Property {
 public:
  // Invalid: empty key, nil ids, no accessor, no type manager.
  Property();
  Property(const Property& other);
  Property& operator=(const Property& other);
  ~Property();

  // The invalid property that lookups return after a failed contract check.
  static const Property& invalid();

  // Sets the property up as the member `key` of `Owner`, read with `getter` (a const
  // member function or a data member) and written with `second` (a setter taking the
  // value, or a member function or data member giving a mutable reference). The value
  // type is what the getter returns, decayed. Both types must be registered with
  // `types`. Messages (error::invalidArgument): "Invalid property name.", "Invalid
  // getter pointer." (for either pointer), "Invalid owner type.", "Invalid value
  // type.". The key, ids and manager are stored before the two type checks; a failed
  // type check then leaves the property invalid (a previous accessor would no longer
  // match), a success replaces the accessor. Values are compared by exact type: a
  // double property takes 6.0, not 6.
  template <class Owner, class Getter, class Second>
  bool setUp(const char* key, Getter getter, Second second, TypeManager& types, AbstractLogger* logger);

  bool isValid() const { return accessor_ != nullptr; }

  // Each of these first checks validity ("Invalid property." otherwise).
  const char* getKey() const;
  // The value type's id, name and kind.
  const Uuid& getTypeId() const;
  const char* getTypeName() const;
  type::Type getType() const;
  const TypeManager& getTypeManager() const;
  bool hasMutableGet() const;

  // The type that owns the property (no validity check).
  const Uuid& getOwnerTypeId() const { return ownerTypeId_; }

  bool isObject() const { return getType() == type::object; }
  bool isInt() const { return getType() == type::integer; }
  bool isReal() const { return getType() == type::real; }
  bool isBool() const { return getType() == type::boolean; }
  bool isString() const { return getType() == type::string; }
  bool isDynamicObject() const { return getTypeId() == details::getClassTypeId<DynamicObject>(); }
  bool isVector2() const { return getTypeId() == details::getClassTypeId<Vector2<double>>(); }
  bool isVector3() const { return getTypeId() == details::getClassTypeId<Vector3<double>>(); }
  bool isQuaternion() const { return getTypeId() == details::getClassTypeId<Quaternion<double>>(); }
  bool isStaticObject() const;
  // Whether a value of kind `requested` fits this property: integer and real fit each
  // other, every other kind only itself.
  bool isTypeCompatible(type::Type requested) const;

  // Typed access on an instance. A wrong value type, an instance that holds no object
  // of the owner class and an invalid property are assertion failures (false / null).
  template <class Owner, class Value>
  bool getValue(const Owner& instance, Value& value) const;
  template <class Owner, class Value>
  bool setValue(Owner& instance, const Value& value) const;
  // The member itself, when the property was set up with a mutable getter:
  // property.getMutableValue<double>(instance).
  template <class Value, class Owner>
  Value* getMutableValue(Owner& instance) const;
  // Writes the member's value into the property `handle` of `target`
  // (details::putInspectableObjectHelper of the value type).
  template <class Owner>
  bool putValue(const Owner& instance, DynamicObject& target, unsigned int handle, AbstractLogger* logger) const;

 private:
  // Steps of setUp that do not depend on the member types.
  bool prepareSetUp(const char* key, bool hasGetter, bool hasSecond, const Uuid& ownerTypeId, const Uuid& valueTypeId,
                    TypeManager& types, AbstractLogger* logger);
  void replaceAccessor(details::AbstractPropertyAccessor* accessor);
  bool checkValid() const;
  bool checkValueType(const Uuid& requested) const;
  // The owner-class object of `instance`, null (asserted) when there is none.
  template <class Owner>
  const void* findOwner(const Owner& instance) const;
  const void* checkOwner(const void* owner) const;

  String key_;
  Uuid ownerTypeId_;
  Uuid valueTypeId_;
  details::AbstractPropertyAccessor* accessor_ = nullptr;
  TypeManager* typeManager_ = nullptr;
};

// "key (value type name)", or "invalid property"; never asserts.
NOX_UTILS_API std::ostream& operator<<(std::ostream& out, const Property& property);

template <class Owner, class Getter, class Second>
bool Property::setUp(const char* key, Getter getter, Second second, TypeManager& types, AbstractLogger* logger) {
  static_assert(std::is_member_pointer_v<Getter> && std::is_member_pointer_v<Second>,
                "properties are accessed through pointers to members");
  using Accessor = details::MemberAccessor<Owner, Getter, Second>;
  if (!prepareSetUp(key, getter != nullptr, second != nullptr, details::getClassTypeId<Owner>(),
                    details::getClassTypeId<typename Accessor::Value>(), types, logger)) {
    return false;
  }
  replaceAccessor(NOX_NEW Accessor(getter, second));
  return true;
}

template <class Owner>
const void* Property::findOwner(const Owner& instance) const {
  if constexpr (std::is_base_of_v<StaticObject, Owner>) {
    return checkOwner(accessor_->findOwner(instance));
  } else {
    return checkOwner(details::getClassTypeId<Owner>() == ownerTypeId_ ? &instance : nullptr);
  }
}

template <class Owner, class Value>
bool Property::getValue(const Owner& instance, Value& value) const {
  if (!checkValueType(details::getClassTypeId<Value>())) return false;
  const void* owner = findOwner(instance);
  if (owner == nullptr) return false;
  accessor_->get(owner, &value);
  return true;
}

template <class Owner, class Value>
bool Property::setValue(Owner& instance, const Value& value) const {
  if (!checkValueType(details::getClassTypeId<Value>())) return false;
  const void* owner = findOwner(instance);
  if (owner == nullptr) return false;
  accessor_->set(const_cast<void*>(owner), &value);
  return true;
}

template <class Value, class Owner>
Value* Property::getMutableValue(Owner& instance) const {
  if (!checkValueType(details::getClassTypeId<Value>())) return nullptr;
  const void* owner = findOwner(instance);
  return owner == nullptr ? nullptr : static_cast<Value*>(accessor_->getMutable(const_cast<void*>(owner)));
}

template <class Owner>
bool Property::putValue(const Owner& instance, DynamicObject& target, unsigned int handle,
                        AbstractLogger* logger) const {
  if (!checkValid()) return false;
  const void* owner = findOwner(instance);
  return owner != nullptr && accessor_->put(owner, target, handle, getTypeManager(), logger);
}

}  // namespace nox::utils
