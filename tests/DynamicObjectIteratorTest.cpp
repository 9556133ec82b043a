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
