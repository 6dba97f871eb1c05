// The direct XML reader behind THtXMLNode::SetXML.
//
// It reads the text in one pass without tokens or items and builds the nodes
// as it goes: names are interned once per parse together with their tag hash
// and node class, attribute sets are made once per element, and texts are
// copied straight from the source. It gives the same tree as the item reader
// in XML mode; wherever that reader has a quirk (stray quotes in a tag, a
// comment between attributes, "<div <p>", a close tag that does not match,
// charset meta tags, unknown numeric references) it gives up and SetXML
// parses again through the item reader, which also raises the errors.
#include "document/html_char_classes.h"
#include "document/unit_scan.h"
#include "document/utf8_check.h"
#include "document/xml_reader_internal.h"
#include "foundation/code_point.h"
#include "htcore/document/entities.h"
#include "htcore/document/html_parser.h"
#include "htcore/foundation/codepage.h"
#include "htcore/foundation/startup.h"
#include "htcore/foundation/text_utils.h"

#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif
#include <string>
#include <string_view>
#include <vector>

namespace ht::detail {

namespace {

using sv = std::u16string_view;

struct TGiveUp {};

[[noreturn]] void give_up() { throw TGiveUp(); }

inline int tag_class(char16_t c) { return c < 256 ? g_html_char_class[1][c] : 0; }

inline bool is_blank_text(sv s) {
  for (char16_t c : s)
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

// "</head>" in any case. Only "</h" can start it: eight positions at a time
// test for that, and only a hit compares the rest.
const char16_t* find_head_end(const char16_t* p, const char16_t* end) {
  static constexpr sv kLower = u"</head>";
  if (end - p < static_cast<ptrdiff_t>(kLower.size()))
    return nullptr;
  const char16_t* last = end - kLower.size() + 1;
  auto match = [](const char16_t* q) {
    size_t i = 0;
    while (i < kLower.size() && CharLower(q[i]) == kLower[i])
      ++i;
    return i == kLower.size();
  };
#ifdef __SSE2__
  const __m128i lt = _mm_set1_epi16(u'<'), slash = _mm_set1_epi16(u'/'), h = _mm_set1_epi16(u'h'),
                caps = _mm_set1_epi16(0x20);
  // Loads reach p + 9 < p + kLower.size() + 8 <= end.
  for (; last - p >= 8; p += 8) {
    __m128i a = _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), lt);
    __m128i b = _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 1)), slash);
    __m128i c = _mm_cmpeq_epi16(_mm_or_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 2)), caps), h);
    unsigned m = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(_mm_and_si128(a, b), c)));
    while (m) {
      const char16_t* q = p + (__builtin_ctz(m) >> 1);
      if (match(q))
        return q;
      m &= m - 1;
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
bool is_narrow_utf8(const char16_t* p, const char16_t* end) {
  const char16_t* e = FindUnit(p, end, 0);
  int cp = HtGetSystemCodePage();
  std::string buf; // bytes not yet judged
  bool seen = false;
  while (true) {
    const char16_t* q = e - p > 4096 ? p + 4096 : e;
    if (q < e && *(q - 1) >= 0xD800 && *(q - 1) < 0xDC00)
      ++q; // keep a pair together: the narrowing writes one byte for it
    buf += HtUnicodeToCodePage(sv(p, static_cast<size_t>(q - p)), cp).view();
    p = q;
    bool last = p >= e;
    const auto* b = reinterpret_cast<const uint8_t*>(buf.data());
    size_t n = buf.size(), i = 0;
    bool cut = false;
    while (i < n && !cut) {
      if (b[i] < 0x80) {
        ++i;
        continue;
      }
      switch (Utf8CheckStep(b, n, i)) {
      case TUtf8Step::Ok:
        seen = true;
        break;
      case TUtf8Step::Bad:
        return false;
      case TUtf8Step::Stop:
        return seen;
      case TUtf8Step::Cut:
        if (last)
          return seen;
        cut = true; // the sequence goes on in the next slice
        break;
      }
    }
    if (last)
      return seen;
    buf.erase(0, i);
  }
}

enum TItemKind { ikText, ikOpen, ikClose, ikComment, ikCData, ikCustom, ikDirective };

class TReader {
public:
  TReader(THtXMLNode& ANode, const hstring& XML) : FNode(ANode), FText(XML) {
    p = FText.c_str();
    end = p + FText.size();
  }

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
  void ReadEncoded(char16_t stop);
  uint32_t Escape();
  void ReadComment();
  void ReadCData();
  void ReadCustom();
  void ReadDirective();
  void CheckDeclaration();
  void Walk(THtXMLNode*& cur);

  TName& Tag() { return FNames.Names[static_cast<size_t>(FTag)]; }
  // Short attribute values and blank texts repeat a lot: one copy each.
  TTextCache FValues;
  hstring MakeText(sv v) { return FValues.Get(v); }
  void OpenElement(THtXMLNode* n);
  THtXMLNode* NewChild(THtXMLNode* parent, int name);

  THtXMLNode& FNode;
  hstring FText; // the text being read; replaced when a declaration re-decodes it
  const char16_t* p;
  const char16_t* end;
  bool FUtf8 = false; // the re-decoding test was made

  TItemKind FKind = ikText;
  int FTag = -1;
  sv FValue; // text of a text item or a block; points into the source or FBuffer
  sv FCloseName;
  bool FClosed = false;
  THtAttributeBatch FScratch; // attributes of the current element start
  std::u16string FBuffer;

  TNameTable FNames;
  int FSpaceName = FNames.Intern(u"xml:space", 9);
  bool FSpaceSeen = false; // the current tag has an xml:space attribute
  // Blank text waiting for the open elements, one buffer per depth: appending
  // to FContent piece by piece would copy it each time.
  std::vector<std::u16string> FPending;
  size_t FDepth = 0;
  TPendingChildren FKids;
  void Descend() {
    FKids.Down();
    if (++FDepth == FPending.size())
      FPending.emplace_back();
    FPending[FDepth].clear();
  }
  void Flush(THtXMLNode* n) {
    FKids.Up(n);
    std::u16string& b = FPending[FDepth];
    if (!b.empty()) {
      if (n->FContent.empty())
        n->FContent = MakeText(b);
      else
        n->FContent += sv(b);
    }
    b.clear();
  }
  THtNode* FRoot = nullptr;
  THtNodeClass FTextClass = nullptr;
};

bool TReader::NextItem() {
  FScratch.Clear();
  FSpaceSeen = false;
  if (p >= end)
    return false;
  if (*p != u'<') {
    ReadText();
    return true;
  }
  char16_t c1 = p[1];
  if (c1 == u'!') {
    if (p[2] == u'-')
      ReadComment();
    else if (p[2] == u'[' && p[3] == u'C' && p[4] == u'D' && p[5] == u'A')
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

void TReader::ReadText() {
  ReadEncoded(u'<');
  FKind = ikText;
}

void TReader::ReadEncoded(char16_t stop) {
  const char16_t* b = p;
  const char16_t* q = p;
#ifdef __SSE2__
  // Most texts and values have neither a reference nor an early stop: find
  // the first of the two eight units at a time.
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
#endif
  while (q < end && *q != stop && *q != u'&')
    ++q;
#ifdef __SSE2__
found:
#endif
  if (q >= end || *q == stop) {
    p = q;
    FValue = sv(b, static_cast<size_t>(q - b));
    return;
  }
  FBuffer.assign(b, static_cast<size_t>(q - b));
  p = q;
  while (p < end && *p != stop) {
    if (*p == u'&') {
      ++p;
      detail::AppendCodePoint(FBuffer, Escape());
      continue;
    }
    const char16_t* r = p;
    while (r < end && *r != stop && *r != u'&')
      ++r;
    FBuffer.append(p, static_cast<size_t>(r - p));
    p = r;
  }
  FValue = sv(FBuffer);
}

// The item reader's reference rules, down to its shortcuts.
uint32_t TReader::Escape() {
  const char16_t* q = p;
  auto at = [&](ptrdiff_t i) -> char16_t { return end - q > i ? q[i] : 0; };
  auto skip = [&](ptrdiff_t n) { p = end - p > n ? p + n : end; };
  char16_t c0 = at(0);
  if (c0 != u'#') {
    char16_t c1 = at(1), c2 = at(2);
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
  const char16_t* stop = q;
  for (int n = 0; stop < end && *stop != 0 && *stop != u';' && *stop != u' ' && n < 25; ++n)
    ++stop;
  bool semicolon = stop < end && *stop == u';';
  if (c0 == u'#') {
    // Only the plain forms "&#65;" and "&#x41;"; the number reader's
    // leniencies are left to the item reader.
    if (!semicolon)
      give_up();
    const char16_t* d = q + 1;
    uint64_t v = 0;
    if (*d == u'x') {
      ++d;
      if (stop - d < 1 || stop - d > 8)
        give_up();
      for (; d < stop; ++d) {
        char16_t c = *d;
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
  uint32_t code = FindEntity(q, static_cast<int>(stop - q));
  p = code ? stop : q;
  // One unit goes in both cases, as in the item reader.
  if (p < end)
    ++p;
  return code ? code : u'&';
}

void TReader::ReadComment() {
  if (end - p < 4)
    give_up();
  p += 4;
  const char16_t* start = p;
  sv rest(start, static_cast<size_t>(end - start));
  size_t at = rest.find(u"-->");
  const char16_t* stop = at == sv::npos ? end : start + at + 2;
  const char16_t* e = stop - start >= 2 ? stop - 2 : start;
  FValue = sv(start, static_cast<size_t>(e - start));
  FKind = ikComment;
  p = stop < end ? stop + 1 : end;
}

void TReader::ReadCData() {
  if (end - p < 9)
    give_up();
  p += 9;
  const char16_t* start = p;
  const char16_t* stop = end;
  for (const char16_t* q = start; q < end;) {
    if (*q != u']') {
      ++q;
      continue;
    }
    if (q[1] == u']' && q[2] == u'>') {
      stop = q + 2;
      break;
    }
    q = end - q > 2 ? q + 2 : end;
  }
  const char16_t* e = stop - start >= 2 ? stop - 2 : start;
  FValue = sv(start, static_cast<size_t>(e - start));
  FKind = ikCData;
  p = stop < end ? stop + 1 : end;
}

void TReader::ReadCustom() {
  p += 2;
  const char16_t* start = p;
  bool quote = false, bracket = false;
  for (; p < end; ++p) {
    char16_t c = *p;
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
  FValue = sv(start, static_cast<size_t>(p - start));
  FKind = ikCustom;
  if (p < end)
    ++p;
}

void TReader::ReadDirective() {
  p += 2;
  const char16_t* start = p;
  while (p < end && *p != 0 && *p != u'>' && !(*p == u'?' && p[1] == u'>'))
    ++p;
  FValue = sv(start, static_cast<size_t>(p - start));
  FKind = ikDirective;
  if (p < end)
    p += *p == u'?' ? 2 : 1;
}

// An attribute name, an unquoted value or a name that starts beyond ASCII:
// runs to a blank, quote, '<', '>', '=', "/>" or NUL.
inline const char16_t* scan_ident(const char16_t* q) {
  for (++q;; ++q) {
    char16_t c = *q;
    if (c >= 256 || (c >= u'a' && c <= u'z'))
      continue;
    if (c == u'/') {
      if (q[1] == u'>')
        return q;
    } else if (c == 0 || tag_class(c) >= 2) {
      return q;
    }
  }
}

// p stands behind '<' on the first unit of the name.
void TReader::ReadTag() {
  const char16_t* b = p;
  if (tag_class(*b) == 1) {
    for (++p;;) {
      char16_t c = *p;
      if (c >= 65 || tag_class(c) == 1)
        ++p;
      else if (c == u'/' && p[1] != u'>')
        ++p;
      else
        break;
    }
  } else {
    p = scan_ident(b);
  }
  FTag = FNames.Intern(b, static_cast<size_t>(p - b));
  FClosed = false;
  FKind = ikText; // until the '>' is seen
  for (;;) {
    if (p >= end)
      return;
    char16_t c = *p;
    switch (tag_class(c)) {
    case 2:
      while (p < end && *p <= u' ')
        ++p;
      break;
    case 5:
      ++p;
      // A charset meta tag re-decodes the text in the item reader.
      if (!FScratch.Empty() && equals_ignore_case(Tag().Name.view(), u"meta"))
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

void TReader::ReadAttribute() {
  const char16_t* b = p;
  p = scan_ident(b);
  int k = FNames.Intern(b, static_cast<size_t>(p - b));
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
    FScratch.Add(name, name, THtAttributeBatch::abReplace);
    return;
  }
  ++p;
  skip_blanks();
  if (p >= end || (*p != u'"' && *p != u'\''))
    give_up(); // "Attribute %s value expected"
  char16_t quote = *p++;
  ReadEncoded(quote);
  if (p < end)
    ++p;
  // The first valued attribute of a name wins.
  FScratch.Add(name, MakeText(FValue), THtAttributeBatch::abKeepFirst);
}

// p stands behind "</".
void TReader::ReadCloseTag() {
  FKind = ikText;
  if (p >= end)
    return;
  char16_t c = *p;
  int k = tag_class(c);
  if (!(k == 1 || (k == 0 && c >= u' ')))
    give_up();
  const char16_t* b = p;
  p = scan_ident(b);
  FCloseName = sv(b, static_cast<size_t>(p - b));
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
void TReader::CheckDeclaration() {
  if (FUtf8 || !DeclaresUtf8(FValue) || !MayBeNarrowUtf8(p, end))
    return;
  FUtf8 = true;
  const char16_t* test = find_head_end(p, end);
  if (is_narrow_utf8(test ? test : p, end)) {
    RawByteString bytes = HtUnicodeToCodePage(sv(p, static_cast<size_t>(end - p)), HtGetSystemCodePage());
    FText = Utf8ToHString(bytes.view());
    p = FText.c_str();
    end = p + FText.size();
  }
}

void TReader::OpenElement(THtXMLNode* n) {
  const TName& t = Tag();
  if (n->FTag.Pointer() != t.Name.Pointer()) {
    n->FTag = t.Name;
    n->FTagHash = FNames.TagHash(FTag);
  }
  n->TagType = htIdent;
  if (!FScratch.Empty()) {
    delete n->FAttributes;
    auto* a = new THtAttributes(true);
    n->FAttributes = a;
    FScratch.MoveTo(*a);
    if (FSpaceSeen)
      n->FPreserveSpace = a->GetAttribute(FNames.Names[static_cast<size_t>(FSpaceName)].Name) == u"preserve";
    else
      n->FPreserveSpace = false;
  }
}

// A node of the class the root chooses for the name (-1: no tag), appended.
THtXMLNode* TReader::NewChild(THtXMLNode* parent, int name) {
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

void TReader::Run() {
  EnsureStarted();
  // The item reader's start: a UTF-8 mark read through code page 1251, or a
  // UTF-16 one.
  size_t n = FText.size();
  if (n > 3 && p[0] == 0x043F && p[1] == 0x00BB && p[2] == 0x0457)
    give_up();
  if (n > 1 && p[0] == 0xFEFF)
    ++p;
  FRoot = FNode.Root();
  while (NextItem()) {
    if (FKind == ikOpen)
      break;
    if (FKind == ikDirective) {
      FNode.AddProcessingInstruction(hstring(FValue));
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

void TReader::Walk(THtXMLNode*& cur) {
  while (NextItem()) {
    switch (FKind) {
    case ikClose:
      if (FCloseName != cur->FTag.view())
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
        cur->FContent = hstring::ForTree(FValue);
        continue;
      }
      {
        THtXMLNode* t = NewChild(cur, -1);
        t->TagType = htString;
        t->FContent = hstring::ForTree(FValue);
      }
      continue;
    case ikOpen: {
      THtXMLNode* child = NewChild(cur, FTag);
      OpenElement(child);
      if (!FClosed) {
        cur = child;
        Descend();
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
      child->FContent = hstring::ForTree(FValue);
      if (FKind == ikDirective)
        CheckDeclaration();
      continue;
    }
    }
  }
}

} // namespace

bool ReadXMLFast(THtXMLNode& Node, const hstring& XML) {
  TReader reader(Node, XML);
  try {
    reader.Run();
  } catch (const TGiveUp&) {
    return false;
  }
  return true;
}

} // namespace ht::detail
