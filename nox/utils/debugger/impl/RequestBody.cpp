#include <nox/utils/debugger/impl/RequestBody.h>

#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/debugger/impl/HttpRequest.h>

#include <algorithm>

namespace nox::utils::debugger::impl {

BodyReading readRequestBody(const HttpRequest& request, AbstractHttpConnection& connection, std::uint64_t maxSize,
                            MemoryInputOutput& body) {
  const bool chunked = request.isChunked();
  const std::int64_t announced = chunked ? -1 : request.getContentLength();
  if (!chunked && announced < 0) return BodyReading::unknownLength;
  if (!chunked && static_cast<std::uint64_t>(announced) > maxSize) return BodyReading::tooLarge;
  char piece[16384];
  std::uint64_t total = 0;
  for (;;) {
    std::size_t wanted = sizeof piece;
    if (!chunked) {
      if (total == static_cast<std::uint64_t>(announced)) return BodyReading::complete;
      wanted = static_cast<std::size_t>(std::min<std::uint64_t>(wanted, announced - total));
    }
    const int read = connection.readBody(piece, wanted);
    if (read < 0) return BodyReading::cutShort;
    // The end of a chunked body; a body with a length ends only when all of it came.
    if (read == 0) return chunked ? BodyReading::complete : BodyReading::cutShort;
    total += static_cast<unsigned int>(read);
    if (total > maxSize) return BodyReading::tooLarge;
    body.write(piece, static_cast<unsigned int>(read), nullptr);
  }
}

}  // namespace nox::utils::debugger::impl
