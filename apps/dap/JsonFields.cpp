#include "JsonFields.h"

#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>

#include <cmath>
#include <limits>

namespace nox::dap::json {

using nox::utils::DynamicObject;
namespace type = nox::utils::type;

bool parse(const char* text, std::size_t size, DynamicObject& object, nox::utils::String& problem) {
  if (size > std::numeric_limits<unsigned int>::max()) {
    problem = "text too long";
    return false;
  }
  nox::utils::MemoryInputOutput input(text, static_cast<unsigned int>(size));
  nox::utils::BufferLogger logger(false, false, false);
  const bool parsed = nox::utils::deserializeDynamicObjectFromJson(object, input, &logger);
  const type::Type root = object.getType(object.getRoot());
  if (parsed && !logger.hasErrors() && (root == type::object || root == type::array)) return true;
  problem = logger.getEntries().empty() ? "not a JSON object or array" : logger.getEntries().front().message;
  return false;
}

unsigned int member(const DynamicObject& object, unsigned int parent, const char* name) {
  if (parent == 0 || object.getType(parent) != type::object) return 0;
  return object.getChild(parent, name);
}

bool readInteger(const DynamicObject& object, unsigned int parent, const char* name, std::int64_t& value) {
  const unsigned int found = member(object, parent, name);
  if (found == 0) return false;
  if (object.getType(found) == type::integer) {
    value = object.getInt(found);
    return true;
  }
  // Clients written in JavaScript may send whole numbers as reals.
  if (object.getType(found) != type::real) return false;
  const double real = object.getReal(found);
  if (!(std::fabs(real) < 9.0e15) || std::floor(real) != real) return false;
  value = static_cast<std::int64_t>(real);
  return true;
}

bool readString(const DynamicObject& object, unsigned int parent, const char* name, nox::utils::String& value) {
  const unsigned int found = member(object, parent, name);
  if (found == 0 || object.getType(found) != type::string) return false;
  value = object.getString(found);
  return true;
}

bool readBoolean(const DynamicObject& object, unsigned int parent, const char* name, bool& value) {
  const unsigned int found = member(object, parent, name);
  if (found == 0 || object.getType(found) != type::boolean) return false;
  value = object.getBool(found);
  return true;
}

}  // namespace nox::dap::json
