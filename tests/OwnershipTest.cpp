// Objects the library takes ownership of may be made with a plain `new` as well as with
// NOX_NEW: filters handed to requests and registries, creators handed to factories and
// to the type manager, static objects destroyed by the type manager, contexts an engine
// frees itself. Neither way may abort the process or leak a block.
#include <nox/allocator/Allocator.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractEventFilterCreator.h>
#include <nox/utils/debugger/BreakpointRequest.h>
#include <nox/utils/debugger/CreatorAbstractFactory.h>
#include <nox/utils/debugger/EntitiesFilter.h>
#include <nox/utils/debugger/HitCountFilter.h>
#include <nox/utils/debugger/LocationFilter.h>
#include <nox/utils/debugger/MainContext.h>
#include <nox/utils/debugger/RequestRegistry.h>
#include <nox/utils/debugger/TargetSuspendRequest.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>

#include "support/LiveBlocks.h"

namespace {

using namespace nox::utils::debugger;
using nox::allocator::Allocator;
using nox::test::liveBlocksInUse;
using nox::utils::TypeManager;
using nox::utils::Uri;

class LocationCreator : public AbstractEventFilterCreator {
 public:
  AbstractEventFilter* create(const nox::utils::DynamicObject&, unsigned int,
                              nox::utils::AbstractLogger*) const override {
    return new LocationFilter(Uri::create("test:made"));
  }
};

TEST(Ownership, FiltersMadeEitherWayAreFreedByTheirRequests) {
  const auto before = liveBlocksInUse();
  {
    BreakpointRequest request(1);
    EXPECT_TRUE(request.addFilter(new LocationFilter(Uri::create("test:plain"))));
    EXPECT_TRUE(request.addFilter(NOX_NEW HitCountFilter(2, HitCountFilter::atLeast)));
    // Refused filters are destroyed at once.
    TargetSuspendRequest suspension(2);
    EXPECT_FALSE(suspension.addFilter(new LocationFilter()));
    EXPECT_FALSE(suspension.addFilter(NOX_NEW LocationFilter()));
  }
  {
    RequestRegistry registry;
    AbstractEventFilter* filters[] = {new LocationFilter(Uri::create("test:a")), NOX_NEW EntitiesFilter()};
    EXPECT_NE(registry.subscribe<BreakpointRequest>(nullptr, 0, filters, 2), 0u);
    AbstractEventFilter* unknownKind[] = {new LocationFilter()};
    EXPECT_EQ(registry.subscribe(99, nullptr, 0, unknownKind, 1), 0u);
    AbstractEventFilter* kept[] = {new EntitiesFilter()};
    const unsigned int handle = registry.subscribe<TargetSuspendRequest>(nullptr, 0, kept, 1);
    EXPECT_TRUE(registry.unsubscribe(handle));
  }
  EXPECT_EQ(liveBlocksInUse(), before);
}

TEST(Ownership, CreatorsMadeEitherWayAreFreedByTheirOwners) {
  const auto before = liveBlocksInUse();
  {
    CreatorAbstractFactory<AbstractEventFilterCreator> factory;
    EXPECT_TRUE(factory.registerCreator("plain", new LocationCreator(), nullptr));
    EXPECT_TRUE(factory.registerCreator("nox", NOX_NEW LocationCreator(), nullptr));
    EXPECT_FALSE(factory.registerCreator("plain", new LocationCreator(), nullptr));
    EXPECT_TRUE(factory.unregisterCreator("nox"));

    const AbstractEventFilterCreator* creator = factory.findCreator("plain", 5);
    ASSERT_NE(creator, nullptr);
    BreakpointRequest request(1);
    EXPECT_TRUE(request.addFilter(creator->create(nox::utils::DynamicObject(), 0, nullptr)));
  }
  {
    TypeManager types;
    ASSERT_TRUE(types.registerBaseTypes(nullptr));
    ASSERT_TRUE(types.registerStaticObjectType<AbstractContext>(nullptr));
    ASSERT_TRUE(types.registerStaticObjectType<MainContext>(nullptr));
    ASSERT_TRUE(types.unregisterCreator(MainContext::getClassTypeId(), nullptr));
    EXPECT_TRUE(
        types.registerCreator(MainContext::getClassTypeId(), new TypeManager::DefaultCreator<MainContext>(), nullptr));
    EXPECT_FALSE(
        types.registerCreator(MainContext::getClassTypeId(), new TypeManager::DefaultCreator<MainContext>(), nullptr));
    // The type manager destroys instances whichever way they were made.
    types.destroyStaticObject(types.createStaticObject(MainContext::getClassTypeId(), nullptr));
    types.destroyStaticObject(new MainContext());
  }
  EXPECT_EQ(liveBlocksInUse(), before);
}

std::uint64_t allocationsSince(std::uint64_t count) { return Allocator::instance().allocationCount() - count; }

TEST(Ownership, PlainNewAndDeleteGoThroughTheLibraryAllocator) {
  const auto before = liveBlocksInUse();
  auto allocations = Allocator::instance().allocationCount();
  { MainContext onTheStack; }
  const auto ownAllocations = allocationsSince(allocations);

  allocations = Allocator::instance().allocationCount();
  AbstractContext* plain = new MainContext();
  EXPECT_EQ(allocationsSince(allocations), ownAllocations + 1);
  EXPECT_GT(liveBlocksInUse(), before);
  // An engine may free its contexts either way, whichever way they were made.
  NOX_DELETE(plain);
  delete static_cast<AbstractContext*>(NOX_NEW MainContext());
  { std::unique_ptr<AbstractEventFilter> owned(new LocationFilter()); }
  EXPECT_EQ(liveBlocksInUse(), before);

  // Storage the caller owns stays out of the allocator.
  alignas(MainContext) unsigned char storage[sizeof(MainContext)];
  allocations = Allocator::instance().allocationCount();
  MainContext* inPlace = new (storage) MainContext();
  EXPECT_EQ(allocationsSince(allocations), ownAllocations);
  inPlace->~MainContext();
  EXPECT_EQ(liveBlocksInUse(), before);
}

// A constructor that throws must give the block back, through the operator delete that
// matches the operator new of its new-expression.
class FailingFilter : public AbstractEventFilter {
 public:
  FailingFilter() { throw std::runtime_error("refused"); }
};

TEST(Ownership, AThrowingConstructorLeavesNoBlockBehind) {
  const auto before = liveBlocksInUse();
  EXPECT_THROW(new FailingFilter(), std::runtime_error);
  EXPECT_THROW(NOX_NEW FailingFilter(), std::runtime_error);
  EXPECT_EQ(liveBlocksInUse(), before);
}

}  // namespace
