#include "htcore/style/css_sheet.h"

#include "htcore/foundation/convert.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/string_list.h"
#include "htcore/foundation/text_utils.h"

#include <algorithm>
#include <unordered_set>
#include <cmath>

namespace ht {

TCSSMediaSet* CSSDefaultMediaSet() {
  static TCSSMediaSet set;
  return &set;
}

// --- Writers ---

namespace {

bool has_blank(const hstring& s) { return s.view().find(u' ') != std::u16string_view::npos; }

void write_tokens(const TCSSTokens& toks, std::u16string& out, bool quoted) {
  bool first = true;
  for (const TCSSToken& t : toks) {
    switch (t.CType) {
    case ctOpenPar:
    case ctClosePar:
    case ctOpenBr:
    case ctCloseBr:
    case ctColon:
    case ctSemicolon:
    case ctComma:
    case ctBlockStart:
    case ctBlockEnd:
      out += t.Name.view();
      break;
    case ctHash:
      out += u" #";
      out += t.Name.view();
      break;
    case ctURI:
      if (!first)
        out += u' ';
      out += u"url('";
      out += t.Name.view();
      out += u"')";
      break;
    case ctSpace:
      out += u' ';
      break;
    case ctString:
      // A string keeps its quotes unless the whole value is quoted.
      if (!first)
        out += u' ';
      if (quoted) {
        out += t.Name.view();
      } else {
        out += u'\'';
        for (char16_t c : t.Name.view()) {
          if (c == u'\'' || c == u'\\')
            out += u'\\';
          out += c;
        }
        out += u'\'';
      }
      break;
    default:
      if (!first)
        out += u' ';
      out += t.Name.view();
    }
    first = false;
  }
}

void write_value(const TCSSValue& v, std::u16string& out) {
  out += v.Name.view();
  out += u':';
  const TCSSTokens& t = v.Tokens;
  bool quote = !t.empty() && t[0].CType != ctURI && std::any_of(t.begin(), t.end(), [](const TCSSToken& k) {
    return k.CType == ctSpace || has_blank(k.Name);
  });
  if (quote)
    out += u'\'';
  write_tokens(t, out, quote);
  if (quote)
    out += u'\'';
  if (v.Important) {
    out += u"!important;";
  } else {
    while (!out.empty() && out.back() <= u' ')
      out.pop_back();
    out += u';';
  }
}

void write_selectors(const TCSSSection& s, std::u16string& out, const char16_t* sep) {
  for (int i = 0; i < s.Selectors.Count(); ++i) {
    if (i)
      out += sep;
    out += s.Selectors.GetSelector(i)->AsString().view();
  }
}

void write_section(const TCSSSection& s, std::u16string& out, bool compact) {
  write_selectors(s, out, compact ? u"," : u", ");
  out += u'{';
  if (!compact)
    out += u"\r\n";
  for (const TCSSValue& v : s.Values) {
    if (!compact)
      out += u"  ";
    write_value(v, out);
    if (!compact)
      out += u"\r\n";
  }
  out += u'}';
}

hstring to_hstring(const std::u16string& s) { return hstring(s.data(), s.size()); }

} // namespace

hstring CSSValuetoString(const TCSSValue& Value) {
  std::u16string out;
  write_value(Value, out);
  return to_hstring(out);
}

hstring TCSSMediaSet::AsString() const {
  std::u16string out;
  for (const TCSSToken& t : Tokens)
    out += t.CType == ctSpace ? std::u16string_view(u" ") : t.Name.view();
  return to_hstring(out);
}

// --- Media ---

bool CheckMedia(const TCSSMediaSet& Set, TCSSMedia Media, int64_t Width, int64_t DeviceWidth) {
  if (Set.Media != (1u << cmAll) && !Set.Has(Media))
    return false;
  if (!Set.HasSizeQuery)
    return true;
  if (Set.MinWidth > Width || (Set.MaxWidth && Set.MaxWidth < Width))
    return false;
  if (DeviceWidth == 0)
    DeviceWidth = Width;
  return !(Set.MinDeviceWidth > DeviceWidth || (Set.MaxDeviceWidth && Set.MaxDeviceWidth < DeviceWidth));
}

// --- TCSSSection ---

void TCSSSection::AddSelector(TCSSSelector* S) {
  S->Section = this;
  Selectors.AddSelector(S);
}

void TCSSSection::AddValue(const hstring& Name, const hstring& Value) {
  TCSSParser p(Name + u":" + Value + u";", true);
  p.Section = std::make_unique<TCSSSection>();
  p.ReadSectionValues();
  for (auto& c : p.Section->FCalcValues)
    FCalcValues.push_back(std::move(c));
  for (TCSSValue& v : p.Section->Values) {
    v.Section = this;
    std::erase_if(Values, [&](const TCSSValue& o) { return o.Name == v.Name; });
    Values.push_back(std::move(v));
  }
  Compile();
}

void TCSSSection::DeleteValue(int Index) {
  if (Index < 0 || Index >= static_cast<int>(Values.size()))
    return;
  Values.erase(Values.begin() + Index);
  Compile();
}

TCSSValue* TCSSSection::ValuebyName(const hstring& Name) {
  for (TCSSValue& v : Values)
    if (SameText(v.Name, Name))
      return &v;
  return nullptr;
}

TCSSValue* TCSSSection::CompiledValuebyName(const hstring& Name) {
  TCSSValue* hit = nullptr;
  for (TCSSValue& v : CompiledValues)
    if (SameText(v.Name, Name))
      hit = &v; // the last one wins, as in the cascade
  return hit;
}

hstring TCSSSection::AsString() const {
  std::u16string out;
  write_section(*this, out, false);
  return to_hstring(out);
}

hstring TCSSSection::AsInlineString() const {
  std::u16string out;
  for (const TCSSValue& v : Values)
    write_value(v, out);
  return to_hstring(out);
}

void TCSSSection::Minify() {
  static const char16_t* const kSides[] = {u"-top", u"-right", u"-bottom", u"-left"};
  bool changed = false;
  for (std::u16string_view base : {std::u16string_view(u"border"), std::u16string_view(u"padding")}) {
    hstring top = hstring(base) + kSides[0];
    TCSSValue* t = ValuebyName(top);
    if (!t || ValuebyName(hstring(base)))
      continue;
    auto same = [&](const TCSSValue* o) {
      if (!o || o->Tokens.size() != t->Tokens.size() || o->Important != t->Important)
        return false;
      for (size_t i = 0; i < o->Tokens.size(); ++i)
        if (o->Tokens[i].Name != t->Tokens[i].Name)
          return false;
      return true;
    };
    if (!same(ValuebyName(hstring(base) + kSides[1])) || !same(ValuebyName(hstring(base) + kSides[2])) ||
        !same(ValuebyName(hstring(base) + kSides[3])))
      continue;
    t->Name = hstring(base);
    t->NameToken.Name = t->Name;
    for (int s = 1; s < 4; ++s) {
      hstring n = hstring(base) + kSides[s];
      std::erase_if(Values, [&](const TCSSValue& o) { return o.Name == n; });
    }
    changed = true;
  }
  if (changed) {
    for (TCSSValue& v : Values)
      TCSSParser::PrepareValue(v, this);
    Compile();
  }
}

// --- TCSSStyleSheet ---

TCSSStyleSheet::TCSSStyleSheet() = default;
TCSSStyleSheet::~TCSSStyleSheet() {
  // The maps only point at selectors; they go before the sections that own them.
  Main.Clear();
  Before.reset();
  After.reset();
  Marker.reset();
}

TCSSStyleMaps* TCSSStyleSheet::Maps(TCSSPseudoClass Pseudo) const {
  switch (Pseudo) {
  case pcBefore:
    return Before.get();
  case pcAfter:
    return After.get();
  case pcMarker:
    return Marker.get();
  default:
    return const_cast<TCSSStyleMaps*>(&Main);
  }
}

void TCSSStyleSheet::AddSelector(TCSSSelector* S) {
  ++SelectorCounter;
  if (S->Order == 0 || S->Order >= 10000)
    S->Order = SelectorCounter;
  auto group = [](std::unique_ptr<TCSSStyleMaps>& m) -> TCSSStyleMaps& {
    if (!m)
      m = std::make_unique<TCSSStyleMaps>();
    return *m;
  };
  if (S->PseudoClasses & PCBit(pcBefore))
    group(Before).AddSelector(S);
  else if (S->PseudoClasses & PCBit(pcAfter))
    group(After).AddSelector(S);
  else if (S->PseudoClasses & PCBit(pcMarker))
    group(Marker).AddSelector(S);
  else
    Main.AddSelector(S);
}

void TCSSStyleSheet::AddVariable(const hstring& Name, const TCSSTokens& Tokens) {
  TCSSVariable& v = Variables[Name];
  v.Name = Name;
  v.Tokens = Tokens;
}

void TCSSStyleSheet::TakeSection(std::unique_ptr<TCSSSection> S, int Weight, bool Custom,
                                 const hstring& KeyFrame) {
  S->URL = URL;
  if (S->Values.empty())
    return;
  if (S->FontFace) {
    ExtractFontFace(*S);
    fSections.push_back(std::move(S));
    return;
  }
  if (!KeyFrame.empty()) {
    TCSSKeyFrameList* list = KeyFrames.GetOrAdd(KeyFrame);
    for (TCSSSelector* sel : S->Selectors) {
      int pct = -1;
      if (sel->Tag == u"from")
        pct = 0;
      else if (sel->Tag == u"to")
        pct = 100;
      else if (sel->Tag.size() > 1) {
        hstring num = sel->Tag.substr(0, sel->Tag.size() - 1);
        TStringParser sp(num);
        double d = sp.ReadNumEx();
        if (sp.Empty() && d >= 0 && d <= 100)
          pct = static_cast<int>(std::lround(d));
      }
      // A percentage given again takes the later rule: the list stays at
      // 101 steps whatever the number of rules.
      int at;
      if (pct >= 0 && list->Find(pct, at))
        list->PutObject(at, S.get());
      else if (pct >= 0)
        list->AddObject(pct, S.get());
    }
    FKeyFrameSections.push_back({KeyFrame, S.get()});
    fSections.push_back(std::move(S));
    return;
  }
  S->Custom = Custom;
  for (const TCSSValue& v : S->Values)
    if (v.Name.view().starts_with(u"--"))
      AddVariable(v.Name.substr(2), v.Tokens);
  for (TCSSSelector* sel : S->Selectors) {
    sel->Weight = Weight == -1 ? sel->CalcWeight() : static_cast<uint32_t>(Weight);
    AddSelector(sel);
  }
  fSections.push_back(std::move(S));
}

void TCSSStyleSheet::Parse(const hstring& Text, int Weight, bool Custom) {
  if (Trim(Text).empty())
    return;
  TCSSParser p(Text, true);
  while (p.NextSection()) {
    hstring frame = p.KeyFrameName;
    TakeSection(std::move(p.Section), Weight, Custom, frame);
  }
  for (const hstring& i : p.Imports)
    FImports.push_back(URL.empty() ? i : CombineUrl(URL, i));
  for (size_t i = p.MediaSets.size(); i-- > 0;) {
    TCSSMediaSet* m = p.MediaSets[i].get();
    if (m->Media != (1u << cmAll))
      HasMediaQueries = true;
    if (m->HasSizeQuery)
      HasMediaSizeQueries = HasSizeQuery = true;
    MediaSets.push_back(m);
    FOwnMediaSets.push_back(std::move(p.MediaSets[i]));
  }
}

void TCSSStyleSheet::ParseValues(const hstring& Text, int Weight) {
  TCSSParser p(Text, true);
  p.Section = std::make_unique<TCSSSection>();
  p.ReadSectionValues();
  auto s = std::move(p.Section);
  s->MediaSet = CSSDefaultMediaSet();
  s->Compile();
  s->AddSelector(TCSSSelector::Parse(u"*"_hs).release());
  TakeSection(std::move(s), Weight, false, hstring());
}

void TCSSStyleSheet::AddInlineValue(const hstring& Name, const hstring& Value) {
  for (auto& s : fSections)
    if (s->Selectors.Count() == 1 && s->Selectors.GetSelector(0)->Universal) {
      s->AddValue(Name, Value);
      return;
    }
  ParseValues(Name + u":" + Value);
}

void TCSSStyleSheet::Clear() {
  Main.Clear();
  Before.reset();
  After.reset();
  Marker.reset();
  KeyFrames.Lists.clear();
  FKeyFrameSections.clear();
  fSections.clear();
  MediaSets.clear();
  FOwnMediaSets.clear();
  FImports.clear();
  CustomFonts.clear();
  Variables.clear();
  HasMediaQueries = HasMediaSizeQueries = HasSizeQuery = false;
}

void TCSSStyleSheet::ClearProp(const hstring& Name) {
  for (auto& s : fSections) {
    size_t n = s->Values.size();
    std::erase_if(s->Values, [&](const TCSSValue& v) { return SameText(v.Name, Name); });
    if (s->Values.size() != n)
      s->Compile();
  }
}

void TCSSStyleSheet::ClearSection(const hstring& SelectorText) {
  for (size_t i = fSections.size(); i-- > 0;) {
    TCSSSection* s = fSections[i].get();
    if (s->Selectors.Count() == 0 || s->Selectors.GetSelector(0)->AsString() != SelectorText)
      continue;
    for (TCSSStyleMaps* m : {&Main, Before.get(), After.get(), Marker.get()})
      if (m)
        m->RemoveSection(s);
    fSections.erase(fSections.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

hstring TCSSStyleSheet::AsString() const { return Write(false); }

hstring TCSSStyleSheet::Write(bool Compact) const {
  std::u16string out;
  const TCSSMediaSet* open = nullptr;
  const char16_t* eol = Compact ? u"" : u"\r\n";
  std::unordered_set<const TCSSSection*> frames;
  for (const auto& f : FKeyFrameSections)
    frames.insert(f.second);
  auto is_frame = [&](const TCSSSection* s) { return frames.count(s) != 0; };
  for (const auto& s : fSections) {
    if (is_frame(s.get()))
      continue;
    const TCSSMediaSet* m = s->MediaSet == CSSDefaultMediaSet() ? nullptr : s->MediaSet;
    if (m != open) {
      if (open)
        out += u"}", out += eol;
      if (m)
        out += u"@media " + m->AsString() + u"{", out += eol;
      open = m;
    }
    write_section(*s, out, Compact);
    out += eol;
  }
  if (open)
    out += u"}", out += eol;
  hstring frame;
  for (const auto& [name, s] : FKeyFrameSections) {
    if (name != frame) {
      if (!frame.empty())
        out += u"}", out += eol;
      out += u"@keyframes " + name + u"{";
      out += eol;
      frame = name;
    }
    write_section(*s, out, Compact);
    out += eol;
  }
  if (!frame.empty())
    out += u"}", out += eol;
  return to_hstring(out);
}

hstring TCSSStyleSheet::AsInlineString() const {
  std::u16string out;
  std::vector<const TCSSSection*> seen;
  for (const auto& s : fSections) {
    if (std::find(seen.begin(), seen.end(), s.get()) != seen.end())
      continue;
    seen.push_back(s.get());
    for (const TCSSValue& v : s->Values)
      write_value(v, out);
  }
  return Trim(to_hstring(out));
}

void TCSSStyleSheet::Minify() {
  for (auto& s : fSections)
    s->Minify();
}

const TCSSTokens* TCSSStyleSheet::ValuebyName(const hstring& Name) const {
  for (size_t i = fSections.size(); i-- > 0;)
    if (TCSSValue* v = fSections[i]->ValuebyName(Name))
      return &v->Tokens;
  return nullptr;
}

void TCSSStyleSheet::GetAllClasses(TStringList& List) const {
  for (const TCSSStyleMaps* m :
       {static_cast<const TCSSStyleMaps*>(&Main), static_cast<const TCSSStyleMaps*>(Before.get()),
        static_cast<const TCSSStyleMaps*>(After.get()), static_cast<const TCSSStyleMaps*>(Marker.get())})
    if (m)
      m->GetAllClasses(List);
}

void TCSSStyleSheet::GetAllIds(TStringList& List) const {
  for (const TCSSStyleMaps* m :
       {static_cast<const TCSSStyleMaps*>(&Main), static_cast<const TCSSStyleMaps*>(Before.get()),
        static_cast<const TCSSStyleMaps*>(After.get()), static_cast<const TCSSStyleMaps*>(Marker.get())})
    if (m)
      m->GetAllIds(List);
}

bool TCSSStyleSheet::TestMediaSets(TCSSMedia Media, int64_t Width, int64_t DeviceWidth) {
  bool changed = false;
  for (TCSSMediaSet* m : MediaSets) {
    bool d = !CheckMedia(*m, Media, Width, DeviceWidth);
    changed |= d != m->Disabled;
    m->Disabled = d;
  }
  return changed;
}

void TCSSStyleSheet::GetAnimationSelectors(const hstring& Name, int Step,
                                           std::vector<std::pair<uint32_t, const TCSSValue*>>& List) const {
  TCSSKeyFrameList* l = KeyFrames.Get(Name);
  if (!l)
    return;
  int i;
  if (!l->Find(Step, i))
    return;
  const auto* s = static_cast<const TCSSSection*>(l->GetObject(i));
  for (const TCSSValue& v : s->CompiledValues)
    List.emplace_back(0xFF000000u, &v);
}

void TCSSStyleSheet::GetAnimationSteps(const hstring& Name, std::vector<int>& Steps) const {
  Steps.clear();
  if (TCSSKeyFrameList* l = KeyFrames.Get(Name))
    for (int i = 0; i < l->Count(); ++i)
      Steps.push_back(l->Get(i));
}

} // namespace ht
