#include "FuzzSupport.h"

#include <nox/utils/Assertion.h>

#include <cstdio>
#include <cstdlib>

namespace nox::fuzz {

namespace {

[[noreturn]] void abortingHandler(const char* file, unsigned int line, const char* message) {
  std::fprintf(stderr, "%s(%u): [assertion failed] %s\n", file, line, message);
  std::abort();
}

}  // namespace

void abortOnAssertion() { nox::utils::setAssertionFailedFunction(&abortingHandler); }

void fail(const char* what, std::string_view detail) {
  std::fprintf(stderr, "fuzz target: %s\n", what);
  if (!detail.empty()) std::fprintf(stderr, "%.*s\n", static_cast<int>(detail.size()), detail.data());
  std::abort();
}

}  // namespace nox::fuzz
