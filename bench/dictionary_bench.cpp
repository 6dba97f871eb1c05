// Lookup speed of the hash table family against std::unordered_map.
//
// String keys: THtObjectDictionary::Find(p, Len) on slices of one text, against
// unordered_map<u16string> with a key made in advance ("prepared") and with a
// u16string built from the slice per lookup ("from slice", what a parser has).
// Id keys: THtIdObjectDictionary::Get against unordered_map<uint32_t>.
// All probes hit, in a shuffled order. The summary prints the ratios; the
// allocs_per_op counter shows which side allocates per lookup.
#include "htcore/foundation/id_dictionary.h"
#include "htcore/foundation/string_dictionary.h"
#include "rate_reporter.h"

#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

std::atomic<size_t> g_allocs{0};

} // namespace

// Counts allocations, so the report can show which side allocates per lookup.
// Kept out of line: inlined into callers, GCC would pair the malloc and free
// inside with the new and delete expressions and warn.
[[gnu::noinline]] void* operator new(size_t n) {
  g_allocs.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(n ? n : 1))
    return p;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* p) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, size_t) noexcept { std::free(p); }

namespace {

struct TItem : ht::TObject {
  ht::hstring Name;
  int Tag = 0;
};

// N distinct identifier-like keys (5 to 16 units), laid out in one source text.
struct TStringKeys {
  std::u16string text;
  std::vector<std::pair<int, int>> slices; // offset, length
  std::vector<int> order;                  // probe order
  std::vector<std::u16string> prepared;    // the keys as std strings, in probe order
};

const TStringKeys& StringKeys(int n) {
  static std::map<int, std::unique_ptr<TStringKeys>> cache;
  auto& slot = cache[n];
  if (slot)
    return *slot;
  slot = std::make_unique<TStringKeys>();
  auto& k = *slot;
  std::mt19937 rng(12345);
  const char16_t alphabet[] = u"abcdefghijklmnopqrstuvwxyz-_0123456789";
  for (int i = 0; i < n; ++i) {
    std::u16string s;
    const int len = 5 + static_cast<int>(rng() % 12);
    for (int j = 0; j < len - 4; ++j)
      s += alphabet[rng() % 38];
    for (int v = i, j = 0; j < 4; ++j, v /= 38) // a unique tail
      s += alphabet[v % 38];
    k.slices.emplace_back(static_cast<int>(k.text.size()), len);
    k.text += s;
    k.text += u' ';
  }
  k.order.resize(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i)
    k.order[static_cast<size_t>(i)] = i;
  std::shuffle(k.order.begin(), k.order.end(), rng);
  for (int i : k.order)
    k.prepared.emplace_back(k.text.data() + k.slices[static_cast<size_t>(i)].first,
                            static_cast<size_t>(k.slices[static_cast<size_t>(i)].second));
  return k;
}

std::ptrdiff_t ItemKeyOffset() {
  TItem sample;
  return ht::HtClassFieldOffset(static_cast<ht::TObject*>(&sample), &sample.Name);
}

struct THtSide {
  ht::THtObjectDictionary dict{0, true, ItemKeyOffset()};
};
struct TStdSide {
  std::unordered_map<std::u16string, TItem*> map;
  std::vector<std::unique_ptr<TItem>> items;
};

THtSide& HtStrings(int n) {
  static std::map<int, std::unique_ptr<THtSide>> cache;
  auto& slot = cache[n];
  if (!slot) {
    slot = std::make_unique<THtSide>();
    const auto& k = StringKeys(n);
    for (int i = 0; i < n; ++i) {
      auto* item = new TItem;
      item->Name = ht::hstring(k.text.data() + k.slices[static_cast<size_t>(i)].first,
                               static_cast<size_t>(k.slices[static_cast<size_t>(i)].second));
      item->Tag = i;
      slot->dict.AddObject(item);
    }
  }
  return *slot;
}

TStdSide& StdStrings(int n) {
  static std::map<int, std::unique_ptr<TStdSide>> cache;
  auto& slot = cache[n];
  if (!slot) {
    slot = std::make_unique<TStdSide>();
    const auto& k = StringKeys(n);
    slot->map.reserve(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
      auto item = std::make_unique<TItem>();
      item->Tag = i;
      slot->map.emplace(std::u16string(k.text.data() + k.slices[static_cast<size_t>(i)].first,
                                       static_cast<size_t>(k.slices[static_cast<size_t>(i)].second)),
                        item.get());
      slot->items.push_back(std::move(item));
    }
  }
  return *slot;
}

void Finish(benchmark::State& state, size_t allocs_before) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
  state.counters["allocs_per_op"] =
      static_cast<double>(g_allocs.load() - allocs_before) / static_cast<double>(state.iterations());
}

void BM_HtStringFind(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto& k = StringKeys(n);
  const auto& d = HtStrings(n).dict;
  const char16_t* text = k.text.data();
  size_t i = 0;
  const size_t allocs = g_allocs.load();
  for (auto _ : state) {
    const auto& s = k.slices[static_cast<size_t>(k.order[i])];
    ht::TObject* v;
    const bool found = d.Find(text + s.first, s.second, v);
    benchmark::DoNotOptimize(found);
    benchmark::DoNotOptimize(v);
    if (++i == k.order.size())
      i = 0;
  }
  Finish(state, allocs);
}

