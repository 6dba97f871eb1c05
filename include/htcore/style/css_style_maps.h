// The indexes that bring candidate selectors to an element.
//
// A sheet files each selector once, by its subject compound: under its tag,
// else its id, else its first class, else its attribute condition, else its
// first pseudo-class. An element then looks only at the lists of its own tag,
// id and classes:
//
//   const ht::TCSSStyleMaps& m = sheet.Main;
//   if (auto* l = m.Classes ? m.Classes->Get(u"btn"_hs) : nullptr)
//     for (ht::TCSSSelector* s : *l) ...   // every selector whose subject has .btn first
#pragma once

#include "htcore/foundation/object.h"
#include "htcore/foundation/string_dictionary.h"
#include "htcore/style/css_selector.h"

#include <memory>
#include <utility>
#include <vector>

namespace ht {

class TStringList;

// A list of selectors. A section's list owns its selectors; the lists of the
// maps only point at them.
class TCSSSelectors : public TObject {
public:
  explicit TCSSSelectors(bool AOwns = false) : FOwns(AOwns) {}
  TCSSSelectors(const TCSSSelectors&) = delete;
  TCSSSelectors& operator=(const TCSSSelectors&) = delete;
  ~TCSSSelectors() override { Clear(); }

  hstring Key;

  int Count() const noexcept { return static_cast<int>(FList.size()); }
  TCSSSelector* GetSelector(int Index) const { return FList[static_cast<size_t>(Index)]; }
  TCSSSelector* GetSelectors(int Index) const { return GetSelector(Index); }
  void AddSelector(TCSSSelector* S) { FList.push_back(S); }
  void Clear();
  // Drops the selectors of a section (an owning list frees them).
  void RemoveSection(const TCSSSection* Section);
  // Appends, or merges S's section into the first selector's when both have
  // the same weight: an element's own sheet stays one section.
  void DistinctAdd(TCSSSelector* S);
  // Distinct class names and ids over all selectors and their chains.
  void GetAllClasses(TStringList& List) const;
  void GetAllIds(TStringList& List) const;

  auto begin() const noexcept { return FList.begin(); }
  auto end() const noexcept { return FList.end(); }

private:
  bool FOwns;
  std::vector<TCSSSelector*> FList;
};

// Key to selector list; or, as a pseudo map, pseudo-class to list with a mask
// of the pseudo-classes present.
class TCSSStyleMap : public THtObjectDictionaryOf<TCSSSelectors, &TCSSSelectors::Key> {
public:
  explicit TCSSStyleMap(bool APseudoMap = false);

  const bool PseudoMap;
  std::vector<std::pair<TCSSPseudoClass, std::unique_ptr<TCSSSelectors>>> Pseudos;
  TCSSPseudoClasses PseudoMask = 0;

  void AddSelector(const hstring& Key, TCSSSelector* S, TCSSPseudoClass Pseudo, bool Distinct);
  // The list of a pseudo-class in a pseudo map, or null.
  TCSSSelectors* PseudoList(TCSSPseudoClass Pseudo) const;
  void RemoveSection(const TCSSSection* Section);
  template <class F> void ForEachList(F&& f) const {
    ForEach([&](TCSSSelectors* l) { f(*l); });
    for (const auto& p : Pseudos)
      f(*p.second);
  }
};

// Where a selector is filed.
enum TCSSBucket { cbNone, cbTag, cbID, cbClass, cbCondition, cbPseudoClass };

class TCSSStyleMaps {
public:
  TCSSStyleMaps() : Tags(std::make_unique<TCSSStyleMap>()) {}

  std::unique_ptr<TCSSStyleMap> IDs;
  std::unique_ptr<TCSSStyleMap> Tags;
  std::unique_ptr<TCSSStyleMap> Classes;
  std::unique_ptr<TCSSStyleMap> Conditions;
  std::unique_ptr<TCSSStyleMap> PseudoClasses;

  // Files S by its subject compound; answers the bucket (cbNone: S can never match).
  TCSSBucket AddSelector(TCSSSelector* S);
  void RemoveSection(const TCSSSection* Section);
  void Clear();
  void GetAllClasses(TStringList& List) const;
  void GetAllIds(TStringList& List) const;
  template <class F> void ForEachList(F&& f) const {
    for (const TCSSStyleMap* m :
         {IDs.get(), Tags.get(), Classes.get(), Conditions.get(), PseudoClasses.get()})
      if (m)
        m->ForEachList(f);
  }
};

// The bucket a selector goes to and its key, without filing it.
TCSSBucket CSSBucketOf(const TCSSSelector* S, hstring& Key);

} // namespace ht
