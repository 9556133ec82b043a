// What every fuzz target shares. An assertion reached from input is a finding, so the
// targets replace the library's handler by one that aborts (the fuzzer then keeps the
// input); a property a target checks on its own results fails the same way.
#pragma once

#include <nox/utils/AbstractLogger.h>

#include <cstddef>
#include <string_view>

namespace nox::fuzz {

// Installs the aborting assertion handler. Targets call it from LLVMFuzzerInitialize,
// which the replay program calls as libFuzzer does.
void abortOnAssertion();

// Prints `what` (and `detail`, when given) and aborts.
[[noreturn]] void fail(const char* what, std::string_view detail = {});

// A logger that keeps nothing: the targets only ask whether an error was reported.
class SilentLogger : public nox::utils::AbstractLogger {
 public:
  SilentLogger() : AbstractLogger(true, false, false) {}

 protected:
  void doLogError(const nox::utils::ErrorType&, const char*, unsigned int, const char*) override {}
  void doLogWarning(const char*, unsigned int, const char*) override {}
};

}  // namespace nox::fuzz

// Fails the run when `condition` does not hold; the second form also prints `detail`
// (a string_view), such as the text that broke the property.
#define NOX_FUZZ_CHECK(condition) NOX_FUZZ_CHECK_SHOWING(condition, std::string_view())
#define NOX_FUZZ_CHECK_SHOWING(condition, detail)                                  \
  do {                                                                             \
    if (!(condition)) ::nox::fuzz::fail("check failed: " #condition, (detail));   \
  } while (false)
