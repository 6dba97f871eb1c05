// Tree building speed: THtmlNode::Parse over a generated page (repairs and
// all), and (with HTCORE_PEERS) libxml2's HTML parser building its own tree
// from the same page in UTF-8. Both include freeing the tree. The ratio is
// printed as a counter on the htcore run.
#include "htcore/document/html_node.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <string>

#ifdef HTCORE_PEERS
#include "libxml2_html.h"

#include <libxml/HTMLparser.h>
#include <libxml/tree.h>
#endif

namespace {

std::string make_page(int rows) {
  std::string s = "<!DOCTYPE html><html><head><meta charset=utf-8><title>Bench</title>"
                  "<style>td { padding: 2px } .x { color: red }</style></head><body>\n";
  for (int i = 0; i < rows; ++i) {
    s += "<div class=\"row r" + std::to_string(i % 7) + "\" id=row" + std::to_string(i) +
         "><a href=\"/items/" + std::to_string(i) + "?q=a&amp;b=c\" title='Item'>Item " + std::to_string(i) +
         "</a> <span data-x=1 hidden>caf\xC3\xA9 &nbsp;&lt;tag&gt; text, more text</span><br/>\n"
         "<!-- row " +
         std::to_string(i) +
         " --><p>Paragraph with <b>bold</b> and <i>italic</i> words &#x2014; end.<p>Second"
         "<ul><li>one<li>two</ul><table><tr><td>a<td>b</table></div>\n";
  }
  s += "<script>var a = 1 < 2 && 3 > 2;</script></body></html>\n";
  return s;
}

const std::string& page() {
  static const std::string p = make_page(3000);
  return p;
}

double g_peer_seconds = 0; // per iteration, from the peer run

#ifdef HTCORE_PEERS
void BM_Libxml2HtmlTree(benchmark::State& state) { g_peer_seconds = Libxml2HtmlTreeLoop(state, page()); }
BENCHMARK(BM_Libxml2HtmlTree)->Unit(benchmark::kMillisecond);
#endif

void BM_HtcoreParseTree(benchmark::State& state) {
  ht::hstring text = ht::Utf8ToHString(page());
  size_t nodes = 0;
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    ht::THtmlNode doc;
    doc.Parse(text, true);
    nodes = 0;
    for (ht::THtNode* n = &doc; n; n = n->NextNode())
      ++nodes;
    benchmark::DoNotOptimize(nodes);
  }
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() /
                   static_cast<double>(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(page().size()));
  state.counters["nodes"] = static_cast<double>(nodes);
  if (g_peer_seconds > 0)
    state.counters["x_libxml2"] = g_peer_seconds / seconds; // above 1: faster than the peer
}
BENCHMARK(BM_HtcoreParseTree)->Unit(benchmark::kMillisecond);

void BM_HtcoreParseBytes(benchmark::State& state) {
  const std::string& p = page();
  for (auto _ : state) {
    ht::THtmlNode doc;
    doc.ParseBytes(p.data(), p.size());
    benchmark::DoNotOptimize(doc.FNodes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(p.size()));
}
BENCHMARK(BM_HtcoreParseBytes)->Unit(benchmark::kMillisecond);

// Unclosed formatting elements at the depth limit: the worst case of the walks.
void BM_HtcoreDeepMisnesting(benchmark::State& state) {
  std::string s;
  for (int i = 0; i < 20000; ++i)
    s += "<b><i>x</b>";
  ht::hstring text = ht::Utf8ToHString(s);
  for (auto _ : state) {
    ht::THtmlNode doc;
    doc.Parse(text, true);
    benchmark::DoNotOptimize(doc.FNodes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(s.size()));
}
BENCHMARK(BM_HtcoreDeepMisnesting)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
