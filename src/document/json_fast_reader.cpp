// The direct JSON reader behind THtXMLNode::SetJSON and SetJSONUtf8.
//
// One pass over the text without tokens, keeping the open objects and
// arrays on a stack of its own. It builds the tree the token reader builds
// for well-formed JSON and for the wider grammar's single quotes and bare
// names; for anything else (errors, comments, concatenated objects, nodes of
// a subclass) it gives up and SetJSON reads the text again the usual way,
// which also raises the errors.
//
// The same reader runs over UTF-16 units and over UTF-8 bytes. Over bytes it
// decodes only the strings it keeps, so no UTF-16 copy of the whole input is
// made; a byte from 0x80 up outside a string (which could only continue a
// bare name) makes it give up, and the caller decodes the whole text.
//
// An object's scalars wait on one stack of (name, value) pairs until the
// object closes; its attribute array is then made once at its final size.
// The name order of a set of keys is remembered by the sequence of interned
// names, so the records of an array, which repeat their keys, are not sorted
// again one by one.
#include "document/json_escape.h"
#include "document/json_fast_reader.h"
#include "document/reader_caches.h"
#include "document/xml_reader_internal.h"
#include "foundation/utf8_decode.h"
#include "htcore/document/json_parser.h"
#include "htcore/document/json_reader.h"

#include <algorithm>
#include <cstring>
#include <memory>
#ifdef __SSE2__
#include <emmintrin.h>
#endif
#include <string_view>
#include <type_traits>
#include <vector>

