#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/AssertionRecorder.h"
#include "support/LoggedErrors.h"
#include "support/RecordingBuilder.h"

using nox::utils::AbstractObjectBuilder;
using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::DynamicObjectBuilder;
using nox::utils::serializeDynamicObject;
using ::testing::ElementsAre;
namespace type = nox::utils::type;
namespace error = nox::utils::error;

namespace {

using nox::test::errorMessages;
using nox::test::expectOnlyError;

using nox::test::RecordingBuilder;

// Inherits every default.
class DefaultBuilder : public AbstractObjectBuilder {};

std::vector<std::string> eventsOf(const DynamicObject& object) {
  RecordingBuilder recorder;
  EXPECT_TRUE(serializeDynamicObject(object, recorder));
  return recorder.events;
}

// {"name": "box", "size": 3, "ratio": 0.5, "open": true, "tags": ["x", null, {"deep": -7}]}
void buildSample(AbstractObjectBuilder& builder) {
  ASSERT_TRUE(builder.begin());
  ASSERT_TRUE(builder.beginObject());
  ASSERT_TRUE(builder.objectChild("name"));
  ASSERT_TRUE(builder.string("box"));
  ASSERT_TRUE(builder.objectChild("size"));
  ASSERT_TRUE(builder.integer(3));
  ASSERT_TRUE(builder.objectChild("ratio"));
  ASSERT_TRUE(builder.real(0.5));
  ASSERT_TRUE(builder.objectChild("open"));
  ASSERT_TRUE(builder.boolean(true));
  ASSERT_TRUE(builder.objectChild("tags"));
  ASSERT_TRUE(builder.beginArray());
  ASSERT_TRUE(builder.arrayChild());
  ASSERT_TRUE(builder.string("x"));
  ASSERT_TRUE(builder.arrayChild());
  ASSERT_TRUE(builder.null());
  ASSERT_TRUE(builder.arrayChild());
  ASSERT_TRUE(builder.beginObject());
  ASSERT_TRUE(builder.objectChild("deep"));
  ASSERT_TRUE(builder.integer(-7));
  ASSERT_TRUE(builder.endObject());
  ASSERT_TRUE(builder.endArray());
  ASSERT_TRUE(builder.endObject());
  ASSERT_TRUE(builder.end());
}

}  // namespace

TEST(ObjectBuilderDefaults, RefuseEveryValueEventSilentlyWithoutLogger) {
  DefaultBuilder builder;
  EXPECT_EQ(builder.getLogger(), nullptr);
  EXPECT_TRUE(builder.begin());
  EXPECT_TRUE(builder.end());
  EXPECT_FALSE(builder.null());
  EXPECT_FALSE(builder.boolean(true));
  EXPECT_FALSE(builder.integer(1));
  EXPECT_FALSE(builder.real(1.0));
  EXPECT_FALSE(builder.string("s"));
  EXPECT_FALSE(builder.beginObject());
  EXPECT_FALSE(builder.objectChild("k"));
  EXPECT_FALSE(builder.endObject());
  EXPECT_FALSE(builder.beginArray());
  EXPECT_FALSE(builder.arrayChild());
  EXPECT_FALSE(builder.endArray());
}

TEST(ObjectBuilderDefaults, ReportRefusalsThroughTheLogger) {
  BufferLogger logger(true, true, true);
  DefaultBuilder builder;
  builder.setLogger(&logger);
  EXPECT_EQ(builder.getLogger(), &logger);
  builder.null();
  builder.boolean(false);
  builder.integer(1);
  builder.real(1.0);
  builder.string("text", 4);
  builder.beginObject();
  builder.objectChild("key");
  builder.endObject();
  builder.beginArray();
  builder.arrayChild();
  builder.endArray();
  const char* objects = "Object properties not supported by this object builder.";
  const char* arrays = "Array properties not supported by this object builder.";
  EXPECT_THAT(errorMessages(logger), ElementsAre("Null properties not supported by this object builder.",
                                                 "Boolean properties not supported by this object builder.",
                                                 "Integer properties not supported by this object builder.",
                                                 "Real properties not supported by this object builder.",
                                                 "String properties not supported by this object builder.", objects,
                                                 objects, objects, arrays, arrays, arrays));
  for (const BufferLogger::Entry& entry : logger.getEntries()) {
    EXPECT_EQ(entry.error, error::invalidOperation);
    EXPECT_STREQ(entry.file.c_str(), "nox/utils/AbstractObjectBuilder");
  }
}

