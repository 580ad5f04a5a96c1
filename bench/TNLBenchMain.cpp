#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>

#include <unistd.h>

#include "TNLBenchRatios.h"

std::vector<std::pair<std::string, std::string>>& TNLBenchRatios() {
  static std::vector<std::pair<std::string, std::string>> ratios;
  return ratios;
}

namespace {

// The console report, followed by the registered ratios.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  // Colours only on a terminal.
  RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_Defaults : OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    // One figure per benchmark: its single run, or the mean of its repetitions.
    for (const auto& run : runs) {
      if (run.error_occurred || run.iterations <= 0) {
        continue;
      }
      const bool mean = run.run_type == Run::RT_Aggregate && run.aggregate_name == "mean";
      if (run.run_type == Run::RT_Iteration || mean) {
        secondsPerIteration_[run.run_name.function_name] =
            run.real_accumulated_time / static_cast<double>(run.iterations);
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    for (const auto& [name, baseline] : TNLBenchRatios()) {
      const auto measured = secondsPerIteration_.find(name);
      const auto reference = secondsPerIteration_.find(baseline);
      if (measured == secondsPerIteration_.end() || reference == secondsPerIteration_.end() ||
          reference->second <= 0) {
        continue;
      }
      std::printf("ratio %s / %s = %.1f\n", name.c_str(), baseline.c_str(),
                  measured->second / reference->second);
    }
  }

 private:
  std::map<std::string, double> secondsPerIteration_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
