// Targets stated between benchmarks of one run. After all benchmarks ran, the main
// prints, side by side, subject time / reference time for each registered ratio beside
// its target (the ratio must not exceed it), each registered counter limit, and then
// the ratios kept for information only: those against peers that no target bounds.
// Times are the fastest of the rounds (--benchmark_repetitions, 3 by default).
#pragma once

#include <string>

namespace nox::bench {

bool registerRatio(const std::string& label, const std::string& subject, const std::string& reference, double maximum);
// A ratio printed without a target, so that "met" only ever stands for a real target.
bool registerInformation(const std::string& label, const std::string& subject, const std::string& reference);
// A limit on one of a benchmark's counters (state.counters[counter]).
bool registerCounterLimit(const std::string& label, const std::string& benchmark, const std::string& counter,
                          double maximum);

}  // namespace nox::bench

#define NOX_BENCH_CONCAT_INNER(a, b) a##b
#define NOX_BENCH_CONCAT(a, b) NOX_BENCH_CONCAT_INNER(a, b)
#define NOX_BENCH_REGISTER(call) \
  static const bool NOX_BENCH_CONCAT(noxBenchRatio_, __LINE__) [[maybe_unused]] = ::nox::bench::call
// NOX_BENCH_RATIO("hash 64 B vs std::hash", "BM_Murmur/64", "BM_StdHash/64", 1.2);
#define NOX_BENCH_RATIO(label, subject, reference, maximum) \
  NOX_BENCH_REGISTER(registerRatio(label, subject, reference, maximum))
#define NOX_BENCH_INFO(label, subject, reference) NOX_BENCH_REGISTER(registerInformation(label, subject, reference))
#define NOX_BENCH_COUNTER_LIMIT(label, benchmark, counter, maximum) \
  NOX_BENCH_REGISTER(registerCounterLimit(label, benchmark, counter, maximum))
