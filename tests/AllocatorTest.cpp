#include <nox/allocator/Allocator.h>
#include <nox/allocator/StdAllocator.h>
#include <nox/utils/ScopedPtr.h>
#include <nox/utils/Singleton.h>
#include <nox/utils/details/Diagnostic.h>

#include <gtest/gtest.h>

#include <vector>

#include "support/AssertionRecorder.h"

using nox::allocator::Allocator;

namespace {

struct Base {
  virtual ~Base() = default;
  int base = 1;
};

struct Derived : Base {
  double payload[16] = {};
};

}  // namespace

TEST(Allocator, CountsLiveBytesAndBlocks) {
  Allocator& allocator = Allocator::instance();
  const auto bytes = allocator.liveBytes();
  const auto blocks = allocator.liveBlocks();
  const auto allocations = allocator.allocationCount();

  void* raw = NOX_ALLOCATE(100);
  EXPECT_EQ(allocator.liveBytes(), bytes + 100);
  EXPECT_EQ(allocator.liveBlocks(), blocks + 1);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(raw) % alignof(std::max_align_t), 0u);
  NOX_DEALLOCATE(raw);
  EXPECT_EQ(allocator.liveBytes(), bytes);
  EXPECT_EQ(allocator.liveBlocks(), blocks);
  EXPECT_EQ(allocator.allocationCount(), allocations + 1);
}

TEST(Allocator, AFreeOfTheWrongSizeAborts) {
  Allocator& allocator = Allocator::instance();
  void* raw = allocator.allocate(64, __FILE__, __LINE__);
  EXPECT_DEATH(allocator.deallocate(raw, 65), "freeing 65 bytes of a block of 64 bytes");
  allocator.deallocate(raw, 64);
  void* unknown = allocator.allocate(8, __FILE__, __LINE__);
  allocator.deallocate(unknown, 0);
}

TEST(Allocator, DestroyThroughABasePointerFreesTheWholeObject) {
  Allocator& allocator = Allocator::instance();
  const auto bytes = allocator.liveBytes();
  Base* object = NOX_NEW Derived();
  EXPECT_EQ(allocator.liveBytes(), bytes + sizeof(Derived));
  NOX_DELETE(object);
  EXPECT_EQ(allocator.liveBytes(), bytes);
}

TEST(Allocator, ContainersGoThroughIt) {
  Allocator& allocator = Allocator::instance();
  const auto blocks = allocator.liveBlocks();
  {
    std::vector<int, nox::allocator::StdAllocator<int>> values(1000, 7);
    EXPECT_GE(allocator.liveBytes(), 1000 * sizeof(int));
    EXPECT_EQ(allocator.liveBlocks(), blocks + 1);
  }
  EXPECT_EQ(allocator.liveBlocks(), blocks);
}

TEST(ScopedPtr, OwnsAndResets) {
  Allocator& allocator = Allocator::instance();
  const auto blocks = allocator.liveBlocks();
  {
    nox::utils::ScopedPtr<Base> pointer(NOX_NEW Derived());
    EXPECT_EQ(pointer->base, 1);
    pointer.reset(NOX_NEW Base());
    EXPECT_EQ(allocator.liveBlocks(), blocks + 1);
  }
  EXPECT_EQ(allocator.liveBlocks(), blocks);
}

TEST(ScopedPtr, MisuseIsAnAssertion) {
  nox::test::AssertionRecorder recorder;
  nox::utils::ScopedPtr<Base> pointer(NOX_NEW Base());
  pointer.reset(pointer.get());
  EXPECT_EQ(recorder.last(), "resetting a scoped ptr to itself!");
  EXPECT_NE(pointer.get(), nullptr);

  nox::utils::ScopedPtr<Base> empty;
  recorder.clear();
  (void)empty.operator->();
  EXPECT_EQ(recorder.last(), "accessing a null scoped ptr");
}

TEST(Singleton, InstallOnceAndReadAfterInstall) {
  struct Service {
    int value = 5;
  };
  using Holder = nox::utils::Singleton<Service>;
  nox::test::AssertionRecorder recorder;
  EXPECT_FALSE(Holder::isSet());
  Service first, second;
  Holder::set(&first);
  Holder::set(&second);
  EXPECT_EQ(recorder.last(), "trying to overwrite singleton instance");
  Holder::set(nullptr);
  Holder::set(&first);
  EXPECT_EQ(Holder::get().value, 5);
  Holder::set(nullptr);
}

TEST(SourceUnit, NamesTheUnitFromItsPath) {
  using nox::utils::details::SourceUnit;
  EXPECT_STREQ(SourceUnit("/home/me/nox/work/nox/utils/Uuid.cpp").c_str(), "nox/utils/Uuid");
  EXPECT_STREQ(SourceUnit("nox/utils/details/HashTable.h").c_str(), "nox/utils/details/HashTable");
  EXPECT_STREQ(SourceUnit("/src/tests/SomeTest.cpp").c_str(), "SomeTest");
}
