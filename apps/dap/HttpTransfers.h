// HTTP requests to a host, run side by side without ever blocking the caller: libcurl's
// multi interface, stepped from the program's one poll loop together with the protocol
// peer's descriptor.
//
// Every transfer is bounded (connect and total timeouts), so a host that hangs or
// vanishes costs a failed reply, never a stuck adapter. Replies are capped in size.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <curl/curl.h>

namespace nox::dap {

// The end of one transfer. `status` 0 means no HTTP reply came; `error` says why.
struct HttpReply {
  unsigned int id = 0;
  long status = 0;
  nox::utils::String body;
  nox::utils::String error;
};

// What the debug session needs of HTTP: starting requests. Replies come back through
// whoever runs the transfers.
class AbstractHttpClient {
 public:
  virtual ~AbstractHttpClient() = default;
  // `body` is sent (as JSON) only when not null. `token`, when not empty, goes as a
  // bearer token. Returns the transfer's id. A transfer that cannot even start still
  // ends, at once, with a failed reply: every call gets exactly one reply.
  virtual unsigned int start(const char* method, const nox::utils::String& url, const nox::utils::String* body,
                             const nox::utils::String& token) = 0;
};

class HttpTransfers : public AbstractHttpClient {
 public:
  static constexpr long connectTimeoutMilliseconds = 2000;
  static constexpr long transferTimeoutMilliseconds = 5000;
  static constexpr std::size_t maximumReplySize = 8u << 20;

  HttpTransfers();
  ~HttpTransfers() override;

  HttpTransfers(const HttpTransfers&) = delete;
  HttpTransfers& operator=(const HttpTransfers&) = delete;

  unsigned int start(const char* method, const nox::utils::String& url, const nox::utils::String* body,
                     const nox::utils::String& token) override;

  // Blocks until a transfer socket or one of `extra` is ready, or `timeoutMilliseconds`
  // pass. The ready flags of `extra` are in their `revents`.
  void wait(curl_waitfd* extra, unsigned int count, int timeoutMilliseconds);
  // Moves the transfers on and appends those that ended to `done`.
  void collect(nox::utils::Vector<HttpReply>& done);

  bool isBusy() const { return !transfers_.empty() || !unstarted_.empty(); }

 private:
  struct Transfer;

  static std::size_t receive(char* data, std::size_t size, std::size_t count, void* transfer);
  void finish(CURL* easy, CURLcode code, nox::utils::Vector<HttpReply>& done);

  CURLM* multi_;
  nox::utils::Map<unsigned int, Transfer*> transfers_;
  // Replies of the transfers that could not start, handed out by the next collect().
  nox::utils::Vector<HttpReply> unstarted_;
  unsigned int nextId_ = 1;
};

}  // namespace nox::dap
