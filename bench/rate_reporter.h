// A console reporter that also keeps items/s per benchmark name, so that a
// program can print its ratios against a peer measured in the same run:
//
//   bench::TRateReporter reporter;
//   if (!bench::RunWithRates(argc, argv, reporter))
//     return 1;
//   double ratio = reporter.Rate("BM_Ours") / reporter.Rate("BM_Peer");
#pragma once

#include <benchmark/benchmark.h>
#include <map>
#include <string>
#include <vector>

namespace bench {

class TRateReporter : public benchmark::ConsoleReporter {
public:
  std::map<std::string, double> rates;

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& r : runs) {
      auto it = r.counters.find("items_per_second");
      if (it != r.counters.end())
        rates[r.benchmark_name()] = it->second;
    }
    ConsoleReporter::ReportRuns(runs);
  }
  // Items per second of a benchmark, 0 when it did not run.
  double Rate(const std::string& name) const {
    auto it = rates.find(name);
    return it == rates.end() ? 0.0 : it->second;
  }
};

// Runs the benchmarks the command line selects; false on an unknown argument.
inline bool RunWithRates(int& argc, char** argv, TRateReporter& reporter) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return false;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return true;
}

} // namespace bench
