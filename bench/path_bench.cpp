// SVG path data: parse + flatten throughput on a real icon set (one path a
// line in bench/data/icon-paths.txt, made by scripts/fetch_bench_data.sh),
// against cairo fed the same commands and flattened with the same tolerance.
//
// cairo reads no path text, so it gets the decoded commands (moves, lines,
// cubics, elliptic arcs) ready-made; the htcore flatten-only run is the like
// for like, the parse + flatten run is what a document reader pays.
#include "bench_inputs.h"
#include "htcore/graphics/path.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#ifdef HTCORE_PEERS
#include <cairo.h>
#endif

namespace {

using bench::TInput;

constexpr float kTolerance = 0.1f;

struct TPaths {
  TInput all; // the lines joined, for the byte count
  std::vector<ht::hstring> text;
  std::vector<std::unique_ptr<ht::THtCustomPath>> parsed;
};

// Generated when the icon set is not there: circles, curves and lines.
std::vector<std::string> GeneratedPaths() {
  std::vector<std::string> v;
  for (int i = 0; i < 2000; ++i) {
    std::string n = std::to_string(i % 17 + 2);
    v.push_back("M12," + n + "A" + n + "," + n +
                " 0 0,1 16,8C16.42,14 20,15.79 20,18V20H4V18C4,15.79 7.58,14 " +
                "12,14Zm-1 -2l3.5 1.5c1 1 2 1 3 0s2-1 3 0q1 2 2 0t2 0z");
  }
  return v;
}

TPaths& Paths() {
  static TPaths p = [] {
    TPaths r;
    std::vector<std::string> lines;
    std::ifstream f("bench/data/icon-paths.txt");
    for (std::string line; std::getline(f, line);)
      if (!line.empty())
        lines.push_back(line);
    r.all.name = lines.empty() ? "generated" : "icon-paths";
    if (lines.empty())
      lines = GeneratedPaths();
    for (const std::string& l : lines) {
      r.all.bytes += l;
      r.text.push_back(ht::hstring::FromUtf8(l));
      auto path = std::make_unique<ht::THtCustomPath>();
      path->Parse(r.text.back());
      r.parsed.push_back(std::move(path));
    }
    return r;
  }();
  return p;
}

bench::TPeerTimer g_timer({"cairo"});

void Segments(benchmark::State& state, long long per_run) {
  state.counters["segments/s"] =
      benchmark::Counter(static_cast<double>(per_run), benchmark::Counter::kIsIterationInvariantRate);
}

void BM_HtcoreParseFlatten(benchmark::State& state) {
  TPaths& p = Paths();
  long long segments = 0;
  g_timer.Run(state, p.all, "parse+flatten", [&] {
    segments = 0;
    ht::THtCustomPath path, lines;
    for (const ht::hstring& t : p.text) {
      path.Clear();
      lines.Clear();
      path.Parse(t);
      path.Flatten(kTolerance, lines);
      segments += lines.Count();
    }
    benchmark::DoNotOptimize(segments);
  });
  Segments(state, segments);
}

void BM_HtcoreFlatten(benchmark::State& state) {
  TPaths& p = Paths();
  long long segments = 0;
  g_timer.Run(state, p.all, "flatten", [&] {
    segments = 0;
    ht::THtCustomPath lines;
    for (const auto& path : p.parsed) {
      lines.Clear();
      path->Flatten(kTolerance, lines);
      segments += lines.Count();
    }
    benchmark::DoNotOptimize(segments);
  });
  Segments(state, segments);
}

#ifdef HTCORE_PEERS

// The decoded commands of one path, in the order cairo is given them.
struct TCmd {
  ht::THtPathRecKind kind;
  double v[6];
};

std::vector<std::vector<TCmd>>& Commands() {
  static std::vector<std::vector<TCmd>> all = [] {
    std::vector<std::vector<TCmd>> r;
    for (const auto& path : Paths().parsed) {
      std::vector<TCmd> cmds;
      for (int i = 0; i < path->Count(); ++i) {
        const ht::THtPathRec& rec = path->GetRec(i);
        switch (rec.Kind) {
        case ht::prMoveTo:
        case ht::prLineTo:
          cmds.push_back({rec.Kind, {rec.Point.X, rec.Point.Y}});
          break;
        case ht::prCurveTo:
          for (size_t g = 0; g + 2 < rec.Points.size(); g += 3)
            cmds.push_back({ht::prCurveTo,
                            {rec.Points[g].X, rec.Points[g].Y, rec.Points[g + 1].X, rec.Points[g + 1].Y,
                             rec.Points[g + 2].X, rec.Points[g + 2].Y}});
          break;
        case ht::prArc: {
          ht::THtArcParams a = ht::ArcParams(rec);
          cmds.push_back({ht::prArc, {a.CX, a.CY, a.RX, a.RY, a.Start, a.Start + a.Sweep}});
          break;
        }
        case ht::prCloseFigure:
          cmds.push_back({ht::prCloseFigure, {}});
          break;
        default:
          break;
        }
      }
      r.push_back(std::move(cmds));
    }
    return r;
  }();
  return all;
}

long long CairoRun(cairo_t* cr) {
  long long segments = 0;
  for (const std::vector<TCmd>& cmds : Commands()) {
    cairo_new_path(cr);
    for (const TCmd& c : cmds) {
      switch (c.kind) {
      case ht::prMoveTo:
        cairo_move_to(cr, c.v[0], c.v[1]);
        break;
      case ht::prLineTo:
        cairo_line_to(cr, c.v[0], c.v[1]);
        break;
      case ht::prCurveTo:
        cairo_curve_to(cr, c.v[0], c.v[1], c.v[2], c.v[3], c.v[4], c.v[5]);
        break;
      case ht::prArc:
        // An ellipse is a unit circle under a scale, the usual cairo way.
        cairo_save(cr);
        cairo_translate(cr, c.v[0], c.v[1]);
        cairo_scale(cr, c.v[2] > 0 ? c.v[2] : 1e-9, c.v[3] > 0 ? c.v[3] : 1e-9);
        if (c.v[5] >= c.v[4])
          cairo_arc(cr, 0, 0, 1, c.v[4], c.v[5]);
        else
          cairo_arc_negative(cr, 0, 0, 1, c.v[4], c.v[5]);
        cairo_restore(cr);
        break;
      default:
        cairo_close_path(cr);
        break;
      }
    }
    cairo_path_t* flat = cairo_copy_path_flat(cr);
    for (int i = 0; i < flat->num_data; i += flat->data[i].header.length)
      ++segments;
    cairo_path_destroy(flat);
  }
  return segments;
}

void BM_Cairo(benchmark::State& state) {
  cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1);
  cairo_t* cr = cairo_create(s);
  cairo_set_tolerance(cr, kTolerance);
  long long segments = 0;
  g_timer.Run(state, Paths().all, "cairo", [&] {
    segments = CairoRun(cr);
    benchmark::DoNotOptimize(segments);
  });
  Segments(state, segments);
  cairo_destroy(cr);
  cairo_surface_destroy(s);
}

