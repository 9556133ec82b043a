// The request handling of the inspection server without sockets: how a body is read
// (announced length, chunks, a connection that fails), how request texts are read, and
// the refusals that come before any resource is reached.
#include "support/InspectionHost.h"

#include <nox/utils/debugger/FrameworkMutex.h>
#include <nox/utils/debugger/impl/HttpRequest.h>
#include <nox/utils/debugger/impl/HttpRequestHandler.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <limits>

namespace {

using nox::test::InspectionHost;
using nox::utils::debugger::HttpOptions;
using nox::utils::debugger::impl::AbstractHttpConnection;
using nox::utils::debugger::impl::HttpHeader;
using nox::utils::debugger::impl::HttpRequest;
using nox::utils::debugger::impl::HttpRequestHandler;
using testing::Contains;

// Gives the body in the pieces it was given, then `last` (0: the end; -1: a failure).
class ScriptedConnection : public AbstractHttpConnection {
 public:
  ScriptedConnection(std::deque<std::string> pieces, int last) : pieces_(std::move(pieces)), last_(last) {}

  int readBody(char* buffer, std::size_t size) override {
    if (pieces_.empty()) return last_;
    std::string& piece = pieces_.front();
    const std::size_t count = std::min(size, piece.size());
    piece.copy(buffer, count);
    piece.erase(0, count);
    if (piece.empty()) pieces_.pop_front();
    return static_cast<int>(count);
  }
  bool write(const char* data, std::size_t size) override {
    written.append(data, size);
    return true;
  }

  std::string written;

 private:
  std::deque<std::string> pieces_;
  int last_;
};

class HttpRequestHandlerTest : public testing::Test {
 protected:
  // The status code of the reply to a POST to /api/debug/suspend with `headers`.
  int post(std::vector<HttpHeader> headers, std::deque<std::string> pieces, int last,
           HttpRequestHandler* handler = nullptr) {
    HttpRequest request;
    request.method = "POST";
    request.rawPath = "/api/debug/suspend";
    request.headers = headers.data();
    request.headerCount = static_cast<unsigned int>(headers.size());
    ScriptedConnection connection(std::move(pieces), last);
    (handler != nullptr ? *handler : portForm).handle(request, connection);
    return std::stoi(connection.written.substr(9, 3));
  }

  bool suspendRequested() {
    auto& framework = host.framework().getImplementation();
    nox::utils::debugger::FrameworkMutex::ScopedLocker lock(framework.getMutex());
    const bool requested = framework.getSteppingState().hasStopCondition();
    framework.getSteppingState().reset();
    return requested;
  }

  InspectionHost host{HttpOptions()};
  HttpRequestHandler portForm{host.framework()};
};

TEST_F(HttpRequestHandlerTest, BodiesWithALengthRunOnlyWhenAllOfItCame) {
  EXPECT_EQ(post({{"Content-Length", "12"}}, {"{\"enti", "ty\":2}"}, 0), 400);  // entity 2 is not registered
  EXPECT_EQ(post({{"Content-Length", "2"}}, {"{}"}, 0), 200);
  EXPECT_TRUE(suspendRequested());
  // The client closed or went quiet before the end: nothing runs.
  EXPECT_EQ(post({{"Content-Length", "20"}}, {"{}"}, 0), 400);
  EXPECT_EQ(post({{"Content-Length", "20"}}, {"{}"}, -1), 400);
  EXPECT_FALSE(suspendRequested());
  EXPECT_THAT(host.logger.messages('w'), Contains("HTTP request refused: its body was cut short after 2 bytes."));
  // Bytes past the announced length are not read: the body is what was announced.
  EXPECT_EQ(post({{"content-length", "2"}}, {"{}{\"entity\":"}, 0), 200);
  EXPECT_TRUE(suspendRequested());
}

TEST_F(HttpRequestHandlerTest, ChunkedBodiesRunOnlyOnceTheLastChunkCame) {
  EXPECT_EQ(post({{"Transfer-Encoding", "Chunked"}}, {"{", "}"}, 0), 200);
  EXPECT_TRUE(suspendRequested());
  EXPECT_EQ(post({{"Transfer-Encoding", "chunked"}}, {"{", "}"}, -1), 400);
  // Chunks win over a Content-Length, as they do in the server.
  EXPECT_EQ(post({{"Transfer-Encoding", "chunked"}, {"Content-Length", "1"}}, {"{}"}, 0), 200);
  EXPECT_TRUE(suspendRequested());
  EXPECT_EQ(post({{"Transfer-Encoding", "chunked"}}, {}, 0), 200);
  EXPECT_TRUE(suspendRequested());
}

TEST_F(HttpRequestHandlerTest, BodiesOfUnknownLengthOrTooLargeAreNotRead) {
  for (const char* length : {"", "+2", "2 ", "0x2", "-1"}) {
    EXPECT_EQ(post({{"Content-Length", length}}, {"{}"}, 0), 400) << length;
  }
  EXPECT_EQ(post({{"Transfer-Encoding", "gzip"}}, {"{}"}, 0), 400);
  EXPECT_EQ(post({}, {}, 0), 400);
  EXPECT_FALSE(suspendRequested());
  EXPECT_THAT(host.logger.messages('w'), Contains("HTTP request refused: a POST must give its body's Content-Length (0 "
                                                  "for no body) or send it in chunks."));

  HttpOptions small;
  small.maxBodySize = 8;
  HttpRequestHandler optionsForm(host.framework(), small);
  EXPECT_EQ(post({{"Content-Length", "99999999999999999999999"}}, {"{}"}, 0, &optionsForm), 400);
  EXPECT_EQ(post({{"Content-Length", "9"}}, {"{\"a\":123}"}, 0, &optionsForm), 400);
  EXPECT_EQ(post({{"Transfer-Encoding", "chunked"}}, {"{\"a\":", "1234}"}, 0, &optionsForm), 400);
  EXPECT_EQ(post({{"Content-Length", "8"}}, {"{\"a\":12}"}, 0, &optionsForm), 200);
  EXPECT_THAT(host.logger.messages('w'), Contains("HTTP request refused: its body is larger than 8 bytes."));
}

TEST(HttpRequestTest, HeadersAreFoundWhateverTheirCase) {
  const HttpHeader headers[] = {{"Content-Length", "42"}, {"X-Other", "1"}, {"content-length", "7"}};
  HttpRequest request;
  request.headers = headers;
  request.headerCount = 3;
  ASSERT_NE(request.findHeader("CONTENT-length"), nullptr);
  EXPECT_EQ(*request.findHeader("CONTENT-length"), "42");
  EXPECT_EQ(request.findHeader("Content-Type"), nullptr);
  EXPECT_EQ(request.getContentLength(), 42);
  EXPECT_FALSE(request.isChunked());
  const HttpHeader huge[] = {{"Content-Length", "123456789012345678901234567890"}};
  request.headers = huge;
  request.headerCount = 1;
  EXPECT_EQ(request.getContentLength(), std::numeric_limits<std::int64_t>::max());
}

}  // namespace
