#include "foundation/dictionary_test_util.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/hash.h"
#include "htcore/foundation/id_dictionary.h"
#include "htcore/foundation/string_dictionary.h"

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

using namespace ht;
using dict_test::RobinHoodOrdered;
using dict_test::TCounted;
using dict_test::TRandom;

namespace {

TObject* Obj(uintptr_t n) { return reinterpret_cast<TObject*>(n * 16); } // never dereferenced
void* Ptr(uintptr_t n) { return reinterpret_cast<void*>(n * 16); }

} // namespace

// ---------------------------------------------------------------- hashes

TEST(DictionaryHash, KnownValues) {
  struct {
    std::u16string text;
    uint32_t sha, jenkins, rs;
  } cases[] = {
      {u"", 0, 0, 0},
      {u"a", 0x170c96f0, 0xca2e9442, 0x61},
      {u"abc", 0xe5bcd385, 0xed131f5b, 0xb1012aac},
      {u"div", 0x08ecab70, 0x18098661, 0x0b0d95b3},
      {u"Hello, world", 0xf4d19604, 0x677de066, 0x88fe8f5a},
      {u"\u20AC\uFFFF", 0xde4c7a1f, 0x81a0f471, 0xcca31193},
  };
  for (auto& c : cases) {
    const int n = static_cast<int>(c.text.size());
    SCOPED_TRACE(std::string(c.text.begin(), c.text.end()));
    EXPECT_EQ(ShaPerfectHash(c.text.data(), n), c.sha);
    EXPECT_EQ(ShaPerfectHashAsm(c.text.data(), n), c.sha);
    EXPECT_EQ(JenkinsHash(c.text.data(), n), c.jenkins);
    EXPECT_EQ(RSHash(c.text.data(), n), c.rs);
  }
}

TEST(DictionaryHash, UnrolledAndByteFormsAgree) {
  TRandom rnd(7);
  std::u16string s;
  std::string bytes;
  for (int len = 0; len < 40; ++len) {
    EXPECT_EQ(ShaPerfectHashAsm(s.data(), len), ShaPerfectHash(s.data(), len)) << len;
    EXPECT_EQ(ShaPerfectHashANSI(bytes.data(), len), ShaPerfectHash(s.data(), len)) << len;
    EXPECT_EQ(JenkinsHashANSI(bytes.data(), len), JenkinsHash(s.data(), len)) << len;
    const char c = static_cast<char>(0x20 + rnd.Below(0x5F));
    s += static_cast<char16_t>(c);
    bytes += c;
  }
  // Bytes count as unsigned: 0xE9 hashes like U+00E9.
  EXPECT_EQ(ShaPerfectHashANSI("\xE9", 1), ShaPerfectHash(u"\u00E9", 1));
  EXPECT_EQ(JenkinsHashANSI("\xE9", 1), JenkinsHash(u"\u00E9", 1));
  // Full 16-bit units in the unrolled form.
  std::u16string wide(13, u'\xFFFF');
  EXPECT_EQ(ShaPerfectHashAsm(wide.data(), 13), ShaPerfectHash(wide.data(), 13));
}

// ---------------------------------------------------------------- capacity

TEST(DictionaryCapacity, LengthRule) {
  struct {
    int request, count;
    uint32_t length;
  } cases[] = {
      {0, 0, 4},
      {-5, 0, 4},
      {2, 0, 4},
      {3, 0, 8},
      {5, 0, 8},
      {6, 0, 16},
      {11, 0, 16},
      {12, 0, 32},
      {0, 3, 8},
      {0, 6, 16},
      {2125, 0, 4096},
      {98303, 0, 131072},
      {98304, 0, 262144},
      {0, 196608, 262144},
      {0, 229375, 262144},
      {0, 229376, 524288},
      {0x40000000, 0, 0x40000000},
  };
  for (auto& c : cases)
    EXPECT_EQ(detail::HtTableLength(c.request, c.count), c.length) << c.request << " " << c.count;
  EXPECT_THROW(detail::HtTableLength(0x40000001, 0), EOutOfMemory);
  EXPECT_EQ(detail::HtTableGrowAt(8, 0), 6);
  EXPECT_EQ(detail::HtTableGrowAt(262144, 100001), 229376);
  EXPECT_EQ(detail::HtTableGrowAt(0x40000000, 0), 0x3FFFFFFF);
}

