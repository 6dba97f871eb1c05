// Pieces shared by the two XML readers (xml_builder.cpp, xml_fast_reader.cpp).
#pragma once

#include "htcore/document/xml_node.h"
#include "htcore/foundation/hash.h"
#include "htcore/foundation/text_utils.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace ht::detail {

// A <?xml ...?> text that names UTF-8 (in any case).
bool DeclaresUtf8(std::u16string_view directive);
// Whether p..pend may hold UTF-8 read as 8-bit units, so that a UTF-8
// declaration is worth the reader's re-decoding test.
bool MayBeNarrowUtf8(const char16_t* p, const char16_t* pend);
// The message of a close tag that does not match the open element.
[[noreturn]] void XMLTagOrderError(const hstring& expected, const hstring& found, int pos);

// Short runs of units compared eight bytes a step: names and short values
// are a few words long, and a call to memcmp costs more than the compare.
template <class U> bool SameWords(const U* a, const U* b, size_t n) {
  constexpr size_t kStep = 8 / sizeof(U);
  size_t i = 0;
  for (; i + kStep <= n; i += kStep) {
    uint64_t x, y;
    std::memcpy(&x, a + i, 8);
    std::memcpy(&y, b + i, 8);
    if (x != y)
      return false;
  }
  for (; i < n; ++i)
    if (a[i] != b[i])
      return false;
  return true;
}

// A hash of a short run of units, eight bytes a step: names and short
// values are a few words long.
template <class U> uint32_t HashWords(const U* p, size_t n) {
  constexpr size_t kStep = 8 / sizeof(U);
  uint64_t h = 0x9E3779B97F4A7C15ull ^ n;
  size_t i = 0;
  for (; i + kStep <= n; i += kStep) {
    uint64_t w;
    std::memcpy(&w, p + i, 8);
    h = (h ^ w) * 0xFF51AFD7ED558CCDull;
    h ^= h >> 29;
  }
  if (i < n) {
    uint64_t w = 0;
    for (size_t k = i; k < n; ++k)
      w = (w << (8 * sizeof(U))) | p[k];
    h = (h ^ w) * 0xFF51AFD7ED558CCDull;
  }
  // The low bits pick the slot: mix the high ones in.
  h ^= h >> 32;
  h *= 0xC4CEB9FE1A85EC53ull;
  return static_cast<uint32_t>(h ^ (h >> 29));
}

// A name met in this parse, with what a node of that tag needs.
struct TName {
  hstring Name;
  int32_t TagHash = 0;
  bool Hashed = false;
  THtNodeClass Class = nullptr; // resolved on first use as a tag
};

// Open addressing over the names; an index into Names, plus one, per slot.
class TNameTable {
public:
  TNameTable() : FSlots(256, 0) { Names.reserve(64); }

  int Intern(const char16_t* p, size_t n) {
    uint32_t h = Hash(p, n);
    size_t mask = FSlots.size() - 1;
    for (size_t i = h & mask;; i = (i + 1) & mask) {
      uint32_t s = FSlots[i];
      if (s == 0) {
        Names.emplace_back().Name = hstring::Interned(p, n); // copies cost no count
        FSlots[i] = static_cast<uint32_t>(Names.size());
        if (Names.size() * 2 > FSlots.size())
          Grow();
        return static_cast<int>(Names.size()) - 1;
      }
      const hstring& name = Names[s - 1].Name;
      if (name.size() == n && SameUnits(name.c_str(), p, n))
        return static_cast<int>(s) - 1;
    }
  }

  // The tag hash of THtNode::SetTag for name k.
  int32_t TagHash(int k) {
    TName& t = Names[static_cast<size_t>(k)];
    if (!t.Hashed) {
      hstring lower = t.Name;
      hLower(lower);
      t.TagHash = static_cast<int32_t>(RSHash(lower.c_str(), lower.Length()));
      t.Hashed = true;
    }
    return t.TagHash;
  }

  std::vector<TName> Names;

  static uint32_t Hash(const char16_t* p, size_t n) { return HashWords(p, n); }

  static bool SameUnits(const char16_t* a, const char16_t* b, size_t n) { return SameWords(a, b, n); }

private:
  void Grow() {
    std::vector<uint32_t> slots(FSlots.size() * 2, 0);
    size_t mask = slots.size() - 1;
    for (size_t k = 0; k < Names.size(); ++k) {
      const hstring& name = Names[k].Name;
      size_t i = Hash(name.c_str(), name.size()) & mask;
      while (slots[i])
        i = (i + 1) & mask;
      slots[i] = static_cast<uint32_t>(k + 1);
    }
    FSlots.swap(slots);
  }

  std::vector<uint32_t> FSlots;
};

// Short texts that repeat (attribute values, blanks, JSON scalars) as one
// shared string each: a direct-mapped cache, so its size stays fixed.
class TTextCache {
public:
  TTextCache() : FSlots(4096) {}
  hstring Get(std::u16string_view v) {
    if (v.size() > 16)
      return hstring::ForTree(v);
    uint32_t h = TNameTable::Hash(v.data(), v.size());
    TSlot& s = FSlots[h & (FSlots.size() - 1)];
    if (s.Hash != h || s.Text.view() != v) {
      s.Hash = h;
      s.Text = hstring::ForTree(v);
    }
    return s.Text;
  }

private:
  struct TSlot {
    uint32_t Hash = 0;
    hstring Text;
  };
  std::vector<TSlot> FSlots;
};

// Children gathered per open element and handed to its list at its end, so
// that each list is allocated once at its final size.
class TPendingChildren {
public:
  TPendingChildren() : FLevels(1) {}
  TPendingChildren(const TPendingChildren&) = delete;
  TPendingChildren& operator=(const TPendingChildren&) = delete;
  // Frees what no list took over: the reader gave up half way.
  ~TPendingChildren() {
    for (size_t i = 0; i <= FDepth && i < FLevels.size(); ++i)
      for (THtNode* n : FLevels[i])
        delete n;
  }

  void Add(THtNode* n) { FLevels[FDepth].push_back(n); }
  bool Empty() const { return FLevels[FDepth].empty(); }
  // A new element opens one level down.
  void Down() {
    if (++FDepth == FLevels.size())
      FLevels.emplace_back();
  }
  // The element of the current level ends: its children go to Parent, and
  // the level above becomes current (none after the top).
  void Up(THtNode* Parent) {
    std::vector<THtNode*>& kids = FLevels[FDepth];
    if (!kids.empty()) {
      THtNodeList* list = Parent->GetNodes();
      list->SetCapacity(list->Count() + static_cast<int>(kids.size()));
      for (THtNode* k : kids)
        list->Add(k);
      kids.clear();
    }
    if (FDepth > 0)
      --FDepth;
  }

private:
  std::vector<std::vector<THtNode*>> FLevels;
  size_t FDepth = 0;
};

// Builds Node from XML without the item reader, for the input it knows to
// read exactly as the item reader would. False when it met anything else;
// Node is then in an undefined state and the caller parses again.
bool ReadXMLFast(THtXMLNode& Node, const hstring& XML);
// The same from UTF-8 bytes: the tree of SetXML on the text they decode to.
bool ReadXMLFast(THtXMLNode& Node, std::string_view UTF8);

// Builds Node, a new node, from JSON in the same way, for the input it
// knows; false otherwise, with Node cleared again.
bool ReadJSONFast(THtXMLNode& Node, const hstring& JSON);

} // namespace ht::detail
