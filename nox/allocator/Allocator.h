// The platform allocator. Every allocation of the library goes through it with the
// source file and line that asked for it, so that live memory can be counted cheaply
// and, when NOX_ALLOCATOR_TRACK=1 is set in the environment, attributed to its site.
#pragma once

#include <nox/allocator/Export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <new>
#include <type_traits>

namespace nox::allocator {

class NOX_ALLOCATOR_API Allocator {
 public:
  // The process-wide allocator. It is never destroyed, so that objects with static
  // storage may still free their memory while the process exits.
  static Allocator& instance();

  // Returns at least `size` bytes aligned like malloc, or throws std::bad_alloc.
  void* allocate(std::size_t size, const char* file = nullptr, unsigned int line = 0);
  // Frees memory from allocate(). The allocator keeps each block's size itself, so
  // `size` may be 0 ("unknown"); any other size must be the one allocated, and a
  // mismatch aborts like a foreign or double free: the caller's bookkeeping is broken.
  void deallocate(void* pointer, std::size_t size = 0);

  std::uint64_t liveBytes() const { return liveBytes_.load(std::memory_order_relaxed); }
  std::uint64_t liveBlocks() const { return liveBlocks_.load(std::memory_order_relaxed); }
  // Number of allocations made since the process started (never decreases).
  std::uint64_t allocationCount() const { return allocationCount_.load(std::memory_order_relaxed); }

  // Whether per-site tracking is on (NOX_ALLOCATOR_TRACK=1 at first use).
  bool isTracking() const { return tracking_; }
  // Writes one line per source site that holds live memory: "file:line blocks bytes".
  // Returns the number of sites written; 0 when nothing is live or tracking is off.
  std::size_t dumpLiveAllocations(std::ostream& out) const;

  Allocator(const Allocator&) = delete;
  Allocator& operator=(const Allocator&) = delete;

 private:
  Allocator();
  ~Allocator() = delete;

  struct SiteTable;

  std::atomic<std::uint64_t> liveBytes_{0};
  std::atomic<std::uint64_t> liveBlocks_{0};
  std::atomic<std::uint64_t> allocationCount_{0};
  bool tracking_;
  SiteTable* sites_;
};

// Destroys an object made with NOX_NEW and gives its memory back. For a polymorphic
// object the whole most-derived object is freed, whatever static type `object` has.
template <class T>
void destroy(T* object) {
  if (object == nullptr) return;
  void* memory;
  if constexpr (std::is_polymorphic_v<T>) {
    memory = dynamic_cast<void*>(object);
  } else {
    memory = const_cast<std::remove_cv_t<T>*>(object);
  }
  object->~T();
  Allocator::instance().deallocate(memory, 0);
}

}  // namespace nox::allocator

// Allocating placement form used by NOX_NEW, and the matching delete that runs when
// a constructor throws.
NOX_ALLOCATOR_API void* operator new(std::size_t size, const char* file, int line,
                                     nox::allocator::Allocator* allocator);
NOX_ALLOCATOR_API void operator delete(void* pointer, const char* file, int line,
                                       nox::allocator::Allocator* allocator) noexcept;

// `NOX_NEW Type(arguments)` allocates through the library allocator, recording the site.
#define NOX_NEW new (__FILE__, __LINE__, &::nox::allocator::Allocator::instance())
// `NOX_DELETE(pointer)` destroys an object made with NOX_NEW.
#define NOX_DELETE(pointer) ::nox::allocator::destroy(pointer)
// Raw buffers: NOX_ALLOCATE(bytes) / NOX_DEALLOCATE(pointer).
#define NOX_ALLOCATE(bytes) ::nox::allocator::Allocator::instance().allocate((bytes), __FILE__, __LINE__)
#define NOX_DEALLOCATE(pointer) ::nox::allocator::Allocator::instance().deallocate((pointer), 0)
