// TMeasure: a CSS length (or time, angle, number) with its unit and state
// flags, resolved to pixels on demand against the element it belongs to.
//
//   ht::TMeasure m;
//   m.Init(nullptr);
//   m.Parse(u"50%"_hs);
//   float base = 300;
//   m.Parent = &base;
//   m.GetFPixels();                 // 150
//
//   ht::TCSSTokens toks = ht::CSSValueTokens(u"calc(100% - 10px)"_hs);
//   ht::TCSSTokenSequence seq;
//   seq.Init(&toks);
//   m.Decode(seq);                  // calc() waits until pixels are asked for
//   m.GetFPixels();                 // 290
//
// The record owns nothing: Style, Parent and Calc point at things that live
// longer (the element's style, a box size, the section's calc tokens), so it is
// copied freely. calc() runs on a copy; the stored measure keeps its tokens.
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/geometry.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/style/css_tokenizer.h"
#include "htcore/style/measure_unit.h"

#include <cstdint>
#include <initializer_list>
#include <type_traits>

namespace ht {

HT_ENUM(TMeasureFlag, mfNotAuto, mfInherit, mfInitial, mfLeft, mfRight, mfCenter, mfTop, mfBottom, mfChanged,
        mfZero)

// A set of TMeasureFlag in 16 bits.
struct TMeasureFlags {
  uint16_t Bits = 0;

  constexpr TMeasureFlags() = default;
  constexpr TMeasureFlags(std::initializer_list<TMeasureFlag> flags) {
    for (TMeasureFlag f : flags)
      Bits |= Bit(f);
  }
  constexpr bool Contains(TMeasureFlag f) const noexcept { return (Bits & Bit(f)) != 0; }
  constexpr void Include(TMeasureFlag f) noexcept { Bits |= Bit(f); }
  constexpr void Exclude(TMeasureFlag f) noexcept { Bits &= static_cast<uint16_t>(~Bit(f)); }
  constexpr bool Empty() const noexcept { return Bits == 0; }
  friend constexpr bool operator==(TMeasureFlags, TMeasureFlags) = default;

private:
  static constexpr uint16_t Bit(TMeasureFlag f) noexcept { return static_cast<uint16_t>(1u << f); }
};

// What a measure needs of the element it is resolved for. The element's style
// class derives from it and keeps the two fields current.
class TMeasureContext {
public:
  virtual ~TMeasureContext() = default;

  float IntFontSize = 0; // the element's font size in pixels: the base of em
  float Zoom = 1;        // multiplies integer pixels (GetPixels)

  // Whether the element has a parent; rem falls back to 13 px without one.
  virtual bool HasParentElement() const { return false; }
  // The root element's font size in pixels: the base of rem.
  virtual float RootFontSize() const { return IntFontSize; }
  // The viewport the element is drawn in, and its scale: the base of vw and vh.
  virtual TRectF DrawRect() const { return TRectF{}; }
  virtual float ScaleFactor() const { return 1; }
};

struct TMeasure {
  float FValue = 0;
  TMeasureUnit FMUnit = muNone;
  TMeasureFlags Flags; // auto: no mfNotAuto
  const TMeasureContext* Style = nullptr;
  const float* Parent = nullptr; // the percentage base in pixels
  PCSSTokens Calc = nullptr;     // the tokens of a calc() not evaluated yet

  // Value 0, muNone, no flags (so auto), Style set, no Parent, no Calc.
  void Init(const TMeasureContext* AStyle);
  // Value, unit, flags, Calc and Parent of Other; Style stays.
  void Assign(const TMeasure& Other);

  bool GetAuto() const noexcept { return !Flags.Contains(mfNotAuto); }
  void SetAuto(bool Value);
  // Does nothing at all when Value equals FValue.
  void SetValue(float Value);
  void SetPixels(int Value);
  void SetFPixels(float Value);
  // Not resolvable before layout knows the container: a percentage, auto or calc().
  bool Relative() const noexcept { return FMUnit == muPercent || GetAuto() || Calc != nullptr; }

  // Reads the current token of Seq (the sequence does not move).
  void Decode(const TCSSTokenSequence& Seq);
  // Reads an attribute text such as "120", "50%" or "2.5em".
  void Parse(const hstring& Text);
  hstring AsString() const;

  // Pixels; evaluates a pending calc() first, which turns this measure into a
  // plain pixel value.
  float GetFPixels();
  // Rounded pixels, multiplied by the style's Zoom (percentages excepted).
  int GetPixels();
  void DecodeCalc();

private:
  void DecodeToken(const TCSSToken& T, PCSSTokens Tokens);
  void SetNumber(float Value, TMeasureUnit Unit);
};

static_assert(std::is_trivially_copyable_v<TMeasure>,
              "measures are block-copied into every value and getter");

// The stored form of a CSS length value: "a / b" pairs, border-radius,
// background-size. A Value2 flagged mfInitial alone is absent.
struct TMeasure2 {
  TMeasure Value1;
  TMeasure Value2;
};

// Keeps the token array of a calc() alive for the measures that point at it;
// a section owns these.
class TCSSCalcValueObject : public TObject {
public:
  TCSSTokens Tokens;
};

// The tokens of a value text as a sheet stores them, without spaces and
// comments: what Decode and calc() read.
TCSSTokens CSSValueTokens(const hstring& Text);

// Pixels per unit at 96 dpi, for the units with a fixed size.
inline constexpr float kPixelsPerInch = 96;
// The font size assumed where no element gives one (rem at the root, em
// without a style).
inline constexpr float kDefaultRootFontSize = 13;
// ex is a constant, whatever the font.
inline constexpr float kPixelsPerEx = 11;

} // namespace ht
