// Hands out fixed-size blocks of records and takes them back for reuse. Dynamic
// objects carve their trie nodes out of such blocks; one allocator may serve many
// objects (each block belongs to one object at a time) and many threads.
//
// Released blocks are kept for the next acquisition. When the block allocator itself
// goes, its blocks move to the process-wide spare cache, where the next allocators of
// the same block size find them.
#pragma once

#include <nox/allocator/Allocator.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/Containers.h>
#include <nox/utils/Mutex.h>
#include <nox/utils/ScopedMutex.h>
#include <nox/utils/details/SpareBlocks.h>

#include <cstddef>
#include <type_traits>

namespace nox::utils {

template <class T>
class BlockAllocator {
  static_assert(std::is_trivially_copyable_v<T>, "blocks hold raw records, copied bytewise");

 public:
  explicit BlockAllocator(unsigned int blockSize) : blockSize_(blockSize != 0 ? blockSize : 1) {
    NOX_ASSERT(blockSize != 0, "blocks must hold at least one record");
  }
  ~BlockAllocator() {
    for (T* block : handedOut_) details::SpareBlocks::give(block, blockBytes());
    for (T* block : returned_) details::SpareBlocks::give(block, blockBytes());
  }

  BlockAllocator(const BlockAllocator&) = delete;
  BlockAllocator& operator=(const BlockAllocator&) = delete;

  // Number of records per block.
  unsigned int getBlockSize() const { return blockSize_; }

  // A block of getBlockSize() uninitialised records.
  T* acquireBlock() {
    ScopedMutex lock(mutex_);
    T* block;
    if (!returned_.empty()) {
      block = returned_.back();
      returned_.pop_back();
    } else if ((block = static_cast<T*>(details::SpareBlocks::take(blockBytes()))) == nullptr) {
      block = static_cast<T*>(NOX_ALLOCATE(blockBytes()));
    }
    handedOut_.insert(block);
    return block;
  }

  // Takes back a block from acquireBlock(); anything else is an assertion failure.
  void releaseBlock(T* block) {
    ScopedMutex lock(mutex_);
    auto found = handedOut_.find(block);
    if (found == handedOut_.end()) {
      NOX_FAIL("unable to find address among allocated blocks, unable to free");
      return;
    }
    handedOut_.erase(found);
    returned_.push_back(block);
  }

  std::size_t countHandedOutBlocks() const {
    ScopedMutex lock(mutex_);
    return handedOut_.size();
  }
  std::size_t countReturnedBlocks() const {
    ScopedMutex lock(mutex_);
    return returned_.size();
  }

 private:
  std::size_t blockBytes() const { return static_cast<std::size_t>(blockSize_) * sizeof(T); }

  unsigned int blockSize_;
  Set<T*> handedOut_;
  Vector<T*> returned_;
  mutable Mutex mutex_;
};

}  // namespace nox::utils
