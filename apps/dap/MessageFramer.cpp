#include "MessageFramer.h"

#include <nox/utils/Decimal.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace nox::dap {

using nox::utils::String;

namespace {

constexpr std::string_view headerEnd = "\r\n\r\n";
constexpr std::string_view lengthField = "Content-Length";

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return (x | 0x20) == (y | 0x20); });
}

// Reads the Content-Length of a header block; false with `problem` set otherwise.
bool parseContentLength(std::string_view header, std::size_t& length, String& problem) {
  bool found = false;
  while (!header.empty()) {
    const std::size_t lineEnd = std::min(header.find("\r\n"), header.size());
    const std::string_view line = header.substr(0, lineEnd);
    header.remove_prefix(std::min(lineEnd + 2, header.size()));
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || !equalsIgnoringCase(line.substr(0, colon), lengthField)) continue;
    std::string_view value = line.substr(colon + 1);
    while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
    while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) value.remove_suffix(1);
    if (found || value.size() > 12 || !nox::utils::parseDecimal(value, length)) {
      problem = "bad Content-Length '";
      // Shown to the peer: printable and short, whatever it sent.
      for (char c : value.substr(0, 24)) problem += c >= ' ' && c <= '~' ? c : '?';
      problem += found ? "' (given twice)" : "'";
      return false;
    }
    found = true;
  }
  if (!found) problem = "header without Content-Length";
  return found;
}

}  // namespace

void MessageFramer::append(const char* data, std::size_t size) {
  if (toSkip_ > 0) {
    const std::size_t skipped = std::min(toSkip_, size);
    toSkip_ -= skipped;
    data += skipped;
    size -= skipped;
  }
  compact();
  buffer_.insert(buffer_.end(), data, data + size);
}

MessageFramer::Result MessageFramer::next(String& body, String& problem) {
  if (!inBody_) {
    const Result header = readHeader(problem);
    if (header != Result::message) return header;
  }
  if (getBufferedSize() < bodyLength_) return Result::incomplete;
  body.assign(buffer_.data() + start_, bodyLength_);
  start_ += bodyLength_;
  inBody_ = false;
  return Result::message;
}

// Result::message here means "a valid header was read, the body may follow".
MessageFramer::Result MessageFramer::readHeader(String& problem) {
  if (lost_) {
    resynchronize();
    if (lost_) return Result::incomplete;
  }
  const std::string_view pending(buffer_.data() + start_, getBufferedSize());
  const std::size_t end = pending.find(headerEnd);
  if (end == std::string_view::npos) {
    if (pending.size() <= maximumHeaderSize) return Result::incomplete;
    problem = "header longer than 4096 bytes";
    start_ = buffer_.size();
    lost_ = true;
    return Result::badHeader;
  }
  start_ += end + headerEnd.size();
  std::size_t length = 0;
  if (!parseContentLength(pending.substr(0, end), length, problem)) {
    lost_ = true;
    return Result::badHeader;
  }
  if (length > maximumBodySize) {
    problem = "Content-Length " + String(std::to_string(length).c_str()) + " is over the limit of 16 MiB";
    const std::size_t here = std::min(length, getBufferedSize());
    start_ += here;
    toSkip_ = length - here;
    return Result::badHeader;
  }
  bodyLength_ = length;
  inBody_ = true;
  return Result::message;
}

void MessageFramer::resynchronize() {
  const std::string_view pending(buffer_.data() + start_, getBufferedSize());
  const std::size_t field = pending.find(lengthField);
  if (field == std::string_view::npos) {
    // Keep a tail that may be the start of the field name.
    const std::size_t keep = std::min(pending.size(), lengthField.size() - 1);
    start_ += pending.size() - keep;
    return;
  }
  start_ += field;
  lost_ = false;
}

void MessageFramer::compact() {
  if (start_ == 0) return;
  buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
  start_ = 0;
}

String MessageFramer::frame(const char* body, std::size_t size) {
  String framed = "Content-Length: ";
  framed += std::to_string(size).c_str();
  framed += "\r\n\r\n";
  framed.append(body, size);
  return framed;
}

}  // namespace nox::dap
