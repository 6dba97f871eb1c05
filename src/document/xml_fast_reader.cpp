// The direct XML reader behind THtXMLNode::SetXML and SetUTF8XML.
//
// It reads the text in one pass without tokens or items and builds the nodes
// as it goes: names are interned once per parse together with their tag hash
// and node class, attribute sets are made once per element, and texts are
// copied straight from the source. It gives the same tree as the item reader
// in XML mode; wherever that reader has a quirk (stray quotes in a tag, a
// comment between attributes, "<div <p>", a close tag that does not match,
// charset meta tags, unknown numeric references) it gives up and SetXML
// parses again through the item reader, which also raises the errors.
//
// One reader serves both UTF-16 text and UTF-8 bytes (TReader<char8_t>).
// On freedesktop.org.xml (2.3 MB) decoding the whole input to UTF-16 first
// cost 8.5 M of 112 M instructions (parse and free) and the UTF-16 copy
// doubled the input at the parse's peak (6.2x the input against pugixml's
// 3.8x). The byte reader decodes only what the tree keeps (names, values,
// texts), each straight from the source: 104 M instructions, peak 4.3x.
// Decoding piece by piece first cost more than the whole text at once
// (a call and a scalar loop per short name), so names are interned by their
// bytes (TByteNames) and ASCII pieces widened a vector at a time. Markup is
// ASCII: a byte from 0x80 up in a name, or in a reference whose width in
// units the byte count does not tell, makes the byte reader give up, and the
// caller reads the decoded text; so does a UTF-8 declaration whose
// re-decoding test (made on the bytes as the item reader makes it on the
// units) would change the text. Real documents give up nowhere.
//
// Attribute sets: most elements of a kind repeat the same names in the same
// order, so the sorted order of such a run is remembered and the next set
// built in it directly (iso_639-3.xml, six attributes an element: 51 M to
// 46 M). What remains (freedesktop, inclusive): the item loop 47 M, freeing
// the tree 10.5 M, element starts 7 M, new nodes 5.4 M; pugixml needs 27 M
// in all.
#include "document/html_char_classes.h"
#include "document/reader_caches.h"
#include "document/unit_scan.h"
#include "document/utf8_check.h"
#include "document/xml_reader_internal.h"
#include "foundation/utf8_decode.h"
#include "foundation/code_point.h"
#include "htcore/document/entities.h"
#include "htcore/document/html_parser.h"
#include "htcore/foundation/codepage.h"
#include "htcore/foundation/startup.h"
#include "htcore/foundation/text_utils.h"

#include <algorithm>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ht::detail {

namespace {

using sv = std::u16string_view;

struct TGiveUp {};

[[noreturn]] void give_up() { throw TGiveUp(); }

template <class U> inline int tag_class(U c) { return c < 256 ? g_html_char_class[1][c] : 0; }
// A byte from 0x80 up is part of a sequence: never a blank, quote or mark.
template <> inline int tag_class(char8_t c) { return c < 128 ? g_html_char_class[1][c] : 0; }

template <class U> inline bool is_blank_text(std::basic_string_view<U> s) {
  for (U c : s)
    if (c > u' ')
      return false;
  return true;
}

bool equals_ignore_case(sv s, sv lower) {
  if (s.size() != lower.size())
    return false;
  for (size_t i = 0; i < s.size(); ++i)
    if (CharLower(s[i]) != lower[i])
      return false;
  return true;
}

// "</head>" in any case. Only "</h" can start it: a vector of positions at a
// time tests for that, and only a hit compares the rest. No unit beyond ASCII
// lowers to one of its letters, so bytes compare as units do.
template <class U> const U* find_head_end(const U* p, const U* end) {
  static constexpr sv kLower = u"</head>";
  if (end - p < static_cast<ptrdiff_t>(kLower.size()))
    return nullptr;
  const U* last = end - kLower.size() + 1;
  auto match = [](const U* q) {
    size_t i = 0;
    while (i < kLower.size() && CharLower(static_cast<char16_t>(q[i])) == kLower[i])
      ++i;
    return i == kLower.size();
  };
#ifdef __SSE2__
  constexpr ptrdiff_t kStep = 16 / sizeof(U);
  auto load = [](const U* q) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(q)); };
  auto eq = [](__m128i a, __m128i b) {
    if constexpr (sizeof(U) == 1)
      return _mm_cmpeq_epi8(a, b);
    else
      return _mm_cmpeq_epi16(a, b);
  };
  auto splat = [](char16_t c) {
    if constexpr (sizeof(U) == 1)
      return _mm_set1_epi8(static_cast<char>(c));
    else
      return _mm_set1_epi16(static_cast<short>(c));
  };
  const __m128i lt = splat(u'<'), slash = splat(u'/'), h = splat(u'h'), caps = splat(0x20);
  // Loads reach p + 2 + kStep < p + kLower.size() + kStep <= end.
  for (; last - p >= kStep; p += kStep) {
    __m128i a = eq(load(p), lt);
    __m128i b = eq(load(p + 1), slash);
    __m128i c = eq(_mm_or_si128(load(p + 2), caps), h);
    unsigned m = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(_mm_and_si128(a, b), c)));
    while (m) {
      const U* q = p + (__builtin_ctz(m) / sizeof(U));
      if (match(q))
        return q;
      m &= m - 1;
      if constexpr (sizeof(U) == 2)
        m &= m - 1; // both bytes of the unit
    }
  }
