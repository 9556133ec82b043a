// Runs every benchmark, then prints the registered ratios against their targets.
#include "support/Ratios.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <set>
#include <vector>

namespace nox::bench {
namespace {

struct Ratio {
  std::string label;
  std::string subject;
  std::string reference;
  double maximum;
};

std::vector<Ratio>& ratios() {
  static std::vector<Ratio> all;
  return all;
}

// Keeps each benchmark's time per iteration in nanoseconds. With repetitions, the median
// stands for the benchmark.
class RecordingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      const bool single = run.run_type == Run::RT_Iteration && run.iterations != 0;
      if (!median && !single) continue;
      const std::string name = run.run_name.str();
      if (single && medians.count(name) != 0) continue;
      if (median) medians.insert(name);
      times[name] = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  std::map<std::string, double> times;

 private:
  std::set<std::string> medians;
};

}  // namespace

bool registerRatio(const std::string& label, const std::string& subject, const std::string& reference, double maximum) {
  ratios().push_back({label, subject, reference, maximum});
  return true;
}

}  // namespace nox::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  nox::bench::RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();

  std::printf("\n%-58s %10s %8s  %s\n", "ratio (subject time / reference time)", "measured", "target", "");
  for (const nox::bench::Ratio& ratio : nox::bench::ratios()) {
    auto subject = reporter.times.find(ratio.subject);
    auto reference = reporter.times.find(ratio.reference);
    if (subject == reporter.times.end() || reference == reporter.times.end()) {
      std::printf("%-58s %10s %8.2f  (not run)\n", ratio.label.c_str(), "-", ratio.maximum);
      continue;
    }
    double measured = subject->second / reference->second;
    std::printf("%-58s %10.3f %8.2f  %s\n", ratio.label.c_str(), measured, ratio.maximum,
                measured <= ratio.maximum ? "met" : "MISSED");
  }
  return 0;
}
