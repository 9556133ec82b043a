// Subscribes to the end of the simulation. Takes no filter.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequest.h>

namespace nox::utils::debugger {

class NOX_UTILS_API TerminationRequest : public AbstractEventRequest {
  NOX_STATIC_OBJECT("nox::utils::debugger::TerminationRequest", "4f42d75e-1837-4822-9de2-610f70752899",
                    &TerminationRequest::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  explicit TerminationRequest(unsigned int handle) : AbstractEventRequest(handle) {}

  // Calls every listener's onTermination.
  void notify() const;
};

}  // namespace nox::utils::debugger
