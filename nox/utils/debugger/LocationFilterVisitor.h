// Whether a location passes the location filters: every one of them must match (their
// intersection).
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventFilterVisitor.h>

namespace nox::utils {
class Uri;
}

namespace nox::utils::debugger {

class NOX_UTILS_API LocationFilterVisitor : public AbstractEventFilterVisitor {
 public:
  // `location` must outlive the visitor.
  explicit LocationFilterVisitor(const Uri& location) : location_(location) {}

  bool isValid() const override { return !seen_ || result_; }
  bool visit(const AbstractEventFilter& filter) override;

  bool hasSeenFilter() const { return seen_; }

 private:
  const Uri& location_;
  bool seen_ = false;
  bool result_ = true;
};

}  // namespace nox::utils::debugger
