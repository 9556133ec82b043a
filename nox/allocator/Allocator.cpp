#include <nox/allocator/Allocator.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace nox::allocator {
namespace {

// Every block starts with this header, which keeps the block's size (so that objects
// freed through a base pointer are accounted exactly) and, when tracking, its site.
// 16 bytes keep the payload aligned as malloc aligns.
struct alignas(16) BlockHeader {
  std::uint64_t size;
  std::uint32_t site;
  std::uint32_t magic;
};
static_assert(sizeof(BlockHeader) == 16, "the header must keep malloc's alignment");

constexpr std::uint32_t kLiveMagic = 0x4e4f5841;  // "NOXA"
constexpr std::uint32_t kFreedMagic = 0x64656164;

bool trackingRequested() {
  const char* value = std::getenv("NOX_ALLOCATOR_TRACK");
  return value != nullptr && std::strcmp(value, "1") == 0;
}

void reportLeaksAtExit() {
  const Allocator& allocator = Allocator::instance();
  if (allocator.liveBlocks() == 0) return;
  std::cerr << "nox allocator: " << allocator.liveBlocks() << " live allocations (" << allocator.liveBytes()
            << " bytes) at exit:\n";
  allocator.dumpLiveAllocations(std::cerr);
}

}  // namespace

// Per-site accounting, only built when tracking is on. It uses the global heap on
// purpose: tracking must not recurse into the allocator it observes.
struct Allocator::SiteTable {
  struct Site {
    std::string file;
    unsigned int line;
    std::uint64_t blocks = 0;
    std::uint64_t bytes = 0;
  };

  std::mutex mutex;
  std::map<std::pair<std::string, unsigned int>, std::uint32_t> indexBySite;
  std::vector<Site> sites;

  std::uint32_t recordAllocation(const char* file, unsigned int line, std::uint64_t size) {
    std::lock_guard<std::mutex> lock(mutex);
    auto key = std::make_pair(std::string(file != nullptr ? file : "unknown"), line);
    auto found = indexBySite.find(key);
    std::uint32_t index;
    if (found == indexBySite.end()) {
      index = static_cast<std::uint32_t>(sites.size());
      sites.push_back(Site{key.first, line});
      indexBySite.emplace(std::move(key), index);
    } else {
      index = found->second;
    }
    sites[index].blocks += 1;
    sites[index].bytes += size;
    return index;
  }

  void recordRelease(std::uint32_t index, std::uint64_t size) {
    std::lock_guard<std::mutex> lock(mutex);
    sites[index].blocks -= 1;
    sites[index].bytes -= size;
  }
};

Allocator::Allocator() : tracking_(trackingRequested()), sites_(nullptr) {
  if (tracking_) {
    sites_ = new SiteTable();
    std::atexit(&reportLeaksAtExit);
  }
}

Allocator& Allocator::instance() {
  // Constructed on first use and never destroyed (see the header).
  alignas(Allocator) static unsigned char storage[sizeof(Allocator)];
  static Allocator* const allocator = new (storage) Allocator();
  return *allocator;
}

void* Allocator::allocate(std::size_t size, const char* file, unsigned int line) {
  void* raw = std::malloc(sizeof(BlockHeader) + size);
  if (raw == nullptr) throw std::bad_alloc();
  BlockHeader* header = static_cast<BlockHeader*>(raw);
  header->size = size;
  header->magic = kLiveMagic;
  header->site = tracking_ ? sites_->recordAllocation(file, line, size) : 0;
  liveBytes_.fetch_add(size, std::memory_order_relaxed);
  liveBlocks_.fetch_add(1, std::memory_order_relaxed);
  allocationCount_.fetch_add(1, std::memory_order_relaxed);
  return header + 1;
}

void Allocator::deallocate(void* pointer, std::size_t size) {
  if (pointer == nullptr) return;
  BlockHeader* header = static_cast<BlockHeader*>(pointer) - 1;
  if (header->magic != kLiveMagic) {
    std::cerr << "nox allocator: freeing a block it does not own or has already freed" << std::endl;
    std::abort();
  }
  if (size != 0 && size != header->size) {
    std::cerr << "nox allocator: freeing " << size << " bytes of a block of " << header->size << " bytes" << std::endl;
    std::abort();
  }
  header->magic = kFreedMagic;
  if (tracking_) sites_->recordRelease(header->site, header->size);
  liveBytes_.fetch_sub(header->size, std::memory_order_relaxed);
  liveBlocks_.fetch_sub(1, std::memory_order_relaxed);
  std::free(header);
}

std::size_t Allocator::dumpLiveAllocations(std::ostream& out) const {
  if (!tracking_) return 0;
  std::lock_guard<std::mutex> lock(sites_->mutex);
  std::size_t written = 0;
  for (const SiteTable::Site& site : sites_->sites) {
    if (site.blocks == 0) continue;
    out << "  " << site.file << ':' << site.line << ' ' << site.blocks << " blocks " << site.bytes << " bytes\n";
    ++written;
  }
  out.flush();
  return written;
}

}  // namespace nox::allocator

void* operator new(std::size_t size, const char* file, int line, nox::allocator::Allocator* allocator) {
  return allocator->allocate(size, file, static_cast<unsigned int>(line));
}

void operator delete(void* pointer, const char* /*file*/, int /*line*/, nox::allocator::Allocator* allocator) noexcept {
  allocator->deallocate(pointer, 0);
}
