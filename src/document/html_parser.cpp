// The HTML item reader. Over UTF-8 bytes it reads a window of decoded text
// instead of a UTF-16 copy of the whole input: the copy was two bytes per
// input byte, written once and read once, and the largest share of a parse's
// peak memory and page faults. A tokenizer over the bytes themselves would
// have to repeat every scan, every unit count ("&" and its 25 units) and every
// quirk for a second unit type; the window keeps the one tokenizer as it is.
//
// Each item is read in the window as it stands. A scan never reads more than
// kLookahead units beyond where it leaves the cursor, and the cursor never
// goes back, so an item that ends further than that from the window's end
// read exactly what it would have read in the whole text. One that ends
// nearer (a long script, an unclosed comment, the last bytes of a window) is
// read again from the state it started in, over a window twice as long.
// Windows are cut before an ASCII byte, where the decoder keeps no state, so
// they decode as the whole input would.
#include "htcore/document/html_parser.h"

#include "document/html_char_classes.h"
#include "document/tag_name_table.h"
#include "document/utf8_check.h"
#include "htcore/document/html_node.h"
#include "htcore/foundation/codepage.h"
#include "foundation/utf8_decode.h"
#include "htcore/foundation/text_utils.h"

#include <cstring>
#include <fstream>
#include <string>

