// XML DOM building from bytes in memory: THtXMLNode (UTF-8 decoding and the
// tree; HtcoreItemReader: the same through the item reader that subclasses
// take), and with HTCORE_PEERS pugixml (load_buffer) and libxml2
// (xmlReadMemory) on the same bytes. Inputs: XML files Debian ships, when
// present, and a generated document. Every run includes freeing the tree.
// Counters x_pugixml / x_libxml2 on the htcore runs: peer time / htcore
// time, so above 1 means htcore is faster.
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

struct TInput {
  std::string name;
  std::string bytes;
};

std::string make_document(int items) {
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

std::vector<TInput>& inputs() {
  static std::vector<TInput> list = [] {
    std::vector<TInput> v;
    for (const char* path :
         {"/usr/share/mime/packages/freedesktop.org.xml", "/usr/share/xml/iso-codes/iso_639-3.xml",
          "/usr/share/xml/iso-codes/iso_3166-2.xml"}) {
      std::ifstream f(path, std::ios::binary);
      if (!f)
        continue;
      std::stringstream ss;
      ss << f.rdbuf();
      std::string name = path;
      v.push_back({name.substr(name.rfind('/') + 1), ss.str()});
    }
    v.push_back({"generated", make_document(20000)});
    return v;
  }();
  return list;
}

std::map<std::string, double> g_peer_seconds; // "peer/input" -> seconds per iteration

template <class F> void timed(benchmark::State& state, const TInput& in, const std::string& key, F&& body) {
  auto start = std::chrono::steady_clock::now();
  for (auto _ : state)
    body();
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() /
                   static_cast<double>(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in.bytes.size()));
  if (!key.empty()) {
    g_peer_seconds[key + "/" + in.name] = seconds;
    return;
  }
  for (const char* peer : {"pugixml", "libxml2"}) {
    auto it = g_peer_seconds.find(std::string(peer) + "/" + in.name);
    if (it != g_peer_seconds.end())
      state.counters[std::string("x_") + peer] = it->second / seconds;
  }
}

void BM_Htcore(benchmark::State& state, const TInput* in) {
  timed(state, *in, "", [&] {
    ht::THtXMLNode doc(ht::Utf8ToHString(in->bytes));
    benchmark::DoNotOptimize(doc.FNodes);
  });
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

int main(int argc, char** argv) {
  for (const TInput& in : inputs()) {
#ifdef HTCORE_PEERS
    benchmark::RegisterBenchmark(("Pugixml/" + in.name).c_str(), BM_Pugixml, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("Libxml2/" + in.name).c_str(), BM_Libxml2, &in)
        ->Unit(benchmark::kMillisecond);
#endif
    benchmark::RegisterBenchmark(("Htcore/" + in.name).c_str(), BM_Htcore, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreItemReader/" + in.name).c_str(), BM_HtcoreItemReader, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreFromText/" + in.name).c_str(), BM_HtcoreFromText, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreUTF8Code/" + in.name).c_str(), BM_HtcoreCode, &in)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
