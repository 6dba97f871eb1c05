// THtCanvas: the abstract drawing surface. Layout and painting code speak
// only to it, in floating-point document units that the current matrix maps
// to device pixels. A host canvas overrides the primitives (DrawPath,
// FillPath, DrawString, MeasureString, and for full use DrawBitmap, BlurRect,
// clips and modes); everything else - ellipses, rectangles, the default
// widgets, box shadows, CSS background tiling, paging - is built on them.
//
//   class TMyCanvas : public ht::THtCanvas {
//     void DrawPath(ht::THtPen& Pen, ht::THtPath& Path) override { ... }
//     void FillPath(ht::THtBrush& Brush, ht::THtPath& Path) override { ... }
//     ...
//   };
//   TMyCanvas c;
//   ht::THtCanvasScene scene;
//   scene.Init({0, 0, 800, 600}, &c);
//   c.BeginScene(scene);
//   c.FillEllipse(c.GetBrush(0xFF3366CC), 10, 10, 80, 40);   // one arc and a close, filled
//   c.EndScene();
#pragma once

#include "htcore/foundation/stream.h"
#include "htcore/foundation/string_list.h"
#include "htcore/graphics/canvas_types.h"
#include "htcore/graphics/image_caches.h"
#include "htcore/graphics/path.h"
#include "htcore/style/measure.h"

#include <cmath>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace ht {

// The factories a canvas hands out: a host canvas substitutes its own classes.
struct THtBrushClass {
  THtBrush* (*Create)(uint32_t AColor);
};
struct THtPenClass {
  THtPen* (*Create)(uint32_t AColor, float AWidth);
};
struct THtFontClass {
  THtFont* (*Create)();
};
struct THtImageClass {
  THtImage* (*Create)();
};
struct THtPathClass {
  THtPath* (*Create)(bool AForClip);
};
struct THtPageClass {
  THtPage* (*Create)(float AWidthMM, float AHeightMM, int ANumber, int ADPI);
};
struct THtBitmapClass {
  // Null when the canvas has no bitmaps: shadows are then left out.
  THtBitmap* (*Create)(int AWidth, int AHeight, bool DIB);
};

// What CSS background tiling needs of an element's background layer.
struct THtBackgroundFill {
  TBackgroundRepeat Repeat = brRepeat;
  TBackgroundSize SizeKind = bsAuto;
  TMeasure Width, Height;        // bsSize: the size when set (mfNotAuto)
  TMeasure PositionX, PositionY; // mfLeft/mfCenter/mfRight, mfTop/mfBottom or a length
};

class THtCanvas : public TObject {
public:
  THtCanvas();
  THtCanvas(const THtCanvas&) = delete;
  THtCanvas& operator=(const THtCanvas&) = delete;
  ~THtCanvas() override;

  virtual THtPage* GetPage(int Index) const { return fPages[static_cast<size_t>(Index)].get(); }
  virtual void DoFillImage(THtImage& Image, float Opacity, float Radius, const TRectF& R, TPointF Origin,
                           bool RepeatY, bool RepeatX, float H, float W);
  // Known lower-case font family names; only HasFont reads it.
  virtual TStringList& FontDictionary();

  virtual THtBrushClass BrushClass() const;
  virtual THtPenClass PenClass() const;
  virtual THtFontClass FontClass() const;
  virtual THtImageClass ImageClass() const;
  virtual THtPathClass PathClass() const;
  virtual THtPageClass PageClass() const;
  virtual THtBitmapClass BitmapClass() const;
  // A new canvas of the same class, for drawing into a bitmap (shadows); none by default.
  virtual THtCanvas* NewCanvas() const { return nullptr; }
  virtual THtFontCollection* SharedFontCollection() const { return nullptr; }
  virtual THtCanvasFlags GetFlags() const {
    return {hcfNeedBuffer, hcfCacheTextWidth, hcfScaleCanvasDrawing};
  }
  virtual void GetFonts(TStringList& List) { (void)List; }
  virtual bool HasFont(const hstring& FontName);
  virtual float MeasureString(const hstring& s, THtFont& Font, const THtTextStyle& TextStyle, float Scale,
                              int AFirstChar, int ALength) = 0;
  // Cuts s into runs of RunClass appended to Runs; a canvas with a shaper of
  // its own may cut differently. The default is HtSplitString.
  virtual void SplitString(const hstring& s, THtTextRuns& Runs,
                           THtTextRunClass RunClass = HtTextRunClass<THtTextRun>());