#endif
  for (; p < last; ++p)
    if (*p == u'<' && match(p))
      return p;
  return nullptr;
}

// IsUTF8 of the item reader without narrowing the whole rest first: its
// byte test reads left to right and mostly decides within the first few
// non-ASCII units, so the text is narrowed in slices as the test goes.
class TNarrowTest {
public:
  // -1: not decided yet, feed the next slice.
  int Feed(sv units, bool last) {
    FBuf += HtUnicodeToCodePage(units, FCodePage).view();
    const auto* b = reinterpret_cast<const uint8_t*>(FBuf.data());
    size_t n = FBuf.size(), i = 0;
    while (i < n) {
      if (b[i] < 0x80) {
        ++i;
        continue;
      }
      switch (Utf8CheckStep(b, n, i)) {
      case TUtf8Step::Ok:
        FSeen = true;
        break;
      case TUtf8Step::Bad:
        return 0;
      case TUtf8Step::Stop:
        return FSeen;
      case TUtf8Step::Cut:
        if (last)
          return FSeen;
        FBuf.erase(0, i); // the sequence goes on in the next slice
        return -1;
      }
    }
    if (last)
      return FSeen;
    FBuf.clear();
    return -1;
  }

private:
  int FCodePage = HtGetSystemCodePage();
  std::string FBuf; // bytes not yet judged
  bool FSeen = false;
};

bool is_narrow_utf8(const char16_t* p, const char16_t* end) {
  const char16_t* e = FindUnit(p, end, 0);
  TNarrowTest test;
  for (;;) {
    const char16_t* q = e - p > 4096 ? p + 4096 : e;
    if (q < e && *(q - 1) >= 0xD800 && *(q - 1) < 0xDC00)
      ++q; // keep a pair together: the narrowing writes one byte for it
    int r = test.Feed(sv(p, static_cast<size_t>(q - p)), q >= e);
    p = q;
    if (r >= 0)
      return r;
  }
}

// The same test on the units the bytes decode to, decoded a slice at a time.
bool is_narrow_utf8(const char8_t* p, const char8_t* end) {
  const void* nul = std::memchr(p, 0, static_cast<size_t>(end - p));
  const char8_t* e = nul ? static_cast<const char8_t*>(nul) : end;
  TNarrowTest test;
  std::u16string units;
  for (;;) {
    const char8_t* q = e - p > 4096 ? p + 4096 : e;
    while (q < e && (*q & 0xC0) == 0x80)
      ++q; // a sequence stays in one slice
    units.resize(static_cast<size_t>(q - p));
    char16_t* d = DecodeUtf8(reinterpret_cast<const uint8_t*>(p), reinterpret_cast<const uint8_t*>(q), units.data());
    int r = test.Feed(sv(units.data(), static_cast<size_t>(d - units.data())), q >= e);
    p = q;
    if (r >= 0)
      return r;
  }
}

// MayBeNarrowUtf8 for the units the bytes decode to, or more: a lead unit
// U+00C2..U+00F4 is C3 82..C3 B4, and a follower the test counts is never
// ASCII.
bool may_be_narrow_utf8(const char8_t* p, const char8_t* end) {
  int cp = HtGetSystemCodePage();
  if (cp != 1252 && cp != 28591)
    return true;
  while (end - p >= 3) {
    const void* hit = std::memchr(p, 0xC3, static_cast<size_t>(end - p - 2));
    if (!hit)
      return false;
    p = static_cast<const char8_t*>(hit);
    if (p[1] >= 0x82 && p[1] <= 0xB4 && p[2] >= 0x80)
      return true;
    ++p;
  }
  return false;
}

// An invalid code point takes two blanks, as in AppendCodePoint.
void append_code_point(std::u8string& buf, uint32_t c) {
  if (c >= 0x110000 || (c >= 0xD800 && c <= 0xDFFF)) {
    buf += u8"  ";
  } else if (c < 0x80) {
    buf += static_cast<char8_t>(c);
  } else if (c < 0x800) {
    buf += static_cast<char8_t>(0xC0 | (c >> 6));
    buf += static_cast<char8_t>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    buf += static_cast<char8_t>(0xE0 | (c >> 12));
    buf += static_cast<char8_t>(0x80 | ((c >> 6) & 0x3F));
    buf += static_cast<char8_t>(0x80 | (c & 0x3F));
  } else {
    buf += static_cast<char8_t>(0xF0 | (c >> 18));
    buf += static_cast<char8_t>(0x80 | ((c >> 12) & 0x3F));
    buf += static_cast<char8_t>(0x80 | ((c >> 6) & 0x3F));
    buf += static_cast<char8_t>(0x80 | (c & 0x3F));
  }
}

void append_code_point(std::u16string& buf, uint32_t c) { AppendCodePoint(buf, c); }

// The run of plain name bytes (letters, digits, '-', '.', ':', '_') from q:
// both name scans take each of them in, so they may start behind the run.
inline const char8_t* skip_name_bytes(const char8_t* q, const char8_t* end) {
#ifdef __SSE2__
  // x in [lo, hi] as a signed compare: x - lo - 128 < hi - lo + 1 - 128.
  auto in = [](__m128i v, char lo, char hi) {
    return _mm_cmplt_epi8(_mm_add_epi8(v, _mm_set1_epi8(static_cast<char>(128 - lo))),
                          _mm_set1_epi8(static_cast<char>(-128 + (hi - lo + 1))));
  };
  while (end - q >= 16) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
    __m128i ok = _mm_or_si128(in(_mm_or_si128(v, _mm_set1_epi8(0x20)), 'a', 'z'), in(v, '0', ':'));
    ok = _mm_or_si128(ok, _mm_or_si128(in(v, '-', '.'), _mm_cmpeq_epi8(v, _mm_set1_epi8('_'))));
    unsigned stop = ~static_cast<unsigned>(_mm_movemask_epi8(ok)) & 0xFFFF;
    if (stop)
      return q + __builtin_ctz(stop);
    q += 16;
  }
