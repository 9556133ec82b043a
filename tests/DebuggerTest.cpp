#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/AbstractContextVisitor.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/BreakpointRequest.h>
#include <nox/utils/debugger/BreakpointRequestVisitor.h>
#include <nox/utils/debugger/DebuggerFramework.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/HitCountFilter.h>
#include <nox/utils/debugger/LocationFilter.h>
#include <nox/utils/debugger/MainContext.h>
#include <nox/utils/debugger/TargetSuspendRequest.h>
#include <nox/utils/debugger/impl/EventFramework.h>
#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/AssertionRecorder.h"

namespace {

using namespace nox::utils::debugger;
using impl::EventFramework;
using impl::InspectionFrameworkImpl;
using nox::utils::AbstractObjectBuilder;
using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::DynamicObjectBuilder;
using nox::utils::StringTable;
using nox::utils::Uri;
using ::testing::Contains;
using ::testing::ElementsAre;

// A reply as compact JSON-like text, which the resource tests compare whole, with a
// check that the reply is exactly begin, one value, end (unlike the event list of
// support/RecordingBuilder.h). Refuses the event numbered `refuseAt` (0-based).
class ReplyText : public AbstractObjectBuilder {
 public:
  using AbstractObjectBuilder::objectChild;
  using AbstractObjectBuilder::string;

  explicit ReplyText(int refuseAt = -1) : refuseAt_(refuseAt) {}

  bool begin() override { return accept() && (++begins, true); }
  bool end() override { return accept() && (++ends, true); }
  bool null() override { return write("null"); }
  bool boolean(bool value) override { return write(value ? "true" : "false"); }
  bool integer(std::int64_t value) override { return write(std::to_string(value)); }
  bool string(const char* text, unsigned int length) override { return write("\"" + std::string(text, length) + "\""); }
  bool beginObject() override { return write("{"); }
  bool objectChild(const char* key, unsigned int length) override {
    return write(separator() + "\"" + std::string(key, length) + "\":");
  }
  bool endObject() override { return write("}"); }
  bool beginArray() override { return write("["); }
  bool arrayChild() override { return write(separator()); }
  bool endArray() override { return write("]"); }

  // The value, once a whole reply was written.
  std::string value() const { return begins == 1 && ends == 1 ? text : "<" + text + ">"; }

  std::string text;
  int begins = 0;
  int ends = 0;

 private:
  bool accept() { return events_++ != refuseAt_; }
  bool write(const std::string& piece) { return accept() && (text += piece, true); }
  std::string separator() const { return text.empty() || text.back() == '{' || text.back() == '[' ? "" : ","; }

  int refuseAt_;
  int events_ = 0;
};

DynamicObject objectOf(const std::function<void(AbstractObjectBuilder&)>& events) {
  DynamicObject object;
  DynamicObjectBuilder builder(object, 0);
  builder.begin();
  events(builder);
  builder.end();
  return object;
}

class NamedContext : public AbstractContext {
  NOX_STATIC_OBJECT("test::NamedContext", "4b7e2d10-93a5-4c8f-b1e6-2f0d9a7c5e31", nullptr)
 public:
  explicit NamedContext(const char* location) : location_(Uri::create(location)) {}
  const Uri& getLocation() const override { return location_; }
  bool serialize(AbstractObjectBuilder& builder) const override { return builder.string("named"); }

 private:
  Uri location_;
};

// Hands out one given context.
struct FixedFactory : AbstractContextFactory {
  explicit FixedFactory(AbstractContext& context) : context(context) {}
  AbstractContext* createContext() override { return &context; }
  AbstractContext& context;
};

class CountingEngine : public AbstractEngine {
 public:
  using AbstractEngine::AbstractEngine;
  int enables = 0;
  int disables = 0;

 protected:
  void doEnable(bool& enabled) override {
    ++enables;
    AbstractEngine::doEnable(enabled);
  }
  void doDisable(bool& enabled) override {
    ++disables;
    AbstractEngine::doDisable(enabled);
  }
};

class DebuggerTest : public ::testing::Test {
 protected:
  DebuggerTest() : framework(strings, &logger), facade(framework.getFacade()), debugger(framework.getDebugger()) {}

