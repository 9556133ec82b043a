// The reply to one HTTP request of the inspection server. Resource handlers write the
// body as build events into getBuilder() (compact JSON text into an in-memory buffer);
// send() then writes the status line, the headers and the body to the connection in
// one piece (a header and a body sent apart would meet the delayed-acknowledgement
// stall of small TCP segments). The reply is also the byte stream the JSON builder writes into: it takes
// writes and refuses reads.
#pragma once

#include <nox/utils/AbstractDataInputOutput.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/String.h>

namespace nox::utils::debugger::impl {

class AbstractHttpConnection;

class JsonHttpReply : public AbstractDataInputOutput {
 public:
  // Indices of the status table; the resource layer and the server speak in indices.
  enum StatusIndex {
    ok = 0,                   // 200
    created = 1,              // 201
    noContent = 2,            // 204
    badRequest = 3,           // 400
    unauthorized = 4,         // 401
    forbidden = 5,            // 403
    notFound = 6,             // 404
    methodNotAllowed = 7,     // 405
    internalServerError = 8,  // 500
    notImplemented = 9,       // 501
  };

  // `connection` must outlive the reply; `logger` receives the stream's reports.
  JsonHttpReply(AbstractHttpConnection& connection, AbstractLogger* logger);
  ~JsonHttpReply();

  JsonHttpReply(const JsonHttpReply&) = delete;
  JsonHttpReply& operator=(const JsonHttpReply&) = delete;

  AbstractObjectBuilder& getBuilder() { return builder_; }
  // Drops whatever was built so far.
  void clearBody();

  // Sends the reply with the code and reason of `status` (an index outside the table
  // is sent as 500), then empties the body. The Content-Type says JSON only when there
  // is a body. False when the connection did not take every byte.
  bool send(int status);

  // The code and reason phrase of a status index (outside the table: those of 500).
  static int getStatusCode(int status);
  static const char* getStatusReason(int status);

  bool isWritable() const override { return true; }
  bool write(const char* data, unsigned int size, AbstractLogger* logger) override;
  bool isReadable() const override { return false; }
  bool read(char* buffer, unsigned int& size, AbstractLogger* logger) override;

 private:
  AbstractHttpConnection& connection_;
  OStringStream body_;
  JsonObjectBuilder builder_;
};

}  // namespace nox::utils::debugger::impl
