// A non-negative duration in nanoseconds. Conversions into nanoseconds are checked
// (overflow, NaN, negative input) and a failed check is an assertion; subtraction
// clamps at zero.
#pragma once

#include <nox/utils/Export.h>

#include <cstdint>
#include <iosfwd>

namespace nox::utils {

class NOX_UTILS_API Time {
 public:
  Time() : nanoseconds_(0) {}
  explicit Time(std::uint64_t nanoseconds) : nanoseconds_(nanoseconds) {}
  explicit Time(double seconds);

  void setToZero() { nanoseconds_ = 0; }
  bool isZero() const { return nanoseconds_ == 0; }

  void setNanoseconds(std::uint64_t nanoseconds) { nanoseconds_ = nanoseconds; }
  std::uint64_t getNanoseconds() const { return nanoseconds_; }

  // Both fail (assertion) when the count overflows in nanoseconds, and for 0 on purpose:
  // callers that may hold zero use setToZero.
  void setMicroseconds(std::uint64_t microseconds);
  void setMilliseconds(std::uint64_t milliseconds);
  void setSeconds(double seconds);
  // seconds = ticks / frequency, for counters with a known tick rate.
  void setTime(std::uint64_t ticks, std::uint64_t frequency);

  double getSeconds() const;
  std::uint64_t getMilliseconds() const { return nanoseconds_ / 1000000u; }
  std::uint64_t getMicroseconds() const { return nanoseconds_ / 1000u; }

  // Wrapping, unchecked.
  void add(const Time& other) { nanoseconds_ += other.nanoseconds_; }
  void setAdd(const Time& a, const Time& b) { nanoseconds_ = a.nanoseconds_ + b.nanoseconds_; }
  // Clamped at zero.
  void sub(const Time& other);
  void setSub(const Time& a, const Time& b);

  bool operator==(const Time& other) const { return nanoseconds_ == other.nanoseconds_; }
  bool operator!=(const Time& other) const { return nanoseconds_ != other.nanoseconds_; }

 private:
  std::uint64_t nanoseconds_;
};

// Writes the seconds with the stream's formatting, then "s".
NOX_UTILS_API std::ostream& operator<<(std::ostream& out, const Time& time);

// Suspends the calling thread for the whole milliseconds of `duration`; durations under
// one millisecond do not block.
NOX_UTILS_API void sleep(const Time& duration);

}  // namespace nox::utils
