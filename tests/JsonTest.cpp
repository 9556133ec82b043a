#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/FileInputOutput.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "support/LoggedErrors.h"
#include "support/RecordingBuilder.h"

namespace {

using nox::test::errorMessages;
using nox::test::expectOnlyError;

using nox::utils::AbstractObjectBuilder;
using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::FileInputOutput;
using nox::utils::JsonObjectBuilder;
using nox::utils::MemoryInputOutput;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
namespace error = nox::utils::error;
namespace type = nox::utils::type;

std::string textOf(const MemoryInputOutput& stream) { return std::string(stream.getData(), stream.getSize()); }

std::string toJson(const DynamicObject& object) {
  MemoryInputOutput output;
  BufferLogger logger(true, true, true);
  EXPECT_TRUE(nox::utils::serializeDynamicObjectToJson(object, output, &logger))
      << testing::PrintToString(errorMessages(logger));
  return textOf(output);
}

bool fromJson(const std::string& text, DynamicObject& object, BufferLogger* logger = nullptr) {
  MemoryInputOutput input(text.data(), static_cast<unsigned int>(text.size()));
  return nox::utils::deserializeDynamicObjectFromJson(object, input, logger);
}

class JsonWriter : public ::testing::Test {
 protected:
  JsonWriter() : logger_(true, true, true), builder_(output_, false) { builder_.setLogger(&logger_); }

  MemoryInputOutput output_;
  BufferLogger logger_;
  JsonObjectBuilder builder_;
};

TEST_F(JsonWriter, WritesEveryKindOfValueCompactly) {
  ASSERT_TRUE(builder_.begin());
  EXPECT_TRUE(builder_.beginObject());
  EXPECT_TRUE(builder_.objectChild("a"));
  EXPECT_TRUE(builder_.integer(-9223372036854775807LL - 1));
  EXPECT_TRUE(builder_.objectChild("b"));
  EXPECT_TRUE(builder_.beginArray());
  EXPECT_TRUE(builder_.arrayChild());
  EXPECT_TRUE(builder_.real(1.5));
  EXPECT_TRUE(builder_.arrayChild());
  EXPECT_TRUE(builder_.string("q\"\n", 3));
  EXPECT_TRUE(builder_.arrayChild());
  EXPECT_TRUE(builder_.boolean(false));
  EXPECT_TRUE(builder_.arrayChild());
  EXPECT_TRUE(builder_.null());
  EXPECT_TRUE(builder_.endArray());
  EXPECT_TRUE(builder_.endObject());
  EXPECT_TRUE(builder_.end());
  EXPECT_EQ(textOf(output_), R"({"a":-9223372036854775808,"b":[1.5,"q\"\n",false,null]})");
  EXPECT_TRUE(logger_.getEntries().empty());
}

TEST_F(JsonWriter, BeautifiedTextReadsBackAlike) {
  DynamicObject object;
  ASSERT_TRUE(fromJson(R"({"a":{"b":[1,2.5,"x"]},"c":true})", object));
  MemoryInputOutput pretty;
  JsonObjectBuilder beautifier(pretty, true);
  ASSERT_TRUE(nox::utils::serializeDynamicObject(object, beautifier));
  EXPECT_THAT(textOf(pretty), HasSubstr("\n    "));
  DynamicObject copy;
  ASSERT_TRUE(fromJson(textOf(pretty), copy));
  EXPECT_EQ(toJson(copy), R"({"a":{"b":[1,2.5,"x"]},"c":true})");
}

TEST_F(JsonWriter, KeepsTheTopLevelAnObjectOrArray) {
  ASSERT_TRUE(builder_.begin());
  EXPECT_FALSE(builder_.integer(3));
  EXPECT_FALSE(builder_.string("s"));
  EXPECT_TRUE(builder_.end());
  EXPECT_EQ(textOf(output_), "");
  EXPECT_THAT(errorMessages(logger_), ElementsAre("Expected object or array", "Expected object or array"));
  logger_.clear();

  // A lone null stands for an empty object.
  ASSERT_TRUE(builder_.begin());
  EXPECT_TRUE(builder_.null());
  EXPECT_TRUE(builder_.end());
  EXPECT_EQ(textOf(output_), "{}");
  EXPECT_EQ(toJson(DynamicObject()), "{}");

  DynamicObject scalar;
  scalar.setInt(scalar.getRoot(), 4);
  MemoryInputOutput ignored;
  EXPECT_FALSE(nox::utils::serializeDynamicObjectToJson(scalar, ignored, &logger_));
  EXPECT_EQ(ignored.getSize(), 0u);
  expectOnlyError(logger_, "Expected object or array");
}

