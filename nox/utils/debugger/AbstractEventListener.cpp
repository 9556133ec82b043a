#include <nox/utils/debugger/AbstractEventListener.h>

namespace nox::utils::debugger {

AbstractEventListener::~AbstractEventListener() = default;

void AbstractEventListener::onInitialization(unsigned int) {}
void AbstractEventListener::onTermination(unsigned int) {}
void AbstractEventListener::onTargetSuspension(unsigned int, unsigned int) {}
void AbstractEventListener::onTargetDisconnection(unsigned int) {}
void AbstractEventListener::onEntityRegistration(unsigned int, unsigned int) {}
void AbstractEventListener::onEntityUnregistration(unsigned int, unsigned int) {}
void AbstractEventListener::onBreakpoint(unsigned int, unsigned int, const Uri&) {}

}  // namespace nox::utils::debugger
