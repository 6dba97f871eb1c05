#include "htcore/document/html_tokenizer.h"

#include "document/html_char_classes.h"
#include "foundation/code_point.h"
#include "htcore/document/entities.h"
#include "htcore/foundation/startup.h"

#include <set>
#include <string>
#include <vector>

namespace ht {

namespace detail {

uint8_t g_html_char_class[2][256];

void BuildHtmlCharClasses() {
  uint8_t(&out)[256] = g_html_char_class[0];
  uint8_t(&in)[256] = g_html_char_class[1];
  for (int c = 0; c < 256; ++c)
    out[c] = in[c] = 0;
  out[u'<'] = 4;
  for (char c : {'#', '%', '-', '.', ':', '@', '_'})
    in[static_cast<uint8_t>(c)] = 1;
  for (int c = '0'; c <= '9'; ++c)
    in[c] = 1;
  for (int c = 'A'; c <= 'Z'; ++c)
    in[c] = in[c + 32] = 1;
  for (char c : {'\t', '\n', '\r', ' '})
    in[static_cast<uint8_t>(c)] = 2;
  in[u'"'] = in[u'\''] = 3;
  in[u'<'] = 4;
  in[u'>'] = 5;
  in[u'/'] = 6;
  in[u'='] = 7;
}

} // namespace detail

namespace {

inline int in_tag_class(char16_t c) { return c < 256 ? detail::g_html_char_class[1][c] : 0; }

inline bool is_blank(char16_t c) { return c <= u' '; }

bool equals_ignore_case(const hstring& s, std::u16string_view lower) {
  if (s.size() != lower.size())
    return false;
  const char16_t* p = s.c_str();
  for (size_t i = 0; i < lower.size(); ++i) {
    char16_t c = p[i];
    if (c >= u'A' && c <= u'Z')
      c += 32;
    if (c != lower[i])
      return false;
  }
  return true;
}

// True when the text at q starts with `lower`, ignoring ASCII case.
bool starts_ignore_case(const char16_t* q, const char16_t* end, std::u16string_view lower) {
  if (static_cast<size_t>(end - q) < lower.size())
    return false;
  for (size_t i = 0; i < lower.size(); ++i) {
    char16_t c = q[i];
    if (c >= u'A' && c <= u'Z')
      c += 32;
    if (c != lower[i])
      return false;
  }
  return true;
}

// Deletes every "<!--" (first to last), each time with the first "-->" of the
// whole remaining text. Deletions may join new marks, so this works on a
// linked list of units and rescans only around each join: linear time.
hstring strip_comment_marks(const char16_t* t, size_t len) {
  std::u16string_view text(t, len);
  if (text.find(u"<!--") == std::u16string_view::npos)
    return hstring(t, len);
  const int n = static_cast<int>(len);
  const int tail = n + 1; // node k is unit k - 1; 0 is the head
  std::vector<int> nx(static_cast<size_t>(n) + 2), pv(static_cast<size_t>(n) + 2);
  std::vector<bool> alive(static_cast<size_t>(n) + 2, true);
  for (int k = 0; k <= n; ++k) {
    nx[k] = k + 1;
    pv[k + 1] = k;
  }
  auto unit = [&](int k) -> char16_t { return k >= 1 && k <= n ? t[k - 1] : 0; };
  auto matches = [&](int k, std::u16string_view pat) {
    for (char16_t c : pat) {
      if (unit(k) != c)
        return false;
      k = nx[k];
    }
    return true;
  };
  // Nothing before `front` starts a mark, except maybe the nodes in `extra`.
  struct Scan {
    std::u16string_view pat;
    int front;
    std::set<int> extra;
  };
  Scan open{u"<!--", 1, {}}, close{u"-->", 1, {}};
  auto find = [&](Scan& s) -> int {
    while (!s.extra.empty()) {
      int k = *s.extra.begin();
      s.extra.erase(s.extra.begin());
      if (alive[k] && matches(k, s.pat))
        return k;
    }
    for (; s.front != tail; s.front = nx[s.front])
      if (matches(s.front, s.pat))
        return s.front;
    return 0;
  };
  auto erase = [&](int k, int count) {
    int before = pv[k];
    for (int i = 0; i < count; ++i) {
      alive[k] = false;
      k = nx[k];
    }
    nx[before] = k;
    pv[k] = before;
    for (Scan* s : {&open, &close}) {
      if (!alive[s->front])
        s->front = k;
      // A mark spanning the join starts within pat.size() - 1 nodes before it.
      int b = k;
      for (size_t i = 1; i < s->pat.size() && pv[b] != 0; ++i) {
        b = pv[b];
        if (b < s->front)
          s->extra.insert(b);
      }
    }
  };
  while (int k = find(open)) {
    erase(k, 4);
    if (int m = find(close))
      erase(m, 3);
  }
  std::u16string out;
  out.reserve(len);
  for (int k = nx[0]; k != tail; k = nx[k])
    out += t[k - 1];
  return hstring(out.data(), out.size());
}

} // namespace

int HtmlCharClass(char16_t c, bool InTag) {
  EnsureStarted();
  return c < 256 ? detail::g_html_char_class[InTag ? 1 : 0][c] : 0;
}

const hstring& InternName(THtStringRecDictionary& Dict, const char16_t* p, int Len) {
  static const hstring kEmpty;
  if (Len <= 0)
    return kEmpty;
  THtStringRec* rec = Dict.Get(p, Len);
  if (!rec) {
    // A lasting name: the many copies in a tree cost no count.
    rec = new THtStringRec(hstring::Interned(p, static_cast<size_t>(Len)));
    Dict.AddObject(rec); // the dictionary owns its records
  }
  return rec->Value;
}

const hstring& InternName(THtStringRecDictionary& Dict, const hstring& Name) {
  static const hstring kEmpty;
  if (Name.empty())
    return kEmpty;
  THtStringRec* rec = Dict.Get(Name);
  if (!rec) {
    rec = new THtStringRec(Name.size() <= 64 ? hstring::Interned(Name.view()) : Name);
    Dict.AddObject(rec);
  }
  return rec->Value;
}

THTMLTokenizer::THTMLTokenizer(const hstring& s, bool ACaseSensitive) : CaseSensitive(ACaseSensitive) {
  EnsureStarted();
  Parser.Init(s);
}

bool THTMLTokenizer::NextToken(bool AllowStrings) {
  TStringParser& sp = Parser;
  if (sp.p >= sp.pend) {
    Eof = true;
    return false;
  }
  TokenStart = Offset();
  bool result = true;
  if (TokenType == htTagEnd && *sp.p != u'<') {
    ReadText();
  } else {
    if (!AllowStrings && InTag) {
      while (sp.p < sp.pend && (*sp.p == u'"' || *sp.p == u'\''))
        ++sp.p;
      if (sp.p >= sp.pend) {
        Eof = true;
        TokenEnd = Offset();
        return false;
      }
    }
    char16_t c = *sp.p;
    switch (c < 256 ? detail::g_html_char_class[InTag ? 1 : 0][c] : 0) {
    case 0:
      if (InTag)
        ReadIdent();
      else
        ReadText();
      break;
    case 1:
      if (TokenType == htTagStart)
        ReadTag();
      else
        ReadIdent();
      break;
    case 2: {
      const char16_t* b = sp.p;
      sp.SkipBlanks();
      TokenType = htSpace;
      // A single blank leaves the previous text in place; callers never read it.
      if (sp.p - b >= 2)
        Token = hstring::ForTree(b, static_cast<size_t>(sp.p - b));
      result = sp.p < sp.pend;
      break;
    }
    case 3:
      ReadString();
      break;
    case 4: {
      char16_t c1 = sp.p[1];
      if (c1 == u'!') {
        if (sp.p[2] == u'-')
          ReadComment();
        else if (sp.p[2] == u'[' && sp.p[3] == u'C' && sp.p[4] == u'D' && sp.p[5] == u'A')
          ReadCData();
        else
          ReadCustom();
      } else if (c1 == u'?') {
        ReadDirective();
      } else if (c1 < 128 && !(c1 == u'-' || c1 == u'.' || c1 == u'/' || c1 == u':' || c1 == u'_' ||
                               (c1 >= u'A' && c1 <= u'Z') || (c1 >= u'a' && c1 <= u'z'))) {
        // Not a tag: "a < b" stays text.
        if (XMLMode)
          InvalidTagName(c1);
        const char16_t* b = sp.p++;
        ReadEncoded(b, u'<');
      } else {
        TokenType = htTagStart;
        ++sp.p;
        InTag = true;
      }
      break;
    }
    case 5:
      TokenType = htTagEnd;
      ++sp.p;
      InTag = false;
      if (!XMLMode) {
        if (equals_ignore_case(CurrentTag, u"script"))
          ReadScript();
        else if (equals_ignore_case(CurrentTag, u"style"))
          ReadStyle();
      }
      break;
    case 6:
      TokenType = htTagClose;
      ++sp.p;
      CurrentTag.clear();
      break;
    case 7:
      TokenType = htEq;
      ++sp.p;
      break;
    }
  }
  TokenEnd = Offset();
  return result;
}

uint32_t THTMLTokenizer::Escape() {
  TStringParser& sp = Parser;
  const char16_t* q = sp.p;
  const char16_t* end = sp.pend;
  auto at = [&](ptrdiff_t i) -> char16_t { return end - q > i ? q[i] : 0; };
  char16_t c0 = at(0);
  if (c0 != u'#') {
    // Short forms by their first units; what follows them is not looked at.
    char16_t c1 = at(1), c2 = at(2);
    if (c1 == u't' && c2 == u';' && (c0 == u'l' || c0 == u'g')) {
      sp.Skip(3);
      return c0 == u'l' ? u'<' : u'>';
    }
    if (c0 == u'q' && c1 == u'u' && c2 == u'o') {
      sp.Skip(5);
      return u'"';
    }
    if (c0 == u'a' && c1 == u'm' && c2 == u'p') {
      sp.Skip(4);
      return u'&';
    }
    if (c0 == u'n' && c1 == u'b' && c2 == u's') {
      sp.Skip(at(4) == u';' ? 5 : 4);
      return 0xA0;
    }
  }
  const char16_t* stop = q;
  for (int n = 0; stop < end && *stop != 0 && *stop != u';' && *stop != u' ' && n < 25; ++n)
    ++stop;
  bool semicolon = stop < end && *stop == u';';
  if (c0 == u'#') {
    sp.p = q + 1;
    int64_t v;
    if (*sp.p == u'x') {
      ++sp.p;
      v = sp.ReadHex();
    } else {
      v = sp.ReadInt(); // so "&#X41;" reads as decimal and gives 0
    }
    if (semicolon)
      sp.p = stop + 1;
    return v < 0 || v > 0x10FFFF ? 0x110000u : static_cast<uint32_t>(v);
  }
  if (!semicolon)
    return u'&';
  uint32_t code = FindEntity(q, static_cast<int>(stop - q));
  sp.p = code ? stop : q;
  // One unit goes in both cases: an unknown "&foo;" reads as "&oo;". Intended;
  // documents converted by this reader depend on it staying so.
  if (sp.p < end)
    ++sp.p;
  return code ? code : u'&';
}

void THTMLTokenizer::ReadEncoded(const char16_t* b, char16_t stop) {
  TStringParser& sp = Parser;
  const char16_t* q = sp.p;
  // Two units per step while both lie above '>', which is above '<', '&' and the quotes.
  for (;;) {
    while (q[0] > u'>' && q[1] > u'>')
      q += 2;
    if (q >= sp.pend || *q == stop || *q == u'&')
      break;
    ++q;
  }
  TokenType = htString;
  if (q >= sp.pend || *q == stop) {
    sp.p = q;
    Token = hstring::ForTree(b, static_cast<size_t>(q - b));
    return;
  }
  FBuffer.assign(b, static_cast<size_t>(q - b));
  sp.p = q;
  while (sp.p < sp.pend && *sp.p != stop) {
    if (*sp.p == u'&') {
      ++sp.p;
      detail::AppendCodePoint(FBuffer, Escape());
      continue;
    }
    const char16_t* r = sp.p;
    while (r < sp.pend && *r != stop && *r != u'&')
      ++r;
    FBuffer.append(sp.p, static_cast<size_t>(r - sp.p));
    sp.p = r;
  }
  Token = hstring::ForTree(FBuffer.data(), FBuffer.size());
}

void THTMLTokenizer::ReadText() { ReadEncoded(Parser.p, u'<'); }

void THTMLTokenizer::ReadString() {
  TStringParser& sp = Parser;
  char16_t quote = *sp.p++;
  ReadEncoded(sp.p, quote);
  if (sp.p < sp.pend)
    ++sp.p;
}

void THTMLTokenizer::ReadIdent() {
  TStringParser& sp = Parser;
  const char16_t* b = sp.p++;
  for (;;) {
    char16_t c = *sp.p;
    if (c >= 256 || (c >= u'a' && c <= u'z')) {
      ++sp.p;
    } else if (c == u'/') {
      if (sp.p[1] == u'>')
        break;
      ++sp.p; // "a/b.html" stays one value
    } else if (c == 0 || in_tag_class(c) >= 2) {
      break;
    } else {
      ++sp.p;
    }
  }
  Token = hstring::ForTree(b, static_cast<size_t>(sp.p - b));
  TokenType = htIdent;
}

void THTMLTokenizer::ReadTag() {
  TStringParser& sp = Parser;
  const char16_t* b = sp.p++;
  bool capital = *b >= u'A' && *b <= u'Z';
  for (;;) {
    char16_t c = *sp.p;
    if (c >= 65 || in_tag_class(c) == 1) {
      capital |= c >= u'A' && c <= u'Z';
      ++sp.p;
    } else if (c == u'/' && sp.p[1] != u'>') {
      ++sp.p;
    } else {
      break;
    }
  }
  int len = static_cast<int>(sp.p - b);
  if (!CaseSensitive && capital) {
    hstring lower(b, static_cast<size_t>(len));
    char16_t* w = lower.UniqueData();
    for (int i = 0; i < len; ++i)
      if (w[i] >= u'A' && w[i] <= u'Z')
        w[i] += 32;
    Token = TagList ? InternName(*TagList, lower) : lower;
  } else {
    Token = TagList ? InternName(*TagList, b, len) : hstring(b, static_cast<size_t>(len));
  }
  CurrentTag = Token;
  TokenType = htIdent;
}

void THTMLTokenizer::ReadComment() {
  TStringParser& sp = Parser;
  sp.Skip(4);
  const char16_t* start = sp.p;
  std::u16string_view rest(start, static_cast<size_t>(sp.pend - start));
  size_t at = rest.find(u"-->"); // so "<!-->" does not close itself
  const char16_t* stop = at == std::u16string_view::npos ? sp.pend : start + at + 2;
  const char16_t* e = stop - start >= 2 ? stop - 2 : start;
  Token = hstring::ForTree(start, static_cast<size_t>(e - start));
  TokenType = htComment;
  sp.p = stop < sp.pend ? stop + 1 : sp.pend;
}

void THTMLTokenizer::ReadCData() {
  TStringParser& sp = Parser;
  sp.Skip(9);
  const char16_t* start = sp.p;
  const char16_t* stop = sp.pend;
  for (const char16_t* q = start; q < sp.pend;) {
    if (*q != u']') {
      ++q;
      continue;
    }
    if (q[1] == u']' && q[2] == u'>') {
      stop = q + 2;
      break;
    }
    // Both tested units are passed over, so "]]]>" does not end the section.
    q = sp.pend - q > 2 ? q + 2 : sp.pend;
  }
  const char16_t* e = stop - start >= 2 ? stop - 2 : start;
  Token = hstring::ForTree(start, static_cast<size_t>(e - start));
  TokenType = htCData;
  sp.p = stop < sp.pend ? stop + 1 : sp.pend;
}

void THTMLTokenizer::ReadCustom() {
  TStringParser& sp = Parser;
  sp.Skip(2);
  const char16_t* start = sp.p;
  bool quote = false, bracket = false;
  for (; sp.p < sp.pend; ++sp.p) {
    char16_t c = *sp.p;
    if (c == u'"')
      quote = !quote;
    else if (c == u'[' && !quote)
      bracket = true;
    else if (c == u']' && !quote)
      bracket = false;
    else if (c == u'>' && !bracket)
      break;
  }
  // "<!>" leaves type and text as they were.
  if (sp.p > start) {
    Token = hstring::ForTree(start, static_cast<size_t>(sp.p - start));
    TokenType = htCustom;
  }
  if (sp.p < sp.pend)
    ++sp.p;
}

void THTMLTokenizer::ReadDirective() {
  TStringParser& sp = Parser;
  sp.Skip(2);
  const char16_t* start = sp.p;
  while (sp.p < sp.pend && *sp.p != 0 && *sp.p != u'>' && !(*sp.p == u'?' && sp.p[1] == u'>'))
    ++sp.p;
  Token = hstring::ForTree(start, static_cast<size_t>(sp.p - start));
  TokenType = htDirective;
  if (sp.p < sp.pend)
    sp.p += *sp.p == u'?' ? 2 : 1;
}

// The body up to "</name" in any case, or the end; the close tag stays unread.
std::u16string_view THTMLTokenizer::ReadRawBlock(std::u16string_view close_tag) {
  TStringParser& sp = Parser;
  const char16_t* start = sp.p;
  const char16_t* q = start;
  for (; q < sp.pend; ++q)
    if (*q == u'<' && q[1] == u'/' && starts_ignore_case(q, sp.pend, close_tag))
      break;
  sp.p = q;
  return std::u16string_view(start, static_cast<size_t>(q - start));
}

void THTMLTokenizer::ReadScript() {
  std::u16string_view body = ReadRawBlock(u"</script");
  while (!body.empty() && is_blank(body.front()))
    body.remove_prefix(1);
  while (!body.empty() && is_blank(body.back()))
    body.remove_suffix(1);
  // Scripts hidden from old browsers in "<!-- ... -->".
  if (body.size() >= 4 && body.substr(0, 4) == u"<!--")
    body = body.size() >= 7 ? body.substr(4, body.size() - 7) : std::u16string_view();
  Token = hstring::ForTree(body.data(), body.size());
  TokenType = htScript;
}

void THTMLTokenizer::ReadStyle() {
  std::u16string_view body = ReadRawBlock(u"</style");
  Token = strip_comment_marks(body.data(), body.size());
  TokenType = htStyle;
}

void THTMLTokenizer::InvalidTagName(char16_t c) {
  hstring msg = u"Invalid tag name "_hs;
  if (c)
    msg += c;
  msg += u". Line "_hs + hstring(std::to_string(Parser.Line())) + u" position "_hs +
         hstring(std::to_string(Parser.Pos()));
  throw EHtParserError(msg);
}

} // namespace ht
