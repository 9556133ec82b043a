// Reports one event to the requests of the registry (RequestRegistry::accept): each
// request hands itself to visit(), and the concrete visitor of the event's kind keeps
// the requests of that kind, by type id, and passes them to its typed hook.
#pragma once

#include <nox/utils/Export.h>

namespace nox::utils::debugger {

class AbstractEventRequest;

class NOX_UTILS_API AbstractEventRequestVisitor {
 public:
  virtual ~AbstractEventRequestVisitor();
  virtual void visit(AbstractEventRequest& request) = 0;
};

}  // namespace nox::utils::debugger
