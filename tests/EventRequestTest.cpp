#include <nox/allocator/Allocator.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractEventListener.h>
#include <nox/utils/debugger/BreakpointRequest.h>
#include <nox/utils/debugger/BreakpointRequestVisitor.h>
#include <nox/utils/debugger/EntitiesFilter.h>
#include <nox/utils/debugger/EntityRegistrationRequest.h>
#include <nox/utils/debugger/EntityUnregistrationRequest.h>
#include <nox/utils/debugger/HitCountFilter.h>
#include <nox/utils/debugger/InitializationRequest.h>
#include <nox/utils/debugger/InitializationRequestVisitor.h>
#include <nox/utils/debugger/LocationFilter.h>
#include <nox/utils/debugger/MainContext.h>
#include <nox/utils/debugger/RequestIterator.h>
#include <nox/utils/debugger/RequestRegistry.h>
#include <nox/utils/debugger/TargetDisconnectRequest.h>
#include <nox/utils/debugger/TargetSuspendRequest.h>
#include <nox/utils/debugger/TargetSuspendRequestVisitor.h>
#include <nox/utils/debugger/TerminationRequest.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/AssertionRecorder.h"

namespace {

using namespace nox::utils::debugger;
using nox::utils::TypeManager;
using nox::utils::Uri;
using nox::utils::Uuid;
using ::testing::ElementsAre;

// A filter of a type no request looks for, which counts its destructions.
class TrackedFilter : public AbstractEventFilter {
  NOX_STATIC_OBJECT("test::TrackedFilter", "0f3c9a52-77b1-4e0c-9d2e-5a41b7c3e8d6", nullptr)
 public:
  explicit TrackedFilter(int& destroyed) : destroyed_(destroyed) {}
  ~TrackedFilter() override { ++destroyed_; }

 private:
  int& destroyed_;
};

// Records every callback as text: "<kind> <request> [<entity> [<location>]]".
class RecordingListener : public AbstractEventListener {
 public:
  void onInitialization(unsigned int request) override { add("initialization", request); }
  void onTargetSuspension(unsigned int request, unsigned int entity) override {
    add("suspension", request, " " + std::to_string(entity));
  }
  void onBreakpoint(unsigned int request, unsigned int entity, const Uri& location) override {
    std::ostringstream text;
    text << " " << entity << " " << location;
    add("breakpoint", request, text.str());
  }
  void onEntityRegistration(unsigned int request, unsigned int entity) override {
    add("registration", request, " " + std::to_string(entity));
  }

  std::vector<std::string> calls;

