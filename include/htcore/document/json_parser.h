// THtJSONTokenizer and THtJSONParser: JSON text into tokens.
//
// The tokenizer cuts a text into tokens one call at a time; the parser adds
// the step that reads one `name: value` pair of an object and interns names.
// The grammar is a little wider than JSON: strings may be in single quotes,
// bare identifiers are names and values, and `\x` takes two hex digits.
// There is no document class here: THtXMLNode builds a tree from these tokens.
//
//   ht::THtJSONParser jp(u"{a: 1, 'b': \"x\"}"_hs);
//   jp.Tokenizer->NextNSToken();                 // jtObjectStart
//   jp.Tokenizer->NextNSToken();                 // on the name "a"
//   if (jp.NextNameValue() == ht::jtInt)         // jp.Name == "a"
//     use(jp.Tokenizer->IntValue);               // 1
//
// Faults raise EHtParserError with a fixed text ("Unterminated string",
// "Incorrect number", ...). Token positions are 0-based unit offsets.
#pragma once

#include "htcore/document/parse_errors.h"
#include "htcore/document/string_parser.h"
#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/named_lists.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ht {

HT_ENUM(THtJSONTokenType, jtUnknown, jtIdent, jtString, jtValue, jtSpace, jtComma, jtObjectStart, jtObjectEnd,
        jtArrayStart, jtArrayEnd, jtColon, jtInt, jtFloat, jtComment);

// Errors of the JSON tree builder; the tokenizer raises plain EHtParserError.
class EHtJSONParserException : public EHtParserError {
public:
  using EHtParserError::EHtParserError;
};

class THtJSONTokenizer {
public:
  // Skips leading blanks; the first token comes with the first NextToken.
  explicit THtJSONTokenizer(const hstring& s);
  THtJSONTokenizer(const THtJSONTokenizer&) = delete;
  THtJSONTokenizer& operator=(const THtJSONTokenizer&) = delete;

  TStringParser Parser; // RaiseException is set
  THtJSONTokenType TokenType = jtUnknown;
  hstring Token; // strings decoded, numbers and the rest as written
  int64_t IntValue = 0;
  double ExtValue = 0;
  int TokenStart = 0; // first unit of the token
  int TokenEnd = 0;   // behind its last unit
  bool Eof = false;

  // False at the end of the text, which sets Eof.
  bool NextToken();
  // The next token that is not jtSpace.
  bool NextNSToken();
  // NextNSToken, raising "Token expected" at the end of the text.
  void NextRequiredToken();
  // One-unit token of the given type.
  void Next2(THtJSONTokenType AType);
  // A `//` comment up to CR or the end of the text, with the CR and LF behind
  // it, as jtComment. NextToken never reads comments (a `/` is jtUnknown), so
  // a caller that allows them asks for one: the comment starts at the cursor
  // or at the current token when that is an unknown token on a `/`. False,
  // with nothing changed, when no `//` stands there.
  bool ReadComment();
  void ReadIdent();
  void ReadString();
  // Line of the cursor: the count of LF units before it.
  int Line() const { return Parser.Line(); }

private:
  void Escape(const char16_t*& q);
  [[noreturn]] void EscapeError(const char16_t* q);
  void SetToken(const char16_t* b) {
    TokenStart = static_cast<int>(b - Parser.Start());
    TokenEnd = static_cast<int>(Parser.p - Parser.Start());
  }

  std::u16string FBuffer; // decoded text of strings with escapes
};

class THtJSONParser {
public:
  // An empty text leaves Tokenizer null.
  explicit THtJSONParser(const hstring& s);

  THtStringList Names; // interned names of this parse
  hstring Name;        // name of the last pair
  std::unique_ptr<THtJSONTokenizer> Tokenizer;
  int Depth = 0; // nesting counter of the tree builder

  // With the current token on a name: reads `name : value`, leaving the value
  // as the current token. Returns jtIdent for identifiers, strings and
  // true/false/null, otherwise the value's token type (objects and arrays are
  // left to the caller).
  THtJSONTokenType NextNameValue();
  // The shared copy of a name for this parse.
  hstring Intern(const hstring& AName);
};

} // namespace ht
