// A blocking HTTP client over libcurl for the inspection server tests: one request per
// call on a fresh connection to 127.0.0.1, giving back the status, the raw header block
// exactly as received (status line included) and the body. A POST without a body says
// "Content-Length: 0", as browsers do: the server refuses a POST whose body length it
// cannot know.
#pragma once

#include <curl/curl.h>

#include <string>
#include <vector>

namespace nox::test {

struct HttpReply {
  // 0 when no reply arrived.
  long status = 0;
  std::string headers;
  std::string body;
};

class HttpClient {
 public:
  explicit HttpClient(unsigned short port) : port_(port) {
    static const bool initialized = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    (void)initialized;
    handle_ = curl_easy_init();
  }
  ~HttpClient() { curl_easy_cleanup(handle_); }

  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  HttpReply get(const std::string& target) { return send("GET", target, nullptr); }
  HttpReply post(const std::string& target, const std::string& body = "") { return send("POST", target, &body); }
  HttpReply del(const std::string& target) { return send("DELETE", target, nullptr); }

  // Sent with every request ("Name: value"); "Name:" drops a header libcurl would add.
  std::vector<std::string> headers;

  // `body` null sends no body at all; otherwise it goes with its Content-Length.
  HttpReply send(const std::string& method, const std::string& target, const std::string* body) {
    HttpReply reply;
    curl_easy_reset(handle_);
    curl_slist* list = nullptr;
    for (const std::string& header : headers) list = curl_slist_append(list, header.c_str());
    if (method == "POST" && body == nullptr) list = curl_slist_append(list, "Content-Length: 0");
    curl_easy_setopt(handle_, CURLOPT_HTTPHEADER, list);
    const std::string url = "http://127.0.0.1:" + std::to_string(port_) + target;
    curl_easy_setopt(handle_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_, CURLOPT_CUSTOMREQUEST, method.c_str());
    curl_easy_setopt(handle_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle_, CURLOPT_TIMEOUT, 30L);
    // A HEAD request has no body to wait for.
    if (method == "HEAD") curl_easy_setopt(handle_, CURLOPT_NOBODY, 1L);
    if (body != nullptr) {
      curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, body->data());
      curl_easy_setopt(handle_, CURLOPT_POSTFIELDSIZE, static_cast<long>(body->size()));
    }
    curl_easy_setopt(handle_, CURLOPT_HEADERFUNCTION, &append);
    curl_easy_setopt(handle_, CURLOPT_HEADERDATA, &reply.headers);
    curl_easy_setopt(handle_, CURLOPT_WRITEFUNCTION, &append);
    curl_easy_setopt(handle_, CURLOPT_WRITEDATA, &reply.body);
    if (curl_easy_perform(handle_) == CURLE_OK) curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &reply.status);
    curl_slist_free_all(list);
    return reply;
  }

 private:
  static size_t append(char* data, size_t size, size_t count, void* target) {
    static_cast<std::string*>(target)->append(data, size * count);
    return size * count;
  }

  unsigned short port_;
  CURL* handle_;
};

}  // namespace nox::test
