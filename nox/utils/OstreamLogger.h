// Writes one formatted line per message to standard streams, serialised on its own
// mutex so one instance may be shared by all threads (the library's default logger).
// A null stream drops its level.
#pragma once

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Mutex.h>

#include <iosfwd>

namespace nox::utils {

class NOX_UTILS_API OstreamLogger : public AbstractLogger {
 public:
  // Errors to std::cerr; warnings, infos and traces to std::cout.
  OstreamLogger();
  // Each level is on exactly when its stream is given.
  OstreamLogger(std::ostream* errors, std::ostream* warnings, std::ostream* infos, std::ostream* traces);
  ~OstreamLogger() override;

  OstreamLogger(const OstreamLogger&) = delete;
  OstreamLogger& operator=(const OstreamLogger&) = delete;

  void resetErrors() override;

 protected:
  void doLogTrace(const char* file, unsigned int line, const char* message) override;
  void doLogInfo(const char* file, unsigned int line, const char* message) override;
  void doLogWarning(const char* file, unsigned int line, const char* message) override;
  void doLogError(const ErrorType& error, const char* file, unsigned int line, const char* message) override;

 private:
  void writeLine(std::ostream* stream, const char* file, unsigned int line, const char* level, const char* message);

  Mutex mutex_;
  std::ostream* errors_;
  std::ostream* warnings_;
  std::ostream* infos_;
  std::ostream* traces_;
};

}  // namespace nox::utils
