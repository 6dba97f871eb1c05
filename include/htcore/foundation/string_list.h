// TStringList and TFastStringList: lists of hstring with one object per item.
//
// TStringList keeps its items in insertion order or, with Sorted, in ordinal
// order of their code units (no locale, no case folding). A sorted list finds
// by binary search and places new items itself; Duplicates decides what Add
// does with a text that is already there.
//
//   ht::TFastStringList names;
//   names.OwnsObjects = true;            // frees the objects when destroyed
//   names.SetSorted(true);
//   names.AddObject(u"width", new TItem);
//   int i;
//   if (names.FindPChar(p, len, i)) use(names.Objects(i));
//
// TFastStringList adds searching by pointer and length, so a parser can look a
// name up without making an hstring of it.
#pragma once

#include "htcore/foundation/duplicates.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"

#include <string_view>
#include <vector>

namespace ht {

struct TStringItem {
  hstring FString;
  TObject* FObject = nullptr;
};

class TStringList : public TObject {
public:
  TStringList() = default;
  TStringList(const TStringList& other);
  TStringList& operator=(const TStringList& other);
  ~TStringList() override = default;

  int Count() const noexcept { return static_cast<int>(FList.size()); }
  bool IsEmpty() const noexcept { return FList.empty(); }

  // Index out of range raises EListError "List index out of bounds (N)".
  const hstring& Strings(int Index) const;
  // Not allowed on a sorted list ("Operation not allowed on sorted list").
  void SetString(int Index, const hstring& s);
  TObject* Objects(int Index) const;
  void SetObject(int Index, TObject* AObject);

  // Returns the index of the item. On a sorted list the position is found;
  // a text already present is kept once (dupIgnore, the default), added again
  // (dupAccept) or refused with "String list does not allow duplicates".
  int Add(const hstring& s) { return AddObject(s, nullptr); }
  virtual int AddObject(const hstring& s, TObject* AObject);
  void Insert(int Index, const hstring& s) { InsertObject(Index, s, nullptr); }
  virtual void InsertObject(int Index, const hstring& s, TObject* AObject);
  virtual void Delete(int Index);
  // Removes all items; objects are never freed here.
  virtual void Clear();
  void Exchange(int Index1, int Index2);
  void Move(int CurIndex, int NewIndex);
  void Assign(const TStringList& Source);
  void AddStrings(const TStringList& Source);

  // 0-based index or -1.
  int IndexOf(std::u16string_view s) const;
  int IndexOfObject(const TObject* AObject) const noexcept;
  // Binary search (meaningful on a sorted list): true when found; Index is
  // the item or the place where s would go.
  bool Find(std::u16string_view s, int& Index) const;
  void Sort();

  bool Sorted() const noexcept { return FSorted; }
  void SetSorted(bool Value);
  TDuplicates Duplicates() const noexcept { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) noexcept { FDuplicates = Value; }

  // Every item followed by LineBreak.
  hstring Text() const;
  // Replaces the items by the lines of s (CR, LF or CR LF end a line).
  void SetText(std::u16string_view s);
  hstring LineBreak = u"\r\n";

  // Items of the form name=value.
  hstring Names(int Index) const;
  hstring ValueFromIndex(int Index) const;
  int IndexOfName(std::u16string_view Name) const;
  hstring Values(std::u16string_view Name) const;
  // An empty value removes the item.
  void SetValue(std::u16string_view Name, const hstring& Value);
  char16_t NameValueSeparator = u'=';

  const TStringItem* begin() const noexcept { return FList.data(); }
  const TStringItem* end() const noexcept { return FList.data() + FList.size(); }

protected:
  [[noreturn]] static void IndexError(int Index);
  void CheckIndex(int Index) const {
    if (Index < 0 || Index >= Count())
      IndexError(Index);
  }
  // Inserts without the sorted-list checks.
  void InsertItem(int Index, const hstring& s, TObject* AObject);

  // The items; derived lists search and free them directly.
  std::vector<TStringItem> FList;
  bool FSorted = false;
  TDuplicates FDuplicates = dupIgnore;
};

class TFastStringList : public TStringList {
public:
  explicit TFastStringList(bool AOwnsObjects = false) : OwnsObjects(AOwnsObjects) {}
  TFastStringList(const TFastStringList&) = delete;
  TFastStringList& operator=(const TFastStringList&) = delete;
  ~TFastStringList() override;

  // Binary search for the key p[0..Len) in a list sorted by code units.
  // Index is the item or the place where the key would go.
  bool FindPChar(const char16_t* p, int Len, int& Index) const noexcept;
  bool FindPChar(std::u16string_view key, int& Index) const noexcept {
    return FindPChar(key.data(), static_cast<int>(key.size()), Index);
  }
  // Frees every item's object, then clears the list.
  void FreeListObjects();

  // When true the destructor frees the objects; Delete and Clear never do.
  bool OwnsObjects;
};

} // namespace ht
