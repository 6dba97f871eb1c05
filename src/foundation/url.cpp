// URL helpers: HTTPDecode, HtEncodeUrl, CombineUrl.
#include "foundation/hex_digit.h"
#include "foundation/url_escapes.h"
#include "htcore/foundation/convert.h"
#include "htcore/foundation/startup.h"

#include <cstdint>
#include <string>

namespace ht {

namespace detail {

char16_t g_url_escapes[256][3];

void StartUrlEscapes() {
  static const char16_t kHex[] = u"0123456789ABCDEF";
  for (int b = 0; b < 256; ++b) {
    g_url_escapes[b][0] = u'%';
    g_url_escapes[b][1] = kHex[b >> 4];
    g_url_escapes[b][2] = kHex[b & 15];
  }
}

} // namespace detail

namespace {

void AppendCodePoint(std::u16string& out, uint32_t cp) {
  if (cp < 0x10000) {
    out += static_cast<char16_t>(cp);
  } else {
    cp -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (cp >> 10));
    out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
  }
}

// Length of the valid UTF-8 sequence at b (1 to 4), or 0 when there is none;
// cp receives the code point.
int Utf8Sequence(const uint8_t* b, size_t n, uint32_t& cp) {
  uint8_t c = b[0];
  int len;
  uint32_t min;
  if (c >= 0xC2 && c <= 0xDF) {
    len = 2, min = 0x80, cp = c & 0x1F;
  } else if (c >= 0xE0 && c <= 0xEF) {
    len = 3, min = 0x800, cp = c & 0x0F;
  } else if (c >= 0xF0 && c <= 0xF4) {
    len = 4, min = 0x10000, cp = c & 0x07;
  } else {
    return 0;
  }
  if (n < static_cast<size_t>(len))
    return 0;
  for (int i = 1; i < len; ++i) {
    if ((b[i] & 0xC0) != 0x80)
      return 0;
    cp = (cp << 6) | (b[i] & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
    return 0;
  return len;
}

// Decoded bytes: UTF-8 where it is valid, one unit per byte elsewhere.
void FlushBytes(std::u16string& out, std::string& bytes) {
  auto b = reinterpret_cast<const uint8_t*>(bytes.data());
  size_t n = bytes.size();
  for (size_t i = 0; i < n;) {
    uint32_t cp;
    int len = b[i] < 0x80 ? 0 : Utf8Sequence(b + i, n - i, cp);
    if (len) {
      AppendCodePoint(out, cp);
      i += len;
    } else {
      out += static_cast<char16_t>(b[i++]);
    }
  }
  bytes.clear();
}

bool KeepsInUrl(char16_t c) {
  if ((c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9'))
    return true;
  switch (c) {
  case u'!':
  case u'(':
  case u')':
  case u'*':
  case u'-':
  case u'.':
  case u'\\':
  case u'_':
  case u'~':
    return true;
  default:
    return false;
  }
}

bool StartsWithNoCase(std::u16string_view s, std::u16string_view prefix) {
  if (s.size() < prefix.size())
    return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    char16_t c = s[i];
    if (c >= u'A' && c <= u'Z')
      c = static_cast<char16_t>(c + 32);
    if (c != prefix[i])
      return false;
  }
  return true;
}

} // namespace

hstring HTTPDecode(const hstring& S) {
  std::u16string_view s = S.view();
  if (s.find_first_of(u"+%") == std::u16string_view::npos)
    return S;
  std::u16string out;
  out.reserve(s.size());
  std::string bytes;
  for (size_t i = 0; i < s.size(); ++i) {
    char16_t c = s[i];
    int hi, lo;
    if (c == u'%' && i + 2 < s.size() && (hi = detail::HexDigitValue(s[i + 1])) >= 0 &&
        (lo = detail::HexDigitValue(s[i + 2])) >= 0) {
      bytes += static_cast<char>(hi * 16 + lo);
      i += 2;
      continue;
    }
    if (!bytes.empty())
      FlushBytes(out, bytes);
    out += c == u'+' ? u' ' : c;
  }
  if (!bytes.empty())
    FlushBytes(out, bytes);
  return hstring(out.data(), out.size());
}

hstring HtEncodeUrl(const hstring& S) {
  EnsureStarted();
  std::u16string_view s = S.view();
  size_t size = 0;
  for (char16_t c : s)
    size += KeepsInUrl(c) || c == u' ' ? 1 : c < 0x80 ? 3 : c < 0x800 ? 6 : 9;
  if (size == s.size() && s.find(u' ') == std::u16string_view::npos)
    return S;
  hstring out;
  char16_t* d = out.SetLength(size);
  auto put = [&d](unsigned byte) {
    const char16_t* e = detail::g_url_escapes[byte];
    d[0] = e[0], d[1] = e[1], d[2] = e[2];
    d += 3;
  };
  for (char16_t c : s) {
    if (KeepsInUrl(c)) {
      *d++ = c;
    } else if (c == u' ') {
      *d++ = u'+';
    } else if (c < 0x80) {
      put(c);
    } else if (c < 0x800) {
      put(0xC0 | (c >> 6));
      put(0x80 | (c & 0x3F));
    } else {
      // Surrogate halves go out one by one, three bytes each: the receiving
      // side of this encoding expects exactly that.
      put(0xE0 | (c >> 12));
      put(0x80 | ((c >> 6) & 0x3F));
      put(0x80 | (c & 0x3F));
    }
  }
  return out;
}

hstring CombineUrl(const hstring& Base, const hstring& Rel) {
  std::u16string_view base = Base.view(), rel = Rel.view();
  if (rel.empty() || rel[0] != u'/') {
    size_t slash = base.rfind(u'/');
    if (slash == std::u16string_view::npos)
      return Base + Rel;
    return hstring(base.substr(0, slash + 1)) + Rel;
  }
  if (rel.size() >= 2 && rel[1] == u'/') {
    std::u16string_view host = rel.substr(2);
    if (StartsWithNoCase(host, u"http"))
      return hstring(host);
    return u"http://" + hstring(host);
  }
  size_t from = 0;
  if (StartsWithNoCase(base, u"http://"))
    from = 7;
  else if (StartsWithNoCase(base, u"https://"))
    from = 8;
  size_t slash = base.find(u'/', from);
  if (slash == std::u16string_view::npos)
    return Base + Rel;
  return hstring(base.substr(0, slash)) + Rel;
}

} // namespace ht