#endif
  for (; q < end; ++q) {
    char8_t c = *q;
    if (!((c | 0x20) >= 'a' && (c | 0x20) <= 'z') && !(c >= '0' && c <= ':') && c != '-' && c != '.' &&
        c != '_')
      break;
  }
  return q;
}

enum TItemKind { ikText, ikOpen, ikClose, ikComment, ikCData, ikCustom, ikDirective };

// U is char16_t for UTF-16 text, char8_t for UTF-8 bytes.
template <class U> class TReader {
public:
  using usv = std::basic_string_view<U>;
  static constexpr bool kBytes = sizeof(U) == 1;

  TReader(THtXMLNode& ANode, const U* text, size_t n) : FNode(ANode), p(text), end(text + n) {}

  TReader(const TReader&) = delete;
  TReader& operator=(const TReader&) = delete;

  void Run();

private:
  // One item: an element start or end, a text, or a block. False at the end
  // of the text, also when the text ends inside a tag (that tag is dropped).
  bool NextItem();
  void ReadText();
  void ReadTag();
  void ReadCloseTag();
  void ReadAttribute();
  // Text from p up to `stop` or the end, references decoded, into FValue.
  void ReadEncoded(U stop);
  uint32_t Escape();
  void ReadComment();
  void ReadCData();
  void ReadCustom();
  void ReadDirective();
  void CheckDeclaration();
  void Walk(THtXMLNode*& cur);
  const U* ScanIdent(const U* q);

  // The unit at q, or 0 at the end (the terminator of a UTF-16 text).
  U At(const U* q) const { return q < end ? *q : 0; }
  // Bytes of markup the UTF-16 reader steps over by count must be ASCII.
  void NeedAscii(const U* q, ptrdiff_t n) const {
    if constexpr (kBytes)
      for (; n > 0 && q < end; --n, ++q)
        if (*q >= 0x80)
          give_up();
  }

  // A block the text ends in loses its last two units as if they were its
  // end mark: bytes count them only when they are ASCII.
  void UnitsAtEnd(const U* start) const {
    const U* from = end - start > 2 ? end - 2 : start;
    NeedAscii(from, end - from);
  }

  char16_t* Wide(size_t n) {
    if (FWide.size() < n)
      FWide.resize(n < 256 ? 256 : n * 2);
    return FWide.data();
  }
  // The UTF-16 units of v: v itself, or the decoded bytes in FWide.
  sv Units(usv v) {
    if constexpr (kBytes) {
      char16_t* w = Wide(v.size());
      size_t ascii = widen_ascii(v.data(), v.size(), w);
      if (ascii == v.size())
        return sv(w, ascii);
      auto* b = reinterpret_cast<const uint8_t*>(v.data());
      return sv(w, static_cast<size_t>(DecodeUtf8(b + ascii, b + v.size(), w + ascii) - w));
    } else {
      return v;
    }
  }
  hstring Keep(usv v) { return hstring::ForTree(Units(v)); }
  int Intern(const U* b, const U* e) {
    size_t n = static_cast<size_t>(e - b);
    if constexpr (kBytes)
      return FByteNames.Find(FNames, b, n, end);
    else
      return FNames.Intern(b, n);
  }

  TName& Tag() { return FNames.Names[static_cast<size_t>(FTag)]; }
  // Short attribute values and blank texts repeat a lot: one copy each.
  TTextCache FValues;
  struct TNoShortTexts {};
  [[no_unique_address]] std::conditional_t<kBytes, TShortTexts, TNoShortTexts> FShortTexts;
  // Bytes are looked up by themselves; lim bounds what may be read from
  // v.data(): the end of the source, or of the buffer v lies in.
  hstring MakeText(usv v, const U* lim) {
    if constexpr (kBytes) {
      if (v.size() - 1 < 16)
        return FShortTexts.Get(v.data(), v.size(), lim,
                               [&](const TShortBytes&) { return hstring::ForTree(Units(v)); });
    }
    return FValues.Get(Units(v));
  }
  // The blanks of an element with children repeat from element to element
  // and run longer than a short text: one copy each, by their bytes.
  struct TBlank {
    uint32_t Hash = 0;
    std::basic_string<U> Bytes;
    hstring Text;
  };
  std::vector<TBlank> FBlanks;
  hstring Blank(const std::basic_string<U>& b) {
    if (b.size() <= 16 || b.size() > 256)
      return MakeText(b, b.data() + b.size());
    if (FBlanks.empty())
      FBlanks.resize(256);
    uint32_t h = HashWords(b.data(), b.size());
    TBlank& s = FBlanks[h & (FBlanks.size() - 1)];
    if (s.Hash != h || s.Bytes != b) {
      s.Hash = h;
      s.Bytes = b;
      s.Text = hstring::ForTree(Units(b));
    }
    return s.Text;
  }
  // A decoded value lies in FBuffer.
  hstring MakeText(usv v) { return MakeText(v, v.data() == FBuffer.data() ? v.data() + v.size() : end); }
  void OpenElement(THtXMLNode* n);
  THtXMLNode* NewChild(THtXMLNode* parent, int name);

  THtXMLNode& FNode;
  hstring FText; // a UTF-16 text re-decoded after its declaration
  const U* p;
  const U* end;
  bool FUtf8 = false; // the re-decoding test was made

  TItemKind FKind = ikText;
  int FTag = -1;
  usv FValue; // text of a text item or a block; points into the source or FBuffer
  usv FCloseName;
  bool FClosed = false;
  // Attributes of the current element start, up to kHeld of them held
  // aside (more go to the batch). Elements of one kind repeat the same names
  // in the same order: the sorted order of such a run of distinct names is
  // remembered (FOrders), and the next element with that run gets its set
  // built in that order, without the batch's sort and copies.
  static constexpr int kHeld = 16;
  THtAttributeBatch FScratch;
  int FAttrs = 0;
  int FHeldName[kHeld];
  hstring FHeldValue[kHeld];
  THtAttributeBatch::TRule FHeldRule[kHeld];
  void AddAttribute(int name, hstring value, THtAttributeBatch::TRule rule) {
    if (FAttrs < kHeld) {
      FHeldName[FAttrs] = name;
      FHeldValue[FAttrs] = std::move(value);
      FHeldRule[FAttrs] = rule;
    } else {
      if (FAttrs == kHeld)
        for (int i = 0; i < kHeld; ++i)
          FScratch.Add(FNames.Names[static_cast<size_t>(FHeldName[i])].Name, FHeldValue[i], FHeldRule[i]);
      FScratch.Add(FNames.Names[static_cast<size_t>(name)].Name, value, rule);
    }
    ++FAttrs;
  }
  TNameOrders FOrders;
  void FillAttributes(THtAttributes& a);
  // The close tag is the open element's (set by the fast test in
  // ReadCloseTag); FExpect is that element's tag while its items are read.
  bool FCloseMatched = false;
  // The byte reader compares a close tag with the bytes of its element's
  // start tag, per open element; FPlain tells per name whether a close tag
  // that spells it is read as it stands (-1: not known yet).
  struct TOpen {
    const U* Bytes = nullptr;
    int Tag = -1;
  };
  std::vector<TOpen> FOpen;
  std::vector<int8_t> FPlain;
  const U* FTagStart = nullptr;
  bool Plain(int k) {
    if (static_cast<size_t>(k) >= FPlain.size())
      FPlain.resize(FNames.Names.size(), -1);
    int8_t& r = FPlain[static_cast<size_t>(k)];
    if (r < 0) {
      // The units the direct compare below takes in.
      sv t = FNames.Names[static_cast<size_t>(k)].Name.view();
      bool ok = !t.empty() && t[0] < 0x80 && tag_class(t[0]) <= 1 && t[0] >= u' ';
      for (size_t i = 1; ok && i < t.size(); ++i)
        ok = t[i] < 0x80 && t[i] != u'/' && t[i] != 0 && tag_class(t[i]) < 2;
      r = ok;
    }
    return r;
  }
  const hstring* FExpect = nullptr;
  std::basic_string<U> FBuffer;
  std::u16string FWide; // decoded bytes on their way into the tree

  TNameTable FNames;
  struct TNoByteNames {};
  [[no_unique_address]] std::conditional_t<kBytes, TByteNames, TNoByteNames> FByteNames; // into FNames
  int FSpaceName = FNames.Intern(u"xml:space", 9);
  bool FSpaceSeen = false; // the current tag has an xml:space attribute
  // Blank text waiting for the open elements, one buffer per depth: appending
  // to FContent piece by piece would copy it each time.
  std::vector<std::basic_string<U>> FPending; // blanks are ASCII
  size_t FDepth = 0;
  TPendingChildren FKids;
  void Descend() {
    FKids.Down();
    if (++FDepth == FPending.size()) {
      FPending.emplace_back();
      FOpen.emplace_back();
    }
    FPending[FDepth].clear();
  }
  void Flush(THtXMLNode* n) {
    FKids.Up(n);
    std::basic_string<U>& b = FPending[FDepth];
    if (!b.empty()) {
      if (n->FContent.empty())
        n->FContent = Blank(b);
      else
        n->FContent += Units(b);
    }
    b.clear();
  }
  THtNode* FRoot = nullptr;
  THtNodeClass FTextClass = nullptr;
};

