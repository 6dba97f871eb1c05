// A minimal host canvas: the four primitives every canvas must supply
// (DrawPath, FillPath, DrawString, MeasureString), drawing into a grid of
// characters. Ellipses, round rectangles, widgets and path data all reach it
// as paths through the base class.
//
//   cmake -S examples/canvas -B build-example -DCMAKE_PREFIX_PATH=<install prefix>
//   cmake --build build-example && build-example/ascii_canvas
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <htcore/graphics/canvas.h>
#include <string>
#include <vector>

class TAsciiCanvas : public ht::THtCanvas {
public:
  TAsciiCanvas(int w, int h) : W(w), H(h), Cells(static_cast<size_t>(w * h), ' ') {}

  // Device pixels are the cells: the path goes through the current matrix first.
  void FillPath(ht::THtBrush& Brush, ht::THtPath& Path) override {
    ht::THtCustomPath* p = Device(Path);
    char c = Brush.GetColor() >> 24 == 0 ? ' ' : '#';
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x)
        if (p->ContainsPoint(x + 0.5f, y + 0.5f))
          Cells[static_cast<size_t>(y * W + x)] = c;
    delete p;
  }

  void DrawPath(ht::THtPen&, ht::THtPath& Path) override {
    ht::THtCustomPath* p = Device(Path);
    ht::THtCustomPath lines;
    p->Flatten(2, lines);
    ht::TPointF cur{0, 0}, start{0, 0};
    for (int i = 0; i < lines.Count(); ++i) {
      const ht::THtPathRec& r = lines.GetRec(i);
      ht::TPointF to = r.Kind == ht::prCloseFigure ? start : r.Point;
      if (r.Kind == ht::prMoveTo)
        start = to;
      else
        Line(cur, to);
      cur = to;
    }
    delete p;
  }

  void DrawString(const ht::hstring& s, const ht::TRectF& R, ht::THtFont&, const ht::THtTextStyle&, int,
                  int) override {
    ht::TPointF at = CurrentMatrix()->TransformPoint(ht::TPointF{R.Left, R.Top});
    std::string text = s.toUtf8();
    for (size_t i = 0; i < text.size(); ++i)
      Plot(static_cast<int>(at.X) + static_cast<int>(i), static_cast<int>(at.Y), text[i]);
  }

  float MeasureString(const ht::hstring& s, ht::THtFont&, const ht::THtTextStyle&, float, int, int) override {
    return static_cast<float>(s.size());
  }

  void Print() const {
    for (int y = 0; y < H; ++y)
      std::printf("%.*s\n", W, &Cells[static_cast<size_t>(y * W)]);
  }

private:
  int W, H;
  std::vector<char> Cells;

  ht::THtCustomPath* Device(ht::THtPath& Path) {
    auto* p = static_cast<ht::THtCustomPath*>(Path.FCustomPath->Clone());
    p->Transform(*CurrentMatrix());
    return p;
  }
  void Plot(int x, int y, char c) {
    if (x >= 0 && x < W && y >= 0 && y < H)
      Cells[static_cast<size_t>(y * W + x)] = c;
  }
  void Line(ht::TPointF a, ht::TPointF b) {
    int n = static_cast<int>(std::max(std::abs(b.X - a.X), std::abs(b.Y - a.Y))) + 1;
    for (int i = 0; i <= n; ++i)
      Plot(static_cast<int>(a.X + (b.X - a.X) * i / n), static_cast<int>(a.Y + (b.Y - a.Y) * i / n), '*');
  }
};

int main() {
  TAsciiCanvas c(60, 20);
  ht::THtCanvasScene scene;
  scene.Init({0, 0, 60, 20}, &c);
  c.BeginScene(scene);
  c.FillEllipse(c.GetBrush(0xFF3366CC), 2, 2, 24, 16);
  c.RoundRect(c.GetPen(0xFF000000, 1), {30, 2, 58, 10}, 3, 3);
  c.SaveState();
  c.TranslateTransform(34, 10);
  c.ScaleTransform(1.2f, 0.65f);
  ht::THtCustomPath heart;
  heart.Parse(u"M8 7 C8 3 0 3 0 7 C0 10 8 12 8 14 C8 12 16 10 16 7 C16 3 8 3 8 7 z");
  c.FillPath(c.GetBrush(0xFFCC0000), heart);
  c.RestoreState();
  ht::THtFont font;
  c.DrawString(u"htcore", {2, 19, 16, 20}, font, ht::HtDefaultTextStyle, 1, -1);
  c.EndScene();
  c.Print();
  return 0;
}
