// Walks the contexts of an entity (EngineDebuggerFacade::visitContexts). Contexts are
// the engines' own classes, so a visitor tells them apart by type id, as the request
// visitors do:
//
//   void visit(AbstractContext& context) override {
//     if (context.getTypeId() == ScriptContext::getClassTypeId()) onScript(static_cast<ScriptContext&>(context));
//   }
#pragma once

#include <nox/utils/Export.h>

namespace nox::utils::debugger {

class AbstractContext;

class NOX_UTILS_API AbstractContextVisitor {
 public:
  virtual ~AbstractContextVisitor();
  virtual void visit(AbstractContext& context) = 0;
};

}  // namespace nox::utils::debugger
