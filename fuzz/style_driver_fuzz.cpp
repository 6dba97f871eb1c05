// Styles arbitrary HTML with arbitrary sheets and reads every getter of every
// element. The first byte picks the form and the edits: even, the bytes are a
// page (with its own <style> elements); odd, a sheet and a page split at the
// first NUL, the sheet put in front as a <style>. Modes 2 to 5 then restyle
// after editing inline style and classes, and 4 and 5 after a width change.
// Values read must be finite: bad lengths read as 0, never NaN or infinity.
#include "htcore/foundation/hstring.h"
#include "htcore/style/element_style.h"
#include "htcore/style/style_driver.h"
#include "htcore/style/style_values.h"
#include "htcore/style/styled_node.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

void Check(bool ok) {
  if (!ok)
    __builtin_trap();
}

void Finite(float v) { Check(std::isfinite(v)); }

void ReadMeasure(ht::TMeasure m) {
  Finite(m.GetFPixels());
  m.GetPixels();
}

void ReadStyle(ht::TStyledHTMLNode* e) {
  ht::TBaseElementStyle* s = e->Style();
  if (!s)
    return;
  using M = ht::TMeasure (ht::TBaseElementStyle::*)();
  for (M get : {&ht::TBaseElementStyle::Width, &ht::TBaseElementStyle::Height, &ht::TBaseElementStyle::MinWidth,
                &ht::TBaseElementStyle::MaxWidth, &ht::TBaseElementStyle::MinHeight,
                &ht::TBaseElementStyle::MaxHeight, &ht::TBaseElementStyle::Left, &ht::TBaseElementStyle::Top,
                &ht::TBaseElementStyle::Right, &ht::TBaseElementStyle::Bottom, &ht::TBaseElementStyle::MarginLeft,
                &ht::TBaseElementStyle::MarginTop, &ht::TBaseElementStyle::MarginRight,
                &ht::TBaseElementStyle::MarginBottom, &ht::TBaseElementStyle::PaddingLeft,
                &ht::TBaseElementStyle::PaddingTop, &ht::TBaseElementStyle::PaddingRight,
                &ht::TBaseElementStyle::PaddingBottom, &ht::TBaseElementStyle::BorderLeftWidth,
                &ht::TBaseElementStyle::BorderTopWidth, &ht::TBaseElementStyle::BorderRightWidth,
                &ht::TBaseElementStyle::BorderBottomWidth, &ht::TBaseElementStyle::BorderTopLeftRadius,
                &ht::TBaseElementStyle::BorderTopRightRadius, &ht::TBaseElementStyle::BorderBottomLeftRadius,
                &ht::TBaseElementStyle::BorderBottomRightRadius, &ht::TBaseElementStyle::BorderRadius,
                &ht::TBaseElementStyle::ColumnGap, &ht::TBaseElementStyle::ColumnWidth,
                &ht::TBaseElementStyle::FlexBasis, &ht::TBaseElementStyle::TextIndent,
                &ht::TBaseElementStyle::LetterSpacing, &ht::TBaseElementStyle::WordSpacing,
                &ht::TBaseElementStyle::BorderSpacingX, &ht::TBaseElementStyle::BorderSpacingY,
                &ht::TBaseElementStyle::BackgroundPositionX, &ht::TBaseElementStyle::BackgroundPositionY,
                &ht::TBaseElementStyle::FontSize, &ht::TBaseElementStyle::LineHeight,
                &ht::TBaseElementStyle::TabInterval})
    ReadMeasure((s->*get)());
  using P = float (ht::TBaseElementStyle::*)();
  for (P get : {&ht::TBaseElementStyle::MarginLeftPx, &ht::TBaseElementStyle::MarginTopPx,
                &ht::TBaseElementStyle::MarginRightPx, &ht::TBaseElementStyle::MarginBottomPx,
                &ht::TBaseElementStyle::PaddingLeftPx, &ht::TBaseElementStyle::PaddingTopPx,
                &ht::TBaseElementStyle::PaddingRightPx, &ht::TBaseElementStyle::PaddingBottomPx,
                &ht::TBaseElementStyle::BorderLeftWidthPx, &ht::TBaseElementStyle::BorderTopWidthPx,
                &ht::TBaseElementStyle::BorderRightWidthPx, &ht::TBaseElementStyle::BorderBottomWidthPx,
                &ht::TBaseElementStyle::FlexGrow, &ht::TBaseElementStyle::FlexShrink,
                &ht::TBaseElementStyle::Opacity})
    Finite((s->*get)());
  s->GetMeasurePx(ht::cspWidth);
  s->TextColor();
  s->BackgroundColor();
  for (int side = 0; side < 4; ++side) {
    s->BorderSideColor(side);
    s->BorderSideStyle(side);
  }
  s->OutlineColor();
  s->TextDecorationColor();
  s->AlignItems();
  s->AlignSelf();
  s->Appearance();
  s->BackgroundAttachment();
  s->BackgroundOrigin();
  s->BackgroundRepeat();
  s->BorderCollapse();
  s->BoxSizing();
  s->BreakAfter();
  s->Cursor();
  s->Direction();
  s->Draggable();
  s->FlexDirection();
  s->FlexWrap();
  s->Float();
  s->Hyphens();
  s->JustifyContent();
  s->ListStylePosition();
  s->ListStyleType();
  s->OutlineStyle();
  s->OverflowX();
  s->OverflowY();
  s->PageBreakAfter();
  s->PageBreakBefore();
  s->PageBreakInside();
  s->PointerEvents();
  s->Resize();
  s->TableLayout();
  s->TextAlign();
  s->TextDecorationLine();
  s->TextDecorationStyle();
  s->TextOverflow();
  s->TextTransform();
  s->UnicodeBidi();
  s->VerticalAlign();
  s->WordBreak();
  s->WordWrap();
  s->WritingMode();
  s->ColumnCount();
  ht::TCSSColumnRule rule;
  s->ColumnRule(rule);
  s->ContentEditable();
  s->Filter();
  s->FontFamily();
  s->FontStyle();
  s->FontWeight();
  if (ht::TElementBackground* b = s->GetBackground())
    (void)b;
  ht::TTransform t;
  s->GetTransform(t, true);
  s->HasTransform();
  ht::TElementShadow shadow;
  s->BoxShadow(shadow);
  s->TextShadow(shadow);
  s->NoShadow();
  s->NoTextShadow();
  ht::TBoxReflect reflect;
  s->BoxReflect(reflect);
  s->Page();
  s->PageSize();
  s->RunningBlock();
  s->TabStops();
  s->TextStyle();
  s->TransitionDelay();
  bool layout = false, repaint = false;
  s->StyleChanged(layout, repaint);
  // The box numbers a layout loop reads.
  e->CalcSizeFlags(false);
  e->CalcRects();
  Finite(e->MarginLeft + e->MarginRight + e->MarginTop + e->MarginBottom);
  Finite(e->BorderLeft + e->BorderRight + e->BorderTop + e->BorderBottom);
  Finite(e->PaddingLeft() + e->PaddingRight() + e->PaddingTop + e->PaddingBottom);
  e->OuterDeltaX();
  e->InnerDeltaY();
  e->IsBlock();
  e->OutofFlow();
  e->FindContainer();
}

