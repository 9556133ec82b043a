// Sole ownership of an object made through the library allocator (NOX_NEW, or plain new of
// a class that allocates through it): a std::unique_ptr whose deleter gives the object
// back the same way. Functions that take ownership of a pointer "whatever the answer" hold
// it in one from their first line, so that no path out of them can leak or double-free it.
#pragma once

#include <nox/allocator/Allocator.h>

#include <memory>

namespace nox::allocator {

template <class T>
struct LibraryDelete {
  void operator()(T* object) const { destroy(object); }
};

template <class T>
using Owned = std::unique_ptr<T, LibraryDelete<T>>;

}  // namespace nox::allocator
