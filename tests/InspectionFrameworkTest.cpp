// The inspection framework's front: engines by path, their messages, resource dispatch
// and the checks it makes when the library goes down.
#include "support/AssertionRecorder.h"
#include "support/InspectionHost.h"

#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/StringTable.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using nox::utils::BufferLogger;
using nox::utils::Facilities;
using nox::utils::debugger::AbstractEngine;
using nox::utils::debugger::InspectionFramework;
using testing::ElementsAre;

std::vector<std::string> messagesOf(const BufferLogger& logger, char kind) {
  std::vector<std::string> result;
  for (const auto& entry : logger.getEntries()) {
    if (entry.kind == kind) result.emplace_back(entry.message.c_str());
  }
  return result;
}

class InspectionFrameworkTest : public testing::Test {
 protected:
  InspectionFrameworkTest() {
    nox::utils::initialize(nullptr);
    Facilities::instance().setLogger(logger);
  }
  ~InspectionFrameworkTest() override { nox::utils::terminate(nullptr); }

  InspectionFramework& framework() { return Facilities::instance().getInspectionFramework(); }

  BufferLogger logger{true, true, true};
};

TEST_F(InspectionFrameworkTest, EnginesAreKnownByTheirPath) {
  AbstractEngine sim("sim", false);
  AbstractEngine twin("sim", true);
  AbstractEngine nameless(nullptr, true);
  ASSERT_TRUE(framework().registerEngine(sim));
  EXPECT_FALSE(framework().registerEngine(twin));
  EXPECT_FALSE(framework().registerEngine(nameless));
  EXPECT_THAT(messagesOf(logger, 'e'), ElementsAre("There is already a registered engine having path 'sim'.",
                                                   "An engine having the same path (sim) was already registered.",
                                                   "The given engine returns a NULL path."));
  const std::uint64_t hash = Facilities::instance().getStringTable().hash("sim", nullptr);
  EXPECT_STREQ(Facilities::instance().getStringTable().retrieve(hash, nullptr), "sim");
  EXPECT_EQ(sim.getFacade(), &framework().getFacade());

  logger.clear();
  framework().enableEngine("sim");
  EXPECT_TRUE(framework().isEngineEnabled("sim"));
  framework().disableAllEngines();
  EXPECT_FALSE(framework().isEngineEnabled("debug"));
  framework().enableAllEngines();
  EXPECT_TRUE(framework().isEngineEnabled("debug"));
  EXPECT_TRUE(logger.getEntries().empty());

  framework().enableEngine("nope");
  framework().disableEngine("nope");
  EXPECT_FALSE(framework().isEngineEnabled("nope"));
  framework().enableEngine(nullptr);
  EXPECT_THAT(messagesOf(logger, 'w'),
              ElementsAre("No register engine having the path nope, ignoring the enabling.",
                          "No register engine having the path nope, ignoring the disabling.",
                          "No register engine having the path nope, considering it disabled."));
  EXPECT_THAT(messagesOf(logger, 'e'), ElementsAre("The given path is NULL."));

  framework().unregisterEngine("sim");
  EXPECT_EQ(sim.getFacade(), nullptr);
  logger.clear();
  framework().unregisterEngine("sim");
  EXPECT_THAT(messagesOf(logger, 'w'),
              testing::Contains("No register engine having the path sim, ignoring the unregistration."));
}

// Registration order, not hash order, and a re-registered engine goes to the end.
TEST_F(InspectionFrameworkTest, EnginesAreListedInRegistrationOrderWithTheirState) {
  AbstractEngine zeta("zeta", false);
  AbstractEngine alpha("alpha", true);
  ASSERT_TRUE(framework().registerEngine(zeta));
  ASSERT_TRUE(framework().registerEngine(alpha));
  const auto listed = [this] {
    std::vector<std::string> result;
    for (const InspectionFramework::EngineState& engine : framework().listEngines()) {
      result.push_back(std::string(engine.path.c_str()) + (engine.enabled ? "+" : "-"));
    }
    return result;
  };
  EXPECT_THAT(listed(), ElementsAre("debug+", "zeta-", "alpha+"));

  framework().unregisterEngine("zeta");
  framework().enableEngine("zeta");
  framework().disableEngine("debug");
  ASSERT_TRUE(framework().registerEngine(zeta));
  EXPECT_THAT(listed(), ElementsAre("debug-", "alpha+", "zeta-"));
  framework().enableAllEngines();
  EXPECT_THAT(listed(), ElementsAre("debug+", "alpha+", "zeta+"));
  framework().unregisterEngine("alpha");
  framework().unregisterEngine("zeta");
  EXPECT_THAT(listed(), ElementsAre("debug+"));
}

TEST_F(InspectionFrameworkTest, ResourcesGoToTheEngineNamedByTheFirstSegment) {
  nox::utils::DynamicObject parameters;
  nox::utils::MemoryInputOutput text;
  nox::utils::JsonObjectBuilder reply(text, false);
  const char* path = "/debug/suspend";
  EXPECT_EQ(framework().retrieveResource(path, std::strlen(path), parameters, reply),
            nox::utils::debugger::resources::done);
  EXPECT_EQ(std::string(text.getData(), text.getSize()), R"({"suspended":false,"entity":4294967295})");
  EXPECT_EQ(framework().createResource("/nope", 5, parameters, reply), nox::utils::debugger::resources::unknown);
  EXPECT_EQ(framework().deleteResource("", 0, parameters, reply), nox::utils::debugger::resources::unknown);
  EXPECT_FALSE(framework().unsubscribe(12345));
  framework().setName("inspector");
  EXPECT_STREQ(framework().getName(), "inspector");
}

TEST_F(InspectionFrameworkTest, ContextsLeftOnTheStacksAreReportedAtTheEnd) {
  AbstractEngine sim("sim", true);
  ASSERT_TRUE(framework().registerEngine(sim));
  const unsigned int entity = 3;
  sim.onEntitiesRegistration(&entity, 1);
  nox::test::TestContext context(entity, "sim:agents/3");
  struct Factory : nox::utils::debugger::AbstractContextFactory {
    nox::utils::debugger::AbstractContext* context;
    nox::utils::debugger::AbstractContext* createContext() override { return context; }
  } factory;
  factory.context = &context;
  framework().getFacade().pushContext(sim, entity, factory);
  nox::utils::terminate(nullptr);
  EXPECT_THAT(messagesOf(logger, 'e'),
              ElementsAre("There is a mismatch number of push/pop contexts.", "Not all contexts have been removed."));
}

}  // namespace
