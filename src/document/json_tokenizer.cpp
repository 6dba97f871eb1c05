// JSON tokens: character classes, strings with escapes, identifiers, numbers.
#include "document/htmlpars_start.h"
#include "document/json_escape.h"
#include "htcore/document/json_parser.h"
#include "htcore/foundation/startup.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ht {

namespace {

enum TJSONCharClass : uint8_t {
  ccOther, // read like an identifier, as jtUnknown
  ccIdent,
  ccString,
  ccSpace,
  ccComma,
  ccObjectStart,
  ccObjectEnd,
  ccArrayStart,
  ccArrayEnd,
  ccColon,
  ccNumber,
};

uint8_t g_json_classes[256];

inline TJSONCharClass class_of(char16_t c) {
  return c < 256 ? static_cast<TJSONCharClass>(g_json_classes[c]) : ccOther;
}

[[noreturn]] void raise(std::string_view message) { throw EHtParserError(message); }

} // namespace

namespace detail {

void BuildJSONCharClasses() {
  auto set = [](std::string_view units, TJSONCharClass cls) {
    for (char c : units)
      g_json_classes[static_cast<unsigned char>(c)] = cls;
  };
  for (auto& c : g_json_classes)
    c = ccOther;
  set("_abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", ccIdent);
  set("\"'", ccString);
  set("\t\n\r ", ccSpace);
  set(",", ccComma);
  set("{", ccObjectStart);
  set("}", ccObjectEnd);
  set("[", ccArrayStart);
  set("]", ccArrayEnd);
  set(":", ccColon);
  set("-.0123456789", ccNumber);
}

} // namespace detail

THtJSONTokenizer::THtJSONTokenizer(const hstring& s) {
  EnsureStarted();
  Parser.Init(s);
  Parser.RaiseException = true;
  Parser.SkipBlanks();
}

bool THtJSONTokenizer::NextToken() {
  const char16_t* b = Parser.p;
  if (b >= Parser.pend) {
    Eof = true;
    TokenType = jtUnknown;
    Token.clear();
    SetToken(b);
    return false;
  }
  switch (class_of(*b)) {
  case ccIdent:
    ReadIdent();
    return true;
  case ccString:
    ReadString();
    return true;
  case ccSpace:
    do
      ++Parser.p;
    while (Parser.p < Parser.pend && class_of(*Parser.p) == ccSpace);
    TokenType = jtSpace;
    Token.clear();
    SetToken(b);
    return true;
  case ccComma:
    Next2(jtComma);
    return true;
  case ccObjectStart:
    Next2(jtObjectStart);
    return true;
  case ccObjectEnd:
    Next2(jtObjectEnd);
    return true;
  case ccArrayStart:
    Next2(jtArrayStart);
    return true;
  case ccArrayEnd:
    Next2(jtArrayEnd);
    return true;
  case ccColon:
    Next2(jtColon);
    return true;
  case ccNumber:
    TokenType = Parser.ReadIntOrFloat(IntValue, ExtValue) ? jtInt : jtFloat;
    Token = hstring(b, static_cast<size_t>(Parser.p - b));
    SetToken(b);
    return true;
  case ccOther:
    break;
  }
  ReadIdent();
  TokenType = jtUnknown;
  return true;
}

bool THtJSONTokenizer::NextNSToken() {
  while (NextToken())
    if (TokenType != jtSpace)
      return true;
  return false;
}

void THtJSONTokenizer::NextRequiredToken() {
  if (!NextNSToken())
    raise("Token expected");
}

void THtJSONTokenizer::Next2(THtJSONTokenType AType) {
  TokenType = AType;
  Token.clear();
  const char16_t* b = Parser.p;
  Parser.Next();
  SetToken(b);
}

bool THtJSONTokenizer::ReadComment() {
  const char16_t* q = Parser.p;
  if (TokenType == jtUnknown && !Eof && TokenEnd > TokenStart && Parser.Start()[TokenStart] == u'/')
    q = Parser.Start() + TokenStart;
  if (Parser.pend - q < 2 || q[0] != u'/' || q[1] != u'/')
    return false;
  const char16_t* b = q;
  // Only CR ends a comment; an LF alone stays inside it.
  while (q < Parser.pend && *q != u'\r')
    ++q;
  Token = hstring(b, static_cast<size_t>(q - b));
  while (q < Parser.pend && (*q == u'\r' || *q == u'\n'))
    ++q;
  Parser.p = q;
  TokenType = jtComment;
  SetToken(b);
  return true;
}

void THtJSONTokenizer::ReadIdent() {
  const char16_t* b = Parser.p;
  const char16_t* q = b + 1;
  while (q < Parser.pend && detail::IsJSONIdentUnit(*q))
    ++q;
  Parser.p = q;
  size_t n = static_cast<size_t>(q - b);
  Token = hstring(b, n);
  SetToken(b);
  std::u16string_view v(b, n);
  TokenType = v == u"true" || v == u"false" || v == u"null" ? jtValue : jtIdent;
}

void THtJSONTokenizer::ReadString() {
  const char16_t* b = Parser.p;
  const char16_t* end = Parser.pend;
  const char16_t quote = *b;
  const char16_t* q = b + 1;
  const char16_t* seg = q; // start of the text since the last escape
  bool escaped = false;
  for (;;) {
    if (q >= end)
      raise("Unterminated string");
    char16_t c = *q;
    if (c == quote)
      break;
    if (c < 0x20) {
      std::string msg = "Unescaped control symbol #" + std::to_string(c) + " in " +
                        HStringToUtf8(std::u16string_view(b, static_cast<size_t>(q - b)));
      raise(msg);
    }
    if (c != u'\\') {
      ++q;
      continue;
    }
    if (!escaped) {
      FBuffer.clear();
      escaped = true;
    }
    FBuffer.append(seg, q);
    ++q;
    Escape(q);
    seg = q;
  }
  if (escaped) {
    FBuffer.append(seg, q);
    Token = hstring(FBuffer.data(), FBuffer.size());
  } else {
    Token = hstring(b + 1, static_cast<size_t>(q - b - 1));
  }
  Parser.p = q + 1;
  TokenType = jtString;
  SetToken(b);
}

// q stands behind the backslash; it is left behind the escape.
void THtJSONTokenizer::Escape(const char16_t*& q) {
  char16_t c = 0;
  switch (detail::DecodeJSONEscape(q, Parser.pend, FBuffer.empty() ? u'\0' : FBuffer.back(), c)) {
  case detail::TJSONEscape::Ok:
    break;
  case detail::TJSONEscape::Unterminated:
    raise("Unterminated string");
  case detail::TJSONEscape::Bad:
    EscapeError(q);
  }
  FBuffer.push_back(c);
  ++q;
}

void THtJSONTokenizer::EscapeError(const char16_t* q) {
  Parser.p = q;
  raise("Incorrect unicode escape at line " + std::to_string(Line()));
}

} // namespace ht
