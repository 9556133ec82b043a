// The saved text form of random streams and managers. Any text is read without an
// assertion, a crash or a long stall, and a refused one is reported and leaves the
// target as it was. An accepted one saves to a text that restores the same stream.
#include <nox/allocator/Allocator.h>
#include <nox/utils/Random.h>
#include <nox/utils/RandomManager.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"

namespace {

using nox::utils::Random;
using nox::utils::RandomManager;

// The next draws of a copy, leaving `random` where it was.
std::string nextDraws(const Random& random) {
  Random copy(random);
  std::string draws;
  for (int i = 0; i < 8; ++i) draws += std::to_string(copy()) + " ";
  return draws;
}

template <class Save>
std::string saved(Save save) {
  nox::fuzz::SilentLogger logger;
  unsigned int length = 0;
  char* text = save(length, &logger);
  NOX_FUZZ_CHECK(text != nullptr);
  std::string copy(text, length);
  NOX_DEALLOCATE(text);
  return copy;
}

void checkStream(const char* data, unsigned int size) {
  Random random(12345);
  random();
  const std::string before = nextDraws(random);
  nox::fuzz::SilentLogger logger;
  if (!nox::utils::deserializeRandom(data, size, random, &logger)) {
    NOX_FUZZ_CHECK(logger.hasErrors());
    NOX_FUZZ_CHECK(nextDraws(random) == before);
    return;
  }
  const std::string text =
      saved([&](unsigned int& length, nox::fuzz::SilentLogger* log) { return serializeRandom(length, random, log); });
  Random restored(1);
  NOX_FUZZ_CHECK_SHOWING(
      nox::utils::deserializeRandom(text.data(), static_cast<unsigned int>(text.size()), restored, &logger), text);
  NOX_FUZZ_CHECK_SHOWING(nextDraws(restored) == nextDraws(random), text);
}

void checkManager(const char* data, unsigned int size) {
  RandomManager manager;
  manager.seed(77);
  nox::fuzz::SilentLogger logger;
  if (!nox::utils::deserializeRandomManager(data, size, manager, &logger)) {
    NOX_FUZZ_CHECK(logger.hasErrors());
    NOX_FUZZ_CHECK(manager.getSeed() == 77);
    return;
  }
  const std::string text = saved(
      [&](unsigned int& length, nox::fuzz::SilentLogger* log) { return serializeRandomManager(length, manager, log); });
  RandomManager restored;
  NOX_FUZZ_CHECK_SHOWING(
      nox::utils::deserializeRandomManager(text.data(), static_cast<unsigned int>(text.size()), restored, &logger),
      text);
  NOX_FUZZ_CHECK_SHOWING(restored.getSeed() == manager.getSeed(), text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* text = reinterpret_cast<const char*>(data);
  checkStream(text, static_cast<unsigned int>(size));
  checkManager(text, static_cast<unsigned int>(size));
  return 0;
}
