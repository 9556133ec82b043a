// The reporting interface of every fallible operation: warning, info and trace
// switches, errors always passed on, and a sticky "an error was seen" flag so that a
// caller may run several operations and ask hasErrors() once.
//
// Operations take an `AbstractLogger*` as last argument; null means report nothing.
// The NOX_LOG_* macros below test the pointer (and the level) before building the
// message, and stamp it with the reporting unit and line.
#pragma once

#include <nox/utils/ErrorType.h>
#include <nox/utils/Export.h>
#include <nox/utils/details/Diagnostic.h>

namespace nox::utils {

class NOX_UTILS_API AbstractLogger {
 public:
  AbstractLogger(const AbstractLogger& other) = default;
  AbstractLogger& operator=(const AbstractLogger& other) = default;
  virtual ~AbstractLogger();

  bool isLoggingWarning() const { return warnings_; }
  bool isLoggingInfo() const { return infos_; }
  bool isLoggingTrace() const { return traces_; }

  void logTrace(const char* file, unsigned int line, const char* message);
  void logInfo(const char* file, unsigned int line, const char* message);
  void logWarning(const char* file, unsigned int line, const char* message);
  // Sets the error flag, then passes the error on whatever the switches say.
  void logError(const ErrorType& error, const char* file, unsigned int line, const char* message);

  bool hasErrors() const { return errorSeen_; }
  virtual void resetErrors();

 protected:
  AbstractLogger(bool warnings, bool infos, bool traces);

  virtual void doLogTrace(const char* file, unsigned int line, const char* message);
  virtual void doLogInfo(const char* file, unsigned int line, const char* message);
  virtual void doLogWarning(const char* file, unsigned int line, const char* message);
  virtual void doLogError(const ErrorType& error, const char* file, unsigned int line, const char* message) = 0;

 private:
  bool warnings_;
  bool infos_;
  bool traces_;
  bool errorSeen_;
};

}  // namespace nox::utils

#define NOX_LOG_ERROR(logger, errorType, message)                                           \
  do {                                                                                      \
    ::nox::utils::AbstractLogger* noxLogger_ = (logger);                                    \
    if (noxLogger_ != nullptr) {                                                            \
      ::nox::utils::details::Message noxLogMessage_;                                        \
      noxLogMessage_ << message;                                                            \
      noxLogger_->logError((errorType), NOX_SOURCE_UNIT, __LINE__, noxLogMessage_.c_str()); \
    }                                                                                       \
  } while (false)

#define NOX_DETAILS_LOG_LEVEL(logger, isLogging, log, message)            \
  do {                                                                    \
    ::nox::utils::AbstractLogger* noxLogger_ = (logger);                  \
    if (noxLogger_ != nullptr && noxLogger_->isLogging()) {               \
      ::nox::utils::details::Message noxLogMessage_;                      \
      noxLogMessage_ << message;                                          \
      noxLogger_->log(NOX_SOURCE_UNIT, __LINE__, noxLogMessage_.c_str()); \
    }                                                                     \
  } while (false)

#define NOX_LOG_WARNING(logger, message) NOX_DETAILS_LOG_LEVEL(logger, isLoggingWarning, logWarning, message)
#define NOX_LOG_INFO(logger, message) NOX_DETAILS_LOG_LEVEL(logger, isLoggingInfo, logInfo, message)
#define NOX_LOG_TRACE(logger, message) NOX_DETAILS_LOG_LEVEL(logger, isLoggingTrace, logTrace, message)