void BM_StdStringFindPrepared(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto& k = StringKeys(n);
  const auto& m = StdStrings(n).map;
  size_t i = 0;
  const size_t allocs = g_allocs.load();
  for (auto _ : state) {
    auto it = m.find(k.prepared[i]);
    benchmark::DoNotOptimize(it);
    if (++i == k.order.size())
      i = 0;
  }
  Finish(state, allocs);
}

void BM_StdStringFindFromSlice(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto& k = StringKeys(n);
  const auto& m = StdStrings(n).map;
  const char16_t* text = k.text.data();
  size_t i = 0;
  const size_t allocs = g_allocs.load();
  for (auto _ : state) {
    const auto& s = k.slices[static_cast<size_t>(k.order[i])];
    auto it = m.find(std::u16string(text + s.first, static_cast<size_t>(s.second)));
    benchmark::DoNotOptimize(it);
    if (++i == k.order.size())
      i = 0;
  }
  Finish(state, allocs);
}

struct TIdKeys {
  std::vector<uint32_t> ids;   // insertion order
  std::vector<uint32_t> order; // probe order
};

const TIdKeys& IdKeys(int n) {
  static std::map<int, std::unique_ptr<TIdKeys>> cache;
  auto& slot = cache[n];
  if (!slot) {
    slot = std::make_unique<TIdKeys>();
    std::mt19937 rng(777);
    std::unordered_map<uint32_t, bool> seen;
    while (static_cast<int>(slot->ids.size()) < n) {
      const uint32_t id = static_cast<uint32_t>(rng());
      if (seen.emplace(id, true).second)
        slot->ids.push_back(id);
    }
    slot->order = slot->ids;
    std::shuffle(slot->order.begin(), slot->order.end(), rng);
  }
  return *slot;
}

ht::THtIdObjectDictionary& HtIds(int n) {
  static std::map<int, std::unique_ptr<ht::THtIdObjectDictionary>> cache;
  auto& slot = cache[n];
  if (!slot) {
    slot = std::make_unique<ht::THtIdObjectDictionary>(0, false);
    for (uint32_t id : IdKeys(n).ids)
      slot->Add(id, reinterpret_cast<ht::TObject*>(static_cast<uintptr_t>(id) << 4));
  }
  return *slot;
}

std::unordered_map<uint32_t, ht::TObject*>& StdIds(int n) {
  static std::map<int, std::unique_ptr<std::unordered_map<uint32_t, ht::TObject*>>> cache;
  auto& slot = cache[n];
  if (!slot) {
    slot = std::make_unique<std::unordered_map<uint32_t, ht::TObject*>>();
    for (uint32_t id : IdKeys(n).ids)
      slot->emplace(id, reinterpret_cast<ht::TObject*>(static_cast<uintptr_t>(id) << 4));
  }
  return *slot;
}

void BM_HtIdGet(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto& k = IdKeys(n);
  const auto& d = HtIds(n);
  size_t i = 0;
  const size_t allocs = g_allocs.load();
  for (auto _ : state) {
    benchmark::DoNotOptimize(d.Get(k.order[i]));
    if (++i == k.order.size())
      i = 0;
  }
  Finish(state, allocs);
}

void BM_StdIdFind(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto& k = IdKeys(n);
  const auto& m = StdIds(n);
  size_t i = 0;
  const size_t allocs = g_allocs.load();
  for (auto _ : state) {
    auto it = m.find(k.order[i]);
    benchmark::DoNotOptimize(it);
    if (++i == k.order.size())
      i = 0;
  }
  Finish(state, allocs);
}

BENCHMARK(BM_HtStringFind)->Arg(10000)->Arg(1000000);
BENCHMARK(BM_StdStringFindPrepared)->Arg(10000)->Arg(1000000);
BENCHMARK(BM_StdStringFindFromSlice)->Arg(10000)->Arg(1000000);
BENCHMARK(BM_HtIdGet)->Arg(10000)->Arg(1000000);
BENCHMARK(BM_StdIdFind)->Arg(10000)->Arg(1000000);

} // namespace

int main(int argc, char** argv) {
  bench::TRateReporter reporter;
  if (!bench::RunWithRates(argc, argv, reporter))
    return 1;
  auto rate = [&](const std::string& name) { return reporter.Rate(name); };
  std::printf("\n%-34s %14s %14s %8s\n", "lookup (all hits)", "htcore Mops/s", "std Mops/s", "ratio");
  for (const char* n : {"10000", "1000000"}) {
    const std::string arg = std::string("/") + n;
    struct {
      const char* label;
      std::string ht, peer;
    } rows[] = {
        {"string, std key prepared", "BM_HtStringFind" + arg, "BM_StdStringFindPrepared" + arg},
        {"string, std key from slice", "BM_HtStringFind" + arg, "BM_StdStringFindFromSlice" + arg},
        {"id", "BM_HtIdGet" + arg, "BM_StdIdFind" + arg},
    };
    for (auto& r : rows) {
      const double a = rate(r.ht), b = rate(r.peer);
      if (a > 0 && b > 0)
        std::printf("%-26s %7s %14.1f %14.1f %7.2fx\n", r.label, n, a / 1e6, b / 1e6, a / b);
    }
  }
  return 0;
}
