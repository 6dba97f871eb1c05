// Inputs and peer timing shared by the data-document benchmarks: real files
// that Debian ships, read when present, plus a generated document so that a
// benchmark never runs empty.
#pragma once

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <functional>
#include <map>
#include <malloc.h>
#include <sstream>
#include <string>
#include <vector>

#include "htcore/document/node.h"
#include "htcore/foundation/node_pool.h"

namespace bench {

struct TInput {
  std::string name;
  std::string bytes;
};

// The files of paths that exist (named by their base name), then the
// generated document.
inline std::vector<TInput> LoadInputs(std::initializer_list<const char*> paths, std::string generated) {
  std::vector<TInput> v;
  for (const char* path : paths) {
    std::ifstream f(path, std::ios::binary);
    if (!f)
      continue;
    std::stringstream ss;
    ss << f.rdbuf();
    std::string name = path;
    v.push_back({name.substr(name.rfind('/') + 1), ss.str()});
  }
  v.push_back({"generated", std::move(generated)});
  return v;
}

// An XML catalogue of items with attributes, entities, comments and mixed content.
inline std::string MakeXmlCatalogue(int items) {
  std::string s = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<catalog version=\"2\">\n";
  for (int i = 0; i < items; ++i) {
    std::string n = std::to_string(i);
    s += "  <item id=\"" + n + "\" kind=\"k" + std::to_string(i % 5) + "\" price=\"" + n + ".50\">\n" +
         "    <name>Item " + n + " caf\xC3\xA9 &amp; more</name>\n    <tags><tag>a</tag><tag>b" + n +
         "</tag></tags>\n    <!-- note " + n +
         " -->\n    <description>Text with &lt;markup&gt; and "
         "<b>mixed</b> content.</description>\n  </item>\n";
  }
  return s + "</catalog>\n";
}

// What one parse costs in memory, measured once outside the timed loop:
// the peak resident memory the parse adds (Linux: the high-water mark is
// reset through /proc/self/clear_refs first, so earlier runs do not count),
// and the bytes the finished tree holds (malloc's live bytes plus the node
// pool's chunks), per node and per input byte.
struct TMemory {
  double peak_rss = 0;
  double held = 0;
  int64_t nodes = 0;
};

inline double ProcStatusKiB(const char* key) {
  std::ifstream f("/proc/self/status");
  std::string line;
  size_t n = std::char_traits<char>::length(key);
  while (std::getline(f, line))
    if (line.compare(0, n, key) == 0)
      return std::stod(line.substr(n + 1));
  return 0;
}

// Nodes of an htcore tree, the root included.
inline int64_t CountNodes(const ht::THtNode* root) {
  int64_t n = 0;
  for (const ht::THtNode* x = root; x; x = x->NextNode())
    ++n;
  return n;
}

inline size_t HeldBytes() {
  return mallinfo2().uordblks + ht::detail::NodePoolStats().ChunksHeld * ht::detail::kPoolChunk;
}

// Parse gets a Sample(nodes) to call while its tree is still alive.
inline TMemory MeasureMemory(const std::function<void(const std::function<void(int64_t)>&)>& Parse) {
  malloc_trim(0);
  {
    std::ofstream reset("/proc/self/clear_refs");
    reset << "5";
  }
  double rss0 = ProcStatusKiB("VmRSS:");
  size_t held0 = HeldBytes();
  TMemory m;
  Parse([&](int64_t nodes) {
    m.held = static_cast<double>(HeldBytes() - held0);
    m.nodes = nodes;
  });
  m.peak_rss = (ProcStatusKiB("VmHWM:") - rss0) * 1024.0;
  return m;
}

// A benchmark "Memory/LIB/INPUT" of one iteration that measures one parse
// with Parse and reports peak_rss_x (peak RSS added, over the input size),
// held_x (bytes the tree holds, over the input size) and bytes_per_node. It
// stays out of the timed runs' filters (^Htcore/ ...).
using TMemoryParse = std::function<void(const TInput&, const std::function<void(int64_t)>&)>;

inline void RegisterMemory(const std::string& lib, const TInput& in, TMemoryParse parse) {
  benchmark::RegisterBenchmark(("Memory/" + lib + "/" + in.name).c_str(),
                               [&in, parse](benchmark::State& state) {
                                 TMemory m;
                                 for (auto _ : state)
                                   m = MeasureMemory([&](const auto& sample) { parse(in, sample); });
                                 double size = static_cast<double>(in.bytes.size() ? in.bytes.size() : 1);
                                 state.counters["peak_rss_x"] = m.peak_rss / size;
                                 state.counters["held_x"] = m.held / size;
                                 if (m.nodes)
                                   state.counters["bytes_per_node"] = m.held / static_cast<double>(m.nodes);
                               })
      ->Iterations(1)
      ->Unit(benchmark::kMillisecond);
}

// Times a loop by wall clock and keeps the peers' times per input, so that
// any other run (key "" or a name of its own) reports peer time / own time
// as x_PEER counters; Ratios() keeps that of the first peer for a summary.
class TPeerTimer {
public:
  explicit TPeerTimer(std::initializer_list<const char*> peers) : FPeers(peers.begin(), peers.end()) {}

  template <class F> void Run(benchmark::State& state, const TInput& in, const std::string& key, F&& body) {
    auto start = std::chrono::steady_clock::now();
    for (auto _ : state)
      body();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() /
                     static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in.bytes.size()));
    bool is_peer = false;
    for (const std::string& peer : FPeers)
      is_peer = is_peer || peer == key;
    if (is_peer) {
      FSeconds[key + "/" + in.name] = seconds;
      return;
    }
    for (const std::string& peer : FPeers) {
      auto it = FSeconds.find(peer + "/" + in.name);
      if (it == FSeconds.end())
        continue;
      state.counters["x_" + peer] = it->second / seconds;
      if (peer == FPeers.front())
        FRatios[key + "/" + in.name] = it->second / seconds;
    }
  }

  // "run/input" -> first peer's time / the run's time.
  const std::map<std::string, double>& Ratios() const noexcept { return FRatios; }

  // The ratios under a title line, when there are any.
  void PrintRatios() const {
    if (FRatios.empty())
      return;
    std::printf("\n%s time / htcore time (above 1: htcore faster)\n", FPeers.front().c_str());
    for (const auto& [key, ratio] : FRatios)
      std::printf("  %-40s %.2f\n", key.c_str(), ratio);
  }

private:
  std::vector<std::string> FPeers;
  std::map<std::string, double> FSeconds; // "peer/input" -> seconds per iteration
  std::map<std::string, double> FRatios;
};

} // namespace bench
