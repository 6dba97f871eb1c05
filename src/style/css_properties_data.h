// Source tables of the property table (css_properties_data.cpp).
#pragma once

#include "htcore/style/css_properties.h"

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <string_view>

namespace ht::detail {

inline constexpr size_t kCSSPropRowCount = 150;

struct TCSSPropSource {
  std::u16string_view Name;
  TCSSProperty Prop;
  TCSSPropertyType PropType;
  std::u16string_view EnumPrefix = {};
  PTypeInfo (*EnumInfo)() = nullptr;
};

struct TCSSParentSource {
  std::u16string_view Name;
  TCSSPropertyParentType ParentType;
};

struct TCSSDefaultSource {
  std::u16string_view Name;
  float Value;
};

struct TCSSSubPropSource {
  std::u16string_view Name;
  std::u16string_view SubProps[4];
};

extern const TCSSPropSource kCSSPropSource[kCSSPropRowCount];
extern const std::u16string_view kCSSInherited[];
extern const size_t kCSSInheritedCount;
extern const std::u16string_view kCSSAffectsLayout[];
extern const size_t kCSSAffectsLayoutCount;
extern const TCSSParentSource kCSSParentTypes[];
extern const size_t kCSSParentTypeCount;
extern const TCSSDefaultSource kCSSDefaults[];
extern const size_t kCSSDefaultCount;
extern const TCSSSubPropSource kCSSSubProps[];
extern const size_t kCSSSubPropCount;

} // namespace ht::detail
