// Uri::parseQuery into a dynamic object, fresh or already holding objects and arrays
// under common names. A query is taken or refused with a report, never with an
// assertion; a taken one reads the same a second time over itself.
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/Uri.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"

namespace {

using nox::utils::DynamicObject;

std::string toJson(const DynamicObject& object) {
  nox::utils::MemoryInputOutput output;
  nox::fuzz::SilentLogger logger;
  NOX_FUZZ_CHECK(nox::utils::serializeDynamicObjectToJson(object, output, &logger));
  return std::string(output.getData(), output.getSize());
}

bool parse(const char* text, std::size_t size, DynamicObject& parameters) {
  nox::fuzz::SilentLogger logger;
  nox::utils::DynamicObjectBuilder builder(parameters, 0);
  builder.setLogger(&logger);
  if (nox::utils::Uri::parseQuery(text, static_cast<unsigned int>(size), builder)) return true;
  NOX_FUZZ_CHECK(logger.hasErrors());
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* text = reinterpret_cast<const char*>(data);
  DynamicObject parameters;
  if (parse(text, size, parameters)) {
    const std::string first = toJson(parameters);
    NOX_FUZZ_CHECK(parse(text, size, parameters));
    NOX_FUZZ_CHECK_SHOWING(toJson(parameters) == first, first);
  }

  // What a host already holds: a parameter may not turn it into something else.
  DynamicObject held;
  const unsigned int root = held.getRoot();
  held.setInt(held.addChild(held.addChild(root, "a"), "b"), 1);
  held.resize(held.addChild(root, "b"), 2);
  held.setString(held.addChild(root, "c"), "kept");
  parse(text, size, held);
  // Taken or refused, a parameter never replaces a container.
  NOX_FUZZ_CHECK(held.getType("a") == nox::utils::type::object && held.countChildren("b") == 2);
  return 0;
}
