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

#include "htcore/foundation/hstring.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>

namespace ht {

inline constexpr int kHtEntityCount = 2125;

struct THtEntityRec {
  hstring name;   // without '&' and ';'; first field: dictionaries read the key here
  uint32_t code;  // code point
};

// The entity table in its order (empty before start).
std::span<const THtEntityRec> HtEntityTable();

// Name to code point.
class THtEntityDictionary {
public:
  THtEntityDictionary();
  void AddRec(const THtEntityRec* rec);
  // Code point for the name (case matters), or 0.
  uint32_t FindEntity(const char16_t* p, int Len) const;

private:
  std::unordered_map<std::u16string_view, const THtEntityRec*> FMap;
};

// Code point to the first record that names it. Code points that the writer
// never names are left out: up to 255, and 256-591, 880-1279, 1328-1871,
// 8192-8351 (Latin, Greek, Cyrillic, Armenian to Arabic, general punctuation).
class THtEntityReverseDictionary {
public:
  THtEntityReverseDictionary();
  static bool Excluded(uint32_t c) noexcept;
  // Adds the record unless its code is excluded or already named.
  void AddRec(const THtEntityRec* rec);
  const THtEntityRec* FindEntity(uint32_t c) const;

private:
  std::unordered_map<uint32_t, const THtEntityRec*> FMap;
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

}  // namespace ht