template <class U> bool TReader<U>::NextItem() {
  if (FAttrs > kHeld)
    FScratch.Clear();
  FAttrs = 0;
  FSpaceSeen = false;
  if (p >= end)
    return false;
  if (*p != u'<') {
    ReadText();
    return true;
  }
  U c1 = At(p + 1);
  if (c1 == u'!') {
    if (At(p + 2) == u'-')
      ReadComment();
    else if (At(p + 2) == u'[' && At(p + 3) == u'C' && At(p + 4) == u'D' && At(p + 5) == u'A')
      ReadCData();
    else
      ReadCustom();
    return true;
  }
  if (c1 == u'?') {
    ReadDirective();
    return true;
  }
  if (c1 == u'/') {
    p += 2;
    ReadCloseTag();
    return FKind == ikClose;
  }
  if (c1 < 128 && !(c1 == u'-' || c1 == u'.' || c1 == u':' || c1 == u'_' || (c1 >= u'A' && c1 <= u'Z') ||
                    (c1 >= u'a' && c1 <= u'z')))
    give_up(); // "Invalid tag name"
  ++p;
  ReadTag();
  return FKind == ikOpen;
}

template <class U> void TReader<U>::ReadText() {
  ReadEncoded(u'<');
  FKind = ikText;
}

template <class U> void TReader<U>::ReadEncoded(U stop) {
  const U* b = p;
  const U* q = p;
#ifdef __SSE2__
  // Most texts and values have neither a reference nor an early stop: find
  // the first of the two a vector at a time.
  if constexpr (kBytes) {
    const __m128i vs = _mm_set1_epi8(static_cast<char>(stop)), va = _mm_set1_epi8('&');
    while (end - q >= 16) {
      __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
      unsigned m =
          static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, vs), _mm_cmpeq_epi8(v, va))));
      if (m) {
        q += __builtin_ctz(m);
        goto found;
      }
      q += 16;
    }
  } else {
    const __m128i vs = _mm_set1_epi16(static_cast<short>(stop)), va = _mm_set1_epi16(u'&');
    while (end - q >= 8) {
      __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
      unsigned m = static_cast<unsigned>(
          _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi16(v, vs), _mm_cmpeq_epi16(v, va))));
      if (m) {
        q += __builtin_ctz(m) >> 1;
        goto found;
      }
      q += 8;
    }
  }
