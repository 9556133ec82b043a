// One HTTP request as the inspection server handles it, apart from the embedded server
// that received it: the request line and headers as texts with their lengths, what the
// headers say about the body, and the connection the body is read from and the reply
// written to. The server fills it from CivetWeb; tests and the fuzzing target fill it
// from raw bytes, so that the very same handling runs under both.
#pragma once

#include <nox/utils/Export.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nox::utils::debugger::impl {

// ASCII comparison without regard to case, as header names and host names compare.
NOX_UTILS_API bool equalsIgnoringCase(std::string_view first, std::string_view second);

struct HttpHeader {
  std::string_view name;
  std::string_view value;
};

struct HttpRequest {
  std::string_view method;
  // As received: still percent-encoded, without the query.
  std::string_view rawPath;
  // The text after "?", empty when there is none. Never percent-decoded.
  std::string_view query;
  const HttpHeader* headers = nullptr;
  unsigned int headerCount = 0;
  // The receiving server kept only the first headers: whatever followed them (a
  // Content-Length, say) is lost, so the request cannot be served as sent.
  bool headersTruncated = false;

  // The value of the first header of that name (compared without regard to case), or
  // null when there is none.
  NOX_UTILS_API const std::string_view* findHeader(std::string_view name) const;
  // The announced Content-Length: -1 when absent or not a decimal number.
  NOX_UTILS_API std::int64_t getContentLength() const;
  // Whether the body comes in chunks (Transfer-Encoding: chunked).
  NOX_UTILS_API bool isChunked() const;
};

// The connection a request came on.
class NOX_UTILS_API AbstractHttpConnection {
 public:
  virtual ~AbstractHttpConnection();
  // Reads body bytes (de-chunked when the body is chunked): how many were read, 0 at the
  // end of the body, and below 0 when the body could not be read to its end (the
  // client went quiet past the request timeout, or closed the connection).
  virtual int readBody(char* buffer, std::size_t size) = 0;
  // Whether every byte was written.
  virtual bool write(const char* data, std::size_t size) = 0;
};

}  // namespace nox::utils::debugger::impl
