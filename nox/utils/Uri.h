// A compact resource name: scheme, path segments, extension, query and fragment, each
// validated against a fixed character set, all kept in one contiguous byte buffer. The
// debugger names engines, entities and source locations with it. Its text form is
//
//     scheme:segment/segment.extension?query#fragment
//
// There is no authority part and no percent-encoding: "%" is refused everywhere.
//
// Buffer layout (the raw string): scheme, each path segment, extension, query and
// fragment, in that order, each followed by one zero byte. The empty URI is therefore
// five zero bytes (raw length 4): an empty scheme, one empty path segment, an empty
// extension, query and fragment. Segment, extension, query and fragment offsets point
// at the first byte of their component, so every getter returns a zero-terminated text
// inside the buffer, valid until the URI is next modified.
//
// Character sets (ASCII classification, whatever the process locale):
//   scheme     "+", "-", "." anywhere; otherwise a letter first, then letters and digits
//   segment    letters, digits, - . _ ~ ! $ & ' ( ) * + , ; = : @
//   extension  letters and digits
//   query      letters, digits, - . _ ~ ! $ & ' ( ) * + , ; = / ?
//   fragment   as the query
//
// Refusals: a component setter that meets a refused byte logs why on the given logger
// and returns false, leaving the URI exactly as it was. The setters that replace the
// whole URI (set(text), set(components)) clear it on refusal instead.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>

#include <cstdint>
#include <iosfwd>

namespace nox::utils {

class AbstractLogger;
class AbstractObjectBuilder;

class NOX_UTILS_API Uri {
 public:
  Uri();

  // Builds a URI from a constant text; a malformed text is an assertion failure and
  // gives the empty URI.
  static Uri create(const char* text);
  static Uri create(const char* scheme, const char* path, const char* extension, const char* query,
                    const char* fragment);

  void swap(Uri& other);
  // Back to the empty URI.
  void clear();
  bool empty() const;

  // Parses a whole text (see the file comment for the form). The first ":" after a
  // valid scheme ends the scheme; the first "#" starts the fragment, the first "?"
  // before it the query, and the first "." before those the extension, so a full stop
  // in an early segment ("a:b.d/c") starts the extension and the slash that follows is
  // refused. On refusal the URI is cleared.
  bool set(const char* text, AbstractLogger* logger);
  bool set(const char* text, unsigned int length, AbstractLogger* logger);

  // Replaces every component; on refusal the URI is cleared.
  bool set(const char* scheme, const char* path, const char* extension, const char* query, const char* fragment,
           AbstractLogger* logger);
  bool set(const char* scheme, unsigned int schemeLength, const char* path, unsigned int pathLength,
           const char* extension, unsigned int extensionLength, const char* query, unsigned int queryLength,
           const char* fragment, unsigned int fragmentLength, AbstractLogger* logger);

  // Component setters. The (pointer, length) forms take bytes that need not be
  // zero-terminated; a null pointer is an assertion failure, except with a length of 0,
  // which stands for the empty component.
  bool setScheme(const char* scheme, AbstractLogger* logger);
  bool setScheme(const char* scheme, unsigned int length, AbstractLogger* logger);
  // `path` holds the segments separated by "/"; "" is one empty segment, "a/" the
  // segments "a" and "".
  bool setPath(const char* path, AbstractLogger* logger);
  bool setPath(const char* path, unsigned int length, AbstractLogger* logger);
  // `count` segments of the given lengths (no count at all is the empty path); null
  // arrays are the assertion "No given user data".
  bool setPathSegments(const char* const* segments, const unsigned int* lengths, unsigned int count,
                       AbstractLogger* logger);
  bool setExtension(const char* extension, AbstractLogger* logger);
  bool setExtension(const char* extension, unsigned int length, AbstractLogger* logger);
  bool setQuery(const char* query, AbstractLogger* logger);
  bool setQuery(const char* query, unsigned int length, AbstractLogger* logger);
  bool setFragment(const char* fragment, AbstractLogger* logger);
  bool setFragment(const char* fragment, unsigned int length, AbstractLogger* logger);

