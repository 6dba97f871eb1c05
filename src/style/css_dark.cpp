// Light to dark: every colour of a sheet moved to a dark theme.
#include "htcore/document/html_colours.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

#include <algorithm>
#include <cmath>

namespace ht {

namespace {

struct THsl {
  double h, s, l; // hue in turns
};

THsl to_hsl(uint32_t c) {
  double r = ((c >> 16) & 0xFF) / 255.0, g = ((c >> 8) & 0xFF) / 255.0, b = (c & 0xFF) / 255.0;
  double mx = std::max({r, g, b}), mn = std::min({r, g, b});
  THsl o{0, 0, (mx + mn) / 2};
  double d = mx - mn;
  if (d == 0)
    return o;
  o.s = o.l > 0.5 ? d / (2 - mx - mn) : d / (mx + mn);
  if (mx == r)
    o.h = (g - b) / d + (g < b ? 6 : 0);
  else if (mx == g)
    o.h = (b - r) / d + 2;
  else
    o.h = (r - g) / d + 4;
  o.h /= 6;
  return o;
}

double hue(double p, double q, double t) {
  if (t < 0)
    t += 1;
  if (t > 1)
    t -= 1;
  if (t < 1.0 / 6)
    return p + (q - p) * 6 * t;
  if (t < 0.5)
    return q;
  if (t < 2.0 / 3)
    return p + (q - p) * (2.0 / 3 - t) * 6;
  return p;
}

uint32_t from_hsl(THsl v, uint32_t alpha) {
  double r = v.l, g = v.l, b = v.l;
  if (v.s != 0) {
    double q = v.l < 0.5 ? v.l * (1 + v.s) : v.l + v.s - v.l * v.s;
    double p = 2 * v.l - q;
    r = hue(p, q, v.h + 1.0 / 3);
    g = hue(p, q, v.h);
    b = hue(p, q, v.h - 1.0 / 3);
  }
  auto byte = [](double x) { return static_cast<uint32_t>(std::lround(std::clamp(x, 0.0, 1.0) * 255)); };
  return alpha | (byte(r) << 16) | (byte(g) << 8) | byte(b);
}

// The colour a token stands for, if it is one.
bool token_colour(TCSSToken& t, uint32_t& c) {
  if (t.CType == ctHash) {
    c = t.Color;
    return c != 0;
  }
  if (t.CType != ctIdent)
    return false;
  int sys;
  c = htmlHextoColorSys(CSSLowerName(t).view(), sys);
  return c != HtInvalidColor && c != HtNoneColor && !SameText(t.Name, u"transparent") &&
         !SameText(t.Name, u"inherit");
}

void set_hash(TCSSToken& t, uint32_t c) {
  t.CType = ctHash;
  t.Name = htmlColortoHex(c);
  t.Color = c;
  t.Flags = 0;
}

uint32_t foreground(uint32_t c) {
  THsl v = to_hsl(c);
  v.l = std::min(std::max(1 - v.l + 0.1, 0.6), 1.0);
  v.l = std::min(v.l, 0.95);
  v.s = std::min(0.7, v.s);
  return from_hsl(v, c & 0xFF000000u);
}

// False: the colour is dropped for "transparent".
bool background(uint32_t& c) {
  THsl v = to_hsl(c);
  if (v.l <= 0.9)
    return false;
  v.l = std::max(1 - v.l, 0.15);
  c = from_hsl(v, c & 0xFF000000u);
  return true;
}

void dark_background(TCSSToken& t) {
  uint32_t c;
  if (!token_colour(t, c))
    return;
  if (background(c)) {
    set_hash(t, c);
  } else {
    t.CType = ctIdent;
    t.Name = u"transparent"_hs;
    t.Color = 0;
  }
}

bool is_foreground(const hstring& n) {
  return n == u"color" || n == u"border-color" || n == u"border-top-color" || n == u"border-right-color" ||
         n == u"border-bottom-color" || n == u"border-left-color";
}

} // namespace

void TCSSStyleSheet::ConvertLighttoDark() {
  for (auto& s : fSections) {
    bool changed = false;
    for (TCSSValue& v : s->Values) {
      if (v.Tokens.empty() || v.IsInherit)
        continue;
      if (is_foreground(v.Name)) {
        TCSSTokenSequence seq;
        seq.Init(&v.Tokens);
        uint32_t c = 0;
        TCSSToken& first = v.Tokens[0];
        bool fn = first.CType == ctFunction;
        if (!(fn ? seq.ReadColor(c) : token_colour(first, c)) ||
            (fn && !first.Name.view().starts_with(u"rgb")))
          continue;
        TCSSToken t = first;
        set_hash(t, foreground(c));
        if (fn)
          v.Tokens.assign(1, t);
        else
          first = t;
        changed = true;
      } else if (v.Name == u"background-color") {
        if (v.Tokens.size() == 1 && !SameText(v.Tokens[0].Name, u"none") &&
            !SameText(v.Tokens[0].Name, u"transparent")) {
          dark_background(v.Tokens[0]);
          changed = true;
        }
      } else if (v.Name == u"background") {
        for (TCSSToken& t : v.Tokens)
          if (t.CType == ctHash || t.CType == ctIdent)
            dark_background(t);
        changed = true;
      }
    }
    if (changed) {
      for (TCSSValue& v : s->Values)
        TCSSParser::PrepareValue(v, s.get());
      s->Compile();
    }
  }
}

hstring TCSSStyleSheet::LighttoDark(const hstring& Text) {
  TCSSStyleSheet s;
  s.Parse(Text, -1, false);
  s.ConvertLighttoDark();
  return s.AsString();
}

} // namespace ht
