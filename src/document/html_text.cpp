// Plain text out of a node tree: GetInnerText for reading (paragraphs on
// lines of their own, cells separated by TAB), FastInnerText as a quick dump
// for exporters, GetRawInnerText for classes that keep text of their own.
#include "document/html_writer_tags.h"
#include "foundation/deep_recursion.h"
#include "htcore/document/html_node.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/text_utils.h"

namespace ht {

using detail::TWriterTag;
using detail::WriterTag;

namespace {

// Script, style, comments, directives and CData carry no readable text.
inline bool is_block_kind(const THtNode* n) { return n->TagType >= htScript && n->TagType <= htCData; }

void dump_text(TFastString& FS, THtNode* n);

void dump_children(TFastString& FS, THtNode* n) {
  for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling) {
    detail::RecurseDeep([&] {
      if (THtmlNode* h = detail::AsHtmlNode(c))
        h->FastInnerText(FS);
      else
        dump_text(FS, c);
    });
  }
}

void add_spaced(TFastString& FS, const THtNode* n, const hstring& name) {
  if (n->FAttributes) {
    int i = n->FAttributes->Indexof(name);
    if (i >= 0)
      FS.AddChar(u' ').Add(n->FAttributes->GetValue(i)).AddChar(u' ');
  }
}

void dump_text(TFastString& FS, THtNode* n) {
  TWriterTag t = WriterTag(n);
  switch (t.Id) {
  case detail::wtBr:
    FS.Add2Char(u'\r', u'\n');
    break;
  case detail::wtA: {
    static const hstring href(u"href"), title(u"title");
    add_spaced(FS, n, href);
    add_spaced(FS, n, title);
    break;
  }
  case detail::wtText:
    FS.AddChar(u' ');
    break;
  default:
    break;
  }
  if (!is_block_kind(n) && t.Id != detail::wtImg)
    FS.Add(n->FContent);
  if (t.Id != detail::wtHead)
    dump_children(FS, n);
  if (t.Flags & detail::wfTextLineEnd)
    FS.Add2Char(u'\r', u'\n');
}

hstring child_text(THtNode* c);

hstring inner_text(THtNode* n) {
  TWriterTag t = WriterTag(n);
  if (t.Id == detail::wtBr)
    return u"\r\n"_hs;
  if (is_block_kind(n) || t.Id == detail::wtNoscript)
    return hstring();
  hstring text;
  if (t.Id != detail::wtA && t.Id != detail::wtImg)
    text = n->FContent;
  if (n->FNodes) {
    TFastString fs(1024);
    fs.Add(text);
    for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling)
      fs.Add(child_text(c));
    if (fs.GetTotalLen() != text.Length())
      text = fs.GetAsString();
  }
  if (!text.empty() && (t.Flags & detail::wfTextBlock)) {
    THtNode* parent = n->FParent;
    bool line = true;
    if (parent) {
      TWriterTag pt = WriterTag(parent);
      if ((pt.Flags & detail::wfTextBlock) || pt.Id == detail::wtBody) {
        // The first block of a container gets no line break in front.
        line = false;
        for (THtNode* s = parent->FirstChild(); s && s != n; s = s->FNextSibling)
          if (s->FTag.empty() ? !BlankString(s->FContent.view()) : s->FTag.view() != u"!") {
            line = true;
            break;
          }
      }
    }
    text = line ? u"\r\n"_hs + Trim(text) : TrimLeft(text);
  }
  if ((t.Id == detail::wtTd || t.Id == detail::wtTh) && n->FParent && n->FParent->LastChildTag() != n)
    text = text + std::u16string_view(u"\t");
  return text;
}

hstring child_text(THtNode* c) {
  hstring text;
  detail::RecurseDeep([&] {
    if (THtmlNode* h = detail::AsHtmlNode(c))
      text = h->GetInnerText();
    else
      text = inner_text(c);
  });
  return text;
}

hstring raw_text(THtNode* n);

hstring raw_child_text(THtNode* c) {
  hstring text;
  detail::RecurseDeep([&] {
    if (THtmlNode* h = detail::AsHtmlNode(c))
      text = h->GetRawInnerText();
    else
      text = raw_text(c);
  });
  return text;
}

hstring raw_text(THtNode* n) {
  if (is_block_kind(n) || WriterTag(n).Id == detail::wtNoscript || !n->FNodes)
    return hstring();
  TFastString fs(1024);
  for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling)
    fs.Add(raw_child_text(c));
  return fs.GetAsString();
}

} // namespace

void THtmlNode::FastInnerText(TFastString& FS) { dump_text(FS, this); }

hstring THtmlNode::GetInnerText() { return inner_text(this); }

hstring THtmlNode::GetRawInnerText() { return raw_text(this); }

hstring THtmlNode::HTMLtoText(const hstring& HTML) {
  THtmlNode doc;
  doc.Parse(HTML, false);
  return doc.GetInnerText();
}

} // namespace ht
