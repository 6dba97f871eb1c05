// Table-driven escaping of text and attribute values.
#include "htcore/document/html_encode.h"

#include "document/htmlpars_start.h"
#include "htcore/document/entities.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/startup.h"

namespace ht {

namespace {

// Filled at start, read-only afterwards. g_entity_pages marks the 256-unit
// pages of the basic plane that hold a named character at all, so that text
// in scripts without names (CJK, say) never reaches the dictionary.
uint8_t g_text_overhead[256];
uint8_t g_attr_overhead[256];
uint8_t g_entity_pages[256];

// Ranges whose named characters are not worth a name in output.
constexpr bool passes_over(char16_t c) noexcept {
  return (c >= 256 && c <= 591) || (c >= 880 && c <= 1279) || (c >= 1328 && c <= 1871) ||
         (c >= 8192 && c <= 8351);
}

constexpr bool is_high(char16_t c) noexcept { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool is_low(char16_t c) noexcept { return c >= 0xDC00 && c <= 0xDFFF; }

const THtEntityReverseDictionary* reverse_dictionary() {
  EnsureStarted();
  return HtEntityReverseDictionary();
}

// The record naming c, for a unit that is not below 256, not in the ranges
// passed over and not a surrogate.
inline const THtEntityRec* named(const THtEntityReverseDictionary* rev, char16_t c) {
  return g_entity_pages[c >> 8] && rev ? rev->FindEntity(c) : nullptr;
}

// Writes the escape of a unit below 256 whose overhead is not 0 and returns
// its length. XML spells U+00A0 by number.
inline int byte_escape(char16_t c, char16_t* d, bool xml) {
  auto put = [d](std::u16string_view s) {
    for (size_t i = 0; i < s.size(); ++i)
      d[i] = s[i];
    return static_cast<int>(s.size());
  };
  switch (c) {
  case u'&':
    return put(u"&amp;");
  case u'<':
    return put(u"&lt;");
  case u'>':
    return put(u"&gt;");
  case u'"':
    return put(u"&quot;");
  case 0xA0:
    return put(xml ? u"&#160;" : u"&nbsp;");
  default: // codes below 10
    d[0] = u'&';
    d[1] = u'#';
    d[2] = static_cast<char16_t>(u'0' + c);
    d[3] = u';';
    return 4;
  }
}

// The escape of a unit below 256 as constant text, for the appending forms.
constexpr std::u16string_view kDigitEscapes[10] = {u"&#0;", u"&#1;", u"&#2;", u"&#3;", u"&#4;",
                                                   u"&#5;", u"&#6;", u"&#7;", u"&#8;", u"&#9;"};

inline std::u16string_view byte_escape_text(char16_t c, bool xml) {
  switch (c) {
  case u'&':
    return u"&amp;";
  case u'<':
    return u"&lt;";
  case u'>':
    return u"&gt;";
  case u'"':
    return u"&quot;";
  case 0xA0:
    return xml ? u"&#160;" : u"&nbsp;";
  default: // codes below 10
    return kDigitEscapes[c];
  }
}

inline std::string_view byte_escape_bytes(char16_t c, bool xml) {
  constexpr std::string_view digits[10] = {"&#0;", "&#1;", "&#2;", "&#3;", "&#4;",
                                           "&#5;", "&#6;", "&#7;", "&#8;", "&#9;"};
  switch (c) {
  case u'&':
    return "&amp;";
  case u'<':
    return "&lt;";
  case u'>':
    return "&gt;";
  case u'"':
    return "&quot;";
  case 0xA0:
    return xml ? "&#160;" : "&nbsp;";
  default:
    return digits[c];
  }
}

// `&#x` and six upper-case hexadecimal digits of the code point, `;`.
inline int pair_escape(char16_t hi, char16_t lo, char16_t* d) {
  uint32_t cp = 0x10000 + ((static_cast<uint32_t>(hi) - 0xD800) << 10) + (static_cast<uint32_t>(lo) - 0xDC00);
  d[0] = u'&';
  d[1] = u'#';
  d[2] = u'x';
  for (int i = 0; i < 6; ++i)
    d[3 + i] = u"0123456789ABCDEF"[(cp >> (4 * (5 - i))) & 15];
  d[9] = u';';
  return 10;
}

inline int name_escape(const THtEntityRec* rec, char16_t* d) {
  d[0] = u'&';
  const char16_t* n = rec->name.c_str();
  int len = rec->name.Length();
  for (int i = 0; i < len; ++i)
    d[1 + i] = n[i];
  d[1 + len] = u';';
  return len + 2;
}

int text_overhead(const char16_t* p, const char16_t* end, const THtEntityReverseDictionary* rev) {
  int n = 0;
  while (p < end) {
    char16_t c = *p++;
    if (c < 256) {
      n += g_text_overhead[c];
    } else if (passes_over(c)) {
    } else if (is_high(c)) {
      // A lone high surrogate stays as it is.
      if (p < end && is_low(*p)) {
        n += 8;
        ++p;
      }
    } else if (const THtEntityRec* rec = named(rev, c)) {
      n += rec->name.Length() + 1;
    }
  }
  return n;
}

int attr_overhead(const char16_t* p, const char16_t* end) {
  int n = 0;
  for (; p < end; ++p)
    if (*p < 256)
      n += g_attr_overhead[*p];
  return n;
}

// Second pass of HtmlEncode into d (room for cap units). Returns the units
// written, or -1 when they would not fit.
ptrdiff_t write_text(const char16_t* p, const char16_t* end, char16_t* d, ptrdiff_t cap,
                     const THtEntityReverseDictionary* rev) {
  char16_t* const start = d;
  char16_t* const limit = d + cap;
  while (p < end) {
    char16_t c = *p;
    if (c < 256) {
      int extra = g_text_overhead[c];
      if (limit - d < 1 + extra)
        return -1;
      d += extra ? byte_escape(c, d, false) : (*d = c, 1);
      ++p;
    } else if (is_high(c) && p + 1 < end && is_low(p[1])) {
      if (limit - d < 10)
        return -1;
      d += pair_escape(c, p[1], d);
      p += 2;
    } else if (const THtEntityRec* rec = passes_over(c) || is_high(c) ? nullptr : named(rev, c)) {
      if (limit - d < rec->name.Length() + 2)
        return -1;
      d += name_escape(rec, d);
      ++p;
    } else {
      if (d == limit)
        return -1;
      *d++ = c;
      ++p;
    }
  }
  return d - start;
}

ptrdiff_t write_attr(const char16_t* p, const char16_t* end, char16_t* d, ptrdiff_t cap, bool xml) {
  char16_t* const start = d;
  char16_t* const limit = d + cap;
  for (; p < end; ++p) {
    char16_t c = *p;
    if (c < 256 && g_attr_overhead[c]) {
      if (limit - d < 1 + g_attr_overhead[c])
        return -1;
      d += byte_escape(c, d, xml);
    } else {
      if (d == limit)
        return -1;
      *d++ = c;
    }
  }
  return d - start;
}

// Shared driver of the string forms: count (unless known), share when
// nothing changes, else one allocation and the writing pass. A known count
// that turns out too small is recounted; one too large is cut back.
template <class Count, class Write>
hstring encode(const hstring& s, int NewLength, Count count, Write write) {
  if (s.empty())
    return s;
  const char16_t* p = s.c_str();
  const char16_t* end = p + s.size();
  int overhead = NewLength == -1 || NewLength == -2 || NewLength < 0 ? count(p, end) : NewLength;
  if (overhead == 0)
    return s;
  for (;;) {
    hstring r;
    ptrdiff_t cap = static_cast<ptrdiff_t>(s.size()) + overhead;
    char16_t* d = r.SetLength(static_cast<size_t>(cap));
    ptrdiff_t n = write(p, end, d, cap);
    if (n >= 0) {
      r.Truncate(static_cast<size_t>(n));
      return r;
    }
    int counted = count(p, end);
    HT_ASSERT(counted != overhead); // the passes agree, so a counted size fits
    overhead = counted;
  }
}

} // namespace

const uint8_t* HtmlTextOverheadTable() {
  EnsureStarted();
  return g_text_overhead;
}

const uint8_t* HtmlAttrOverheadTable() {
  EnsureStarted();
  return g_attr_overhead;
}

int HtmlEncodeNodeOverhead(std::u16string_view s) {
  const THtEntityReverseDictionary* rev = reverse_dictionary();
  return text_overhead(s.data(), s.data() + s.size(), rev);
}

int HtmlEncodeAttrOverhead(std::u16string_view s) {
  EnsureStarted();
  return attr_overhead(s.data(), s.data() + s.size());
}

hstring HtmlEncode(const hstring& s, int NewLength) {
  const THtEntityReverseDictionary* rev = reverse_dictionary();
  return encode(
      s, NewLength, [rev](const char16_t* p, const char16_t* e) { return text_overhead(p, e, rev); },
      [rev](const char16_t* p, const char16_t* e, char16_t* d, ptrdiff_t cap) {
        return write_text(p, e, d, cap, rev);
      });
}

static hstring encode_attr(const hstring& s, int NewLength, bool xml) {
  EnsureStarted();
  return encode(
      s, NewLength, [](const char16_t* p, const char16_t* e) { return attr_overhead(p, e); },
      [xml](const char16_t* p, const char16_t* e, char16_t* d, ptrdiff_t cap) {
        return write_attr(p, e, d, cap, xml);
      });
}

hstring HtmlEncodeAttr(const hstring& s, int NewLength) { return encode_attr(s, NewLength, false); }

hstring HtmlEncodeAttrXML(const hstring& s, int NewLength) { return encode_attr(s, NewLength, true); }

void HtmlEncodeTo(TFastString& FS, std::u16string_view s) {
  const THtEntityReverseDictionary* rev = reverse_dictionary();
  const char16_t* p = s.data();
  const char16_t* end = p + s.size();
  const char16_t* run = p;
  // Plain units are appended in runs; only an escape breaks a run.
  while (p < end) {
    char16_t c = *p;
    if (c < 256) {
      if (!g_text_overhead[c]) {
        ++p;
        continue;
      }
      FS.Add(run, p - run);
      FS.Add(byte_escape_text(c, false));
      run = ++p;
      continue;
    }
    if (passes_over(c)) {
      ++p;
      continue;
    }
    if (is_high(c)) {
      if (p + 1 < end && is_low(p[1])) {
        char16_t buf[10];
        FS.Add(run, p - run);
        FS.Add(std::u16string_view(buf, static_cast<size_t>(pair_escape(c, p[1], buf))));
        p += 2;
        run = p;
      } else {
        ++p;
      }
      continue;
    }
    if (const THtEntityRec* rec = named(rev, c)) {
      FS.Add(run, p - run);
      FS.AddChar(u'&').Add(rec->name).AddChar(u';');
      run = ++p;
      continue;
    }
    ++p;
  }
  FS.Add(run, p - run);
}

void HtmlEncodeAttrTo(TFastString& FS, std::u16string_view s, bool XML) {
  EnsureStarted();
  const char16_t* p = s.data();
  const char16_t* end = p + s.size();
  const char16_t* run = p;
  for (; p < end; ++p) {
    char16_t c = *p;
    if (c < 256 && g_attr_overhead[c]) {
      FS.Add(run, p - run);
      FS.Add(byte_escape_text(c, XML));
      run = p + 1;
    }
  }
  FS.Add(run, p - run);
}

void HtmlEncodeAttrToUTF8(TFastRawString& FS, std::u16string_view s, bool XML) {
  EnsureStarted();
  const char16_t* p = s.data();
  const char16_t* end = p + s.size();
  const char16_t* run = p;
  for (; p < end; ++p) {
    char16_t c = *p;
    if (c < 256 && g_attr_overhead[c]) {
      FS.AddUTF8(std::u16string_view(run, static_cast<size_t>(p - run)));
      FS.Add(byte_escape_bytes(c, XML));
      run = p + 1;
    }
  }
  FS.AddUTF8(std::u16string_view(run, static_cast<size_t>(p - run)));
}

namespace detail {

void BuildHtmlEncodeTables() {
  for (int c = 0; c < 256; ++c) {
    g_text_overhead[c] = 0;
    g_attr_overhead[c] = 0;
    g_entity_pages[c] = 0;
  }
  for (int c = 0; c <= 8; ++c) {
    g_text_overhead[c] = 3;
    g_attr_overhead[c] = 3;
  }
  g_attr_overhead[9] = 3;
  g_attr_overhead[u'"'] = 5;
  g_text_overhead[u'&'] = g_attr_overhead[u'&'] = 4;
  g_text_overhead[u'<'] = g_attr_overhead[u'<'] = 3;
  g_text_overhead[u'>'] = g_attr_overhead[u'>'] = 3;
  g_text_overhead[0xA0] = g_attr_overhead[0xA0] = 5;
  if (const THtEntityReverseDictionary* rev = HtEntityReverseDictionary())
    for (const THtEntityRec& e : HtEntityTable())
      if (e.code <= 0xFFFF && rev->FindEntity(e.code) == &e)
        g_entity_pages[e.code >> 8] = 1;
}

} // namespace detail

} // namespace ht
