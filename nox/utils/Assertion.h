// Assertions: broken internal contracts go to one replaceable, process-wide handler.
//
// Every check follows one pattern (NOX_ASSERT / NOX_FAIL): when the condition fails,
// offer a break to an attached debugger (if pausing is allowed), build the message,
// call the handler, and, should the handler return, let the site carry on with its
// failure value.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/details/Diagnostic.h>

namespace nox::utils {

using AssertionFailedFunction = void (*)(const char* file, unsigned int line, const char* message);

// Calls the current handler; returns if the handler returns.
NOX_UTILS_API void assertionFailed(const char* file, unsigned int line, const char* message);
NOX_UTILS_API void setAssertionFailedFunction(AssertionFailedFunction function);
NOX_UTILS_API AssertionFailedFunction getAssertionFailedFunction();

// The default handler: "file(line): [assertion failed] message" on stderr, exit(1).
NOX_UTILS_API void exitOnAssertionFailed(const char* file, unsigned int line, const char* message);
// Writes the same line, then throws std::runtime_error carrying the message alone.
NOX_UTILS_API void throwOnAssertionFailed(const char* file, unsigned int line, const char* message);

// The pause switch: whether detection points may trap into an attached debugger.
NOX_UTILS_API void allowPausingExecutionOnDetectedError(bool allow);

// True only when a debugger is attached right now and pausing is allowed.
template <int>
bool shouldExecutionBePaused();
template <>
NOX_UTILS_API bool shouldExecutionBePaused<1>();

namespace details {
// Traps into the attached debugger (SIGTRAP).
NOX_UTILS_API void breakIntoDebugger();
// Whether a tracer (debugger) is attached to this process.
NOX_UTILS_API bool isDebuggerAttached();
}  // namespace details

}  // namespace nox::utils

// Unconditional assertion failure; `message` is a chain of << operands.
#define NOX_FAIL(message)                                                                       \
  do {                                                                                          \
    if (::nox::utils::shouldExecutionBePaused<1>()) ::nox::utils::details::breakIntoDebugger(); \
    ::nox::utils::details::Message noxAssertionMessage_;                                        \
    noxAssertionMessage_ << message;                                                            \
    ::nox::utils::assertionFailed(NOX_SOURCE_UNIT, __LINE__, noxAssertionMessage_.c_str());     \
  } while (false)

#define NOX_ASSERT(condition, message) \
  do {                                 \
    if (!(condition)) {                \
      NOX_FAIL(message);               \
    }                                  \
  } while (false)