TEST(DictionaryCapacity, FourthAddDoublesFromFour) {
  THtIdPointerDictionary d(0);
  EXPECT_EQ(d.Capacity(), 4);
  EXPECT_EQ(d.GrowAt(), 3);
  for (uint32_t k = 1; k <= 3; ++k)
    d.Add(k * 100, Ptr(k));
  EXPECT_EQ(d.Capacity(), 4);
  d.Add(400, Ptr(4));
  EXPECT_EQ(d.Capacity(), 8);
  EXPECT_EQ(d.GrowAt(), 6);
  for (uint32_t k = 1; k <= 4; ++k)
    EXPECT_EQ(d.Get(k * 100), Ptr(k));
}

TEST(DictionaryCapacity, ClearZeroGoesBackToFourSlots) {
  THtIdObjectDictionary d(1000, false);
  for (uint32_t k = 0; k < 700; ++k)
    d.Add(k, Obj(k + 1));
  EXPECT_EQ(d.Capacity(), 2048);
  d.Clear(0);
  EXPECT_EQ(d.Count(), 0);
  EXPECT_EQ(d.Capacity(), 4);
  EXPECT_EQ(d.GrowAt(), 3);
  EXPECT_EQ(d.Get(5), nullptr);
  for (uint32_t k = 0; k < 3; ++k)
    d.Add(k, Obj(k + 1));
  EXPECT_EQ(d.Capacity(), 4);
  // Clear to the same length reuses the array.
  d.Clear(2);
  EXPECT_EQ(d.Capacity(), 4);
  EXPECT_EQ(d.Count(), 0);
  EXPECT_TRUE(RobinHoodOrdered(d));
  EXPECT_FALSE(d.ContainsKey(1));
}

// Up to 100,000 entries a table fills to 3/4, beyond that to 7/8.
TEST(DictionaryCapacity, ThreeQuartersThenSevenEighths) {
  THtIdPointerDictionary d(0);
  std::vector<std::pair<int, int>> growth; // (count before the add, new length)
  int length = d.Capacity();
  for (uint32_t k = 0; k < 230000; ++k) {
    const int before = d.Count();
    d.Add(k * 2654435761u, Ptr(1));
    if (d.Capacity() != length) {
      length = d.Capacity();
      growth.emplace_back(before, length);
    }
  }
  ASSERT_GE(growth.size(), 3u);
  const auto n = growth.size();
  EXPECT_EQ(growth[n - 2], std::make_pair(98304, 262144));  // 3/4 of 131072
  EXPECT_EQ(growth[n - 1], std::make_pair(229376, 524288)); // 7/8 of 262144
  EXPECT_EQ(d.GrowAt(), 524288 - 65536);
  EXPECT_TRUE(RobinHoodOrdered(d));
  growth.pop_back();
  growth.pop_back();
  // Below 100,000 every growth happens at 3/4.
  for (auto [count, len] : growth)
    EXPECT_EQ(count, len / 2 - len / 8) << len;
}

TEST(DictionaryCapacity, SetCapacityLeavesNonEmptyTablesAlone) {
  THtIdPointerDictionary d(100);
  EXPECT_EQ(d.Capacity(), 256);
  for (uint32_t k = 0; k < 10; ++k)
    d.Add(k, Ptr(k + 1));
  d.SetCapacity(0); // smaller, but not empty
  EXPECT_EQ(d.Capacity(), 256);
  d.SetCapacity(300);
  EXPECT_EQ(d.Capacity(), 512);
  EXPECT_EQ(d.GrowAt(), 384);
  for (uint32_t k = 0; k < 10; ++k)
    EXPECT_EQ(d.Get(k), Ptr(k + 1));
  EXPECT_TRUE(RobinHoodOrdered(d));
  for (uint32_t k = 0; k < 10; ++k)
    d.Remove(k);
  d.SetCapacity(0); // empty: shrinks
  EXPECT_EQ(d.Capacity(), 4);
  EXPECT_THROW(d.SetCapacity(0x40000001), EOutOfMemory);
  EXPECT_EQ(d.Capacity(), 4);
  EXPECT_THROW(d.Clear(0x7FFFFFFF), EOutOfMemory);
  EXPECT_EQ(d.Capacity(), 4);
}

