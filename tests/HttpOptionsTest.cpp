// The options form of the inspection HTTP server: where it listens, how many clients it
// serves at once, and the options it refuses.
#include "support/HttpClient.h"
#include "support/InspectionHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using nox::test::HttpClient;
using nox::test::InspectionHost;
using nox::utils::debugger::HttpOptions;
using testing::Contains;
using testing::ElementsAre;

TEST(HttpOptionsTest, ServesOnLoopbackOnThePortTheSystemChose) {
  InspectionHost host{HttpOptions()};
  ASSERT_TRUE(host.framework().isHttpStarted());
  ASSERT_NE(host.port(), 0);
  HttpClient client(host.port());
  EXPECT_EQ(client.get("/api/debug").body, R"({"name":"default","description":""})");

  // A second start is refused whatever its form.
  EXPECT_FALSE(host.framework().startHttp(HttpOptions()));
  EXPECT_THAT(host.logger.messages('e'),
              ElementsAre("The inspection HTTP server is already running on port " + std::to_string(host.port())));
}

TEST(HttpOptionsTest, RefusesOptionsItCannotServeWith) {
  InspectionHost host{HttpOptions()};
  host.framework().shutdownHttp();
  host.logger.clear();

  HttpOptions options;
  options.bindAddress = "localhost";
  EXPECT_FALSE(host.framework().startHttp(options));
  options.bindAddress = "127.0.0.1";
  options.threadCount = 0;
  EXPECT_FALSE(host.framework().startHttp(options));
  EXPECT_THAT(host.logger.messages('e'),
              ElementsAre("The inspection HTTP server cannot listen on 'localhost': it is not an IPv4 address.",
                          "The inspection HTTP server needs at least one worker thread."));
  EXPECT_FALSE(host.framework().isHttpStarted());
  EXPECT_EQ(host.framework().getImplementation().findEngine("events", 6), nullptr);

  // An address of no local interface cannot be bound.
  options.threadCount = 2;
  options.bindAddress = "192.0.2.1";
  EXPECT_FALSE(host.framework().startHttp(options));
  EXPECT_THAT(host.logger.messages('e'), Contains("Unable to start the inspection HTTP server on port 0"));
}

}  // namespace
