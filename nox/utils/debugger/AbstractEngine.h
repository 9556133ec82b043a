// A part of the runtime that an inspection client can reach: it answers resource calls
// under its path (the first segment of the resource path) and tells the debugger about
// the entities it simulates. Engines are registered with the inspection framework,
// which attaches them to its EngineDebuggerFacade, and can be enabled or disabled for
// inspection at any time.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/String.h>
#include <nox/utils/debugger/Status.h>

namespace nox::utils {
class AbstractObjectBuilder;
class DynamicObject;
}  // namespace nox::utils

namespace nox::utils::debugger {

class EngineDebuggerFacade;

class NOX_UTILS_API AbstractEngine {
 public:
  // `path` is copied; a null path stays null, and such an engine cannot be registered.
  AbstractEngine(const char* path, bool enabled);
  virtual ~AbstractEngine();

  AbstractEngine(const AbstractEngine&) = delete;
  AbstractEngine& operator=(const AbstractEngine&) = delete;

  // Called by the inspection framework when the engine is registered (null when it is
  // unregistered).
  virtual void attach(EngineDebuggerFacade* facade);

  // Forwarded to the facade when attached; ignored otherwise.
  virtual void onEntitiesRegistration(const unsigned int* entities, unsigned int count);
  virtual void onEntitiesUnregistration(const unsigned int* entities, unsigned int count);

  // `path` is the remainder of the resource path below the engine's own segment (not
  // zero-terminated). The defaults know no resource: they write nothing and answer
  // unknown.
  virtual resources::Status retrieveResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                             AbstractObjectBuilder& reply);
  // `request` holds the query parameters and, for POST, the body.
  virtual resources::Status createResource(const char* path, unsigned int length, const DynamicObject& request,
                                           AbstractObjectBuilder& reply);
  virtual resources::Status deleteResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                           AbstractObjectBuilder& reply);

  void enable();
  void disable();
  bool isEnabled() const { return enabled_; }
  const char* getPath() const { return hasPath_ ? path_.c_str() : nullptr; }

  EngineDebuggerFacade* getFacade() const { return facade_; }

 protected:
  // Overrides act on the change and then pass the flag on to these.
  virtual void doEnable(bool& enabled);
  virtual void doDisable(bool& enabled);

 private:
  EngineDebuggerFacade* facade_ = nullptr;
  String path_;
  bool hasPath_;
  bool enabled_;
};

}  // namespace nox::utils::debugger