// Growing by several doublings at once rehashes from an empty slot in one pass.
TEST(DictionaryCapacity, RehashKeepsOrderAcrossManyDoublings) {
  TRandom rnd(99);
  for (int round = 0; round < 40; ++round) {
    THtIdPointerDictionary d(0);
    std::vector<uint32_t> keys;
    const int n = 1 + static_cast<int>(rnd.Below(40));
    for (int i = 0; i < n; ++i) {
      // Clustered ids make long runs that wrap around the end.
      const uint32_t k = rnd.Below(2) ? rnd.Below(8) + 0xFFFFFFF8u : rnd.Next();
      d.Add(k, Ptr(k | 1));
      keys.push_back(k);
    }
    d.SetCapacity(static_cast<int>(rnd.Below(3000)));
    ASSERT_TRUE(RobinHoodOrdered(d));
    for (uint32_t k : keys)
      ASSERT_EQ(d.Get(k), Ptr(k | 1));
  }
}

// ---------------------------------------------------------------- probing

TEST(IdDictionary, IdsEqualToSlotNumbers) {
  THtIdPointerDictionary d(0);
  d.Add(0, Ptr(10));
  d.Add(1, Ptr(11));
  d.Add(2, Ptr(12));
  const auto* s = d.Items();
  // Id i lives in slot i + 1; slot 0 holds 0 because it is empty.
  EXPECT_EQ(s[0].Hash, 0u);
  EXPECT_TRUE(d.IsEmptySlot(0));
  EXPECT_EQ(s[1].Hash, 0u);
  EXPECT_EQ(s[2].Hash, 1u);
  EXPECT_EQ(s[3].Hash, 2u);
  for (uint32_t k = 0; k < 3; ++k)
    EXPECT_EQ(d.Get(k), Ptr(10 + k));
  EXPECT_EQ(d.Get(3), nullptr);
  EXPECT_EQ(d.Get(4), nullptr); // home slot 1, same as id 0 in a table of 4
  EXPECT_TRUE(RobinHoodOrdered(d));
}

// At grow-at a 4-slot table has one empty slot left. A probe for the id equal
// to that slot's index walks the whole table and must not take the empty
// slot for a match.
TEST(IdDictionary, ProbeEndsAtTheLastEmptySlot) {
  THtIdPointerDictionary d(0);
  for (uint32_t k : {64u, 32u, 104u}) // all at home 1: slots 1, 2, 3
    d.Add(k, Ptr(k));
  ASSERT_TRUE(d.IsEmptySlot(0));
  EXPECT_EQ(d.Get(0), nullptr);
  EXPECT_FALSE(d.ContainsKey(0));
  EXPECT_EQ(d.InternalFind(0), ~0);
  EXPECT_EQ(d.Extract(0), nullptr);
  EXPECT_EQ(d.Count(), 3);
}

// Keys whose hash is the mask value have their home in slot 0; runs that start
// near the end continue at slot 0.
TEST(IdDictionary, WrapAroundInFindInsertDelete) {
  struct {
    std::vector<uint32_t> keys;  // inserted in order into 16 slots
    std::vector<uint32_t> slots; // expected slot of each key
  } cases[] = {
      {{15, 31, 47}, {0, 1, 2}},                 // home 0
      {{14, 30, 46, 62}, {15, 0, 1, 2}},         // home 15, wraps
      {{13, 15, 29, 45, 14}, {14, 2, 15, 0, 1}}, // later ones shift residents over the end
      {{15, 14, 30, 13, 29, 45}, {3, 1, 2, 14, 15, 0}},
  };
  for (auto& c : cases) {
    THtIdPointerDictionary d(8);
    ASSERT_EQ(d.Capacity(), 16);
    for (uint32_t k : c.keys) {
      EXPECT_GE(d.Add(k, Ptr(k + 1)), 0);
      ASSERT_TRUE(RobinHoodOrdered(d));
    }
    for (size_t i = 0; i < c.keys.size(); ++i) {
      EXPECT_EQ(d.Items()[c.slots[i]].Hash, c.keys[i]) << "key " << c.keys[i];
      EXPECT_EQ(d.Get(c.keys[i]), Ptr(c.keys[i] + 1));
    }
    // Delete each key in turn from a fresh copy: the others stay reachable.
    for (size_t del = 0; del < c.keys.size(); ++del) {
      THtIdPointerDictionary e(8);
      for (uint32_t k : c.keys)
        e.Add(k, Ptr(k + 1));
      EXPECT_EQ(e.Extract(c.keys[del]), Ptr(c.keys[del] + 1));
      EXPECT_TRUE(RobinHoodOrdered(e));
      for (size_t i = 0; i < c.keys.size(); ++i)
        EXPECT_EQ(e.Get(c.keys[i]), i == del ? nullptr : Ptr(c.keys[i] + 1)) << c.keys[i];
    }
  }
}

