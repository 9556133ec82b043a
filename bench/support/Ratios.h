// Targets stated as ratios between two benchmarks of one run: after all benchmarks ran,
// the main prints subject time / reference time for each registered ratio beside its
// target (the ratio must not exceed it).
#pragma once

#include <string>

namespace nox::bench {

bool registerRatio(const std::string& label, const std::string& subject, const std::string& reference, double maximum);

}  // namespace nox::bench

#define NOX_BENCH_CONCAT_INNER(a, b) a##b
#define NOX_BENCH_CONCAT(a, b) NOX_BENCH_CONCAT_INNER(a, b)
// NOX_BENCH_RATIO("hash 64 B vs std::hash", "BM_Murmur/64", "BM_StdHash/64", 1.2);
#define NOX_BENCH_RATIO(label, subject, reference, maximum)                       \
  static const bool NOX_BENCH_CONCAT(noxBenchRatio_, __LINE__) [[maybe_unused]] = \
      ::nox::bench::registerRatio(label, subject, reference, maximum)
