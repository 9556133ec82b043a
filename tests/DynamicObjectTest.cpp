#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/BlockAllocator.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/details/SpareBlocks.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/AssertionRecorder.h"

using nox::utils::AbstractObjectBuilder;
using nox::utils::DynamicObject;
using nox::utils::DynamicObjectIterator;
using nox::utils::DynamicValue;
using nox::utils::StringTable;
using Node = nox::utils::details::DynamicObjectNode;
namespace type = nox::utils::type;

namespace {

// Writes a property as compact JSON-like text through visitTrie.
class TextBuilder : public AbstractObjectBuilder {
 public:
  using AbstractObjectBuilder::objectChild;
  using AbstractObjectBuilder::string;

  bool null() override { return put("null"); }
  bool boolean(bool value) override { return put(value ? "true" : "false"); }
  bool integer(std::int64_t value) override { return put(std::to_string(value)); }
  bool real(double value) override { return put(std::to_string(value)); }
  bool string(const char* text, unsigned int length) override { return put("\"" + std::string(text, length) + "\""); }
  bool beginObject() override { return open('{'); }
  bool objectChild(const char* key, unsigned int length) override {
    separate();
    text += std::string(key, length) + ":";
    return true;
  }
  bool endObject() override { return close('}'); }
  bool beginArray() override { return open('['); }
  bool arrayChild() override {
    separate();
    return true;
  }
  bool endArray() override { return close(']'); }

  std::string text;

 private:
  bool put(const std::string& value) {
    text += value;
    return true;
  }
  bool open(char bracket) {
    text += bracket;
    first_.push_back(true);
    return true;
  }
  bool close(char bracket) {
    text += bracket;
    first_.pop_back();
    return true;
  }
  void separate() {
    if (!first_.back()) text += ',';
    first_.back() = false;
  }
  std::vector<bool> first_;
};

std::string textOf(const DynamicObject& object, unsigned int property = 0) {
  TextBuilder builder;
  object.visitTrie(property != 0 ? property : object.getRoot(), builder);
  return builder.text;
}

std::vector<std::string> childKeys(const DynamicObject& object, unsigned int property, unsigned int maxDepth = 0) {
  std::vector<std::string> keys;
  for (DynamicObjectIterator it(object, property, maxDepth); !it.next().end();) keys.emplace_back(it.getKey());
  return keys;
}

using Keys = std::vector<std::string>;

}  // namespace

TEST(DynamicObject, NewObjectHoldsANullRootInThreeNodes) {
  DynamicObject object;
  EXPECT_EQ(object.countUsedNodes(), 3u);
  EXPECT_EQ(object.getRoot(), 2u);
  EXPECT_EQ(object.getProperty("", 0u), 2u);
  EXPECT_EQ(object.getType(object.getRoot()), type::null);
  EXPECT_TRUE(object.empty());
  EXPECT_TRUE(object.isOwningStringTable());
  EXPECT_EQ(object.getBlockAllocator().getBlockSize(), 128u);
  EXPECT_EQ(object.getStringTable().getSeed(), 100u);
  // Node 1 only leads to the root terminator.
  EXPECT_EQ(object.inspectNode(1)->split.splitByte, 7);
  EXPECT_EQ(object.inspectNode(1)->split.equal, 2u);
  EXPECT_TRUE(object.inspectNode(3)->isValueNode());
}

