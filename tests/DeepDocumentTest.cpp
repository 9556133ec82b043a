// The deepest documents the readers accept, read and then walked in every way the
// library walks an object (write, copy, merge, iterate, test, erase, reset, destroy), on
// a thread whose stack is as small as the HTTP server's worker threads'. No walk may
// need stack in proportion to the depth of the data.
#include <nox/allocator/Allocator.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectCompositePredicate.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/DynamicObjectPropertyComparison.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/impl/ProtobufDynamicObjectBuilder.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/AssertionRecorder.h"
#include "support/SmallStack.h"

namespace {

using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::MemoryInputOutput;
namespace type = nox::utils::type;

// AddressSanitizer gives every frame guard zones; the bound then scales with them.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NOX_TEST_FRAMES_GROW 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(NOX_TEST_FRAMES_GROW)
constexpr std::size_t stackSize = 4 * nox::test::serverWorkerStackSize;
#else
constexpr std::size_t stackSize = nox::test::serverWorkerStackSize;
#endif

// Objects and arrays in turn, `depth` levels, around one string: {"k":[{"k":[..."leaf"...]}]}.
// `path` receives the leaf's property path.
std::string nestedJson(unsigned int depth, std::string& path) {
  std::string open;
  std::string close;
  path.clear();
  for (unsigned int level = 0; level < depth; ++level) {
    const bool object = level % 2 == 0;
    open += object ? "{\"k\":" : "[";
    close.insert(0, object ? "}" : "]");
    path += object ? (path.empty() ? "k" : ".k") : "[0]";
  }
  return open + "\"leaf\"" + close;
}

std::string toJson(const DynamicObject& object) {
  MemoryInputOutput output;
  BufferLogger logger(true, true, true);
  EXPECT_TRUE(nox::utils::serializeDynamicObjectToJson(object, output, &logger));
  return std::string(output.getData(), output.getSize());
}

bool fromJson(const std::string& text, DynamicObject& object) {
  MemoryInputOutput input(text.data(), static_cast<unsigned int>(text.size()));
  BufferLogger logger(true, true, true);
  return nox::utils::deserializeDynamicObjectFromJson(object, input, &logger);
}

std::string toBinary(const DynamicObject& object) {
  unsigned int size = 0;
  char* bytes = nox::utils::serializeDynamicObject(size, object, nullptr);
  if (bytes == nullptr) return std::string();
  std::string binary(bytes, size);
  NOX_DEALLOCATE(bytes);
  return binary;
}

bool fromBinary(const std::string& bytes, DynamicObject& object) {
  return nox::utils::deserializeDynamicObject(bytes.data(), static_cast<unsigned int>(bytes.size()), object, nullptr);
}

// ---- The binary form by hand: arrays nested `depth` deep around the integer 7.

std::string varint(std::uint64_t value) {
  std::string bytes;
  for (; value >= 0x80; value >>= 7) bytes += static_cast<char>((value & 0x7f) | 0x80);
  return bytes + static_cast<char>(value);
}
std::string field(int number, std::uint64_t value) {
  return varint(static_cast<unsigned int>(number) << 3) + varint(value);
}
std::string message(int number, const std::string& payload) {
  return varint((static_cast<unsigned int>(number) << 3) | 2) + varint(payload.size()) + payload;
}

// Objects (two message levels each: the named pair, then its value) or arrays (one
// level) nested `depth` deep around the integer 7; `path` receives the integer's path.
std::string nestedBinary(unsigned int depth, bool objects, std::string& path) {
  std::string property = field(1, 0) + field(2, 7);
  path.clear();
  for (unsigned int level = 0; level < depth; ++level) {
    if (objects) {
      property = field(1, 5) + message(7, message(1, "k") + message(2, property));
      path += path.empty() ? "k" : ".k";
    } else {
      property = field(1, 4) + message(6, property);
      path += "[0]";
    }
  }
  return message(1, field(1, 0) + field(2, 4) + field(3, 0)) + message(2, property);
}

unsigned int countProperties(const DynamicObject& object) {
  unsigned int count = 0;
  for (nox::utils::DynamicObjectIterator walk(object, 0); !walk.next().end();) ++count;
  return count;
}

// Every walk over `object`, whose deepest property `leafPath` holds `leaf`.
void walkEveryWay(DynamicObject& object, const std::string& leafPath, const nox::utils::DynamicValue& leaf) {
  nox::test::AssertionRecorder assertions;
  const unsigned int properties = countProperties(object);
  const std::string binary = toBinary(object);
  ASSERT_FALSE(binary.empty());

  DynamicObject copy(object);
  DynamicObject holder;
  const unsigned int slot = holder.addChild(holder.getRoot(), "body");
  ASSERT_TRUE(holder.put(slot, object));
  ASSERT_TRUE(holder.put(slot, object));  // over the same content, which goes first
  DynamicObject retrieved;
  ASSERT_TRUE(holder.retrieve(slot, retrieved));
  DynamicObject::NodeAllocator otherBlocks(64);
  nox::utils::StringTable otherStrings(3);
  DynamicObject assigned(otherBlocks, otherStrings);
  assigned = object;  // another block size: copied property by property

  nox::utils::DynamicObjectCompositePredicate predicate;
  predicate.addPredicate({leafPath.c_str(), nox::utils::DynamicObjectPropertyComparison::equal, leaf});
  for (const DynamicObject* each : {&object, &copy, &retrieved, &assigned}) {
    EXPECT_EQ(countProperties(*each), properties);
    EXPECT_TRUE(predicate.evaluate(*each, nullptr));
    EXPECT_EQ(toBinary(*each), binary);
  }

  // Erasing the top child, retyping the root, resetting, clearing and destroying each
  // drop the whole depth.
  if (copy.getType(copy.getRoot()) == type::object) {
    EXPECT_TRUE(copy.eraseChild(copy.getRoot(), "k"));
  } else {
    EXPECT_TRUE(copy.eraseChild(copy.getRoot(), 0u));
  }
  EXPECT_EQ(copy.countChildren(copy.getRoot()), 0u);
  EXPECT_EQ(countProperties(copy), 0u);
  retrieved.setInt(retrieved.getRoot(), 1);
  EXPECT_EQ(countProperties(retrieved), 0u);
  holder.resetProperty(slot);
  EXPECT_EQ(countProperties(holder), 1u);
  assigned.clear();
  EXPECT_EQ(assertions.count(), 0u) << assertions.last();
}

}  // namespace

