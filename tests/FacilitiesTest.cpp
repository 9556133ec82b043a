// The library's lifecycle: initialize, terminate, the services of the Facilities and
// the registration of the debugger's classes.
#include "support/AssertionRecorder.h"

#include <nox/utils/BufferLogger.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/OstreamLogger.h>
#include <nox/utils/RandomManager.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/BreakpointRequest.h>
#include <nox/utils/debugger/InspectionFramework.h>
#include <nox/utils/debugger/MainContext.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using nox::utils::Facilities;
using testing::ElementsAre;

std::vector<std::string> infos(const nox::utils::BufferLogger& logger) {
  std::vector<std::string> result;
  for (const auto& entry : logger.getEntries()) {
    if (entry.kind == 'i') result.emplace_back(entry.message.c_str());
  }
  return result;
}

const char* const debuggerClasses[] = {
    "nox::utils::debugger::AbstractContext",
    "nox::utils::debugger::AbstractEventFilter",
    "nox::utils::debugger::AbstractEventRequest",
    "nox::utils::debugger::EntitiesFilter",
    "nox::utils::debugger::HitCountFilter",
    "nox::utils::debugger::LocationFilter",
    "nox::utils::debugger::BreakpointRequest",
    "nox::utils::debugger::EntityRegistrationRequest",
    "nox::utils::debugger::EntityUnregistrationRequest",
    "nox::utils::debugger::InitializationRequest",
    "nox::utils::debugger::TargetDisconnectRequest",
    "nox::utils::debugger::TargetSuspendRequest",
    "nox::utils::debugger::TerminationRequest",
    "nox::utils::debugger::MainContext",
};

TEST(FacilitiesTest, InitializeBuildsTheServicesOnceAndTerminateTearsThemDown) {
  nox::utils::BufferLogger logger(true, true, true);
  ASSERT_FALSE(nox::utils::isInitialized());
  ASSERT_TRUE(nox::utils::initialize(&logger));
  Facilities& facilities = Facilities::instance();
  EXPECT_TRUE(nox::utils::initialize(&logger));
  EXPECT_EQ(&Facilities::instance(), &facilities);
  EXPECT_THAT(infos(logger), ElementsAre("Initializing the runtime utils systems."));
  EXPECT_FALSE(logger.hasErrors());

  nox::utils::TypeManager& types = facilities.getTypeManager();
  EXPECT_TRUE(types.isTypeRegistered("nox::utils::StaticObject"));
  for (const char* name : debuggerClasses) EXPECT_TRUE(types.isTypeRegistered(name)) << name;
  EXPECT_TRUE(types.isDerivedFrom(nox::utils::debugger::MainContext::getClassTypeId(),
                                  nox::utils::debugger::AbstractContext::getClassTypeId()));
  EXPECT_TRUE(types.isCreatorRegistered(nox::utils::debugger::MainContext::getClassTypeId()));

  EXPECT_EQ(facilities.getStringTable().getSeed(), 0u);
  EXPECT_EQ(facilities.getRandomNumberGenerator().getSeed(), nox::utils::RandomManager::defaultSeed);
  nox::utils::debugger::InspectionFramework& inspection = facilities.getInspectionFramework();
  EXPECT_EQ(&inspection.getFacilities(), &facilities);
  EXPECT_STREQ(inspection.getName(), "default");
  EXPECT_TRUE(inspection.isEngineEnabled("debug"));
  EXPECT_FALSE(inspection.isHttpStarted());

  logger.clear();
  EXPECT_TRUE(nox::utils::terminate(&logger));
  EXPECT_THAT(infos(logger), ElementsAre("Terminating the runtime utils systems."));
  EXPECT_FALSE(Facilities::isSet());
  EXPECT_FALSE(nox::utils::isInitialized());
  EXPECT_FALSE(nox::utils::terminate(&logger));

  // Again, quietly: a logger that takes no information hears nothing.
  nox::utils::BufferLogger quiet(true, false, false);
  ASSERT_TRUE(nox::utils::initialize(&quiet));
  EXPECT_TRUE(Facilities::instance().getTypeManager().isTypeRegistered(debuggerClasses[0]));
  EXPECT_TRUE(nox::utils::terminate(nullptr));
  EXPECT_TRUE(quiet.getEntries().empty());
}

TEST(FacilitiesTest, LoggerCanBeReplacedAndRestored) {
  ASSERT_TRUE(nox::utils::initialize(nullptr));
  Facilities& facilities = Facilities::instance();
  nox::utils::AbstractLogger& builtIn = facilities.getLogger();
  EXPECT_NE(dynamic_cast<nox::utils::OstreamLogger*>(&builtIn), nullptr);

  nox::utils::BufferLogger mine(true, true, true);
  facilities.setLogger(mine);
  EXPECT_EQ(&facilities.getLogger(), &mine);
  // The inspection framework reports through whatever logger is current.
  facilities.getInspectionFramework().enableEngine("unknown");
  ASSERT_EQ(mine.getEntries().size(), 1u);
  EXPECT_EQ(mine.getEntries()[0].message, "No register engine having the path unknown, ignoring the enabling.");

  facilities.clearLogger();
  EXPECT_EQ(&facilities.getLogger(), &builtIn);
  nox::utils::terminate(nullptr);
}

TEST(FacilitiesTest, SecondCreateIsRefused) {
  nox::test::AssertionRecorder assertions;
  Facilities::create();
  Facilities* first = &Facilities::instance();
  Facilities::create();
  EXPECT_EQ(assertions.last(), "trying to overwrite singleton instance");
  EXPECT_EQ(&Facilities::instance(), first);
  Facilities::destroy();
  EXPECT_FALSE(Facilities::isSet());
}

TEST(FacilitiesTest, VersionIsExportedUnderItsPlainName) { EXPECT_STREQ(getVersionNOX_UTILS(), "0.4.0"); }

}  // namespace
