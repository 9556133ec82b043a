// A plain quaternion, vector part x, y, z and scalar part w, as the run-time type
// system sees rotations. Quaternionr (double components) is a built-in type with the
// properties x, y, z and w. No algebra: engines bring their own.
#pragma once

namespace nox::utils {

template <class T>
struct Quaternion {
  T x;
  T y;
  T z;
  T w;

  bool operator==(const Quaternion& other) const {
    return x == other.x && y == other.y && z == other.z && w == other.w;
  }
  bool operator!=(const Quaternion& other) const { return !(*this == other); }
};

using Quaternionr = Quaternion<double>;

}  // namespace nox::utils
