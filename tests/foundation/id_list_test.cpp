#include "htcore/foundation/exception.h"
#include "htcore/foundation/id_list.h"
#include "htcore/foundation/string_list.h" // shares TDuplicates: both must compile together

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace ht;

namespace {

struct TCounted : TObject {
  explicit TCounted(int* deaths = nullptr) : FDeaths(deaths) {}
  ~TCounted() override {
    if (FDeaths)
      ++*FDeaths;
  }
  int* FDeaths;
};

template <class F> std::string ListErrorOf(F&& f) {
  try {
    f();
  } catch (const EListError& e) {
    return e.what();
  }
  return "no error";
}

std::vector<int> IDs(const TIDList& l) {
  std::vector<int> out;
  for (int i = 0; i < l.Count(); ++i)
    out.push_back(l.Get(i));
  return out;
}

} // namespace

TEST(IDList, GrowsByFourThenSixteenThenAQuarter) {
  struct {
    int start, after;
  } cases[] = {{0, 4}, {4, 8}, {8, 12}, {9, 25}, {12, 28}, {64, 80}, {65, 81}, {80, 100}, {100, 125}};
  for (auto& c : cases) {
    TIDList l(c.start);
    EXPECT_EQ(l.Capacity(), c.start);
    for (int i = 0; i < c.start; ++i)
      l.Add(i);
    EXPECT_EQ(l.Capacity(), c.start) << "no growth before the list is full";
    l.Add(-1);
    EXPECT_EQ(l.Capacity(), c.after) << "from " << c.start;
  }
}

TEST(IDList, EqualIDsKeepInsertionOrderAndFindReturnsTheFirst) {
  TIDList l;
  l.SetSorted(true);
  TObject a, b, c, other;
  // 9 and 1 go through the fast paths, the 5s through the search.
  l.AddObject(9, &other);
  l.AddObject(5, &a);
  l.AddObject(1, &other);
  l.AddObject(5, &b);
  l.AddObject(7, &other);
  l.AddObject(5, &c);
  EXPECT_EQ(IDs(l), (std::vector<int>{1, 5, 5, 5, 7, 9}));
  int index = -1;
  ASSERT_TRUE(l.Find(5, index));
  EXPECT_EQ(index, 1);
  EXPECT_EQ(l.GetObject(1), &a);
  EXPECT_EQ(l.GetObject(2), &b);
  EXPECT_EQ(l.GetObject(3), &c);
  EXPECT_EQ(l.IndexOf(5), 1);
}

TEST(IDList, FindGivesTheInsertionPointWhenAbsent) {
  TIDList l;
  l.SetSorted(true);
  for (int id : {10, 20, 20, 30})
    l.Add(id);
  struct {
    int id;
    bool found;
    int index;
  } cases[] = {{5, false, 0},  {10, true, 0}, {15, false, 1}, {20, true, 1},
               {25, false, 3}, {30, true, 3}, {99, false, 4}};
  for (auto& c : cases) {
    int index = -1;
    EXPECT_EQ(l.Find(c.id, index), c.found) << c.id;
    EXPECT_EQ(index, c.index) << c.id;
  }
  TIDList empty;
  int index = -1;
  EXPECT_FALSE(empty.Find(1, index));
  EXPECT_EQ(index, 0);
}

TEST(IDList, AllOnesIsMinusOneSignedAndLastUnsigned) {
  const int all_ones = static_cast<int>(0xFFFFFFFFu);
  const int high_bit = static_cast<int>(0x80000000u);
  // Kept in unsigned order by hand, as a list of weights would be.
  TIDList weights;
  int n = 0;
  for (int id : {0, 1, high_bit, all_ones})
    weights.Insert(n++, id);
  int index = -1;
  EXPECT_TRUE(weights.FindCardinal(0xFFFFFFFFu, index));
  EXPECT_EQ(index, 3);
  EXPECT_FALSE(weights.FindCardinal(0x90000000u, index));
  EXPECT_EQ(index, 3);
  EXPECT_TRUE(weights.FindCardinal(0x80000000u, index));
  EXPECT_EQ(index, 2);

  weights.Sort();
  EXPECT_EQ(IDs(weights), (std::vector<int>{high_bit, -1, 0, 1}));
  EXPECT_TRUE(weights.Find(all_ones, index));
  EXPECT_EQ(index, 1);

  TIDList sorted;
  sorted.SetSorted(true);
  for (int id : {5, all_ones, 0})
    sorted.Add(id);
  EXPECT_EQ(IDs(sorted), (std::vector<int>{-1, 0, 5}));
}

