// Style sheet parsing (MB/s) and selector matching (selector x element pairs
// per second), each against litehtml's CSS parser and element matching in the
// same run. Sheets: bootstrap.css and bootstrap.min.css (scripts/
// fetch_bench_data.sh puts them in bench/data), sheets Debian ships, and the
// user-agent sheet. Matching: every selector of bootstrap.css against the
// first elements of a real page.
#include "bench_inputs.h"
#include "htcore/foundation/hstring.h"
#include "htcore/style/css_sheet.h"
#include "style/default_sheets.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include "litehtml_container.h"
#endif

namespace {

using bench::TInput;

constexpr size_t kMatchElements = 400;
const char* const kPage = "/usr/share/doc/python3/python-policy.html";

std::vector<TInput>& sheets() {
  static std::vector<TInput> v = [] {
    auto in = bench::LoadInputs({"bench/data/bootstrap.css", "bench/data/bootstrap.min.css",
                                 "/usr/share/doc/nodejs/api/assets/style.css",
                                 "/usr/share/doc/python3/_static/basic.css",
                                 "/usr/share/gitweb/static/gitweb.css", "/usr/share/sgml/X11/xorg.css"},
                                "");
    in.pop_back(); // no generated sheet: the user-agent sheet stands in
    in.push_back({"user-agent", ht::hstring(ht::detail::kHTML4StyleSheetText).toUtf8()});
    return in;
  }();
  return v;
}

bench::TPeerTimer g_timer({"litehtml"});

void BM_Htcore(benchmark::State& state, const TInput* in) {
  g_timer.Run(state, *in, "htcore", [&] {
    ht::TCSSStyleSheet s;
    s.Parse(ht::hstring::FromUtf8(in->bytes));
    benchmark::DoNotOptimize(s.fSections.size());
  });
}

// Pairs per second of the last htcore and peer matching runs.
std::map<std::string, double> g_pairs;

// Counters of one matching run, shared by both sides; answers pairs per second.
double report_pairs(benchmark::State& state, std::chrono::steady_clock::time_point start, size_t elements,
                    size_t selectors, int64_t matches) {
  double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  double pairs = static_cast<double>(state.iterations()) * static_cast<double>(elements * selectors);
  state.SetItemsProcessed(static_cast<int64_t>(pairs));
  state.counters["matches"] = static_cast<double>(matches) / static_cast<double>(state.iterations());
  state.counters["pairs"] = static_cast<double>(elements * selectors);
  return pairs / secs;
}

std::string page_bytes() {
  auto in = bench::LoadInputs({kPage}, "");
  if (in.size() > 1)
    return in[0].bytes;
  std::string s = "<html><body>"; // no page installed: a generated one in bootstrap's terms
  for (int i = 0; i < 200; ++i)
    s += "<div class='container'><div class='row'><div class='col-md-6 card'><p class='text-muted'>x "
         "<a class='btn btn-primary' href='#'>go</a></p></div></div></div>";
  return s + "</body></html>";
}

const std::string& bootstrap() {
  for (const TInput& in : sheets())
    if (in.name == "bootstrap.css")
      return in.bytes;
  return sheets()[0].bytes;
}

void BM_HtcoreMatch(benchmark::State& state) {
  ht::TCSSElement doc;
  std::string page = page_bytes();
  doc.ParseBytes(page.data(), page.size());
  std::vector<const ht::TCSSElement*> elements;
  for (ht::THtNode* n = doc.FirstChild(); n && elements.size() < kMatchElements; n = n->NextNode())
    if (!n->FTag.empty() && n->FTag[0] != u'!' && n->FTag[0] != u'?')
      elements.push_back(static_cast<const ht::TCSSElement*>(n));
  ht::TCSSStyleSheet sheet;
  sheet.Parse(ht::hstring::FromUtf8(bootstrap()));
  std::vector<const ht::TCSSSelector*> selectors;
  for (const auto& sec : sheet.fSections)
    for (const ht::TCSSSelector* s : sec->Selectors)
      selectors.push_back(s);
  int64_t matches = 0;
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state)
    for (const ht::TCSSElement* e : elements)
      for (const ht::TCSSSelector* s : selectors)
        matches += ht::TestSelector(e, s, 0);
  g_pairs["htcore"] = report_pairs(state, start, elements.size(), selectors.size(), matches);
  if (g_pairs.count("litehtml"))
    state.counters["x_litehtml"] = g_pairs["htcore"] / g_pairs["litehtml"];
}

#ifdef HTCORE_PEERS

bench::TNullContainer g_container;
litehtml::context g_context;

litehtml::document::ptr empty_doc() {
  static litehtml::document::ptr d =
      litehtml::document::createFromUTF8("<html></html>", &g_container, &g_context);
  return d;
}

void BM_Litehtml(benchmark::State& state, const TInput* in) {
  litehtml::document::ptr doc = empty_doc();
  g_timer.Run(state, *in, "litehtml", [&] {
    litehtml::css c;
    c.parse_stylesheet(in->bytes.c_str(), "", doc, nullptr);
    benchmark::DoNotOptimize(c.selectors().size());
  });
}

void collect(const litehtml::element::ptr& el, std::vector<litehtml::element::ptr>& out) {
  for (size_t i = 0; i < el->get_children_count() && out.size() < kMatchElements; ++i) {
    litehtml::element::ptr c = el->get_child(static_cast<int>(i));
    const char* tag = c->get_tagName();
    if (tag && *tag)
      out.push_back(c);
    collect(c, out);
  }
}

void BM_LitehtmlMatch(benchmark::State& state) {
  std::string page = page_bytes();
  litehtml::document::ptr doc = litehtml::document::createFromUTF8(page.c_str(), &g_container, &g_context);
  std::vector<litehtml::element::ptr> elements;
  collect(doc->root(), elements);
  litehtml::css c;
  c.parse_stylesheet(bootstrap().c_str(), "", doc, nullptr);
  const litehtml::css_selector::vector& selectors = c.selectors();
  int64_t matches = 0;
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state)
    for (const auto& e : elements)
      for (const auto& s : selectors)
        matches += e->select(*s) != 0;
  g_pairs["litehtml"] = report_pairs(state, start, elements.size(), selectors.size(), matches);
}

#endif

} // namespace

int main(int argc, char** argv) {
  for (const TInput& in : sheets()) {
#ifdef HTCORE_PEERS
    benchmark::RegisterBenchmark(("Litehtml/" + in.name).c_str(), BM_Litehtml, &in)
        ->Unit(benchmark::kMillisecond);
#endif
    benchmark::RegisterBenchmark(("Htcore/" + in.name).c_str(), BM_Htcore, &in)
        ->Unit(benchmark::kMillisecond);
  }
#ifdef HTCORE_PEERS
  benchmark::RegisterBenchmark("LitehtmlMatch", BM_LitehtmlMatch)->Unit(benchmark::kMillisecond);
#endif
  benchmark::RegisterBenchmark("HtcoreMatch", BM_HtcoreMatch)->Unit(benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::printf("\n%-28s %8s\n", "parse", "x litehtml");
  for (const auto& [name, ratio] : g_timer.Ratios())
    std::printf("%-28s %8.2f\n", name.c_str(), ratio);
  if (g_pairs.count("litehtml") && g_pairs.count("htcore"))
    std::printf("%-28s %8.2f  (%.1f vs %.1f M pairs/s)\n", "matching",
                g_pairs["htcore"] / g_pairs["litehtml"], g_pairs["htcore"] / 1e6, g_pairs["litehtml"] / 1e6);
  return 0;
}
