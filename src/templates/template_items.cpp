#include "foundation/quote_scan.h"
#include "htcore/foundation/hash.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/templates/template_functions.h"
#include "htcore/templates/template_parser.h"

#include <vector>

namespace ht {

namespace {

hstring trimmed_tail(const hstring& s, size_t from) { return Trim(s.substr(from)); }

// Splits at '.' outside brackets and quotes, so that a path condition such as
// [@price='1.5'] stays in one step. Empty steps ("a..b") are dropped.
void split_steps(std::u16string_view s, std::vector<hstring>& out) {
  detail::TQuoteScanner scan(detail::kTemplateStepScan);
  for (size_t from = 0; from <= s.size();) {
    size_t to = scan.Find(s, from);
    if (to > from)
      out.emplace_back(s.substr(from, to - from));
    from = to + 1;
  }
}

// Position of the '(' that starts a trailing "(format)": the first one outside
// brackets and quotes, or npos.
size_t format_start(std::u16string_view s) {
  size_t f = detail::TQuoteScanner(detail::kTemplateFormatScan).Find(s);
  return f < s.size() ? f : std::u16string_view::npos;
}

bool is_number_format(char16_t c) { return c == u'#' || c == u',' || c == u'.' || (c >= u'0' && c <= u'9'); }

} // namespace

void CompileTemplateName(const hstring& Name, THtTemplateName& R) {
  R = THtTemplateName();
  std::u16string_view s = Name.view();
  if (s.empty())
    return;
  if (s[0] == u'%') {
    R.Kind = THtTemplateName::tnPass;
    R.Pass = u"{{" + Name.substr(1) + u"}}";
    return;
  }
  if (s == u"-index") {
    R.Kind = THtTemplateName::tnIndex;
    return;
  }
  if (s == u".") {
    R.Kind = THtTemplateName::tnSelf;
    return;
  }
  R.Simple = s.find(u'.') == std::u16string_view::npos;
  R.Hash = ShaPerfectHashAsm(s.data(), static_cast<int>(s.size()));
  if (s == u"-tag")
    R.Kind = THtTemplateName::tnTag;

  std::u16string_view path = s;
  if (path.back() == u')') {
    size_t f = format_start(path);
    // "text()" and the like end in ")" too; an empty pair is no format.
    if (f != std::u16string_view::npos && f + 2 < path.size()) {
      R.Format = hstring(path.substr(f + 1, path.size() - f - 2));
      R.NumberFormat = is_number_format(R.Format[0]);
      path = path.substr(0, f);
    }
  }
  size_t dots = 0;
  while (dots < path.size() && path[dots] == u'.')
    ++dots;
  // One dot means this level; every pair climbs one level.
  R.Up = static_cast<int>(dots / 2);
  split_steps(path.substr(dots), R.Steps);
  if (!R.Steps.empty()) {
    const hstring& last = R.Steps.back();
    if (last[0] == u'@')
      R.Attr = last.substr(1);
    R.LastPath = last.view().find(u'/') != std::u16string_view::npos;
  }

  size_t slash = s.find(u'/');
  if (slash != std::u16string_view::npos) {
    R.HasSlash = true;
    R.PathBase = hstring(s.substr(0, slash));
    R.PathRest = hstring(s.substr(slash + 1));
  }
  size_t paren = s.find(u'(');
  if (paren != std::u16string_view::npos) {
    R.HasParen = true;
    R.UpdateVar = hstring(s.substr(0, paren));
  }
  size_t from = 0;
  for (size_t i = 0; i <= s.size(); ++i)
    if (i == s.size() || s[i] == u'.') {
      R.SectionSteps.emplace_back(s.substr(from, i - from));
      from = i + 1;
    }
}

void THtTemplateItem::Parse(const THtTemplateToken& Token) {
  Kind = tiSection;
  Escape = Inverted = Nested = NonEmpty = false;
  func = nullptr;
  Items = Next = nullptr;
  const hstring& s = Token.Name;
  switch (Token.Kind) {
  case ttkText:
  case ttkTemplate:
    Kind = tiText;
    Name = s;
    return;
  case ttkVarHTML:
    Kind = tiVariable;
    Name = Trim(s);
    break;
  case ttkVariable:
    if (s.empty()) {
      Name = hstring(); // "{{}}": a section with no effect and no children
      return;
    }
    switch (s[0]) {
    case u'#':
      Name = trimmed_tail(s, 1);
      if (const THtTemplateFunctionContainer* f = FindHtTemplateFunction(Name))
        func = f->F;
      break;
    case u'^':
      Inverted = true;
      Name = trimmed_tail(s, 1);
      break;
    case u'@':
      NonEmpty = true;
      if (s.size() > 1 && s[1] == u'!') {
        Inverted = true;
        Name = trimmed_tail(s, 2);
      } else {
        Name = trimmed_tail(s, 1);
      }
      break;
    case u'&':
      Kind = tiVariable;
      // An escaped "<" in a name (from HTML editors) keeps its "&".
      Name = s.view().starts_with(u"&lt;") ? Trim(s) : trimmed_tail(s, 1);
      break;
    case u'!':
      Kind = tiComment;
      Name = s.substr(1);
      return;
    default:
      Kind = tiVariable;
      Escape = true;
      Name = Trim(s);
    }
    break;
  }
  if (Kind == tiVariable && !Name.empty() && Name[0] == u'@') {
    Nested = true;
    Name = trimmed_tail(Name, 1);
  }
  CompileTemplateName(Name, Lookup);
}

THtTemplateItem* ParseTemplateItems(THtTemplateTokenizer& Tokenizer, THtTemplateItemArena& Arena) {
  struct TLevel {
    THtTemplateItem* Section; // null at the top
    THtTemplateItem* Last;
  };
  THtTemplateItem* first = nullptr;
  std::vector<TLevel> open{{nullptr, nullptr}};
  while (Tokenizer.NextToken()) {
    const THtTemplateToken& t = Tokenizer.Token;
    TLevel& top = open.back();
    // Only the innermost open section can be closed; a closing tag of an outer
    // one is read as a variable.
    if (t.Kind == ttkVariable && top.Section && t.Name.size() == top.Section->Name.size() + 1 &&
        t.Name[0] == u'/' && t.Name.view().substr(1) == top.Section->Name.view()) {
      open.pop_back();
      continue;
    }
    THtTemplateItem* item = Arena.New();
    item->Parse(t);
    if (top.Last)
      top.Last->Next = item;
    else if (top.Section)
      top.Section->Items = item;
    else
      first = item;
    top.Last = item;
    if (item->OpensBlock())
      open.push_back({item, nullptr});
  }
  return first;
}

} // namespace ht
