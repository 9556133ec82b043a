// Reports the unregistration of an entity to the EntityUnregistrationRequests of a registry. The typed hook
// notifies the request's listeners; override it to do more.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

namespace nox::utils::debugger {

class EntityUnregistrationRequest;

class NOX_UTILS_API EntityUnregistrationRequestVisitor : public AbstractEventRequestVisitor {
 public:
  explicit EntityUnregistrationRequestVisitor(unsigned int entity) : entity_(entity) {}

  // Passes requests of type EntityUnregistrationRequest (by type id) to onRequest; ignores the others.
  void visit(AbstractEventRequest& request) final;

  unsigned int getEntity() const { return entity_; }

 protected:
  virtual void onRequest(EntityUnregistrationRequest& request);

 private:
  unsigned int entity_;
};

}  // namespace nox::utils::debugger
