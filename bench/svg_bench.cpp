// SVG output: the drawing suite (examples/svg_suite, 31 scenes, 33 pages)
// written as SVG documents by THtSVGCanvas, against cairo's SVG surface
// drawing the same scenes in the same run.
//
// Both sides run the scenes' own code through a THtCanvas: ours is the SVG
// canvas, cairo's is a thin adaptor that turns each call into the matching
// cairo calls (paths replayed record by record, gradients as cairo patterns,
// text with the toy font API, images decoded once from PNG). Primitives are
// the drawing calls the scenes make, counted once; MB/s is each side's own
// output. cairo writes text as glyph outlines, so text scenes cost it more.
#include "bench_inputs.h"
#include "htcore/graphics/images.h"
#include "htcore/graphics/svg_canvas.h"
#include "svg_scenes.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include <cairo-svg.h>
#include <cairo.h>
#endif

namespace {

using namespace ht;

// Counts the drawing calls a scene makes, not those the canvas makes of them.
class TCountingCanvas : public THtSVGCanvas {
public:
  long long Calls = 0;
  int Depth = 0;
  struct TGuard {
    TCountingCanvas& c;
    explicit TGuard(TCountingCanvas& C) : c(C) {
      if (c.Depth++ == 0)
        ++c.Calls;
    }
    ~TGuard() { --c.Depth; }
  };
  void DrawPath(THtPen& P, THtPath& Path) override { TGuard g(*this); THtSVGCanvas::DrawPath(P, Path); }
  void FillPath(THtBrush& B, THtPath& Path) override { TGuard g(*this); THtSVGCanvas::FillPath(B, Path); }
  void DrawLine(THtPen& P, float a, float b, float c, float d) override {
    TGuard g(*this); THtSVGCanvas::DrawLine(P, a, b, c, d);
  }
  void DrawArc(THtPen& P, float X, float Y, float w, float h, float s, float e) override {
    TGuard g(*this); THtSVGCanvas::DrawArc(P, X, Y, w, h, s, e);
  }
  void DrawRectangle(THtPen& P, float X, float Y, float w, float h) override {
    TGuard g(*this); THtSVGCanvas::DrawRectangle(P, X, Y, w, h);
  }
  void DrawEllipse(THtPen& P, float X, float Y, float w, float h) override {
    TGuard g(*this); THtSVGCanvas::DrawEllipse(P, X, Y, w, h);
  }
  void RoundRect(THtPen& P, const TRectF& R, float rx, float ry) override {
    TGuard g(*this); THtSVGCanvas::RoundRect(P, R, rx, ry);
  }
  void FillRectangle(THtBrush& B, float X, float Y, float w, float h) override {
    TGuard g(*this); THtSVGCanvas::FillRectangle(B, X, Y, w, h);
  }
  void FillEllipse(THtBrush& B, float X, float Y, float w, float h) override {
    TGuard g(*this); THtSVGCanvas::FillEllipse(B, X, Y, w, h);
  }
  void FillRoundRect(THtBrush& B, const TRectF& R, float rx, float ry) override {
    TGuard g(*this); THtSVGCanvas::FillRoundRect(B, R, rx, ry);
  }
  void DrawString(const hstring& s, const TRectF& R, THtFont& F, const THtTextStyle& T, int a, int l) override {
    TGuard g(*this); THtSVGCanvas::DrawString(s, R, F, T, a, l);
  }
  void DrawImage(THtImage& I, const TRectF& R, float O) override {
    TGuard g(*this); THtSVGCanvas::DrawImage(I, R, O);
  }
  void DrawWavyLine(float a, float b, float c, float d, THtPen& P) override {
    TGuard g(*this); THtSVGCanvas::DrawWavyLine(a, b, c, d, P);
  }
  using THtSVGCanvas::FillRectangle;
};

struct TSuite {
  long long primitives = 0;
  bench::TInput out; // our documents, for the byte count
};

TSuite& Suite() {
  static TSuite s = [] {
    TSuite r;
    r.out.name = "drawing-suite";
    for (const auto& scene : htcore_svg::Scenes()) {
      for (int page = 0; page < scene.Pages; ++page) {
        TCountingCanvas c;
        htcore_svg::DrawPage(scene, c, page);
        r.primitives += c.Calls;
      }
      for (const hstring& doc : htcore_svg::RenderScene(scene))
        r.out.bytes += doc.toUtf8();
    }
    return r;
  }();
  return s;
}

bench::TPeerTimer g_timer({"cairo"});

void Primitives(benchmark::State& state) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * Suite().primitives);
}

