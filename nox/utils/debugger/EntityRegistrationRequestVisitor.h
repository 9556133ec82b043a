// Reports the registration of an entity to the EntityRegistrationRequests of a registry. The typed hook
// notifies the request's listeners; override it to do more.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

namespace nox::utils::debugger {

class EntityRegistrationRequest;

class NOX_UTILS_API EntityRegistrationRequestVisitor : public AbstractEventRequestVisitor {
 public:
  explicit EntityRegistrationRequestVisitor(unsigned int entity) : entity_(entity) {}

  // Passes requests of type EntityRegistrationRequest (by type id) to onRequest; ignores the others.
  void visit(AbstractEventRequest& request) final;

  unsigned int getEntity() const { return entity_; }

 protected:
  virtual void onRequest(EntityRegistrationRequest& request);

 private:
  unsigned int entity_;
};

}  // namespace nox::utils::debugger
