// Path queries over a real document: the freedesktop MIME database
// (/usr/share/mime/packages/freedesktop.org.xml, 2.4 MB), read by htcore's
// HTML reader and, with HTCORE_PEERS, by pugixml. Each query is one call from
// path text to result (compiled per call on both sides, as htcore has no
// compiled-path cache). Prints queries/s per case, the ratio to pugixml as a
// counter, and a summary table with the result counts of both.
//
//   ./bench/xpath_bench --benchmark_min_time=0.2
#include "htcore/document/html_node.h"
#include "htcore/document/xpath.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <time.h>

#ifdef HTCORE_PEERS
#include <pugixml.hpp>
#endif

namespace {

const char* kFile = "/usr/share/mime/packages/freedesktop.org.xml";

struct Query {
  const char* name;
  const char16_t* htcore;
  const char* peer;
  bool value; // a value query: text of the first match
};

// The same question in both languages; the `@type` list step gives elements
// in htcore and attribute nodes in XPath, the same count either way.
const Query kQueries[] = {
    {"descendant+attr", u"//mime-type[@type='text/html']/comment", "//mime-type[@type='text/html']/comment",
     false},
    {"child path", u"/mime-info/mime-type/glob", "/mime-info/mime-type/glob", false},
    {"deep attr", u"//match[@type='string']", "//match[@type='string']", false},
    {"exists+attr", u"/mime-info/mime-type[alias]/@type", "/mime-info/mime-type[alias]/@type", false},
    {"value", u"/mime-info/mime-type[@type='image/png']/comment",
     "/mime-info/mime-type[@type='image/png']/comment", true},
};
constexpr int kCount = static_cast<int>(std::size(kQueries));

double g_peer_rate[kCount];
double g_rate[kCount];
long g_peer_found[kCount];
long g_found[kCount];

const std::string& file_bytes() {
  static const std::string bytes = [] {
    std::ifstream in(kFile, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }();
  return bytes;
}

ht::THtmlNode& htcore_doc() {
  static std::unique_ptr<ht::THtmlNode> doc = [] {
    auto d = std::make_unique<ht::THtmlNode>();
    d->ParseBytes(file_bytes().data(), file_bytes().size());
    return d;
  }();
  return *doc;
}

// Thread CPU time: the machine may be shared, and both sides are measured alike.
double cpu_seconds() {
  timespec ts;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

double rate(benchmark::State& state, double start) {
  double s = cpu_seconds() - start;
  return s > 0 ? static_cast<double>(state.iterations()) / s : 0;
}

#ifdef HTCORE_PEERS
pugi::xml_document& peer_doc() {
  static std::unique_ptr<pugi::xml_document> doc = [] {
    auto d = std::make_unique<pugi::xml_document>();
    d->load_buffer(file_bytes().data(), file_bytes().size());
    return d;
  }();
  return *doc;
}

void BM_Pugixml(benchmark::State& state) {
  const Query& q = kQueries[state.range(0)];
  pugi::xml_document& doc = peer_doc();
  long found = 0;
  double start = cpu_seconds();
  for (auto _ : state) {
    if (q.value) {
      std::string v = doc.select_node(q.peer).node().child_value();
      found = static_cast<long>(v.size());
    } else {
      found = static_cast<long>(doc.select_nodes(q.peer).size());
    }
    benchmark::DoNotOptimize(found);
  }
  g_peer_rate[state.range(0)] = rate(state, start);
  g_peer_found[state.range(0)] = found;
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(q.name);
}
BENCHMARK(BM_Pugixml)->DenseRange(0, kCount - 1)->Unit(benchmark::kMicrosecond);
#endif

void BM_Htcore(benchmark::State& state) {
  const Query& q = kQueries[state.range(0)];
  ht::THtmlNode& doc = htcore_doc();
  ht::hstring path = q.htcore;
  long found = 0;
  double start = cpu_seconds();
  for (auto _ : state) {
    if (q.value)
      found = static_cast<long>(doc.XPathValue(path).size());
    else
      found = static_cast<long>(doc.XPath(path)->GetCount());
    benchmark::DoNotOptimize(found);
  }
  g_rate[state.range(0)] = rate(state, start);
  g_found[state.range(0)] = found;
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(q.name);
  if (g_peer_rate[state.range(0)] > 0)
    state.counters["x_pugixml"] = g_rate[state.range(0)] / g_peer_rate[state.range(0)]; // above 1: faster
}
BENCHMARK(BM_Htcore)->DenseRange(0, kCount - 1)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
  if (file_bytes().empty()) {
    std::fprintf(stderr, "xpath_bench: cannot read %s\n", kFile);
    return 1;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  htcore_doc();
#ifdef HTCORE_PEERS
  peer_doc();
#endif
  long nodes = 0;
  for (ht::THtNode* n = &htcore_doc(); n; n = n->NextNode())
    ++nodes;
  std::printf("htcore tree: %ld nodes (blank text nodes kept)\n", nodes);
#ifdef HTCORE_PEERS
  struct Counter : pugi::xml_tree_walker {
    long count = 0;
    bool for_each(pugi::xml_node&) override { return ++count, true; }
  } counter;
  peer_doc().traverse(counter);
  std::printf("pugixml tree: %ld nodes (blank text dropped by its default parse)\n", counter.count + 1);
#endif
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();

  // Result sizes are counts of matches, or text length for the value query.
  std::printf("\n%-16s %14s %14s %8s %8s %8s\n", "query", "htcore q/s", "pugixml q/s", "ratio", "found",
              "peer");
  for (int i = 0; i < kCount; ++i) {
    if (g_rate[i] == 0)
      continue;
    std::printf("%-16s %14.0f %14.0f %8.2f %8ld %8ld\n", kQueries[i].name, g_rate[i], g_peer_rate[i],
                g_peer_rate[i] > 0 ? g_rate[i] / g_peer_rate[i] : 0.0, g_found[i], g_peer_found[i]);
  }
  return 0;
}
