#include <nox/utils/debugger/impl/EventFramework.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Decimal.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/PathCursor.h>
#include <nox/utils/ScopedMutex.h>
#include <nox/utils/debugger/AbstractEventFilter.h>
#include <nox/utils/debugger/AbstractEventFilterCreator.h>
#include <nox/utils/debugger/AbstractEventRequest.h>
#include <nox/utils/debugger/Entity.h>
#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>
#include <nox/utils/debugger/impl/Replies.h>

#include <algorithm>
#include <string_view>

namespace nox::utils::debugger::impl {

EventFramework::EventFramework(InspectionFrameworkImpl& framework)
    : AbstractEngine("events", false), framework_(framework), mutex_(Mutex::Normal) {}

EventFramework::~EventFramework() {
  for (unsigned int handle : subscriptions_) framework_.unsubscribe(handle);
}

// ---- Listening.

void EventFramework::onInitialization(unsigned int request) {
  record(event::initialization, request, invalidEntity, nullptr);
}

void EventFramework::onTermination(unsigned int request) {
  record(event::termination, request, invalidEntity, nullptr);
}

void EventFramework::onTargetSuspension(unsigned int request, unsigned int entity) {
  record(event::suspension, request, entity, nullptr);
}

void EventFramework::onTargetDisconnection(unsigned int request) {
  record(event::disconnection, request, invalidEntity, nullptr);
}

void EventFramework::onEntityRegistration(unsigned int request, unsigned int entity) {
  record(event::registration, request, entity, nullptr);
}

void EventFramework::onEntityUnregistration(unsigned int request, unsigned int entity) {
  record(event::unregistration, request, entity, nullptr);
}

void EventFramework::onBreakpoint(unsigned int request, unsigned int entity, const Uri& location) {
  record(event::breakpoint, request, entity, &location);
}

void EventFramework::record(std::int32_t kind, unsigned int request, unsigned int entity, const Uri* location) {
  // Events reach listeners under the framework mutex, which also guards the flag.
  if (!isEnabled()) return;
  ScopedMutex lock(mutex_);
  events_.push_back(Event{nextEventId_++, kind, request, entity, location != nullptr ? *location : Uri()});
}

Vector<EventFramework::Event> EventFramework::getEvents() const {
  ScopedMutex lock(mutex_);
  return Vector<Event>(events_.begin(), events_.end());
}

// ---- Resources.
//
// The fixed word "subscriptions" matches a whole path segment exactly, as clients
// expect: "subscription" or "subscriptionsX" is not it (a prefix comparison over the
// segment's length would take them for it).

resources::Status EventFramework::retrieveResource(const char* path, unsigned int length, const DynamicObject&,
                                                   AbstractObjectBuilder& builder) {
  PathCursor cursor(path, length);
  if (cursor.done()) {
    ScopedMutex lock(mutex_);
    return reply(builder, [this](AbstractObjectBuilder& out) {
      bool written = out.beginArray();
      for (auto event = events_.begin(); written && event != events_.end(); ++event) {
        written = out.arrayChild() && out.integer(event->id);
      }
      return written && out.endArray();
    });
  }
  unsigned int id = 0;
  if (!cursor.nextUnsigned(id) || !cursor.done()) return resources::unknown;
  return retrieveEvent(id, builder);
}

resources::Status EventFramework::retrieveEvent(unsigned int id, AbstractObjectBuilder& builder) const {
  ScopedMutex lock(mutex_);
  auto found = std::find_if(events_.begin(), events_.end(), [id](const Event& event) { return event.id == id; });
  if (found == events_.end()) return resources::unknown;
  const Event& event = *found;
  return reply(builder, [&event](AbstractObjectBuilder& out) {
    bool written = out.beginObject() && out.objectChild("id") && out.integer(event.id) && out.objectChild("type") &&
                   out.string(getEventKindName(event.kind)) && out.objectChild("requestId") &&
                   out.integer(event.request) && out.objectChild("entity") && out.integer(event.entity);
    if (event.kind == event::breakpoint)
      written = written && out.objectChild("location") && writeUri(out, event.location);
    return written && out.endObject();
  });
}

resources::Status EventFramework::createResource(const char* path, unsigned int length, const DynamicObject& request,
                                                 AbstractObjectBuilder& builder) {
  PathCursor cursor(path, length);
  if (!cursor.next()) return resources::error;
  if (!cursor.is("subscriptions") || !cursor.done()) return resources::unknown;
  return subscribe(request, builder);
}

resources::Status EventFramework::subscribe(const DynamicObject& request, AbstractObjectBuilder& builder) {
  AbstractLogger* logger = framework_.getLogger();
  const unsigned int typeProperty = request.getProperty("type");
  if (typeProperty == 0 || request.getType(typeProperty) != type::string) return resources::error;
  const char* typeName = request.getString(typeProperty);
  const std::int32_t kind = findEventKind(typeName, static_cast<unsigned int>(std::string_view(typeName).size()));
  if (kind < 0) return resources::error;
  RequestRegistry& registry = framework_.getRequestRegistry();
  if (registry.countRequests() >= framework_.getSubscriptionLimit()) {
    NOX_LOG_WARNING(logger, "Refusing the subscription: the framework already holds "
                                << framework_.getSubscriptionLimit() << " subscriptions.");
    return resources::error;
  }
  Vector<AbstractEventFilter*> filters;
  const unsigned int filtersProperty = request.getProperty("filters");
  if (filtersProperty != 0 && !makeFilters(request, filtersProperty, filters)) {
    for (AbstractEventFilter* filter : filters) NOX_DELETE(filter);
    return resources::error;
  }
  AbstractEventListener* listener = this;
  const unsigned int handle =
      registry.subscribe(kind, &listener, 1, filters.data(), static_cast<unsigned int>(filters.size()));
  subscriptions_.push_back(handle);
  return reply(builder, [handle](AbstractObjectBuilder& out) {
    return out.beginObject() && out.objectChild("requestId") && out.integer(handle) && out.endObject();
  });
}

bool EventFramework::makeFilters(const DynamicObject& request, unsigned int filters,
                                 Vector<AbstractEventFilter*>& made) const {
  // Anything but an object could silently widen the subscription to every event.
  if (request.getType(filters) != type::object) return false;
  AbstractLogger* logger = framework_.getLogger();
  const auto& creators = framework_.getEventFilterCreatorFactory();
  for (DynamicObjectIterator member(request, filters, 0); !member.next().end();) {
    const std::string_view name(member.getKey(), member.getKeyLength());
    const AbstractEventFilterCreator* creator = creators.findCreator(name.data(), member.getKeyLength());
    if (creator == nullptr) {
      NOX_LOG_WARNING(logger, "Ignoring the unknown event filter '" << name << "'.");
      continue;
    }
    const type::Type expected = creator->getValueType();
    if (expected != type::null && request.getType(member.getProperty()) != expected) {
      NOX_LOG_WARNING(logger, "Ignoring the event filter '" << name << "': its value does not fit it.");
      continue;
    }
    AbstractEventFilter* filter = creator->create(request, member.getProperty(), logger);
    if (filter == nullptr) {
      NOX_LOG_WARNING(logger, "Refusing the subscription: no event filter '" << name << "' can be made of its value.");
      return false;
    }
    made.push_back(filter);
  }
  return true;
}

resources::Status EventFramework::deleteResource(const char* path, unsigned int length, const DynamicObject&,
                                                 AbstractObjectBuilder& builder) {
  // The empty remainder names nothing; "/" (an empty segment) names the whole queue.
  if (length == 0) return resources::unknown;
  PathCursor cursor(path, length);
  if (!cursor.next()) {
    {
      ScopedMutex lock(mutex_);
      events_.clear();
    }
    return replyNull(builder);
  }
  if (cursor.is("subscriptions")) return deleteSubscriptions(cursor, builder);
  unsigned int id = 0;
  if (!parseDecimal(cursor.segment(), id) || !cursor.done()) return resources::unknown;
  {
    ScopedMutex lock(mutex_);
    auto found = std::find_if(events_.begin(), events_.end(), [id](const Event& event) { return event.id == id; });
    if (found == events_.end()) return resources::unknown;
    events_.erase(found);
  }
  return replyNull(builder);
}

// `cursor` stands on "subscriptions": "/<handle>" after it cancels one, "/" all of them.
resources::Status EventFramework::deleteSubscriptions(PathCursor& cursor, AbstractObjectBuilder& builder) {
  if (cursor.restLength() == 0) return resources::unknown;
  if (cursor.done()) {
    framework_.unsubscribeAll();
    subscriptions_.clear();
    return replyNull(builder);
  }
  unsigned int handle = 0;
  if (!cursor.nextUnsigned(handle) || !cursor.done() || !framework_.unsubscribe(handle)) {
    return resources::unknown;
  }
  subscriptions_.erase(std::remove(subscriptions_.begin(), subscriptions_.end(), handle), subscriptions_.end());
  return replyNull(builder);
}

}  // namespace nox::utils::debugger::impl
