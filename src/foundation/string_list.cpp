#include "htcore/foundation/string_list.h"

#include "htcore/foundation/exception.h"

#include <algorithm>
#include <string>

namespace ht {

namespace {

[[noreturn]] void SortedListError() {
  throw EListError(std::string_view("Operation not allowed on sorted list"));
}

} // namespace

TStringList::TStringList(const TStringList& other)
    : TObject(other), LineBreak(other.LineBreak), NameValueSeparator(other.NameValueSeparator),
      FList(other.FList), FSorted(other.FSorted), FDuplicates(other.FDuplicates) {}

TStringList& TStringList::operator=(const TStringList& other) {
  if (this != &other) {
    FList = other.FList;
    FSorted = other.FSorted;
    FDuplicates = other.FDuplicates;
    LineBreak = other.LineBreak;
    NameValueSeparator = other.NameValueSeparator;
  }
  return *this;
}

void TStringList::IndexError(int Index) {
  throw EListError("List index out of bounds (" + std::to_string(Index) + ")");
}

const hstring& TStringList::Strings(int Index) const {
  CheckIndex(Index);
  return FList[static_cast<size_t>(Index)].FString;
}

void TStringList::SetString(int Index, const hstring& s) {
  if (FSorted)
    SortedListError();
  CheckIndex(Index);
  FList[static_cast<size_t>(Index)].FString = s;
}

TObject* TStringList::Objects(int Index) const {
  CheckIndex(Index);
  return FList[static_cast<size_t>(Index)].FObject;
}

void TStringList::SetObject(int Index, TObject* AObject) {
  CheckIndex(Index);
  FList[static_cast<size_t>(Index)].FObject = AObject;
}

int TStringList::AddObject(const hstring& s, TObject* AObject) {
  int index = Count();
  if (FSorted && Find(s.view(), index)) {
    if (FDuplicates == dupIgnore)
      return index;
    if (FDuplicates == dupError)
      throw EListError(std::string_view("String list does not allow duplicates"));
  }
  InsertItem(index, s, AObject);
  return index;
}

void TStringList::InsertObject(int Index, const hstring& s, TObject* AObject) {
  if (FSorted)
    SortedListError();
  if (Index < 0 || Index > Count())
    IndexError(Index);
  InsertItem(Index, s, AObject);
}

void TStringList::InsertItem(int Index, const hstring& s, TObject* AObject) {
  FList.insert(FList.begin() + Index, TStringItem{s, AObject});
}

void TStringList::Delete(int Index) {
  CheckIndex(Index);
  FList.erase(FList.begin() + Index);
}

void TStringList::Clear() { FList.clear(); }

void TStringList::Exchange(int Index1, int Index2) {
  CheckIndex(Index1);
  CheckIndex(Index2);
  std::swap(FList[static_cast<size_t>(Index1)], FList[static_cast<size_t>(Index2)]);
}

void TStringList::Move(int CurIndex, int NewIndex) {
  if (CurIndex == NewIndex)
    return;
  if (FSorted)
    SortedListError();
  CheckIndex(CurIndex);
  CheckIndex(NewIndex);
  TStringItem item = std::move(FList[static_cast<size_t>(CurIndex)]);
  FList.erase(FList.begin() + CurIndex);
  FList.insert(FList.begin() + NewIndex, std::move(item));
}

void TStringList::Assign(const TStringList& Source) {
  if (&Source == this)
    return;
  FList = Source.FList;
  if (FSorted)
    Sort();
}

void TStringList::AddStrings(const TStringList& Source) {
  std::vector<TStringItem> items = Source.FList; // Source may be this list
  for (const TStringItem& it : items)
    AddObject(it.FString, it.FObject);
}

int TStringList::IndexOf(std::u16string_view s) const {
  if (FSorted) {
    int index;
    return Find(s, index) ? index : -1;
  }
  for (size_t i = 0; i < FList.size(); ++i)
    if (FList[i].FString.view() == s)
      return static_cast<int>(i);
  return -1;
}

int TStringList::IndexOfObject(const TObject* AObject) const noexcept {
  for (size_t i = 0; i < FList.size(); ++i)
    if (FList[i].FObject == AObject)
      return static_cast<int>(i);
  return -1;
}

bool TStringList::Find(std::u16string_view s, int& Index) const {
  auto it =
      std::lower_bound(FList.begin(), FList.end(), s, [](const TStringItem& item, std::u16string_view key) {
        return item.FString.view() < key;
      });
  Index = static_cast<int>(it - FList.begin());
  return it != FList.end() && it->FString.view() == s;
}

void TStringList::Sort() {
  std::stable_sort(FList.begin(), FList.end(), [](const TStringItem& a, const TStringItem& b) {
    return a.FString.view() < b.FString.view();
  });
}

void TStringList::SetSorted(bool Value) {
  if (Value && !FSorted)
    Sort();
  FSorted = Value;
}

hstring TStringList::Text() const {
  size_t total = 0;
  for (const TStringItem& it : FList)
    total += it.FString.size() + LineBreak.size();
  hstring s;
  char16_t* d = s.SetLength(total);
  for (const TStringItem& it : FList) {
    std::memcpy(d, it.FString.c_str(), it.FString.size() * sizeof(char16_t));
    d += it.FString.size();
    std::memcpy(d, LineBreak.c_str(), LineBreak.size() * sizeof(char16_t));
    d += LineBreak.size();
  }
  return s;
}

void TStringList::SetText(std::u16string_view s) {
  Clear();
  size_t i = 0, n = s.size();
  while (i < n) {
    size_t start = i;
    while (i < n && s[i] != u'\r' && s[i] != u'\n')
      ++i;
    Add(hstring(s.substr(start, i - start)));
    if (i < n && s[i] == u'\r')
      ++i;
    if (i < n && s[i] == u'\n')
      ++i;
  }
}

hstring TStringList::Names(int Index) const {
  const hstring& s = Strings(Index);
  size_t eq = s.view().find(NameValueSeparator);
  return eq == std::u16string_view::npos ? hstring() : s.substr(0, eq);
}

hstring TStringList::ValueFromIndex(int Index) const {
  const hstring& s = Strings(Index);
  size_t eq = s.view().find(NameValueSeparator);
  return eq == std::u16string_view::npos ? hstring() : s.substr(eq + 1);
}

int TStringList::IndexOfName(std::u16string_view Name) const {
  for (size_t i = 0; i < FList.size(); ++i) {
    std::u16string_view s = FList[i].FString.view();
    size_t eq = s.find(NameValueSeparator);
    if (eq != std::u16string_view::npos && s.substr(0, eq) == Name)
      return static_cast<int>(i);
  }
  return -1;
}

hstring TStringList::Values(std::u16string_view Name) const {
  int i = IndexOfName(Name);
  return i < 0 ? hstring() : ValueFromIndex(i);
}

void TStringList::SetValue(std::u16string_view Name, const hstring& Value) {
  int i = IndexOfName(Name);
  if (Value.empty()) {
    if (i >= 0)
      Delete(i);
    return;
  }
  hstring item = hstring(Name) + NameValueSeparator + Value;
  if (i < 0) {
    Add(item);
  } else if (FSorted) {
    Delete(i);
    Add(item);
  } else {
    SetString(i, item);
  }
}

TFastStringList::~TFastStringList() {
  if (OwnsObjects)
    FreeListObjects();
}

bool TFastStringList::FindPChar(const char16_t* p, int Len, int& Index) const noexcept {
  if (Len < 0)
    Len = 0;
  // First units decide most comparisons; only on a tie is the rest compared,
  // unit by unit up to the shorter length and then by length.
  auto compare = [p, Len](const hstring& item) {
    const char16_t* s = item.c_str();
    int n = item.Length();
    if (n > 0 && Len > 0 && s[0] != p[0])
      return static_cast<int>(s[0]) - static_cast<int>(p[0]);
    int m = n < Len ? n : Len;
    for (int i = 0; i < m; ++i)
      if (s[i] != p[i])
        return static_cast<int>(s[i]) - static_cast<int>(p[i]);
    return n - Len;
  };
  bool found = false;
  int low = 0;
  int high = Count() - 1;
  while (low <= high) {
    int middle = (low + high) >> 1;
    int c = compare(FList[static_cast<size_t>(middle)].FString);
    if (c < 0) {
      low = middle + 1;
    } else {
      high = middle - 1;
      if (c == 0) {
        found = true;
        if (FDuplicates != dupAccept)
          low = middle;
      }
    }
  }
  Index = low;
  return found;
}

void TFastStringList::FreeListObjects() {
  for (TStringItem& it : FList) {
    delete it.FObject;
    it.FObject = nullptr;
  }
  Clear();
}

} // namespace ht