#endif

} // namespace

int main(int argc, char** argv) {
  TPaths& p = Paths();
  std::printf("%s: %zu paths, %zu bytes of path data, tolerance %g\n", p.all.name.c_str(), p.text.size(),
              p.all.bytes.size(), static_cast<double>(kTolerance));
  {
    long long own = 0;
    ht::THtCustomPath lines;
    for (const auto& path : p.parsed) {
      lines.Clear();
      path->Flatten(kTolerance, lines);
      own += lines.Count();
    }
    std::printf("segments per run: htcore %lld", own);
#ifdef HTCORE_PEERS
    cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1);
    cairo_t* cr = cairo_create(s);
    cairo_set_tolerance(cr, kTolerance);
    std::printf(", cairo %lld", CairoRun(cr));
    cairo_destroy(cr);
    cairo_surface_destroy(s);
#endif
    std::printf("\n");
  }
#ifdef HTCORE_PEERS
  benchmark::RegisterBenchmark("Cairo/build+flatten", BM_Cairo)->Unit(benchmark::kMillisecond);
#endif
  benchmark::RegisterBenchmark("Htcore/parse+flatten", BM_HtcoreParseFlatten)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("Htcore/flatten", BM_HtcoreFlatten)->Unit(benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  g_timer.PrintRatios();
  return 0;
}