#endif
  while (q < end && *q != stop && *q != u'&')
    ++q;
#ifdef __SSE2__
found:
#endif
  if (q >= end || *q == stop) {
    p = q;
    FValue = usv(b, static_cast<size_t>(q - b));
    return;
  }
  FBuffer.assign(b, static_cast<size_t>(q - b));
  p = q;
  while (p < end && *p != stop) {
    if (*p == u'&') {
      ++p;
      append_code_point(FBuffer, Escape());
      continue;
    }
    const U* r = p;
    while (r < end && *r != stop && *r != u'&')
      ++r;
    FBuffer.append(p, static_cast<size_t>(r - p));
    p = r;
  }
  FValue = usv(FBuffer);
}

// The item reader's reference rules, down to its shortcuts.
template <class U> uint32_t TReader<U>::Escape() {
  const U* q = p;
  auto at = [&](ptrdiff_t i) -> U { return end - q > i ? q[i] : 0; };
  auto skip = [&](ptrdiff_t n) {
    NeedAscii(p, n);
    p = end - p > n ? p + n : end;
  };
  U c0 = at(0);
  if (c0 != u'#') {
    U c1 = at(1), c2 = at(2);
    if (c1 == u't' && c2 == u';' && (c0 == u'l' || c0 == u'g')) {
      skip(3);
      return c0 == u'l' ? u'<' : u'>';
    }
    if (c0 == u'q' && c1 == u'u' && c2 == u'o') {
      skip(5);
      return u'"';
    }
    if (c0 == u'a' && c1 == u'm' && c2 == u'p') {
      skip(4);
      return u'&';
    }
    if (c0 == u'n' && c1 == u'b' && c2 == u's') {
      skip(at(4) == u';' ? 5 : 4);
      return 0xA0;
    }
  }
  const U* stop = q;
  for (int n = 0; stop < end && *stop != 0 && *stop != u';' && *stop != u' ' && n < 25; ++n)
    ++stop;
  // The 25 units are fewer bytes when a byte is not ASCII.
  NeedAscii(q, stop - q);
  bool semicolon = stop < end && *stop == u';';
  if (c0 == u'#') {
    // Only the plain forms "&#65;" and "&#x41;"; the number reader's
    // leniencies are left to the item reader.
    if (!semicolon)
      give_up();
    const U* d = q + 1;
    uint64_t v = 0;
    if (*d == u'x') {
      ++d;
      if (stop - d < 1 || stop - d > 8)
        give_up();
      for (; d < stop; ++d) {
        U c = *d;
        int h = c >= u'0' && c <= u'9'   ? c - u'0'
                : c >= u'a' && c <= u'f' ? c - u'a' + 10
                : c >= u'A' && c <= u'F' ? c - u'A' + 10
                                         : -1;
        if (h < 0)
          give_up();
        v = v * 16 + static_cast<uint64_t>(h);
      }
    } else {
      if (stop - d < 1 || stop - d > 7)
        give_up();
      for (; d < stop; ++d) {
        if (*d < u'0' || *d > u'9')
          give_up();
        v = v * 10 + static_cast<uint64_t>(*d - u'0');
      }
    }
    p = stop + 1;
    return v > 0x10FFFF ? 0x110000u : static_cast<uint32_t>(v);
  }
  if (!semicolon)
    return u'&';
  sv name = Units(usv(q, static_cast<size_t>(stop - q)));
  uint32_t code = FindEntity(name.data(), static_cast<int>(name.size()));
  p = code ? stop : q;
  // One unit goes in both cases, as in the item reader.
  if (p < end)
    ++p;
  return code ? code : u'&';
}

template <class U> void TReader<U>::ReadComment() {
  if (end - p < 4)
    give_up();
  NeedAscii(p + 3, 1);
  p += 4;
  const U* start = p;
  usv rest(start, static_cast<size_t>(end - start));
  static constexpr U kEnd[] = {u'-', u'-', u'>'};
  size_t at = rest.find(usv(kEnd, 3));
  const U* stop = at == usv::npos ? end : start + at + 2;
  if (at == usv::npos)
    UnitsAtEnd(start);
  const U* e = stop - start >= 2 ? stop - 2 : start;
  FValue = usv(start, static_cast<size_t>(e - start));
  FKind = ikComment;
  p = stop < end ? stop + 1 : end;
}

