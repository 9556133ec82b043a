// How InspectionFramework::startHttp(const HttpOptions&) serves the inspection API. The
// defaults are the safe ones: only this machine can connect, a browser page from
// elsewhere can neither reach the API through a rebound DNS name nor drive it
// cross-origin, and no client can hold the server with idle connections or huge bodies.
// A plain aggregate: set the fields that matter and keep the others.
//
//   HttpOptions options;
//   options.port = 9000;
//   options.accessToken = "s3cret";       // clients send "Authorization: Bearer s3cret"
//   inspection.startHttp(options);
//
// Every refused request is answered (400, 401 or 403) and logged as a warning with its
// reason; the access token itself is never logged.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <cstdint>

namespace nox::utils::debugger {

struct HttpOptions {
  // The IPv4 address to listen on. While it is a loopback address (127.x.x.x), a
  // request must name the server as localhost, 127.0.0.1 or [::1] in its Host header
  // (any port), or it is answered 403: a page whose DNS name was rebound to this
  // machine cannot reach the API. "0.0.0.0" listens on every interface.
  String bindAddress = "127.0.0.1";
  // 0 lets the system choose a free port; InspectionFramework::getHttpPort() tells which.
  unsigned short port = 0;
  // Worker threads: each serves one connection at a time, so this many idle or slow
  // connections can hold the server. Resource calls stay serialised by the framework.
  unsigned int threadCount = 32;
  // How long a read or write on a connection may wait before the request is dropped
  // (a body cut short by it is answered 400 and never executed).
  unsigned int requestTimeoutMilliseconds = 5000;
  // Larger request bodies are answered 400 without being read.
  std::uint64_t maxBodySize = 1024 * 1024;
  // Origins (such as "http://localhost:3000") whose pages may POST and DELETE; "*"
  // allows every origin. A POST or DELETE whose Origin header names another origin
  // than the server's own is answered 403. GETs are open to every origin.
  Vector<String> allowedOrigins;
  // When not empty, every request must carry "Authorization: Bearer <accessToken>",
  // or it is answered 401. The token is compared in constant time.
  String accessToken;
  // Serves the browser inspector, a page that shows and drives this host, at
  // /inspector/ (GET /inspector redirects there). Its files are compiled into the
  // library. They are open to every client that passes the Host check, token or not:
  // they hold nothing of the host, and a browser cannot send a token when it opens a
  // page. The page asks for the token and sends it with every call it makes.
  bool serveInspector = false;
};

}  // namespace nox::utils::debugger