void ReadAll(ht::TStyledHTMLNode* root) {
  for (ht::THtNode* n = root->FirstChild(); n; n = n->NextNode())
    if (auto* e = dynamic_cast<ht::TStyledHTMLNode*>(n)) {
      ReadStyle(e);
      if (e->Before)
        ReadStyle(e->Before.get());
      if (e->After)
        ReadStyle(e->After.get());
    }
}

} // namespace

using ht::operator""_hs;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0 || size > 100000)
    return 0;
  uint8_t mode = data[0] % 6;
  ++data;
  --size;
  std::string page;
  if (mode % 2 == 0) {
    page.assign(reinterpret_cast<const char*>(data), size);
  } else {
    const void* nul = std::memchr(data, 0, size);
    size_t sheet = nul ? static_cast<const uint8_t*>(nul) - data : size;
    page = "<style>" + std::string(reinterpret_cast<const char*>(data), sheet) + "</style>";
    if (nul)
      page.append(reinterpret_cast<const char*>(data) + sheet + 1, size - sheet - 1);
    else
      page += "<div class='a b' id=x style='margin:1em 2%'><p>t<span>s</span></p><ul><li>1<li>2</ul></div>";
  }
  ht::TStyledHTMLNode doc;
  doc.ParseBytes(page.data(), page.size());
  ht::TStyleDriver driver(&doc);
  driver.Run();
  ReadAll(&doc);
  if (mode >= 2) {
    // Edits that make the driver restyle part of the tree.
    int i = 0;
    for (ht::THtNode* n = doc.FirstChild(); n; n = n->NextNode(), ++i)
      if (auto* e = dynamic_cast<ht::TStyledHTMLNode*>(n); e && e->Style()) {
        if (i % 3 == 0)
          e->AddCSS(u"margin-left: 3px; color: red"_hs);
        if (i % 3 == 1)
          e->AddClass(u"a"_hs);
        if (i % 5 == 2)
          e->ClearCSS(u"color"_hs);
      }
    driver.Run();
    ReadAll(&doc);
  }
  if (mode >= 4) {
    if (driver.SetViewport(320))
      driver.Run();
    ReadAll(&doc);
  }
  return 0;
}