template <class U> void TReader<U>::ReadCData() {
  if (end - p < 9)
    give_up();
  NeedAscii(p + 6, 3);
  p += 9;
  const U* start = p;
  const U* stop = end;
  for (const U* q = start; q < end;) {
    if (*q != u']') {
      ++q;
      continue;
    }
    if (At(q + 1) == u']' && At(q + 2) == u'>') {
      stop = q + 2;
      break;
    }
    q = end - q > 2 ? q + 2 : end;
  }
  if (stop == end)
    UnitsAtEnd(start);
  const U* e = stop - start >= 2 ? stop - 2 : start;
  FValue = usv(start, static_cast<size_t>(e - start));
  FKind = ikCData;
  p = stop < end ? stop + 1 : end;
}

template <class U> void TReader<U>::ReadCustom() {
  p += 2;
  const U* start = p;
  bool quote = false, bracket = false;
  for (; p < end; ++p) {
    U c = *p;
    if (c == u'"')
      quote = !quote;
    else if (c == u'[' && !quote)
      bracket = true;
    else if (c == u']' && !quote)
      bracket = false;
    else if (c == u'>' && !bracket)
      break;
  }
  if (p == start)
    give_up(); // "<!>" repeats the previous item in the item reader
  FValue = usv(start, static_cast<size_t>(p - start));
  FKind = ikCustom;
  if (p < end)
    ++p;
}

template <class U> void TReader<U>::ReadDirective() {
  p += 2;
  const U* start = p;
  while (p < end && *p != 0 && *p != u'>' && !(*p == u'?' && At(p + 1) == u'>'))
    ++p;
  FValue = usv(start, static_cast<size_t>(p - start));
  FKind = ikDirective;
  if (p < end)
    p += *p == u'?' ? 2 : 1;
}

// An attribute name, an unquoted value or a name that starts beyond ASCII:
// runs to a blank, quote, '<', '>', '=', "/>" or NUL.
template <class U> const U* TReader<U>::ScanIdent(const U* q) {
  if constexpr (kBytes) {
    if (*q >= 0x80)
      give_up(); // names beyond ASCII are read from the decoded text
    q = skip_name_bytes(q + 1, end) - 1;
  }
  for (++q;; ++q) {
    if (q >= end)
      return q;
    U c = *q;
    if constexpr (kBytes) {
      if (c >= 0x80)
        give_up();
    } else if (c >= 256) {
      continue;
    }
    if (c >= u'a' && c <= u'z')
      continue;
    if (c == u'/') {
      if (At(q + 1) == u'>')
        return q;
    } else if (c == 0 || tag_class(c) >= 2) {
      return q;
    }
  }
}

// p stands behind '<' on the first unit of the name.
template <class U> void TReader<U>::ReadTag() {
  const U* b = p;
  if (tag_class(*b) == 1) {
    if constexpr (kBytes)
      p = skip_name_bytes(p + 1, end) - 1;
    for (++p;;) {
      U c = At(p);
      if (c >= 65 || tag_class(c) == 1) {
        if constexpr (kBytes)
          if (c >= 0x80)
            give_up();
        ++p;
      } else if (c == u'/' && At(p + 1) != u'>') {
        ++p;
      } else {
        break;
      }
    }
  } else {
    p = ScanIdent(b);
  }
  FTag = Intern(b, p);
  FTagStart = b;
  FClosed = false;
  FKind = ikText; // until the '>' is seen
  for (;;) {
    if (p >= end)
      return;
    U c = *p;
    switch (tag_class(c)) {
    case 2:
      while (p < end && *p <= u' ')
        ++p;
      break;
    case 5:
      ++p;
      // A charset meta tag re-decodes the text in the item reader.
      if (FAttrs && equals_ignore_case(Tag().Name.view(), u"meta"))
        give_up();
      FKind = ikOpen;
      return;
    case 6:
      FClosed = true;
      ++p;
      break;
    case 0:
      if (c < u' ')
        give_up();
      [[fallthrough]];
    case 1:
      ReadAttribute();
      break;
    default:
      give_up(); // stray quote, '=', or a '<' inside the tag
    }
  }
}

template <class U> void TReader<U>::ReadAttribute() {
  const U* b = p;
  p = ScanIdent(b);
  int k = Intern(b, p);
  FSpaceSeen = FSpaceSeen || k == FSpaceName;
  const hstring& name = FNames.Names[static_cast<size_t>(k)].Name;
  auto skip_blanks = [&] {
    while (p < end && tag_class(*p) == 2)
      while (p < end && *p <= u' ')
        ++p;
  };
  skip_blanks();
  if (p >= end || *p != u'=') {
    if (p < end && *p == u'<')
      give_up(); // a comment or directive would be skipped here
    // A bare attribute replaces an earlier one of the same name.
    AddAttribute(k, name, THtAttributeBatch::abReplace);
    return;
  }
  ++p;
  skip_blanks();
  if (p >= end || (*p != u'"' && *p != u'\''))
    give_up(); // "Attribute %s value expected"
  U quote = *p++;
  ReadEncoded(quote);
  if (p < end)
    ++p;
  // The first valued attribute of a name wins.
  AddAttribute(k, MakeText(FValue), THtAttributeBatch::abKeepFirst);
}

