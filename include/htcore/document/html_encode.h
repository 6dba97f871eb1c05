// Escaping of text and attribute values for HTML output.
//
// HtmlEncode escapes text content: `&`, `<`, `>`, U+00A0, control codes
// below 9, characters outside the basic plane (as `&#x01F600;`) and the
// characters that have a name in the entity table (except for the Latin,
// Greek, Cyrillic, Hebrew/Arabic and general punctuation ranges, which stay
// as they are). HtmlEncodeAttr escapes attribute values and knows no names.
// A text that needs nothing is handed back shared, without a copy:
//
//   ht::HtmlEncode(u"a < b"_hs);          // "a &lt; b"
//   ht::HtmlEncodeAttr(u"say \"hi\""_hs); // "say &quot;hi&quot;"
//   ht::hstring s = u"plain"_hs;
//   ht::HtmlEncode(s).Pointer() == s.Pointer();   // true
//
// The first pass over a text only counts the extra units the escaped form
// needs, so the result is allocated once. A caller that knows the count
// already passes it as NewLength (0 means "nothing to escape").
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstdint>
#include <string_view>

namespace ht {

class TFastString;
class TFastRawString;

// Extra units per character below 256: text and attribute tables.
const uint8_t* HtmlTextOverheadTable();
const uint8_t* HtmlAttrOverheadTable();

// Extra units HtmlEncode needs for s.
int HtmlEncodeNodeOverhead(std::u16string_view s);
// Extra units HtmlEncodeAttr (and HtmlEncodeAttrXML) need for s.
int HtmlEncodeAttrOverhead(std::u16string_view s);

// NewLength -1 or -2: count the overhead first; any other value is the
// overhead already known (a wrong guess costs a recount, never a bad result).
hstring HtmlEncode(const hstring& s, int NewLength = -1);
// `&lt;`, `&gt;`, `&amp;`, `&quot;`, `&nbsp;`, and `&#N;` for codes below 10.
hstring HtmlEncodeAttr(const hstring& s, int NewLength = -1);
// The same for XML, which has no `nbsp`: U+00A0 becomes `&#160;`.
hstring HtmlEncodeAttrXML(const hstring& s, int NewLength = -1);

// Appending forms for the writers: no intermediate string.
void HtmlEncodeTo(TFastString& FS, std::u16string_view s);
void HtmlEncodeAttrTo(TFastString& FS, std::u16string_view s, bool XML = false);
// Attribute value escaped as HtmlEncodeAttr(XML) does, written as UTF-8.
void HtmlEncodeAttrToUTF8(TFastRawString& FS, std::u16string_view s, bool XML = false);

} // namespace ht
