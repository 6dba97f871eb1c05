// XML DOM building from bytes in memory: THtXMLNode (SetUTF8XML, the tree
// read from the bytes; HtcoreDecoded: the whole text decoded to UTF-16 first;
// HtcoreItemReader: that through the item reader that subclasses take), and with HTCORE_PEERS pugixml (load_buffer) and libxml2
// (xmlReadMemory) on the same bytes. Inputs: XML files Debian ships, when
// present, and a generated document. Every run includes freeing the tree.
// Counters x_pugixml / x_libxml2 on the htcore runs: peer time / htcore
// time, so above 1 means htcore is faster. The Memory/LIB/INPUT runs
// measure one parse each: peak_rss_x (peak resident memory it adds, over
// the input size), held_x (bytes the tree holds, over the input size) and
// bytes_per_node (elements, texts and comments; attributes not counted).
// Each library parses a small document first, so that its one-time start
// (htcore's tables, libxml2's globals, code paged in) is not counted as the
// parse's; htcore's start is printed on its own.
#include "bench_inputs.h"
#include "htcore/document/xml_node.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <pugixml.hpp>
#endif

namespace {

using bench::TInput;

std::vector<TInput>& inputs() {
  static std::vector<TInput> list =
      bench::LoadInputs({"/usr/share/mime/packages/freedesktop.org.xml",
                         "/usr/share/xml/iso-codes/iso_639-3.xml", "/usr/share/xml/iso-codes/iso_3166-2.xml"},
                        bench::MakeXmlCatalogue(20000));
  return list;
}

bench::TPeerTimer g_timer({"pugixml", "libxml2"});

template <class F> void timed(benchmark::State& state, const TInput& in, const std::string& key, F&& body) {
  g_timer.Run(state, in, key, body);
}

void BM_Htcore(benchmark::State& state, const TInput* in) {
  timed(state, *in, "", [&] {
    ht::THtXMLNode doc;
    doc.SetUTF8XML(in->bytes);
    benchmark::DoNotOptimize(doc.FNodes);
  });
}

void BM_HtcoreDecoded(benchmark::State& state, const TInput* in) {
  for (auto _ : state) {
    ht::THtXMLNode doc(ht::Utf8ToHString(in->bytes));
    benchmark::DoNotOptimize(doc.FNodes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in->bytes.size()));
}

// The item reader, which a subclass of THtXMLNode still takes.
class TItemReaderNode : public ht::THtXMLNode {
  HT_NODE_CLASS(TItemReaderNode)
};

void BM_HtcoreItemReader(benchmark::State& state, const TInput* in) {
  for (auto _ : state) {
    TItemReaderNode doc;
    doc.SetXML(ht::Utf8ToHString(in->bytes));
    benchmark::DoNotOptimize(doc.FNodes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in->bytes.size()));
}

void BM_HtcoreFromText(benchmark::State& state, const TInput* in) {
  ht::hstring text = ht::Utf8ToHString(in->bytes);
  for (auto _ : state) {
    ht::THtXMLNode doc(text);
    benchmark::DoNotOptimize(doc.FNodes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in->bytes.size()));
}

void BM_HtcoreCode(benchmark::State& state, const TInput* in) {
  ht::THtXMLNode doc(ht::Utf8ToHString(in->bytes));
  for (auto _ : state) {
    ht::RawByteString out = doc.UTF8Code();
    benchmark::DoNotOptimize(out.Pointer());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in->bytes.size()));
}

#ifdef HTCORE_PEERS
int64_t count_pugi(const pugi::xml_node& root) {
  int64_t n = 0;
  struct TCounter : pugi::xml_tree_walker {
    int64_t* N;
    bool for_each(pugi::xml_node&) override { return ++*N, true; }
  } walker;
  walker.N = &n;
  const_cast<pugi::xml_node&>(root).traverse(walker);
  return n + 1;
}

int64_t count_xml(const xmlNode* n) {
  int64_t c = 0;
  for (; n; n = n->next)
    c += 1 + count_xml(n->children);
  return c;
}

void BM_Pugixml(benchmark::State& state, const TInput* in) {
  timed(state, *in, "pugixml", [&] {
    pugi::xml_document doc;
    auto r = doc.load_buffer(in->bytes.data(), in->bytes.size());
    benchmark::DoNotOptimize(r.status);
  });
}

void BM_Libxml2(benchmark::State& state, const TInput* in) {
  timed(state, *in, "libxml2", [&] {
    xmlDocPtr doc =
        xmlReadMemory(in->bytes.data(), static_cast<int>(in->bytes.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    benchmark::DoNotOptimize(doc);
    xmlFreeDoc(doc);
  });
}
#endif

} // namespace

// A small document through each library before any measured run; prints
// the resident memory htcore's start and first parse took.
void warm_up() {
  static const char kDoc[] = "<?xml version='1.0' encoding='UTF-8'?><!-- c --><a x='1' y=\"&amp;\">t &lt; &#65; \xC3\xA9<b/>"
                             "<c>  <d>x</d>\n</c><![CDATA[z]]></a>";
  double rss0 = bench::ProcStatusKiB("VmRSS:");
  {
    ht::THtXMLNode doc;
    doc.SetUTF8XML(kDoc);
  }
  std::printf("htcore start and first parse: %.0f KiB resident\n", bench::ProcStatusKiB("VmRSS:") - rss0);
#ifdef HTCORE_PEERS
  {
    pugi::xml_document doc;
    doc.load_buffer(kDoc, sizeof kDoc - 1);
  }
  xmlFreeDoc(xmlReadMemory(kDoc, static_cast<int>(sizeof kDoc - 1), nullptr, nullptr, XML_PARSE_NONET));
#endif
}

int main(int argc, char** argv) {
  warm_up();
  for (const TInput& in : inputs()) {
#ifdef HTCORE_PEERS
    benchmark::RegisterBenchmark(("Pugixml/" + in.name).c_str(), BM_Pugixml, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("Libxml2/" + in.name).c_str(), BM_Libxml2, &in)
        ->Unit(benchmark::kMillisecond);
#endif
    benchmark::RegisterBenchmark(("Htcore/" + in.name).c_str(), BM_Htcore, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreDecoded/" + in.name).c_str(), BM_HtcoreDecoded, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreItemReader/" + in.name).c_str(), BM_HtcoreItemReader, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreFromText/" + in.name).c_str(), BM_HtcoreFromText, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreUTF8Code/" + in.name).c_str(), BM_HtcoreCode, &in)
        ->Unit(benchmark::kMillisecond);
  }
  for (const TInput& in : inputs()) {
    bench::RegisterMemory("Htcore", in, [](const TInput& in, const auto& sample) {
      ht::THtXMLNode doc;
      doc.SetUTF8XML(in.bytes);
      sample(bench::CountNodes(&doc));
    });
#ifdef HTCORE_PEERS
    bench::RegisterMemory("Pugixml", in, [](const TInput& in, const auto& sample) {
      pugi::xml_document doc;
      doc.load_buffer(in.bytes.data(), in.bytes.size());
      sample(count_pugi(doc));
    });
    bench::RegisterMemory("Libxml2", in, [](const TInput& in, const auto& sample) {
      xmlDocPtr doc = xmlReadMemory(in.bytes.data(), static_cast<int>(in.bytes.size()), nullptr, nullptr,
                                    XML_PARSE_NONET | XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
      sample(count_xml(reinterpret_cast<xmlNode*>(doc)));
      xmlFreeDoc(doc);
    });
#endif
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
