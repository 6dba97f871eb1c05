#include "htcore/templates/template_functions.h"

#include "htcore/foundation/convert.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/number_format.h"
#include "htcore/foundation/startup.h"
#include "htcore/foundation/string_dictionary.h"
#include "htcore/foundation/text_utils.h"
#include "templates/template_internal.h"

#include <algorithm>
#include <memory>

namespace ht {

namespace {

using TFunctions = THtObjectDictionaryOf<THtTemplateFunctionContainer, &THtTemplateFunctionContainer::Name>;

// Made on the first registration and freed at stop; after start it is only
// read, so lookups take no lock.
std::unique_ptr<TFunctions> g_functions;

// Case mapping for the scripts templates meet most: Latin, Greek, Cyrillic.
// Pairs of capital and small letters at neighbouring code points.
bool in_pair_range(char16_t c) {
  return (c >= 0x100 && c <= 0x12F) || (c >= 0x132 && c <= 0x137) || (c >= 0x14A && c <= 0x177) ||
         (c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x4FF);
}
bool in_odd_pair_range(char16_t c) { return (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E); }

char16_t upper_unit(char16_t c) {
  if (c < 0x80)
    return CharUpper(c);
  if ((c >= 0xE0 && c <= 0xFE && c != 0xF7) || (c >= 0x3B1 && c <= 0x3CB && c != 0x3C2) ||
      (c >= 0x430 && c <= 0x44F))
    return static_cast<char16_t>(c - 0x20);
  if (c >= 0x450 && c <= 0x45F)
    return static_cast<char16_t>(c - 0x50);
  if (in_pair_range(c))
    return static_cast<char16_t>(c & ~1u);
  if (in_odd_pair_range(c))
    return (c & 1) ? c : static_cast<char16_t>(c - 1);
  switch (c) {
  case 0xFF:
    return 0x178;
  case 0x131:
    return u'I';
  case 0x17F:
    return u'S';
  case 0x3C2:
    return 0x3A3;
  case 0x3AC:
    return 0x386;
  case 0x3AD:
  case 0x3AE:
  case 0x3AF:
    return static_cast<char16_t>(c - 0x25);
  case 0x3CC:
    return 0x38C;
  case 0x3CD:
  case 0x3CE:
    return static_cast<char16_t>(c - 0x3F);
  default:
    return c;
  }
}

char16_t lower_unit(char16_t c) {
  if (c < 0x80)
    return CharLower(c);
  if ((c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3AB && c != 0x3A2) ||
      (c >= 0x410 && c <= 0x42F))
    return static_cast<char16_t>(c + 0x20);
  if (c >= 0x400 && c <= 0x40F)
    return static_cast<char16_t>(c + 0x50);
  if (in_pair_range(c))
    return static_cast<char16_t>(c | 1u);
  if (in_odd_pair_range(c))
    return (c & 1) ? static_cast<char16_t>(c + 1) : c;
  switch (c) {
  case 0x178:
    return 0xFF;
  case 0x130:
    return u'i';
  case 0x386:
    return 0x3AC;
  case 0x388:
  case 0x389:
  case 0x38A:
    return static_cast<char16_t>(c + 0x25);
  case 0x38C:
    return 0x3CC;
  case 0x38E:
  case 0x38F:
    return static_cast<char16_t>(c + 0x3F);
  default:
    return c;
  }
}

template <char16_t (*Map)(char16_t)> hstring map_units(const hstring& s) {
  const char16_t* p = s.c_str();
  size_t n = s.size();
  size_t i = 0;
  while (i < n && Map(p[i]) == p[i])
    ++i;
  if (i == n)
    return s;
  hstring r = s;
  char16_t* d = r.UniqueData();
  for (; i < n; ++i)
    d[i] = Map(d[i]);
  return r;
}

void fn_upper(const hstring& s, hstring& r) { r = map_units<upper_unit>(s); }
void fn_lower(const hstring& s, hstring& r) { r = map_units<lower_unit>(s); }
void fn_trim(const hstring& s, hstring& r) { r = Trim(s); }

void fn_charstorects(const hstring& s, hstring& r) {
  TFastString fs(static_cast<int>(s.size()) * 29 + 16);
  const char16_t* p = s.c_str();
  size_t n = s.size();
  for (size_t i = 0; i < n; ++i) {
    fs.Add(u"<div class=\"charrect\">").AddChar(p[i]);
    // A surrogate pair is one character and stays in one box.
    if (p[i] >= 0xD800 && p[i] <= 0xDBFF && i + 1 < n && p[i + 1] >= 0xDC00 && p[i + 1] <= 0xDFFF)
      fs.AddChar(p[++i]);
    fs.Add(u"</div>");
  }
  r = fs.GetAsString();
}

// "N text": the text with blanks in front up to N units; longer text stays
// whole. Widths are capped so that a stray number cannot ask for gigabytes.
constexpr int kMaxPadWidth = 65536;

void fn_padleft(const hstring& s, hstring& r) {
  int blank = FindChar(u' ', s);
  hstring text = blank ? s.substr(static_cast<size_t>(blank)) : hstring();
  int width = iStrtoInt(blank ? s.view().substr(0, static_cast<size_t>(blank - 1)) : s.view());
  int64_t pad = int64_t{std::min(width, kMaxPadWidth)} - text.Length();
  r = pad > 0 ? StringOfChar(u' ', static_cast<int>(pad)) + text : text;
}

void fn_date(const hstring&, hstring& r) { r = DateToISO8601(Date(), false); }

void fn_formatmoney(const hstring& s, hstring& r) {
  // Thousands blanks of an already formatted number do not stop the reading.
  std::u16string digits;
  for (char16_t c : s)
    if (c != u' ' && c != 0xA0 && c > u' ')
      digits += c;
  if (digits.empty()) {
    r = hstring();
    return;
  }
  r = HtFormatFloat(u"# ### ### ##0.##", iStrtoFloat(digits));
}

// "date|format", or "date format" when there is no '|'.
void fn_formatdate(const hstring& s, hstring& r) {
  hstring t = Trim(s);
  int sep = FindChar(u'|', t);
  if (!sep)
    sep = FindChar(u' ', t);
  if (!sep) {
    r = t;
    return;
  }
  hstring date = Trim(t.substr(0, static_cast<size_t>(sep - 1)));
  hstring mask = Trim(t.substr(static_cast<size_t>(sep)));
  TDateTime d;
  if (date.empty() || mask.empty() || !detail::ReadTemplateDate(date, d)) {
    r = date;
    return;
  }
  r = HtFormatDateTime(mask.view(), d);
}

// "a|b|text": the text when a equals b (exactly), else nothing.
void fn_eq(const hstring& s, hstring& r) {
  int p1 = FindChar(u'|', s);
  int p2 = p1 ? FindChar(u'|', s, p1 + 1) : 0;
  r = hstring();
  if (!p2)
    return;
  std::u16string_view v = s.view();
  if (v.substr(0, static_cast<size_t>(p1 - 1)) ==
      v.substr(static_cast<size_t>(p1), static_cast<size_t>(p2 - p1 - 1)))
    r = s.substr(static_cast<size_t>(p2));
}

} // namespace

void RegisterHtTemplateFunction(const hstring& Name, THtTemplateFunction Function) {
  EnsureStarted();
  if (!g_functions)
    g_functions = std::make_unique<TFunctions>(64);
  auto* c = new THtTemplateFunctionContainer;
  c->Name = LowerCase(Name.view());
  c->Caption = Name;
  c->F = std::move(Function);
  g_functions->AddObject(c);
}

const THtTemplateFunctionContainer* FindHtTemplateFunction(const hstring& Name) {
  EnsureStarted();
  if (!g_functions || Name.empty())
    return nullptr;
  hstring key = Name;
  hLower(key);
  return g_functions->Get(key);
}

namespace detail {

bool ReadTemplateDate(const hstring& S, TDateTime& Value) {
  if (TryISO8601ToDate(S.view(), Value))
    return true;
  try {
    Value = StrtoDateFmt(S.view(), u"");
    return true;
  } catch (const EConvertError&) {
    return false;
  }
}

void RegisterBuiltinTemplateFunctions() {
  static const struct {
    const char16_t* name;
    void (*f)(const hstring&, hstring&);
  } kBuiltins[] = {
      {u"upper", fn_upper},
      {u"lower", fn_lower},
      {u"trim", fn_trim},
      {u"include", TemplateInclude},
      {u"charstorects", fn_charstorects},
      {u"padleft", fn_padleft},
      {u"date", fn_date},
      {u"formatmoney", fn_formatmoney},
      {u"formatdate", fn_formatdate},
      {u"eq", fn_eq},
  };
  for (const auto& b : kBuiltins)
    RegisterHtTemplateFunction(b.name, b.f);
}

void FreeTemplateFunctions() { g_functions.reset(); }

} // namespace detail

} // namespace ht
