// The inspection framework's logger. It passes every report on to the current logger
// of the Facilities, which the host may replace at any time, and counts the errors it
// passed on per thread: the HTTP server compares that count around one request to
// learn whether handling that request reported an error, whatever the engine threads
// report meanwhile and whatever was reported before.
#pragma once

#include <nox/utils/AbstractLogger.h>

#include <cstdint>

namespace nox::utils {
class Facilities;
}

namespace nox::utils::debugger::impl {

class FacilitiesLogger : public AbstractLogger {
 public:
  // Every level is on: the target's own switches decide.
  explicit FacilitiesLogger(Facilities& facilities);

  // The errors that the calling thread reported through any FacilitiesLogger so far.
  static std::uint64_t countErrorsOfThisThread();

 protected:
  void doLogTrace(const char* file, unsigned int line, const char* message) override;
  void doLogInfo(const char* file, unsigned int line, const char* message) override;
  void doLogWarning(const char* file, unsigned int line, const char* message) override;
  void doLogError(const ErrorType& error, const char* file, unsigned int line, const char* message) override;

 private:
  Facilities& facilities_;
};

}  // namespace nox::utils::debugger::impl
