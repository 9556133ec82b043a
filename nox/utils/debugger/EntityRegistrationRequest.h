// Subscribes to the registration of an entity. Takes no filter.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequest.h>

namespace nox::utils::debugger {

class NOX_UTILS_API EntityRegistrationRequest : public AbstractEventRequest {
  NOX_STATIC_OBJECT("nox::utils::debugger::EntityRegistrationRequest", "7FF2390A-AA6F-4E1D-A28C-448238C5DCF6",
                    &EntityRegistrationRequest::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  explicit EntityRegistrationRequest(unsigned int handle) : AbstractEventRequest(handle) {}

  // Calls every listener's onEntityRegistration.
  void notify(unsigned int entity) const;
};

}  // namespace nox::utils::debugger
