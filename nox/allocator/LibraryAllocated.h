// Base of the classes whose instances the library takes ownership of: event filters,
// event requests, contexts and every other StaticObject, filter creators and type
// creators. The library frees what it owns with NOX_DELETE, which gives the memory back
// to the library allocator, and that allocator aborts on a block it did not hand out.
// These class-level operators make a plain `new LocationFilter(...)` allocate from the
// library allocator too, recording the site of the new-expression, so handing such an
// object to the library is as safe as handing it one made with NOX_NEW. The other way
// round holds as well: `delete` (or std::unique_ptr) of an object made with NOX_NEW
// frees it correctly.
//
// What stays outside: `::new X` (which names the global operator on purpose) and arrays.
#pragma once

#include <nox/allocator/Allocator.h>

#include <cstddef>

namespace nox::allocator {

class LibraryAllocated {
 public:
  // `new X(...)`: the default arguments are taken at the new-expression, so the
  // allocator records the caller's file and line.
  static void* operator new(std::size_t size, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    return Allocator::instance().allocate(size, file, static_cast<unsigned int>(line));
  }
  // `NOX_NEW X(...)`: a class-level operator new hides the global placement forms, so
  // the form NOX_NEW names is declared again here.
  static void* operator new(std::size_t size, const char* file, int line, Allocator* allocator) {
    return allocator->allocate(size, file, static_cast<unsigned int>(line));
  }
  // `new (memory) X(...)` into storage the caller owns; such an object is never handed
  // to the library.
  static void* operator new(std::size_t /*size*/, void* memory) noexcept { return memory; }

  static void operator delete(void* pointer) noexcept { Allocator::instance().deallocate(pointer, 0); }
  // The matching forms, called when a constructor throws out of the new-expressions above.
  static void operator delete(void* pointer, const char* /*file*/, int /*line*/) noexcept {
    Allocator::instance().deallocate(pointer, 0);
  }
  static void operator delete(void* pointer, const char* /*file*/, int /*line*/, Allocator* allocator) noexcept {
    allocator->deallocate(pointer, 0);
  }
  static void operator delete(void* /*pointer*/, void* /*memory*/) noexcept {}

 protected:
  LibraryAllocated() = default;
  ~LibraryAllocated() = default;
};

}  // namespace nox::allocator
