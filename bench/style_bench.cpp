// The cascade of a whole document: a generated page of 10,000 elements in
// bootstrap's vocabulary (containers, cards, navigation, tables, forms,
// lists), styled by bootstrap.css (scripts/fetch_bench_data.sh puts it in
// bench/data) and the user-agent sheet. htcore's style driver runs on a parsed
// tree (cascade only) and on the text (HTML and sheet parse included); litehtml
// creates its document from the same text with the same user-agent sheet
// (parse and style, its only entry). Reports elements per second, time per
// element, the ratios, and the bytes each library holds per styled element.
//
//   nice ./build-rel/bench/style_bench --benchmark_min_time=0.5
#include "bench_inputs.h"
#include "rate_reporter.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/node_pool.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/style_driver.h"
#include "htcore/style/styled_node.h"
#include "style/default_sheets.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <malloc.h>
#include <memory>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include "litehtml_container.h"
#endif

namespace {

constexpr int kElements = 10000;

// Writes elements until the count is reached, then closes what is open.
class TPageWriter {
public:
  explicit TPageWriter(int Limit) : FLimit(Limit) {}

  bool Full() const noexcept { return FCount >= FLimit; }
  int Count() const noexcept { return FCount; }

  bool Open(const char* Tag, const std::string& Attrs = "") {
    if (Full())
      return false;
    ++FCount;
    FOut += '<';
    FOut += Tag;
    if (!Attrs.empty())
      FOut += ' ' + Attrs;
    FOut += '>';
    FOpen.push_back(Tag);
    return true;
  }
  void Close() {
    FOut += "</" + FOpen.back() + '>';
    FOpen.pop_back();
  }
  void Leaf(const char* Tag, const std::string& Attrs, const std::string& Text) {
    if (Open(Tag, Attrs)) {
      FOut += Text;
      Close();
    }
  }
  void Void(const char* Tag, const std::string& Attrs) {
    if (Full())
      return;
    ++FCount;
    FOut += std::string("<") + Tag + ' ' + Attrs + '>';
  }
  void Text(const std::string& Text) { FOut += Text; }
  std::string Finish() {
    while (!FOpen.empty())
      Close();
    return std::move(FOut);
  }

private:
  int FLimit;
  int FCount = 0;
  std::string FOut;
  std::vector<std::string> FOpen;
};

const char* const kColours[] = {"primary", "secondary", "success", "danger", "warning", "info", "light", "dark"};

// One section of the page, chosen by I: every kind of markup bootstrap styles.
void write_section(TPageWriter& w, int i) {
  std::string n = std::to_string(i);
  std::string c = kColours[i % 8];
  switch (i % 6) {
  case 0:
    w.Open("nav", "class=\"navbar navbar-expand-lg navbar-light bg-light\"");
    w.Leaf("a", "class=\"navbar-brand\" href=\"#\"", "Site " + n);
    w.Open("ul", "class=\"navbar-nav me-auto mb-2 mb-lg-0\"");
    for (int k = 0; k < 4; ++k) {
      w.Open("li", "class=\"nav-item\"");
      w.Leaf("a", k ? "class=\"nav-link\" href=\"#\"" : "class=\"nav-link active\" aria-current=\"page\" href=\"#\"",
             "Item " + std::to_string(k));
      w.Close();
    }
    w.Close();
    w.Close();
    break;
  case 1:
    w.Open("div", "class=\"container\"");
    w.Open("div", "class=\"row\"");
    for (int k = 0; k < 3; ++k) {
      w.Open("div", "class=\"col-md-4 col-sm-6\"");
      w.Open("div", "class=\"card mb-3 shadow-sm\"");
      w.Open("div", "class=\"card-body\"");
      w.Leaf("h5", "class=\"card-title\"", "Card " + n);
      w.Open("p", "class=\"card-text text-muted\"");
      w.Text("Some quick example text with ");
      w.Leaf("strong", "", "emphasis");
      w.Text(" and a ");
      w.Leaf("a", "href=\"#\" class=\"card-link\"", "link");
      w.Close();
      w.Leaf("a", "href=\"#\" class=\"btn btn-" + c + " btn-sm\"", "Go");
      w.Close();
      w.Close();
      w.Close();
    }
    w.Close();
    w.Close();
    break;
  case 2:
    w.Open("table", "class=\"table table-striped table-hover table-sm\"");
    w.Open("thead", "class=\"table-" + c + "\"");
    w.Open("tr");
    for (const char* h : {"#", "Name", "Value", "State"})
      w.Leaf("th", "scope=\"col\"", h);
    w.Close();
    w.Close();
    w.Open("tbody");
    for (int k = 0; k < 4; ++k) {
      w.Open("tr", k == 1 ? "class=\"table-active\"" : "");
      w.Leaf("th", "scope=\"row\"", std::to_string(k));
      w.Leaf("td", "", "Row " + n);
      w.Leaf("td", "class=\"text-end\"", std::to_string(k * 17) + ".50");
      w.Open("td");
      w.Leaf("span", "class=\"badge rounded-pill bg-" + c + "\"", "ok");
      w.Close();
      w.Close();
    }
    w.Close();
    w.Close();
    break;
  case 3:
    w.Open("form", "class=\"row g-3\"");
    w.Open("div", "class=\"col-md-6 mb-3\"");
    w.Leaf("label", "for=\"e" + n + "\" class=\"form-label\"", "Email address");
    w.Void("input", "type=\"email\" class=\"form-control\" id=\"e" + n + "\"");
    w.Leaf("div", "class=\"form-text\"", "We never share it.");
    w.Close();
    w.Open("div", "class=\"col-md-6 form-check\"");
    w.Void("input", "type=\"checkbox\" class=\"form-check-input\" id=\"c" + n + "\"");
    w.Leaf("label", "class=\"form-check-label\" for=\"c" + n + "\"", "Check me out");
    w.Close();
    w.Open("div", "class=\"col-12\"");
    w.Leaf("button", "type=\"submit\" class=\"btn btn-primary\"", "Submit");
    w.Leaf("button", "type=\"button\" class=\"btn btn-outline-" + c + "\"", "Cancel");
    w.Close();
    w.Close();
    break;
  case 4:
    w.Open("ul", "class=\"list-group list-group-flush\"");
    for (int k = 0; k < 4; ++k) {
      w.Open("li", "class=\"list-group-item d-flex justify-content-between align-items-center\"");
      w.Text("Entry " + std::to_string(k));
      w.Leaf("span", "class=\"badge bg-" + c + " rounded-pill\"", std::to_string(k + i));
      w.Close();
    }
    w.Close();
    break;
  default:
    w.Open("div", "class=\"alert alert-" + c + " d-flex align-items-center\" role=\"alert\"");
    w.Open("div");
    w.Text("An alert with ");
    w.Leaf("a", "href=\"#\" class=\"alert-link\"", "a link");
    w.Close();
    w.Close();
    w.Open("section", "class=\"py-5 text-center container\"");
    w.Leaf("h1", "class=\"fw-light\"", "Heading " + n);
    w.Open("p", "class=\"lead text-body-secondary\"");
    w.Text("Lead text ");
    w.Leaf("em", "", "with");
    w.Text(" ");
    w.Leaf("code", "", "code");
    w.Text(" and ");
    w.Leaf("small", "class=\"text-muted\"", "small print");
    w.Close();
    w.Open("p");
    w.Leaf("a", "href=\"#\" class=\"btn btn-primary my-2\"", "Main");
    w.Leaf("a", "href=\"#\" class=\"btn btn-secondary my-2\"", "Secondary");
    w.Close();
    w.Close();
    break;
  }
}

const std::string& sheet_text() {
  static std::string s = [] {
    auto in = bench::LoadInputs({"bench/data/bootstrap.css"}, "");
    if (in.size() > 1)
      return in[0].bytes;
    std::fprintf(stderr, "bench/data/bootstrap.css missing (scripts/fetch_bench_data.sh): a generated sheet\n");
    std::string g;
    for (int i = 0; i < 2000; ++i)
      g += ".c" + std::to_string(i) + ", .btn-" + kColours[i % 8] + ":hover .x" + std::to_string(i) +
           " { color: #" + std::to_string(100 + i % 800) + "; margin: " + std::to_string(i % 9) + "px }\n";
    return g;
  }();
  return s;
}

// The page: head with the sheet in a <style>, then kElements elements in all.
std::string make_page(const std::string& Sheet) {
  TPageWriter w(kElements);
  w.Open("html");
  w.Open("head");
  w.Leaf("title", "", "Generated page");
  w.Leaf("style", "", Sheet);
  w.Close();
  w.Open("body");
  for (int i = 0; !w.Full(); ++i)
    write_section(w, i);
  return "<!DOCTYPE html>\n" + w.Finish();
}

const std::string& page_text() {
  static std::string s = make_page(sheet_text());
  return s;
}

int count_elements(ht::THtNode* root) {
  int n = 0;
  for (ht::THtNode* e = root->FirstChild(); e; e = e->NextNode())
    if (!e->FTag.empty() && e->FTag[0] != u'!' && e->FTag[0] != u'?')
      ++n;
  return n;
}

// Bytes the process holds: malloc's heap and the node pool's chunks.
size_t heap_in_use() {
  return mallinfo2().uordblks + ht::detail::NodePoolStats().ChunksHeld * ht::detail::kPoolChunk;
}

void set_rates(benchmark::State& state, int elements) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * elements);
  state.counters["elements"] = elements;
}