TEST(IdDictionary, ShiftPointerItemsWrapsAround) {
  THtIdPointerDictionary d(8);            // 16 slots
  for (uint32_t k : {13u, 14u, 15u, 29u}) // 29 joins 13 at home 14: slots 14, 0, 1, 15
    d.Add(k, Ptr(k));
  const auto* s = d.Items();
  ASSERT_EQ(s[15].Hash, 29u);
  d.ShiftPointerItems(15, d.Mask()); // slots 15, 0, 1 move up to 0, 1, 2
  EXPECT_EQ(s[14].Hash, 13u);
  EXPECT_EQ(s[0].Hash, 29u);
  EXPECT_EQ(s[1].Hash, 14u);
  EXPECT_EQ(s[2].Hash, 15u);
  EXPECT_EQ(s[2].Value, Ptr(15));
  EXPECT_EQ(s[15].Hash, 29u); // left for the caller to overwrite
}

TEST(IdDictionary, RemovingFromAFullRunLeavesNoGap) {
  for (uint32_t victim = 0; victim < 12; ++victim) {
    THtIdPointerDictionary d(16); // 32 slots
    for (uint32_t i = 0; i < 12; ++i)
      d.Add(5 + 32 * i, Ptr(i + 1)); // one run of 12 with home 6
    d.Add(6, Ptr(100));              // home 7: pushed behind the run
    d.Add(17, Ptr(101));             // home 18: pushed behind as well
    EXPECT_EQ(d.Remove(5 + 32 * victim), Ptr(victim + 1));
    ASSERT_TRUE(RobinHoodOrdered(d));
    for (uint32_t i = 0; i < 12; ++i)
      EXPECT_EQ(d.Get(5 + 32 * i), i == victim ? nullptr : Ptr(i + 1));
    EXPECT_EQ(d.Get(6), Ptr(100));
    EXPECT_EQ(d.Get(17), Ptr(101));
    EXPECT_EQ(d.Count(), 13);
  }
}

TEST(IdDictionary, AddAndPutReturnValues) {
  THtIdPointerDictionary p(0);
  const int s = p.Add(9, Ptr(1));
  ASSERT_GE(s, 0);
  EXPECT_EQ(p.Add(9, Ptr(2)), ~s); // overwrites, answers the complement
  EXPECT_EQ(p.Get(9), Ptr(2));
  EXPECT_EQ(p.Put(9, Ptr(3)), s);
  EXPECT_EQ(p.Get(9), Ptr(3));

  THtIdObjectDictionary o(0, false);
  const int t = o.Add(9, Obj(1));
  EXPECT_EQ(o.Add(9, Obj(2)), ~t); // leaves the value alone
  EXPECT_EQ(o.Get(9), Obj(1));
  EXPECT_EQ(o.Put(9, Obj(2)), t);
  EXPECT_EQ(o.Get(9), Obj(2));
  EXPECT_EQ(o.InternalFind(10), ~static_cast<int>(11 & o.Mask()));
  TObject* v = nullptr;
  EXPECT_FALSE(o.TryGetValue(10, v));
  EXPECT_EQ(v, nullptr);
  EXPECT_TRUE(o.TryGetValue(9, v));
  EXPECT_EQ(v, Obj(2));
  EXPECT_EQ(o.Extract(10), nullptr);
  o.Remove(10); // absent: nothing happens
  EXPECT_EQ(o.Count(), 1);
}

