// The inspector page as the options form serves it: every file of the inspector/
// folder with its own bytes and type, the folder's redirection, misses and refused
// methods, who may read the files, and every path answering as before without the
// option.
#include "support/HttpClient.h"
#include "support/InspectionHost.h"
#include "support/RawConnection.h"

#include <nox/utils/debugger/HttpOptions.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

using nox::test::HttpClient;
using nox::test::HttpReply;
using nox::test::InspectionHost;
using nox::test::RawConnection;
using nox::utils::debugger::HttpOptions;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

HttpOptions inspectorOptions() {
  HttpOptions options;
  options.serveInspector = true;
  return options;
}

class InspectorPageTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host.framework().isHttpStarted()); }

  std::vector<std::string> warnings() const { return host.logger.messages('w'); }

  InspectionHost host{inspectorOptions()};
  HttpClient client{host.port()};
};

// A file left out of the library, or served with another type (a module script must
// be JavaScript to run at all), breaks the page.
TEST_F(InspectorPageTest, EveryFileOfTheFolderIsServedAsItIsWithItsType) {
  const std::map<std::string, std::string> types = {
      {".html", "text/html; charset=utf-8"},
      {".css", "text/css; charset=utf-8"},
      {".js", "text/javascript; charset=utf-8"},
      {".svg", "image/svg+xml"},
  };
  const std::filesystem::path folder = NOX_INSPECTOR_DIR;
  std::map<std::string, int> served;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const std::string name = entry.path().lexically_relative(folder).generic_string();
    const HttpReply reply = client.get("/inspector/" + name);
    EXPECT_EQ(reply.status, 200) << name;
    EXPECT_EQ(reply.body, readFile(entry.path())) << name;
    ASSERT_EQ(types.count(entry.path().extension().string()), 1u) << "a file of an unexpected type: " << name;
    EXPECT_THAT(reply.headers, HasSubstr("\r\nContent-Type: " + types.at(entry.path().extension().string()) + "\r\n"))
        << name;
    EXPECT_THAT(reply.headers, HasSubstr("\r\nCache-Control: no-cache\r\n")) << name;
    EXPECT_THAT(reply.headers, HasSubstr("\r\nContent-Length: " + std::to_string(reply.body.size()) + "\r\n"));
    ++served[entry.path().extension().string()];
  }
  EXPECT_EQ(served[".html"], 1);
  EXPECT_GE(served[".js"], 5);

  // The folder itself is the page, whatever the query.
  const std::string page = readFile(folder / "index.html");
  EXPECT_EQ(client.get("/inspector/").body, page);
  EXPECT_EQ(client.get("/inspector/?tab=2").body, page);
  EXPECT_THAT(client.get("/inspector/").headers, HasSubstr("\r\nContent-Security-Policy: default-src 'self'"));
  EXPECT_TRUE(warnings().empty());
}

TEST_F(InspectorPageTest, TheFolderRedirectsAndNothingElseUnderItIsFound) {
  const HttpReply folder = client.get("/inspector");
  EXPECT_EQ(folder.status, 301);
  EXPECT_THAT(folder.headers, HasSubstr("\r\nLocation: /inspector/\r\n"));

  for (const char* missing : {"/inspector/nope.js", "/inspector/js", "/inspector/js/", "/inspector/index.html/",
                              "/inspector/INDEX.HTML", "/inspector/%69ndex.html"}) {
    const HttpReply reply = client.get(missing);
    EXPECT_EQ(reply.status, 404) << missing;
    EXPECT_THAT(reply.headers, HasSubstr("\r\nContent-Type: text/plain; charset=utf-8\r\n")) << missing;
  }
  EXPECT_THAT(warnings(), Contains("HTTP request: '/inspector/nope.js' is not a file of the inspector."));

  // Bytes no client library would send: a climb out of the folder is only a miss.
  RawConnection climb(host.port());
  ASSERT_TRUE(climb.send("GET /inspector/../CMakeLists.txt HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n"));
  EXPECT_EQ(RawConnection::statusOf(climb.receive(std::chrono::seconds(10))), 404);

  // Only a first segment of exactly "inspector" is the page's; the rest is the API's.
  host.logger.clear();
  EXPECT_EQ(client.get("/inspectorx/").status, 404);
  EXPECT_THAT(warnings(), ElementsAre("HTTP request: '/inspectorx/' is not a supported path."));
}

TEST_F(InspectorPageTest, TheFilesAreReadOnly) {
  for (const char* method : {"POST", "DELETE", "PUT"}) {
    const HttpReply reply = client.send(method, "/inspector/", nullptr);
    EXPECT_EQ(reply.status, 405) << method;
    EXPECT_THAT(reply.headers, HasSubstr("\r\nAllow: GET, HEAD\r\n")) << method;
  }
  EXPECT_THAT(warnings(), Contains("HTTP request: 'POST' is not allowed on the inspector's files."));

  const HttpReply head = client.send("HEAD", "/inspector/", nullptr);
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.body, "");
  EXPECT_THAT(
      head.headers,
      HasSubstr("\r\nContent-Length: " +
                std::to_string(readFile(std::filesystem::path(NOX_INSPECTOR_DIR) / "index.html").size()) + "\r\n"));
  // The preflight of the API is unchanged under the folder.
  EXPECT_EQ(client.send("OPTIONS", "/inspector/", nullptr).status, 200);
}

// A browser cannot send a token when it opens a page; the files hold nothing of the
// host, and every call the page makes carries the token.
TEST(InspectorPageAccessTest, TheFilesNeedNoTokenButStillTheRightHost) {
  HttpOptions options = inspectorOptions();
  options.accessToken = "s3cret";
  InspectionHost host(options);
  HttpClient client(host.port());
  EXPECT_EQ(client.get("/inspector/").status, 200);
  EXPECT_EQ(client.get("/inspector/js/main.js").status, 200);
  EXPECT_EQ(client.get("/api/engines").status, 401);
  client.headers = {"Authorization: Bearer s3cret"};
  EXPECT_EQ(client.get("/api/engines").status, 200);

  client.headers = {"Host: attacker.example"};
  EXPECT_EQ(client.get("/inspector/").status, 403);
}

TEST(InspectorPageAccessTest, WithoutTheOptionEveryPathAnswersAsBefore) {
  const auto expectUnchanged = [](InspectionHost& host) {
    HttpClient client(host.port());
    EXPECT_EQ(client.get("/inspector/").status, 404);
    EXPECT_EQ(client.get("/inspector").status, 404);
    const HttpReply post = client.post("/inspector/");
    EXPECT_EQ(post.status, 204);
    EXPECT_EQ(post.body, "");
    EXPECT_THAT(host.logger.messages('w'), Contains("HTTP request: '/inspector/' is not a supported path."));
  };
  {
    InspectionHost optionsForm{HttpOptions()};
    expectUnchanged(optionsForm);
  }
  InspectionHost portForm;
  expectUnchanged(portForm);
}

}  // namespace
