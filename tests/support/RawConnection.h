// A raw TCP connection to the inspection server on 127.0.0.1, for the requests no HTTP
// client library sends: bytes out exactly as given, connections held open without a
// word, bodies that stop short. Every wait is bounded.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <string_view>

namespace nox::test {

class RawConnection {
 public:
  explicit RawConnection(unsigned short port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ = socket_ >= 0 && connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  ~RawConnection() {
    if (socket_ >= 0) close(socket_);
  }

  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  bool connected() const { return connected_; }

  // False when the server did not take every byte (it may have answered and closed).
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  // Tells the server that nothing more will come.
  void finishSending() { shutdown(socket_, SHUT_WR); }

  // What the server sends until it closes the connection or `timeout` passes.
  std::string receive(std::chrono::milliseconds timeout) {
    std::string reply;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      pollfd ready{socket_, POLLIN, 0};
      if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0) return reply;
      char buffer[4096];
      const ssize_t read = recv(socket_, buffer, sizeof buffer, 0);
      if (read <= 0) return reply;
      reply.append(buffer, static_cast<std::size_t>(read));
    }
  }

  // The status code of a reply, 0 when it is none.
  static long statusOf(const std::string& reply) {
    return reply.rfind("HTTP/1.1 ", 0) == 0 && reply.size() >= 12 ? std::stol(reply.substr(9, 3)) : 0;
  }

 private:
  int socket_;
  bool connected_ = false;
};

}  // namespace nox::test