TEST(DynamicObject, KeysAreSharedPrefixesOrderedAsSignedBytes) {
  DynamicObject object;
  const unsigned int a = object.addChild(object.getRoot(), "a");
  const unsigned int used = object.countUsedNodes();
  const unsigned int ab = object.addChild(object.getRoot(), "ab");
  EXPECT_EQ(object.countUsedNodes(), used + 3);  // byte b, terminator, value

  // Below the shared node of byte a, the terminator of "a" orders before byte b.
  const Node* terminatorOfA = object.inspectNode(a);
  EXPECT_EQ(terminatorOfA->split.splitByte, 0);
  EXPECT_EQ(object.inspectNode(terminatorOfA->split.greater)->split.splitByte, 'b');
  EXPECT_EQ(object.inspectNode(object.inspectNode(terminatorOfA->split.greater)->split.equal), object.inspectNode(ab));

  object.addChild(object.getRoot(), "b");
  object.addChild(object.getRoot(), "\xC3\xA9");
  EXPECT_EQ(childKeys(object, 0), (Keys{"\xC3\xA9", "a", "ab", "b"}));
  EXPECT_EQ(object.getChild(object.getRoot(), 1u), a);
  EXPECT_EQ(object.getChild(object.getRoot(), 2u), ab);
  EXPECT_EQ(object.getChild(object.getRoot(), 4u), 0u);

  // Erasing "ab" frees exactly its own three nodes.
  EXPECT_TRUE(object.eraseChild(object.getRoot(), "ab"));
  EXPECT_EQ(object.countUsedNodes(), used + 3 + 4);  // b and the two bytes of é
  EXPECT_EQ(object.getProperty("a"), a);
}

TEST(DynamicObject, FreedNodesAreReusedBeforeTheBumpCounterMoves) {
  DynamicObject object;
  const unsigned int xa = object.addChild(object.getRoot(), "xa");
  object.addChild(object.getRoot(), "y");
  const unsigned int used = object.countUsedNodes();
  // Byte x stays: byte y hangs from it. Byte a, the terminator and the value go.
  object.eraseChild(object.getRoot(), "xa");
  EXPECT_EQ(object.countUsedNodes(), used - 3);
  // The same three nodes come back from the free list, in the same roles.
  EXPECT_EQ(object.addChild(object.getRoot(), "xb"), xa);
  EXPECT_EQ(object.countUsedNodes(), used);

  // The most recently carved nodes go back to the bump counter instead.
  const unsigned int w = object.addChild(object.getRoot(), "w");
  object.eraseChild(object.getRoot(), "w");
  EXPECT_EQ(object.countUsedNodes(), used);
  EXPECT_EQ(object.addChild(object.getRoot(), "w"), w);
}

TEST(DynamicObject, KeySyntax) {
  nox::test::AssertionRecorder recorder;
  char buffer[16] = {};
  EXPECT_EQ(DynamicObject::formatArrayKey(buffer, 0), 3u);
  EXPECT_EQ(std::string(buffer, 3), "[0]");
  EXPECT_EQ(DynamicObject::formatArrayKey(buffer, 99999), 7u);
  EXPECT_EQ(std::string(buffer, 7), "[99999]");
  EXPECT_EQ(recorder.count(), 0u);
  EXPECT_EQ(DynamicObject::formatArrayKey(buffer, 100000), 8u);
  EXPECT_EQ(std::string(buffer, 8), "[100000]");
  EXPECT_EQ(recorder.last(), "Array indices must be less than 100000.");
  EXPECT_EQ(DynamicObject::getMaximumArraySize(), 100000u);

  EXPECT_FALSE(DynamicObject::checkKey("", 0));
  EXPECT_FALSE(DynamicObject::checkKey("a.b", 3));
  EXPECT_FALSE(DynamicObject::checkKey("a[", 2));
  EXPECT_FALSE(DynamicObject::checkKey("b]", 2));
  EXPECT_TRUE(DynamicObject::checkKey("a b", 3));
  EXPECT_TRUE(DynamicObject::checkKey("\xC3\xA9\xFF", 3));
  EXPECT_TRUE(DynamicObject::checkKey("a.b", 1));  // only the first `length` bytes count

  DynamicObject object;
  const unsigned int list = object.addChild(object.getRoot(), "list");
  object.resize(list, 2);
  object.setInt(object.addChild(object.getChild(list, 1u), "x"), 4);
  EXPECT_EQ(object.getInt("list[1].x"), 4);
  EXPECT_TRUE(object.hasProperty("list[0]"));
  EXPECT_FALSE(object.hasProperty("list[2]"));
  EXPECT_FALSE(object.hasProperty("list[01]"));
  EXPECT_FALSE(object.hasProperty("lis"));
}

