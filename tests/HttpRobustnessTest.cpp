// The inspection server against careless and hostile clients, over real sockets.
//
// Two thousand mixed requests against a running engine: valid reads, unsupported
// methods, bad paths, bad queries, broken bodies and subscriptions, interleaved with
// suspend / step / resume sequences whose outcome a small model predicts. Every answer
// must carry the predicted status, the server must keep answering, and after a final
// resume the engine thread must run to its end.
//
// Then the requests that once froze or killed a host: idle connections, huge, deep,
// unbounded, stalled and header-heavy bodies, and the fuzzing corpus sent raw. Each is
// refused, none runs its command, and the server and engine go on.
#include "support/AssertionRecorder.h"
#include "support/HttpClient.h"
#include "support/InspectionHost.h"
#include "support/RawConnection.h"

#include <nox/utils/debugger/FrameworkMutex.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

namespace {

using nox::test::HttpClient;
using nox::test::HttpReply;
using nox::test::InspectionHost;
using nox::test::RawConnection;
using nox::utils::debugger::HttpOptions;
using std::chrono::milliseconds;
using testing::Contains;

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

// Whether a command left a mark: a stop condition set, or the engine stopped.
bool anyCommandRan(InspectionHost& host) {
  auto& framework = host.framework().getImplementation();
  nox::utils::debugger::FrameworkMutex::ScopedLocker lock(framework.getMutex());
  return framework.getSteppingState().hasStopCondition() || framework.getDebugger().isSuspended();
}

std::string request(const std::string& head, const std::string& body) {
  return head + "\r\nHost: 127.0.0.1\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

// Sends `bytes` as they are, says nothing more will come, and gives the reply's status.
long sendRaw(unsigned short port, const std::string& bytes) {
  RawConnection connection(port);
  connection.send(bytes);
  connection.finishSending();
  return RawConnection::statusOf(connection.receive(milliseconds(5000)));
}

HttpOptions quickTimeout(unsigned int threads) {
  HttpOptions options;
  options.threadCount = threads;
  options.requestTimeoutMilliseconds = 500;
  return options;
}

long millisecondsSince(std::chrono::steady_clock::time_point start) {
  return static_cast<long>(std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start).count());
}

TEST(HttpRobustnessTest, SixteenIdleConnectionsLeaveTheApiAnswering) {
  InspectionHost host{HttpOptions()};
  std::vector<std::unique_ptr<RawConnection>> idle;
  for (int i = 0; i < 16; ++i) {
    idle.push_back(std::make_unique<RawConnection>(host.port()));
    ASSERT_TRUE(idle.back()->connected());
    // Some stop halfway through their request line.
    if (i % 2 == 0) idle.back()->send("GET /api/deb");
  }
  HttpClient client(host.port());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(client.get("/api/debug/entities").status, 200);
  EXPECT_LT(millisecondsSince(start), 250);
}

TEST(HttpRobustnessTest, HugeBodiesAreRefusedUnreadAndTheServerGoesOn) {
  InspectionHost host{HttpOptions()};
  host.startEngine();
  HttpClient client(host.port());
  const std::string body = "{\"entity\":2,\"pad\":\"" + std::string(10 * 1024 * 1024, 'x') + "\"}";
  EXPECT_EQ(client.post("/api/debug/suspend", body).status, 400);
  EXPECT_THAT(host.logger.messages('w'), Contains("HTTP request refused: its body is larger than 1048576 bytes."));
  EXPECT_FALSE(anyCommandRan(host));
  EXPECT_EQ(client.get("/api/debug").status, 200);
}

TEST(HttpRobustnessTest, AStalledBodyHoldsNoOneBeyondTheRequestTimeout) {
  const std::string stalledBody =
      "POST /api/debug/suspend HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 1000\r\n\r\n{\"entity\":2}";
  for (unsigned int threads : {32u, 1u}) {
    SCOPED_TRACE(std::to_string(threads) + " worker threads");
    InspectionHost host{quickTimeout(threads)};
    host.startEngine();
    RawConnection stalled(host.port());
    ASSERT_TRUE(stalled.send(stalledBody));
    HttpClient client(host.port());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.get("/api/debug").status, 200);
    // With threads to spare nobody waits. Alone, the worker gives the body up after the
    // timeout, and CivetWeb then waits once more, up to the timeout, for the client to
    // finish before it closes the connection.
    EXPECT_LT(millisecondsSince(start), threads > 1 ? 250 : 2 * 500 + 500);
    EXPECT_EQ(RawConnection::statusOf(stalled.receive(milliseconds(5000))), 400);
    EXPECT_THAT(host.logger.messages('w'), Contains("HTTP request refused: its body was cut short after 12 bytes."));
    EXPECT_FALSE(anyCommandRan(host));
  }
}

