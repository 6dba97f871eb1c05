// Measures and the property table.
//
// Measures: the lengths of real style sheets (every declaration value that
// starts with a number or calc(), from every *.css under bench/data and a few
// sheets Debian ships; a built-in list if there are none), resolved to pixels per second: from stored
// tokens (what the cascade does: Decode + GetFPixels, calc() included) and
// from attribute text (Parse + GetFPixels).
// Property lookups by name per second: CSSPropDictionary against
// std::unordered_map<std::u16string, row> built from the same names, with the
// key prepared in advance and built from a slice of the text per lookup (what
// a parser holds).
#include "htcore/style/css_properties.h"
#include "htcore/style/css_tokenizer.h"
#include "htcore/style/measure.h"
#include "rate_reporter.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

const char* const kSystemSheets[] = {
    "/usr/share/doc/python3/_static/basic.css",
    "/usr/share/doc/nodejs/api/assets/style.css",
    "/usr/share/gitweb/static/gitweb.css",
    "/usr/share/sgml/X11/xorg.css",
};

// Every *.css below bench/data (scripts/fetch_bench_data.sh), then sheets
// that Debian ships.
std::vector<std::string> SheetPaths() {
  std::vector<std::string> paths;
  std::error_code ec;
  for (auto it = std::filesystem::recursive_directory_iterator("bench/data", ec);
       !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
    if (it->path().extension() == ".css")
      paths.push_back(it->path().string());
  std::sort(paths.begin(), paths.end());
  for (const char* p : kSystemSheets)
    paths.push_back(p);
  return paths;
}

// Declaration values of the sheets that look like lengths.
const std::vector<std::u16string>& Values() {
  static const std::vector<std::u16string> values = [] {
    std::vector<std::u16string> v;
    for (const std::string& path : SheetPaths()) {
      std::ifstream f(path, std::ios::binary);
      if (!f)
        continue;
      std::stringstream ss;
      ss << f.rdbuf();
      const std::string css = ss.str();
      for (size_t colon = css.find(':'); colon != std::string::npos; colon = css.find(':', colon + 1)) {
        size_t b = colon + 1;
        while (b < css.size() && css[b] == ' ')
          ++b;
        size_t e = css.find_first_of(";}\n", b);
        if (e == std::string::npos || e - b > 80 || b >= css.size())
          continue;
        const char c = css[b];
        if ((c >= '0' && c <= '9') || c == '.' || c == '-' || css.compare(b, 5, "calc(") == 0)
          v.emplace_back(ht::hstring::FromUtf8(css.substr(b, e - b)).view());
      }
    }
    if (v.size() < 100)
      for (const char16_t* s : {u"12px", u"50%", u"1.5em", u"0", u"2rem", u"calc(100% - 2 * 8px)", u"10pt",
                                u"0.25rem 0.5rem", u"-1px", u"100vw", u"1in", u"calc(1.375rem + 1.5vw)"})
        for (int i = 0; i < 20; ++i)
          v.push_back(s);
    return v;
  }();
  return values;
}

struct TStyle : ht::TMeasureContext {
  TStyle() { IntFontSize = 16; }
  bool HasParentElement() const override { return true; }
  float RootFontSize() const override { return 16; }
  ht::TRectF DrawRect() const override { return {0, 0, 1280, 800}; }
};

void BM_MeasureFromTokens(benchmark::State& state) {
  std::vector<ht::TCSSTokens> stored;
  for (const std::u16string& v : Values()) {
    stored.push_back(ht::CSSValueTokens(ht::hstring(v)));
  }
  TStyle style;
  float base = 960;
  float sum = 0;
  for (auto _ : state) {
    for (ht::TCSSTokens& toks : stored) {
      ht::TCSSTokenSequence seq;
      seq.Init(&toks);
      ht::TMeasure m;
      m.Init(&style);
      m.Parent = &base;
      m.Decode(seq);
      sum += m.GetFPixels();
    }
  }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * stored.size()));
  state.counters["values"] = static_cast<double>(stored.size());
}
BENCHMARK(BM_MeasureFromTokens);