TEST(DynamicObject, AddingChildren) {
  nox::test::AssertionRecorder recorder;
  DynamicObject object;
  const unsigned int root = object.getRoot();
  const unsigned int a = object.addChild(root, ".a");
  EXPECT_EQ(object.addChild(root, "a"), a);
  EXPECT_EQ(object.countChildren(root), 1u);
  EXPECT_EQ(object.getType(root), type::object);
  EXPECT_EQ(recorder.count(), 0u);

  // A null parent becomes an object; a scalar parent refuses.
  const unsigned int b = object.addChild("a", "b");
  EXPECT_EQ(object.getType(a), type::object);
  EXPECT_EQ(object.countChildren("a"), 1u);
  EXPECT_EQ(object.getProperty("a.b"), b);
  object.setInt(b, 1);
  EXPECT_EQ(object.addChild(b, "c"), 0u);
  EXPECT_EQ(recorder.last(), "The given property is not an object.");

  EXPECT_EQ(object.addChild(a, "", 0u), 0u);
  EXPECT_EQ(object.countChildren(a), 1u);
  const unsigned int odd = object.addChild(a, "x]y");
  EXPECT_EQ(recorder.last(), "The given child key, x]y is invalid.");
  EXPECT_NE(odd, 0u);
  EXPECT_EQ(object.countChildren(a), 2u);

  // A zero byte ends a key: such a name is no child, and no path leads through one.
  const std::size_t reported = recorder.count();
  EXPECT_EQ(object.addChild(root, "a\0b", 3u), 0u);
  EXPECT_EQ(object.getProperty("a\0b", 3u), 0u);
  EXPECT_FALSE(object.eraseChild(root, "a\0b", 3u));
  EXPECT_EQ(recorder.count(), reported);
  EXPECT_EQ(object.renameChild(root, "a", 1u, "x\0", 2u), 0u);
  EXPECT_EQ(recorder.last().rfind("The given child key, 'x", 0), 0u);  // the message ends at the zero byte

  EXPECT_EQ(object.getChild(a, "b"), b);
  EXPECT_TRUE(object.hasChild("a", "b"));
  EXPECT_FALSE(object.hasChild("a", "bb"));
  EXPECT_FALSE(object.hasChild("nowhere", "b"));
  EXPECT_EQ(object.getChild(root, "a"), a);
}

TEST(DynamicObject, ScalarValues) {
  nox::test::AssertionRecorder recorder;
  DynamicObject object;
  const unsigned int flag = object.addChild(object.getRoot(), "flag");
  object.setBool(flag, true);
  unsigned int valueHandle = object.inspectNode(flag)->split.equal;
  EXPECT_EQ(object.inspectNode(valueHandle)->getPayload(), 0u);  // booleans are stored inverted
  EXPECT_TRUE(object.getBool(flag));
  object.setBool("flag", false);
  EXPECT_EQ(object.inspectNode(valueHandle)->getPayload(), 1u);
  EXPECT_FALSE(object.getBool("flag"));
  EXPECT_EQ(recorder.count(), 0u);
  EXPECT_EQ(object.getInt(flag), 0);
  EXPECT_EQ(recorder.last(), "Not an integer or a compatible type");

  object.setReal(flag, -2.75);
  EXPECT_EQ(object.getInt(flag), -2);
  object.setInt(flag, 7);
  EXPECT_EQ(object.getReal(flag), 7.0);
  EXPECT_FALSE(object.getBool(flag));
  EXPECT_EQ(recorder.last(), "Not a boolean or a compatible type");
  EXPECT_EQ(object.getString(flag), nullptr);
  EXPECT_EQ(recorder.last(), "Not a string or a compatible type");
  object.setString(flag, "text");
  EXPECT_STREQ(object.getString("flag"), "text");
  EXPECT_EQ(object.getStringHash(flag), object.getStringTable().add("text", nullptr));
  EXPECT_EQ(object.getReal(flag), 0.0);
  EXPECT_EQ(recorder.last(), "Not a real or a compatible type");

  DynamicValue value;
  object.retrieveValue(flag, value);
  EXPECT_EQ(value, DynamicValue("text"));
  object.setValue(flag, DynamicValue(std::int64_t{-5}));
  EXPECT_EQ(object.getInt(flag), -5);
  object.setValue("flag", DynamicValue());
  EXPECT_EQ(object.getType(flag), type::null);
  object.retrieveValue("flag", value);
  EXPECT_EQ(value, DynamicValue());
  object.setBool(flag, true);
  object.retrieveValue(flag, value);
  EXPECT_EQ(value, DynamicValue(true));

  // Type compatibility answers for the property's current type.
  EXPECT_TRUE(object.isTypeCompatible(flag, type::boolean));
  EXPECT_FALSE(object.isTypeCompatible(flag, type::integer));
  EXPECT_TRUE(object.isTypeCompatible("missing", type::array));
  EXPECT_TRUE(object.isTypeCompatible(object.getRoot(), type::object));
  EXPECT_FALSE(object.isTypeCompatible(object.getRoot(), type::array));
}

