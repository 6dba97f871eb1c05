// BlurRow against a plain float blur over the same kernel, one 1920-pixel row;
// FastBlur (the two-pass box blur of bitmaps) against a box blur written the
// straightforward way, a 1024 x 768 image. The summary at the end prints how
// many times faster each is per radius.
#include "../src/foundation/blur_internal.h"
#include "../src/graphics/fast_blur_internal.h"
#include "htcore/foundation/blur.h"
#include "htcore/graphics/bitmap_data.h"

#include <algorithm>

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 1920;

std::vector<uint32_t> random_row() {
  std::mt19937 rng(42);
  std::vector<uint32_t> row(kWidth);
  for (auto& p : row)
    p = rng();
  return row;
}

// What one writes first: per pixel, per channel, float weights, clamped reads.
void float_blur(const uint32_t* src, int width, const ht::TKernel& k, uint32_t* dst) {
  for (int i = 0; i < width; ++i) {
    float sum[4] = {0, 0, 0, 0};
    for (int j = -k.Size; j <= k.Size; ++j) {
      int at = i + j < 0 ? 0 : i + j >= width ? width - 1 : i + j;
      uint32_t px = src[at];
      float w = k.Weight(j);
      for (int ch = 0; ch < 4; ++ch)
        sum[ch] += w * static_cast<float>(px >> (8 * ch) & 0xFF);
    }
    uint32_t out = 0;
    for (int ch = 0; ch < 4; ++ch) {
      float v = sum[ch] + 0.5f;
      out |= static_cast<uint32_t>(v >= 255 ? 255 : v) << (8 * ch);
    }
    dst[i] = out;
  }
}

ht::TKernel kernel_for(const benchmark::State& state) {
  ht::TKernel k;
  ht::MakeGaussianKernel(k, state.range(0) / 10.0, 1, 255);
  return k;
}

void BM_BlurRow(benchmark::State& state) {
  ht::TKernel k = kernel_for(state);
  std::vector<uint32_t> src = random_row(), dst(kWidth);
  for (auto _ : state) {
    ht::BlurRow(src.data(), kWidth, k, dst.data(), 0, kWidth, -1, -1);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kWidth * 4);
  state.counters["taps"] = 2 * k.Size + 1;
}

// The loops used where the processor has no AVX2.
void BM_BlurRowPortable(benchmark::State& state) {
  ht::detail::g_blur_allow_vector = false;
  BM_BlurRow(state);
  ht::detail::g_blur_allow_vector = true;
}

void BM_FloatBlur(benchmark::State& state) {
  ht::TKernel k = kernel_for(state);
  std::vector<uint32_t> src = random_row(), dst(kWidth);
  for (auto _ : state) {
    float_blur(src.data(), kWidth, k, dst.data());
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kWidth * 4);
  state.counters["taps"] = 2 * k.Size + 1;
}

// Radius times ten: 1.0, 3.0, 8.0 and 20.0.
BENCHMARK(BM_BlurRow)->Arg(10)->Arg(30)->Arg(80)->Arg(200);
BENCHMARK(BM_BlurRowPortable)->Arg(10)->Arg(30)->Arg(80)->Arg(200);
BENCHMARK(BM_FloatBlur)->Arg(10)->Arg(30)->Arg(80)->Arg(200);

constexpr int kImageW = 1024, kImageH = 768;

std::vector<uint32_t> random_image() {
  std::mt19937 rng(7);
  std::vector<uint32_t> img(kImageW * kImageH);
  for (auto& p : img)
    p = rng();
  return img;
}

