#pragma once

#include <string>
#include <utility>
#include <vector>

// Pairs of benchmarks whose ratio the benchmark runner prints after the run: how many times the
// first one's real time per iteration is the second one's, both measured in the same run.
std::vector<std::pair<std::string, std::string>>& TNLBenchRatios();

// For use as `const bool registered = TNLBenchCompare("BM_A", "BM_B");` at namespace scope.
inline bool TNLBenchCompare(std::string benchmark, std::string baseline) {
  TNLBenchRatios().emplace_back(std::move(benchmark), std::move(baseline));
  return true;
}
