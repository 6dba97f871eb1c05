// Item reading speed of THtmlParser over a generated page, and (with
// HTCORE_PEERS) libxml2's HTML push parser with empty SAX callbacks over the
// same page in UTF-8: both only cut the text into events, neither builds a tree.
#include "htcore/document/html_parser.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include <libxml/HTMLparser.h>
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
         " --><p>Paragraph with <b>bold</b> and <i>italic</i> words &#x2014; end.</p></div>\n";
  }
  s += "<script>var a = 1 < 2 && 3 > 2;</script></body></html>\n";
  return s;
}

const std::string& page() {
  static const std::string p = make_page(5000);
  return p;
}

void BM_HtcoreItems(benchmark::State& state) {
  ht::hstring text = ht::Utf8ToHString(page());
  size_t items = 0;
  for (auto _ : state) {
    ht::THtmlParser hp(text);
    hp.IgnoreMetaEncoding = true;
    while (hp.NextItem())
      ++items;
    benchmark::DoNotOptimize(items);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(page().size()));
  state.counters["items"] = static_cast<double>(items) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_HtcoreItems)->Unit(benchmark::kMillisecond);

void BM_HtcoreItemsFromUtf8(benchmark::State& state) {
  for (auto _ : state) {
    ht::THtmlParser hp(ht::Utf8ToHString(page()));
    hp.IgnoreMetaEncoding = true;
    size_t items = 0;
    while (hp.NextItem())
      ++items;
    benchmark::DoNotOptimize(items);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(page().size()));
}
BENCHMARK(BM_HtcoreItemsFromUtf8)->Unit(benchmark::kMillisecond);

#ifdef HTCORE_PEERS
void BM_Libxml2HtmlSax(benchmark::State& state) {
  htmlSAXHandler sax{};
  size_t events = 0;
  sax.startElement = [](void* ctx, const xmlChar*, const xmlChar**) { ++*static_cast<size_t*>(ctx); };
  sax.endElement = [](void* ctx, const xmlChar*) { ++*static_cast<size_t*>(ctx); };
  sax.characters = [](void* ctx, const xmlChar*, int) { ++*static_cast<size_t*>(ctx); };
  sax.comment = [](void* ctx, const xmlChar*) { ++*static_cast<size_t*>(ctx); };
  const std::string& p = page();
  for (auto _ : state) {
    htmlParserCtxtPtr ctx =
        htmlCreatePushParserCtxt(&sax, &events, nullptr, 0, nullptr, XML_CHAR_ENCODING_UTF8);
    htmlCtxtUseOptions(ctx, HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
    htmlParseChunk(ctx, p.data(), static_cast<int>(p.size()), 1);
    htmlFreeParserCtxt(ctx);
    benchmark::DoNotOptimize(events);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(p.size()));
}
BENCHMARK(BM_Libxml2HtmlSax)->Unit(benchmark::kMillisecond);
#endif

// Prints the throughput ratio of htcore to the peer measured in this run.
class TRatioReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs) {
      auto it = r.counters.find("bytes_per_second");
      if (it != r.counters.end())
        FRates[r.benchmark_name()] = it->second;
    }
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    auto ours = FRates.find("BM_HtcoreItems"), peer = FRates.find("BM_Libxml2HtmlSax");
    if (ours != FRates.end() && peer != FRates.end() && peer->second > 0)
      std::printf("htcore / libxml2 HTML SAX throughput: %.2fx\n", ours->second / peer->second);
  }

private:
  std::map<std::string, double> FRates;
};

} // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  TRatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
}
