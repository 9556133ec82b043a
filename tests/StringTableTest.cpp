#include <nox/utils/BufferLogger.h>
#include <nox/utils/ErrorType.h>
#include <nox/utils/HashTable.h>
#include <nox/utils/StringTable.h>

#include "support/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nox::utils::BufferLogger;
using nox::utils::murmurHash64B;
using nox::utils::StringTable;

// Every line "seed=S len=L hex=BYTES hash=H" of the reference file must hash alike,
// whatever the alignment of the bytes.
TEST(StringTableTest, MurmurHash64BMatchesReferenceVectors) {
  std::ifstream file(std::string(NOX_TEST_DATA_DIR) + "/murmurhash64b.txt");
  int checked = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string seed, length, hex, hash;
    fields >> seed >> length >> hex >> hash;
    std::string bytes = "?";  // shifts the text off the string's alignment
    for (std::size_t i = 4; i + 1 < hex.size(); i += 2) {
      bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    ASSERT_EQ(bytes.size() - 1, std::stoul(length.substr(4))) << line;
    EXPECT_EQ(murmurHash64B(bytes.data() + 1, static_cast<unsigned int>(bytes.size() - 1), std::stoul(seed.substr(5))),
              std::stoull(hash.substr(5)))
        << line;
    ++checked;
  }
  EXPECT_GE(checked, 36);
}

TEST(StringTableTest, AddsAndRetrievesUnderTheTableSeed) {
  StringTable table;
  StringTable seeded(100);
  const std::uint64_t abc = table.add("abc", nullptr);
  EXPECT_EQ(abc, 11965292704115218845u);
  EXPECT_EQ(table.add("abc", nullptr), abc);
  EXPECT_EQ(table.add("abcdef", 3, nullptr), abc);
  EXPECT_EQ(table.hash("abc", nullptr), abc);
  EXPECT_EQ(seeded.add("abc", 3, nullptr), 4665051367788383031u);
  EXPECT_STREQ(table.retrieve(abc, nullptr), "abc");
  EXPECT_STREQ(table.retrieve(abc + 1, "default"), "default");

  // Lengths count, not terminators.
  const std::uint64_t embedded = table.add("a\0b", 3, nullptr);
  EXPECT_NE(embedded, table.add("a", nullptr));
  EXPECT_TRUE(table.check("a\0b", 3, embedded, nullptr));
  EXPECT_FALSE(table.check("a", embedded, nullptr));

  // 0 stands for "no string", and the empty text hashes to 0 under seed 0.
  EXPECT_EQ(table.add("", nullptr), 0u);
  EXPECT_STREQ(table.retrieve(0, "none"), "none");
  EXPECT_EQ(seeded.add("", nullptr), 7747924517181603503u);
  EXPECT_STREQ(seeded.retrieve(7747924517181603503u, nullptr), "");
}

TEST(StringTableTest, HashTableRebuildsAtSevenTenthsLoad) {
  nox::utils::HashTable<std::uint64_t, int> table;
  auto keyOf = [](int i) { return std::uint64_t{3} + 10u * i; };  // one chain while there are 10 buckets
  const std::size_t bucketCounts[] = {10, 10, 10, 10, 10, 10, 24, 24};
  for (int i = 0; i < 8; ++i) {
    EXPECT_TRUE(table.insert(keyOf(i), i));
    EXPECT_EQ(table.bucketCount(), bucketCounts[i]) << "after " << i + 1 << " entries";
    for (int j = 0; j <= i; ++j) EXPECT_EQ(table.at(keyOf(j)), j);
  }
  EXPECT_FALSE(table.insert(keyOf(2), 99));
  EXPECT_EQ(table.at(keyOf(2)), 2);

  nox::test::AssertionRecorder recorder;
  EXPECT_EQ(table.at(18446744073709551615u), 0);
  EXPECT_EQ(recorder.last(), "No value registered at 18446744073709551615");
}

// Keys from the whole 64-bit range, the largest and multiples of the bucket counts
// among them, are each found in their bucket through every growth.
TEST(StringTableTest, HashTableFindsKeysOfEveryMagnitude) {
  nox::utils::HashTable<std::uint64_t, int> table;
  std::mt19937_64 random(7);
  std::vector<std::uint64_t> keys = {~std::uint64_t{0}, ~std::uint64_t{0} - 1, 1, 10, 24, 240, 0x8000000000000000u};
  while (keys.size() < 5000) keys.push_back(random() >> (random() % 64));
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    ASSERT_TRUE(table.insert(keys[i], static_cast<int>(i))) << keys[i];
    ASSERT_NE(table.find(keys[i / 2]), nullptr) << keys[i / 2] << " after " << i + 1 << " entries";
  }
  for (std::size_t i = 0; i < keys.size(); ++i) ASSERT_EQ(table.at(keys[i]), static_cast<int>(i));
  std::uint64_t absent = 2;
  while (std::binary_search(keys.begin(), keys.end(), absent)) absent += 7;
  EXPECT_EQ(table.find(absent), nullptr);
}

