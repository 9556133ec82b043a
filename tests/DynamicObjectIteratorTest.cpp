#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectIterator.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/AssertionRecorder.h"

using nox::utils::DynamicObject;
using nox::utils::DynamicObjectIterator;
using Keys = std::vector<std::string>;

namespace {

Keys walk(DynamicObjectIterator& it) {
  Keys keys;
  for (it.next(); !it.end(); it.next()) {
    keys.emplace_back(it.getKey(), it.getKeyLength());
    EXPECT_EQ(std::string(it.getKey()).size(), it.getKeyLength());
  }
  return keys;
}

Keys walk(const DynamicObject& object, const char* start, unsigned int maxDepth = ~0u) {
  DynamicObjectIterator it(object, object.getProperty(start), maxDepth);
  return walk(it);
}

// a: {b: 1, x: {y: 2}}, list: [3, 4], z: 5
DynamicObject makeSample() {
  DynamicObject object;
  object.setInt(object.addChild(object.addChild(object.addChild(object.getRoot(), "a"), "x"), "y"), 2);
  object.setInt(object.addChild("a", "b"), 1);
  object.resize(object.addChild(object.getRoot(), "list"), 2);
  object.setInt("list[0]", 3);
  object.setInt("list[1]", 4);
  object.setInt(object.addChild(object.getRoot(), "z"), 5);
  return object;
}

}  // namespace

TEST(DynamicObjectIterator, ANullRootYieldsNothing) {
  DynamicObject object;
  DynamicObjectIterator it(object, 0);
  EXPECT_FALSE(it.end());  // positioned on the start until the first step
  EXPECT_TRUE(it.next().end());
  EXPECT_EQ(it.getProperty(), 0u);
  EXPECT_EQ(&it.getDynamicObject(), &object);
}

TEST(DynamicObjectIterator, YieldsEachPropertyBeforeItsDescendants) {
  const DynamicObject object = makeSample();
  EXPECT_EQ(walk(object, ""), (Keys{"a", "a.b", "a.x", "a.x.y", "list", "list[0]", "list[1]", "z"}));
  EXPECT_EQ(walk(object, "a"), (Keys{"b", "x", "x.y"}));
  EXPECT_EQ(walk(object, "list"), (Keys{"[0]", "[1]"}));
  EXPECT_EQ(walk(object, "a.b"), Keys{});

  DynamicObjectIterator it(object, object.getRoot());
  it.next();
  EXPECT_EQ(it.getProperty(), object.getProperty("a"));
  it.next();
  EXPECT_EQ(object.getInt(it.getProperty()), 1);
}

TEST(DynamicObjectIterator, DepthBoundsTheWalk) {
  const DynamicObject object = makeSample();
  EXPECT_EQ(walk(object, "", 0), (Keys{"a", "list", "z"}));
  EXPECT_EQ(walk(object, "", 1), (Keys{"a", "a.b", "a.x", "list", "list[0]", "list[1]", "z"}));
  EXPECT_EQ(walk(object, "a", 0), (Keys{"b", "x"}));

  DynamicObjectIterator it(object, 0, 0);
  it.initializeTraversal(object.getProperty("a.x"));
  EXPECT_EQ(walk(it), Keys{"y"});
}

TEST(DynamicObjectIterator, OrdersKeysAsSignedBytes) {
  DynamicObject object;
  for (const char* name : {"b", "ab", "a", "\xC3\xA9"}) object.addChild(object.getRoot(), name);
  object.resize(object.addChild(object.getRoot(), "list"), 11);
  const Keys elements = walk(object, "list");
  EXPECT_EQ(elements[0], "[0]");
  EXPECT_EQ(elements[1], "[10]");
  EXPECT_EQ(elements[2], "[1]");
  EXPECT_EQ(walk(object, "", 0), (Keys{"\xC3\xA9", "a", "ab", "b", "list"}));
}

TEST(DynamicObjectIterator, SteppingPastTheEndIsAnAssertionFailure) {
  nox::test::AssertionRecorder recorder;
  DynamicObject object;
  DynamicObjectIterator it(object, 0);
  it.next();
  it.next();
  EXPECT_EQ(recorder.last(), "unable to increment from invalid current node");
  EXPECT_EQ(recorder.assertions().back().file, "nox/utils/DynamicObjectIterator");
  EXPECT_TRUE(it.end());
}

// The iterator's own getters read the value it stands on: they must answer what the
// object's getters answer for the same handle, conversions and failures included.
TEST(DynamicObjectIterator, ReadsTheCurrentValueAsTheObjectDoes) {
  namespace type = nox::utils::type;
  DynamicObject object = makeSample();
  object.setReal(object.addChild("a", "r"), 2.75);
  object.setBool(object.addChild("a", "t"), true);
  object.setBool(object.addChild("a", "f"), false);
  object.setString(object.addChild("a", "s"), "text");
  int read = 0;
  for (DynamicObjectIterator it(object, 0); !it.next().end(); ++read) {
    const unsigned int property = it.getProperty();
    const std::string key(it.getKey(), it.getKeyLength());
    ASSERT_EQ(it.getType(), object.getType(property)) << key;
    switch (it.getType()) {
      case type::integer:
      case type::real:
        EXPECT_EQ(it.getInt(), object.getInt(property)) << key;
        EXPECT_EQ(it.getReal(), object.getReal(property)) << key;
        break;
      case type::boolean:
        EXPECT_EQ(it.getBool(), object.getBool(property)) << key;
        break;
      case type::string:
        EXPECT_STREQ(it.getString(), object.getString(property)) << key;
        break;
      default:
        break;
    }
  }
  EXPECT_EQ(read, 12);

  nox::test::AssertionRecorder recorder;
  DynamicObjectIterator it(object, object.getProperty("a"));
  it.next();  // a.b, an integer
  EXPECT_EQ(it.getString(), nullptr);
  EXPECT_FALSE(it.getBool());
  EXPECT_EQ(recorder.messages(),
            (std::vector<std::string>{"Not a string or a compatible type", "Not a boolean or a compatible type"}));
  while (!it.end()) it.next();
  recorder.clear();
  EXPECT_EQ(it.getType(), nox::utils::type::null);
  EXPECT_EQ(it.getInt(), 0);
  EXPECT_EQ(recorder.messages(), (std::vector<std::string>{"Invalid property", "Invalid property"}));
}
