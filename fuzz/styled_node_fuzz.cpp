// Builds styled trees from arbitrary HTML and edits every element's own
// style: the sheets built from style and presentational attributes, shared
// between elements and copied on write, AddCSS/AddVirtualCSS/ClearCSS with
// and without writing back, class edits, counters and pseudo elements. The
// first byte picks which edits run; the rest is the page.
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_cascade.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/styled_node.h"

#include <cstddef>
#include <cstdint>
#include <vector>

using ht::operator""_hs;

namespace {

void Check(bool ok) {
  if (!ok)
    __builtin_trap();
}

// The first declaration's name of a style text, or empty.
ht::hstring first_name(const ht::hstring& Style) {
  std::u16string_view v = Style.view();
  size_t colon = v.find(u':');
  return colon == std::u16string_view::npos ? ht::hstring() : ht::Trim(ht::hstring(v.substr(0, colon)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size > 200000)
    return 0;
  const uint8_t mode = data[0];
  ht::TStyledHTMLNode doc;
  doc.ParseBytes(data + 1, size - 1);
  std::vector<ht::TStyledHTMLNode*> elements;
  for (ht::THtNode* n = doc.FirstChild(); n; n = n->NextNode()) {
    auto* e = dynamic_cast<ht::TStyledHTMLNode*>(n);
    Check(e != nullptr);
    if (!e->IsText())
      elements.push_back(e);
  }
  ht::TStyledHTMLNode* with_sheet = nullptr;
  int k = 0;
  for (ht::TStyledHTMLNode* e : elements) {
    ++k;
    ht::hstring style = e->GetAttribute(u"style"_hs);
    if (ht::TCSSStyleSheet* sheet = e->PrepareSelfStyle()) {
      Check(sheet->RefCounter >= 0);
      ht::TCSSWeightList list;
      sheet->GetAllSelectors(list);
      if (with_sheet && (mode & 1) && k % 3 == 0)
        e->ShareSelfStyleSheet(*with_sheet);
      with_sheet = e;
    }
    if (mode & 2)
      e->AddCSS(style, k % 2 == 0);
    if (mode & 4)
      e->AddVirtualCSS(style);
    if (mode & 8)
      e->ClearCSS(first_name(style), k % 2 == 1);
    if (mode & 16) {
      ht::hstring cls = e->GetAttribute(u"class"_hs);
      e->AddClass(first_name(style));
      e->RemoveClass(cls);
      e->SetAttribute(u"bgcolor"_hs, cls);
      e->SetAttribute(u"style"_hs, cls);
    }
    if (mode & 32) {
      e->ResetCSSCounter(e->FTag, k);
      e->IncrementCSSCounter(first_name(style), k);
      ht::ListCountertoString(static_cast<ht::TListStyleType>(k % (ht::lstUpperRoman + 1)),
                              e->CSSCounterValue(e->FTag) * (mode >> 6));
    }
    if (mode & 64)
      e->CreatePseudo(k % 2 ? ht::pcBefore : ht::pcMarker)->AddCSS(style, true);
    if (ht::TCSSStyleSheet* sheet = e->PrepareSelfStyle())
      Check(sheet->RefCounter >= 0);
  }
  if (mode & 128) {
    doc.SetFlag(ht::efDrawn, true, false, true);
    doc.AddCSSRecursive(u"margin: 1px"_hs, true);
  }
  // Half the elements let go of their sheets before the document goes: a
  // share must outlive its first holder.
  for (size_t i = 0; i < elements.size(); i += 2)
    elements[i]->ClearSelfStyleSheet();
  return 0;
}
