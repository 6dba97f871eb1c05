// htcore css format|minify|dark|selectors FILE|-
//
// Parses a style sheet (UTF-8) and writes it back: formatted, minified, moved
// to a dark theme, or as its selectors with weight and index bucket.
#include "commands.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

#include <exception>
#include <string>

namespace htcore_cli {

namespace {

const char* const kBuckets[] = {"none", "tag", "id", "class", "condition", "pseudo-class"};

void list_selectors(const ht::TCSSStyleSheet& sheet, std::string& out) {
  for (const auto& sec : sheet.fSections) {
    if (sec->FontFace)
      continue;
    for (const ht::TCSSSelector* s : sec->Selectors) {
      ht::hstring key;
      ht::TCSSBucket b = ht::CSSBucketOf(s, key);
      const char* group = (s->PseudoClasses & ht::PCBit(ht::pcBefore))   ? "before"
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
  if (argc != 2)
    return FailUsage("css");
  std::string mode = argv[0];
  if (mode != "format" && mode != "minify" && mode != "dark" && mode != "selectors")
    return FailUsage("css", "unknown css command '" + mode + "'");
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
