// TFastString appending against std::u16string += and std::ostringstream.
//
// Each iteration appends kItems pieces to a builder that is refilled in every
// iteration (ClearandLeaveSpace, clear(), str("")), the way a serialiser
// reuses its writer. MixedBuild instead starts from a new object each time
// and ends with the flat string (GetAsString, str()). Items/s counts append
// calls; bytes/s the UTF-16 text built. The summary at the end prints the
// builder's speed relative to each peer from the same run.
#include "htcore/foundation/fast_string.h"

#include <benchmark/benchmark.h>
#include <charconv>
#include <cstdio>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr int kItems = 20000;
// Refilled builders keep one head chunk that holds a whole iteration's text;
// fresh ones use a serialiser's usual chunk size.
constexpr int kReuse = 1 << 20;
constexpr int kChunk = 65535;
const std::u16string_view kWords[8] = {u"a", u"div", u"span", u"td", u"class", u"p", u"li", u"href"};
const std::string_view kWords8[8] = {"a", "div", "span", "td", "class", "p", "li", "href"};
const ht::hstring kClasses[4] = {u"odd", u"even", u"header-cell", u"x"};

template <class F> void Run(benchmark::State& state, int appends_per_item, F build) {
  int64_t units = 0;
  for (auto _ : state) {
    units = build();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kItems * appends_per_item);
  state.SetBytesProcessed(state.iterations() * units * 2);
}

void AppendInt(std::u16string& s, int64_t v) {
  char buf[24];
  char* e = std::to_chars(buf, buf + sizeof buf, v).ptr;
  char16_t w[24];
  for (char* p = buf; p < e; ++p)
    w[p - buf] = static_cast<char16_t>(*p);
  s.append(w, static_cast<size_t>(e - buf));
}

void AppendFixed(std::u16string& s, double v) {
  char buf[48];
  char* e = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, 2).ptr;
  char16_t w[48];
  for (char* p = buf; p < e; ++p)
    w[p - buf] = static_cast<char16_t>(*p);
  s.append(w, static_cast<size_t>(e - buf));
}

double Value(int i) { return (i % 1000) * 0.37 - 50.0; }

// --- Single characters ---

void Chars_TFastString(benchmark::State& st) {
  ht::TFastString fs(kReuse);
  Run(st, 1, [&] {
    fs.ClearandLeaveSpace();
    for (int i = 0; i < kItems; ++i)
      fs.AddChar(static_cast<char16_t>(u'a' + (i & 15)));
    return static_cast<int64_t>(fs.GetTotalLen());
  });
}
void Chars_u16string(benchmark::State& st) {
  std::u16string s;
  Run(st, 1, [&] {
    s.clear();
    for (int i = 0; i < kItems; ++i)
      s += static_cast<char16_t>(u'a' + (i & 15));
    benchmark::DoNotOptimize(s.data());
    return static_cast<int64_t>(s.size());
  });
}
void Chars_ostringstream(benchmark::State& st) {
  std::ostringstream os;
  Run(st, 1, [&] {
    os.seekp(0);
    for (int i = 0; i < kItems; ++i)
      os << static_cast<char>('a' + (i & 15));
    return static_cast<int64_t>(os.tellp());
  });
}

// --- Short strings ---

void Strings_TFastString(benchmark::State& st) {
  ht::TFastString fs(kReuse);
  Run(st, 1, [&] {
    fs.ClearandLeaveSpace();
    for (int i = 0; i < kItems; ++i)
      fs.Add(kWords[i & 7]);
    return static_cast<int64_t>(fs.GetTotalLen());
  });
}
void Strings_u16string(benchmark::State& st) {
  std::u16string s;
  Run(st, 1, [&] {
    s.clear();
    for (int i = 0; i < kItems; ++i)
      s += kWords[i & 7];
    benchmark::DoNotOptimize(s.data());
    return static_cast<int64_t>(s.size());
  });
}
void Strings_ostringstream(benchmark::State& st) {
  std::ostringstream os;
  Run(st, 1, [&] {
    os.seekp(0);
    for (int i = 0; i < kItems; ++i)
      os << kWords8[i & 7];
    return static_cast<int64_t>(os.tellp());
  });
}

