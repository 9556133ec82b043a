#include <nox/utils/Facilities.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/OstreamLogger.h>
#include <nox/utils/RandomManager.h>
#include <nox/utils/ScopedPtr.h>
#include <nox/utils/Singleton.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractEventFilter.h>
#include <nox/utils/debugger/AbstractEventRequest.h>
#include <nox/utils/debugger/BreakpointRequest.h>
#include <nox/utils/debugger/EntitiesFilter.h>
#include <nox/utils/debugger/EntityRegistrationRequest.h>
#include <nox/utils/debugger/EntityUnregistrationRequest.h>
#include <nox/utils/debugger/HitCountFilter.h>
#include <nox/utils/debugger/InitializationRequest.h>
#include <nox/utils/debugger/InspectionFramework.h>
#include <nox/utils/debugger/LocationFilter.h>
#include <nox/utils/debugger/MainContext.h>
#include <nox/utils/debugger/TargetDisconnectRequest.h>
#include <nox/utils/debugger/TargetSuspendRequest.h>
#include <nox/utils/debugger/TerminationRequest.h>
#include <nox/utils/details/Version.h>

namespace nox::utils {

// Members in creation order; the inspection framework comes last, as it reaches the
// others through the Facilities, and is destroyed first.
struct Facilities::Body {
  AbstractLogger* logger;
  OstreamLogger defaultLogger;
  TypeManager types;
  StringTable strings{0};
  RandomManager random;
  ScopedPtr<debugger::InspectionFramework> inspection;

  Body() : logger(&defaultLogger) {}
};

Facilities::Facilities() : body_(NOX_NEW Body()) {
  body_->inspection.reset(NOX_NEW debugger::InspectionFramework(*this));
}

Facilities::~Facilities() {
  // Explicitly first: the framework still reports to the logger while it goes.
  body_->inspection.reset();
  NOX_DELETE(body_);
}

void Facilities::create() {
  // Refused before a second set of services is built for nothing.
  if (isSet()) {
    NOX_FAIL("trying to overwrite singleton instance");
    return;
  }
  Singleton<Facilities>::set(NOX_NEW Facilities());
}

void Facilities::destroy() {
  if (!Singleton<Facilities>::isSet()) return;
  Facilities* facilities = &Singleton<Facilities>::get();
  Singleton<Facilities>::set(nullptr);
  NOX_DELETE(facilities);
}

Facilities& Facilities::instance() { return Singleton<Facilities>::get(); }

bool Facilities::isSet() { return Singleton<Facilities>::isSet(); }

AbstractLogger& Facilities::getLogger() { return *body_->logger; }

void Facilities::setLogger(AbstractLogger& logger) { body_->logger = &logger; }

void Facilities::clearLogger() { body_->logger = &body_->defaultLogger; }

TypeManager& Facilities::getTypeManager() { return body_->types; }

StringTable& Facilities::getStringTable() { return body_->strings; }

RandomManager& Facilities::getRandomNumberGenerator() { return body_->random; }

debugger::InspectionFramework& Facilities::getInspectionFramework() { return *body_->inspection; }

namespace {

template <class... Classes>
struct ClassList {};

// Every class before those derived from it. Registration walks the list forwards and
// unregistration backwards, so that no type outlives its bases.
using DebuggerClasses =
    ClassList<debugger::AbstractContext, debugger::AbstractEventFilter, debugger::AbstractEventRequest,
              debugger::EntitiesFilter, debugger::HitCountFilter, debugger::LocationFilter, debugger::BreakpointRequest,
              debugger::EntityRegistrationRequest, debugger::EntityUnregistrationRequest,
              debugger::InitializationRequest, debugger::TargetDisconnectRequest, debugger::TargetSuspendRequest,
              debugger::TerminationRequest, debugger::MainContext>;

template <class... Classes>
bool registerClasses(ClassList<Classes...>, TypeManager& types, AbstractLogger* logger) {
  // Left to right, stopping at the first refusal.
  return (types.registerStaticObjectType<Classes>(logger) && ...);
}

template <class... Classes>
void unregisterClasses(ClassList<Classes...>, TypeManager& types) {
  const Uuid* ids[] = {&Classes::getClassTypeId()...};
  for (std::size_t i = sizeof...(Classes); i-- > 0;) types.unregisterType(*ids[i]);
}

}  // namespace

bool initialize(AbstractLogger* logger) {
  if (isInitialized()) return true;
  Facilities::create();
  if (!Facilities::isSet()) {
    NOX_LOG_ERROR(logger, error::invalidOperation, "Unable to create the facilities singleton.");
    return false;
  }
  NOX_LOG_INFO(logger, "Initializing the runtime utils systems.");
  TypeManager& types = Facilities::instance().getTypeManager();
  if (!types.registerBaseTypes(logger) || !registerClasses(DebuggerClasses(), types, logger)) {
    // Half a library is worse than none: the caller may simply try again.
    Facilities::destroy();
    return false;
  }
  return true;
}

bool terminate(AbstractLogger* logger) {
  if (!isInitialized()) return false;
  NOX_LOG_INFO(logger, "Terminating the runtime utils systems.");
  unregisterClasses(DebuggerClasses(), Facilities::instance().getTypeManager());
  Facilities::destroy();
  return true;
}

bool isInitialized() { return Facilities::isSet(); }

}  // namespace nox::utils

const char* getVersionNOX_UTILS() { return nox::utils::details::versionText; }
