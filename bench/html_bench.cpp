// Real documents: UTF-8 bytes in memory to a full tree, then the tree back to
// compact HTML, indented HTML and text. With HTCORE_PEERS the same documents
// go through gumbo and libxml2's HTML parser (and libxml2's HTML writer) in
// the same run, and a summary prints the ratios and the memory a tree holds.
//
// Documents: bench/data/*.html (scripts/fetch_bench_data.sh collects them),
// or the directory in HTCORE_BENCH_DATA; without any, a generated page.
//
// Per input, Htcore/INPUT, Gumbo/INPUT and Libxml2/INPUT parse one document
// (x_Gumbo, x_Libxml2: the peer's time over htcore's in the same run; run the
// peers first, as the default order does). The inputs are each document, the
// generated page, "concat-20MB" (the documents joined until 20 MB) and
// "small-pages" (bench/data/small/*.html, each parsed as a page of its own).
// Memory/LIB/INPUT measure one parse: peak RSS added and bytes held, over the
// input size, and bytes per node. HtcoreText is htcore from a UTF-16 copy of
// the whole input (Parse(Utf8ToHString(bytes))), the way UTF-8 was read before
// the window reader: the same tree, for comparison. Each library parses a
// small page first, so that its one-time start is not counted as a parse's.
#include "htcore/document/html_node.h"
#include "htcore/document/html_parser.h"
#include "htcore/foundation/fast_string.h"

#include "bench_inputs.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include <gumbo.h>
#include <libxml/HTMLparser.h>
#include <libxml/HTMLtree.h>
#include <libxml/tree.h>
#endif

namespace {

struct TDoc {
  std::string name;
  std::string bytes;
};

std::string generated_page() {
  std::string s = "<!DOCTYPE html><html><head><meta charset=utf-8><title>Bench</title></head><body>\n";
  for (int i = 0; i < 4000; ++i)
    s += "<div class=\"row\" id=r" + std::to_string(i) + "><a href=\"/i/" + std::to_string(i) +
         "?a=1&amp;b=2\">Item</a> <span>caf\xC3\xA9 &lt;x&gt; text</span><p>Para "
         "<b>bold</b><ul><li>a<li>b</ul>"
         "<table><tr><td>1<td>2</table></div>\n";
  return s + "</body></html>\n";
}

// HTCORE_BENCH_DATA, else bench/data seen from the build directory (the
// source path as compiled) or from the source tree's top.
std::filesystem::path data_dir() {
  if (const char* env = std::getenv("HTCORE_BENCH_DATA"))
    return env;
  std::filesystem::path beside = std::filesystem::path(__FILE__).parent_path() / "data";
  std::error_code ec;
  return std::filesystem::is_directory(beside, ec) ? beside : std::filesystem::path("bench/data");
}

// In one read: a character-by-character stream read would dominate the
// instruction count of a run that parses nothing.
std::string read_file(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::string r;
  in.seekg(0, std::ios::end);
  r.resize(static_cast<size_t>(std::max<std::streamoff>(in.tellg(), 0)));
  in.seekg(0);
  in.read(r.data(), static_cast<std::streamsize>(r.size()));
  r.resize(static_cast<size_t>(in.gcount()));
  return r;
}

const std::vector<TDoc>& docs() {
  static const std::vector<TDoc> list = [] {
    std::vector<TDoc> r;
    std::filesystem::path dir = data_dir();
    std::error_code ec;
    for (const auto& e : std::filesystem::directory_iterator(dir, ec))
      if (e.path().extension() == ".html") {
        r.push_back({e.path().filename().string(), read_file(e.path())});
      }
    std::sort(r.begin(), r.end(), [](const TDoc& a, const TDoc& b) { return a.name < b.name; });
    if (r.empty()) {
      std::fprintf(stderr, "no documents in %s (run scripts/fetch_bench_data.sh); using a generated page\n",
                   dir.string().c_str());
      r.push_back({"generated", generated_page()});
    }
    return r;
  }();
  return list;
}

int64_t total_bytes() {
  int64_t n = 0;
  for (const TDoc& d : docs())
    n += static_cast<int64_t>(d.bytes.size());
  return n;
}

// Seconds per pass over all documents, by benchmark name, for the summary.
std::map<std::string, double>& timings() {
  static std::map<std::string, double> m;
  return m;
}

template <class Body> void timed(benchmark::State& state, const char* name, Body body) {
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state)
    body();
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  timings()[name] = seconds / static_cast<double>(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * total_bytes());
}

