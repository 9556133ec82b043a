// Adapts the library allocator to the standard containers' allocator interface.
#pragma once

#include <nox/allocator/Allocator.h>

#include <cstddef>

namespace nox::allocator {

template <class T>
class StdAllocator {
 public:
  using value_type = T;

  StdAllocator() noexcept = default;
  template <class U>
  StdAllocator(const StdAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) {
    return static_cast<T*>(Allocator::instance().allocate(count * sizeof(T), __FILE__, __LINE__));
  }
  void deallocate(T* pointer, std::size_t count) noexcept {
    Allocator::instance().deallocate(pointer, count * sizeof(T));
  }

  template <class U>
  bool operator==(const StdAllocator<U>&) const noexcept {
    return true;
  }
  template <class U>
  bool operator!=(const StdAllocator<U>&) const noexcept {
    return false;
  }
};

}  // namespace nox::allocator