TEST(IdDictionary, OwnershipFreesExactlyWhatItShould) {
  using TStrays = std::vector<TCounted*>; // objects the test still has to free
  struct {
    const char* name;
    bool owns;
    TStrays (*act)(THtIdObjectDictionary&, TCounted*); // on a table holding key 1 -> first
    int alive_after_act, alive_after_destroy;
  } cases[] = {
      {"put other", true,
       [](auto& d, auto*) {
         d.Put(1, new TCounted);
         return TStrays{};
       },
       1, 0},
      {"put same", true,
       [](auto& d, auto* first) {
         d.Put(1, first);
         return TStrays{};
       },
       1, 0},
      {"add existing", true,
       [](auto& d, auto*) {
         auto* second = new TCounted;
         EXPECT_LT(d.Add(1, second), 0);
         return TStrays{second};
       },
       2, 1},
      {"extract", true,
       [](auto& d, auto* first) {
         EXPECT_EQ(d.Extract(1), first);
         return TStrays{first};
       },
       1, 1},
      {"remove", true,
       [](auto& d, auto*) {
         d.Remove(1);
         return TStrays{};
       },
       0, 0},
      {"clear", true,
       [](auto& d, auto*) {
         d.Clear();
         return TStrays{};
       },
       0, 0},
      {"clear to a new length", true,
       [](auto& d, auto*) {
         d.Clear(500);
         return TStrays{};
       },
       0, 0},
      {"put other, not owning", false,
       [](auto& d, auto* first) {
         auto* second = new TCounted;
         d.Put(1, second);
         return TStrays{first, second};
       },
       2, 2},
      {"remove, not owning", false,
       [](auto& d, auto* first) {
         d.Remove(1);
         return TStrays{first};
       },
       1, 1},
      {"clear, not owning", false,
       [](auto& d, auto* first) {
         d.Clear();
         return TStrays{first};
       },
       1, 1},
  };
  for (auto& c : cases) {
    SCOPED_TRACE(c.name);
    TCounted::Alive = 0;
    TStrays strays;
    {
      THtIdObjectDictionary d(0, c.owns);
      auto* first = new TCounted;
      d.Add(1, first);
      strays = c.act(d, first);
      EXPECT_EQ(TCounted::Alive, c.alive_after_act);
    }
    EXPECT_EQ(TCounted::Alive, c.alive_after_destroy);
    for (auto* o : strays)
      delete o;
    EXPECT_EQ(TCounted::Alive, 0);
  }
}

TEST(IdDictionary, DestructorFreesOwnedValues) {
  TCounted::Alive = 0;
  {
    THtIdObjectDictionary d(0, true);
    for (uint32_t k = 0; k < 50; ++k)
      d.Add(k, new TCounted);
    EXPECT_EQ(TCounted::Alive, 50);
  }
  EXPECT_EQ(TCounted::Alive, 0);
}

TEST(IdDictionary, GetNextAndTraverseWalkSlotOrder) {
  THtIdPointerDictionary d(0);
  std::unordered_map<uint32_t, void*> expect;
  for (uint32_t k = 1; k <= 40; ++k) {
    d.Add(k * 7919, Ptr(k));
    expect[k * 7919] = Ptr(k);
  }
  std::vector<void*> walked;
  int index = 0;
  uint32_t key = 0;
  int last_slot = -1;
  while (void* v = d.GetNext(index, key)) {
    EXPECT_GT(index - 1, last_slot); // strictly increasing slots
    last_slot = index - 1;
    EXPECT_EQ(d.Items()[index - 1].Hash, key);
    EXPECT_EQ(expect.at(key), v);
    walked.push_back(v);
  }
  EXPECT_EQ(walked.size(), 40u);
  EXPECT_EQ(index, d.Capacity()); // above mask at the end
  EXPECT_EQ(d.GetNext(index), nullptr);

  std::vector<void*> traversed;
  d.Traverse(&traversed, [](void* data, void* v) { static_cast<std::vector<void*>*>(data)->push_back(v); });
  EXPECT_EQ(traversed, walked);
}

