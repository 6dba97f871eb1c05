// Arbitrary text into the JSON tree builder: only parse errors may come out,
// the direct reader and the token reader agree, the bytes read as UTF-8 give
// what their decoded text gives, and the JSON writer's output reads back into a tree that
// writes the same text again after two rounds (the writer swaps the CR and LF escapes).
#include "htcore/document/json_reader.h"
#include "htcore/document/xml_node.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace {

// Control units other than the four the writer escapes make its output
// unreadable by design; such trees are not written back.
bool has_raw_controls(const ht::hstring& s) {
  for (char16_t c : s.view())
    if (c < 0x20 && c != 8 && c != 9 && c != 10 && c != 13)
      return true;
  return false;
}

bool writable(const ht::THtNode* top) {
  bool ok = true;
  for (const ht::THtNode* n = top; n && ok; n = n->NextNode()) {
    ok = !has_raw_controls(n->FTag);
    if (n->FAttributes)
      for (const ht::THtAttribute& a : *n->FAttributes)
        ok = ok && !has_raw_controls(a.Name) && !has_raw_controls(a.Value);
  }
  return ok;
}

std::unique_ptr<ht::THtXMLNode> read(const ht::hstring& text) {
  try {
    return ht::THtXMLNode::CreatefromJSON(text);
  } catch (const ht::EHtParserError&) {
    return nullptr;
  }
}

// A subclass always parses through the token reader.
class TTokenReaderNode : public ht::THtXMLNode {
  HT_NODE_CLASS(TTokenReaderNode)
};

template <class Read> std::string outcome_of(ht::THtXMLNode& node, Read&& read) {
  std::string r;
  try {
    read(node);
  } catch (const ht::Exception& e) {
    return std::string("error: ") + e.what();
  }
  for (const ht::THtNode* n = &node; n; n = n->NextNode()) {
    int depth = 0;
    for (const ht::THtNode* p = n; p != &node; p = p->FParent)
      ++depth;
    r += std::to_string(depth) + n->FTag.toUtf8() + "#" + std::to_string(n->FTagHash) + "/" +
         std::to_string(n->TagType) + (static_cast<const ht::THtXMLNode*>(n)->IsArray ? "[]" : "");
    if (n->FAttributes)
      for (const ht::THtAttribute& a : *n->FAttributes)
        r += "(" + a.Name.toUtf8() + "=" + a.Value.toUtf8() + ")";
    r += "\"" + n->FContent.toUtf8() + "\"\n";
  }
  return r;
}

std::string outcome(ht::THtXMLNode& node, const ht::hstring& text) {
  return outcome_of(node, [&](ht::THtXMLNode& n) { n.SetJSON(text); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  {
    ht::THtXMLNode fast;
    TTokenReaderNode tokens;
    ht::hstring text = ht::hstring::FromUtf8(bytes);
    std::string expected = outcome(fast, text);
    if (expected != outcome(tokens, text))
      __builtin_trap();
    ht::THtXMLNode from_bytes;
    if (outcome_of(from_bytes, [&](ht::THtXMLNode& n) { ht::SetJSONUtf8(n, bytes); }) != expected)
      __builtin_trap();
  }
  auto doc = read(ht::hstring::FromUtf8(bytes));
  if (!doc)
    return 0;
  ht::hstring json = doc->JSON();
  doc->Code();
  if (doc->FTag.empty() || !writable(doc.get()))
    return 0;
  auto once = read(json);
  if (!once)
    __builtin_trap();
  auto twice = read(once->JSON());
  if (!twice || twice->JSON() != json)
    __builtin_trap();
  return 0;
}
