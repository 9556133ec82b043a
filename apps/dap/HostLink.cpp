#include "HostLink.h"

namespace nox::dap {

void HostLink::open(const nox::utils::String& url, const nox::utils::String& token) {
  url_ = url;
  token_ = token;
  open_ = true;
}

bool HostLink::send(const char* method, const nox::utils::String& path, const nox::utils::String* body,
                    HostCall call) {
  const unsigned int id = http_.start(method, url_ + path, body, token_);
  if (id == 0) return false;
  calls_[id] = std::move(call);
  return true;
}

bool HostLink::take(unsigned int id, HostCall& call) {
  auto found = calls_.find(id);
  if (found == calls_.end()) return false;
  call = std::move(found->second);
  calls_.erase(found);
  return true;
}

}  // namespace nox::dap
