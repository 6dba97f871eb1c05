#include "document/html_writer_tags.h"

#include "document/tag_name_table.h"

namespace ht::detail {

namespace {

struct TEntry {
  std::u16string_view Name;
  TWriterTag Data;
};

constexpr uint8_t kTextBlock = wfTextBlock | wfTextLineEnd;

constexpr TEntry kTags[] = {
    {u"a", {wtA, 0}},
    {u"address", {wtOther, wfFormatBlock}},
    {u"blockquote", {wtOther, wfFormatBlock | kTextBlock}},
    {u"body", {wtBody, wfFormatBlock}},
    {u"br", {wtBr, wfEmpty}},
    {u"caption", {wtOther, wfFormatBlock}},
    {u"center", {wtOther, wfFormatBlock}},
    {u"col", {wtOther, wfEmpty | wfFormatBlock}},
    {u"colgroup", {wtOther, wfFormatBlock}},
    {u"datapacket", {wtOther, wfFormatBlock}},
    {u"dd", {wtOther, wfFormatBlock}},
    {u"dir", {wtOther, wfFormatBlock}},
    {u"div", {wtOther, wfFormatBlock | kTextBlock}},
    {u"dl", {wtOther, wfFormatBlock}},
    {u"dt", {wtOther, wfFormatBlock}},
    {u"fieldset", {wtOther, wfFormatBlock}},
    {u"foreignobject", {wtOther, wfFormatBlock}},
    {u"form", {wtOther, wfFormatBlock}},
    {u"frame", {wtOther, wfEmpty | wfFormatBlock}},
    {u"frameset", {wtOther, wfFormatBlock}},
    {u"h1", {wtOther, wfFormatBlock | kTextBlock}},
    {u"h2", {wtOther, wfFormatBlock | kTextBlock}},
    {u"h3", {wtOther, wfFormatBlock | kTextBlock}},
    {u"h4", {wtOther, wfFormatBlock | kTextBlock}},
    {u"h5", {wtOther, wfFormatBlock | kTextBlock}},
    {u"h6", {wtOther, wfFormatBlock}},
    {u"head", {wtHead, wfFormatBlock}},
    {u"hr", {wtOther, wfEmpty | wfFormatBlock}},
    {u"html", {wtOther, wfFormatBlock}},
    {u"img", {wtImg, wfEmpty}},
    {u"input", {wtOther, wfEmpty}},
    {u"li", {wtOther, wfFormatBlock | kTextBlock}},
    {u"link", {wtOther, wfEmpty | wfFormatBlock}},
    {u"menu", {wtOther, wfFormatBlock}},
    {u"meta", {wtMeta, wfEmpty | wfFormatBlock}},
    {u"noframes", {wtOther, wfFormatBlock}},
    {u"noscript", {wtNoscript, 0}},
    {u"ol", {wtOther, wfFormatBlock}},
    {u"p", {wtOther, wfFormatBlock | kTextBlock}},
    {u"pre", {wtOther, wfFormatBlock | kTextBlock}},
    {u"script", {wtScript, 0}},
    {u"style", {wtStyle, 0}},
    {u"table", {wtOther, wfFormatBlock}},
    {u"tbody", {wtOther, wfFormatBlock}},
    {u"td", {wtTd, wfFormatBlock | wfTextLineEnd}},
    {u"text", {wtText, wfTextLineEnd}},
    {u"tfoot", {wtOther, wfFormatBlock}},
    {u"th", {wtTh, wfFormatBlock | wfTextLineEnd}},
    {u"thead", {wtOther, wfFormatBlock}},
    {u"title", {wtOther, wfFormatBlock}},
    {u"tr", {wtOther, wfFormatBlock | kTextBlock}},
    {u"ul", {wtOther, wfFormatBlock}},
    {u"wbr", {wtOther, wfEmpty}},
    {u"xbody", {wtXbody, wfFormatBlock}},
    {u"xhtml", {wtOther, wfFormatBlock}},
};

constexpr size_t kLongest = 13;

const TTagNameTable<TEntry, 256>& Table() {
  static const TTagNameTable<TEntry, 256> table(kTags);
  return table;
}

} // namespace

TWriterTag WriterTag(std::u16string_view name, uint32_t hash) noexcept {
  if (name.empty() || name.size() > kLongest)
    return {};
  const TEntry* e = Table().Find(name, hash);
  return e ? e->Data : TWriterTag{};
}

} // namespace ht::detail
