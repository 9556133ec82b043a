// Data that does not fit what was already built, through every reader that drives a
// DynamicObjectBuilder: a repeated key whose value changes between a container and
// anything else, or a document whose top level clashes with the property read into.
// Each is refused with a logged error, without any assertion, and the value already
// there stays whole; a repeated scalar simply wins.
#include <nox/allocator/Allocator.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/Uri.h>
#include <nox/utils/impl/ProtobufDynamicObjectBuilder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/AssertionRecorder.h"
#include "support/LoggedErrors.h"

namespace {

using nox::test::errorMessages;
using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::MemoryInputOutput;
using ::testing::ElementsAre;
using ::testing::StartsWith;
namespace error = nox::utils::error;

std::string toJson(const DynamicObject& object) {
  MemoryInputOutput output;
  EXPECT_TRUE(nox::utils::serializeDynamicObjectToJson(object, output, nullptr));
  return std::string(output.getData(), output.getSize());
}

DynamicObject objectOf(const std::string& json) {
  DynamicObject object;
  MemoryInputOutput input(json.data(), static_cast<unsigned int>(json.size()));
  EXPECT_TRUE(nox::utils::deserializeDynamicObjectFromJson(object, input, nullptr)) << json;
  return object;
}

// The readers under test, each taking a JSON text that it turns into its own form.
enum class Reader { json, binary };

std::string readerName(const ::testing::TestParamInfo<Reader>& info) {
  return info.param == Reader::json ? "Json" : "Binary";
}

// The binary form of `json`, repeated keys kept: the JSON reader's events replayed into
// the binary writer.
std::string binaryOf(const std::string& json) {
  MemoryInputOutput input(json.data(), static_cast<unsigned int>(json.size()));
  MemoryInputOutput output;
  nox::utils::ProtobufDynamicObjectBuilder writer(output);
  EXPECT_TRUE(writer.begin() && nox::utils::deserializeJson(writer, input) && writer.end()) << json;
  return std::string(output.getData(), output.getSize());
}

bool read(Reader reader, const std::string& json, DynamicObject& target, BufferLogger& logger) {
  if (reader == Reader::json) {
    MemoryInputOutput input(json.data(), static_cast<unsigned int>(json.size()));
    return nox::utils::deserializeDynamicObjectFromJson(target, input, &logger);
  }
  const std::string bytes = binaryOf(json);
  return nox::utils::deserializeDynamicObject(bytes.data(), static_cast<unsigned int>(bytes.size()), target, &logger);
}

class RepeatedKeys : public ::testing::TestWithParam<Reader> {
 protected:
  // Reads `text` into an object holding `existing`, expects it taken or refused (then
  // with one report), never an assertion, and answers what the object holds afterwards.
  std::string expectRead(bool taken, const std::string& text, const std::string& existing = "{}") {
    nox::test::AssertionRecorder assertions;
    BufferLogger logger(true, true, true);
    DynamicObject object = objectOf(existing);
    EXPECT_EQ(read(GetParam(), text, object, logger), taken) << text;
    EXPECT_EQ(assertions.count(), 0u) << text << ": " << assertions.last();
    if (taken) {
      EXPECT_TRUE(logger.getEntries().empty()) << text;
    } else {
      EXPECT_THAT(errorMessages(logger), ElementsAre(StartsWith("The current property"))) << text;
    }
    return toJson(object);
  }
  std::string expectAccepted(const std::string& text, const std::string& existing = "{}") {
    return expectRead(true, text, existing);
  }
  std::string expectRefused(const std::string& text, const std::string& existing = "{}") {
    return expectRead(false, text, existing);
  }
};

TEST_P(RepeatedKeys, ScalarsWinAndContainersOfOneKindJoin) {
  EXPECT_EQ(expectAccepted(R"({"a":1,"a":2})"), R"({"a":2})");
  EXPECT_EQ(expectAccepted(R"({"a":1,"a":"x","a":true})"), R"({"a":true})");
  EXPECT_EQ(expectAccepted(R"({"a":[1],"a":[2,3]})"), R"({"a":[1,2,3]})");
  EXPECT_EQ(expectAccepted(R"({"a":{"b":1},"a":{"c":2,"b":3}})"), R"({"a":{"b":3,"c":2}})");
  // An empty object or array leaves its property null, which anything may fill.
  EXPECT_EQ(expectAccepted(R"({"a":{},"a":[1]})"), R"({"a":[1]})");
}

TEST_P(RepeatedKeys, RefuseToChangeBetweenAContainerAndAnythingElse) {
  EXPECT_EQ(expectRefused(R"({"a":1,"a":[1]})"), R"({"a":1})");
  EXPECT_EQ(expectRefused(R"({"a":"b","a":{"c":1}})"), R"({"a":"b"})");
  EXPECT_EQ(expectRefused(R"({"a":{"c":1},"a":2})"), R"({"a":{"c":1}})");
  EXPECT_EQ(expectRefused(R"({"a":[1],"a":{"c":1}})"), R"({"a":[1]})");
  EXPECT_EQ(expectRefused(R"({"a":{"c":[1,2]},"a":{"c":"x"}})"), R"({"a":{"c":[1,2]}})");
  EXPECT_EQ(expectRefused(R"({"a":[true],"a":"s"})"), R"({"a":[true]})");
}

TEST_P(RepeatedKeys, RefuseATopLevelThatClashesWithTheTarget) {
  const std::string kept = R"({"keep":[1,{"x":2}]})";
  EXPECT_EQ(expectRefused(R"([1])", kept), kept);
  EXPECT_EQ(expectRefused(R"({"keep":{"y":3}})", kept), kept);
  EXPECT_EQ(expectAccepted(R"({"keep":[{"x":[]},5]})", kept), R"({"keep":[1,{"x":2},{"x":null},5]})");
  EXPECT_EQ(expectAccepted(R"({"more":2})", kept), R"({"keep":[1,{"x":2}],"more":2})");
  EXPECT_EQ(expectRefused(R"({"a":1})", "[1]"), "[1]");
}

INSTANTIATE_TEST_SUITE_P(Readers, RepeatedKeys, ::testing::Values(Reader::json, Reader::binary), readerName);

TEST(RepeatedKeysInTheBuilder, ScalarTopLevelsAndNullCannotReplaceAContainer) {
  for (const std::string& existing : {std::string(R"({"a":1})"), std::string("[1]")}) {
    nox::test::AssertionRecorder assertions;
    BufferLogger logger(true, true, true);
    DynamicObject object = objectOf(existing);
    nox::utils::DynamicObjectBuilder builder(object, 0);
    builder.setLogger(&logger);
    EXPECT_FALSE(builder.integer(5));
    EXPECT_FALSE(builder.null());
    EXPECT_FALSE(builder.string("s", 1));
    EXPECT_EQ(toJson(object), existing);
    EXPECT_EQ(assertions.count(), 0u) << assertions.last();
    EXPECT_THAT(errorMessages(logger), ElementsAre("The current property is not of the expected type",
                                                   "The current property is not of the expected type",
                                                   "The current property is not of the expected type"));
  }

  // A repeated key names the kinds in its report.
  nox::test::AssertionRecorder assertions;
  BufferLogger logger(true, true, true);
  DynamicObject object = objectOf(R"({"a":{"b":1}})");
  nox::utils::DynamicObjectBuilder builder(object, 0);
  builder.setLogger(&logger);
  ASSERT_TRUE(builder.beginObject());
  ASSERT_TRUE(builder.objectChild("a"));
  EXPECT_FALSE(builder.null());
  EXPECT_THAT(errorMessages(logger),
              ElementsAre("The current property already holds an object, which null may not replace."));
  EXPECT_EQ(logger.getEntries()[0].error, error::invalidData);
  EXPECT_EQ(assertions.count(), 0u);
}

TEST(RepeatedKeysInQueries, ScalarsWinAndContainersStay) {
  nox::test::AssertionRecorder assertions;
  BufferLogger logger(true, true, true);
  DynamicObject parameters = objectOf(R"({"a":{"b":1}})");
  nox::utils::DynamicObjectBuilder builder(parameters, 0);
  builder.setLogger(&logger);
  EXPECT_TRUE(nox::utils::Uri::parseQuery("x=1&x=two", 9, builder));
  EXPECT_EQ(toJson(parameters), R"({"a":{"b":1},"x":"two"})");

  nox::utils::DynamicObjectBuilder again(parameters, 0);
  again.setLogger(&logger);
  EXPECT_FALSE(nox::utils::Uri::parseQuery("a=1", 3, again));
  EXPECT_EQ(toJson(parameters), R"({"a":{"b":1},"x":"two"})");
  EXPECT_THAT(errorMessages(logger),
              ElementsAre("The current property already holds an object, which an integer may not replace."));
  EXPECT_EQ(assertions.count(), 0u);
}

}  // namespace
