// One reproducible stream of pseudo-random 32-bit numbers (SFMT19937 seeded by array with
// the one-word key [seed]). A stream's whole state is its seed and the count of numbers
// drawn, so that it can be saved as text and restored exactly where it was.
//
// Drawing is inline and costs an index test and a load; every 624 draws the generator
// state is regenerated as a whole, out of line.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/details/Sfmt19937.h>

#include <cstdint>

namespace nox::utils {

class AbstractLogger;
class Random;

// The saved form of a stream, in the protocol-buffer text format: a new buffer of `length`
// characters (plus a terminating zero) from NOX_ALLOCATE, which the caller frees with
// NOX_DEALLOCATE; null on failure.
NOX_UTILS_API char* serializeRandom(unsigned int& length, const Random& random, AbstractLogger* logger);
// Reseeds `random` and moves it to the saved count; on failure `random` is unchanged.
// The cost grows with the saved count (one regeneration per 624 numbers drawn), so a
// count beyond Random::getMaximumRestoredCount() is refused as invalid data: a saved
// text must not keep its reader busy for ages.
NOX_UTILS_API bool deserializeRandom(const char* data, unsigned int length, Random& random, AbstractLogger* logger);

class NOX_UTILS_API Random {
 public:
  explicit Random(unsigned int seed);

  // The most numbers drawn that a saved stream may hold: 2^32, which a restore reaches in
  // a few seconds.
  static constexpr std::uint64_t getMaximumRestoredCount() { return std::uint64_t{1} << 32; }
  // Copies draw the same numbers as the original from then on.
  Random(const Random& other);
  Random& operator=(const Random& other);
  ~Random();

  unsigned int operator()() {
    State& state = *state_;
    if (__builtin_expect(state.index >= details::sfmtStateWords, 0)) regenerate();
    return state.words[state.index++];
  }

  // Uniform in [0, n], both ends included. Draws outside the largest multiple of n + 1
  // are rejected, so the result is exactly uniform. 0 for n = 0, drawing nothing.
  unsigned int operator()(unsigned int n) {
    // A zero bound is never the prepared one, so the common case costs one test.
    if (__builtin_expect(n != state_->bound.n, 0)) {
      if (n == 0) return 0;
      prepareBound(n);
    }
    std::uint32_t x = (*this)();
    while (__builtin_expect(x > state_->bound.limit, 0)) x = (*this)();
    return divideByBucket(x, state_->bound);
  }

  // Uniform between the smaller and the larger of `a` and `b`, both included.
  unsigned int operator()(unsigned int a, unsigned int b) {
    const unsigned int low = a < b ? a : b;
    const unsigned int high = a < b ? b : a;
    return low + (*this)(high - low);
  }

 private:
  friend char* serializeRandom(unsigned int& length, const Random& random, AbstractLogger* logger);
  friend bool deserializeRandom(const char* data, unsigned int length, Random& random, AbstractLogger* logger);

  // What a bounded draw under `n` needs: results are draw / bucket for draws up to limit,
  // with bucket = floor(2^32 / (n + 1)). Kept for the last bound (the full range after
  // seeding), so that repeated draws under one bound divide by a multiplication.
  struct Bound {
    std::uint32_t n;  // never 0
    std::uint32_t limit;
    std::uint32_t bucket;
    // ceil(2^63 / bucket): the bucket is at most 2^31 (n + 1 is at least 2), so this
    // fits in 64 bits and still gives floor(x / bucket) exactly for every 32-bit x.
    std::uint64_t reciprocal;
  };

  struct State {
    alignas(16) std::uint32_t words[details::sfmtStateWords];
    // The next word to hand out; sfmtStateWords when the words are used up, as right
    // after seeding, where the first draw generates the first outputs.
    std::uint32_t index;
    // How many times the words were generated since seeding.
    std::uint64_t regenerations;
    std::uint32_t seed;
    Bound bound;
  };

  static std::uint32_t divideByBucket(std::uint32_t x, const Bound& bound) {
#if defined(__SIZEOF_INT128__)
    // floor(x * reciprocal / 2^63), as the high half of a 64 x 64-bit product.
    return static_cast<std::uint32_t>((static_cast<__uint128_t>(std::uint64_t{x} << 1) * bound.reciprocal) >> 64);
#else
    return x / bound.bucket;
#endif
  }

  unsigned int getSeed() const { return state_->seed; }
  // Numbers drawn since seeding.
  std::uint64_t getCount() const;
  // Moves forward to where the stream is after `count` draws since seeding; `count` must
  // not be below getCount().
  void advance(std::uint64_t count);
  void reseed(unsigned int seed);
  void regenerate();
  void prepareBound(std::uint32_t n);

  State* state_;
};

}  // namespace nox::utils
