// htcore style FILE [--css FILE]... [--width N] [--props a,b,...] [--at MS [--then CSS]]
//
// Styles an HTML document with the ready driver (default sheet, quirks sheet
// without a standards doctype, <style> and local <link> sheets, the --css
// sheets, inline style) and prints each element's computed values as one
// JSON object a line: {"path":..,"tag":..,"n":..,"display":"block",...}.
// With --at the values are those MS milliseconds after load, the document's
// key-frame animations (and, with --then, the transitions that a rule added
// at load sets off) driven by the animation thread on a clock of the tool's.
#include "commands.h"
#include "htcore/document/doctype.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/computed_css.h"
#include "htcore/style/element_style.h"
#include "htcore/style/sheet_files.h"
#include "htcore/style/style_animator.h"
#include "htcore/style/style_driver.h"
#include "htcore/style/styled_node.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace htcore_cli {

namespace {

float g_width = 1024, g_height = 768;
bool g_quirks = false;
const ht::TStyleDriver* g_driver = nullptr;

// var() reads the variables of the driver's sheets.
class TStyleToolStyle : public ht::TBaseElementStyle {
public:
  using TBaseElementStyle::TBaseElementStyle;
  void GetCSSVariable(ht::TCSSTokenSequence& Seq) override {
    if (g_driver)
      g_driver->ResolveVariable(Seq);
  }
};

// The tool's node: the viewport and the document mode come from the command line and the doctype.
class TStyleToolNode : public ht::TStyledHTMLNode {
  HT_NODE_CLASS(TStyleToolNode)

public:
  float GetViewPortWidth() const override { return g_width; }
  float GetViewPortHeight() const override { return g_height; }
  bool QuirksMode() override { return g_quirks; }
  std::unique_ptr<ht::TBaseElementStyle> CreateStyle() override { return std::make_unique<TStyleToolStyle>(this); }
};

const char* const kDefaultProps[] = {
    "display",          "position",          "float",               "color",
    "background-color", "font-family",       "font-size",           "font-weight",
    "line-height",      "margin-top",        "margin-right",        "margin-bottom",
    "margin-left",      "padding-top",       "padding-right",       "padding-bottom",
    "padding-left",     "border-top-width",  "border-right-width",  "border-bottom-width",
    "border-left-width", "width",            "height",              "text-align"};

std::string json_string(const std::string& s) {
  std::string out = "\"";
  for (unsigned char c : s) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c == '\n') {
      out += "\\n";
    } else if (c < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04x", c);
      out += buf;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + "\"";
}

// "margin-*" stands for its four sides.
std::vector<std::string> split_props(const std::string& list) {
  std::vector<std::string> out;
  size_t b = 0;
  for (size_t i = 0; i <= list.size(); ++i)
    if (i == list.size() || list[i] == ',') {
      std::string p = list.substr(b, i - b);
      p.erase(0, p.find_first_not_of(' '));
      p.erase(p.find_last_not_of(' ') + 1);
      b = i + 1;
      if (p.empty())
        continue;
      if (size_t star = p.find('*'); star != std::string::npos) {
        for (const char* side : {"top", "right", "bottom", "left"})
          out.push_back(p.substr(0, star) + side + p.substr(star + 1));
      } else {
        out.push_back(p);
      }
    }
  return out;
}

std::string dir_of(const std::string& file) {
  size_t slash = file.rfind('/');
  return slash == std::string::npos ? std::string("./") : file.substr(0, slash + 1);
}

} // namespace

