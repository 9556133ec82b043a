// Runs every benchmark, each in several rounds, then prints the registered ratios and
// limits against their targets, and the ratios kept for information.
#include "support/Ratios.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <vector>

namespace nox::bench {
namespace {

enum class Kind { target, information, counter };

struct Check {
  Kind kind;
  std::string label;
  std::string subject;
  std::string reference;  // the counter's name for a counter limit
  double maximum;
};

std::vector<Check>& checks() {
  static std::vector<Check> all;
  return all;
}

// Keeps each benchmark's fastest round (time per iteration, in nanoseconds) and its
// counters: the fastest round is the one least disturbed by the rest of the machine.
class RecordingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
      const std::string name = run.run_name.str();
      const double time = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
      auto known = times.find(name);
      times[name] = known == times.end() ? time : std::min(known->second, time);
      for (const auto& counter : run.counters) counters[name][counter.first] = counter.second.value;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  const double* findTime(const std::string& name) const {
    auto found = times.find(name);
    return found == times.end() ? nullptr : &found->second;
  }

  const double* findCounter(const std::string& name, const std::string& counter) const {
    auto run = counters.find(name);
    if (run == counters.end()) return nullptr;
    auto found = run->second.find(counter);
    return found == run->second.end() ? nullptr : &found->second;
  }

 private:
  std::map<std::string, double> times;
  std::map<std::string, std::map<std::string, double>> counters;
};

// "3.58 ms vs 0.50 ms": both sides of a ratio, in a unit that suits the subject.
std::string describeTimes(double subject, double reference) {
  const char* unit = "ns";
  double scale = 1;
  if (subject >= 1e6) {
    unit = "ms";
    scale = 1e6;
  } else if (subject >= 1e3) {
    unit = "us";
    scale = 1e3;
  }
  char text[64];
  std::snprintf(text, sizeof text, "%.3g vs %.3g %s", subject / scale, reference / scale, unit);
  return text;
}

void printRatio(const RecordingReporter& reporter, const Check& check) {
  const double* subject = reporter.findTime(check.subject);
  const double* reference = reporter.findTime(check.reference);
  const bool targeted = check.kind == Kind::target;
  if (subject == nullptr || reference == nullptr) {
    std::printf("%-64s %8s %22s %8s  (not run)\n", check.label.c_str(), "-", "", targeted ? "" : "-");
    return;
  }
  const double measured = *subject / *reference;
  const std::string times = describeTimes(*subject, *reference);
  if (targeted) {
    std::printf("%-64s %8.3f %22s %8.2f  %s\n", check.label.c_str(), measured, times.c_str(), check.maximum,
                measured <= check.maximum ? "met" : "MISSED");
  } else {
    std::printf("%-64s %8.3f %22s\n", check.label.c_str(), measured, times.c_str());
  }
}

void printCounter(const RecordingReporter& reporter, const Check& check) {
  const double* value = reporter.findCounter(check.subject, check.reference);
  if (value == nullptr) {
    std::printf("%-64s %8s %22s %8.2f  (not run)\n", check.label.c_str(), "-", "", check.maximum);
    return;
  }
  std::printf("%-64s %8.3f %22s %8.2f  %s\n", check.label.c_str(), *value, "", check.maximum,
              *value <= check.maximum ? "met" : "MISSED");
}

void printChecks(const RecordingReporter& reporter) {
  std::printf("\n%-64s %8s %22s %8s\n", "target (subject / reference: fastest rounds)", "measured", "times", "target");
  for (const Check& check : checks()) {
    if (check.kind == Kind::target) printRatio(reporter, check);
    if (check.kind == Kind::counter) printCounter(reporter, check);
  }
  std::printf("\n%-64s %8s %22s\n", "for information (no target)", "measured", "times");
  for (const Check& check : checks()) {
    if (check.kind == Kind::information) printRatio(reporter, check);
  }
}

bool hasFlag(int argc, char** argv, const char* flag) {
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], flag, std::strlen(flag)) == 0) return true;
  }
  return false;
}

}  // namespace

bool registerRatio(const std::string& label, const std::string& subject, const std::string& reference, double maximum) {
  checks().push_back({Kind::target, label, subject, reference, maximum});
  return true;
}

bool registerInformation(const std::string& label, const std::string& subject, const std::string& reference) {
  checks().push_back({Kind::information, label, subject, reference, NAN});
  return true;
}

bool registerCounterLimit(const std::string& label, const std::string& benchmark, const std::string& counter,
                          double maximum) {
  checks().push_back({Kind::counter, label, benchmark, counter, maximum});
  return true;
}

}  // namespace nox::bench

int main(int argc, char** argv) {
  // Three rounds unless told otherwise; the fastest stands for the benchmark.
  std::vector<char*> arguments(argv, argv + argc);
  char rounds[] = "--benchmark_repetitions=3";
  if (!nox::bench::hasFlag(argc, argv, "--benchmark_repetitions")) arguments.push_back(rounds);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  nox::bench::RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  nox::bench::printChecks(reporter);
  return 0;
}
