// MurmurHash64B against libstdc++'s string hash, and the StringTable against the
// standard unordered map for the work an engine does: register keys once, then look
// known hashes up.
#include <nox/utils/StringTable.h>

#include "support/Ratios.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

constexpr int keyCount = 100000;

std::string randomText(std::size_t length) {
  std::mt19937 random(static_cast<unsigned int>(length));
  std::string text(length, ' ');
  for (char& c : text) c = static_cast<char>('a' + random() % 26);
  return text;
}

// Property-like names of 10 to 20 characters, in a fixed random order.
const std::vector<std::string>& keys() {
  static const std::vector<std::string> all = [] {
    std::vector<std::string> names;
    for (int i = 0; i < keyCount; ++i) names.push_back("entity." + std::to_string(i * 7919) + ".pos");
    std::shuffle(names.begin(), names.end(), std::mt19937(42));
    return names;
  }();
  return all;
}

void BM_MurmurHash64B(benchmark::State& state) {
  const std::string text = randomText(static_cast<std::size_t>(state.range(0)));
  const char* data = text.data();
  for (auto _ : state) {
    benchmark::DoNotOptimize(data);
    benchmark::DoNotOptimize(nox::utils::murmurHash64B(data, static_cast<unsigned int>(text.size()), 0));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_MurmurHash64B)->Arg(8)->Arg(64)->Arg(4096);

void BM_StdHash(benchmark::State& state) {
  const std::string text = randomText(static_cast<std::size_t>(state.range(0)));
  const char* data = text.data();
  for (auto _ : state) {
    benchmark::DoNotOptimize(data);
    benchmark::DoNotOptimize(std::hash<std::string_view>{}(std::string_view(data, text.size())));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_StdHash)->Arg(8)->Arg(64)->Arg(4096);

NOX_BENCH_RATIO("murmurHash64B vs std::hash, 8 B", "BM_MurmurHash64B/8", "BM_StdHash/8", 1.2);
NOX_BENCH_RATIO("murmurHash64B vs std::hash, 64 B", "BM_MurmurHash64B/64", "BM_StdHash/64", 1.2);
NOX_BENCH_RATIO("murmurHash64B vs std::hash, 4096 B", "BM_MurmurHash64B/4096", "BM_StdHash/4096", 1.2);

void BM_StringTableAdd(benchmark::State& state) {
  for (auto _ : state) {
    nox::utils::StringTable table;
    for (const std::string& key : keys()) {
      benchmark::DoNotOptimize(table.add(key.data(), static_cast<unsigned int>(key.size()), nullptr));
    }
  }
  state.SetItemsProcessed(state.iterations() * keyCount);
}
BENCHMARK(BM_StringTableAdd)->Unit(benchmark::kMillisecond);

void BM_UnorderedMapAdd(benchmark::State& state) {
  for (auto _ : state) {
    std::unordered_map<std::string, std::uint64_t> map;
    std::uint64_t value = 0;
    for (const std::string& key : keys()) benchmark::DoNotOptimize(map.emplace(key, ++value));
  }
  state.SetItemsProcessed(state.iterations() * keyCount);
}
BENCHMARK(BM_UnorderedMapAdd)->Unit(benchmark::kMillisecond);

NOX_BENCH_RATIO("StringTable add vs unordered_map emplace, 100000 keys", "BM_StringTableAdd", "BM_UnorderedMapAdd",
                1.0);

// Engines keep the hash and look it up; the map must be asked with the text.
void BM_StringTableLookup(benchmark::State& state) {
  nox::utils::StringTable table;
  std::vector<std::uint64_t> hashes;
  for (const std::string& key : keys()) {
    hashes.push_back(table.add(key.data(), static_cast<unsigned int>(key.size()), nullptr));
  }
  for (auto _ : state) {
    for (std::uint64_t hash : hashes) benchmark::DoNotOptimize(table.retrieve(hash, nullptr));
  }
  state.SetItemsProcessed(state.iterations() * keyCount);
}
BENCHMARK(BM_StringTableLookup)->Unit(benchmark::kMicrosecond);

void BM_UnorderedMapLookup(benchmark::State& state) {
  std::unordered_map<std::string, std::uint64_t> map;
  std::uint64_t value = 0;
  for (const std::string& key : keys()) map.emplace(key, ++value);
  for (auto _ : state) {
    for (const std::string& key : keys()) benchmark::DoNotOptimize(map.find(key));
  }
  state.SetItemsProcessed(state.iterations() * keyCount);
}
BENCHMARK(BM_UnorderedMapLookup)->Unit(benchmark::kMicrosecond);

NOX_BENCH_RATIO("StringTable retrieve(hash) vs unordered_map find, 100000 keys", "BM_StringTableLookup",
                "BM_UnorderedMapLookup", 1.0);

}  // namespace
