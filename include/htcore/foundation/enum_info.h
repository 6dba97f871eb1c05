// Reflection of enumerations by name.
//
// HT_ENUM declares a plain enumeration and a name table for it, so that text
// keywords reach members by name (IsEnum / IsEnum2 in text_utils.h):
//
//   HT_ENUM(TDisplayStyle, dsBlock, dsInline, dsInlineBlock, dsNone);
//   TDisplayStyle d;
//   if (ht::IsEnum2(u"ds", u"inline-block", d)) ...   // d == dsInlineBlock
//
// Members count up from 0 in the order written; explicit values are not
// supported. The lookup ignores ASCII case.
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ht {

class TEnumTypeInfo {
public:
  // names: the enumerators as written in the declaration, comma-separated.
  TEnumTypeInfo(const char* type_name, const char* names);

  std::string_view Name() const noexcept { return FName; }
  int Count() const noexcept { return static_cast<int>(FNames.size()); }
  // Member for a name (ASCII case ignored), or -1.
  int ValueOf(std::u16string_view name) const;
  // Name of a member, or empty for a value out of range.
  hstring NameOf(int value) const;

private:
  std::string_view FName;
  std::vector<hstring> FNames;
  std::unordered_map<std::u16string, int> FLower;
};

using PTypeInfo = const TEnumTypeInfo*;

// The table of an enumeration declared with HT_ENUM.
template <class E> PTypeInfo TypeInfo() { return HtEnumTypeInfo(static_cast<E*>(nullptr)); }

} // namespace ht

#define HT_ENUM(Type, ...)                                                                                   \
  enum Type : int { __VA_ARGS__ };                                                                           \
  inline ::ht::PTypeInfo HtEnumTypeInfo(Type*) {                                                             \
    static const ::ht::TEnumTypeInfo info(#Type, #__VA_ARGS__);                                              \
    return &info;                                                                                            \
  }
