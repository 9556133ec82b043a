#include <nox/utils/Assertion.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace nox::utils {
namespace {

// Set once at start-up, before other threads run; not locked.
AssertionFailedFunction currentHandler = &exitOnAssertionFailed;
bool pausingAllowed = false;

void writeAssertionLine(const char* file, unsigned int line, const char* message) {
  std::cerr << file << "(" << line << "): [assertion failed] " << message << std::endl;
}

}  // namespace

void assertionFailed(const char* file, unsigned int line, const char* message) { currentHandler(file, line, message); }

void setAssertionFailedFunction(AssertionFailedFunction function) { currentHandler = function; }

AssertionFailedFunction getAssertionFailedFunction() { return currentHandler; }

void exitOnAssertionFailed(const char* file, unsigned int line, const char* message) {
  writeAssertionLine(file, line, message);
  std::exit(1);
}

void throwOnAssertionFailed(const char* file, unsigned int line, const char* message) {
  writeAssertionLine(file, line, message);
  throw std::runtime_error(message);
}

void allowPausingExecutionOnDetectedError(bool allow) { pausingAllowed = allow; }

template <>
bool shouldExecutionBePaused<1>() {
  return pausingAllowed && details::isDebuggerAttached();
}

namespace details {

bool isDebuggerAttached() {
  // Linux names the tracing process in /proc/self/status; 0 means none.
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.compare(0, 10, "TracerPid:") == 0) return std::strtol(line.c_str() + 10, nullptr, 10) != 0;
  }
  return false;
}

void breakIntoDebugger() { std::raise(SIGTRAP); }

}  // namespace details
}  // namespace nox::utils
