// HTML output of a node tree: compact (FastInnerHTML) and indented
// (FastFormattedHTML). Both append to one TFastString passed down the
// recursion; only escaped values cost anything beyond the builder.
#include "document/html_writer_tags.h"
#include "foundation/deep_recursion.h"
#include "htcore/document/html_encode.h"
#include "htcore/document/html_node.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/text_utils.h"

namespace ht {

using detail::TWriterTag;
using detail::WriterTag;

namespace {

inline bool has_attributes(const THtNode* n) { return n->FAttributes && n->FAttributes->Count > 0; }
inline bool has_children(const THtNode* n) { return n->FNodes && n->FNodes->GetCount() > 0; }

// The tag as written: an inner body kept as `xbody` is saved as `body`.
inline std::u16string_view out_name(const THtNode* n, const TWriterTag& t) {
  return t.Id == detail::wtXbody ? std::u16string_view(u"body") : n->FTag.view();
}

void write_comment(TFastString& FS, const THtNode* n) { FS.Add(u"<!--").Add(n->FContent).Add(u"-->"); }
void write_directive(TFastString& FS, const THtNode* n) { FS.Add(u"<?").Add(n->FContent).Add(u"?>"); }
void write_cdata(TFastString& FS, const THtNode* n) { FS.Add(u"<![CDATA[").Add(n->FContent).Add(u"]]>"); }

// A node without a tag: a block kind by its TagType, else text.
void write_untagged(TFastString& FS, const THtNode* n) {
  switch (n->TagType) {
  case htComment:
    write_comment(FS, n);
    break;
  case htDirective:
    write_directive(FS, n);
    break;
  case htCData:
    write_cdata(FS, n);
    break;
  default:
    HtmlEncodeTo(FS, n->FContent);
  }
}

// `style` and `script` go out raw: their text is never escaped.
void write_raw_start(TFastString& FS, const THtNode* n) {
  FS.AddChar(u'<').Add(n->FTag);
  if (has_attributes(n))
    FS.AddChar(u' ').Add(n->FAttributes->AsString());
  FS.AddChar(u'>');
}

void write_end(TFastString& FS, std::u16string_view name) { FS.Add2Char(u'<', u'/').Add(name).AddChar(u'>'); }

bool is_content_type_meta(const THtNode* n) {
  int i = n->FAttributes->Indexof(u"http-equiv"_hs);
  return i >= 0 && SameText(n->FAttributes->GetValue(i).view(), u"content-type");
}

// `<name` and the attributes. A meta declaring the content type declares the
// charset the text is being saved in instead of whatever it said.
void write_start(TFastString& FS, const THtNode* n, const TWriterTag& t) {
  FS.AddChar(u'<').Add(out_name(n, t));
  if (!has_attributes(n))
    return;
  if (t.Id == detail::wtMeta && is_content_type_meta(n)) {
    if (FS.Charset.empty())
      FS.Add(u" http-equiv=\"Content-Type\" content=\"text/html;\"");
    else
      FS.Add(u" http-equiv=\"Content-Type\" content=\"text/html; charset=").Add(FS.Charset).AddChar(u'"');
    return;
  }
  n->FAttributes->FastAsString(FS);
}

// The short forms of an element with neither attributes nor children.
void write_bare(TFastString& FS, const THtNode* n, const TWriterTag& t) {
  if (n->TagType == htComment) {
    write_comment(FS, n);
  } else if (n->TagType == htDirective) {
    write_directive(FS, n);
  } else if (t.Flags & detail::wfEmpty) {
    FS.AddChar(u'<').Add(n->FTag).Add2Char(u'/', u'>');
  } else {
    std::u16string_view name = out_name(n, t);
    FS.AddChar(u'<').Add(name).AddChar(u'>');
    write_end(FS, name);
  }
}

void write_html(TFastString& FS, THtNode* n);

void write_html_children(TFastString& FS, THtNode* n) {
  for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling) {
    detail::RecurseDeep([&] {
      if (THtmlNode* h = detail::AsHtmlNode(c))
        h->FastInnerHTML(FS);
      else
        write_html(FS, c);
    });
  }
}

void write_html(TFastString& FS, THtNode* n) {
  if (n->FTag.empty()) {
    write_untagged(FS, n);
    // A root without a tag stands for the document: its children follow.
    if (!n->FParent)
      write_html_children(FS, n);
    return;
  }
  TWriterTag t = WriterTag(n);
  if (t.Id == detail::wtStyle || t.Id == detail::wtScript) {
    write_raw_start(FS, n);
    FS.Add(n->FContent);
    write_end(FS, n->FTag);
    return;
  }
  bool children = has_children(n);
  if (!children && !has_attributes(n)) {
    write_bare(FS, n, t);
    return;
  }
  write_start(FS, n, t);
  if (!children) {
    if (t.Flags & detail::wfEmpty) {
      FS.Add2Char(u'/', u'>');
    } else {
      FS.AddChar(u'>');
      write_end(FS, out_name(n, t));
    }
    return;
  }
  FS.AddChar(u'>');
  write_html_children(FS, n);
  write_end(FS, out_name(n, t));
}

// --- Indented output ---

void add_crlf(TFastString& FS) { FS.Add2Char(u'\r', u'\n'); }

// A line break unless the output is empty or ends with one already.
void ensure_crlf(TFastString& FS) {
  if (!FS.IsEmpty() && !FS.EndsWith(u"\r\n"))
    add_crlf(FS);
}

// Starts a new line at the indent. Blanks left at the end of the output would
// only trail the line being closed, so they go first.
void new_line(TFastString& FS, int Level, int Spaces) {
  FS.TrimTrailingBlanks();
  ensure_crlf(FS);
  if (Level > 0 && Spaces > 0)
    FS.AddSpaces(Level * Spaces);
}

void write_formatted(TFastString& FS, THtNode* n, int Level, int Spaces, bool& AfterBlock);

void write_formatted_children(TFastString& FS, THtNode* n, int Level, int Spaces, bool& AfterBlock) {
  for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling) {
    detail::RecurseDeep([&] {
      if (THtmlNode* h = detail::AsHtmlNode(c))
        h->FastFormattedHTML(FS, Level, Spaces, AfterBlock);
      else
        write_formatted(FS, c, Level, Spaces, AfterBlock);
    });
  }
}

