// The property table: everything the style engine knows about a CSS property.
//
// One row per property, built once at library start and read without locks:
// its TCSSProperty member, value type, percentage base, whether it inherits,
// whether a change needs layout, its default, its longhands in order and, for
// keyword properties, the keyword enumeration and its member prefix.
//
//   const ht::TCSSPropRec* r = ht::CSSPropDictionary().Get(u"margin"_hs);
//   r->Prop;                          // cspMargin
//   r->SubProps[0]->Name;             // "margin-top"
//   int v;
//   ht::CSSPropRow(ht::cspDisplay)->IsKeyword(u"Inline-Block", v);   // v == dsInlineBlock
//
// Keyword enumerations are declared with HT_ENUM, so IsEnum2 finds a member by
// prefix plus the keyword without hyphens, ignoring case.
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/foundation/string_dictionary.h"

#include <bitset>
#include <cstdint>
#include <string_view>
#include <vector>

namespace ht {

HT_ENUM(TCSSProperty, cspUnknown, cspDisplay, cspFloat, cspPage, cspPointerEvents, cspSize, cspPosition,
        cspColumnRule, cspColumnGap, cspColumnWidth, cspColumnCount, cspTransition, cspTransitionDelay,
        cspContentEditable, cspAppearance, cspMinWidth, cspMaxWidth, cspMinHeight, cspMaxHeight,
        cspLineHeight, cspFont, cspFontFamily, cspTextIndent, cspLetterSpacing, cspBorderSpacing, cspLeft,
        cspTop, cspRight, cspBottom, cspMarginLeft, cspMarginTop, cspMarginRight, cspMarginBottom, cspMargin,
        cspPaddingLeft, cspPaddingTop, cspPaddingRight, cspPaddingBottom, cspPadding, cspWidth, cspHeight,
        cspTableLayout, cspTextOverflow, cspDraggable, cspColor, cspTextDecorationColor,
        cspTextDecorationStyle, cspTextDecorationLine, cspTextDecoration, cspPageBreakBefore,
        cspPageBreakAfter, cspPageBreakInside, cspResize, cspBoxReflect, cspBorder, cspBorderRadius,
        cspBorderTopLeftradius, cspBorderTopRightRadius, cspBorderBottomLeftRadius,
        cspBorderBottomRightRadius, cspBorderColor, cspBorderTopColor, cspBorderRightColor,
        cspBorderBottomColor, cspBorderLeftColor, cspBorderWidth, cspBorderTopWidth, cspBorderRightWidth,
        cspBorderBottomWidth, cspBorderLeftWidth, cspBorderStyle, cspBorderTopStyle, cspBorderRightStyle,
        cspBorderBottomStyle, cspBorderLeftStyle, cspBorderTop, cspBorderRight, cspBorderBottom,
        cspBorderLeft, cspBoxShadow, cspTextShadow, cspFlexDirection, cspJustifyContent, cspAlignItems,
        cspAlignSelf, cspFlexBasis, cspFlexGrow, cspFlexShrink, cspFlexWrap, cspFlex, cspTextTransform,
        cspCursor, cspBorderCollapse, cspTextAlign, cspFontSize, cspFontStyle, cspFontWeight, cspOpacity,
        cspListStyleType, cspListStyle, cspBoxSizing, cspVerticalAlign, cspOverflowX, cspOverflowY,
        cspOverflow, cspBackground, cspBackgroundColor, cspBackgroundImage, cspBackgroundPositionX,
        cspbackgroundPositionY, cspBackgroundPosition, cspBackgroundRepeat, cspBackgroundAttachment,
        cspBackgroundOrigin, cspBackgroundSize, cspWritingMode, cspContent, cspTransform, cspTransformOrigin,
        cspVisibility, cspZIndex, cspDirection, cspWordWrap, cspWordBreak, cspClipPath, cspDominantBaseline,
        cspFill, cspFillOpacity, cspFillRule, cspStroke, cspStrokeWidth, cspStrokeOpacity, cspStopColor,
        cspBreakAfter, cspStopOpacity, cspStrokeDasharray, cspStrokeDashoffset, cspStrokeLinejoin,
        cspStrokeLinecap, cspShapeRendering, cspTextAnchor, cspWhiteSpace, cspZoom, cspFilter, cspHyphens,
        cspTabStops, cspTabInterval, cspAnimation, cspAnimationName, cspAnimationDuration,
        cspAnimationTimingFunction, cspClear, cspCounterReset, cspCounterIncrement, cspTransitionDuration,
        cspWordSpacing, cspListStylePosition, cspMaskImage, cspOutline, cspOutlineColor, cspOutlineStyle,
        cspOutlineWidth, cspOutlineOffset, cspFontFeatureSettings, cspFontKerning, cspUnicodeBidi)

inline constexpr int kCSSPropertyCount = cspUnicodeBidi + 1;

// A set of properties.
class TCSSproperties {
public:
  TCSSproperties() = default;
  TCSSproperties(std::initializer_list<TCSSProperty> props) {
    for (TCSSProperty p : props)
      FBits.set(static_cast<size_t>(p));
  }
  bool Contains(TCSSProperty p) const noexcept { return FBits.test(static_cast<size_t>(p)); }
  void Include(TCSSProperty p) noexcept { FBits.set(static_cast<size_t>(p)); }
  void Exclude(TCSSProperty p) noexcept { FBits.reset(static_cast<size_t>(p)); }
  void Clear() noexcept { FBits.reset(); }
  bool Empty() const noexcept { return FBits.none(); }
  int Count() const noexcept { return static_cast<int>(FBits.count()); }
  friend bool operator==(const TCSSproperties&, const TCSSproperties&) = default;

private:
  std::bitset<kCSSPropertyCount> FBits;
};

HT_ENUM(TCSSPropertyType, cptLength, cptNumber, cptColor, cptString, cptEnum, cptComplex)
HT_ENUM(TCSSPropertyParentType, cpptWidth, cpptHeight, cpptFontSize, cpptContainerWidth, cpptContainerHeight)

// Keyword enumerations; a property's keywords are the members without the prefix.
HT_ENUM(TDisplayStyle, dsInline, dsBlock, dsInlineBlock, dsNone, dsTable, dsTableRow, dsTableRowGroup,
        dsTableCell, dsListItem, dsFlex, dsInlineFlex, dsInlineTable)
HT_ENUM(TFloat, fNone, fLeft, fRight, fFootNote)
HT_ENUM(TCSSPointerEvents, peAuto, peNone)
HT_ENUM(TElementPosition, epStatic, epRelative, epAbsolute, epFixed, epRunning, epSticky)
HT_ENUM(TCSSAppearance, caNone, caButton, caCheckbox, caRadio)
HT_ENUM(TCSSFontStyle, cfsNormal, cfsItalic, cfsOblique)
HT_ENUM(TCSSFontWeight, fwNormal, fwBold, fwLighter, fwBolder, fw100, fw200, fw300, fw400, fw500, fw600,
        fw700, fw800, fw900)
HT_ENUM(TCSSTableLayout, tlAuto, tlFixed)
HT_ENUM(TCSSTextOverflow, toClip, toEllipsis)
HT_ENUM(TCSSDraggable, dgFalse, dgTrue, dgAuto)
HT_ENUM(TElementResize, erNone, erBoth, erHorizontal, erVertical)
HT_ENUM(TCSSPageBreak, pbAuto, pbAlways, pbAvoid, pbLeft, pbRight)
HT_ENUM(TLineStyle, lsNone, lsHidden, lsSolid, lsDotted, lsDashed, lsDouble, lsGroove, lsRidge, lsInset,
        lsOutset)
HT_ENUM(TCSSFlexDirection, fdRow, fdRowReverse, fdColumn, fdColumnReverse)
HT_ENUM(TCSSJustifyContent, jcFlexStart, jcFlexEnd, jcCenter, jcSpaceBetween, jcSpaceAround)
HT_ENUM(TCSSAlignItems, aiNormal, aiFlexStart, aiFlexEnd, aiCenter, aiStretch, aiBaseLine, aiInherit)
HT_ENUM(TCSSFlexWrap, fwNowrap, fwWrap, fwReverse)
HT_ENUM(TCSSTextTransform, cttNone, cttLowerCase, cttUpperCase, cttCapitalize)
HT_ENUM(TCSSCursor, ecAuto, ecCrossHair, ecDefault, ecPointer, ecText, ecHelp, ecWResize, ecEResize,
        ecNResize, ecSResize)
HT_ENUM(TBorderCollapse, bcSeparate, bcCollapse)
HT_ENUM(THAlign, thInherit, thStart, thEnd, thLeft, thRight, thCenter, thJustify, thXCenter)
HT_ENUM(TListStyleType, lstCircle, lstNone, lstDisc, lstSquare, lstDecimal, lstLowerAlpha, lstUpperAlpha,
        lstLowerLatin, lstUpperLatin, lstLowerRoman, lstUpperRoman)
HT_ENUM(TCSSListStylePosition, lspOutside, lspInside)
HT_ENUM(TBoxSizing, bsContentbox, bsBorderbox, bsPaddingbox)
HT_ENUM(TCSSTextDecorationStyle, tsSolid, tsDouble, tsDotted, tsDashed, tsWavy)
HT_ENUM(TCSSTextDecorationLine, tlNone, tlUnderline, tlOverLine, tlLineThrough)
HT_ENUM(TVAlign, vaBaseLine, vaTop, vaBottom, vaMiddle, vaSub, vaSuper, vaTextTop, vaTextBottom)
HT_ENUM(TElementOverflow, eoVisible, eoHidden, eoScroll, eoAuto)
HT_ENUM(TBackgroundRepeat, brRepeat, brRepeatX, brRepeatY, brNoRepeat)
HT_ENUM(TBackgroundAttachment, baScroll, baFixed)
HT_ENUM(TBackgroundOrigin, boPaddingBox, boBorderBox, boContentBox)
HT_ENUM(TBackgroundSize, bsAuto, bsSize, bsCover, bsContain)
HT_ENUM(TCSSOrientation, coPortrait, coLandscape, coDefault)
HT_ENUM(TCSSVisibility, cvVisible, cvHidden)
HT_ENUM(TCSSDirection, cdLTR, cdRTL)
HT_ENUM(TCSSWordWrap, wwNormal, wwBreakWord)
HT_ENUM(TCSSWordBreak, wbNormal, wbBreakWord, wbBreakAll, wbKeepAll, wbHyphens)
HT_ENUM(TWhiteSpace, wsNormal, wsNowrap, wsPre, wsPreLine, wsPreWrap)
HT_ENUM(TCSSHyphens, chNone, chManual, chAuto)
HT_ENUM(TCSSBreakAfter, cbaAuto, cbaAvoid, cbaAlways, cbaAll, cbaAvoidPage, cbaPage, cbaLeft, cbaRight,
        cbaRecto, cbaVerso, cbaAvoidColumn, cbaColumn, cbaAvoidRegion, cbaRegion)
HT_ENUM(TCSSWritingMode, wmHorizontalTB, wmVerticalRL, wmVerticalLR, wmSidewaysRL, wmSidewaysLR)
HT_ENUM(TCSSTiming, tmEase, tmEaseIn, tmEaseOut, tmEaseInOut, tmLinear)
HT_ENUM(TFontKerningMode, kmAuto, kmNormal, kmNone)
HT_ENUM(TCSSUnicodeBidi, ubNormal, ubEmbed, ubIsolate, ubBidiOverride, ubIsolateOverride, ubPlainText)

// Payloads of the first token of a compiled value beside the ARGB, ordinal or
// float it normally holds.
inline constexpr uint32_t kCSSSlotInherit = 888;
inline constexpr uint32_t kCSSSlotUnknownKeyword = 999;

// One row of the table. Rows are owned by the dictionary and never move.
class TCSSPropRec : public TObject {
public:
  hstring Name; // lower case
  TCSSProperty Prop = cspUnknown;
  TCSSPropertyType PropType = cptNumber;
  TCSSPropertyParentType ParentType = cpptWidth;
  bool Inherited = false;
  uint32_t Default = 0; // float bits of the number default
  bool AffectsLayout = false;
  std::vector<TCSSPropRec*> SubProps; // longhands, in order; not owned
  PTypeInfo EnumInfo = nullptr;
  hstring EnumPrefix;