void BM_HtcoreSVG(benchmark::State& state) {
  TSuite& s = Suite();
  g_timer.Run(state, s.out, "htcore", [&] {
    size_t n = 0;
    for (const auto& scene : htcore_svg::Scenes())
      for (const hstring& doc : htcore_svg::RenderScene(scene))
        n += doc.size();
    benchmark::DoNotOptimize(n);
  });
  Primitives(state);
}

#ifdef HTCORE_PEERS

cairo_status_t append(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

struct TPngReader {
  std::span<const uint8_t> bytes;
  size_t at = 0;
};

cairo_status_t read_png(void* closure, unsigned char* data, unsigned int length) {
  auto* r = static_cast<TPngReader*>(closure);
  if (r->at + length > r->bytes.size())
    return CAIRO_STATUS_READ_ERROR;
  std::memcpy(data, r->bytes.data() + r->at, length);
  r->at += length;
  return CAIRO_STATUS_SUCCESS;
}

// The scenes' calls as cairo calls on one SVG surface.
class TCairoCanvas : public THtCanvas {
public:
  cairo_t* cr = nullptr;
  cairo_surface_t* png = nullptr; // the suite's one picture, decoded once

  void Source(uint32_t c) {
    cairo_set_source_rgba(cr, (c >> 16 & 255) / 255.0, (c >> 8 & 255) / 255.0, (c & 255) / 255.0,
                          (c >> 24) / 255.0);
  }
  void Stroke(THtPen& p) {
    Source(p.GetColor());
    cairo_set_line_width(cr, p.GetWidth());
    static const double kDash[][6] = {{}, {8}, {1}, {8, 1, 1, 1}, {8, 1, 1, 1, 1, 1}};
    static const int kCount[] = {0, 1, 1, 4, 6};
    std::vector<double> d;
    for (float v : p.Dashes)
      d.push_back(v * p.GetWidth());
    if (!d.empty())
      cairo_set_dash(cr, d.data(), static_cast<int>(d.size()), 0);
    else if (p.GetPenStyle() < hpsClear)
      cairo_set_dash(cr, kDash[p.GetPenStyle()], kCount[p.GetPenStyle()], 0);
    cairo_stroke(cr);
    cairo_set_dash(cr, nullptr, 0, 0);
  }
  // Solid colour or a gradient pattern as the source; the caller fills.
  void Fill(THtBrush& b) {
    size_t n = std::min(b.GradientColors.size(), b.GradientPositions.size());
    if ((b.Kind != hbGradient && b.Kind != hbRadial) || n == 0) {
      Source(b.GetColor());
      cairo_fill(cr);
      return;
    }
    cairo_pattern_t* pat;
    if (b.Kind == hbGradient) {
      TRectF e = b.CalcGradientRect();
      pat = cairo_pattern_create_linear(e.Left, e.Top, e.Right, e.Bottom);
    } else {
      pat = cairo_pattern_create_radial(b.FX, b.FY, 0, b.CX, b.CY, b.Radius);
    }
    for (size_t i = 0; i < n; ++i) {
      uint32_t c = b.GradientColors[i];
      cairo_pattern_add_color_stop_rgba(pat, b.GradientPositions[i], (c >> 16 & 255) / 255.0,
                                        (c >> 8 & 255) / 255.0, (c & 255) / 255.0, (c >> 24) / 255.0);
    }
    cairo_set_source(cr, pat);
    cairo_fill(cr);
    cairo_pattern_destroy(pat);
  }
  void Ellipse(double x, double y, double w, double h, double start, double sweep) {
    cairo_save(cr);
    cairo_translate(cr, x + w / 2, y + h / 2);
    cairo_scale(cr, w / 2 > 0 ? w / 2 : 1e-9, h / 2 > 0 ? h / 2 : 1e-9);
    double a = start * M_PI / 180, e = (start + sweep) * M_PI / 180;
    if (sweep >= 0)
      cairo_arc(cr, 0, 0, 1, a, e);
    else
      cairo_arc_negative(cr, 0, 0, 1, a, e);
    cairo_restore(cr);
  }
  void Replay(THtPath& path) {
    cairo_new_path(cr);
    const THtCustomPath* p = path.FCustomPath;
    for (int i = 0; p && i < p->FCount; ++i) {
      const THtPathRec& r = p->FRecs[static_cast<size_t>(i)];
      switch (r.Kind) {
      case prMoveTo:
        cairo_move_to(cr, r.Point.X, r.Point.Y);
        break;
      case prLineTo:
        cairo_line_to(cr, r.Point.X, r.Point.Y);
        break;
      case prCurveTo:
        for (size_t k = 0; k + 2 < r.Points.size(); k += 3)
          cairo_curve_to(cr, r.Points[k].X, r.Points[k].Y, r.Points[k + 1].X, r.Points[k + 1].Y,
                         r.Points[k + 2].X, r.Points[k + 2].Y);
        break;
      case prArc:
        Ellipse(r.Points[0].X, r.Points[0].Y, r.Points[1].X, r.Points[1].Y, r.Points[2].X, r.Points[2].Y);
        break;
      case prEllipse:
        cairo_new_sub_path(cr);
        Ellipse(r.Points[0].X, r.Points[0].Y, r.Points[1].X, r.Points[1].Y, 0, 360);
        break;
      case prCloseFigure:
        cairo_close_path(cr);
        break;
      default:
        break;
      }
    }
  }

  void BeginScene(const THtCanvasScene& S) override {
    THtCanvas::BeginScene(S);
    if (S.Scale != 1)
      cairo_scale(cr, S.Scale, S.Scale);
  }
  void SaveState() override {
    THtCanvas::SaveState();
    cairo_save(cr);
  }
  void RestoreState() override {
    THtCanvas::RestoreState();
    cairo_restore(cr);
  }
  void MatrixTransform(const THtMatrixData& M, bool Add) override {
    THtCanvas::MatrixTransform(M, Add);
    cairo_matrix_t m;
    cairo_matrix_init(&m, M.m11, M.m12, M.m21, M.m22, M.dx, M.dy);
    cairo_transform(cr, &m);
  }
  void IntersectClip(const TRectF& R) override {
    cairo_rectangle(cr, R.Left, R.Top, RW(R), RH(R));
    cairo_clip(cr);
  }
  void IntersectClip(THtPath& P) override {
    Replay(P);
    cairo_clip(cr);
  }
  void DrawPath(THtPen& Pen, THtPath& Path) override {
    Replay(Path);
    Stroke(Pen);
  }
  void FillPath(THtBrush& Brush, THtPath& Path) override {
    Replay(Path);
    Fill(Brush);
  }
  void DrawLine(THtPen& Pen, float x1, float y1, float x2, float y2) override {
    cairo_move_to(cr, x1, y1);
    cairo_line_to(cr, x2, y2);
    Stroke(Pen);
  }
  void DrawRectangle(THtPen& Pen, float X, float Y, float w, float h) override {
    cairo_rectangle(cr, X, Y, w, h);
    Stroke(Pen);
  }
  void FillRectangle(THtBrush& Brush, float X, float Y, float w, float h) override {
    cairo_rectangle(cr, X, Y, w, h);
    Fill(Brush);
  }
  void DrawEllipse(THtPen& Pen, float X, float Y, float w, float h) override {
    cairo_new_path(cr);
    Ellipse(X, Y, w, h, 0, 360);
    Stroke(Pen);
  }
  void FillEllipse(THtBrush& Brush, float X, float Y, float w, float h) override {
    cairo_new_path(cr);
    Ellipse(X, Y, w, h, 0, 360);
    Fill(Brush);
  }
  float MeasureString(const hstring& s, THtFont& Font, const THtTextStyle&, float, int, int) override {
    return static_cast<float>(s.size()) * Font.FHeight * 0.55f;
  }
  void DrawString(const hstring& s, const TRectF& R, THtFont& Font, const THtTextStyle& T, int First,
                  int Length) override {
    std::u16string_view v(s);
    size_t from = static_cast<size_t>(std::max(First, 1) - 1);
    v = from < v.size() ? v.substr(from) : std::u16string_view();
    if (Length >= 0)
      v = v.substr(0, static_cast<size_t>(Length));
    std::string text = hstring(v.data(), v.size()).toUtf8();
    cairo_select_font_face(cr, Font.FName.toUtf8().c_str(),
                           Font.FStyle & HtFontStyleBit(hfsItalic) ? CAIRO_FONT_SLANT_ITALIC : CAIRO_FONT_SLANT_NORMAL,
                           Font.FStyle & HtFontStyleBit(hfsBold) ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, Font.FHeight);
    Source(T.Color);
    cairo_move_to(cr, R.Left, R.Top + Font.Ascent);
    cairo_show_text(cr, text.c_str());
  }
  void DrawImage(THtImage& Image, const TRectF& R, float Opacity) override {
    (void)Image;
    int w = cairo_image_surface_get_width(png), h = cairo_image_surface_get_height(png);
    cairo_save(cr);
    cairo_translate(cr, R.Left, R.Top);
    cairo_scale(cr, RW(R) / w, RH(R) / h);
    cairo_set_source_surface(cr, png, 0, 0);
    cairo_paint_with_alpha(cr, Opacity);
    cairo_restore(cr);
  }
};

void BM_CairoSVG(benchmark::State& state) {
  TSuite& s = Suite();
  TPngReader reader{htcore_svg::SamplePNG()};
  cairo_surface_t* png = cairo_image_surface_create_from_png_stream(read_png, &reader);
  size_t out_bytes = 0;
  g_timer.Run(state, s.out, "cairo", [&] {
    out_bytes = 0;
    for (const auto& scene : htcore_svg::Scenes())
      for (int page = 0; page < scene.Pages; ++page) {
        std::string out;
        cairo_surface_t* svg = cairo_svg_surface_create_for_stream(append, &out, scene.Width, scene.Height);
        cairo_svg_surface_set_document_unit(svg, CAIRO_SVG_UNIT_PX);
        TCairoCanvas c;
        c.cr = cairo_create(svg);
        c.png = png;
        htcore_svg::DrawPage(scene, c, page);
        cairo_destroy(c.cr);
        cairo_surface_finish(svg);
        cairo_surface_destroy(svg);
        out_bytes += out.size();
      }
    benchmark::DoNotOptimize(out_bytes);
  });
  Primitives(state);
  state.counters["out_MB/s"] = benchmark::Counter(static_cast<double>(out_bytes) / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
  cairo_surface_destroy(png);
}

#endif

} // namespace

int main(int argc, char** argv) {
  TSuite& s = Suite();
  std::printf("drawing suite: %zu scenes, %lld primitives, %zu bytes of SVG from htcore\n",
              htcore_svg::Scenes().size(), s.primitives, s.out.bytes.size());
#ifdef HTCORE_PEERS
  benchmark::RegisterBenchmark("Cairo/svg-surface", BM_CairoSVG)->Unit(benchmark::kMillisecond);
#endif
  benchmark::RegisterBenchmark("Htcore/svg-canvas", BM_HtcoreSVG)->Unit(benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
  g_timer.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