// ---------------------------------------------------------------- string keys

namespace {

struct TNamed : TObject {
  int Before = 0;
  hstring Name;
  int Tag = 0;
  TNamed(hstring n, int t) : Name(std::move(n)), Tag(t) {}
};

struct TRec {
  int Id;
  hstring Name;
};

ptrdiff_t NamedOffset() {
  TNamed sample({}, 0);
  return HtClassFieldOffset(static_cast<TObject*>(&sample), &sample.Name);
}

uint32_t LengthHash(const char16_t*, int Len) { return static_cast<uint32_t>(Len); }

} // namespace

TEST(ObjectDictionary, OffsetFormFindsSlicesAndHstrings) {
  THtObjectDictionary d(0, true, NamedOffset());
  d.AddObject(new TNamed(u"div"_hs, 1));
  d.AddObject(new TNamed(u"span"_hs, 2));
  d.AddObject(new TNamed(hstring(), 3)); // the empty key is a key like any other
  const char16_t source[] = u"<span class=x>";
  TObject* v = nullptr;
  ASSERT_TRUE(d.Find(source + 1, 4, v));
  EXPECT_EQ(static_cast<TNamed*>(v)->Tag, 2);
  EXPECT_FALSE(d.Find(source + 1, 3, v)); // "spa"
  EXPECT_EQ(v, nullptr);
  EXPECT_EQ(static_cast<TNamed*>(d.Get(u"div"_hs))->Tag, 1);
  EXPECT_EQ(static_cast<TNamed*>(d.Get(source, 0))->Tag, 3);
  EXPECT_EQ(static_cast<TNamed*>(d.Get(hstring()))->Tag, 3);
  EXPECT_TRUE(d.ContainsKey(u"span"_hs));
  EXPECT_FALSE(d.ContainsKey(u"Span"_hs));
  // Hash once, find and add with it.
  const uint32_t h = d.HashOf(u"p"_hs);
  EXPECT_EQ(h, ShaPerfectHash(u"p", 1));
  const int miss = d.FindHashed(h, u"p", 1);
  EXPECT_LT(miss, 0);
  const int slot = d.AddHashed(h, u"p"_hs, new TNamed(u"p"_hs, 4));
  EXPECT_EQ(slot, ~miss);
  EXPECT_EQ(d.FindHashed(h, u"p"_hs), slot);
  EXPECT_EQ(d.Count(), 4);
}

TEST(ObjectDictionary, ReplacementFreesADifferentOldValue) {
  TCounted::Alive = 0;
  {
    THtObjectDictionaryOf<TCounted, &TCounted::Name> d(0, true);
    auto* a = new TCounted(u"k"_hs, 1);
    const int s = d.AddObject(a);
    EXPECT_EQ(d.AddObject(a), s); // the same pointer again: kept
    EXPECT_EQ(TCounted::Alive, 1);
    auto* b = new TCounted(u"k"_hs, 2);
    EXPECT_EQ(d.Add(u"k"_hs, b), s); // Add replaces in string dictionaries
    EXPECT_EQ(TCounted::Alive, 1);
    EXPECT_EQ(d.Get(u"k"_hs), b);
    EXPECT_EQ(d.Put(u"k"_hs, new TCounted(u"k"_hs, 3)), s);
    EXPECT_EQ(TCounted::Alive, 1);
    TCounted* out = d.Extract(u"k"_hs);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->Tag, 3);
    EXPECT_EQ(TCounted::Alive, 1);
    delete out;
    d.AddObject(new TCounted(u"x"_hs));
    d.AddObject(new TCounted(u"y"_hs));
    d.Remove(u"x"_hs);
    EXPECT_EQ(TCounted::Alive, 1);
    d.Remove(u"nothing"_hs);
  }
  EXPECT_EQ(TCounted::Alive, 0);
  {
    THtObjectDictionaryOf<TCounted, &TCounted::Name> d(0, false);
    TCounted a(u"k"_hs), b(u"k"_hs);
    d.AddObject(&a);
    d.AddObject(&b);
    EXPECT_EQ(d.Get(u"k"_hs), &b);
    EXPECT_EQ(d.Count(), 1);
  }
}