// Each would once have run a command without its parameters, or killed the host.
TEST(HttpRobustnessTest, BodiesTheServerCannotTakeWholeAreRefusedAndNeverRun) {
  std::string seventyHeaders = "POST /api/debug/suspend HTTP/1.1\r\nHost: 127.0.0.1\r\n";
  for (int i = 0; i < 70; ++i) seventyHeaders += "X-Filler-" + std::to_string(i) + ": 1\r\n";
  seventyHeaders += "Content-Length: 12\r\n\r\n{\"entity\":2}";
  std::string deepObject;
  for (int i = 0; i < 106; ++i) deepObject += "{\"a\":";
  deepObject += "1" + std::string(106, '}');
  const std::string refused[] = {
      request("POST /api/debug/suspend HTTP/1.1", std::string(108, '[') + std::string(108, ']')),
      request("POST /api/debug/suspend HTTP/1.1", deepObject),
      "POST /api/debug/suspend HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n{\"entity\":2}",
      "POST /api/debug/suspend HTTP/1.0\r\n\r\n{\"entity\":2}",
      seventyHeaders,
      request("POST /api/debug/suspend HTTP/1.1", "{\"entity\":\"2\"}"),
      request("POST /api/events/subscriptions HTTP/1.1", R"({"type":"breakpoint\u0000junk"})"),
      request("POST /api/events/subscriptions HTTP/1.1", R"({"type":"breakpoint","filters":{"location":"a b"}})"),
  };
  // Both forms of the server read bodies the same way.
  for (bool optionsForm : {false, true}) {
    SCOPED_TRACE(optionsForm ? "options form" : "port form");
    nox::test::AssertionRecorder assertions;
    std::unique_ptr<InspectionHost> host =
        optionsForm ? std::make_unique<InspectionHost>(HttpOptions()) : std::make_unique<InspectionHost>();
    host->startEngine();
    for (const std::string& bytes : refused) EXPECT_EQ(sendRaw(host->port(), bytes), 400) << bytes.substr(0, 60);
    EXPECT_FALSE(anyCommandRan(*host));
    EXPECT_EQ(host->framework().getImplementation().getRequestRegistry().countRequests(), 0u);
    EXPECT_EQ(sendRaw(host->port(), "GET /api/debug/entities%00/99 HTTP/1.1\r\n\r\n"), 400);
    EXPECT_EQ(sendRaw(host->port(), "GET /api/debug HTTP/1.1\r\n\r\n"), 200);
    EXPECT_EQ(assertions.count(), 0u);
  }
}

// The deepest body taken is copied and walked on the worker thread's small stack.
TEST(HttpRobustnessTest, TheDeepestBodyTakenIsServedOnAWorkerThread) {
  const auto subscription = [](int depth) {
    std::string nested;
    for (int level = 2; level < depth; ++level) nested += (level % 2 == 0 ? "{\"x\":" : "[");
    nested += "1";
    for (int level = depth - 1; level >= 2; --level) nested += (level % 2 == 0 ? "}" : "]");
    // The body object, "filters", then the nesting: `depth` levels in all.
    return R"({"type":"registration","filters":{"deep":)" + nested + "}}";
  };
  InspectionHost host{HttpOptions()};
  HttpClient client(host.port());
  EXPECT_EQ(client.post("/api/events/subscriptions", subscription(32)).status, 200);
  EXPECT_EQ(client.post("/api/events/subscriptions", subscription(33)).status, 400);
  EXPECT_THAT(host.logger.messages('e'), Contains("The request body nests objects and arrays deeper than 32 levels."));
  EXPECT_EQ(host.framework().getImplementation().getRequestRegistry().countRequests(), 1u);
}

TEST(HttpRobustnessTest, AThousandFuzzingInputsLeaveTheServerAndEngineRunning) {
  std::vector<std::string> inputs;
  for (const auto& entry : std::filesystem::directory_iterator(NOX_FUZZ_CORPUS_DIR "/http")) {
    std::ifstream file(entry.path(), std::ios::binary);
    inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  ASSERT_GE(inputs.size(), 40u);
  nox::test::AssertionRecorder assertions;
  InspectionHost host{quickTimeout(8)};
  nox::test::SteppingEngine& engine = host.startEngine();
  int answered = 0;
  for (int i = 0; i < 1000; ++i) answered += sendRaw(host.port(), inputs[i % inputs.size()]) != 0;
  EXPECT_EQ(answered, 1000);
  // Breakpoints the inputs set would stop the engine again: cancel them, then resume.
  HttpClient client(host.port());
  EXPECT_EQ(client.del("/api/events/subscriptions/").status, 200);
  EXPECT_EQ(client.post("/api/engines", R"({"debug":true})").status, 200);
  client.post("/api/debug/resume");
  EXPECT_EQ(client.get("/api/debug/entities").body, R"([{"index":1},{"index":2}])");
  EXPECT_TRUE(engine.stop());
  EXPECT_EQ(assertions.count(), 0u);
}

}  // namespace