namespace ht::detail {

namespace {

using sv = std::u16string_view;

constexpr size_t kMaxDepth = 1024;

struct TGiveUp {};

[[noreturn]] void give_up() { throw TGiveUp(); }

template <class Unit> bool is_json_space(Unit c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

template <class Unit> bool is_ident_start(Unit c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

template <class Unit> bool is_digit(Unit c) { return c >= '0' && c <= '9'; }

enum TScalar { scString, scNumber, scIdent, scValue };

struct TPair {
  int Name;
  hstring Value;
};

struct TFrame {
  THtXMLNode* Node;
  bool Array;
  size_t Pairs; // where the object's scalars start on the pair stack
};

// Unit is char16_t for UTF-16 text (which ends in a NUL) or uint8_t for
// UTF-8 bytes (which need not).
template <class Unit> class TJSONReader {
public:
  TJSONReader(THtXMLNode& ANode, const Unit* AText, size_t ALength)
      : FNode(ANode), p(AText), end(AText + ALength), FBuf(std::make_unique<char16_t[]>(256)), FBufCap(256) {}

  void Run();

private:
  static constexpr bool kBytes = sizeof(Unit) == 1;

  Unit At(const Unit* q) const { return q < end ? *q : Unit(0); }
  void SkipSpace() {
    while (p < end && is_json_space(*p))
      ++p;
  }
  // Reads a string, number or identifier; false when p stands on none of
  // them. The scalar is then either source units (FRaw: ASCII, no escapes)
  // or decoded text in FScalar.
  bool ReadScalar(TScalar& kind);
  // An object's key, interned.
  int ReadKey();
  // The scalar as units.
  sv ScalarView();
  hstring ScalarText();
  // Whether the raw scalar spells Literal.
  bool RawIs(std::string_view Literal) const;
  void ReadString();
  // The closing quote of a string from b that ends within 16 bytes; q is on
  // the first quote, backslash or control behind b. Null when it is longer,
  // or has a control or a "\x" escape.
  const Unit* ShortStringEnd(const Unit* b, const Unit* q, Unit quote) const;
  // Decodes the string from b up to its closing quote, which it returns; the
  // scan from b stopped at q, with high telling about b..q.
  const Unit* DecodeString(const Unit* b, const Unit* q, Unit quote, bool high);
  // The end of a string's plain run from q: a quote, backslash or control.
  // Sets high when it passed bytes from 0x80 up.
  const Unit* ScanString(const Unit* q, Unit quote, bool& high);
  void ReadNumber();
  void SetRaw(const Unit* b, const Unit* q) {
    FKnown = nullptr;
    FRawB = b;
    FRawE = q;
    FRaw = true;
  }
  // Appends b..q to FBuf: widened or decoded bytes, or units as they are.
  void Append(const Unit* b, const Unit* q, bool high);
  char16_t* Reserve(size_t n);
  void Escape(const Unit*& q);
  THtXMLNode* NewChild(THtXMLNode* parent, int name);
  void Open(THtXMLNode* n, bool array);
  void Close();
  void BuildAttributes(THtXMLNode* n, size_t first);
  const TNameOrders::TOrder& OrderOf(const TPair* pairs, size_t n);

  THtXMLNode& FNode;
  const Unit* p;
  const Unit* end;
  const Unit *FRawB = nullptr, *FRawE = nullptr; // the scalar in the source
  bool FRaw = false;
  sv FScalar; // the decoded scalar, in FBuf
  const hstring* FKnown = nullptr; // the scalar's text, found by its bytes
  std::unique_ptr<char16_t[]> FBuf; // decoded strings
  size_t FBufCap = 0, FBufLen = 0;
  char16_t FWide[32];               // short ASCII scalars widened
  struct TNoNames {};
  struct TNoTexts {};
  [[no_unique_address]] std::conditional_t<kBytes, TByteNames, TNoNames> FKeyNames; // keys by their bytes
  [[no_unique_address]] std::conditional_t<kBytes, TShortTexts, TNoTexts> FShortTexts; // short values
  std::vector<TFrame> FStack;       // open objects and arrays
  std::vector<TPair> FPairs;        // scalars of the open objects
  TNameOrders FOrders;              // by the key sequence
  TNameTable FNames;
  TTextCache FValues;
  TPendingChildren FKids;
  THtNode* FRoot = nullptr;
  int FArray = 0, FObject = 0, FValue = 0; // tag names
};

template <class Unit> char16_t* TJSONReader<Unit>::Reserve(size_t n) {
  if (FBufLen + n > FBufCap) {
    size_t cap = std::max(FBufCap * 2, FBufLen + n);
    auto buf = std::make_unique<char16_t[]>(cap);
    std::memcpy(buf.get(), FBuf.get(), FBufLen * sizeof(char16_t));
    FBuf = std::move(buf);
    FBufCap = cap;
  }
  return FBuf.get() + FBufLen;
}

template <class Unit> void TJSONReader<Unit>::Append(const Unit* b, const Unit* q, bool high) {
  size_t n = static_cast<size_t>(q - b);
  char16_t* d = Reserve(n);
  if constexpr (kBytes) {
    if (high)
      FBufLen = static_cast<size_t>(DecodeUtf8(b, q, d) - FBuf.get());
    else {
      widen_ascii(b, n, d);
      FBufLen += n;
    }
  } else {
    (void)high;
    std::memcpy(d, b, n * sizeof(char16_t));
    FBufLen += n;
  }
}

template <class Unit> sv TJSONReader<Unit>::ScalarView() {
  if (FKnown)
    return FKnown->view();
  if (!FRaw)
    return FScalar;
  size_t n = static_cast<size_t>(FRawE - FRawB);
  if constexpr (kBytes) {
    if (n <= std::size(FWide)) {
      widen_ascii(FRawB, n, FWide);
      return sv(FWide, n);
    }
    FBufLen = 0;
    Append(FRawB, FRawE, false);
    return sv(FBuf.get(), n);
  } else {
    return sv(FRawB, n);
  }
}

template <class Unit> hstring TJSONReader<Unit>::ScalarText() {
  if (FKnown)
    return *FKnown;
  if constexpr (kBytes) {
    size_t n = static_cast<size_t>(FRawE - FRawB);
    if (FRaw && n - 1 < 16)
      return FShortTexts.Get(FRawB, n, end, [&](const TShortBytes& key) {
        widen_short(key, FWide); // raw scalars are ASCII
        return hstring::ForTree(FWide, key.Len);
      });
  }
  return FValues.Get(ScalarView());
}

template <class Unit> bool TJSONReader<Unit>::RawIs(std::string_view Literal) const {
  if (static_cast<size_t>(FRawE - FRawB) != Literal.size())
    return false;
  for (size_t i = 0; i < Literal.size(); ++i)
    if (FRawB[i] != static_cast<Unit>(Literal[i]))
      return false;
  return true;
}

// A plain ASCII key is looked up by its bytes, without decoding.
template <class Unit> int TJSONReader<Unit>::ReadKey() {
  if constexpr (kBytes) {
    const Unit quote = *p;
    if (quote == '"' || quote == '\'') {
      const Unit* b = p + 1;
      bool high = false;
      const Unit* q = ScanString(b, quote, high);
      size_t n = static_cast<size_t>(q - b);
      if (q < end && *q == quote && !high && n) {
        p = q + 1;
        return FKeyNames.Find(FNames, b, n, end);
      }
    }
  }
  TScalar kind;
  if (!ReadScalar(kind) || kind == scNumber || kind == scValue)
    give_up(); // "Name expected"
  sv name = ScalarView();
  return FNames.Intern(name.data(), name.size());
}

template <class Unit> bool TJSONReader<Unit>::ReadScalar(TScalar& kind) {
  Unit c = *p;
  if (c == '"' || c == '\'') {
    ReadString();
    kind = scString;
    return true;
  }
  if (is_digit(c) || c == '-') {
    ReadNumber();
    kind = scNumber;
    return true;
  }
  if constexpr (kBytes) {
    if ((c == 't' || c == 'f' || c == 'n') && end - p >= 6) {
      size_t n = std::memcmp(p, "true", 4) == 0 || std::memcmp(p, "null", 4) == 0 ? 4
                 : std::memcmp(p, "false", 5) == 0                               ? 5
                                                                                  : 0;
      if (n && p[n] < 0x80 && !IsJSONIdentUnit(p[n])) {
        SetRaw(p, p + n);
        p += n;
        kind = scValue;
        return true;
      }
    }
  }
  if (is_ident_start(c)) {
    const Unit* b = p;
    for (++p; p < end && IsJSONIdentUnit(*p);)
      ++p;
    if constexpr (kBytes)
      if (p < end && *p >= 0x80)
        give_up(); // a name going on in non-ASCII text
    SetRaw(b, p);
    kind = RawIs("true") || RawIs("false") || RawIs("null") ? scValue : scIdent;
    return true;
  }
  return false;
}

template <class Unit> const Unit* TJSONReader<Unit>::ScanString(const Unit* q, Unit quote, bool& high) {
#ifdef __SSE2__
  // Plain units eight (or bytes sixteen) at a time.
  if constexpr (kBytes) {
    const __m128i vq = _mm_set1_epi8(static_cast<char>(quote)), vb = _mm_set1_epi8('\\'),
                  vc = _mm_set1_epi8(0x1F);
    while (end - q >= 16) {
      __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
      __m128i hit = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, vq), _mm_cmpeq_epi8(v, vb)),
                                 _mm_cmpeq_epi8(_mm_subs_epu8(v, vc), _mm_setzero_si128()));
      unsigned m = static_cast<unsigned>(_mm_movemask_epi8(hit));
      unsigned h = static_cast<unsigned>(_mm_movemask_epi8(v));
      if (m) {
        unsigned k = static_cast<unsigned>(__builtin_ctz(m));
        high |= (h & ((1u << k) - 1)) != 0;
        return q + k;
      }
      high |= h != 0;
      q += 16;
    }
  } else {
    const __m128i vq = _mm_set1_epi16(static_cast<short>(quote)), vb = _mm_set1_epi16(u'\\'),
                  vc = _mm_set1_epi16(0x1F);
    while (end - q >= 8) {
      __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
      __m128i hit = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(v, vq), _mm_cmpeq_epi16(v, vb)),
                                 _mm_cmpeq_epi16(_mm_subs_epu16(v, vc), _mm_setzero_si128()));
      unsigned m = static_cast<unsigned>(_mm_movemask_epi8(hit));
      if (m)
        return q + (__builtin_ctz(m) >> 1);
      q += 8;
    }
  }