  std::string get(const char* path) { return call(&InspectionFrameworkImpl::retrieveResource, path); }
  std::string post(const char* path, const DynamicObject& body = DynamicObject()) {
    return call(&InspectionFrameworkImpl::createResource, path, body);
  }
  std::string remove(const char* path) { return call(&InspectionFrameworkImpl::deleteResource, path); }

  // "<status> <value>", the value only when the status is done.
  template <class Operation>
  std::string call(Operation operation, const char* path, const DynamicObject& object = DynamicObject()) {
    ReplyText reply;
    const resources::Status status =
        (framework.*operation)(path, static_cast<unsigned int>(std::string(path).size()), object, reply);
    if (status != resources::done) return std::to_string(status) + (reply.text.empty() ? "" : " <wrote>");
    return "2 " + reply.value();
  }

  void registerEntities(std::vector<unsigned int> entities) {
    engine.onEntitiesRegistration(entities.data(), static_cast<unsigned int>(entities.size()));
  }

  std::vector<std::string> messages(char kind) const {
    std::vector<std::string> found;
    for (const auto& entry : logger.getEntries()) {
      if (entry.kind == kind) found.push_back(entry.message.c_str());
    }
    return found;
  }

  StringTable strings;
  BufferLogger logger{true, true, true};
  // Engines and contexts outlive the framework that references them.
  CountingEngine engine{"sim", true};
  NamedContext outer{"test:outer"};
  NamedContext inner{"test:inner"};
  FixedFactory outerFactory{outer};
  FixedFactory innerFactory{inner};
  InspectionFrameworkImpl framework;
  EngineDebuggerFacade& facade;
  DebuggerFramework& debugger;
};

TEST_F(DebuggerTest, EnginesSwitchOnlyOnChangeAndNeedAFacadeForEntities) {
  engine.enable();
  EXPECT_EQ(engine.enables, 0);
  engine.disable();
  engine.disable();
  EXPECT_EQ(engine.disables, 1);
  EXPECT_FALSE(engine.isEnabled());

  registerEntities({1});
  EXPECT_EQ(debugger.countEntities(), 0u);
  DynamicObject none;
  ReplyText reply;
  EXPECT_EQ(engine.retrieveResource("x", 1, none, reply), resources::unknown);
  EXPECT_EQ(engine.deleteResource("x", 1, none, reply), resources::unknown);
  EXPECT_TRUE(reply.text.empty());

  CountingEngine nameless(nullptr, false);
  EXPECT_EQ(nameless.getPath(), nullptr);
  EXPECT_FALSE(framework.registerEngine(nameless, &logger));
  EXPECT_STREQ(logger.getEntries().back().message.c_str(), "The given engine returns a NULL path.");
}

TEST_F(DebuggerTest, EnginesAreRegisteredAndReachedByPath) {
  ASSERT_TRUE(framework.registerEngine(engine, &logger));
  EXPECT_EQ(engine.getFacade(), &facade);
  EXPECT_EQ(framework.findEngine("debug", 5), &debugger);
  CountingEngine twin("sim", true);
  EXPECT_FALSE(framework.registerEngine(twin, &logger));
  ASSERT_EQ(logger.getEntries().size(), 2u);
  EXPECT_EQ(logger.getEntries()[0].message, "There is already a registered engine having path 'sim'.");
  EXPECT_EQ(logger.getEntries()[1].message, "An engine having the same path (sim) was already registered.");
  logger.clear();

  framework.disableEngine("sim", &logger);
  EXPECT_FALSE(framework.isEngineEnabled("sim", &logger));
  framework.enableEngine("nowhere", &logger);
  EXPECT_FALSE(framework.isEngineEnabled("nowhere", &logger));
  framework.unregisterEngine("nowhere", &logger);
  std::vector<std::string> messages;
  for (const auto& entry : logger.getEntries()) messages.push_back(std::string(1, entry.kind) + entry.message.c_str());
  EXPECT_THAT(messages, ElementsAre("wNo register engine having the path nowhere, ignoring the enabling.",
                                    "wNo register engine having the path nowhere, considering it disabled.",
                                    "wNo registered engine having path 'unknown'.",
                                    "wNo register engine having the path nowhere, ignoring the unregistration."));
  EXPECT_EQ(engine.disables, 1);

  EXPECT_EQ(get("/nowhere/entities"), "0");
  EXPECT_EQ(get(""), "0");
  EXPECT_EQ(get("/sim/anything"), "0");
  framework.unregisterEngine("sim", &logger);
  EXPECT_EQ(engine.getFacade(), nullptr);
  EXPECT_TRUE(framework.registerEngine(twin, &logger));
  framework.unregisterEngine("sim", &logger);
}

TEST_F(DebuggerTest, FacadeKeepsEntitiesAndTheirContextStacks) {
  nox::test::AssertionRecorder recorder;
  ASSERT_TRUE(framework.registerEngine(engine, &logger));
  registerEntities({4, 2, 4});
  EXPECT_THAT(debugger.getEntities(), ElementsAre(4u, 2u));

  facade.pushContext(engine, 9, outerFactory);
  EXPECT_EQ(recorder.last(), "Entity '9' is not registered on the debugger.");
  EXPECT_EQ(facade.popContext(engine, 2), nullptr);
  EXPECT_EQ(recorder.last(), "Cannot pop context on a empty stack frames for entity '2'.");
  EXPECT_EQ(facade.topContext(2, &logger), nullptr);
  EXPECT_EQ(logger.getEntries().back().message, "There is no context for entity '2'.");

  facade.pushContext(engine, 2, outerFactory);
  facade.pushContext(engine, 2, innerFactory);
  EXPECT_EQ(facade.countContexts(2), 2u);
  EXPECT_EQ(facade.topContext(2), &inner);
  EXPECT_EQ(facade.getContext(2, 0), &outer);
  EXPECT_EQ(facade.getContext(2, 2, &logger), nullptr);
  EXPECT_EQ(logger.getEntries().back().message, "Index '2' is out of bound.");

  struct Locations : AbstractContextVisitor {
    void visit(AbstractContext& context) override {
      if (context.getTypeId() == NamedContext::getClassTypeId()) seen.push_back(context.getLocation());
    }
    std::vector<Uri> seen;
  } locations;
  facade.visitContexts(2, locations);
  EXPECT_THAT(locations.seen, ElementsAre(Uri::create("test:outer"), Uri::create("test:inner")));

  EXPECT_EQ(facade.popContext(engine, 2), &inner);
  EXPECT_EQ(facade.popContext(engine, 2), &outer);
  const std::size_t assertions = recorder.count();

  // Invalidation drops the engine's contexts, and its later pops of them pass quietly.
  CountingEngine other("other", true);
  ASSERT_TRUE(framework.registerEngine(other, &logger));
  facade.pushContext(engine, 4, outerFactory);
  facade.pushContext(other, 4, innerFactory);
  facade.pushContext(engine, 4, innerFactory);
  facade.invalidateContexts(engine);
  EXPECT_EQ(facade.countContexts(4), 1u);
  EXPECT_EQ(facade.popContext(engine, 4), nullptr);
  EXPECT_EQ(facade.popContext(other, 4), &inner);
  EXPECT_EQ(facade.popContext(engine, 4), nullptr);
  EXPECT_EQ(recorder.count(), assertions);

  engine.onEntitiesUnregistration(std::vector<unsigned int>{4}.data(), 1);
  EXPECT_THAT(debugger.getEntities(), ElementsAre(2u));
}

TEST_F(DebuggerTest, LeftoverContextsAreReportedAtDestruction) {
  BufferLogger report(true, true, true);
  {
    InspectionFrameworkImpl local(strings, &report);
    ASSERT_TRUE(local.registerEngine(engine, &report));
    registerEntities({1});
    local.getFacade().pushContext(engine, 1, outerFactory);
  }
  ASSERT_EQ(report.getEntries().size(), 2u);
  EXPECT_EQ(report.getEntries()[0].message, "There is a mismatch number of push/pop contexts.");
  EXPECT_EQ(report.getEntries()[1].message, "Not all contexts have been removed.");
}

TEST_F(DebuggerTest, CommandsWhileRunningSetOrRefuseStopConditions) {
  ASSERT_TRUE(framework.registerEngine(engine, &logger));
  registerEntities({1});
  auto& stepping = framework.getSteppingState();
  EXPECT_FALSE(debugger.stepIn());
  EXPECT_FALSE(debugger.stepOver());
  EXPECT_FALSE(debugger.stepOut());
  EXPECT_FALSE(debugger.suspendEntity(invalidEntity));
  EXPECT_FALSE(debugger.suspendEntity(2));
  EXPECT_TRUE(debugger.suspendEntity(1));
  EXPECT_THAT(stepping.entitiesToSuspend, ElementsAre(1u));
  EXPECT_TRUE(debugger.suspend());
  EXPECT_TRUE(stepping.suspendAll);
  EXPECT_TRUE(stepping.entitiesToSuspend.empty());
  EXPECT_FALSE(debugger.resume());
  EXPECT_FALSE(stepping.hasStopCondition());
  EXPECT_EQ(debugger.getSuspendedEntity(), invalidEntity);
}

// A hit count of N stops at the Nth step that matches the other filters; steps that do
// not match them are not counted. A hit marks the entity to suspend.
TEST_F(DebuggerTest, BreakpointChecksStopAtTheNthMatchingStep) {
  ASSERT_TRUE(framework.registerEngine(engine, &logger));
  registerEntities({1, 2});
  struct Hits : nox::utils::debugger::AbstractEventListener {
    void onBreakpoint(unsigned int, unsigned int entity, const Uri&) override { entities.push_back(entity); }
    std::vector<unsigned int> entities;
  } hits;
  nox::utils::debugger::AbstractEventListener* listener = &hits;
  const Uri move = Uri::create("sim:agents/1/move");
  nox::utils::debugger::AbstractEventFilter* filters[] = {
      NOX_NEW nox::utils::debugger::LocationFilter(move),
      NOX_NEW nox::utils::debugger::HitCountFilter(3, nox::utils::debugger::HitCountFilter::atLeast)};
  framework.getRequestRegistry().subscribe<nox::utils::debugger::BreakpointRequest>(&listener, 1, filters, 2);

  EXPECT_FALSE(facade.checkBreakpoints(1, move));
  EXPECT_FALSE(facade.checkBreakpoints(2, Uri::create("sim:agents/2/move")));
  EXPECT_FALSE(facade.checkBreakpoints(1, move));
  EXPECT_FALSE(framework.getSteppingState().hasStopCondition());
  EXPECT_TRUE(facade.checkBreakpoints(1, move));
  EXPECT_THAT(framework.getSteppingState().entitiesToSuspend, ElementsAre(1u));
  EXPECT_THAT(hits.entities, ElementsAre(1u));
}

TEST_F(DebuggerTest, DebugResourcesDescribeEntitiesAndContexts) {
  nox::test::AssertionRecorder recorder;
  ASSERT_TRUE(framework.registerEngine(engine, &logger));
  registerEntities({3, 1});
  facade.pushContext(engine, 3, outerFactory);
  facade.pushContext(engine, 3, innerFactory);

  EXPECT_EQ(get("/debug"), "2 {\"name\":\"default\",\"description\":\"\"}");
  EXPECT_EQ(get("/debug/"), get("/debug"));
  EXPECT_EQ(get("/debug/entities"), "2 [{\"index\":3},{\"index\":1}]");
  EXPECT_EQ(get("/debug/entities/1"), "2 {\"contexts\":[]}");
  const std::string contexts = "[{\"index\":0,\"location\":\"test:outer\"},{\"index\":1,\"location\":\"test:inner\"}]";
  EXPECT_EQ(get("/debug/entities/3"), "2 {\"contexts\":" + contexts + "}");
  EXPECT_EQ(get("/debug/entities/3/contexts"), "2 " + contexts);
  EXPECT_EQ(get("/debug/entities/3/contexts/1"), "2 \"named\"");
  EXPECT_EQ(get("/debug/suspend"), "2 {\"suspended\":false,\"entity\":4294967295}");
  EXPECT_EQ(get("/debug/resume"), get("/debug/suspend"));
  EXPECT_EQ(recorder.count(), 0u);

  for (const char* unknown : {"/debug/entities/abc", "/debug/entities/3/frames", "/debug/entities/3/contexts/x",
                              "/debug/entities/99999999999", "/debug/sus", "/debug/suspend/now", "/debug/other"}) {
    EXPECT_EQ(get(unknown), "0") << unknown;
  }
  // Entities and contexts named in a path come from a client: a missing one is a
  // warning, never an assertion.
  logger.clear();
  EXPECT_EQ(get("/debug/entities/7"), "0");
  EXPECT_EQ(get("/debug/entities/3/contexts/2"), "0");
  EXPECT_EQ(get("/debug/entities/1/contexts/0"), "0");
  EXPECT_EQ(recorder.count(), 0u);
  EXPECT_THAT(messages('w'), ElementsAre("No entity #7", "No context for entity #3 at index 2",
                                         "No context for entity #1 at index 0"));

  // A refused event at any point is an error.
  for (int refuseAt = 0; refuseAt < 4; ++refuseAt) {
    ReplyText refusing(refuseAt);
    EXPECT_EQ(framework.retrieveResource("debug/entities", 14, DynamicObject(), refusing), resources::error);
  }
  facade.popContext(engine, 3);
  facade.popContext(engine, 3);
}

// {"<key>": <value written by `value`>}, or {"type": ..., "filters": ...} for subscriptions.
using Writer = std::function<void(AbstractObjectBuilder&)>;

DynamicObject memberOf(const char* key, const Writer& value) {
  return objectOf([&](AbstractObjectBuilder& out) {
    out.beginObject();
    out.objectChild(key);
    value(out);
    out.endObject();
  });
}

DynamicObject subscription(const char* type, const Writer& filters = nullptr) {
  return objectOf([&](AbstractObjectBuilder& out) {
    out.beginObject();
    out.objectChild("type");
    out.string(type);
    if (filters) {
      out.objectChild("filters");
      filters(out);
    }
    out.endObject();
  });
}

Writer integer(std::int64_t value) {
  return [value](AbstractObjectBuilder& out) { out.integer(value); };
}

TEST_F(DebuggerTest, DebugCommandsArePosted) {
  ASSERT_TRUE(framework.registerEngine(engine, &logger));
  registerEntities({5});
  auto& stepping = framework.getSteppingState();
  EXPECT_EQ(post("/debug/resume"), "1");
  EXPECT_EQ(post("/debug/stepin"), "1");
  EXPECT_EQ(post("/debug/stepover"), "1");
  EXPECT_EQ(post("/debug/stepout"), "1");
  EXPECT_EQ(post("/debug/jump"), "0");
  EXPECT_EQ(post("/debug"), "0");
  EXPECT_EQ(post("/debug/suspend", memberOf("entity", integer(5))), "2 null");
  EXPECT_THAT(stepping.entitiesToSuspend, ElementsAre(5u));
  EXPECT_EQ(post("/debug/suspend", memberOf("entity", integer(6))), "1");
  EXPECT_EQ(post("/debug/suspend", memberOf("entity", integer(-1))), "1");
  EXPECT_EQ(post("/debug/suspend", memberOf("entity", integer(invalidEntity))), "2 null");
  EXPECT_TRUE(stepping.suspendAll);
  EXPECT_EQ(post("/debug/resume"), "1");

  // A selector that names no entity refuses the command instead of stopping every one.
  logger.clear();
  const Writer text = [](AbstractObjectBuilder& out) { out.string("5"); };
  const Writer list = [](AbstractObjectBuilder& out) {
    out.beginArray();
    out.arrayChild();
    out.integer(5);
    out.endArray();
  };
  const Writer real = [](AbstractObjectBuilder& out) { out.real(5.0); };
  const Writer none = [](AbstractObjectBuilder& out) { out.null(); };
  for (const Writer& selector : {text, list, real, none, integer(std::int64_t(1) << 32)}) {
    EXPECT_EQ(post("/debug/suspend", memberOf("entity", selector)), "1");
  }
  EXPECT_FALSE(stepping.hasStopCondition());
  EXPECT_EQ(messages('w').size(), 5u);
  EXPECT_EQ(messages('w').front(), "The \"entity\" of a suspend command must be an entity id.");
  EXPECT_EQ(post("/debug/suspend"), "2 null");
  EXPECT_EQ(post("/debug/resume"), "1");
  EXPECT_FALSE(stepping.hasStopCondition());
}

class EventFrameworkTest : public DebuggerTest {
 protected:
  EventFrameworkTest() : events(framework) {
    framework.registerEngine(events, &logger);
    framework.registerEngine(engine, &logger);
    framework.enableEngine("events", &logger);
  }
  ~EventFrameworkTest() override { framework.unregisterEngine("events", nullptr); }

