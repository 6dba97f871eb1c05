// The objects a canvas draws with: pens, brushes (solid, linear and radial
// gradients, images), pages of a paged canvas, bitmaps, and the small
// records of a scene and of a box shadow. A canvas makes each through its
// factory (BrushClass().Create(...), ...) so a host canvas can substitute
// subclasses of its own.
//
//   ht::THtBrush b(0xFF000000);
//   b.CreateGradient({0, 0, 100, 20}, 0, 0, -90, {0, 0, 100, 20});   // Angle 270
//   b.SetGradientColors({{0.25f, 0.75f}}, {{0xFFFF0000, 0xFF0000FF}});
//   // four stops now: 0, 0.25, 0.75, 1 with the end colours repeated
//   uint32_t mid = b.CalcGradientColor(50, 10);
//
// Fonts and images appear here only as far as the canvas contract names
// them; their own behaviour lives with font and image code. Text runs and
// the text style record are in text_runs.h.
#pragma once

#include "htcore/foundation/exception.h"
#include "htcore/foundation/geometry.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/graphics/images.h"
#include "htcore/graphics/font_style.h"
#include "htcore/graphics/matrix.h"
#include "htcore/graphics/text_runs.h"
#include "htcore/style/css_properties.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ht {

class THtCanvas;

enum THtCanvasFlag : uint8_t {
  hcfNeedBuffer,
  hcfCacheTextWidth,
  hcfScaleCanvasDrawing,
  hcfSupportsTextLayouts,
  hcfSupportsSimpleLayouts,
  hcfFullRepaint,
  hcfSupportsImageRef,
  hcfHasVSync,
  hcfIntCoordinates
};

// A set of THtCanvasFlag.
using THtCanvasFlags = THtFlagSet<THtCanvasFlag>;

enum THtBrushKind : uint8_t { hbSolid, hbGradient, hbRadial, hbImage };
enum THtPenStyle : uint8_t { hpsSolid, hpsDash, hpsDot, hpsDashDot, hpsDashDotDot, hpsClear };
enum THtLineJoin : uint8_t { ljMiter, ljBevel, ljRound };
enum THtLineCap : uint8_t { lcFlat, lcSquare, lcRound };
enum THtLineDrawMode : uint8_t { ldmCopy, ldmXOR };

// A font as the canvas contract names it; metrics and shaping belong to the
// concrete canvas and the font code.
class THtFont : public TObject {
public:
  hstring FName;
  float FHeight = 12;
  THtFontStyles FStyle = 0; // bits of THtFontStyle
  float Ascent = 0;
  virtual THtFont* Clone() const { return new THtFont(*this); }
};

// Known fonts of a device; filled by the font code.
class THtFontCollection : public TObject {};

// 5 by 5 colour transform applied to images.
struct THtColorMatrix {
  float M[5][5] = {};
};

class THtBrush : public TObject {
public:
  explicit THtBrush(uint32_t AColor = 0xFF000000) { Create(AColor); }

  uint32_t FColor = 0;
  THtMatrixData FMatrix;
  THtBrushKind Kind = hbSolid;
  float OffsetX = 0, OffsetY = 0, CX = 0, CY = 0, FX = 0, FY = 0, Radius = 0, Angle = 0;
  TRectF GradientRect{0, 0, 0, 0}, FillRect{0, 0, 0, 0};
  std::vector<uint32_t> GradientColors;
  std::vector<float> GradientPositions;
  THtImage* Image = nullptr; // not owned

  virtual uint32_t GetColor() const { return FColor; }
  virtual void SetColor(uint32_t Value) { FColor = Value; }
  virtual void SetMatrix(const THtMatrixData& M) { FMatrix = M; }
  // The constructors, usable again on a live brush.
  virtual void Create(uint32_t AColor);
  // Angle is brought into 0..360. The two colours are not stored: they reach
  // the brush through SetGradientColors; a subclass may use them.
  virtual void CreateGradient(const TRectF& R, uint32_t StartColor, uint32_t EndColor, float AAngle,
                              const TRectF& AFillRect);
  virtual void CreateRadialGradient(float AOffsetX, float AOffsetY, float ACx, float ACy, float AFX,
                                    float AFY, float ARadius, const THtMatrixData& AMatrix);
  // Stops not starting at 0 or ending at 1 get the end colour repeated there.
  virtual void SetGradientColors(std::span<const float> Positions, std::span<const uint32_t> Colors);
  virtual THtBrush* Clone() const;

  // The start and end point of a linear gradient for a CSS angle over GradientRect.
  TRectF CalcGradientRect() const;
  // The gradient's colour at a point, for canvases without native gradients.
  uint32_t CalcGradientColor(float X, float Y) const;

protected:
  // A fresh object of the brush's own class, for Clone.
  virtual THtBrush* NewInstance() const { return new THtBrush(0); }
};

