#include "HttpTransfers.h"

#include <nox/allocator/Allocator.h>

#include <cstring>

namespace nox::dap {

using nox::utils::String;

struct HttpTransfers::Transfer {
  unsigned int id = 0;
  CURL* easy = nullptr;
  curl_slist* headers = nullptr;
  String body;
  bool tooLarge = false;
  char error[CURL_ERROR_SIZE] = {};
};

HttpTransfers::HttpTransfers() {
  static const bool initialized = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  multi_ = initialized ? curl_multi_init() : nullptr;
}

HttpTransfers::~HttpTransfers() {
  for (auto& entry : transfers_) {
    curl_multi_remove_handle(multi_, entry.second->easy);
    curl_easy_cleanup(entry.second->easy);
    curl_slist_free_all(entry.second->headers);
    NOX_DELETE(entry.second);
  }
  if (multi_ != nullptr) curl_multi_cleanup(multi_);
}

unsigned int HttpTransfers::start(const char* method, const String& url, const String* body, const String& token) {
  const unsigned int id = nextId_++;
  if (nextId_ == 0) nextId_ = 1;
  CURL* easy = multi_ != nullptr ? curl_easy_init() : nullptr;
  if (easy == nullptr) {
    HttpReply reply;
    reply.id = id;
    reply.error = "no HTTP request could be started";
    unstarted_.push_back(std::move(reply));
    return id;
  }
  Transfer* transfer = NOX_NEW Transfer();
  transfer->id = id;
  transfer->easy = easy;
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, method);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, connectTimeoutMilliseconds);
  curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, transferTimeoutMilliseconds);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, transfer->error);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &HttpTransfers::receive);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, transfer);
  curl_easy_setopt(easy, CURLOPT_PRIVATE, transfer);
  // No "100 Continue" round trip for the small bodies sent here.
  transfer->headers = curl_slist_append(transfer->headers, "Expect:");
  if (body != nullptr) {
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(body->size()));
    curl_easy_setopt(easy, CURLOPT_COPYPOSTFIELDS, body->c_str());
    transfer->headers = curl_slist_append(transfer->headers, "Content-Type: application/json");
  }
  if (!token.empty()) transfer->headers = curl_slist_append(transfer->headers, ("Authorization: Bearer " + token).c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, transfer->headers);
  transfers_[transfer->id] = transfer;
  curl_multi_add_handle(multi_, easy);
  return transfer->id;
}

std::size_t HttpTransfers::receive(char* data, std::size_t size, std::size_t count, void* target) {
  Transfer& transfer = *static_cast<Transfer*>(target);
  const std::size_t bytes = size * count;
  if (transfer.body.size() + bytes > maximumReplySize) {
    transfer.tooLarge = true;
    return 0;
  }
  transfer.body.append(data, bytes);
  return bytes;
}

void HttpTransfers::wait(curl_waitfd* extra, unsigned int count, int timeoutMilliseconds) {
  for (unsigned int i = 0; i < count; ++i) extra[i].revents = 0;
  if (multi_ != nullptr) curl_multi_poll(multi_, extra, count, timeoutMilliseconds, nullptr);
}

void HttpTransfers::collect(nox::utils::Vector<HttpReply>& done) {
  for (HttpReply& reply : unstarted_) done.push_back(std::move(reply));
  unstarted_.clear();
  if (multi_ == nullptr) return;
  int running = 0;
  curl_multi_perform(multi_, &running);
  int left = 0;
  while (CURLMsg* message = curl_multi_info_read(multi_, &left)) {
    if (message->msg == CURLMSG_DONE) finish(message->easy_handle, message->data.result, done);
  }
}

void HttpTransfers::finish(CURL* easy, CURLcode code, nox::utils::Vector<HttpReply>& done) {
  Transfer* transfer = nullptr;
  curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer);
  HttpReply reply;
  reply.id = transfer->id;
  if (code == CURLE_OK) {
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &reply.status);
    reply.body = std::move(transfer->body);
  } else if (transfer->tooLarge) {
    reply.error = "the reply is larger than 8 MiB";
  } else {
    reply.error = transfer->error[0] != '\0' ? transfer->error : curl_easy_strerror(code);
  }
  done.push_back(std::move(reply));
  curl_multi_remove_handle(multi_, easy);
  curl_easy_cleanup(easy);
  curl_slist_free_all(transfer->headers);
  transfers_.erase(transfer->id);
  NOX_DELETE(transfer);
}

}  // namespace nox::dap
