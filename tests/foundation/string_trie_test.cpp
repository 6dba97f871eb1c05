#include "htcore/foundation/string_trie.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <string>

using namespace ht;

namespace {

struct TCounted : TObject {
  explicit TCounted(int* deaths) : FDeaths(deaths) {}
  ~TCounted() override { ++*FDeaths; }
  int* FDeaths;
};

TObject* Lookup(const THtStringTrie& t, std::u16string_view key) {
  TObject* v = reinterpret_cast<TObject*>(1);
  bool found = t.Find(key, v);
  EXPECT_EQ(found, v != nullptr) << "Find answers by the value";
  return v;
}

} // namespace

TEST(StringTrie, KeysArePresentOnlyWhereAValueWasStored) {
  THtStringTrie t;
  TObject abc, abd, a, high, low, umlaut, last;
  t.Add(u"abc", &abc);
  t.Add(u"abd", &abd);
  t.Add(u"a", &a);
  // One unit walks two levels: high byte then low byte. These two differ only
  // in which level holds the 1.
  t.Add(u"\u0100", &high);
  t.Add(u"\u0001", &low);
  t.Add(u"\u00FC", &umlaut);
  t.Add(u"\uFFFF\uFFFF", &last);
  struct {
    std::u16string_view key;
    TObject* value;
  } cases[] = {{u"abc", &abc},      {u"abd", &abd},       {u"a", &a},           {u"ab", nullptr},
               {u"abcd", nullptr},  {u"b", nullptr},      {u"", nullptr},       {u"\u0100", &high},
               {u"\u0001", &low},   {u"\u0101", nullptr}, {u"\u00FC", &umlaut}, {u"\uFFFF\uFFFF", &last},
               {u"\uFFFF", nullptr}};
  for (auto& c : cases) {
    EXPECT_EQ(Lookup(t, c.key), c.value) << std::string(c.key.begin(), c.key.end());
    EXPECT_EQ(t.ContainsKey(c.key), c.value != nullptr);
  }
}

TEST(StringTrie, EmptyKeyLivesAtTheRoot) {
  THtStringTrie t;
  TObject root, x;
  t.Add(u"x", &x);
  TObject* v;
  EXPECT_FALSE(t.FindPChar(u"x", 0, v));
  t.Add(u"", &root);
  EXPECT_EQ(t.Root().Value, &root);
  for (int len : {0, -1, -100}) {
    ASSERT_TRUE(t.FindPChar(u"x", len, v)) << len;
    EXPECT_EQ(v, &root);
  }
  ASSERT_TRUE(t.FindPChar(u"xyz", 1, v)); // a length inside a longer text
  EXPECT_EQ(v, &x);
}

TEST(StringTrie, OwningTrieFreesReplacedAndRemainingValues) {
  int deaths = 0;
  {
    THtStringTrie t(true);
    auto* first = new TCounted(&deaths);
    t.Add(u"k", first);
    t.Add(u"k", first); // the same object again is no replacement
    EXPECT_EQ(deaths, 0);
    t.Add(u"k", new TCounted(&deaths));
    EXPECT_EQ(deaths, 1);
    t.Add(u"", new TCounted(&deaths));
    t.Add(u"kk", new TCounted(&deaths));
  }
  EXPECT_EQ(deaths, 4);

  deaths = 0;
  TCounted kept(&deaths);
  {
    THtStringTrie t(false);
    t.Add(u"k", &kept);
    t.Add(u"k", nullptr);
    EXPECT_FALSE(t.ContainsKey(u"k"));
  }
  EXPECT_EQ(deaths, 0);
}

TEST(StringTrie, AssignCopiesKeysAndSharesValues) {
  TObject a, b, c;
  THtStringTrie src;
  src.Add(u"alpha", &a);
  src.Add(u"al", &b);
  src.Add(u"", &c);
  THtStringTrie dst;
  dst.Add(u"gone", &a);
  dst.Assign(src);
  EXPECT_FALSE(dst.ContainsKey(u"gone"));
  EXPECT_EQ(Lookup(dst, u"alpha"), &a);
  EXPECT_EQ(Lookup(dst, u"al"), &b);
  EXPECT_EQ(Lookup(dst, u""), &c);
  EXPECT_EQ(Lookup(dst, u"alp"), nullptr);
  src.Add(u"alpha", &c); // the copy is independent of its source
  EXPECT_EQ(Lookup(dst, u"alpha"), &a);
  dst.Assign(dst);
  EXPECT_EQ(Lookup(dst, u"al"), &b);
}

namespace {
void* BuildAndFreeLongKey(void* result) {
  // Two levels per unit: this key makes a chain of 20000 items, far deeper
  // than the small stack of this thread could recurse.
  std::u16string key(10000, u'\0');
  for (size_t i = 0; i < key.size(); ++i)
    key[i] = static_cast<char16_t>(0x41 + i % 26);
  {
    THtStringTrie t;
    static TObject v;
    t.Add(key, &v);
    THtStringTrie copy;
    copy.Assign(t);
    *static_cast<bool*>(result) = copy.ContainsKey(key) && !copy.ContainsKey(key.substr(1));
  }
  return nullptr;
}
} // namespace

TEST(StringTrie, LongKeysFreeWithoutDeepRecursion) {
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setstacksize(&attr, 256 * 1024);
  pthread_t thread;
  bool ok = false;
  ASSERT_EQ(pthread_create(&thread, &attr, BuildAndFreeLongKey, &ok), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attr);
  EXPECT_TRUE(ok);
}
