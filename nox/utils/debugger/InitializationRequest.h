// Subscribes to the start of the simulation. Takes no filter.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequest.h>

namespace nox::utils::debugger {

class NOX_UTILS_API InitializationRequest : public AbstractEventRequest {
  NOX_STATIC_OBJECT("nox::utils::debugger::InitializationRequest", "99d9780e-eb2b-487c-937a-1840077c0816",
                    &InitializationRequest::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  explicit InitializationRequest(unsigned int handle) : AbstractEventRequest(handle) {}

  // Calls every listener's onInitialization.
  void notify() const;
};

}  // namespace nox::utils::debugger
