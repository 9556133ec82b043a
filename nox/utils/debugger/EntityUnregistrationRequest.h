// Subscribes to the unregistration of an entity. Takes no filter.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequest.h>

namespace nox::utils::debugger {

class NOX_UTILS_API EntityUnregistrationRequest : public AbstractEventRequest {
  NOX_STATIC_OBJECT("nox::utils::debugger::EntityUnregistrationRequest", "5DBC9B70-FB5F-4C90-B5EA-16532FAF4ECC",
                    &EntityUnregistrationRequest::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  explicit EntityUnregistrationRequest(unsigned int handle) : AbstractEventRequest(handle) {}

  // Calls every listener's onEntityUnregistration.
  void notify(unsigned int entity) const;
};

}  // namespace nox::utils::debugger