TEST(DynamicObject, InvalidAddressesAreAssertionFailures) {
  nox::test::AssertionRecorder recorder;
  DynamicObject object;
  EXPECT_EQ(object.getInt(0u), 0);
  EXPECT_EQ(recorder.last(), "Invalid property");
  EXPECT_EQ(object.getType(1u), type::null);  // node 1 is no property
  EXPECT_EQ(recorder.last(), "Invalid property");
  EXPECT_EQ(object.getInt("nope"), 0);
  EXPECT_EQ(recorder.last(), "Unable to find property for the key 'nope'");
  EXPECT_EQ(object.getProperty(static_cast<const char*>(nullptr)), 0u);
  EXPECT_EQ(recorder.last(), "Null string given as a key");
  EXPECT_EQ(object.addChild(object.getRoot(), nullptr, 1u), 0u);
  EXPECT_EQ(recorder.last(), "Null string given as a key");
  EXPECT_EQ(object.getType(1000u), type::null);
  EXPECT_EQ(recorder.messages()[recorder.count() - 2], "Block index out of range");
  EXPECT_FALSE(object.hasProperty("nope"));
  const std::size_t reported = recorder.count();
  EXPECT_FALSE(object.eraseChild(object.getRoot(), "nope"));
  EXPECT_EQ(recorder.count(), reported);
}

TEST(DynamicObject, ArraysResizeAndEraseElements) {
  nox::test::AssertionRecorder recorder;
  DynamicObject object;
  const unsigned int list = object.addChild(object.getRoot(), "list");
  EXPECT_TRUE(object.resize(list, 3));
  EXPECT_EQ(object.getType(list), type::array);
  EXPECT_EQ(textOf(object, list), "[null,null,null]");
  EXPECT_EQ(object.getType("list[2]"), type::null);
  EXPECT_TRUE(object.resize(list, 0));
  EXPECT_EQ(object.getType(list), type::null);
  EXPECT_FALSE(object.hasProperty("list[0]"));
  EXPECT_FALSE(object.resize(list, 100000));
  EXPECT_EQ(recorder.count(), 0u);

  // [10, 20, {v: 30}] without element 1: the element holding 30 moves down whole.
  object.resize(list, 3);
  object.setInt(object.getChild(list, 0u), 10);
  object.setInt(object.getChild(list, 1u), 20);
  object.setInt(object.addChild(object.getChild(list, 2u), "v"), 30);
  const unsigned int used = object.countUsedNodes();
  EXPECT_TRUE(object.eraseChild(list, 1u));
  EXPECT_EQ(textOf(object, list), "[10,{v:30}]");
  EXPECT_EQ(object.getInt("list[1].v"), 30);
  EXPECT_FALSE(object.hasProperty("list[2]"));
  EXPECT_EQ(object.countChildren(list), 2u);
  EXPECT_LT(object.countUsedNodes(), used);

  EXPECT_TRUE(object.eraseChild(list, 5u));
  EXPECT_EQ(textOf(object, list), "[10,{v:30}]");
  const unsigned int nothing = object.addChild(object.getRoot(), "nothing");
  EXPECT_TRUE(object.eraseChild(nothing, 0u));
  EXPECT_EQ(recorder.count(), 0u);
  EXPECT_FALSE(object.eraseChild(object.getRoot(), 0u));
  EXPECT_EQ(recorder.last(), "Not an array.");
  object.setInt(nothing, 1);
  EXPECT_FALSE(object.resize(nothing, 2));
  EXPECT_EQ(recorder.last(), "Can't resize a property that is not an array.");

  // Elements enumerate in the textual order of their keys.
  object.resize(list, 11);
  EXPECT_EQ(childKeys(object, list)[1], "[10]");
  EXPECT_EQ(object.getChild(list, 10u), object.getProperty("list[10]"));
}

