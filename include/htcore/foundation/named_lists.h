// Small ready-made string dictionaries: names to objects and names to floats.
//
// THtStringList owns THtNameObjectPair records keyed by their Name; a pair
// frees its object when its Owner flag (the list's AFlag) is set. It also
// serves to intern names: AddKey makes a pair without an object, and the
// pair's Name is the shared text. THtSingleList maps names to 32-bit floats.
//
//   ht::THtStringList names(256, /*AFlag=*/true);
//   names.Add(u"width"_hs, new TMyObject);   // the pair owns the object
//   TObject* o = names.GetObject(u"width"_hs);
//   ht::THtSingleList widths;
//   widths.AddWidth(u"W"_hs, 12.5f);  widths.GetWidth(u"x"_hs);   // -1.0 when missing
#pragma once

#include "htcore/foundation/string_dictionary.h"

#include <cstddef>

namespace ht {

class THtNameObjectPair : public TObject {
public:
  THtNameObjectPair(bool AOwner, hstring AName, TObject* AValue = nullptr)
      : Owner(AOwner), Name(std::move(AName)), Value(AValue) {}
  THtNameObjectPair(const THtNameObjectPair&) = delete;
  THtNameObjectPair& operator=(const THtNameObjectPair&) = delete;
  ~THtNameObjectPair() override;

  bool Owner; // frees Value when true
  hstring Name;
  TObject* Value;

  // Byte position of Name from the TObject subobject.
  static std::ptrdiff_t NameOffset() noexcept;
};

class THtStringList : public THtObjectDictionary {
public:
  explicit THtStringList(int ACapacity = 0, bool AFlag = false);

  bool Flag() const noexcept { return FFlag; }

  // Makes a pair (owning Value when the list's flag is set) and adds it; an
  // existing pair of that name is replaced and freed.
  THtNameObjectPair* Add(const hstring& Key, TObject* Value);
  THtNameObjectPair* AddKey(const hstring& Key) { return Add(Key, nullptr); }

  THtNameObjectPair* GetPair(const hstring& Key) const { return static_cast<THtNameObjectPair*>(Get(Key)); }
  THtNameObjectPair* GetPair(const char16_t* p, int Len) const {
    return static_cast<THtNameObjectPair*>(Get(p, Len));
  }
  TObject* GetObject(const hstring& Key) const {
    THtNameObjectPair* pair = GetPair(Key);
    return pair ? pair->Value : nullptr;
  }
  bool HasKey(const hstring& Key) const { return ContainsKey(Key); }

private:
  bool FFlag;
};

class THtSingleRec : public TObject {
public:
  THtSingleRec(hstring AKey, float AValue) : Key(std::move(AKey)), Value(AValue) {}
  hstring Key;
  float Value;
};

// Names to widths, starting with 16 slots.
class THtSingleList : public THtObjectDictionary {
public:
  THtSingleList();

  // Sets the width of Key, adding it when new.
  void AddWidth(const hstring& Key, float Value);
  float GetWidth(const hstring& Key) const;
  float GetWidth(const char16_t* p, int Len) const;
};

} // namespace ht
