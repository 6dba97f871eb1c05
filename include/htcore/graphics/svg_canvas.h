// THtSVGCanvas: a canvas that writes SVG. Every drawing call becomes one
// element; a saved state, a transform or a clip opens a `g` element that the
// matching RestoreState closes. Text gets its font, size and colour from
// generated classes (Style() answers their CSS); gradients and clip paths are
// written where they are first used. On a paged canvas each scene ends in the
// last page's document (THtPageSVG::SVG); without pages the text stays in the
// writer.
//
//   ht::THtSVGCanvas c;
//   ht::THtCanvasScene scene;
//   scene.Init({0, 0, 200, 100}, &c);
//   c.BeginScene(scene);
//   c.FillRectangle(c.GetBrush(0x80FF0000), 10, 10, 50, 30);  // fill-opacity="0.5"
//   c.SaveState();
//   c.RotateTransform(30);                                   // <g transform="matrix(...)">
//   c.DrawLine(c.GetPen(0xFF000000, 2), 0, 0, 40, 0);
//   c.RestoreState();                                        // </g>
//   c.EndScene();
//   std::string svg = c.Document(200, 100).toUtf8();         // a whole document, with the text classes
//
// Text measuring and the factories (pens, brushes, fonts, paths) come from
// the canvas class that RefCanvas names, as a host registers it; without one
// the library's own objects serve and text is measured by an estimate.
#pragma once

#include "htcore/foundation/string_list.h"
#include "htcore/graphics/canvas.h"
#include "htcore/graphics/svg_writer.h"
#include "htcore/style/style_indexer.h"

#include <memory>
#include <vector>

namespace ht {

// A page of a paged SVG canvas: its document text.
class THtPageSVG : public THtPage {
public:
  using THtPage::THtPage;
  hstring SVG;
  const char* ClassName() const override { return "THtPageSVG"; }
};

class THtSVGCanvas : public THtCanvas {
public:
  THtSVGCanvas();
  ~THtSVGCanvas() override;

  std::unique_ptr<THtSVGWriter> FWriter;
  // The canvas RefCanvas names, made on first need; null when none is registered.
  mutable std::unique_ptr<THtCanvas> FCanvas;
  // Open `g` elements per saved state; the first entry belongs to the scene.
  std::vector<int> FGCounts;
  TStyleIndexer FIndexer;
  // name=value pairs the next text element carries; cleared by it.
  TStringList FCustomAttributes;
  int FIds = 0;
  int FLastGradientID = 0;
  hstring FLastGradient;

  // The canvas class that measures text and makes the drawing objects:
  // HtAltDefaultCanvasClass when set, otherwise HtDefaultCanvasClass.
  virtual THtCanvasClass RefCanvas() const;

  THtBrushClass BrushClass() const override;
  THtPenClass PenClass() const override;
  THtFontClass FontClass() const override;
  THtImageClass ImageClass() const override;
  THtPathClass PathClass() const override;
  THtPageClass PageClass() const override;
  THtBitmapClass BitmapClass() const override;
  THtFontCollection* SharedFontCollection() const override;
  THtCanvasFlags GetFlags() const override;
  void GetFonts(TStringList& List) override;
  bool HasFont(const hstring& FontName) override;
  // Without a reference canvas: an estimate from character classes (0.55 em
  // for most letters, narrower for punctuation and i, l, wider for m, w and
  // capitals, 1 em for wide East Asian characters).
  float MeasureString(const hstring& s, THtFont& Font, const THtTextStyle& TextStyle, float Scale,
                      int AFirstChar, int ALength) override;
  bool PointInPath(float X, float Y, THtPath& Path) override;
  bool PointOnPath(float X, float Y, THtPath& Path, float w) override;

  void BeginScene(const THtCanvasScene& AScene) override;
  void EndScene() override;
  void SaveState() override;
  void RestoreState() override;
  void MatrixTransform(const THtMatrixData& M, bool Add) override;
  void IntersectClip(const TRectF& R) override;
  void IntersectClip(THtPath& ClipPath) override;

  void DrawPath(THtPen& Pen, THtPath& Path) override;
  void FillPath(THtBrush& Brush, THtPath& Path) override;
  void DrawLine(THtPen& Pen, float x1, float y1, float x2, float y2) override;
  void DrawRectangle(THtPen& Pen, float X, float Y, float w, float h) override;
  void DrawEllipse(THtPen& Pen, float X, float Y, float w, float h) override;
  void RoundRect(THtPen& Pen, const TRectF& R, float RadiusX, float RadiusY) override;
  void FillRectangle(THtBrush& Brush, float X, float Y, float w, float h) override;
  void FillEllipse(THtBrush& Brush, float X, float Y, float w, float h) override;
  void FillRoundRect(THtBrush& Brush, const TRectF& R, float RadiusX, float RadiusY) override;
  void DrawString(const hstring& s, const TRectF& R, THtFont& Font, const THtTextStyle& TextStyle,
                  int AFirstChar, int ALength) override;
  void DrawImage(THtImage& Image, const TRectF& R, float Opacity) override;
  void BeginLink(const hstring& Href, const hstring& Title) override;
  void EndLink() override;
  void DrawLink(const TRectF& R, const hstring& Href, bool IsAnchor) override;
  // Box shadows do not appear in SVG output.
  void DrawShadow(THtPath* Path, const THtShadowProps& Props) override {
    (void)Path, (void)Props;
  }

  using THtCanvas::DrawRectangle;
  using THtCanvas::FillRectangle;

  // The generated CSS of the text classes, for a style element.
  hstring Style() const { return FIndexer.GenerateCSS(); }
  // Writes the gradient definition of a gradient brush and keeps its id in
  // FLastGradient; false for other brushes and for gradients without stops.
  bool CheckAsGradientBrush(const THtBrush& Brush);
  // The next text element carries the attribute (a name that is no XML name is skipped).
  void SetCustomAttribute(const hstring& Name, const hstring& Value) { FCustomAttributes.SetValue(Name, Value); }

  // The text written since the scene began.
  hstring GetAsString() const { return FWriter->GetAsString(); }
  // The writer's text as a whole document of the given size, with a style
  // element for the text classes when there are any.
  hstring Document(int Width, int Height) const;
  // A page's document with the style element for the text classes put in
  // behind the svg start tag; SVG unchanged when there are no classes.
  hstring WithStyle(const hstring& SVG) const;

protected:
  // The reference canvas, made on first need; null without a registered class.
  THtCanvas* Ref() const;
  // Closes the `g` elements counted in the top entry of FGCounts.
  void CloseGroups(int Count);
  // One more open `g` in the current state.
  void CountGroup();

private:
  void start_svg(THtSVGWriter& W, int Width, int Height) const;
  void put_style(THtSVGWriter& W) const;
  mutable bool FRefMade = false;
};

} // namespace ht
