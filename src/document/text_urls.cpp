// Finding URLs in plain text.
#include "htcore/document/unicode_classes.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/text_utils.h"

namespace ht {

namespace {

using view = std::u16string_view;

bool starts_with_nocase(view s, view prefix) {
  if (s.size() < prefix.size())
    return false;
  for (size_t i = 0; i < prefix.size(); ++i)
    if (CharLower(s[i]) != prefix[i])
      return false;
  return true;
}

bool is_alnum_ascii(char16_t c) {
  return (c >= u'0' && c <= u'9') || (CharLower(c) >= u'a' && CharLower(c) <= u'z');
}

bool looks_like_url(view w) {
  static constexpr view kPrefixes[] = {u"http://", u"https://", u"www.", u"ftp://", u"ftps://", u"mailto:"};
  for (view p : kPrefixes)
    if (w.size() > p.size() && starts_with_nocase(w, p))
      return true;
  // "example.com", "mail@example.com/x", but not "a.company".
  for (size_t i = 1; i + 4 <= w.size(); ++i)
    if (w[i] == u'.' && starts_with_nocase(w.substr(i), u".com") &&
        (i + 4 == w.size() || !is_alnum_ascii(w[i + 4])))
      return true;
  return false;
}

// Trailing units a sentence puts behind a URL; a closing bracket stays part of
// the URL when the URL opens one too (wiki links such as "Foo_(bar)").
size_t trim_tail(view w) {
  size_t n = w.size();
  while (n > 0) {
    char16_t c = w[n - 1];
    if (view(u".,;:!?\"'>").find(c) != view::npos) {
      --n;
      continue;
    }
    char16_t open = c == u')' ? u'(' : c == u']' ? u'[' : c == u'}' ? u'{' : 0;
    if (open && w.substr(0, n - 1).find(open) == view::npos) {
      --n;
      continue;
    }
    break;
  }
  return n;
}

} // namespace

hstring ReplaceTextURLs(const hstring& s, const TReplaceURLProc& Proc) {
  view text = s.view();
  TFastString out(static_cast<int>(text.size()) + 256);
  size_t copied = 0; // text[0, copied) is already in out
  bool found = false;
  size_t i = 0;
  while (i < text.size()) {
    if (text[i] <= u' ') {
      ++i;
      continue;
    }
    size_t start = i;
    while (i < text.size() && text[i] > u' ')
      ++i;
    view word = text.substr(start, i - start);
    size_t lead = 0;
    while (lead < word.size() && view(u"([{<\"'").find(word[lead]) != view::npos)
      ++lead;
    view url = word.substr(lead);
    url = url.substr(0, trim_tail(url));
    if (url.empty() || !looks_like_url(url))
      continue;
    size_t url_start = start + lead;
    out.Add(text.substr(copied, url_start - copied));
    hstring replacement = Proc ? Proc(url) : hstring(url);
    out.Add(replacement.view());
    copied = url_start + url.size();
    found = true;
  }
  if (!found)
    return s;
  out.Add(text.substr(copied));
  return out.GetAsString();
}

} // namespace ht