TEST(DynamicObject, ErasingAndResettingChildren) {
  DynamicObject object;
  const unsigned int root = object.getRoot();
  const unsigned int a = object.addChild(root, "a");
  object.setInt(object.addChild(a, "only"), 1);
  EXPECT_TRUE(object.eraseChild(a, "only"));
  // An object whose last child goes is null again.
  EXPECT_EQ(object.getType(a), type::null);
  EXPECT_EQ(object.countChildren(a), 0u);

  const unsigned int nested = object.addChild(object.addChild(a, "b"), "c");
  object.resize(object.addChild(nested, "list"), 4);
  object.setString(object.addChild(a, "s"), "text");
  const unsigned int beforeSet = object.countUsedNodes();
  object.setInt(a, 3);  // drops every descendant first
  EXPECT_EQ(object.countChildren(a), 0u);
  EXPECT_FALSE(object.hasProperty("a.b"));
  EXPECT_LT(object.countUsedNodes(), beforeSet);

  EXPECT_TRUE(object.eraseChild("", "a"));
  EXPECT_EQ(object.getType(root), type::null);
  EXPECT_TRUE(object.empty());
  EXPECT_EQ(object.countUsedNodes(), 3u);
}

// The low-level erasure removes one key's value and the trie nodes no other key needs,
// and leaves both the key's descendants and its parent's count alone.
TEST(DynamicObject, ErasingOneKeyPrunesOnlyItsOwnNodes) {
  DynamicObject object;
  const unsigned int root = object.getRoot();
  const unsigned int a = object.addChild(root, "a");
  object.setInt(object.addChild(a, "xy"), 1);
  const unsigned int withoutXz = object.countUsedNodes();
  object.setInt(object.addChild(object.addChild(a, "xz"), "deep"), 3);
  const unsigned int withDeep = object.countUsedNodes();

  EXPECT_FALSE(object.eraseProperty(a, ".nothing", 8));
  EXPECT_EQ(object.countUsedNodes(), withDeep);
  // "a.xz.deep" keeps the nodes of ".xz" alive, so only the value goes.
  EXPECT_TRUE(object.eraseProperty(a, ".xz", 3));
  EXPECT_FALSE(object.hasProperty("a.xz"));
  EXPECT_EQ(object.getInt("a.xz.deep"), 3);
  EXPECT_EQ(object.getInt("a.xy"), 1);
  EXPECT_EQ(object.countChildren(a), 2u);
  EXPECT_TRUE(object.eraseProperty(a, ".xz.deep", 8));
  // Every node that only "a.xz" and "a.xz.deep" needed is gone, none of "a.xy"'s.
  EXPECT_EQ(object.countUsedNodes(), withoutXz);
  EXPECT_EQ(object.getInt("a.xy"), 1);
}

