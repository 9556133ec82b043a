#include "HostLink.h"

namespace nox::dap {

void HostLink::open(const nox::utils::String& url, const nox::utils::String& token) {
  url_ = url;
  token_ = token;
  open_ = true;
}

void HostLink::send(const char* method, const nox::utils::String& path, const nox::utils::String* body,
                    HostCall call) {
  calls_[http_.start(method, url_ + path, body, token_)] = std::move(call);
}

bool HostLink::take(unsigned int id, HostCall& call) {
  auto found = calls_.find(id);
  if (found == calls_.end()) return false;
  call = std::move(found->second);
  calls_.erase(found);
  return true;
}

nox::utils::String decimal(std::int64_t number) { return nox::utils::String(std::to_string(number).c_str()); }

nox::utils::String describeRefusal(const HttpReply& reply, const nox::utils::String& refused) {
  if (reply.status == 400 || reply.status == 404) return refused;
  return "The host answered HTTP " + decimal(reply.status) + ".";
}

}  // namespace nox::dap
