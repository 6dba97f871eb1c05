// SVG path data into path operations.
#include "graphics/path_internal.h"
#include "htcore/document/string_parser.h"
#include "htcore/foundation/exception.h"

#include <vector>

namespace ht {

namespace {

bool IsLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

bool IsPathChar(char16_t c) {
  return IsLetter(c) || (c >= u'0' && c <= u'9') || c == u'-' || c == u'.' || c == u'+';
}

char16_t Lower(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

TPointF Reflect(TPointF p, TPointF about) { return {2 * about.X - p.X, 2 * about.Y - p.Y}; }

// One parse: the cursor, the current point and the curve points that wait
// for their command to end.
class TPathReader {
public:
  TPathReader(THtPath& APath, const hstring& s) : path(APath), sp(s) {}

  void Run() {
    while (true) {
      while (sp.p < sp.pend && !IsPathChar(*sp.p))
        ++sp.p;
      if (sp.p >= sp.pend)
        break;
      const char16_t* before = sp.p;
      if (IsLetter(*sp.p))
        Command(*sp.p++);
      else
        Numbers();
      // Something that reads as no number at all ("." or "-" alone) is skipped.
      if (sp.p == before)
        ++sp.p;
    }
    Flush();
  }

private:
  THtPath& path;
  TStringParser sp;
  char16_t cmd = 0;
  TPointF cur{0, 0}, start{0, 0};
  bool open = false;
  std::vector<TPointF> pending;
  // The family ('c' or 'q') of the last curve segment and its last control,
  // for the reflected control of s and t.
  char16_t prevFamily = 0;
  TPointF prevCtrl{0, 0};

  float Num() { return static_cast<float>(sp.ReadNumEx()); }

  TPointF Point(bool relative) {
    float x = Num(), y = Num();
    return relative ? TPointF{cur.X + x, cur.Y + y} : TPointF{x, y};
  }

  void Flush() {
    if (pending.empty())
      return;
    char16_t lc = Lower(cmd);
    if (lc == u'c' || lc == u's')
      path.AddBeziers(pending);
    else
      path.AddQBeziers(pending);
    pending.clear();
  }

  // Drawing after a close (or with no move at all) starts at the current point.
  void EnsureFigure() {
    if (open)
      return;
    path.MoveTo(cur.X, cur.Y);
    start = cur;
    open = true;
  }

  void Command(char16_t c) {
    Flush();
    cmd = c;
    switch (Lower(c)) {
    case u'z':
      if (open) {
        path.CloseFigure();
        cur = start;
        open = false;
      }
      prevFamily = 0;
      return;
    case u'm':
    case u'l':
    case u'h':
    case u'v':
    case u'c':
    case u's':
    case u'q':
    case u't':
    case u'a':
      return;
    default:
      throw Exception(hstring(u"Unknown path command ") + hstring(&c, 1));
    }
  }

  void EndCurveGroup(char16_t family) {
    prevFamily = family;
    prevCtrl = pending[pending.size() - 2];
    cur = pending.back();
  }

  void Numbers() {
    switch (cmd) {
    case 0: { // numbers before any command: relative line steps
      TPointF d = Point(false);
      path.AddLine(cur.X, cur.Y, cur.X + d.X, cur.Y + d.Y);
      cur = {cur.X + d.X, cur.Y + d.Y};
      start = cur;
      open = true;
      return;
    }
    case u'z':
    case u'Z':
      Num(); // a stray number after a close is dropped
      return;
    case u'M':
    case u'm':
      cur = Point(cmd == u'm');
      path.MoveTo(cur.X, cur.Y);
      start = cur;
      open = true;
      prevFamily = 0;
      cmd = cmd == u'm' ? u'l' : u'L'; // further pairs are lines
      return;
    case u'L':
    case u'l':
      EnsureFigure();
      cur = Point(cmd == u'l');
      path.LineTo(cur.X, cur.Y);
      break;
    case u'H':
    case u'h': {
      EnsureFigure();
      float x = Num();
      cur.X = cmd == u'h' ? cur.X + x : x;
      path.LineTo(cur.X, cur.Y);
      break;
    }
    case u'V':
    case u'v': {
      EnsureFigure();
      float y = Num();
      cur.Y = cmd == u'v' ? cur.Y + y : y;
      path.LineTo(cur.X, cur.Y);
      break;
    }
    case u'C':
    case u'c':
      EnsureFigure();
      pending.push_back(Point(cmd == u'c'));
      if (pending.size() % 3 == 0)
        EndCurveGroup(u'c');
      return;
    case u'S':
    case u's':
      EnsureFigure();
      if (pending.size() % 3 == 0)
        pending.push_back(prevFamily == u'c' ? Reflect(prevCtrl, cur) : cur);
      pending.push_back(Point(cmd == u's'));
      if (pending.size() % 3 == 0)
        EndCurveGroup(u'c');
      return;
    case u'Q':
    case u'q':
      EnsureFigure();
      pending.push_back(Point(cmd == u'q'));
      if (pending.size() % 2 == 0)
        EndCurveGroup(u'q');
      return;
    case u'T':
    case u't':
      EnsureFigure();
      pending.push_back(prevFamily == u'q' ? Reflect(prevCtrl, cur) : cur);
      pending.push_back(Point(cmd == u't'));
      EndCurveGroup(u'q');
      return;
    case u'A':
    case u'a':
      EnsureFigure();
      Arc(cmd == u'a');
      break;
    }
    prevFamily = 0;
  }

  void Arc(bool relative) {
    double rx = Num(), ry = Num(), rot = Num();
    bool large = sp.ReadInt1() != 0, sweep = sp.ReadInt1() != 0;
    TPointF to = Point(relative);
    if (to == cur)
      return;
    if (rx == 0 || ry == 0) { // a flat ellipse is the straight line between the ends
      path.LineTo(to.X, to.Y);
      cur = to;
      return;
    }
    double cx, cy, a0, sw;
    CalcArc(cur.X, cur.Y, to.X, to.Y, rx, ry, rot, large, sweep, cx, cy, a0, sw);
    float x = static_cast<float>(cx - rx), y = static_cast<float>(cy - ry);
    float w = static_cast<float>(2 * rx), h = static_cast<float>(2 * ry);
    if (rot == 0) {
      path.AddArc(x, y, w, h, static_cast<float>(a0), static_cast<float>(sw), 1.0f);
    } else {
      THtCustomPath tmp;
      tmp.AddArc(x, y, w, h, static_cast<float>(a0), static_cast<float>(sw), 1.0f);
      THtMatrixData m;
      m.Translate(static_cast<float>(-cx), static_cast<float>(-cy));
      m.Rotate(static_cast<float>(rot));
      m.Translate(static_cast<float>(cx), static_cast<float>(cy));
      tmp.Transform(m);
      // The arc starts at the current point: its leading move would break the figure.
      if (tmp.FCount > 0 && tmp.FRecs[0].Kind == prMoveTo) {
        tmp.FRecs.erase(tmp.FRecs.begin());
        --tmp.FCount;
      }
      path.AddPath(tmp);
    }
    cur = to;
  }
};

} // namespace

void THtPath::Parse(const hstring& s) { TPathReader(*this, s).Run(); }

} // namespace ht
