// Execution control against a real engine thread: the test thread issues commands while
// engines push and pop contexts in a loop. Every wait is on a state, bounded in time.
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/Thread.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/AbstractEventRequest.h>
#include <nox/utils/debugger/BreakpointRequest.h>
#include <nox/utils/debugger/BreakpointRequestVisitor.h>
#include <nox/utils/debugger/DebuggerFramework.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/EntitiesFilter.h>
#include <nox/utils/debugger/FrameworkMutex.h>
#include <nox/utils/debugger/HitCountFilter.h>
#include <nox/utils/debugger/LocationFilter.h>
#include <nox/utils/debugger/MainContext.h>
#include <nox/utils/debugger/RequestRegistry.h>
#include <nox/utils/debugger/TargetSuspendRequest.h>
#include <nox/utils/debugger/impl/EventFramework.h>
#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace nox::utils::debugger;
using impl::EventFramework;
using impl::InspectionFrameworkImpl;
using nox::utils::StringTable;
using nox::utils::Thread;
using nox::utils::Uri;
using ::testing::ElementsAre;

template <class Predicate>
bool waitFor(Predicate done) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    Thread::yield();
  }
  return true;
}

class LocatedContext : public AbstractContext {
  NOX_STATIC_OBJECT("test::LocatedContext", "9d0c4e7a-1b2f-4a63-8e5d-7c3b6a1f0e92", nullptr)
 public:
  explicit LocatedContext(const char* location) : location_(Uri::create(location)) {}
  const Uri& getLocation() const override { return location_; }
  bool serialize(nox::utils::AbstractObjectBuilder& builder) const override { return builder.null(); }

 private:
  Uri location_;
};

struct FixedFactory : AbstractContextFactory {
  explicit FixedFactory(AbstractContext& context) : context(context) {}
  AbstractContext* createContext() override { return &context; }
  AbstractContext& context;
};

// Runs, for its entity, main > f > g frames in a loop on its own thread: push main,
// push f, push g, pop g, pop f, [a companion entity's push h, pop h], pop main. Before
// each push it reports the step to the breakpoints, and a hit suspends the entity.
class ScriptedEngine : public AbstractEngine {
 public:
  ScriptedEngine(const char* path, InspectionFrameworkImpl& framework, unsigned int entity,
                 unsigned int companion = invalidEntity)
      : AbstractEngine(path, true), framework_(framework), entity_(entity), companion_(companion) {}

  void start() {
    EXPECT_TRUE(framework_.registerEngine(*this, nullptr));
    const unsigned int entities[] = {entity_, companion_};
    onEntitiesRegistration(entities, companion_ == invalidEntity ? 1 : 2);
    thread_ = new Thread(&ScriptedEngine::run, this);
  }

  // The debugger must be disabled (or execution resumed) for the thread to finish.
  void join() {
    stopping_ = true;
    EXPECT_TRUE(thread_->join(nullptr));
    delete thread_;
    thread_ = nullptr;
  }

  unsigned long iterations() const { return iterations_; }

 private:
  static void* run(void* self) {
    static_cast<ScriptedEngine*>(self)->loop();
    return nullptr;
  }

  void loop() {
    EngineDebuggerFacade& facade = *getFacade();
    while (!stopping_) {
      push(facade, entity_, mainFactory_);
      push(facade, entity_, fFactory_);
      push(facade, entity_, gFactory_);
      facade.popContext(*this, entity_);
      facade.popContext(*this, entity_);
      if (companion_ != invalidEntity) {
        push(facade, companion_, hFactory_);
        facade.popContext(*this, companion_);
      }
      facade.popContext(*this, entity_);
      ++iterations_;
    }
  }

  void push(EngineDebuggerFacade& facade, unsigned int entity, FixedFactory& factory) {
    struct Breakpoints : BreakpointRequestVisitor {
      Breakpoints(unsigned int entity, const Uri& location, DebuggerFramework& debugger)
          : BreakpointRequestVisitor(entity, location), debugger(debugger) {}
      void onRequest(BreakpointRequest& request) override {
        if (!request.canHit(getEntity(), getLocation())) return;
        request.update();
        if (!request.isHit(getEntity(), getLocation())) return;
        request.notify(getEntity(), getLocation());
        debugger.suspendEntity(getEntity());
      }
      DebuggerFramework& debugger;
    } breakpoints(entity, factory.context.getLocation(), framework_.getDebugger());
    facade.accept(breakpoints);
    facade.pushContext(*this, entity, factory);
  }

  InspectionFrameworkImpl& framework_;
  unsigned int entity_;
  unsigned int companion_;
  MainContext main_;
  LocatedContext f_{"test:f"};
  LocatedContext g_{"test:g"};
  LocatedContext h_{"test:h"};
  FixedFactory mainFactory_{main_};
  FixedFactory fFactory_{f_};
  FixedFactory gFactory_{g_};
  FixedFactory hFactory_{h_};
  Thread* thread_ = nullptr;
  std::atomic<bool> stopping_{false};
  std::atomic<unsigned long> iterations_{0};
};