// --- Integers ---

void Ints_TFastString(benchmark::State& st) {
  ht::TFastString fs(kReuse);
  Run(st, 1, [&] {
    fs.ClearandLeaveSpace();
    for (int i = 0; i < kItems; ++i)
      fs.Add(static_cast<int64_t>(i * 37 - 5000));
    return static_cast<int64_t>(fs.GetTotalLen());
  });
}
void Ints_u16string(benchmark::State& st) {
  std::u16string s;
  Run(st, 1, [&] {
    s.clear();
    for (int i = 0; i < kItems; ++i)
      AppendInt(s, i * 37 - 5000);
    benchmark::DoNotOptimize(s.data());
    return static_cast<int64_t>(s.size());
  });
}
void Ints_ostringstream(benchmark::State& st) {
  std::ostringstream os;
  Run(st, 1, [&] {
    os.seekp(0);
    for (int i = 0; i < kItems; ++i)
      os << (i * 37 - 5000);
    return static_cast<int64_t>(os.tellp());
  });
}

// --- Floats, two places ---

void Floats_TFastString(benchmark::State& st) {
  ht::TFastString fs(kReuse);
  Run(st, 1, [&] {
    fs.ClearandLeaveSpace();
    for (int i = 0; i < kItems; ++i)
      fs.Add(Value(i), 2, true);
    return static_cast<int64_t>(fs.GetTotalLen());
  });
}
void Floats_u16string(benchmark::State& st) {
  std::u16string s;
  Run(st, 1, [&] {
    s.clear();
    for (int i = 0; i < kItems; ++i)
      AppendFixed(s, Value(i));
    benchmark::DoNotOptimize(s.data());
    return static_cast<int64_t>(s.size());
  });
}
void Floats_ostringstream(benchmark::State& st) {
  std::ostringstream os;
  os << std::fixed << std::setprecision(2);
  Run(st, 1, [&] {
    os.seekp(0);
    for (int i = 0; i < kItems; ++i)
      os << Value(i);
    return static_cast<int64_t>(os.tellp());
  });
}

// --- Mixed small appends, shaped like a serialiser writing <td class="x">12</td> ---

constexpr int kMixedAppends = 10;

void MixedItems(ht::TFastString& fs) {
  for (int i = 0; i < kItems; ++i) {
    fs.AddChar(u'<');
    fs.Add(kWords[i & 7]);
    fs.Add(u" class=\"");
    fs.Add(kClasses[i & 3]);
    fs.AddChar(u'"');
    fs.AddChar(u'>');
    fs.Add(static_cast<int64_t>(i & 1023));
    fs.Add2Char(u'<', u'/');
    fs.Add(kWords[i & 7]);
    fs.AddChar(u'>');
  }
}

void MixedItems(std::u16string& s) {
  for (int i = 0; i < kItems; ++i) {
    s += u'<';
    s += kWords[i & 7];
    s += u" class=\"";
    s.append(kClasses[i & 3].c_str(), kClasses[i & 3].size());
    s += u'"';
    s += u'>';
    AppendInt(s, i & 1023);
    s += u"</";
    s += kWords[i & 7];
    s += u'>';
  }
}

const std::string kClasses8[4] = {"odd", "even", "header-cell", "x"};

void MixedItems(std::ostringstream& os) {
  for (int i = 0; i < kItems; ++i)
    os << '<' << kWords8[i & 7] << " class=\"" << kClasses8[i & 3] << '"' << '>' << (i & 1023) << "</"
       << kWords8[i & 7] << '>';
}

