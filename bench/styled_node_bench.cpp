// The styled node's share of building a document: a page with style and
// presentational attributes parsed into TStyledHTMLNode against plain
// THtmlNode (x_plain: plain time / styled time) and, with HTCORE_PEERS,
// libxml2's HTML tree (x_libxml2); then the own sheets of all its elements,
// and inline edits of one element, in operations per second.
#include "htcore/document/html_node.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/styled_node.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include "libxml2_html.h"

#include <libxml/HTMLparser.h>
#include <libxml/tree.h>
#endif

using ht::operator""_hs;

namespace {

std::string make_page(int rows) {
  std::string s = "<!DOCTYPE html><html><head><title>Bench</title></head><body bgcolor=white text=black>\n";
  for (int i = 0; i < rows; ++i) {
    std::string n = std::to_string(i);
    s += "<div class=\"row r" + std::to_string(i % 7) + "\" id=row" + n + " align=center style=\"margin: " +
         std::to_string(i % 5) + "px 2px; color: #333\"><table width=\"100%\" bgcolor=#eee><tr><td valign=top "
         "width=50 nowrap>" + n + "</td><td align=right height=20><font size=" + std::to_string(1 + i % 7) +
         " face=Arial color=red>Item " + n + "</font></td></tr></table><p style=\"padding: 1em\">Text with "
         "<b>bold</b> and <span style=\"font-weight: bold; background: url(a.png) no-repeat\">span</span>.</p>"
         "</div>\n";
  }
  return s + "</body></html>\n";
}

const std::string& page() {
  static const std::string p = make_page(2000);
  return p;
}

double g_peer_seconds = 0, g_plain_seconds = 0; // per iteration

double elapsed(std::chrono::steady_clock::time_point Start, const benchmark::State& State) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count() /
         static_cast<double>(State.iterations());
}

#ifdef HTCORE_PEERS
void BM_Libxml2HtmlTree(benchmark::State& state) { g_peer_seconds = Libxml2HtmlTreeLoop(state, page()); }
BENCHMARK(BM_Libxml2HtmlTree)->Unit(benchmark::kMillisecond);
#endif

void BM_PlainNodeParse(benchmark::State& state) {
  ht::hstring text = ht::Utf8ToHString(page());
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    ht::THtmlNode doc;
    doc.Parse(text, true);
    benchmark::DoNotOptimize(doc.FNodes);
  }
  g_plain_seconds = elapsed(start, state);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(page().size()));
}
BENCHMARK(BM_PlainNodeParse)->Unit(benchmark::kMillisecond);

void BM_StyledNodeParse(benchmark::State& state) {
  ht::hstring text = ht::Utf8ToHString(page());
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    ht::TStyledHTMLNode doc;
    doc.Parse(text, true);
    benchmark::DoNotOptimize(doc.FNodes);
  }
  double seconds = elapsed(start, state);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(page().size()));
  if (g_plain_seconds > 0)
    state.counters["x_plain"] = g_plain_seconds / seconds;
  if (g_peer_seconds > 0)
    state.counters["x_libxml2"] = g_peer_seconds / seconds; // above 1: faster than the peer
}
BENCHMARK(BM_StyledNodeParse)->Unit(benchmark::kMillisecond);

// The sheets the cascade reads: every element's style and presentational
// attributes parsed into its own sheet.
void BM_OwnSheets(benchmark::State& state) {
  ht::TStyledHTMLNode doc;
  doc.Parse(ht::Utf8ToHString(page()), true);
  std::vector<ht::TStyledHTMLNode*> elements;
  for (ht::THtNode* n = doc.FirstChild(); n; n = n->NextNode())
    if (auto* e = static_cast<ht::TStyledHTMLNode*>(n); !e->IsText())
      elements.push_back(e);
  int64_t sheets = 0;
  for (auto _ : state) {
    state.PauseTiming();
    for (ht::TStyledHTMLNode* e : elements)
      e->ClearSelfStyleSheet();
    state.ResumeTiming();
    sheets = 0;
    for (ht::TStyledHTMLNode* e : elements)
      sheets += e->PrepareSelfStyle() != nullptr;
  }
  state.counters["sheets"] = static_cast<double>(sheets);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * sheets);
}
BENCHMARK(BM_OwnSheets)->Unit(benchmark::kMillisecond);

// A script's edits of one element: one property in, one out.
void BM_InlineEdits(benchmark::State& state) {
  ht::TStyledHTMLNode doc;
  doc.Parse(u"<div style='margin: 1px; color: red; padding: 2px 3px'>x</div>"_hs);
  auto* div = static_cast<ht::TStyledHTMLNode*>(doc.FindNode(u"div"_hs));
  int i = 0;
  for (auto _ : state) {
    div->AddCSS(u"left: "_hs + ht::IntToStr(++i % 100) + u"px", state.range(0) != 0);
    div->ClearCSS(u"color"_hs, state.range(0) != 0);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * 2);
  state.counters["sections"] = static_cast<double>(div->SelfStyleSheet->fSections.size());
}
BENCHMARK(BM_InlineEdits)->Arg(0)->Arg(1)->ArgName("persist");

} // namespace

BENCHMARK_MAIN();
