// Random against std::mt19937 drawing 32-bit numbers one at a time, and bounded draws
// against unbounded ones. Every draw is summed, so that each one is really computed and
// read; the bounds are hidden from the optimiser, as bounds computed at run time would be.
#include <nox/utils/Random.h>

#include <benchmark/benchmark.h>

#include <random>

#include "support/Ratios.h"

namespace {

void BM_RandomDraw(benchmark::State& state) {
  nox::utils::Random random(1234);
  unsigned int sum = 0;
  for (auto _ : state) sum += random();
  benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_RandomDraw);

void BM_Mt19937Draw(benchmark::State& state) {
  std::mt19937 generator(1234);
  unsigned int sum = 0;
  for (auto _ : state) sum += static_cast<unsigned int>(generator());
  benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_Mt19937Draw);

void BM_RandomBoundedDraw(benchmark::State& state) {
  nox::utils::Random random(1234);
  unsigned int bound = static_cast<unsigned int>(state.range(0));
  benchmark::DoNotOptimize(bound);
  unsigned int sum = 0;
  for (auto _ : state) sum += random(bound);
  benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_RandomBoundedDraw)->Arg(6)->Arg(99)->Arg(1000000);

// Bounds that change at every draw miss the prepared bound and pay two divisions.
void BM_RandomChangingBoundDraw(benchmark::State& state) {
  nox::utils::Random random(1234);
  unsigned int bounds[2] = {6, 99};
  benchmark::DoNotOptimize(bounds);
  unsigned int sum = 0;
  unsigned int which = 0;
  for (auto _ : state) sum += random(bounds[which ^= 1]);
  benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_RandomChangingBoundDraw);

void BM_RandomIntervalDraw(benchmark::State& state) {
  nox::utils::Random random(1234);
  unsigned int low = 10;
  unsigned int high = 109;
  benchmark::DoNotOptimize(low);
  benchmark::DoNotOptimize(high);
  unsigned int sum = 0;
  for (auto _ : state) sum += random(low, high);
  benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_RandomIntervalDraw);

}  // namespace

NOX_BENCH_RATIO("Random draw vs std::mt19937", "BM_RandomDraw", "BM_Mt19937Draw", 0.5);
NOX_BENCH_RATIO("Random draw in [0, 6] vs unbounded", "BM_RandomBoundedDraw/6", "BM_RandomDraw", 1.5);
NOX_BENCH_RATIO("Random draw in [0, 99] vs unbounded", "BM_RandomBoundedDraw/99", "BM_RandomDraw", 1.5);
NOX_BENCH_RATIO("Random draw in [0, 1000000] vs unbounded", "BM_RandomBoundedDraw/1000000", "BM_RandomDraw", 1.5);
NOX_BENCH_RATIO("Random draw in [10, 109] vs unbounded", "BM_RandomIntervalDraw", "BM_RandomDraw", 1.5);
