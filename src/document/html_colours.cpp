// Colour names, system colour names and colour text.
#include "htcore/document/html_colours.h"

#include "document/html_colour_data.h"
#include "document/htmlpars_start.h"
#include "foundation/hex_digit.h"
#include "htcore/foundation/colour.h"
#include "htcore/foundation/startup.h"
#include "htcore/foundation/string_dictionary.h"
#include "htcore/foundation/text_utils.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace ht {

namespace {

using view = std::u16string_view;

// Colour records by lowered name.
class THtColorDictionary : public THtPointerDictionaryOf<THtColorRec, &THtColorRec::name> {
public:
  THtColorDictionary(THtColorRec* recs, int n) : THtPointerDictionaryOf(n) {
    for (int i = 0; i < n; ++i)
      AddPointer(&recs[i]);
  }
};

struct TColorTables {
  THtColorRec colors[kHtColorCount];
  THtSysColorRec sys_colors[kHtSysColorCount];
  std::unique_ptr<THtColorDictionary> by_name;
};

// Filled at start, read-only afterwards, freed at stop.
TColorTables* g_tables = nullptr;

uint32_t hex_pair(view d, size_t i) {
  return static_cast<uint32_t>(detail::HexDigitValue(d[i]) * 16 + detail::HexDigitValue(d[i + 1]));
}

// The digits behind a '#': d holds them without the '#', so the whole text is
// d.size() + 1 units long.
uint32_t hash_colour(view d) {
  for (char16_t c : d)
    if (detail::HexDigitValue(c) < 0)
      return HtInvalidColor;
  size_t n = d.size() + 1;
  if (n == 4 || n == 5) {
    uint32_t a = n == 5 ? static_cast<uint32_t>(detail::HexDigitValue(d[3]) * 17) : 255;
    return a << 24 | static_cast<uint32_t>(detail::HexDigitValue(d[0]) * 17) << 16 |
           static_cast<uint32_t>(detail::HexDigitValue(d[1]) * 17) << 8 |
           static_cast<uint32_t>(detail::HexDigitValue(d[2]) * 17);
  }
  if (n < 7)
    return HtInvalidColor;
  uint32_t rgb = hex_pair(d, 0) << 16 | hex_pair(d, 2) << 8 | hex_pair(d, 4);
  // Eight units: the odd unit behind the colour is ignored. Nine or more: the
  // last pair is the alpha.
  uint32_t a = n >= 9 ? hex_pair(d, d.size() - 2) : 255;
  return a << 24 | rgb;
}

const THtSysColorRec* find_sys_colour(view s) {
  if (!g_tables)
    return nullptr;
  const THtSysColorRec* first = g_tables->sys_colors;
  const THtSysColorRec* last = first + kHtSysColorCount;
  const THtSysColorRec* r =
      std::lower_bound(first, last, s, [](const THtSysColorRec& a, view v) { return a.name.view() < v; });
  return r != last && r->name.view() == s ? r : nullptr;
}

const THtColorRec* find_colour(view s) {
  return g_tables ? g_tables->by_name->Get(s.data(), static_cast<int>(s.size())) : nullptr;
}

// A small reader for the arguments of rgba(): blanks, then one optional ','
// with blanks behind it, then a number.
class TArgReader {
public:
  explicit TArgReader(view s) : s_(s) {}

  bool AtDigit() {
    skip_blanks();
    return i_ < s_.size() && s_[i_] >= u'0' && s_[i_] <= u'9';
  }

  // False when no digit follows; v is then 0.
  bool Number(double& v) {
    v = 0;
    skip_separator();
    bool negative = false;
    if (i_ < s_.size() && (s_[i_] == u'+' || s_[i_] == u'-'))
      negative = s_[i_++] == u'-';
    bool digits = false;
    while (i_ < s_.size() && s_[i_] >= u'0' && s_[i_] <= u'9') {
      if (v < 1e9)
        v = v * 10 + (s_[i_] - u'0');
      ++i_;
      digits = true;
    }
    if (i_ < s_.size() && s_[i_] == u'.') {
      ++i_;
      double scale = 0.1;
      while (i_ < s_.size() && s_[i_] >= u'0' && s_[i_] <= u'9') {
        v += (s_[i_++] - u'0') * scale;
        scale /= 10;
        digits = true;
      }
    }
    if (negative)
      v = -v;
    return digits;
  }

  size_t Pos() const { return i_; }

private:
  void skip_blanks() {
    while (i_ < s_.size() && (s_[i_] == u' ' || s_[i_] == u'\t' || s_[i_] == u'\n' || s_[i_] == u'\r'))
      ++i_;
  }
  void skip_separator() {
    skip_blanks();
    if (i_ < s_.size() && s_[i_] == u',') {
      ++i_;
      skip_blanks();
    }
  }

