#include <nox/allocator/Allocator.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/ErrorType.h>
#include <nox/utils/Random.h>
#include <nox/utils/RandomManager.h>
#include <nox/utils/details/Sfmt19937.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

using nox::utils::BufferLogger;
using nox::utils::Random;
using nox::utils::RandomManager;
namespace details = nox::utils::details;

// seed -> (index -> value), from lines "seed=S index=I value=V"; '#' starts a comment.
std::map<unsigned int, std::map<std::uint64_t, std::uint32_t>> loadReferenceOutputs() {
  std::ifstream file(std::string(NOX_TEST_DATA_DIR) + "/sfmt19937_init_by_array.txt");
  std::map<unsigned int, std::map<std::uint64_t, std::uint32_t>> outputs;
  for (std::string line; std::getline(file, line);) {
    unsigned int seed;
    unsigned long long index;
    unsigned long value;
    if (line.empty() || line[0] == '#') continue;
    if (std::sscanf(line.c_str(), "seed=%u index=%llu value=%lu", &seed, &index, &value) == 3) {
      outputs[seed][index] = static_cast<std::uint32_t>(value);
    }
  }
  return outputs;
}

// Checks the outputs of `draw` (called once per index, in order) against the references.
template <class Draw>
void expectReferenceOutputs(const std::map<std::uint64_t, std::uint32_t>& reference, Draw draw) {
  std::uint64_t next = 0;
  for (const auto& [index, value] : reference) {
    for (; next < index; ++next) draw();
    ASSERT_EQ(draw(), value) << "index " << index;
    ++next;
  }
}

std::string serialize(const Random& random) {
  unsigned int length = 0;
  char* text = nox::utils::serializeRandom(length, random, nullptr);
  std::string result = text != nullptr ? std::string(text, length) : std::string();
  NOX_DEALLOCATE(text);
  return result;
}

std::string savedRandom(const std::string& version, const std::string& random) {
  return "version { " + version + " } " + random;
}

const std::string kVersion = "major: 0 minor: 4 patch: 0";

std::string lastError(const BufferLogger& logger) {
  return logger.getEntries().empty() ? std::string() : std::string(logger.getEntries().back().message.c_str());
}

TEST(RandomTest, FirstOutputsMatchTheReferenceGenerator) {
  const auto reference = loadReferenceOutputs();
  ASSERT_EQ(reference.size(), 2u);
  for (const auto& [seed, outputs] : reference) {
    SCOPED_TRACE(seed);
    ASSERT_EQ(outputs.size(), 2010u);
    Random random(seed);
    expectReferenceOutputs(outputs, [&] { return random(); });
  }
}

TEST(RandomTest, PortableAndVectorRegenerationsAgree) {
  const auto reference = loadReferenceOutputs();
  for (const auto& [seed, outputs] : reference) {
    SCOPED_TRACE(seed);
    alignas(16) std::uint32_t portable[details::sfmtStateWords];
    alignas(16) std::uint32_t vector[details::sfmtStateWords];
    details::seedSfmt(portable, seed);
    details::seedSfmt(vector, seed);
    unsigned int index = details::sfmtStateWords;
    expectReferenceOutputs(outputs, [&] {
      if (index == details::sfmtStateWords) {
        details::regenerateSfmtPortable(portable);
        details::regenerateSfmt(vector);
        EXPECT_TRUE(std::equal(portable, portable + details::sfmtStateWords, vector));
        index = 0;
      }
      return portable[index++];
    });
  }
}

TEST(RandomTest, CopiesAreIndependentAndContinueAlike) {
  Random original(77);
  for (int i = 0; i < 700; ++i) original();
  Random copy(original);
  Random assigned(1);
  assigned = original;
  const unsigned int next = original();
  EXPECT_EQ(copy(), next);
  EXPECT_EQ(assigned(), next);
  EXPECT_EQ(copy(), assigned());
  assigned = assigned;
  EXPECT_EQ(copy(), assigned());
}