  virtual void BeginScene(const THtCanvasScene& AScene);
  virtual void BeforeEndScene() {}
  virtual void EndScene() {}
  virtual void CachedDraw(THtCanvas& Canvas, const TRectF& R, float DocOffsetX, float DocOffsetY,
                          uint32_t BackgroundColor, float ADocScale) {
    (void)Canvas, (void)R, (void)DocOffsetX, (void)DocOffsetY, (void)BackgroundColor, (void)ADocScale;
  }
  virtual void SaveState();
  virtual void RestoreState();
  virtual void IntersectClip(const TRectF& R) { (void)R; }
  virtual void IntersectClip(THtPath& ClipPath) { (void)ClipPath; }
  virtual void SetClip(const TRectF& R) { (void)R; }
  virtual void SetSmoothingMode(bool Smooth) { (void)Smooth; }
  virtual void SetSmoothingLevel(int ALevel) { SetSmoothingMode(ALevel >= 1); }
  virtual void SetCompositingMode(bool ModeOver) { (void)ModeOver; }
  virtual void DrawPath(THtPen& Pen, THtPath& Path) = 0;
  virtual void FillPath(THtBrush& Brush, THtPath& Path) = 0;
  virtual bool PointInPath(float X, float Y, THtPath& Path) {
    (void)X, (void)Y, (void)Path;
    return false;
  }
  virtual bool PointOnPath(float X, float Y, THtPath& Path, float w) {
    (void)X, (void)Y, (void)Path, (void)w;
    return false;
  }
  virtual void DrawLine(THtPen& Pen, float x1, float y1, float x2, float y2);
  virtual void DrawArc(THtPen& Pen, float X, float Y, float w, float h, float StartAngle, float SweepAngle);
  // A full fill sweeps 359.9 degrees, a full outline 360: a fill is one open arc closed.
  virtual void FillEllipse(THtBrush& Brush, float X, float Y, float w, float h);
  virtual void DrawEllipse(THtPen& Pen, float X, float Y, float w, float h);
  virtual void FillRectangle(THtBrush& Brush, float X, float Y, float w, float h);
  virtual void DrawRectangle(THtPen& Pen, float X, float Y, float w, float h);
  virtual void RoundRect(THtPen& Pen, const TRectF& R, float RadiusX, float RadiusY);
  virtual void FillRoundRect(THtBrush& Brush, const TRectF& R, float RadiusX, float RadiusY);
  virtual void DrawCheck(const TRectF& R, float DPI, bool Checked, bool Active, bool HOver, bool Disabled);
  virtual void DrawRadio(const TRectF& R, float DPI, bool Checked, bool Active, bool HOver, bool Disabled);
  virtual void DrawButton(const TRectF& R, float DPI, bool Checked, bool Active, bool HOver, bool Disabled);
  virtual void DrawWavyLine(float x1, float y1, float x2, float y2, THtPen& Pen);
  virtual void DrawString(const hstring& s, const TRectF& R, THtFont& Font, const THtTextStyle& TextStyle,
                          int AFirstChar, int ALength) = 0;
  virtual void DrawStringEx(const hstring& s, const TRectF& R, THtFont& Font, const THtTextStyle& TextStyle,
                            float ASpacing, bool AFill, bool AStroke, int AFirstChar, int ALength) {
    (void)ASpacing, (void)AFill, (void)AStroke;
    DrawString(s, R, Font, TextStyle, AFirstChar, ALength);
  }
  virtual THtTextObject* CreateTextObject(const hstring& s, THtFont& Font, const THtTextStyle& TextStyle,
                                          const TRectF& R, int AFirstChar, int ALength) {
    (void)s, (void)Font, (void)TextStyle, (void)R, (void)AFirstChar, (void)ALength;
    return nullptr;
  }
  virtual void DrawTextObject(THtTextObject& TextObject, const TRectF& R, THtFont& Font) {
    (void)TextObject, (void)R, (void)Font;
  }
  virtual void DrawLink(const TRectF& R, const hstring& Href, bool IsAnchor) {
    (void)R, (void)Href, (void)IsAnchor;
  }
  virtual void BeginLink(const hstring& Href, const hstring& Title) { (void)Href, (void)Title; }
  virtual void EndLink() {}
  virtual void ScaleTransform(float XScale, float YScale);
  virtual void TranslateTransform(float XOffset, float YOffset);
  virtual void RotateTransform(float Angle);
  virtual void MatrixTransform(const THtMatrixData& M, bool Add);
  virtual void DrawShadow(THtPath* Path, const THtShadowProps& Props);
  virtual void DrawTextShadow(const hstring& s, const TRectF& R, const THtTextStyle& TextStyle, THtFont& Font,
                              float HOffset, float VOffset, float Blur, uint32_t ShadowColor);
  virtual void BlurRect(const TRectF& R, THtPath* BorderPath, float BlurRadius) {
    (void)R, (void)BorderPath, (void)BlurRadius;
  }
  virtual void DrawImage(THtImage& Image, const TRectF& R, float Opacity);
  virtual void FillImage(const TRectF& R, THtImage& Image, float OriginDeltaX, float OriginDeltaY,
                         const THtBackgroundFill& Background, float Opacity, float Radius);
  virtual void DrawBitmap(THtBitmap& B, const TRectF& DestR, const TRectF& SrcR, float Opacity) {
    (void)B, (void)DestR, (void)SrcR, (void)Opacity;
  }
  // Shared scratch objects: valid until the next GetPen or GetBrush call.
  virtual THtPen& GetPen(uint32_t AColor, float AWidth);
  virtual THtBrush& GetBrush(uint32_t AColor);
  virtual void SetImageColorMatrix(const THtColorMatrix& CM);
  virtual void BeginPaging(float APageWidthMM, float APageHeightMM, int ADPI, TCSSOrientation AOrientation);
  virtual void EndPaging() {}
  virtual void NewPage(TCSSOrientation Orientation);
  virtual bool Print(const hstring& Title) {
    (void)Title;
    return false;
  }
  // Creates the file (exclusive) and writes the document through SavetoPDFStream.
  virtual void SavetoPDF(const hstring& FileName);
  virtual void SavetoPDFStream(TStream& Stream) { (void)Stream; }
  virtual float CurrentScale() const { return std::fabs(FCurrentMatrix.m11) + std::fabs(FCurrentMatrix.m12); }
  virtual THtMatrixData* CurrentMatrix() { return &FCurrentMatrix; }
  virtual void Clear(uint32_t AColor);
  virtual bool FastScale(const THtCanvasScene& AScene, const TRect& NewRect) {
    (void)AScene, (void)NewRect;
    return false;
  }

