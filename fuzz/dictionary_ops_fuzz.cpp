// Reads the input as a program of add / put / extract / remove / find /
// capacity operations on a string-keyed owning dictionary, an id dictionary
// and an integer box, and checks every answer against std::unordered_map.
// Keys come from a tiny alphabet and the hash may be weak, so runs collide,
// wrap around the end and shift often.
#include "htcore/foundation/id_dictionary.h"
#include "htcore/foundation/integer_box.h"
#include "htcore/foundation/string_dictionary.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>

namespace {

struct TItem : ht::TObject {
  static inline int Alive = 0;
  ht::hstring Name;
  uint32_t Tag;
  TItem(ht::hstring n, uint32_t t) : Name(std::move(n)), Tag(t) { ++Alive; }
  ~TItem() override { --Alive; }
};

using TDict = ht::THtObjectDictionaryOf<TItem, &TItem::Name>;

uint32_t WeakHash(const char16_t*, int Len) { return static_cast<uint32_t>(Len) * 0x01000000u; }
uint32_t ZeroHash(const char16_t*, int) { return 0xFFFFFFFFu; } // every key's home is slot 0

void CheckAt(bool ok, int line) {
  if (!ok) {
    std::fprintf(stderr, "check failed at line %d\n", line);
    std::abort();
  }
}
#define Check(ok) CheckAt((ok), __LINE__)

template <class Table> void CheckOrder(const Table& t) {
  const auto* items = t.Items();
  const uint32_t mask = t.Mask();
  int occupied = 0;
  for (uint32_t i = 0; i <= mask; ++i) {
    if (items[i].Hash == i)
      continue;
    ++occupied;
    const uint32_t d = (i - items[i].Hash) & mask;
    const uint32_t prev = (i - 1) & mask;
    const uint32_t pd = items[prev].Hash == prev ? 0 : (prev - items[prev].Hash) & mask;
    Check(d >= 1 && d <= pd + 1);
  }
  Check(occupied == t.Count());
}

struct TReader {
  const uint8_t* p;
  size_t n;
  uint8_t Byte() {
    if (!n)
      return 0;
    --n;
    return *p++;
  }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TReader in{data, size};
  const uint8_t mode = in.Byte();
  const ht::THtHashFunc hash = mode % 3 == 0 ? nullptr : mode % 3 == 1 ? &WeakHash : &ZeroHash;
  {
    TDict dict(mode >> 4, true, hash);
    ht::THtIdPointerDictionary ids(0);
    ht::TShaIntegerBox box(0, (mode & 8) != 0);
    std::unordered_map<std::u16string, uint32_t> ref;
    std::unordered_map<uint32_t, uintptr_t> ref_ids;
    std::unordered_map<uint32_t, uint32_t> ref_box;
    uint32_t serial = 0;
    while (in.n) {
      const uint8_t op = in.Byte();
      // A key of up to 7 units from "abc".
      std::u16string key;
      const int len = in.Byte() % 8;
      for (int i = 0; i < len; ++i)
        key += static_cast<char16_t>(u'a' + in.Byte() % 3);
      const ht::hstring hkey(key);
      // Ids close to the top of the range give homes near slot 0.
      const uint8_t ib = in.Byte();
      const uint32_t id = (ib & 0x80) ? 0xFFFFFFFFu - (ib & 0x1F) : ib;
      ++serial;
      switch (op % 9) {
      case 0: { // add: replaces in a string dictionary
        dict.AddObject(new TItem(hkey, serial));
        ref[key] = serial;
        const int s = ids.Add(id, reinterpret_cast<void*>(uintptr_t(serial) << 4));
        Check((s < 0) == (ref_ids.count(id) == 1));
        ref_ids[id] = uintptr_t(serial) << 4;
        *box.Add(id) = serial;
        ref_box[id] = serial;
        break;
      }
      case 1: { // put with an explicit key and hash
        const uint32_t h = dict.HashOf(hkey);
        dict.PutHashed(h, hkey, new TItem(hkey, serial));
        ref[key] = serial;
        break;
      }
      case 2: {
        TItem* v = dict.Extract(hkey);
        auto it = ref.find(key);
        Check((v != nullptr) == (it != ref.end()));
        if (v) {
          Check(v->Tag == it->second);
          delete v;
          ref.erase(it);
        }
        void* p = ids.Extract(id);
        auto jt = ref_ids.find(id);
        Check((p != nullptr) == (jt != ref_ids.end()));
        if (p) {
          Check(reinterpret_cast<uintptr_t>(p) == jt->second);
          ref_ids.erase(jt);
        }
        break;
      }
      case 3:
        dict.Remove(hkey);
        ref.erase(key);
        Check(box.Remove(id) == (ref_box.erase(id) == 1));
        break;
      case 4:
      case 5: {
        TItem* v = nullptr;
        const bool found = dict.Find(key.data(), len, v);
        auto it = ref.find(key);
        Check(found == (it != ref.end()));
        Check(!found || v->Tag == it->second);
        Check(dict.ContainsKey(hkey) == found);
        auto jt = ref_ids.find(id);
        Check(reinterpret_cast<uintptr_t>(ids.Get(id)) == (jt == ref_ids.end() ? 0 : jt->second));
        uint32_t w = 0;
        auto kt = ref_box.find(id);
        Check(box.Find(id, w) == (kt != ref_box.end()));
        Check(kt == ref_box.end() || w == kt->second);
        break;
      }
      case 6:
        dict.SetCapacity(in.Byte());
        ids.SetCapacity(in.Byte() * 4);
        box.SetCapacity(in.Byte());
        break;
      case 7:
        if (in.Byte() < 16) {
          dict.Clear(ib % 40);
          ref.clear();
          ids.Clear();
          ref_ids.clear();
        }
        break;
      case 8: { // walk: every entry once, in slot order
        size_t seen = 0;
        for (int i = 0; TItem* v = dict.GetNext(i);) {
          auto it = ref.find(std::u16string(v->Name.view()));
          Check(it != ref.end() && it->second == v->Tag);
          ++seen;
        }
        Check(seen == ref.size());
        uint32_t k;
        seen = 0;
        for (int i = 0; box.GetNext(i, k);) {
          Check(ref_box.count(k) == 1);
          ++seen;
        }
        Check(seen == ref_box.size());
        CheckOrder(dict);
        CheckOrder(ids);
        CheckOrder(box);
        break;
      }
      }
      Check(dict.Count() == static_cast<int>(ref.size()));
      Check(ids.Count() == static_cast<int>(ref_ids.size()));
      Check(box.Count() == static_cast<int>(ref_box.size()));
      Check(TItem::Alive == dict.Count());
    }
    CheckOrder(dict);
    CheckOrder(ids);
    CheckOrder(box);
  }
  Check(TItem::Alive == 0);
  return 0;
}