  std::string subscribe(const char* type, const Writer& filters = nullptr) {
    return post("/events/subscriptions", subscription(type, filters));
  }

  // Reports a step of `entity` at `location` to the breakpoints, as an engine would.
  void step(unsigned int entity, const char* location) {
    struct Breakpoints : BreakpointRequestVisitor {
      using BreakpointRequestVisitor::BreakpointRequestVisitor;
      void onRequest(BreakpointRequest& request) override {
        if (!request.canHit(getEntity(), getLocation())) return;
        request.update();
        if (request.isHit(getEntity(), getLocation())) request.notify(getEntity(), getLocation());
      }
    };
    const Uri uri = Uri::create(location);
    Breakpoints visitor(entity, uri);
    facade.accept(visitor);
  }

  EventFramework events;
};

TEST_F(EventFrameworkTest, SubscriptionsQueueTheEventsTheyCatch) {
  EXPECT_EQ(subscribe("registration"), "2 {\"requestId\":1}");
  EXPECT_EQ(subscribe("breakpoint",
                      [](AbstractObjectBuilder& out) {
                        out.beginObject();
                        out.objectChild("entities");
                        out.beginArray();
                        for (int entity : {2, 3}) {
                          out.arrayChild();
                          out.integer(entity);
                        }
                        out.endArray();
                        out.objectChild("location");
                        out.string("test:loop");
                        out.objectChild("hitcount");
                        out.integer(2);
                        out.endObject();
                      }),
            "2 {\"requestId\":2}");
  registerEntities({3});
  step(3, "test:loop");  // hit 2 of 2: caught
  step(4, "test:loop");  // another entity
  step(3, "test:elsewhere");
  EXPECT_EQ(get("/events"), "2 [1,2]");
  EXPECT_EQ(get("/events/1"), "2 {\"id\":1,\"type\":\"registration\",\"requestId\":1,\"entity\":3}");
  EXPECT_EQ(get("/events/2"),
            "2 {\"id\":2,\"type\":\"breakpoint\",\"requestId\":2,\"entity\":3,\"location\":\"test:loop\"}");
  EXPECT_EQ(get("/events/2"), get("/events/2/"));
  EXPECT_EQ(get("/events/3"), "0");
  EXPECT_EQ(get("/events/subscriptions"), "0");

  EXPECT_EQ(remove("/events/9"), "0");
  EXPECT_EQ(remove("/events/1"), "2 null");
  EXPECT_EQ(get("/events"), "2 [2]");
  EXPECT_EQ(remove("/events"), "0");
  EXPECT_EQ(remove("/events/"), "2 null");
  EXPECT_EQ(get("/events"), "2 []");

  // Ids go on increasing; a disabled event engine queues nothing.
  step(3, "test:loop");
  framework.disableEngine("events", &logger);
  step(3, "test:loop");
  framework.enableEngine("events", &logger);
  EXPECT_EQ(get("/events"), "2 [3]");
}

TEST_F(EventFrameworkTest, MalformedSubscriptionsAreRefusedAndWrongFiltersIgnored) {
  EXPECT_EQ(post("/events"), "1");
  EXPECT_EQ(post("/events/requests"), "0");
  EXPECT_EQ(post("/events/subscriptions"), "1");
  EXPECT_EQ(subscribe("watchpoint"), "1");
  EXPECT_EQ(subscribe("breakpoint", integer(1)), "1");
  EXPECT_EQ(framework.getRequestRegistry().countRequests(), 0u);

  // Values of the wrong kind make no filter; the subscription goes on without them.
  logger.clear();
  EXPECT_EQ(subscribe("suspension",
                      [](AbstractObjectBuilder& out) {
                        out.beginObject();
                        out.objectChild("hitcount");
                        out.string("3");
                        out.objectChild("colour");
                        out.integer(1);
                        out.objectChild("entities");
                        out.string("1");
                        out.endObject();
                      }),
            "2 {\"requestId\":1}");
  auto* request = static_cast<TargetSuspendRequest*>(framework.getRequestRegistry().findRequest(1));
  ASSERT_NE(request, nullptr);
  EXPECT_TRUE(request->getFilters().empty());
  EXPECT_THAT(messages('w'), ElementsAre("Ignoring the unknown event filter 'colour'.",
                                         "Ignoring the event filter 'entities': its value does not fit it.",
                                         "Ignoring the event filter 'hitcount': its value does not fit it."));

  // A value of the right kind that makes no filter refuses the whole subscription: it
  // would catch more than was asked for.
  const auto filter = [](const char* name, const Writer& value) {
    return [name, value](AbstractObjectBuilder& out) {
      out.beginObject();
      out.objectChild("hitcount");
      out.integer(2);
      out.objectChild(name);
      value(out);
      out.endObject();
    };
  };
  const auto array = [](const Writer& element) {
    return [element](AbstractObjectBuilder& out) {
      out.beginArray();
      out.arrayChild();
      out.integer(1);
      out.arrayChild();
      element(out);
      out.endArray();
    };
  };
  const Writer notUri = [](AbstractObjectBuilder& out) { out.string("sim:agents/1 move"); };
  const Writer text = [](AbstractObjectBuilder& out) { out.string("2"); };
  logger.clear();
  EXPECT_EQ(subscribe("breakpoint", filter("location", notUri)), "1");
  EXPECT_EQ(subscribe("breakpoint", filter("entities", array(text))), "1");
  EXPECT_EQ(subscribe("breakpoint", filter("entities", array(integer(-1)))), "1");
  EXPECT_EQ(subscribe("breakpoint", filter("entities", array(integer(std::int64_t(1) << 32)))), "1");
  EXPECT_EQ(subscribe("breakpoint", filter("hitcount", integer(std::int64_t(1) << 40))), "1");
  EXPECT_EQ(framework.getRequestRegistry().countRequests(), 1u);
  EXPECT_THAT(messages('w'),
              Contains("Refusing the subscription: no event filter 'location' can be made of its value."));
  EXPECT_EQ(subscribe("breakpoint", filter("entities", array(integer(7)))), "2 {\"requestId\":2}");
}

TEST_F(EventFrameworkTest, SubscriptionsStopAtTheLimitUntilSomeAreCancelled) {
  framework.setSubscriptionLimit(3);
  for (int i = 1; i <= 3; ++i) EXPECT_EQ(subscribe("registration"), "2 {\"requestId\":" + std::to_string(i) + "}");
  logger.clear();
  EXPECT_EQ(subscribe("registration"), "1");
  EXPECT_THAT(messages('w'), ElementsAre("Refusing the subscription: the framework already holds 3 subscriptions."));
  EXPECT_EQ(framework.getRequestRegistry().countRequests(), 3u);
  EXPECT_EQ(remove("/events/subscriptions/2"), "2 null");
  EXPECT_EQ(subscribe("registration"), "2 {\"requestId\":4}");
  EXPECT_EQ(framework.getSubscriptionLimit(), 3u);
}

TEST_F(EventFrameworkTest, SubscriptionsAreCancelledByHandleOrAllAtOnce) {
  for (const char* type : {"initialization", "termination", "disconnection"}) subscribe(type);
  EXPECT_EQ(remove("/events/subscriptions/2"), "2 null");
  EXPECT_EQ(remove("/events/subscriptions/2"), "0");
  EXPECT_EQ(remove("/events/subscriptions/x"), "0");
  EXPECT_EQ(remove("/events/subscriptions"), "0");
  EXPECT_EQ(framework.getRequestRegistry().countRequests(), 2u);
  EXPECT_EQ(remove("/events/subscriptions/"), "2 null");
  EXPECT_EQ(framework.getRequestRegistry().countRequests(), 0u);

  // The engine's own subscriptions end with it.
  {
    EventFramework transient(framework);
    ReplyText reply;
    EXPECT_EQ(transient.createResource("subscriptions", 13, subscription("unregistration"), reply), resources::done);
    EXPECT_EQ(framework.getRequestRegistry().countRequests(), 1u);
  }
  EXPECT_EQ(framework.getRequestRegistry().countRequests(), 0u);
}

}  // namespace
