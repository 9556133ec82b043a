// A plain pair of components, the run-time type system's two-dimensional vector.
// Vector2r (double components) is a built-in type with the properties x and y.
#pragma once

namespace nox::utils {

template <class T>
struct Vector2 {
  T x;
  T y;

  bool operator==(const Vector2& other) const { return x == other.x && y == other.y; }
  bool operator!=(const Vector2& other) const { return !(*this == other); }
};

using Vector2r = Vector2<double>;

}  // namespace nox::utils
