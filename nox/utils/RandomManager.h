// Hands out independent, reproducible random streams by number from one 32-bit master
// seed: the same seed and stream number always give the same stream.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/Random.h>

namespace nox::utils {

class AbstractLogger;
class RandomManager;

// The saved form of a manager (its seed), in the protocol-buffer text format: a new
// buffer of `length` characters (plus a terminating zero) from NOX_ALLOCATE, which the
// caller frees with NOX_DEALLOCATE; null on failure.
NOX_UTILS_API char* serializeRandomManager(unsigned int& length, const RandomManager& manager, AbstractLogger* logger);
// Sets the saved seed; on failure `manager` is unchanged.
NOX_UTILS_API bool deserializeRandomManager(const char* data, unsigned int length, RandomManager& manager,
                                            AbstractLogger* logger);

class NOX_UTILS_API RandomManager {
 public:
  static constexpr unsigned int defaultSeed = 0x0FFFF000;

  RandomManager() = default;

  void seed(unsigned int seed) { seed_ = seed; }
  unsigned int getSeed() const { return seed_; }

  // A new stream seeded with (seed XOR streamId); the manager itself does not change.
  Random createRandomStream(unsigned int streamId) const { return Random(seed_ ^ streamId); }

 private:
  unsigned int seed_ = defaultSeed;
};

}  // namespace nox::utils
