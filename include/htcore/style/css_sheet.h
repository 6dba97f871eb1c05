// Style sheets: CSS text to sections of compiled, indexed rules.
//
// TCSSParser reads one rule at a time into a TCSSSection; TCSSStyleSheet owns
// the sections, files their selectors in its maps (Main, Before, After,
// Marker), and keeps what the at-rules declared: media sets, imports, custom
// fonts, key frames and sheet variables. A section keeps the declarations as
// written (Values) and their expansion into longhands (CompiledValues); only
// the latter takes part in the cascade. Nothing in a sheet raises: what is not
// understood is skipped.
//
//   ht::TCSSStyleSheet sheet;
//   sheet.Parse(u"@media print { a { color: red } } p { margin: 1px 2px }"_hs);
//   sheet.AsString();                 // the sheet written back
//   sheet.TestMediaSets(ht::cmScreen, 1024, 0);   // disables the print rule
//   ht::hstring dark = ht::TCSSStyleSheet::LighttoDark(u"body { color: #111 }"_hs);
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/id_list.h"
#include "htcore/foundation/object.h"
#include "htcore/graphics/font_style.h"
#include "htcore/style/css_properties.h"
#include "htcore/style/css_selector.h"
#include "htcore/style/css_style_maps.h"
#include "htcore/style/css_tokenizer.h"
#include "htcore/style/measure.h"

#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ht {

class TStringList;
class TCSSSection;
class TCSSWeightList;

// Guards of the sheet parser; CSS text cannot raise them.
class ECSSParserError : public Exception {
public:
  using Exception::Exception;
};

// An index outside a list a caller walks ("Font index out of range").
class ERangeError : public Exception {
public:
  using Exception::Exception;
};
class TCSSStyleSheet;

// Which routine of the element style applies a value at cascade time.
HT_ENUM(TCSSApplyKind, cakNone, cakGeneral, cakBackground, cakDisplay, cakFontWeight, cakWhiteSpace);

// One declaration.
struct TCSSValue {
  hstring Name;                      // lower case
  const TCSSPropRec* Prop = nullptr; // the row "unknown" when the name is not in the table
  TCSSToken NameToken;
  TCSSTokens Tokens; // no spaces, comments or !important
  bool Important = false;
  bool Vendor = false;    // the name begins with '-'
  bool IsInherit = false; // the first token is "inherit"
  TCSSApplyKind Apply = cakNone;
  TMeasure2 Measure; // cptLength: the decoded first and second measure
  TCSSSection* Section = nullptr;

  // XOR of the CRC-32 of each token's text.
  uint32_t Hash() const;
  // The first token's payload slot.
  uint32_t Slot() const { return Tokens.empty() ? 0 : Tokens[0].Color; }
};
using TCSSValues = std::vector<TCSSValue>;

HT_ENUM(TCSSMedia, cmAll, cmAural, cmBraille, cmHandheld, cmPrint, cmProjection, cmScreen, cmTV, cmUnknown);

class TCSSMediaSet : public TObject {
public:
  uint16_t Media = 0;                                                         // bit n: TCSSMedia n
  int64_t MinWidth = 0, MaxWidth = 0, MinDeviceWidth = 0, MaxDeviceWidth = 0; // 0: not given
  bool HasSizeQuery = false;
  bool Disabled = false;
  TCSSTokens Tokens; // the query as read, without '{' and ';'

  bool Has(TCSSMedia M) const { return Media & (1u << M); }
  hstring AsString() const;
};

// Whether a set applies to a medium and a viewport (DeviceWidth 0: Width).
bool CheckMedia(const TCSSMediaSet& Set, TCSSMedia Media, int64_t Width, int64_t DeviceWidth);

class TCSSSection : public TObject {
public:
  TCSSSection() : Selectors(true) {}

  std::vector<std::unique_ptr<TCSSCalcValueObject>> FCalcValues; // keeps calc() token arrays alive
  TCSSSelectors Selectors;                                       // owning
  TCSSValues Values;
  TCSSValues CompiledValues;
  int32_t BlockStartPos = 0;
  int32_t BlockEndPos = 0;
  bool Custom = false;
  bool FontFace = false;
  TCSSMediaSet* MediaSet = nullptr; // the sheet's, or the permanent empty set
  hstring URL;

