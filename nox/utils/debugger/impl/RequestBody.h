// Reads the body of a request exactly: to its announced Content-Length, or to its last
// chunk, and never past a size limit. A body is all there or it is nothing: a command
// must not run on the part of its parameters that arrived before the client went quiet,
// and a body that the server cannot delimit must not be taken for an empty one.
#pragma once

#include <nox/utils/Export.h>

#include <cstdint>

namespace nox::utils {
class MemoryInputOutput;
}

namespace nox::utils::debugger::impl {

class AbstractHttpConnection;
struct HttpRequest;

enum class BodyReading {
  // The whole body is in the buffer (possibly nothing).
  complete,
  // Larger than the limit: not read (or not read further).
  tooLarge,
  // Neither a Content-Length nor chunks: where the body ends cannot be known. The
  // embedded server takes such a request for one without a body, whatever follows its
  // headers, so it cannot be served as sent.
  unknownLength,
  // The connection failed or timed out before the end of the body.
  cutShort,
};

// Appends the body of `request` to `body`.
NOX_UTILS_API BodyReading readRequestBody(const HttpRequest& request, AbstractHttpConnection& connection,
                                          std::uint64_t maxSize, MemoryInputOutput& body);

}  // namespace nox::utils::debugger::impl
