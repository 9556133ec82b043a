// The SFMT19937 generator (SIMD-oriented Fast Mersenne Twister, exponent 19937) as plain
// functions over its state of 624 32-bit words; Random builds its streams on them.
#pragma once

#include <nox/utils/Export.h>

#include <cstdint>

namespace nox::utils::details {

constexpr unsigned int sfmtStateWords = 624;

// Seeds by array with the one-word key [seed], period certification included. The seeded
// words are not outputs: the first outputs are those of the next regeneration.
NOX_UTILS_API void seedSfmt(std::uint32_t* words, std::uint32_t seed);
// Replaces the state by the next one, whose words are the next 624 outputs in order.
// Uses SSE2 where the build targets it.
NOX_UTILS_API void regenerateSfmt(std::uint32_t* words);
// The same computation without vector instructions, built everywhere so that both paths
// can be checked against each other.
NOX_UTILS_API void regenerateSfmtPortable(std::uint32_t* words);

}  // namespace nox::utils::details
