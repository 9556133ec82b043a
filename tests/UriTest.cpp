#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/Uri.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "support/AssertionRecorder.h"
#include "support/RecordingBuilder.h"

using nox::utils::AbstractObjectBuilder;
using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::DynamicObjectBuilder;
using nox::utils::Uri;
using ::testing::ElementsAre;

namespace {

std::string textOf(const Uri& uri) {
  std::ostringstream out;
  out << uri;
  std::string text = out.str();
  std::vector<char> buffer(uri.computeStringLength() + 1, 'x');
  uri.computeString(buffer.data());
  EXPECT_EQ(text, std::string(buffer.data()));
  EXPECT_EQ(text.size(), uri.computeStringLength());
  return text;
}

std::string rawOf(const Uri& uri) { return std::string(uri.getRawString(), uri.getRawStringLength() + 1); }

std::string onlyError(const BufferLogger& logger) {
  EXPECT_EQ(logger.getEntries().size(), 1u);
  return logger.getEntries().empty() ? "" : logger.getEntries().back().message.c_str();
}

std::vector<std::string> queryEvents(const std::string& query) {
  nox::test::RecordingBuilder builder;
  EXPECT_TRUE(Uri::parseQuery(query.data(), static_cast<unsigned int>(query.size()), builder)) << query;
  return builder.events;
}

}  // namespace

TEST(Uri, EmptyUriIsFiveZeroBytes) {
  Uri uri;
  EXPECT_TRUE(uri.empty());
  EXPECT_EQ(uri.getRawStringLength(), 4u);
  EXPECT_EQ(rawOf(uri), std::string(5, '\0'));
  EXPECT_EQ(textOf(uri), "");
  EXPECT_FALSE(uri.hasScheme() || uri.hasPath() || uri.hasExtension() || uri.hasQuery() || uri.hasFragment());
  EXPECT_EQ(uri.countPathSegments(), 1u);
}

TEST(Uri, ParsesEveryComponentAndPrintsItBack) {
  Uri uri;
  ASSERT_TRUE(uri.set("a:b/c.txt?x=1#top", nullptr));
  EXPECT_STREQ(uri.getScheme(), "a");
  ASSERT_EQ(uri.countPathSegments(), 2u);
  EXPECT_STREQ(uri.getPathSegment(0), "b");
  EXPECT_STREQ(uri.getPathSegment(1), "c");
  EXPECT_STREQ(uri.getExtension(), "txt");
  EXPECT_STREQ(uri.getQuery(), "x=1");
  EXPECT_STREQ(uri.getFragment(), "top");
  EXPECT_EQ(rawOf(uri), std::string("a\0b\0c\0txt\0x=1\0top\0", 18));
  EXPECT_EQ(textOf(uri), "a:b/c.txt?x=1#top");
  EXPECT_EQ(uri.computePathStringLength(), 3u);
  char path[8];
  uri.computePathString(path);
  EXPECT_STREQ(path, "b/c");
  char* text = uri.computeString();
  EXPECT_STREQ(text, "a:b/c.txt?x=1#top");
  NOX_DEALLOCATE(text);

  ASSERT_TRUE(uri.set("nox:simulation", nullptr));
  EXPECT_STREQ(uri.getScheme(), "nox");
  EXPECT_EQ(uri.countPathSegments(), 1u);
  EXPECT_EQ(textOf(uri), "nox:simulation");

  // Without a colon after a valid scheme everything is path, extension, query, fragment.
  for (const char* text : {"b/c?q#f", "1a:b", "a"}) {
    ASSERT_TRUE(uri.set(text, nullptr)) << text;
    EXPECT_FALSE(uri.hasScheme()) << text;
    EXPECT_EQ(textOf(uri), text);
  }
  ASSERT_TRUE(uri.set("x?#", nullptr));
  EXPECT_EQ(textOf(uri), "x");
  ASSERT_TRUE(uri.set("/a/", nullptr));
  EXPECT_EQ(uri.countPathSegments(), 3u);
  EXPECT_FALSE(uri.hasPath());  // decided on the leading, empty segment
  EXPECT_EQ(textOf(uri), "/a/");
}

TEST(Uri, EarlyFullStopStartsTheExtensionAndRefusesTheSlash) {
  Uri uri = Uri::create("keep:me");
  BufferLogger logger(true, true, true);
  EXPECT_FALSE(uri.set("a:b.d/c", &logger));
  EXPECT_TRUE(uri.empty());
  EXPECT_EQ(onlyError(logger), "Unexpected character in the extension definition: '/");
  EXPECT_EQ(logger.getEntries()[0].error, nox::utils::error::invalidArgument);
}

