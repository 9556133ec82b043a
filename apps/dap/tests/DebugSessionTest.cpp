// The session's decisions, with the host played by hand: which HTTP calls each request
// makes, how polls become stopped events (and when a poll must be ignored), and when
// leaving resumes the host.
#include "DebugSession.h"
#include "MessageFramer.h"
#include "ProtocolConnection.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include <string>
#include <vector>

namespace nox::dap {
namespace {

using nox::utils::String;

struct Call {
  unsigned int id;
  std::string method;
  std::string path;
  std::string body;
  std::string token;
};

class ScriptedHost : public AbstractHttpClient {
 public:
  unsigned int start(const char* method, const String& url, const String* body, const String& token) override {
    const std::string text(url.c_str());
    calls.push_back(
        {nextId, method, text.substr(text.find("/api")), body != nullptr ? body->c_str() : "", token.c_str()});
    return nextId++;
  }
  std::vector<Call> calls;
  unsigned int nextId = 1;
};

class Editor : public AbstractOutput {
 public:
  bool write(const char* data, std::size_t size) override {
    framer.append(data, size);
    String body;
    String problem;
    while (framer.next(body, problem) == MessageFramer::Result::message) messages.emplace_back(body.c_str());
    return true;
  }
  MessageFramer framer;
  std::vector<std::string> messages;
};

class DebugSessionTest : public ::testing::Test {
 protected:
  DebugSessionTest() : connection(editor), session(connection, host) { connection.setHandler(&session); }

  void request(const std::string& command, const std::string& arguments = "{}") {
    const std::string body = R"({"seq":)" + std::to_string(++seq) + R"(,"type":"request","command":")" + command +
                             R"(","arguments":)" + arguments + "}";
    const std::string framed = "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    connection.receive(framed.data(), framed.size());
  }

  // Answers the oldest unanswered call to `method path`, which must exist.
  void answer(const std::string& method, const std::string& path, long status, const std::string& body) {
    for (std::size_t i = 0; i < host.calls.size(); ++i) {
      if (host.calls[i].method != method || host.calls[i].path != path) continue;
      HttpReply reply;
      reply.id = host.calls[i].id;
      reply.status = status;
      reply.body = body.c_str();
      if (status == 0) reply.error = "Connection refused";
      host.calls.erase(host.calls.begin() + static_cast<std::ptrdiff_t>(i));
      session.onHttpReply(reply, now);
      return;
    }
    ADD_FAILURE() << "no call to " << method << " " << path;
  }

  // Moves past the poll interval and answers one whole poll.
  void poll(const std::string& suspension, const std::string& events = "[]") {
    now += 50;
    session.onTime(now);
    answer("GET", "/api/debug/suspend", 200, suspension);
    answer("GET", "/api/events", 200, events);
  }

  void attach() {
    request("attach", R"({"url":"http://127.0.0.1:9/"})");
    answer("POST", "/api/engines", 200, "{}");
    answer("GET", "/api/events", 200, "[4,5]");
  }

  bool pending(const std::string& method, const std::string& path) const {
    for (const Call& call : host.calls) {
      if (call.method == method && call.path == path) return true;
    }
    return false;
  }

  // Whether a message sent since the last call contains `text`.
  bool sent(const std::string& text) {
    bool found = false;
    for (const std::string& message : editor.messages) found = found || message.find(text) != std::string::npos;
    editor.messages.clear();
    return found;
  }

  ScriptedHost host;
  Editor editor;
  ProtocolConnection connection;
  DebugSession session;
  std::int64_t now = 1000;
  int seq = 0;
};

TEST_F(DebugSessionTest, BreakpointHitsOfItsOwnSubscriptionsGiveTheStopReason) {
  attach();
  EXPECT_TRUE(sent(R"("event":"initialized")"));
  request("setFunctionBreakpoints", R"({"breakpoints":[{"name":"sim:agents/2/move","hitCondition":" 3 "}]})");
  ASSERT_EQ(host.calls.size(), 1u);
  EXPECT_EQ(host.calls[0].body, R"({"type":"breakpoint","filters":{"location":"sim:agents/2/move","hitcount":3}})");
  answer("POST", "/api/events/subscriptions", 200, R"({"requestId":7})");
  EXPECT_TRUE(sent(R"("breakpoints":[{"verified":true,"id":7}])"));

  now += 50;
  session.onTime(now);
  answer("GET", "/api/debug/suspend", 200, R"({"suspended":true,"entity":2})");
  answer("GET", "/api/events", 200, "[4,5,6,8]");
  // Events from before the attach are not looked at; a stranger's event is left queued.
  EXPECT_FALSE(pending("GET", "/api/events/5"));
  answer("GET", "/api/events/8", 200, R"({"id":8,"type":"breakpoint","requestId":3,"entity":2})");
  EXPECT_TRUE(editor.messages.empty());
  answer("GET", "/api/events/6", 200, R"({"id":6,"type":"breakpoint","requestId":7,"entity":2})");
  EXPECT_TRUE(sent(R"({"reason":"function breakpoint","threadId":2,"allThreadsStopped":true,"hitBreakpointIds":[7]})"));
  EXPECT_TRUE(pending("DELETE", "/api/events/6"));
  EXPECT_FALSE(pending("DELETE", "/api/events/8"));

  // A replacement cancels the old subscription; a name that is no location is never sent.
  request("setFunctionBreakpoints",
          R"({"breakpoints":[{"name":"not a location"},{"name":"sim:a","hitCondition":"x"}]})");
  answer("DELETE", "/api/events/subscriptions/7", 200, "null");
  EXPECT_FALSE(pending("POST", "/api/events/subscriptions"));
  EXPECT_TRUE(sent(R"("breakpoints":[{"verified":false,"message")"));
}

