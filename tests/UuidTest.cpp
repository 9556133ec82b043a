#include <nox/utils/BufferLogger.h>
#include <nox/utils/Uuid.h>

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>

#include "support/AssertionRecorder.h"

using nox::utils::BufferLogger;
using nox::utils::Uuid;

namespace {

std::string textOf(const Uuid& uuid) {
  std::ostringstream out;
  out << uuid;
  return out.str();
}

}  // namespace

TEST(Uuid, ParsesEitherCaseAndPrintsLowerCase) {
  Uuid upper = Uuid::create("06CB0F65-5199-4C7B-8146-AE6A1D3F97C1");
  Uuid lower = Uuid::create("06cb0f65-5199-4c7b-8146-ae6a1d3f97c1");
  EXPECT_EQ(upper, lower);
  EXPECT_EQ(textOf(upper), "06cb0f65-5199-4c7b-8146-ae6a1d3f97c1");
  char buffer[37];
  upper.computeString(buffer);
  EXPECT_STREQ(buffer, "06cb0f65-5199-4c7b-8146-ae6a1d3f97c1");
}

TEST(Uuid, StoresTheFirstThreeFieldsLittleEndian) {
  Uuid uuid = Uuid::create("00112233-4455-6677-8899-aabbccddeeff");
  const unsigned char expected[16] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                      0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
  EXPECT_EQ(0, std::memcmp(&uuid, expected, 16));
}

TEST(Uuid, OrdersByStoredBytesNotByText) {
  Uuid one = Uuid::create("00000001-0000-0000-0000-000000000000");
  Uuid hundred = Uuid::create("00000100-0000-0000-0000-000000000000");
  EXPECT_TRUE(hundred < one);
  EXPECT_FALSE(one < hundred);
  EXPECT_FALSE(one < one);
}

TEST(Uuid, NilAndValidity) {
  Uuid uuid;
  EXPECT_FALSE(uuid.isValid());
  EXPECT_EQ(textOf(uuid), "00000000-0000-0000-0000-000000000000");
  uuid = Uuid::create("00000000-0000-0000-0000-000000000001");
  EXPECT_TRUE(uuid.isValid());
  uuid.clear();
  EXPECT_FALSE(uuid.isValid());
}

TEST(Uuid, OnlyTheLengthIsValidated) {
  Uuid dashed = Uuid::create("06cb0f65-5199-4c7b-8146-ae6a1d3f97c1");
  Uuid underscored;
  EXPECT_TRUE(underscored.set("06cb0f65_5199_4c7b_8146_ae6a1d3f97c1", nullptr));
  EXPECT_EQ(underscored, dashed);

  // A group without hexadecimal digits reads as zero; its hex prefix is kept.
  Uuid lenient;
  EXPECT_TRUE(lenient.set("zzzzzzzz-5zzz-4c7b-8146-ae6a1d3f97c1", nullptr));
  EXPECT_EQ(lenient.data1, 0u);
  EXPECT_EQ(lenient.data2, 5u);
}

TEST(Uuid, WrongLengthIsReportedAndLeavesTheValue) {
  const Uuid original = Uuid::create("06cb0f65-5199-4c7b-8146-ae6a1d3f97c1");
  for (const char* text : {"06cb0f65-5199-4c7b-8146-ae6a1d3f97c", "06cb0f65-5199-4c7b-8146-ae6a1d3f97c1a"}) {
    Uuid uuid = original;
    BufferLogger logger(true, true, true);
    EXPECT_FALSE(uuid.set(text, &logger));
    EXPECT_EQ(uuid, original);
    ASSERT_EQ(logger.getEntries().size(), 1u);
    const BufferLogger::Entry& entry = logger.getEntries()[0];
    EXPECT_EQ(entry.kind, 'e');
    EXPECT_EQ(entry.error, nox::utils::error::invalidArgument);
    EXPECT_EQ(entry.file, "nox/utils/Uuid");
    EXPECT_EQ(std::string(entry.message.c_str()),
              std::string("The given string '") + text +
                  "' doesn't have the right format of 36 characters (\"12345678-9ABC-DEF1-2345-6789ABCDEF12\").");
  }
}

TEST(Uuid, NullTextFails) {
  Uuid uuid = Uuid::create("06cb0f65-5199-4c7b-8146-ae6a1d3f97c1");
  EXPECT_FALSE(uuid.set(nullptr, nullptr));
  BufferLogger logger(true, true, true);
  EXPECT_FALSE(uuid.set(nullptr, &logger));
  ASSERT_EQ(logger.getEntries().size(), 1u);
  EXPECT_EQ(logger.getEntries()[0].message, "The given string parameter is NULL");
  EXPECT_TRUE(uuid.isValid());
}

TEST(Uuid, CreateTurnsAMalformedTextIntoAnAssertion) {
  nox::test::AssertionRecorder recorder;
  Uuid uuid = Uuid::create("abc");
  EXPECT_FALSE(uuid.isValid());
  ASSERT_EQ(recorder.count(), 1u);
  EXPECT_EQ(recorder.last(),
            "The given string 'abc' doesn't have the right format of 36 characters "
            "(\"12345678-9ABC-DEF1-2345-6789ABCDEF12\").");
}

TEST(Uuid, LibraryIdentifier) { EXPECT_EQ(textOf(nox::utils::uniqueId), "0ba23f91-d30e-4574-b0ed-ee0aa81d00b9"); }
