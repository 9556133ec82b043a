// Two thousand mixed requests against a running engine: valid reads, unsupported
// methods, bad paths, bad queries, broken bodies and subscriptions, interleaved with
// suspend / step / resume sequences whose outcome a small model predicts. Every answer
// must carry the predicted status, the server must keep answering, and after a final
// resume the engine thread must run to its end.
#include "support/AssertionRecorder.h"
#include "support/HttpClient.h"
#include "support/InspectionHost.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using nox::test::HttpClient;
using nox::test::HttpReply;

struct Probe {
  const char* method;
  const char* target;
  const char* body;
  long status;
};

// Requests whose answer does not depend on the engine's state.
const Probe probes[] = {
    {"GET", "/api/debug", nullptr, 200},
    {"GET", "/api/debug/entities", nullptr, 200},
    {"GET", "/api/debug/entities/1/contexts", nullptr, 200},
    {"GET", "/api/debug/suspend", nullptr, 200},
    {"GET", "/api/events", nullptr, 200},
    {"GET", "/0.4.0/debug/entities/2", nullptr, 200},
    {"OPTIONS", "/anything", nullptr, 200},
    {"PUT", "/api/debug", "{}", 400},
    {"PATCH", "/api/debug/resume", nullptr, 400},
    {"HEAD", "/api", nullptr, 400},
    {"BREW", "/api/debug", nullptr, 400},
    {"GET", "/", nullptr, 400},
    {"GET", "/apix/debug", nullptr, 404},
    {"POST", "/nowhere", "{}", 204},
    {"DELETE", "/x", nullptr, 204},
    {"GET", "/api/debug?=oops", nullptr, 404},
    {"DELETE", "/api/events?a=1&=2", nullptr, 204},
    {"GET", "/api/debug/entities/x1", nullptr, 404},
    {"GET", "/api/debug/entities/77", nullptr, 404},
    {"GET", "/api/nosuchengine", nullptr, 404},
    {"POST", "/api/debug/suspend", "{\"entity\":[", 400},
    {"POST", "/api/debug/stepin", "nul", 400},
    {"POST", "/api/debug/resume?x=1", "\"text\"", 400},
    {"POST", "/api/engines?debug=1", "[true]", 400},
    {"POST", "/api/engines", "{\"nope\":1,\"events\":true}", 200},
    {"POST", "/api/events/subscriptions", "{\"type\":\"registration\"}", 200},
    {"POST", "/api/events/subscriptions", "{\"type\":42}", 400},
    {"DELETE", "/api/events/", nullptr, 200},
    {"DELETE", "/api/events/subscriptions/4000000", nullptr, 204},
};

class Model {
 public:
  Model(HttpClient& client, nox::test::SuspensionWaiter& waiter) : client_(client), waiter_(waiter) {}

  bool suspended() const { return suspended_; }

  void check(const char* method, const std::string& target, const char* body, long expected) {
    const std::string text = body != nullptr ? body : "";
    const HttpReply reply = client_.send(method, target, body != nullptr ? &text : nullptr);
    history_ += std::string(method) + " " + target + " " + text + " -> " + std::to_string(reply.status) + "\n";
    ASSERT_EQ(reply.status, expected) << history_;
  }

  // One command of a suspend / step / resume sequence, with the status the model
  // predicts and, when the engine must stop again, a wait for that stop.
  void command(std::mt19937& random) {
    if (!suspended_) {
      const int choice = static_cast<int>(random() % 4);
      if (choice == 0) return check("POST", "/api/debug/stepin", nullptr, 400);
      if (choice == 1) return check("POST", "/api/debug/resume", nullptr, 400);
      if (choice == 2) return check("POST", "/api/debug/suspend", "{\"entity\":5}", 400);
      const unsigned int entity = 1 + random() % 2;
      check("POST", "/api/debug/suspend", ("{\"entity\":" + std::to_string(entity) + "}").c_str(), 200);
      return stopAgain();
    }
    // The stack tells where the engine stopped: with two frames the top one returns to
    // the outer one; with fewer, the next returns may leave the entity with no frame.
    const bool nested = countContexts(waiter_.lastEntity()) == 2;
    switch (random() % 5) {
      case 0:
        return check("POST", "/api/debug/suspend", nullptr, 400);
      case 1:
        check("POST", "/api/debug/stepin", nullptr, 200);
        return stopAgain();
      case 2:
        check("POST", nested ? "/api/debug/stepover" : "/api/debug/stepout", nullptr, 200);
        if (nested) return stopAgain();
        suspended_ = false;
        return;
      case 3:
        check("POST", "/api/debug/stepout", nullptr, 200);
        if (nested) return stopAgain();
        suspended_ = false;
        return;
      default:
        check("POST", "/api/debug/resume", nullptr, 200);
        suspended_ = false;
    }
  }

 private:
  void stopAgain() {
    ASSERT_TRUE(waiter_.waitFor(++stops_));
    suspended_ = true;
  }

  unsigned int countContexts(unsigned int entity) {
    const std::string body = client_.get("/api/debug/entities/" + std::to_string(entity) + "/contexts").body;
    unsigned int count = 0;
    for (std::size_t at = body.find("\"index\""); at != std::string::npos; at = body.find("\"index\"", at + 1)) ++count;
    return count;
  }

  HttpClient& client_;
  nox::test::SuspensionWaiter& waiter_;
  bool suspended_ = false;
  int stops_ = 0;
  std::string history_;
};

TEST(HttpRobustnessTest, TwoThousandMixedRequestsLeaveTheServerAndEngineHealthy) {
  nox::test::AssertionRecorder assertions;
  nox::test::InspectionHost host;
  ASSERT_TRUE(host.framework().isHttpStarted());
  nox::test::SteppingEngine& engine = host.startEngine();
  nox::test::SuspensionWaiter waiter(host.framework());
  HttpClient client(host.port());
  Model model(client, waiter);

  std::mt19937 random(20240611);
  constexpr int requests = 2000;
  for (int i = 0; i < requests && !testing::Test::HasFatalFailure(); ++i) {
    if (random() % 4 == 0) {
      model.command(random);
    } else {
      const Probe& probe = probes[random() % (sizeof probes / sizeof probes[0])];
      model.check(probe.method, probe.target, probe.body, probe.status);
    }
  }
  ASSERT_FALSE(testing::Test::HasFatalFailure());

  model.check("POST", "/api/debug/resume", nullptr, model.suspended() ? 200 : 400);
  EXPECT_EQ(client.get("/api/debug/suspend").body, R"({"suspended":false,"entity":4294967295})");
  EXPECT_TRUE(engine.stop());
  EXPECT_EQ(client.get("/api/debug").status, 200);
  // Nothing a client sent reached an assertion.
  EXPECT_EQ(assertions.count(), 0u);
}

}  // namespace
