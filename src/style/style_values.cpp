// Transforms, shadows, box reflections and column rules.
#include "htcore/style/style_values.h"

#include "htcore/foundation/text_utils.h"

namespace ht {

namespace {

bool is(const TCSSToken* t, std::u16string_view word) { return t && SameText(t->Name.view(), word); }

bool is_length(const TCSSToken* t) {
  return t && (t->CType == ctNumber || t->CType == ctPercentage || t->CType == ctDimension ||
               (t->CType == ctFunction && t->Name == u"calc"));
}

bool is_colour_token(const TCSSToken* t) {
  return t && (t->CType == ctIdent || t->CType == ctHash || t->CType == ctFunction);
}

void decode(TMeasure& m, const TCSSTokenSequence& seq, const TMeasureContext* style) {
  m.Init(style);
  m.Decode(seq);
  m.Style = style;
}

float param(const TTransformItem* item, size_t index, float neutral) {
  if (!item || index >= item->Params.size())
    return neutral;
  TMeasure m = item->Params[index];
  return m.GetFPixels();
}

} // namespace

// --- TTransform ---

void TTransform::Clear() {
  Items.clear();
  OriginX.Init(Style);
  OriginY.Init(Style);
}

void TTransform::Decode(TCSSTokenSequence& Seq) {
  Items.clear();
  TTransformType kind;
  while (Seq.T && Seq.T->CType == ctFunction && IsEnum2(u"tt", Seq.T->Name.view(), kind) && kind != ttNone) {
    TTransformItem item;
    item.Kind = kind;
    Seq.Next();
    if (Seq.T && Seq.T->CType == ctOpenPar)
      Seq.Next();
    for (; Seq.T && Seq.T->CType != ctClosePar; Seq.Next()) {
      if (Seq.T->CType == ctComma || Seq.T->CType == ctSpace)
        continue;
      TMeasure m;
      decode(m, Seq, Style);
      item.Params.push_back(m);
    }
    if ((kind == ttTranslate || kind == ttTranslate3d || kind == ttScale) && item.Params.size() < 2) {
      TMeasure second;
      second.Init(Style);
      if (!item.Params.empty())
        second = item.Params[0];
      if (kind != ttScale) {
        second.Init(Style);
        second.Flags = {mfNotAuto, mfZero};
        second.FMUnit = muPX;
      }
      item.Params.push_back(second);
    }
    Items.push_back(std::move(item));
    if (!Seq.T)
      break;
    Seq.Next();
  }
}

void TTransform::DecodeOrigin(TCSSTokenSequence& Seq) {
  if (!Seq.T)
    return;
  decode(OriginX, Seq, Style);
  if (!Seq.Next())
    return;
  if (OriginX.Flags.Contains(mfTop) || OriginX.Flags.Contains(mfBottom)) {
    OriginY = OriginX;
    decode(OriginX, Seq, Style);
  } else {
    decode(OriginY, Seq, Style);
  }
}

const TTransformItem* TTransform::Find(TTransformType Kind) const noexcept {
  for (const TTransformItem& i : Items)
    if (i.Kind == Kind)
      return &i;
  return nullptr;
}

float TTransform::TranslateX() const {
  if (const TTransformItem* i = Find(ttTranslateX))
    return param(i, 0, 0);
  if (const TTransformItem* i = Find(ttTranslate))
    return param(i, 0, 0);
  return param(Find(ttTranslate3d), 0, 0);
}

float TTransform::TranslateY() const {
  if (const TTransformItem* i = Find(ttTranslateY))
    return param(i, 0, 0);
  if (const TTransformItem* i = Find(ttTranslate))
    return param(i, 1, 0);
  return param(Find(ttTranslate3d), 1, 0);
}

float TTransform::ScaleX() const {
  if (const TTransformItem* i = Find(ttScaleX))
    return param(i, 0, 1);
  return param(Find(ttScale), 0, 1);
}

float TTransform::ScaleY() const {
  if (const TTransformItem* i = Find(ttScaleY))
    return param(i, 0, 1);
  return param(Find(ttScale), 1, 1);
}

float TTransform::Rotate() const { return param(Find(ttRotate), 0, 0); }

float TTransform::RotateX() const { return param(Find(ttRotateX), 0, 0); }

// --- TElementShadow ---

void TElementShadow::Reset() {
  OffsetX.Init(Style);
  OffsetY.Init(Style);
  Blur.Init(Style);
  Spread.Init(Style);
  Color = 0;
  Inset = false;
  Strength = 0;
}

bool TElementShadow::NoShadow() const noexcept {
  return Strength == 0 || (OffsetX.GetAuto() && OffsetY.GetAuto() && Blur.GetAuto());
}

void TElementShadow::Parse(TCSSTokenSequence& Seq) {
  Reset();
  if (is(Seq.T, u"none"))
    return;
  // Words may stand in any order; only lengths fill the offsets and the blur,
  // so "2px 2px red" keeps its colour. The spread is read past but not kept.
  TMeasure* lengths[] = {&OffsetX, &OffsetY, &Blur};
  size_t n = 0;
  for (; Seq.T && Seq.T->CType != ctComma; Seq.Next()) {
    uint32_t c = 0;
    if (is(Seq.T, u"inset"))
      Inset = true;
    else if (is_length(Seq.T)) {
      if (n < 3)
        decode(*lengths[n], Seq, Style);
      ++n;
      if (Seq.T->CType == ctFunction)
        SkipCSSFunction(Seq);
    } else if (is_colour_token(Seq.T) && ReadCSSColor(Seq, c))
      Color = c;
    else if (Seq.T->CType == ctFunction)
      SkipCSSFunction(Seq);
    if (!Seq.T)
      break;
  }
  Strength = 1.0f;
}

void TElementShadow::ParseTextShadow(TCSSTokenSequence& Seq) {
  Reset();
  uint32_t c = 0;
  if (is_colour_token(Seq.T)) {
    if (ReadCSSColor(Seq, c))
      Color = c;
    Seq.Next();
  }
  for (TMeasure* m : {&OffsetX, &OffsetY, &Blur}) {
    if (!is_length(Seq.T))
      break;
    decode(*m, Seq, Style);
    Seq.Next();
  }
  if (is_colour_token(Seq.T) && ReadCSSColor(Seq, c))
    Color = c;
  Strength = 1.0f;
}

// --- TBoxReflect ---

bool TBoxReflect::Decode(TCSSTokenSequence& Seq) {
  Offset.Init(Style);
  Gradient.Clear(Style);
  TCSSBoxReflect d;
  if (!Seq.T || Seq.T->CType != ctIdent || !IsEnum2(u"br", Seq.T->Name.view(), d)) {
    Direction = brNone;
    return false;
  }
  Direction = d;
  for (Seq.Next(); Seq.T; Seq.Next()) {
    const TCSSToken& t = *Seq.T;
    if (t.CType == ctNumber || t.CType == ctPercentage || t.CType == ctDimension) {
      decode(Offset, Seq, Style);
      continue;
    }
    if (t.CType != ctFunction || t.Name != u"linear-gradient")
      continue;
    Seq.Next(2);
    if (is(Seq.T, u"to"))
      Seq.Next();
    TGradientDirection gd;
    if (Seq.T && Seq.T->CType == ctIdent && IsEnum2(u"gs", Seq.T->Name.view(), gd)) {
      Gradient.Direction = gd;
      Gradient.Angle = GradientAngle(gd);
      Seq.Next();
    }
    for (; Seq.T && Seq.T->CType != ctClosePar; Seq.Next()) {
      const TCSSToken& s = *Seq.T;
      if (s.CType == ctPercentage || s.CType == ctDimension) {
        if (!Gradient.Stops.empty()) {
          decode(Gradient.Stops.back().Position, Seq, Style);
        }
        continue;
      }
      uint32_t c = 0;
      if (is_colour_token(&s) && ReadCSSColor(Seq, c)) {
        TGradientStop stop;
        stop.Position.Init(Style);
        stop.Position.Flags = {mfNotAuto};
        stop.Position.FMUnit = muPercent;
        stop.Position.FValue = Gradient.Stops.empty() ? 0 : 100;
        if (Gradient.Stops.empty())
          stop.Position.Flags.Include(mfZero);
        stop.Color = c;
        Gradient.Stops.push_back(stop);
      }
    }
    if (!Seq.T)
      break;
  }
  return true;
}

// --- TCSSColumnRule ---

void TCSSColumnRule::Decode(TCSSTokenSequence& Seq, const TMeasureContext* Context) {
  Width.Init(Context);
  Style = lsNone;
  Color = 0;
  for (; Seq.T; Seq.Next()) {
    const TCSSToken& t = *Seq.T;
    TLineStyle ls;
    uint32_t c = 0;
    if (is_length(&t) || is(&t, u"thin") || is(&t, u"medium") || is(&t, u"thick"))
      decode(Width, Seq, Context);
    else if (t.CType == ctIdent && IsEnum2(u"ls", t.Name.view(), ls))
      Style = ls;
    else if (is_colour_token(&t) && ReadCSSColor(Seq, c))
      Color = c;
  }
}

} // namespace ht
