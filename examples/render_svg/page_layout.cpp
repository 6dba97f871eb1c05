// Block and inline layout of the example loop: boxes stack down the page,
// inline content becomes fragments cut at the break flags of the text runs.
#include "page_layout.h"

#include "htcore/graphics/text_runs.h"
#include "htcore/style/element_style.h"

#include <algorithm>
#include <cstdio>

using namespace ht;

namespace render_svg {

namespace {

// The four sides in the order of BorderSideStyle: top, right, bottom, left.
float border_px(TBaseElementStyle& S, int Side) {
  TLineStyle ls = S.BorderSideStyle(Side);
  if (ls == lsNone || ls == lsHidden)
    return 0;
  switch (Side) {
  case 0:
    return S.BorderTopWidthPx();
  case 1:
    return S.BorderRightWidthPx();
  case 2:
    return S.BorderBottomWidthPx();
  default:
    return S.BorderLeftWidthPx();
  }
}

// A length against a percentage base; auto gives Auto.
float length_px(TMeasure M, float Base, float Auto = 0) {
  if (M.GetAuto())
    return Auto;
  M.Parent = &Base;
  return M.GetFPixels();
}

bool is_block_level(TStyledHTMLNode* E) {
  switch (E->Display()) {
  case dsBlock:
  case dsListItem:
  case dsTable:
  case dsTableRow:
  case dsTableRowGroup:
  case dsTableCell:
  case dsFlex:
    return true;
  default:
    return false;
  }
}

bool skipped(THtNode* N) {
  if (N->FTag.empty())
    return false;
  if (N->FTag[0] == u'!' || N->FTag[0] == u'?')
    return true;
  auto* e = dynamic_cast<TStyledHTMLNode*>(N);
  return !e || !e->Style() || e->Display() == dsNone;
}

TStyledHTMLNode* styled_parent(THtNode* N) {
  for (THtNode* p = N->Parent(); p; p = p->Parent())
    if (auto* e = dynamic_cast<TStyledHTMLNode*>(p); e && e->Style())
      return e;
  return nullptr;
}

TPaintItem item(TPaintItem::TKind Kind, const TRectF& R, TStyledHTMLNode* Node, int Look = 0) {
  TPaintItem it;
  it.Kind = Kind, it.R = R, it.Node = Node, it.Look = Look;
  return it;
}

TPaintItem text_item(const TRectF& R, const hstring& Text, int First, int Length, int Look) {
  TPaintItem it = item(TPaintItem::piText, R, nullptr, Look);
  it.Text = Text, it.First = First, it.Length = Length;
  return it;
}

struct TBox {
  float mt, mr, mb, ml; // margins
  float bt, br, bb, bl; // borders
  float pt, pr, pb, pl; // paddings
};

TBox box_of(TStyledHTMLNode* E, float Base) {
  TBaseElementStyle& s = *E->Style();
  TBox b;
  b.mt = length_px(s.MarginTop(), Base), b.mr = length_px(s.MarginRight(), Base);
  b.mb = length_px(s.MarginBottom(), Base), b.ml = length_px(s.MarginLeft(), Base);
  b.bt = border_px(s, 0), b.br = border_px(s, 1), b.bb = border_px(s, 2), b.bl = border_px(s, 3);
  b.pt = length_px(s.PaddingTop(), Base), b.pr = length_px(s.PaddingRight(), Base);
  b.pb = length_px(s.PaddingBottom(), Base), b.pl = length_px(s.PaddingLeft(), Base);
  return b;
}

} // namespace

// One piece of inline content: a stretch of text of one look, a forced line
// end, or an image box.
struct TFrag {
  enum TKind { fkText, fkBlank, fkNewLine, fkImage };
  TKind Kind = fkText;
  hstring Text;
  int First = 1, Count = 0;
  int Look = 0;
  float W = 0, H = 0;
  bool BreakBefore = false, BreakAfter = false, NoWrap = false;
  TStyledHTMLNode* Node = nullptr; // images
};

struct TPageLayout::TInline {
  std::vector<TFrag> Frags;
  // Collapsible white space just ended the content: the next blank is dropped.
  bool AfterBlank = true;
};

TPageLayout::TPageLayout(THtCanvas& Measure) : FMeasure(Measure) {}
TPageLayout::~TPageLayout() = default;

int TPageLayout::look_of(TStyledHTMLNode* E) {
  TBaseElementStyle& s = *E->Style();
  TTextLook l;
  l.Family = s.FontFamily();
  l.Size = s.ResolveFontSize();
  TMeasure lh = s.LineHeight();
  if (lh.GetAuto() || lh.FMUnit == muNone)
    l.LineHeight = (lh.GetAuto() ? 1.2f : lh.FValue) * l.Size;
  else
    l.LineHeight = lh.GetFPixels();
  l.Bold = s.FontWeight() >= 600;
  l.Italic = s.FontStyle() != cfsNormal;
  // Decorations do not inherit; an underlined link's inner elements keep it.
  for (TStyledHTMLNode* e = E; e && e->Style() && e->Display() == dsInline; e = e->ParentElement()) {
    TCSSTextDecorationLine d = e->Style()->TextDecorationLine();
    l.Underline |= d == tlUnderline;
    l.Strike |= d == tlLineThrough;
  }
  l.Color = s.TextColor();
  if (!s.LetterSpacing().GetAuto())
    l.LetterSpacing = length_px(s.LetterSpacing(), l.Size);
  if (!s.WordSpacing().GetAuto())
    l.WordSpacing = length_px(s.WordSpacing(), l.Size);
  // Elements of one paragraph mostly look alike: reuse the last looks.
  for (int i = static_cast<int>(FLooks.size()) - 1, n = 0; i >= 0 && n < 8; --i, ++n) {
    const TTextLook& o = FLooks[static_cast<size_t>(i)];
    if (o.Family == l.Family && o.Size == l.Size && o.LineHeight == l.LineHeight && o.Bold == l.Bold &&
        o.Italic == l.Italic && o.Underline == l.Underline && o.Strike == l.Strike && o.Color == l.Color &&
        o.LetterSpacing == l.LetterSpacing && o.WordSpacing == l.WordSpacing)
      return i;
  }
  FLooks.push_back(l);
  return static_cast<int>(FLooks.size()) - 1;
}

void TPageLayout::SetupFont(THtFont& Font, const TTextLook& Look) {
  Font.FName = Look.Family;
  Font.FHeight = Look.Size;
  Font.Ascent = Look.Size * 0.8f;
  // Decorations are drawn as lines by the painter, so that any canvas shows them.
  Font.FStyle = static_cast<THtFontStyles>((Look.Bold ? HtFontStyleBit(hfsBold) : 0) |
                                           (Look.Italic ? HtFontStyleBit(hfsItalic) : 0));
}

void TPageLayout::SetupTextStyle(THtTextStyle& Style, const TTextLook& Look) {
  Style.Reset();
  Style.Color = Look.Color;
  Style.DecorationColor = Look.Color;
  Style.LetterSpacing = Look.LetterSpacing;
  Style.WordSpacing = Look.WordSpacing;
}

float TPageLayout::Layout(TStyledHTMLNode& Root, float Width) {
  FItems.clear();
  FLooks.clear();
  FBackground = 0;
  FWidth = Width;
  // The root's or else the body's background paints the whole page.
  THtNode* html = Root.FindNode(u"html"_hs);
  THtNode* body = Root.FindNode(u"body"_hs);
  for (THtNode* n : {html, body})
    if (auto* e = dynamic_cast<TStyledHTMLNode*>(n); e && e->Style() && !FBackground)
      FBackground = e->Style()->BackgroundColor();
  FHeight = layout_children(&Root, 0, 0, Width);
  return FHeight;
}

// Lays out a block-level element whose margin box starts at (X, Y) in a
// container Width wide; answers the height of its border box. Margins are
// the caller's.
float TPageLayout::layout_block(TStyledHTMLNode* E, float X, float Y, float Width) {
  TBaseElementStyle& s = *E->Style();
  TBox b = box_of(E, Width);
  float outer = b.bl + b.pl + b.pr + b.br;
  TMeasure wm = s.Width();
  float w;
  if (wm.GetAuto() || E->Display() == dsTableCell) {
    w = Width - b.ml - b.mr;
  } else {
    w = length_px(wm, Width);
    if (s.BoxSizing() != bsBorderbox)
      w += outer;
    // Auto side margins centre a block of a set width.
    bool autoL = s.MarginLeft().GetAuto(), autoR = s.MarginRight().GetAuto();
    float room = Width - w;
    if (autoL && autoR)
      b.ml = room / 2;
    else if (autoL)
      b.ml = room - b.mr;
  }
  if (E->Display() == dsTable && wm.GetAuto())
    w = Width - b.ml - b.mr; // tables take the whole line here: no shrink-to-fit
  w = std::max(w, outer);
  float x = X + b.ml;
  size_t box_item = FItems.size();
  FItems.push_back(item(TPaintItem::piBox, TRectF{x, Y, x + w, Y}, E));
  float cx = x + b.bl + b.pl, cy = Y + b.bt + b.pt, cw = w - outer;
  float h;
  if (E->Display() == dsTableRow)
    h = layout_row(E, cx, cy, cw);
  else
    h = layout_children(E, cx, cy, cw);
  if (E->Display() == dsListItem)
    add_marker(E, cx, cy, 0);
  TMeasure hm = s.Height();
  if (!hm.GetAuto() && hm.FMUnit != muPercent) {
    float set = length_px(hm, 0);
    h = s.BoxSizing() == bsBorderbox ? std::max(0.f, set - b.bt - b.pt - b.pb - b.bb) : set;
  }
  float height = b.bt + b.pt + h + b.pb + b.bb;
  FItems[box_item].R.Bottom = Y + height;
  return height;
}

// Cells side by side in equal shares; the row is as tall as its tallest cell.
float TPageLayout::layout_row(TStyledHTMLNode* Row, float X, float Y, float Width) {
  std::vector<TStyledHTMLNode*> cells;
  for (THtNode* n = Row->FirstChild(); n; n = n->NextSibling())
    if (!skipped(n) && !n->FTag.empty())
      cells.push_back(static_cast<TStyledHTMLNode*>(n));
  if (cells.empty())
    return 0;
  float cw = Width / static_cast<float>(cells.size()), h = 0;
  std::vector<size_t> boxes;
  for (size_t i = 0; i < cells.size(); ++i) {
    boxes.push_back(FItems.size());
    h = std::max(h, layout_block(cells[i], X + cw * static_cast<float>(i), Y, cw));
  }
  for (size_t i : boxes)
    if (FItems[i].Node && FItems[i].Node->ParentElement() == Row)
      FItems[i].R.Bottom = Y + h;
  return h;
}

// Children of E inside its content box: blocks stack with collapsed margins
// between siblings, runs of inline content between them become lines.
float TPageLayout::layout_children(TStyledHTMLNode* E, float X, float Y, float Width) {
  float y = Y, pending_margin = 0;
  TInline inl;
  auto flush = [&] {
    if (inl.Frags.empty())
      return;
    float h = flush_inline(inl, E, X, y + pending_margin, Width);
    if (h > 0) {
      y += pending_margin + h;
      pending_margin = 0;
    }
    inl = TInline();
  };
  bool rows = E->Display() == dsTable || E->Display() == dsTableRowGroup;
  for (THtNode* n = E->FirstChild(); n; n = n->NextSibling()) {
    if (skipped(n))
      continue;
    auto* c = static_cast<TStyledHTMLNode*>(n);
    if (n->FTag.empty() || !(is_block_level(c) || rows)) {
      if (!rows)
        collect_inline(n, inl);
      continue;
    }
    flush();
    TBox b = box_of(c, Width);
    y += std::max(pending_margin, b.mt);
    y += layout_block(c, X, y, Width);
    pending_margin = b.mb;
  }
  flush();
  return y + pending_margin - Y;
}

void TPageLayout::collect_inline(THtNode* N, TInline& Into) {
  if (N->FTag.empty()) {
    TStyledHTMLNode* p = styled_parent(N);
    if (!p)
      return;
    hstring text = N->Content();
    // A line end right behind <pre> is not content.
    if (p->FTag == u"pre" && N == p->FirstChild() && !text.empty() && (text[0] == u'\n' || text[0] == u'\r'))
      text = hstring(text.view().substr(text.size() > 1 && text[0] == u'\r' && text[1] == u'\n' ? 2 : 1));
    add_text(text, p, Into);
    return;
  }
  if (skipped(N))
    return;
  auto* e = static_cast<TStyledHTMLNode*>(N);
  if (N->FTag == u"br") {
    TFrag f;
    f.Kind = TFrag::fkNewLine;
    f.Look = look_of(e);
    Into.Frags.push_back(f);
    Into.AfterBlank = true;
    return;
  }
  if (e->IsReplacedElement()) {
    // Images and controls are boxes of their set size.
    TBaseElementStyle& s = *e->Style();
    TFrag f;
    f.Kind = TFrag::fkImage;
    f.Node = e;
    bool img = N->FTag == u"img";
    f.W = length_px(s.Width(), 0, img ? 24.f : 120.f);
    f.H = length_px(s.Height(), 0, img ? 24.f : 20.f);
    f.BreakBefore = f.BreakAfter = true;
    f.Look = look_of(e);
    Into.Frags.push_back(f);
    Into.AfterBlank = false;
    return;
  }
  if (e->Before)
    collect_inline(e->Before.get(), Into);
  for (THtNode* n = N->FirstChild(); n; n = n->NextSibling())
    collect_inline(n, Into);
  if (e->After)
    collect_inline(e->After.get(), Into);
}

// Cuts Text into fragments by the canvas's runs, with white space treated as
// the parent's white-space property says.
void TPageLayout::add_text(const hstring& Text, TStyledHTMLNode* Parent, TInline& Into) {
  if (Text.empty())
    return;
  TWhiteSpace ws = Parent->Style()->WhiteSpace;
  bool collapse = ws == wsNormal || ws == wsNowrap || ws == wsPreLine;
  bool keep_breaks = ws == wsPre || ws == wsPreWrap || ws == wsPreLine;
  bool nowrap = ws == wsNowrap || ws == wsPre;
  int look = look_of(Parent);
  std::unique_ptr<THtFont> font_object(FMeasure.FontClass().Create());
  THtFont& font = *font_object;
  SetupFont(font, FLooks[static_cast<size_t>(look)]);
  THtTextStyle style;
  SetupTextStyle(style, FLooks[static_cast<size_t>(look)]);
  THtTextRuns runs;
  FMeasure.SplitString(Text, runs);
  static const hstring blank = u" "_hs;
  for (THtTextRun* r : runs) {
    TFrag f;
    f.Look = look;
    f.NoWrap = nowrap;
    f.BreakBefore = r->Flags.Contains(trfBreakBefore);
    f.BreakAfter = r->Flags.Contains(trfBreakAfter);
    if (r->Flags.Contains(trfLineBreak) && keep_breaks) {
      f.Kind = TFrag::fkNewLine;
      Into.Frags.push_back(f);
      Into.AfterBlank = true;
      continue;
    }
    if (r->Flags.Contains(trfBlank) && collapse) {
      if (Into.AfterBlank)
        continue;
      f.Kind = TFrag::fkBlank;
      // A single space of the text is drawn with its neighbours; others become one space.
      bool one = r->Count == 1 && Text[static_cast<size_t>(r->Start - 1)] == u' ';
      f.Text = one ? Text : blank;
      f.First = one ? r->Start : 1;
      f.Count = 1;
      f.W = FMeasure.MeasureString(f.Text, font, style, 1, f.First, 1);
      Into.Frags.push_back(f);
      Into.AfterBlank = true;
      continue;
    }
    f.Text = Text;
    f.First = r->Start;
    f.Count = r->Count;
    if (r->Flags.Contains(trfTab) || r->Flags.Contains(trfLineBreak)) {
      // A kept tab is eight spaces wide; a line end that does not break is a space.
      int n = r->Flags.Contains(trfTab) ? 8 * r->Count : 1;
      f.Kind = TFrag::fkBlank;
      f.Text = hstring(std::u16string(static_cast<size_t>(n), u' '));
      f.First = 1;
      f.Count = n;
      f.W = FMeasure.MeasureString(f.Text, font, style, 1, 1, n);
    } else {
      if (r->Flags.Contains(trfBlank))
        f.Kind = TFrag::fkBlank; // kept blanks: pre and pre-wrap
      f.W = FMeasure.MeasureString(Text, font, style, 1, r->Start, r->Count);
    }
    Into.Frags.push_back(f);
    Into.AfterBlank = false;
  }
}

// Puts the fragments into lines of Width; answers the height of the lines.
float TPageLayout::flush_inline(TInline& Inline, TStyledHTMLNode* Block, float X, float Y, float Width) {
  std::vector<TFrag>& frags = Inline.Frags;
  bool content = false;
  for (const TFrag& f : frags)
    content |= f.Kind != TFrag::fkBlank;
  if (!content)
    return 0;
  THAlign align = Block->Style()->TextAlign();
  float indent = length_px(Block->Style()->TextIndent(), Width);
  int block_look = look_of(Block);

  std::vector<std::vector<const TFrag*>> lines(1);
  std::vector<bool> forced(1, false);
  float x = indent;
  auto can_break = [&](size_t i) { // between frags i-1 and i
    const TFrag &a = frags[i - 1], &b = frags[i];
    return !a.NoWrap && !b.NoWrap && (a.BreakAfter || b.BreakBefore);
  };
  for (size_t i = 0; i < frags.size();) {
    const TFrag& f = frags[i];
    if (f.Kind == TFrag::fkNewLine) {
      forced.back() = true;
      lines.emplace_back();
      forced.push_back(false);
      x = 0;
      ++i;
      continue;
    }
    // The fragments up to the next break opportunity go on one line together.
    size_t j = i + 1;
    float w = f.W;
    while (j < frags.size() && frags[j].Kind != TFrag::fkNewLine && !can_break(j))
      w += frags[j++].W;
    bool blank_only = f.Kind == TFrag::fkBlank && j == i + 1;
    if (blank_only && lines.back().empty() && f.Text.size() == 1 && f.NoWrap == false) {
      i = j; // a collapsible blank never starts a line
      continue;
    }
    if (!lines.back().empty() && !blank_only && x + w > Width) {
      lines.emplace_back();
      forced.push_back(false);
      x = 0;
      while (i < j && frags[i].Kind == TFrag::fkBlank && !frags[i].NoWrap)
        w -= frags[i++].W;
    }
    for (; i < j; ++i)
      lines.back().push_back(&frags[i]);
    x += w;
  }

  // A line end at the very end closes the last line; it opens no new one.
  if (lines.size() > 1 && lines.back().empty() && forced[lines.size() - 2])
    lines.pop_back();
  float y = Y;
  bool first = true;
  for (std::vector<const TFrag*>& line : lines) {
    // Trailing collapsible blanks hang past the end and are not drawn.
    while (!line.empty() && line.back()->Kind == TFrag::fkBlank && !line.back()->NoWrap)
      line.pop_back();
    float lw = first ? indent : 0, ascent = 0, descent = 0;
    for (const TFrag* f : line)
      lw += f->W;
    const TTextLook& bl = FLooks[static_cast<size_t>(block_look)];
    // The block's own strut: an empty line is as tall as the block's text.
    ascent = (bl.LineHeight - bl.Size) / 2 + bl.Size * 0.8f;
    descent = bl.LineHeight - ascent;
    for (const TFrag* f : line) {
      const TTextLook& l = FLooks[static_cast<size_t>(f->Look)];
      float a = f->Kind == TFrag::fkImage ? f->H : (l.LineHeight - l.Size) / 2 + l.Size * 0.8f;
      float d = f->Kind == TFrag::fkImage ? 0 : l.LineHeight - a;
      ascent = std::max(ascent, a), descent = std::max(descent, d);
    }
    float x0 = X + (first ? indent : 0);
    float room = Width - lw;
    if (align == thCenter || align == thXCenter)
      x0 += room / 2;
    else if (align == thRight || align == thEnd)
      x0 += room;
    float baseline = y + ascent;
    // Neighbouring fragments of one look become one string, so that a line
    // is a few text items rather than one per word.
    std::u16string text;
    float text_left = x0, text_width = 0;
    int text_look = -1;
    auto put_text = [&] {
      if (!text.empty()) {
        const TTextLook& l = FLooks[static_cast<size_t>(text_look)];
        float top = baseline - l.Size * 0.8f;
        FItems.push_back(text_item(TRectF{text_left, top, text_left + text_width, top + l.Size},
                                   hstring(text.data(), text.size()), 1, static_cast<int>(text.size()), text_look));
      }
      text.clear();
      text_width = 0;
    };
    for (const TFrag* f : line) {
      if (f->Kind == TFrag::fkImage) {
        put_text();
        FItems.push_back(item(TPaintItem::piImage, TRectF{x0, baseline - f->H, x0 + f->W, baseline}, f->Node));
      } else if (f->Kind == TFrag::fkBlank && (f->Count > 1 || text.empty())) {
        // Viewers may squeeze blanks inside a string: wider gaps are left as space between items.
        put_text();
      } else {
        if (f->Look != text_look)
          put_text();
        if (text.empty() && f->Kind == TFrag::fkBlank) {
          x0 += f->W; // a string never starts with a blank, which viewers would drop
          continue;
        }
        if (text.empty())
          text_left = x0, text_look = f->Look;
        text.append(f->Text.view().substr(static_cast<size_t>(f->First - 1), static_cast<size_t>(f->Count)));
        text_width += f->W;
      }
      x0 += f->W;
    }
    put_text();
    y += ascent + descent;
    first = false;
  }
  return y - Y;
}

// The bullet or number of a list item, left of its content box.
void TPageLayout::add_marker(TStyledHTMLNode* Item, float X, float Y, float) {
  TBaseElementStyle& s = *Item->Style();
  TListStyleType type = s.ListStyleType();
  if (type == lstNone)
    return;
  int look = look_of(Item);
  const TTextLook& l = FLooks[static_cast<size_t>(look)];
  float line_top = Y + (l.LineHeight - l.Size) / 2;
  if (type == lstDisc || type == lstCircle || type == lstSquare) {
    float d = l.Size * 0.35f;
    float cy = line_top + l.Size * 0.8f - l.Size * 0.3f;
    float left = X - l.Size * 0.9f;
    FItems.push_back(item(TPaintItem::piBullet, TRectF{left, cy - d / 2, left + d, cy + d / 2}, Item, look));
    return;
  }
  int n = 1;
  for (THtNode* p = Item->PreviousSibling(); p; p = p->PreviousSibling())
    n += !skipped(p) && p->FTag == Item->FTag;
  if (THtNode* list = Item->Parent(); list && list->HasAttribute(u"start"_hs))
    n += list->GetAttrI(u"start"_hs) - 1;
  hstring text = ListCountertoString(type, n) + u"."_hs;
  std::unique_ptr<THtFont> font_object(FMeasure.FontClass().Create());
  THtFont& font = *font_object;
  SetupFont(font, l);
  THtTextStyle style;
  SetupTextStyle(style, l);
  float w = FMeasure.MeasureString(text, font, style, 1, 1, -1);
  float gap = l.Size * 0.5f;
  FItems.push_back(text_item(TRectF{X - gap - w, line_top, X - gap, line_top + l.Size}, text, 1,
                             static_cast<int>(text.size()), look));
}

} // namespace render_svg
