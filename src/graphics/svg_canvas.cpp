// The SVG canvas: scenes and documents, states, transforms and clips, and
// the objects and measuring it borrows from the reference canvas.
#include "htcore/graphics/svg_canvas.h"

#include "htcore/foundation/fast_string.h"

#include <algorithm>
#include <cmath>

namespace ht {

THtSVGCanvas::THtSVGCanvas() : FWriter(std::make_unique<THtSVGWriter>()) {}

THtSVGCanvas::~THtSVGCanvas() = default;

THtCanvasClass THtSVGCanvas::RefCanvas() const {
  return HtAltDefaultCanvasClass ? HtAltDefaultCanvasClass : HtDefaultCanvasClass;
}

THtCanvas* THtSVGCanvas::Ref() const {
  if (!FRefMade) {
    FRefMade = true;
    if (THtCanvasClass make = RefCanvas())
      FCanvas.reset(make());
  }
  return FCanvas.get();
}

THtBrushClass THtSVGCanvas::BrushClass() const {
  THtCanvas* r = Ref();
  return r ? r->BrushClass() : THtCanvas::BrushClass();
}
THtPenClass THtSVGCanvas::PenClass() const {
  THtCanvas* r = Ref();
  return r ? r->PenClass() : THtCanvas::PenClass();
}
THtFontClass THtSVGCanvas::FontClass() const {
  THtCanvas* r = Ref();
  return r ? r->FontClass() : THtCanvas::FontClass();
}
THtImageClass THtSVGCanvas::ImageClass() const {
  THtCanvas* r = Ref();
  return r ? r->ImageClass() : THtCanvas::ImageClass();
}
THtPathClass THtSVGCanvas::PathClass() const {
  THtCanvas* r = Ref();
  return r ? r->PathClass() : THtCanvas::PathClass();
}
THtPageClass THtSVGCanvas::PageClass() const {
  return {[](float w, float h, int n, int dpi) -> THtPage* { return new THtPageSVG(w, h, n, dpi); }};
}
THtBitmapClass THtSVGCanvas::BitmapClass() const {
  THtCanvas* r = Ref();
  return r ? r->BitmapClass() : THtCanvas::BitmapClass();
}
THtFontCollection* THtSVGCanvas::SharedFontCollection() const {
  THtCanvas* r = Ref();
  return r ? r->SharedFontCollection() : nullptr;
}

THtCanvasFlags THtSVGCanvas::GetFlags() const {
  THtCanvas* r = Ref();
  THtCanvasFlags f = r ? r->GetFlags() : THtCanvas::GetFlags();
  f.Exclude(hcfSupportsTextLayouts);
  f.Include(hcfSupportsImageRef);
  return f;
}

void THtSVGCanvas::GetFonts(TStringList& List) {
  if (THtCanvas* r = Ref())
    r->GetFonts(List);
}

bool THtSVGCanvas::HasFont(const hstring& FontName) {
  if (THtCanvas* r = Ref())
    return r->HasFont(FontName);
  return THtCanvas::HasFont(FontName);
}

bool THtSVGCanvas::PointInPath(float X, float Y, THtPath& Path) {
  THtCanvas* r = Ref();
  return r && r->PointInPath(X, Y, Path);
}

bool THtSVGCanvas::PointOnPath(float X, float Y, THtPath& Path, float w) {
  THtCanvas* r = Ref();
  return r && r->PointOnPath(X, Y, Path, w);
}

void THtSVGCanvas::BeginScene(const THtCanvasScene& AScene) {
  THtCanvas::BeginScene(AScene);
  FWriter = std::make_unique<THtSVGWriter>();
  // The scene's entry comes first, so that the scene's own groups are counted and closed.
  FGCounts.assign(1, 0);
  ScaleTransform(Scene.Scale, Scene.Scale);
  TranslateTransform(static_cast<float>(Scene.ViewPort.Left), static_cast<float>(Scene.ViewPort.Top));
}

void THtSVGCanvas::EndScene() {
  // Every group still open is closed, also those of states saved and never
  // restored: the document stays well-formed.
  int open = 0;
  for (int n : FGCounts)
    open += n;
  CloseGroups(open);
  FGCounts.clear();
  THtCanvas::EndScene();
  if (!fPages.empty()) {
    THtSVGWriter doc(FWriter->GetTotalLen() + 256);
    start_svg(doc, fPages.back()->WidthPx, fPages.back()->HeightPx);
    doc.s(FWriter->GetAsString()).s(u"</svg>");
    static_cast<THtPageSVG*>(fPages.back().get())->SVG = doc.GetAsString();
  }
}

void THtSVGCanvas::start_svg(THtSVGWriter& W, int Width, int Height) const {
  W.s(u"<svg version=\"1.0\" xmlns=\"http://www.w3.org/2000/svg\" "
      u"xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"");
  W.N(Width).s(u"\" height=\"").N(Height).s(u"\">");
}

void THtSVGCanvas::put_style(THtSVGWriter& W) const {
  if (FIndexer.Count() == 0)
    return;
  // The classes end their lines with CR LF; inside the document a line feed is enough.
  W.s(u"<style>");
  hstring css = Style();
  std::u16string_view rest(css);
  for (size_t cr; (cr = rest.find(u'\r')) != std::u16string_view::npos; rest.remove_prefix(cr + 1))
    W.AddXML(rest.substr(0, cr), false);
  W.AddXML(rest, false).s(u"</style>");
}

hstring THtSVGCanvas::Document(int Width, int Height) const {
  THtSVGWriter doc(FWriter->GetTotalLen() + 1024);
  start_svg(doc, Width, Height);
  put_style(doc);
  doc.s(FWriter->GetAsString()).s(u"</svg>");
  return doc.GetAsString();
}

hstring THtSVGCanvas::WithStyle(const hstring& SVG) const {
  std::u16string_view text(SVG);
  size_t at = text.find(u'>');
  if (FIndexer.Count() == 0 || text.substr(0, 4) != u"<svg" || at == std::u16string_view::npos)
    return SVG;
  THtSVGWriter doc(static_cast<int>(text.size()) + 1024);
  doc.s(text.substr(0, at + 1));
  put_style(doc);
  doc.s(text.substr(at + 1));
  return doc.GetAsString();
}

void THtSVGCanvas::CloseGroups(int Count) {
  for (int i = 0; i < Count; ++i)
    FWriter->s(u"</g>");
}

void THtSVGCanvas::CountGroup() {
  // Outside a scene (or after more restores than saves) a group still needs an owner.
  if (FGCounts.empty())
    FGCounts.push_back(0);
  ++FGCounts.back();
}

void THtSVGCanvas::SaveState() {
  THtCanvas::SaveState();
  FGCounts.push_back(0);
}

void THtSVGCanvas::RestoreState() {
  THtCanvas::RestoreState();
  // The scene's own entry stays: a restore without a save closes nothing,
  // as it leaves the matrix alone.
  if (FGCounts.size() > 1) {
    CloseGroups(FGCounts.back());
    FGCounts.pop_back();
  }
}

void THtSVGCanvas::MatrixTransform(const THtMatrixData& M, bool Add) {
  THtMatrixData before = FCurrentMatrix;
  THtCanvas::MatrixTransform(M, Add);
  // The groups nest, so a matrix that replaces the current one is written
  // as the step from the current one to it.
  THtMatrixData step = M;
  if (!Add) {
    step = before;
    step.Inverse();
    step.Multiply(M);
  }
  hstring t = step.AsString(false);
  if (t.empty())
    return;
  FWriter->s(u"<g transform=\"").AddXML(std::u16string_view(t), true).s(u"\">");
  CountGroup();
}

namespace {

// A rectangle with its sides in order, whatever signs its size had.
TRectF ordered(float X, float Y, float w, float h) {
  TRectF r{X, Y, X + w, Y + h};
  if (r.Right < r.Left)
    std::swap(r.Left, r.Right);
  if (r.Bottom < r.Top)
    std::swap(r.Top, r.Bottom);
  return r;
}

} // namespace

void THtSVGCanvas::IntersectClip(const TRectF& R) {
  TRectF r = ordered(R.Left, R.Top, RW(R), RH(R));
  THtSVGWriter& w = *FWriter;
  int n = FIds++;
  // The clip path is closed, unlike in older output of this canvas: an
  // unclosed element makes the whole document unreadable.
  w.s(u"<defs><clipPath id=\"").N(n).s(u"\"><rect x=\"").F2(r.Left).s(u"\" y=\"").F2(r.Top);
  w.s(u"\" width=\"").F2(RW(r)).s(u"\" height=\"").F2(RH(r)).s(u"\"/></clipPath></defs>");
  w.s(u"<g clip-path=\"url(#").N(n).s(u")\">");
  CountGroup();
}

void THtSVGCanvas::IntersectClip(THtPath& ClipPath) {
  const THtCustomPath* data = ClipPath.FCustomPath;
  if (data && data->IsRect()) {
    TRectF b;
    data->GetBounds(b, nullptr);
    IntersectClip(b);
    return;
  }
  THtSVGWriter& w = *FWriter;
  int n = FIds++;
  w.s(u"<defs><clipPath id=\"c").N(n).s(u"\"><path d=\"");
  w.AddXML(std::u16string_view(ClipPath.AsString()), true).s(u"\"/></clipPath></defs>");
  w.s(u"<g clip-path=\"url(#c").N(n).s(u")\">");
  CountGroup();
}

} // namespace ht