TEST(RandomTest, RestoredStreamsContinueWhereTheSavedOnesWere) {
  for (int drawn : {0, 1, 623, 624, 625, 1248, 1249, 5000}) {
    SCOPED_TRACE(drawn);
    Random saved(1234);
    for (int i = 0; i < drawn; ++i) saved();
    const std::string text = serialize(saved);
    EXPECT_NE(text.find("count: " + std::to_string(drawn)), std::string::npos) << text;

    Random restored(99);
    for (int i = 0; i < 10; ++i) restored();
    ASSERT_TRUE(nox::utils::deserializeRandom(text.data(), static_cast<unsigned int>(text.size()), restored, nullptr));
    EXPECT_EQ(serialize(restored), text);
    for (int i = 0; i < 1300; ++i) ASSERT_EQ(restored(), saved()) << "draw " << i << " after restoring";
  }
}

TEST(RandomTest, SavedFormIsTheTextFormat) {
  Random random(5);
  random();
  EXPECT_EQ(serialize(random),
            "version {\n  major: 0\n  minor: 4\n  patch: 0\n}\nrandom {\n  seed: 5\n  count: 1\n}\n");
  unsigned int length = 0;
  char* text = nox::utils::serializeRandomManager(length, RandomManager(), nullptr);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(std::string(text, length),
            "version {\n  major: 0\n  minor: 4\n  patch: 0\n}\nrandomManager {\n  seed: 268431360\n}\n");
  EXPECT_EQ(text[length], '\0');
  NOX_DEALLOCATE(text);
}

TEST(RandomTest, RefusedStreamsAreReportedAndLeftAlone) {
  const std::string prefix = "Error while deserializing random: ";
  const struct {
    std::string text;
    std::string message;
  } cases[] = {
      {savedRandom("major: 0 minor: 4 patch: 1", "random { seed: 3 count: 2 }"),
       prefix + "The file originates from a version, v0.4.1, that is not compatible with the current version, v0.4.0"},
      {savedRandom(kVersion, ""), prefix + "expected field random not found"},
      {savedRandom(kVersion, "random { count: 2 }"), prefix + "expected field seed not found"},
      {savedRandom(kVersion, "random { seed: 3 }"), prefix + "expected field count not found"},
      {savedRandom(kVersion, "random { seed: 3 count: 4294967297 }"),
       prefix + "the saved count, 4294967297, is beyond the 4294967296 numbers a stream is restored to"},
      {savedRandom(kVersion, "random { seed: 3 count: 18446744073709551615 }"),
       prefix + "the saved count, 18446744073709551615, is beyond the 4294967296 numbers a stream is restored to"},
  };
  for (const auto& refused : cases) {
    SCOPED_TRACE(refused.text);
    Random random(8);
    random();
    const std::string before = serialize(random);
    BufferLogger logger(true, true, true);
    EXPECT_FALSE(nox::utils::deserializeRandom(refused.text.data(), static_cast<unsigned int>(refused.text.size()),
                                               random, &logger));
    ASSERT_EQ(logger.getEntries().size(), 1u);
    EXPECT_EQ(logger.getEntries()[0].kind, 'e');
    EXPECT_EQ(logger.getEntries()[0].error, nox::utils::error::invalidData);
    EXPECT_EQ(lastError(logger), refused.message);
    EXPECT_EQ(serialize(random), before);
  }

  BufferLogger logger(true, true, true);
  const std::string garbage = "version { major: zero }";
  Random random(8);
  EXPECT_FALSE(
      nox::utils::deserializeRandom(garbage.data(), static_cast<unsigned int>(garbage.size()), random, &logger));
  EXPECT_EQ(lastError(logger).rfind("Unable to deserialize a random stream: line 1, column ", 0), 0u)
      << lastError(logger);
  EXPECT_EQ(serialize(random), serialize(Random(8)));
}