namespace ht {

namespace {

constexpr ptrdiff_t kLookahead = 64; // beyond the cursor, the furthest any scan reads

inline char16_t lower_ascii(char16_t c) { return CharLower(c); }

hstring lowered(const hstring& s) {
  hstring r = s;
  hLower(r);
  return r;
}

bool equals_ignore_case(std::u16string_view s, std::u16string_view lower) {
  if (s.size() != lower.size())
    return false;
  for (size_t i = 0; i < s.size(); ++i)
    if (lower_ascii(s[i]) != lower_ascii(lower[i]))
      return false;
  return true;
}

bool contains(std::u16string_view s, std::u16string_view sub) {
  return s.find(sub) != std::u16string_view::npos;
}

// First occurrence of `lower` at or behind p, ignoring ASCII case; null if none.
const char16_t* find_ignore_case(const char16_t* p, const char16_t* end, std::u16string_view lower) {
  for (; end - p >= static_cast<ptrdiff_t>(lower.size()); ++p) {
    if (lower_ascii(*p) != lower[0])
      continue;
    size_t i = 1;
    while (i < lower.size() && lower_ascii(p[i]) == lower[i])
      ++i;
    if (i == lower.size())
      return p;
  }
  return nullptr;
}

hstring token_display(const THTMLTokenizer& t) {
  switch (t.TokenType) {
  case htEq:
    return u"="_hs;
  case htTagClose:
    return u"/"_hs;
  case htTagEnd:
    return u">"_hs;
  case htTagStart:
    return u"<"_hs;
  case htSpace:
    return u" "_hs;
  default:
    return t.Eof ? hstring() : t.Token;
  }
}

void recode_root(THtmlNode* root, THtmlEncoding enc, uint32_t cp) {
  if (root)
    root->ChangeEncoding(enc, cp);
}

// The end of the name of a close tag at p when "</" is followed by a name
// and '>' the way the token reader takes them (a letter, then anything up to
// a blank, quote, '<', '=' or '>' except "/>"); else null.
// Capital tells whether the name holds an ASCII capital.
const char16_t* close_tag_name_end(const char16_t* p, const char16_t* end, bool& capital) {
  char16_t c = *p;
  capital = c >= u'A' && c <= u'Z';
  if (!((c >= u'a' && c <= u'z') || capital))
    return nullptr;
  for (++p; p < end; ++p) {
    c = *p;
    if (c >= 256 || (c >= u'a' && c <= u'z'))
      continue;
    if (c == u'>')
      return p;
    if (c == 0 || c == u'/' || detail::g_html_char_class[1][c] >= 2)
      return nullptr;
    capital |= c >= u'A' && c <= u'Z';
  }
  return nullptr;
}

} // namespace

THtmlParser::THtmlParser(const hstring& s, bool AXMLMode)
    : Tokenizer(s, AXMLMode), FXMLMode(AXMLMode), FCaseSensitive(AXMLMode) {
  Tokenizer.XMLMode = AXMLMode;
  Tokenizer.TagList = &TagList;
  TStringParser& sp = Tokenizer.Parser;
  size_t n = s.size();
  const char16_t* t = s.c_str();
  // EF BB BF read through code page 1251.
  if (n > 3 && t[0] == 0x043F && t[1] == 0x00BB && t[2] == 0x0457) {
    sp.Skip(3);
    ChangeEncoding(heUTF8, 0);
  } else if (n > 1 && t[0] == 0xFEFF) {
    sp.Skip(1);
  }
  if (!AXMLMode)
    InternName(TagList, u"*", 1);
}

THtmlParser::THtmlParser(std::string_view Utf8, size_t WindowBytes) : THtmlParser(hstring(), false) {
  FRest = Utf8;
  FWindowBytes = WindowBytes ? WindowBytes : 1;
  IgnoreMetaEncoding = true;
  Refill(FWindowBytes);
  // The start as the text constructor takes it; a text that starts with what
  // a UTF-8 byte order mark reads as in code page 1251 is not for this one.
  TStringParser& sp = Tokenizer.Parser;
  if (*sp.p == 0xFEFF && (sp.pend - sp.p > 1 || !FRest.empty()))
    sp.Skip(1);
}

THtmlParser::~THtmlParser() = default;

void THtmlParser::Refill(size_t Bytes) {
  THTMLTokenizer& T = Tokenizer;
  TStringParser& sp = T.Parser;
  size_t n = Bytes < FRest.size() ? Bytes : FRest.size();
  while (n < FRest.size() && static_cast<uint8_t>(FRest[n]) >= 0x80)
    ++n;
  const size_t tail = static_cast<size_t>(sp.pend - sp.p);
  hstring window;
  if (char16_t* d = window.SetLength(tail + n)) { // never more units than bytes
    std::memcpy(d, sp.p, tail * sizeof(char16_t));
    const auto* b = reinterpret_cast<const uint8_t*>(FRest.data());
    window.Truncate(static_cast<size_t>(detail::DecodeUtf8(b, b + n, d + tail) - d));
  }
  T.Base += static_cast<int>(sp.p - sp.Start());
  FRest.remove_prefix(n);
  sp.Init(window);
}

bool THtmlParser::NextItem() {
  if (FRest.empty() || RepeatCurrent)
    return ReadItem();
  TStringParser& sp = Tokenizer.Parser;
  // Refilled when an eighth of a window is left unread.
  if (static_cast<size_t>(sp.pend - sp.p) * 8 < FWindowBytes)
    Refill(FWindowBytes);
  return FRest.empty() ? ReadItem() : ReadItemInWindow();
}

// An item read while more input waits behind the window; see the top of the file.
bool THtmlParser::ReadItemInWindow() {
  THTMLTokenizer& T = Tokenizer;
  TStringParser& sp = T.Parser;
  // What an item reads of the state the one before left.
  const int at = T.Offset();
  const THTMLTokenType token_type = T.TokenType, tag_type = TagType;
  const bool in_tag = T.InTag, eof = T.Eof;
  const int token_start = T.TokenStart, token_end = T.TokenEnd, start_pos = StartPos;
  const hstring token = T.Token, value = Value;
  // Only ever an interned name or empty, so the name table keeps it alive.
  const char16_t* const current_tag = T.CurrentTag.Pointer();
  const int current_tag_len = T.CurrentTag.Length();
  for (;;) {
    bool more = ReadItem();
    if (FRest.empty() || sp.pend - sp.p > kLookahead)
      return more;
    sp.p = sp.Start() + (at - T.Base);
    T.TokenType = token_type;
    TagType = tag_type;
    T.InTag = in_tag;
    T.Eof = eof;
    T.TokenStart = token_start;
    T.TokenEnd = token_end;
    StartPos = start_pos;
    T.Token = token;
    Value = value;
    if (current_tag)
      T.CurrentTag = InternName(TagList, current_tag, current_tag_len);
    else
      T.CurrentTag.clear();
    Refill(2 * static_cast<size_t>(sp.pend - sp.p) + FWindowBytes);
  }
}

void THtmlParser::vLower(hstring& s) const {
  if (!FCaseSensitive)
    hLower(s);
}

void THtmlParser::SetCaseSensitive(bool v) {
  FCaseSensitive = v;
  Tokenizer.CaseSensitive = v;
}

bool THtmlParser::ReadItem() {
  THTMLTokenizer& T = Tokenizer;
  if (RepeatCurrent) {
    RepeatCurrent = false;
    return !T.Eof;
  }
  // The common tag shapes skip the token dispatch; what they leave behind
  // (cursor, token, tag state) is what the token-by-token path leaves.
  TStringParser& sp = T.Parser;
  const char16_t* const lt = sp.p;
  const char16_t* name_end = nullptr;
  bool fast_open = false, capital = false;
  if (!T.InTag && sp.pend - lt >= 3 && lt[0] == u'<') {
    char16_t c1 = lt[1];
    if (c1 == u'/')
      name_end = close_tag_name_end(lt + 2, sp.pend, capital);
    else
      fast_open = (c1 >= u'a' && c1 <= u'z') || (c1 >= u'A' && c1 <= u'Z');
  }
  if (!name_end && !fast_open)
    T.NextToken(true);
  FTagAttributes.Clear();
  if (Attributes) {
    Attributes->Clear();
    Attributes->CaseSensitive = FCaseSensitive;
  }
  Tag.clear();
  TagClosed = false;
  IsCloseTag = false;

  if (name_end) {
    // "</name>": a name interned rather than copied, then the '>'.
    T.Token = InternName(TagList, lt + 2, static_cast<int>(name_end - (lt + 2)));
    T.CurrentTag.clear();
    T.TokenType = htTagEnd;
    T.InTag = false;
    sp.p = name_end + 1;
    T.TokenStart = T.Base + static_cast<int>(name_end - sp.Start());
    T.TokenEnd = T.TokenStart + 1;
    Tag = T.Token;
    if (capital)
      vLower(Tag);
    TagType = htIdent;
    IsCloseTag = true;
    if (!IgnoreMetaEncoding && equals_ignore_case(Tag.view(), u"meta"))
      ApplyMetaCharset();
    StartPos = T.Base + static_cast<int>(lt - sp.Start());
    return !T.Eof;
  }

  int item_start = T.TokenStart;
  bool found = false;
  if (fast_open) {
    // "<name": the '<' token, then the name as the tag reader takes it.
    item_start = T.Base + static_cast<int>(lt - sp.Start());
    T.InTag = true;
    T.TokenType = htTagStart;
    sp.p = lt + 1;
    T.TokenStart = item_start + 1;
    T.ReadTag();
    T.TokenEnd = T.Offset();
    Tag = T.Token;
    if (T.CaseSensitive != FCaseSensitive) // else the tag reader has lowered it already
      vLower(Tag);
    TagType = htIdent;
    found = true;
  }
  while (!T.Eof && !found) {
    item_start = T.TokenStart;
    switch (T.TokenType) {
    case htString:
    case htScript:
    case htStyle:
    case htComment:
    case htDirective:
    case htCData:
    case htCustom:
      TagType = T.TokenType;
      Value = T.Token;
      TagClosed = true;
      found = true;
      break;
    case htTagStart:
      T.NextToken(false);
      if (T.TokenType == htTagClose) {
        IsCloseTag = true;
        T.NextToken(false);
      }
      if (T.Eof || T.TokenType != htIdent) {
        // Not a tag after all ("</ >"): go on with this token as it is.
        IsCloseTag = false;
        break;
      }
      Tag = T.Token;
      vLower(Tag);
      TagType = htIdent;
      found = true;
      break;
    default:
      T.NextToken(true);
      break;
    }
  }
  if (Tag.empty()) {
    StartPos = item_start;
    return !T.Eof;
  }

  if (fast_open && sp.p < sp.pend && *sp.p == u'>') {
    // "<name>": the '>' token, which starts the body of a script or style.
    T.TokenStart = T.Offset();
    T.TokenType = htTagEnd;
    ++sp.p;
    T.InTag = false;
    if (!T.XMLMode) {
      if (detail::SameAsciiLower(T.CurrentTag.view(), u"script"))
        T.ReadScript();
      else if (detail::SameAsciiLower(T.CurrentTag.view(), u"style"))
        T.ReadStyle();
    }
    T.TokenEnd = T.Offset();
  } else {
    T.NextToken(false);
  }
  // After a blank, the common name="value" with a lower-case name read
  // straight from the text: the name, value, tokens and cursor that
  // ReadAttribute leaves, without the name's copy. False for any other
  // shape; then nothing has moved.
  auto read_quoted_attribute = [&]() -> bool {
    const char16_t* b = sp.p;
    if (sp.pend - b < 3 || *b < u'a' || *b > u'z')
      return false;
    const char16_t* e = b + 1;
    while (e < sp.pend &&
           ((*e >= u'a' && *e <= u'z') || *e == u'-' || (*e >= u'0' && *e <= u'9') || *e == u'_' || *e == u':'))
      ++e;
    if (sp.pend - e < 2 || *e != u'=' || (e[1] != u'"' && e[1] != u'\''))
      return false;
    int len = static_cast<int>(e - b);
    FAttrname = len < 16 ? InternName(AttrList, b, len) : hstring::ForTree(b, static_cast<size_t>(len));
    if (!Attributes)
      Attributes = std::make_unique<THtAttributes>(FCaseSensitive);
    sp.p = e + 1;
    T.TokenStart = T.Offset();
    T.ReadString();
    T.TokenEnd = T.Offset();
    FAttrvalue = T.Token;
    T.NextToken(false);
    FTagAttributes.Add(FAttrname, FAttrvalue, THtAttributeBatch::abKeepFirst, FCaseSensitive);
    return true;
  };
  for (bool done = false; !T.Eof && !done;) {
    switch (T.TokenType) {
    case htIdent:
      if (IsCloseTag)
        T.NextToken(false);
      else
        ReadAttribute();
      break;
    case htTagStart:
      // "<div <p>": the new tag starts the next item.
      --T.Parser.p;
      done = true;
      break;
    case htTagEnd:
      done = true;
      break;
    case htTagClose:
      TagClosed = true;
      T.NextToken(false);
      break;
    case htScript:
    case htStyle:
      Value = T.Token;
      TagType = T.TokenType;
      done = true;
      break;
    case htSpace:
      if (IsCloseTag || !read_quoted_attribute())
        T.NextToken(false);
      break;
    default:
      T.NextToken(false);
      break;
    }
  }
  if (!FTagAttributes.Empty())
    FTagAttributes.MoveTo(*Attributes);

  if (!FXMLMode && !TagClosed && !IsCloseTag) {
    bool script = equals_ignore_case(Tag.view(), u"script");
    if (script || equals_ignore_case(Tag.view(), u"style")) {
      // Swallow the body (when the tokenizer did not take it as one block)
      // and the close tag, so that no close item follows.
      TagClosed = true;
      if (TagType == htIdent)
        TagType = script ? htScript : htStyle;
      for (;;) {
        T.NextToken(true);
        if (T.Eof || (T.TokenType == htIdent && equals_ignore_case(T.Token.view(), Tag.view())))
          break;
        if (T.TokenType == htString || T.TokenType == htStyle || T.TokenType == htCData)
          Value += T.Token;
      }
      while (!T.Eof && T.TokenType != htTagEnd)
        T.NextToken(true);
    }
  }

  if (!IgnoreMetaEncoding && equals_ignore_case(Tag.view(), u"meta"))
    ApplyMetaCharset();
  StartPos = item_start;
  return !T.Eof;
}

void THtmlParser::ReadAttribute() {
  THTMLTokenizer& T = Tokenizer;
  FAttrname = T.Token;
  // Template expressions ("{{...}}") keep their case.
  bool keep_case = FCaseSensitive || contains(FAttrname.view(), u"{");
  if (!keep_case)
    hLower(FAttrname);
  if (FAttrname.size() < 16)
    FAttrname = InternName(AttrList, FAttrname);
  do
    T.NextToken(false);
  while (!T.Eof && (T.TokenType == htSpace || T.TokenType == htComment || T.TokenType == htDirective));

  if (!Attributes)
    Attributes = std::make_unique<THtAttributes>(FCaseSensitive);

  if (T.Eof || T.TokenType != htEq) {
    // A bare attribute replaces an earlier one of the same name.
    FTagAttributes.Add(FAttrname, FAttrname, THtAttributeBatch::abReplace, keep_case);
    return;
  }
  do
    T.NextToken(true);
  while (!T.Eof && (T.TokenType == htSpace || T.TokenType == htComment));
  if (FXMLMode && (T.Eof || T.TokenType != htString))
    ValueExpected();
  FAttrvalue.clear();
  if (T.TokenType == htTagClose) {
    FAttrvalue = u"/"_hs;
    T.NextToken(false);
  }
  if (T.Eof || (T.TokenType != htIdent && T.TokenType != htString))
    return; // no value: the attribute is dropped
  if (FAttrvalue.empty())
    FAttrvalue = T.Token; // shared, not copied
  else
    FAttrvalue += T.Token;
  if (T.TokenType == htIdent) {
    // Unquoted: "a=b=c/d" has the value "b=c/d".
    for (;;) {
      T.NextToken(true);
      THTMLTokenType k = T.TokenType;
      if (T.Eof || k == htSpace || k == htTagEnd || k == htScript || k == htStyle || k == htTagStart)
        break;
      if (k == htEq)
        FAttrvalue += u'=';
      else if (k == htTagClose)
        FAttrvalue += u'/';
      else
        FAttrvalue += T.Token;
    }
  } else {
    T.NextToken(false);
  }
  // A valued attribute never replaces: the first one wins. Documents rely on
  // this asymmetry with bare attributes.
  FTagAttributes.Add(FAttrname, FAttrvalue, THtAttributeBatch::abKeepFirst, keep_case);
}

void THtmlParser::ValueExpected() {
  TStringParser& sp = Tokenizer.Parser;
  hstring msg = u"Attribute "_hs + FAttrname + u" value expected but "_hs + token_display(Tokenizer) +
                u" found. Line "_hs + hstring(std::to_string(sp.Line())) + u" position "_hs +
                hstring(std::to_string(sp.Pos()));
  throw EHtParserError(msg);
}

void THtmlParser::ApplyMetaCharset() {
  // Bytes read a window at a time are UTF-8 whatever they declare.
  if (!Attributes || FEncodingProcessed || FWindowBytes)
    return;
  hstring charset;
  if (equals_ignore_case(Attributes->GetAttribute(u"http-equiv"_hs).view(), u"content-type"))
    charset = lowered(Attributes->GetAttribute(u"content"_hs));
  if (charset.empty())
    charset = lowered(Attributes->GetAttribute(u"charset"_hs));
  if (charset.empty())
    return;
  FEncodingProcessed = true;
  if (contains(charset.view(), u"utf-8")) {
    ChangeEncoding(heUTF8, 0);
    return;
  }
  int cp = CharsettoCodepage(charset);
  if (cp == 0 || Encoding != heDefault)
    return;
  TStringParser& sp = Tokenizer.Parser;
  RawByteString bytes = HtUnicodeToCodePage(std::u16string_view(sp.p, static_cast<size_t>(sp.pend - sp.p)),
                                            HtGetSystemCodePage());
  hstring text = HtCodePageToUnicode(bytes.view(), cp);
  if (!text.empty())
    sp.Init(text);
  Encoding = heANSI;
  Codepage = static_cast<uint32_t>(cp);
  recode_root(Root, heANSI, Codepage);
}

void THtmlParser::ChangeEncoding(THtmlEncoding NewEncoding, uint32_t /*NewCodePage*/) {
  if (NewEncoding == Encoding || NewEncoding != heUTF8)
    return;
  TStringParser& sp = Tokenizer.Parser;
  // A head holds little that would tell: test from "</head>" on when there is one.
  const char16_t* test = find_ignore_case(sp.p, sp.pend, u"</head>");
  if (IsUTF8(test ? test : sp.p)) {
    RawByteString bytes = HtUnicodeToCodePage(std::u16string_view(sp.p, static_cast<size_t>(sp.pend - sp.p)),
                                              HtGetSystemCodePage());
    sp.Init(Utf8ToHString(bytes.view()));
    recode_root(Root, heUTF8, 0);
  }
  Encoding = NewEncoding;
}

int THtmlParser::CharsettoCodepage(const hstring& ACharset) {
  hstring cs = lowered(ACharset);
  std::u16string_view s = cs.view();
  static const struct {
    std::u16string_view name;
    int cp;
  } kIso[] = {{u"iso-8859-1", 1252},  {u"iso-8859-2", 28592}, {u"iso-8859-5", 28595}, {u"iso-8859-6", 28596},
              {u"iso-8859-7", 28597}, {u"iso-8859-9", 1254},  {u"iso-8859-8", 1255},  {u"koi8", 20866}};
  for (auto& e : kIso)
    if (contains(s, e.name))
      return e.cp;
  size_t w = s.find(u"windows-");
  if (w != std::u16string_view::npos) {
    int cp = 0;
    for (size_t i = w + 8; i < s.size() && s[i] >= u'0' && s[i] <= u'9' && cp < 100000; ++i)
      cp = cp * 10 + (s[i] - u'0');
    return cp;
  }
  if (contains(s, u"gb2312"))
    return 936;
  if (contains(s, u"utf-8"))
    return 65001;
  if (contains(s, u"big5"))
    return 950;
  return 0;
}

THtmlEncoding THtmlParser::GetFileEncoding(const hstring& AFileName, uint32_t& ACodePage) {
  ACodePage = 0;
  std::ifstream f(AFileName.toUtf8(), std::ios::binary);
  if (!f)
    throw EFOpenError(u"Cannot open file \""_hs + AFileName + u"\""_hs);
  std::string buf(4096, '\0');
  f.read(buf.data(), static_cast<std::streamsize>(buf.size()));
  buf.resize(static_cast<size_t>(f.gcount()));
  const auto* b = reinterpret_cast<const uint8_t*>(buf.data());
  size_t n = buf.size();
  if (n >= 3 && b[0] == 0xEF && b[1] == 0xBB && b[2] == 0xBF)
    return heUTF8;
  if (n >= 2 && b[0] == 0xFF && b[1] == 0xFE)
    return heUTF16;
  if (buf.find(std::string_view("\0<", 2)) != std::string::npos)
    return heUTF16;
  if (IsUTF8Bytes(b, static_cast<int>(n)))
    return heUTF8;
  std::string lower = buf;
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z')
      c += 32;
  size_t at = lower.find("charset");
  if (at == std::string::npos)
    return heDefault;
  at = lower.find('=', at);
  if (at == std::string::npos)
    return heDefault;
  ++at;
  while (at < n && (static_cast<uint8_t>(lower[at]) <= ' ' || lower[at] == '"'))
    ++at;
  size_t e = at;
  while (e < n && lower[e] != 0 && lower[e] != '"' && lower[e] != '>')
    ++e;
  ACodePage = static_cast<uint32_t>(CharsettoCodepage(
      HtCodePageToUnicode(std::string_view(lower.data() + at, e - at), HtGetSystemCodePage())));
  return heDefault;
}

int GetHTMLEncoding(const void* p, int Len) {
  if (!p || Len < 20)
    return 0;
  const char* s = static_cast<const char*>(p);
  const int limit = Len - 20 < 1000 ? Len - 20 : 1000;
  for (int i = 0; i < limit; ++i) {
    if (s[i] != '<' || !(std::memcmp(s + i + 1, "met", 3) == 0 || std::memcmp(s + i + 1, "MET", 3) == 0))
      continue;
    int j = i + 4;
    int found = -1;
    for (; j + 4 <= Len && s[j] != '>'; ++j)
      if (std::memcmp(s + j, "char", 4) == 0) {
        found = j + 4;
        break;
      }
    if (found < 0)
      continue;
    int k = found;
    while (k < Len && s[k] != '=' && s[k] != '>')
      ++k;
    if (k >= Len || s[k] != '=')
      continue;
    ++k;
    if (k < Len && (s[k] == '"' || s[k] == '\''))
      ++k;
    int e = k;
    while (e < Len && s[e] != ' ' && s[e] != '"' && s[e] != '\'' && s[e] != '>')
      ++e;
    std::u16string value;
    for (int q = k; q < e; ++q)
      value += static_cast<char16_t>(static_cast<uint8_t>(s[q]));
    return THtmlParser::CharsettoCodepage(hstring(value.data(), value.size()));
  }
  return 0;
}

bool IsUTF8Bytes(const void* p, int Len) {
  const auto* b = static_cast<const uint8_t*>(p);
  size_t n = Len > 0 ? static_cast<size_t>(Len) : 0;
  bool seen = false;
  for (size_t i = 0; i < n;) {
    if (b[i] < 0x80) {
      ++i;
      continue;
    }
    switch (detail::Utf8CheckStep(b, n, i)) {
    case detail::TUtf8Step::Ok:
      seen = true;
      break;
    case detail::TUtf8Step::Bad:
      return false;
    case detail::TUtf8Step::Stop: // stray continuation bytes and four-byte forms end the scan
    case detail::TUtf8Step::Cut:  // cut at the end of the sample: judge what came before
      return seen;
    }
  }
  return seen;
}

bool IsUTF8(const char16_t* p) {
  if (!p)
    return false;
  size_t n = std::char_traits<char16_t>::length(p);
  RawByteString bytes = HtUnicodeToCodePage(std::u16string_view(p, n), HtGetSystemCodePage());
  return IsUTF8Bytes(bytes.c_str(), bytes.Length());
}

} // namespace ht