void write_formatted_text(TFastString& FS, const THtNode* n, int Level, int Spaces, bool& AfterBlock) {
  if (AfterBlock) {
    if (BlankString(n->FContent.view()))
      return;
    new_line(FS, Level, Spaces);
    HtmlEncodeTo(FS, TrimLeft(n->FContent).view());
  } else {
    HtmlEncodeTo(FS, n->FContent);
  }
  AfterBlock = false;
}

// Comments and CData: on a line of their own behind a block, else in the flow.
void write_formatted_note(TFastString& FS, const THtNode* n, int Level, int Spaces, bool AfterBlock) {
  if (AfterBlock)
    new_line(FS, Level, Spaces);
  if (n->TagType == htCData)
    write_cdata(FS, n);
  else
    write_comment(FS, n);
}

// Directives start a line of their own, without indent.
void write_formatted_directive(TFastString& FS, const THtNode* n, bool& AfterBlock) {
  new_line(FS, 0, 0);
  write_directive(FS, n);
  AfterBlock = true;
}

void write_formatted_raw(TFastString& FS, const THtNode* n, int Level, int Spaces, bool& AfterBlock) {
  new_line(FS, Level, Spaces);
  write_raw_start(FS, n);
  add_crlf(FS);
  // Only leading blanks go: trailing ones may matter to the script or sheet
  // ("p " before a selector's end), and a content that ends its own last
  // line gets no second line break.
  FS.Add(TrimLeft(n->FContent));
  if (!FS.EndsWith(u"\n"))
    add_crlf(FS);
  if (Level > 0 && Spaces > 0)
    FS.AddSpaces(Level * Spaces);
  write_end(FS, n->FTag);
  AfterBlock = true;
}

void write_formatted(TFastString& FS, THtNode* n, int Level, int Spaces, bool& AfterBlock) {
  if (n->FTag.empty()) {
    switch (n->TagType) {
    case htComment:
    case htCData:
      write_formatted_note(FS, n, Level, Spaces, AfterBlock);
      break;
    case htDirective:
      write_formatted_directive(FS, n, AfterBlock);
      break;
    default:
      write_formatted_text(FS, n, Level, Spaces, AfterBlock);
    }
    if (!n->FParent)
      write_formatted_children(FS, n, Level, Spaces, AfterBlock);
    return;
  }
  TWriterTag t = WriterTag(n);
  if (t.Id == detail::wtStyle || t.Id == detail::wtScript) {
    write_formatted_raw(FS, n, Level, Spaces, AfterBlock);
    return;
  }
  bool children = has_children(n);
  bool attributes = has_attributes(n);
  if (!children && !attributes) {
    if (n->TagType == htComment) {
      write_formatted_note(FS, n, Level, Spaces, AfterBlock);
      return;
    }
    if (n->TagType == htDirective) {
      write_formatted_directive(FS, n, AfterBlock);
      return;
    }
  }
  bool block = (t.Flags & detail::wfFormatBlock) != 0;
  if (AfterBlock || block)
    new_line(FS, Level, Spaces);
  if (!children && !attributes) {
    write_bare(FS, n, t);
    AfterBlock = block;
    return;
  }
  write_start(FS, n, t);
  if (!children) {
    if (t.Flags & detail::wfEmpty) {
      FS.Add2Char(u'/', u'>');
    } else {
      FS.AddChar(u'>');
      write_end(FS, out_name(n, t));
    }
    AfterBlock = block;
    return;
  }
  FS.AddChar(u'>');
  int mark = FS.GetTotalLen();
  bool after = block;
  write_formatted_children(FS, n, Level + 1, Spaces, after);
  if (block && FS.GetTotalLen() != mark)
    new_line(FS, Level, Spaces);
  write_end(FS, out_name(n, t));
  AfterBlock = block;
}

} // namespace

void THtmlNode::FastInnerHTML(TFastString& FS) { write_html(FS, this); }

void THtmlNode::FastFormattedHTML(TFastString& FS, int Level, int Spaces, bool& AfterBlock) {
  write_formatted(FS, this, Level, Spaces, AfterBlock);
}

hstring THtmlNode::GetOuterHTML() {
  TFastString fs(65535);
  FastInnerHTML(fs);
  return fs.GetAsString();
}

hstring THtmlNode::GetInnerHTML() {
  TFastString fs(65535);
  write_html_children(fs, this);
  return fs.GetAsString();
}

} // namespace ht
