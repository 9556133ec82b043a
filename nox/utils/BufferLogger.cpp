#include <nox/utils/BufferLogger.h>

namespace nox::utils {

BufferLogger::BufferLogger(bool warnings, bool infos, bool traces) : AbstractLogger(warnings, infos, traces) {}

void BufferLogger::clear() {
  resetErrors();
  entries_.clear();
}

void BufferLogger::flush(AbstractLogger& target) {
  for (const Entry& entry : entries_) {
    const char* file = entry.file.c_str();
    const char* message = entry.message.c_str();
    switch (entry.kind) {
      case 'i':
        if (target.isLoggingInfo()) target.logInfo(file, entry.line, message);
        break;
      case 't':
        if (target.isLoggingTrace()) target.logTrace(file, entry.line, message);
        break;
      case 'w':
        if (target.isLoggingWarning()) target.logWarning(file, entry.line, message);
        break;
      default:
        target.logError(entry.error, file, entry.line, message);
        break;
    }
  }
  clear();
}

void BufferLogger::doLogTrace(const char* file, unsigned int line, const char* message) {
  record('t', file, line, message, ErrorType());
}

void BufferLogger::doLogInfo(const char* file, unsigned int line, const char* message) {
  record('i', file, line, message, ErrorType());
}

void BufferLogger::doLogWarning(const char* file, unsigned int line, const char* message) {
  record('w', file, line, message, ErrorType());
}

void BufferLogger::doLogError(const ErrorType& error, const char* file, unsigned int line, const char* message) {
  record('e', file, line, message, error);
}

void BufferLogger::record(char kind, const char* file, unsigned int line, const char* message, const ErrorType& error) {
  entries_.push_back(Entry{kind, String(file), line, String(message), error});
}

}  // namespace nox::utils