  bool hasScheme() const { return segments_.front() > 1; }
  // Decided on the first segment alone: "/a" (a leading empty segment) has no path,
  // although it still prints its segments.
  bool hasPath() const { return raw_[segments_.front()] != '\0'; }
  bool hasExtension() const { return raw_[extension_] != '\0'; }
  bool hasQuery() const { return raw_[query_] != '\0'; }
  bool hasFragment() const { return raw_[fragment_] != '\0'; }

  const char* getScheme() const { return raw_.data(); }
  unsigned int countPathSegments() const { return static_cast<unsigned int>(segments_.size()); }
  // An index out of range is an assertion failure and gives "".
  const char* getPathSegment(unsigned int index) const;
  const char* getExtension() const { return raw_.data() + extension_; }
  const char* getQuery() const { return raw_.data() + query_; }
  const char* getFragment() const { return raw_.data() + fragment_; }

  // The buffer described in the file comment; its length excludes the final zero.
  const char* getRawString() const { return raw_.data(); }
  unsigned int getRawStringLength() const { return static_cast<unsigned int>(raw_.size() - 1); }

  // Locates the first "/"-separated segment of a path text: leading slashes are
  // skipped, `begin` is the segment's first byte and `end` one past its last (the next
  // "/" or `length`). Returns false when there is no non-empty segment, with `begin`
  // and `end` both at the end of the text. The remainder of the path starts at `end`.
  static bool retrieveFirstPathSegment(const char* text, unsigned int length, unsigned int& begin, unsigned int& end);

  // Hands a query's content to `builder` as one whole build: begin, one object, end.
  //
  //   query := "" | pair ("&" pair)*
  //   pair  := "" | name | name "=" value
  //
  // A name is one or more bytes other than "&" and "=", a value any bytes other than
  // "&" (it may hold "="). Each pair becomes objectChild(name) and a value:
  //   - no "=": boolean true ("verbose");
  //   - "true" / "false": a boolean;
  //   - a decimal integer ([+-]digits) that fits in 64 bits: an integer; one that does
  //     not fit reads as a real;
  //   - a decimal real ([+-], digits with a "." and/or an exponent, such as 1.5, -.5,
  //     2., 1e3): a real; one beyond the range of double stays a string;
  //   - anything else, the empty value included: a string, byte for byte.
  // Empty pairs ("a&&b", a leading or trailing "&") are skipped; the empty query is
  // the empty object. An empty name before "=" ("=1") makes the query malformed: it is
  // reported on the builder's logger and no event is emitted. Bytes are taken as they
  // stand (no percent-decoding). Returns false when the query is malformed or the
  // builder refuses an event; what a refusing builder already received stays there.
  static bool parseQuery(const char* text, unsigned int length, AbstractObjectBuilder& builder);

  // Text form: computeString(buffer) writes computeStringLength() characters and a
  // terminating zero. The allocating form returns a buffer from the library allocator,
  // to be freed with NOX_DEALLOCATE.
  unsigned int computeStringLength() const;
  void computeString(char* buffer) const;
  char* computeString() const;
  // The path alone: the segments joined by "/", without the extension.
  unsigned int computePathStringLength() const;
  void computePathString(char* buffer) const;

  // Raw buffers compared byte for byte; the order is lexicographic over unsigned bytes.
  bool operator==(const Uri& other) const;
  bool operator!=(const Uri& other) const { return !(*this == other); }
  bool operator<(const Uri& other) const;

  friend NOX_UTILS_API std::ostream& operator<<(std::ostream& out, const Uri& uri);

 private:
  // Replaces the raw bytes [begin, end) and moves every offset that lies beyond `end`.
  void splice(std::uint32_t begin, std::uint32_t end, const char* bytes, std::uint32_t length);
  // Replaces the path region by `bytes`: segments already separated by zero bytes.
  void replacePath(const char* bytes, std::uint32_t length);
  // Calls `write(pointer, length)` for each piece of the text form, in order.
  template <class Write>
  void forEachTextPiece(Write write) const;

  Vector<char> raw_;
  Vector<std::uint32_t> segments_;
  std::uint32_t extension_;
  std::uint32_t query_;
  std::uint32_t fragment_;
};

inline void swap(Uri& first, Uri& second) { first.swap(second); }

NOX_UTILS_API std::ostream& operator<<(std::ostream& out, const Uri& uri);

}  // namespace nox::utils
