#include <nox/utils/Type.h>

namespace nox::utils {

const char* toString(type::Type type) {
  static const char* const names[] = {"null", "integer", "real", "string", "boolean", "array", "object"};
  if (type < type::null || type > type::object) return nullptr;
  return names[type];
}

}  // namespace nox::utils
