// JSON text -> dynamic object -> JSON text -> dynamic object. Any text is read without
// an assertion or a crash, and a refused one is reported. A text that reads back as an
// object or array is written, read and written again, and both writings are the same
// text: what the writer produces the reader takes, and nothing changes on the way.
#include <nox/utils/DynamicObject.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/Type.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "FuzzSupport.h"

namespace {

using nox::utils::DynamicObject;
using nox::utils::MemoryInputOutput;

std::string_view textOf(const MemoryInputOutput& stream) { return {stream.getData(), stream.getSize()}; }

void write(const DynamicObject& object, MemoryInputOutput& text) {
  nox::fuzz::SilentLogger logger;
  NOX_FUZZ_CHECK_SHOWING(nox::utils::serializeDynamicObjectToJson(object, text, &logger), textOf(text));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  nox::fuzz::abortOnAssertion();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  MemoryInputOutput input(reinterpret_cast<const char*>(data), static_cast<unsigned int>(size));
  DynamicObject object;
  nox::fuzz::SilentLogger logger;
  if (!nox::utils::deserializeDynamicObjectFromJson(object, input, &logger)) {
    NOX_FUZZ_CHECK(logger.hasErrors());
    return 0;
  }
  // A lone scalar is valid JSON that the writer refuses by design.
  const nox::utils::type::Type rootType = object.getType(object.getRoot());
  if (rootType != nox::utils::type::object && rootType != nox::utils::type::array) return 0;

  MemoryInputOutput first;
  write(object, first);
  DynamicObject reread;
  NOX_FUZZ_CHECK_SHOWING(nox::utils::deserializeDynamicObjectFromJson(reread, first, &logger), textOf(first));
  MemoryInputOutput second;
  write(reread, second);
  NOX_FUZZ_CHECK_SHOWING(textOf(first) == textOf(second), textOf(second));

  // A copy into another object's property writes the same text again.
  DynamicObject holder;
  const unsigned int slot = holder.addChild(holder.getRoot(), "copy");
  NOX_FUZZ_CHECK(holder.put(slot, reread));
  DynamicObject copy;
  NOX_FUZZ_CHECK(holder.retrieve(slot, copy));
  MemoryInputOutput third;
  write(copy, third);
  NOX_FUZZ_CHECK_SHOWING(textOf(first) == textOf(third), textOf(third));
  return 0;
}