  void AddSelector(TCSSSelector* S);
  // Parses "name: value" and adds it as a declaration of this section.
  void AddValue(const hstring& Name, const hstring& Value);
  void DeleteValue(int Index);
  // Rebuilds CompiledValues from Values, expanding shorthands.
  void Compile();
  TCSSValue* ValuebyName(const hstring& Name);
  TCSSValue* CompiledValuebyName(const hstring& Name);
  TCSSValue* ItembyName(const hstring& Name) { return ValuebyName(Name); }
  hstring AsString() const;
  hstring AsInlineString() const;
  void Minify();
};

// The media set of every section outside @media; never tested, never disabled.
TCSSMediaSet* CSSDefaultMediaSet();

class TCSSCustomFont : public TObject {
public:
  TCSSCustomFont(const hstring& AFamily, const hstring& AURL, const hstring& AStyle, const hstring& AWeight,
                 const hstring& ALocal);
  hstring Family; // lower case
  hstring URL;
  hstring Spare;
  hstring Style;
  hstring Weight;
  hstring Local; // names of local() sources joined by ';'
  THtFontStyles FontStyles = 0;
  TCSSFontStyle CSSFontStyle = cfsNormal;
  TCSSFontWeight CSSFontWeight = fwNormal;
  int NumWeight = 400;
};

class TCSSCustomFontFamily : public TObject {
public:
  explicit TCSSCustomFontFamily(const hstring& AName) : Name(AName) {}
  hstring Name;
  std::vector<std::unique_ptr<TCSSCustomFont>> Fonts;

  TCSSCustomFont* GetFont(THtFontStyles Styles) const;
  // Raises ERangeError "Font index out of range".
  TCSSCustomFont* GetFontByIndex(int Index) const;
};

// Splits a weight word off a family name: "Open Sans Bold" gives "open sans" and "bold".
void ParseFontFamilyName(const hstring& Name, hstring& Family, hstring& Weight);

// Percent of a key frame to its section (not owned: the sheet owns sections).
class TCSSKeyFrameList : public TIDList {
public:
  TCSSKeyFrameList() { SetSorted(true); }
  TCSSSection* FindSection(int Percent) const;
};

class TCSSKeyFrameMap {
public:
  std::map<hstring, std::shared_ptr<TCSSKeyFrameList>> Lists;
  TCSSKeyFrameList* Get(const hstring& Name) const;
  TCSSKeyFrameList* GetOrAdd(const hstring& Name);
};

struct TCSSVariable {
  hstring Name; // without the leading "--"
  TCSSTokens Tokens;
};

class TCSSParser;

class TCSSStyleSheet : public TObject {
public:
  TCSSStyleSheet();
  ~TCSSStyleSheet() override;
  TCSSStyleSheet(const TCSSStyleSheet&) = delete;
  TCSSStyleSheet& operator=(const TCSSStyleSheet&) = delete;

  std::vector<std::unique_ptr<TCSSSection>> fSections;
  std::vector<std::unique_ptr<TCSSMediaSet>> FOwnMediaSets;
  hstring Key;
  TCSSStyleMaps Main;
  std::unique_ptr<TCSSStyleMaps> Before, After, Marker;
  TCSSKeyFrameMap KeyFrames;
  std::vector<hstring> FImports;
  std::map<hstring, std::unique_ptr<TCSSCustomFontFamily>> CustomFonts; // lower-case family
  bool HasMediaQueries = false;
  bool HasMediaSizeQueries = false;
  bool HasSizeQuery = false;
  int RefCounter = 0;
  int SelectorCounter = 10000;
  hstring URL;
  std::vector<TCSSMediaSet*> MediaSets; // not owned
  std::unordered_map<hstring, TCSSVariable> Variables;

  // Weight -1: each selector's specificity; any other value: that weight for all.
  void Parse(const hstring& Text, int Weight = -1, bool Custom = false);
  // A bare declaration list, as in a style attribute, as one section "*".
  void ParseValues(const hstring& Text, int Weight = -1);
  // Files a selector in the map group its pseudo-element chooses.
  void AddSelector(TCSSSelector* S);
  void AddVariable(const hstring& Name, const TCSSTokens& Tokens);
  void AddInlineValue(const hstring& Name, const hstring& Value);
  void Clear();
  void ClearProp(const hstring& Name);
  void ClearSection(const hstring& SelectorText);
  const std::vector<hstring>& Imports() const { return FImports; }
  hstring AsString() const;
  // Compact: no line ends or indentation.
  hstring Write(bool Compact) const;
  hstring AsInlineString() const;
  void Minify();
  const TCSSTokens* ValuebyName(const hstring& Name) const;
  void GetAllClasses(TStringList& List) const;
  void GetAllIds(TStringList& List) const;
  // Sets each media set's Disabled; true when a flag changed.
  bool TestMediaSets(TCSSMedia Media, int64_t Width, int64_t DeviceWidth);
  // Adds the compiled values of a key frame's section to List (weight 0xFF000000, order 0).
  void GetAnimationSelectors(const hstring& Name, int Step,
                             std::vector<std::pair<uint32_t, const TCSSValue*>>& List) const;
  void GetAnimationSteps(const hstring& Name, std::vector<int>& Steps) const;
  void ConvertLighttoDark();
  static hstring LighttoDark(const hstring& Text);
  static bool TestElement(const TCSSElement* Node, const TCSSSelector* Selector, TCSSPseudoClasses Required) {
    return TestSelector(Node, Selector, Required);
  }

