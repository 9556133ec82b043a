#include <nox/utils/Type.h>

namespace nox::utils {

const char* toString(type::Type type) {
  static const char* const names[] = {"null", "integer", "real", "string", "boolean", "array", "object"};
  if (type < type::null || type > type::object) return nullptr;
  return names[type];
}

bool areTypesCompatible(type::Type stored, type::Type requested) {
  switch (stored) {
    case type::null:
      return true;
    case type::integer:
    case type::real:
      return requested == type::integer || requested == type::real;
    default:
      return requested == stored;
  }
}

}  // namespace nox::utils