TEST_F(JsonWriter, RefusesNonFiniteRealsThenStaysInError) {
  ASSERT_TRUE(builder_.begin());
  ASSERT_TRUE(builder_.beginArray());
  EXPECT_FALSE(builder_.real(std::numeric_limits<double>::quiet_NaN()));
  expectOnlyError(logger_, "Invalid real value passed: nan");
  EXPECT_FALSE(builder_.integer(1));
  EXPECT_FALSE(builder_.endArray());
  EXPECT_THAT(errorMessages(logger_),
              ElementsAre("Tried to continue the build while in error", "Tried to continue the build while in error"));
  logger_.clear();
  EXPECT_TRUE(builder_.end());
  // The builder starts afresh on the same stream.
  ASSERT_TRUE(builder_.begin());
  EXPECT_TRUE(builder_.beginArray());
  EXPECT_FALSE(builder_.real(-std::numeric_limits<double>::infinity()));
  expectOnlyError(logger_, "Invalid real value passed: -inf");
}

TEST_F(JsonWriter, WritesRealsAsTheShortestTextThatReadsBack) {
  ASSERT_TRUE(builder_.begin());
  ASSERT_TRUE(builder_.beginArray());
  for (double value : {0.06, 1.0, -0.0, 100.0, 1e21, 5e-324, -1.7976931348623157e308, 0.1 + 0.2}) {
    ASSERT_TRUE(builder_.arrayChild());
    ASSERT_TRUE(builder_.real(value));
  }
  ASSERT_TRUE(builder_.endArray());
  ASSERT_TRUE(builder_.end());
  // Integral values keep a fraction, so that they read back as reals.
  EXPECT_EQ(textOf(output_), "[0.06,1.0,-0.0,100.0,1e+21,5e-324,-1.7976931348623157e+308,0.30000000000000004]");

  // A real where a key is due is refused as any value is.
  ASSERT_TRUE(builder_.begin());
  ASSERT_TRUE(builder_.beginObject());
  EXPECT_FALSE(builder_.real(2.5));
  expectOnlyError(logger_, "No current property");
  EXPECT_TRUE(builder_.end());
}

// Random bit patterns cover every exponent, subnormals included; each batch stays below
// the largest array a dynamic object holds.
TEST(JsonRealRoundTrip, ReadsBackEveryWrittenDoubleBitForBit) {
#if defined(__SANITIZE_ADDRESS__)
  const int total = 100000;  // a tenth under the sanitizers, which run every test ten times slower
#else
  const int total = 1000000;
#endif
  const int batch = 50000;
  std::mt19937_64 random(20240607);
  int subnormals = 0;
  for (int done = 0; done < total; done += batch) {
    std::vector<double> values;
    while (values.size() < batch) {
      std::uint64_t bits = random();
      if (values.size() % 4 == 0) bits &= 0x800FFFFFFFFFFFFFULL;  // exponent 0: subnormal (or zero)
      double value;
      std::memcpy(&value, &bits, sizeof value);
      if (!std::isfinite(value)) continue;
      subnormals += std::fpclassify(value) == FP_SUBNORMAL ? 1 : 0;
      values.push_back(value);
    }
    DynamicObject written;
    nox::utils::DynamicObjectBuilder builder(written, 0);
    ASSERT_TRUE(builder.beginArray());
    for (double value : values) ASSERT_TRUE(builder.arrayChild() && builder.real(value));
    ASSERT_TRUE(builder.endArray());
    DynamicObject read;
    ASSERT_TRUE(fromJson(toJson(written), read));
    ASSERT_EQ(read.countChildren(read.getRoot()), values.size());
    for (unsigned int i = 0; i < values.size(); ++i) {
      const unsigned int element = read.getChild(read.getRoot(), i);
      ASSERT_EQ(read.getType(element), type::real) << values[i];
      const double back = read.getReal(element);
      ASSERT_EQ(std::memcmp(&back, &values[i], sizeof back), 0) << values[i] << " read back as " << back;
    }
  }
  EXPECT_GT(subnormals, total / 8);
}

