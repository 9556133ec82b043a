// The adapter's side of one host's inspection API: the base URL and token of the
// attached host, and the calls in flight to it, each remembered with what its reply is
// for, so that replies (which come back in any order) find their way.
#pragma once

#include "HttpTransfers.h"

#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <cstdint>

namespace nox::dap {

// Why a call was made; its reply is handled accordingly.
struct HostCall {
  enum class Purpose {
    enableEvents,
    readEventBaseline,
    threads,
    command,
    stackTrace,
    context,
    evaluate,
    subscribe,
    unsubscribe,
    pollSuspension,
    pollEvents,
    pollEvent,
    consumeEvent,
    finalState,
    finalResume,
  };

  Purpose purpose;
  // The protocol request waiting for this reply; -1 for none.
  std::int64_t requestSeq = -1;
  nox::utils::String command;
  // Per purpose: an entity, a frame, a reference, a breakpoint slot, an epoch.
  std::int64_t number = 0;
  // A second number some purposes need.
  std::int64_t detail = 0;
};

class HostLink {
 public:
  explicit HostLink(AbstractHttpClient& http) : http_(http) {}

  // Starts talking to the host at `url` (no trailing slash), with `token` when not empty.
  void open(const nox::utils::String& url, const nox::utils::String& token);
  // Forgets the host. Calls in flight still get their replies.
  void close() { open_ = false; }
  bool isOpen() const { return open_; }
  const nox::utils::String& getUrl() const { return url_; }

  // Sends `method` on `path` (below the base URL, starting with "/api/"). Its reply
  // always comes, if only to say that the host could not be reached.
  void send(const char* method, const nox::utils::String& path, const nox::utils::String* body, HostCall call);
  // Takes the call that the reply `id` answers; false when it answers nothing known.
  bool take(unsigned int id, HostCall& call);
  bool hasCallsInFlight() const { return !calls_.empty(); }

 private:
  AbstractHttpClient& http_;
  nox::utils::String url_;
  nox::utils::String token_;
  bool open_ = false;
  nox::utils::Map<unsigned int, HostCall> calls_;
};

// The decimal text of a number, for paths and messages.
nox::utils::String decimal(std::int64_t number);

// What to tell the editor about a reply other than 200: `refused` for the host's "no"
// (400 or 404), the status otherwise.
nox::utils::String describeRefusal(const HttpReply& reply, const nox::utils::String& refused);

}  // namespace nox::dap
