// Records messages to replay them later into another logger (flush) or drop them
// (clear): collect the reports of a tentative operation, decide afterwards.
#pragma once

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <cstdint>

namespace nox::utils {

class NOX_UTILS_API BufferLogger : public AbstractLogger {
 public:
  struct Entry {
    char kind;  // 't' trace, 'i' info, 'w' warning, 'e' error
    String file;
    std::uint32_t line;
    String message;
    ErrorType error;  // meaningful for 'e' entries only
  };

  BufferLogger(bool warnings, bool infos, bool traces);

  // Drops every entry without passing anything on.
  void clear();
  // Replays the entries into `target` in recording order, as far as the target's own
  // switches let them through (errors always), then empties the buffer.
  void flush(AbstractLogger& target);

  const Vector<Entry>& getEntries() const { return entries_; }

 protected:
  void doLogTrace(const char* file, unsigned int line, const char* message) override;
  void doLogInfo(const char* file, unsigned int line, const char* message) override;
  void doLogWarning(const char* file, unsigned int line, const char* message) override;
  void doLogError(const ErrorType& error, const char* file, unsigned int line, const char* message) override;

 private:
  void record(char kind, const char* file, unsigned int line, const char* message, const ErrorType& error);

  Vector<Entry> entries_;
};

}  // namespace nox::utils
