#include <nox/utils/AbstractLogger.h>

namespace nox::utils {

AbstractLogger::AbstractLogger(bool warnings, bool infos, bool traces)
    : warnings_(warnings), infos_(infos), traces_(traces), errorSeen_(false) {}

AbstractLogger::~AbstractLogger() = default;

void AbstractLogger::logTrace(const char* file, unsigned int line, const char* message) {
  if (traces_) doLogTrace(file, line, message);
}

void AbstractLogger::logInfo(const char* file, unsigned int line, const char* message) {
  if (infos_) doLogInfo(file, line, message);
}

void AbstractLogger::logWarning(const char* file, unsigned int line, const char* message) {
  if (warnings_) doLogWarning(file, line, message);
}

void AbstractLogger::logError(const ErrorType& error, const char* file, unsigned int line, const char* message) {
  // Set before the implementation locks anything: a sticky flag, and a racing
  // resetErrors may lose one setting.
  errorSeen_ = true;
  doLogError(error, file, line, message);
}

void AbstractLogger::resetErrors() { errorSeen_ = false; }

void AbstractLogger::doLogTrace(const char*, unsigned int, const char*) {}
void AbstractLogger::doLogInfo(const char*, unsigned int, const char*) {}
void AbstractLogger::doLogWarning(const char*, unsigned int, const char*) {}

}  // namespace nox::utils
