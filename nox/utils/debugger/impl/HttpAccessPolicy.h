// Who may use the inspection API served by the options form of the server, decided
// from a request's headers before anything else runs:
//   - Host: while the server listens on a loopback address, the request must name it
//     localhost, 127.0.0.1, [::1] or the listening address (any port). A browser page
//     whose DNS name an attacker rebound to 127.0.0.1 still sends its own name, and is
//     turned away (403). A request without Host cannot come from a browser and passes.
//   - Authorization: with an access token set, "Bearer <token>" must match it (401).
//     The comparison takes the same time wherever the texts differ, and the token is
//     never logged.
//   - Origin: a POST or DELETE sent by a page of another origin than the server's own
//     ("http://" + Host) is refused (403) unless that origin is allowed; browsers send
//     such requests without asking first when they look like form posts. GETs only
//     read and stay open to every origin; requests without Origin do not come from a
//     page and pass.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/String.h>

#include <string_view>

namespace nox::utils {
class AbstractLogger;
}

namespace nox::utils::debugger {
struct HttpOptions;
}

namespace nox::utils::debugger::impl {

struct HttpRequest;

class NOX_UTILS_API HttpAccessPolicy {
 public:
  explicit HttpAccessPolicy(const HttpOptions& options);

  // The status index of the refusal (JsonHttpReply's table), its reason logged as a
  // warning on `logger`; JsonHttpReply::ok when the request may go on. `changesState`
  // for the methods that act (POST, DELETE).
  int check(const HttpRequest& request, bool changesState, AbstractLogger* logger) const;
  // The Host check alone, for what any client of this machine may read (the
  // inspector's files).
  int checkHost(const HttpRequest& request, AbstractLogger* logger) const;

 private:
  bool isAllowedHost(std::string_view host) const;
  bool isAllowedOrigin(std::string_view origin, const std::string_view* host) const;
  bool carriesToken(const std::string_view* authorization) const;

  bool checksHost_;
  String bindAddress_;
  Vector<String> allowedOrigins_;
  bool anyOrigin_;
  String token_;
};

}  // namespace nox::utils::debugger::impl