  float DefaultValue() const noexcept;
  // Appends the row of that name to SubProps and returns it (null when the
  // name has no row).
  TCSSPropRec* Add(const hstring& SubName);
  // Sets the keyword enumeration; returns this row.
  TCSSPropRec* SetEnumInfo(const hstring& Prefix, PTypeInfo Info);
  // The ordinal of a keyword of this row's enumeration (prefix + text without
  // hyphens, case ignored); false and -1 without a hit or an enumeration.
  bool IsKeyword(std::u16string_view Text, int& Value) const;

private:
  // The members' names without the prefix, in lower case, by ordinal (empty
  // for a member that lacks the prefix): IsKeyword without allocation.
  std::vector<std::u16string> FKeywords;
};

// Name to row; owning. Hosts may add rows (the SVG presentation properties)
// before the first parse; after that it is read-only.
class TCSSPropDictionary : public THtObjectDictionaryOf<TCSSPropRec, &TCSSPropRec::Name> {
public:
  TCSSPropDictionary() : THtObjectDictionaryOf(511, true) {}
  // The row of a lower-case name, or null.
  const TCSSPropRec* Find(std::u16string_view Name) const {
    return Get(Name.data(), static_cast<int>(Name.size()));
  }
  // The row of a name, or the row "unknown".
  const TCSSPropRec* FindOrUnknown(std::u16string_view Name) const;
  // Adds (or replaces) a row for a host property and returns it.
  TCSSPropRec* AddProperty(const hstring& Name, TCSSProperty Prop, TCSSPropertyType PropType);
};

struct TCSSValue;

// A snapshot of one winning value of an element, for change detection.
struct TCSSPropValueRec {
  const TCSSValue* Value = nullptr;
  uint32_t AsNumber = 0; // resolved pixels, number, colour, enum ordinal or hash
  uint32_t AsUnit = 0;   // the FValue of a length
  const TCSSPropRec* Prop = nullptr;
};

// The process-wide table (started on first use).
TCSSPropDictionary& CSSPropDictionary();
// The row of a member, or null for the members without a row.
const TCSSPropRec* CSSPropRow(TCSSProperty Prop);
// The row of a name ASCII case ignored, or null; for callers that have not
// folded the name.
const TCSSPropRec* CSSPropByName(std::u16string_view Name);

// The properties whose values the cascade applies at once (into fields of the
// element's style); the rest are read by getters on demand.
const TCSSproperties& CSSAppliedProperties();

// Paper sizes for @page size, in millimetres.
struct TPageSize {
  std::u16string_view Name;
  int32_t Width;
  int32_t Height;
};
extern const TPageSize PageSizes[13];
// The page size of a name (ASCII case ignored), or null.
const TPageSize* FindPageSize(std::u16string_view Name);

} // namespace ht
