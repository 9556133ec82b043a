#include <nox/utils/debugger/impl/HTTPServer.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/Thread.h>
#include <nox/utils/Time.h>
#include <nox/utils/debugger/InspectionFramework.h>
#include <nox/utils/debugger/impl/EventFramework.h>
#include <nox/utils/debugger/impl/HttpRequest.h>
#include <nox/utils/debugger/impl/HttpRequestHandler.h>

#include <civetweb.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>

namespace nox::utils::debugger::impl {
namespace {

// A CivetWeb connection as the request handler sees it.
class CivetConnection final : public AbstractHttpConnection {
 public:
  explicit CivetConnection(mg_connection* connection)
      : connection_(connection), lengthKnown_(mg_get_request_info(connection)->content_length >= 0) {}

  // CivetWeb answers 0 at the end of the body, and 0 or below 0 when a read times out.
  // For a body of known length it gives fewer bytes than asked only when the client
  // closed or went quiet past the timeout: nothing more will come, and asking again
  // would wait out the timeout once more while other clients may be waiting.
  int readBody(char* buffer, std::size_t size) override {
    if (ended_) return -1;
    const int read = mg_read(connection_, buffer, size);
    ended_ = lengthKnown_ && read >= 0 && static_cast<std::size_t>(read) < size;
    return read;
  }
  bool write(const char* data, std::size_t size) override {
    return mg_write(connection_, data, size) == static_cast<int>(size);
  }

 private:
  mg_connection* connection_;
  const bool lengthKnown_;
  bool ended_ = false;
};

std::string_view orEmpty(const char* text) { return text != nullptr ? std::string_view(text) : std::string_view(); }

// CivetWeb's listening thread notices a stop request only between two polls of its
// sockets, and a poll lasts up to two seconds. A connection to the listening address
// ends the poll at once, so while the server stops, the knocker connects every few
// milliseconds.
class Knocker {
 public:
  Knocker(const String& address, unsigned short port)
      : address_(toSocketAddress(address, port)), thread_(&Knocker::run, this) {}
  ~Knocker() {
    done_ = true;
    thread_.join(nullptr);
  }

  Knocker(const Knocker&) = delete;
  Knocker& operator=(const Knocker&) = delete;

 private:
  static sockaddr_in toSocketAddress(const String& text, unsigned short port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    // Every interface includes loopback.
    if (inet_pton(AF_INET, text.c_str(), &address.sin_addr) != 1 || address.sin_addr.s_addr == INADDR_ANY) {
      address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }
    return address;
  }

  static void* run(void* self) {
    const Knocker& knocker = *static_cast<Knocker*>(self);
    while (!knocker.done_) {
      const int knock = socket(AF_INET, SOCK_STREAM, 0);
      if (knock >= 0) {
        connect(knock, reinterpret_cast<const sockaddr*>(&knocker.address_), sizeof knocker.address_);
        close(knock);
      }
      nox::utils::sleep(Time(0.005));
    }
    return nullptr;
  }

