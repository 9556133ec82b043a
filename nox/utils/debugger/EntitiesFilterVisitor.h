// Whether an entity passes the entities filters: it must be listed by at least one of
// them (their union).
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventFilterVisitor.h>

namespace nox::utils::debugger {

class NOX_UTILS_API EntitiesFilterVisitor : public AbstractEventFilterVisitor {
 public:
  explicit EntitiesFilterVisitor(unsigned int entity) : entity_(entity) {}

  bool isValid() const override { return !seen_ || result_; }
  bool visit(const AbstractEventFilter& filter) override;

  bool hasSeenFilter() const { return seen_; }

 private:
  unsigned int entity_;
  bool seen_ = false;
  bool result_ = false;
};

}  // namespace nox::utils::debugger
