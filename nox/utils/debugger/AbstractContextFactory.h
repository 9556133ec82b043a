// What an engine hands to EngineDebuggerFacade::pushContext: the context is only made
// when the debugger actually pushes it. The context stays the engine's: popContext gives
// it back, and the debugger never destroys it, so a factory may hand out contexts the
// engine keeps anywhere (pooled, embedded, static).
#pragma once

#include <nox/utils/Export.h>

namespace nox::utils::debugger {

class AbstractContext;

class NOX_UTILS_API AbstractContextFactory {
 public:
  virtual ~AbstractContextFactory();
  virtual AbstractContext* createContext() = 0;
};

}  // namespace nox::utils::debugger