void Mixed_TFastString(benchmark::State& st) {
  ht::TFastString fs(kReuse);
  Run(st, kMixedAppends, [&] {
    fs.ClearandLeaveSpace();
    MixedItems(fs);
    return static_cast<int64_t>(fs.GetTotalLen());
  });
}
void Mixed_u16string(benchmark::State& st) {
  std::u16string s;
  Run(st, kMixedAppends, [&] {
    s.clear();
    MixedItems(s);
    benchmark::DoNotOptimize(s.data());
    return static_cast<int64_t>(s.size());
  });
}
void Mixed_ostringstream(benchmark::State& st) {
  std::ostringstream os;
  Run(st, kMixedAppends, [&] {
    os.seekp(0);
    MixedItems(os);
    return static_cast<int64_t>(os.tellp());
  });
}

// New objects each time, ending with the flat text.
void MixedBuild_TFastString(benchmark::State& st) {
  Run(st, kMixedAppends, [&] {
    ht::TFastString fs(kChunk);
    MixedItems(fs);
    return static_cast<int64_t>(fs.GetAsString().size());
  });
}
void MixedBuild_u16string(benchmark::State& st) {
  Run(st, kMixedAppends, [&] {
    std::u16string s;
    MixedItems(s);
    benchmark::DoNotOptimize(s.data());
    return static_cast<int64_t>(s.size());
  });
}
void MixedBuild_ostringstream(benchmark::State& st) {
  Run(st, kMixedAppends, [&] {
    std::ostringstream os;
    MixedItems(os);
    return static_cast<int64_t>(os.str().size());
  });
}
BENCHMARK(Chars_TFastString);
BENCHMARK(Chars_u16string);
BENCHMARK(Chars_ostringstream);
BENCHMARK(Strings_TFastString);
BENCHMARK(Strings_u16string);
BENCHMARK(Strings_ostringstream);
BENCHMARK(Ints_TFastString);
BENCHMARK(Ints_u16string);
BENCHMARK(Ints_ostringstream);
BENCHMARK(Floats_TFastString);
BENCHMARK(Floats_u16string);
BENCHMARK(Floats_ostringstream);
BENCHMARK(Mixed_TFastString);
BENCHMARK(Mixed_u16string);
BENCHMARK(Mixed_ostringstream);
BENCHMARK(MixedBuild_TFastString);
BENCHMARK(MixedBuild_u16string);
BENCHMARK(MixedBuild_ostringstream);

// Collects items/s per benchmark and prints the builder's ratio to each peer.
class TRatioReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    // With --benchmark_repetitions the median stands for the benchmark.
    for (const Run& r : runs) {
      if (!r.counters.count("items_per_second"))
        continue;
      double v = r.counters.at("items_per_second").value;
      if (r.run_type == Run::RT_Aggregate && r.aggregate_name == "median")
        medians_[r.run_name.function_name] = v;
      else if (r.run_type == Run::RT_Iteration)
        rates_[r.run_name.function_name] = v;
    }
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\nTFastString speed relative to the peer (same run):\n");
    for (const char* w : {"Chars", "Strings", "Ints", "Floats", "Mixed", "MixedBuild"}) {
      std::string base(w);
      auto rate = [&](const char* peer) {
        std::string name = base + "_" + peer;
        auto m = medians_.find(name);
        if (m != medians_.end())
          return m->second;
        auto it = rates_.find(name);
        return it == rates_.end() ? 0.0 : it->second;
      };
      double fs = rate("TFastString"), u16 = rate("u16string"), os = rate("ostringstream");
      if (fs == 0)
        continue;
      std::printf("  %-10s vs u16string: %5.2fx   vs ostringstream: %5.2fx\n", w, u16 > 0 ? fs / u16 : 0.0,
                  os > 0 ? fs / os : 0.0);
    }
  }

private:
  std::map<std::string, double> rates_;
  std::map<std::string, double> medians_;
};

} // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  TRatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
