// A walk over the requests of a RequestRegistry in subscription order. The registry
// keeps its live iterators informed, so requests may be subscribed or unsubscribed
// during the walk (even the current one, from inside its own listener): the walk goes
// on with the requests that are still there, and sees those added meanwhile.
#pragma once

#include <nox/utils/Export.h>

#include <cstddef>

namespace nox::utils::debugger {

class AbstractEventRequest;
class RequestRegistry;

class NOX_UTILS_API RequestIterator {
 public:
  // Iterators from RequestRegistry::createIterator go back through destroyIterator.
  ~RequestIterator() = default;
  RequestIterator(const RequestIterator&) = delete;
  RequestIterator& operator=(const RequestIterator&) = delete;

  // The next request, null at the end.
  AbstractEventRequest* next();

 private:
  friend class RequestRegistry;

  explicit RequestIterator(RequestRegistry& registry) : registry_(registry) {}

  void onRequestAdded(std::size_t position);
  void onRequestRemoved(std::size_t position);

  RequestRegistry& registry_;
  // Index of the next request to return.
  std::size_t position_ = 0;
};

}  // namespace nox::utils::debugger
