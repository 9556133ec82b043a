// Receives the events caught by the requests it is registered on, one callback per
// event kind, each given the handle of the catching request. Callbacks run on the
// thread that reported the event (usually the engine thread). The defaults ignore the
// event, so a listener overrides only the kinds it subscribes to.
#pragma once

#include <nox/utils/Export.h>

namespace nox::utils {
class Uri;
}

namespace nox::utils::debugger {

class NOX_UTILS_API AbstractEventListener {
 public:
  virtual ~AbstractEventListener();

  virtual void onInitialization(unsigned int request);
  virtual void onTermination(unsigned int request);
  virtual void onTargetSuspension(unsigned int request, unsigned int entity);
  virtual void onTargetDisconnection(unsigned int request);
  virtual void onEntityRegistration(unsigned int request, unsigned int entity);
  virtual void onEntityUnregistration(unsigned int request, unsigned int entity);
  virtual void onBreakpoint(unsigned int request, unsigned int entity, const Uri& location);
};

}  // namespace nox::utils::debugger
