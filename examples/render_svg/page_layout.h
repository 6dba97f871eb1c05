// A small host layout loop: the road of one HTML document from text to
// drawing calls on any THtCanvas.
//
//   TStyledPage page;                         // the document and its cascade
//   page.Load(html_bytes, "dir/of/page/", {extra_css}, 800);
//   TApproxCanvas measure;                    // fixed advance widths, no fonts needed
//   TPageLayout layout(measure);
//   float height = layout.Layout(page.Root(), 800);
//   layout.Paint(any_canvas);                 // an SVG canvas, a recording canvas ...
//
// It lays out block boxes (margins, borders, paddings, widths and heights of
// the computed style), tables as rows of equal cells, list items with their
// markers, and inline text cut into runs by SplitString and measured with
// MeasureString into lines (white-space, text-align). Images are boxes.
// It is an example, not a layout engine: no floats, positioning, inline
// boxes with their own borders, inline-block or flex formatting.
#pragma once

#include "htcore/graphics/canvas.h"
#include "htcore/style/style_driver.h"
#include "htcore/style/styled_node.h"

#include <memory>
#include <string>
#include <vector>

namespace render_svg {

// The document with its cascade, as a host keeps it while it draws.
class TStyledPage {
public:
  TStyledPage();
  ~TStyledPage();
  // Parses HTML bytes (any encoding), reads the <link> sheets found under
  // BaseDir, adds the host sheets (UTF-8 texts), and styles every element
  // for a viewport of Width pixels.
  void Load(const std::string& Bytes, const std::string& BaseDir, const std::vector<std::string>& Sheets,
            int Width);
  ht::TStyledHTMLNode& Root() { return *FRoot; }

private:
  std::unique_ptr<ht::TStyledHTMLNode> FRoot;
  std::unique_ptr<ht::TStyleDriver> FDriver;
};

// How a piece of text looks.
struct TTextLook {
  ht::hstring Family;
  float Size = 16;
  float LineHeight = 19.2f;
  bool Bold = false, Italic = false, Underline = false, Strike = false;
  uint32_t Color = 0xFF000000;
  float LetterSpacing = 0, WordSpacing = 0;
};

// One thing to draw, in page coordinates.
struct TPaintItem {
  enum TKind { piBox, piText, piImage, piBullet };
  TKind Kind = piBox;
  ht::TRectF R{0, 0, 0, 0};
  ht::TStyledHTMLNode* Node = nullptr; // piBox, piImage, piBullet: the element
  ht::hstring Text;                    // piText: the string, drawn from First for Length units
  int First = 1, Length = 0;
  int Look = 0; // piText, piBullet: index into Looks
};

class TPageLayout {
public:
  // Measure measures text (MeasureString) and cuts it (SplitString).
  explicit TPageLayout(ht::THtCanvas& Measure);
  ~TPageLayout();

  // Lays out the document for a page of Width pixels; answers its height.
  float Layout(ht::TStyledHTMLNode& Root, float Width);
  // Draws what the last Layout placed: the page background, then every box,
  // marker, image and text in document order.
  void Paint(ht::THtCanvas& Canvas) const;

  float Width() const { return FWidth; }
  float Height() const { return FHeight; }
  const std::vector<TPaintItem>& Items() const { return FItems; }
  const std::vector<TTextLook>& Looks() const { return FLooks; }

  // Font objects of a canvas for a look.
  static void SetupFont(ht::THtFont& Font, const TTextLook& Look);
  static void SetupTextStyle(ht::THtTextStyle& Style, const TTextLook& Look);

private:
  struct TInline;
  ht::THtCanvas& FMeasure;
  std::vector<TPaintItem> FItems;
  std::vector<TTextLook> FLooks;
  uint32_t FBackground = 0;
  float FWidth = 0, FHeight = 0;

  float layout_block(ht::TStyledHTMLNode* E, float X, float Y, float Width);
  float layout_children(ht::TStyledHTMLNode* E, float X, float Y, float Width);
  float layout_row(ht::TStyledHTMLNode* Row, float X, float Y, float Width);
  void collect_inline(ht::THtNode* N, TInline& Into);
  void add_text(const ht::hstring& Text, ht::TStyledHTMLNode* Parent, TInline& Into);
  float flush_inline(TInline& Inline, ht::TStyledHTMLNode* Block, float X, float Y, float Width);
  int look_of(ht::TStyledHTMLNode* E);
  void add_marker(ht::TStyledHTMLNode* Item, float X, float Y, float FirstLineHeight);
  void paint_box(ht::THtCanvas& Canvas, const TPaintItem& Item) const;
};

} // namespace render_svg
