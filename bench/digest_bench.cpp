// CRC-32 against zlib's crc32, Base64 against a plain textbook coder, and MD5
// throughput for context. Prints MB/s per case and the ratio htcore / peer.
//
//   ./bench/digest_bench --benchmark_min_time=0.2
#include "htcore/foundation/base64.h"
#include "htcore/foundation/crc32.h"
#include "htcore/foundation/md5.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>
#include <zlib.h>

namespace ht::detail {
uint32_t UpdateCRC32Table(uint32_t crc, const uint8_t* p, size_t n) noexcept;
}

namespace {

ht::TBytes Random(size_t n) {
  std::mt19937 rng(1);
  ht::TBytes b(n);
  for (auto& x : b)
    x = static_cast<uint8_t>(rng());
  return b;
}

// The textbook coder: one table lookup per character, growing a string.
std::u16string RefEncode(const uint8_t* p, size_t n) {
  static const char* A = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::u16string out;
  out.reserve((n + 2) / 3 * 4);
  size_t i = 0;
  for (; i + 3 <= n; i += 3) {
    uint32_t v = uint32_t(p[i]) << 16 | uint32_t(p[i + 1]) << 8 | p[i + 2];
    out += A[v >> 18];
    out += A[(v >> 12) & 63];
    out += A[(v >> 6) & 63];
    out += A[v & 63];
  }
  if (i < n) {
    uint32_t v = uint32_t(p[i]) << 16 | (i + 1 < n ? uint32_t(p[i + 1]) << 8 : 0);
    out += A[v >> 18];
    out += A[(v >> 12) & 63];
    out += i + 1 < n ? A[(v >> 6) & 63] : '=';
    out += '=';
  }
  return out;
}

std::vector<uint8_t> RefDecode(const char16_t* s, size_t n) {
  static const auto table = [] {
    std::vector<int> t(256, -1);
    const char* A = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int i = 0; i < 64; ++i)
      t[static_cast<uint8_t>(A[i])] = i;
    return t;
  }();
  std::vector<uint8_t> out;
  out.reserve(n / 4 * 3);
  uint32_t acc = 0;
  int bits = 0;
  for (size_t i = 0; i < n; ++i) {
    char16_t c = s[i];
    if (c == '=')
      break;
    int v = c < 256 ? table[c] : -1;
    if (v < 0)
      continue;
    acc = acc << 6 | static_cast<uint32_t>(v);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      out.push_back(static_cast<uint8_t>(acc >> bits));
    }
  }
  return out;
}

void Crc(benchmark::State& st, int which) {
  ht::TBytes data = Random(static_cast<size_t>(st.range(0)));
  for (auto _ : st) {
    uint32_t r;
    if (which == 0)
      r = ht::CalcCRC32(data.data(), data.size());
    else if (which == 1)
      r = ht::detail::UpdateCRC32Table(0xFFFFFFFFu, data.data(), data.size());
    else
      r = ~static_cast<uint32_t>(crc32(0, data.data(), static_cast<uInt>(data.size())));
    benchmark::DoNotOptimize(r);
  }
  st.SetBytesProcessed(static_cast<int64_t>(st.iterations()) * st.range(0));
}

void Encode(benchmark::State& st, bool ours) {
  ht::TBytes data = Random(static_cast<size_t>(st.range(0)));
  for (auto _ : st) {
    if (ours)
      benchmark::DoNotOptimize(ht::Base64EncodeNoLF(data));
    else
      benchmark::DoNotOptimize(RefEncode(data.data(), data.size()));
  }
  st.SetBytesProcessed(static_cast<int64_t>(st.iterations()) * st.range(0));
}

void Decode(benchmark::State& st, bool ours) {
  ht::TBytes data = Random(static_cast<size_t>(st.range(0)));
  ht::hstring text = ht::Base64EncodeNoLF(data);
  for (auto _ : st) {
    if (ours)
      benchmark::DoNotOptimize(ht::Base64DecodetoBytes(text));
    else
      benchmark::DoNotOptimize(RefDecode(text.c_str(), text.size()));
  }
  st.SetBytesProcessed(static_cast<int64_t>(st.iterations()) * st.range(0));
}

void Md5(benchmark::State& st) {
  ht::TBytes data = Random(static_cast<size_t>(st.range(0)));
  for (auto _ : st)
    benchmark::DoNotOptimize(ht::MD5Hash(data));
  st.SetBytesProcessed(static_cast<int64_t>(st.iterations()) * st.range(0));
}

// Keeps each case's rate so the ratios can be printed after the run.
class RatioReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
      auto it = r.counters.find("bytes_per_second");
      if (r.run_type == Run::RT_Iteration && it != r.counters.end())
        Rates[r.benchmark_name()] = it->second.value;
    }
  }
  std::map<std::string, double> Rates;
};

} // namespace

int main(int argc, char** argv) {
  // The values must agree before the speeds mean anything: ours is zlib's, uncomplemented.
  ht::TBytes check = Random(100000);
  if (ht::CalcCRC32(check.data(), check.size()) != ~static_cast<uint32_t>(crc32(0, check.data(), 100000)) ||
      ht::Base64DecodetoBytes(ht::hstring(RefEncode(check.data(), check.size()))) != check) {
    std::fprintf(stderr, "results differ\n");
    return 1;
  }

  const std::vector<int64_t> crc_sizes = {64, 4096, 1 << 20};
  const std::vector<int64_t> b64_sizes = {48, 4096, 1 << 20};
  for (int64_t n : crc_sizes) {
    benchmark::RegisterBenchmark("CRC32/htcore", Crc, 0)->Arg(n);
    benchmark::RegisterBenchmark("CRC32/htcore-table", Crc, 1)->Arg(n);
    benchmark::RegisterBenchmark("CRC32/zlib", Crc, 2)->Arg(n);
  }
  for (int64_t n : b64_sizes) {
    benchmark::RegisterBenchmark("Base64Encode/htcore", Encode, true)->Arg(n);
    benchmark::RegisterBenchmark("Base64Encode/reference", Encode, false)->Arg(n);
    benchmark::RegisterBenchmark("Base64Decode/htcore", Decode, true)->Arg(n);
    benchmark::RegisterBenchmark("Base64Decode/reference", Decode, false)->Arg(n);
  }
  benchmark::RegisterBenchmark("MD5/htcore", Md5)->Arg(64)->Arg(1 << 20);

  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);

  struct {
    const char* ours;
    const char* peer;
    const std::vector<int64_t>* sizes;
  } pairs[] = {
      {"CRC32/htcore", "CRC32/zlib", &crc_sizes},
      {"CRC32/htcore-table", "CRC32/zlib", &crc_sizes},
      {"Base64Encode/htcore", "Base64Encode/reference", &b64_sizes},
      {"Base64Decode/htcore", "Base64Decode/reference", &b64_sizes},
  };
  std::printf("\n%-22s %-24s %9s %12s %12s %7s\n", "htcore", "peer", "bytes", "htcore MB/s", "peer MB/s",
              "ratio");
  for (auto& p : pairs)
    for (int64_t n : *p.sizes) {
      std::string a = std::string(p.ours) + "/" + std::to_string(n);
      std::string b = std::string(p.peer) + "/" + std::to_string(n);
      if (!reporter.Rates.count(a) || !reporter.Rates.count(b))
        continue;
      double ra = reporter.Rates[a] / 1e6, rb = reporter.Rates[b] / 1e6;
      std::printf("%-22s %-24s %9lld %12.0f %12.0f %7.2f\n", p.ours, p.peer, static_cast<long long>(n), ra,
                  rb, ra / rb);
    }
  return 0;
}