std::unique_ptr<ht::TStyledHTMLNode> parse_page() {
  auto doc = std::make_unique<ht::TStyledHTMLNode>();
  const std::string& p = page_text();
  doc->ParseBytes(p.data(), p.size());
  return doc;
}

// The sheets are parsed by the first Run; each iteration then marks every
// element and styles the document again.
void BM_HtcoreCascade(benchmark::State& state) {
  auto doc = parse_page();
  int elements = count_elements(doc.get());
  ht::TStyleDriver driver(doc.get());
  driver.Run();
  for (auto _ : state) {
    driver.Invalidate();
    driver.Run();
  }
  set_rates(state, elements);
}

void BM_HtcoreParseCascade(benchmark::State& state) {
  int elements = 0;
  for (auto _ : state) {
    auto doc = parse_page();
    ht::TStyleDriver driver(doc.get());
    driver.Run();
    elements = count_elements(doc.get());
  }
  set_rates(state, elements);
}

// Bytes held per element: the tree alone (the page with an empty sheet), and
// what the cascade adds (styles and their lists; the parsed sheets, whose size
// does not depend on the page, are taken out). Measured first in the process
// and with everything kept alive, since the node pool keeps freed chunks for
// reuse and a delta after a free would miss them.
struct TFootprint {
  double tree = 0, style = 0;
};