TEST(DynamicObject, RenamingMovesValueAndSubtree) {
  nox::test::AssertionRecorder recorder;
  DynamicObject object;
  const unsigned int root = object.getRoot();
  const unsigned int old = object.addChild(root, "old");
  object.setString(object.addChild(old, "s"), "text");
  object.resize(object.addChild(old, "list"), 2);
  object.setInt("old.list[1]", 5);
  object.setReal(object.addChild(root, "other"), 1.5);

  const unsigned int renamed = object.renameChild(root, "old", "new");
  EXPECT_NE(renamed, 0u);
  EXPECT_EQ(object.getProperty("new"), renamed);
  EXPECT_FALSE(object.hasProperty("old"));
  EXPECT_STREQ(object.getString("new.s"), "text");
  EXPECT_EQ(object.getInt("new.list[1]"), 5);
  EXPECT_EQ(object.countChildren(root), 2u);
  EXPECT_EQ(recorder.count(), 0u);

  // Arrays keep their elements; a prefix of the old name is a fine new name.
  EXPECT_NE(object.renameChild("new", "list", "l"), 0u);
  EXPECT_EQ(object.getInt("new.l[1]"), 5);
  EXPECT_EQ(object.renameChild(root, "other", "other"), object.getProperty("other"));

  EXPECT_EQ(object.renameChild(root, "new", "other"), 0u);
  EXPECT_EQ(recorder.last(), "The given property already has a child named 'other'.");
  EXPECT_EQ(object.renameChild(root, "gone", "x"), 0u);
  EXPECT_EQ(recorder.last(), "The given property has no child named 'gone'.");
  EXPECT_EQ(object.renameChild(root, "new", "a.b"), 0u);
  EXPECT_EQ(recorder.last(), "The given child key, 'a.b' is invalid.");
  EXPECT_EQ(object.renameChild(root, "new", ""), 0u);
  EXPECT_EQ(recorder.last(), "No given name for the child to rename.");
  EXPECT_EQ(object.renameChild("other", "x", "y"), 0u);
  EXPECT_EQ(recorder.last(), "The given property is not an object having children.");

  // Nothing of the moved subtrees is left behind.
  object.resetProperty(root);
  EXPECT_EQ(object.countUsedNodes(), 3u);
}

TEST(DynamicObject, NamesThatExtendAPropertyStayOutOfItsChildren) {
  DynamicObject object;
  const unsigned int root = object.getRoot();
  // Siblings inserted before the shorter name, with bytes on both sides of "." and "[".
  for (const char* name : {"a-", "a\xC3\xA9", "a~"}) object.setInt(object.addChild(root, name), 1);
  const unsigned int a = object.addChild(root, "a");
  object.setInt(object.addChild(a, "x"), 2);
  EXPECT_EQ(object.getInt("a.x"), 2);
  EXPECT_EQ(childKeys(object, a), (Keys{"x"}));
  EXPECT_EQ(textOf(object, a), "{x:2}");
  // By index the walk meets every key that continues "a", as it always has.
  EXPECT_EQ(object.getChild(a, 2u), object.getProperty("a.x"));
  EXPECT_EQ(object.getChild(a, 3u), object.getProperty("a~"));

  object.resetProperty(a);
  EXPECT_EQ(object.getType(a), type::null);
  object.resize(a, 2);
  EXPECT_TRUE(object.hasProperty("a[1]"));
  for (const char* name : {"a", "a-", "a\xC3\xA9", "a~"}) EXPECT_TRUE(object.eraseChild(root, name));
  EXPECT_EQ(object.countUsedNodes(), 3u);
}

TEST(DynamicObject, CopiesShareNothingButWhatTheyAreGiven) {
  DynamicObject original;
  original.setString(original.addChild(original.getRoot(), "s"), "text");
  original.resize(original.addChild(original.getRoot(), "list"), 2);
  const std::string text = textOf(original);

  DynamicObject copy(original);
  EXPECT_TRUE(copy.isOwningStringTable());
  EXPECT_NE(&copy.getStringTable(), &original.getStringTable());
  EXPECT_EQ(textOf(copy), text);
  EXPECT_EQ(copy.getProperty("list[1]"), original.getProperty("list[1]"));
  copy.setInt("s", 1);
  EXPECT_STREQ(original.getString("s"), "text");

  const DynamicObject shared{DynamicObject::Ref(original)};
  EXPECT_FALSE(shared.isOwningStringTable());
  EXPECT_EQ(&shared.getBlockAllocator(), &original.getBlockAllocator());
  EXPECT_EQ(textOf(shared), text);

  DynamicObject::NodeAllocator allocator(16);
  StringTable strings(0);
  DynamicObject assigned(allocator, strings);
  assigned = original;  // other block size and table: rebuilt property by property
  EXPECT_EQ(textOf(assigned), text);
  EXPECT_EQ(&assigned.getStringTable(), &strings);
  copy = original;
  EXPECT_EQ(textOf(copy), text);
  copy = copy;
  EXPECT_EQ(textOf(copy), text);

  copy.clear();
  EXPECT_TRUE(copy.empty());
  EXPECT_EQ(copy.countUsedNodes(), 3u);
}