TEST(DeepDocuments, DeepestJsonIsReadAndWalkedOnTheServersStack) {
  std::string leafPath;
  const std::string json = nestedJson(nox::utils::JsonObjectBuilder::getMaximumDepth(), leafPath);
  ASSERT_TRUE(nox::test::runOnStackOf(stackSize, [&] {
    DynamicObject object;
    ASSERT_TRUE(fromJson(json, object));
    EXPECT_STREQ(object.getString(leafPath.c_str()), "leaf");
    EXPECT_EQ(toJson(object), json);
    walkEveryWay(object, leafPath, nox::utils::DynamicValue("leaf"));
    DynamicObject reread;
    ASSERT_TRUE(fromBinary(toBinary(object), reread));
    EXPECT_EQ(toJson(reread), json);
  }));
}

TEST(DeepDocuments, DeepestBinaryFormsAreReadAndWalkedOnTheServersStack) {
  for (bool objects : {true, false}) {
    // The deepest nesting that the binary reader takes, and one level more.
    std::string leafPath;
    unsigned int deepest = 0;
    for (unsigned int depth = 1; depth < 1000; ++depth) {
      DynamicObject probe;
      if (!fromBinary(nestedBinary(depth, objects, leafPath), probe)) break;
      deepest = depth;
    }
    EXPECT_EQ(deepest, nox::utils::ProtobufDynamicObjectBuilder::getMaximumDepth());
    const std::string tooDeep = nestedBinary(deepest + 1, objects, leafPath);
    const std::string bytes = nestedBinary(deepest, objects, leafPath);
    ASSERT_TRUE(nox::test::runOnStackOf(stackSize, [&] {
      DynamicObject refused;
      EXPECT_FALSE(fromBinary(tooDeep, refused));
      DynamicObject object;
      ASSERT_TRUE(fromBinary(bytes, object));
      EXPECT_EQ(object.getInt(leafPath.c_str()), 7);
      walkEveryWay(object, leafPath, nox::utils::DynamicValue(7));
    }));
  }
}
