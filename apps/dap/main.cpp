// nox-dap: lets any Debug Adapter Protocol client (an editor's debugger) attach to a
// running host and debug its simulated entities through the host's inspection API.
// It speaks the protocol on standard input and output, or, with --port, to one client
// at a time on a loopback TCP port.
#include "EventLoop.h"
#include "HttpTransfers.h"
#include "ProtocolConnection.h"

#include <nox/utils/Assertion.h>
#include <nox/utils/Facilities.h>

#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

const char* const usage =
    "usage: nox-dap [--stdio | --port N] [--trace FILE] [--help] [--version]\n"
    "  --stdio        speak the Debug Adapter Protocol on standard input and output (default)\n"
    "  --port N       serve one client at a time on 127.0.0.1:N instead\n"
    "  --trace FILE   append every protocol message to FILE (default: $NOX_DAP_TRACE, if set)\n"
    "Attach with the arguments {\"url\": \"http://127.0.0.1:8080\", \"token\": \"...\"}; the token is\n"
    "optional and defaults to the environment variable NOX_INSPECT_TOKEN.\n";

volatile std::sig_atomic_t stopping = 0;

void requestStop(int) { stopping = 1; }

// Writes whole buffers to a descriptor: standard output, a socket or a trace file.
class DescriptorOutput : public nox::dap::AbstractOutput {
 public:
  explicit DescriptorOutput(int fd) : fd_(fd) {}
  bool write(const char* data, std::size_t size) override {
    while (size > 0) {
      const ssize_t written = ::write(fd_, data, size);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return false;
      data += written;
      size -= static_cast<std::size_t>(written);
    }
    return true;
  }

 private:
  int fd_;
};

// A broken contract met while reading outside input must not end the session: it is
// reported and the checking code goes on with its neutral result.
void reportAssertion(const char* file, unsigned int line, const char* message) {
  std::fprintf(stderr, "nox-dap: %s(%u): [assertion failed] %s\n", file, line, message);
}

struct Options {
  long port = -1;
  const char* trace = nullptr;
};

bool parseOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const char* option = argv[i];
    if (std::strcmp(option, "--help") == 0) {
      std::fputs(usage, stdout);
      std::exit(0);
    } else if (std::strcmp(option, "--version") == 0) {
      std::printf("nox-dap %s\n", getVersionNOX_UTILS());
      std::exit(0);
    } else if (std::strcmp(option, "--stdio") == 0) {
      options.port = -1;
    } else if (std::strcmp(option, "--port") == 0 && i + 1 < argc) {
      char* end = nullptr;
      options.port = std::strtol(argv[++i], &end, 10);
      if (*end != '\0' || options.port < 1 || options.port > 65535) return false;
    } else if (std::strcmp(option, "--trace") == 0 && i + 1 < argc) {
      options.trace = argv[++i];
    } else {
      return false;
    }
  }
  return true;
}

int listenOnLoopback(long port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int reuse = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<unsigned short>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (listener < 0 || bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, 4) != 0) {
    std::fprintf(stderr, "nox-dap: cannot listen on 127.0.0.1:%ld: %s\n", port, std::strerror(errno));
    if (listener >= 0) close(listener);
    return -1;
  }
  return listener;
}

void installSignals() {
  struct sigaction action {};
  action.sa_handler = &requestStop;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  // A peer that goes away shows up as a failed write, not as a signal.
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!parseOptions(argc, argv, options)) {
    std::fputs("nox-dap: bad option\n", stderr);
    std::fputs(usage, stderr);
    return 2;
  }
  if (options.trace == nullptr && std::getenv("NOX_DAP_TRACE") != nullptr && *std::getenv("NOX_DAP_TRACE") != '\0') {
    options.trace = std::getenv("NOX_DAP_TRACE");
  }
  installSignals();
  nox::utils::setAssertionFailedFunction(&reportAssertion);
  const int traceFd = options.trace != nullptr ? open(options.trace, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644) : -1;
  if (options.trace != nullptr && traceFd < 0) {
    std::fprintf(stderr, "nox-dap: cannot open the trace file %s: %s\n", options.trace, std::strerror(errno));
    return 1;
  }
  DescriptorOutput trace(traceFd);
  nox::dap::HttpTransfers http;
  nox::dap::EventLoop loop(http, stopping);
  if (options.port < 0) {
    DescriptorOutput output(STDOUT_FILENO);
    loop.serve(STDIN_FILENO, output, traceFd >= 0 ? &trace : nullptr);
  } else {
    const int listener = listenOnLoopback(options.port);
    if (listener < 0) return 1;
    std::fprintf(stderr, "nox-dap: waiting for a debugger on 127.0.0.1:%ld\n", options.port);
    for (int peer; (peer = loop.acceptPeer(listener)) >= 0;) {
      DescriptorOutput output(peer);
      loop.serve(peer, output, traceFd >= 0 ? &trace : nullptr);
      close(peer);
    }
    close(listener);
  }
  if (traceFd >= 0) close(traceFd);
  return 0;
}
