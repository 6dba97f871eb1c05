#include "htcore/document/attributes.h"

#include "htcore/foundation/exception.h"
#include "htcore/foundation/text_utils.h"

#include <algorithm>

namespace ht {

namespace {

inline char16_t lower_ascii(char16_t c) { return CharLower(c); }

int compare_units(const char16_t* a, size_t la, const char16_t* b, size_t lb, bool fold) {
  size_t n = std::min(la, lb);
  for (size_t i = 0; i < n; ++i) {
    int d = fold ? int(lower_ascii(a[i])) - int(lower_ascii(b[i])) : int(a[i]) - int(b[i]);
    if (d)
      return d;
  }
  return la < lb ? -1 : la > lb ? 1 : 0;
}

// The first units decide most probes; only a tie there costs a full comparison.
int compare_names(const hstring& a, const hstring& b, bool case_sensitive) {
  if (a.Pointer() == b.Pointer())
    return 0;
  const char16_t* p = a.c_str();
  const char16_t* q = b.c_str();
  int d = case_sensitive ? int(*p) - int(*q) : int(lower_ascii(*p)) - int(lower_ascii(*q));
  if (d)
    return d;
  return compare_units(p, a.size(), q, b.size(), !case_sensitive);
}

}  // namespace

bool THtAttributes::Find(const hstring& AttrName, int& Index) const {
  Index = 0;
  if (Count == 0 || AttrName.empty())
    return false;
  int lo = 0, hi = Count - 1;
  while (lo <= hi) {
    int mid = (lo + hi) >> 1;
    int c = compare_names(List[mid].Name, AttrName, CaseSensitive);
    if (c < 0) {
      lo = mid + 1;
    } else if (c > 0) {
      hi = mid - 1;
    } else {
      Index = mid;
      return true;
    }
  }
  Index = lo;
  return false;
}

int THtAttributes::Indexof(const hstring& AttrName) const {
  int i;
  return Find(AttrName, i) ? i : -1;
}

int THtAttributes::InsertAt(int Index, const hstring& AttrName, const hstring& AttrValue) {
  if (static_cast<size_t>(Count) == List.size())
    List.emplace_back();
  // The spare entry at Count comes to Index; entries in between move up by one.
  std::rotate(List.begin() + Index, List.begin() + Count, List.begin() + Count + 1);
  THtAttribute& a = List[Index];
  a.Name = AttrName;
  if (!CaseSensitive)
    hLower(a.Name);
  a.Value = AttrValue;
  ++Count;
  return Index;
}

int THtAttributes::Add(const hstring& AttrName, const hstring& AttrValue) {
  int i;
  Find(AttrName, i);
  return InsertAt(i, AttrName, AttrValue);
}

hstring THtAttributes::GetAttribute(const hstring& Name) const {
  int i;
  return Find(Name, i) ? List[i].Value : hstring();
}

bool THtAttributes::SetAttributeEx(const hstring& Name, const hstring& Value) {
  int i;
  if (Find(Name, i)) {
    if (List[i].Value == Value)
      return false;
    List[i].Value = Value;
    return true;
  }
  InsertAt(i, Name, Value);
  return true;
}

bool THtAttributes::ClearAttr(const hstring& Name) {
  int i;
  if (!Find(Name, i))
    return false;
  Delete(i);
  return true;
}

void THtAttributes::Delete(int Index) {
  HT_ASSERT(Index >= 0 && Index < Count);
  std::rotate(List.begin() + Index, List.begin() + Index + 1, List.begin() + Count);
  --Count;
  List[Count] = THtAttribute();
}

void THtAttributes::Assign(const THtAttributes& Source) {
  if (&Source == this)
    return;
  CaseSensitive = Source.CaseSensitive;
  List.assign(Source.begin(), Source.end());
  Count = Source.Count;
}

void THtAttributes::SetValue(int Index, const hstring& Value) {
  HT_ASSERT(Index >= 0 && Index < Count);
  List[Index].Value = Value;
}

const THtAttribute& THtAttributes::GetItem(int Index) const {
  HT_ASSERT(Index >= 0 && Index < Count);
  return List[Index];
}

}  // namespace ht
