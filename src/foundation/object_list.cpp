// Plain pointer and object lists.
#include "htcore/foundation/object_list.h"

#include "htcore/foundation/exception.h"

namespace ht {

namespace detail {
// The bare message word is what callers match on.
void HtListIndexError(int) { throw EListError(std::string_view("SListIndexError")); }
} // namespace detail

namespace {

template <class Vec> void move_item(Vec& list, size_t from, size_t to) {
  auto item = list[from];
  list.erase(list.begin() + static_cast<std::ptrdiff_t>(from));
  list.insert(list.begin() + static_cast<std::ptrdiff_t>(to), item);
}

} // namespace

// ---------------------------------------------------------------- THtPointerList

void THtPointerList::SetCount(int ACount) {
  if (ACount < 0)
    detail::HtListIndexError(ACount);
  FList.resize(static_cast<size_t>(ACount), nullptr);
}

void THtPointerList::SetCapacity(int ACapacity) {
  if (ACapacity < Count())
    detail::HtListIndexError(ACapacity);
  if (static_cast<size_t>(ACapacity) > FList.capacity())
    FList.reserve(static_cast<size_t>(ACapacity));
  else
    FList.shrink_to_fit();
}

void THtPointerList::Insert(int Index, void* Item) {
  if (Index < 0 || Index > Count())
    detail::HtListIndexError(Index);
  FList.insert(FList.begin() + Index, Item);
}

void THtPointerList::Delete(int Index) {
  Check(Index);
  FList.erase(FList.begin() + Index);
}

int THtPointerList::IndexOf(const void* Item) const noexcept {
  for (size_t i = 0; i < FList.size(); ++i)
    if (FList[i] == Item)
      return static_cast<int>(i);
  return -1;
}

int THtPointerList::Remove(void* Item) {
  const int i = IndexOf(Item);
  if (i >= 0)
    FList.erase(FList.begin() + i);
  return i;
}

void* THtPointerList::Extract(void* Item) { return Remove(Item) >= 0 ? Item : nullptr; }

void THtPointerList::Exchange(int Index1, int Index2) {
  Check(Index1);
  Check(Index2);
  std::swap(FList[static_cast<size_t>(Index1)], FList[static_cast<size_t>(Index2)]);
}

void THtPointerList::Move(int CurIndex, int NewIndex) {
  if (CurIndex == NewIndex)
    return;
  Check(CurIndex);
  Check(NewIndex);
  move_item(FList, static_cast<size_t>(CurIndex), static_cast<size_t>(NewIndex));
}

void THtPointerList::Pack() { std::erase(FList, nullptr); }

// ---------------------------------------------------------------- THtObjectList

// Runs the base Clear and Notify: a subclass that needs its own overrides at
// destruction calls Clear in its destructor.
THtObjectList::~THtObjectList() { THtObjectList::Clear(); }

void THtObjectList::Notify(TObject* Ptr, TListNotification Action) {
  if (Action == lnDeleted && FOwnsObjects)
    delete Ptr;
}

void THtObjectList::SetCount(int ACount) {
  if (ACount < 0)
    detail::HtListIndexError(ACount);
  if (static_cast<size_t>(ACount) >= FList.size()) {
    FList.resize(static_cast<size_t>(ACount), nullptr);
    return;
  }
  for (int i = Count(); i-- > ACount;)
    Delete(i);
}

void THtObjectList::SetCapacity(int ACapacity) {
  if (ACapacity < Count())
    detail::HtListIndexError(ACapacity);
  if (static_cast<size_t>(ACapacity) > FList.capacity())
    FList.reserve(static_cast<size_t>(ACapacity));
  else
    FList.shrink_to_fit();
}

void THtObjectList::Put(int Index, TObject* Item) {
  Check(Index);
  TObject* old = FList[static_cast<size_t>(Index)];
  if (old == Item)
    return;
  FList[static_cast<size_t>(Index)] = Item;
  if (old)
    Notify(old, lnDeleted);
  if (Item)
    Notify(Item, lnAdded);
}

int THtObjectList::Add(TObject* Item) {
  FList.push_back(Item);
  if (Item)
    Notify(Item, lnAdded);
  return Count() - 1;
}

void THtObjectList::Insert(int Index, TObject* Item) {
  if (Index < 0 || Index > Count())
    detail::HtListIndexError(Index);
  FList.insert(FList.begin() + Index, Item);
  if (Item)
    Notify(Item, lnAdded);
}

void THtObjectList::Delete(int Index) {
  Check(Index);
  TObject* item = FList[static_cast<size_t>(Index)];
  FList.erase(FList.begin() + Index);
  if (item)
    Notify(item, lnDeleted);
}

int THtObjectList::IndexOf(const TObject* Item) const noexcept {
  for (size_t i = 0; i < FList.size(); ++i)
    if (FList[i] == Item)
      return static_cast<int>(i);
  return -1;
}

int THtObjectList::Remove(TObject* Item) {
  const int i = IndexOf(Item);
  if (i >= 0)
    Delete(i);
  return i;
}

TObject* THtObjectList::Extract(TObject* Item) {
  const int i = IndexOf(Item);
  return i >= 0 ? ExtractAt(i) : nullptr;
}

TObject* THtObjectList::ExtractAt(int Index) {
  Check(Index);
  TObject* item = FList[static_cast<size_t>(Index)];
  FList.erase(FList.begin() + Index);
  if (item)
    Notify(item, lnExtracted);
  return item;
}

void THtObjectList::Clear() {
  if (FOwnsObjects)
    for (auto& item : FList) {
      // The slot is nil before the object dies, so a destructor that looks at
      // the list does not find it again.
      TObject* o = item;
      item = nullptr;
      delete o;
    }
  // What is left (nothing owned) is still told it was deleted, from the end.
  while (!FList.empty()) {
    TObject* o = FList.back();
    FList.pop_back();
    if (o)
      Notify(o, lnDeleted);
  }
  FList.shrink_to_fit();
}

void THtObjectList::Exchange(int Index1, int Index2) {
  Check(Index1);
  Check(Index2);
  std::swap(FList[static_cast<size_t>(Index1)], FList[static_cast<size_t>(Index2)]);
}

void THtObjectList::Move(int CurIndex, int NewIndex) {
  if (CurIndex == NewIndex)
    return;
  Check(CurIndex);
  Check(NewIndex);
  move_item(FList, static_cast<size_t>(CurIndex), static_cast<size_t>(NewIndex));
}

void THtObjectList::Pack() { std::erase(FList, nullptr); }

} // namespace ht
