// Subscribes to the disconnection of the inspected target. Takes no filter.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequest.h>

namespace nox::utils::debugger {

class NOX_UTILS_API TargetDisconnectRequest : public AbstractEventRequest {
  NOX_STATIC_OBJECT("nox::utils::debugger::TargetDisconnectRequest", "DC773989-1044-44D6-8993-3351B64DFD35",
                    &TargetDisconnectRequest::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  explicit TargetDisconnectRequest(unsigned int handle) : AbstractEventRequest(handle) {}

  // Calls every listener's onTargetDisconnection.
  void notify() const;
};

}  // namespace nox::utils::debugger
