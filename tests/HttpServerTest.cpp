// The inspection HTTP server, driven over loopback by a real HTTP client: request
// handling steps and their warnings, reply format, the engine switch board, the
// debugger commands against a running engine thread, and event subscriptions.
#include "support/AssertionRecorder.h"
#include "support/HttpClient.h"
#include "support/InspectionHost.h"

#include <nox/utils/DynamicObject.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using nox::test::HttpClient;
using nox::test::HttpReply;
using nox::test::InspectionHost;
using nox::test::SuspensionWaiter;
using nox::utils::debugger::resources::Status;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

std::string headerBlock(int code, const char* reason, const char* type, std::size_t length) {
  return "HTTP/1.1 " + std::to_string(code) + " " + reason + "\r\nContent-Type: application/" + type +
         "; charset=utf-8\r\nContent-Length: " + std::to_string(length) +
         "\r\nConnection: close\r\nAccess-Control-Allow-Origin: *\r\n\r\n";
}

// Answers every call under its path with a configured status and, when done, {"ok":true};
// remembers what it was given.
class ScriptedEngine : public nox::utils::debugger::AbstractEngine {
 public:
  ScriptedEngine() : AbstractEngine("scripted", true) {}

  Status status = nox::utils::debugger::resources::done;
  bool reportError = false;
  std::string lastPath;
  std::string lastRequest;

  Status retrieveResource(const char* path, unsigned int length, const nox::utils::DynamicObject& parameters,
                          nox::utils::AbstractObjectBuilder& reply) override {
    return answer(path, length, parameters, reply);
  }
  Status createResource(const char* path, unsigned int length, const nox::utils::DynamicObject& request,
                        nox::utils::AbstractObjectBuilder& reply) override {
    return answer(path, length, request, reply);
  }
  Status deleteResource(const char* path, unsigned int length, const nox::utils::DynamicObject& parameters,
                        nox::utils::AbstractObjectBuilder& reply) override {
    return answer(path, length, parameters, reply);
  }

 private:
  Status answer(const char* path, unsigned int length, const nox::utils::DynamicObject& request,
                nox::utils::AbstractObjectBuilder& reply) {
    lastPath.assign(path, length);
    nox::utils::MemoryInputOutput text;
    nox::utils::serializeDynamicObjectToJson(request, text, nullptr);
    lastRequest.assign(text.getData(), text.getSize());
    if (reportError) NOX_LOG_ERROR(getFacade()->getLogger(), nox::utils::error::invalidData, "scripted failure");
    if (status == nox::utils::debugger::resources::done) {
      reply.begin() && reply.beginObject() && reply.objectChild("ok") && reply.boolean(true) && reply.endObject() &&
          reply.end();
    }
    return status;
  }
};

class HttpServerTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(host.framework().isHttpStarted());
    ASSERT_TRUE(host.framework().registerEngine(scripted));
  }
  void TearDown() override { host.framework().unregisterEngine("scripted"); }

  std::vector<std::string> warnings() const { return host.logger.messages('w'); }

  ScriptedEngine scripted;
  InspectionHost host;
  HttpClient client{host.port()};
};

TEST_F(HttpServerTest, RepliesCarryTheExactHeaderBlock) {
  const HttpReply reply = client.get("/api/debug");
  EXPECT_EQ(reply.headers, headerBlock(200, "OK", "json", reply.body.size()));
  EXPECT_EQ(reply.body, R"({"name":"default","description":""})");

  // An empty body is announced as text.
  const HttpReply empty = client.post("/elsewhere");
  EXPECT_EQ(empty.headers, headerBlock(204, "No Content", "text", 0));
  EXPECT_EQ(empty.body, "");

  // The version string stands for "api".
  EXPECT_EQ(client.get("/0.4.0/debug").body, reply.body);
}

TEST_F(HttpServerTest, OptionsAnswersTheFixedAllowTextWhateverThePath) {
  const HttpReply reply = client.send("OPTIONS", "/no/such/thing?=", nullptr);
  EXPECT_EQ(reply.headers, "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nAllow: GET,OPTIONS,POST,DELETE\r\n\r\n");
  EXPECT_EQ(reply.body, "");
  EXPECT_TRUE(warnings().empty());
}

