// The event requests subscribed by inspection clients (and by the framework itself),
// in subscription order. Engines report events by visiting it (accept) with a request
// visitor of the event's kind.
//
// Every operation takes the registry's recursive mutex, so a listener called during
// accept may subscribe or unsubscribe on the same thread. A request unsubscribed while
// a walk is under way leaves the list at once but is destroyed only when the last walk
// ends, so a listener may unsubscribe the very request that is calling it.
#pragma once

#include <nox/allocator/Allocator.h>
#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/Mutex.h>

#include <cstdint>

namespace nox::utils::debugger {

class AbstractEventFilter;
class AbstractEventListener;
class AbstractEventRequest;
class AbstractEventRequestVisitor;
class RequestIterator;

class NOX_UTILS_API RequestRegistry {
 public:
  RequestRegistry();
  // Destroys every request (and their filters).
  ~RequestRegistry();

  RequestRegistry(const RequestRegistry&) = delete;
  RequestRegistry& operator=(const RequestRegistry&) = delete;

  // Subscribes a new Request with the next handle, registers the listeners on it and
  // hands it the filters (it owns them, and destroys those it refuses). A null listener
  // or filter is an assertion failure and is skipped. Returns the handle; handles start
  // at 1 and are never reused.
  template <class Request>
  unsigned int subscribe(AbstractEventListener* const* listeners, unsigned int listenerCount,
                         AbstractEventFilter* const* filters, unsigned int filterCount) {
    return doSubscribe(NOX_NEW Request(allocateHandle()), listeners, listenerCount, filters, filterCount);
  }
  // The same for a request kind given by its code (event::Kind). An unknown code
  // subscribes nothing, destroys the filters and returns 0.
  unsigned int subscribe(std::int32_t kind, AbstractEventListener* const* listeners, unsigned int listenerCount,
                         AbstractEventFilter* const* filters, unsigned int filterCount);

  // False when no request has that handle.
  bool unsubscribe(unsigned int handle);
  void unsubscribeAll();

  unsigned int countRequests() const;
  // The request with that handle, null if none. Valid until it is unsubscribed.
  AbstractEventRequest* findRequest(unsigned int handle) const;

  // Iterators made here must be given back to destroyIterator.
  RequestIterator* createIterator();
  void destroyIterator(RequestIterator* iterator);

  // Offers every request, in subscription order, to the visitor.
  void accept(AbstractEventRequestVisitor& visitor);

 private:
  friend class RequestIterator;

  unsigned int allocateHandle();
  unsigned int doSubscribe(AbstractEventRequest* request, AbstractEventListener* const* listeners,
                           unsigned int listenerCount, AbstractEventFilter* const* filters, unsigned int filterCount);
  void attach(RequestIterator& iterator);
  void detach(RequestIterator& iterator);
  void retire(AbstractEventRequest* request);

  mutable Mutex mutex_;
  Vector<AbstractEventRequest*> requests_;
  Vector<RequestIterator*> iterators_;
  // Unsubscribed during a walk; destroyed when the last iterator is detached.
  Vector<AbstractEventRequest*> retired_;
  std::uint32_t nextHandle_ = 1;
};

}  // namespace nox::utils::debugger
