#include <nox/utils/Mutex.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>

#include <cerrno>
#include <cstddef>

namespace nox::utils {
namespace {

// What a POSIX result code means for one operation; the texts are what users read in logs.
struct Explanation {
  int code;
  const char* text;
};

constexpr const char* kInvalidLock =
    "[EINVAL] Either The mutex wasn't properly initialized (during its construction) or the mutex was created with "
    "the protocol attribute having the value PTHREAD_PRIO_PROTECT and the calling thread's priority is higher than "
    "the mutex's current priority ceiling.";
constexpr const char* kTooManyRecursiveLocks =
    "[EAGAIN] The maximum number of recursive locks for mutex has been exceeded.";
constexpr const char* kInvalidAttributes = "[EINVAL] The value specified by attr is invalid.";

constexpr Explanation kLockResults[] = {
    {EINVAL, kInvalidLock},
    {EAGAIN, kTooManyRecursiveLocks},
    {EDEADLK, "[EDEADLK] The current thread already owns the mutex."},
};
constexpr Explanation kTrylockResults[] = {
    {EINVAL, kInvalidLock},
    {EAGAIN, kTooManyRecursiveLocks},
    {EBUSY, "[EBUSY] The mutex it already locked."},
};
constexpr Explanation kUnlockResults[] = {
    {EINVAL, "[EINVAL] The mutex wasn't properly initialized (during its construction)."},
    {EAGAIN, kTooManyRecursiveLocks},
    {EPERM, "[EPERM] The current thread does not own the mutex."},
};
constexpr Explanation kAttributesInitialisationResults[] = {
    {ENOMEM, "[ENOMEM] Insufficient memory exists to initialize the mutex attributes object."},
};
constexpr Explanation kInitialisationResults[] = {
    {EAGAIN, "[EAGAIN] The system lacked the necessary resources (other than memory) to initialise another mutex."},
    {ENOMEM, "[ENOMEM] Insufficient memory exists to initialize the mutex."},
    {EPERM, "[EPERM] The caller does not have the privilege to perform the operation."},
    {EBUSY,
     "[EBUSY] The implementation has detected an attempt to re-initialize the object referenced by mutex, a "
     "previously initialized, but not yet destroyed, mutex."},
    {EINVAL, kInvalidAttributes},
};
constexpr Explanation kDestructionResults[] = {
    {EBUSY,
     "[EBUSY] The implementation has detected an attempt to destroy the object referenced by mutex while it is "
     "locked or referenced by another thread."},
    {EINVAL, "[EINVAL] The value specified by mutex is invalid."},
};
constexpr Explanation kAttributesDestructionResults[] = {
    {EINVAL, kInvalidAttributes},
};

template <std::size_t size>
const char* explain(int code, const Explanation (&explanations)[size]) {
  for (const Explanation& explanation : explanations) {
    if (explanation.code == code) return explanation.text;
  }
  return nullptr;
}

// Locking failures are the caller's to handle: known codes are logged, anything else
// means the mutex is in a state this wrapper never produces.
template <std::size_t size>
bool checkLocking(int code, const Explanation (&explanations)[size], const char* unknownSuffix,
                  AbstractLogger* logger) {
  if (code == 0) return true;
  if (const char* text = explain(code, explanations)) {
    NOX_LOG_ERROR(logger, error::threadError, text);
  } else {
    NOX_FAIL("Unknown error (" << code << unknownSuffix);
  }
  return false;
}

// Construction and destruction have no logger to report to: every failure is an assertion.
template <std::size_t size>
bool checkLifecycle(int code, const Explanation (&explanations)[size], const char* unknownSuffix) {
  if (code == 0) return true;
  if (const char* text = explain(code, explanations)) {
    NOX_FAIL(text);
  } else {
    NOX_FAIL("Unknown error (" << code << unknownSuffix);
  }
  return false;
}

}  // namespace

Mutex::Mutex(Type type) : attributes_(), mutex_(), attributesInitialised_(false) {
  attributesInitialised_ = checkLifecycle(pthread_mutexattr_init(&attributes_), kAttributesInitialisationResults,
                                          ") during the initialization of the mutex attributes object.");
  // Only the two valid type constants ever reach settype, so it cannot fail.
  if (attributesInitialised_) {
    pthread_mutexattr_settype(&attributes_, type == Recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_NORMAL);
  }
  const int result = pthread_mutex_init(&mutex_, attributesInitialised_ ? &attributes_ : nullptr);
  if (!checkLifecycle(result, kInitialisationResults, ") during the initialization of the mutex.")) {
    // Leave a usable (normal) mutex behind should the assertion handler return.
    mutex_ = PTHREAD_MUTEX_INITIALIZER;
  }
}

Mutex::~Mutex() {
  checkLifecycle(pthread_mutex_destroy(&mutex_), kDestructionResults, ") during the mutex destruction.");
  if (attributesInitialised_) {
    checkLifecycle(pthread_mutexattr_destroy(&attributes_), kAttributesDestructionResults,
                   ") during the mutex attributes destruction.");
  }
}

bool Mutex::lockFailed(int code, AbstractLogger* logger) {
  return checkLocking(code, kLockResults, ") during the mutex lock.", logger);
}

bool Mutex::trylockFailed(int code, AbstractLogger* logger) {
  return checkLocking(code, kTrylockResults, ") during the mutex try lock.", logger);
}

bool Mutex::unlockFailed(int code, AbstractLogger* logger) {
  return checkLocking(code, kUnlockResults, ") during the mutex unlock.", logger);
}

}  // namespace nox::utils
