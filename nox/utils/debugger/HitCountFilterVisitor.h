// Whether the hit-count filters are all satisfied.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventFilterVisitor.h>

namespace nox::utils::debugger {

class NOX_UTILS_API HitCountFilterVisitor : public AbstractEventFilterVisitor {
 public:
  bool isValid() const override { return !seen_ || result_; }
  bool visit(const AbstractEventFilter& filter) override;

  bool hasSeenFilter() const { return seen_; }

 private:
  bool seen_ = false;
  bool result_ = true;
};

}  // namespace nox::utils::debugger