  const sockaddr_in address_;
  std::atomic<bool> done_{false};
  // Last: it starts running once the rest is ready.
  Thread thread_;
};

}  // namespace

HTTPServer::HTTPServer(InspectionFramework& framework) : framework_(framework) {}

HTTPServer::~HTTPServer() { shutdown(); }

bool HTTPServer::start(unsigned short port) {
  if (isRunningAlready()) return false;
  char portText[8];
  std::snprintf(portText, sizeof portText, "%u", static_cast<unsigned int>(port));
  // CivetWeb leaves the path encoded: it is decoded here with its length, so that an
  // encoded NUL is refused instead of cutting the path short.
  const char* options[] = {"enable_directory_listing", "false", "listening_ports", portText, "num_threads", "1",
                           "decode_url", "no", nullptr};
  if (!launch(options, port, NOX_NEW HttpRequestHandler(framework_))) return false;
  address_ = "127.0.0.1";
  port_ = port;
  NOX_LOG_INFO(&framework_.getLogger(), "Inspection HTTP server started on port " << port_);
  return true;
}

bool HTTPServer::start(const HttpOptions& settings) {
  if (isRunningAlready()) return false;
  AbstractLogger* logger = &framework_.getLogger();
  in_addr address{};
  if (inet_pton(AF_INET, settings.bindAddress.c_str(), &address) != 1) {
    NOX_LOG_ERROR(logger, error::invalidConfiguration,
                  "The inspection HTTP server cannot listen on '" << settings.bindAddress
                                                                 << "': it is not an IPv4 address.");
    return false;
  }
  if (settings.threadCount == 0) {
    NOX_LOG_ERROR(logger, error::invalidConfiguration, "The inspection HTTP server needs at least one worker thread.");
    return false;
  }
  char listening[64];
  std::snprintf(listening, sizeof listening, "%s:%u", settings.bindAddress.c_str(),
                static_cast<unsigned int>(settings.port));
  char threads[16];
  std::snprintf(threads, sizeof threads, "%u", settings.threadCount);
  char timeout[16];
  std::snprintf(timeout, sizeof timeout, "%u", settings.requestTimeoutMilliseconds);
  const char* options[] = {"enable_directory_listing", "false", "listening_ports", listening, "num_threads", threads,
                           "request_timeout_ms", timeout, "decode_url", "no", nullptr};
  if (!launch(options, settings.port, NOX_NEW HttpRequestHandler(framework_, settings))) return false;
  address_ = settings.bindAddress;
  mg_server_port bound{};
  port_ = mg_get_server_ports(context_, 1, &bound) == 1 ? static_cast<unsigned short>(bound.port) : settings.port;
  NOX_LOG_INFO(logger, "Inspection HTTP server started on port " << port_);
  NOX_LOG_INFO(logger, "Inspection HTTP server listening on " << settings.bindAddress << ":" << port_ << " with "
                                                              << settings.threadCount << " worker threads.");
  return true;
}

bool HTTPServer::isRunningAlready() const {
  if (!isStarted()) return false;
  NOX_LOG_ERROR(&framework_.getLogger(), error::invalidOperation,
                "The inspection HTTP server is already running on port " << port_);
  return true;
}

bool HTTPServer::launch(const char** options, unsigned short port, HttpRequestHandler* handler) {
  AbstractLogger* logger = &framework_.getLogger();
  handler_.reset(handler);
  mg_callbacks callbacks;
  std::memset(&callbacks, 0, sizeof callbacks);
  callbacks.begin_request = &HTTPServer::onBeginRequest;
  callbacks.log_message = &HTTPServer::onLogMessage;
  // Registered before the first request can arrive, so that none meets a missing engine.
  registerEventEngine();
  context_ = mg_start(&callbacks, this, options);
  if (context_ == nullptr) {
    unregisterEventEngine();
    NOX_LOG_ERROR(logger, error::ioProblem, "Unable to start the inspection HTTP server on port " << port);
    return false;
  }
  return true;
}

void HTTPServer::shutdown() {
  if (!isStarted()) return;
  {
    Knocker knocker(address_, port_);
    mg_stop(context_);
  }
  context_ = nullptr;
  NOX_LOG_INFO(&framework_.getLogger(), "Inspection HTTP server stopped.");
  unregisterEventEngine();
}

void HTTPServer::registerEventEngine() {
  events_.reset(NOX_NEW EventFramework(framework_.getImplementation()));
  // The path may be taken by a host's own engine (reported), which must stay.
  if (!framework_.registerEngine(*events_)) events_.reset();
}

void HTTPServer::unregisterEventEngine() {
  if (!events_) return;
  framework_.unregisterEngine(events_->getPath());
  events_.reset();
}

int HTTPServer::onBeginRequest(mg_connection* connection) {
  const mg_request_info& info = *mg_get_request_info(connection);
  HttpHeader headers[MG_MAX_HEADERS];
  const unsigned int count = static_cast<unsigned int>(info.num_headers);
  for (unsigned int i = 0; i < count; ++i) {
    headers[i] = HttpHeader{orEmpty(info.http_headers[i].name), orEmpty(info.http_headers[i].value)};
  }
  HttpRequest request;
  request.method = orEmpty(info.request_method);
  // Not decoded ("decode_url" is "no"), so that the handler decodes it with its length.
  request.rawPath = orEmpty(info.local_uri);
  request.query = orEmpty(info.query_string);
  request.headers = headers;
  request.headerCount = count;
  // CivetWeb keeps that many and drops the rest without a word.
  request.headersTruncated = count >= MG_MAX_HEADERS;
  CivetConnection link(connection);
  static_cast<HTTPServer*>(info.user_data)->handler_->handle(request, link);
  // The whole reply is written: the server must add nothing.
  return 1;
}

int HTTPServer::onLogMessage(const mg_connection* connection, const char* message) {
  const mg_context* context = connection != nullptr ? mg_get_context(connection) : nullptr;
  const HTTPServer* server = context != nullptr ? static_cast<const HTTPServer*>(mg_get_user_data(context)) : nullptr;
  if (server != nullptr) {
    NOX_LOG_WARNING(&server->framework_.getLogger(), message);
  } else if (Facilities::isSet()) {
    NOX_LOG_WARNING(&Facilities::instance().getLogger(),
                    "No set user data while receiving log message from mongoose: " << message);
  }
  // Handled: the server must not print it again.
  return 1;
}

}  // namespace nox::utils::debugger::impl
