// The adapter's wire side: messages cut out of any slicing of the byte stream, and
// every malformed input answered while what follows it still gets through.
#include "JsonFields.h"
#include "MessageFramer.h"
#include "ProtocolConnection.h"

#include <nox/utils/DynamicObject.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nox::dap {
namespace {

using nox::utils::DynamicObject;
using nox::utils::String;

std::string framed(const std::string& body) {
  return "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

// Everything the framer yields for `input` given in slices of `slice` bytes.
std::vector<std::string> cut(const std::string& input, std::size_t slice, std::vector<std::string>* problems = nullptr) {
  MessageFramer framer;
  std::vector<std::string> bodies;
  String body;
  String problem;
  for (std::size_t at = 0; at < input.size(); at += slice) {
    framer.append(input.data() + at, std::min(slice, input.size() - at));
    for (MessageFramer::Result result; (result = framer.next(body, problem)) != MessageFramer::Result::incomplete;) {
      if (result == MessageFramer::Result::message) bodies.emplace_back(body.data(), body.size());
      if (result == MessageFramer::Result::badHeader && problems != nullptr) problems->emplace_back(problem.c_str());
    }
  }
  return bodies;
}

TEST(ProtocolFraming, MessagesComeWholeWhateverTheSlicing) {
  // The second body holds a blank line and the third is empty: neither may end a message early.
  const std::string stream = framed(R"({"seq":1})") + framed("{\"text\":\"a\r\n\r\nb\"}") + framed("") +
                             framed(R"({"seq":3,"name":"é"})");
  const std::vector<std::string> expected = {R"({"seq":1})", "{\"text\":\"a\r\n\r\nb\"}", "",
                                             R"({"seq":3,"name":"é"})"};
  for (std::size_t slice : {std::size_t{1}, std::size_t{2}, std::size_t{7}, stream.size()}) {
    EXPECT_EQ(cut(stream, slice), expected) << "slices of " << slice;
  }
}

TEST(ProtocolFraming, HeaderFieldsAreReadLikeHttp) {
  const std::string stream = "content-length:  2 \r\nContent-Type: application/vscode-jsonrpc\r\n\r\n{}";
  EXPECT_EQ(cut(stream, 3), std::vector<std::string>{"{}"});
}

TEST(ProtocolFraming, BrokenHeadersAreReportedAndReadingResumes) {
  struct Case {
    const char* name;
    std::string header;
    const char* problem;
  };
  const std::vector<Case> cases = {
      {"not a number", "Content-Length: twelve\r\n\r\n", "bad Content-Length 'twelve'"},
      {"negative", "Content-Length: -4\r\n\r\n", "bad Content-Length '-4'"},
      {"missing", "Content-Type: text\r\n\r\n", "header without Content-Length"},
      {"given twice", "Content-Length: 2\r\nContent-Length: 3\r\n\r\n", "bad Content-Length '3' (given twice)"},
      {"control bytes", std::string("Content-Length: 1\x01\r\n\r\n"), "bad Content-Length '1?'"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> problems;
    const std::string stream = c.header + R"({"lost":true})" + framed(R"({"seq":2})");
    EXPECT_EQ(cut(stream, 5, &problems), std::vector<std::string>{R"({"seq":2})"}) << c.name;
    EXPECT_EQ(problems, std::vector<std::string>{c.problem}) << c.name;
  }
}

TEST(ProtocolFraming, OversizedInputIsDroppedWithoutHoldingIt) {
  std::vector<std::string> problems;
  const std::size_t tooLong = MessageFramer::maximumBodySize + 10;
  const std::string stream = "Content-Length: " + std::to_string(tooLong) + "\r\n\r\n" + std::string(tooLong, 'x') +
                             framed(R"({"seq":5})");
  EXPECT_EQ(cut(stream, 1 << 16, &problems), std::vector<std::string>{R"({"seq":5})"});
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_NE(problems[0].find("over the limit"), std::string::npos);

  MessageFramer framer;
  const std::string noEnd(MessageFramer::maximumHeaderSize + 1, 'h');
  framer.append(noEnd.data(), noEnd.size());
  String body;
  String problem;
  EXPECT_EQ(framer.next(body, problem), MessageFramer::Result::badHeader);
  EXPECT_EQ(std::string(problem.c_str()), "header longer than 4096 bytes");
  EXPECT_LT(framer.getBufferedSize(), 16u);
}

// ---- The connection: what reaches the handler, and what the peer hears back.

class Recorder : public AbstractOutput, public AbstractRequestHandler {
 public:
  bool write(const char* data, std::size_t size) override {
    sent.append(data, size);
    return true;
  }
  void onRequest(const Request& request) override {
    std::int64_t threadId = -1;
    json::readInteger(request.message, request.arguments, "threadId", threadId);
    requests.push_back(std::string(request.command.c_str()) + "#" + std::to_string(request.seq) + " thread " +
                       std::to_string(threadId));
  }
  // The messages sent so far, parsed back.
  std::vector<std::string> replies() const { return cut(sent, sent.size()); }

  std::string sent;
  std::vector<std::string> requests;
};

TEST(ProtocolFraming, EveryBadMessageIsAnsweredAndTheNextOneStillServed) {
  Recorder peer;
  ProtocolConnection connection(peer);
  connection.setHandler(&peer);
  const std::string input = framed("{\"seq\": 1, \"type\": \"request\", \"command\": \"threads\"") +  // cut short
                            framed("[1, 2]") + "Content-Length: x\r\n\r\n" + framed(R"({"seq":4,"type":"event"})") +
                            framed(R"({"seq":5,"type":"request","command":"pause","arguments":{"threadId":3}})");
  for (char byte : input) connection.receive(&byte, 1);

  EXPECT_EQ(peer.requests, std::vector<std::string>{"pause#5 thread 3"});
  const std::vector<std::string> replies = peer.replies();
  ASSERT_EQ(replies.size(), 4u);
  for (const std::string& reply : replies) {
    EXPECT_NE(reply.find(R"("type":"response")"), std::string::npos) << reply;
    EXPECT_NE(reply.find(R"("success":false)"), std::string::npos) << reply;
  }
  EXPECT_NE(replies[0].find(R"("request_seq":0)"), std::string::npos) << replies[0];
  EXPECT_NE(replies[0].find("Invalid JSON message"), std::string::npos) << replies[0];
  EXPECT_NE(replies[1].find("Invalid message: expected a request"), std::string::npos) << replies[1];
  EXPECT_NE(replies[2].find("Invalid message header: bad Content-Length 'x'"), std::string::npos) << replies[2];
  EXPECT_NE(replies[3].find(R"("request_seq":4)"), std::string::npos) << replies[3];
}

TEST(ProtocolFraming, OutgoingMessagesNumberThemselves) {
  Recorder peer;
  ProtocolConnection connection(peer);
  connection.respond(7, "threads", true, nullptr);
  connection.sendEvent("initialized");
  EXPECT_EQ(peer.replies(), (std::vector<std::string>{
                                R"({"seq":1,"type":"response","request_seq":7,"command":"threads","success":true})",
                                R"({"seq":2,"type":"event","event":"initialized"})"}));
}

TEST(ProtocolFraming, ReadingOutsideJsonNeverAsserts) {
  DynamicObject object;
  String problem;
  ASSERT_TRUE(json::parse(R"({"n":2.0,"r":2.5,"s":"x","a":[1],"o":{"n":1}})", 45, object, problem)) << problem;
  const unsigned int root = object.getRoot();
  std::int64_t number = 0;
  String text;
  bool flag = false;
  EXPECT_TRUE(json::readInteger(object, root, "n", number));
  EXPECT_EQ(number, 2);
  EXPECT_FALSE(json::readInteger(object, root, "r", number));
  EXPECT_FALSE(json::readInteger(object, root, "s", number));
  EXPECT_FALSE(json::readString(object, root, "n", text));
  EXPECT_FALSE(json::readBoolean(object, root, "missing", flag));
  EXPECT_EQ(json::member(object, json::member(object, root, "a"), "n"), 0u);
  EXPECT_EQ(json::member(object, 0, "n"), 0u);

  DynamicObject scalar;
  EXPECT_FALSE(json::parse("42", 2, scalar, problem));
  DynamicObject broken;
  EXPECT_FALSE(json::parse("{\"a\":", 5, broken, problem));
  EXPECT_FALSE(problem.empty());
}

}  // namespace
}  // namespace nox::dap