TEST(StringTableTest, EveryTextSurvivesGrowth) {
  StringTable table;
  std::vector<std::pair<std::string, std::uint64_t>> added;
  for (int i = 0; i < 2000; ++i) {
    std::string text = "key" + std::to_string(i) + std::string(i % 7 == 0 ? 150 : 0, 'x');  // some beyond the pool
    added.emplace_back(text, table.add(text.c_str(), nullptr));
  }
  BufferLogger logger(true, true, true);
  for (const auto& [text, hash] : added) {
    EXPECT_STREQ(table.retrieve(hash, nullptr), text.c_str());
    EXPECT_EQ(table.hash(text.c_str(), &logger), hash);
  }
  EXPECT_TRUE(logger.getEntries().empty());
}

TEST(StringTableTest, CheckReportsCollisionsAndUnregisteredTexts) {
  StringTable table(7);
  table.add("abc", nullptr);
  const std::uint64_t abd = table.add("abd", nullptr);
  BufferLogger logger(true, true, true);
  EXPECT_FALSE(table.check("abc", abd, &logger));
  EXPECT_FALSE(table.check("abc", 12345, &logger));

  ASSERT_EQ(logger.getEntries().size(), 2u);
  const BufferLogger::Entry& collision = logger.getEntries()[0];
  EXPECT_EQ(collision.error, nox::utils::error::stringHashCollision);
  EXPECT_EQ(collision.message, "\"abc\" and \"abd\" (seed=7).");
  EXPECT_EQ(collision.file, "nox/utils/StringTable");
  const BufferLogger::Entry& unregistered = logger.getEntries()[1];
  EXPECT_EQ(unregistered.error, nox::utils::error::invalidConfiguration);
  EXPECT_EQ(unregistered.message, "\"abc\" is not registered with the table.");
}

TEST(StringTableTest, HashOfAnUnregisteredTextAssertsThenLogsThroughCheck) {
  nox::test::AssertionRecorder recorder;
  StringTable table;
  table.add("abc", nullptr);
  BufferLogger logger(true, true, true);
  EXPECT_EQ(table.hash("abd", &logger), 0u);
  EXPECT_EQ(recorder.messages(), (std::vector<std::string>{"\"abd\" does not belong to the table."}));
  ASSERT_EQ(logger.getEntries().size(), 1u);
  EXPECT_EQ(logger.getEntries()[0].error, nox::utils::error::invalidConfiguration);
  EXPECT_EQ(logger.getEntries()[0].message, "\"abd\" is not registered with the table.");
}

TEST(StringTableTest, ContractViolationsAssertAndFail) {
  nox::test::AssertionRecorder recorder;
  StringTable table;
  EXPECT_EQ(table.hash("zzz", 2, nullptr), 0u);
  EXPECT_EQ(table.add(nullptr, nullptr), 0u);
  EXPECT_FALSE(table.check(nullptr, 1, nullptr));
  EXPECT_EQ(table.hash(nullptr, nullptr), 0u);
  EXPECT_TRUE(table.empty());

  const std::uint64_t abc = table.add("abc", nullptr);
  table.setSeed(1);
  EXPECT_EQ(table.getSeed(), 1u);  // the check reports, it does not prevent
  EXPECT_EQ(recorder.messages(),
            (std::vector<std::string>{"\"zz\" does not belong to the table.", "Bad string.", "Bad string.",
                                      "Bad string.", "Can't change the seed of a non-empty table."}));
  table.clear();
  EXPECT_EQ(table.retrieve(abc, nullptr), nullptr);
  table.setSeed(2);
  EXPECT_EQ(recorder.count(), 5u);
  EXPECT_EQ(table.add("abc", nullptr), murmurHash64B("abc", 3, 2));
}

TEST(StringTableTest, CopiesOwnTheirTexts) {
  const std::string longText(200, 'l');
  StringTable original(5);
  const std::uint64_t abc = original.add("abc", nullptr);
  const std::uint64_t longHash = original.add(longText.c_str(), nullptr);
  StringTable copy(original);
  StringTable assigned(9);
  const std::uint64_t old = assigned.add("old", nullptr);
  assigned = original;
  StringTable& self = assigned;
  assigned = self;
  original.clear();
  original.add("xyz", nullptr);  // reuses a recycled string: a shallow copy would now read "xyz"

  for (const StringTable* table : {&copy, &assigned}) {
    EXPECT_EQ(table->getSeed(), 5u);
    EXPECT_STREQ(table->retrieve(abc, nullptr), "abc");
    EXPECT_STREQ(table->retrieve(longHash, nullptr), longText.c_str());
  }
  EXPECT_EQ(assigned.retrieve(old, nullptr), nullptr);
}

}  // namespace
