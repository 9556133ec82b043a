#include <nox/utils/Time.h>
#include <nox/utils/Timer.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <sstream>

#include "support/AssertionRecorder.h"

namespace {

using nox::utils::Time;
using nox::utils::Timer;

constexpr std::uint64_t kMaxNanoseconds = std::numeric_limits<std::uint64_t>::max();

TEST(TimeTest, UnitConversionsScaleAndTruncate) {
  nox::test::AssertionRecorder recorder;
  Time time;
  time.setMilliseconds(1);
  EXPECT_EQ(time.getNanoseconds(), 1000000u);
  time.setMicroseconds(3);
  EXPECT_EQ(time.getNanoseconds(), 3000u);
  time.setSeconds(1.5);
  EXPECT_EQ(time.getNanoseconds(), 1500000000u);
  EXPECT_DOUBLE_EQ(time.getSeconds(), 1.5);
  time.setTime(3, 2);
  EXPECT_EQ(time, Time(std::uint64_t{1500000000}));
  EXPECT_EQ(Time(2.5).getNanoseconds(), 2500000000u);

  EXPECT_EQ(Time(std::uint64_t{1999999}).getMilliseconds(), 1u);
  EXPECT_EQ(Time(std::uint64_t{1999}).getMicroseconds(), 1u);
  EXPECT_EQ(recorder.count(), 0u);
}

TEST(TimeTest, ZeroAndOverflowingCountsFailTheConversion) {
  nox::test::AssertionRecorder recorder;
  Time time(std::uint64_t{7});
  time.setMilliseconds(0);
  EXPECT_EQ(recorder.last(), "Overflow happened when converting 0 milliseconds to nanosecond resolution.");
  EXPECT_TRUE(time.isZero());

  time.setMilliseconds(18446744073710u);
  EXPECT_EQ(recorder.last(), "Overflow happened when converting 18446744073710 milliseconds to nanosecond resolution.");
  EXPECT_EQ(time.getNanoseconds(), 448384u);  // the wrapped product

  time.setMicroseconds(0);
  EXPECT_EQ(recorder.last(), "Overflow happened when converting 0 microseconds to nanosecond resolution.");
  time.setMicroseconds(kMaxNanoseconds / 1000 + 1);
  EXPECT_EQ(recorder.count(), 4u);
}

TEST(TimeTest, InvalidSecondsFailAndStoreZeroOrSaturate) {
  nox::test::AssertionRecorder recorder;
  Time time(std::uint64_t{7});
  time.setSeconds(-1.0);
  EXPECT_EQ(recorder.last(), "Can't set a negative time.");
  EXPECT_TRUE(time.isZero());

  time.setNanoseconds(7);
  time.setSeconds(std::nan(""));
  EXPECT_EQ(recorder.last(), "Can't set a NaN value.");
  EXPECT_TRUE(time.isZero());

  time.setSeconds(1e12);
  EXPECT_EQ(recorder.last(),
            "Overflow happened when setting 1e+12seconds, the resulting value 1e+21 is too high in nanosecond "
            "resolution.");
  EXPECT_EQ(time.getNanoseconds(), kMaxNanoseconds);

  // 2^64 nanoseconds is the first count that does not fit.
  time.setSeconds(18446744073.709551616);
  EXPECT_EQ(recorder.count(), 4u);
  time.setSeconds(18446744073.709);
  EXPECT_EQ(recorder.count(), 4u);
}

TEST(TimeTest, SubtractionClampsAndAdditionWraps) {
  const Time five(std::uint64_t{5}), seven(std::uint64_t{7});
  Time a = five;
  a.sub(seven);
  EXPECT_TRUE(a.isZero());
  Time b = seven;
  b.sub(five);
  EXPECT_EQ(b.getNanoseconds(), 2u);

  Time c;
  c.setSub(five, five);
  EXPECT_TRUE(c.isZero());
  c.setSub(seven, five);
  EXPECT_EQ(c.getNanoseconds(), 2u);
  c.setSub(c, c);
  EXPECT_TRUE(c.isZero());

  c.setAdd(Time(kMaxNanoseconds), seven);
  EXPECT_EQ(c.getNanoseconds(), 6u);
  c.add(five);
  EXPECT_EQ(c.getNanoseconds(), 11u);
  EXPECT_NE(c, five);
}

TEST(TimeTest, StreamsSecondsWithTheStreamFormatting) {
  std::ostringstream out;
  out << Time(std::uint64_t{1500000000});
  EXPECT_EQ(out.str(), "1.5s");
  out.str("");
  out << std::fixed << std::setprecision(3) << Time(std::uint64_t{250000000}) << ' ' << Time();
  EXPECT_EQ(out.str(), "0.250s 0.000s");
}

TEST(TimeTest, SleepBlocksForWholeMillisecondsOnly) {
  using Clock = std::chrono::steady_clock;
  // A thousand sub-millisecond sleeps would take a second if any of them blocked.
  const Clock::time_point before = Clock::now();
  for (int i = 0; i < 1000; ++i) nox::utils::sleep(Time(std::uint64_t{999999}));
  EXPECT_LT(Clock::now() - before, std::chrono::milliseconds(500));

  const Clock::time_point start = Clock::now();
  nox::utils::sleep(Time(std::uint64_t{1500000}));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(1));
}

TEST(TimerTest, StartAndStopReportOnlyRunningTime) {
  nox::test::AssertionRecorder recorder;
  Timer timer;
  EXPECT_FALSE(timer.isStarted());
  EXPECT_TRUE(timer.getTime().isZero());
  EXPECT_TRUE(timer.stop().isZero());

  EXPECT_TRUE(timer.start().isZero());
  EXPECT_TRUE(timer.isStarted());
  // Immediately after a start the elapsed time is usually zero milliseconds, which must
  // not trip the millisecond conversion; whatever it is, it is whole milliseconds.
  EXPECT_EQ(timer.getTime().getNanoseconds() % 1000000u, 0u);
  EXPECT_TRUE(timer.isStarted());
  EXPECT_EQ(timer.start().getNanoseconds() % 1000000u, 0u);
  EXPECT_TRUE(timer.isStarted());

  timer.stop();
  EXPECT_FALSE(timer.isStarted());
  EXPECT_TRUE(timer.stop().isZero());
  EXPECT_TRUE(timer.getTime().isZero());
  EXPECT_EQ(recorder.count(), 0u);
}

TEST(TimerTest, ElapsedTimeCoversASleep) {
  Timer timer;
  timer.start();
  nox::utils::sleep(Time(std::uint64_t{3000000}));
  // Readings are truncated to whole milliseconds on both ends, so at least 2 of the 3 show.
  EXPECT_GE(timer.stop().getMilliseconds(), 2u);
}

}  // namespace
