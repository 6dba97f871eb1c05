// Backgrounds and their gradients.
#include "htcore/document/html_colours.h"
#include "htcore/foundation/convert.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/style_values.h"

#include <algorithm>

namespace ht {

namespace {

bool is(const TCSSToken* t, std::u16string_view word) { return t && SameText(t->Name.view(), word); }

bool starts_ci(const hstring& s, std::u16string_view prefix) {
  return s.size() >= prefix.size() && SameText(s.view().substr(0, prefix.size()), prefix);
}

TMeasure percent(const TMeasureContext* style, float value) {
  TMeasure m;
  m.Init(style);
  m.Flags = {mfNotAuto};
  m.FValue = value;
  m.FMUnit = muPercent;
  if (value == 0)
    m.Flags.Include(mfZero);
  return m;
}

// The direction a keyword names: a side or, with a second keyword, a corner.
TGradientDirection combine(TGradientDirection a, TGradientDirection b) {
  auto vertical = [](TGradientDirection d) { return d == gsTop || d == gsBottom; };
  if (vertical(b) && !vertical(a))
    std::swap(a, b);
  if (a == gsTop && b == gsLeft)
    return gsTopLeft;
  if (a == gsTop && b == gsRight)
    return gsTopRight;
  if (a == gsBottom && b == gsLeft)
    return gsBottomLeft;
  if (a == gsBottom && b == gsRight)
    return gsBottomRight;
  return b;
}

TGradientDirection opposite(TGradientDirection d) {
  switch (d) {
  case gsTop:
    return gsBottom;
  case gsBottom:
    return gsTop;
  case gsLeft:
    return gsRight;
  case gsRight:
    return gsLeft;
  case gsTopLeft:
    return gsBottomRight;
  case gsTopRight:
    return gsBottomLeft;
  case gsBottomLeft:
    return gsTopRight;
  case gsBottomRight:
    return gsTopLeft;
  }
  return d;
}

// Moves the sequence to the bracket that closes the function it is inside.
void to_close(TCSSTokenSequence& seq) {
  int depth = 0;
  for (; seq.T; seq.Next()) {
    if (seq.T->CType == ctOpenPar)
      ++depth;
    else if (seq.T->CType == ctClosePar && depth-- == 0)
      return;
  }
}

// The colour stops up to the closing bracket. A linear gradient ends at an
// unreadable colour and keeps a stop's first position; a radial one passes
// over what it cannot read, and a later position replaces an earlier one.
void read_stops(TCSSTokenSequence& seq, TGradient& g, const TMeasureContext* style, bool linear) {
  for (; seq.T && seq.T->CType != ctClosePar; seq.Next()) {
    switch (seq.T->CType) {
    case ctIdent:
    case ctHash:
    case ctFunction: {
      uint32_t c = 0;
      if (ReadCSSColor(seq, c)) {
        TGradientStop s;
        s.Position.Init(style);
        s.Color = c;
        g.Stops.push_back(s);
      } else if (linear) {
        to_close(seq);
        return;
      } else if (seq.T->CType == ctFunction) {
        SkipCSSFunction(seq);
      }
      break;
    }
    case ctPercentage:
    case ctDimension:
      if (!g.Stops.empty() && (!linear || g.Stops.back().Position.GetAuto())) {
        g.Stops.back().Position.Decode(seq);
        g.Stops.back().Position.Style = style;
      }
      break;
    default:
      break;
    }
    if (!seq.T)
      return;
  }
}

} // namespace

float GradientAngle(TGradientDirection Direction) noexcept {
  static constexpr float kAngles[] = {0, -90, 90, 180, -45, 45, -135, 135};
  return kAngles[Direction];
}

bool ReadCSSColor(TCSSTokenSequence& Seq, uint32_t& Color) {
  TCSSToken* t = Seq.T;
  if (!t)
    return false;
  switch (t->CType) {
  case ctIdent: {
    int sys = 0;
    uint32_t c = htmlHextoColorSys(CSSLowerName(*t).view(), sys);
    if (c == HtInvalidColor)
      return false;
    Color = c;
    return true;
  }
  case ctHash: {
    uint32_t c = t->Color;
    if (c == 0)
      c = htmlHextoColor(LowerCase(u"#" + t->Name).view());
    if (c == HtInvalidColor)
      return false;
    Color = c;
    return true;
  }
  case ctFunction:
    if (!starts_ci(t->Name, u"rgb"))
      return false;
    return Seq.ReadColor(Color);
  default:
    return false;
  }
}

void SkipCSSFunction(TCSSTokenSequence& Seq) {
  int depth = 0;
  while (Seq.T) {
    if (Seq.T->CType == ctOpenPar) {
      ++depth;
    } else if (Seq.T->CType == ctClosePar) {
      if (--depth <= 0)
        return;
    }
    Seq.Next();
  }
}

void TGradient::Clear(const TMeasureContext* Style) {
  Radial = false;
  Circle = false;
  CenterX = percent(Style, 50);
  CenterY = percent(Style, 50);
  Direction = gsBottom;
  Angle = 180;
  Stops.clear();
}

void TGradient::SpreadStops(const TMeasureContext* Style) {
  const size_t last = Stops.empty() ? 0 : Stops.size() - 1;
  const float share = 100.0f / static_cast<float>(std::max<size_t>(last, 1));
  for (size_t i = 0; i < Stops.size(); ++i)
    if (Stops[i].Position.GetAuto())
      Stops[i].Position = percent(Style, share * static_cast<float>(i));
}

TElementBackground::TElementBackground(const TMeasureContext* AStyle) : Style(AStyle) { Clear(); }

void TElementBackground::Clear() {
  Image = hstring();
  Gradient.Clear(Style);
  Repeat = brRepeat;
  Origin = boPaddingBox;
  Attachment = baScroll;
  SizeKind = bsAuto;
  SizeX.Init(Style);
  SizeY.Init(Style);
  PositionX.Init(Style);
  PositionY.Init(Style);
}

void TElementBackground::DecodeLinearGradient(TCSSTokenSequence& Seq) {
  Gradient.Clear(Style);
  Seq.Next(2);
  if (Seq.T && Seq.T->CType == ctIdent) {
    // Without "to" the keywords name where the gradient starts, not where it goes.
    const bool old = !is(Seq.T, u"to");
    if (!old)
      Seq.Next();
    bool first = true;
    TGradientDirection d;
    while (Seq.T && Seq.T->CType == ctIdent && IsEnum2(u"gs", Seq.T->Name.view(), d)) {
      if (old)
        d = opposite(d);
      Gradient.Direction = first ? d : combine(Gradient.Direction, d);
      first = false;
      Seq.Next();
    }
    Gradient.Angle = GradientAngle(Gradient.Direction);
  } else if (Seq.T && Seq.T->CType == ctDimension && Seq.T->MUnit == muDeg) {
    Gradient.Angle = Seq.T->AsFloat;
    Seq.Next();
  }
  read_stops(Seq, Gradient, Style, true);
  Gradient.SpreadStops(Style);
}

void TElementBackground::DecodeRadialGradient(TCSSTokenSequence& Seq) {
  Gradient.Clear(Style);
  Gradient.Radial = true;
  Seq.Next(2);
  // The shape part, up to the first comma: only the centre after "at" counts.
  bool at = false;
  int centre = 0;
  for (; Seq.T && Seq.T->CType != ctComma && Seq.T->CType != ctClosePar; Seq.Next()) {
    const TCSSToken& t = *Seq.T;
    uint32_t c;
    const int here = Seq.Index;
    if (!at && (t.CType == ctHash || t.CType == ctFunction || t.CType == ctIdent) && ReadCSSColor(Seq, c)) {
      Seq.Next(here - Seq.Index); // no shape part: the stops begin here
      break;
    }
    if (t.CType == ctIdent && !at) {
      if (is(&t, u"at"))
        at = true;
      else if (is(&t, u"circle"))
        Gradient.Circle = true;
      continue;
    }
    if (!at)
      continue;
    if (t.CType != ctIdent && t.CType != ctNumber && t.CType != ctPercentage && t.CType != ctDimension)
      continue;
    TMeasure m;
    m.Init(Style);
    m.Decode(Seq);
    // "at top" names the vertical axis; the other stays centred.
    if (centre == 0 && (m.Flags.Contains(mfTop) || m.Flags.Contains(mfBottom)))
      centre = 1;
    if (centre == 0)
      Gradient.CenterX = m;
    else if (centre == 1)
      Gradient.CenterY = m;
    ++centre;
  }
  read_stops(Seq, Gradient, Style, false);
  Gradient.SpreadStops(Style);
}

void TElementBackground::Parse(TCSSTokenSequence& Seq) {
  if (!Seq.T || (!Seq.T->Name.empty() && Seq.T->Name[0] == u'-'))
    return; // a vendor gradient: the plain one beside it, if any, decides
  Gradient.Stops.clear();
  const TCSSToken* x = nullptr;
  const TCSSToken* y = nullptr;
  auto place = [&](const TCSSToken* t) {
    if (!x)
      x = t;
    else if (!y)
      y = t;
  };
  for (; Seq.T && Seq.T->CType != ctComma; Seq.Next()) {
    const TCSSToken& t = *Seq.T;
    switch (t.CType) {
    case ctIdent: {
      if (is(&t, u"none")) {
        Image = hstring();
        return;
      }
      const std::u16string_view name = t.Name.view();
      TBackgroundSize size;
      TBackgroundRepeat repeat;
      TBackgroundOrigin origin;
      TBackgroundAttachment attachment;
      if (IsEnum2(u"bs", name, size))
        SizeKind = size;
      else if (IsEnum2(u"br", name, repeat))
        Repeat = repeat;
      else if (IsEnum2(u"bo", name, origin))
        Origin = origin;
      else if (IsEnum2(u"ba", name, attachment))
        Attachment = attachment;
      else if (is(&t, u"left") || is(&t, u"right"))
        x = &t;
      else if (is(&t, u"top") || is(&t, u"bottom") || is(&t, u"middle"))
        y = &t;
      else if (is(&t, u"center"))
        (x ? y : x) = &t;
      // any other word is the colour, which background-color carries
      break;
    }
    case ctNumber:
    case ctPercentage:
    case ctDimension:
      place(&t);
      break;
    case ctURI: {
      const hstring& url = t.Name;
      Image = starts_ci(url, u"data:") ? url : HTTPDecode(url);
      break;
    }
    case ctFunction:
      if (t.Name == u"linear-gradient") {
        DecodeLinearGradient(Seq);
      } else if (t.Name == u"radial-gradient") {
        DecodeRadialGradient(Seq);
      } else if (starts_ci(t.Name, u"rgb")) {
        uint32_t c;
        Seq.ReadColor(c);
      } else {
        SkipCSSFunction(Seq);
      }
      if (!Seq.T)
        return;
      break;
    default:
      break;
    }
  }
  auto decode = [this](const TCSSToken* t, TMeasure& m) {
    m.Init(Style);
    if (t->CType == ctNumber) {
      m.SetFPixels(t->AsFloat);
      m.Flags.Include(mfNotAuto);
      return;
    }
    if (is(t, u"middle")) {
      m = percent(Style, 50);
      m.Flags.Include(mfCenter);
      return;
    }
    TCSSTokenSequence one;
    TCSSTokens toks{*t};
    one.Init(&toks);
    m.Decode(one);
    m.Style = Style;
  };
  if (x)
    decode(x, PositionX);
  if (y)
    decode(y, PositionY);
}

} // namespace ht
