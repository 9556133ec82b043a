#include <nox/utils/details/Sfmt19937.h>

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace nox::utils::details {

namespace {

// The published parameters for exponent 19937. The state is read as 156 blocks of 128
// bits, each four 32-bit lanes with the lowest lane first.
constexpr int kBlocks = sfmtStateWords / 4;
constexpr int kPos1 = 122;
constexpr int kSl1 = 18;
constexpr int kSl2 = 1;  // bytes
constexpr int kSr1 = 11;
constexpr int kSr2 = 1;  // bytes
constexpr std::uint32_t kMask[4] = {0xdfffffefU, 0xddfecb7fU, 0xbffaffffU, 0xbffffff6U};
constexpr std::uint32_t kParity[4] = {0x00000001U, 0x00000000U, 0x00000000U, 0x13c9e684U};

std::uint64_t join(std::uint32_t low, std::uint32_t high) { return static_cast<std::uint64_t>(high) << 32 | low; }

void split(std::uint64_t value, std::uint32_t* lanes) {
  lanes[0] = static_cast<std::uint32_t>(value);
  lanes[1] = static_cast<std::uint32_t>(value >> 32);
}

// 128-bit shifts by whole bytes, as _mm_slli_si128 / _mm_srli_si128 do.
void shiftLeft128(const std::uint32_t* in, std::uint32_t* out, int bytes) {
  const std::uint64_t high = join(in[2], in[3]);
  const std::uint64_t low = join(in[0], in[1]);
  split(high << (bytes * 8) | low >> (64 - bytes * 8), out + 2);
  split(low << (bytes * 8), out);
}

void shiftRight128(const std::uint32_t* in, std::uint32_t* out, int bytes) {
  const std::uint64_t high = join(in[2], in[3]);
  const std::uint64_t low = join(in[0], in[1]);
  split(high >> (bytes * 8), out + 2);
  split(low >> (bytes * 8) | high << (64 - bytes * 8), out);
}

// r = a ^ (a << SL2 bytes) ^ ((b >> SR1) & MASK) ^ (c >> SR2 bytes) ^ (d << SL1); r may be a.
void recursion(std::uint32_t* r, const std::uint32_t* a, const std::uint32_t* b, const std::uint32_t* c,
               const std::uint32_t* d) {
  std::uint32_t x[4];
  std::uint32_t y[4];
  shiftLeft128(a, x, kSl2);
  shiftRight128(c, y, kSr2);
  for (int lane = 0; lane < 4; ++lane) {
    r[lane] = a[lane] ^ x[lane] ^ ((b[lane] >> kSr1) & kMask[lane]) ^ y[lane] ^ (d[lane] << kSl1);
  }
}

std::uint32_t mixForAdding(std::uint32_t x) { return (x ^ (x >> 27)) * 1664525U; }
std::uint32_t mixForXoring(std::uint32_t x) { return (x ^ (x >> 27)) * 1566083941U; }

// Makes sure the state lies on the full period: if its parity check fails, flips the
// lowest bit that the parity words select.
void certifyPeriod(std::uint32_t* words) {
  std::uint32_t inner = 0;
  for (int lane = 0; lane < 4; ++lane) inner ^= words[lane] & kParity[lane];
  for (int shift = 16; shift > 0; shift >>= 1) inner ^= inner >> shift;
  if ((inner & 1) == 1) return;
  for (int lane = 0; lane < 4; ++lane) {
    for (std::uint32_t bit = 1; bit != 0; bit <<= 1) {
      if ((bit & kParity[lane]) != 0) {
        words[lane] ^= bit;
        return;
      }
    }
  }
}

#if defined(__SSE2__)
__m128i recursion(__m128i a, __m128i b, __m128i c, __m128i d, __m128i mask) {
  const __m128i x = _mm_slli_si128(a, kSl2);
  const __m128i y = _mm_and_si128(_mm_srli_epi32(b, kSr1), mask);
  const __m128i z = _mm_srli_si128(c, kSr2);
  const __m128i v = _mm_slli_epi32(d, kSl1);
  return _mm_xor_si128(_mm_xor_si128(_mm_xor_si128(a, x), _mm_xor_si128(y, z)), v);
}

void regenerateSse2(std::uint32_t* words) {
  __m128i* blocks = reinterpret_cast<__m128i*>(words);
  const __m128i mask = _mm_set_epi32(static_cast<int>(kMask[3]), static_cast<int>(kMask[2]), static_cast<int>(kMask[1]),
                                     static_cast<int>(kMask[0]));
  __m128i r1 = _mm_loadu_si128(blocks + kBlocks - 2);
  __m128i r2 = _mm_loadu_si128(blocks + kBlocks - 1);
  // Two loops so that the partner block index needs no wrap test.
  int i = 0;
  for (; i < kBlocks - kPos1; ++i) {
    const __m128i r = recursion(_mm_loadu_si128(blocks + i), _mm_loadu_si128(blocks + i + kPos1), r1, r2, mask);
    _mm_storeu_si128(blocks + i, r);
    r1 = r2;
    r2 = r;
  }
  for (; i < kBlocks; ++i) {
    const __m128i r =
        recursion(_mm_loadu_si128(blocks + i), _mm_loadu_si128(blocks + i + kPos1 - kBlocks), r1, r2, mask);
    _mm_storeu_si128(blocks + i, r);
    r1 = r2;
    r2 = r;
  }
}
#endif

}  // namespace

void seedSfmt(std::uint32_t* words, std::uint32_t seed) {
  constexpr std::uint32_t kSize = sfmtStateWords;
  constexpr std::uint32_t kLag = 11;
  constexpr std::uint32_t kMid = (kSize - kLag) / 2;
  constexpr std::uint32_t kKeyLength = 1;
  const auto at = [words](std::uint32_t index) -> std::uint32_t& { return words[index % kSize]; };

  std::memset(words, 0x8b, kSize * sizeof(std::uint32_t));
  std::uint32_t r = mixForAdding(at(0) ^ at(kMid) ^ at(kSize - 1));
  at(kMid) += r;
  r += kKeyLength;
  at(kMid + kLag) += r;
  at(0) = r;
  // The key has one word, so every step but the first of this pass adds the index alone.
  std::uint32_t i = 1;
  for (std::uint32_t step = 0; step < kSize - 1; ++step, i = (i + 1) % kSize) {
    r = mixForAdding(at(i) ^ at(i + kMid) ^ at(i + kSize - 1));
    at(i + kMid) += r;
    r += (step < kKeyLength ? seed : 0) + i;
    at(i + kMid + kLag) += r;
    at(i) = r;
  }
  for (std::uint32_t step = 0; step < kSize; ++step, i = (i + 1) % kSize) {
    r = mixForXoring(at(i) + at(i + kMid) + at(i + kSize - 1));
    at(i + kMid) ^= r;
    r -= i;
    at(i + kMid + kLag) ^= r;
    at(i) = r;
  }
  certifyPeriod(words);
}

void regenerateSfmtPortable(std::uint32_t* words) {
  const auto block = [words](int index) { return words + 4 * index; };
  const std::uint32_t* r1 = block(kBlocks - 2);
  const std::uint32_t* r2 = block(kBlocks - 1);
  for (int i = 0; i < kBlocks; ++i) {
    const int partner = i < kBlocks - kPos1 ? i + kPos1 : i + kPos1 - kBlocks;
    recursion(block(i), block(i), block(partner), r1, r2);
    r1 = r2;
    r2 = block(i);
  }
}

void regenerateSfmt(std::uint32_t* words) {
#if defined(__SSE2__)
  regenerateSse2(words);
#else
  regenerateSfmtPortable(words);
#endif
}

}  // namespace nox::utils::details