TEST(RandomTest, RefusedManagersAreReportedAndLeftAlone) {
  const std::string prefix = "Error while deserializing random manager: ";
  const struct {
    std::string text;
    std::string message;
  } cases[] = {
      {"version { major: 1 minor: 0 patch: 0 } randomManager { seed: 3 }",
       prefix + "The file originates from a version, v1.0.0, that is not compatible with the current version, v0.4.0"},
      {savedRandom(kVersion, ""), prefix + "expected field randomManager not found"},
      {savedRandom(kVersion, "randomManager { }"), prefix + "expected field seed not found"},
      {"randomManager { seed: 3 }", "Unable to deserialize a random manager: Message missing required fields: version"},
  };
  for (const auto& refused : cases) {
    SCOPED_TRACE(refused.text);
    RandomManager manager;
    manager.seed(42);
    BufferLogger logger(true, true, true);
    EXPECT_FALSE(nox::utils::deserializeRandomManager(
        refused.text.data(), static_cast<unsigned int>(refused.text.size()), manager, &logger));
    EXPECT_EQ(lastError(logger).rfind(refused.message, 0), 0u) << lastError(logger);
    EXPECT_EQ(manager.getSeed(), 42u);
  }

  RandomManager manager;
  const std::string saved = savedRandom(kVersion, "randomManager { seed: 5 }");
  ASSERT_TRUE(
      nox::utils::deserializeRandomManager(saved.data(), static_cast<unsigned int>(saved.size()), manager, nullptr));
  EXPECT_EQ(manager.getSeed(), 5u);
}

TEST(RandomTest, ManagersHandOutStreamsBySeedAndNumber) {
  RandomManager manager;
  EXPECT_EQ(manager.getSeed(), 0x0FFFF000u);
  Random first = manager.createRandomStream(3);
  Random again = manager.createRandomStream(3);
  Random other = manager.createRandomStream(4);
  Random direct(0x0FFFF000u ^ 3u);
  int differences = 0;
  for (int i = 0; i < 100; ++i) {
    const unsigned int value = first();
    EXPECT_EQ(again(), value);
    EXPECT_EQ(direct(), value);
    differences += other() != value;
  }
  EXPECT_GT(differences, 90);

  manager.seed(5);
  Random zero = manager.createRandomStream(0);
  Random five(5);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(zero(), five());
}

// The bounded draw as described, by plain division, on the raw outputs of a twin stream.
unsigned int boundedByDivision(Random& raw, unsigned int n) {
  if (n == 0) return 0;
  const std::uint64_t range = std::uint64_t{n} + 1;
  const std::uint64_t bucket = (0xFFFFFFFFu - n) / range + 1;
  std::uint64_t x;
  do {
    x = raw();
  } while (x > bucket * range - 1);
  return static_cast<unsigned int>(x / bucket);
}

TEST(RandomTest, BoundedDrawsFollowTheRejectionRule) {
  Random bounded(2024);
  Random raw(2024);
  Random bounds(7);
  std::vector<unsigned int> limits = {1, 2, 3, 6, 99, 1000, 0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
  for (int i = 0; i < 200; ++i) limits.push_back(bounds() >> (bounds() % 32));
  for (unsigned int n : limits) {
    for (int i = 0; i < 50; ++i) ASSERT_EQ(bounded(n), boundedByDivision(raw, n)) << "n = " << n;
  }
  // A zero bound draws nothing.
  EXPECT_EQ(bounded(0), 0u);
  EXPECT_EQ(bounded(), raw());
}

TEST(RandomTest, BoundedDrawsCoverTheirRangeEvenly) {
  Random random(31);
  std::vector<int> counts(5, 0);
  const int draws = 50000;
  for (int i = 0; i < draws; ++i) {
    const unsigned int value = random(7, 3);
    ASSERT_GE(value, 3u);
    ASSERT_LE(value, 7u);
    ++counts[value - 3];
  }
  // Chi-square with 4 degrees of freedom; 18.5 is exceeded with probability 0.001.
  double chiSquare = 0;
  for (int count : counts) chiSquare += (count - draws / 5.0) * (count - draws / 5.0) / (draws / 5.0);
  EXPECT_LT(chiSquare, 18.5);
  EXPECT_EQ(random(9, 9), 9u);
  // The full range is the raw output, whichever end comes first.
  Random twin(random);
  EXPECT_EQ(random(0xFFFFFFFF, 0), twin());
}

}  // namespace
