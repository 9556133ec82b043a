// The event engine, registered under the path "events" while the inspection HTTP server
// runs: clients subscribe to events with JSON bodies, and the events the subscriptions
// catch wait in a queue until the client fetches and deletes them.
//
// Event ids come from a counter that starts at 1 and are never reused. Reading an event
// leaves it queued: events stay until deleted. Events are queued only while the engine
// is enabled (it is created disabled). The queue has its own mutex, since listeners are
// called on engine threads while clients read the queue on the HTTP thread.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/Mutex.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/AbstractEventListener.h>

#include <cstdint>

namespace nox::utils {
class PathCursor;
}

namespace nox::utils::debugger {
class AbstractEventFilter;
}

namespace nox::utils::debugger::impl {

class InspectionFrameworkImpl;

class NOX_UTILS_API EventFramework : public AbstractEngine, public AbstractEventListener {
 public:
  struct Event {
    std::uint32_t id;
    // event::Kind
    std::int32_t kind;
    std::uint32_t request;
    // invalidEntity for the kinds that concern no entity.
    std::uint32_t entity;
    // Breakpoints only.
    Uri location;
  };

  explicit EventFramework(InspectionFrameworkImpl& framework);
  // Cancels the subscriptions it made: their requests would call a dead listener.
  ~EventFramework() override;

  resources::Status retrieveResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                     AbstractObjectBuilder& reply) override;
  resources::Status createResource(const char* path, unsigned int length, const DynamicObject& request,
                                   AbstractObjectBuilder& reply) override;
  resources::Status deleteResource(const char* path, unsigned int length, const DynamicObject& parameters,
                                   AbstractObjectBuilder& reply) override;

  void onInitialization(unsigned int request) override;
  void onTermination(unsigned int request) override;
  void onTargetSuspension(unsigned int request, unsigned int entity) override;
  void onTargetDisconnection(unsigned int request) override;
  void onEntityRegistration(unsigned int request, unsigned int entity) override;
  void onEntityUnregistration(unsigned int request, unsigned int entity) override;
  void onBreakpoint(unsigned int request, unsigned int entity, const Uri& location) override;

  // A copy of the queue, oldest first.
  Vector<Event> getEvents() const;

 private:
  void record(std::int32_t kind, unsigned int request, unsigned int entity, const Uri* location);
  resources::Status subscribe(const DynamicObject& request, AbstractObjectBuilder& reply);
  bool makeFilters(const DynamicObject& request, unsigned int filters, Vector<AbstractEventFilter*>& made) const;
  resources::Status retrieveEvent(unsigned int id, AbstractObjectBuilder& reply) const;
  resources::Status deleteSubscriptions(PathCursor& cursor, AbstractObjectBuilder& reply);

  InspectionFrameworkImpl& framework_;
  mutable Mutex mutex_;
  Deque<Event> events_;
  std::uint32_t nextEventId_ = 1;
  // Handles of the requests this engine subscribed.
  Vector<unsigned int> subscriptions_;
};

}  // namespace nox::utils::debugger::impl