TEST(IDList, ErrorsUseTheBareMessageWords) {
  TIDList sorted;
  sorted.SetSorted(true);
  sorted.Add(1);
  for (int index : {0, 1, -5, 100})
    EXPECT_EQ(ListErrorOf([&] { sorted.Insert(index, 2); }), "SSortedListError") << index;
  EXPECT_EQ(ListErrorOf([&] { sorted.InsertObject(0, 2, nullptr); }), "SSortedListError");

  sorted.SetDuplicates(dupError);
  EXPECT_EQ(ListErrorOf([&] { sorted.Add(1); }), "SSortedListError");
  EXPECT_EQ(sorted.Count(), 1);
  for (TDuplicates d : {dupIgnore, dupAccept}) {
    sorted.SetDuplicates(d);
    sorted.Add(1);
  }
  EXPECT_EQ(sorted.Count(), 3);

  TIDList l;
  l.Add(1);
  l.Add(2);
  TObject o;
  std::function<void()> bad[] = {
      [&] { l.Delete(2); },      [&] { l.Delete(-1); },   [&] { l.Get(2); },
      [&] { l.Put(-1, 0); },     [&] { l.GetObject(5); }, [&] { l.PutObject(2, &o); },
      [&] { l.Exchange(0, 2); }, [&] { l.Insert(3, 0); }, [&] { l.Insert(-1, 0); },
      [&] { l.Items(2); },
  };
  for (auto& f : bad)
    EXPECT_EQ(ListErrorOf(f), "SListIndexError");
  EXPECT_EQ(l.Count(), 2);
  l.Insert(2, 3); // at Count is an append
  EXPECT_EQ(IDs(l), (std::vector<int>{1, 2, 3}));
}

TEST(IDList, InsertedEntriesStartClean) {
  TIDList l;
  TObject o;
  l.AddObject(1, &o);
  l.Items(0).Data = 77;
  l.Delete(0);
  l.Insert(0, 2);
  EXPECT_EQ(l.GetObject(0), nullptr);
  EXPECT_EQ(l.Items(0).Data, 0);
  l.InsertObject(0, 3, &o);
  EXPECT_EQ(IDs(l), (std::vector<int>{3, 2}));
  EXPECT_EQ(l.GetObject(0), &o);
  EXPECT_EQ(l.GetObject(1), nullptr);
}

TEST(IDList, UnsortedListAppendsAndSearchesLinearly) {
  TIDList l;
  TObject a, b;
  for (int id : {3, 1, 2, 1})
    l.Add(id);
  l.PutObject(1, &a);
  l.PutObject(3, &b);
  EXPECT_EQ(IDs(l), (std::vector<int>{3, 1, 2, 1}));
  EXPECT_EQ(l.IndexOf(1), 1);
  EXPECT_EQ(l.IndexOf(9), -1);
  EXPECT_EQ(l.IndexOfObject(&b), 3);
  l.Exchange(0, 3);
  EXPECT_EQ(IDs(l), (std::vector<int>{1, 1, 2, 3}));
  EXPECT_EQ(l.GetObject(0), &b);
  l.SetSorted(true); // sorts at once
  EXPECT_EQ(l.Get(3), 3);
  l.Clear();
  EXPECT_EQ(l.Count(), 0);
  EXPECT_EQ(l.Capacity(), 0);
}

TEST(IDList, SortHandlesAdversarialOrders) {
  std::mt19937 rng(7);
  std::vector<std::vector<int>> inputs;
  std::vector<int> v(5000);
  for (int& x : v)
    x = static_cast<int>(rng());
  inputs.push_back(v);
  for (int i = 0; i < 5000; ++i)
    v[i] = 5000 - i;
  inputs.push_back(v);
  for (int i = 0; i < 5000; ++i)
    v[i] = i % 3;
  inputs.push_back(v);
  inputs.push_back(std::vector<int>(5000, 42));
  for (auto& in : inputs) {
    TIDList l;
    for (int id : in)
      l.Add(id);
    l.Sort();
    std::sort(in.begin(), in.end());
    EXPECT_EQ(IDs(l), in);
  }
}

TEST(IDList, FreeObjectsDeletesAndClearsSlots) {
  int deaths = 0;
  TIDList l;
  l.AddObject(1, new TCounted(&deaths));
  l.Add(2);
  l.AddObject(3, new TCounted(&deaths));
  l.FreeObjects();
  EXPECT_EQ(deaths, 2);
  EXPECT_EQ(l.Count(), 3);
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(l.GetObject(i), nullptr);
  l.FreeObjects();
  EXPECT_EQ(deaths, 2);
}

namespace {
// A derived list that sees every object store, as lists with a notion of
// ownership do.
class TWatchingList : public TIDList {
public:
  void PutObject(int Index, TObject* AObject) override {
    ++Stores;
    TIDList::PutObject(Index, AObject);
  }
  int Stores = 0;
};
} // namespace

TEST(IDList, ObjectStoresGoThroughTheVirtualAccessor) {
  TWatchingList l;
  TObject o;
  l.AddObject(1, &o);
  l.InsertObject(0, 2, &o);
  EXPECT_EQ(l.Stores, 2);
  l.Tag = 12;
  EXPECT_EQ(l.Tag, 12);
}
