// htcore render-svg FILE.html OUT.svg [--width N] [--css FILE]...
//
// Runs the example host layout loop (examples/render_svg) over a page and
// paints it onto the SVG canvas. The document is checked to parse as XML and
// written to a temporary file that is renamed over OUT only then.
#include "approx_canvas.h"
#include "commands.h"
#include "page_layout.h"

#include "htcore/document/xml_node.h"
#include "htcore/graphics/svg_canvas.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace htcore_cli {

namespace {

std::string dir_of(const std::string& file) {
  size_t slash = file.rfind('/');
  return slash == std::string::npos ? std::string("./") : file.substr(0, slash + 1);
}

bool write_file(const std::string& path, const std::string& text) {
  FILE* f = std::fopen(path.c_str(), "wb");
  if (!f)
    return false;
  bool ok = std::fwrite(text.data(), 1, text.size(), f) == text.size();
  ok = std::fclose(f) == 0 && ok;
  return ok;
}

} // namespace

int CmdRenderSvg(int argc, char** argv) {
  std::vector<std::string> files, css_files;
  int width = 800;
  for (int i = 0; i < argc; ++i) {
    std::string opt = argv[i];
    bool has_value = i + 1 < argc;
    if (opt == "--width" && has_value) {
      std::string w = argv[++i];
      if (w.empty() || w.size() > 5 || w.find_first_not_of("0123456789") != std::string::npos ||
          std::stoi(w) < 16)
        return FailUsage("render-svg", "--width takes a number of pixels from 16 to 99999, not '" + w + "'");
      width = std::stoi(w);
    } else if (opt == "--css" && has_value) {
      css_files.push_back(argv[++i]);
    } else if (opt.size() > 1 && opt[0] == '-' && opt != "-") {
      return FailUsage("render-svg", "unknown option or option without its value '" + opt + "'");
    } else {
      files.push_back(opt);
    }
  }
  if (files.size() != 2)
    return FailUsage("render-svg");
  const std::string &in = files[0], &out = files[1];
  if (out == "-")
    return FailUsage("render-svg", "OUT.svg must be a file");
  std::string bytes;
  if (!ReadInput(in.c_str(), bytes))
    return 1;
  std::vector<std::string> sheets;
  for (const std::string& f : css_files) {
    std::string text;
    if (!ReadInput(f.c_str(), text))
      return 1;
    sheets.push_back(std::move(text));
  }

  std::string svg;
  try {
    render_svg::TStyledPage page;
    page.Load(bytes, in == "-" ? std::string("./") : dir_of(in), sheets, width);
    render_svg::TApproxCanvas measure;
    render_svg::TPageLayout layout(measure);
    int height = std::max(1, static_cast<int>(std::ceil(layout.Layout(page.Root(), static_cast<float>(width)))));
    ht::THtSVGCanvas canvas;
    ht::THtCanvasScene scene;
    scene.Init({0, 0, width, height}, &canvas);
    canvas.BeginScene(scene);
    layout.Paint(canvas);
    canvas.EndScene();
    ht::hstring doc = canvas.Document(width, height);
    // Never hand over a document that a viewer would refuse.
    ht::THtXMLNode check(doc);
    svg = doc.toUtf8();
  } catch (const std::exception& e) {
    return Fail(std::string("cannot render '") + in + "': " + e.what());
  }
  std::string tmp = out + ".tmp";
  if (!write_file(tmp, svg)) {
    int err = errno;
    std::remove(tmp.c_str());
    return Fail("cannot write '" + out + "': " + std::strerror(err));
  }
  if (std::rename(tmp.c_str(), out.c_str()) != 0) {
    int err = errno;
    std::remove(tmp.c_str());
    return Fail("cannot write '" + out + "': " + std::strerror(err));
  }
  return 0;
}

} // namespace htcore_cli
