// The type id of a C++ type for the run-time type system. A class that takes part in
// run-time typing carries a static getClassTypeId() (StaticObject and its derived
// classes do); the built-in value types, which cannot, have theirs fixed here. Each id
// is parsed once, on first use, and lives as long as the process.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/String.h>
#include <nox/utils/Uuid.h>

#include <cstdint>

namespace nox::utils {

class DynamicObject;
template <class T>
struct Vector2;
template <class T>
struct Vector3;
template <class T>
struct Quaternion;

namespace details {

template <class T>
const Uuid& getClassTypeId() {
  return T::getClassTypeId();
}

template <>
NOX_UTILS_API const Uuid& getClassTypeId<int>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<std::int64_t>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<double>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<float>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<bool>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<String>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<Vector3<double>>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<Vector2<double>>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<Quaternion<double>>();
template <>
NOX_UTILS_API const Uuid& getClassTypeId<DynamicObject>();

}  // namespace details
}  // namespace nox::utils
