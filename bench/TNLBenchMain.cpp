#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>

#include <glib.h>
#include <unistd.h>

#include "TNLBenchRatios.h"

std::vector<std::pair<std::string, std::string>>& TNLBenchRatios() {
  static std::vector<std::pair<std::string, std::string>> ratios;
  return ratios;
}

namespace {

// The console report, then a table of the registered pairs: each benchmark's median real and CPU
// time per iteration (its single run when not repeated) and the ratios library / raw.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  // Colours only on a terminal.
  RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_Defaults : OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (run.error_occurred || run.iterations <= 0) {
        continue;
      }
      const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      const auto name = run.run_name.function_name;
      if (median || (run.run_type == Run::RT_Iteration && !medians_.contains(name))) {
        const auto iterations = static_cast<double>(run.iterations);
        times_[name] = {run.real_accumulated_time / iterations * 1e3,
                        run.cpu_accumulated_time / iterations * 1e3};
        if (median) {
          medians_.insert(name);
        }
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n%-32s %10s %10s   %-32s %10s %10s   %6s %6s\n", "library", "real ms", "CPU ms",
                "raw", "real ms", "CPU ms", "real", "CPU");
    for (const auto& [name, baseline] : TNLBenchRatios()) {
      const auto measured = times_.find(name);
      const auto reference = times_.find(baseline);
      if (measured == times_.end() || reference == times_.end() || reference->second.real <= 0 ||
          reference->second.cpu <= 0) {
        continue;
      }
      const Times& m = measured->second;
      const Times& r = reference->second;
      std::printf("%-32s %10.4f %10.4f   %-32s %10.4f %10.4f   %5.2fx %5.2fx\n", name.c_str(),
                  m.real, m.cpu, baseline.c_str(), r.real, r.cpu, m.real / r.real, m.cpu / r.cpu);
    }
  }

 private:
  struct Times {
    double real = 0;  // milliseconds per iteration
    double cpu = 0;
  };
  std::map<std::string, Times> times_;
  std::set<std::string> medians_;
};

}  // namespace

int main(int argc, char** argv) {
  // The library's platform log has a line for every ad load; only its warnings matter here.
  g_log_set_writer_func(
      [](GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
        const auto serious = G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING;
        return (level & serious) != 0 ? g_log_writer_default(level, fields, count, nullptr)
                                      : G_LOG_WRITER_HANDLED;
      },
      nullptr, nullptr);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