TEST_F(JsonWriter, RefusesTheHundredTwentyEighthNestedArray) {
  ASSERT_TRUE(builder_.begin());
  for (unsigned int depth = 1; depth < 128; ++depth) {
    ASSERT_TRUE(builder_.beginArray()) << depth;
    ASSERT_TRUE(builder_.arrayChild());
  }
  EXPECT_FALSE(builder_.beginArray());
  expectOnlyError(logger_, "Maximum generation depth exceeded");
  EXPECT_FALSE(builder_.endArray());
  expectOnlyError(logger_, "Tried to continue the build while in error");
  EXPECT_TRUE(builder_.end());
}

TEST_F(JsonWriter, ReportsMisplacedEventsAndCallSequences) {
  EXPECT_FALSE(builder_.end());
  expectOnlyError(logger_, "The Json building was already ended or has never begun.");
  EXPECT_FALSE(builder_.beginObject());
  expectOnlyError(logger_, "The Json building has not begun.");
  ASSERT_TRUE(builder_.begin());
  EXPECT_FALSE(builder_.begin());
  expectOnlyError(logger_, "The Json building has already begun");
  ASSERT_TRUE(builder_.beginObject());
  EXPECT_FALSE(builder_.integer(1));
  expectOnlyError(logger_, "No current property");
  ASSERT_TRUE(builder_.end());

  ASSERT_TRUE(builder_.begin());
  ASSERT_TRUE(builder_.beginArray());
  ASSERT_TRUE(builder_.endArray());
  EXPECT_FALSE(builder_.beginArray());
  expectOnlyError(logger_, "Unexpected YAJL returned status: yajl_gen_generation_complete");
  EXPECT_EQ(textOf(output_), "{[]");
}

TEST_F(JsonWriter, StopsAtTheFirstFailedWrite) {
  FileInputOutput closed("/nonexistent/never-opened.json");
  DynamicObject object;
  ASSERT_TRUE(fromJson(R"({"a":[1,2,3],"b":"x"})", object));
  EXPECT_FALSE(nox::utils::serializeDynamicObjectToJson(object, closed, &logger_));
  // One report from the stream; the build stops there.
  ASSERT_EQ(errorMessages(logger_).size(), 1u);
  EXPECT_THAT(errorMessages(logger_)[0], StartsWith("Can't write to the io on /nonexistent/never-opened.json"));
}

// Takes writes until it holds `capacity` bytes, counting them.
class BoundedOutput : public nox::utils::AbstractDataInputOutput {
 public:
  explicit BoundedOutput(std::size_t capacity) : capacity_(capacity) {}
  bool isWritable() const override { return true; }
  bool write(const char* data, unsigned int size, nox::utils::AbstractLogger* logger) override {
    ++writes;
    if (text.size() + size > capacity_) {
      NOX_LOG_ERROR(logger, error::ioProblem, "full");
      return false;
    }
    text.append(data, size);
    return true;
  }
  bool isReadable() const override { return false; }
  bool read(char*, unsigned int& size, nox::utils::AbstractLogger*) override {
    size = 0;
    return false;
  }

  std::string text;
  int writes = 0;

 private:
  std::size_t capacity_;
};

TEST(JsonWriterStream, GathersTextIntoLargeWritesWholeOnceTheTopLevelCloses) {
  DynamicObject object;
  for (int i = 0; i < 20000; ++i)
    object.setInt(object.addChild(object.getRoot(), ("k" + std::to_string(i)).c_str()), i);
  BoundedOutput output(std::size_t{1} << 30);
  ASSERT_TRUE(nox::utils::serializeDynamicObjectToJson(object, output, nullptr));
  EXPECT_GT(output.text.size(), 200000u);
  EXPECT_LE(output.writes, 10);
  DynamicObject copy;
  ASSERT_TRUE(fromJson(output.text, copy));
  EXPECT_EQ(copy.getInt("k19999"), 19999);

  // Readers of the stream find the text there before end().
  BoundedOutput early(1000);
  JsonObjectBuilder builder(early, false);
  ASSERT_TRUE(builder.begin());
  ASSERT_TRUE(builder.beginArray() && builder.arrayChild() && builder.integer(7) && builder.endArray());
  EXPECT_EQ(early.text, "[7]");
  EXPECT_TRUE(builder.end());
}

