// THtSVGWriter: the text builder for SVG output. This part holds the path
// data commands: a command letter is written only when it changes, numbers
// have at most 4 decimals, and a blank separates numbers only where needed.
//
//   ht::THtSVGWriter w(256);
//   w.Move(1, 2);        // "M1 2"
//   w.LineTo(3, 4);      // " 3 4 ": a line after a move needs no letter
//   w.LineRel(0, 5);     // "v5 "
//   w.Z();               // "z"
//   ht::hstring d = w.GetAsString();
#pragma once

#include "htcore/foundation/fast_string.h"

namespace ht {

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
};

} // namespace ht
