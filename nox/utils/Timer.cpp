#include <nox/utils/Timer.h>

#include <ctime>

namespace nox::utils {
namespace {

struct WallClockInstant {
  std::int64_t seconds;
  unsigned short milliseconds;
};

WallClockInstant now() {
  timespec instant;
  clock_gettime(CLOCK_REALTIME, &instant);
  return {static_cast<std::int64_t>(instant.tv_sec), static_cast<unsigned short>(instant.tv_nsec / 1000000)};
}

Time sinceEpoch(const WallClockInstant& instant) {
  Time time;
  time.setMilliseconds(static_cast<std::uint64_t>(instant.seconds) * 1000u + instant.milliseconds);
  return time;
}

// The wall clock may be set back during a run: the clamping subtraction then gives zero.
Time elapsedBetween(const WallClockInstant& begin, const WallClockInstant& end) {
  Time elapsed = sinceEpoch(end);
  elapsed.sub(sinceEpoch(begin));
  return elapsed;
}

}  // namespace

Time Timer::start() {
  // The run that ends and the one that begins share one reading, so no time is lost
  // between them.
  const WallClockInstant instant = now();
  const Time elapsed = started_ ? elapsedBetween({startSeconds_, startMilliseconds_}, instant) : Time();
  started_ = true;
  startSeconds_ = instant.seconds;
  startMilliseconds_ = instant.milliseconds;
  return elapsed;
}

Time Timer::stop() {
  const Time elapsed = getTime();
  started_ = false;
  return elapsed;
}

Time Timer::getTime() { return started_ ? elapsedBetween({startSeconds_, startMilliseconds_}, now()) : Time(); }

}  // namespace nox::utils
