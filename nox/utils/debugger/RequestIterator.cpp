#include <nox/utils/debugger/RequestIterator.h>

#include <nox/utils/ScopedMutex.h>
#include <nox/utils/debugger/RequestRegistry.h>

namespace nox::utils::debugger {

AbstractEventRequest* RequestIterator::next() {
  ScopedMutex lock(registry_.mutex_);
  if (position_ >= registry_.requests_.size()) return nullptr;
  return registry_.requests_[position_++];
}

void RequestIterator::onRequestAdded(std::size_t position) {
  if (position < position_) ++position_;
}

void RequestIterator::onRequestRemoved(std::size_t position) {
  if (position < position_) --position_;
}

}  // namespace nox::utils::debugger