TEST_F(HttpServerTest, EveryRefusalIsAnsweredAndWarned) {
  struct Row {
    const char* method;
    const char* target;
    const char* body;
    long status;
    const char* warning;
  };
  const Row rows[] = {
      {"PUT", "/api", nullptr, 400, "HTTP request: 'PUT' is not a supported method."},
      {"get", "/api/debug", nullptr, 400, nullptr},
      {"HEAD", "/api/debug", nullptr, 400, "HTTP request: 'HEAD' is not a supported method."},
      {"GET", "/", nullptr, 400, "HTTP request: '/' is not a valid path."},
      {"GET", "/other/debug", nullptr, 404, "HTTP request: '/other/debug' is not a supported path."},
      {"POST", "/other/debug", "{}", 204, "HTTP request: '/other/debug' is not a supported path."},
      {"DELETE", "/v1/debug", nullptr, 204, "HTTP request: '/v1/debug' is not a supported path."},
      {"GET", "/api/debug?=1", nullptr, 404, "HTTP request: '=1' is not a valid query."},
      {"POST", "/api/debug/suspend?a&=2", nullptr, 204, "HTTP request: 'a&=2' is not a valid query."},
      {"GET", "/api/nothing/here", nullptr, 404, "HTTP request: unknown resource '/nothing/here'."},
      {"POST", "/api/nothing", "", 204, "HTTP request: unknown resource '/nothing'."},
      {"DELETE", "/api", nullptr, 204, "HTTP request: unknown resource ''."},
      {"POST", "/api/debug/resume", nullptr, 400, "HTTP request: error while creating resource '/debug/resume'."},
      // An array cannot join the object of query parameters.
      {"POST", "/api/debug/suspend?entity=1", "[1]", 400,
       "HTTP request: invalid request data (see above for further information)."},
      {"POST", "/api/debug/suspend", "{\"entity\":", 400,
       "HTTP request: invalid request data (see above for further information)."},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.method) + " " + row.target);
    host.logger.clear();
    const std::string body = row.body != nullptr ? row.body : "";
    const HttpReply reply = client.send(row.method, row.target, row.body != nullptr ? &body : nullptr);
    EXPECT_EQ(reply.status, row.status);
    if (row.warning != nullptr) {
      EXPECT_THAT(warnings(), ElementsAre(row.warning));
    }
  }
  // The broken text is reported too.
  EXPECT_THAT(host.logger.messages('e'), Contains(HasSubstr("Invalid JSON")));
}

TEST_F(HttpServerTest, ResourceStatusesMapToCodesByMethod) {
  scripted.status = nox::utils::debugger::resources::error;
  EXPECT_EQ(client.get("/api/scripted/a").status, 400);
  EXPECT_EQ(client.del("/api/scripted/a").status, 400);
  EXPECT_THAT(warnings(), ElementsAre("HTTP request: error while retrieving resource '/scripted/a'.",
                                      "HTTP request: error while deleting resource '/scripted/a'."));

  host.logger.clear();
  scripted.status = nox::utils::debugger::resources::unknown;
  EXPECT_EQ(client.get("/api/scripted").status, 404);
  EXPECT_EQ(client.post("/api/scripted", "{}").status, 204);
  EXPECT_EQ(client.del("/api/scripted").status, 204);
  EXPECT_EQ(warnings().size(), 3u);
}

TEST_F(HttpServerTest, AnErrorTurnsOnlyItsOwnRequestIntoFiveHundred) {
  scripted.reportError = true;
  const HttpReply failed = client.get("/api/scripted");
  EXPECT_EQ(failed.status, 500);
  EXPECT_EQ(failed.headers, headerBlock(500, "Internal Server Error", "json", failed.body.size()));
  EXPECT_EQ(failed.body, R"({"ok":true})");

  // The facilities' logger keeps its error flag; later requests are judged on their own.
  scripted.reportError = false;
  EXPECT_TRUE(host.logger.hasErrors());
  EXPECT_EQ(client.get("/api/scripted").status, 200);
  EXPECT_EQ(client.get("/api/debug").status, 200);
}

