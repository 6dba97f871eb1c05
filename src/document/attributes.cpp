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

} // namespace

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

int THtAttributes::InsertAt(int Index, hstring AttrName, hstring AttrValue) {
  if (static_cast<size_t>(Count) == List.size())
    List.emplace_back();
  // The spare entry at Count comes to Index; entries in between move up by one.
  if (Index < Count)
    std::rotate(List.begin() + Index, List.begin() + Count, List.begin() + Count + 1);
  THtAttribute& a = List[Index];
  a.Name = std::move(AttrName);
  if (!CaseSensitive)
    hLower(a.Name);
  a.Value = std::move(AttrValue);
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

void THtAttributeBatch::MoveTo(THtAttributes& Target) {
  const bool cs = Target.CaseSensitive;
  // A few attributes into an empty case-sensitive set, as a parsed XML or
  // JSON item gives: an insertion sort of the batch, each entry then moved
  // once into an array of its final size.
  if (cs && Target.Count == 0 && FItems.size() <= 16) {
    uint8_t order[16];
    size_t n = 0;
    for (size_t k = 0; k < FItems.size(); ++k) {
      const TItem& it = FItems[k];
      if (it.Name.empty()) {
        // never found: each goes in front, as one by one
        for (size_t i = n; i > 0; --i)
          order[i] = order[i - 1];
        order[0] = static_cast<uint8_t>(k);
        ++n;
        continue;
      }
      size_t j = n;
      int c = 1;
      while (j > 0 && !FItems[order[j - 1]].Name.empty() &&
             (c = compare_names(FItems[order[j - 1]].Name, it.Name, true)) > 0)
        --j;
      if (j > 0 && c == 0 && !FItems[order[j - 1]].Name.empty()) {
        if (it.Rule == abReplace)
          FItems[order[j - 1]].Value = it.Value;
        continue;
      }
      for (size_t i = n; i > j; --i)
        order[i] = order[i - 1];
      order[j] = static_cast<uint8_t>(k);
      ++n;
    }
    if (Target.List.size() < n) {
      Target.List.reserve(n);
      Target.List.resize(n);
    }
    for (size_t i = 0; i < n; ++i) {
      TItem& it = FItems[order[i]];
      Target.List[i].Name = std::move(it.Name);
      Target.List[i].Value = std::move(it.Value);
    }
    Target.Count = static_cast<int>(n);
    FItems.clear();
    return;
  }
  // A few attributes, as most tags have, go in one by one.
  if (FItems.size() <= 16) {
    if (Target.List.size() < static_cast<size_t>(Target.Count) + FItems.size())
      Target.List.reserve(static_cast<size_t>(Target.Count) + FItems.size());
    for (TItem& it : FItems) {
      int i;
      if (!Target.Find(it.Name, i))
        i = Target.InsertAt(i, it.KeepName && !cs ? it.Name : std::move(it.Name), std::move(it.Value));
      else if (it.Rule == abReplace)
        Target.List[static_cast<size_t>(i)].Value = std::move(it.Value);
      else
        continue;
      if (it.KeepName && !cs)
        Target.List[static_cast<size_t>(i)].Name = it.Name;
    }
    FItems.clear();
    return;
  }
  // The stored names decide the order, as they would one by one.
  if (!cs)
    for (TItem& it : FItems)
      if (!it.KeepName)
        hLower(it.Name);
  // Target's entries first (indexes below n0), then the batch in its order;
  // a stable order within a name keeps the earlier entries ahead.
  const uint32_t n0 = static_cast<uint32_t>(Target.Count);
  const uint32_t total = n0 + static_cast<uint32_t>(FItems.size());
  auto name_of = [&](uint32_t k) -> const hstring& {
    return k < n0 ? Target.List[k].Name : FItems[k - n0].Name;
  };
  FKeys.resize(total);
  for (uint32_t k = 0; k < total; ++k) {
    const hstring& name = name_of(k);
    FKeys[k] = {name.c_str(), static_cast<uint32_t>(name.size()), k};
  }
  std::sort(FKeys.begin(), FKeys.end(), [cs, n0](const TKey& x, const TKey& y) {
    if (!x.Len || !y.Len) {
      // An empty name never matches and each new one goes in front.
      if (!x.Len != !y.Len)
        return !x.Len;
      if ((x.Index < n0) != (y.Index < n0))
        return x.Index >= n0;
      return x.Index < n0 ? x.Index < y.Index : x.Index > y.Index;
    }
    int c = x.Name == y.Name ? 0 : compare_units(x.Name, x.Len, y.Name, y.Len, !cs);
    return c < 0 || (c == 0 && x.Index < y.Index);
  });
  std::vector<THtAttribute> out;
  out.reserve(total);
  const TKey* last = nullptr; // of the entry out.back() came from
  for (const TKey& key : FKeys) {
    uint32_t k = key.Index;
    bool same = last && key.Len && compare_units(last->Name, last->Len, key.Name, key.Len, !cs) == 0;
    if (k < n0) {
      out.push_back(std::move(Target.List[k])); // the set's names are distinct
      last = &key;
      continue;
    }
    TItem& it = FItems[k - n0];
    if (!same) {
      out.push_back({std::move(it.Name), std::move(it.Value)});
      last = &key;
    } else if (it.Rule == abReplace) {
      out.back().Value = std::move(it.Value);
      if (it.KeepName && !cs) {
        out.back().Name = std::move(it.Name);
        last = &key; // the former spelling may be gone
      }
    }
  }
  Target.List.resize(std::max(Target.List.size(), out.size()));
  std::move(out.begin(), out.end(), Target.List.begin());
  Target.Count = static_cast<int>(out.size());
  FItems.clear();
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

} // namespace ht
