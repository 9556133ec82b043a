#include <nox/utils/debugger/impl/FacilitiesLogger.h>

#include <nox/utils/Facilities.h>

namespace nox::utils::debugger::impl {
namespace {

thread_local std::uint64_t errorsOfThisThread = 0;

}  // namespace

FacilitiesLogger::FacilitiesLogger(Facilities& facilities)
    : AbstractLogger(true, true, true), facilities_(facilities) {}

std::uint64_t FacilitiesLogger::countErrorsOfThisThread() { return errorsOfThisThread; }

void FacilitiesLogger::doLogTrace(const char* file, unsigned int line, const char* message) {
  facilities_.getLogger().logTrace(file, line, message);
}

void FacilitiesLogger::doLogInfo(const char* file, unsigned int line, const char* message) {
  facilities_.getLogger().logInfo(file, line, message);
}

void FacilitiesLogger::doLogWarning(const char* file, unsigned int line, const char* message) {
  facilities_.getLogger().logWarning(file, line, message);
}

void FacilitiesLogger::doLogError(const ErrorType& error, const char* file, unsigned int line, const char* message) {
  ++errorsOfThisThread;
  facilities_.getLogger().logError(error, file, line, message);
}

}  // namespace nox::utils::debugger::impl