// The same blur as FastBlur, as one writes it first: for every pixel a fresh
// sum over its window, clamped reads, rows then columns through a copy, twice.
void box_blur_reference(std::vector<uint32_t>& img, int w, int h, int r) {
  std::vector<uint32_t> tmp(img.size());
  auto pass = [&](const std::vector<uint32_t>& src, std::vector<uint32_t>& dst, bool rows) {
    int n = rows ? w : h, lines = rows ? h : w;
    for (int l = 0; l < lines; ++l)
      for (int i = 0; i < n; ++i) {
        uint32_t sum[4] = {0, 0, 0, 0};
        for (int j = i - r; j <= i + r; ++j) {
          int at = std::clamp(j, 0, n - 1);
          uint32_t px = rows ? src[l * w + at] : src[at * w + l];
          for (int ch = 0; ch < 4; ++ch)
            sum[ch] += px >> (8 * ch) & 0xFF;
        }
        uint32_t out = 0;
        for (int ch = 0; ch < 4; ++ch)
          out |= (sum[ch] + r) / (2 * r + 1) << (8 * ch);
        (rows ? dst[l * w + i] : dst[i * w + l]) = out;
      }
  };
  for (int k = 0; k < 2; ++k) {
    pass(img, tmp, true);
    pass(tmp, img, false);
  }
}

void BM_FastBlur(benchmark::State& state) {
  std::vector<uint32_t> img = random_image();
  int r = static_cast<int>(state.range(0));
  for (auto _ : state) {
    ht::FastBlur(img.data(), kImageW, kImageH, r, {0, 0, kImageW, kImageH}, kImageW * 4);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kImageW * kImageH);
}

void BM_FastBlurPortable(benchmark::State& state) {
  ht::detail::g_fast_blur_allow_vector = false;
  BM_FastBlur(state);
  ht::detail::g_fast_blur_allow_vector = true;
}

void BM_BoxBlurReference(benchmark::State& state) {
  std::vector<uint32_t> img = random_image();
  int r = static_cast<int>(state.range(0));
  for (auto _ : state) {
    box_blur_reference(img, kImageW, kImageH, r);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kImageW * kImageH);
}

BENCHMARK(BM_FastBlur)->Arg(2)->Arg(8)->Arg(32)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FastBlurPortable)->Arg(2)->Arg(8)->Arg(32)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BoxBlurReference)->Arg(2)->Arg(8)->Arg(32)->Unit(benchmark::kMillisecond);

// Console output plus a remembered time per benchmark, for the ratio table.
class RatioReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs)
      if (!r.error_occurred && r.run_type == Run::RT_Iteration)
        times[r.benchmark_name()] = r.GetAdjustedCPUTime();
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> times;
};

} // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\nSpeed-up over the float blur (CPU time):\n  radius   BlurRow  portable\n");
  for (int arg : {10, 30, 80, 200}) {
    auto time = [&](const char* name) {
      auto it = reporter.times.find(name + std::string("/") + std::to_string(arg));
      return it == reporter.times.end() ? 0.0 : it->second;
    };
    double ref = time("BM_FloatBlur"), fast = time("BM_BlurRow"), portable = time("BM_BlurRowPortable");
    if (ref > 0 && fast > 0 && portable > 0)
      std::printf("  %6.1f  %7.2fx  %7.2fx\n", arg / 10.0, ref / fast, ref / portable);
  }
  std::printf("\nFastBlur over the plain box blur, %d x %d (MPixels/s from CPU time):\n"
              "  radius   SSE4.1  portable  reference   SSE4.1  portable\n",
              kImageW, kImageH);
  for (int arg : {2, 8, 32}) {
    auto mpix = [&](const char* name) {
      auto it = reporter.times.find(name + std::string("/") + std::to_string(arg));
      // Adjusted times are in the benchmark's unit, milliseconds here.
      return it == reporter.times.end() || it->second <= 0 ? 0.0 : kImageW * kImageH / (it->second * 1e3);
    };
    double fast = mpix("BM_FastBlur"), portable = mpix("BM_FastBlurPortable"), ref = mpix("BM_BoxBlurReference");
    if (fast > 0 && portable > 0 && ref > 0)
      std::printf("  %6d  %7.1f  %8.1f  %9.1f  %6.1fx  %7.1fx\n", arg, fast, portable, ref, fast / ref,
                  portable / ref);
  }
  benchmark::Shutdown();
  return 0;
}
