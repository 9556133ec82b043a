// The floor of the inspection server's load test: CivetWeb alone, listening on loopback
// with the given number of worker threads, answering every request with a fixed JSON
// body in the same reply format. What the inspection server adds on top (access checks,
// path and query parsing, the framework's dispatch, JSON building) is measured against
// it.
//
//   nox_bare_civet_server THREADS PORT     serves until SIGINT or SIGTERM
#include <civetweb.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>

namespace {

// What GET /api/debug/entities answers for the demo's four agents.
const char body[] = R"([{"index":1},{"index":2},{"index":3},{"index":4}])";

int answer(mg_connection* connection) {
  char reply[512];
  const int length = std::snprintf(reply, sizeof reply,
                                   "HTTP/1.1 200 OK\r\n"
                                   "Content-Type: application/json; charset=utf-8\r\n"
                                   "Content-Length: %u\r\n"
                                   "Connection: close\r\n"
                                   "Access-Control-Allow-Origin: *\r\n"
                                   "\r\n%s",
                                   static_cast<unsigned int>(sizeof body - 1), body);
  mg_write(connection, reply, static_cast<size_t>(length));
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: nox_bare_civet_server THREADS PORT\n");
    return 2;
  }
  char listening[32];
  std::snprintf(listening, sizeof listening, "127.0.0.1:%s", argv[2]);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  mg_callbacks callbacks;
  std::memset(&callbacks, 0, sizeof callbacks);
  callbacks.begin_request = &answer;
  const char* options[] = {
      "enable_directory_listing", "false", "listening_ports", listening, "num_threads", argv[1], nullptr};
  mg_context* context = mg_start(&callbacks, nullptr, options);
  if (context == nullptr) {
    std::fprintf(stderr, "nox_bare_civet_server: cannot listen on %s\n", listening);
    return 1;
  }
  std::printf("nox_bare_civet_server: listening on %s\n", listening);
  std::fflush(stdout);
  int received = 0;
  sigwait(&signals, &received);
  mg_stop(context);
  return 0;
}
