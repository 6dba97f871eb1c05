// Attribute text for the serialisers.
#include "htcore/document/attributes.h"
#include "htcore/foundation/fast_string.h"

#include <string>

namespace ht {

namespace {

// Extra units that encoding `v` for an attribute needs; 0 means it goes as is.
int attr_overhead(std::u16string_view v) {
  int n = 0;
  for (char16_t c : v) {
    switch (c) {
    case u'<':
    case u'>':
      n += 3;
      break;
    case u'&':
      n += 4;
      break;
    case u'"':
      n += 5;
      break;
    case 0xA0:
      n += 5;  // "&nbsp;" and "&#160;" are both six units
      break;
    default:
      if (c < 10)
        n += 3;
    }
  }
  return n;
}

// XML has no &nbsp;, so a case-sensitive (XML) set writes U+00A0 by number.
template <class Out>
void encode_attr(Out&& out, std::u16string_view v, bool xml) {
  size_t run = 0;
  for (size_t i = 0; i < v.size(); ++i) {
    const char16_t* rep = nullptr;
    char16_t digit[5] = {u'&', u'#', 0, u';', 0};
    switch (v[i]) {
    case u'<':
      rep = u"&lt;";
      break;
    case u'>':
      rep = u"&gt;";
      break;
    case u'&':
      rep = u"&amp;";
      break;
    case u'"':
      rep = u"&quot;";
      break;
    case 0xA0:
      rep = xml ? u"&#160;" : u"&nbsp;";
      break;
    default:
      if (v[i] < 10) {
        digit[2] = static_cast<char16_t>(u'0' + v[i]);
        rep = digit;
      }
    }
    if (!rep)
      continue;
    out(v.substr(run, i - run));
    out(std::u16string_view(rep));
    run = i + 1;
  }
  out(v.substr(run));
}

}  // namespace

hstring THtAttributes::AsString() const {
  std::u16string r;
  for (const THtAttribute& a : *this) {
    if (!r.empty())
      r += u' ';
    r += a.Name.view();
    r += u"=\"";
    encode_attr([&](std::u16string_view s) { r += s; }, a.Value.view(), CaseSensitive);
    r += u'"';
  }
  return hstring(r.data(), r.size());
}

void THtAttributes::FastAsString(TFastString& FS) const {
  for (const THtAttribute& a : *this) {
    FS.AddChar(u' ').Add(a.Name);
    if (!CaseSensitive && a.Name == a.Value)
      continue;
    FS.Add2Char(u'=', u'"');
    if (attr_overhead(a.Value.view()) != 0) {
      std::u16string encoded;
      encode_attr([&](std::u16string_view s) { encoded += s; }, a.Value.view(), CaseSensitive);
      FS.Add(std::u16string_view(encoded));
    } else {
      FS.Add(a.Value);
    }
    FS.AddChar(u'"');
  }
}

void THtAttributes::FastAsUTF8String(TFastRawString& FS) const {
  for (const THtAttribute& a : *this) {
    FS.AddChar(' ').AddUTF8(a.Name.view());
    FS.Add2Char('=', '"');
    encode_attr([&](std::u16string_view s) { FS.AddUTF8(s); }, a.Value.view(), CaseSensitive);
    FS.AddChar('"');
  }
}

}  // namespace ht
