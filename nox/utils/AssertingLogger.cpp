#include <nox/utils/AssertingLogger.h>

#include <nox/utils/Assertion.h>

namespace nox::utils {

AssertingLogger::AssertingLogger() : AbstractLogger(false, false, false) {}

void AssertingLogger::doLogError(const ErrorType&, const char* file, unsigned int line, const char* message) {
  assertionFailed(file, line, message);
}

}  // namespace nox::utils
