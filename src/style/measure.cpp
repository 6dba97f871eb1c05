#include "htcore/style/measure.h"

#include "htcore/foundation/convert.h"
#include "htcore/foundation/number_format.h"
#include "htcore/foundation/text_utils.h"

#include <cmath>
#include <string_view>
#include <vector>

namespace ht {

namespace {

// Magnitudes beyond this read as 0, as the tokenizer reads them.
constexpr double kMaxMagnitude = 1e38;

float Sane(double v) {
  return std::isfinite(v) && std::fabs(v) <= kMaxMagnitude ? static_cast<float>(v) : 0.0f;
}

bool Is(const TCSSToken& T, std::u16string_view word) { return SameText(T.Name.view(), word); }

struct TKeywordSize {
  std::u16string_view Name;
  float Value;
  TMeasureUnit Unit;
};

// Keywords that stand for a fixed length.
constexpr TKeywordSize kKeywordSizes[] = {
    {u"smaller", 80, muPercent}, {u"larger", 120, muPercent}, {u"xx-small", 9, muPX}, {u"x-small", 10, muPX},
    {u"small", 14, muPX},        {u"large", 22, muPX},        {u"x-large", 24, muPX}, {u"xx-large", 26, muPX},
    {u"thin", 1, muPX},          {u"medium", 2, muPX},        {u"thick", 3, muPX},
};

struct TKeywordPlace {
  std::u16string_view Name;
  float Percent;
  TMeasureFlag Flag;
};

constexpr TKeywordPlace kKeywordPlaces[] = {
    {u"left", 0, mfLeft},     {u"top", 0, mfTop},         {u"center", 50, mfCenter},
    {u"right", 100, mfRight}, {u"bottom", 100, mfBottom},
};

// The unit an attribute's letters name.
TMeasureUnit UnitOfLetters(const char16_t* p) {
  const char16_t a = p[0];
  const char16_t b = a ? p[1] : 0;
  switch (a) {
  case u'%':
    return muPercent;
  case u'p':
    return b == u'x' ? muPX : b == u't' ? muPt : b == u'c' ? muPC : muNone;
  case u'm':
    return b == u'm' ? muMM : muNone;
  case u'c':
    return b == u'm' ? muCM : muNone;
  case u'i':
    return b == u'n' ? muIN : muNone;
  case u'e':
    return b == u'm' ? muEM : b == u'x' ? muEX : muNone;
  case u'r':
    return muREM;
  case u's':
    return muS;
  case u'v':
    return b == u'w' ? muVW : b == u'h' ? muVH : muNone;
  default:
    return muNone;
  }
}

} // namespace

TCSSTokens CSSValueTokens(const hstring& Text) {
  TCSSTokens all = CSSTokenize(Text);
  std::erase_if(all, [](const TCSSToken& t) { return t.CType == ctSpace || t.CType == ctComment; });
  return all;
}

void TMeasure::Init(const TMeasureContext* AStyle) {
  FValue = 0;
  FMUnit = muNone;
  Flags = {};
  Style = AStyle;
  Parent = nullptr;
  Calc = nullptr;
}

void TMeasure::Assign(const TMeasure& Other) {
  FValue = Other.FValue;
  FMUnit = Other.FMUnit;
  Flags = Other.Flags;
  Calc = Other.Calc;
  Parent = Other.Parent;
}

void TMeasure::SetAuto(bool Value) {
  if (Value) {
    Flags.Exclude(mfNotAuto);
    Calc = nullptr;
  } else {
    Flags.Include(mfNotAuto);
  }
}

void TMeasure::SetValue(float Value) {
  if (Value == FValue) // flags included: a fresh measure set to 0 stays auto
    return;
  Flags.Include(mfNotAuto);
  FValue = Value;
  if (Value == 0)
    Flags.Include(mfZero);
  else
    Flags.Exclude(mfZero);
  Flags.Exclude(mfInitial);
  Calc = nullptr;
}

void TMeasure::SetPixels(int Value) { SetFPixels(static_cast<float>(Value)); }

void TMeasure::SetFPixels(float Value) {
  SetValue(Value);
  Flags.Include(mfNotAuto);
  FMUnit = muPX;
}

void TMeasure::SetNumber(float Value, TMeasureUnit Unit) {
  FValue = Value;
  FMUnit = Unit;
  if (Value == 0)
    Flags.Include(mfZero);
}

void TMeasure::Decode(const TCSSTokenSequence& Seq) {
  Flags = {mfNotAuto};
  Calc = nullptr;
  if (Seq.Eof || !Seq.T)
    return;
  DecodeToken(*Seq.T, Seq.FPTokens);
}

void TMeasure::DecodeToken(const TCSSToken& T, PCSSTokens Tokens) {
  Flags = {mfNotAuto};
  Calc = nullptr;
  switch (T.CType) {
  case ctNumber:
    SetNumber(T.AsFloat, muPX);
    return;
  case ctPercentage:
    SetNumber(T.AsFloat, muPercent);
    return;
  case ctDimension:
    SetNumber(T.AsFloat, T.MUnit);
    return;
  case ctFunction:
    if (Is(T, u"calc"))
      Calc = Tokens;
    else
      Flags = {}; // an unknown function reads as auto
    return;
  case ctIdent:
    break;
  default:
    return;
  }
  if (Is(T, u"auto")) {
    FValue = 0;
    Flags = {};
  } else if (T.Name == u"none") { // exact case only
    Flags = {};
  } else if (Is(T, u"normal")) {
    Flags = {mfNotAuto, mfInitial};
    FMUnit = muNone;
    FValue = 0;
  } else if (Is(T, u"inherit")) {
    Flags.Include(mfInherit);
  } else if (Is(T, u"initial")) {
    Flags.Include(mfInitial);
    Flags.Exclude(mfNotAuto);
  } else {
    for (const TKeywordPlace& k : kKeywordPlaces)
      if (Is(T, k.Name)) {
        SetNumber(k.Percent, muPercent);
        Flags.Include(k.Flag);
        return;
      }
    for (const TKeywordSize& k : kKeywordSizes)
      if (Is(T, k.Name)) {
        SetNumber(k.Value, k.Unit);
        return;
      }
  }
}

void TMeasure::Parse(const hstring& Text) {
  if (Text.empty())
    return;
  if (Text == u"auto") {
    FValue = 0;
    Flags.Exclude(mfNotAuto);
    return;
  }
  if (Text == u"inherit") {
    Flags.Include(mfInherit);
    return;
  }
  const char16_t* p = Text.c_str();
  const char16_t* e = p;
  while (*e == u'-' || *e == u'.' || (*e >= u'0' && *e <= u'9'))
    ++e;
  if (e == p) // no number: the auto state and value stay as they were
    return;
  Flags.Include(mfNotAuto);
  Flags.Exclude(mfInherit);
  Flags.Exclude(mfInitial);
  Calc = nullptr;
  double v = iStrtoFloat(std::u16string_view(p, static_cast<size_t>(e - p)));
  // Letters decide the unit as written, without folding; an exponent may
  // stand between the number and its unit.
  const char16_t* u = e;
  if (u[0] == u'e' && (u[1] == u'-' || (u[1] >= u'0' && u[1] <= u'9'))) {
    const char16_t* x = u + 1;
    const char16_t* xe = x;
    while (*xe == u'-' || (*xe >= u'0' && *xe <= u'9'))
      ++xe;
    int exponent = iStrtoInt(std::u16string_view(x, static_cast<size_t>(xe - x)));
    if (exponent > 60 || exponent < -60) // far beyond float either way
      v = exponent > 0 ? HUGE_VAL : 0;
    else
      v *= std::pow(10.0, exponent);
    u = xe;
  }
  FMUnit = UnitOfLetters(u);
  FValue = Sane(v);
  if (FValue == 0)
    Flags.Include(mfZero);
  else
    Flags.Exclude(mfZero);
}

hstring TMeasure::AsString() const {
  static const char16_t* const kSuffix[] = {u"px", u"%",  u"in", u"mm",  u"pt", u"cm", u"em",  u"ex",
                                            u"pc", u"ms", u"s",  u"rem", u"vw", u"vh", u"deg", u""};
  if (GetAuto())
    return u"auto";
  if (Flags.Contains(mfZero))
    return u"0";
  hstring s = HtFormatFloat(u"0.###", FValue);
  if (char16_t* d = s.UniqueData())
    for (size_t i = 0; i < s.size(); ++i)
      if (d[i] == u',')
        d[i] = u'.';
  return s + kSuffix[FMUnit];
}

float TMeasure::GetFPixels() {
  if (GetAuto())
    return 0;
  if (Flags.Contains(mfZero) && !Calc)
    return 0;
  if (Calc)
    DecodeCalc();
  switch (FMUnit) {
  case muPX:
    return FValue;
  case muPercent:
    return Parent ? FValue * *Parent / 100 : 0;
  case muIN:
    return FValue * kPixelsPerInch;
  case muMM:
    return FValue * kPixelsPerInch / 25.4f;
  case muPt:
    return FValue * kPixelsPerInch / 72;
  case muCM:
    return FValue * kPixelsPerInch / 2.54f;
  case muEM:
    return FValue * (Style ? Style->IntFontSize : kDefaultRootFontSize);
  case muEX:
    return FValue * kPixelsPerEx;
  case muPC:
    return FValue * kPixelsPerInch / 6;
  case muREM:
    return FValue * (Style && Style->HasParentElement() ? Style->RootFontSize() : kDefaultRootFontSize);
  case muVW:
  case muVH: {
    if (!Style)
      return 0;
    TRectF r = Style->DrawRect();
    float scale = Style->ScaleFactor();
    if (scale == 0)
      scale = 1;
    return FValue * (FMUnit == muVW ? RW(r) : RH(r)) / 100 / scale;
  }
  default: // muMS, muS, muDeg, muNone: a multiplier of the base, if there is one
    return Parent ? FValue * *Parent : FValue;
  }
}

int TMeasure::GetPixels() {
  const float zoom = Style ? Style->Zoom : 1;
  double px = GetFPixels();
  if (zoom != 1 && FMUnit != muPercent) // a percentage's base is scaled already
    px *= zoom;
  int64_t r = MathRound(px);
  if (r > INT32_MAX)
    return INT32_MAX;
  if (r < INT32_MIN)
    return INT32_MIN;
  return static_cast<int>(r);
}

} // namespace ht