TEST(JsonWriterStream, ReportsAStreamThatFillsUpOnce) {
  DynamicObject object;
  for (int i = 0; i < 20000; ++i)
    object.setInt(object.addChild(object.getRoot(), ("k" + std::to_string(i)).c_str()), i);
  BufferLogger logger(true, true, true);
  BoundedOutput output(100000);
  EXPECT_FALSE(nox::utils::serializeDynamicObjectToJson(object, output, &logger));
  EXPECT_THAT(errorMessages(logger), ElementsAre("full"));

  // A refused event leaves the text before it written, even with the top level open.
  BoundedOutput partial(1000);
  JsonObjectBuilder builder(partial, false);
  builder.setLogger(&logger);
  logger.clear();
  ASSERT_TRUE(builder.begin());
  ASSERT_TRUE(builder.beginObject() && builder.objectChild("a") && builder.integer(1));
  EXPECT_FALSE(builder.integer(2));
  expectOnlyError(logger, "No current property");
  EXPECT_EQ(partial.text, R"({"a":1)");
  // A stream that fails on the text written at the end reports it; the end stands.
  BoundedOutput tiny(3);
  JsonObjectBuilder last(tiny, false);
  last.setLogger(&logger);
  logger.clear();
  ASSERT_TRUE(last.begin());
  ASSERT_TRUE(last.beginArray() && last.arrayChild() && last.integer(12345));
  EXPECT_TRUE(last.end());
  EXPECT_THAT(errorMessages(logger), ElementsAre("full"));
}

TEST(JsonReader, HandsArrayElementsAsArrayChildThenValue) {
  nox::test::RecordingBuilder builder;
  MemoryInputOutput input(R"([1, [true], {"k": null, "r": -0.5}, "s"])", 40);
  ASSERT_TRUE(nox::utils::deserializeJson(builder, input));
  EXPECT_THAT(builder.events,
              ElementsAre("beginArray", "arrayChild", "integer 1", "arrayChild", "beginArray", "arrayChild",
                          "boolean true", "endArray", "arrayChild", "beginObject", "objectChild k", "null",
                          "objectChild r", "real -0.5", "endObject", "arrayChild", "string s", "endArray"));
}

TEST(JsonReader, ReportsMalformedTextAndKeepsWhatWasRead) {
  BufferLogger logger(true, true, true);
  DynamicObject object;
  EXPECT_FALSE(fromJson(R"({"a": 1, "b": [2, 3} )", object, &logger));
  ASSERT_EQ(logger.getEntries().size(), 1u);
  EXPECT_EQ(logger.getEntries()[0].error, error::invalidData);
  EXPECT_EQ(errorMessages(logger)[0], "Invalid JSON at byte 20: parse error: after array element, I expect ',' or ']'");
  EXPECT_EQ(object.getInt("a"), 1);
  EXPECT_EQ(object.getInt("b[1]"), 3);

  logger.clear();
  DynamicObject empty;
  EXPECT_FALSE(fromJson("  ", empty, &logger));
  EXPECT_THAT(errorMessages(logger), ElementsAre("Invalid JSON at byte 2: parse error: premature EOF"));
  EXPECT_TRUE(empty.empty());
}

TEST(JsonReader, StopsWhereTheBuilderRefuses) {
  BufferLogger logger(true, true, true);
  DynamicObject object;
  EXPECT_FALSE(fromJson(R"({"ok": 1, "a.b": 2, "later": 3})", object, &logger));
  // The builder's own report, no parse error.
  EXPECT_THAT(errorMessages(logger),
              ElementsAre("Unable to create a child named a.b to the current property, invalid character '.' found."));
  EXPECT_EQ(object.getInt("ok"), 1);
  EXPECT_FALSE(object.hasProperty("later"));
}

