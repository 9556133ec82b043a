#include <nox/utils/Time.h>

#include <nox/utils/Assertion.h>

#include <cerrno>
#include <cmath>
#include <ctime>
#include <limits>
#include <ostream>

namespace nox::utils {
namespace {

constexpr std::uint64_t kNanosecondsPerMicrosecond = 1000u;
constexpr std::uint64_t kNanosecondsPerMillisecond = 1000000u;
constexpr double kNanosecondsPerSecond = 1e9;
// 2^64: the first double that no longer fits the nanosecond count.
constexpr double kNanosecondCountLimit = 18446744073709551616.0;

// A count that does not grow when scaled is rejected: this catches every overflow, and
// zero on purpose, so that a zero reaching a unit conversion is noticed (callers that
// may hold zero use setToZero). Should the assertion handler return, the wrapped product
// is what the caller gets.
std::uint64_t toNanoseconds(std::uint64_t count, std::uint64_t factor, const char* unit) {
  const bool fits = count != 0 && count <= std::numeric_limits<std::uint64_t>::max() / factor;
  NOX_ASSERT(fits, "Overflow happened when converting " << count << " " << unit << " to nanosecond resolution.");
  return count * factor;
}

}  // namespace

Time::Time(double seconds) : nanoseconds_(0) { setSeconds(seconds); }

void Time::setMicroseconds(std::uint64_t microseconds) {
  nanoseconds_ = toNanoseconds(microseconds, kNanosecondsPerMicrosecond, "microseconds");
}

void Time::setMilliseconds(std::uint64_t milliseconds) {
  nanoseconds_ = toNanoseconds(milliseconds, kNanosecondsPerMillisecond, "milliseconds");
}

void Time::setSeconds(double seconds) {
  nanoseconds_ = 0;
  if (seconds < 0) {
    NOX_FAIL("Can't set a negative time.");
    return;
  }
  if (std::isnan(seconds)) {
    NOX_FAIL("Can't set a NaN value.");
    return;
  }
  const double nanoseconds = seconds * kNanosecondsPerSecond;
  if (nanoseconds >= kNanosecondCountLimit) {
    NOX_FAIL("Overflow happened when setting " << seconds << "seconds, the resulting value " << nanoseconds
                                               << " is too high in nanosecond resolution.");
    // Converting an out-of-range double is undefined: saturate instead.
    nanoseconds_ = std::numeric_limits<std::uint64_t>::max();
    return;
  }
  nanoseconds_ = static_cast<std::uint64_t>(nanoseconds);
}

void Time::setTime(std::uint64_t ticks, std::uint64_t frequency) {
  setSeconds(static_cast<double>(ticks) / static_cast<double>(frequency));
}

double Time::getSeconds() const { return static_cast<double>(nanoseconds_) / kNanosecondsPerSecond; }

void Time::sub(const Time& other) { setSub(*this, other); }

void Time::setSub(const Time& a, const Time& b) {
  nanoseconds_ = a.nanoseconds_ <= b.nanoseconds_ ? 0 : a.nanoseconds_ - b.nanoseconds_;
}

std::ostream& operator<<(std::ostream& out, const Time& time) { return out << time.getSeconds() << "s"; }

void sleep(const Time& duration) {
  // Integer division truncates exactly, where a division in double precision could round
  // a long duration up by a millisecond.
  const std::uint64_t milliseconds = duration.getMilliseconds();
  if (milliseconds == 0) return;
  timespec remaining;
  remaining.tv_sec = static_cast<std::time_t>(milliseconds / 1000u);
  remaining.tv_nsec = static_cast<long>((milliseconds % 1000u) * kNanosecondsPerMillisecond);
  // A signal handler interrupts the sleep; resume for what is left of it.
  while (nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
  }
}

}  // namespace nox::utils
