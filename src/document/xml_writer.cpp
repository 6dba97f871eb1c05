// XML output of THtXMLNode: compact and indented, as UTF-16 or UTF-8, and the
// XML text and attribute encoders behind it.
#include "document/node_walk.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/codepage.h"
#include "htcore/foundation/stream_types.h"

#include <string_view>

namespace ht {

namespace {

using sv = std::u16string_view;

inline bool is_high(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
inline bool is_low(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

// Extra units XMLEncode needs for s.
int xml_overhead(sv s) {
  int n = 0;
  for (size_t i = 0; i < s.size(); ++i) {
    char16_t c = s[i];
    if (c > u'>') {
      if (c == 0xA0)
        n += 5;
      else if (is_high(c) && i + 1 < s.size() && is_low(s[i + 1])) {
        n += 8;
        ++i;
      }
    } else if (c < 9 || c == u'<' || c == u'>') {
      n += 3;
    } else if (c == u'&') {
      n += 4;
    } else if (c == u'"') {
      n += 5;
    }
  }
  return n;
}

// The writers append to either builder through one of these.
struct Utf16Out {
  TFastString& fs;
  void Add(sv s) { fs.Add(s); }
  void Char(char16_t c) { fs.AddChar(c); }
  void Ascii(std::string_view s) {
    for (char c : s)
      fs.AddChar(static_cast<char16_t>(c));
  }
};

struct Utf8Out {
  TFastRawString& fs;
  void Add(sv s) { fs.AddUTF8(s); }
  void Char(char16_t c) {
    if (c < 0x80)
      fs.AddChar(static_cast<char>(c));
    else
      fs.AddUTF8(sv(&c, 1));
  }
  void Ascii(std::string_view s) { fs.Add(s); }
};

template <class Out> void put_hex6(Out& o, uint32_t cp) {
  static const char digits[] = "0123456789ABCDEF";
  for (int shift = 20; shift >= 0; shift -= 4)
    o.Char(static_cast<char16_t>(digits[(cp >> shift) & 15]));
}

// XMLEncode straight into the output; runs that need nothing are copied whole.
template <class Out> void put_text(Out& o, sv s) {
  size_t run = 0;
  for (size_t i = 0; i < s.size(); ++i) {
    char16_t c = s[i];
    const char* rep = nullptr;
    if (c > u'>') {
      if (c == 0xA0) {
        rep = "&#160;";
      } else if (is_high(c) && i + 1 < s.size() && is_low(s[i + 1])) {
        o.Add(s.substr(run, i - run));
        o.Ascii("&#x");
        put_hex6(o, 0x10000u + ((c - 0xD800u) << 10) + (s[i + 1] - 0xDC00u));
        o.Char(u';');
        run = ++i + 1;
        continue;
      } else {
        continue;
      }
    } else if (c < 9) {
      o.Add(s.substr(run, i - run));
      o.Ascii("&#");
      o.Char(static_cast<char16_t>(u'0' + c));
      o.Char(u';');
      run = i + 1;
      continue;
    } else if (c == u'<') {
      rep = "&lt;";
    } else if (c == u'>') {
      rep = "&gt;";
    } else if (c == u'&') {
      rep = "&amp;";
    } else if (c == u'"') {
      rep = "&quot;";
    } else {
      continue;
    }
    o.Add(s.substr(run, i - run));
    o.Ascii(rep);
    run = i + 1;
  }
  o.Add(s.substr(run));
}

// The attribute set writes itself; a case-sensitive (XML) set never shortens
// names and writes U+00A0 as &#160;.
void put_attributes(Utf16Out& o, const THtAttributes* a) {
  if (a)
    a->FastAsString(o.fs);
}

void put_attributes(Utf8Out& o, const THtAttributes* a) {
  if (a)
    a->FastAsUTF8String(o.fs);
}

// Comments, directives and CData: true when n is one and was written.
template <class Out> bool put_block(Out& o, const THtNode* n) {
  switch (n->TagType) {
  case htComment:
    o.Ascii("<!--");
    o.Add(n->FContent);
    o.Ascii("-->");
    return true;
  case htDirective:
    o.Ascii("<?");
    o.Add(n->FContent);
    o.Ascii("?>");
    return true;
  case htCData:
    o.Ascii("<![CDATA[");
    o.Add(n->FContent);
    o.Ascii("]]>");
    return true;
  default:
    return false;
  }
}

inline bool is_block(const THtNode* n) {
  return n->TagType == htComment || n->TagType == htDirective || n->TagType == htCData;
}

// An element written with a start and an end tag.
inline bool has_end_tag(const THtNode* n) {
  return !is_block(n) && !n->FTag.empty() && (n->FirstChild() || !n->FContent.empty());
}

template <class Out> void put_end_tag(Out& o, const THtNode* n) {
  o.Ascii("</");
  o.Add(n->FTag);
  o.Char(u'>');
}

// Writes the start tag, or the whole element when it has neither children
// nor content; true when content and an end tag are to follow.
template <class Out> bool put_start_tag(Out& o, const THtNode* n) {
  o.Char(u'<');
  o.Add(n->FTag);
  put_attributes(o, n->FAttributes);
  if (!n->FirstChild() && n->FContent.empty()) {
    o.Ascii("/>");
    return false;
  }
  o.Char(u'>');
  return true;
}

template <class Out> void write_code(Out& o, const THtNode* top) {
  detail::WalkSubtree(
      top,
      [&](const THtNode* n) {
        if (put_block(o, n))
          return false;
        if (n->FTag.empty()) {
          put_text(o, n->FContent);
          return false;
        }
        if (!put_start_tag(o, n))
          return false;
        put_text(o, n->FContent);
        return true;
      },
      [&](const THtNode* n) {
        if (has_end_tag(n))
          put_end_tag(o, n);
      });
}

inline bool is_blank(sv s) {
  for (char16_t c : s)
    if (c > u' ')
      return false;
  return true;
}

template <class Out> void new_line(Out& o, int level) {
  o.Ascii("\r\n");
  for (int i = 0; i < level; ++i)
    o.Ascii("  ");
}

template <class Out> void write_formatted(Out& o, const THtNode* top, int level) {
  detail::WalkSubtree(
      top,
      [&](const THtNode* n) {
        // Text stays where it is; everything else starts a line of its own.
        bool text = n->FTag.empty() && !is_block(n);
        if (n->FParent && !text && n->TagType != htCData)
          new_line(o, level);
        if (put_block(o, n))
          return false;
        if (text) {
          put_text(o, n->FContent);
          return false;
        }
        if (!put_start_tag(o, n))
          return false;
        if (!is_blank(n->FContent))
          put_text(o, n->FContent);
        ++level;
        return true;
      },
      [&](const THtNode* n) {
        if (!has_end_tag(n))
          return;
        --level;
        if (n->FirstChild())
          new_line(o, level);
        put_end_tag(o, n);
      });
}

template <class Out> void put_instructions(Out& o, const TStringList* pis, bool skip_xml_declaration) {
  if (!pis)
    return;
  for (const TStringItem& pi : *pis) {
    if (skip_xml_declaration && pi.FString.view().starts_with(u"xml "))
      continue;
    o.Ascii("<?");
    o.Add(pi.FString);
    o.Ascii("?>\r\n");
  }
}

constexpr std::string_view kUtf8Header = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

void write_file(const hstring& FileName, std::string_view prefix, const RawByteString& body) {
  TFileStream f(FileName, fmCreate);
  f.WriteBuffer(prefix.data(), static_cast<int64_t>(prefix.size()));
  f.WriteBuffer(body.c_str(), static_cast<int64_t>(body.size()));
}

} // namespace

hstring XMLEncode(const hstring& s, int NewLength) {
  if (s.empty())
    return s;
  int extra = NewLength == -1 || NewLength == -2 ? xml_overhead(s) : NewLength;
  if (extra == 0)
    return s;
  TFastString fs(s.Length() + extra);
  Utf16Out o{fs};
  put_text(o, s);
  return fs.GetAsString();
}

void THtXMLNode::FastCode(TFastString& FS) const {
  Utf16Out o{FS};
  write_code(o, this);
}

void THtXMLNode::FastFormatCode(TFastString& FS, int Level) const {
  Utf16Out o{FS};
  write_formatted(o, this, Level);
}

void THtXMLNode::FastUTF8Code(TFastRawString& FS) const {
  Utf8Out o{FS};
  write_code(o, this);
}

void THtXMLNode::FastUTF8FormatCode(TFastRawString& FS, int Level) const {
  Utf8Out o{FS};
  write_formatted(o, this, Level);
}

hstring THtXMLNode::Code() const {
  TFastString fs(65535);
  Utf16Out o{fs};
  put_instructions(o, FProcessingInstructions.get(), false);
  write_code(o, this);
  return fs.GetAsString();
}

hstring THtXMLNode::FormattedCode() const {
  TFastString fs(65535);
  Utf16Out o{fs};
  put_instructions(o, FProcessingInstructions.get(), false);
  write_formatted(o, this, 0);
  return fs.GetAsString();
}

hstring THtXMLNode::InnerCode() const {
  if (FTag.empty())
    return hstring();
  if (!FirstChild())
    return FContent;
  TFastString fs(65535);
  fs.Add(FContent);
  Utf16Out o{fs};
  for (const THtNode* c = FirstChild(); c; c = c->FNextSibling)
    write_code(o, c);
  return fs.GetAsString();
}

// With the header, an XML declaration among the instructions would come twice.
RawByteString THtXMLNode::UTF8Code(bool AddHeader) const {
  TFastRawString fs(65535);
  if (AddHeader)
    fs.Add(kUtf8Header);
  Utf8Out o{fs};
  put_instructions(o, FProcessingInstructions.get(), AddHeader);
  write_code(o, this);
  return fs.ToString();
}

RawByteString THtXMLNode::UTF8FormattedCode(bool AddHeader) const {
  TFastRawString fs(65535);
  if (AddHeader)
    fs.Add(kUtf8Header);
  Utf8Out o{fs};
  put_instructions(o, FProcessingInstructions.get(), AddHeader);
  write_formatted(o, this, 0);
  return fs.ToString();
}

void THtXMLNode::SaveToFileANSI(const hstring& FileName) const {
  hstring code = Code();
  write_file(FileName, {}, HtUnicodeToCodePage(code.view(), CP_ACP));
}

void THtXMLNode::SaveToFileUTF8(const hstring& FileName) const {
  write_file(FileName, "\xEF\xBB\xBF", UTF8Code(false));
}

void THtXMLNode::SaveToFileUTF8Format(const hstring& FileName) const {
  write_file(FileName, "\xEF\xBB\xBF", UTF8FormattedCode(false));
}

} // namespace ht
