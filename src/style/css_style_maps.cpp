#include "htcore/style/css_style_maps.h"

#include "htcore/foundation/string_list.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

#include <algorithm>

namespace ht {

namespace {

uint32_t rs_hash(const char16_t* p, int Len) { return RSHash(p, Len); }

void add_distinct(TStringList& List, const hstring& s) {
  if (!s.empty() && List.IndexOf(s) < 0)
    List.Add(s);
}

} // namespace

// --- TCSSSelectors ---

void TCSSSelectors::Clear() {
  if (FOwns)
    for (TCSSSelector* s : FList)
      delete s;
  FList.clear();
}

void TCSSSelectors::RemoveSection(const TCSSSection* Section) {
  auto it = std::remove_if(FList.begin(), FList.end(), [&](TCSSSelector* s) {
    if (s->Section != Section)
      return false;
    if (FOwns)
      delete s;
    return true;
  });
  FList.erase(it, FList.end());
}

void TCSSSelectors::DistinctAdd(TCSSSelector* S) {
  if (FList.empty() || FList[0]->Weight != S->Weight) {
    FList.push_back(S);
    return;
  }
  TCSSSection* to = FList[0]->Section;
  TCSSSection* from = S->Section;
  // Merging is only sound between sections that no other selector shares
  // and that stand under the same media set.
  if (!to || !from || to == from || to->Selectors.Count() != 1 || from->Selectors.Count() != 1 ||
      to->MediaSet != from->MediaSet) {
    FList.push_back(S);
    return;
  }
  if (from->Values.empty()) {
    to->Compile();
    return;
  }
  for (size_t i = to->Values.size(); i-- > 0;) {
    TCSSValue& old = to->Values[i];
    for (size_t j = 0; j < from->Values.size(); ++j)
      if (SameText(from->Values[j].Name, old.Name)) {
        old.Tokens = std::move(from->Values[j].Tokens);
        old.Measure = from->Values[j].Measure;
        old.Important = from->Values[j].Important;
        old.IsInherit = from->Values[j].IsInherit;
        from->Values.erase(from->Values.begin() + static_cast<std::ptrdiff_t>(j));
        break;
      }
  }
  for (auto& c : from->FCalcValues)
    to->FCalcValues.push_back(std::move(c));
  from->FCalcValues.clear();
  for (TCSSValue& v : from->Values) {
    v.Section = to;
    to->Values.push_back(std::move(v));
  }
  from->Values.clear();
  from->CompiledValues.clear();
  to->Compile();
}

void TCSSSelectors::GetAllClasses(TStringList& List) const {
  for (const TCSSSelector* s : FList)
    for (const TCSSSelector* c = s; c; c = c->Parent)
      for (const TCSSClassRec& r : c->Classes)
        add_distinct(List, r.s);
}

void TCSSSelectors::GetAllIds(TStringList& List) const {
  for (const TCSSSelector* s : FList)
    for (const TCSSSelector* c = s; c; c = c->Parent)
      add_distinct(List, c->ID);
}

// --- TCSSStyleMap ---

TCSSStyleMap::TCSSStyleMap(bool APseudoMap)
    : THtObjectDictionaryOf(255, true, &rs_hash), PseudoMap(APseudoMap) {}

void TCSSStyleMap::AddSelector(const hstring& Key, TCSSSelector* S, TCSSPseudoClass Pseudo, bool Distinct) {
  TCSSSelectors* list = nullptr;
  if (PseudoMap) {
    list = PseudoList(Pseudo);
    if (!list) {
      Pseudos.emplace_back(Pseudo, std::make_unique<TCSSSelectors>());
      list = Pseudos.back().second.get();
      list->Key = TypeInfo<TCSSPseudoClass>()->NameOf(Pseudo);
      PseudoMask |= PCBit(Pseudo);
    }
  } else {
    list = Get(Key);
    if (!list) {
      list = new TCSSSelectors(); // owned by this map
      list->Key = Key;
      AddObject(list);
    }
  }
  if (Distinct && list->Count() == 1)
    list->DistinctAdd(S);
  else
    list->AddSelector(S);
}

TCSSSelectors* TCSSStyleMap::PseudoList(TCSSPseudoClass Pseudo) const {
  for (const auto& p : Pseudos)
    if (p.first == Pseudo)
      return p.second.get();
  return nullptr;
}

void TCSSStyleMap::RemoveSection(const TCSSSection* Section) {
  ForEachList([&](TCSSSelectors& l) { l.RemoveSection(Section); });
}

// --- TCSSStyleMaps ---

TCSSBucket CSSBucketOf(const TCSSSelector* S, hstring& Key) {
  Key.clear();
  if (!S->Tag.empty()) {
    Key = S->Tag;
    return cbTag;
  }
  if (!S->ID.empty()) {
    Key = S->ID;
    return cbID;
  }
  if (!S->Classes.empty()) {
    Key = S->Classes[0].s;
    return cbClass;
  }
  if (!S->Condition.empty()) {
    Key = S->Condition;
    hLower(Key);
    return cbCondition;
  }
  if (S->PseudoClasses & ~kPseudoElements)
    return cbPseudoClass;
  return cbNone;
}

TCSSBucket TCSSStyleMaps::AddSelector(TCSSSelector* S) {
  hstring key;
  TCSSBucket b = CSSBucketOf(S, key);
  auto make = [](std::unique_ptr<TCSSStyleMap>& m, bool pseudo = false) -> TCSSStyleMap& {
    if (!m)
      m = std::make_unique<TCSSStyleMap>(pseudo);
    return *m;
  };
  switch (b) {
  case cbTag:
    make(Tags).AddSelector(key, S, pcNone, S->Universal && S->Condition.empty());
    break;
  case cbID:
    make(IDs).AddSelector(key, S, pcNone, false);
    break;
  case cbClass:
    make(Classes).AddSelector(key, S, pcNone, false);
    break;
  case cbCondition:
    make(Conditions).AddSelector(key, S, pcNone, false);
    break;
  case cbPseudoClass: {
    TCSSPseudoClass pc = S->FirstPseudo;
    if (PCBit(pc) & kPseudoElements)
      for (int i = 0; i <= pcUnknown; ++i)
        if ((S->PseudoClasses & ~kPseudoElements) & (1u << i)) {
          pc = static_cast<TCSSPseudoClass>(i);
          break;
        }
    make(PseudoClasses, true).AddSelector(hstring(), S, pc, false);
    break;
  }
  case cbNone:
    break;
  }
  return b;
}

void TCSSStyleMaps::RemoveSection(const TCSSSection* Section) {
  for (TCSSStyleMap* m : {IDs.get(), Tags.get(), Classes.get(), Conditions.get(), PseudoClasses.get()})
    if (m)
      m->RemoveSection(Section);
}

void TCSSStyleMaps::Clear() {
  IDs.reset();
  Classes.reset();
  Conditions.reset();
  PseudoClasses.reset();
  Tags = std::make_unique<TCSSStyleMap>();
}

void TCSSStyleMaps::GetAllClasses(TStringList& List) const {
  ForEachList([&](const TCSSSelectors& l) { l.GetAllClasses(List); });
}

void TCSSStyleMaps::GetAllIds(TStringList& List) const {
  ForEachList([&](const TCSSSelectors& l) { l.GetAllIds(List); });
}

} // namespace ht