class DebuggerThreadedTest : public ::testing::Test {
 protected:
  DebuggerThreadedTest() : framework(strings, nullptr), debugger(framework.getDebugger()) {}

  ~DebuggerThreadedTest() override {
    framework.disableEngine("debug", nullptr);
    for (ScriptedEngine* engine : running) engine->join();
  }

  void start(ScriptedEngine& engine) {
    engine.start();
    running.push_back(&engine);
  }

  // "<depth> <top location>" of the entity's stack, "0" when it is empty.
  std::string where(unsigned int entity) {
    const unsigned int depth = framework.countContexts(entity);
    std::ostringstream text;
    text << depth;
    if (depth > 0) text << " " << framework.getFacade().topContext(entity)->getLocation();
    return text.str();
  }

  // Waits for the next suspension and tells where it happened.
  std::string awaitStop(unsigned int entity = 1) {
    if (!waitFor([this] { return debugger.isSuspended(); })) return "still running";
    EXPECT_EQ(debugger.getSuspendedEntity(), entity);
    return where(entity);
  }

  bool awaitAnyStop() {
    return waitFor([this] { return debugger.isSuspended(); });
  }

  std::string stepIn() {
    EXPECT_TRUE(debugger.stepIn());
    return awaitStop();
  }

  // Steps in to the end of an iteration (the pop of main, the only step that leaves the
  // stack empty), then `steps` more: 1 push main, 2 push f, 3 push g, 4 pop g, 5 pop f.
  std::string stepInTo(int steps) {
    for (int step = 0; step < 8 && where(1) != "0"; ++step) stepIn();
    std::string at = where(1);
    for (int step = 0; step < steps; ++step) at = stepIn();
    return at;
  }

  bool progresses(const ScriptedEngine& engine) {
    const unsigned long from = engine.iterations();
    return waitFor([&] { return engine.iterations() >= from + 3; });
  }
  bool runsFreely(const ScriptedEngine& engine) { return progresses(engine) && !debugger.isSuspended(); }

  StringTable strings;
  InspectionFrameworkImpl framework;
  DebuggerFramework& debugger;
  ScriptedEngine engine{"engine", framework, 1, 2};
  ScriptedEngine other{"other", framework, 3};
  std::vector<ScriptedEngine*> running;
};

TEST_F(DebuggerThreadedTest, SuspendStopsTheEngineThreadUntilResumed) {
  start(engine);
  ASSERT_TRUE(runsFreely(engine));
  ASSERT_TRUE(debugger.suspend());
  ASSERT_TRUE(awaitAnyStop());
  const std::string stop = where(debugger.getSuspendedEntity());
  EXPECT_THAT(debugger.getSuspendedEntity(), ::testing::AnyOf(1u, 2u));
  EXPECT_FALSE(debugger.suspend());
  EXPECT_FALSE(debugger.suspendEntity(1));
  EXPECT_EQ(where(debugger.getSuspendedEntity()), stop);
  EXPECT_TRUE(debugger.resume());
  EXPECT_EQ(debugger.getSuspendedEntity(), invalidEntity);
  EXPECT_TRUE(runsFreely(engine));
}

TEST_F(DebuggerThreadedTest, SuspendingOneEntityLeavesAnotherThreadRunning) {
  start(engine);
  start(other);
  ASSERT_TRUE(debugger.suspendEntity(3));
  awaitStop(3);
  EXPECT_TRUE(progresses(engine));
  EXPECT_TRUE(debugger.isSuspended());
  EXPECT_EQ(debugger.getSuspendedEntity(), 3u);
  EXPECT_TRUE(debugger.resume());
  EXPECT_TRUE(runsFreely(other));
}

TEST_F(DebuggerThreadedTest, StepInStopsAtEveryStepOfTheEntityOnly) {
  start(engine);
  ASSERT_TRUE(debugger.suspendEntity(1));
  awaitStop();
  ASSERT_EQ(stepInTo(0), "0");
  std::vector<std::string> steps;
  for (int i = 0; i < 7; ++i) steps.push_back(stepIn());
  EXPECT_THAT(steps, ElementsAre("1 nox:simulation", "2 test:f", "3 test:g", "2 test:f", "1 nox:simulation", "0",
                                 "1 nox:simulation"));
}

