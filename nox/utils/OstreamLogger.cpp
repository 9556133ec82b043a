#include <nox/utils/OstreamLogger.h>

#include <nox/utils/ScopedMutex.h>

#include <iostream>

namespace nox::utils {

OstreamLogger::OstreamLogger() : OstreamLogger(&std::cerr, &std::cout, &std::cout, &std::cout) {}

OstreamLogger::OstreamLogger(std::ostream* errors, std::ostream* warnings, std::ostream* infos, std::ostream* traces)
    : AbstractLogger(warnings != nullptr, infos != nullptr, traces != nullptr),
      errors_(errors),
      warnings_(warnings),
      infos_(infos),
      traces_(traces) {}

OstreamLogger::~OstreamLogger() {
  // Lets a line being written by another thread complete before the mutex goes.
  mutex_.lock(nullptr);
  mutex_.unlock(nullptr);
}

void OstreamLogger::resetErrors() {
  ScopedMutex lock(mutex_);
  AbstractLogger::resetErrors();
}

void OstreamLogger::doLogTrace(const char* file, unsigned int line, const char* message) {
  writeLine(traces_, file, line, "trace", message);
}

void OstreamLogger::doLogInfo(const char* file, unsigned int line, const char* message) {
  writeLine(infos_, file, line, "info", message);
}

void OstreamLogger::doLogWarning(const char* file, unsigned int line, const char* message) {
  writeLine(warnings_, file, line, "warning", message);
}

void OstreamLogger::doLogError(const ErrorType& error, const char* file, unsigned int line, const char* message) {
  writeLine(errors_, file, line, error.getCaption(), message);
}

void OstreamLogger::writeLine(std::ostream* stream, const char* file, unsigned int line, const char* level,
                              const char* message) {
  if (stream == nullptr) return;
  ScopedMutex lock(mutex_);
  *stream << file << "(" << line << "): [" << level << "] " << message << std::endl;
}

}  // namespace nox::utils
