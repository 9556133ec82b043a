// Leak checks: the number of library allocations that are live and not merely kept for
// reuse by the spare block cache.
#pragma once

#include <nox/allocator/Allocator.h>
#include <nox/utils/details/SpareBlocks.h>

#include <cstdint>

namespace nox::test {

inline std::uint64_t liveBlocksInUse() {
  return nox::allocator::Allocator::instance().liveBlocks() - nox::utils::details::SpareBlocks::countBlocks();
}

}  // namespace nox::test
