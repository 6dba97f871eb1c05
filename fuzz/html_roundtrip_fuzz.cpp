// Parses arbitrary bytes, writes the tree out in all three forms, and parses
// the compact form again. Checks that the escaping passes agree with each
// other: counted overhead, string form and appending form.
#include "htcore/document/html_encode.h"
#include "htcore/document/html_node.h"
#include "htcore/foundation/fast_string.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

void Check(bool ok) {
  if (!ok)
    __builtin_trap();
}

void CheckEncoders(const ht::hstring& s) {
  ht::hstring text = ht::HtmlEncode(s);
  Check(text.Length() == s.Length() + ht::HtmlEncodeNodeOverhead(s.view()));
  ht::TFastString fs(64);
  ht::HtmlEncodeTo(fs, s.view());
  Check(fs.GetAsString() == text);
  ht::hstring attr = ht::HtmlEncodeAttr(s);
  Check(attr.Length() == s.Length() + ht::HtmlEncodeAttrOverhead(s.view()));
  Check(ht::HtmlEncodeAttrXML(s).Length() == attr.Length());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0 || size > 100000)
    return 0;
  bool units = data[0] & 1;
  ++data;
  --size;
  ht::THtmlNode doc;
  if (units) {
    ht::hstring s;
    if (char16_t* p = s.SetLength(size / 2))
      std::memcpy(p, data, size / 2 * 2);
    CheckEncoders(s);
    doc.Parse(s);
  } else {
    doc.ParseBytes(data, size);
  }
  ht::TFastString compact;
  compact.Charset = u"utf-8";
  doc.FastInnerHTML(compact);
  ht::TFastString formatted(1024);
  bool after_block = true;
  doc.FastFormattedHTML(formatted, 0, 2, after_block);
  ht::TFastString dump;
  doc.FastInnerText(dump);
  doc.GetInnerText();
  doc.GetRawInnerText();
  doc.GetInnerHTML();

  ht::THtmlNode again;
  again.Parse(compact.GetAsString(), true);
  again.GetOuterHTML();
  return 0;
}
