// Passes the events that happen at one location.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractEventFilter.h>

namespace nox::utils::debugger {

class NOX_UTILS_API LocationFilter : public AbstractEventFilter {
  NOX_STATIC_OBJECT("nox::utils::debugger::LocationFilter", "060a160a-9175-42cf-8548-836663cb62bd",
                    &LocationFilter::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  LocationFilter() = default;
  explicit LocationFilter(const Uri& location) : location_(location) {}

  bool operator()(const Uri& location) const { return location_ == location; }
  const Uri& getLocation() const { return location_; }

 private:
  Uri location_;
};

}  // namespace nox::utils::debugger