#endif
  for (; q < end; ++q) {
    Unit c = *q;
    if (c == quote || c == '\\' || c < 0x20)
      break;
    if (kBytes && c >= 0x80)
      high = true;
  }
  return q;
}

// q stands behind a backslash; the decoded unit goes to FBuf and q onto the
// escape's last unit.
template <class Unit> void TJSONReader<Unit>::Escape(const Unit*& q) {
  char16_t prev = FBufLen ? FBuf[FBufLen - 1] : u'\0';
  char16_t c;
  if constexpr (kBytes) {
    // The decoder looks up to eleven units ahead and stops at a NUL, which
    // a byte slice does not have: near the end it reads a padded copy.
    if (q == end)
      give_up(); // a backslash as the last byte: "Unterminated string"
    if (q[0] == 'x' && ((end - q > 1 && q[1] >= 0x80) || (end - q > 2 && q[2] >= 0x80)))
      give_up(); // takes the units of decoded text
    if (end - q < 12) {
      uint8_t tail[16] = {};
      size_t n = static_cast<size_t>(end - q);
      std::memcpy(tail, q, n);
      const uint8_t* t = tail;
      if (DecodeJSONEscape(t, tail + n, prev, c) != TJSONEscape::Ok)
        give_up();
      q += t - tail;
    } else if (DecodeJSONEscape(q, end, prev, c) != TJSONEscape::Ok) {
      give_up();
    }
  } else if (DecodeJSONEscape(q, end, prev, c) != TJSONEscape::Ok) {
    give_up();
  }
  *Reserve(1) = c;
  ++FBufLen;
}

