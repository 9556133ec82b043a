// A plain triple of components, the run-time type system's three-dimensional vector.
// Vector3r (double components) is a built-in type with the properties x, y and z.
#pragma once

namespace nox::utils {

template <class T>
struct Vector3 {
  T x;
  T y;
  T z;

  bool operator==(const Vector3& other) const { return x == other.x && y == other.y && z == other.z; }
  bool operator!=(const Vector3& other) const { return !(*this == other); }
};

using Vector3r = Vector3<double>;

}  // namespace nox::utils
