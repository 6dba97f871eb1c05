// Builds HTML trees from arbitrary bytes and checks the tree's links.
// The first byte picks the entry point: bytes of unknown encoding, UTF-16
// units, or inner/outer HTML of a node inside an existing document. Bytes of
// unknown encoding are also read as UTF-8 a small window at a time, which
// must give the items of the parser over the whole decoded text.
#include "htcore/document/html_node.h"
#include "htcore/document/html_parser.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

void Check(bool ok) {
  if (!ok)
    __builtin_trap();
}

// Every child knows its parent, sibling links follow the lists, and the
// builder never nests deeper than its limit allows.
void CheckTree(ht::THtNode* root) {
  for (ht::THtNode* n = root; n; n = n->NextNode()) {
    int count = n->GetCount();
    for (int i = 0; i < count; ++i) {
      ht::THtNode* c = n->GetNode(i);
      Check(c->FParent == n);
      Check(c->FNextSibling == (i + 1 < count ? n->GetNode(i + 1) : nullptr));
    }
    int depth = 0;
    for (ht::THtNode* p = n; p->FParent; p = p->FParent)
      ++depth;
    Check(depth < 1000);
  }
}

bool SameAttributes(const ht::THtmlParser& a, const ht::THtmlParser& b) {
  int n = a.Attributes ? a.Attributes->Count : 0;
  if (n != (b.Attributes ? b.Attributes->Count : 0))
    return false;
  for (int i = 0; i < n; ++i)
    if (a.Attributes->GetName(i) != b.Attributes->GetName(i) || a.Attributes->GetValue(i) != b.Attributes->GetValue(i))
      return false;
  return true;
}

void CheckWindowedItems(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  ht::THtmlParser whole(ht::Utf8ToHString(bytes), false);
  ht::THtmlParser windowed(bytes, 1 + size % 61);
  whole.IgnoreMetaEncoding = windowed.IgnoreMetaEncoding = true;
  for (;;) {
    bool more = whole.NextItem();
    Check(windowed.NextItem() == more);
    Check(whole.TagType == windowed.TagType && whole.Tag == windowed.Tag && whole.Value == windowed.Value);
    Check(whole.IsCloseTag == windowed.IsCloseTag && whole.TagClosed == windowed.TagClosed);
    Check(whole.StartPos == windowed.StartPos && whole.Tokenizer.Offset() == windowed.Tokenizer.Offset());
    Check(SameAttributes(whole, windowed));
    if (!more)
      break;
  }
}

ht::hstring Units(const uint8_t* data, size_t size) {
  ht::hstring s;
  char16_t* p = s.SetLength(size / 2);
  if (p)
    std::memcpy(p, data, size / 2 * 2);
  return s;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0 || size > 200000)
    return 0;
  uint8_t mode = data[0] % 5;
  ++data;
  --size;
  ht::THtmlNode doc;
  switch (mode) {
  case 0:
    doc.ParseBytes(data, size);
    // "\xD0\xBF\xC2\xBB\xD1\x97" at the start recodes the text as a whole; the window reader leaves it alone.
    if (!(size >= 6 && std::memcmp(data, "\xD0\xBF\xC2\xBB\xD1\x97", 6) == 0))
      CheckWindowedItems(data, size);
    break;
  case 1:
    doc.Parse(Units(data, size));
    break;
  default: {
    doc.Parse(u"<div><table><tr><td><ul><li>x</ul></table><p>y</div>");
    auto* target = dynamic_cast<ht::THtmlNode*>(doc.FindNode(mode == 2 ? u"td" : u"ul"));
    Check(target != nullptr);
    ht::hstring text = ht::hstring::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
    if (mode == 2)
      target->SetInnerHTML(text);
    else if (mode == 3)
      target->SetOuterHTML(text);
    else
      target->AddHTML(text);
    break;
  }
  }
  CheckTree(&doc);
  doc.TextContent();
  return 0;
}
