#include <nox/utils/Uri.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/AssertingLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/String.h>
#include <nox/utils/details/TextLength.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <ostream>
#include <string_view>
#include <utility>

namespace nox::utils {
namespace {

// ASCII on purpose: the character sets must not change with the process locale.
bool isAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isAlphanumeric(char c) { return isAlpha(c) || isDigit(c); }
bool isOneOf(char c, const char* marks) { return c != '\0' && std::strchr(marks, c) != nullptr; }

bool isSchemeByte(char c, unsigned int index) {
  return isOneOf(c, "+-.") || (index == 0 ? isAlpha(c) : isAlphanumeric(c));
}
bool isSegmentByte(char c, unsigned int) { return isAlphanumeric(c) || isOneOf(c, "-._~!$&'()*+,;=:@"); }
bool isExtensionByte(char c, unsigned int) { return isAlphanumeric(c); }
// The fragment shares this set.
bool isQueryByte(char c, unsigned int) { return isAlphanumeric(c) || isOneOf(c, "-._~!$&'()*+,;=/?"); }

using BytePredicate = bool (*)(char, unsigned int);

unsigned int findRefused(const char* text, unsigned int length, BytePredicate accepts) {
  unsigned int index = 0;
  while (index < length && accepts(text[index], index)) ++index;
  return index;
}

// Logs `message` followed by the first refused byte, if any.
bool acceptsAll(const char* text, unsigned int length, BytePredicate accepts, const char* message,
                AbstractLogger* logger) {
  unsigned int refused = findRefused(text, length, accepts);
  if (refused == length) return true;
  NOX_LOG_ERROR(logger, error::invalidArgument, message << text[refused]);
  return false;
}

bool isGiven(const char* text, const char* message) {
  if (text != nullptr) return true;
  NOX_FAIL(message);
  return false;
}

// A null pointer is allowed as the empty component.
bool isGiven(const char* text, unsigned int length, const char* message) {
  return length == 0 || isGiven(text, message);
}

unsigned int find(const char* text, unsigned int begin, unsigned int end, char c) {
  while (begin < end && text[begin] != c) ++begin;
  return begin;
}

unsigned int countDigits(const char* text, unsigned int begin, unsigned int end) {
  unsigned int index = begin;
  while (index < end && isDigit(text[index])) ++index;
  return index - begin;
}

// from_chars knows no leading "+"; the grammars below only allow one before a digit or "."
const char* skipPlus(const char* text, unsigned int length) { return length > 0 && text[0] == '+' ? text + 1 : text; }

unsigned int signLength(const char* text, unsigned int length) {
  return length > 0 && (text[0] == '+' || text[0] == '-') ? 1 : 0;
}

// [+-]digits that fits in 64 bits.
bool readInteger(const char* text, unsigned int length, std::int64_t& value) {
  unsigned int sign = signLength(text, length);
  if (length == sign || sign + countDigits(text, sign, length) != length) return false;
  std::from_chars_result result = std::from_chars(skipPlus(text, length), text + length, value);
  return result.ec == std::errc() && result.ptr == text + length;
}

// [+-] mantissa (digits, "." or both, with at least one digit) and an optional exponent.
bool readReal(const char* text, unsigned int length, double& value) {
  unsigned int index = signLength(text, length);
  unsigned int mantissaDigits = countDigits(text, index, length);
  index += mantissaDigits;
  if (index < length && text[index] == '.') {
    unsigned int fraction = countDigits(text, index + 1, length);
    mantissaDigits += fraction;
    index += 1 + fraction;
  }
  if (mantissaDigits == 0) return false;
  if (index < length && (text[index] == 'e' || text[index] == 'E')) {
    ++index;
    index += signLength(text + index, length - index);
    unsigned int exponentDigits = countDigits(text, index, length);
    if (exponentDigits == 0) return false;
    index += exponentDigits;
  }
  if (index != length) return false;
  std::from_chars_result result = std::from_chars(skipPlus(text, length), text + length, value);
  return result.ec == std::errc() && result.ptr == text + length;
}

bool equals(const char* text, unsigned int length, const char* word) {
  return length == std::strlen(word) && std::memcmp(text, word, length) == 0;
}

bool emitQueryValue(const char* value, unsigned int length, bool hasValue, AbstractObjectBuilder& builder) {
  if (!hasValue || equals(value, length, "true")) return builder.boolean(true);
  if (equals(value, length, "false")) return builder.boolean(false);
  std::int64_t integer;
  if (readInteger(value, length, integer)) return builder.integer(integer);
  double real;
  if (readReal(value, length, real)) return builder.real(real);
  return builder.string(value, length);
}

// Calls visit(name, nameLength, value, valueLength, hasValue) for every non-empty pair,
// stopping at the first false.
template <class Visit>
bool forEachQueryPair(const char* text, unsigned int length, Visit visit) {
  unsigned int begin = 0;
  while (begin < length) {
    unsigned int end = find(text, begin, length, '&');
    if (end > begin) {
      unsigned int equal = find(text, begin, end, '=');
      bool hasValue = equal < end;
      unsigned int valueBegin = hasValue ? equal + 1 : end;
      if (!visit(text + begin, equal - begin, text + valueBegin, end - valueBegin, hasValue)) return false;
    }
    begin = end + 1;
  }
  return true;
}

bool isWellFormedQuery(const char* text, unsigned int length, AbstractLogger* logger) {
  return forEachQueryPair(text, length, [&](const char*, unsigned int nameLength, const char*, unsigned int, bool) {
    if (nameLength > 0) return true;
    NOX_LOG_ERROR(logger, error::invalidArgument,
                  "Invalid query '" << std::string_view(text, length) << "': a parameter has a value but no name.");
    return false;
  });
}

}  // namespace

Uri::Uri() : raw_(5, '\0'), segments_(1, 1), extension_(2), query_(3), fragment_(4) {}

Uri Uri::create(const char* text) {
  AssertingLogger logger;
  Uri uri;
  uri.set(text, &logger);
  return uri;
}

Uri Uri::create(const char* scheme, const char* path, const char* extension, const char* query, const char* fragment) {
  AssertingLogger logger;
  Uri uri;
  uri.set(scheme, path, extension, query, fragment, &logger);
  return uri;
}

void Uri::swap(Uri& other) {
  raw_.swap(other.raw_);
  segments_.swap(other.segments_);
  std::swap(extension_, other.extension_);
  std::swap(query_, other.query_);
  std::swap(fragment_, other.fragment_);
}

void Uri::clear() {
  Uri empty;
  swap(empty);
}

bool Uri::empty() const { return raw_.size() == 5; }

bool Uri::set(const char* text, AbstractLogger* logger) {
  if (!isGiven(text, "NULL string given")) {
    clear();
    return false;
  }
  return set(text, details::textLength(text), logger);
}

bool Uri::set(const char* text, unsigned int length, AbstractLogger* logger) {
  if (!isGiven(text, length, "NULL string given")) {
    clear();
    return false;
  }
  unsigned int schemeEnd = findRefused(text, length, isSchemeByte);
  bool hasScheme = schemeEnd > 0 && schemeEnd < length && text[schemeEnd] == ':';
  unsigned int rest = hasScheme ? schemeEnd + 1 : 0;
  unsigned int hash = find(text, rest, length, '#');
  unsigned int question = find(text, rest, hash, '?');
  unsigned int dot = find(text, rest, question, '.');
  // Each component starts one byte after its separator; an absent one is empty.
  auto after = [](unsigned int separator, unsigned int end) { return separator < end ? separator + 1 : end; };
  unsigned int extension = after(dot, question);
  unsigned int query = after(question, hash);
  unsigned int fragment = after(hash, length);
  return set(text, hasScheme ? schemeEnd : 0, text + rest, dot - rest, text + extension, question - extension,
             text + query, hash - query, text + fragment, length - fragment, logger);
}

bool Uri::set(const char* scheme, const char* path, const char* extension, const char* query, const char* fragment,
              AbstractLogger* logger) {
  if (!isGiven(scheme, "NULL scheme given") || !isGiven(path, "NULL path given") ||
      !isGiven(extension, "NULL extension given") || !isGiven(query, "NULL query given") ||
      !isGiven(fragment, "NULL fragment given")) {
    clear();
    return false;
  }
  return set(scheme, details::textLength(scheme), path, details::textLength(path), extension,
             details::textLength(extension), query, details::textLength(query), fragment, details::textLength(fragment),
             logger);
}

bool Uri::set(const char* scheme, unsigned int schemeLength, const char* path, unsigned int pathLength,
              const char* extension, unsigned int extensionLength, const char* query, unsigned int queryLength,
              const char* fragment, unsigned int fragmentLength, AbstractLogger* logger) {
  // Built aside, so that components pointing into this URI stay readable throughout.
  Uri built;
  bool accepted = built.setScheme(scheme, schemeLength, logger) && built.setPath(path, pathLength, logger) &&
                  built.setExtension(extension, extensionLength, logger) &&
                  built.setQuery(query, queryLength, logger) && built.setFragment(fragment, fragmentLength, logger);
  if (!accepted) built.clear();
  swap(built);
  return accepted;
}

bool Uri::setScheme(const char* scheme, AbstractLogger* logger) {
  return isGiven(scheme, "NULL scheme given") && setScheme(scheme, details::textLength(scheme), logger);
}

bool Uri::setScheme(const char* scheme, unsigned int length, AbstractLogger* logger) {
  if (!isGiven(scheme, length, "NULL scheme given") ||
      !acceptsAll(scheme, length, isSchemeByte, "Unexpected character in the scheme definition: '", logger)) {
    return false;
  }
  splice(0, segments_.front() - 1, scheme, length);
  return true;
}

bool Uri::setPath(const char* path, AbstractLogger* logger) {
  return isGiven(path, "NULL path given") && setPath(path, details::textLength(path), logger);
}

bool Uri::setPath(const char* path, unsigned int length, AbstractLogger* logger) {
  if (!isGiven(path, length, "NULL path given")) return false;
  String segments(path, length);
  unsigned int ordinal = 0;
  for (unsigned int begin = 0; begin <= length; ++ordinal) {
    unsigned int end = find(path, begin, length, '/');
    unsigned int refused = begin + findRefused(path + begin, end - begin, isSegmentByte);
    if (refused < end) {
      NOX_LOG_ERROR(logger, error::invalidArgument,
                    "Unexpected character in the path segment definition: '" << path[refused] << "' in the " << ordinal
                                                                             << "th path segment.");
      return false;
    }
    if (end < length) segments[end] = '\0';
    begin = end + 1;
  }
  replacePath(segments.data(), length);
  return true;
}

bool Uri::setPathSegments(const char* const* segments, const unsigned int* lengths, unsigned int count,
                          AbstractLogger* logger) {
  if (count > 0 && (segments == nullptr || lengths == nullptr)) {
    NOX_FAIL("No given user data");
    return false;
  }
  String joined;
  for (unsigned int ordinal = 0; ordinal < count; ++ordinal) {
    const char* segment = segments[ordinal];
    unsigned int length = lengths[ordinal];
    if (!isGiven(segment, length, "NULL path given")) return false;
    unsigned int refused = findRefused(segment, length, isSegmentByte);
    if (refused < length) {
      NOX_LOG_ERROR(logger, error::invalidArgument,
                    "Unexpected character in the path segment definition: '" << segment[refused] << "' in the "
                                                                             << ordinal << "th path segment.");
      return false;
    }
    if (ordinal > 0) joined.push_back('\0');
    joined.append(segment, length);
  }
  replacePath(joined.data(), static_cast<std::uint32_t>(joined.size()));
  return true;
}

bool Uri::setExtension(const char* extension, AbstractLogger* logger) {
  return isGiven(extension, "NULL extension given") && setExtension(extension, details::textLength(extension), logger);
}

bool Uri::setExtension(const char* extension, unsigned int length, AbstractLogger* logger) {
  if (!isGiven(extension, length, "NULL extension given") ||
      !acceptsAll(extension, length, isExtensionByte, "Unexpected character in the extension definition: '", logger)) {
    return false;
  }
  splice(extension_, query_ - 1, extension, length);
  return true;
}

bool Uri::setQuery(const char* query, AbstractLogger* logger) {
  return isGiven(query, "NULL query given") && setQuery(query, details::textLength(query), logger);
}

bool Uri::setQuery(const char* query, unsigned int length, AbstractLogger* logger) {
  if (!isGiven(query, length, "NULL query given") ||
      !acceptsAll(query, length, isQueryByte, "Unexpected character in the query definition: '", logger)) {
    return false;
  }
  splice(query_, fragment_ - 1, query, length);
  return true;
}

bool Uri::setFragment(const char* fragment, AbstractLogger* logger) {
  return isGiven(fragment, "NULL fragment given") && setFragment(fragment, details::textLength(fragment), logger);
}

bool Uri::setFragment(const char* fragment, unsigned int length, AbstractLogger* logger) {
  if (!isGiven(fragment, length, "NULL fragment given") ||
      !acceptsAll(fragment, length, isQueryByte, "Unexpected character in the fragment definition: '", logger)) {
    return false;
  }
  splice(fragment_, static_cast<std::uint32_t>(raw_.size() - 1), fragment, length);
  return true;
}

const char* Uri::getPathSegment(unsigned int index) const {
  if (index >= segments_.size()) {
    NOX_FAIL("Invalid path segment index " << index);
    return "";
  }
  return raw_.data() + segments_[index];
}

bool Uri::retrieveFirstPathSegment(const char* text, unsigned int length, unsigned int& begin, unsigned int& end) {
  begin = end = 0;
  if (!isGiven(text, length, "NULL string given")) return false;
  while (begin < length && text[begin] == '/') ++begin;
  end = find(text, begin, length, '/');
  return begin < end;
}

bool Uri::parseQuery(const char* text, unsigned int length, AbstractObjectBuilder& builder) {
  if (!isGiven(text, length, "NULL string given") || !isWellFormedQuery(text, length, builder.getLogger()) ||
      !builder.begin() || !builder.beginObject()) {
    return false;
  }
  bool accepted = forEachQueryPair(
      text, length,
      [&](const char* name, unsigned int nameLength, const char* value, unsigned int valueLength, bool hasValue) {
        return builder.objectChild(name, nameLength) && emitQueryValue(value, valueLength, hasValue, builder);
      });
  return accepted && builder.endObject() && builder.end();
}

template <class Write>
void Uri::forEachTextPiece(Write write) const {
  const char* raw = raw_.data();
  write(raw, segments_.front() - 1);
  if (hasScheme()) write(":", 1);
  for (std::size_t index = 0; index < segments_.size(); ++index) {
    std::uint32_t next = index + 1 < segments_.size() ? segments_[index + 1] : extension_;
    if (index > 0) write("/", 1);
    write(raw + segments_[index], next - 1 - segments_[index]);
  }
  if (hasExtension()) {
    write(".", 1);
    write(raw + extension_, query_ - 1 - extension_);
  }
  if (hasQuery()) {
    write("?", 1);
    write(raw + query_, fragment_ - 1 - query_);
  }
  if (hasFragment()) {
    write("#", 1);
    write(raw + fragment_, raw_.size() - 1 - fragment_);
  }
}

unsigned int Uri::computeStringLength() const {
  // Every zero byte but the last is a separator, written only when the component it
  // introduces is present (always between segments).
  return getRawStringLength() - 4 + hasScheme() + hasExtension() + hasQuery() + hasFragment();
}

void Uri::computeString(char* buffer) const {
  if (buffer == nullptr) {
    NOX_FAIL("NULL string given");
    return;
  }
  forEachTextPiece([&buffer](const char* piece, std::size_t length) {
    std::memcpy(buffer, piece, length);
    buffer += length;
  });
  *buffer = '\0';
}

char* Uri::computeString() const {
  char* text = static_cast<char*>(NOX_ALLOCATE(computeStringLength() + 1));
  computeString(text);
  return text;
}

unsigned int Uri::computePathStringLength() const { return extension_ - segments_.front() - 1; }

void Uri::computePathString(char* buffer) const {
  if (buffer == nullptr) {
    NOX_FAIL("NULL string given");
    return;
  }
  // The segments and the zero bytes between them, which become slashes.
  unsigned int length = computePathStringLength();
  std::memcpy(buffer, raw_.data() + segments_.front(), length);
  for (std::size_t index = 1; index < segments_.size(); ++index) buffer[segments_[index] - segments_.front() - 1] = '/';
  buffer[length] = '\0';
}

bool Uri::operator==(const Uri& other) const { return raw_ == other.raw_; }

bool Uri::operator<(const Uri& other) const {
  std::size_t common = std::min(raw_.size(), other.raw_.size());
  int order = std::memcmp(raw_.data(), other.raw_.data(), common);
  return order < 0 || (order == 0 && raw_.size() < other.raw_.size());
}

void Uri::splice(std::uint32_t begin, std::uint32_t end, const char* bytes, std::uint32_t length) {
  Vector<char> raw;
  raw.reserve(raw_.size() - (end - begin) + length);
  raw.insert(raw.end(), raw_.begin(), raw_.begin() + begin);
  raw.insert(raw.end(), bytes, bytes + length);
  raw.insert(raw.end(), raw_.begin() + end, raw_.end());
  raw_.swap(raw);
  auto move = [&](std::uint32_t& offset) {
    if (offset > end) offset = offset - end + begin + length;
  };
  for (std::uint32_t& segment : segments_) move(segment);
  move(extension_);
  move(query_);
  move(fragment_);
}

void Uri::replacePath(const char* bytes, std::uint32_t length) {
  std::uint32_t begin = segments_.front();
  splice(begin, extension_ - 1, bytes, length);
  segments_.assign(1, begin);
  for (std::uint32_t index = begin; index + 1 < extension_; ++index) {
    if (raw_[index] == '\0') segments_.push_back(index + 1);
  }
}

std::ostream& operator<<(std::ostream& out, const Uri& uri) {
  uri.forEachTextPiece(
      [&out](const char* piece, std::size_t length) { out.write(piece, static_cast<std::streamsize>(length)); });
  return out;
}

}  // namespace nox::utils