  int Scale(float X) const { return static_cast<int>(MathRound(X * Scene.Scale)); }
  void FillRectangle(THtBrush& Brush, const TRectF& R) { FillRectangle(Brush, R.Left, R.Top, RW(R), RH(R)); }
  void DrawRectangle(THtPen& Pen, const TRectF& R) { DrawRectangle(Pen, R.Left, R.Top, RW(R), RH(R)); }
  bool HasImageMatrix() const { return FImageColorMatrix != nullptr; }
  bool CanvasRectInView(const TRect& R) const;
  bool CanvasRectInView(const TRectF& R) const;
  bool DocumentRectInView(const TRectF& R) const;
  // Transforms R and then tests the untransformed R against the view port:
  // the asymmetry with DocumentRectInView is deliberate.
  bool DocumentRectInViewPort(const TRectF& R) const;
  void SnaptoPixels(TRectF& R) const;
  void SetPageWidthMM(float Value);
  void SetPageHeightMM(float Value);
  int GetPageCount() const { return static_cast<int>(fPages.size()); }
  THtCanvas& G() { return *this; }
  const THtMatrixData& ReverseMatrix() const { return FReverseMatrix; }
  int StateStackIndex() const { return FStateStackIndex; }

  int FMultipageOrientation = coDefault;
  int FVPages = 1, FHPages = 1;
  THtFontCollection* FFontCollection = nullptr; // not owned
  float FScreenScale = 1;
  float FPageHeightPixels = 0, FPageWidthPixels = 0, FPageWidthMM = 0, FPageHeightMM = 0;
  int FDPI = 96;
  bool FPaged = false;
  bool FCached = false, FNeedCacheUpdate = false;
  bool FPrintAsBitmap = false;
  THtMatrixData InitialMatrix, RootMatrix;
  THtCanvasScene Scene;

protected:
  std::vector<std::unique_ptr<THtPage>> fPages;
  std::unique_ptr<THtColorMatrix> FImageColorMatrix;
  THtMatrixData FCurrentMatrix, FReverseMatrix;
  std::vector<THtMatrixData> FStateStack;
  int FStateStackIndex = -1;
  std::unique_ptr<THtPen> FPen;
  std::unique_ptr<THtBrush> FSolidBrush;
  std::unique_ptr<TStringList> FFontDictionary;
  std::unique_ptr<THtShadowCache> FShadowCache;

  std::unique_ptr<THtPath> NewPath() const { return std::unique_ptr<THtPath>(PathClass().Create(false)); }

private:
  void ShadowNinePatch(const THtShadowProps& Props, const TRectF& Box, int BlurExtent);
  void PaintShadowShape(THtCanvas& c, THtPath* Path, const TRectF& R, const THtShadowProps& Props,
                        uint32_t Color);
};

// The wave step of DrawWavyLine.
extern float HtWavyLineStep;

// Makes a canvas of a host's class; the library keeps none of its own here.
using THtCanvasClass = THtCanvas* (*)();
// The canvas classes parts of the library use when they need a canvas of
// their own: set by the host unit that provides them, null otherwise.
extern THtCanvasClass HtDefaultCanvasClass;
extern THtCanvasClass HtAltDefaultCanvasClass;
extern THtCanvasClass HtUIDefaultCanvasClass;

// A process-wide lock for host canvases that share a device; the library
// itself never takes it.
std::recursive_mutex& HtCanvasLock();

} // namespace ht