TFootprint footprint_htcore() {
  TFootprint f;
  std::string bare = make_page("");
  size_t before = heap_in_use();
  auto bare_doc = std::make_unique<ht::TStyledHTMLNode>();
  bare_doc->ParseBytes(bare.data(), bare.size());
  f.tree = static_cast<double>(heap_in_use() - before) / kElements;
  before = heap_in_use();
  ht::TCSSStyleSheet sheet;
  sheet.Parse(ht::hstring::FromUtf8(sheet_text()));
  size_t sheet_bytes = heap_in_use() - before;
  auto doc = parse_page();
  size_t parsed = heap_in_use();
  ht::TStyleDriver driver(doc.get());
  driver.Run();
  f.style = (static_cast<double>(heap_in_use() - parsed) - static_cast<double>(sheet_bytes)) / kElements;
  return f;
}

#ifdef HTCORE_PEERS

bench::TNullContainer g_container;

const std::string& user_agent_sheet() {
  static std::string s = ht::hstring(ht::detail::kHTML4StyleSheetText).toUtf8();
  return s;
}

litehtml::context& lite_context() {
  static litehtml::context* c = [] {
    auto* ctx = new litehtml::context;
    ctx->load_master_stylesheet(user_agent_sheet().c_str());
    return ctx;
  }();
  return *c;
}

// litehtml's tree also holds text and blank nodes as elements: rates count
// the page's elements, the same for both libraries.
void BM_LitehtmlCreate(benchmark::State& state) {
  for (auto _ : state) {
    auto doc = litehtml::document::createFromUTF8(page_text().c_str(), &g_container, &lite_context());
    benchmark::DoNotOptimize(doc.get());
  }
  set_rates(state, kElements);
}

TFootprint footprint_litehtml() {
  size_t before = heap_in_use();
  size_t sheet = 0;
  {
    litehtml::css c;
    c.parse_stylesheet(sheet_text().c_str(), "", nullptr, nullptr);
    sheet = heap_in_use() - before;
  }
  before = heap_in_use();
  auto doc = litehtml::document::createFromUTF8(page_text().c_str(), &g_container, &lite_context());
  return {(static_cast<double>(heap_in_use() - before) - static_cast<double>(sheet)) / kElements, 0};
}

#endif

} // namespace

int main(int argc, char** argv) {
  page_text();
  TFootprint own = footprint_htcore();
#ifdef HTCORE_PEERS
  TFootprint lite = footprint_litehtml();
  benchmark::RegisterBenchmark("Litehtml/create", BM_LitehtmlCreate)->Unit(benchmark::kMillisecond);
#endif
  benchmark::RegisterBenchmark("Htcore/cascade", BM_HtcoreCascade)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("Htcore/parse+cascade", BM_HtcoreParseCascade)->Unit(benchmark::kMillisecond);
  bench::TRateReporter reporter;
  if (!bench::RunWithRates(argc, argv, reporter))
    return 1;

  std::printf("\n%d elements, page %.2f MB (sheet %.0f KB)\n", kElements, page_text().size() / 1e6,
              sheet_text().size() / 1e3);
  double lite_rate = reporter.Rate("Litehtml/create");
  for (const char* name : {"Htcore/cascade", "Htcore/parse+cascade", "Litehtml/create"}) {
    double rate = reporter.Rate(name);
    if (rate <= 0)
      continue;
    std::printf("%-22s %9.0f elements/s  %7.0f ns/element  %7.2f ms/document", name, rate, 1e9 / rate,
                1e3 * kElements / rate);
    if (lite_rate > 0 && std::string(name) != "Litehtml/create")
      std::printf("  %5.2fx litehtml", rate / lite_rate);
    std::printf("\n");
  }
  std::printf("bytes per styled element (sheets not counted): htcore %.0f (node %.0f + style %.0f)",
              own.tree + own.style, own.tree, own.style);
#ifdef HTCORE_PEERS
  std::printf("; litehtml %.0f (element and its style in one)", lite.tree);
#endif
  std::printf("\n");
  return 0;
}
