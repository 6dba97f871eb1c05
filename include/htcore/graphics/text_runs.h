// Text runs and the text style record.
//
// Layout code does not break text itself: it asks a canvas to cut a string
// into runs (THtCanvas::SplitString, or HtSplitString without a canvas),
// measures each run with MeasureString and builds lines from the break flags
// of the runs. THtTextStyle goes with every string sent to a canvas.
//
//   ht::THtTextRuns runs;
//   ht::HtSplitString(u"well-known 1,000.50"_hs, runs);
//   for (ht::THtTextRun* r : runs)     // "well" "-" "known" " " "1,000.50"
//     if (r->Flags.Contains(ht::trfBreakBefore)) ...   // a line may start here
//
// Runs index the string 1-based in UTF-16 units (Start, Count) and tile it:
// every unit belongs to exactly one run, in order.
#pragma once

#include "htcore/document/unicode_classes.h"
#include "htcore/foundation/flag_set.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/foundation/object_list.h"
#include "htcore/graphics/font_style.h"
#include "htcore/style/css_properties.h"

#include <cstdint>

namespace ht {

HT_ENUM(THtTextRunFlag, trfSpace, trfBlank, trfRTL, trfBreakBefore, trfBreakAfter, trfLineBreak,
        trfProhibitRightBreak, trfProhibitLeftBreak, trfHidden, trfProcessed, trfBlock, trfOutofFlow,
        trfInlineStart, trfInlineEnd, trfCollapsible, trfText, trfSpellIncorrect, trfHyphen, trfTab);

using THtTextRunFlags = THtFlagSet<THtTextRunFlag>;

// One piece of a string: the splitter sets Start, Count, Flags and Bidi;
// Line and LogicalWidth belong to the layout. Hosts derive their own run
// classes from it and pass a factory to the splitter.
class THtTextRun : public TObject {
public:
  int Start = 0; // 1-based index of the first unit
  int Count = 0; // UTF-16 units
  int Line = 0;
  float LogicalWidth = 0;
  THtTextRunFlags Flags;
  THtTextRunBidi Bidi = bdLTR;
};

// Makes a run of the caller's class for the splitter.
struct THtTextRunClass {
  THtTextRun* (*Create)();
};
template <class T> constexpr THtTextRunClass HtTextRunClass() {
  return {[]() -> THtTextRun* { return new T; }};
}

// The runs of a text, owned.
class THtTextRuns : public THtObjectListOf<THtTextRun> {
public:
  THtTextRuns() : THtObjectListOf<THtTextRun>(true) {}
  float FontScale = 1;
  THtTextRun* GetRun(int Index) const { return Get(Index); }
};

// Appends the runs of s to Runs, one object of RunClass each, in text order;
// existing runs are kept. The default splitter of every canvas.
void HtSplitString(const hstring& s, THtTextRuns& Runs,
                   THtTextRunClass RunClass = HtTextRunClass<THtTextRun>());

// What a canvas needs besides the font to draw a string. A record: copies
// share the FontFeatures text.
struct THtTextStyle {
  float WordSpacing = 0;
  float LetterSpacing = 0;
  float Opacity = 1;
  TCSSTextOverflow Overflow = toClip;
  bool Shadow = false;
  bool RTL = false;
  bool EditorMode = false;
  uint32_t Color = 0;
  uint32_t ShadowColor = 0;
  uint32_t DecorationColor = 0;
  TCSSTextDecorationStyle DecorationStyle = tsSolid;
  float ShadowX = 0, ShadowY = 0, ShadowBlur = 0;
  TCSSWritingMode WritingMode = wmHorizontalTB;
  TCSSUnicodeBidi UnicodeBidi = ubNormal;
  hstring FontFeatures;

  // Everything zero (transparent colours, first enumeration members, no
  // features) and opacity 1.
  void Reset() { *this = THtTextStyle(); }
  void Default() { Reset(); }
  void Assign(const THtTextStyle& Source) { *this = Source; }
};

// The style used where a caller has none of its own.
extern THtTextStyle HtDefaultTextStyle;

// A prepared piece of text that a canvas with hcfSupportsTextLayouts offers
// from CreateTextObject and draws with DrawTextObject; styles apply to ranges
// of units (FirstChar 1-based).
class THtTextObject : public TObject {
public:
  bool Ellipsis = false;
  bool Shadow = false;
  float ShadowX = 0, ShadowY = 0;
  uint32_t ShadowColor = 0;

  virtual void SetColor(uint32_t Color, int FirstChar, int Length) = 0;
  virtual void SetStyle(THtFontStyles Style, int FirstChar, int Length, uint32_t AUnderlineColor,
                        TCSSTextDecorationStyle AUnderlineStyle) = 0;
  virtual void SetAlignment(THAlign Align) = 0;
};

} // namespace ht
