// Runs the JSON reader over a public conformance corpus (tests/data/json-conformance):
// y_ files are valid JSON, n_ files invalid, i_ files up to the implementation. Nothing
// may crash, hang or leak; valid texts round-trip through a dynamic object.
#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "support/LiveBlocks.h"

namespace {

using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::MemoryInputOutput;
namespace type = nox::utils::type;

struct Sample {
  std::string name;
  std::string text;
};

std::vector<Sample> loadCorpus(char kind) {
  std::vector<Sample> samples;
  for (const auto& entry : std::filesystem::directory_iterator(NOX_TEST_DATA_DIR "/json-conformance")) {
    std::string name = entry.path().filename().string();
    if (name.size() < 2 || name[0] != kind || name[1] != '_') continue;
    std::ifstream file(entry.path(), std::ios::binary);
    samples.push_back({name, std::string(std::istreambuf_iterator<char>(file), {})});
  }
  std::sort(samples.begin(), samples.end(), [](const Sample& a, const Sample& b) { return a.name < b.name; });
  return samples;
}

bool read(const std::string& text, DynamicObject& object, BufferLogger& logger) {
  MemoryInputOutput input(text.data(), static_cast<unsigned int>(text.size()));
  return nox::utils::deserializeDynamicObjectFromJson(object, input, &logger);
}

bool write(const DynamicObject& object, std::string& text, BufferLogger& logger) {
  MemoryInputOutput output;
  bool written = nox::utils::serializeDynamicObjectToJson(object, output, &logger);
  text.assign(output.getData(), output.getSize());
  return written;
}

std::string firstError(const BufferLogger& logger) {
  return logger.getEntries().empty() ? "" : logger.getEntries()[0].message.c_str();
}

// Valid texts whose keys a dynamic object cannot hold: an empty name, and a name with a
// NUL byte (child names are the terminated segments of property paths).
const std::set<std::string> keysOutsideTheObjectModel = {"y_object_empty_key.json",
                                                         "y_object_escaped_null_in_key.json"};

TEST(JsonConformance, ValidTextsLoadAndRoundTrip) {
  const std::vector<Sample> samples = loadCorpus('y');
  ASSERT_EQ(samples.size(), 95u);
  for (const Sample& sample : samples) {
    SCOPED_TRACE(sample.name);
    BufferLogger logger(true, true, true);
    DynamicObject object;
    const bool loaded = read(sample.text, object, logger);
    if (keysOutsideTheObjectModel.count(sample.name) != 0) {
      EXPECT_FALSE(loaded);
      EXPECT_EQ(firstError(logger).rfind("Unable to create a child named ", 0), 0u) << firstError(logger);
      continue;
    }
    ASSERT_TRUE(loaded) << firstError(logger);
    ASSERT_TRUE(logger.getEntries().empty()) << firstError(logger);

    std::string once;
    const type::Type rootType = object.getType(object.getRoot());
    if (rootType != type::object && rootType != type::array && rootType != type::null) {
      // A lone scalar has no written form: the writer keeps the top level an object or array.
      EXPECT_FALSE(write(object, once, logger));
      EXPECT_EQ(once, "");
      EXPECT_EQ(firstError(logger), "Expected object or array");
      continue;
    }
    ASSERT_TRUE(write(object, once, logger)) << firstError(logger);
    DynamicObject copy;
    ASSERT_TRUE(read(once, copy, logger)) << once << ": " << firstError(logger);
    std::string twice;
    ASSERT_TRUE(write(copy, twice, logger)) << firstError(logger);
    EXPECT_EQ(once, twice);
  }
}

TEST(JsonConformance, LonelyNullIsWrittenAsAnEmptyObject) {
  BufferLogger logger(true, true, true);
  DynamicObject object;
  ASSERT_TRUE(read("null", object, logger));
  std::string text;
  ASSERT_TRUE(write(object, text, logger));
  EXPECT_EQ(text, "{}");
}

// The parser takes a form feed for white space.
const std::set<std::string> invalidButAccepted = {"n_structure_whitespace_formfeed.json"};

TEST(JsonConformance, InvalidTextsAreRefusedWithAReport) {
  const std::vector<Sample> samples = loadCorpus('n');
  ASSERT_EQ(samples.size(), 188u);
  const auto liveBlocks = nox::test::liveBlocksInUse();
  for (const Sample& sample : samples) {
    SCOPED_TRACE(sample.name);
    BufferLogger logger(true, true, true);
    DynamicObject object;
    const bool loaded = read(sample.text, object, logger);
    EXPECT_EQ(loaded, invalidButAccepted.count(sample.name) != 0);
    EXPECT_EQ(logger.hasErrors(), !loaded);
  }
  EXPECT_EQ(nox::test::liveBlocksInUse(), liveBlocks);
}

TEST(JsonConformance, ImplementationDefinedTextsNeitherCrashNorLeak) {
  const std::vector<Sample> samples = loadCorpus('i');
  ASSERT_EQ(samples.size(), 35u);
  const auto liveBlocks = nox::test::liveBlocksInUse();
  for (const Sample& sample : samples) {
    SCOPED_TRACE(sample.name);
    BufferLogger logger(true, true, true);
    DynamicObject object;
    // Either outcome is fine, as long as a refusal is reported.
    if (!read(sample.text, object, logger)) {
      EXPECT_TRUE(logger.hasErrors());
    }
  }
  EXPECT_EQ(nox::test::liveBlocksInUse(), liveBlocks);
}

}  // namespace
