#include "htcore/foundation/id_list.h"

#include "htcore/foundation/exception.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace ht {

TIDList::TIDList(int ACapacity) {
  if (ACapacity > 0)
    SetCapacity(ACapacity);
}

TIDList::~TIDList() { std::free(FList); }

void TIDList::Error(const char* Msg, intptr_t /*Data*/) const { throw EListError(std::string_view(Msg)); }

void TIDList::SetCapacity(int NewCapacity) {
  if (NewCapacity < FCount || NewCapacity > 0x7FFFFFF)
    Error("SListIndexError", NewCapacity);
  if (NewCapacity == FCapacity)
    return;
  if (NewCapacity == 0) {
    std::free(FList);
    FList = nullptr;
  } else {
    // TIDItem is trivially copyable, so the array moves with realloc.
    void* p = std::realloc(FList, static_cast<size_t>(NewCapacity) * sizeof(TIDItem));
    if (!p)
      throw std::bad_alloc();
    FList = static_cast<TIDItem*>(p);
  }
  FCapacity = NewCapacity;
}

void TIDList::Grow() {
  int delta = FCapacity > 64 ? FCapacity / 4 : FCapacity > 8 ? 16 : 4;
  SetCapacity(FCapacity + delta);
}

TIDItem& TIDList::Items(int Index) {
  CheckIndex(Index);
  return FList[Index];
}

void TIDList::InsertItem(int Index, int ID) {
  if (FCount == FCapacity)
    Grow();
  if (Index < FCount)
    std::memmove(FList + Index + 1, FList + Index, static_cast<size_t>(FCount - Index) * sizeof(TIDItem));
  FList[Index] = TIDItem{ID, nullptr, 0};
  ++FCount;
}

int TIDList::Add(int ID) {
  int index;
  if (!FSorted || FCount == 0 || ID > FList[FCount - 1].ID) {
    index = FCount;
  } else if (ID < FList[0].ID) {
    index = 0;
  } else {
    if (Find(ID, index) && FDuplicates == dupError)
      Error("SSortedListError", ID);
    // Behind the last equal ID: entries of one ID keep their insertion order.
    while (index < FCount && FList[index].ID == ID)
      ++index;
  }
  InsertItem(index, ID);
  return index;
}

int TIDList::AddObject(int ID, TObject* AObject) {
  int index = Add(ID);
  PutObject(index, AObject);
  return index;
}

void TIDList::Clear() {
  FCount = 0;
  SetCapacity(0);
}

void TIDList::Delete(int Index) {
  CheckIndex(Index);
  --FCount;
  if (Index < FCount)
    std::memmove(FList + Index, FList + Index + 1, static_cast<size_t>(FCount - Index) * sizeof(TIDItem));
}

void TIDList::Exchange(int Index1, int Index2) {
  CheckIndex(Index1);
  CheckIndex(Index2);
  std::swap(FList[Index1], FList[Index2]);
}

bool TIDList::Find(int ID, int& Index) const {
  bool found = false;
  int lo = 0, hi = FCount - 1;
  while (lo <= hi) {
    int mid = lo + (hi - lo) / 2;
    int key = FList[mid].ID;
    if (key < ID) {
      lo = mid + 1;
    } else {
      hi = mid - 1;
      if (key == ID)
        found = true; // keep going left to the first equal ID
    }
  }
  Index = lo;
  return found;
}

bool TIDList::FindCardinal(uint32_t ID, int& Index) const {
  bool found = false;
  int lo = 0, hi = FCount - 1;
  while (lo <= hi) {
    int mid = lo + (hi - lo) / 2;
    uint32_t key = static_cast<uint32_t>(FList[mid].ID);
    if (key < ID) {
      lo = mid + 1;
    } else {
      hi = mid - 1;
      if (key == ID)
        found = true;
    }
  }
  Index = lo;
  return found;
}

int TIDList::IndexOf(int ID) const {
  if (FSorted) {
    int index;
    return Find(ID, index) ? index : -1;
  }
  for (int i = 0; i < FCount; ++i)
    if (FList[i].ID == ID)
      return i;
  return -1;
}

int TIDList::IndexOfObject(const TObject* AObject) const {
  for (int i = 0; i < FCount; ++i)
    if (FList[i].Object == AObject)
      return i;
  return -1;
}

void TIDList::Insert(int Index, int ID) {
  if (FSorted)
    Error("SSortedListError", 0);
  if (Index < 0 || Index > FCount)
    Error("SListIndexError", Index);
  InsertItem(Index, ID);
}

void TIDList::InsertObject(int Index, int ID, TObject* AObject) {
  Insert(Index, ID);
  PutObject(Index, AObject);
}

// Hoare partition around the middle entry's ID. The smaller part recurses and
// the larger one loops, so the depth stays logarithmic on any input.
void TIDList::QuickSort(int L, int R) {
  while (L < R) {
    int i = L, j = R;
    const int pivot = FList[L + (R - L) / 2].ID;
    do {
      while (FList[i].ID < pivot)
        ++i;
      while (FList[j].ID > pivot)
        --j;
      if (i <= j) {
        if (i != j)
          std::swap(FList[i], FList[j]);
        ++i;
        --j;
      }
    } while (i <= j);
    if (j - L < R - i) {
      if (L < j)
        QuickSort(L, j);
      L = i;
    } else {
      if (i < R)
        QuickSort(i, R);
      R = j;
    }
  }
}

void TIDList::Sort() {
  if (FCount > 1)
    QuickSort(0, FCount - 1);
}

void TIDList::SetSorted(bool Value) {
  if (Value && !FSorted)
    Sort();
  FSorted = Value;
}

void TIDList::FreeObjects() {
  for (int i = 0; i < FCount; ++i) {
    // Clear the slot before the delete, so a destructor that looks back into
    // the list never sees a dangling pointer.
    TObject* obj = FList[i].Object;
    FList[i].Object = nullptr;
    delete obj;
  }
}

int TIDList::Get(int Index) const {
  CheckIndex(Index);
  return FList[Index].ID;
}

void TIDList::Put(int Index, int ID) {
  CheckIndex(Index);
  FList[Index].ID = ID;
}

TObject* TIDList::GetObject(int Index) const {
  CheckIndex(Index);
  return FList[Index].Object;
}

void TIDList::PutObject(int Index, TObject* AObject) {
  CheckIndex(Index);
  FList[Index].Object = AObject;
}

} // namespace ht
