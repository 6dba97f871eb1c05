// A canvas that writes each primitive call as one line of text, so the
// operations built on the primitives are checked by the calls they make.
#pragma once

#include "graphics/path_dump.h"
#include "htcore/graphics/canvas.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace testing_canvas {

inline std::string Hex(uint32_t c) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "#%08X", c);
  return buf;
}

inline std::string Rect(const ht::TRectF& r) {
  return DumpNum(r.Left) + "," + DumpNum(r.Top) + "," + DumpNum(r.Right) + "," + DumpNum(r.Bottom);
}

inline std::string BrushText(const ht::THtBrush& b) {
  if (b.Kind == ht::hbSolid || b.Kind == ht::hbImage)
    return Hex(b.GetColor());
  std::string s = b.Kind == ht::hbGradient ? "linear(" + DumpNum(b.Angle) : "radial(" + DumpNum(b.Radius);
  for (size_t i = 0; i < b.GradientColors.size() && i < b.GradientPositions.size(); ++i)
    s += " " + DumpNum(b.GradientPositions[i]) + ":" + Hex(b.GradientColors[i]);
  return s + ")";
}

inline std::string PathText(ht::THtPath& p) { return p.FCustomPath ? Dump(*p.FCustomPath) : "?"; }

class TTestBitmap : public ht::THtBitmap {
public:
  TTestBitmap(int w, int h) : THtBitmap(w, h, true), W(w), H(h) {}
  int W, H;
  int GetWidth() const override { return W; }
  int GetHeight() const override { return H; }
  int GetStride() const override { return W * 4; }
  void DrawOnCanvas(ht::THtCanvas&, const ht::TRectF&, uint8_t, bool) override {}
  void SetSize(int w, int h) override { W = w, H = h; }
};

class TRecordingCanvas : public ht::THtCanvas {
public:
  explicit TRecordingCanvas(std::shared_ptr<std::vector<std::string>> ALog = nullptr,
                            std::string APrefix = "")
      : Log(ALog ? ALog : std::make_shared<std::vector<std::string>>()), Prefix(std::move(APrefix)) {}

  std::shared_ptr<std::vector<std::string>> Log;
  std::string Prefix;
  bool RecordImages = false; // DrawImage as one line instead of the base replay
  bool WithBitmaps = true;

  void Put(std::string s) { Log->push_back(Prefix + s); }
  std::string Text() const {
    std::string out;
    for (const std::string& l : *Log)
      out += l + "\n";
    return out;
  }
  void Reset() { Log->clear(); }

  void DrawPath(ht::THtPen& Pen, ht::THtPath& Path) override {
    Put("DrawPath " + Hex(Pen.GetColor()) + "/" + DumpNum(Pen.GetWidth()) + " " + PathText(Path));
  }
  void FillPath(ht::THtBrush& Brush, ht::THtPath& Path) override {
    Put("FillPath " + BrushText(Brush) + " " + PathText(Path));
  }
  float MeasureString(const ht::hstring& s, ht::THtFont&, const ht::THtTextStyle&, float, int, int) override {
    return static_cast<float>(s.size()) * 7;
  }
  void DrawString(const ht::hstring& s, const ht::TRectF& R, ht::THtFont&, const ht::THtTextStyle& TextStyle,
                  int, int) override {
    Put("Text '" + s.toUtf8() + "' " + Rect(R) + " " + Hex(TextStyle.Color));
  }
  void SaveState() override {
    Put("Save");
    THtCanvas::SaveState();
  }
  void RestoreState() override {
    Put("Restore");
    THtCanvas::RestoreState();
  }
  void MatrixTransform(const ht::THtMatrixData& M, bool Add) override {
    Put(std::string("Matrix ") + (Add ? "add " : "set ") + "[" + M.AsString(false).toUtf8() + "]");
    THtCanvas::MatrixTransform(M, Add);
  }
  void IntersectClip(const ht::TRectF& R) override { Put("Clip " + Rect(R)); }
  void SetSmoothingMode(bool Smooth) override { Put(std::string("Smooth ") + (Smooth ? "on" : "off")); }
  void SetCompositingMode(bool ModeOver) override {
    Put(std::string("Compositing ") + (ModeOver ? "over" : "copy"));
  }
  void BlurRect(const ht::TRectF& R, ht::THtPath*, float Radius) override {
    Put("Blur " + Rect(R) + " r" + DumpNum(Radius));
  }
  void DrawBitmap(ht::THtBitmap& B, const ht::TRectF& DestR, const ht::TRectF& SrcR, float Opacity) override {
    Put("Bitmap " + std::to_string(B.GetWidth()) + "x" + std::to_string(B.GetHeight()) + " " + Rect(DestR) +
        " <- " + Rect(SrcR) + " " + DumpNum(Opacity));
  }
  void DrawImage(ht::THtImage& Image, const ht::TRectF& R, float Opacity) override {
    if (RecordImages)
      Put("Image " + Rect(R) + " " + DumpNum(Opacity));
    else
      THtCanvas::DrawImage(Image, R, Opacity);
  }
  void EndScene() override { Put("EndScene"); }
  void GetFonts(ht::TStringList& List) override {
    for (const char16_t* f : {u"Arial", u"DejaVu Sans", u"Roboto"})
      List.Add(f);
  }
  ht::THtBitmapClass BitmapClass() const override {
    if (!WithBitmaps)
      return {nullptr};
    return {[](int w, int h, bool) -> ht::THtBitmap* { return new TTestBitmap(w, h); }};
  }
  ht::THtCanvas* NewCanvas() const override { return new TRecordingCanvas(Log, Prefix + "  bmp: "); }
};

} // namespace testing_canvas