int64_t count_nodes(ht::THtNode* root) {
  int64_t n = 0;
  for (ht::THtNode* x = root; x; x = x->NextNode())
    ++n;
  return n;
}

void BM_ParseHtcore(benchmark::State& state) {
  timed(state, "parse htcore", [] {
    for (const TDoc& d : docs()) {
      ht::THtmlNode doc;
      doc.ParseBytes(d.bytes.data(), d.bytes.size());
      benchmark::DoNotOptimize(doc.FNodes);
    }
  });
}
BENCHMARK(BM_ParseHtcore)->Unit(benchmark::kMillisecond);

#ifdef HTCORE_PEERS
void BM_ParseGumbo(benchmark::State& state) {
  timed(state, "parse gumbo", [] {
    for (const TDoc& d : docs()) {
      GumboOutput* out = gumbo_parse_with_options(&kGumboDefaultOptions, d.bytes.data(), d.bytes.size());
      benchmark::DoNotOptimize(out);
      gumbo_destroy_output(&kGumboDefaultOptions, out);
    }
  });
}
BENCHMARK(BM_ParseGumbo)->Unit(benchmark::kMillisecond);

htmlDocPtr libxml2_parse(const TDoc& d) {
  return htmlReadMemory(d.bytes.data(), static_cast<int>(d.bytes.size()), nullptr, "UTF-8",
                        HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
}

void BM_ParseLibxml2(benchmark::State& state) {
  timed(state, "parse libxml2", [] {
    for (const TDoc& d : docs()) {
      htmlDocPtr doc = libxml2_parse(d);
      benchmark::DoNotOptimize(doc);
      xmlFreeDoc(doc);
    }
  });
}
BENCHMARK(BM_ParseLibxml2)->Unit(benchmark::kMillisecond);
#endif

// Trees parsed once for the writers.
std::vector<std::unique_ptr<ht::THtmlNode>>& trees() {
  static std::vector<std::unique_ptr<ht::THtmlNode>> list = [] {
    std::vector<std::unique_ptr<ht::THtmlNode>> r;
    for (const TDoc& d : docs()) {
      r.push_back(std::make_unique<ht::THtmlNode>());
      r.back()->ParseBytes(d.bytes.data(), d.bytes.size());
    }
    return r;
  }();
  return list;
}

void BM_WriteCompact(benchmark::State& state) {
  trees();
  int64_t units = 0;
  timed(state, "write compact htcore", [&] {
    units = 0;
    for (auto& t : trees()) {
      ht::TFastString fs(65535);
      t->FastInnerHTML(fs);
      units += fs.GetTotalLen();
      benchmark::DoNotOptimize(fs.GetAsString());
    }
  });
  state.counters["out_units"] = static_cast<double>(units);
}
BENCHMARK(BM_WriteCompact)->Unit(benchmark::kMillisecond);

void BM_WriteFormatted(benchmark::State& state) {
  trees();
  timed(state, "write indented htcore", [] {
    for (auto& t : trees()) {
      ht::TFastString fs(65535);
      bool after_block = true;
      t->FastFormattedHTML(fs, 0, 2, after_block);
      benchmark::DoNotOptimize(fs.GetAsString());
    }
  });
}
BENCHMARK(BM_WriteFormatted)->Unit(benchmark::kMillisecond);

void BM_InnerText(benchmark::State& state) {
  trees();
  timed(state, "inner text htcore", [] {
    for (auto& t : trees())
      benchmark::DoNotOptimize(t->GetInnerText());
  });
}
BENCHMARK(BM_InnerText)->Unit(benchmark::kMillisecond);

#ifdef HTCORE_PEERS
void BM_WriteLibxml2(benchmark::State& state) {
  std::vector<htmlDocPtr> parsed;
  for (const TDoc& d : docs())
    parsed.push_back(libxml2_parse(d));
  timed(state, "write compact libxml2", [&] {
    for (htmlDocPtr doc : parsed) {
      xmlChar* mem = nullptr;
      int size = 0;
      htmlDocDumpMemoryFormat(doc, &mem, &size, 0);
      benchmark::DoNotOptimize(mem);
      xmlFree(mem);
    }
  });
  for (htmlDocPtr doc : parsed)
    xmlFreeDoc(doc);
}
BENCHMARK(BM_WriteLibxml2)->Unit(benchmark::kMillisecond);

int64_t count_gumbo(const GumboNode* n) {
  int64_t c = 1;
  if (n->type == GUMBO_NODE_ELEMENT || n->type == GUMBO_NODE_TEMPLATE) {
    const GumboVector& kids = n->v.element.children;
    for (unsigned i = 0; i < kids.length; ++i)
      c += count_gumbo(static_cast<const GumboNode*>(kids.data[i]));
  } else if (n->type == GUMBO_NODE_DOCUMENT) {
    const GumboVector& kids = n->v.document.children;
    for (unsigned i = 0; i < kids.length; ++i)
      c += count_gumbo(static_cast<const GumboNode*>(kids.data[i]));
  }
  return c;
}

int64_t count_xml(const xmlNode* n) {
  int64_t c = 0;
  for (; n; n = n->next)
    c += 1 + count_xml(n->children);
  return c;
}
#endif

// Bytes a parser holds for its trees of all documents (live heap after the
// parse, from mallinfo2) and the node count of those trees.
struct TFootprint {
  double bytes = 0;
  int64_t nodes = 0;
};

// The node pool's chunks lie outside malloc's heap.
size_t heap_in_use() {
  return mallinfo2().uordblks + ht::detail::NodePoolStats().ChunksHeld * ht::detail::kPoolChunk;
}

TFootprint footprint_htcore() {
  size_t before = heap_in_use();
  std::vector<std::unique_ptr<ht::THtmlNode>> held;
  TFootprint f;
  for (const TDoc& d : docs()) {
    held.push_back(std::make_unique<ht::THtmlNode>());
    held.back()->ParseBytes(d.bytes.data(), d.bytes.size());
    f.nodes += count_nodes(held.back().get());
  }
  f.bytes = static_cast<double>(heap_in_use() - before);
  return f;
}

#ifdef HTCORE_PEERS
TFootprint footprint_gumbo() {
  size_t before = heap_in_use();
  std::vector<GumboOutput*> held;
  TFootprint f;
  for (const TDoc& d : docs()) {
    held.push_back(gumbo_parse_with_options(&kGumboDefaultOptions, d.bytes.data(), d.bytes.size()));
    f.nodes += count_gumbo(held.back()->document);
  }
  f.bytes = static_cast<double>(heap_in_use() - before);
  for (GumboOutput* o : held)
    gumbo_destroy_output(&kGumboDefaultOptions, o);
  return f;
}

TFootprint footprint_libxml2() {
  size_t before = heap_in_use();
  std::vector<htmlDocPtr> held;
  TFootprint f;
  for (const TDoc& d : docs()) {
    held.push_back(libxml2_parse(d));
    f.nodes += count_xml(reinterpret_cast<xmlNode*>(held.back()));
  }
  f.bytes = static_cast<double>(heap_in_use() - before);
  for (htmlDocPtr doc : held)
    xmlFreeDoc(doc);
  return f;
}
#endif

void print_summary() {
  const auto& t = timings();
  if (t.empty())
    return; // a filter left out the all-documents runs
  double mb = static_cast<double>(total_bytes()) / 1e6;
  std::printf("\n%zu documents, %.2f MB of UTF-8\n", docs().size(), mb);
  std::printf("%-24s %10s %10s\n", "", "MB/s", "vs htcore");
  double own = t.count("parse htcore") ? t.at("parse htcore") : 0;
  double own_write = t.count("write compact htcore") ? t.at("write compact htcore") : 0;
  for (const auto& [name, seconds] : t) {
    double base = name.rfind("parse", 0) == 0 ? own : name.rfind("write compact", 0) == 0 ? own_write : 0;
    if (base > 0)
      std::printf("%-24s %10.1f %9.2fx\n", name.c_str(), mb / seconds, seconds / base);
    else
      std::printf("%-24s %10.1f\n", name.c_str(), mb / seconds);
  }
  std::printf("(vs htcore: the peer's time over htcore's; above 1 means htcore is faster)\n\n");
  auto show = [&](const char* name, TFootprint f) {
    std::printf("%-10s %9lld nodes %8.1f MB held %6.1f bytes/node %5.1fx the source\n", name,
                static_cast<long long>(f.nodes), f.bytes / 1e6, f.bytes / static_cast<double>(f.nodes),
                f.bytes / (mb * 1e6));
  };
  show("htcore", footprint_htcore());
#ifdef HTCORE_PEERS
  show("gumbo", footprint_gumbo());
  show("libxml2", footprint_libxml2());
#endif
}

// One input of the per-input runs: its pages, each parsed on its own.
struct TPageSet {
  bench::TInput all; // the pages joined, for the byte count
  std::vector<std::string> pages;
};

std::vector<std::string> small_pages() {
  std::vector<std::string> r;
  std::filesystem::path dir = data_dir() / "small";
  std::error_code ec;
  std::vector<std::filesystem::path> files;
  for (const auto& e : std::filesystem::directory_iterator(dir, ec))
    if (e.path().extension() == ".html")
      files.push_back(e.path());
  std::sort(files.begin(), files.end());
  for (const auto& f : files)
    r.push_back(read_file(f));
  return r;
}

const std::vector<TPageSet>& page_sets() {
  static const std::vector<TPageSet> list = [] {
    std::vector<TPageSet> r;
    auto add = [&](std::string name, std::vector<std::string> pages) {
      TPageSet set;
      set.all.name = std::move(name);
      for (const std::string& p : pages)
        set.all.bytes += p;
      set.pages = std::move(pages);
      r.push_back(std::move(set));
    };
    std::string joined;
    for (const TDoc& d : docs()) {
      add(d.name, {d.bytes});
      joined += d.bytes;
    }
    if (docs().size() > 1 || docs().front().name != "generated")
      add("generated", {generated_page()});
    std::string big;
    while (!joined.empty() && big.size() < 20000000)
      big += joined;
    add("concat-20MB", {std::move(big)});
    std::vector<std::string> small = small_pages();
    if (!small.empty())
      add("small-pages", std::move(small));
    return r;
  }();
  return list;
}

bench::TPeerTimer& peer_timer() {
  static bench::TPeerTimer t({"Gumbo", "Libxml2"});
  return t;
}

// What ParseBytes did with UTF-8 before the window reader: the same checks,
// then the tree from a UTF-16 copy of the whole page.
void parse_as_text(ht::THtmlNode& doc, const std::string& page) {
  int scan = static_cast<int>(page.size());
  if (ht::GetHTMLEncoding(page.data(), scan) == 0)
    benchmark::DoNotOptimize(ht::IsUTF8Bytes(page.data(), scan));
  doc.Parse(ht::Utf8ToHString(page), true);
}

template <class Parse> void register_parse(const char* lib, const TPageSet& set, Parse parse) {
  benchmark::RegisterBenchmark((std::string(lib) + "/" + set.all.name).c_str(),
                               [lib, &set, parse](benchmark::State& state) {
                                 peer_timer().Run(state, set.all, lib, [&] {
                                   for (const std::string& page : set.pages)
                                     parse(page);
                                 });
                               })
      ->Unit(benchmark::kMillisecond);
}

template <class Parse> void register_memory(const char* lib, const TPageSet& set, Parse parse) {
  bench::RegisterMemory(lib, set.all, [&set, parse](const bench::TInput&, const auto& sample) {
    parse(set, sample);
  });
}

void register_per_input() {
  for (const TPageSet& set : page_sets()) {
#ifdef HTCORE_PEERS
    register_parse("Gumbo", set, [](const std::string& page) {
      GumboOutput* out = gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size());
      benchmark::DoNotOptimize(out);
      gumbo_destroy_output(&kGumboDefaultOptions, out);
    });
    register_parse("Libxml2", set, [](const std::string& page) {
      htmlDocPtr doc = libxml2_parse({"", page});
      benchmark::DoNotOptimize(doc);
      xmlFreeDoc(doc);
    });
#endif
    register_parse("Htcore", set, [](const std::string& page) {
      ht::THtmlNode doc;
      doc.ParseBytes(page.data(), page.size());
      benchmark::DoNotOptimize(doc.FNodes);
    });
    register_parse("HtcoreText", set, [](const std::string& page) {
      ht::THtmlNode doc;
      parse_as_text(doc, page);
      benchmark::DoNotOptimize(doc.FNodes);
    });
  }
  // Memory: all pages of an input held at once, as a reader of them would.
  for (const TPageSet& set : page_sets()) {
    register_memory("Htcore", set, [](const TPageSet& set, const auto& sample) {
      std::vector<std::unique_ptr<ht::THtmlNode>> held;
      int64_t nodes = 0;
      for (const std::string& page : set.pages) {
        held.push_back(std::make_unique<ht::THtmlNode>());
        held.back()->ParseBytes(page.data(), page.size());
        nodes += count_nodes(held.back().get());
      }
      sample(nodes);
    });
    register_memory("HtcoreText", set, [](const TPageSet& set, const auto& sample) {
      std::vector<std::unique_ptr<ht::THtmlNode>> held;
      int64_t nodes = 0;
      for (const std::string& page : set.pages) {
        held.push_back(std::make_unique<ht::THtmlNode>());
        parse_as_text(*held.back(), page);
        nodes += count_nodes(held.back().get());
      }
      sample(nodes);
    });
#ifdef HTCORE_PEERS
    register_memory("Gumbo", set, [](const TPageSet& set, const auto& sample) {
      std::vector<GumboOutput*> held;
      int64_t nodes = 0;
      for (const std::string& page : set.pages) {
        held.push_back(gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size()));
        nodes += count_gumbo(held.back()->document);
      }
      sample(nodes);
      for (GumboOutput* o : held)
        gumbo_destroy_output(&kGumboDefaultOptions, o);
    });
    register_memory("Libxml2", set, [](const TPageSet& set, const auto& sample) {
      std::vector<htmlDocPtr> held;
      int64_t nodes = 0;
      for (const std::string& page : set.pages) {
        held.push_back(libxml2_parse({"", page}));
        nodes += count_xml(reinterpret_cast<xmlNode*>(held.back()));
      }
      sample(nodes);
      for (htmlDocPtr doc : held)
        xmlFreeDoc(doc);
    });
#endif
  }
}

} // namespace

