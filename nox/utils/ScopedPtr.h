// Sole owner of an object made with NOX_NEW; destroys it through the library allocator.
#pragma once

#include <nox/allocator/Allocator.h>
#include <nox/utils/Assertion.h>

namespace nox::utils {

template <class T>
class ScopedPtr {
 public:
  ScopedPtr() = default;
  explicit ScopedPtr(T* pointer) : pointer_(pointer) {}
  ~ScopedPtr() { NOX_DELETE(pointer_); }

  ScopedPtr(const ScopedPtr&) = delete;
  ScopedPtr& operator=(const ScopedPtr&) = delete;

  // Destroys the current object and takes ownership of `pointer`.
  void reset(T* pointer = nullptr) {
    if (pointer != nullptr && pointer == pointer_) {
      NOX_FAIL("resetting a scoped ptr to itself!");
      return;
    }
    T* old = pointer_;
    pointer_ = pointer;
    NOX_DELETE(old);
  }
  // Gives up ownership without destroying.
  T* release() {
    T* pointer = pointer_;
    pointer_ = nullptr;
    return pointer;
  }

  T* get() const { return pointer_; }
  T& operator*() const {
    NOX_ASSERT(pointer_ != nullptr, "accessing a null scoped ptr");
    return *pointer_;
  }
  T* operator->() const {
    NOX_ASSERT(pointer_ != nullptr, "accessing a null scoped ptr");
    return pointer_;
  }
  explicit operator bool() const { return pointer_ != nullptr; }

 private:
  T* pointer_ = nullptr;
};

}  // namespace nox::utils
