#include <nox/utils/debugger/InspectionFramework.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/impl/FacilitiesLogger.h>
#include <nox/utils/debugger/impl/HTTPServer.h>
#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>

namespace nox::utils::debugger {

InspectionFramework::InspectionFramework(Facilities& facilities)
    : facilities_(facilities),
      name_("default"),
      logger_(NOX_NEW impl::FacilitiesLogger(facilities)),
      impl_(NOX_NEW impl::InspectionFrameworkImpl(facilities.getStringTable(), logger_.get())),
      http_(NOX_NEW impl::HTTPServer(*this)) {}

InspectionFramework::~InspectionFramework() {
  // The worker thread serves requests through the implementation: stop it first.
  http_.reset();
  impl_.reset();
}

void InspectionFramework::setName(const char* name) { name_ = name != nullptr ? name : ""; }

AbstractLogger& InspectionFramework::getLogger() const { return *logger_; }

DebuggerFramework& InspectionFramework::getDebugger() const { return impl_->getDebugger(); }

EngineDebuggerFacade& InspectionFramework::getFacade() const { return impl_->getFacade(); }

bool InspectionFramework::registerEngine(AbstractEngine& engine) {
  return impl_->registerEngine(engine, logger_.get());
}

void InspectionFramework::unregisterEngine(const char* path) { impl_->unregisterEngine(path, logger_.get()); }

void InspectionFramework::enableEngine(const char* path) { impl_->enableEngine(path, logger_.get()); }

void InspectionFramework::disableEngine(const char* path) { impl_->disableEngine(path, logger_.get()); }

bool InspectionFramework::isEngineEnabled(const char* path) const {
  return impl_->isEngineEnabled(path, logger_.get());
}

void InspectionFramework::enableAllEngines() { impl_->enableAllEngines(); }

void InspectionFramework::disableAllEngines() { impl_->disableAllEngines(); }

Vector<InspectionFramework::EngineState> InspectionFramework::listEngines() const {
  Vector<EngineState> engines;
  impl_->visitEngines([&engines](const AbstractEngine& engine) {
    engines.push_back(EngineState{String(engine.getPath()), engine.isEnabled()});
  });
  return engines;
}

bool InspectionFramework::startHttp(unsigned short port) { return http_->start(port); }

bool InspectionFramework::startHttp(const HttpOptions& options) { return http_->start(options); }

bool InspectionFramework::isHttpStarted() const { return http_->isStarted(); }

unsigned short InspectionFramework::getHttpPort() const { return http_->getPort(); }

void InspectionFramework::shutdownHttp() { http_->shutdown(); }

resources::Status InspectionFramework::retrieveResource(const char* path, unsigned int length,
                                                        const DynamicObject& parameters, AbstractObjectBuilder& reply) {
  return impl_->retrieveResource(path, length, parameters, reply);
}

resources::Status InspectionFramework::createResource(const char* path, unsigned int length,
                                                      const DynamicObject& request, AbstractObjectBuilder& reply) {
  return impl_->createResource(path, length, request, reply);
}

resources::Status InspectionFramework::deleteResource(const char* path, unsigned int length,
                                                      const DynamicObject& parameters, AbstractObjectBuilder& reply) {
  return impl_->deleteResource(path, length, parameters, reply);
}

bool InspectionFramework::unsubscribe(unsigned int handle) { return impl_->unsubscribe(handle); }

void InspectionFramework::unsubscribeAll() { impl_->unsubscribeAll(); }

unsigned int InspectionFramework::getSubscriptionLimit() const { return impl_->getSubscriptionLimit(); }

void InspectionFramework::setSubscriptionLimit(unsigned int limit) { impl_->setSubscriptionLimit(limit); }

}  // namespace nox::utils::debugger
