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
#include <map>
#include <sstream>
#include <string>
#include <vector>

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