TEST_F(HttpServerTest, QueryAndBodyReachTheEngineAsOneObject) {
  EXPECT_EQ(client.post("/api/scripted/x/y?a=1&flag", R"({"b":[1,2]})").status, 200);
  EXPECT_EQ(scripted.lastPath, "/x/y");
  EXPECT_EQ(scripted.lastRequest, R"({"a":1,"b":[1,2],"flag":true})");

  // Body members replace parameters of the same name; a body that is no object is
  // refused, alone or not.
  EXPECT_EQ(client.post("/api/scripted?a=1&b=2", R"({"a":"x"})").status, 200);
  EXPECT_EQ(scripted.lastRequest, R"({"a":"x","b":2})");
  EXPECT_EQ(client.post("/api/scripted", "[true]").status, 400);
  EXPECT_EQ(client.post("/api/scripted?a=1", "[true]").status, 400);
  EXPECT_EQ(scripted.lastRequest, R"({"a":"x","b":2})");

  EXPECT_EQ(client.del("/api/scripted?id=3").status, 200);
  EXPECT_EQ(scripted.lastPath, "");
  EXPECT_EQ(scripted.lastRequest, R"({"id":3})");
}

TEST_F(HttpServerTest, TraceRecordListsMethodPathAndQuery) {
  nox::test::RecordingLogger tracing(true);
  nox::utils::Facilities::instance().setLogger(tracing);
  client.get("/api/debug?a=1");
  nox::utils::Facilities::instance().setLogger(host.logger);
  EXPECT_THAT(tracing.messages('t'),
              ElementsAre("HTTP request:\n\t-method 'GET'\n\t-path: '/api/debug'\n\t-query: 'a=1'"));
}

TEST_F(HttpServerTest, EngineSwitchBoardEnablesAndDisablesByPath) {
  auto& framework = host.framework();
  HttpReply reply = client.post("/api/engines", R"({"events":true,"debug":0,"scripted":"no","nope":1})");
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.body, "{}");
  EXPECT_TRUE(framework.isEngineEnabled("events"));
  EXPECT_FALSE(framework.isEngineEnabled("debug"));
  EXPECT_TRUE(framework.isEngineEnabled("scripted"));
  EXPECT_THAT(warnings(), ElementsAre("No register engine having the path nope, ignoring the enabling."));

  EXPECT_EQ(client.post("/api/engines", R"({"events":false,"debug":7})").status, 200);
  EXPECT_FALSE(framework.isEngineEnabled("events"));
  EXPECT_TRUE(framework.isEngineEnabled("debug"));

  EXPECT_EQ(client.post("/api/engines", "{oops").status, 400);
}

TEST_F(HttpServerTest, EngineListFollowsTheSwitchBoard) {
  EXPECT_EQ(client.get("/api/engines").body, R"([{"path":"debug","enabled":true},{"path":"events","enabled":false},)"
                                             R"({"path":"scripted","enabled":true}])");
  ASSERT_EQ(client.post("/api/engines", R"({"events":true,"scripted":false})").status, 200);
  const HttpReply reply = client.get("/0.4.0/engines/");
  EXPECT_EQ(reply.headers, headerBlock(200, "OK", "json", reply.body.size()));
  EXPECT_EQ(reply.body, R"([{"path":"debug","enabled":true},{"path":"events","enabled":true},)"
                        R"({"path":"scripted","enabled":false}])");
  EXPECT_TRUE(warnings().empty());

  // Only the list itself: anything below it is unknown, and other methods keep their meaning.
  EXPECT_EQ(client.get("/api/engines/debug").status, 404);
  EXPECT_THAT(warnings(), ElementsAre("HTTP request: unknown resource '/engines/debug'."));
  EXPECT_EQ(client.del("/api/engines").status, 204);
}

