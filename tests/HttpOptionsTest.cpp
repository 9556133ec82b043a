// The options form of the inspection HTTP server: where it listens, the options it
// refuses, and who may use the API: Host names, origins of pages, access tokens.
#include "support/HttpClient.h"
#include "support/InspectionHost.h"
#include "support/RawConnection.h"

#include <nox/utils/debugger/FrameworkMutex.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using nox::test::HttpClient;
using nox::test::HttpReply;
using nox::test::InspectionHost;
using nox::utils::debugger::HttpOptions;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

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

bool suspendRequested(InspectionHost& host) {
  auto& framework = host.framework().getImplementation();
  nox::utils::debugger::FrameworkMutex::ScopedLocker lock(framework.getMutex());
  return framework.getSteppingState().hasStopCondition();
}

HttpReply sendWith(HttpClient& client, std::vector<std::string> headers, const char* method, const char* target) {
  client.headers = std::move(headers);
  const std::string body = "{}";
  return client.send(method, target, std::string(method) == "POST" ? &body : nullptr);
}

TEST(HttpOptionsTest, OnLoopbackOnlyLocalHostNamesAreServed) {
  InspectionHost host{HttpOptions()};
  HttpClient client(host.port());
  const std::string port = std::to_string(host.port());
  for (const std::string& name :
       std::vector<std::string>{"localhost", "LocalHost:" + port, "127.0.0.1:" + port, "[::1]:" + port, "[::1]"}) {
    EXPECT_EQ(sendWith(client, {"Host: " + name}, "GET", "/api/debug").status, 200) << name;
  }
  EXPECT_THAT(host.logger.messages('w'), IsEmpty());
  // A page whose name was rebound to this machine still names itself.
  for (const std::string& name :
       std::vector<std::string>{"attacker.example", "attacker.example:" + port, "localhost.attacker.example",
                                "127.0.0.1.nip.io:" + port, "localhost:80x"}) {
    EXPECT_EQ(sendWith(client, {"Host: " + name}, "GET", "/api/debug").status, 403) << name;
  }
  EXPECT_EQ(sendWith(client, {"Host: attacker.example"}, "POST", "/api/debug/suspend").status, 403);
  EXPECT_FALSE(suspendRequested(host));
  EXPECT_THAT(
      host.logger.messages('w'),
      Contains("HTTP request refused: the Host 'attacker.example' does not name this machine (DNS rebinding?)."));

  // Listening on every interface, the server cannot know its names: no Host check.
  host.framework().shutdownHttp();
  HttpOptions everywhere;
  everywhere.bindAddress = "0.0.0.0";
  ASSERT_TRUE(host.framework().startHttp(everywhere));
  HttpClient wide(host.port());
  EXPECT_EQ(sendWith(wide, {"Host: inspector.lan"}, "GET", "/api/debug").status, 200);
}

TEST(HttpOptionsTest, PagesOfOtherOriginsMayReadButNotAct) {
  HttpOptions options;
  options.allowedOrigins.push_back("http://tools.example:3000");
  InspectionHost host{options};
  HttpClient client(host.port());
  const std::string self = "http://127.0.0.1:" + std::to_string(host.port());

  const HttpReply read = sendWith(client, {"Origin: http://evil.example"}, "GET", "/api/debug");
  EXPECT_EQ(read.status, 200);
  EXPECT_THAT(read.headers, HasSubstr("Access-Control-Allow-Origin: *"));
  // A form post from a foreign page needs no preflight: it must be refused outright.
  EXPECT_EQ(sendWith(client, {"Origin: http://evil.example", "Content-Type: text/plain"}, "POST", "/api/debug/suspend")
                .status,
            403);
  EXPECT_EQ(sendWith(client, {"Origin: null"}, "DELETE", "/api/events/subscriptions/").status, 403);
  EXPECT_FALSE(suspendRequested(host));
  EXPECT_THAT(host.logger.messages('w'),
              Contains("HTTP request refused: a page of the origin 'http://evil.example' may not POST here (allowed "
                       "origins only)."));

  // The server's own pages, listed origins and clients that are no page may act.
  EXPECT_EQ(sendWith(client, {"Origin: " + self}, "POST", "/api/debug/suspend").status, 200);
  EXPECT_EQ(sendWith(client, {"Origin: HTTP://TOOLS.example:3000"}, "POST", "/api/debug/resume").status, 400);
  EXPECT_EQ(sendWith(client, {}, "DELETE", "/api/events/subscriptions/").status, 200);

  host.framework().shutdownHttp();
  options.allowedOrigins.assign(1, "*");
  ASSERT_TRUE(host.framework().startHttp(options));
  HttpClient any(host.port());
  EXPECT_EQ(sendWith(any, {"Origin: http://evil.example"}, "DELETE", "/api/events/subscriptions/").status, 200);
}

TEST(HttpOptionsTest, WithATokenEveryRequestMustCarryIt) {
  HttpOptions options;
  options.accessToken = "s3cret-Token";
  InspectionHost host{options};
  HttpClient client(host.port());
  EXPECT_EQ(sendWith(client, {}, "GET", "/api/debug").status, 401);
  EXPECT_EQ(sendWith(client, {}, "OPTIONS", "/api/debug").status, 401);
  for (const std::string& wrong :
       std::vector<std::string>{"Bearer s3cret-token", "Bearer s3cret-Token2", "Bearer s3cret", "Basic s3cret-Token",
                                "s3cret-Token", "Bearer "}) {
    EXPECT_EQ(sendWith(client, {"Authorization: " + wrong}, "POST", "/api/debug/suspend").status, 401) << wrong;
  }
  EXPECT_FALSE(suspendRequested(host));
  EXPECT_EQ(sendWith(client, {"Authorization: Bearer s3cret-Token"}, "GET", "/api/debug").status, 200);
  EXPECT_EQ(sendWith(client, {"Authorization: bearer s3cret-Token"}, "POST", "/api/debug/suspend").status, 200);
  EXPECT_TRUE(suspendRequested(host));

  const std::vector<std::string> warnings = host.logger.messages('w');
  EXPECT_THAT(warnings, Contains("HTTP request refused: no access token (Authorization: Bearer) was given."));
  EXPECT_THAT(warnings, Contains("HTTP request refused: a wrong access token (Authorization: Bearer) was given."));
  for (const auto& entry : host.logger.entries()) EXPECT_THAT(entry.message, Not(HasSubstr("s3cret")));
}

TEST(HttpOptionsTest, RequestsWithMoreHeadersThanTheServerKeepsAreRefused) {
  InspectionHost host{HttpOptions()};
  HttpClient client(host.port());
  std::vector<std::string> headers;
  for (int i = 0; i < 61; ++i) headers.push_back("X-Filler-" + std::to_string(i) + ": 1");
  // With libcurl's own Host and Accept: 63 headers are served.
  EXPECT_EQ(sendWith(client, headers, "GET", "/api/debug").status, 200);
  headers.push_back("X-Filler-last: 1");
  EXPECT_EQ(sendWith(client, headers, "GET", "/api/debug").status, 400);
  EXPECT_THAT(host.logger.messages('w'),
              ElementsAre("HTTP request refused: it has more headers than the server keeps (64)."));
}

}  // namespace
