// The SAX reader: names, values and texts from bytes, by the encoding in force.
//
// Markup is ASCII in every encoding the reader accepts except heUTF16, so
// pieces are widened byte by byte until the first byte above 0x7F, which
// hands the whole piece to the general decoder of the encoding.
#include "document/sax_internal.h"
#include "foundation/code_point.h"
#include "foundation/hex_digit.h"
#include "htcore/document/entities.h"
#include "htcore/foundation/codepage.h"

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ht {

namespace detail {

bool SaxWidenAscii(const uint8_t* s, char16_t* d, size_t n) noexcept {
  size_t i = 0;
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  for (; i + 16 <= n; i += 16) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    if (_mm_movemask_epi8(v) != 0)
      return false;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_unpacklo_epi8(v, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i + 8), _mm_unpackhi_epi8(v, zero));
  }
#endif
  for (; i < n; ++i) {
    if (s[i] & 0x80)
      return false;
    d[i] = s[i];
  }
  return true;
}

} // namespace detail

using namespace detail;

namespace {

// Room for n units in s, reusing its text when no one else holds it; the
// caller cuts it to the length written.
char16_t* reserve(hstring& s, size_t n) {
  if (s.IsUnique() && s.size() >= n)
    return s.UniqueData();
  s = hstring();
  return s.SetLength(n);
}

// With cur behind '&' and end the end of the text or value holding it: the
// code point of the reference, or '&'. An unknown name is consumed with its
// ';' and leaves only the '&'; a reference that does not end before the end
// of its text is left alone.
uint32_t escape(const uint8_t*& cur, const uint8_t* end) {
  const uint8_t* q = cur;
  size_t left = static_cast<size_t>(end - q);
  if (left >= 3 && q[0] != '#') {
    // Short forms by their first bytes; what follows them is not looked at.
    if (q[1] == 't' && q[2] == ';' && (q[0] == 'l' || q[0] == 'g')) {
      cur = q + 3;
      return q[0] == 'l' ? u'<' : u'>';
    }
    if (q[0] == 'q' && q[1] == 'u' && q[2] == 'o') {
      cur = q + std::min<size_t>(5, left);
      return u'"';
    }
    if (q[0] == 'a' && q[1] == 'm' && q[2] == 'p') {
      cur = q + std::min<size_t>(4, left);
      return u'&';
    }
    if (q[0] == 'n' && q[1] == 'b' && q[2] == 's') {
      cur = q + (left > 4 && q[4] == ';' ? 5 : std::min<size_t>(4, left));
      return 0xA0;
    }
  }
  const uint8_t* stop = q;
  for (int n = 0; stop < end && *stop != ';' && *stop != ' ' && n < 25; ++n)
    ++stop;
  if (stop == end || (*stop != ';' && q[0] != '#'))
    return u'&';
  uint32_t code;
  if (q[0] == '#') {
    uint64_t v = 0;
    const uint8_t* r = q + 1;
    if (r < stop && *r == 'x') {
      int d;
      for (++r; r < stop && (d = detail::HexDigitValue(*r)) >= 0; ++r)
        v = std::min<uint64_t>(v * 16 + static_cast<uint64_t>(d), 0x110000);
    } else {
      for (; r < stop && *r >= '0' && *r <= '9' && v <= 429496729; ++r)
        v = v * 10 + static_cast<uint64_t>(*r - '0');
    }
    code = static_cast<uint32_t>(std::min<uint64_t>(v, 0xFFFFFFFF));
  } else {
    char16_t name[32];
    size_t n = static_cast<size_t>(stop - q);
    for (size_t i = 0; i < n; ++i)
      name[i] = q[i];
    code = FindEntity(name, static_cast<int>(n));
    if (code == 0)
      code = u'&';
  }
  cur = stop + 1;
  return code;
}

} // namespace

hstring THtSAXXMLParser::DecodeNew(const uint8_t* p, size_t n) {
  hstring s;
  GetString(s, p, n);
  return s;
}

void THtSAXXMLParser::GetString(hstring& s, const uint8_t* p, size_t n) {
  if (n == 0) {
    s.clear();
    return;
  }
  const char* bytes = reinterpret_cast<const char*>(p);
  switch (FEncoding) {
  case heUTF16: {
    // Only the whole units; this path has no tokenizer of its own.
    size_t units = n / 2;
    if (units == 0) {
      s.clear();
      return;
    }
    std::memcpy(reserve(s, units), p, units * 2);
    s.Truncate(units);
    return;
  }
  case heUTF8:
    if (SaxWidenAscii(p, reserve(s, n), n))
      s.Truncate(n);
    else
      s = Utf8ToHString(std::string_view(bytes, n));
    return;
  default:
    if (SaxWidenAscii(p, reserve(s, n), n))
      s.Truncate(n);
    else
      s = HtCodePageToUnicode(bytes, n, FEncoding == heANSI ? FCodePage : CP_ACP);
    return;
  }
}

