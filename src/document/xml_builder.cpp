// XML text into THtXMLNode trees, through the HTML reader in XML mode.
//
// The builder keeps its place in the tree with the parent links instead of
// recursing per element, so the nesting depth is bounded by memory only.
#include "document/xml_reader_internal.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/codepage.h"
#include "htcore/foundation/text_utils.h"

#include <string>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif
#include <typeinfo>

namespace ht {

namespace {

using sv = std::u16string_view;

bool is_blank(sv s) {
  for (char16_t c : s)
    if (c > u' ')
      return false;
  return true;
}

// An XML declaration naming UTF-8 lets the reader re-decode the rest of a
// text that arrived as 8-bit units (it checks the bytes first).
void check_declaration(THtmlParser& HP) {
  const TStringParser& sp = HP.Tokenizer.Parser;
  if (HP.Encoding != heUTF8 && detail::DeclaresUtf8(HP.Value.view()) &&
      detail::MayBeNarrowUtf8(sp.p, sp.pend))
    HP.ChangeEncoding(heUTF8, 0);
}

bool is_text_item(const THtmlParser& HP) {
  return HP.Tag.empty() && (HP.TagType == htIdent || HP.TagType == htSpace || HP.TagType == htString);
}

} // namespace

namespace detail {

bool DeclaresUtf8(sv s) {
  static constexpr sv kUtf8 = u"utf-8";
  if (!s.starts_with(u"xml ") || s.size() < kUtf8.size())
    return false;
  for (size_t i = 0; i + kUtf8.size() <= s.size(); ++i) {
    size_t k = 0;
    while (k < kUtf8.size() && CharLower(s[i + k]) == kUtf8[k])
      ++k;
    if (k == kUtf8.size())
      return true;
  }
  return false;
}

// In the Latin code pages a UTF-8 lead byte reads as U+00C2..U+00F4 and a
// continuation byte as U+0080..U+00BF or, for 0x80..0x9F in 1252, a unit
// from U+0100 up; text without such a pair is proper text already. The
// reader's own test narrows the whole rest, which costs far more.
bool MayBeNarrowUtf8(const char16_t* p, const char16_t* pend) {
  int cp = HtGetSystemCodePage();
  if (cp != 1252 && cp != 28591)
    return true;
  const char16_t* q = p;
#ifdef __SSE2__
  // Eight units at a time: only a unit in the lead range needs a look at
  // its follower. Text in other scripts has none.
  const __m128i lo = _mm_set1_epi16(0xC2);
  const __m128i span = _mm_set1_epi16(0xF4 - 0xC2);
  while (pend - q > 8) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
    __m128i off = _mm_sub_epi16(v, lo);
    __m128i lead = _mm_cmpeq_epi16(_mm_subs_epu16(off, span), _mm_setzero_si128());
    if (_mm_movemask_epi8(lead)) {
      for (int i = 0; i < 8; ++i)
        if (q[i] >= 0xC2 && q[i] <= 0xF4 && ((q[i + 1] >= 0x80 && q[i + 1] <= 0xBF) || q[i + 1] >= 0x100))
          return true;
    }
    q += 8;
  }
#endif
  while (q + 1 < pend) {
    if (*q >= 0xC2 && *q <= 0xF4 && ((q[1] >= 0x80 && q[1] <= 0xBF) || q[1] >= 0x100))
      return true;
    ++q;
  }
  return false;
}

void XMLTagOrderError(const hstring& expected, const hstring& found, int pos) {
  throw EHtXML("Tag order error: /" + expected.toUtf8() + " expected, /" + found.toUtf8() +
               " found at position " + std::to_string(pos));
}

} // namespace detail

// Only on a node of exactly this class: a subclass may have its own Parse.
bool THtXMLNode::ReadDirect(const hstring* XML, std::string_view UTF8) {
  if (typeid(*this) != typeid(THtXMLNode))
    return false;
  hstring tag = FTag;
  int32_t hash = FTagHash;
  THTMLTokenType type = TagType;
  bool preserve = FPreserveSpace;
  ClearNode();
  FContent.clear();
  FProcessingInstructions.reset();
  if (XML ? detail::ReadXMLFast(*this, *XML) : detail::ReadXMLFast(*this, UTF8))
    return true;
  FTag = tag;
  FTagHash = hash;
  TagType = type;
  FPreserveSpace = preserve;
  return false;
}

void THtXMLNode::SetXML(const hstring& XML) {
  TNodePoolScope pool;
  if (ReadDirect(&XML, {}))
    return;
  ClearNode();
  FContent.clear();
  FProcessingInstructions.reset();
  THtmlParser hp(XML, true);
  hp.SetCaseSensitive(true);
  while (hp.NextItem()) {
    if (hp.TagType == htIdent && !hp.Tag.empty() && !hp.IsCloseTag) {
      Parse(hp);
      return;
    }
    if (hp.TagType == htDirective) {
      AddProcessingInstruction(hp.Value);
      check_declaration(hp);
    }
  }
}

void THtXMLNode::SetUTF8XML(std::string_view UTF8) {
  {
    TNodePoolScope pool;
    if (ReadDirect(nullptr, UTF8))
      return;
  }
  SetXML(Utf8ToHString(UTF8));
}

// Steps 1 and 2 for one element: tag, attributes, xml:space. False when
// the element needs no end tag.
bool open_element(THtXMLNode* n, THtmlParser& HP) {
  if (n->FTag != HP.Tag)
    n->SetTag(HP.Tag);
  n->TagType = HP.TagType;
  if (HP.Attributes && HP.Attributes->Count > 0) {
    delete n->FAttributes;
    n->FAttributes = HP.Attributes.release();
    n->FAttributes->CaseSensitive = true;
    static const hstring kSpace(u"xml:space");
    n->FPreserveSpace = n->FAttributes->GetAttribute(kSpace) == u"preserve";
  }
  return !HP.TagClosed;
}

void THtXMLNode::Parse(THtmlParser& HP) {
  if (!open_element(this, HP))
    return;
  THtNode* root = Root();
  THtXMLNode* cur = this;
  while (HP.NextItem()) {
    if (HP.IsCloseTag) {
      if (HP.Tag != cur->FTag)
        detail::XMLTagOrderError(cur->FTag, HP.Tag, HP.StartPos);
      if (cur == this)
        return;
      cur = static_cast<THtXMLNode*>(cur->FParent);
      continue;
    }
    if (is_text_item(HP)) {
      if (is_blank(HP.Value) && !cur->FPreserveSpace) {
        cur->FContent += HP.Value;
        continue;
      }
      if (!cur->FirstChild() && cur->FContent.empty()) {
        cur->FContent = HP.Value;
        continue;
      }
    }
    THtXMLNode* child = cur->NewChild(root, HP.Tag);
    child->TagType = HP.TagType;
    if (HP.TagType == htDirective)
      check_declaration(HP);
    if (HP.Tag.empty())
      child->FContent = HP.Value;
    else if (open_element(child, HP))
      cur = child;
  }
}

} // namespace ht
