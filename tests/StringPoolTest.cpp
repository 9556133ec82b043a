#include <nox/utils/StringPool.h>

#include "support/AssertionRecorder.h"

#include <gtest/gtest.h>

namespace {

using nox::utils::String;
using nox::utils::StringPool;

TEST(StringPoolTest, KeepsShortStringsWithTheirContentFirstInFirstOut) {
  StringPool pool(0, 128);
  String* strings[] = {pool.obtain(), pool.obtain(), pool.obtain()};
  EXPECT_TRUE(strings[0]->empty());
  strings[0]->assign(128, 'a');
  strings[1]->assign(129, 'b');  // over the threshold: freed on recycling
  strings[2]->assign(1, 'c');
  for (String* string : strings) pool.recycle(string);

  EXPECT_EQ(pool.obtain(), strings[0]);
  EXPECT_EQ(*strings[0], String(128, 'a'));  // content is not cleared
  EXPECT_EQ(pool.obtain(), strings[2]);
  String* fresh = pool.obtain();
  EXPECT_TRUE(fresh->empty());
  for (String* string : {strings[0], strings[2], fresh}) pool.recycle(string);  // the pool frees them
}

TEST(StringPoolTest, RecyclingNullIsAnAssertion) {
  nox::test::AssertionRecorder recorder;
  StringPool pool;
  pool.recycle(nullptr);
  EXPECT_EQ(recorder.last(), "null pointer not allowed for parameter 'string'");
  String* string = pool.obtain();
  EXPECT_NE(string, nullptr);  // the null was not queued
  pool.recycle(string);
}

}  // namespace
