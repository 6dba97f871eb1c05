// THTMLTokenizer: cuts HTML or XML text into tokens in one pass.
//
// A tag is several tokens: htTagStart for '<', htIdent for the name (interned
// through the TagList dictionary), htSpace, htIdent/htEq/htString for
// attributes, htTagClose for '/', htTagEnd for '>'. Text between tags is one
// htString with entities decoded. Comments, CDATA, <!...> and <?...?> are one
// token each, and after the '>' of a <script> or <style> start tag (HTML mode)
// the whole body comes as one htScript or htStyle token. Nothing here fails on
// bad HTML; unterminated constructs run to the end of the text. THtmlParser
// (html_parser.h) assembles the tokens into items and is what most code uses:
//
//   ht::THTMLTokenizer t(u"<p class=x>a &amp; b</p>"_hs, false);
//   while (t.NextToken(true))
//     use(t.TokenType, t.Token, t.TokenStart, t.TokenEnd);
#pragma once

#include "htcore/document/string_parser.h"
#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/foundation/string_dictionary.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ht {

HT_ENUM(THTMLTokenType, htUnknown, htIdent, htSpace, htString, htTagStart, htTagEnd, htTagClose, htEq,
        htScript, htStyle, htComment, htDirective, htCData, htCustom);

// An interned name: the value is also the key in TagList and AttrList, so all
// occurrences of a name in one parse share one string.
class THtStringRec : public TObject {
public:
  THtStringRec() = default;
  explicit THtStringRec(const hstring& AValue) : Value(AValue) {}
  hstring Value;
};

// The dictionaries of interned names (TagList, AttrList); they own their records.
using THtStringRecDictionary = THtObjectDictionaryOf<THtStringRec, &THtStringRec::Value>;

// The interned string for p[0..Len); adds it when new. No allocation for a
// name already present.
const hstring& InternName(THtStringRecDictionary& Dict, const char16_t* p, int Len);
const hstring& InternName(THtStringRecDictionary& Dict, const hstring& Name);

class THTMLTokenizer {
public:
  THTMLTokenizer(const hstring& s, bool ACaseSensitive);

  TStringParser Parser;
  hstring CurrentTag; // last tag opened; cleared by any '/'
  bool InTag = false;
  bool CaseSensitive = false;
  THTMLTokenType TokenType = htUnknown;
  hstring Token;
  int TokenStart = 0; // 0-based unit offsets into the whole text
  int TokenEnd = 0;
  int Base = 0; // offset of Parser's text in the whole text, when that is decoded a window at a time
  bool Eof = false;
  bool XMLMode = false;
  THtStringRecDictionary* TagList = nullptr; // not owned; tag names are interned here when set

  // False at the end of the text. With AllowStrings false, stray quotes
  // inside a tag are skipped (attribute names).
  bool NextToken(bool AllowStrings);
  void Next2(THTMLTokenType AType) {
    TokenType = AType;
    Parser.Next();
  }
  // With the cursor behind '&': the code point of the reference, or '&' when
  // there is none (then nothing, or for an unknown name one unit, is consumed).
  uint32_t Escape();

  void ReadComment();
  void ReadCData();
  void ReadCustom();
  void ReadDirective();
  void ReadIdent();
  void ReadTag();
  void ReadScript();
  void ReadStyle();
  void ReadText();
  void ReadString();

  int Offset() const { return Base + static_cast<int>(Parser.p - Parser.Start()); }

private:
  // Text from b up to `stop` (not consumed) or the end, entities decoded.
  void ReadEncoded(const char16_t* b, char16_t stop);
  std::u16string_view ReadRawBlock(std::u16string_view close_tag);
  [[noreturn]] void InvalidTagName(char16_t c);

  std::u16string FBuffer; // reused for texts with entities
};

// Class of a unit: 1 name, 2 space, 3 quote, 4 '<', 5 '>', 6 '/', 7 '=',
// 0 other and everything from 256 up. Outside a tag only '<' has a class.
int HtmlCharClass(char16_t c, bool InTag);

} // namespace ht