template <class Unit> void TJSONReader<Unit>::ReadString() {
  const Unit quote = *p;
  const Unit* b = p + 1;
  bool high = false;
  const Unit* q = ScanString(b, quote, high);
  if (q < end && *q == quote && !high) [[likely]] {
    SetRaw(b, q);
    p = q + 1;
    return;
  }
  FKnown = nullptr;
  if constexpr (kBytes) {
    // A short string with escapes or bytes beyond ASCII is looked up by its
    // bytes: only its first sight decodes it.
    if (q < end && (*q == quote ? high : *q == '\\')) {
      if (const Unit* e = ShortStringEnd(b, q, quote)) {
        FKnown = &FShortTexts.Get(b, static_cast<size_t>(e - b), end, [&](const TShortBytes&) {
          if (DecodeString(b, q, quote, high) != e)
            give_up();
          return hstring::ForTree(ScalarView());
        });
        p = e + 1;
        return;
      }
    }
  }
  p = DecodeString(b, q, quote, high) + 1;
}

template <class Unit>
const Unit* TJSONReader<Unit>::ShortStringEnd(const Unit* b, const Unit* q, Unit quote) const {
  while (q < end && static_cast<size_t>(q - b) <= 16) {
    Unit c = *q;
    if (c == quote)
      return q;
    if (c == '\\') {
      // "\x" may take the quote in as a digit: its end is the decoder's.
      if (end - q < 2 || q[1] == 'x')
        return nullptr;
      q += 2;
    } else if (c < 0x20) {
      return nullptr;
    } else {
      ++q;
    }
  }
  return nullptr;
}

template <class Unit>
const Unit* TJSONReader<Unit>::DecodeString(const Unit* b, const Unit* q, Unit quote, bool high) {
  const Unit* seg = b;
  bool copied = false; // FBuf holds the text so far
  for (;;) {
    if (q >= end)
      give_up(); // "Unterminated string"
    Unit c = *q;
    if (c == quote)
      break;
    if (c < 0x20)
      give_up(); // "Unescaped control symbol"
    // a backslash
    if (!copied) {
      FBufLen = 0;
      copied = true;
    }
    Append(seg, q, high);
    high = false;
    ++q;
    Escape(q);
    seg = ++q;
    q = ScanString(q, quote, high);
  }
  if (copied || high) {
    if (!copied)
      FBufLen = 0;
    Append(seg, q, high);
    FScalar = sv(FBuf.get(), FBufLen);
    FRaw = false;
  } else {
    SetRaw(seg, q);
  }
  return q;
}