// Every byte against every component's set, with the message of each refusal.
TEST(Uri, CharacterSetsRowByRow) {
  const std::string alnum = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  struct Row {
    const char* message;
    const char* suffix;
    std::string accepted;
    bool (*set)(Uri&, const char*, BufferLogger&);
  };
  const Row rows[] = {
      {"Unexpected character in the scheme definition: '", "", alnum + "+-.",
       [](Uri& u, const char* b, BufferLogger& l) {
         return u.setScheme(std::string("a").append(b, 1).c_str(), 2, &l);
       }},
      {"Unexpected character in the path segment definition: '", "' in the 1th path segment.",
       alnum + "-._~!$&'()*+,;=:@",
       [](Uri& u, const char* b, BufferLogger& l) {
         const char* segments[] = {"ok", b};
         const unsigned int lengths[] = {2, 1};
         return u.setPathSegments(segments, lengths, 2, &l);
       }},
      {"Unexpected character in the extension definition: '", "", alnum,
       [](Uri& u, const char* b, BufferLogger& l) { return u.setExtension(b, 1, &l); }},
      {"Unexpected character in the query definition: '", "", alnum + "-._~!$&'()*+,;=/?",
       [](Uri& u, const char* b, BufferLogger& l) { return u.setQuery(b, 1, &l); }},
      {"Unexpected character in the fragment definition: '", "", alnum + "-._~!$&'()*+,;=/?",
       [](Uri& u, const char* b, BufferLogger& l) { return u.setFragment(b, 1, &l); }},
  };
  for (const Row& row : rows) {
    for (int value = 0; value < 256; ++value) {
      const char byte = static_cast<char>(value);
      const bool expected = byte != '\0' && row.accepted.find(byte) != std::string::npos;
      Uri uri = Uri::create("s:p.e?q#f");
      BufferLogger logger(true, true, true);
      ASSERT_EQ(row.set(uri, &byte, logger), expected) << row.message << value;
      if (expected) continue;
      // Messages are C strings: a refused zero byte ends the text.
      EXPECT_EQ(onlyError(logger), (std::string(row.message) + byte + row.suffix).c_str());
      EXPECT_EQ(textOf(uri), "s:p.e?q#f");  // a refusal leaves the URI as it was
    }
  }
  // The first scheme byte must be a letter or one of the three marks.
  Uri uri;
  EXPECT_FALSE(uri.setScheme("1a", nullptr));
  EXPECT_TRUE(uri.setScheme("+1", nullptr));
  EXPECT_TRUE(uri.setScheme("a1", nullptr));
  // A query holding %20 or a colon is refused, and so is a whole text carrying one.
  EXPECT_FALSE(uri.setQuery("a%20b", nullptr));
  EXPECT_FALSE(uri.set("a:b?x:y", nullptr));
  EXPECT_TRUE(uri.empty());
}

TEST(Uri, ComponentSettersRewriteTheBuffer) {
  Uri uri;
  ASSERT_TRUE(uri.setQuery("q=1", nullptr));
  ASSERT_TRUE(uri.setScheme("nox", nullptr));
  ASSERT_TRUE(uri.setPath("entities/12", nullptr));
  ASSERT_TRUE(uri.setFragment("f", nullptr));
  ASSERT_TRUE(uri.setExtension("json", nullptr));
  EXPECT_EQ(textOf(uri), "nox:entities/12.json?q=1#f");
  EXPECT_EQ(uri, Uri::create("nox:entities/12.json?q=1#f"));
  ASSERT_TRUE(uri.setPath(uri.getQuery(), nullptr));  // reading from its own buffer
  ASSERT_TRUE(uri.setScheme("", 0, nullptr));
  ASSERT_TRUE(uri.setExtension(nullptr, 0, nullptr));
  EXPECT_EQ(textOf(uri), "q=1?q=1#f");
  EXPECT_EQ(Uri::create("a", "b/c", "d", "e", "f"), Uri::create("a:b/c.d?e#f"));

  Uri other = Uri::create("x:y");
  uri.swap(other);
  EXPECT_EQ(textOf(uri), "x:y");
  EXPECT_EQ(textOf(other), "q=1?q=1#f");
  uri.clear();
  EXPECT_TRUE(uri.empty());
  // Replacing every component at once clears the URI on a refusal.
  EXPECT_FALSE(other.set("a", "b", "c/", "d", "e", nullptr));
  EXPECT_TRUE(other.empty());
}

TEST(Uri, NullArgumentsAreAssertions) {
  nox::test::AssertionRecorder assertions;
  Uri uri = Uri::create("a:b");
  EXPECT_FALSE(uri.setScheme(nullptr, nullptr));
  EXPECT_FALSE(uri.setPath(nullptr, 2, nullptr));
  EXPECT_FALSE(uri.setExtension(nullptr, nullptr));
  EXPECT_FALSE(uri.setQuery(nullptr, nullptr));
  EXPECT_FALSE(uri.setFragment(nullptr, 1, nullptr));
  EXPECT_FALSE(uri.setPathSegments(nullptr, nullptr, 1, nullptr));
  uri.computeString(nullptr);
  EXPECT_EQ(textOf(uri), "a:b");
  EXPECT_FALSE(uri.set(nullptr, nullptr));
  EXPECT_TRUE(uri.empty());
  EXPECT_THAT(assertions.messages(),
              ElementsAre("NULL scheme given", "NULL path given", "NULL extension given", "NULL query given",
                          "NULL fragment given", "No given user data", "NULL string given", "NULL string given"));
}

