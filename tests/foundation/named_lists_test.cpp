#include "foundation/dictionary_test_util.h"
#include "htcore/foundation/named_lists.h"

#include <gtest/gtest.h>

using namespace ht;
using dict_test::TCounted;

TEST(StringList, PairsOwnTheirObjectsByTheListFlag) {
  TCounted::Alive = 0;
  {
    THtStringList owning(0, true);
    THtNameObjectPair* p = owning.Add(u"a"_hs, new TCounted);
    EXPECT_EQ(p->Name, u"a");
    EXPECT_TRUE(p->Owner);
    EXPECT_EQ(&owning.KeyOf(p), &p->Name); // read through the offset, not copied
    auto* second = new TCounted;
    EXPECT_EQ(owning.Add(u"a"_hs, second), p); // the pair is kept, the old object freed
    EXPECT_EQ(TCounted::Alive, 1);
    EXPECT_EQ(owning.Add(u"a"_hs, second), p); // the same object again: kept
    EXPECT_EQ(TCounted::Alive, 1);
    EXPECT_EQ(owning.GetObject(u"a"_hs), second);
    owning.AddKey(u"b"_hs);
    EXPECT_TRUE(owning.HasKey(u"b"_hs));
    EXPECT_EQ(owning.GetObject(u"b"_hs), nullptr);
    EXPECT_EQ(owning.GetObject(u"c"_hs), nullptr);
    EXPECT_EQ(owning.GetPair(u"bx", 1)->Name, u"b");
    owning.Add(u"c"_hs, new TCounted);
    owning.Remove(u"c"_hs); // frees pair and object
    EXPECT_EQ(TCounted::Alive, 1);
    EXPECT_EQ(owning.Count(), 2);
  }
  EXPECT_EQ(TCounted::Alive, 0);

  TCounted kept;
  TCounted::Alive = 0;
  {
    THtStringList plain(4, false);
    plain.Add(u"k"_hs, &kept);
    plain.Add(u"k"_hs, &kept);
    EXPECT_FALSE(plain.GetPair(u"k"_hs)->Owner);
  }
  EXPECT_EQ(TCounted::Alive, 0); // nothing freed
}

TEST(StringList, InternsNames) {
  THtStringList names(256, true);
  const char16_t src[] = u"id=\"x\" id=\"y\"";
  hstring first = names.AddKey(hstring(src, 2))->Name;
  THtNameObjectPair* again = names.GetPair(src + 7, 2);
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(again->Name.Pointer(), first.Pointer()); // one shared text
}

TEST(SingleList, WidthsWithMinusOneForMissing) {
  THtSingleList w;
  EXPECT_EQ(w.Capacity(), 16);
  EXPECT_EQ(w.GetWidth(u"W"_hs), -1.0f);
  w.AddWidth(u"W"_hs, 12.5f);
  w.AddWidth(u"i"_hs, 3.0f);
  w.AddWidth(u"W"_hs, 13.0f); // updates in place
  EXPECT_EQ(w.Count(), 2);
  EXPECT_EQ(w.GetWidth(u"W"_hs), 13.0f);
  EXPECT_EQ(w.GetWidth(u"ix", 1), 3.0f);
  EXPECT_EQ(w.GetWidth(u"", 0), -1.0f);
  w.AddWidth(hstring(), 0.0f);
  EXPECT_EQ(w.GetWidth(u"", 0), 0.0f);
}
