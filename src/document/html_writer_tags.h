// The element sets of the HTML writers and text extraction, looked up by the
// node's tag hash.
#pragma once

#include "htcore/document/html_node.h"
#include "htcore/document/node.h"

#include <cstdint>
#include <string_view>
#include <typeinfo>

namespace ht::detail {

// Tags the writers treat one by one.
enum TWriterTagId : uint8_t {
  wtOther,
  wtA,
  wtBody,
  wtBr,
  wtHead,
  wtImg,
  wtMeta,
  wtNoscript,
  wtScript,
  wtStyle,
  wtTd,
  wtText, // the SVG element
  wtTh,
  wtXbody,
};

enum : uint8_t {
  wfEmpty = 1,       // written `<name/>` without children
  wfFormatBlock = 2, // starts a line in indented output
  wfTextBlock = 4,   // a paragraph of GetInnerText
  wfTextLineEnd = 8, // ends with a line break in FastInnerText
};

struct TWriterTag {
  TWriterTagId Id = wtOther;
  uint8_t Flags = 0;
};

// Name as stored (compared ignoring ASCII case) and RSHash of its lower-case form.
TWriterTag WriterTag(std::u16string_view name, uint32_t hash) noexcept;

inline TWriterTag WriterTag(const THtNode* n) noexcept {
  if (n->FTag.empty())
    return {};
  return WriterTag(n->FTag.view(), static_cast<uint32_t>(n->FTagHash));
}

// Children of an HTML tree are THtmlNode almost always; the exact-type test
// spares most of them the cost of a dynamic_cast.
inline THtmlNode* AsHtmlNode(THtNode* n) {
  if (typeid(*n) == typeid(THtmlNode))
    return static_cast<THtmlNode*>(n);
  return dynamic_cast<THtmlNode*>(n);
}

} // namespace ht::detail
