// Binary form -> dynamic object -> binary form -> dynamic object. Any bytes are read
// without an assertion or a crash, and refused ones are reported. Bytes that read as an
// object are written, read and written again, and both writings are the same bytes.
#include <nox/allocator/Allocator.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/impl/ProtobufDynamicObjectBuilder.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzSupport.h"

namespace {

using nox::utils::DynamicObject;

std::string write(const DynamicObject& object) {
  nox::fuzz::SilentLogger logger;
  unsigned int size = 0;
  char* bytes = nox::utils::serializeDynamicObject(size, object, &logger);
  NOX_FUZZ_CHECK(bytes != nullptr);
  std::string binary(bytes, size);
  NOX_DEALLOCATE(bytes);
  return binary;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  DynamicObject object;
  nox::fuzz::SilentLogger logger;
  if (!nox::utils::deserializeDynamicObject(reinterpret_cast<const char*>(data), static_cast<unsigned int>(size),
                                            object, &logger)) {
    NOX_FUZZ_CHECK(logger.hasErrors());
    return 0;
  }
  const std::string first = write(object);
  DynamicObject reread;
  NOX_FUZZ_CHECK(
      nox::utils::deserializeDynamicObject(first.data(), static_cast<unsigned int>(first.size()), reread, &logger));
  NOX_FUZZ_CHECK(write(reread) == first);
  return 0;
}