#ifdef HTCORE_PEERS
void quiet(void*, const char*, ...) {}
#endif

// A small page through each library before any measured run, so that a
// Memory run's peak does not count the library's one-time start (htcore's
// tables, the peers' globals, code paged in); htcore's is printed.
void warm_up() {
  static const std::string kPage = "<!DOCTYPE html><html><head><meta charset=utf-8><title>t</title><style>p{}</style>"
                                   "<script>var a = 1 < 2;</script></head><body><p class=x>a &amp; b &eacute; "
                                   "caf\xC3\xA9<table><td>1</table><ul><li>x</ul><!-- c --></body></html>";
  double rss0 = bench::ProcStatusKiB("VmRSS:");
  {
    ht::THtmlNode doc;
    doc.ParseBytes(kPage.data(), kPage.size());
  }
  std::printf("htcore start and first parse: %.0f KiB resident\n", bench::ProcStatusKiB("VmRSS:") - rss0);
#ifdef HTCORE_PEERS
  gumbo_destroy_output(&kGumboDefaultOptions,
                       gumbo_parse_with_options(&kGumboDefaultOptions, kPage.data(), kPage.size()));
  xmlFreeDoc(libxml2_parse({"", kPage}));
#endif
}

int main(int argc, char** argv) {
#ifdef HTCORE_PEERS
  xmlSetGenericErrorFunc(nullptr, quiet); // libxml2 reports every unencodable character
#endif
  warm_up();
  register_per_input();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  peer_timer().PrintRatios();
  print_summary();
  return 0;
}
