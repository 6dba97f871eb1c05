// Template rendering: a 10,000-row section over XML data into HTML, against a
// hand-written TFastString loop that produces the same text.
//
//   build/bench/template_bench --benchmark_min_time=0.2
//
// Each row has an attribute, two child values and the row number; one variant
// adds a number format. The summary prints template time / hand-written time.
#include "htcore/document/xml_node.h"
#include "htcore/foundation/convert.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/number_format.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/templates/template.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>

namespace {

constexpr int kRows = 10000;

ht::THtXMLNode& data() {
  static ht::THtXMLNode doc = [] {
    ht::TFastString fs;
    fs.Add(u"<catalogue><rows>");
    for (int i = 0; i < kRows; ++i) {
      fs.Add(u"<row id=\"r")
          .Add(i)
          .Add(u"\" price=\"")
          .Add(i * 7 % 1000)
          .Add(u".25\"><name>Item &lt;")
          .Add(i)
          .Add(u"&gt; &amp; more</name><qty>")
          .Add(i % 13)
          .Add(u"</qty></row>");
    }
    fs.Add(u"</rows></catalogue>");
    return ht::THtXMLNode(fs.GetAsString());
  }();
  return doc;
}

const char16_t* kPlain =
    u"<table>\n{{#rows}}<tr id=\"{{.@id}}\"><td>{{-index}}</td><td>{{name}}</td><td>{{qty}}</td>"
    u"<td>{{.@price}}</td></tr>\n{{/rows}}</table>\n";
const char16_t* kFormatted =
    u"<table>\n{{#rows}}<tr id=\"{{.@id}}\"><td>{{-index}}</td><td>{{name}}</td><td>{{qty}}"
    u"</td><td>{{.@price(# ##0.00)}}</td></tr>\n{{/rows}}</table>\n";

// The escaping templates apply: attribute-value encoding.
void encode(ht::TFastString& fs, const ht::hstring& s) {
  const char16_t* p = s.c_str();
  const char16_t* end = p + s.size();
  const char16_t* run = p;
  for (; p < end; ++p) {
    char16_t c = *p;
    if (c != u'<' && c != u'>' && c != u'&' && c != u'"' && c != 0xA0)
      continue;
    fs.Add(run, p - run);
    switch (c) {
    case u'<':
      fs.Add(u"&lt;");
      break;
    case u'>':
      fs.Add(u"&gt;");
      break;
    case u'&':
      fs.Add(u"&amp;");
      break;
    case u'"':
      fs.Add(u"&quot;");
      break;
    default:
      fs.Add(u"&nbsp;");
    }
    run = p + 1;
  }
  fs.Add(run, end - run);
}

ht::hstring hand_written(ht::THtXMLNode& doc, bool formatted) {
  static const ht::hstring id = u"id", price = u"price", name = u"name", qty = u"qty", rows = u"rows";
  ht::TFastString fs(4096);
  fs.Add(u"<table>\n");
  int index = 0;
  for (ht::THtNode* r = doc.NodebyName(rows)->FirstChild(); r; r = r->NextSibling()) {
    auto* row = static_cast<ht::THtXMLNode*>(r);
    fs.Add(u"<tr id=\"");
    encode(fs, row->GetAttribute(id));
    fs.Add(u"\"><td>").Add(++index).Add(u"</td><td>");
    encode(fs, row->NodebyName(name)->GetValue());
    fs.Add(u"</td><td>");
    encode(fs, row->NodebyName(qty)->GetValue());
    fs.Add(u"</td><td>");
    if (formatted)
      encode(fs, ht::HtFormatFloat(u"# ##0.00", ht::iStrtoFloat(row->GetAttribute(price).view())));
    else
      encode(fs, row->GetAttribute(price));
    fs.Add(u"</td></tr>\n");
  }
  fs.Add(u"</table>\n");
  return fs.GetAsString();
}

std::map<std::string, double> g_seconds; // "Hand/variant" or "Template/variant" -> seconds per render

template <class F> void timed(benchmark::State& state, const std::string& key, F&& render) {
  size_t units = 0;
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    ht::hstring out = render();
    units = out.size();
    benchmark::DoNotOptimize(out.Pointer());
  }
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() /
                   static_cast<double>(state.iterations());
  g_seconds[key] = seconds;
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRows);
  // Output bytes as UTF-16, the form the text is made in.
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(units * 2));
}

void BM_Hand(benchmark::State& state, bool formatted) {
  ht::THtXMLNode& doc = data();
  timed(state, std::string("Hand/") + (formatted ? "formatted" : "plain"),
        [&] { return hand_written(doc, formatted); });
}

void BM_Template(benchmark::State& state, bool formatted) {
  ht::THtXMLNode& doc = data();
  ht::THtTemplate t(ht::hstring(formatted ? kFormatted : kPlain));
  if (t.Render(&doc) != hand_written(doc, formatted)) {
    state.SkipWithError("template and hand-written output differ");
    return;
  }
  std::string key = std::string("Template/") + (formatted ? "formatted" : "plain");
  timed(state, key, [&] { return t.ThreadSafeRender(&doc); });
  auto hand = g_seconds.find(std::string("Hand/") + (formatted ? "formatted" : "plain"));
  if (hand != g_seconds.end())
    state.counters["x_hand"] = g_seconds[key] / hand->second;
}

} // namespace

int main(int argc, char** argv) {
  for (bool formatted : {false, true}) {
    const char* v = formatted ? "formatted" : "plain";
    benchmark::RegisterBenchmark((std::string("Hand/") + v).c_str(), BM_Hand, formatted)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((std::string("Template/") + v).c_str(), BM_Template, formatted)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  for (const char* v : {"plain", "formatted"}) {
    auto h = g_seconds.find(std::string("Hand/") + v), t = g_seconds.find(std::string("Template/") + v);
    if (h != g_seconds.end() && t != g_seconds.end())
      std::printf("%s: template %.2f ms, hand-written %.2f ms, template/hand = %.2fx\n", v, t->second * 1e3,
                  h->second * 1e3, t->second / h->second);
  }
  return 0;
}