int CmdStyle(int argc, char** argv) {
  std::vector<std::string> css_files;
  std::vector<std::string> props(std::begin(kDefaultProps), std::end(kDefaultProps));
  const char* file = nullptr;
  int width = 1024;
  long long at_ms = -1;
  std::string then_css;
  for (int i = 0; i < argc; ++i) {
    std::string opt = argv[i];
    bool has_value = i + 1 < argc;
    if (opt == "--css" && has_value) {
      css_files.push_back(argv[++i]);
    } else if (opt == "--width" && has_value) {
      std::string w = argv[++i];
      if (w.empty() || w.size() > 6 || w.find_first_not_of("0123456789") != std::string::npos || std::stoi(w) == 0)
        return FailUsage("style", "--width takes a number of pixels from 1 to 999999, not '" + w + "'");
      width = std::stoi(w);
    } else if (opt == "--at" && has_value) {
      std::string a = argv[++i];
      if (a.empty() || a.size() > 9 || a.find_first_not_of("0123456789") != std::string::npos)
        return FailUsage("style", "--at takes milliseconds from 0 to 999999999, not '" + a + "'");
      at_ms = std::stoll(a);
    } else if (opt == "--then" && has_value) {
      then_css = argv[++i];
    } else if (opt == "--props" && has_value) {
      props = split_props(argv[++i]);
      if (props.empty())
        return FailUsage("style", "--props names no property");
    } else if (opt.size() > 1 && opt[0] == '-' && opt != "-") {
      return FailUsage("style", "unknown option or option without its value '" + opt + "'");
    } else if (!file) {
      file = argv[i];
    } else {
      return FailUsage("style");
    }
  }
  if (!file)
    return FailUsage("style");
  if (!then_css.empty() && at_ms < 0)
    return FailUsage("style", "--then needs --at");
  std::string bytes;
  if (!ReadInput(file, bytes))
    return 1;
  std::vector<ht::hstring> sheets;
  for (const std::string& f : css_files) {
    std::string text;
    if (!ReadInput(f.c_str(), text))
      return 1;
    sheets.push_back(ht::hstring::FromUtf8(text));
  }
  try {
    g_width = static_cast<float>(width);
    g_quirks = ht::HtDoctypeQuirks(bytes);
    TStyleToolNode doc;
    doc.ParseBytes(bytes.data(), bytes.size());
    ht::TStyleDriver driver(&doc);
    g_driver = &driver;
    driver.QuirksMode = g_quirks;
    // Linked sheets are read from disk beside the document; other URLs are left out.
    driver.BaseURL = ht::hstring::FromUtf8(std::string(file) == "-" ? std::string("./") : dir_of(file));
    driver.Loader = ht::HtLocalSheetLoader;
    for (const ht::hstring& s : sheets)
      driver.AddSheet(s);
    driver.SetViewport(width);
    driver.Run();

    // The animations run on a thread of their own whose clock only moves
    // when the loop below says; each round is followed by the main-thread
    // work it queued, as a host's message loop would do it.
    std::atomic<int64_t> now{0};
    ht::TBaseAnimationThread thread;
    thread.Clock = [&] { return now.load(); };
    thread.Step = 1 << 30;
    std::unique_ptr<ht::TStyleAnimator> animator;
    if (at_ms >= 0) {
      animator = std::make_unique<ht::TStyleAnimator>(driver, &thread);
      animator->StartAnimations();
      if (!then_css.empty()) {
        animator->SaveLastProps();
        driver.AddSheet(ht::hstring::FromUtf8(then_css));
        driver.Invalidate();
        driver.Run();
        animator->StartTransitions();
      }
      constexpr int64_t kTick = 16;
      for (int64_t t = 0; t < at_ms;) {
        t = std::min<int64_t>(at_ms, t + kTick);
        now = t;
        const uint64_t target = thread.Rounds() + 1;
        thread.Wake();
        if (!thread.WaitRounds(target, 60000))
          return Fail("the animation thread does not answer");
        thread.RunQueued();
      }
    }

    std::vector<ht::hstring> names;
    for (const std::string& p : props)
      names.push_back(ht::hstring::FromUtf8(p));
    std::map<std::u16string, int> seen;
    std::string line;
    ht::THtNode* n = &doc;
    while (n) {
      auto* e = dynamic_cast<ht::TStyledHTMLNode*>(n);
      if (e && !n->FTag.empty() && n->FTag[0] != u'!' && n->FTag[0] != u'?' && e->Style()) {
        int& ordinal = seen[std::u16string(n->FTag.view())];
        line = "{\"path\":" + json_string(n->Path().toUtf8()) + ",\"tag\":" + json_string(n->FTag.toUtf8()) +
               ",\"n\":" + std::to_string(ordinal++);
        for (size_t k = 0; k < props.size(); ++k) {
          ht::hstring value;
          bool known = ht::ComputedCSSValue(e, names[k], value);
          line += "," + json_string(props[k]) + ":" + (known ? json_string(value.toUtf8()) : "null");
        }
        Emit(line + "}\n");
      }
      if (ht::THtNode* c = n->FirstChild()) {
        n = c;
        continue;
      }
      while (n != &doc && !n->FNextSibling)
        n = n->FParent;
      n = n == &doc ? nullptr : n->FNextSibling;
    }
    animator.reset();
    thread.Stop();
    return 0;
  } catch (const std::exception& e) {
    return Fail(std::string(file) + ": " + e.what());
  }
}

} // namespace htcore_cli