TEST(ObjectBuilderDefaults, OneArgumentFormsMeasureTheText) {
  RecordingBuilder builder;
  builder.string("abc");
  builder.objectChild("key");
  EXPECT_THAT(builder.events, ElementsAre("string abc", "objectChild key"));
}

TEST(DynamicObjectBuilder, BuildsNestedObjectsAndArrays) {
  DynamicObject object;
  DynamicObjectBuilder builder(object, 0);
  buildSample(builder);

  EXPECT_EQ(object.getType(object.getRoot()), type::object);
  EXPECT_EQ(object.countChildren(object.getRoot()), 5u);
  EXPECT_STREQ(object.getString(object.getProperty("name")), "box");
  EXPECT_EQ(object.getInt(object.getProperty("size")), 3);
  EXPECT_EQ(object.getReal(object.getProperty("ratio")), 0.5);
  EXPECT_TRUE(object.getBool(object.getProperty("open")));
  unsigned int tags = object.getProperty("tags");
  EXPECT_EQ(object.getType(tags), type::array);
  EXPECT_EQ(object.countChildren(tags), 3u);
  EXPECT_STREQ(object.getString(object.getProperty("tags[0]")), "x");
  EXPECT_EQ(object.getType(object.getProperty("tags[1]")), type::null);
  EXPECT_EQ(object.getInt(object.getProperty("tags[2].deep")), -7);
}

TEST(DynamicObjectBuilder, AddsChildrenToAnExistingObjectProperty) {
  DynamicObject object;
  object.setInt(object.addChild(object.addChild(object.getRoot(), "a", 1), "x", 1), 1);
  DynamicObjectBuilder builder(object, object.getProperty("a"));
  EXPECT_TRUE(builder.beginObject());
  EXPECT_TRUE(builder.objectChild("y"));
  EXPECT_TRUE(builder.integer(2));
  EXPECT_TRUE(builder.endObject());
  EXPECT_EQ(object.countChildren(object.getProperty("a")), 2u);
  EXPECT_EQ(object.getInt(object.getProperty("a.x")), 1);
  EXPECT_EQ(object.getInt(object.getProperty("a.y")), 2);
}

TEST(DynamicObjectBuilder, RefusesMisplacedEventsWithTheirMessages) {
  nox::test::AssertionRecorder assertions;
  BufferLogger logger(true, true, true);
  DynamicObject object;
  DynamicObjectBuilder builder(object, 0);
  builder.setLogger(&logger);

  ASSERT_TRUE(builder.beginArray());
  EXPECT_FALSE(builder.beginObject());
  EXPECT_FALSE(builder.objectChild("a"));
  ASSERT_TRUE(builder.arrayChild());
  ASSERT_TRUE(builder.beginObject());
  EXPECT_FALSE(builder.arrayChild());
  EXPECT_FALSE(builder.objectChild("a.b"));
  EXPECT_FALSE(builder.objectChild("c]"));
  EXPECT_FALSE(builder.objectChild(""));
  EXPECT_THAT(errorMessages(logger),
              ElementsAre("The current property is not of the expected type", "The current property is not an object.",
                          "The current property is not an array.",
                          "Unable to create a child named a.b to the current property, invalid character '.' found.",
                          "Unable to create a child named c] to the current property, invalid character ']' found.",
                          "Unable to create a child named  to the current property."));
  EXPECT_EQ(logger.getEntries()[3].error, error::invalidArgument);
  EXPECT_EQ(logger.getEntries()[5].error, error::invalidOperation);
  EXPECT_STREQ(logger.getEntries()[0].file.c_str(), "nox/utils/DynamicObjectBuilder");
  EXPECT_EQ(assertions.count(), 0u);
  EXPECT_EQ(object.countChildren(object.getProperty("[0]")), 0u);
}

