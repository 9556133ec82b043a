#include <nox/utils/DynamicValue.h>
#include <nox/utils/Type.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

#include "support/AssertionRecorder.h"

using nox::utils::DynamicValue;
namespace type = nox::utils::type;

TEST(DynamicValue, TypeNamesAreFixed) {
  const char* names[] = {"null", "integer", "real", "string", "boolean", "array", "object"};
  for (int code = 0; code < 7; ++code) EXPECT_STREQ(nox::utils::toString(static_cast<type::Type>(code)), names[code]);
  EXPECT_EQ(nox::utils::toString(static_cast<type::Type>(7)), nullptr);
  EXPECT_EQ(nox::utils::toString(static_cast<type::Type>(-1)), nullptr);
}

TEST(DynamicValue, DefaultIsNullAndCompatibleWithEverything) {
  nox::test::AssertionRecorder recorder;
  DynamicValue value;
  unsigned char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  for (unsigned char byte : bytes) EXPECT_EQ(byte, 0);
  EXPECT_EQ(value.getType(), type::null);
  EXPECT_TRUE(value.isTypeCompatible(type::string));
  EXPECT_TRUE(value.isTypeCompatible(type::object));
  EXPECT_EQ(value.getString(), nullptr);
  EXPECT_EQ(recorder.last(), "Unable the retrieve this value of type 0 as a string");
}

TEST(DynamicValue, NumbersConvertIntoEachOtherOnly) {
  nox::test::AssertionRecorder recorder;
  EXPECT_EQ(DynamicValue(-1).getInt(), -1);
  EXPECT_EQ(DynamicValue(-1).getReal(), -1.0);
  EXPECT_EQ(DynamicValue(std::int64_t{1} << 40).getInt(), std::int64_t{1} << 40);
  EXPECT_EQ(DynamicValue(2.9).getInt(), 2);
  EXPECT_EQ(DynamicValue(-2.9).getInt(), -2);
  EXPECT_TRUE(DynamicValue(1).isTypeCompatible(type::real));
  EXPECT_FALSE(DynamicValue(1).isTypeCompatible(type::string));
  EXPECT_FALSE(DynamicValue(true).isTypeCompatible(type::integer));
  EXPECT_EQ(recorder.count(), 0u);

  EXPECT_EQ(DynamicValue(true).getInt(), 0);
  EXPECT_EQ(recorder.last(), "Unable the retrieve this value of type 4 as an int");
  EXPECT_EQ(DynamicValue("1").getReal(), 0.0);
  EXPECT_EQ(recorder.last(), "Unable the retrieve this value of type 3 as a real");
  EXPECT_FALSE(DynamicValue(1).getBool());
  EXPECT_EQ(recorder.last(), "Unable the retrieve this value of type 1 as a bool");
  EXPECT_EQ(DynamicValue(1).getStringLength(), 0u);
  EXPECT_EQ(recorder.last(), "Unable the retrieve this value of type 1 as a string");
}

TEST(DynamicValue, OutOfRangeRealsSaturateWhenReadAsIntegers) {
  EXPECT_EQ(DynamicValue(1e300).getInt(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(DynamicValue(-1e300).getInt(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(DynamicValue(std::nan("")).getInt(), 0);
}

TEST(DynamicValue, EqualityNeedsTheSameType) {
  EXPECT_NE(DynamicValue(1), DynamicValue(1.0));
  EXPECT_EQ(DynamicValue(), DynamicValue());
  EXPECT_NE(DynamicValue(), DynamicValue(0));
  EXPECT_EQ(DynamicValue(0.0), DynamicValue(-0.0));
  const DynamicValue nan(std::nan(""));
  EXPECT_NE(nan, nan);
  EXPECT_EQ(DynamicValue(false), DynamicValue(false));
  EXPECT_NE(DynamicValue(true), DynamicValue(false));
  EXPECT_EQ(DynamicValue("abc"), DynamicValue("abc"));
  EXPECT_NE(DynamicValue("abc"), DynamicValue("abd"));
}

TEST(DynamicValue, StringsKeepZeroBytesUntilAssigned) {
  const DynamicValue binary("a\0b", 3);
  EXPECT_EQ(binary.getStringLength(), 3u);
  EXPECT_EQ(binary, DynamicValue("a\0b", 3));
  EXPECT_NE(binary, DynamicValue("a\0c", 3));

  DynamicValue copy;
  copy = binary;
  EXPECT_EQ(copy.getStringLength(), 1u);
  EXPECT_STREQ(copy.getString(), "a");

  // A string reassigned with another string reuses its storage.
  DynamicValue text("short");
  const char* before = text.getString();
  text.setString("tiny");
  EXPECT_EQ(text.getString(), before);
  EXPECT_STREQ(text.getString(), "tiny");
}

TEST(DynamicValue, CopiesAreDeepAndSelfAssignmentIsHarmless) {
  DynamicValue original("text");
  DynamicValue copy(original);
  EXPECT_NE(copy.getString(), original.getString());
  copy.setString("other");
  EXPECT_STREQ(original.getString(), "text");

  DynamicValue& alias = original;
  original = alias;
  EXPECT_STREQ(original.getString(), "text");

  original.setInt(5);  // frees the string (checked by the leak sanitizer)
  EXPECT_EQ(original.getType(), type::integer);
  original.reset();
  EXPECT_EQ(original.getType(), type::null);
  original = DynamicValue(true);
  EXPECT_TRUE(original.getBool());
}

TEST(DynamicValue, NullTextsAreAssertionFailures) {
  nox::test::AssertionRecorder recorder;
  const DynamicValue fromNull(static_cast<const char*>(nullptr));
  EXPECT_EQ(recorder.last(), "null pointer not allowed as string value initializer for DynamicValue");
  EXPECT_STREQ(fromNull.getString(), "");
  const DynamicValue fromNullWithLength(nullptr, 4);
  EXPECT_EQ(recorder.count(), 2u);
  EXPECT_EQ(fromNullWithLength.getStringLength(), 0u);

  DynamicValue value(3);
  value.setString(nullptr);
  EXPECT_EQ(recorder.last(), "unable to set string value from null pointer");
  value.setString(nullptr, 2);
  EXPECT_EQ(recorder.count(), 4u);
}

TEST(DynamicValue, StreamsItsContent) {
  std::ostringstream out;
  out << DynamicValue(-7) << ' ' << DynamicValue(1.5) << ' ' << DynamicValue("a\0b", 3) << ' ' << DynamicValue(true)
      << ' ' << DynamicValue();
  EXPECT_EQ(out.str(), "-7 1.5 a 1 null");
}
