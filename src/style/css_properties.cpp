#include "htcore/style/css_properties.h"

#include "htcore/foundation/startup.h"
#include "htcore/foundation/text_utils.h"
#include "style/css_properties_data.h"
#include "style/htmlcss_start.h"

#include <bit>
#include <cassert>

namespace ht {

namespace {

TCSSPropDictionary* g_dictionary = nullptr;
const TCSSPropRec* g_rows[kCSSPropertyCount] = {};

TCSSPropRec* Row(std::u16string_view name) {
  TCSSPropRec* r = g_dictionary->Get(name.data(), static_cast<int>(name.size()));
  assert(r && "a column names a row that does not exist");
  return r;
}

// Case-folds an ASCII name into buf; false when it cannot be a property name.
bool FoldName(std::u16string_view name, char16_t* buf, size_t cap) {
  if (name.size() > cap)
    return false;
  for (size_t i = 0; i < name.size(); ++i)
    buf[i] = CharLower(name[i]);
  return true;
}

} // namespace

float TCSSPropRec::DefaultValue() const noexcept { return std::bit_cast<float>(Default); }

TCSSPropRec* TCSSPropRec::Add(const hstring& SubName) {
  TCSSPropRec* sub = CSSPropDictionary().Get(SubName);
  if (sub)
    SubProps.push_back(sub);
  return sub;
}

TCSSPropRec* TCSSPropRec::SetEnumInfo(const hstring& Prefix, PTypeInfo Info) {
  EnumPrefix = Prefix;
  EnumInfo = Info;
  FKeywords.clear();
  for (int i = 0; Info && i < Info->Count(); ++i) {
    hstring member = Info->NameOf(i);
    std::u16string keyword;
    if (member.size() >= Prefix.size() && SameText(member.view().substr(0, Prefix.size()), Prefix.view()))
      for (char16_t c : member.view().substr(Prefix.size()))
        keyword += CharLower(c);
    FKeywords.push_back(std::move(keyword));
  }
  return this;
}

// The same answer as IsEnum2(EnumPrefix, Text, EnumInfo, Value), which the
// sheet parser asks for every keyword value.
bool TCSSPropRec::IsKeyword(std::u16string_view Text, int& Value) const {
  Value = -1;
  char16_t buf[40];
  size_t n = 0;
  for (char16_t c : Text) {
    if (c == u'-')
      continue;
    if (n == std::size(buf))
      return false;
    buf[n++] = CharLower(c);
  }
  if (n == 0)
    return false;
  const std::u16string_view key(buf, n);
  for (size_t i = 0; i < FKeywords.size(); ++i)
    if (FKeywords[i] == key) {
      Value = static_cast<int>(i);
      return true;
    }
  return false;
}

const TCSSPropRec* TCSSPropDictionary::FindOrUnknown(std::u16string_view Name) const {
  const TCSSPropRec* r = Find(Name);
  return r ? r : g_rows[cspUnknown];
}

TCSSPropRec* TCSSPropDictionary::AddProperty(const hstring& Name, TCSSProperty Prop,
                                             TCSSPropertyType PropType) {
  auto* r = new TCSSPropRec; // owned by the dictionary from here
  r->Name = Name;
  r->Prop = Prop;
  r->PropType = PropType;
  Add(Name, r);
  if (Prop >= cspUnknown && Prop < kCSSPropertyCount && !g_rows[Prop])
    g_rows[Prop] = r;
  return r;
}

TCSSPropDictionary& CSSPropDictionary() {
  EnsureStarted();
  return *g_dictionary;
}

const TCSSPropRec* CSSPropRow(TCSSProperty Prop) {
  EnsureStarted();
  return Prop >= 0 && Prop < kCSSPropertyCount ? g_rows[Prop] : nullptr;
}

const TCSSPropRec* CSSPropByName(std::u16string_view Name) {
  char16_t buf[48];
  if (!FoldName(Name, buf, std::size(buf)))
    return nullptr;
  return CSSPropDictionary().Find(std::u16string_view(buf, Name.size()));
}

const TCSSproperties& CSSAppliedProperties() {
  static const TCSSproperties applied{
      cspPosition,
      cspTransition,
      cspTextDecorationLine,
      cspTextDecoration,
      cspFontStyle,
      cspBackgroundColor,
      cspBackgroundImage,
      cspBackgroundPositionX,
      cspbackgroundPositionY,
      cspBackgroundPosition,
      cspBackgroundAttachment,
      cspBackgroundSize,
      cspVisibility,
      cspZIndex,
      cspDirection,
      cspWordWrap,
      cspWordBreak,
      cspClipPath,
      cspDominantBaseline,
      cspFill,
      cspFillRule,
      cspStroke,
      cspStrokeWidth,
      cspStopColor,
      cspStopOpacity,
      cspStrokeDasharray,
      cspStrokeDashoffset,
      cspStrokeLinejoin,
      cspStrokeLinecap,
      cspShapeRendering,
      cspTextAnchor,
      cspZoom,
      cspHyphens,
      cspAnimation,
      cspAnimationName,
      cspAnimationDuration,
      cspAnimationTimingFunction,
      cspClear,
      cspCounterReset,
      cspCounterIncrement,
      cspTransitionDuration,
      // with routines of their own
      cspDisplay,
      cspBackground,
      cspFontWeight,
      cspWhiteSpace,
  };
  return applied;
}

const TPageSize* FindPageSize(std::u16string_view Name) {
  for (const TPageSize& p : PageSizes)
    if (SameText(p.Name, Name))
      return &p;
  return nullptr;
}

namespace detail {

void BuildCSSPropDictionary() {
  g_dictionary = new TCSSPropDictionary; // freed by FreeCSSPropDictionary
  for (const TCSSPropSource& s : kCSSPropSource) {
    TCSSPropRec* r = g_dictionary->AddProperty(hstring(s.Name), s.Prop, s.PropType);
    if (s.EnumInfo)
      r->SetEnumInfo(hstring(s.EnumPrefix), s.EnumInfo());
  }
  for (size_t i = 0; i < kCSSInheritedCount; ++i)
    Row(kCSSInherited[i])->Inherited = true;
  for (size_t i = 0; i < kCSSAffectsLayoutCount; ++i)
    Row(kCSSAffectsLayout[i])->AffectsLayout = true;
  for (size_t i = 0; i < kCSSParentTypeCount; ++i)
    Row(kCSSParentTypes[i].Name)->ParentType = kCSSParentTypes[i].ParentType;
  for (size_t i = 0; i < kCSSDefaultCount; ++i)
    Row(kCSSDefaults[i].Name)->Default = std::bit_cast<uint32_t>(kCSSDefaults[i].Value);
  for (size_t i = 0; i < kCSSSubPropCount; ++i) {
    TCSSPropRec* r = Row(kCSSSubProps[i].Name);
    for (std::u16string_view sub : kCSSSubProps[i].SubProps)
      if (!sub.empty())
        r->SubProps.push_back(Row(sub));
  }
}

void FreeCSSPropDictionary() {
  delete g_dictionary;
  g_dictionary = nullptr;
  for (const TCSSPropRec*& r : g_rows)
    r = nullptr;
}

} // namespace detail

} // namespace ht