// With every key of one length colliding, key comparison decides alone.
TEST(ObjectDictionary, CollidingHashesCompareKeys) {
  THtObjectDictionaryOf<TCounted, &TCounted::Name> d(0, true, &LengthHash);
  std::vector<hstring> keys;
  for (int i = 0; i < 60; ++i)
    keys.push_back(hstring(u"k") + hstring(std::u16string(1, static_cast<char16_t>(u'A' + i % 26))) +
                   hstring(std::u16string(1, static_cast<char16_t>(u'a' + i / 26))));
  for (int i = 0; i < 60; ++i)
    d.AddObject(new TCounted(keys[i], i));
  EXPECT_EQ(d.Count(), 60);
  EXPECT_TRUE(RobinHoodOrdered(d));
  for (int i = 0; i < 60; ++i) {
    TCounted* v = nullptr;
    ASSERT_TRUE(d.Find(keys[i].c_str(), 3, v)) << i;
    EXPECT_EQ(v->Tag, i);
  }
  for (int i = 0; i < 60; i += 3)
    d.Remove(keys[i]);
  EXPECT_TRUE(RobinHoodOrdered(d));
  for (int i = 0; i < 60; ++i)
    EXPECT_EQ(d.Get(keys[i]) != nullptr, i % 3 != 0) << i;
}

TEST(PointerDictionary, RecordsKeyedThroughOffsetOrMember) {
  static TRec recs[] = {{1, u"amp"_hs}, {2, u"lt"_hs}, {3, u"gt"_hs}};
  THtPointerDictionary byOffset(8, offsetof(TRec, Name), &RSHash);
  THtPointerDictionaryOf<TRec, &TRec::Name> typed(8);
  for (auto& r : recs) {
    byOffset.AddPointer(&r);
    typed.AddPointer(&r);
  }
  EXPECT_EQ(byOffset.HashOf(u"lt"_hs), RSHash(u"lt", 2));
  EXPECT_EQ(byOffset.Get(u"gt", 2), &recs[2]);
  EXPECT_EQ(typed.Get(u"amp", 3)->Id, 1);
  TRec* r = nullptr;
  EXPECT_FALSE(typed.Find(u"am", 2, r));
  EXPECT_EQ(byOffset.Remove(u"lt"_hs), &recs[1]);
  EXPECT_EQ(byOffset.Get(u"lt"_hs), nullptr);
  EXPECT_EQ(byOffset.Count(), 2);
  // Re-adding overwrites in place and answers the slot.
  const int s = typed.AddPointer(&recs[0]);
  EXPECT_EQ(typed.Add(u"amp"_hs, &recs[0]), s);
  EXPECT_EQ(typed.Count(), 3);
}

// ---------------------------------------------------------------- differential

TEST(DictionaryDifferential, IdDictionaryMatchesUnorderedMap) {
  TRandom rnd(2024);
  THtIdPointerDictionary d(0);
  std::unordered_map<uint32_t, void*> ref;
  for (int op = 0; op < 60000; ++op) {
    // Small key space for many hits; some keys near the top for wrap-around homes.
    const uint32_t k = rnd.Below(4) == 0 ? 0xFFFFFFFFu - rnd.Below(64) : rnd.Below(3000);
    const uint32_t what = rnd.Below(10);
    if (what < 4) {
      void* v = Ptr(op + 1);
      const int s = d.Add(k, v);
      EXPECT_EQ(s < 0, ref.count(k) == 1);
      ref[k] = v;
    } else if (what < 7) {
      auto it = ref.find(k);
      EXPECT_EQ(d.Extract(k), it == ref.end() ? nullptr : it->second);
      if (it != ref.end())
        ref.erase(it);
    } else {
      auto it = ref.find(k);
      ASSERT_EQ(d.Get(k), it == ref.end() ? nullptr : it->second) << op;
    }
    if (op % 5000 == 0) {
      ASSERT_TRUE(RobinHoodOrdered(d));
      if (op % 20000 == 0)
        d.SetCapacity(static_cast<int>(rnd.Below(9000)));
    }
  }
  EXPECT_EQ(d.Count(), static_cast<int>(ref.size()));
  EXPECT_TRUE(RobinHoodOrdered(d));
}

