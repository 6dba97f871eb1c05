// The libxml2 side of the HTML tree benchmarks: parse a page into a tree and
// free it, as the peer of our own parse.
#pragma once

#ifdef HTCORE_PEERS
#include <benchmark/benchmark.h>
#include <libxml/HTMLparser.h>

#include <chrono>
#include <cstdint>
#include <string>

// Runs the loop and answers the seconds one parse took.
inline double Libxml2HtmlTreeLoop(benchmark::State& state, const std::string& page) {
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    htmlDocPtr doc = htmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, "UTF-8",
                                    HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
    benchmark::DoNotOptimize(doc);
    xmlFreeDoc(doc);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(page.size()));
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() /
         static_cast<double>(state.iterations());
}
#endif