 private:
  void add(const char* kind, unsigned int request, const std::string& rest = "") {
    calls.push_back(kind + (" " + std::to_string(request)) + rest);
  }
};

template <class Filter, class... Arguments>
AbstractEventFilter* make(Arguments... arguments) {
  return NOX_NEW Filter(arguments...);
}

AbstractEventFilter* entities(std::vector<unsigned int> ids) {
  return NOX_NEW EntitiesFilter(ids.data(), static_cast<unsigned int>(ids.size()));
}

TEST(EventRequestTest, ClassesCarryTheirTypeIdentityIntoTheTypeManager) {
  EXPECT_EQ(TargetDisconnectRequest::getClassTypeId(), Uuid::create("dc773989-1044-44d6-8993-3351b64dfd35"));
  EXPECT_EQ(AbstractEventFilter::getClassTypeId(), Uuid::create("70cc68f4-f0b4-41ec-8eb8-a174cb0fd0dc"));
  EXPECT_STREQ(BreakpointRequest(1).getTypeName(), "nox::utils::debugger::BreakpointRequest");
  EXPECT_EQ(BreakpointRequest(1).getTypeId(), Uuid::create("33744771-c389-4914-96e8-cdca5c59cf82"));
  EXPECT_EQ(MainContext().getTypeId(), Uuid::create("8f1372e9-e974-4dd9-b8e2-a1c776ec07df"));

  TypeManager types;
  ASSERT_TRUE(types.registerBaseTypes(nullptr));
  ASSERT_TRUE(types.registerStaticObjectType<AbstractContext>(nullptr));
  ASSERT_TRUE(types.registerStaticObjectType<MainContext>(nullptr));
  ASSERT_TRUE(types.registerStaticObjectType<AbstractEventFilter>(nullptr));
  ASSERT_TRUE(types.registerStaticObjectType<AbstractEventRequest>(nullptr));
  ASSERT_TRUE(types.registerStaticObjectType<LocationFilter>(nullptr));
  ASSERT_TRUE(types.registerStaticObjectType<HitCountFilter>(nullptr));
  ASSERT_TRUE(types.registerStaticObjectType<BreakpointRequest>(nullptr));
  ASSERT_TRUE(types.registerStaticObjectType<TargetSuspendRequest>(nullptr));
  EXPECT_TRUE(types.isDerivedFrom(BreakpointRequest::getClassTypeId(), AbstractEventRequest::getClassTypeId()));
  EXPECT_TRUE(types.isStaticObject(TargetSuspendRequest::getClassTypeId()));
  EXPECT_TRUE(types.isDerivedFrom(HitCountFilter::getClassTypeId(), AbstractEventFilter::getClassTypeId()));
  EXPECT_TRUE(types.isDerivedFrom(MainContext::getClassTypeId(), AbstractContext::getClassTypeId()));
  EXPECT_FALSE(types.isDerivedFrom(LocationFilter::getClassTypeId(), AbstractEventRequest::getClassTypeId()));
  EXPECT_STREQ(types.getTypeName(LocationFilter::getClassTypeId()), "nox::utils::debugger::LocationFilter");

  nox::utils::StaticObject* context = types.createStaticObject(MainContext::getClassTypeId(), nullptr);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(static_cast<AbstractContext*>(context)->getLocation(), Uri::create("nox:simulation"));
  types.destroyStaticObject(context);
}

TEST(EventRequestTest, EventKindsMapToTheirNames) {
  EXPECT_STREQ(getEventKindName(event::breakpoint), "breakpoint");
  EXPECT_STREQ(getEventKindName(0), "initialization");
  EXPECT_EQ(getEventKindName(7), nullptr);
  EXPECT_EQ(getEventKindName(-1), nullptr);
  EXPECT_EQ(findEventKind("unregistration", 14), event::unregistration);
  EXPECT_EQ(findEventKind("registrationX", 12), event::registration);
  EXPECT_EQ(findEventKind("Breakpoint", 10), -1);
  EXPECT_EQ(findEventKind("suspend", 7), -1);
}

TEST(EventRequestTest, FilterVisitorsCombineFiltersOfTheirKind) {
  const Uri here = Uri::create("test:here");
  const Uri there = Uri::create("test:there");

  BreakpointRequest open(1);
  EXPECT_TRUE(open.isHit(7, here));
  EXPECT_TRUE(open.isHit(8, there));

  BreakpointRequest two(2);
  EXPECT_TRUE(two.addFilter(entities({1})));
  EXPECT_TRUE(two.addFilter(entities({2})));
  EXPECT_TRUE(two.canHit(2, here));
  EXPECT_TRUE(two.canHit(1, here));
  EXPECT_FALSE(two.canHit(3, here));

  BreakpointRequest placed(3);
  EXPECT_TRUE(placed.addFilter(make<LocationFilter>(here)));
  EXPECT_TRUE(placed.canHit(5, here));
  EXPECT_FALSE(placed.canHit(5, there));
  EXPECT_TRUE(placed.addFilter(make<LocationFilter>(there)));
  EXPECT_FALSE(placed.canHit(5, here));
  EXPECT_FALSE(placed.canHit(5, there));

  EXPECT_FALSE(placed.addFilter(nullptr));
  EXPECT_EQ(placed.getFilters().size(), 2u);
}

TEST(EventRequestTest, HitCountsAreCountedByUpdateAndSeenOnlyByIsHit) {
  const Uri here = Uri::create("test:here");
  auto hitsAt = [&](HitCountFilter::Mode mode) {
    BreakpointRequest request(1);
    request.addFilter(make<HitCountFilter>(3, mode));
    request.addFilter(entities({4}));
    std::string hits;
    for (int hit = 1; hit <= 9; ++hit) {
      EXPECT_TRUE(request.canHit(4, here));
      hits += request.isHit(4, here) ? "x" : ".";
      request.update();
    }
    EXPECT_FALSE(request.isHit(5, here));
    return hits;
  };
  EXPECT_EQ(hitsAt(HitCountFilter::atLeast), "..xxxxxxx");
  EXPECT_EQ(hitsAt(HitCountFilter::exactly), "..x......");
  EXPECT_EQ(hitsAt(HitCountFilter::multipleOf), "..x..x..x");
  EXPECT_EQ(hitsAt(static_cast<HitCountFilter::Mode>(3)), ".........");

  nox::test::AssertionRecorder recorder;
  HitCountFilter never(0, HitCountFilter::multipleOf);
  EXPECT_EQ(recorder.count(), 1u);
  EXPECT_FALSE(never());
}

TEST(EventRequestTest, RequestsKeepOnlyTheFiltersTheyTake) {
  int destroyed = 0;
  TargetSuspendRequest suspension(1);
  EXPECT_FALSE(suspension.addFilter(make<LocationFilter>(Uri::create("test:x"))));
  EXPECT_FALSE(suspension.addFilter(NOX_NEW TrackedFilter(destroyed)));
  EXPECT_EQ(destroyed, 1);
  EXPECT_TRUE(suspension.addFilter(entities({3})));
  EXPECT_EQ(suspension.getFilters().size(), 1u);

  InitializationRequest initialization(2);
  EXPECT_FALSE(initialization.addFilter(entities({3})));
  EXPECT_FALSE(initialization.addFilter(NOX_NEW TrackedFilter(destroyed)));
  EXPECT_EQ(destroyed, 2);

  {
    BreakpointRequest breakpoint(3);
    EXPECT_TRUE(breakpoint.addFilter(NOX_NEW TrackedFilter(destroyed)));
    EXPECT_TRUE(breakpoint.isHit(1, Uri()));
  }
  EXPECT_EQ(destroyed, 3);

  RecordingListener listener;
  suspension.registerListener(listener);
  suspension.registerListener(listener);
  EXPECT_FALSE(suspension.notify(4));
  EXPECT_TRUE(suspension.notify(3));
  EXPECT_THAT(listener.calls, ElementsAre("suspension 1 3"));
  suspension.unregisterListener(listener);
  EXPECT_TRUE(suspension.notify(3));
  EXPECT_EQ(listener.calls.size(), 1u);
}

TEST(EventRequestTest, RegistryIssuesIncreasingHandlesAndSkipsNullArguments) {
  nox::test::AssertionRecorder recorder;
  RequestRegistry registry;
  RecordingListener listener;
  int destroyed = 0;
  AbstractEventListener* listeners[] = {&listener, nullptr};
  AbstractEventFilter* filters[] = {nullptr, entities({2})};
  EXPECT_EQ(registry.subscribe<TargetSuspendRequest>(listeners, 2, filters, 2), 1u);
  EXPECT_THAT(recorder.messages(), ElementsAre("1th given listener is NULL.", "0th given filter is NULL."));

  EXPECT_EQ(registry.subscribe(event::initialization, listeners, 1, nullptr, 0), 2u);
  EXPECT_TRUE(registry.unsubscribe(2));
  EXPECT_FALSE(registry.unsubscribe(2));
  AbstractEventFilter* refused[] = {NOX_NEW TrackedFilter(destroyed)};
  EXPECT_EQ(registry.subscribe(7, listeners, 1, refused, 1), 0u);
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(registry.subscribe(event::breakpoint, listeners, 1, nullptr, 0), 3u);
  EXPECT_EQ(registry.countRequests(), 2u);

  TargetSuspendRequestVisitor two(2);
  registry.accept(two);
  TargetSuspendRequestVisitor five(5);
  registry.accept(five);
  EXPECT_THAT(listener.calls, ElementsAre("suspension 1 2"));
  ASSERT_NE(registry.findRequest(3), nullptr);
  EXPECT_EQ(registry.findRequest(3)->getTypeId(), BreakpointRequest::getClassTypeId());

  registry.unsubscribeAll();
  EXPECT_EQ(registry.countRequests(), 0u);
  EXPECT_EQ(registry.subscribe<TerminationRequest>(nullptr, 0, nullptr, 0), 4u);
}

TEST(EventRequestTest, RequestVisitorsOnlyTakeTheirKind) {
  struct Breakpoints : BreakpointRequestVisitor {
    using BreakpointRequestVisitor::BreakpointRequestVisitor;
    void onRequest(BreakpointRequest& request) override {
      if (request.canHit(getEntity(), getLocation())) {
        request.update();
        if (request.isHit(getEntity(), getLocation())) request.notify(getEntity(), getLocation());
      }
    }
  };
  RequestRegistry registry;
  RecordingListener listener;
  AbstractEventListener* listeners[] = {&listener};
  AbstractEventFilter* twice[] = {make<HitCountFilter>(3, HitCountFilter::atLeast)};
  registry.subscribe<InitializationRequest>(listeners, 1, nullptr, 0);
  // Counted before it is tested, the first step makes 2 hits, the second 3.
  registry.subscribe<BreakpointRequest>(listeners, 1, twice, 1);
  registry.subscribe<EntityRegistrationRequest>(listeners, 1, nullptr, 0);
  const Uri location = Uri::create("test:loop");
  Breakpoints step(9, location);
  registry.accept(step);
  InitializationRequestVisitor start;
  registry.accept(start);
  registry.accept(step);
  EXPECT_THAT(listener.calls, ElementsAre("initialization 1", "breakpoint 2 9 test:loop"));
}

TEST(EventRequestTest, IteratorsSurviveChangesDuringTheWalk) {
  RequestRegistry registry;
  for (int i = 0; i < 4; ++i) registry.subscribe<InitializationRequest>(nullptr, 0, nullptr, 0);
  RequestIterator* walk = registry.createIterator();
  RequestIterator* other = registry.createIterator();
  std::vector<unsigned int> seen;
  seen.push_back(walk->next()->getHandle());
  seen.push_back(walk->next()->getHandle());
  EXPECT_TRUE(registry.unsubscribe(2));  // the current one
  EXPECT_TRUE(registry.unsubscribe(1));  // one already passed
  registry.subscribe<InitializationRequest>(nullptr, 0, nullptr, 0);
  EXPECT_TRUE(registry.unsubscribe(4));  // one ahead
  while (AbstractEventRequest* request = walk->next()) seen.push_back(request->getHandle());
  EXPECT_THAT(seen, ElementsAre(1u, 2u, 3u, 5u));
  EXPECT_EQ(other->next()->getHandle(), 3u);
  registry.destroyIterator(walk);
  registry.destroyIterator(other);
}

TEST(EventRequestTest, AListenerMayUnsubscribeItsOwnRequestDuringAccept) {
  RequestRegistry registry;
  RecordingListener recorder;
  struct Unsubscriber : AbstractEventListener {
    RequestRegistry* registry = nullptr;
    void onInitialization(unsigned int request) override {
      EXPECT_TRUE(registry->unsubscribe(request));
      registry->subscribe<InitializationRequest>(nullptr, 0, nullptr, 0);
    }
  } unsubscriber;
  unsubscriber.registry = &registry;
  AbstractEventListener* both[] = {&unsubscriber, &recorder};
  AbstractEventListener* one[] = {&recorder};
  registry.subscribe<InitializationRequest>(both, 2, nullptr, 0);
  registry.subscribe<InitializationRequest>(one, 1, nullptr, 0);
  InitializationRequestVisitor start;
  registry.accept(start);
  // The removed request still finished its notification; the walk went on to request 2
  // and to the one subscribed meanwhile.
  EXPECT_THAT(recorder.calls, ElementsAre("initialization 1", "initialization 2"));
  EXPECT_EQ(registry.countRequests(), 2u);
  EXPECT_EQ(registry.findRequest(1), nullptr);
}

}  // namespace
