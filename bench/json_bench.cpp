// JSON to a tree from bytes in memory: JSONUtf8toXMLNode (the bytes read as
// they are; HtcoreFromUtf16: Utf8ToHString and then CreatefromJSON;
// HtcoreTokenReader: the same through the token reader that subclasses
// take), and with HTCORE_PEERS RapidJSON's DOM and
// nlohmann::json on the same bytes. Inputs: the JSON files of Debian's
// iso-codes, when present, and a generated document with numbers, nesting
// and escapes. Counters x_rapidjson / x_nlohmann on the htcore runs: peer
// time / htcore time, so above 1 means htcore is faster. The Memory/ runs as
// in xml_bench: peak_rss_x, held_x and bytes_per_node (an htcore node is an
// object, array or array scalar; object scalars are attributes of their
// object, while RapidJSON counts every value).
#include "bench_inputs.h"
#include "htcore/document/json_reader.h"
#include "htcore/document/xml_node.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#endif

namespace {

using bench::TInput;

std::string make_document(int records) {
  std::string s = "{\"generator\":\"bench\",\"count\":" + std::to_string(records) + ",\"records\":[\n";
  for (int i = 0; i < records; ++i) {
    std::string n = std::to_string(i);
    if (i)
      s += ",\n";
    s += "{\"id\":" + n + ",\"name\":\"Record " + n + " caf\xC3\xA9\",\"price\":" + n +
         ".25,\"ok\":" + (i % 2 ? "true" : "false") + ",\"note\":null,\"tags\":[\"a\",\"b\\n" + n +
         "\",\"\\u00e9t\\u00e9\"],\"size\":{\"w\":" + std::to_string(i % 640) +
         ",\"h\":" + std::to_string(i % 480) + ",\"scale\":1.5e-3},\"path\":\"C:\\\\data\\\\" + n + "\"}";
  }
  return s + "\n]}\n";
}

std::vector<TInput>& inputs() {
  static std::vector<TInput> list = bench::LoadInputs(
      {"/usr/share/iso-codes/json/iso_639-3.json", "/usr/share/iso-codes/json/iso_3166-2.json"},
      make_document(20000));
  return list;
}

bench::TPeerTimer g_timer({"rapidjson", "nlohmann"});

template <class F> void timed(benchmark::State& state, const TInput& in, const std::string& key, F&& body) {
  g_timer.Run(state, in, key, body);
}

void BM_Htcore(benchmark::State& state, const TInput* in) {
  timed(state, *in, "", [&] {
    auto doc = ht::JSONUtf8toXMLNode(in->bytes);
    benchmark::DoNotOptimize(doc->FNodes);
  });
}

void BM_HtcoreFromUtf16(benchmark::State& state, const TInput* in) {
  for (auto _ : state) {
    auto doc = ht::THtXMLNode::CreatefromJSON(ht::Utf8ToHString(in->bytes));
    benchmark::DoNotOptimize(doc->FNodes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in->bytes.size()));
}

// The token reader, which a subclass of THtXMLNode still takes.
class TTokenReaderNode : public ht::THtXMLNode {
  HT_NODE_CLASS(TTokenReaderNode)
};

void BM_HtcoreTokenReader(benchmark::State& state, const TInput* in) {
  for (auto _ : state) {
    TTokenReaderNode doc;
    doc.SetJSON(ht::Utf8ToHString(in->bytes));
    benchmark::DoNotOptimize(doc.FNodes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in->bytes.size()));
}

void BM_HtcoreTokens(benchmark::State& state, const TInput* in) {
  ht::hstring text = ht::Utf8ToHString(in->bytes);
  for (auto _ : state) {
    ht::THtJSONTokenizer t(text);
    int n = 0;
    while (t.NextToken())
      ++n;
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in->bytes.size()));
}

void BM_HtcoreWrite(benchmark::State& state, const TInput* in) {
  auto doc = ht::THtXMLNode::CreatefromJSON(ht::Utf8ToHString(in->bytes));
  for (auto _ : state) {
    ht::hstring out = doc->JSON();
    benchmark::DoNotOptimize(out.Pointer());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in->bytes.size()));
}

#ifdef HTCORE_PEERS
// Values of a RapidJSON tree; object members count once, as their value.
int64_t count_rapidjson(const rapidjson::Value& v) {
  int64_t n = 1;
  if (v.IsObject())
    for (auto m = v.MemberBegin(); m != v.MemberEnd(); ++m)
      n += count_rapidjson(m->value);
  else if (v.IsArray())
    for (const auto& e : v.GetArray())
      n += count_rapidjson(e);
  return n;
}

void BM_RapidJSON(benchmark::State& state, const TInput* in) {
  timed(state, *in, "rapidjson", [&] {
    rapidjson::Document d;
    d.Parse(in->bytes.data(), in->bytes.size());
    benchmark::DoNotOptimize(d.HasParseError());
  });
}

void BM_Nlohmann(benchmark::State& state, const TInput* in) {
  timed(state, *in, "nlohmann", [&] {
    auto j = nlohmann::json::parse(in->bytes);
    benchmark::DoNotOptimize(j.size());
  });
}
#endif

} // namespace

int main(int argc, char** argv) {
  for (const TInput& in : inputs()) {
#ifdef HTCORE_PEERS
    benchmark::RegisterBenchmark(("RapidJSON/" + in.name).c_str(), BM_RapidJSON, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("Nlohmann/" + in.name).c_str(), BM_Nlohmann, &in)
        ->Unit(benchmark::kMillisecond);
#endif
    benchmark::RegisterBenchmark(("Htcore/" + in.name).c_str(), BM_Htcore, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreFromUtf16/" + in.name).c_str(), BM_HtcoreFromUtf16, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreTokenReader/" + in.name).c_str(), BM_HtcoreTokenReader, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreTokens/" + in.name).c_str(), BM_HtcoreTokens, &in)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("HtcoreWrite/" + in.name).c_str(), BM_HtcoreWrite, &in)
        ->Unit(benchmark::kMillisecond);
  }
  for (const TInput& in : inputs()) {
    bench::RegisterMemory("Htcore", in, [](const TInput& in, const auto& sample) {
      auto doc = ht::JSONUtf8toXMLNode(in.bytes);
      sample(bench::CountNodes(doc.get()));
    });
#ifdef HTCORE_PEERS
    bench::RegisterMemory("RapidJSON", in, [](const TInput& in, const auto& sample) {
      rapidjson::Document d;
      d.Parse(in.bytes.data(), in.bytes.size());
      sample(count_rapidjson(d));
    });
#endif
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
