// The direct JSON reader behind THtXMLNode::SetJSON.
//
// One pass over the text without tokens, keeping the open objects and
// arrays on a stack of its own. It builds the tree the token reader builds
// for well-formed JSON and for the wider grammar's single quotes and bare
// names; for anything else (errors, comments, concatenated objects, nodes of
// a subclass) it gives up and SetJSON reads the text again the usual way,
// which also raises the errors.
#include "document/json_escape.h"
#include "document/xml_reader_internal.h"
#include "htcore/document/json_parser.h"

#include <deque>
#ifdef __SSE2__
#include <emmintrin.h>
#endif
#include <string>
#include <string_view>
#include <vector>

namespace ht::detail {

namespace {

using sv = std::u16string_view;

constexpr size_t kMaxDepth = 1024;

struct TGiveUp {};

[[noreturn]] void give_up() { throw TGiveUp(); }

inline bool is_json_space(char16_t c) { return c == u' ' || c == u'\n' || c == u'\r' || c == u'\t'; }

inline bool is_ident_start(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
}

inline bool is_digit(char16_t c) { return c >= u'0' && c <= u'9'; }

enum TScalar { scString, scNumber, scIdent, scValue };

struct TFrame {
  THtXMLNode* Node;
  bool Array;
  THtAttributeBatch Attrs; // the object's scalars until it closes
};

class TJSONReader {
public:
  TJSONReader(THtXMLNode& ANode, const hstring& JSON) : FNode(ANode) {
    p = JSON.c_str();
    end = p + JSON.size();
  }

  void Run();

private:
  void SkipSpace() {
    while (p < end && is_json_space(*p))
      ++p;
  }
  // Reads a string, number or identifier into FScalar; false when p stands
  // on none of them.
  bool ReadScalar(TScalar& kind);
  void ReadString();
  void ReadNumber();
  hstring ScalarText();
  THtXMLNode* NewChild(THtXMLNode* parent, int name);
  void Open(THtXMLNode* n, bool array);
  void Close();

  THtXMLNode& FNode;
  const char16_t* p;
  const char16_t* end;
  sv FScalar; // into the source or FBuffer
  std::u16string FBuffer;
  std::deque<TFrame> FStack; // grows only; FDepth frames are in use
  size_t FDepth = 0;
  TNameTable FNames;
  TTextCache FValues;
  TPendingChildren FKids;
  THtNode* FRoot = nullptr;
  int FArray, FObject, FValue; // tag names
};

bool TJSONReader::ReadScalar(TScalar& kind) {
  char16_t c = *p;
  if (c == u'"' || c == u'\'') {
    ReadString();
    kind = scString;
    return true;
  }
  if (is_digit(c) || c == u'-') {
    ReadNumber();
    kind = scNumber;
    return true;
  }
  if (is_ident_start(c)) {
    const char16_t* b = p;
    for (++p; p < end && IsJSONIdentUnit(*p);)
      ++p;
    FScalar = sv(b, static_cast<size_t>(p - b));
    kind = FScalar == u"true" || FScalar == u"false" || FScalar == u"null" ? scValue : scIdent;
    return true;
  }
  return false;
}

void TJSONReader::ReadString() {
  const char16_t quote = *p;
  const char16_t* q = p + 1;
  const char16_t* seg = q;
  bool escaped = false;
#ifdef __SSE2__
  const __m128i vq = _mm_set1_epi16(static_cast<short>(quote)), vb = _mm_set1_epi16(u'\\'),
                vc = _mm_set1_epi16(0x1F);
#endif
  for (;;) {
#ifdef __SSE2__
    // Plain units eight at a time; the loop below looks at the first unit
    // that ends the string, escapes or is a control.
    while (end - q >= 8) {
      __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
      __m128i hit = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(v, vq), _mm_cmpeq_epi16(v, vb)),
                                 _mm_cmpeq_epi16(_mm_subs_epu16(v, vc), _mm_setzero_si128()));
      unsigned m = static_cast<unsigned>(_mm_movemask_epi8(hit));
      if (m) {
        q += __builtin_ctz(m) >> 1;
        break;
      }
      q += 8;
    }
#endif
    if (q >= end)
      give_up(); // "Unterminated string"
    char16_t c = *q;
    if (c == quote)
      break;
    if (c < 0x20)
      give_up(); // "Unescaped control symbol"
    if (c != u'\\') {
      ++q;
      continue;
    }
    if (!escaped) {
      FBuffer.clear();
      escaped = true;
    }
    FBuffer.append(seg, q);
    ++q;
    if (DecodeJSONEscape(q, end, FBuffer.empty() ? u'\0' : FBuffer.back(), c) != TJSONEscape::Ok)
      give_up();
    FBuffer.push_back(c);
    seg = ++q;
  }
  if (escaped) {
    FBuffer.append(seg, q);
    FScalar = sv(FBuffer);
  } else {
    FScalar = sv(p + 1, static_cast<size_t>(q - p - 1));
  }
  p = q + 1;
}

