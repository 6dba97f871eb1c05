// Plain lists: THtPointerList of raw pointers, THtObjectList of objects.
//
// THtObjectList optionally owns its objects: Delete, Remove, Clear, SetCount
// and the destructor free them; Extract hands one back without freeing. Every
// change that adds or drops an item goes through the virtual Notify, which
// subclasses (node lists, canvas stacks) override to keep their own links.
//
//   ht::THtObjectListOf<TRun> runs;          // owning
//   runs.Add(new TRun);
//   for (TRun* r : runs) ...
//   TRun* last = static_cast<TRun*>(runs.Extract(runs.Last()));   // not freed
//
// Index errors raise EListError("SListIndexError").
#pragma once

#include "htcore/foundation/node_pool.h"
#include "htcore/foundation/object.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace ht {

enum TListNotification { lnAdded, lnExtracted, lnDeleted };

namespace detail {
[[noreturn]] void HtListIndexError(int Index);
}

class THtPointerList {
public:
  THtPointerList() = default;

  int Count() const noexcept { return static_cast<int>(FList.size()); }
  void SetCount(int ACount);
  int Capacity() const noexcept { return static_cast<int>(FList.capacity()); }
  void SetCapacity(int ACapacity);

  void* Get(int Index) const {
    Check(Index);
    return FList[static_cast<size_t>(Index)];
  }
  void Put(int Index, void* Item) {
    Check(Index);
    FList[static_cast<size_t>(Index)] = Item;
  }
  void* operator[](int Index) const { return Get(Index); }
  void* First() const { return Get(0); }
  void* Last() const { return Get(Count() - 1); }

  int Add(void* Item) {
    FList.push_back(Item);
    return Count() - 1;
  }
  void Insert(int Index, void* Item);
  void Delete(int Index);
  // Removes the first occurrence; answers its former index or -1.
  int Remove(void* Item);
  // Removes the first occurrence and answers it; null when absent.
  void* Extract(void* Item);
  int IndexOf(const void* Item) const noexcept;
  void Clear() noexcept {
    FList.clear();
    FList.shrink_to_fit();
  }
  void Exchange(int Index1, int Index2);
  void Move(int CurIndex, int NewIndex);
  // Drops the null items.
  void Pack();
  template <class Compare> void Sort(Compare&& ACompare) {
    std::sort(FList.begin(), FList.end(), [&](void* a, void* b) { return ACompare(a, b) < 0; });
  }

  void* const* List() const noexcept { return FList.data(); }
  auto begin() const noexcept { return FList.begin(); }
  auto end() const noexcept { return FList.end(); }

private:
  void Check(int Index) const {
    if (Index < 0 || Index >= Count())
      detail::HtListIndexError(Index);
  }
  std::vector<void*> FList;
};

class THtObjectList : public TObject {
public:
  explicit THtObjectList(bool AOwnsObjects = true) : FOwnsObjects(AOwnsObjects) {}
  THtObjectList(const THtObjectList&) = delete;
  THtObjectList& operator=(const THtObjectList&) = delete;
  ~THtObjectList() override;

  bool OwnsObjects() const noexcept { return FOwnsObjects; }
  void SetOwnsObjects(bool AOwnsObjects) noexcept { FOwnsObjects = AOwnsObjects; }

  int Count() const noexcept { return static_cast<int>(FList.size()); }
  // Growing adds null items; shrinking deletes from the end.
  void SetCount(int ACount);
  int Capacity() const noexcept { return static_cast<int>(FList.capacity()); }
  void SetCapacity(int ACapacity);

  TObject* Get(int Index) const {
    Check(Index);
    return FList[static_cast<size_t>(Index)];
  }
  // Replaces an item: the old one is notified as deleted (freed when owning).
  void Put(int Index, TObject* Item);
  TObject* operator[](int Index) const { return Get(Index); }
  TObject* First() const { return Get(0); }
  TObject* Last() const { return Get(Count() - 1); }

  int Add(TObject* Item);
  void Insert(int Index, TObject* Item);
  void Delete(int Index);
  int Remove(TObject* Item);
  TObject* Extract(TObject* Item);
  TObject* ExtractAt(int Index);
  int IndexOf(const TObject* Item) const noexcept;
  // When owning, frees each object and nils its slot first; then empties the list.
  virtual void Clear();
  void Exchange(int Index1, int Index2);
  void Move(int CurIndex, int NewIndex);
  void Pack();
  template <class Compare> void Sort(Compare&& ACompare) {
    std::sort(FList.begin(), FList.end(), [&](TObject* a, TObject* b) { return ACompare(a, b) < 0; });
  }

  TObject* const* List() const noexcept { return FList.data(); }
  auto begin() const noexcept { return FList.begin(); }
  auto end() const noexcept { return FList.end(); }

protected:
  // Called after an item joined (lnAdded) or left the list; the base class
  // frees a deleted item when owning.
  virtual void Notify(TObject* Ptr, TListNotification Action);
  // Empties the list and frees its array, neither freeing nor notifying the
  // items: for a subclass that has taken them over and knows no one listens.
  void ForgetAll() noexcept { decltype(FList)().swap(FList); }

private:
  void Check(int Index) const {
    if (Index < 0 || Index >= Count())
      detail::HtListIndexError(Index);
  }
  std::vector<TObject*, TPoolAllocator<TObject*>> FList;
  bool FOwnsObjects;
};

// THtObjectList whose items are all T: typed access and iteration.
template <class T> class THtObjectListOf : public THtObjectList {
public:
  using THtObjectList::THtObjectList;

  T* Get(int Index) const { return static_cast<T*>(THtObjectList::Get(Index)); }
  T* operator[](int Index) const { return Get(Index); }
  T* First() const { return Get(0); }
  T* Last() const { return Get(Count() - 1); }
  T* Extract(T* Item) { return static_cast<T*>(THtObjectList::Extract(Item)); }
  T* ExtractAt(int Index) { return static_cast<T*>(THtObjectList::ExtractAt(Index)); }

  class iterator {
  public:
    using value_type = T*;
    using difference_type = std::ptrdiff_t;
    iterator() = default;
    explicit iterator(TObject* const* p) : FPos(p) {}
    T* operator*() const { return static_cast<T*>(*FPos); }
    iterator& operator++() {
      ++FPos;
      return *this;
    }
    iterator operator++(int) {
      iterator t = *this;
      ++FPos;
      return t;
    }
    bool operator==(const iterator&) const = default;

  private:
    TObject* const* FPos = nullptr;
  };
  iterator begin() const noexcept { return iterator(List()); }
  iterator end() const noexcept { return iterator(List() + Count()); }
};

} // namespace ht
