// Decoded forms of the complex style values: backgrounds with their linear
// and radial gradients, transforms, shadows, box reflections and column rules. An element's style builds them from a value's tokens on demand;
// their measures resolve against the element through a TMeasureContext.
//
//   ht::TCSSTokens toks = ht::CSSValueTokens(u"linear-gradient(to top left, red, blue)"_hs);
//   ht::TCSSTokenSequence seq;
//   seq.Init(&toks);
//   ht::TElementBackground bg(nullptr);
//   bg.Parse(seq);
//   bg.Gradient.Direction;             // gsTopLeft, Angle -45
//   bg.Gradient.Stops[1].Position;     // 100 %
//
// Nothing here raises: what a decoder cannot read leaves its defaults.
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"
#include "htcore/style/css_properties.h"
#include "htcore/style/css_tokenizer.h"
#include "htcore/style/measure.h"

#include <cstdint>
#include <vector>

namespace ht {

HT_ENUM(TGradientDirection, gsTop, gsLeft, gsRight, gsBottom, gsTopLeft, gsTopRight, gsBottomLeft,
        gsBottomRight)
HT_ENUM(TTransformType, ttNone, ttTranslate, ttTranslateX, ttTranslateY, ttTranslateZ, ttTranslate3d,
        ttRotate, ttRotateX, ttSkew, ttScale, ttScaleX, ttScaleY, ttMatrix)
HT_ENUM(TCSSBoxReflect, brNone, brAbove, brBelow, brLeft, brRight)

// The angle of a gradient direction in degrees (0 points up, clockwise).
float GradientAngle(TGradientDirection Direction) noexcept;

struct TGradientStop {
  TMeasure Position; // auto: not given
  uint32_t Color = 0;
  friend bool operator==(const TGradientStop& a, const TGradientStop& b) noexcept {
    return a.Color == b.Color && a.Position.FValue == b.Position.FValue &&
           a.Position.FMUnit == b.Position.FMUnit && a.Position.Flags == b.Position.Flags;
  }
};

struct TGradient {
  bool Radial = false;
  bool Circle = false;       // radial: "circle" rather than an ellipse
  TMeasure CenterX, CenterY; // radial: the centre, 50 % unless "at" moves it
  TGradientDirection Direction = gsBottom;
  float Angle = 180;
  std::vector<TGradientStop> Stops;

  void Clear(const TMeasureContext* Style);
  // Gives each stop without a position its even share of 0..100 %.
  void SpreadStops(const TMeasureContext* Style);
};

class TElementBackground {
public:
  explicit TElementBackground(const TMeasureContext* AStyle);

  const TMeasureContext* Style;
  hstring Image; // URL, as written for "data:" URLs, otherwise decoded
  TGradient Gradient;
  TBackgroundRepeat Repeat = brRepeat;
  TBackgroundOrigin Origin = boPaddingBox;
  TBackgroundAttachment Attachment = baScroll;
  TBackgroundSize SizeKind = bsAuto;
  TMeasure SizeX, SizeY;
  TMeasure PositionX, PositionY;
  hstring BaseURL;

  // Reads the first layer of a background or background-image value.
  void Parse(TCSSTokenSequence& Seq);
  // With the sequence on "radial-gradient"; leaves it on the closing bracket.
  void DecodeRadialGradient(TCSSTokenSequence& Seq);
  // With the sequence on "linear-gradient"; leaves it on the closing bracket.
  void DecodeLinearGradient(TCSSTokenSequence& Seq);
  bool HasGradient() const noexcept { return !Gradient.Stops.empty(); }
  // Back to no image, no gradient and the initial keywords.
  void Clear();
};

struct TTransformItem {
  TTransformType Kind = ttNone;
  std::vector<TMeasure> Params;
};

struct TTransform {
  std::vector<TTransformItem> Items;
  const TMeasureContext* Style = nullptr;
  TMeasure OriginX, OriginY;

  // Replaces the items by the transform functions at the sequence.
  void Decode(TCSSTokenSequence& Seq);
  // Reads "x y", "y x" (a vertical keyword first) or "x" into the origins.
  void DecodeOrigin(TCSSTokenSequence& Seq);
  void Clear();
  bool Empty() const noexcept { return Items.empty(); }
  // The item of a kind, or null.
  const TTransformItem* Find(TTransformType Kind) const noexcept;

  // The components, in pixels, as factors or in degrees; the neutral value
  // without the function.
  float TranslateX() const;
  float TranslateY() const;
  float ScaleX() const;
  float ScaleY() const;
  float Rotate() const;
  float RotateX() const;
};

struct TElementShadow {
  TMeasure OffsetX, OffsetY, Blur, Spread;
  uint32_t Color = 0; // 0: none given, the text colour applies
  bool Inset = false;
  float Strength = 0;
  const TMeasureContext* Style = nullptr;

  // box-shadow: "[inset] x y [blur [spread]] [colour]", the first shadow only.
  void Parse(TCSSTokenSequence& Seq);
  // text-shadow: "[colour] x y [blur] [colour]", the first shadow only.
  void ParseTextShadow(TCSSTokenSequence& Seq);
  bool NoShadow() const noexcept;
  void Reset();
};

struct TBoxReflect {
  TCSSBoxReflect Direction = brNone;
  TMeasure Offset;
  TGradient Gradient;
  const TMeasureContext* Style = nullptr;

  // "below 2px linear-gradient(transparent, white)"; false without a direction.
  bool Decode(TCSSTokenSequence& Seq);
};

struct TCSSColumnRule {
  TMeasure Width;
  TLineStyle Style = lsNone;
  uint32_t Color = 0; // 0: none given
  // "1px solid #ccc" in any order.
  void Decode(TCSSTokenSequence& Seq, const TMeasureContext* Context);
};

// The colour at the sequence (a name, hash or rgb()/rgba() function); false
// for what names no colour. A function leaves the sequence on its bracket.
bool ReadCSSColor(TCSSTokenSequence& Seq, uint32_t& Color);
// Moves the sequence from a function name to its matching closing bracket.
void SkipCSSFunction(TCSSTokenSequence& Seq);

} // namespace ht
