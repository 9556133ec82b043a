// Cuts the byte stream of a Debug Adapter Protocol peer into messages, and frames the
// messages going the other way.
//
// A message is a header block of CRLF-ended fields, a blank line, then exactly
// Content-Length bytes of body. Bytes arrive in any slicing (one message over many
// reads, several messages in one read), so the framer keeps what it has until a whole
// message is there. A peer that sends a broken header must not stall or kill the
// adapter: the header is dropped, reported, and reading resumes at the next
// "Content-Length" field in the stream.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <cstddef>

namespace nox::dap {

class MessageFramer {
 public:
  enum class Result { incomplete, message, badHeader };

  // Longest header block accepted; real clients send one short field.
  static constexpr std::size_t maximumHeaderSize = 4096;
  // Largest body accepted; a larger one is skipped whole.
  static constexpr std::size_t maximumBodySize = 16u << 20;

  void append(const char* data, std::size_t size);

  // Takes the next message body out of the buffer. On badHeader, `problem` tells what
  // was wrong with the header that was dropped; call again for what follows.
  Result next(nox::utils::String& body, nox::utils::String& problem);

  // Bytes held and not yet handed out (a partial header or body).
  std::size_t getBufferedSize() const { return buffer_.size() - start_; }

  // The header and body of one outgoing message.
  static nox::utils::String frame(const char* body, std::size_t size);

 private:
  Result readHeader(nox::utils::String& problem);
  // Drops bytes up to the next "Content-Length" field, if the buffer holds one.
  void resynchronize();
  void compact();

  nox::utils::Vector<char> buffer_;
  // Start of the bytes not consumed yet.
  std::size_t start_ = 0;
  // Length of the body being waited for, once its header was read.
  std::size_t bodyLength_ = 0;
  bool inBody_ = false;
  // Body bytes of an oversized message still to be thrown away.
  std::size_t toSkip_ = 0;
  // Set after a broken header: the stream resumes at the next Content-Length field.
  bool lost_ = false;
};

}  // namespace nox::dap
