// THtSVGWriter: the text builder for SVG output. Path data commands write a
// command letter only when it changes, numbers have at most 4 decimals, and a
// blank separates numbers only where needed. Element helpers write the fixed
// templates of the SVG canvas: strokes and dashes, paths, lines, circles,
// ellipses, rectangles and text.
//
//   ht::THtSVGWriter w(256);
//   w.Move(1, 2);        // "M1 2"
//   w.LineTo(3, 4);      // " 3 4 ": a line after a move needs no letter
//   w.LineRel(0, 5);     // "v5 "
//   w.Z();               // "z"
//   w.Circle(5, 5, 2, 0xFFFF0000, 0, 0);   // <circle r="2" cx="5" cy="5" fill="#FF0000"/>
//   ht::hstring svg = w.GetAsString();
//
// Colours are 0xAARRGGBB. Attribute and text values pass through AddXML, so
// whatever the caller hands in, the output stays well-formed XML.
#pragma once

#include "htcore/foundation/fast_string.h"
#include "htcore/graphics/canvas_types.h"

#include <span>
#include <string_view>

namespace ht {

class THtPath;

class THtSVGWriter : public TFastString {
public:
  explicit THtSVGWriter(int ADelta = 0x100000) noexcept : TFastString(ADelta) {}

  // The last path command written; a move is remembered as a line.
  char16_t FLastCommand = 0;

  THtSVGWriter& F(double Value) {
    Add(Value, 4, true);
    return *this;
  }
  THtSVGWriter& FS(float Value) {
    F(Value);
    AddChar(u' ');
    return *this;
  }
  THtSVGWriter& s(std::u16string_view Value) {
    Add(Value);
    return *this;
  }
  // A literal: its length is known at compile time.
  template <size_t N> THtSVGWriter& s(const char16_t (&Literal)[N]) {
    Add(Literal, static_cast<ptrdiff_t>(N - 1));
    return *this;
  }
  THtSVGWriter& s(const hstring& Value) {
    Add(Value);
    return *this;
  }
  THtSVGWriter& Ch(char16_t Value) {
    AddChar(Value);
    return *this;
  }
  // An integer in decimal.
  THtSVGWriter& N(int64_t Value) {
    Add(Value);
    return *this;
  }
  // Text escaped for XML content (Attr false) or a quoted attribute value
  // (Attr true): markup characters become references, and what XML cannot
  // carry at all (control codes, lone surrogates, U+FFFE/U+FFFF) is dropped
  // or replaced. U+00A0 is written as a plain blank in content.
  THtSVGWriter& AddXML(std::u16string_view Value, bool Attr);
  // A number with two decimals at most: "0.5" for alpha 128/255.
  THtSVGWriter& F2(double Value);
  // The opacity of a colour's alpha byte, two decimals.
  THtSVGWriter& Opacity(uint32_t AColor) { return F2(static_cast<double>(AColor >> 24) / 255.0); }

  THtSVGWriter& Com(char16_t ACommand);
  THtSVGWriter& Move(float X, float Y);
  THtSVGWriter& MoveRel(float dx, float dy);
  THtSVGWriter& LineTo(float X, float Y);
  // "h" or "v" when exactly one of the two is 0.
  THtSVGWriter& LineRel(float dx, float dy);
  THtSVGWriter& h(float Value);
  THtSVGWriter& HRel(float Delta);
  THtSVGWriter& V(float Value);
  THtSVGWriter& VRel(float Delta);
  THtSVGWriter& Arc(float Rx, float Ry, float Angle, bool Large, bool Sweep, float X, float Y);
  THtSVGWriter& Z() { return Com(u'z'); }

  // "#RRGGBB", or "#RRGGBBAA" for a colour that is not opaque.
  THtSVGWriter& Color(uint32_t AColor);
  // ` stroke="C" stroke-width="W"`.
  THtSVGWriter& Stroke(uint32_t AColor, float AWidth);
  // The same from a pen, with its dashes: the pen's own dash lengths when it
  // has any, else the pattern of its style.
  THtSVGWriter& Stroke(const THtPen& APen);
  // `stroke="C" stroke-width="W"` (no leading blank) and the dashes: DashArray
  // when given, else the pattern of AStyle.
  THtSVGWriter& StrokeStyle(uint32_t AColor, float AWidth, THtPenStyle AStyle,
                            std::span<const float> DashArray = {});
  // The same as declarations: `stroke:C; stroke-width:W;` and the dashes.
  THtSVGWriter& StrokeStyleCSS(uint32_t AColor, float AWidth, THtPenStyle AStyle,
                               std::span<const float> DashArray = {});
  // The dash pattern of a pen style, as an attribute or as a declaration;
  // nothing for hpsSolid and hpsClear.
  THtSVGWriter& DashAttr(THtPenStyle AStyle, bool CSS = false);
  // A pen's own dash lengths (they are kept as multiples of its width), or
  // else the pattern of its style.
  THtSVGWriter& PenDashes(const THtPen& APen);
  // ` fill="C"` when Fill is not 0, ` stroke="C"` when Stroke is not 0,
  // ` stroke-width="W"` when the width is not 0.
  THtSVGWriter& AddFillStroke(uint32_t Fill, uint32_t Stroke, float StrokeWidth);

  // Opens `<path` with fill, stroke, width, style and rendering attributes,
  // then Attr (raw markup) and ` d="`: the path data follows, EndPath closes.
  THtSVGWriter& BeginPath(uint32_t Fill, uint32_t Stroke, float StrokeWidth, std::u16string_view Style = {},
                          bool CrispEdges = false, std::u16string_view Attr = {});
  THtSVGWriter& EndPath() { return s(u"\"/>"); }
  // A whole path element over ready path data.
  THtSVGWriter& Path(std::u16string_view PathData, uint32_t Fill, uint32_t Stroke, float StrokeWidth);
  THtSVGWriter& Path(const THtPath& APath, uint32_t Fill, uint32_t Stroke, float StrokeWidth);
  // An unfilled path stroked with the pen, dashes as Stroke(APen) writes them.
  THtSVGWriter& StrokePath(const THtPath& APath, const THtPen& Pen);
  THtSVGWriter& Line(float x1, float y1, float x2, float y2, uint32_t Stroke, float StrokeWidth);
  THtSVGWriter& Circle(float CX, float CY, float R, uint32_t Fill, uint32_t Stroke, float StrokeWidth);
  THtSVGWriter& Ellipse(float CX, float CY, float RX, float RY, uint32_t Fill, uint32_t Stroke,
                        float StrokeWidth);
  // Style is a declaration text (escaped here); Attr is raw markup.
  THtSVGWriter& Rect(float X, float Y, float W, float H, uint32_t Fill, uint32_t Stroke, float StrokeWidth,
                     std::u16string_view Style = {}, float RX = 0, float RY = 0, std::u16string_view Attr = {});
  // Value is plain text (escaped here); Attrs is raw markup.
  THtSVGWriter& Text(float X, float Y, std::u16string_view Anchor, std::u16string_view Value,
                     std::u16string_view Style = {}, std::u16string_view Transform = {},
                     std::u16string_view Attrs = {});
};

} // namespace ht
