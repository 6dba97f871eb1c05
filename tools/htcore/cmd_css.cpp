// htcore css format|minify|dark|selectors FILE|-
//
// Parses a style sheet (UTF-8) and writes it back: formatted, minified, moved
// to a dark theme, or as its selectors with weight and index bucket.
#include "commands.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

#include <cstring>
#include <exception>
#include <string>

namespace htcore_cli {

namespace {

const char kCssHelp[] =
    "usage: htcore css format|minify|dark|selectors FILE|-\n"
    "  format     parse the sheet and write it back, one declaration a line\n"
    "  minify     merge equal sides into shorthands and write the sheet compactly\n"
    "  dark       move every colour to a dark theme and write the sheet\n"
    "  selectors  each selector with its weight, map group and the bucket it is filed in\n"
    "Input and output are UTF-8; FILE '-' reads standard input. CSS never fails to parse:\n"
    "what is not understood is dropped.\n"
    "example: htcore css selectors bootstrap.css\n";

const char* const kBuckets[] = {"none", "tag", "id", "class", "condition", "pseudo-class"};

void list_selectors(const ht::TCSSStyleSheet& sheet, std::string& out) {
  for (const auto& sec : sheet.fSections) {
    if (sec->FontFace)
      continue;
    for (const ht::TCSSSelector* s : sec->Selectors) {
      ht::hstring key;
      ht::TCSSBucket b = ht::CSSBucketOf(s, key);
      const char* group = (s->PseudoClasses & ht::PCBit(ht::pcBefore))  ? "before"
                          : (s->PseudoClasses & ht::PCBit(ht::pcAfter))  ? "after"
                          : (s->PseudoClasses & ht::PCBit(ht::pcMarker)) ? "marker"
                                                                         : "main";
      out += s->AsString().toUtf8() + "\t" + std::to_string(s->Weight) + "\t" + group + "\t" + kBuckets[b];
      if (!key.empty())
        out += " " + key.toUtf8();
      out += "\n";
    }
  }
}

} // namespace

int CmdCss(int argc, char** argv) {
  if (argc >= 1 && (!std::strcmp(argv[0], "--help") || !std::strcmp(argv[0], "-h"))) {
    std::fputs(kCssHelp, stdout);
    return 0;
  }
  if (argc != 2)
    return Fail("usage: htcore css format|minify|dark|selectors FILE|- (htcore css --help)");
  std::string mode = argv[0];
  if (mode != "format" && mode != "minify" && mode != "dark" && mode != "selectors")
    return Fail("unknown css command '" + mode + "'; use format, minify, dark or selectors");
  std::string bytes;
  if (!ReadInput(argv[1], bytes))
    return 1;
  if (bytes.size() >= 3 && !bytes.compare(0, 3, "\xEF\xBB\xBF"))
    bytes.erase(0, 3);
  try {
    ht::hstring text = ht::hstring::FromUtf8(bytes);
    ht::TCSSStyleSheet sheet;
    sheet.Parse(text);
    std::string out;
    if (mode == "format") {
      out = UnixLines(sheet.AsString().toUtf8());
    } else if (mode == "minify") {
      sheet.Minify();
      out = sheet.Write(true).toUtf8();
    } else if (mode == "dark") {
      sheet.ConvertLighttoDark();
      out = UnixLines(sheet.AsString().toUtf8());
    } else {
      list_selectors(sheet, out);
      if (!out.empty())
        out.pop_back();
    }
    if (out.empty())
      return 0;
    return WriteOut(std::move(out));
  } catch (const std::exception& e) {
    return Fail(e.what());
  }
}

} // namespace htcore_cli
