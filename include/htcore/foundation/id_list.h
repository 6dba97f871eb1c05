// TIDList: a list of integer keys, each with an object pointer and a spare word.
//
// Kept unsorted it is a plain array; with Sorted set it is kept in ascending
// signed order of ID, and Add places a new entry behind all entries of the
// same ID, so equal IDs stay in insertion order and Find returns the first:
//
//   ht::TIDList list;
//   list.SetSorted(true);
//   list.AddObject(5, a);
//   list.AddObject(5, b);
//   int i;
//   if (list.Find(5, i)) use(list.GetObject(i));   // a
//
// Lists with another key order (unsigned weights, for instance) derive from it,
// use FindCardinal, and keep a second value in the spare word of each entry.
#pragma once

#include "htcore/foundation/duplicates.h"
#include "htcore/foundation/object.h"

#include <cstdint>

namespace ht {

// One entry: three machine words.
struct TIDItem {
  int ID;
  TObject* Object;
  intptr_t Data; // free for derived lists
};

// On a sorted list, dupIgnore and dupAccept both let Add insert an ID that is
// already there; only dupError refuses it. Lists built on TIDList rely on
// equal keys being kept.
class TIDList {
public:
  explicit TIDList(int ACapacity = 0);
  TIDList(const TIDList&) = delete;
  TIDList& operator=(const TIDList&) = delete;
  virtual ~TIDList();

  // Appends, or on a sorted list inserts in order; returns the entry's index.
  int Add(int ID);
  int AddObject(int ID, TObject* AObject);
  void Clear();
  void Delete(int Index);
  void Exchange(int Index1, int Index2);
  // Binary search on a sorted list. True when found, with Index at the first
  // entry of that ID; otherwise Index is where the ID belongs.
  bool Find(int ID, int& Index) const;
  // The same search for lists kept in unsigned order.
  bool FindCardinal(uint32_t ID, int& Index) const;
  int IndexOf(int ID) const;
  int IndexOfObject(const TObject* AObject) const;
  void Insert(int Index, int ID);
  void InsertObject(int Index, int ID, TObject* AObject);
  void Sort();
  // Deletes every object and clears its slot; the entries stay.
  void FreeObjects();

  int Get(int Index) const;
  virtual void Put(int Index, int ID);
  virtual TObject* GetObject(int Index) const;
  virtual void PutObject(int Index, TObject* AObject);
  int operator[](int Index) const { return Get(Index); }

  int Count() const noexcept { return FCount; }
  int Capacity() const noexcept { return FCapacity; }
  void SetCapacity(int NewCapacity);
  bool Sorted() const noexcept { return FSorted; }
  void SetSorted(bool Value);
  TDuplicates Duplicates() const noexcept { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) noexcept { FDuplicates = Value; }

  // The entries, for derived lists and fast loops; valid until the list grows.
  TIDItem* List() noexcept { return FList; }
  const TIDItem* List() const noexcept { return FList; }
  TIDItem& Items(int Index);

  int Tag = 0;

protected:
  // Raises EListError with the bare message word; Data (an index or an ID) is
  // there for lists that want to report it.
  [[noreturn]] void Error(const char* Msg, intptr_t Data) const;
  void Grow();
  void CheckIndex(int Index) const {
    if (Index < 0 || Index >= FCount)
      Error("SListIndexError", Index);
  }

private:
  void InsertItem(int Index, int ID);
  void QuickSort(int L, int R);

  TIDItem* FList = nullptr;
  int FCapacity = 0;
  int FCount = 0;
  bool FSorted = false;
  TDuplicates FDuplicates = dupIgnore;
};

} // namespace ht
