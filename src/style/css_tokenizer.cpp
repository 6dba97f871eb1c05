#include "htcore/style/css_tokenizer.h"

#include "foundation/code_point.h"
#include "foundation/hex_digit.h"
#include "htcore/document/html_colours.h"
#include "htcore/foundation/text_utils.h"

#include <cmath>
#include <string>

namespace ht {

namespace {

inline bool is_digit(char16_t c) { return c >= u'0' && c <= u'9'; }
inline bool is_letter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
inline bool is_ident_unit(char16_t c) {
  return c >= 256 || is_letter(c) || is_digit(c) || c == u'-' || c == u'_' || c == u'\\';
}

// One-unit token texts, shared so that punctuation costs no allocation.
const hstring& unit_text(char16_t c) {
  static const std::vector<hstring> table = [] {
    std::vector<hstring> t(128);
    for (char16_t u = 1; u < 128; ++u)
      t[u] = hstring(&u, 1);
    return t;
  }();
  return table[c];
}

hstring make_text(const char16_t* b, const char16_t* e) {
  if (e - b == 1 && *b < 128)
    return unit_text(*b);
  return hstring(b, static_cast<size_t>(e - b));
}

} // namespace

// Sheets repeat their words (property names, keywords, lengths, variables):
// short texts are shared through a direct-mapped cache. The cache belongs to
// the thread, not the tokenizer, so that the many tiny parses of style
// attributes do not each build and free a table; every caller copies the
// answer into its token before the next call, so sharing a slot is harmless.
const hstring& TCSSTokenizer::Intern(const char16_t* b, const char16_t* e) {
  constexpr size_t kInternSlots = 1024;
  thread_local std::unique_ptr<hstring[]> intern;
  size_t n = static_cast<size_t>(e - b);
  if (n == 1 && *b < 128)
    return unit_text(*b);
  if (n > kInternMaxLength) {
    FScratch = hstring(b, n);
    return FScratch;
  }
  uint32_t h = 2166136261u;
  for (const char16_t* q = b; q < e; ++q)
    h = (h ^ *q) * 16777619u;
  if (!intern)
    intern = std::make_unique<hstring[]>(kInternSlots);
  hstring& slot = intern[h & (kInternSlots - 1)];
  if (slot.size() != n || std::char_traits<char16_t>::compare(slot.c_str(), b, n) != 0)
    slot = hstring(b, n);
  return slot;
}

namespace {

// Appends a code point as the reader stores it: one unit up to U+FFFF, a
// pair above; beyond U+10FFFF or in the surrogate range its low 16 bits.
void append_escaped(std::u16string& buf, uint32_t cp) {
  if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
    buf += static_cast<char16_t>(cp & 0xFFFF);
  else
    detail::AppendCodePoint(buf, cp);
}

TMeasureUnit dimension_unit(const char16_t* p) {
  auto lower = [](char16_t c) { return CharLower(c); };
  char16_t a = lower(p[0]);
  char16_t b = a ? lower(p[1]) : 0;
  char16_t c = b ? p[2] : 0;
  bool third_free = !is_letter(c) && !is_digit(c);
  switch (a) {
  case u'c':
    return b == u'm' && third_free ? muCM : muNone;
  case u'd':
    return b == u'e' && c == u'g' ? muDeg : muNone;
  case u'e':
    if (b == u'm')
      return third_free ? muEM : muNone;
    return b == u'x' ? muEX : muNone;
  case u'i':
    return b == u'n' && third_free ? muIN : muNone;
  case u'm':
    return b == u'm' ? muMM : b == u's' ? muMS : muNone;
  case u'p':
    return b == u'c' ? muPC : b == u't' ? muPt : b == u'x' ? muPX : muNone;
  case u'r':
    return b == u'e' && c == u'm' ? muREM : muNone;
  case u's':
    return muS;
  case u'v':
    return b == u'w' ? muVW : muVH;
  default:
    return muNone;
  }
}

} // namespace

hstring CSSLowerName(const TCSSToken& T) {
  hstring s = T.Name;
  hLower(s);
  return s;
}

TCSSTokenizer::TCSSTokenizer(const hstring& Text, bool AParseNumbers)
    : Parser(Text), ParseNumbers(AParseNumbers) {
  const char16_t*& p = Parser.p;
  while (*p && *p < 33)
    ++p;
}

void TCSSTokenizer::Next(TCSSTokenType AType) {
  Token.CType = AType;
  char16_t c = *Parser.p;
  Token.Name = c < 128 ? unit_text(c) : hstring(Parser.p, 1);
  ++Parser.p;
}

bool TCSSTokenizer::NextToken() {
  const char16_t*& p = Parser.p;
  Token.StartPos = static_cast<int32_t>(p - Start()) + 1;
  char16_t c = *p;
  if (p == FBumpedCR) {
    c = 0x0E;
    FBumpedCR = nullptr;
  }
  bool result = true;
  switch (c) {
  case 0:
    Eof = true;
    Token.EndPos = Token.StartPos - 1;
    return false;
  case u'\t':
  case u'\n':
  case u'\r':
  case u' ': {
    const char16_t* b = p;
    while (*p && *p < 33)
      ++p;
    Token.CType = ctSpace;
    Token.Name = Intern(b, p);
    result = *p != 0;
    break;
  }
  case u'"':
  case u'\'':
    ReadString();
    break;
  case u'#':
    ReadHash();
    break;
  case u'(':
    Next(ctOpenPar);
    break;
  case u')':
    Next(ctClosePar);
    break;
  case u',':
    Next(ctComma);
    break;
  case u':':
    Next(ctColon);
    break;
  case u';':
    Next(ctSemicolon);
    break;
  case u'[':
    Next(ctOpenBr);
    break;
  case u']':
    Next(ctCloseBr);
    break;
  case u'{':
    Next(ctBlockStart);
    break;
  case u'}':
    Next(ctBlockEnd);
    break;
  case u'-':
    if (is_digit(p[1]) || p[1] == u'.')
      ReadNumber();
    else
      ReadIdent();
    break;
  case u'.':
    if (is_digit(p[1]))
      ReadNumber();
    else
      Next(ctDelimiter);
    break;
  case u'/':
    if (p[1] == u'*')
      ReadComment();
    else
      Next(ctSlash);
    break;
  case u'@':
    ReadAt();
    break;
  default:
    if (is_digit(c))
      ReadNumber();
    else if (is_letter(c) || c == u'_' || c == u'\\' || c >= 256)
      ReadIdent();
    else if (c == 0x0E) {
      Token.CType = ctDelimiter;
      Token.Name = unit_text(0x0E);
      ++p;
    } else
      Next(ctDelimiter);
  }
  Token.EndPos = static_cast<int32_t>(p - Start());
  return result;
}

uint32_t TCSSTokenizer::Escape() {
  const char16_t*& p = Parser.p;
  uint32_t v = 0;
  int n = 0;
  for (int d; n < 6 && (d = detail::HexDigitValue(*p)) >= 0; ++n, ++p)
    v = v * 16 + static_cast<uint32_t>(d);
  if (n == 0) {
    v = *p;
    if (*p)
      ++p;
    return v;
  }
  if (*p == u' ')
    ++p;
  return v;
}

void TCSSTokenizer::EscapedUnit(std::u16string& buf) {
  char16_t c = *Parser.p;
  if (c == u'"' || c == u'\\' || c == u' ') {
    buf += c;
    ++Parser.p;
  } else {
    append_escaped(buf, Escape());
  }
}

void TCSSTokenizer::SetName(bool escaped, std::u16string& buf, const char16_t* run) {
  const char16_t* p = Parser.p;
  if (escaped) {
    buf.append(run, static_cast<size_t>(p - run));
    Token.Name = hstring(buf.data(), buf.size());
  } else {
    Token.Name = Intern(run, p);
  }
}

void TCSSTokenizer::ReadIdent() {
  const char16_t*& p = Parser.p;
  Token.AsFloat = 0;
  Token.Name.clear();
  std::u16string buf; // only escapes need it
  bool escaped = false;
  const char16_t* run = p;
  for (;;) {
    char16_t c = *p;
    if (c != u'\\') {
      if (!is_ident_unit(c))
        break;
      ++p;
      continue;
    }
    if (!escaped) {
      escaped = true;
      buf.reserve(static_cast<size_t>(p - run) + 16);
    }
    buf.append(run, static_cast<size_t>(p - run));
    ++p; // the backslash
    c = *p;
    if (c == 0) {
      run = p;
      break;
    }
    if (c == u'\r') {
      // Intended asymmetry with strings: the CR ends the identifier and reads
      // as a delimiter of its own.
      FBumpedCR = p;
      run = p;
      break;
    }
    EscapedUnit(buf);
    run = p;
  }
  SetName(escaped, buf, run);
  Token.CType = Token.Name.empty() ? ctSpace : ctIdent;
  if (*p != u'(' || p == FBumpedCR)
    return;
  if (!SameText(Token.Name, u"url")) {
    Token.CType = ctFunction;
    hLower(Token.Name);
    return;
  }
  Token.CType = ctURI;
  ++p;
  Parser.SkipBlanks();
  if (*p == u'"' || *p == u'\'') {
    ReadURI();
    Token.CType = ctURI;
    while (*p && *p != u')')
      ++p;
    if (*p)
      ++p;
  } else if (*p && *p != u')') {
    Token.Name.clear();
    const char16_t* b = p;
    while (*p && *p != u')')
      ++p;
    const char16_t* e = p;
    while (e > b && e[-1] < 33)
      --e;
    Token.Name = Intern(b, e);
    if (*p)
      ++p;
  } else if (!*p) {
    Token.Name.clear();
  }
}

void TCSSTokenizer::ReadString() {
  const char16_t*& p = Parser.p;
  char16_t quote = *p++;
  Token.CType = ctString;
  Token.AsFloat = 0;
  std::u16string buf;
  bool escaped = false;
  const char16_t* run = p;
  for (;;) {
    char16_t c = *p;
    if (c == 0 || c == quote || c == u'\r')
      break;
    if (c != u'\\') {
      ++p;
      continue;
    }
    escaped = true;
    buf.append(run, static_cast<size_t>(p - run));
    ++p;
    c = *p;
    if (c == 0) {
      run = p;
      break;
    }
    if (c == u'\r') {
      ++p;
      if (*p == u'\n')
        ++p;
    } else {
      EscapedUnit(buf);
    }
    run = p;
  }
  SetName(escaped, buf, run);
  if (*p)
    ++p; // the closing quote, or the CR that ends an open string
}

void TCSSTokenizer::ReadURI() {
  const char16_t*& p = Parser.p;
  char16_t quote = *p++;
  Token.CType = ctString;
  const char16_t* b = p;
  while (*p && *p != quote)
    ++p;
  Token.Name = Intern(b, p);
  if (*p)
    ++p;
}

void TCSSTokenizer::ReadNumber() {
  const char16_t*& p = Parser.p;
  const char16_t* b = p;
  Token.CType = ctNumber;
  if (!ParseNumbers) {
    while (is_digit(*p) || *p == u'+' || *p == u'-' || *p == u'.')
      ++p;
  } else {
    double v = Parser.ReadNumEx();
    if (is_digit(*p)) {
      // The reader stops taking digits once its mantissa is full; the rest
      // only scale the value.
      int extra = 0;
      for (; is_digit(*p); ++p)
        if (extra < 400)
          ++extra;
      v *= std::pow(10.0, extra);
      if (*p == u'.' && is_digit(p[1]))
        for (++p; is_digit(*p); ++p) {
        }
    }
    Token.AsFloat = std::fabs(v) <= 1E38 ? static_cast<float>(v) : 0.0f;
  }
  if (p == b)
    ++p; // a lone sign: always move on
  if (*p == u'%' || (*p && p[1] == u'%')) {
    Token.CType = ctPercentage;
    Token.MUnit = muPercent;
    p += p[1] == u'%' ? 2 : 1;
  } else if (is_letter(*p)) {
    Token.CType = ctDimension;
    Token.MUnit = dimension_unit(p);
    if (Token.MUnit != muNone) {
      while (is_letter(*p))
        ++p;
    } else {
      Token.AsFloat = 0;
      while (detail::HexDigitValue(*p) >= 0)
        ++p;
      Token.CType = ctIdent;
    }
  }
  Token.Name = Intern(b, p);
}

void TCSSTokenizer::ReadComment() {
  const char16_t*& p = Parser.p;
  p += 2;
  const char16_t* b = p;
  while (*p && !(*p == u'*' && p[1] == u'/'))
    ++p;
  Token.CType = ctComment;
  if (*p) {
    Token.Name = Intern(b, p);
    p += 2;
  } else {
    // An open comment loses its last unit, as if a closing '*' stood there.
    Token.Name = p > b ? make_text(b, p - 1) : hstring();
  }
}

void TCSSTokenizer::ReadAt() {
  ++Parser.p;
  ReadIdent();
  Token.CType = ctAtKeyword;
  Token.Name = u"@" + Token.Name;
}

void TCSSTokenizer::ReadHash() {
  ++Parser.p;
  ReadIdent();
  Token.CType = ctHash;
}

TCSSTokens CSSTokenize(const hstring& Text) {
  TCSSTokens out;
  TCSSTokenizer tz(Text, true);
  while (tz.NextToken() || !tz.Eof)
    out.push_back(tz.Token);
  return out;
}

// --- TCSSTokenSequence ---

void TCSSTokenSequence::Init(PCSSTokens Tokens) {
  FPTokens = Tokens;
  Index = 0;
  Count = Tokens ? static_cast<int32_t>(Tokens->size()) : 0;
  Eof = Count == 0;
  T = Count ? Tokens->data() : nullptr;
}

void TCSSTokenSequence::InitStore(std::shared_ptr<TCSSTokens> Tokens) {
  FOwnTokens = std::move(Tokens);
  Init(FOwnTokens.get());
}

bool TCSSTokenSequence::Next(int Step) {
  Index += Step;
  if (Index >= 0 && Index < Count) {
    T = FPTokens->data() + Index;
    return true;
  }
  T = nullptr;
  Eof = true;
  return false;
}

int TCSSTokenSequence::Position() const {
  if (T)
    return static_cast<int>(T - FPTokens->data());
  return Count > 0 ? Count - 1 : 0;
}

namespace {

bool starts_with_ci(const hstring& s, std::u16string_view prefix) {
  return s.size() >= prefix.size() && SameText(s.view().substr(0, prefix.size()), prefix);
}

// Channels are cut to a byte afterwards; a huge or undefined number must not
// overflow on the way.
int round_even(double v) {
  if (!(v > -2147483648.0 && v < 2147483647.0))
    return 0;
  return static_cast<int>(std::nearbyint(v));
}

uint32_t ident_colour(TCSSToken& tok) {
  if (tok.Color == 0 || tok.Flags == 1) {
    int sys = 0;
    hstring name = CSSLowerName(tok);
    uint32_t c = htmlHextoColorSys(name, sys);
    tok.Flags = sys;
    tok.Color = c;
  }
  return tok.Color;
}

} // namespace

bool TCSSTokenSequence::ReadColor(uint32_t& Color) {
  if (!T)
    return false;
  TCSSToken& tok = *T;
  switch (tok.CType) {
  case ctIdent: {
    if (tok.Color == 0 && SameText(tok.Name, u"inherit"))
      return false;
    uint32_t c = ident_colour(tok);
    if (c != HtInvalidColor)
      Color = c;
    return true;
  }
  case ctHash:
    if (tok.Color == 0)
      return false;
    Color = tok.Color;
    return true;
  case ctNumber: {
    uint32_t c = htmlHextoColor(LowerCase(u"#" + tok.Name));
    if (c != HtInvalidColor)
      Color = c;
    return false;
  }
  case ctFunction:
    break;
  default:
    return false;
  }
  if (!starts_with_ci(tok.Name, u"rgb"))
    return starts_with_ci(tok.Name, u"var");
  if (Count == 1) {
    Color = tok.Color;
    return true;
  }
  uint32_t c = 0;
  int counter = 0;
  bool base = false;
  while (Next() && T->CType != ctClosePar) {
    TCSSToken& t = *T;
    switch (t.CType) {
    case ctIdent:
      c = ident_colour(t);
      base = true;
      break;
    case ctHash:
      c = t.Color;
      base = true;
      break;
    case ctNumber:
      if (counter != 3 && !base) {
        c = (c << 8) | (static_cast<uint32_t>(round_even(t.AsFloat)) & 0xFF);
      } else {
        uint32_t a = static_cast<uint32_t>(round_even(t.AsFloat * 255.0)) & 0xFF;
        // Against a base colour the alpha replaces the base's own.
        c = base ? (c & 0xFFFFFF) | (a << 24) : c | (a << 24);
      }
      ++counter;
      break;
    case ctPercentage: {
      uint32_t v = static_cast<uint32_t>(round_even(t.AsFloat * 255.0 / 100.0)) & 0xFF;
      if (counter == 3)
        c = base ? (c & 0xFFFFFF) | (v << 24) : c | (v << 24);
      else
        c = (c << 8) | v;
      ++counter;
      break;
    }
    default:
      break;
    }
  }
  if (counter == 3)
    c |= 0xFF000000u;
  Color = c;
  return true;
}

} // namespace ht