class THtPen : public TObject {
public:
  THtPen(uint32_t AColor = 0xFF000000, float AWidth = 1) { Create(AColor, AWidth); }

  THtLineJoin FLineJoin = ljMiter;
  THtLineCap FLineCap = lcFlat;
  uint32_t FColor = 0;
  float FWidth = 1;
  THtPenStyle FPenStyle = hpsSolid;
  float FDashOffset = 0;
  THtLineDrawMode FMode = ldmCopy;
  std::vector<float> Dashes; // multiples of the width

  virtual uint32_t GetColor() const { return FColor; }
  virtual float GetWidth() const { return FWidth; }
  virtual bool GetAlignInset() const { return false; }
  virtual THtPenStyle GetPenStyle() const { return FPenStyle; }
  virtual THtLineJoin GetLineJoin() const { return FLineJoin; }
  virtual float GetDashOffset() const { return FDashOffset; }
  virtual THtLineCap GetLineCap() const { return FLineCap; }
  virtual void SetColor(uint32_t Value) { FColor = Value; }
  virtual void SetWidth(float Value) { FWidth = Value; }
  virtual void SetAlignInset(bool) {}
  virtual void SetPenStyle(THtPenStyle Value) { FPenStyle = Value; }
  virtual void SetLineJoin(THtLineJoin Value) { FLineJoin = Value; }
  virtual void SetDashOffset(float Value) { FDashOffset = Value; }
  virtual void SetLineCap(THtLineCap Value) { FLineCap = Value; }
  virtual void Create(uint32_t AColor, float AWidth);
  // Lengths in document units, kept as multiples of the current width: set the width first.
  virtual void SetDashes(std::span<const float> Lengths);
  virtual THtPen* Clone() const;
  virtual void Assign(const THtPen& Source);

protected:
  virtual THtPen* NewInstance() const { return new THtPen; }
};

class THtPage : public TObject {
public:
  THtPage(float AWidthMM, float AHeightMM, int ANumber, int ADPI);

  float Number = 0, WidthMM = 0, HeightMM = 0;
  int WidthPx = 0, HeightPx = 0, DPI = 96;
  TCSSOrientation Orientation = coPortrait;
  bool Disabled = false;

  virtual const char* ClassName() const { return "THtPage"; }
  virtual THtImage* AsImage(int AWidth, int ADPI) {
    (void)AWidth, (void)ADPI;
    return nullptr;
  }
  // Raise "Metafile is not implemented for class " and the class name here.
  virtual std::vector<uint8_t> AsMetaFileBytes();
  virtual TObject* AsMetaFile();
};

class THtBitmap : public TObject {
public:
  THtBitmap(int AWidth, int AHeight, bool DIB);

  int VerticalInverted = 1;

  virtual int GetWidth() const = 0;
  virtual int GetHeight() const = 0;
  virtual int GetStride() const = 0;
  // Raises "HtBitmap buffer not implemented" here.
  virtual uint32_t* GetBuffer();
  virtual void FillRect(const TRect& R, uint32_t Color) { (void)R, (void)Color; }
  virtual void CopyFromCanvas(THtCanvas& Canvas, const TRect& R) { (void)Canvas, (void)R; }
  virtual void DrawOnCanvas(THtCanvas& Canvas, const TRectF& R, uint8_t Alpha, bool AlphaBlend) = 0;
  virtual void SetSize(int NewWidth, int NewHeight) = 0;
};

struct THtCanvasScene {
  THtCanvas* Canvas = nullptr;
  uintptr_t Window = 0;
  TRect ViewPort{0, 0, 0, 0};
  TRect ClipRect{0, 0, 0, 0};
  std::vector<TRect> UpdateRects; // empty: the whole view
  float OffsetX = 0, OffsetY = 0, Scale = 1, ScrollX = 0, ScrollY = 0;
  THtBitmap* Bitmap = nullptr;
  bool EditorMode = false;
  THtMatrixData Transform;

  void Init(const TRect& R, THtCanvas* ACanvas);
  // Keeps R (unclipped) unless it is empty, outside the view port, under a
  // pixel once clipped, or inside one already kept; widens ClipRect.
  void AddUpdateRect(const TRect& R);
  // Grows every update rectangle, bounded by the view port.
  void ExpandUpdateRects(int ALeft, int ATop, int ABottom, int ARight);
};

struct THtShadowProps {
  TRectF R{0, 0, 0, 0};
  float MaxBorderRadius = 0;
  bool OneBorderRadius = true;
  float HOffset = 0, VOffset = 0, Blur = 0;
  uint32_t Color = 0, BackgroundColor = 0;
  uint8_t Opacity = 255;
  bool Inset = false, HasBackground = false;
};

THtShadowProps CreateShadowProps(const TRectF& R, float MaxBorderRadius, bool OneBorderRadius, float HOffset,
                                 float VOffset, float Blur, uint32_t Color, uint8_t Opacity, bool Inset);

} // namespace ht