TEST_F(DebugSessionTest, PollsAnsweredAcrossACommandAreIgnored) {
  attach();
  sent("");
  now += 50;
  session.onTime(now);  // a poll goes out before the pause
  request("pause", R"({"threadId":1})");
  EXPECT_EQ(host.calls.back().body, R"({"entity":1})");
  answer("POST", "/api/debug/suspend", 200, "null");
  answer("GET", "/api/debug/suspend", 200, R"({"suspended":true,"entity":1})");
  EXPECT_FALSE(sent(R"("event":"stopped")"));
  poll(R"({"suspended":true,"entity":1})");
  EXPECT_TRUE(sent(R"({"reason":"pause","threadId":1,"allThreadsStopped":true})"));

  request("next", R"({"threadId":1})");
  now += 50;
  session.onTime(now);
  answer("GET", "/api/debug/suspend", 200, R"({"suspended":true,"entity":1})");
  answer("POST", "/api/debug/stepover", 200, "null");
  EXPECT_FALSE(sent(R"("event":"stopped")"));
  poll(R"({"suspended":false,"entity":4294967295})");
  EXPECT_FALSE(sent(R"("event")"));
  poll(R"({"suspended":true,"entity":1})");
  EXPECT_TRUE(sent(R"({"reason":"step","threadId":1,"allThreadsStopped":true})"));

  // Another client resumes the host: the editor hears it went on.
  poll(R"({"suspended":false,"entity":4294967295})");
  EXPECT_TRUE(sent(R"("event":"continued")"));
}

TEST_F(DebugSessionTest, LeavingResumesOnlyAStopTheAdapterMade) {
  attach();
  poll(R"({"suspended":true,"entity":3})");  // stopped by someone else before the attach
  EXPECT_TRUE(sent(R"({"reason":"pause","threadId":3,"allThreadsStopped":true})"));
  request("disconnect");
  answer("GET", "/api/debug/suspend", 200, R"({"suspended":true,"entity":3})");
  EXPECT_FALSE(pending("POST", "/api/debug/resume"));
  EXPECT_TRUE(sent(R"("command":"disconnect","success":true)"));

  attach();
  request("pause", R"({"threadId":2})");
  answer("POST", "/api/debug/suspend", 200, "null");
  poll(R"({"suspended":true,"entity":2})");
  request("disconnect");
  answer("GET", "/api/debug/suspend", 200, R"({"suspended":true,"entity":2})");
  sent("");
  answer("POST", "/api/debug/resume", 200, "null");
  EXPECT_TRUE(sent(R"("command":"disconnect","success":true)"));
  request("threads");
  EXPECT_TRUE(sent("Not attached to a host"));
}

TEST_F(DebugSessionTest, TheTokenGoesWithEveryCall) {
  request("attach", R"({"url":"http://127.0.0.1:9","token":"s3cret"})");
  ASSERT_EQ(host.calls.size(), 1u);
  EXPECT_EQ(host.calls[0].token, "s3cret");
  answer("POST", "/api/engines", 401, "");
  EXPECT_TRUE(sent("refused the adapter (HTTP 401 Unauthorized)"));

  setenv("NOX_INSPECT_TOKEN", "from-environment", 1);
  attach();
  unsetenv("NOX_INSPECT_TOKEN");
  request("threads");
  EXPECT_EQ(host.calls.back().token, "from-environment");
}

TEST_F(DebugSessionTest, AHostThatGoesAwayEndsTheSessionAndEveryRequestIsAnswered) {
  request("attach", R"({"url":"ftp://host"})");
  EXPECT_TRUE(sent(R"("success":false,"message":"attach needs the host's \"url\")"));
  request("attach", R"({"url":"http://127.0.0.1:9","token":"two words"})");
  EXPECT_TRUE(sent("only printable characters without blanks"));
  request("restartFrame", R"({"frameId":1})");
  EXPECT_TRUE(sent(R"("success":false,"message":"The request 'restartFrame' is not supported by nox-dap.")"));

  attach();
  request("threads");
  now += 50;
  session.onTime(now);
  sent("");
  answer("GET", "/api/debug/suspend", 0, "");
  EXPECT_EQ(editor.messages.size(), 2u);
  EXPECT_TRUE(sent("nox-dap: lost the host at http://127.0.0.1:9: Connection refused"));
  answer("GET", "/api/debug/entities", 0, "");
  EXPECT_TRUE(sent(R"("command":"threads","success":false,"message":"Lost the host: Connection refused")"));
  request("scopes", R"({"frameId":1})");
  EXPECT_TRUE(sent("Not attached to a host"));
}

}  // namespace
}  // namespace nox::dap
