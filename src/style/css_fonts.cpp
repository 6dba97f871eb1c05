// @font-face into custom fonts, and @keyframes lists.
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

namespace ht {

TCSSCustomFont::TCSSCustomFont(const hstring& AFamily, const hstring& AURL, const hstring& AStyle,
                               const hstring& AWeight, const hstring& ALocal)
    : Family(LowerCase(AFamily.view())), URL(AURL), Style(LowerCase(AStyle.view())),
      Weight(LowerCase(AWeight.view())), Local(ALocal) {
  if (Style.empty())
    Style = u"normal"_hs;
  if (Weight.empty())
    Weight = u"400"_hs;
  if (Style == u"italic") {
    CSSFontStyle = cfsItalic;
    FontStyles |= HtFontStyleBit(hfsItalic);
  } else if (Style.view().starts_with(u"oblique")) {
    CSSFontStyle = cfsOblique;
  }
  if (Weight == u"normal")
    Weight = u"400"_hs;
  else if (Weight == u"bold")
    Weight = u"700"_hs;
  TStringParser sp(Weight);
  NumWeight = sp.ReadInt();
  if (NumWeight <= 0 || !sp.Empty())
    NumWeight = 400;
  switch (NumWeight) {
  case 100:
    CSSFontWeight = fw100;
    break;
  case 200:
    CSSFontWeight = fw200;
    FontStyles |= HtFontStyleBit(hfsUltraLight);
    break;
  case 300:
    CSSFontWeight = fw300;
    FontStyles |= HtFontStyleBit(hfsLight);
    break;
  case 500:
    CSSFontWeight = fw500;
    break;
  case 600:
    CSSFontWeight = fw600;
    break;
  case 700:
    CSSFontWeight = fwBold;
    FontStyles |= HtFontStyleBit(hfsBold);
    break;
  case 900:
    CSSFontWeight = fw900;
    FontStyles |= HtFontStyleBit(hfsBlack);
    break;
  default:
    CSSFontWeight = fwNormal;
    break;
  }
}

TCSSCustomFont* TCSSCustomFontFamily::GetFont(THtFontStyles Styles) const {
  for (const auto& f : Fonts)
    if (f->FontStyles == Styles)
      return f.get();
  auto group = [&](THtFontStyles pair) -> TCSSCustomFont* {
    if (!(Styles & pair))
      return nullptr;
    THtFontStyles others = Styles & ~pair;
    for (const auto& f : Fonts)
      if ((f->FontStyles & pair) && (f->FontStyles & ~pair) == others)
        return f.get();
    return nullptr;
  };
  if (TCSSCustomFont* f = group(HtFontStyleBit(hfsLight) | HtFontStyleBit(hfsUltraLight)))
    return f;
  if (TCSSCustomFont* f = group(HtFontStyleBit(hfsBold) | HtFontStyleBit(hfsBlack)))
    return f;
  if (Styles & HtFontStyleBit(hfsItalic))
    for (const auto& f : Fonts)
      if (f->FontStyles & HtFontStyleBit(hfsItalic))
        return f.get();
  return Fonts.empty() ? nullptr : Fonts[0].get();
}

TCSSCustomFont* TCSSCustomFontFamily::GetFontByIndex(int Index) const {
  if (Index < 0 || Index >= static_cast<int>(Fonts.size()))
    throw ERangeError(u"Font index out of range"_hs);
  return Fonts[static_cast<size_t>(Index)].get();
}

void ParseFontFamilyName(const hstring& Name, hstring& Family, hstring& Weight) {
  static const char16_t* const kSuffixes[] = {u" narrow",     u" extrablack", u" ultrablack", u" black",
                                              u" heavy",      u" demibold",   u" semibold",   u" bold",
                                              u" extrabold",  u" ultrabold",  u" medium",     u" light",
                                              u" extralight", u" ultralight", u" thin",       u" regular"};
  hstring lower = LowerCase(Name.view());
  for (const char16_t* s : kSuffixes) {
    std::u16string_view suf(s);
    size_t at = lower.view().find(suf);
    if (at != std::u16string_view::npos) {
      Family = Trim(Name.substr(0, at));
      Weight = Trim(lower.substr(at));
      return;
    }
  }
  Family = Name;
  Weight.clear();
}

void TCSSStyleSheet::ExtractFontFace(const TCSSSection& S) {
  hstring family, url, style, weight;
  std::u16string local;
  for (const TCSSValue& v : S.Values) {
    const TCSSTokens& t = v.Tokens;
    if (t.empty())
      continue;
    if (v.Name == u"font-family") {
      if (!SameText(t[0].Name, u"inherit"))
        family = t[0].Name;
    } else if (v.Name == u"src") {
      hstring last_uri;
      for (size_t i = 0; i < t.size(); ++i) {
        const TCSSToken& k = t[i];
        if (k.CType == ctURI) {
          last_uri = k.Name;
        } else if (k.CType == ctFunction && k.Name == u"local") {
          for (size_t j = i + 1; j < t.size(); ++j)
            if (t[j].CType == ctString || (t[j].CType == ctIdent && t[j].Name != u"(")) {
              if (!local.empty())
                local += u';';
              local += t[j].Name.view();
              i = j;
              break;
            }
        } else if (k.Name == u"truetype" || k.Name == u"opentype" || k.Name == u"woff") {
          // Only these format hints register a source; the last pair wins.
          if (!last_uri.empty())
            url = last_uri;
        }
      }
    } else if (v.Name == u"font-style") {
      for (const TCSSToken& k : t)
        if (k.CType == ctIdent)
          style = k.Name;
    } else if (v.Name == u"font-weight") {
      for (const TCSSToken& k : t)
        if (k.CType == ctIdent || k.CType == ctNumber)
          weight = k.Name;
    }
  }
  if (family.empty() || url.empty())
    return;
  auto font = std::make_unique<TCSSCustomFont>(family, URL.empty() ? url : url, style, weight,
                                               hstring(local.data(), local.size()));
  auto& fam = CustomFonts[font->Family];
  if (!fam)
    fam = std::make_unique<TCSSCustomFontFamily>(font->Family);
  fam->Fonts.push_back(std::move(font));
}

// --- Key frames ---

TCSSSection* TCSSKeyFrameList::FindSection(int Percent) const {
  if (Count() == 0)
    return nullptr;
  if (Percent < 0)
    return static_cast<TCSSSection*>(GetObject(0));
  for (int i = 1; i < Count(); ++i)
    if (Get(i) >= Percent)
      return static_cast<TCSSSection*>(GetObject(i));
  return static_cast<TCSSSection*>(GetObject(Count() - 1));
}

TCSSKeyFrameList* TCSSKeyFrameMap::Get(const hstring& Name) const {
  auto it = Lists.find(Name);
  return it == Lists.end() ? nullptr : it->second.get();
}

TCSSKeyFrameList* TCSSKeyFrameMap::GetOrAdd(const hstring& Name) {
  auto& l = Lists[Name];
  if (!l)
    l = std::make_shared<TCSSKeyFrameList>();
  return l.get();
}

} // namespace ht
