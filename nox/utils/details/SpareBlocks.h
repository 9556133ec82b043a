// Blocks given up by block allocators that went away, kept process-wide for the next
// ones. A program that builds and drops objects over and over then reuses the same
// memory: freeing megabytes of blocks would let the heap hand its pages back to the
// system, and every new object would fault them in again.
//
// The cache is bounded; a block that does not fit goes back to the library allocator.
#pragma once

#include <nox/utils/Export.h>

#include <cstddef>

namespace nox::utils::details {

class NOX_UTILS_API SpareBlocks {
 public:
  // Bytes the cache keeps at most, over all block sizes.
  static constexpr std::size_t capacityBytes = std::size_t{64} << 20;

  // A kept block of exactly `bytes` bytes, or null when there is none.
  static void* take(std::size_t bytes);
  // Keeps a block from the library allocator for a later take(), or frees it when the
  // cache is full.
  static void give(void* block, std::size_t bytes);
  // Bytes and blocks currently kept.
  static std::size_t countBytes();
  static std::size_t countBlocks();
};

}  // namespace nox::utils::details
