// htcore path normalize|bounds|flatten [--tolerance T] DATA|-
//
// Reads SVG path data and writes it back with absolute coordinates, its
// bounding box, or the polyline it flattens to.
#include "commands.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/graphics/path.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

namespace htcore_cli {

namespace {

// The writer leaves a blank after the last number; a line of output does not need it.
std::string Trimmed(std::string s) {
  while (!s.empty() && s.back() == ' ')
    s.pop_back();
  return s;
}

std::string Num(float v) {
  ht::TFastString fs(64);
  fs.Add(static_cast<double>(v), 4, true);
  return fs.GetAsString().toUtf8();
}

} // namespace

int CmdPath(int argc, char** argv) {
  std::string mode, data;
  bool have_data = false;
  float tolerance = 1;
  for (int i = 0; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--tolerance") {
      if (i + 1 >= argc)
        return Fail("--tolerance needs a number");
      char* end = nullptr;
      double t = std::strtod(argv[++i], &end);
      if (end == argv[i] || *end || !(t > 0) || !std::isfinite(t))
        return Fail(std::string("bad tolerance '") + argv[i] + "': a positive number is expected");
      tolerance = static_cast<float>(t);
    } else if (mode.empty()) {
      mode = a;
    } else if (!have_data) {
      if (a == "-") {
        if (!ReadInput("-", data))
          return 1;
      } else {
        data = a;
      }
      have_data = true;
    } else {
      return FailUsage("path", "unexpected argument '" + a + "'");
    }
  }
  if (mode.empty() || !have_data)
    return FailUsage("path");
  if (mode != "normalize" && mode != "bounds" && mode != "flatten")
    return FailUsage("path", "unknown path command '" + mode + "'");
  try {
    ht::THtCustomPath path;
    path.Parse(ht::hstring::FromUtf8(data));
    if (mode == "normalize")
      return WriteOut(Trimmed(path.AsAbsoluteString().toUtf8()));
    if (mode == "bounds") {
      ht::TRectF b;
      path.GetBounds(b, nullptr);
      return WriteOut(Num(b.Left) + " " + Num(b.Top) + " " + Num(b.Right) + " " + Num(b.Bottom));
    }
    ht::THtCustomPath lines;
    path.Flatten(tolerance, lines);
    return WriteOut(Trimmed(lines.AsAbsoluteString().toUtf8()));
  } catch (const std::exception& e) {
    return Fail(e.what());
  }
}

} // namespace htcore_cli
