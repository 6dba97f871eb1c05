#include "htcore/graphics/svg_writer.h"

#include "htcore/document/html_colours.h"
#include "htcore/graphics/path.h"

#include <cmath>

namespace ht {

namespace {

// Dash patterns by pen style, attribute and declaration forms; solid and
// clear pens have none.
constexpr std::u16string_view kDashAttr[] = {u"", u" stroke-dasharray=\"8\"", u" stroke-dasharray=\"1\"",
                                             u" stroke-dasharray=\"8,1,1,1\"",
                                             u" stroke-dasharray=\"8,1,1,1,1,1\"", u""};
constexpr std::u16string_view kDashCSS[] = {u"", u" stroke-dasharray:8;", u" stroke-dasharray:1;",
                                            u" stroke-dasharray:8,1,1,1;", u" stroke-dasharray:8,1,1,1,1,1;",
                                            u""};

constexpr char16_t kHex[] = u"0123456789ABCDEF";

bool is_digit(char16_t c) { return c >= u'0' && c <= u'9'; }

// Numbers joined by commas, each times Factor.
void put_list(THtSVGWriter& w, std::span<const float> Values, float Factor) {
  for (size_t i = 0; i < Values.size(); ++i) {
    if (i)
      w.AddChar(u',');
    w.F(Values[i] * Factor);
  }
}

} // namespace

THtSVGWriter& THtSVGWriter::AddXML(std::u16string_view Value, bool Attr) {
  const char16_t* p = Value.data();
  const char16_t* end = p + Value.size();
  const char16_t* run = p;
  auto flush = [&](const char16_t* at) { Add(run, at - run); };
  for (; p < end; ++p) {
    char16_t c = *p;
    if (c >= u'?' && c < 0xA0) [[likely]]
      continue;
    std::u16string_view rep;
    char16_t one = 0;
    switch (c) {
    case u'&':
      rep = u"&amp;";
      break;
    case u'<':
      rep = u"&lt;";
      break;
    case u'>':
      rep = u"&gt;";
      break;
    case u'"':
      if (!Attr)
        continue;
      rep = u"&quot;";
      break;
    case u'\t':
      if (!Attr)
        continue;
      rep = u"&#9;";
      break;
    case u'\n':
      if (!Attr)
        continue;
      rep = u"&#10;";
      break;
    case u'\r':
      rep = u"&#13;"; // a raw CR would be folded into the line end by a reader
      break;
    case 0xA0:
      if (Attr)
        continue;
      one = u' ';
      break;
    case 0xFFFE:
    case 0xFFFF:
      break; // dropped
    default:
      if (c < 0x20) {
        break; // no XML 1.0 document can carry a control code, not even as a reference
      }
      if (c >= 0xD800 && c <= 0xDBFF) {
        if (p + 1 < end && p[1] >= 0xDC00 && p[1] <= 0xDFFF) {
          ++p; // a whole pair passes
          continue;
        }
        one = 0xFFFD;
        break;
      }
      if (c >= 0xDC00 && c <= 0xDFFF) {
        one = 0xFFFD;
        break;
      }
      continue;
    }
    flush(p);
    if (!rep.empty())
      Add(rep);
    else if (one)
      AddChar(one);
    run = p + 1;
  }
  flush(p);
  return *this;
}

THtSVGWriter& THtSVGWriter::F2(double Value) {
  Add(Value, 2, true);
  return *this;
}

THtSVGWriter& THtSVGWriter::Com(char16_t ACommand) {
  if (ACommand != FLastCommand) {
    AddChar(ACommand);
  } else {
    char16_t last = LastChar();
    if (is_digit(last))
      AddChar(u' ');
  }
  FLastCommand = ACommand == u'M' ? u'L' : ACommand;
  return *this;
}

THtSVGWriter& THtSVGWriter::Move(float X, float Y) {
  Com(u'M').FS(X).F(Y);
  return *this;
}

THtSVGWriter& THtSVGWriter::MoveRel(float dx, float dy) { return Com(u'm').FS(dx).FS(dy); }

THtSVGWriter& THtSVGWriter::LineTo(float X, float Y) { return Com(u'L').FS(X).FS(Y); }

THtSVGWriter& THtSVGWriter::LineRel(float dx, float dy) {
  if (dx == 0 && dy != 0)
    return Com(u'v').FS(dy);
  if (dy == 0 && dx != 0)
    return Com(u'h').FS(dx);
  return Com(u'l').FS(dx).FS(dy);
}

THtSVGWriter& THtSVGWriter::h(float Value) { return Com(u'H').FS(Value); }
THtSVGWriter& THtSVGWriter::HRel(float Delta) { return Com(u'h').FS(Delta); }
THtSVGWriter& THtSVGWriter::V(float Value) { return Com(u'V').FS(Value); }
THtSVGWriter& THtSVGWriter::VRel(float Delta) { return Com(u'v').FS(Delta); }

THtSVGWriter& THtSVGWriter::Arc(float Rx, float Ry, float Angle, bool Large, bool Sweep, float X, float Y) {
  return Com(u'A').FS(Rx).FS(Ry).FS(Angle).FS(Large ? 1.0f : 0.0f).FS(Sweep ? 1.0f : 0.0f).FS(X).FS(Y);
}

THtSVGWriter& THtSVGWriter::Color(uint32_t AColor) {
  // "#RRGGBB" and the alpha byte behind it when the colour is not opaque.
  char16_t* d = Reserve(9);
  d[0] = u'#';
  for (int i = 0; i < 6; ++i)
    d[1 + i] = kHex[(AColor >> (20 - 4 * i)) & 15];
  int n = 7;
  if ((AColor >> 24) != 0xFF) {
    d[7] = kHex[AColor >> 28];
    d[8] = kHex[(AColor >> 24) & 15];
    n = 9;
  }
  FCurrent->Used += n;
  return *this;
}

THtSVGWriter& THtSVGWriter::Stroke(uint32_t AColor, float AWidth) {
  s(u" stroke=\"").Color(AColor).s(u"\" stroke-width=\"").F(AWidth).AddChar(u'"');
  return *this;
}

THtSVGWriter& THtSVGWriter::DashAttr(THtPenStyle AStyle, bool CSS) {
  if (AStyle <= hpsClear)
    s(CSS ? kDashCSS[AStyle] : kDashAttr[AStyle]);
  return *this;
}

THtSVGWriter& THtSVGWriter::PenDashes(const THtPen& APen) {
  if (!APen.Dashes.empty() && APen.GetPenStyle() != hpsClear) {
    s(u" stroke-dasharray=\"");
    put_list(*this, APen.Dashes, APen.GetWidth());
    return s(u"\"");
  }
  return DashAttr(APen.GetPenStyle());
}

THtSVGWriter& THtSVGWriter::Stroke(const THtPen& APen) {
  return Stroke(APen.GetColor(), APen.GetWidth()).PenDashes(APen);
}

THtSVGWriter& THtSVGWriter::StrokeStyle(uint32_t AColor, float AWidth, THtPenStyle AStyle,
                                        std::span<const float> DashArray) {
  s(u"stroke=\"").Color(AColor).s(u"\" stroke-width=\"").F(AWidth).AddChar(u'"');
  if (!DashArray.empty()) {
    s(u" stroke-dasharray=\"");
    put_list(*this, DashArray, 1);
    AddChar(u'"');
  } else {
    DashAttr(AStyle);
  }
  return *this;
}

THtSVGWriter& THtSVGWriter::StrokeStyleCSS(uint32_t AColor, float AWidth, THtPenStyle AStyle,
                                           std::span<const float> DashArray) {
  s(u"stroke:").Color(AColor).s(u"; stroke-width:").F(AWidth).AddChar(u';');
  if (!DashArray.empty()) {
    s(u" stroke-dasharray:");
    put_list(*this, DashArray, 1);
    AddChar(u';');
  } else {
    DashAttr(AStyle, true);
  }
  return *this;
}

THtSVGWriter& THtSVGWriter::AddFillStroke(uint32_t Fill, uint32_t Stroke, float StrokeWidth) {
  if (Fill != 0)
    s(u" fill=\"").Color(Fill).AddChar(u'"');
  if (Stroke != 0)
    s(u" stroke=\"").Color(Stroke).AddChar(u'"');
  if (StrokeWidth != 0)
    s(u" stroke-width=\"").F(StrokeWidth).AddChar(u'"');
  return *this;
}

THtSVGWriter& THtSVGWriter::BeginPath(uint32_t Fill, uint32_t Stroke, float StrokeWidth,
                                      std::u16string_view Style, bool CrispEdges, std::u16string_view Attr) {
  // The opacity goes in an attribute of its own, so the colour is always six digits.
  s(u"<path ");
  if (Fill != 0) {
    s(u" fill=\"").Color(Fill | 0xFF000000).s(u"\" fill-opacity=\"").Opacity(Fill).AddChar(u'"');
  } else if (Attr.find(u"fill=") == std::u16string_view::npos) {
    s(u" fill=\"none\"");
  }
  if (Stroke != 0)
    s(u" stroke=\"").Color(Stroke | 0xFF000000).s(u"\" stroke-opacity=\"").Opacity(Stroke).AddChar(u'"');
  if (StrokeWidth != 0)
    s(u" stroke-width=\"").F2(StrokeWidth).AddChar(u'"');
  if (!Style.empty())
    s(u" style=\"").AddXML(Style, true).AddChar(u'"');
  if (CrispEdges)
    s(u" shape-rendering=\"crispEdges\"");
  AddChar(u' ');
  s(Attr).s(u" d=\"");
  return *this;
}

THtSVGWriter& THtSVGWriter::Path(std::u16string_view PathData, uint32_t Fill, uint32_t Stroke,
                                 float StrokeWidth) {
  BeginPath(Fill, Stroke, StrokeWidth);
  return AddXML(PathData, true).EndPath();
}

THtSVGWriter& THtSVGWriter::Path(const THtPath& APath, uint32_t Fill, uint32_t Stroke, float StrokeWidth) {
  return Path(std::u16string_view(APath.AsString()), Fill, Stroke, StrokeWidth);
}

THtSVGWriter& THtSVGWriter::StrokePath(const THtPath& APath, const THtPen& Pen) {
  s(u"<path fill=\"none\" stroke=\"").Color(Pen.GetColor()).s(u"\" stroke-width=\"").F(Pen.GetWidth());
  AddChar(u'"');
  PenDashes(Pen);
  s(u" d=\"").AddXML(std::u16string_view(APath.AsString()), true);
  return s(u"\"/>");
}

THtSVGWriter& THtSVGWriter::Line(float x1, float y1, float x2, float y2, uint32_t Stroke, float StrokeWidth) {
  s(u"<line x1=\"").F(x1).s(u"\" y1=\"").F(y1).s(u"\" x2=\"").F(x2).s(u"\" y2=\"").F(y2).AddChar(u'"');
  return AddFillStroke(0, Stroke, StrokeWidth).s(u"/>");
}

THtSVGWriter& THtSVGWriter::Circle(float CX, float CY, float R, uint32_t Fill, uint32_t Stroke,
                                   float StrokeWidth) {
  s(u"<circle r=\"").F(R).s(u"\" cx=\"").F(CX).s(u"\" cy=\"").F(CY).AddChar(u'"');
  return AddFillStroke(Fill, Stroke, StrokeWidth).s(u"/>");
}

THtSVGWriter& THtSVGWriter::Ellipse(float CX, float CY, float RX, float RY, uint32_t Fill, uint32_t Stroke,
                                    float StrokeWidth) {
  s(u"<ellipse rx=\"").F(RX).s(u"\" ry=\"").F(RY).s(u"\" cx=\"").F(CX).s(u"\" cy=\"").F(CY).AddChar(u'"');
  return AddFillStroke(Fill, Stroke, StrokeWidth).s(u"/>");
}

THtSVGWriter& THtSVGWriter::Rect(float X, float Y, float W, float H, uint32_t Fill, uint32_t Stroke,
                                 float StrokeWidth, std::u16string_view Style, float RX, float RY,
                                 std::u16string_view Attr) {
  s(u"<rect x=\"").F(X).s(u"\" y=\"").F(Y).s(u"\" width=\"").F(W).s(u"\" height=\"").F(H).AddChar(u'"');
  if (RX != 0)
    s(u" rx=\"").F(RX).AddChar(u'"');
  if (RY != 0)
    s(u" ry=\"").F(RY).AddChar(u'"');
  AddFillStroke(Fill, Stroke, StrokeWidth);
  if (!Style.empty())
    s(u" style=\"").AddXML(Style, true).AddChar(u'"');
  return s(Attr).s(u"/>");
}

THtSVGWriter& THtSVGWriter::Text(float X, float Y, std::u16string_view Anchor, std::u16string_view Value,
                                 std::u16string_view Style, std::u16string_view Transform,
                                 std::u16string_view Attrs) {
  s(u"<text x=\"").F(X).s(u"\" y=\"").F(Y).s(u"\" ");
  if (!Anchor.empty())
    s(u" text-anchor=\"").AddXML(Anchor, true).AddChar(u'"');
  if (!Style.empty())
    s(u" style=\"").AddXML(Style, true).AddChar(u'"');
  if (!Transform.empty())
    s(u" transform=\"").AddXML(Transform, true).AddChar(u'"');
  s(Attrs).AddChar(u'>');
  return AddXML(Value, false).s(u"</text>");
}

} // namespace ht
