// TCSSTokenizer: CSS text to a flat stream of tokens, one pass over UTF-16.
//
// Whitespace is a token (ctSpace), a number's unit is decided here (ctDimension
// with MUnit), "url(...)" is one ctURI token, a function name is lower-cased
// and followed by its own ctOpenPar, and comments come out as ctComment.
// TCSSTokenSequence is the cursor over a stored token array (compiled values,
// calc() expressions, variables) and reads colours.
//
//   ht::TCSSTokenizer tz(u"a { width: 12px }"_hs, true);
//   while (tz.NextToken() || !tz.Eof)
//     use(tz.Token.CType, tz.Token.Name);   // ctIdent "a", ctSpace " ", ctBlockStart ...
//
//   ht::TCSSTokens toks = ht::CSSTokenize(u"rgb(255, 0, 0)"_hs);
//   ht::TCSSTokenSequence seq;
//   seq.Init(&toks);
//   uint32_t c = 0;
//   seq.ReadColor(c);                       // c == 0xFFFF0000
//
// The text must stay alive and unchanged while a tokenizer reads it.
#pragma once

#include "htcore/document/string_parser.h"
#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"
#include "htcore/style/measure_unit.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ht {

HT_ENUM(TCSSTokenType, ctUnknown, ctIdent, ctAtKeyword, ctString, ctBlockStart, ctBlockEnd, ctHash, ctNumber,
        ctPercentage, ctDimension, ctURI, ctCDO, ctCDC, ctComment, ctFunction, ctColon, ctSemicolon, ctComma,
        ctOpenPar, ctClosePar, ctDelimiter, ctOpenBr, ctCloseBr, ctSlash, ctSpace);

struct TCSSToken {
  TCSSTokenType CType = ctUnknown;
  hstring Name;
  int32_t StartPos = 0; // 1-based index of the first unit
  int32_t EndPos = 0;   // 1-based index of the last unit
  int32_t Flags = 0;    // 1: Color is a system colour, to be looked up again on each use
  // A number's value and a resolved colour share one slot; 0 means "no colour
  // cached yet". After a value is prepared the first token's slot holds the
  // decoded payload (colour, enumeration ordinal, number; 888 inherit, 999 bad).
  union {
    float AsFloat = 0;
    uint32_t Color;
  };
  TMeasureUnit MUnit = muNone; // of ctDimension and ctPercentage only
};

using PCSSToken = TCSSToken*;
using TCSSTokens = std::vector<TCSSToken>;
using PCSSTokens = TCSSTokens*;

class TCSSTokenizer {
public:
  // Skips every unit below U+0021 before the first token.
  TCSSTokenizer(const hstring& Text, bool AParseNumbers);
  TCSSTokenizer(const TCSSTokenizer&) = delete;
  TCSSTokenizer& operator=(const TCSSTokenizer&) = delete;

  // Reads one token into Token. False when nothing was read (Eof is then set),
  // and also for a ctSpace token that runs to the end of the text: that token
  // is valid, and the next call sets Eof.
  bool NextToken();

  // The steps of NextToken, with the cursor on the unit that starts each.
  void ReadIdent();
  void ReadString();
  void ReadURI();
  void ReadNumber();
  void ReadComment();
  void ReadAt();
  void ReadHash();
  uint32_t Escape();
  void Next(TCSSTokenType AType);

  TStringParser Parser;
  bool ParseNumbers;
  TCSSToken Token;
  bool Eof = false;

private:
  static constexpr size_t kInternMaxLength = 40;
  const hstring& Intern(const char16_t* b, const char16_t* e);
  // The unit behind a backslash: a quote, backslash or blank as it stands, else an escape.
  void EscapedUnit(std::u16string& buf);
  // Name from the text since run, through buf when escapes were met.
  void SetName(bool escaped, std::u16string& buf, const char16_t* run);
  hstring FScratch;
  const char16_t* Start() const { return Parser.Start(); }
  // A backslash before a CR ends an identifier and turns the CR into the
  // delimiter U+000E; the text itself stays untouched, this marks the unit.
  const char16_t* FBumpedCR = nullptr;
};

// The cursor over a token array.
struct TCSSTokenSequence {
  int32_t Index = 0;
  PCSSTokens FPTokens = nullptr;
  std::shared_ptr<TCSSTokens> FOwnTokens; // keeps a stored array alive
  int32_t Count = 0;
  PCSSToken T = nullptr; // the current token, null past the end
  bool Eof = true;

  // Over an array the caller keeps alive.
  void Init(PCSSTokens Tokens);
  // Over an array this cursor keeps alive.
  void InitStore(std::shared_ptr<TCSSTokens> Tokens);
  // Index grows by Step; false, T null and Eof set once it passes the end.
  bool Next(int Step = 1);
  // The index of T; with T null the index of the last token.
  int Position() const;
  // Reads the colour at T into Color (0xAARRGGBB); see the .cpp for each kind.
  // A function's tokens are passed, T then standing on its ctClosePar.
  bool ReadColor(uint32_t& Color);
};

// All tokens of a text, spaces and comments included.
TCSSTokens CSSTokenize(const hstring& Text);

// A token's text folded to ASCII lower case.
hstring CSSLowerName(const TCSSToken& T);

} // namespace ht
