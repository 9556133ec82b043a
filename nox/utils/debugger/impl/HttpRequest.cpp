#include <nox/utils/debugger/impl/HttpRequest.h>

#include <limits>

namespace nox::utils::debugger::impl {
namespace {

char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool equalsIgnoringCase(std::string_view first, std::string_view second) {
  if (first.size() != second.size()) return false;
  for (std::size_t i = 0; i < first.size(); ++i) {
    if (lowerCase(first[i]) != lowerCase(second[i])) return false;
  }
  return true;
}

const std::string_view* HttpRequest::findHeader(std::string_view name) const {
  for (unsigned int i = 0; i < headerCount; ++i) {
    if (equalsIgnoringCase(headers[i].name, name)) return &headers[i].value;
  }
  return nullptr;
}

std::int64_t HttpRequest::getContentLength() const {
  const std::string_view* text = findHeader("Content-Length");
  if (text == nullptr || text->empty()) return -1;
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  std::int64_t length = 0;
  for (char digit : *text) {
    if (digit < '0' || digit > '9') return -1;
    // Beyond any body a server would take: kept at the largest value.
    length = length > (largest - 9) / 10 ? largest : length * 10 + (digit - '0');
  }
  return length;
}

bool HttpRequest::isChunked() const {
  const std::string_view* encoding = findHeader("Transfer-Encoding");
  return encoding != nullptr && equalsIgnoringCase(*encoding, "chunked");
}

AbstractHttpConnection::~AbstractHttpConnection() = default;

}  // namespace nox::utils::debugger::impl
