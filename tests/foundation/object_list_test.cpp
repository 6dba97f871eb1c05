#include "foundation/dictionary_test_util.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/object_list.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ht;
using dict_test::TCounted;

namespace {

// Records every notification as "a<tag>", "x<tag>" or "d<tag>".
class TRecordingList : public THtObjectList {
public:
  using THtObjectList::THtObjectList;
  std::string log;

protected:
  void Notify(TObject* Ptr, TListNotification Action) override {
    log += Action == lnAdded ? 'a' : Action == lnExtracted ? 'x' : 'd';
    log += std::to_string(static_cast<TCounted*>(Ptr)->Tag);
    THtObjectList::Notify(Ptr, Action);
  }
};

// An object that, when freed, asks its list to forget it.
struct TSelfRemoving : TCounted {
  THtObjectList* owner;
  explicit TSelfRemoving(THtObjectList* l) : owner(l) {}
  ~TSelfRemoving() override { owner->Remove(this); }
};

} // namespace

TEST(ObjectList, OwningListFreesWhatLeavesItButExtract) {
  struct {
    const char* name;
    void (*act)(THtObjectList&); // on a list of three objects
    int alive;
  } cases[] = {
      {"delete", [](THtObjectList& l) { l.Delete(1); }, 2},
      {"remove", [](THtObjectList& l) { EXPECT_EQ(l.Remove(l[2]), 2); }, 2},
      {"put", [](THtObjectList& l) { l.Put(0, new TCounted); }, 3},
      {"put same", [](THtObjectList& l) { l.Put(0, l[0]); }, 3},
      {"set count", [](THtObjectList& l) { l.SetCount(1); }, 1},
      {"clear", [](THtObjectList& l) { l.Clear(); }, 0},
      {"extract", [](THtObjectList& l) { delete l.Extract(l[1]); }, 2}, // the test frees it
  };
  for (auto& c : cases) {
    SCOPED_TRACE(c.name);
    TCounted::Alive = 0;
    {
      THtObjectList l(true);
      for (int i = 0; i < 3; ++i)
        l.Add(new TCounted({}, i));
      c.act(l);
      EXPECT_EQ(TCounted::Alive, c.alive);
    }
    EXPECT_EQ(TCounted::Alive, 0); // the destructor frees the rest
  }
}

TEST(ObjectList, NonOwningListFreesNothing) {
  TCounted a, b;
  TCounted::Alive = 0;
  {
    THtObjectList l(false);
    l.Add(&a);
    l.Add(&b);
    l.Delete(0);
    l.Put(0, &a);
    l.Clear();
    l.Add(&b);
  }
  EXPECT_EQ(TCounted::Alive, 0); // nothing was freed or made
}

TEST(ObjectList, NotificationsNameTheAction) {
  TRecordingList l(false);
  std::vector<TCounted> objs;
  objs.reserve(5);
  for (int i = 0; i < 5; ++i)
    objs.emplace_back(hstring(), i);
  l.Add(&objs[0]);
  l.Add(&objs[1]);
  l.Insert(0, &objs[2]); // 2 0 1
  l.Add(nullptr);        // nil items are not announced
  l.Delete(3);
  l.Extract(&objs[0]); // 2 1
  l.Put(1, &objs[3]);  // 2 3
  l.Exchange(0, 1);    // 3 2, silent
  l.Clear();           // from the end
  EXPECT_EQ(l.log, "a0a1a2x0d1a3d2d3");
}

TEST(ObjectList, OwningClearNilsSlotsBeforeFreeing) {
  TCounted::Alive = 0;
  THtObjectList l(true);
  for (int i = 0; i < 4; ++i)
    l.Add(new TSelfRemoving(&l));
  l.Clear(); // each destructor's Remove finds nothing
  EXPECT_EQ(l.Count(), 0);
  EXPECT_EQ(TCounted::Alive, 0);
}

TEST(ObjectList, IndexErrors) {
  THtObjectList l(false);
  TCounted a;
  l.Add(&a);
  auto msg = [](auto&& f) {
    try {
      f();
    } catch (const EListError& e) {
      return std::string(e.what());
    }
    return std::string("no error");
  };
  EXPECT_EQ(msg([&] { l.Delete(1); }), "SListIndexError");
  EXPECT_EQ(msg([&] { l.Delete(-1); }), "SListIndexError");
  EXPECT_EQ(msg([&] { l.Get(1); }), "SListIndexError");
  EXPECT_EQ(msg([&] { l.Insert(2, &a); }), "SListIndexError");
  EXPECT_EQ(msg([&] { l.Move(0, 1); }), "SListIndexError");
  EXPECT_EQ(msg([&] { l.Insert(1, &a); }), "no error"); // at the end is fine
  EXPECT_EQ(msg([&] { THtObjectList().Last(); }), "SListIndexError");
  THtPointerList p;
  EXPECT_EQ(msg([&] { p.First(); }), "SListIndexError");
  EXPECT_EQ(msg([&] { p.Exchange(0, 0); }), "SListIndexError");
}

TEST(ObjectList, TypedListMoveSortAndPack) {
  THtObjectListOf<TCounted> l(true);
  for (int t : {4, 1, 3, 0, 2})
    l.Add(new TCounted({}, t));
  l.Sort(
      [](TObject* a, TObject* b) { return static_cast<TCounted*>(a)->Tag - static_cast<TCounted*>(b)->Tag; });
  std::vector<int> tags;
  for (TCounted* c : l)
    tags.push_back(c->Tag);
  EXPECT_EQ(tags, (std::vector<int>{0, 1, 2, 3, 4}));
  l.Move(0, 4); // 1 2 3 4 0
  EXPECT_EQ(l.Last()->Tag, 0);
  EXPECT_EQ(l.First()->Tag, 1);
  l.Put(1, nullptr); // frees the 2
  l.Pack();
  EXPECT_EQ(l.Count(), 4);
  EXPECT_EQ(l[1]->Tag, 3);
  TCounted* out = l.ExtractAt(0);
  EXPECT_EQ(out->Tag, 1);
  delete out;
  EXPECT_EQ(l.IndexOf(out), -1);
}

TEST(PointerList, PlainOperations) {
  THtPointerList l;
  int x[6];
  for (int i = 0; i < 5; ++i)
    l.Add(&x[i]);
  l.Delete(0);
  l.Insert(1, &x[5]); // 1 5 2 3 4
  EXPECT_EQ(l.Count(), 5);
  EXPECT_EQ(l[1], &x[5]);
  EXPECT_EQ(l.Remove(&x[3]), 3);
  EXPECT_EQ(l.Remove(&x[3]), -1);
  EXPECT_EQ(l.Extract(&x[4]), &x[4]);
  EXPECT_EQ(l.Extract(&x[4]), nullptr);
  l.Move(2, 0); // 2 1 5
  EXPECT_EQ(l.First(), &x[2]);
  EXPECT_EQ(l.Last(), &x[5]);
  l.SetCount(5); // two nils at the end
  EXPECT_EQ(l[4], nullptr);
  l.Pack();
  EXPECT_EQ(l.Count(), 3);
  l.Clear();
  EXPECT_EQ(l.Count(), 0);
}
