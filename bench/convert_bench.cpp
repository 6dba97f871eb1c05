// iStrtoFloat against the C library's strtod and std::from_chars on numbers as
// they appear in style sheets: small integers, short decimals, some negative,
// a few long fractions. Rates count one byte per character for every reader;
// the summary at the end gives each peer's time over iStrtoFloat's.
#include "htcore/foundation/convert.h"

#include <benchmark/benchmark.h>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

struct TInputs {
  std::vector<std::string> narrow;
  std::vector<ht::hstring> wide;
  size_t chars = 0;
};

const TInputs& Inputs() {
  static const TInputs inputs = [] {
    TInputs in;
    std::mt19937 rng(2024);
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    char buf[64];
    for (int i = 0; i < 10000; ++i) {
      int kind = pick(10);
      if (kind < 4)
        std::snprintf(buf, sizeof buf, "%d", pick(1000)); // 12, 100, 0
      else if (kind < 8)
        std::snprintf(buf, sizeof buf, "%d.%0*d", pick(100), 1 + pick(3), pick(1000)); // 1.5, 0.75
      else if (kind < 9)
        std::snprintf(buf, sizeof buf, "-%d.%d", pick(50), pick(100)); // -3.25
      else
        std::snprintf(buf, sizeof buf, "%d.%07d", pick(100), pick(10000000)); // 33.3333333
      in.narrow.emplace_back(buf);
      in.wide.push_back(ht::hstring::FromUtf8(buf));
      in.chars += in.narrow.back().size();
    }
    // Within seven fraction digits the readers agree exactly.
    for (size_t i = 0; i < in.narrow.size(); ++i)
      if (ht::iStrtoFloat(in.wide[i]) != std::strtod(in.narrow[i].c_str(), nullptr)) {
        std::fprintf(stderr, "mismatch on %s\n", in.narrow[i].c_str());
        std::abort();
      }
    return in;
  }();
  return inputs;
}

void Finish(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(Inputs().narrow.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(Inputs().chars));
}

void BM_iStrtoFloat(benchmark::State& state) {
  const auto& in = Inputs();
  for (auto _ : state) {
    double sum = 0;
    for (const auto& s : in.wide)
      sum += ht::iStrtoFloat(s);
    benchmark::DoNotOptimize(sum);
  }
  Finish(state);
}

void BM_iStrtoFloat_8bit(benchmark::State& state) {
  const auto& in = Inputs();
  for (auto _ : state) {
    double sum = 0;
    for (const auto& s : in.narrow)
      sum += ht::iStrtoFloat(std::string_view(s));
    benchmark::DoNotOptimize(sum);
  }
  Finish(state);
}

void BM_strtod(benchmark::State& state) {
  const auto& in = Inputs();
  for (auto _ : state) {
    double sum = 0;
    for (const auto& s : in.narrow)
      sum += std::strtod(s.c_str(), nullptr);
    benchmark::DoNotOptimize(sum);
  }
  Finish(state);
}

void BM_from_chars(benchmark::State& state) {
  const auto& in = Inputs();
  for (auto _ : state) {
    double sum = 0;
    for (const auto& s : in.narrow) {
      double v = 0;
      std::from_chars(s.data(), s.data() + s.size(), v);
      sum += v;
    }
    benchmark::DoNotOptimize(sum);
  }
  Finish(state);
}

BENCHMARK(BM_iStrtoFloat);
BENCHMARK(BM_iStrtoFloat_8bit);
BENCHMARK(BM_strtod);
BENCHMARK(BM_from_chars);

// Keeps each run's CPU time per iteration (the machine may be shared) for the closing comparison.
class TRatioReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs)
      if (r.run_type == Run::RT_Iteration)
        Times[r.benchmark_name()] = r.GetAdjustedCPUTime();
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> Times;
};

} // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  TRatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  auto base = reporter.Times.find("BM_iStrtoFloat");
  if (base != reporter.Times.end() && base->second > 0) {
    std::printf("\nTime relative to iStrtoFloat (UTF-16), above 1 = iStrtoFloat is faster:\n");
    for (const auto& [name, time] : reporter.Times)
      if (name != base->first)
        std::printf("  %-22s %.2fx\n", name.c_str(), time / base->second);
  }
  benchmark::Shutdown();
  return 0;
}
