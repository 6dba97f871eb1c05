// htcore svg demo OUT_DIR [--only NAME]...
//
// Writes the drawing suite through the SVG canvas: one document per scene
// page, and an index.html that shows them all.
#include "commands.h"
#include "svg_scenes.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace htcore_cli {

namespace {

bool WriteFile(const std::string& path, const std::string& text, std::string& error) {
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  if (f)
    f.write(text.data(), static_cast<std::streamsize>(text.size()));
  if (f)
    f.close();
  if (!f) {
    error = "cannot write '" + path + "': " + std::strerror(errno ? errno : EIO);
    return false;
  }
  return true;
}

std::string HtmlText(const std::string& s) {
  std::string out;
  for (char c : s)
    out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : std::string(1, c);
  return out;
}

} // namespace

int CmdSvg(int argc, char** argv) {
  if (argc < 1)
    return FailUsage("svg");
  if (std::string(argv[0]) != "demo")
    return FailUsage("svg", std::string("unknown svg command '") + argv[0] + "'");
  std::string dir;
  std::vector<std::string> only;
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--only") {
      if (i + 1 >= argc)
        return Fail("--only needs a scene name");
      only.push_back(argv[++i]);
    } else if (a.size() > 1 && a[0] == '-') {
      return FailUsage("svg", "unknown option '" + a + "'");
    } else if (dir.empty()) {
      dir = a;
    } else {
      return FailUsage("svg", "unexpected argument '" + a + "'");
    }
  }
  if (dir.empty())
    return FailUsage("svg");
  for (const std::string& name : only) {
    bool known = false;
    for (const auto& s : htcore_svg::Scenes())
      known = known || name == s.Name;
    if (!known)
      return Fail("no scene '" + name + "' (see htcore svg --help)");
  }
  struct stat st;
  if (stat(dir.c_str(), &st) != 0) {
    if (mkdir(dir.c_str(), 0777) != 0)
      return Fail("cannot create '" + dir + "': " + std::strerror(errno));
  } else if (!S_ISDIR(st.st_mode)) {
    return Fail("'" + dir + "' is not a directory");
  }

  std::string index = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>htcore SVG canvas</title>"
                      "<style>body{font-family:sans-serif}figure{display:inline-block;margin:8px}"
                      "img{border:1px solid #ccc}</style></head><body>\n<h1>htcore SVG canvas</h1>\n";
  int documents = 0;
  std::string error;
  for (const auto& scene : htcore_svg::Scenes()) {
    if (!only.empty()) {
      bool wanted = false;
      for (const std::string& name : only)
        wanted = wanted || name == scene.Name;
      if (!wanted)
        continue;
    }
    std::vector<ht::hstring> pages = htcore_svg::RenderScene(scene);
    for (size_t p = 0; p < pages.size(); ++p) {
      std::string file = scene.Name;
      if (pages.size() > 1)
        file += "-" + std::to_string(p + 1);
      file += ".svg";
      if (!WriteFile(dir + "/" + file, UnixLines(pages[p].toUtf8()) + "\n", error))
        return Fail(error);
      index += "<figure><img src=\"" + HtmlText(file) + "\" width=\"" + std::to_string(scene.Width * 2) +
               "\"><figcaption>" + HtmlText(file) + ": " + HtmlText(scene.Title) + "</figcaption></figure>\n";
      ++documents;
    }
  }
  index += "</body></html>\n";
  if (!WriteFile(dir + "/index.html", index, error))
    return Fail(error);
  return WriteOut(std::to_string(documents) + " SVG documents and index.html written to " + dir);
}

} // namespace htcore_cli
