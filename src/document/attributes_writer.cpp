// Attribute sets as markup text.
#include "htcore/document/attributes.h"
#include "htcore/document/html_encode.h"
#include "htcore/foundation/fast_string.h"

namespace ht {

namespace {

bool bare(const THtAttribute& a) {
  return a.Name.Pointer() == a.Value.Pointer() || a.Name.view() == a.Value.view();
}

} // namespace

hstring THtAttributes::AsString() const {
  TFastString fs(256);
  for (int i = 0; i < Count; ++i) {
    const THtAttribute& a = List[i];
    if (i > 0)
      fs.AddChar(u' ');
    fs.Add(a.Name).Add2Char(u'=', u'"');
    HtmlEncodeAttrTo(fs, a.Value, CaseSensitive);
    fs.AddChar(u'"');
  }
  return fs.GetAsString();
}

void THtAttributes::FastAsString(TFastString& FS) const {
  for (int i = 0; i < Count; ++i) {
    const THtAttribute& a = List[i];
    FS.AddChar(u' ').Add(a.Name);
    if (!CaseSensitive && bare(a))
      continue;
    FS.Add2Char(u'=', u'"');
    HtmlEncodeAttrTo(FS, a.Value, CaseSensitive);
    FS.AddChar(u'"');
  }
}

void THtAttributes::FastAsUTF8String(TFastRawString& FS) const {
  for (int i = 0; i < Count; ++i) {
    const THtAttribute& a = List[i];
    FS.AddChar(' ').AddUTF8(a.Name);
    FS.Add2Char('=', '"');
    HtmlEncodeAttrToUTF8(FS, a.Value, CaseSensitive);
    FS.AddChar('"');
  }
}

} // namespace ht