// p stands behind "</".
template <class U> void TReader<U>::ReadCloseTag() {
  FKind = ikText;
  FCloseMatched = false;
  if (p >= end)
    return;
  U c = *p;
  // Mostly the open element's tag and '>': compared directly, as long as the
  // name scan below would take in each unit of the tag.
  if constexpr (kBytes) {
    if (FExpect) {
      const TOpen& o = FOpen[FDepth];
      size_t n = FExpect->size();
      if (static_cast<size_t>(end - p) > n && p[n] == u'>' && Plain(o.Tag) && SameWords(p, o.Bytes, n)) {
        FCloseName = usv(p, n);
        p += n + 1;
        FKind = ikClose;
        FCloseMatched = true;
        return;
      }
    }
  }
  if (FExpect) {
    size_t n = FExpect->size();
    const char16_t* t = FExpect->c_str();
    if (static_cast<size_t>(end - p) > n && p[n] == u'>' && n > 0 && c == t[0] && c < 0x80 &&
        tag_class(c) <= 1 && c >= u' ') {
      size_t i = 1;
      for (; i < n; ++i) {
        U u = p[i];
        if (u != t[i] || u >= 0x80 || u == u'/' || u == 0 || tag_class(u) >= 2)
          break;
      }
      if (i == n) {
        FCloseName = usv(p, n);
        p += n + 1;
        FKind = ikClose;
        FCloseMatched = true;
        return;
      }
    }
  }
  int k = tag_class(c);
  if (!(k == 1 || (k == 0 && c >= u' ')))
    give_up();
  const U* b = p;
  p = ScanIdent(b);
  FCloseName = usv(b, static_cast<size_t>(p - b));
  for (;;) {
    if (p >= end)
      return;
    if (*p == u'>') {
      ++p;
      FKind = ikClose;
      return;
    }
    if (tag_class(*p) != 2)
      give_up();
    while (p < end && *p <= u' ')
      ++p;
  }
}

// A UTF-8 declaration may have the rest of the text re-decoded, exactly as
// the item reader does it.
template <class U> void TReader<U>::CheckDeclaration() {
  if (FUtf8 || !DeclaresUtf8(Units(FValue)))
    return;
  if constexpr (kBytes) {
    if (!may_be_narrow_utf8(p, end))
      return;
    FUtf8 = true;
    const U* test = find_head_end(p, end);
    if (is_narrow_utf8(test ? test : p, end))
      give_up(); // the decoded text is read again as the code page's bytes
  } else {
    if (!MayBeNarrowUtf8(p, end))
      return;
    FUtf8 = true;
    const U* test = find_head_end(p, end);
    if (is_narrow_utf8(test ? test : p, end)) {
      RawByteString bytes = HtUnicodeToCodePage(sv(p, static_cast<size_t>(end - p)), HtGetSystemCodePage());
      FText = Utf8ToHString(bytes.view());
      p = FText.c_str();
      end = p + FText.size();
    }
  }
}

template <class U> void TReader<U>::OpenElement(THtXMLNode* n) {
  const TName& t = Tag();
  if (n->FTag.Pointer() != t.Name.Pointer()) {
    n->FTag = t.Name;
    n->FTagHash = FNames.TagHash(FTag);
  }
  n->TagType = htIdent;
  if (FAttrs) {
    delete n->FAttributes;
    auto* a = new THtAttributes(true);
    n->FAttributes = a;
    FillAttributes(*a);
    if (FSpaceSeen)
      n->FPreserveSpace = a->GetAttribute(FNames.Names[static_cast<size_t>(FSpaceName)].Name) == u"preserve";
    else
      n->FPreserveSpace = false;
  }
}

template <class U> void TReader<U>::FillAttributes(THtAttributes& a) {
  if (FAttrs == 1) {
    a.List.reserve(1);
    a.List.push_back(THtAttribute{FNames.Names[static_cast<size_t>(FHeldName[0])].Name, std::move(FHeldValue[0])});
    a.Count = 1;
    return;
  }
  if (FAttrs > kHeld) {
    FScratch.MoveTo(a);
    return;
  }
  const size_t n = static_cast<size_t>(FAttrs);
  auto held = [&](size_t i) { return FHeldName[i]; };
  if (const TNameOrders::TOrder* o = FOrders.Find(n, held)) {
    a.List.reserve(n);
    for (uint32_t k : o->Sorted)
      a.List.push_back(
          THtAttribute{FNames.Names[static_cast<size_t>(FHeldName[k])].Name, std::move(FHeldValue[k])});
    a.Count = FAttrs;
    return;
  }
  for (int i = 0; i < FAttrs; ++i)
    FScratch.Add(FNames.Names[static_cast<size_t>(FHeldName[i])].Name, FHeldValue[i], FHeldRule[i]);
  FScratch.MoveTo(a);
  // With distinct names the set's order depends on the names alone.
  if (a.Count != FAttrs)
    return;
  TNameOrders::TOrder& o = FOrders.Learn(n, held);
  o.Sorted.resize(n);
  for (size_t i = 0; i < n; ++i) {
    const char16_t* name = a.List[i].Name.Pointer();
    uint32_t k = 0;
    while (FNames.Names[static_cast<size_t>(FHeldName[k])].Name.Pointer() != name)
      ++k;
    o.Sorted[i] = k;
  }
}

