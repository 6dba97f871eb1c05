#include "htcore/foundation/enum_info.h"

#include <cstring>

namespace ht {

namespace {

std::u16string AsciiLower(std::u16string_view s) {
  std::u16string r(s);
  for (char16_t& c : r)
    if (c >= u'A' && c <= u'Z')
      c = static_cast<char16_t>(c + 32);
  return r;
}

bool IsIdentChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

} // namespace

TEnumTypeInfo::TEnumTypeInfo(const char* type_name, const char* names) : FName(type_name) {
  const char* p = names;
  while (*p) {
    while (*p && !IsIdentChar(*p))
      ++p;
    const char* start = p;
    while (IsIdentChar(*p))
      ++p;
    if (p == start)
      break;
    hstring name = hstring::FromUtf8(std::string_view(start, static_cast<size_t>(p - start)));
    FLower.emplace(AsciiLower(name.view()), static_cast<int>(FNames.size()));
    FNames.push_back(name);
    while (*p && *p != ',') // skip anything up to the next member
      ++p;
  }
}

int TEnumTypeInfo::ValueOf(std::u16string_view name) const {
  auto it = FLower.find(AsciiLower(name));
  return it == FLower.end() ? -1 : it->second;
}

hstring TEnumTypeInfo::NameOf(int value) const {
  if (value < 0 || value >= Count())
    return hstring();
  return FNames[static_cast<size_t>(value)];
}

} // namespace ht
