#include <nox/allocator/Allocator.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/FileInputOutput.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/impl/ProtobufDynamicObjectBuilder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/LiveBlocks.h"
#include "support/LoggedErrors.h"

namespace {

using nox::test::errorMessages;
using nox::test::expectOnlyError;

using nox::utils::AbstractObjectBuilder;
using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::DynamicObjectBuilder;
using nox::utils::DynamicObjectIterator;
using nox::utils::FileInputOutput;
using nox::utils::MemoryInputOutput;
using nox::utils::ProtobufDynamicObjectBuilder;
using ::testing::ElementsAre;
using ::testing::StartsWith;
namespace error = nox::utils::error;
namespace type = nox::utils::type;

std::string toBinary(const DynamicObject& object, BufferLogger* logger = nullptr) {
  unsigned int size = 12345;
  char* bytes = nox::utils::serializeDynamicObject(size, object, logger);
  if (bytes == nullptr) return "<failed>";
  std::string binary(bytes, size);
  NOX_DEALLOCATE(bytes);
  return binary;
}

bool fromBinary(const std::string& bytes, DynamicObject& object, BufferLogger* logger = nullptr) {
  return nox::utils::deserializeDynamicObject(bytes.data(), static_cast<unsigned int>(bytes.size()), object, logger);
}

// ---- Hand-made wire format, for messages the writer never produces.

std::string varint(std::uint64_t value) {
  std::string bytes;
  for (; value >= 0x80; value >>= 7) bytes += static_cast<char>((value & 0x7f) | 0x80);
  return bytes + static_cast<char>(value);
}
std::string numberField(int number, std::uint64_t value) { return varint(number << 3) + varint(value); }
std::string messageField(int number, const std::string& payload) {
  return varint((number << 3) | 2) + varint(payload.size()) + payload;
}
std::string version(int major, int minor, int patch) {
  return messageField(1, numberField(1, major) + numberField(2, minor) + numberField(3, patch));
}
std::string withRoot(const std::string& property) { return version(0, 4, 0) + messageField(2, property); }

// ---- Equality of two trees, where an empty object may read back as null.

bool isEmptyContainer(const DynamicObject& object, unsigned int property) {
  type::Type kind = object.getType(property);
  return kind == type::null || ((kind == type::object || kind == type::array) && object.countChildren(property) == 0);
}

::testing::AssertionResult sameTree(const DynamicObject& a, unsigned int pa, const DynamicObject& b, unsigned int pb,
                                    const std::string& path) {
  if (isEmptyContainer(a, pa) && isEmptyContainer(b, pb)) return ::testing::AssertionSuccess();
  if (a.getType(pa) != b.getType(pb)) return ::testing::AssertionFailure() << path << ": types differ";
  switch (a.getType(pa)) {
    case type::integer:
      if (a.getInt(pa) == b.getInt(pb)) return ::testing::AssertionSuccess();
      break;
    case type::real: {
      const double ra = a.getReal(pa);
      const double rb = b.getReal(pb);
      if (std::memcmp(&ra, &rb, sizeof ra) == 0) return ::testing::AssertionSuccess();
      break;
    }
    case type::boolean:
      if (a.getBool(pa) == b.getBool(pb)) return ::testing::AssertionSuccess();
      break;
    case type::string:
      if (std::string(a.getString(pa)) == b.getString(pb)) return ::testing::AssertionSuccess();
      break;
    case type::array:
      if (a.countChildren(pa) != b.countChildren(pb)) break;
      for (unsigned int i = 0; i < a.countChildren(pa); ++i) {
        auto same = sameTree(a, a.getChild(pa, i), b, b.getChild(pb, i), path + "[" + std::to_string(i) + "]");
        if (!same) return same;
      }
      return ::testing::AssertionSuccess();
    case type::object: {
      DynamicObjectIterator ia(a, pa, 0);
      DynamicObjectIterator ib(b, pb, 0);
      while (!ia.next().end() & !ib.next().end()) {
        std::string key(ia.getKey(), ia.getKeyLength());
        if (key != std::string(ib.getKey(), ib.getKeyLength())) break;
        auto same = sameTree(a, ia.getProperty(), b, ib.getProperty(), path + "." + key);
        if (!same) return same;
      }
      if (ia.end() && ib.end()) return ::testing::AssertionSuccess();
      break;
    }
    default:
      return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << path << ": values differ";
}

::testing::AssertionResult sameTree(const DynamicObject& a, const DynamicObject& b) {
  return sameTree(a, a.getRoot(), b, b.getRoot(), "<root>");
}

// UTF-8 text of up to `maximum` random code points, none of them NUL, '.', '[' or ']'.
std::string randomText(std::mt19937_64& random, unsigned int maximum) {
  std::string text;
  for (unsigned int count = static_cast<unsigned int>(random() % (maximum + 1)); count > 0; --count) {
    std::uint32_t code = random() % 3 == 0 ? 1 + random() % 0x10fffe : 'a' + random() % 26;
    if (code == '.' || code == '[' || code == ']' || (code >= 0xd800 && code < 0xe000)) code = '_';
    if (code < 0x80) {
      text += static_cast<char>(code);
    } else if (code < 0x800) {
      text += {static_cast<char>(0xc0 | code >> 6), static_cast<char>(0x80 | (code & 0x3f))};
    } else if (code < 0x10000) {
      text += {static_cast<char>(0xe0 | code >> 12), static_cast<char>(0x80 | ((code >> 6) & 0x3f)),
               static_cast<char>(0x80 | (code & 0x3f))};
    } else {
      text += {static_cast<char>(0xf0 | code >> 18), static_cast<char>(0x80 | ((code >> 12) & 0x3f)),
               static_cast<char>(0x80 | ((code >> 6) & 0x3f)), static_cast<char>(0x80 | (code & 0x3f))};
    }
  }
  return text;
}

// Emits a random value: scalars at the extremes of their ranges, any text, nulls, and
// nested containers while `depth` allows.
void emitRandomValue(std::mt19937_64& random, AbstractObjectBuilder& builder, int depth) {
  auto pick = [&](unsigned int count) { return static_cast<unsigned int>(random() % count); };
  switch (pick(depth > 0 ? 8 : 5)) {
    case 0: {
      static const std::int64_t edges[] = {0, -1, INT64_MIN, INT64_MAX};
      builder.integer(pick(2) ? static_cast<std::int64_t>(random()) : edges[pick(4)]);
      return;
    }
    case 1: {
      double value;
      std::uint64_t bits = random();
      std::memcpy(&value, &bits, sizeof value);
      builder.real(value == value ? value : -0.0);
      return;
    }
    case 2:
      builder.boolean(pick(2) == 1);
      return;
    case 3: {
      std::string value = randomText(random, 12);
      builder.string(value.data(), static_cast<unsigned int>(value.size()));
      return;
    }
    case 4:
      builder.null();
      return;
    case 5:
    case 6: {
      builder.beginObject();
      for (unsigned int i = pick(5); i > 0; --i) {
        // Distinct first characters keep the names of one object distinct.
        std::string key = std::to_string(i) + randomText(random, 6);
        builder.objectChild(key.data(), static_cast<unsigned int>(key.size()));
        emitRandomValue(random, builder, depth - 1);
      }
      builder.endObject();
      return;
    }
    default:
      builder.beginArray();
      for (unsigned int i = pick(5); i > 0; --i) {
        builder.arrayChild();
        emitRandomValue(random, builder, depth - 1);
      }
      builder.endArray();
  }
}

// Nests `depth` objects, each the only child "a" of its parent, around the integer 7.
void chainObjects(DynamicObject& object, unsigned int depth) {
  unsigned int property = object.getRoot();
  for (unsigned int level = 0; level < depth; ++level) property = object.addChild(property, "a");
  object.setInt(property, 7);
}

TEST(ProtobufRoundTrip, RandomTreesComeBackEqual) {
  std::mt19937_64 random(20240611);
  for (int round = 0; round < 300; ++round) {
    DynamicObject original;
    DynamicObjectBuilder builder(original, 0);
    builder.beginObject();
    for (int i = 0; i < 3; ++i) {
      std::string key = "k" + std::to_string(i);
      builder.objectChild(key.c_str());
      emitRandomValue(random, builder, 5);
    }
    builder.endObject();

    BufferLogger logger(true, true, true);
    std::string bytes = toBinary(original, &logger);
    DynamicObject copy;
    ASSERT_TRUE(fromBinary(bytes, copy, &logger)) << round;
    ASSERT_TRUE(logger.getEntries().empty()) << errorMessages(logger)[0];
    ASSERT_TRUE(sameTree(original, copy)) << "round " << round;
    ASSERT_EQ(toBinary(copy), bytes) << round;
  }
}

TEST(ProtobufRoundTrip, NullObjectComesBackEmpty) {
  const std::string bytes = toBinary(DynamicObject());
  // The version 0.4.0, then a root of type Object without children.
  EXPECT_EQ(bytes, withRoot(numberField(1, 5)));
  DynamicObject copy;
  ASSERT_TRUE(fromBinary(bytes, copy));
  EXPECT_TRUE(copy.empty());
}

TEST(ProtobufRoundTrip, StringsKeepBytesThatAreNotText) {
  DynamicObject object;
  object.setString(object.addChild(object.getRoot(), "raw"), "\xff\xfe\x80 \x01");
  DynamicObject copy;
  ASSERT_TRUE(fromBinary(toBinary(object), copy));
  EXPECT_STREQ(copy.getString("raw"), "\xff\xfe\x80 \x01");
}

TEST(ProtobufRoundTrip, ScalarRootAndDeepestNesting) {
  DynamicObject scalar;
  scalar.setString(scalar.getRoot(), "lonely");
  DynamicObject scalarCopy;
  ASSERT_TRUE(fromBinary(toBinary(scalar), scalarCopy));
  EXPECT_STREQ(scalarCopy.getString(scalarCopy.getRoot()), "lonely");

  // Objects cost two message levels each: the deepest chain the writer accepts must parse.
  const unsigned int deepest = ProtobufDynamicObjectBuilder::getMaximumDepth();
  DynamicObject deep;
  chainObjects(deep, deepest);
  DynamicObject deepCopy;
  BufferLogger logger(true, true, true);
  ASSERT_TRUE(fromBinary(toBinary(deep, &logger), deepCopy, &logger)) << errorMessages(logger)[0];
  std::string path = "a";
  for (unsigned int level = 1; level < deepest; ++level) path += ".a";
  EXPECT_EQ(deepCopy.getInt(path.c_str()), 7);

  DynamicObject deeper;
  chainObjects(deeper, deepest + 1);
  EXPECT_EQ(toBinary(deeper, &logger), "<failed>");
  EXPECT_THAT(errorMessages(logger),
              ElementsAre("Maximum nesting depth exceeded: objects and arrays nest at most 127 levels deep."));
}

TEST(ProtobufReader, ChecksTheMajorVersionOnly) {
  const std::string property = numberField(1, 0) + numberField(2, 42);  // Int 42
  BufferLogger logger(true, true, true);
  DynamicObject refused;
  EXPECT_FALSE(fromBinary(version(1, 0, 0) + messageField(2, property), refused, &logger));
  EXPECT_THAT(errorMessages(logger),
              ElementsAre("Error while deserializing: The file originates from a version, v1.0.0, that is not "
                          "compatible with the current version, v0.4.0."));
  EXPECT_EQ(logger.getEntries()[0].error, error::invalidData);
  EXPECT_TRUE(refused.empty());

  DynamicObject accepted;
  ASSERT_TRUE(fromBinary(version(0, 9, 3) + messageField(2, property), accepted));
  EXPECT_EQ(accepted.getInt(accepted.getRoot()), 42);
}

TEST(ProtobufReader, WithoutRootLeavesTheTargetUnchanged) {
  DynamicObject target;
  target.setInt(target.addChild(target.getRoot(), "kept"), 1);
  ASSERT_TRUE(fromBinary(version(0, 4, 0), target));
  EXPECT_EQ(target.countChildren(target.getRoot()), 1u);
  EXPECT_EQ(target.getInt("kept"), 1);
}

TEST(ProtobufReader, RefusesNamesThatAreNotChildNames) {
  for (const std::string& key : {std::string("a.b"), std::string(""), std::string("a\0b", 3)}) {
    const std::string child = messageField(1, key) + messageField(2, numberField(1, 2) + numberField(4, 1));
    BufferLogger logger(true, true, true);
    DynamicObject object;
    EXPECT_FALSE(fromBinary(withRoot(numberField(1, 5) + messageField(7, child)), object, &logger));
    EXPECT_THAT(errorMessages(logger), ElementsAre(StartsWith("Unable to create a child named ")));
  }
}

TEST(ProtobufReader, ReportsPropertiesWithoutTheirValue) {
  struct Case {
    int type;
    const char* message;
  } cases[] = {{0, "Integer property not having an integer value in the protobuf file."},
               {1, "Real property not having a real value in the protobuf file."},
               {2, "Boolean property not having a boolean value in the protobuf file."},
               {3, "String property not having a string value in the protobuf file."}};
  for (const Case& c : cases) {
    BufferLogger logger(true, true, true);
    DynamicObject object;
    EXPECT_FALSE(fromBinary(withRoot(numberField(1, c.type)), object, &logger));
    EXPECT_THAT(errorMessages(logger), ElementsAre(c.message));
    EXPECT_EQ(logger.getEntries()[0].error, error::fileFormatCorrupted);
  }

  BufferLogger logger(true, true, true);
  DynamicObject object;
  EXPECT_FALSE(fromBinary(withRoot(numberField(2, 1)), object, &logger));  // no type
  EXPECT_THAT(errorMessages(logger), ElementsAre("Unable to deserialize a dynamic object: root.type"));
}

TEST(ProtobufReader, RefusesGarbageWithoutCrashingOrLeaking) {
  const auto liveBlocks = nox::test::liveBlocksInUse();
  {
    std::mt19937_64 random(7);
    // No text in the sample: the runtime prints a complaint for each mangled string.
    DynamicObject sample;
    sample.resize(sample.getRoot(), 3);
    sample.setReal(sample.getChild(sample.getRoot(), 0u), 2.5);
    const unsigned int list = sample.getChild(sample.getRoot(), 1u);
    sample.resize(list, 2);
    sample.setInt(sample.getChild(list, 0u), -300);
    sample.setBool(sample.getChild(list, 1u), true);
    const std::string valid = toBinary(sample);
    for (int round = 0; round < 1000; ++round) {
      std::string bytes;
      if (round % 2 == 0) {
        bytes.resize(random() % 80);
        for (char& c : bytes) c = static_cast<char>(random());
      } else {
        bytes = valid;
        for (int flips = 1 + round % 4; flips > 0; --flips) bytes[random() % bytes.size()] ^= 1 << (random() % 8);
        bytes.resize(random() % (bytes.size() + 1));
      }
      DynamicObject object;
      BufferLogger logger(true, true, true);
      if (!fromBinary(bytes, object, &logger)) {
        ASSERT_TRUE(logger.hasErrors());
      }
    }

    // Nesting far beyond the limit is refused by the parser, long before the stack runs out.
    // Built outside in: each level is the Array type, then a field holding the next level.
    std::vector<std::string> prefixes;
    std::size_t inner = numberField(1, 4).size();
    for (int level = 0; level < 100000; ++level) {
      prefixes.push_back(numberField(1, 4) + varint((6 << 3) | 2) + varint(inner));
      inner += prefixes.back().size();
    }
    std::string nested;
    for (auto prefix = prefixes.rbegin(); prefix != prefixes.rend(); ++prefix) nested += *prefix;
    nested += numberField(1, 4);
    BufferLogger logger(true, true, true);
    DynamicObject object;
    EXPECT_FALSE(fromBinary(withRoot(nested), object, &logger));
    EXPECT_THAT(errorMessages(logger), ElementsAre(StartsWith("Unable to deserialize a dynamic object: ")));
  }
  EXPECT_EQ(nox::test::liveBlocksInUse(), liveBlocks);
}

class ProtobufWriter : public ::testing::Test {
 protected:
  ProtobufWriter() : logger_(true, true, true), builder_(output_) { builder_.setLogger(&logger_); }

  MemoryInputOutput output_;
  BufferLogger logger_;
  ProtobufDynamicObjectBuilder builder_;
};

TEST_F(ProtobufWriter, RefusesToEndAnUnfinishedBuild) {
  ASSERT_TRUE(builder_.begin());
  EXPECT_FALSE(builder_.begin());
  expectOnlyError(logger_, "A build is already ongoing.");
  ASSERT_TRUE(builder_.beginObject());
  EXPECT_FALSE(builder_.end());
  expectOnlyError(logger_, "Build not finished");
  // The build goes on and can still be finished.
  ASSERT_TRUE(builder_.objectChild("a"));
  ASSERT_TRUE(builder_.integer(1));
  ASSERT_TRUE(builder_.endObject());
  EXPECT_TRUE(builder_.end());
  EXPECT_FALSE(builder_.end());
  expectOnlyError(logger_, "No build is ongoing.");

  DynamicObject object;
  ASSERT_TRUE(fromBinary(std::string(output_.getData(), output_.getSize()), object));
  EXPECT_EQ(object.getInt("a"), 1);
}

TEST_F(ProtobufWriter, ReportsAStreamThatRefusesTheBytes) {
  FileInputOutput closed("/nonexistent/never-opened.bin");
  EXPECT_FALSE(nox::utils::serializeDynamicObjectToProtobuf(DynamicObject(), closed, &logger_));
  EXPECT_THAT(errorMessages(logger_),
              ElementsAre(StartsWith("Can't write to the io on /nonexistent/never-opened.bin"),
                          "Unable to serialize the given dynamic object: the output stream refused the bytes"));
}

TEST_F(ProtobufWriter, RefusesChildrenOfTheWrongContainer) {
  ASSERT_TRUE(builder_.begin());
  ASSERT_TRUE(builder_.beginArray());
  EXPECT_FALSE(builder_.objectChild("a"));
  expectOnlyError(logger_, "The current property is not an object.");
  ASSERT_TRUE(builder_.arrayChild());
  ASSERT_TRUE(builder_.beginObject());
  EXPECT_FALSE(builder_.arrayChild());
  expectOnlyError(logger_, "The current property is not an array.");
  ASSERT_TRUE(builder_.endObject());
  ASSERT_TRUE(builder_.endArray());
  EXPECT_FALSE(builder_.integer(1));
  expectOnlyError(logger_, "No current property.");
  EXPECT_TRUE(builder_.end());
}

}  // namespace