// A node of the class the root chooses for the name (-1: no tag), appended.
template <class U> THtXMLNode* TReader<U>::NewChild(THtXMLNode* parent, int name) {
  static const hstring kNoTag;
  THtNodeClass* cls = &FTextClass;
  const hstring* tag = &kNoTag;
  if (name >= 0) {
    TName& t = FNames.Names[static_cast<size_t>(name)];
    cls = &t.Class;
    tag = &t.Name;
  }
  if (!*cls)
    *cls = FRoot->GetElementClass(*tag, nullptr);
  THtXMLNode* x;
  if (*cls == NodeClass<THtXMLNode>()) {
    x = new THtXMLNode();
  } else {
    THtNode* n = THtNode::CreateNode(*cls);
    x = dynamic_cast<THtXMLNode*>(n);
    if (!x) {
      delete n;
      HT_ASSERT(false); // an XML tree holds XML nodes only
    }
  }
  if (name >= 0) {
    x->FTag = *tag;
    x->FTagHash = FNames.TagHash(name);
    x->TagType = htIdent;
  }
  x->FParent = parent;
  FKids.Add(x);
  return x;
}

template <class U> void TReader<U>::Run() {
  EnsureStarted();
  size_t n = static_cast<size_t>(end - p);
  if constexpr (kBytes) {
    // The marks below in their UTF-8 form; the decoded text has them as
    // units. A text of the mark alone keeps it as its first unit.
    static constexpr char8_t kMark1251[] = {0xD0, 0xBF, 0xC2, 0xBB, 0xD1, 0x97};
    if (n >= 6 && std::memcmp(p, kMark1251, 6) == 0)
      give_up();
    if (n > 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF)
      p += 3;
  } else {
    // The item reader's start: a UTF-8 mark read through code page 1251, or
    // a UTF-16 one.
    if (n > 3 && p[0] == 0x043F && p[1] == 0x00BB && p[2] == 0x0457)
      give_up();
    if (n > 1 && p[0] == 0xFEFF)
      ++p;
  }
  FRoot = FNode.Root();
  while (NextItem()) {
    if (FKind == ikOpen)
      break;
    if (FKind == ikDirective) {
      FNode.AddProcessingInstruction(hstring(Units(FValue)));
      CheckDeclaration();
    }
  }
  if (FKind != ikOpen)
    return;
  OpenElement(&FNode);
  if (FClosed)
    return;
  THtXMLNode* cur = &FNode;
  FPending.resize(1);
  FOpen.resize(1);
  FOpen[0] = {FTagStart, FTag};
  FDepth = 0;
  Walk(cur);
  for (;;) {
    Flush(cur);
    if (cur == &FNode)
      break;
    cur = static_cast<THtXMLNode*>(cur->FParent);
    --FDepth;
  }
}

// Whether a close tag's name is the element's tag.
inline bool same_name(std::u16string_view a, const hstring& tag) { return a == tag.view(); }
inline bool same_name(std::u8string_view a, const hstring& tag) {
  if (a.size() != tag.size())
    return false;
  const char16_t* t = tag.c_str();
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i] != t[i]) // names of the byte reader are ASCII
      return false;
  return true;
}

template <class U> void TReader<U>::Walk(THtXMLNode*& cur) {
  for (;;) {
    FExpect = &cur->FTag;
    if (!NextItem())
      break;
    switch (FKind) {
    case ikClose:
      if (!FCloseMatched && !same_name(FCloseName, cur->FTag))
        give_up(); // "Tag order error"
      if (cur == &FNode)
        return;
      Flush(cur);
      --FDepth;
      cur = static_cast<THtXMLNode*>(cur->FParent);
      continue;
    case ikText:
      if (!cur->FPreserveSpace && is_blank_text(FValue)) {
        FPending[FDepth] += FValue;
        continue;
      }
      if (FKids.Empty() && cur->FContent.empty() && FPending[FDepth].empty()) {
        cur->FContent = Keep(FValue);
        continue;
      }
      {
        THtXMLNode* t = NewChild(cur, -1);
        t->TagType = htString;
        t->FContent = Keep(FValue);
      }
      continue;
    case ikOpen: {
      THtXMLNode* child = NewChild(cur, FTag);
      OpenElement(child);
      if (!FClosed) {
        cur = child;
        Descend();
        FOpen[FDepth] = {FTagStart, FTag};
      }
      continue;
    }
    case ikComment:
    case ikCData:
    case ikCustom:
    case ikDirective: {
      THtXMLNode* child = NewChild(cur, -1);
      child->TagType = FKind == ikComment  ? htComment
                       : FKind == ikCData  ? htCData
                       : FKind == ikCustom ? htCustom
                                           : htDirective;
      child->FContent = Keep(FValue);
      if (FKind == ikDirective)
        CheckDeclaration();
      continue;
    }
    }
  }
}

template <class U> bool read(THtXMLNode& Node, const U* text, size_t n) {
  TReader<U> reader(Node, text, n);
  try {
    reader.Run();
  } catch (const TGiveUp&) {
    return false;
  }
  return true;
}

} // namespace

bool ReadXMLFast(THtXMLNode& Node, const hstring& XML) { return read(Node, XML.c_str(), XML.size()); }

bool ReadXMLFast(THtXMLNode& Node, std::string_view UTF8) {
  return read(Node, reinterpret_cast<const char8_t*>(UTF8.data()), UTF8.size());
}

} // namespace ht::detail
