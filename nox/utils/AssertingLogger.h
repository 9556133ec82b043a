// A logger that turns every error into an assertion failure and drops everything else.
// Used where a failure can only mean a broken contract (constant identifiers, say).
#pragma once

#include <nox/utils/AbstractLogger.h>

namespace nox::utils {

class NOX_UTILS_API AssertingLogger : public AbstractLogger {
 public:
  AssertingLogger();

 protected:
  void doLogError(const ErrorType& error, const char* file, unsigned int line, const char* message) override;
};

}  // namespace nox::utils