  // The map group of a pseudo-element pass.
  TCSSStyleMaps* Maps(TCSSPseudoClass Pseudo) const;

  // The cascade (css_cascade.h). Adds the compiled values of every rule of
  // Maps (Main, or the group of a pseudo-element; null adds nothing) that
  // matches Node with Required among its pseudo-classes.
  void GetElementSelectors(const TCSSElement* Node, TCSSWeightList& List, const TCSSStyleMaps* Maps,
                           TCSSPseudoClasses Required) const;
  // Adds to Set those of pcBefore, pcAfter, pcMarker with a candidate rule for
  // Node; coarse: ancestors and siblings are not looked at.
  void GetElementPseudoClasses(const TCSSElement* Node, TCSSPseudoClasses& Set) const;
  // Adds the values of the first universal rule without a test: the way of an
  // element's own sheet.
  void GetAllSelectors(TCSSWeightList& List) const;

  // Key-frame sections in source order with their animation names (owned by fSections).
  std::vector<std::pair<hstring, TCSSSection*>> FKeyFrameSections;

private:
  void TakeSection(std::unique_ptr<TCSSSection> S, int Weight, bool Custom, const hstring& KeyFrame);
  void ExtractFontFace(const TCSSSection& S);
};

class TCSSParser {
public:
  TCSSParser(const hstring& Text, bool ParseNumbers);
  TCSSParser(const TCSSParser&) = delete;
  TCSSParser& operator=(const TCSSParser&) = delete;
  ~TCSSParser();

  // Reads the next rule into Section; false at the end of input with nothing read.
  bool NextSection();
  void ReadSectionValues();
  void AddAtKeyword();
  void AddSelector();
  void AddValue();
  void AddImport();
  void SkipSection();
  void SkipValue();
  // Decodes a declaration; false when its value is invalid.
  static bool PrepareValue(TCSSValue& Value, TCSSSection* Section);

  TCSSTokenizer Tokenizer;
  std::unique_ptr<TCSSSection> Section; // the rule just read; the caller takes it
  TCSSMediaSet* MediaSet = nullptr;     // the current @media set
  hstring KeyFrameName;
  std::vector<hstring> Imports;
  std::vector<hstring> MediaNames; // first entry "default"
  std::vector<std::unique_ptr<TCSSMediaSet>> MediaSets;

private:
  bool next();
  const TCSSToken& tok() const { return Tokenizer.Token; }
  bool eof() const { return Tokenizer.Eof; }
  void read_media();
  void read_keyframes();
  void read_values();
  void drop_overridden();
  TCSSTokens FList;
  std::unordered_map<hstring, size_t> FValueIndex; // name to its value in the section being read
  bool FDropped = false;
  std::unordered_set<hstring> FMediaNameSet;
};

// An extension: a sheet that joins a document sheet when a key class is present.
class TCSSExtension : public TObject {
public:
  std::vector<hstring> KeyClasses;
  std::unique_ptr<TCSSStyleSheet> CSS;

  static void RegisterExtension(const std::vector<hstring>& KeyClasses, const hstring& Text);
  // The extensions one of whose key classes is among Names (each once).
  static void AddExtensions(const std::vector<hstring>& Names, std::vector<TCSSStyleSheet*>& Sheets);
  static void ClearExtensions();
};

// "name:value;" as the writers print a declaration.
hstring CSSValuetoString(const TCSSValue& Value);

// The user-agent sheet, built on first use; and the quirks-mode additions.
TCSSStyleSheet* HTML4StyleSheet();
TCSSStyleSheet* HTML4QuirkStyleSheet();

} // namespace ht
