#include <nox/utils/debugger/impl/JsonHttpReply.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/debugger/impl/HttpRequest.h>

#include <cstdio>

namespace nox::utils::debugger::impl {
namespace {

struct StatusLine {
  int code;
  const char* reason;
};

constexpr StatusLine statusLines[] = {
    {200, "OK"},
    {201, "Created"},
    {204, "No Content"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
};

const StatusLine& findStatusLine(int status) {
  constexpr int count = sizeof statusLines / sizeof statusLines[0];
  return statusLines[status >= 0 && status < count ? status : JsonHttpReply::internalServerError];
}

}  // namespace

JsonHttpReply::JsonHttpReply(AbstractHttpConnection& connection, AbstractLogger* logger)
    : connection_(connection), builder_(*this, false) {
  builder_.setLogger(logger);
}

JsonHttpReply::~JsonHttpReply() = default;

int JsonHttpReply::getStatusCode(int status) { return findStatusLine(status).code; }

const char* JsonHttpReply::getStatusReason(int status) { return findStatusLine(status).reason; }

void JsonHttpReply::clearBody() {
  body_.str(String());
  body_.clear();
}

bool JsonHttpReply::send(int status) {
  const String body = body_.str();
  char header[256];
  const int headerLength =
      std::snprintf(header, sizeof header,
                    "HTTP/1.1 %d %s\r\n"
                    "Content-Type: %s; charset=utf-8\r\n"
                    "Content-Length: %u\r\n"
                    "Connection: close\r\n"
                    "Access-Control-Allow-Origin: *\r\n"
                    "\r\n",
                    getStatusCode(status), getStatusReason(status),
                    body.empty() ? "application/text" : "application/json", static_cast<unsigned int>(body.size()));
  String message(header, static_cast<std::size_t>(headerLength));
  message += body;
  clearBody();
  return connection_.write(message.data(), message.size());
}

bool JsonHttpReply::write(const char* data, unsigned int size, AbstractLogger* logger) {
  body_.write(data, static_cast<std::streamsize>(size));
  if (!body_) {
    NOX_LOG_ERROR(logger, error::ioProblem, "Error writing to the underlying buffer.");
    return false;
  }
  return true;
}

bool JsonHttpReply::read(char*, unsigned int& size, AbstractLogger* logger) {
  size = 0;
  NOX_LOG_ERROR(logger, error::invalidOperation, "Not readable.");
  return false;
}

}  // namespace nox::utils::debugger::impl