TEST(JsonReader, BoundsNestingWithoutExhaustingTheStack) {
  const unsigned int deepest = JsonObjectBuilder::getMaximumDepth();
  std::string accepted = std::string(deepest, '[') + std::string(deepest, ']');
  DynamicObject object;
  ASSERT_TRUE(fromJson(accepted, object));
  std::string nested = std::string(deepest - 1, '[') + "[1]" + std::string(deepest - 1, ']');
  DynamicObject chain;
  ASSERT_TRUE(fromJson(nested, chain));
  EXPECT_EQ(toJson(chain), nested);

  for (std::size_t depth : {std::size_t{deepest + 1}, std::size_t{100000}}) {
    BufferLogger logger(true, true, true);
    DynamicObject deep;
    EXPECT_FALSE(fromJson(std::string(depth, '[') + std::string(depth, ']'), deep, &logger));
    ASSERT_EQ(logger.getEntries().size(), 1u);
    EXPECT_EQ(logger.getEntries()[0].error, error::invalidData);
    EXPECT_EQ(errorMessages(logger)[0],
              "Unsupported JSON at byte 128: objects and arrays nested deeper than 127 levels");
  }
}

// The reader hands the parser its text in batches cut where no token is under way, and
// hands over a token that goes on and on in pieces: long tokens, escapes and errors must
// come through the same wherever the cuts fall.
TEST(JsonReader, LongTokensAndLateErrorsComeThroughWhole) {
  std::string text;
  std::string expected;
  for (std::size_t i = 0; expected.size() < 700000; ++i) {
    if (i % 9973 == 0) {
      text += R"(\"\u00e9\\)";
      expected += "\"\xc3\xa9\\";
    } else {
      text += static_cast<char>('a' + i % 26);
      expected += static_cast<char>('a' + i % 26);
    }
  }
  const std::string number = "0." + std::string(300000, '5');
  DynamicObject object;
  ASSERT_TRUE(fromJson("{\"s\":\"" + text + "\",\"n\":" + number + ",\"t\":true}", object));
  EXPECT_EQ(std::string(object.getString("s")), expected);
  EXPECT_EQ(object.getReal("n"), 0.5555555555555556);
  EXPECT_TRUE(object.getBool("t"));

  std::string list = "[";
  for (int i = 0; i < 50000; ++i) list += "1,";
  for (const std::string& text : {list + "x]", list + std::string(300000, 'x') + "]"}) {
    BufferLogger logger(true, true, true);
    DynamicObject partial;
    EXPECT_FALSE(fromJson(text, partial, &logger));
    EXPECT_THAT(errorMessages(logger), ElementsAre(StartsWith("Invalid JSON at byte 100002: lexical error")));
    EXPECT_EQ(partial.countChildren(partial.getRoot()), 50000u);
  }
}

// A stream that answers every read with success, handing out its text and then nothing.
class NeverEndingInput : public nox::utils::AbstractDataInputOutput {
 public:
  explicit NeverEndingInput(std::string text) : text_(std::move(text)) {}
  bool isWritable() const override { return false; }
  bool write(const char*, unsigned int, nox::utils::AbstractLogger*) override { return false; }
  bool isReadable() const override { return true; }
  bool read(char* buffer, unsigned int& size, nox::utils::AbstractLogger*) override {
    size = static_cast<unsigned int>(text_.copy(buffer, size, std::min(position_, text_.size())));
    position_ += size;
    return true;
  }

 private:
  std::string text_;
  std::size_t position_ = 0;
};

TEST(JsonReader, EndsAtAReadThatSucceedsWithoutBytes) {
  NeverEndingInput input(R"({"a":[1,2]})");
  DynamicObject object;
  EXPECT_TRUE(nox::utils::deserializeDynamicObjectFromJson(object, input, nullptr));
  EXPECT_EQ(object.getInt("a[1]"), 2);
}

// Texts of every length around chunk boundaries must come through whole, from memory and
// from a file: a short last read may neither be dropped nor padded.
class JsonReaderLengths : public ::testing::Test {
 protected:
  void SetUp() override { path_ = ::testing::TempDir() + "nox-json-" + std::to_string(::getpid()) + ".json"; }
  void TearDown() override { std::filesystem::remove(path_); }

  // A text of exactly `length` bytes: digits below 4 bytes, else a string in an array
  // whose characters all differ from their neighbours in the chunk before.
  static std::string documentOfLength(std::size_t length, std::string& payload) {
    if (length < 4) {
      payload = std::string(length, '7');
      return payload;
    }
    payload.clear();
    for (std::size_t i = 0; i + 4 < length; ++i) payload += static_cast<char>('a' + (i * 7 + i / 256) % 26);
    return "[\"" + payload + "\"]";
  }

