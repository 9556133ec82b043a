// The kinds of value a dynamic property can hold. The numeric values travel in
// serialised data and in messages, so they never change.
#pragma once

#include <nox/utils/Export.h>

#include <cstdint>

namespace nox::utils {

namespace type {
enum Type : std::int32_t {
  null = 0,
  integer = 1,
  real = 2,
  string = 3,
  boolean = 4,
  array = 5,
  object = 6,
};
}  // namespace type

// "null", "integer", "real", "string", "boolean", "array" or "object"; a null pointer
// for any other value.
NOX_UTILS_API const char* toString(type::Type type);

// Whether a value of kind `stored` may be read as `requested`: null goes with every kind
// (an absent value may be read as anything), integer and real with each other, and every
// other kind only with itself.
NOX_UTILS_API bool areTypesCompatible(type::Type stored, type::Type requested);

}  // namespace nox::utils
