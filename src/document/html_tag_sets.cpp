#include "document/html_tag_sets.h"

#include "document/tag_name_table.h"

namespace ht::detail {

namespace {

struct TEntry {
  std::u16string_view Name;
  THtmlTagInfo Data;
};

constexpr TEntry kTags[] = {
    {u"table", {tiTable, tsTableBarrier}},
    {u"tr", {tiTr, tsTableBarrier | tsRowContent | tsTableParts}},
    {u"td", {tiTd, tsTableBarrier | tsRowContent | tsTableParts}},
    {u"th", {tiTh, tsTableBarrier | tsRowContent | tsTableParts}},
    {u"tbody", {tiTbody, tsTableBarrier | tsRowContent | tsTableParts}},
    {u"thead", {tiThead, tsTableBarrier | tsRowContent | tsTableParts}},
    {u"tfoot", {tiTfoot, tsRowContent | tsTableParts}},
    {u"colgroup", {tiOther, tsTableBarrier | tsTableParts}},
    {u"col", {tiOther, tsVoid | tsTableParts}},
    {u"caption", {tiOther, tsRowContent | tsTableParts}},
    {u"font", {tiOther, tsFormatting | tsRowContent}},
    {u"p", {tiP, tsBlock}},
    {u"li", {tiLi, 0}},
    {u"ul", {tiUl, tsBlock}},
    {u"ol", {tiOl, tsBlock}},
    {u"dl", {tiDl, tsBlock}},
    {u"dt", {tiDt, 0}},
    {u"dd", {tiDd, 0}},
    {u"body", {tiBody, 0}},
    {u"head", {tiHead, 0}},
    {u"html", {tiHtml, 0}},
    {u"a", {tiA, tsFormatting}},
    {u"div", {tiDiv, tsBlock}},
    {u"span", {tiSpan, 0}},
    {u"br", {tiOther, tsVoid}},
    {u"img", {tiOther, tsVoid}},
    {u"link", {tiOther, tsVoid | tsHead}},
    {u"hr", {tiOther, tsVoid}},
    {u"frame", {tiOther, tsVoid}},
    {u"input", {tiOther, tsVoid}},
    {u"meta", {tiOther, tsVoid | tsHead}},
    {u"wbr", {tiOther, tsVoid}},
    {u"address", {tiOther, tsBlock}},
    {u"article", {tiOther, tsBlock}},
    {u"aside", {tiOther, tsBlock}},
    {u"blockquote", {tiOther, tsBlock}},
    {u"center", {tiOther, tsBlock}},
    {u"details", {tiOther, tsBlock}},
    {u"dir", {tiOther, tsBlock}},
    {u"fieldset", {tiOther, tsBlock}},
    {u"figcaption", {tiOther, tsBlock}},
    {u"figure", {tiOther, tsBlock}},
    {u"footer", {tiOther, tsBlock}},
    {u"header", {tiOther, tsBlock}},
    {u"hgroup", {tiOther, tsBlock}},
    {u"menu", {tiOther, tsBlock}},
    {u"nav", {tiOther, tsBlock}},
    {u"pre", {tiOther, tsBlock}},
    {u"section", {tiOther, tsBlock}},
    {u"summary", {tiOther, tsBlock}},
    {u"h1", {tiOther, tsBlock}},
    {u"h2", {tiOther, tsBlock}},
    {u"h3", {tiOther, tsBlock}},
    {u"h4", {tiOther, tsBlock}},
    {u"h5", {tiOther, tsBlock}},
    {u"h6", {tiOther, tsBlock}},
    {u"base", {tiOther, tsHead}},
    {u"basefont", {tiOther, tsHead}},
    {u"bgsound", {tiOther, tsHead}},
    {u"script", {tiOther, tsHead}},
    {u"style", {tiOther, tsHead}},
    {u"title", {tiOther, tsHead}},
    {u"noscript", {tiOther, tsHead}},
    {u"b", {tiOther, tsFormatting}},
    {u"big", {tiOther, tsFormatting}},
    {u"code", {tiOther, tsFormatting}},
    {u"em", {tiOther, tsFormatting}},
    {u"i", {tiOther, tsFormatting}},
    {u"nobr", {tiOther, tsFormatting}},
    {u"s", {tiOther, tsFormatting}},
    {u"small", {tiOther, tsFormatting}},
    {u"strike", {tiOther, tsFormatting}},
    {u"strong", {tiOther, tsFormatting}},
    {u"tt", {tiOther, tsFormatting}},
    {u"u", {tiOther, tsFormatting}},
};

const TTagNameTable<TEntry, 256>& Table() {
  static const TTagNameTable<TEntry, 256> table(kTags);
  return table;
}

} // namespace

THtmlTagInfo HtmlTagInfo(std::u16string_view name, uint32_t hash) noexcept {
  if (name.empty() || name.size() > 10)
    return {};
  const TEntry* e = Table().Find(name, hash);
  return e ? e->Data : THtmlTagInfo{};
}

THtmlTagInfo HtmlTagInfo(std::u16string_view name) noexcept {
  if (name.empty() || name.size() > 10)
    return {};
  char16_t lower[10];
  for (size_t i = 0; i < name.size(); ++i)
    lower[i] = name[i] >= u'A' && name[i] <= u'Z' ? name[i] + 32 : name[i];
  return HtmlTagInfo(name, RSHash(lower, static_cast<int>(name.size())));
}

} // namespace ht::detail
