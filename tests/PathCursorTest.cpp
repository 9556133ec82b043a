#include <nox/utils/Decimal.h>
#include <nox/utils/PathCursor.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

using nox::utils::parseDecimal;
using nox::utils::PathCursor;

namespace {

PathCursor cursorOver(const std::string& path) {
  return PathCursor(path.data(), static_cast<unsigned int>(path.size()));
}

}  // namespace

TEST(PathCursor, WalksSegmentsSeparatedByRunsOfSlashes) {
  const std::string path = "//entities//12/contexts/";
  PathCursor cursor = cursorOver(path);
  EXPECT_FALSE(cursor.done());
  ASSERT_TRUE(cursor.next());
  EXPECT_TRUE(cursor.is("entities"));
  unsigned int entity = 0;
  ASSERT_TRUE(cursor.nextUnsigned(entity));
  EXPECT_EQ(12u, entity);
  EXPECT_EQ("/contexts/", std::string(cursor.rest(), cursor.restLength()));
  ASSERT_TRUE(cursor.next());
  EXPECT_TRUE(cursor.is("contexts"));
  EXPECT_TRUE(cursor.done());  // a trailing slash starts no segment
  EXPECT_FALSE(cursor.next());
  EXPECT_TRUE(cursor.segment().empty());
  EXPECT_FALSE(cursor.next());
}

TEST(PathCursor, MatchesWordsExactly) {
  const std::string path = "subscription/subscriptionsX/x";
  PathCursor cursor = cursorOver(path);
  EXPECT_FALSE(cursor.is(""));  // nothing read yet
  ASSERT_TRUE(cursor.next());
  EXPECT_FALSE(cursor.is("subscriptions"));
  ASSERT_TRUE(cursor.next());
  EXPECT_FALSE(cursor.is("subscriptions"));
  EXPECT_FALSE(cursor.done());
}

TEST(PathCursor, CarriesItsLengthPastEmbeddedZeros) {
  const char path[] = "entities\0/99";
  PathCursor cursor(path, sizeof path - 1);
  ASSERT_TRUE(cursor.next());
  EXPECT_FALSE(cursor.is("entities"));
  EXPECT_EQ(9u, cursor.segment().size());
}

TEST(PathCursor, EmptyPathsHaveNoSegment) {
  PathCursor none(nullptr, 0);
  EXPECT_TRUE(none.done());
  EXPECT_FALSE(none.next());
  unsigned int value = 7;
  EXPECT_FALSE(none.nextUnsigned(value));
  EXPECT_EQ(7u, value);
  EXPECT_TRUE(cursorOver("///").done());
}

TEST(Decimal, ReadsWholeUnsignedTextsThatFit) {
  unsigned int value = 0;
  EXPECT_TRUE(parseDecimal("0", value));
  EXPECT_EQ(0u, value);
  EXPECT_TRUE(parseDecimal("007", value));
  EXPECT_EQ(7u, value);
  EXPECT_TRUE(parseDecimal("4294967295", value));
  EXPECT_EQ(4294967295u, value);
  for (const char* refused : {"", "4294967296", "-1", "+1", " 1", "1 ", "1a", "0x10", "1.0"}) {
    value = 42;
    EXPECT_FALSE(parseDecimal(refused, value)) << refused;
    EXPECT_EQ(42u, value) << refused;
  }
  std::uint64_t wide = 0;
  EXPECT_TRUE(parseDecimal("18446744073709551615", wide));
  EXPECT_EQ(UINT64_MAX, wide);
}