void THtSAXXMLParser::AppendBytes(const uint8_t* p, size_t n) {
  if (n == 0)
    return;
  size_t old = FWork.size();
  if (FEncoding == heUTF16) {
    FWork.resize(old + n / 2);
    std::memcpy(FWork.data() + old, p, n / 2 * 2);
    return;
  }
  FWork.resize(old + n);
  if (SaxWidenAscii(p, FWork.data() + old, n))
    return;
  FWork.resize(old);
  hstring piece;
  GetString(piece, p, n);
  FWork.append(piece.view());
}

void THtSAXXMLParser::AppendEscaped(const uint8_t* p, const uint8_t* end) {
  while (p < end) {
    const uint8_t* amp = SaxFind(p, end, '&');
    if (!amp) {
      AppendBytes(p, static_cast<size_t>(end - p));
      return;
    }
    AppendBytes(p, static_cast<size_t>(amp - p));
    p = amp + 1;
    detail::AppendCodePoint(FWork, escape(p, end));
  }
}

void THtSAXXMLParser::GetEscaped(hstring& s, const uint8_t* p, const uint8_t* end) {
  if (!SaxFind(p, end, '&')) {
    GetString(s, p, static_cast<size_t>(end - p));
    return;
  }
  FWork.clear();
  AppendEscaped(p, end);
  FlushWork(s);
}

void THtSAXXMLParser::FlushWork(hstring& s) {
  size_t n = FWork.size();
  if (n == 0) {
    s.clear();
    return;
  }
  std::memcpy(reserve(s, n), FWork.data(), n * sizeof(char16_t));
  s.Truncate(n);
}

void THtSAXXMLParser::SetName(const uint8_t* p, size_t n, hstring& Name, hstring* NameNS) {
  auto without_prefix = [](const hstring& s) {
    size_t colon = s.view().find(u':');
    return colon == std::u16string_view::npos ? s : s.substr(colon + 1);
  };
  if (n == 0 || n > kSaxMaxCachedName) {
    Name = DecodeNew(p, n);
    if (NameNS)
      *NameNS = without_prefix(Name);
    return;
  }
  uint32_t h = static_cast<uint32_t>(n) * 0x9E3779B1u;
  h ^= p[0] | p[n - 1] << 8 | p[n / 2] << 16;
  h *= 0x85EBCA6Bu;
  TNameSlot& slot = FNames[(h >> 16) & (kSaxNameSlots - 1)];
  if (slot.len != n || std::memcmp(slot.bytes, p, n) != 0) {
    slot.len = n;
    std::memcpy(slot.bytes, p, n);
    slot.name = DecodeNew(p, n);
    slot.ns = without_prefix(slot.name);
  }
  Name = slot.name;
  if (NameNS)
    *NameNS = slot.ns;
}

void THtSAXXMLParser::ClearNames() {
  for (size_t i = 0; i < kSaxNameSlots; ++i)
    FNames[i].len = static_cast<size_t>(-1);
}

void THtSAXXMLParser::AddAttribute(const uint8_t* name, size_t name_len, const uint8_t* value,
                                   const uint8_t* value_end) {
  // Decoded straight into the spare entry behind Count, whose strings the
  // last tag left. Entries come in source order; SortAttributes puts them in
  // name order once the tag is read, so a tag with thousands of attributes
  // costs n log n and not n squared.
  THtAttributes& a = FAttributes;
  if (a.List.size() == static_cast<size_t>(a.Count))
    a.List.emplace_back();
  THtAttribute& spare = a.List[static_cast<size_t>(a.Count)];
  SetName(name, name_len, spare.Name, nullptr);
  GetEscaped(spare.Value, value, value_end);
  if (a.Count > 0 && spare.Name.view() < a.List[static_cast<size_t>(a.Count - 1)].Name.view())
    FAttrsUnsorted = true;
  ++a.Count;
}

void THtSAXXMLParser::SortAttributes() {
  if (!FAttrsUnsorted)
    return;
  FAttrsUnsorted = false;
  std::stable_sort(
      FAttributes.List.begin(), FAttributes.List.begin() + FAttributes.Count,
      [](const THtAttribute& x, const THtAttribute& y) { return x.Name.view() < y.Name.view(); });
}

} // namespace ht