TEST_F(HttpServerTest, StartAndShutdownManageTheEventEngine) {
  auto& framework = host.framework();
  const unsigned short port = host.port();
  EXPECT_FALSE(framework.startHttp(port));
  EXPECT_THAT(host.logger.messages('e'),
              ElementsAre("The inspection HTTP server is already running on port " + std::to_string(port)));
  EXPECT_EQ(client.get("/api/events").body, "[]");

  framework.shutdownHttp();
  EXPECT_FALSE(framework.isHttpStarted());
  EXPECT_THAT(host.logger.messages('i'), Contains("Inspection HTTP server stopped."));
  host.logger.clear();
  EXPECT_FALSE(framework.isEngineEnabled("events"));
  EXPECT_THAT(warnings(), Contains("No register engine having the path events, considering it disabled."));

  // A port taken by someone else: the start fails and leaves no event engine behind.
  const int taken = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  socklen_t size = sizeof address;
  ASSERT_EQ(bind(taken, reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(listen(taken, 1), 0);
  ASSERT_EQ(getsockname(taken, reinterpret_cast<sockaddr*>(&address), &size), 0);
  const unsigned short busy = ntohs(address.sin_port);
  host.logger.clear();
  EXPECT_FALSE(framework.startHttp(busy));
  close(taken);
  EXPECT_THAT(host.logger.messages('e'),
              Contains("Unable to start the inspection HTTP server on port " + std::to_string(busy)));
  EXPECT_FALSE(framework.isHttpStarted());
  EXPECT_EQ(framework.getImplementation().findEngine("events", 6), nullptr);
}

class HttpDebuggerTest : public HttpServerTest {
 protected:
  void SetUp() override {
    HttpServerTest::SetUp();
    host.startEngine();
  }

  std::string contextsOf(unsigned int entity) {
    return client.get("/api/debug/entities/" + std::to_string(entity) + "/contexts").body;
  }

  SuspensionWaiter waiter{host.framework()};
};

TEST_F(HttpDebuggerTest, CommandsSuspendStepAndResumeTheEngineThread) {
  EXPECT_EQ(client.get("/api/debug/entities").body, R"([{"index":1},{"index":2}])");
  EXPECT_EQ(client.get("/api/debug/suspend").body, R"({"suspended":false,"entity":4294967295})");
  EXPECT_EQ(client.post("/api/debug/stepin").status, 400);

  // Wherever entity 2 stops, it stops.
  ASSERT_EQ(client.post("/api/debug/suspend", R"({"entity":2})").status, 200);
  ASSERT_TRUE(waiter.waitFor(1));
  EXPECT_EQ(client.get("/api/debug/resume").body, R"({"suspended":true,"entity":2})");
  EXPECT_EQ(client.post("/api/debug/suspend").status, 400);
  EXPECT_EQ(client.post("/api/debug/resume").status, 200);

  // From a known place: a breakpoint where entity 2 enters its outer frame.
  const HttpReply subscribed =
      client.post("/api/events/subscriptions", R"({"type":"breakpoint","filters":{"location":"sim:agents/2"}})");
  ASSERT_EQ(subscribed.status, 200);
  ASSERT_TRUE(waiter.waitFor(2));
  const std::string handle = subscribed.body.substr(subscribed.body.find(':') + 1);
  EXPECT_EQ(client.del("/api/events/subscriptions/" + handle.substr(0, handle.size() - 1)).status, 200);
  EXPECT_EQ(contextsOf(2), R"([{"index":0,"location":"sim:agents/2"}])");
  EXPECT_EQ(client.get("/api/debug/entities/2/contexts/0").body, R"({"location":"sim:agents/2","entity":2})");
  EXPECT_EQ(client.get("/api/debug/entities/2").body, R"({"contexts":[{"index":0,"location":"sim:agents/2"}]})");

  ASSERT_EQ(client.post("/api/debug/stepin").status, 200);
  ASSERT_TRUE(waiter.waitFor(3));
  EXPECT_EQ(contextsOf(2), R"([{"index":0,"location":"sim:agents/2"},{"index":1,"location":"sim:agents/2/think"}])");

  // Over "think": it returns, and the stop comes in its caller.
  ASSERT_EQ(client.post("/api/debug/stepover").status, 200);
  ASSERT_TRUE(waiter.waitFor(4));
  EXPECT_EQ(contextsOf(2), R"([{"index":0,"location":"sim:agents/2"}])");

  ASSERT_EQ(client.post("/api/debug/stepin").status, 200);
  ASSERT_TRUE(waiter.waitFor(5));
  EXPECT_EQ(contextsOf(2), R"([{"index":0,"location":"sim:agents/2"},{"index":1,"location":"sim:agents/2/move"}])");

  ASSERT_EQ(client.post("/api/debug/stepout").status, 200);
  ASSERT_TRUE(waiter.waitFor(6));
  EXPECT_EQ(contextsOf(2), R"([{"index":0,"location":"sim:agents/2"}])");
  EXPECT_EQ(waiter.lastEntity(), 2u);

  EXPECT_EQ(client.post("/api/debug/resume").status, 200);
  EXPECT_EQ(client.get("/api/debug/suspend").body, R"({"suspended":false,"entity":4294967295})");
  EXPECT_EQ(client.post("/api/debug/suspend", R"({"entity":99})").status, 400);
}

TEST_F(HttpDebuggerTest, MissingEntitiesAndContextsAnswerNotFoundAndTheHostLivesOn) {
  nox::test::AssertionRecorder assertions;
  EXPECT_EQ(client.get("/api/debug/entities/abc").status, 404);
  EXPECT_EQ(client.get("/api/debug/entities/99").status, 404);
  EXPECT_EQ(client.get("/api/debug/entities/1/contexts/7").status, 404);
  EXPECT_EQ(assertions.count(), 0u);
  EXPECT_THAT(warnings(), Contains("No entity #99"));
  EXPECT_THAT(warnings(), Contains("No context for entity #1 at index 7"));
  EXPECT_EQ(client.get("/api/debug").status, 200);
}

TEST_F(HttpDebuggerTest, BreakpointSubscriptionStopsTheEngineAndQueuesItsEvent) {
  ASSERT_EQ(client.post("/api/engines", R"({"events":1})").status, 200);
  const HttpReply subscribed =
      client.post("/api/events/subscriptions",
                  R"({"type":"breakpoint","filters":{"location":"sim:agents/1/move","entities":[1]}})");
  ASSERT_EQ(subscribed.status, 200);
  const std::string handle =
      subscribed.body.substr(subscribed.body.find(':') + 1, subscribed.body.find('}') - subscribed.body.find(':') - 1);
  EXPECT_EQ(subscribed.body, "{\"requestId\":" + handle + "}");

  ASSERT_TRUE(waiter.waitFor(1));
  EXPECT_EQ(waiter.lastEntity(), 1u);
  EXPECT_EQ(contextsOf(1), R"([{"index":0,"location":"sim:agents/1"},{"index":1,"location":"sim:agents/1/move"}])");
  // Cancelled while stopped, so that the engine runs free once resumed.
  EXPECT_EQ(client.del("/api/events/subscriptions/" + handle).status, 200);
  EXPECT_EQ(client.del("/api/events/subscriptions/" + handle).status, 204);

  const HttpReply queued = client.get("/api/events");
  ASSERT_EQ(queued.status, 200);
  ASSERT_GE(queued.body.size(), 3u);
  const std::string first = queued.body.substr(1, queued.body.find_first_of(",]") - 1);
  EXPECT_EQ(client.get("/api/events/" + first).body, "{\"id\":" + first + ",\"type\":\"breakpoint\",\"requestId\":" +
                                                         handle + ",\"entity\":1,\"location\":\"sim:agents/1/move\"}");
  EXPECT_EQ(client.del("/api/events/").status, 200);
  EXPECT_EQ(client.get("/api/events").body, "[]");
  EXPECT_EQ(client.get("/api/events/" + first).status, 404);
  EXPECT_EQ(client.post("/api/debug/resume").status, 200);

  // Refused subscriptions.
  EXPECT_EQ(client.post("/api/events/subscriptions", R"({"type":"nope"})").status, 400);
  EXPECT_EQ(client.post("/api/events/subscriptions", R"({"filters":{}})").status, 400);
  EXPECT_EQ(client.post("/api/events/other", R"({"type":"breakpoint"})").status, 204);
}

}  // namespace