TEST(DynamicObject, PutAndRetrieveCopySubtrees) {
  DynamicObject source;
  const unsigned int tree = source.addChild(source.getRoot(), "tree");
  source.setString(source.addChild(tree, "name"), "leaf");
  source.setBool(source.addChild(tree, "flag"), false);
  source.resize(source.addChild(tree, "list"), 2);
  source.setReal("tree.list[0]", 0.5);

  DynamicObject::NodeAllocator allocator(8);
  StringTable strings(7);
  DynamicObject target(allocator, strings);
  const unsigned int slot = target.addChild(target.getRoot(), "slot");
  target.setInt(target.addChild(slot, "stale"), 1);
  EXPECT_TRUE(target.put(slot, source, "tree"));
  EXPECT_EQ(textOf(target, slot), textOf(source, tree));
  EXPECT_STREQ(target.getString("slot.name"), "leaf");

  DynamicObject whole;
  EXPECT_TRUE(source.retrieve(tree, whole));
  EXPECT_EQ(textOf(whole), textOf(source, tree));

  // Into its own subtree: the copy reads a snapshot.
  EXPECT_TRUE(source.put(source.getProperty("tree.list[1]"), source, tree));
  EXPECT_EQ(textOf(source, tree),
            "{flag:false,list:[0.500000,{flag:false,list:[0.500000,null],name:\"leaf\"}],name:\"leaf\"}");
}

TEST(DynamicObject, BlocksReturnToTheSharedAllocator) {
  nox::test::AssertionRecorder recorder;
  DynamicObject::NodeAllocator allocator(4);
  StringTable strings(0);
  {
    DynamicObject object(allocator, strings);
    for (int i = 0; i < 10; ++i) object.addChild(object.getRoot(), std::to_string(i).c_str());
    EXPECT_EQ(allocator.countHandedOutBlocks(), (object.countUsedNodes() + 3) / 4);
  }
  EXPECT_EQ(allocator.countHandedOutBlocks(), 0u);
  const std::size_t returned = allocator.countReturnedBlocks();
  DynamicObject reuse(allocator, strings);
  EXPECT_EQ(allocator.countReturnedBlocks(), returned - 1);

  Node stranger[4];
  allocator.releaseBlock(stranger);
  EXPECT_EQ(recorder.last(), "unable to find address among allocated blocks, unable to free");
  EXPECT_EQ(recorder.assertions().back().file, "nox/utils/BlockAllocator");
}

TEST(DynamicObject, BlocksOfAGoneAllocatorServeTheNextOne) {
  using nox::utils::details::SpareBlocks;
  // A block length no other test uses, so that the blocks met here are our own.
  constexpr unsigned int length = 3;
  const std::size_t before = SpareBlocks::countBytes();
  Node* first;
  {
    DynamicObject::NodeAllocator allocator(length);
    first = allocator.acquireBlock();
  }
  EXPECT_EQ(SpareBlocks::countBytes(), before + length * sizeof(Node));
  DynamicObject::NodeAllocator next(length);
  EXPECT_EQ(next.acquireBlock(), first);
  EXPECT_EQ(SpareBlocks::countBytes(), before);

  // What does not fit goes back to the library allocator.
  const std::size_t huge = SpareBlocks::capacityBytes + 1;
  SpareBlocks::give(NOX_ALLOCATE(huge), huge);
  EXPECT_EQ(SpareBlocks::countBytes(), before);
}