TEST(DynamicObjectBuilder, RefusesToGrowAFullArray) {
  BufferLogger logger(true, true, true);
  DynamicObject object;
  unsigned int list = object.addChild(object.getRoot(), "list", 4);
  ASSERT_TRUE(object.resize(list, DynamicObject::getMaximumArraySize() - 1));
  DynamicObjectBuilder builder(object, list);
  builder.setLogger(&logger);
  EXPECT_FALSE(builder.arrayChild());
  EXPECT_THAT(errorMessages(logger), ElementsAre("The current array property (" + std::to_string(list) +
                                                 ") reached its maximum size: 100000"));
  EXPECT_EQ(object.countChildren(list), DynamicObject::getMaximumArraySize() - 1);
}

TEST(DynamicObjectBuilder, WritesAClashingValueAndClosesTheSlot) {
  nox::test::AssertionRecorder assertions;
  BufferLogger logger(true, true, true);
  DynamicObject object;
  DynamicObjectBuilder builder(object, 0);
  builder.setLogger(&logger);
  ASSERT_TRUE(builder.beginObject());
  EXPECT_TRUE(builder.integer(5));
  EXPECT_THAT(errorMessages(logger), ElementsAre("The current property is not of the expected type"));
  EXPECT_THAT(assertions.messages(), ElementsAre("Invalid call sequence"));
  EXPECT_EQ(object.getInt(object.getRoot()), 5);
  // The object's own slot was the one closed: nothing is left open.
  EXPECT_FALSE(builder.beginObject());
  EXPECT_EQ(errorMessages(logger).back(), "No current property.");
}

TEST(DynamicObjectBuilder, HasNoCurrentPropertyAfterTheOutermostValue) {
  BufferLogger logger(true, true, true);
  DynamicObject object;
  DynamicObjectBuilder builder(object, 0);
  builder.setLogger(&logger);
  ASSERT_TRUE(builder.integer(1));
  EXPECT_FALSE(builder.beginObject());
  EXPECT_FALSE(builder.beginArray());
  EXPECT_FALSE(builder.objectChild("a"));
  EXPECT_FALSE(builder.arrayChild());
  EXPECT_THAT(errorMessages(logger), ElementsAre("No current property.", "No current property.", "No current property.",
                                                 "No current property."));
  // A stray value is a producer's broken contract: reported, and nothing is written.
  nox::test::AssertionRecorder assertions;
  EXPECT_TRUE(builder.integer(2));
  EXPECT_THAT(assertions.messages(), ElementsAre("Invalid call sequence"));
  EXPECT_EQ(object.getInt(object.getRoot()), 1);
}

TEST(SerializeDynamicObject, EmitsEventsInChildOrder) {
  DynamicObject object;
  DynamicObjectBuilder builder(object, 0);
  buildSample(builder);
  EXPECT_THAT(eventsOf(object),
              ElementsAre("begin", "beginObject", "objectChild name", "string box", "objectChild open", "boolean true",
                          "objectChild ratio", "real 0.5", "objectChild size", "integer 3", "objectChild tags",
                          "beginArray", "arrayChild", "string x", "arrayChild", "null", "arrayChild", "beginObject",
                          "objectChild deep", "integer -7", "endObject", "endArray", "endObject", "end"));
}

TEST(SerializeDynamicObject, EmitsScalarRootsAndStringsUpToTheirFirstZero) {
  DynamicObject object;
  EXPECT_THAT(eventsOf(object), ElementsAre("begin", "null", "end"));
  object.setString(object.getRoot(), "ab\0cd", 5);
  EXPECT_THAT(eventsOf(object), ElementsAre("begin", "string ab", "end"));
}

TEST(SerializeDynamicObject, StopsAtTheFirstRefusal) {
  DynamicObject object;
  DynamicObjectBuilder builder(object, 0);
  buildSample(builder);
  for (int refuseAt : {0, 3, 12, 23}) {
    RecordingBuilder recorder(refuseAt);
    EXPECT_FALSE(serializeDynamicObject(object, recorder));
    EXPECT_EQ(recorder.events.size(), static_cast<std::size_t>(refuseAt) + 1) << refuseAt;
  }
}

TEST(SerializeDynamicObject, RoundTripsThroughDynamicObjectBuilder) {
  DynamicObject original;
  DynamicObjectBuilder sampleBuilder(original, 0);
  buildSample(sampleBuilder);
  DynamicObject copy;
  DynamicObjectBuilder copyBuilder(copy, 0);
  ASSERT_TRUE(serializeDynamicObject(original, copyBuilder));
  EXPECT_EQ(eventsOf(copy), eventsOf(original));
}