// The strict number form; the text is kept as written.
template <class Unit> void TJSONReader<Unit>::ReadNumber() {
  const Unit* b = p;
  const Unit* q = p;
  if (*q == '-')
    ++q;
  if (!is_digit(At(q)) || (*q == '0' && is_digit(At(q + 1))))
    give_up(); // "Incorrect number"
  while (q < end && is_digit(*q))
    ++q;
  if (At(q) == '.') {
    if (!is_digit(At(q + 1)))
      give_up();
    for (++q; q < end && is_digit(*q);)
      ++q;
  }
  if (At(q) == 'e' || At(q) == 'E') {
    const Unit* e = q + 1;
    if (At(e) == '+' || At(e) == '-')
      ++e;
    if (!is_digit(At(e)))
      give_up();
    while (e < end && is_digit(*e))
      ++e;
    q = e;
  }
  p = q;
  SetRaw(b, q);
}

// Children are nodes of this very class, so that a subclass that makes
// others goes the usual way.
template <class Unit> THtXMLNode* TJSONReader<Unit>::NewChild(THtXMLNode* parent, int name) {
  TName& t = FNames.Names[static_cast<size_t>(name)];
  if (!t.Class) {
    t.Class = FRoot->GetElementClass(t.Name, nullptr);
    if (t.Class != NodeClass<THtXMLNode>())
      give_up();
  }
  auto* x = new THtXMLNode();
  x->FParent = parent;
  FKids.Add(x);
  if (!t.Name.empty()) {
    x->FTag = t.Name;
    x->FTagHash = FNames.TagHash(name);
    x->TagType = htIdent;
  }
  return x;
}

template <class Unit> void TJSONReader<Unit>::Open(THtXMLNode* n, bool array) {
  if (FStack.size() >= kMaxDepth)
    give_up(); // "JSON contains too many nested nodes"
  if (!FStack.empty())
    FKids.Down();
  FStack.push_back({n, array, FPairs.size()});
  n->IsArray = array;
  if (n->FTag.empty()) {
    int tag = array ? FArray : FObject;
    n->FTag = FNames.Names[static_cast<size_t>(tag)].Name;
    n->FTagHash = FNames.TagHash(tag);
    n->TagType = htIdent;
  }
  ++p;
}

template <class Unit>
const TNameOrders::TOrder& TJSONReader<Unit>::OrderOf(const TPair* pairs, size_t n) {
  auto key = [&](size_t i) { return pairs[i].Name; };
  if (const TNameOrders::TOrder* o = FOrders.Find(n, key))
    return *o;
  TNameOrders::TOrder& o = FOrders.Learn(n, key);
  // A stable sort keeps a repeated key's pairs in their order; its last one
  // gives the value.
  std::vector<uint32_t>& order = o.Sorted;
  order.resize(n);
  for (size_t i = 0; i < n; ++i)
    order[i] = static_cast<uint32_t>(i);
  std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
    return FNames.Names[static_cast<size_t>(pairs[a].Name)].Name.view() <
           FNames.Names[static_cast<size_t>(pairs[b].Name)].Name.view();
  });
  size_t k = 0;
  for (size_t i = 0; i < n; ++i) {
    if (k && pairs[order[k - 1]].Name == pairs[order[i]].Name)
      order[k - 1] = order[i];
    else
      order[k++] = order[i];
  }
  order.resize(k);
  return o;
}

