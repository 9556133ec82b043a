#include <nox/allocator/Allocator.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/ErrorType.h>
#include <nox/utils/FileInputOutput.h>
#include <nox/utils/FileUtilities.h>
#include <nox/utils/MemoryInputOutput.h>

#include "support/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using nox::utils::BufferLogger;
using nox::utils::ErrorType;
using nox::utils::FileInputOutput;
using nox::utils::MemoryInputOutput;
namespace error = nox::utils::error;

// A fresh directory per test, removed with what the test left in it.
class FileInputOutputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "nox-files-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    directory_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  std::string path(const std::string& name) const { return directory_ + "/" + name; }

  // Checks that `logger` holds exactly one entry, the error `message` of category `type`.
  static void expectError(BufferLogger& logger, const ErrorType& type, const std::string& message) {
    ASSERT_EQ(logger.getEntries().size(), 1u);
    EXPECT_EQ(logger.getEntries()[0].kind, 'e');
    EXPECT_EQ(logger.getEntries()[0].error, type);
    EXPECT_EQ(std::string(logger.getEntries()[0].message.c_str()), message);
    logger.clear();
  }

  std::string directory_;
};

std::string readAll(nox::utils::AbstractDataInputOutput& io, unsigned int capacity, std::vector<unsigned int>& sizes) {
  std::string content;
  std::string buffer(capacity, '\0');
  unsigned int size = capacity;
  while (io.read(buffer.data(), size, nullptr)) {
    sizes.push_back(size);
    content.append(buffer.data(), size);
    size = capacity;
  }
  EXPECT_EQ(size, 0u);
  return content;
}

TEST_F(FileInputOutputTest, StatesRefuseWhatTheyCannotDo) {
  const std::string file = path("state.bin");
  const std::string io = "the io on " + file;
  FileInputOutput stream(file.c_str());
  BufferLogger logger(true, true, true);
  char buffer[8];
  unsigned int size = sizeof buffer;

  EXPECT_FALSE(stream.isOpen());
  EXPECT_FALSE(stream.close(&logger));
  expectError(logger, error::invalidOperation, "Can't close " + io + ", it is not open.");
  EXPECT_FALSE(stream.write("x", 1, &logger));
  expectError(logger, error::invalidOperation, "Can't write to " + io + ", it is not currently writable.");

  ASSERT_TRUE(stream.openForWriting(&logger));
  EXPECT_TRUE(stream.isOpen() && stream.isWritable() && !stream.isReadable());
  EXPECT_FALSE(stream.openForWriting(&logger));
  expectError(logger, error::invalidOperation, "Can't open " + io + " for writing, it is already open for writing.");
  EXPECT_FALSE(stream.openForReading(&logger));
  expectError(logger, error::invalidOperation, "Can't open " + io + " for reading, it is already open for writing.");
  EXPECT_FALSE(stream.read(buffer, size, &logger));
  EXPECT_EQ(size, 0u);
  expectError(logger, error::invalidOperation, "Can't read " + io + ", it is not currently readable.");
  EXPECT_TRUE(stream.write("0123456789", 10, &logger));
  EXPECT_TRUE(stream.close(&logger));

  ASSERT_TRUE(stream.openForReading(&logger));
  EXPECT_TRUE(stream.isReadable() && !stream.isWritable());
  EXPECT_FALSE(stream.openForReading(&logger));
  expectError(logger, error::invalidOperation, "Can't open " + io + " for reading, it is already open for reading.");
  EXPECT_FALSE(stream.openForWriting(&logger));
  expectError(logger, error::invalidOperation, "Can't open " + io + " for writing, it is already open for reading.");
  EXPECT_FALSE(stream.write("x", 1, &logger));
  expectError(logger, error::invalidOperation, "Can't write to " + io + ", it is not currently writable.");

  // Short reads succeed with what is left; the end gives false with nothing.
  std::vector<unsigned int> sizes;
  EXPECT_EQ(readAll(stream, 4, sizes), "0123456789");
  EXPECT_EQ(sizes, (std::vector<unsigned int>{4, 4, 2}));
  EXPECT_TRUE(stream.close(&logger));
  EXPECT_TRUE(logger.getEntries().empty());
}

TEST_F(FileInputOutputTest, OpeningFailuresCarryTheSystemErrorNumber) {
  const std::string missing = path("missing/file.bin");
  FileInputOutput stream(missing.c_str());
  BufferLogger logger(true, true, true);
  const std::string code = std::to_string(ENOENT);
  EXPECT_FALSE(stream.openForReading(&logger));
  expectError(
      logger, error::invalidOperation,
      "Can't open the io on " + missing + " for reading, unable to get a valid stream (eror code '" + code + "').");
  EXPECT_FALSE(stream.openForWriting(&logger));
  expectError(
      logger, error::invalidOperation,
      "Can't open the io on " + missing + " for writing, unable to get a valid stream (error code '" + code + ")'.");
  EXPECT_FALSE(stream.isOpen());
}

TEST_F(FileInputOutputTest, BytesThatCannotReachTheDiskAreReported) {
  if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
  BufferLogger logger(true, true, true);
  FileInputOutput stream("/dev/full");
  ASSERT_TRUE(stream.openForWriting(&logger));
  EXPECT_TRUE(stream.write("buffered", 8, &logger));
  EXPECT_FALSE(stream.close(&logger));
  expectError(logger, error::ioProblem,
              "Can't close the io on /dev/full, the last bytes could not be written (error code '" +
                  std::to_string(ENOSPC) + "').");
  EXPECT_FALSE(stream.isOpen());

  EXPECT_FALSE(nox::utils::saveToFile("/dev/full", "x", 1, &logger));
  expectError(logger, error::ioProblem,
              "Unable to write the given buffer to '/dev/full' (error code '" + std::to_string(ENOSPC) + "')");
}