  view s_;
  size_t i_ = 0;
};

// round() of the platform: halves go to the even neighbour.
uint32_t byte_of(double v) {
  if (!(v > 0))
    return 0;
  if (v >= 255)
    return 255;
  double r = std::floor(v + 0.5);
  if (r - v == 0.5 && std::fmod(r, 2) != 0)
    r -= 1;
  return static_cast<uint32_t>(r);
}

view trim_blanks(view s) {
  while (!s.empty() && s.front() <= u' ')
    s.remove_prefix(1);
  while (!s.empty() && s.back() <= u' ')
    s.remove_suffix(1);
  return s;
}

uint32_t colour_of(view s, bool with_rgba, int& IsSystem);

// "rgba(r, g, b, a)" or "rgba(colour, a)"; args is the text behind '('.
uint32_t rgba_colour(view args) {
  TArgReader in(args);
  double alpha;
  if (in.AtDigit()) {
    double r, g, b;
    in.Number(r);
    in.Number(g);
    in.Number(b);
    uint32_t a = in.Number(alpha) ? byte_of(alpha * 255) : 255;
    return a << 24 | byte_of(r) << 16 | byte_of(g) << 8 | byte_of(b);
  }
  size_t comma = args.find(u',');
  view first = args.substr(0, comma);
  if (comma == view::npos)
    first = first.substr(0, first.find(u')'));
  first = trim_blanks(first);
  if (first.empty())
    return HtInvalidColor;
  // The inner colour may not be an rgba() itself, which also bounds recursion.
  int is_system = 0;
  uint32_t c = colour_of(first, false, is_system);
  if (c == HtInvalidColor || comma == view::npos)
    return c;
  TArgReader rest(args.substr(comma));
  if (!rest.Number(alpha))
    return c;
  return byte_of(alpha * 255) << 24 | (c & 0xFFFFFF);
}

uint32_t colour_of(view s, bool with_rgba, int& IsSystem) {
  IsSystem = 0;
  if (s.empty())
    return 0xFF000000;
  if (s == u"transparent")
    return HtTransparentColor;
  if (s == u"none")
    return HtNoneColor;
  if (s[0] == u'#')
    return hash_colour(s.substr(1));
  if (with_rgba && s.starts_with(u"rgba("))
    return rgba_colour(s.substr(5));
  if (const THtColorRec* c = find_colour(s))
    return 0xFF000000 | c->rgb;
  if (const THtSysColorRec* c = find_sys_colour(s)) {
    IsSystem = 1;
    return ThemeColor(c->index);
  }
  // Both are system colour names too, so these only answer before start.
  if (s == u"window")
    return 0xFFFFFFFF;
  if (s == u"windowtext")
    return 0xFF000000;
  return hash_colour(s);
}

} // namespace

std::span<const THtColorRec> HtColorTable() {
  EnsureStarted();
  if (!g_tables)
    return {};
  return {g_tables->colors, static_cast<size_t>(kHtColorCount)};
}

std::span<const THtSysColorRec> HtSysColorTable() {
  EnsureStarted();
  if (!g_tables)
    return {};
  return {g_tables->sys_colors, static_cast<size_t>(kHtSysColorCount)};
}

uint32_t HtStringtoColor(std::u16string_view s) {
  EnsureStarted();
  const THtColorRec* c = find_colour(LowerCase(s).view());
  return c ? 0xFF000000 | c->rgb : 0;
}

uint32_t HtStringtoSysColor(std::u16string_view s) {
  EnsureStarted();
  const THtSysColorRec* c = find_sys_colour(LowerCase(s).view());
  return c ? ThemeColor(c->index) : 0;
}

uint32_t htmlHextoColor(std::u16string_view s) {
  EnsureStarted();
  int is_system;
  return colour_of(s, true, is_system);
}

uint32_t htmlHextoColorSys(std::u16string_view s, int& IsSystem) {
  EnsureStarted();
  return colour_of(s, false, IsSystem);
}

hstring htmlColortoHex(uint32_t C) {
  static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
  char16_t out[6];
  for (int i = 0; i < 6; ++i)
    out[i] = kDigits[(C >> (20 - 4 * i)) & 15];
  return hstring(out, 6);
}

hstring htmlColortoStr(uint32_t C) {
  static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
  uint32_t a = C >> 24;
  char16_t out[9] = {u'#'};
  for (int i = 0; i < 6; ++i)
    out[1 + i] = kDigits[(C >> (20 - 4 * i)) & 15];
  if (a == 255)
    return hstring(out, 7);
  out[7] = kDigits[a >> 4];
  out[8] = kDigits[a & 15];
  return hstring(out, 9);
}

namespace detail {

void LowerColorNames() {
  auto* t = new TColorTables;
  for (int i = 0; i < kHtColorCount; ++i)
    t->colors[i] = {LowerCase(kColorSource[i].name), kColorSource[i].rgb};
  for (int i = 0; i < kHtSysColorCount; ++i)
    t->sys_colors[i] = {LowerCase(kSysColorSource[i].name), kSysColorSource[i].index};
  g_tables = t;
}

void BuildColorDictionary() {
  g_tables->by_name = std::make_unique<THtColorDictionary>(g_tables->colors, kHtColorCount);
}

void FreeColorTables() {
  delete g_tables;
  g_tables = nullptr;
}

} // namespace detail

} // namespace ht
