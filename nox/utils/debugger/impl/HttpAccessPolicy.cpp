#include <nox/utils/debugger/impl/HttpAccessPolicy.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/debugger/HttpOptions.h>
#include <nox/utils/debugger/impl/HttpRequest.h>
#include <nox/utils/debugger/impl/JsonHttpReply.h>

#include <arpa/inet.h>

#include <algorithm>

namespace nox::utils::debugger::impl {
namespace {

bool isLoopback(const String& address) {
  in_addr parsed{};
  return inet_pton(AF_INET, address.c_str(), &parsed) == 1 && (ntohl(parsed.s_addr) >> 24) == 127;
}

// "name" or "name:digits".
std::string_view withoutPort(std::string_view host) {
  const std::size_t colon = host.rfind(':');
  // The colons of "[::1]" lie inside the brackets.
  if (colon == std::string_view::npos || host.find(']', colon) != std::string_view::npos) return host;
  const std::string_view port = host.substr(colon + 1);
  const bool digits = std::all_of(port.begin(), port.end(), [](char c) { return c >= '0' && c <= '9'; });
  return digits ? host.substr(0, colon) : std::string_view();
}

// Compares every byte of `expected` whatever `given` holds, so that the time taken
// tells nothing about how much of a guess was right.
bool equalsInConstantTime(std::string_view given, std::string_view expected) {
  unsigned char difference = given.size() == expected.size() ? 0 : 1;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    difference |= static_cast<unsigned char>(expected[i] ^ (i < given.size() ? given[i] : 0));
  }
  return difference == 0;
}

}  // namespace

HttpAccessPolicy::HttpAccessPolicy(const HttpOptions& options)
    : checksHost_(isLoopback(options.bindAddress)),
      bindAddress_(options.bindAddress),
      allowedOrigins_(options.allowedOrigins),
      anyOrigin_(std::find(allowedOrigins_.begin(), allowedOrigins_.end(), "*") != allowedOrigins_.end()),
      token_(options.accessToken) {}

int HttpAccessPolicy::checkHost(const HttpRequest& request, AbstractLogger* logger) const {
  const std::string_view* host = request.findHeader("Host");
  if (checksHost_ && host != nullptr && !isAllowedHost(*host)) {
    NOX_LOG_WARNING(logger,
                    "HTTP request refused: the Host '" << *host << "' does not name this machine (DNS rebinding?).");
    return JsonHttpReply::forbidden;
  }
  return JsonHttpReply::ok;
}

int HttpAccessPolicy::check(const HttpRequest& request, bool changesState, AbstractLogger* logger) const {
  const int hostChecked = checkHost(request, logger);
  if (hostChecked != JsonHttpReply::ok) return hostChecked;
  const std::string_view* host = request.findHeader("Host");
  if (!token_.empty()) {
    const std::string_view* authorization = request.findHeader("Authorization");
    if (!carriesToken(authorization)) {
      NOX_LOG_WARNING(logger, "HTTP request refused: " << (authorization == nullptr ? "no" : "a wrong")
                                                       << " access token (Authorization: Bearer) was given.");
      return JsonHttpReply::unauthorized;
    }
  }
  const std::string_view* origin = request.findHeader("Origin");
  if (changesState && origin != nullptr && !isAllowedOrigin(*origin, host)) {
    NOX_LOG_WARNING(logger, "HTTP request refused: a page of the origin '" << *origin << "' may not " << request.method
                                                                           << " here (allowed origins only).");
    return JsonHttpReply::forbidden;
  }
  return JsonHttpReply::ok;
}

bool HttpAccessPolicy::isAllowedHost(std::string_view host) const {
  const std::string_view name = withoutPort(host);
  return !name.empty() && (equalsIgnoringCase(name, "localhost") || name == "127.0.0.1" || name == "[::1]" ||
                           name == std::string_view(bindAddress_));
}

bool HttpAccessPolicy::isAllowedOrigin(std::string_view origin, const std::string_view* host) const {
  constexpr std::string_view scheme = "http://";
  if (host != nullptr && origin.size() == scheme.size() + host->size() &&
      equalsIgnoringCase(origin.substr(0, scheme.size()), scheme) &&
      equalsIgnoringCase(origin.substr(scheme.size()), *host)) {
    return true;
  }
  return anyOrigin_ || std::any_of(allowedOrigins_.begin(), allowedOrigins_.end(),
                                   [origin](const String& allowed) { return equalsIgnoringCase(origin, allowed); });
}

bool HttpAccessPolicy::carriesToken(const std::string_view* authorization) const {
  constexpr std::string_view scheme = "Bearer ";
  if (authorization == nullptr || authorization->size() < scheme.size() ||
      !equalsIgnoringCase(authorization->substr(0, scheme.size()), scheme)) {
    return false;
  }
  std::string_view given = authorization->substr(scheme.size());
  while (!given.empty() && given.front() == ' ') given.remove_prefix(1);
  return equalsInConstantTime(given, token_);
}

}  // namespace nox::utils::debugger::impl
