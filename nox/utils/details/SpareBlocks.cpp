#include <nox/utils/details/SpareBlocks.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/Mutex.h>
#include <nox/utils/ScopedMutex.h>

#include <new>

namespace nox::utils::details {

namespace {

// Blocks by size. Only a handful of sizes ever occur (one per kind of record and block
// length, a few arena block sizes), so a short array of shelves searched linearly does;
// a block of yet another size is not kept. Kept blocks are chained through their own
// first bytes, so keeping them allocates nothing.
class Shelves {
 public:
  ~Shelves() {
    gone = true;
    for (Shelf& shelf : shelves_) {
      while (shelf.top != nullptr) NOX_DEALLOCATE(pop(shelf));
    }
  }

  void* take(std::size_t bytes) {
    ScopedMutex lock(mutex_);
    Shelf* shelf = find(bytes);
    if (shelf == nullptr || shelf->top == nullptr) return nullptr;
    keptBytes_ -= bytes;
    return pop(*shelf);
  }

  bool give(void* block, std::size_t bytes) {
    ScopedMutex lock(mutex_);
    if (bytes < sizeof(KeptBlock) || keptBytes_ + bytes > SpareBlocks::capacityBytes) return false;
    Shelf* shelf = find(bytes);
    if (shelf == nullptr) shelf = findEmpty();
    if (shelf == nullptr) return false;
    shelf->bytes = bytes;
    shelf->top = new (block) KeptBlock{shelf->top};
    keptBytes_ += bytes;
    return true;
  }

  std::size_t countBytes() {
    ScopedMutex lock(mutex_);
    return keptBytes_;
  }

  std::size_t countBlocks() {
    ScopedMutex lock(mutex_);
    std::size_t blocks = 0;
    for (const Shelf& shelf : shelves_) {
      for (const KeptBlock* block = shelf.top; block != nullptr; block = block->next) ++blocks;
    }
    return blocks;
  }

  // Set when the cache is destroyed at exit: block allocators with static storage that
  // go later free their blocks themselves.
  static inline bool gone = false;

 private:
  struct KeptBlock {
    KeptBlock* next;
  };
  // An empty shelf may take blocks of another size.
  struct Shelf {
    std::size_t bytes = 0;
    KeptBlock* top = nullptr;
  };

  Shelf* find(std::size_t bytes) {
    for (Shelf& shelf : shelves_) {
      if (shelf.bytes == bytes) return &shelf;
    }
    return nullptr;
  }

  Shelf* findEmpty() {
    for (Shelf& shelf : shelves_) {
      if (shelf.top == nullptr) return &shelf;
    }
    return nullptr;
  }

  static void* pop(Shelf& shelf) {
    KeptBlock* block = shelf.top;
    shelf.top = block->next;
    return block;
  }

  Mutex mutex_;
  Shelf shelves_[16];
  std::size_t keptBytes_ = 0;
};

// Made on first use, after the library allocator, so it is destroyed before the
// allocator's exit report and its blocks do not show up as leaks.
Shelves& shelves() {
  static Shelves instance;
  return instance;
}

}  // namespace

void* SpareBlocks::take(std::size_t bytes) { return Shelves::gone ? nullptr : shelves().take(bytes); }

void SpareBlocks::give(void* block, std::size_t bytes) {
  if (block == nullptr) return;
  if (Shelves::gone || !shelves().give(block, bytes)) NOX_DEALLOCATE(block);
}

std::size_t SpareBlocks::countBytes() { return Shelves::gone ? 0 : shelves().countBytes(); }

std::size_t SpareBlocks::countBlocks() { return Shelves::gone ? 0 : shelves().countBlocks(); }

}  // namespace nox::utils::details