// The strict number form; the text is kept as written.
void TJSONReader::ReadNumber() {
  const char16_t* b = p;
  if (*p == u'-')
    ++p;
  if (!is_digit(*p) || (*p == u'0' && is_digit(p[1])))
    give_up(); // "Incorrect number"
  while (is_digit(*p))
    ++p;
  if (*p == u'.') {
    if (!is_digit(p[1]))
      give_up();
    for (++p; is_digit(*p);)
      ++p;
  }
  if (*p == u'e' || *p == u'E') {
    const char16_t* q = p + 1;
    if (*q == u'+' || *q == u'-')
      ++q;
    if (!is_digit(*q))
      give_up();
    while (is_digit(*q))
      ++q;
    p = q;
  }
  FScalar = sv(b, static_cast<size_t>(p - b));
}

hstring TJSONReader::ScalarText() { return FValues.Get(FScalar); }

// Children are nodes of this very class, so that a subclass that makes
// others goes the usual way.
THtXMLNode* TJSONReader::NewChild(THtXMLNode* parent, int name) {
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

void TJSONReader::Open(THtXMLNode* n, bool array) {
  if (++FDepth > kMaxDepth)
    give_up(); // "JSON contains too many nested nodes"
  if (FDepth > 1)
    FKids.Down();
  if (FStack.size() < FDepth)
    FStack.emplace_back();
  TFrame& f = FStack[FDepth - 1];
  f.Node = n;
  f.Array = array;
  f.Attrs.Clear();
  n->IsArray = array;
  if (n->FTag.empty()) {
    int tag = array ? FArray : FObject;
    n->FTag = FNames.Names[static_cast<size_t>(tag)].Name;
    n->FTagHash = FNames.TagHash(tag);
    n->TagType = htIdent;
  }
  ++p;
}

void TJSONReader::Close() {
  TFrame& f = FStack[FDepth - 1];
  if (!f.Attrs.Empty()) {
    auto* a = new THtAttributes(true);
    f.Node->FAttributes = a;
    f.Attrs.MoveTo(*a);
  }
  FKids.Up(f.Node);
  --FDepth;
  ++p;
}

void TJSONReader::Run() {
  FRoot = FNode.Root();
  FArray = FNames.Intern(u"array", 5);
  FObject = FNames.Intern(u"object", 6);
  FValue = FNames.Intern(u"value", 5);
  while (p < end && *p <= u' ')
    ++p;
  if (p >= end)
    give_up(); // "Incorrect JSON, token expected."
  TScalar kind;
  if (*p == u'{' || *p == u'[') {
    Open(&FNode, *p == u'[');
  } else {
    if (!ReadScalar(kind))
      give_up();
    FNode.SetValue(ScalarText());
  }
  // State per open container: true when a value (or the start) was just read
  // and a ',' or the end comes next.
  bool first = true;
  while (FDepth > 0) {
    TFrame& f = FStack[FDepth - 1];
    SkipSpace();
    if (p >= end)
      give_up();
    if (!first) {
      char16_t c = *p;
      if (c == (f.Array ? u']' : u'}')) {
        Close();
        continue;
      }
      if (c != u',')
        give_up();
      ++p;
      SkipSpace();
      if (p >= end || *p == (f.Array ? u']' : u'}'))
        give_up(); // a comma before the end
    } else if (*p == (f.Array ? u']' : u'}')) {
      Close();
      first = false;
      continue;
    }
    first = false;
    THtXMLNode* node = f.Node;
    if (f.Array) {
      char16_t c = *p;
      if (c == u'{' || c == u'[') {
        Open(NewChild(node, c == u'[' ? FArray : FObject), c == u'[');
        first = true;
        continue;
      }
      if (!ReadScalar(kind) || kind == scIdent)
        give_up();
      NewChild(node, FValue)->SetContent(ScalarText());
      continue;
    }
    // name : value
    if (!ReadScalar(kind) || kind == scNumber || kind == scValue)
      give_up(); // "Name expected"
    int name = FNames.Intern(FScalar.data(), FScalar.size());
    SkipSpace();
    if (p >= end || *p != u':')
      give_up();
    ++p;
    SkipSpace();
    if (p >= end)
      give_up();
    char16_t c = *p;
    if (c == u'{' || c == u'[') {
      Open(NewChild(node, name), c == u'[');
      first = true;
      continue;
    }
    const hstring& key = FNames.Names[static_cast<size_t>(name)].Name;
    if (!ReadScalar(kind) || key.empty())
      give_up();
    f.Attrs.Add(key, ScalarText(), THtAttributeBatch::abReplace); // a repeated key: the last wins
  }
  SkipSpace();
  if (p < end)
    give_up(); // comments, more objects, or no proper end
}

} // namespace

bool ReadJSONFast(THtXMLNode& Node, const hstring& JSON) {
  TJSONReader reader(Node, JSON);
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

} // namespace ht::detail
