// Arbitrary text into the XML tree: only the documented errors may come out,
// the direct reader (on the decoded text and on the bytes) and the item
// reader agree, and whatever parses is
// written back so that it parses to the same tree.
#include "htcore/document/xml_node.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace {

// A subclass always parses through the item reader.
class TItemReaderNode : public ht::THtXMLNode {
  HT_NODE_CLASS(TItemReaderNode)
};

// The tree as the readers set it, for comparing the two.
void dump(const ht::THtNode* top, std::string& out) {
  for (const ht::THtNode* n = top; n; n = n->NextNode()) {
    int depth = 0;
    for (const ht::THtNode* p = n; p != top; p = p->FParent)
      ++depth;
    out += std::to_string(depth) + n->FTag.toUtf8() + "#" + std::to_string(n->FTagHash) + "/" +
           std::to_string(n->TagType) + (static_cast<const ht::THtXMLNode*>(n)->FPreserveSpace ? "p" : "");
    if (n->FAttributes)
      for (const ht::THtAttribute& a : *n->FAttributes)
        out += "(" + a.Name.toUtf8() + "=" + a.Value.toUtf8() + ")";
    out += "\"" + n->FContent.toUtf8() + "\"\n";
    if (n == top && !n->FirstChild())
      break;
  }
}

// The tree of text, or of bytes when text is null.
std::string outcome(ht::THtXMLNode& node, const ht::hstring* text, std::string_view bytes = {}) {
  std::string r;
  try {
    if (text)
      node.SetXML(*text);
    else
      node.SetUTF8XML(bytes);
  } catch (const ht::Exception& e) {
    return std::string("error: ") + e.what();
  }
  dump(&node, r);
  if (const ht::TStringList* pi = node.ProcessingInstructions())
    for (int i = 0; i < pi->Count(); ++i)
      r += "<?" + pi->Strings(i).toUtf8();
  return r;
}

bool mentions_utf8(std::string_view s) {
  for (size_t i = 0; i + 5 <= s.size(); ++i)
    if ((s[i] | 0x20) == 'u' && (s[i + 1] | 0x20) == 't' && (s[i + 2] | 0x20) == 'f' && s[i + 3] == '-' &&
        s[i + 4] == '8')
      return true;
  return false;
}

// Names the writer can give back: the reader takes odd units into names
// (a '/' not followed by '>', quotes behind a name) that no writer could
// separate again.
bool plain_name(const ht::hstring& s) {
  for (char16_t c : s.view())
    if (!(c >= 0x80 || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
          c == u'-' || c == u'_' || c == u'.' || c == u':'))
      return false;
  return true;
}

// Also a CDATA section that ends in ']' cannot be written so that the
// reader finds its end ("]]]>" does not close one), and a <!...> block inside
// an element is written as text.
bool plain_names(const ht::THtNode* top) {
  for (const ht::THtNode* n = top; n; n = n->NextNode()) {
    if ((n->TagType == ht::htCData && n->FContent.view().ends_with(u"]")) || n->TagType == ht::htCustom)
      return false;
    if (!plain_name(n->FTag))
      return false;
    if (n->FAttributes)
      for (const ht::THtAttribute& a : *n->FAttributes)
        if (!plain_name(a.Name))
          return false;
  }
  return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  ht::hstring text = ht::hstring::FromUtf8(bytes);
  {
    ht::THtXMLNode fast, from_bytes;
    TItemReaderNode items;
    std::string expected = outcome(items, &text);
    if (outcome(fast, &text) != expected)
      __builtin_trap();
    // libFuzzer's bytes have no terminator behind them.
    if (outcome(from_bytes, nullptr, bytes) != expected)
      __builtin_trap();
  }
  std::unique_ptr<ht::THtXMLNode> doc;
  try {
    doc = std::make_unique<ht::THtXMLNode>(text);
  } catch (const ht::EHtParserError&) {
    return 0;
  } catch (const ht::EHtXML&) {
    return 0;
  }
  ht::hstring code = doc->Code();
  ht::hstring formatted = doc->FormattedCode();
  ht::RawByteString utf8 = doc->UTF8Code(true);
  ht::hstring json = doc->JSON();
  std::unique_ptr<ht::THtXMLNode> clone(doc->Clone());
  if (clone->Code() != code)
    __builtin_trap();
  // An encoding declaration may re-decode the source once; the output of
  // that is no longer the same text, so the round trip is checked without.
  if (doc->FTag.empty() || mentions_utf8(bytes) || !plain_names(doc.get()))
    return 0;
  ht::THtXMLNode again(code);
  if (again.Code() != code)
    __builtin_trap();
  ht::THtXMLNode assigned;
  assigned.Assign(doc.get());
  return 0;
}
