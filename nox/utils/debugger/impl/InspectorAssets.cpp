#include <nox/utils/debugger/impl/InspectorAssets.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/String.h>
#include <nox/utils/debugger/impl/HttpRequest.h>

#include <string>

namespace nox::utils::debugger::impl {
namespace {

constexpr std::string_view root = "/inspector";

// The page loads only its own files and speaks only to its own origin; nothing may
// frame it.
const char* const commonHeaders =
    "Cache-Control: no-cache\r\n"
    "Connection: close\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "Referrer-Policy: no-referrer\r\n"
    "Content-Security-Policy: default-src 'self'; img-src 'self' data:; object-src 'none'; base-uri 'none'; "
    "form-action 'none'; frame-ancestors 'none'\r\n";

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

struct Reply {
  const char* status;
  const char* contentType;
  const unsigned char* body;
  unsigned int size;
  // Header lines of this reply alone, each ending with "\r\n".
  const char* extraHeaders;
};

// Head and body in one write: apart, they would meet the delayed acknowledgement of
// small TCP segments.
void send(AbstractHttpConnection& connection, const Reply& reply, bool withBody) {
  String text;
  text.reserve(512 + (withBody ? reply.size : 0));
  text.append("HTTP/1.1 ").append(reply.status).append("\r\nContent-Type: ").append(reply.contentType);
  text.append("\r\nContent-Length: ").append(std::to_string(reply.size).c_str()).append("\r\n");
  text.append(commonHeaders).append(reply.extraHeaders).append("\r\n");
  if (withBody) text.append(reinterpret_cast<const char*>(reply.body), reply.size);
  connection.write(text.data(), text.size());
}

Reply textReply(const char* status, const char* text, const char* extraHeaders = "") {
  return Reply{status, "text/plain; charset=utf-8", reinterpret_cast<const unsigned char*>(text),
               static_cast<unsigned int>(std::char_traits<char>::length(text)), extraHeaders};
}

}  // namespace

bool isInspectorPath(std::string_view rawPath) {
  return rawPath.substr(0, root.size()) == root && (rawPath.size() == root.size() || rawPath[root.size()] == '/');
}

const EmbeddedFile* findInspectorFile(std::string_view rawPath) {
  if (!isInspectorPath(rawPath) || rawPath.size() == root.size()) return nullptr;
  std::string_view name = rawPath.substr(root.size() + 1);
  if (name.empty()) name = "index.html";
  for (unsigned int i = 0; i < inspectorFilesCount; ++i) {
    if (name == inspectorFiles[i].name) return &inspectorFiles[i];
  }
  return nullptr;
}

const char* getContentType(std::string_view name) {
  struct Type {
    std::string_view extension;
    const char* contentType;
  };
  static const Type types[] = {
      {".html", "text/html; charset=utf-8"},
      {".css", "text/css; charset=utf-8"},
      {".js", "text/javascript; charset=utf-8"},
      {".json", "application/json; charset=utf-8"},
      {".svg", "image/svg+xml"},
      {".png", "image/png"},
      {".ico", "image/x-icon"},
      {".txt", "text/plain; charset=utf-8"},
  };
  for (const Type& type : types) {
    if (endsWith(name, type.extension)) return type.contentType;
  }
  return "application/octet-stream";
}

void serveInspector(std::string_view method, std::string_view rawPath, AbstractHttpConnection& connection,
                    AbstractLogger* logger) {
  const bool head = method == "HEAD";
  if (method != "GET" && !head) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << method << "' is not allowed on the inspector's files.");
    send(connection, textReply("405 Method Not Allowed", "Method Not Allowed\n", "Allow: GET, HEAD\r\n"), true);
    return;
  }
  if (rawPath == root) {
    // Relative to "/inspector" the page's links would miss its folder.
    send(connection, textReply("301 Moved Permanently", "/inspector/\n", "Location: /inspector/\r\n"), !head);
    return;
  }
  const EmbeddedFile* file = findInspectorFile(rawPath);
  if (file == nullptr) {
    NOX_LOG_WARNING(logger, "HTTP request: '" << rawPath << "' is not a file of the inspector.");
    send(connection, textReply("404 Not Found", "Not Found\n"), !head);
    return;
  }
  send(connection, Reply{"200 OK", getContentType(file->name), file->bytes, file->size, ""}, !head);
}

}  // namespace nox::utils::debugger::impl
