#include <nox/utils/debugger/RequestRegistry.h>

#include <nox/utils/Assertion.h>
#include <nox/utils/ScopedMutex.h>
#include <nox/utils/debugger/AbstractEventFilter.h>
#include <nox/utils/debugger/AbstractEventRequest.h>
#include <nox/utils/debugger/BreakpointRequest.h>
#include <nox/utils/debugger/EntityRegistrationRequest.h>
#include <nox/utils/debugger/EntityUnregistrationRequest.h>
#include <nox/utils/debugger/InitializationRequest.h>
#include <nox/utils/debugger/RequestIterator.h>
#include <nox/utils/debugger/TargetDisconnectRequest.h>
#include <nox/utils/debugger/TargetSuspendRequest.h>
#include <nox/utils/debugger/TerminationRequest.h>

#include <algorithm>

namespace nox::utils::debugger {

RequestRegistry::RequestRegistry() : mutex_(Mutex::Recursive) {}

RequestRegistry::~RequestRegistry() {
  unsubscribeAll();
  for (RequestIterator* iterator : iterators_) NOX_DELETE(iterator);
  for (AbstractEventRequest* request : retired_) NOX_DELETE(request);
}

unsigned int RequestRegistry::subscribe(std::int32_t kind, AbstractEventListener* const* listeners,
                                        unsigned int listenerCount, AbstractEventFilter* const* filters,
                                        unsigned int filterCount) {
  switch (kind) {
    case event::initialization:
      return subscribe<InitializationRequest>(listeners, listenerCount, filters, filterCount);
    case event::termination:
      return subscribe<TerminationRequest>(listeners, listenerCount, filters, filterCount);
    case event::disconnection:
      return subscribe<TargetDisconnectRequest>(listeners, listenerCount, filters, filterCount);
    case event::suspension:
      return subscribe<TargetSuspendRequest>(listeners, listenerCount, filters, filterCount);
    case event::registration:
      return subscribe<EntityRegistrationRequest>(listeners, listenerCount, filters, filterCount);
    case event::unregistration:
      return subscribe<EntityUnregistrationRequest>(listeners, listenerCount, filters, filterCount);
    case event::breakpoint:
      return subscribe<BreakpointRequest>(listeners, listenerCount, filters, filterCount);
  }
  for (unsigned int i = 0; i < filterCount; ++i) NOX_DELETE(filters[i]);
  return 0;
}

unsigned int RequestRegistry::allocateHandle() {
  ScopedMutex lock(mutex_);
  return nextHandle_++;
}

unsigned int RequestRegistry::doSubscribe(AbstractEventRequest* request, AbstractEventListener* const* listeners,
                                          unsigned int listenerCount, AbstractEventFilter* const* filters,
                                          unsigned int filterCount) {
  for (unsigned int i = 0; i < listenerCount; ++i) {
    if (listeners[i] == nullptr) {
      NOX_FAIL(i << "th given listener is NULL.");
      continue;
    }
    request->registerListener(*listeners[i]);
  }
  for (unsigned int i = 0; i < filterCount; ++i) {
    if (filters[i] == nullptr) {
      NOX_FAIL(i << "th given filter is NULL.");
      continue;
    }
    request->addFilter(filters[i]);
  }
  ScopedMutex lock(mutex_);
  requests_.push_back(request);
  for (RequestIterator* iterator : iterators_) iterator->onRequestAdded(requests_.size() - 1);
  return request->getHandle();
}

bool RequestRegistry::unsubscribe(unsigned int handle) {
  ScopedMutex lock(mutex_);
  auto found = std::find_if(requests_.begin(), requests_.end(),
                            [handle](const AbstractEventRequest* request) { return request->getHandle() == handle; });
  if (found == requests_.end()) return false;
  AbstractEventRequest* request = *found;
  const std::size_t position = static_cast<std::size_t>(found - requests_.begin());
  requests_.erase(found);
  for (RequestIterator* iterator : iterators_) iterator->onRequestRemoved(position);
  retire(request);
  return true;
}

void RequestRegistry::unsubscribeAll() {
  ScopedMutex lock(mutex_);
  while (!requests_.empty()) unsubscribe(requests_.back()->getHandle());
}

unsigned int RequestRegistry::countRequests() const {
  ScopedMutex lock(mutex_);
  return static_cast<unsigned int>(requests_.size());
}

AbstractEventRequest* RequestRegistry::findRequest(unsigned int handle) const {
  ScopedMutex lock(mutex_);
  for (AbstractEventRequest* request : requests_) {
    if (request->getHandle() == handle) return request;
  }
  return nullptr;
}

RequestIterator* RequestRegistry::createIterator() {
  RequestIterator* iterator = NOX_NEW RequestIterator(*this);
  attach(*iterator);
  return iterator;
}

void RequestRegistry::destroyIterator(RequestIterator* iterator) {
  if (iterator == nullptr) return;
  detach(*iterator);
  NOX_DELETE(iterator);
}

void RequestRegistry::accept(AbstractEventRequestVisitor& visitor) {
  ScopedMutex lock(mutex_);
  // A walk on the stack: reporting an event allocates nothing.
  RequestIterator iterator(*this);
  attach(iterator);
  while (AbstractEventRequest* request = iterator.next()) request->accept(visitor);
  detach(iterator);
}

void RequestRegistry::attach(RequestIterator& iterator) {
  ScopedMutex lock(mutex_);
  iterators_.push_back(&iterator);
}

void RequestRegistry::detach(RequestIterator& iterator) {
  ScopedMutex lock(mutex_);
  iterators_.erase(std::remove(iterators_.begin(), iterators_.end(), &iterator), iterators_.end());
  if (!iterators_.empty()) return;
  Vector<AbstractEventRequest*> retired;
  retired.swap(retired_);
  for (AbstractEventRequest* request : retired) NOX_DELETE(request);
}

void RequestRegistry::retire(AbstractEventRequest* request) {
  if (iterators_.empty()) {
    NOX_DELETE(request);
  } else {
    retired_.push_back(request);
  }
}

}  // namespace nox::utils::debugger