void BM_MeasureFromText(benchmark::State& state) {
  std::vector<ht::hstring> texts;
  for (const std::u16string& v : Values())
    texts.emplace_back(v);
  TStyle style;
  float base = 960;
  float sum = 0;
  for (auto _ : state) {
    for (const ht::hstring& t : texts) {
      ht::TMeasure m;
      m.Init(&style);
      m.Parent = &base;
      m.Parse(t);
      sum += m.GetFPixels();
    }
  }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_MeasureFromText);

// Every row's name, in one text, probed in a shuffled order.
struct TNames {
  std::u16string text;
  std::vector<std::pair<size_t, size_t>> slices;
  std::vector<std::u16string> prepared;
  std::unordered_map<std::u16string, const ht::TCSSPropRec*> map;
};

const TNames& Names() {
  static const TNames names = [] {
    TNames n;
    ht::CSSPropDictionary().ForEach([&](ht::TCSSPropRec* r) {
      n.slices.emplace_back(n.text.size(), r->Name.size());
      n.text += r->Name.view();
      n.map.emplace(std::u16string(r->Name.view()), r);
    });
    std::mt19937 rng(42);
    std::vector<std::pair<size_t, size_t>> probes;
    for (int i = 0; i < 20; ++i)
      probes.insert(probes.end(), n.slices.begin(), n.slices.end());
    std::shuffle(probes.begin(), probes.end(), rng);
    n.slices = probes;
    for (auto [o, l] : n.slices)
      n.prepared.push_back(n.text.substr(o, l));
    return n;
  }();
  return names;
}

void BM_PropLookupHtcore(benchmark::State& state) {
  const TNames& n = Names();
  const ht::TCSSPropDictionary& dict = ht::CSSPropDictionary();
  size_t hits = 0;
  for (auto _ : state)
    for (auto [o, l] : n.slices)
      hits += dict.Find(std::u16string_view(n.text).substr(o, l)) != nullptr;
  benchmark::DoNotOptimize(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * n.slices.size()));
}
BENCHMARK(BM_PropLookupHtcore);

void BM_PropLookupHtcoreFolding(benchmark::State& state) {
  const TNames& n = Names();
  size_t hits = 0;
  for (auto _ : state)
    for (auto [o, l] : n.slices)
      hits += ht::CSSPropByName(std::u16string_view(n.text).substr(o, l)) != nullptr;
  benchmark::DoNotOptimize(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * n.slices.size()));
}
BENCHMARK(BM_PropLookupHtcoreFolding);

void BM_PropLookupStdPrepared(benchmark::State& state) {
  const TNames& n = Names();
  size_t hits = 0;
  for (auto _ : state)
    for (const std::u16string& k : n.prepared)
      hits += n.map.find(k) != n.map.end();
  benchmark::DoNotOptimize(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * n.prepared.size()));
}
BENCHMARK(BM_PropLookupStdPrepared);

void BM_PropLookupStdFromSlice(benchmark::State& state) {
  const TNames& n = Names();
  size_t hits = 0;
  for (auto _ : state)
    for (auto [o, l] : n.slices)
      hits += n.map.find(n.text.substr(o, l)) != n.map.end();
  benchmark::DoNotOptimize(hits);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * n.slices.size()));
}
BENCHMARK(BM_PropLookupStdFromSlice);

} // namespace

int main(int argc, char** argv) {
  bench::TRateReporter reporter;
  if (!bench::RunWithRates(argc, argv, reporter))
    return 1;
  auto rate = [&](const char* name) { return reporter.Rate(name); };
  std::printf("\n%zu length values from real sheets\n", Values().size());
  std::printf("%-40s %12.2f M/s\n", "measures from stored tokens", rate("BM_MeasureFromTokens") / 1e6);
  std::printf("%-40s %12.2f M/s\n", "measures from attribute text", rate("BM_MeasureFromText") / 1e6);
  const double ht = rate("BM_PropLookupHtcore");
  std::printf("%-40s %12.2f M/s\n", "property by name (htcore)", ht / 1e6);
  std::printf("%-40s %12.2f M/s\n", "property by name, folding case (htcore)",
              rate("BM_PropLookupHtcoreFolding") / 1e6);
  for (const char* peer : {"BM_PropLookupStdPrepared", "BM_PropLookupStdFromSlice"}) {
    const double p = rate(peer);
    if (p > 0)
      std::printf("%-40s %12.2f M/s   htcore %.2fx\n", peer + 3, p / 1e6, ht / p);
  }
  return 0;
}