TEST_F(FileInputOutputTest, WholeFilesRoundTrip) {
  const std::string file = path("whole.bin");
  const std::string content("line\r\n\0\xff end", 12);
  BufferLogger logger(true, true, true);
  EXPECT_FALSE(nox::utils::fileExists(file.c_str()));
  ASSERT_TRUE(nox::utils::saveToFile(file.c_str(), "a longer first content", 22, &logger));
  ASSERT_TRUE(nox::utils::saveToFile(file.c_str(), content.data(), static_cast<unsigned int>(content.size()), &logger));
  EXPECT_TRUE(nox::utils::fileExists(file.c_str()));

  unsigned int size = 0;
  char* loaded = nox::utils::loadFile(file.c_str(), size, &logger);
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(std::string(loaded, size), content);
  NOX_DEALLOCATE(loaded);

  ASSERT_TRUE(nox::utils::saveToFile(file.c_str(), nullptr, 0, &logger));
  loaded = nox::utils::loadFile(file.c_str(), size, &logger);
  EXPECT_NE(loaded, nullptr);
  EXPECT_EQ(size, 0u);
  NOX_DEALLOCATE(loaded);

  EXPECT_TRUE(nox::utils::eraseFile(file.c_str(), &logger));
  EXPECT_FALSE(nox::utils::fileExists(file.c_str()));
  EXPECT_TRUE(logger.getEntries().empty());
}

TEST_F(FileInputOutputTest, FileUtilitiesReportWhatFailed) {
  const std::string missing = path("missing.bin");
  const std::string unreachable = path("missing/file.bin");
  const std::string code = std::to_string(ENOENT);
  BufferLogger logger(true, true, true);

  unsigned int size = 77;
  EXPECT_EQ(nox::utils::loadFile(missing.c_str(), size, &logger), nullptr);
  EXPECT_EQ(size, 77u);
  expectError(logger, error::ioProblem, "Could not be read file '" + missing + "' (error code '" + code + "')");
  EXPECT_EQ(nox::utils::loadFile(directory_.c_str(), size, &logger), nullptr);
  expectError(logger, error::ioProblem,
              "Could not be read file '" + directory_ + "' (error code '" + std::to_string(EISDIR) + "')");
  EXPECT_FALSE(nox::utils::fileExists(directory_.c_str()));

  EXPECT_FALSE(nox::utils::eraseFile(missing.c_str(), &logger));
  expectError(logger, error::ioProblem, "Unable to remove resource from '" + missing + "'. Errno: " + code);
  EXPECT_FALSE(nox::utils::saveToFile(unreachable.c_str(), "x", 1, &logger));
  expectError(logger, error::ioProblem,
              "Unable to write the given buffer to '" + unreachable + "' (error code '" + code + "')");

  nox::utils::ScopedPtr<std::istream> input;
  EXPECT_FALSE(nox::utils::openFileForReading(nullptr, input, &logger));
  expectError(logger, error::invalidArgument, "null pointer parameter is not allowed - unable to load file");
  EXPECT_FALSE(nox::utils::openFileForReading(missing.c_str(), input, &logger));
  expectError(logger, error::ioProblem, "Could not open file '" + missing + "' (error code '" + code + "')");
  nox::utils::ScopedPtr<std::ostream> output;
  EXPECT_FALSE(nox::utils::openFileForWriting(unreachable.c_str(), output, &logger));
  expectError(logger, error::ioProblem, "Unable to open resource from '" + unreachable + "' for writing");
  EXPECT_FALSE(input || output);

  nox::test::AssertionRecorder recorder;
  EXPECT_EQ(nox::utils::loadFile(nullptr, size, &logger), nullptr);
  EXPECT_FALSE(nox::utils::saveToFile(missing.c_str(), nullptr, 3, &logger));
  EXPECT_FALSE(nox::utils::eraseFile(nullptr, &logger));
  EXPECT_EQ(recorder.count(), 3u);
  EXPECT_TRUE(logger.getEntries().empty());
}

TEST(MemoryInputOutputTest, ReadsBackWhatWasWritten) {
  MemoryInputOutput memory;
  EXPECT_TRUE(memory.isReadable() && memory.isWritable());
  EXPECT_TRUE(memory.write("0123", 4, nullptr));
  EXPECT_TRUE(memory.write("456789", 6, nullptr));
  EXPECT_TRUE(memory.write(nullptr, 0, nullptr));
  std::vector<unsigned int> sizes;
  EXPECT_EQ(readAll(memory, 4, sizes), "0123456789");
  EXPECT_EQ(sizes, (std::vector<unsigned int>{4, 4, 2}));
  EXPECT_EQ(std::string(memory.getData(), memory.getSize()), "0123456789");

  // Writes after the end of reading are read next.
  EXPECT_TRUE(memory.write("ab", 2, nullptr));
  sizes.clear();
  EXPECT_EQ(readAll(memory, 64, sizes), "ab");
  memory.rewind();
  sizes.clear();
  EXPECT_EQ(readAll(memory, 64, sizes), "0123456789ab");
  memory.clear();
  EXPECT_EQ(memory.getSize(), 0u);

  MemoryInputOutput preset("xyz", 3);
  sizes.clear();
  EXPECT_EQ(readAll(preset, 2, sizes), "xyz");

  nox::test::AssertionRecorder recorder;
  unsigned int size = 5;
  EXPECT_FALSE(preset.read(nullptr, size, nullptr));
  EXPECT_EQ(size, 0u);
  EXPECT_FALSE(preset.write(nullptr, 5, nullptr));
  EXPECT_EQ(recorder.count(), 2u);
}

}  // namespace
