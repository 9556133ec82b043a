#include <nox/utils/details/SpareBlocks.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/Containers.h>
#include <nox/utils/Mutex.h>
#include <nox/utils/ScopedMutex.h>

namespace nox::utils::details {

namespace {

// Blocks by size. Only a handful of sizes ever occur (one per kind of record and block
// length), so a linear search over the shelves beats any map.
class Shelves {
 public:
  ~Shelves() {
    gone = true;
    for (Shelf& shelf : shelves_) {
      for (void* block : shelf.blocks) NOX_DEALLOCATE(block);
    }
  }

  void* take(std::size_t bytes) {
    ScopedMutex lock(mutex_);
    Shelf* shelf = find(bytes);
    if (shelf == nullptr || shelf->blocks.empty()) return nullptr;
    void* block = shelf->blocks.back();
    shelf->blocks.pop_back();
    keptBytes_ -= bytes;
    return block;
  }

  bool give(void* block, std::size_t bytes) {
    ScopedMutex lock(mutex_);
    if (keptBytes_ + bytes > SpareBlocks::capacityBytes) return false;
    Shelf* shelf = find(bytes);
    if (shelf == nullptr) shelf = &shelves_.emplace_back(Shelf{bytes, {}});
    shelf->blocks.push_back(block);
    keptBytes_ += bytes;
    return true;
  }

  std::size_t countBytes() {
    ScopedMutex lock(mutex_);
    return keptBytes_;
  }

  // Set when the cache is destroyed at exit: block allocators with static storage that
  // go later free their blocks themselves.
  static inline bool gone = false;

 private:
  struct Shelf {
    std::size_t bytes;
    Vector<void*> blocks;
  };

  Shelf* find(std::size_t bytes) {
    for (Shelf& shelf : shelves_) {
      if (shelf.bytes == bytes) return &shelf;
    }
    return nullptr;
  }

  Mutex mutex_;
  Vector<Shelf> shelves_;
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

}  // namespace nox::utils::details