  // Reads `text` back from memory, and from a file too when `alsoFromFile`.
  std::vector<DynamicObject> readBack(const std::string& text, bool alsoFromFile) {
    std::vector<DynamicObject> objects(alsoFromFile ? 2 : 1);
    MemoryInputOutput memory(text.data(), static_cast<unsigned int>(text.size()));
    EXPECT_TRUE(nox::utils::deserializeDynamicObjectFromJson(objects[0], memory, nullptr)) << text.size();
    if (alsoFromFile) {
      std::ofstream(path_, std::ios::binary | std::ios::trunc)
          .write(text.data(), static_cast<std::streamsize>(text.size()));
      FileInputOutput file(path_.c_str());
      EXPECT_TRUE(file.openForReading(nullptr));
      EXPECT_TRUE(nox::utils::deserializeDynamicObjectFromJson(objects[1], file, nullptr)) << text.size();
    }
    return objects;
  }

  std::string path_;
};

TEST_F(JsonReaderLengths, ReadsTextsOfEveryLengthWhole) {
  for (std::size_t length = 1; length <= 2000; ++length) {
    std::string payload;
    const std::string text = documentOfLength(length, payload);
    ASSERT_EQ(text.size(), length);
    // Files are slow to rewrite: they take the lengths next to chunk boundaries.
    const bool nearBoundary = (length + 3) % 256 <= 6;
    for (const DynamicObject& object : readBack(text, nearBoundary)) {
      if (length < 4) {
        ASSERT_EQ(object.getInt(object.getRoot()), std::stoll(payload)) << length;
      } else {
        ASSERT_EQ(object.countChildren(object.getRoot()), 1u) << length;
        ASSERT_EQ(object.getString("[0]"), payload) << length;
      }
    }
  }
}

TEST_F(JsonReaderLengths, ReadsSeveralMegabytesOfMixedContent) {
  // Long texts with escapes and multi-byte characters make up most of the bytes, numbers,
  // booleans and arrays the rest; every item differs from the others.
  const unsigned int items = 1000;
  auto textOfItem = [](unsigned int i) {
    std::string text;
    while (text.size() < 3200) {
      text += "line " + std::to_string(i * 2654435761u + text.size()) + " of the text of an item, long enough " +
              "to make up most of the document \"\u00e9\u20ac\\\n";
    }
    return text;
  };
  DynamicObject source;
  for (unsigned int i = 0; i < items; ++i) {
    const unsigned int item = source.addChild(source.getRoot(), ("item" + std::to_string(i)).c_str());
    source.setInt(source.addChild(item, "id"), i * 2654435761LL);
    source.setReal(source.addChild(item, "ratio"), i / 7.0);
    source.setString(source.addChild(item, "text"), textOfItem(i).c_str());
    source.setBool(source.addChild(item, "flag"), i % 3 == 0);
    const unsigned int list = source.addChild(item, "list");
    source.resize(list, 1 + i % 7);
    for (unsigned int j = 0; j < 1 + i % 7; ++j) source.setInt(source.getChild(list, j), j * 1000003LL - i);
  }
  const std::string text = toJson(source);
  ASSERT_GT(text.size(), 3u << 20);
  for (const DynamicObject& object : readBack(text, true)) {
    ASSERT_EQ(object.countChildren(object.getRoot()), items);
    for (unsigned int i = 0; i < items; ++i) {
      const std::string item = "item" + std::to_string(i);
      const unsigned int list = object.getProperty((item + ".list").c_str());
      ASSERT_EQ(object.countChildren(object.getProperty(item.c_str())), 5u) << item;
      ASSERT_EQ(object.getInt(object.getProperty((item + ".id").c_str())), i * 2654435761LL) << item;
      ASSERT_EQ(object.getReal(object.getProperty((item + ".ratio").c_str())), i / 7.0) << item;
      ASSERT_EQ(object.getString(object.getProperty((item + ".text").c_str())), textOfItem(i)) << item;
      ASSERT_EQ(object.getBool(object.getProperty((item + ".flag").c_str())), i % 3 == 0) << item;
      ASSERT_EQ(object.countChildren(list), 1 + i % 7) << item;
      for (unsigned int j = 0; j < 1 + i % 7; ++j) {
        ASSERT_EQ(object.getInt(object.getChild(list, j)), j * 1000003LL - i);
      }
    }
  }
}

}  // namespace
