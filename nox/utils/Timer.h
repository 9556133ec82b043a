// A stopwatch on the wall clock, with millisecond resolution.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/Time.h>

#include <cstdint>

namespace nox::utils {

class NOX_UTILS_API Timer {
 public:
  Timer() = default;

  // Returns the time of the run it ends (zero when not running), then restarts.
  Time start();
  // Returns the elapsed time and stops; zero when not running.
  Time stop();
  // Elapsed time of the current run (zero when not started); the timer keeps running.
  Time getTime();
  bool isStarted() const { return started_; }

 private:
  bool started_ = false;
  std::int64_t startSeconds_ = 0;
  unsigned short startMilliseconds_ = 0;
};

}  // namespace nox::utils