TEST_F(DebuggerThreadedTest, StepOverStopsBackInTheContextOrInItsCaller) {
  start(engine);
  ASSERT_TRUE(debugger.suspendEntity(1));
  awaitStop();
  ASSERT_EQ(stepInTo(2), "2 test:f");
  // Over the call of g: back in f once g returns.
  ASSERT_TRUE(debugger.stepOver());
  EXPECT_EQ(awaitStop(), "2 test:f");
  // f itself returns next: the stop is in its caller.
  ASSERT_TRUE(debugger.stepOver());
  EXPECT_EQ(awaitStop(), "1 nox:simulation");
  ASSERT_EQ(stepInTo(3), "3 test:g");
  ASSERT_TRUE(debugger.stepOver());
  EXPECT_EQ(awaitStop(), "2 test:f");
}

TEST_F(DebuggerThreadedTest, StepOutStopsWhenTheContextBelowIsOnTopAgain) {
  start(engine);
  ASSERT_TRUE(debugger.suspendEntity(1));
  awaitStop();
  ASSERT_EQ(stepInTo(3), "3 test:g");
  ASSERT_TRUE(debugger.stepOut());
  EXPECT_EQ(awaitStop(), "2 test:f");
  ASSERT_TRUE(debugger.stepOut());
  EXPECT_EQ(awaitStop(), "1 nox:simulation");
  // Nothing below a single context: a plain resume.
  ASSERT_TRUE(debugger.stepOut());
  EXPECT_TRUE(runsFreely(engine));
}

TEST_F(DebuggerThreadedTest, ResumeWhileRunningIsRefusedButClearsStopConditions) {
  start(engine);
  const unsigned int idle = 9;
  engine.onEntitiesRegistration(&idle, 1);
  ASSERT_TRUE(debugger.suspendEntity(idle));
  EXPECT_FALSE(debugger.resume());
  EXPECT_FALSE(debugger.stepIn());
  {
    nox::utils::debugger::FrameworkMutex::ScopedLocker lock(framework.getMutex());
    EXPECT_FALSE(framework.getSteppingState().hasStopCondition());
  }
  EXPECT_TRUE(runsFreely(engine));
}

TEST_F(DebuggerThreadedTest, DisablingTheDebuggerReleasesTheEngineThread) {
  start(engine);
  ASSERT_TRUE(debugger.suspend());
  ASSERT_TRUE(awaitAnyStop());
  framework.disableEngine("debug", nullptr);
  EXPECT_TRUE(runsFreely(engine));
  // Stop conditions set while disabled wait for the debugger to be enabled again.
  ASSERT_TRUE(debugger.suspendEntity(1));
  EXPECT_TRUE(runsFreely(engine));
  framework.enableEngine("debug", nullptr);
  EXPECT_NE(awaitStop(), "still running");
}

TEST_F(DebuggerThreadedTest, BreakpointsStopTheEngineAndQueueEvents) {
  EventFramework events(framework);
  ASSERT_TRUE(framework.registerEngine(events, nullptr));
  framework.enableEngine("events", nullptr);
  RequestRegistry& registry = framework.getRequestRegistry();
  AbstractEventListener* listener = &events;
  const unsigned int entities[] = {1, 5};
  AbstractEventFilter* filters[] = {NOX_NEW EntitiesFilter(entities, 2), NOX_NEW LocationFilter(Uri::create("test:g")),
                                    NOX_NEW HitCountFilter(3, HitCountFilter::atLeast)};
  start(engine);
  const unsigned int suspension = registry.subscribe<TargetSuspendRequest>(&listener, 1, nullptr, 0);
  const unsigned int breakpoint = registry.subscribe<BreakpointRequest>(&listener, 1, filters, 3);

  EXPECT_EQ(awaitStop(), "3 test:g");
  {
    nox::utils::debugger::FrameworkMutex::ScopedLocker lock(framework.getMutex());
    auto* request = static_cast<BreakpointRequest*>(registry.findRequest(breakpoint));
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(static_cast<const HitCountFilter*>(request->getFilters()[2])->getHits(), 3);
  }
  const auto caught = events.getEvents();
  ASSERT_EQ(caught.size(), 2u);
  EXPECT_EQ(caught[0].kind, event::breakpoint);
  EXPECT_EQ(caught[0].request, breakpoint);
  EXPECT_EQ(caught[0].location, Uri::create("test:g"));
  EXPECT_EQ(caught[1].kind, event::suspension);
  EXPECT_EQ(caught[1].request, suspension);
  EXPECT_EQ(caught[1].entity, 1u);

  // Once counted past 3, every pass through g stops.
  EXPECT_TRUE(debugger.resume());
  EXPECT_EQ(awaitStop(), "3 test:g");
  EXPECT_TRUE(framework.unsubscribe(breakpoint));
  EXPECT_TRUE(debugger.resume());
  EXPECT_TRUE(runsFreely(engine));
  EXPECT_EQ(events.getEvents().size(), 4u);
  framework.disableEngine("debug", nullptr);
  engine.join();
  running.clear();
  framework.unregisterEngine("events", nullptr);
}

}  // namespace
