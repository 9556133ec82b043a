// Evaluates the filters of one type over a request's filter list. A visitor takes only
// the filters whose type id is its own filter type; isValid() then says whether the
// filters of that type, together, let the event through. A kind of filter the request
// does not have lets every event through.
#pragma once

#include <nox/utils/Export.h>

namespace nox::utils::debugger {

class AbstractEventFilter;

class NOX_UTILS_API AbstractEventFilterVisitor {
 public:
  virtual ~AbstractEventFilterVisitor();
  virtual bool isValid() const = 0;
  // False, changing nothing, for a filter of another type.
  virtual bool visit(const AbstractEventFilter& filter) = 0;
};

}  // namespace nox::utils::debugger
