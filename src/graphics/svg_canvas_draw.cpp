// The SVG canvas's elements: outlines, fills and gradients, text, images
// and links.
#include "htcore/document/html_colours.h"
#include "htcore/foundation/base64.h"
#include "htcore/foundation/number_format.h"
#include "htcore/graphics/font_style.h"
#include "htcore/graphics/images.h"
#include "htcore/graphics/svg_canvas.h"
#include "htcore/style/css_style_set.h"

#include <algorithm>
#include <cmath>

namespace ht {

namespace {

// A clear pen draws nothing; the element would only be an invisible stroke.
bool draws(const THtPen& Pen) { return Pen.GetPenStyle() != hpsClear; }

bool is_gradient(const THtBrush& B) { return B.Kind == hbGradient || B.Kind == hbRadial; }

// Sides in order whatever the signs of the size: SVG refuses negative sizes.
void order(float& X, float& Y, float& w, float& h) {
  if (w < 0)
    X += w, w = -w;
  if (h < 0)
    Y += h, h = -h;
}

void put_rect(THtSVGWriter& w, float X, float Y, float W, float H) {
  w.s(u"x=\"").F(X).s(u"\" y=\"").F(Y).s(u"\" width=\"").F(W).s(u"\" height=\"").F(H);
}

void put_solid(THtSVGWriter& w, uint32_t Color) {
  w.s(u"\" fill=\"").Color(Color | 0xFF000000).s(u"\" fill-opacity=\"").Opacity(Color);
}

void put_gradient_style(THtSVGWriter& w, const hstring& Id) {
  w.s(u"style=\"fill:url(#").s(Id).s(u")\"");
}

// The end of a filled rect or ellipse after its last number: the gradient's
// style when there is one, else the solid colour and its opacity.
void end_fill(THtSVGWriter& w, const hstring* GradientId, uint32_t Color) {
  if (GradientId) {
    w.s(u"\" ");
    put_gradient_style(w, *GradientId);
    w.s(u"/>");
  } else {
    put_solid(w, Color);
    w.s(u"\"/>");
  }
}

bool is_name_start(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c == u':' || c >= 0xC0;
}

// Attribute names are written as given, so one that XML could not read is left out.
bool is_xml_name(std::u16string_view s) {
  if (s.empty() || !is_name_start(s[0]))
    return false;
  for (char16_t c : s)
    if (!is_name_start(c) && !(c >= u'0' && c <= u'9') && c != u'-' && c != u'.')
      return false;
  return true;
}

// The MIME type of a data URI. Formats the image knows get their own type,
// so that every reader decodes them; only unknown bytes keep the generic one.
std::u16string_view mime_type(THtImageFormat F) {
  switch (F) {
  case hifPNG:
    return u"image/png";
  case hifJPEG:
    return u"image/jpeg";
  case hifGIF:
    return u"image/gif";
  case hifSVG:
    return u"image/svg+xml";
  case hifIcon:
    return u"image/x-icon";
  case hifTIFF:
    return u"image/tiff";
  case hifBitmap:
    return u"image/bmp";
  default:
    return u"image/bitmap";
  }
}

// Width estimate in em for a font without metrics.
float char_em(char16_t c) {
  if (c == u' ')
    return 0.28f;
  if (c < 0x80) {
    if (std::u16string_view(u"il.,:;'!|`").find(c) != std::u16string_view::npos)
      return 0.28f;
    if (std::u16string_view(u"fjrt()[]{}\"-/\\").find(c) != std::u16string_view::npos)
      return 0.36f;
    if (c == u'm' || c == u'w' || c == u'M' || c == u'W' || c == u'@')
      return 0.85f;
    if (c >= u'A' && c <= u'Z')
      return 0.68f;
    return 0.55f;
  }
  if ((c >= 0x1100 && c <= 0x115F) || (c >= 0x2E80 && c <= 0xA4CF) || (c >= 0xAC00 && c <= 0xD7A3) ||
      (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFF00 && c <= 0xFF60))
    return 1.0f;
  if (c >= 0xDC00 && c <= 0xDFFF)
    return 0; // the second half of a pair: the first one counted
  return 0.6f;
}

} // namespace

bool THtSVGCanvas::CheckAsGradientBrush(const THtBrush& Brush) {
  size_t n = std::min(Brush.GradientColors.size(), Brush.GradientPositions.size());
  if (!is_gradient(Brush) || n == 0)
    return false;
  THtSVGWriter& w = *FWriter;
  bool linear = Brush.Kind == hbGradient;
  TFastString id(16);
  id.Add(linear ? u"lg" : u"rg").Add(FLastGradientID++);
  FLastGradient = id.GetAsString();
  if (linear) {
    // GradientRect is the box the CSS angle runs across; the element wants
    // the two end points of that direction.
    TRectF ends = Brush.CalcGradientRect();
    w.s(u"<linearGradient id=\"").s(FLastGradient).s(u"\" gradientUnits=\"userSpaceOnUse\" x1=\"");
    w.F(ends.Left).s(u"\" y1=\"").F(ends.Top).s(u"\" x2=\"").F(ends.Right).s(u"\" y2=\"").F(ends.Bottom);
  } else {
    w.s(u"<radialGradient id=\"").s(FLastGradient).s(u"\" gradientUnits=\"userSpaceOnUse\" cx=\"");
    w.F(Brush.CX).s(u"\" cy=\"").F(Brush.CY).s(u"\" r=\"").F(Brush.Radius).s(u"\" fx=\"").F(Brush.FX);
    w.s(u"\" fy=\"").F(Brush.FY);
  }
  w.Ch(u'"');
  hstring t = Brush.FMatrix.AsString(false);
  if (!t.empty())
    w.s(u" gradientTransform=\"").s(t).Ch(u'"');
  w.Ch(u'>');
  for (size_t i = 0; i < n; ++i) {
    if (i)
      w.Ch(u' ');
    uint32_t c = Brush.GradientColors[i];
    w.s(u"<stop offset=\"").F(Brush.GradientPositions[i]).s(u"\" stop-color=\"").Color(c | 0xFF000000);
    w.s(u"\" stop-opacity=\"").Opacity(c).s(u"\"/>");
  }
  w.s(linear ? u"</linearGradient>" : u"</radialGradient>");
  return true;
}

void THtSVGCanvas::DrawPath(THtPen& Pen, THtPath& Path) {
  if (draws(Pen) && !Path.AsString().empty())
    FWriter->StrokePath(Path, Pen);
}

void THtSVGCanvas::FillPath(THtBrush& Brush, THtPath& Path) {
  hstring d = Path.AsString();
  if (d.empty())
    return;
  if (CheckAsGradientBrush(Brush)) {
    THtSVGWriter style(32);
    style.s(u"fill:url(#").s(FLastGradient).Ch(u')');
    FWriter->BeginPath(0, 0, 0, std::u16string_view(style.GetAsString()), false, {});
    FWriter->AddXML(std::u16string_view(d), true).EndPath();
  } else {
    FWriter->Path(std::u16string_view(d), Brush.GetColor(), 0, 0);
  }
}

void THtSVGCanvas::DrawLine(THtPen& Pen, float x1, float y1, float x2, float y2) {
  if (!draws(Pen))
    return;
  THtSVGWriter& w = *FWriter;
  w.s(u"<line x1=\"").F(x1).s(u"\" y1=\"").F(y1).s(u"\" x2=\"").F(x2).s(u"\" y2=\"").F(y2).Ch(u'"');
  w.Stroke(Pen).s(u"/>");
}

void THtSVGCanvas::DrawRectangle(THtPen& Pen, float X, float Y, float w, float h) {
  if (!draws(Pen))
    return;
  order(X, Y, w, h);
  THtSVGWriter& o = *FWriter;
  o.s(u"<rect fill=\"none\" ");
  put_rect(o, X, Y, w, h);
  o.Ch(u'"').Stroke(Pen).s(u"/>");
}

void THtSVGCanvas::DrawEllipse(THtPen& Pen, float X, float Y, float w, float h) {
  if (!draws(Pen))
    return;
  order(X, Y, w, h);
  THtSVGWriter& o = *FWriter;
  o.s(u"<ellipse cx=\"").F(X + w / 2).s(u"\" cy=\"").F(Y + h / 2).s(u"\" rx=\"").F(w / 2);
  o.s(u"\" ry=\"").F(h / 2).s(u"\" fill=\"none\"").Stroke(Pen).s(u"/>");
}

void THtSVGCanvas::RoundRect(THtPen& Pen, const TRectF& R, float RadiusX, float RadiusY) {
  if (!draws(Pen))
    return;
  float X = R.Left, Y = R.Top, w = RW(R), h = RH(R);
  order(X, Y, w, h);
  THtSVGWriter& o = *FWriter;
  o.s(u"<rect fill=\"none\" ");
  put_rect(o, X, Y, w, h);
  o.s(u"\" rx=\"").F(std::fabs(RadiusX)).s(u"\" ry=\"").F(std::fabs(RadiusY)).Ch(u'"');
  o.Stroke(Pen).s(u"/>");
}

void THtSVGCanvas::FillRectangle(THtBrush& Brush, float X, float Y, float w, float h) {
  order(X, Y, w, h);
  bool gradient = CheckAsGradientBrush(Brush);
  THtSVGWriter& o = *FWriter;
  o.s(u"<rect ");
  put_rect(o, X, Y, w, h);
  end_fill(o, gradient ? &FLastGradient : nullptr, Brush.GetColor());
}

void THtSVGCanvas::FillEllipse(THtBrush& Brush, float X, float Y, float w, float h) {
  order(X, Y, w, h);
  bool gradient = CheckAsGradientBrush(Brush);
  THtSVGWriter& o = *FWriter;
  o.s(u"<ellipse cx=\"").F(X + w / 2).s(u"\" cy=\"").F(Y + h / 2).s(u"\" rx=\"").F(w / 2);
  o.s(u"\" ry=\"").F(h / 2);
  end_fill(o, gradient ? &FLastGradient : nullptr, Brush.GetColor());
}

void THtSVGCanvas::FillRoundRect(THtBrush& Brush, const TRectF& R, float RadiusX, float RadiusY) {
  if (RadiusX == 0 && RadiusY == 0) {
    FillRectangle(Brush, R);
    return;
  }
  float X = R.Left, Y = R.Top, w = RW(R), h = RH(R);
  order(X, Y, w, h);
  RadiusX = std::fabs(RadiusX), RadiusY = std::fabs(RadiusY);
  THtSVGWriter& o = *FWriter;
  if (CheckAsGradientBrush(Brush)) {
    o.s(u"<rect ");
    put_gradient_style(o, FLastGradient);
    o.s(u" stroke=\"none\" ");
    put_rect(o, X, Y, w, h);
    o.s(u"\" rx=\"").F(RadiusX).s(u"\" ry=\"").F(RadiusY).s(u"\"/>");
  } else {
    o.s(u"<rect  ");
    put_rect(o, X, Y, w, h);
    o.s(u"\" rx=\"").F(RadiusX).s(u"\" ry=\"").F(RadiusY).Ch(u'"');
    uint32_t c = Brush.GetColor();
    o.s(u" fill=\"").Color(c | 0xFF000000).s(u"\" fill-opacity=\"").Opacity(c).s(u"\" stroke=\"none\"/>");
  }
}

float THtSVGCanvas::MeasureString(const hstring& s, THtFont& Font, const THtTextStyle& TextStyle, float Scale,
                                  int AFirstChar, int ALength) {
  if (THtCanvas* r = Ref())
    return r->MeasureString(s, Font, TextStyle, Scale, AFirstChar, ALength);
  int len = static_cast<int>(s.size());
  int first = std::clamp(AFirstChar, 1, len + 1) - 1;
  int count = ALength < 0 ? len - first : std::min(ALength, len - first);
  float em = 0;
  for (int i = first; i < first + count; ++i)
    em += char_em(s[static_cast<size_t>(i)]);
  float width = em * Font.FHeight;
  if (Font.FStyle & HtFontStyleBit(hfsBold))
    width *= 1.08f;
  return Scale > 0 ? width * Scale : width;
}

void THtSVGCanvas::DrawString(const hstring& s, const TRectF& R, THtFont& Font, const THtTextStyle& TextStyle,
                              int AFirstChar, int ALength) {
  TCSSStyleSet set;
  set.SetValue(u"font-family"_hs, Font.FName);
  set.SetValue(u"font-size"_hs, HtFormatDecimal(Font.FHeight, 2) + u"px"_hs);
  set.SetValue(u"fill"_hs, htmlColortoStr(TextStyle.Color));
  if (Font.FStyle & HtFontStyleBit(hfsBold))
    set.SetValue(u"font-weight"_hs, u"bold"_hs);
  if (Font.FStyle & HtFontStyleBit(hfsItalic))
    set.SetValue(u"font-style"_hs, u"italic"_hs);

  // A font without metrics still puts its text inside the box.
  float ascent = Font.Ascent > 0 ? Font.Ascent : Font.FHeight * 0.8f;
  THtSVGWriter& w = *FWriter;
  w.s(u"<text x=\"").F(R.Left).s(u"\" y=\"").F(R.Top + ascent).Ch(u'"');
  for (int i = 0; i < FCustomAttributes.Count(); ++i) {
    hstring name = FCustomAttributes.Names(i);
    if (!is_xml_name(std::u16string_view(name)))
      continue;
    w.Ch(u' ').s(name).s(u"=\"");
    w.AddXML(std::u16string_view(FCustomAttributes.ValueFromIndex(i)), true).Ch(u'"');
  }
  FCustomAttributes.Clear();

  hstring cls;
  FIndexer.GetSVGClass(set, cls);
  if (!cls.empty())
    w.s(u" class=\"").s(cls).Ch(u'"');
  bool under = Font.FStyle & HtFontStyleBit(hfsUnderline), strike = Font.FStyle & HtFontStyleBit(hfsStrikeOut);
  if (under || strike)
    set.SetValue(u"text-decoration"_hs, under && strike ? u"underline line-through"_hs
                                        : under          ? u"underline"_hs
                                                         : u"line-through"_hs);
  static const char16_t* const kModes[] = {u"vertical-rl", u"vertical-lr", u"sideways-rl", u"sideways-lr"};
  int mode = static_cast<int>(TextStyle.WritingMode);
  if (mode >= 1 && mode <= 4)
    set.SetValue(u"writing-mode"_hs, hstring(kModes[mode - 1]));
  hstring rest = set.GetAsString();
  if (!rest.empty())
    w.s(u" style=\"").AddXML(std::u16string_view(rest), true).Ch(u'"');

  std::u16string_view text(s);
  size_t first = static_cast<size_t>(std::clamp(AFirstChar, 1, static_cast<int>(text.size()) + 1) - 1);
  text = text.substr(first);
  if (ALength >= 0)
    text = text.substr(0, static_cast<size_t>(ALength));
  w.Ch(u'>').AddXML(text, false).s(u"</text>\r\n");
}

void THtSVGCanvas::DrawImage(THtImage& Image, const TRectF& R, float Opacity) {
  // A recorded picture is drawing calls: replayed, it stays vector output.
  if (Image.HasRecording()) {
    THtCanvas::DrawImage(Image, R, Opacity);
    return;
  }
  TBytes bytes;
  if (Image.Source.empty()) {
    if (Image.GetLoaded())
      bytes = Image.AsBytes();
    if (bytes.empty())
      return;
  }
  THtSVGWriter& w = *FWriter;
  w.s(u"<image x=\"").F(R.Left).s(u"\" y=\"").F(R.Top).Ch(u'"');
  if (R.Right > R.Left)
    w.s(u" width=\"").F(RW(R)).Ch(u'"');
  if (R.Bottom > R.Top)
    w.s(u" height=\"").F(RH(R)).Ch(u'"');
  if (Opacity >= 0 && Opacity < 1)
    w.s(u" opacity=\"").F2(Opacity).Ch(u'"');
  if (!Image.Source.empty()) {
    w.s(u" xlink:href=\"").AddXML(std::u16string_view(Image.Source), true).s(u"\"/>");
  } else {
    THtImageFormat f = THtImage::GetFormat(bytes, Image.Format);
    w.s(u" xlink:href=\"data:").s(mime_type(f)).s(u";base64,").s(Base64EncodeNoLF(bytes)).s(u"\"/>");
  }
}

void THtSVGCanvas::BeginLink(const hstring& Href, const hstring& Title) {
  THtSVGWriter& w = *FWriter;
  w.s(u"<a href=\"").AddXML(std::u16string_view(Href), true).s(u"\" title=\"");
  w.AddXML(std::u16string_view(Title), true).s(u"\">");
}

void THtSVGCanvas::EndLink() { FWriter->s(u"</a>"); }

void THtSVGCanvas::DrawLink(const TRectF&, const hstring& Href, bool IsAnchor) {
  if (!IsAnchor)
    return;
  int i = FCustomAttributes.IndexOfName(u"id");
  if (i >= 0)
    FWriter->s(u"<a id=\"").AddXML(std::u16string_view(FCustomAttributes.ValueFromIndex(i)), true).s(u"\"></a>");
  FCustomAttributes.SetValue(u"id", Href);
}

} // namespace ht
