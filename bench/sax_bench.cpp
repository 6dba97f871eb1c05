// SAX event loop over XML bytes in memory: THtSAXXMLParser (Next, reading
// each event's name, attributes and text) and ExtractText, and with
// HTCORE_PEERS expat with handlers that look at the same data. Inputs: XML
// files Debian ships, when present, and a generated document. (iso_3166-2.xml
// is left out: it holds a bare '&', where expat stops half way.)
// Counter x_expat on the htcore runs: expat time / htcore time, so above 1
// means htcore is faster.
#include "bench_inputs.h"
#include "htcore/document/sax_parser.h"
#include "htcore/foundation/stream_types.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include <expat.h>
#endif

namespace {

using bench::TInput;

std::vector<TInput>& inputs() {
  static std::vector<TInput> list =
      bench::LoadInputs({"/usr/share/mime/packages/freedesktop.org.xml",
                         "/usr/share/xml/iso-codes/iso_639-3.xml", "/usr/share/xml/iso-codes/iso_639-2.xml"},
                        bench::MakeXmlCatalogue(20000));
  return list;
}

// What every loop leaves behind, so that no work can be skipped.
struct TTally {
  int64_t starts = 0;
  int64_t attributes = 0;
  int64_t text_units = 0;
};

bench::TPeerTimer g_timer({"expat"});

template <class F> void timed(benchmark::State& state, const TInput& in, const std::string& key, F&& body) {
  g_timer.Run(state, in, key, body);
}

TTally htcore_next(const TInput& in) {
  ht::TPointerStream stream(in.bytes.data(), static_cast<int64_t>(in.bytes.size()));
  ht::THtSAXXMLParser sax(stream, ht::heUTF8);
  TTally t;
  while (sax.Next()) {
    switch (sax.FLastEvent) {
    case ht::seTagStart:
      ++t.starts;
      for (const ht::THtAttribute& a : sax.FAttributes)
        t.attributes += static_cast<int64_t>(a.Name.size() + a.Value.size());
      break;
    case ht::seText:
      t.text_units += static_cast<int64_t>(sax.FText.size());
      break;
    default:
      break;
    }
  }
  return t;
}

void BM_HtcoreNext(benchmark::State& state, const TInput* in) {
  timed(state, *in, "HtcoreNext", [&] {
    TTally t = htcore_next(*in);
    benchmark::DoNotOptimize(t);
  });
}

void BM_HtcoreExtractText(benchmark::State& state, const TInput* in) {
  timed(state, *in, "HtcoreExtractText", [&] {
    ht::TPointerStream stream(in->bytes.data(), static_cast<int64_t>(in->bytes.size()));
    ht::THtSAXXMLParser sax(stream, ht::heUTF8);
    ht::TFastString fs;
    int64_t units = 0;
    sax.ExtractText(fs, [&](ht::THtSAXXMLParser&, ht::TFastString& text) {
      units += text.GetTotalLen();
      text.Clear();
    });
    benchmark::DoNotOptimize(units);
  });
}

#ifdef HTCORE_PEERS
void XMLCALL expat_start(void* data, const XML_Char*, const XML_Char** attrs) {
  auto t = static_cast<TTally*>(data);
  ++t->starts;
  for (; attrs[0]; attrs += 2)
    t->attributes += static_cast<int64_t>(std::strlen(attrs[0]) + std::strlen(attrs[1]));
}

void XMLCALL expat_end(void*, const XML_Char*) {}

void XMLCALL expat_text(void* data, const XML_Char*, int len) {
  static_cast<TTally*>(data)->text_units += len;
}

TTally expat_run(const TInput& in) {
  TTally t;
  XML_Parser p = XML_ParserCreate(nullptr);
  XML_SetUserData(p, &t);
  XML_SetElementHandler(p, expat_start, expat_end);
  XML_SetCharacterDataHandler(p, expat_text);
  XML_Parse(p, in.bytes.data(), static_cast<int>(in.bytes.size()), 1);
  XML_ParserFree(p);
  return t;
}

void BM_Expat(benchmark::State& state, const TInput* in) {
  timed(state, *in, "expat", [&] {
    TTally t = expat_run(*in);
    benchmark::DoNotOptimize(t);
  });
}
#endif

} // namespace

int main(int argc, char** argv) {
  for (const TInput& in : inputs()) {
    // Both readers see the same document: elements and text (units against
    // UTF-8 bytes, so close but not equal).
    TTally h = htcore_next(in);
    std::printf("%-24s htcore: %lld elements, %lld text units", in.name.c_str(),
                static_cast<long long>(h.starts), static_cast<long long>(h.text_units));
#ifdef HTCORE_PEERS
    TTally e = expat_run(in);
    std::printf("; expat: %lld elements, %lld text bytes", static_cast<long long>(e.starts),
                static_cast<long long>(e.text_units));
#endif
    std::printf("\n");
#ifdef HTCORE_PEERS
    benchmark::RegisterBenchmark(("Expat/" + in.name).c_str(), BM_Expat, &in)->Unit(benchmark::kMillisecond);
#endif
    benchmark::RegisterBenchmark(("HtcoreNext/" + in.name).c_str(), BM_HtcoreNext, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreExtractText/" + in.name).c_str(), BM_HtcoreExtractText, &in)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  if (!g_timer.Ratios().empty()) {
    std::printf("\nexpat time / htcore time (above 1: htcore faster)\n");
    for (const auto& [key, ratio] : g_timer.Ratios())
      std::printf("  %-40s %.2f\n", key.c_str(), ratio);
  }
  return 0;
}