TEST(DictionaryDifferential, StringDictionaryMatchesUnorderedMap) {
  TRandom rnd(77);
  TCounted::Alive = 0;
  {
    THtObjectDictionaryOf<TCounted, &TCounted::Name> d(0, true);
    std::unordered_map<std::u16string, int> ref;
    for (int op = 0; op < 40000; ++op) {
      std::u16string key = u"n" + std::u16string(1, static_cast<char16_t>(u'0' + rnd.Below(10)));
      const uint32_t tail = rnd.Below(300);
      key += std::u16string(tail % 7, static_cast<char16_t>(u'a' + tail % 26));
      const int len = static_cast<int>(key.size());
      const uint32_t what = rnd.Below(10);
      if (what < 4) {
        d.AddObject(new TCounted(hstring(key), op));
        ref[key] = op;
      } else if (what < 6) {
        TCounted* v = d.Extract(hstring(key));
        auto it = ref.find(key);
        ASSERT_EQ(v != nullptr, it != ref.end());
        if (v) {
          EXPECT_EQ(v->Tag, it->second);
          delete v;
          ref.erase(it);
        }
      } else if (what < 7) {
        d.Remove(hstring(key));
        ref.erase(key);
      } else {
        TCounted* v = nullptr;
        const bool found = d.Find(key.data(), len, v);
        auto it = ref.find(key);
        ASSERT_EQ(found, it != ref.end()) << op;
        if (found) {
          EXPECT_EQ(v->Tag, it->second);
        }
      }
    }
    EXPECT_EQ(d.Count(), static_cast<int>(ref.size()));
    EXPECT_EQ(TCounted::Alive, d.Count());
    EXPECT_TRUE(RobinHoodOrdered(d));
  }
  EXPECT_EQ(TCounted::Alive, 0);
}

// ---------------------------------------------------------------- threads

TEST(ThreadObjectDictionary, ReadersWhileOneWriterChangesTheTable) {
  TCounted::Alive = 0;
  {
    THtThreadObjectDictionary d(0, true, &HtObjectKey<TCounted, &TCounted::Name>);
    std::vector<hstring> stable;
    for (int i = 0; i < 200; ++i) {
      stable.push_back(hstring::FromUtf8("stable" + std::to_string(i)));
      d.AddObject(new TCounted(stable.back(), i));
    }
    std::atomic<bool> stop{false};
    std::atomic<int> misses{0};
    std::vector<std::thread> readers;
    for (int t = 0; t < 3; ++t)
      readers.emplace_back([&, t] {
        int i = t;
        while (!stop.load(std::memory_order_relaxed)) {
          const hstring& key = stable[i % 200];
          TObject* v = nullptr;
          if (!d.Find(key.c_str(), key.Length(), v) || static_cast<TCounted*>(v)->Tag != i % 200)
            misses.fetch_add(1);
          if (!d.ContainsKey(key))
            misses.fetch_add(1);
          d.ContainsKey(u"tmp5"_hs); // comes and goes
          i += 7;
        }
      });
    // The writer grows and shrinks the table under the readers. Values of the
    // stable keys are never freed, so readers may use them after the lock.
    for (int round = 0; round < 20; ++round) {
      for (int i = 0; i < 300; ++i)
        d.AddObject(new TCounted(hstring::FromUtf8("tmp" + std::to_string(i)), -1));
      for (int i = 0; i < 300; ++i)
        d.Remove(hstring::FromUtf8("tmp" + std::to_string(i)));
      // Replacing frees the old object: only keys the readers never dereference.
      d.Put(u"tmp0"_hs, new TCounted(u"tmp0"_hs, round));
      d.Remove(u"tmp0"_hs);
    }
    stop = true;
    for (auto& r : readers)
      r.join();
    EXPECT_EQ(misses.load(), 0);
    EXPECT_EQ(d.Count(), 200);
    std::unique_lock lock(d.Lock()); // the unlocked forms under the caller's lock
    EXPECT_NE(d.GetHashed(d.HashOf(stable[5]), stable[5]), nullptr);
  }
  EXPECT_EQ(TCounted::Alive, 0);
}
