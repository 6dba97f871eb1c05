#include "htcore/graphics/svg_writer.h"

namespace ht {

THtSVGWriter& THtSVGWriter::Com(char16_t ACommand) {
  if (ACommand != FLastCommand) {
    AddChar(ACommand);
  } else {
    char16_t last = LastChar();
    if (last >= u'0' && last <= u'9')
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

} // namespace ht