TEST(Uri, ComparesAndOrdersRawBuffers) {
  const Uri a = Uri::create("a:b"), ab = Uri::create("a:bc"), b = Uri::create("b:a");
  EXPECT_EQ(a, Uri::create("a:b"));
  EXPECT_NE(a, ab);
  EXPECT_TRUE(a < ab);  // "a\0b\0" sorts before "a\0bc\0" at the zero byte
  EXPECT_TRUE(ab < b);
  EXPECT_FALSE(b < a);
  EXPECT_FALSE(a < a);
  EXPECT_TRUE(Uri() < a);
}

TEST(Uri, RetrievesTheFirstPathSegment) {
  unsigned int begin = 7, end = 7;
  EXPECT_TRUE(Uri::retrieveFirstPathSegment("//debug/entities", 16, begin, end));
  EXPECT_EQ(begin, 2u);
  EXPECT_EQ(end, 7u);
  EXPECT_TRUE(Uri::retrieveFirstPathSegment("x", 1, begin, end));
  EXPECT_EQ(end, 1u);
  EXPECT_FALSE(Uri::retrieveFirstPathSegment("//", 2, begin, end));
  EXPECT_EQ(begin, 2u);
  EXPECT_EQ(end, 2u);
  EXPECT_FALSE(Uri::retrieveFirstPathSegment("", 0, begin, end));
}

TEST(Uri, ParsesQueriesIntoOneObject) {
  EXPECT_THAT(queryEvents(""), ElementsAre("begin", "beginObject", "endObject", "end"));
  EXPECT_THAT(
      queryEvents("n=-12&r=2.5&e=1e3&t=true&f=false&flag&s=abc&empty=&eq=a=b&big=99999999999999999999"),
      ElementsAre("begin", "beginObject", "objectChild n", "integer -12", "objectChild r", "real 2.5", "objectChild e",
                  "real 1000", "objectChild t", "boolean true", "objectChild f", "boolean false", "objectChild flag",
                  "boolean true", "objectChild s", "string abc", "objectChild empty", "string ", "objectChild eq",
                  "string a=b", "objectChild big", "real 1e+20", "endObject", "end"));
  EXPECT_THAT(queryEvents("&a=+7&&b=.5&c=1.&d=1e&e=-&g=1e999&"),
              ElementsAre("begin", "beginObject", "objectChild a", "integer 7", "objectChild b", "real 0.5",
                          "objectChild c", "real 1", "objectChild d", "string 1e", "objectChild e", "string -",
                          "objectChild g", "string 1e999", "endObject", "end"));

  // An empty name before "=" is malformed: reported, nothing emitted.
  for (const char* query : {"=1", "a=1&=2"}) {
    nox::test::RecordingBuilder builder;
    BufferLogger logger(true, true, true);
    builder.setLogger(&logger);
    EXPECT_FALSE(Uri::parseQuery(query, static_cast<unsigned int>(std::strlen(query)), builder));
    EXPECT_TRUE(builder.events.empty());
    EXPECT_EQ(onlyError(logger), "Invalid query '" + std::string(query) + "': a parameter has a value but no name.");
  }
  // A builder that refuses objects stops the parse.
  class FlatBuilder : public AbstractObjectBuilder {};
  FlatBuilder flat;
  EXPECT_FALSE(Uri::parseQuery("a=1", 3, flat));
}

TEST(Uri, ParsesQueriesIntoADynamicObject) {
  DynamicObject parameters;
  DynamicObjectBuilder builder(parameters, 0);
  const std::string query = "entity=12&verbose&ratio=0.5&name=bob";
  ASSERT_TRUE(Uri::parseQuery(query.data(), static_cast<unsigned int>(query.size()), builder));
  EXPECT_EQ(parameters.countChildren(parameters.getRoot()), 4u);
  EXPECT_EQ(parameters.getInt("entity"), 12);
  EXPECT_TRUE(parameters.getBool("verbose"));
  EXPECT_EQ(parameters.getReal("ratio"), 0.5);
  EXPECT_STREQ(parameters.getString("name"), "bob");

  // A name the object cannot hold stops the parse.
  DynamicObject refused;
  DynamicObjectBuilder refusing(refused, 0);
  EXPECT_FALSE(Uri::parseQuery("a.b=1", 5, refusing));
}