template <class Unit> void TJSONReader<Unit>::BuildAttributes(THtXMLNode* n, size_t first) {
  TPair* pairs = FPairs.data() + first;
  const TNameOrders::TOrder& order = OrderOf(pairs, FPairs.size() - first);
  auto* a = new THtAttributes(true);
  n->FAttributes = a;
  a->List.reserve(order.Sorted.size());
  for (uint32_t i : order.Sorted)
    a->List.push_back({FNames.Names[static_cast<size_t>(pairs[i].Name)].Name, std::move(pairs[i].Value)});
  a->Count = static_cast<int>(order.Sorted.size());
  FPairs.resize(first);
}

template <class Unit> void TJSONReader<Unit>::Close() {
  TFrame& f = FStack.back();
  if (FPairs.size() > f.Pairs)
    BuildAttributes(f.Node, f.Pairs);
  FKids.Up(f.Node);
  FStack.pop_back();
  ++p;
}

template <class Unit> void TJSONReader<Unit>::Run() {
  FRoot = FNode.Root();
  FArray = FNames.Intern(u"array", 5);
  FObject = FNames.Intern(u"object", 6);
  FValue = FNames.Intern(u"value", 5);
  FStack.reserve(16);
  while (p < end && *p <= ' ')
    ++p;
  if (p >= end)
    give_up(); // "Incorrect JSON, token expected."
  TScalar kind;
  if (*p == '{' || *p == '[') {
    Open(&FNode, *p == '[');
  } else {
    if (!ReadScalar(kind))
      give_up();
    FNode.SetValue(ScalarText());
  }
  // True when a container was just opened: no ',' before its first value.
  bool first = true;
  while (!FStack.empty()) {
    TFrame& f = FStack.back();
    const Unit close = f.Array ? ']' : '}';
    SkipSpace();
    if (p >= end)
      give_up();
    if (!first) {
      Unit c = *p;
      if (c == close) {
        Close();
        continue;
      }
      if (c != ',')
        give_up();
      ++p;
      SkipSpace();
      if (p >= end || *p == close)
        give_up(); // a comma before the end
    } else if (*p == close) {
      Close();
      first = false;
      continue;
    }
    first = false;
    THtXMLNode* node = f.Node;
    if (f.Array) {
      Unit c = *p;
      if (c == '{' || c == '[') {
        Open(NewChild(node, c == '[' ? FArray : FObject), c == '[');
        first = true;
        continue;
      }
      if (!ReadScalar(kind) || kind == scIdent)
        give_up();
      NewChild(node, FValue)->FContent = ScalarText(); // what SetContent does for this class
      continue;
    }
    // name : value
    int name = ReadKey();
    SkipSpace();
    if (p >= end || *p != ':')
      give_up();
    ++p;
    SkipSpace();
    if (p >= end)
      give_up();
    Unit c = *p;
    if (c == '{' || c == '[') {
      Open(NewChild(node, name), c == '[');
      first = true;
      continue;
    }
    if (!ReadScalar(kind) || FNames.Names[static_cast<size_t>(name)].Name.empty())
      give_up();
    FPairs.push_back({name, ScalarText()}); // a repeated key: the last wins
  }
  SkipSpace();
  if (p < end)
    give_up(); // comments, more objects, or no proper end
}

template <class Unit> bool read_fast(THtXMLNode& Node, const Unit* text, size_t length) {
  TJSONReader<Unit> reader(Node, text, length);
  try {
    reader.Run();
  } catch (const TGiveUp&) {
    delete Node.FNodes;
    Node.FNodes = nullptr;
    delete Node.FAttributes;
    Node.FAttributes = nullptr;
    Node.FContent.clear();
    Node.FTag.clear();
    Node.FTagHash = 0;
    Node.IsArray = false;
    return false;
  }
  return true;
}

} // namespace

bool ReadJSONFast(THtXMLNode& Node, const hstring& JSON) { return read_fast(Node, JSON.c_str(), JSON.size()); }

bool ReadJSONFastUtf8(THtXMLNode& Node, std::string_view Utf8) {
  return read_fast(Node, reinterpret_cast<const uint8_t*>(Utf8.data()), Utf8.size());
}

} // namespace ht::detail
