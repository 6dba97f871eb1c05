#include "foundation/dictionary_test_util.h"
#include "htcore/foundation/integer_box.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

using namespace ht;
using dict_test::RobinHoodOrdered;
using dict_test::TRandom;

TEST(IntegerBox, MixIsABijectionUndoneByItsInverse) {
  struct {
    uint32_t key, mixed;
  } known[] = {{0, 0}, {1, 0xa3200cf0u}, {0xFFFFFFFFu, 0xa219b877u}};
  for (auto& k : known) {
    EXPECT_EQ(TShaIntegerBox::MixKey(k.key), k.mixed) << k.key;
    EXPECT_EQ(TShaIntegerBox::UnmixKey(k.mixed), k.key);
  }
  TRandom rnd(5);
  std::set<uint32_t> images;
  for (int i = 0; i < 100000; ++i) {
    const uint32_t k = rnd.Next();
    ASSERT_EQ(TShaIntegerBox::UnmixKey(TShaIntegerBox::MixKey(k)), k);
    ASSERT_EQ(TShaIntegerBox::MixKey(TShaIntegerBox::UnmixKey(k)), k);
  }
  for (uint32_t k = 0; k < 4096; ++k)
    images.insert(TShaIntegerBox::MixKey(k));
  EXPECT_EQ(images.size(), 4096u);
}

TEST(IntegerBox, GetNextGivesBackTheOriginalKeys) {
  for (bool mix : {true, false}) {
    SCOPED_TRACE(mix);
    TShaIntegerBox box(0, mix);
    std::map<uint32_t, uint32_t> ref;
    TRandom rnd(mix ? 11 : 12);
    for (int i = 0; i < 5000; ++i) {
      const uint32_t k = i % 3 == 0 ? static_cast<uint32_t>(i) : rnd.Next(); // sequential and random
      uint32_t* word = box.Add(k);
      EXPECT_EQ(*word, ref.count(k) ? ref[k] : 0u);
      *word = k ^ 0x5555u;
      ref[k] = *word;
    }
    for (int i = 0; i < 5000; i += 2)
      if (box.Remove(static_cast<uint32_t>(i)))
        ref.erase(static_cast<uint32_t>(i));
    EXPECT_FALSE(box.Remove(0));
    EXPECT_TRUE(RobinHoodOrdered(box));
    std::map<uint32_t, uint32_t> walked;
    uint32_t key, value;
    for (int i = 0; box.GetNext(i, key, &value);) {
      // Unmixed boxes keep the key itself as the hash word.
      if (!mix) {
        EXPECT_EQ(box.Items()[i - 1].Hash, key);
      }
      walked[key] = value;
    }
    EXPECT_EQ(walked, ref);
    EXPECT_EQ(box.Count(), static_cast<int>(ref.size()));
    uint32_t v = 1;
    EXPECT_FALSE(box.Find(2, v));
    EXPECT_EQ(v, 0u);
    EXPECT_TRUE(box.Find(3, v));
    EXPECT_EQ(v, 3u ^ 0x5555u);
  }
}

TEST(IntegerBox, ClearAndCapacity) {
  TShaIntegerBox box(100, true);
  EXPECT_EQ(box.Capacity(), 256);
  for (uint32_t k = 0; k < 150; ++k)
    box.Add(k);
  EXPECT_TRUE(box.Contains(149));
  EXPECT_EQ(box.InternalFind(149) >= 0, true);
  box.Clear();
  EXPECT_EQ(box.Capacity(), 4);
  EXPECT_EQ(box.Count(), 0);
  EXPECT_FALSE(box.Contains(149));
  box.Add(0); // key 0 mixes to 0: its home is slot 1
  EXPECT_TRUE(box.Contains(0));
  EXPECT_EQ(box.Items()[1].Hash, 0u);
}
