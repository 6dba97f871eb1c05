// HTML named character references in both directions.
//
// The table holds the 2,125 references of HTML 5 that end in ';' (stored
// without '&' and ';'), one code point each, sorted case-insensitively with
// capitals first. The library builds two dictionaries over it when it starts:
// name to code point for the HTML reader, code point to record for the writer.
//
//   uint32_t c = ht::FindEntity(u"hellip", 6);         // 0x2026
//   if (const ht::THtEntityRec* e = ht::FindEntity(0x2192u))
//     out += u"&" + e->name + u";";                    // "&rarr;"
#pragma once

#include "htcore/foundation/hash.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/id_dictionary.h"
#include "htcore/foundation/string_dictionary.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ht {

inline constexpr int kHtEntityCount = 2125;

struct THtEntityRec {
  hstring name;  // without '&' and ';'; first field: dictionaries read the key here
  uint32_t code; // code point
};

// The entity table in its order (empty before start).
std::span<const THtEntityRec> HtEntityTable();

// Name to code point: the records keyed by their name, hashed with RSHash.
class THtEntityDictionary : public THtPointerDictionaryOf<THtEntityRec, &THtEntityRec::name> {
public:
  THtEntityDictionary() : THtPointerDictionaryOf(kHtEntityCount, RSHash) {}
  // Code point for the name (case matters), or 0.
  uint32_t FindEntity(const char16_t* p, int Len) const {
    const THtEntityRec* e = Get(p, Len);
    return e ? e->code : 0;
  }
};

// Code point to the first record that names it. Code points that the writer
// never names are left out: up to 255, and 256-591, 880-1279, 1328-1871,
// 8192-8351 (Latin, Greek, Cyrillic, Armenian to Arabic, general punctuation).
class THtEntityReverseDictionary : public THtIdPointerDictionary {
public:
  THtEntityReverseDictionary() : THtIdPointerDictionary(kHtEntityCount) {}
  static bool Excluded(uint32_t c) noexcept {
    return c <= 591 || (c >= 880 && c <= 1279) || (c >= 1328 && c <= 1871) || (c >= 8192 && c <= 8351);
  }
  // Adds the record unless its code is left out or already has a name.
  void AddRec(THtEntityRec* rec) {
    if (!Excluded(rec->code) && !ContainsKey(rec->code))
      Add(rec->code, rec);
  }
  const THtEntityRec* FindEntity(uint32_t c) const { return static_cast<const THtEntityRec*>(Get(c)); }
};

// The global dictionaries, null before start.
const THtEntityDictionary* HtEntityDictionary();
const THtEntityReverseDictionary* HtEntityReverseDictionary();

// Lookups through the global dictionaries; a table not yet filled knows no
// name.
uint32_t FindEntity(const char16_t* p, int Len);
inline uint32_t FindEntity(std::u16string_view name) {
  return FindEntity(name.data(), static_cast<int>(name.size()));
}
const THtEntityRec* FindEntity(uint32_t c);

} // namespace ht
