// THtJSONParser: name/value pairs over the tokenizer, with interned names.
#include "htcore/document/json_parser.h"

namespace ht {

THtJSONParser::THtJSONParser(const hstring& s) : Names(256, true) {
  if (!s.empty())
    Tokenizer = std::make_unique<THtJSONTokenizer>(s);
}

hstring THtJSONParser::Intern(const hstring& AName) {
  if (AName.empty())
    return AName;
  if (THtNameObjectPair* pair = Names.GetPair(AName.c_str(), AName.Length()))
    return pair->Name;
  return Names.AddKey(AName)->Name;
}

THtJSONTokenType THtJSONParser::NextNameValue() {
  THtJSONTokenizer& t = *Tokenizer;
  if (t.TokenType != jtIdent && t.TokenType != jtString)
    throw EHtParserError(std::string_view("Name expected"));
  Name = Intern(t.Token);
  if (!t.NextNSToken() || t.TokenType != jtColon)
    throw EHtParserError(std::string_view("Name expected"));
  if (!t.NextNSToken())
    throw EHtParserError(std::string_view("Value expected"));
  switch (t.TokenType) {
  case jtIdent:
  case jtString:
  case jtValue:
    return jtIdent;
  case jtObjectStart:
  case jtArrayStart:
  case jtInt:
  case jtFloat:
    return t.TokenType;
  default:
    throw EHtParserError(std::string_view("Value expected"));
  }
}

} // namespace ht
