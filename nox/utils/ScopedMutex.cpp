#include <nox/utils/ScopedMutex.h>

#include <nox/utils/Assertion.h>

namespace nox::utils {

void ScopedMutex::lockFailed() { NOX_FAIL("Failed to lock mutex, see log for details."); }

void ScopedMutex::unlockFailed() { NOX_FAIL("Failed to unlock mutex, see log for details."); }

}  // namespace nox::utils
