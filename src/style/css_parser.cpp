#include "htcore/foundation/exception.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

#include <cmath>

namespace ht {

TCSSParser::TCSSParser(const hstring& Text, bool ParseNumbers) : Tokenizer(Text, ParseNumbers) {
  MediaNames.push_back(u"default"_hs);
  FMediaNameSet.insert(MediaNames[0]);
}

TCSSParser::~TCSSParser() = default;

bool TCSSParser::next() {
  Tokenizer.NextToken();
  return !Tokenizer.Eof;
}

bool TCSSParser::NextSection() {
  Section = std::make_unique<TCSSSection>();
  if (!next())
    return false;
  Section->BlockStartPos = tok().StartPos;
  while (!eof()) {
    switch (tok().CType) {
    case ctIdent:
    case ctHash:
    case ctNumber:
    case ctPercentage:
    case ctDimension:
    case ctFunction:
    case ctColon:
    case ctOpenBr:
    case ctSlash:
      AddSelector();
      continue;
    case ctAtKeyword:
      AddAtKeyword();
      continue;
    case ctBlockStart:
      break;
    case ctBlockEnd:
      // The end of an @media or @keyframes block.
      if (MediaSet && MediaSet->Media == 0)
        MediaSet->Media = 1u << cmAll;
      MediaSet = nullptr;
      KeyFrameName.clear();
      next();
      continue;
    case ctDelimiter:
      if (tok().Name == u"*" || tok().Name == u".")
        AddSelector();
      else
        next();
      continue;
    case ctComment:
    case ctComma:
    case ctSpace:
      next();
      continue;
    case ctString:
    case ctURI:
    case ctCDO:
    case ctCDC:
    case ctSemicolon:
    case ctOpenPar:
    case ctClosePar:
    case ctCloseBr:
      SkipSection();
      continue;
    default:
      throw ECSSParserError(u"Unknown token type");
    }
    break;
  }
  bool block = !eof() && tok().CType == ctBlockStart;
  if (block)
    ReadSectionValues();
  Section->BlockEndPos = tok().EndPos;
  Section->MediaSet = MediaSet ? MediaSet : CSSDefaultMediaSet();
  Section->Compile();
  return !(eof() && !block && Section->Selectors.Count() == 0 && Section->Values.empty());
}

void TCSSParser::ReadSectionValues() {
  FValueIndex.clear();
  FDropped = false;
  read_values();
  drop_overridden();
}

void TCSSParser::read_values() {
  next();
  while (!eof()) {
    switch (tok().CType) {
    case ctIdent:
      AddValue();
      continue;
    case ctBlockEnd:
    case ctCDC:
      return;
    case ctCDO:
    case ctComment:
    case ctSemicolon:
    case ctSlash:
    case ctSpace:
      next();
      continue;
    case ctDelimiter:
      // "*zoom: 1" and its kin stay out; a stray '+' passes.
      if (tok().Name == u"*")
        SkipValue();
      else
        next();
      continue;
    default:
      SkipValue();
      continue;
    }
  }
}

void TCSSParser::SkipSection() {
  while (!eof() && tok().CType != ctBlockEnd)
    next();
  if (!eof())
    next();
}

void TCSSParser::SkipValue() {
  while (!eof() && tok().CType != ctSemicolon && tok().CType != ctBlockEnd)
    next();
  if (!eof() && tok().CType == ctSemicolon)
    next();
}

void TCSSParser::AddSelector() {
  FList.clear();
  while (!eof() && tok().CType != ctBlockStart && tok().CType != ctComma) {
    switch (tok().CType) {
    case ctUnknown:
    case ctComment:
    case ctSlash:
      break;
    case ctBlockEnd:
    case ctURI:
    case ctCDO:
    case ctCDC:
    case ctSemicolon:
      SkipSection();
      return;
    default:
      FList.push_back(std::move(Tokenizer.Token)); // the next token overwrites it anyway
    }
    next();
  }
  if (TCSSSelector* s = TCSSSelector::FromTokens(FList))
    Section->AddSelector(s);
}

void TCSSParser::AddValue() {
  TCSSValue v;
  v.NameToken = tok();
  next();
  while (!eof() && (tok().CType == ctSpace || tok().CType == ctComment))
    next();
  if (eof() || tok().CType != ctColon)
    return; // the loop above takes the current token
  while (next()) {
    TCSSTokenType t = tok().CType;
    if (t == ctBlockEnd || t == ctCDO || t == ctSemicolon)
      break;
    if (t == ctSpace || t == ctComment)
      continue;
    if (t == ctAtKeyword || t == ctBlockStart || t == ctCDC) {
      SkipValue();
      return;
    }
    if (t == ctDelimiter && tok().Name == u"!") {
      // "! important" with blanks is read as "!important" too.
      while (next() && (tok().CType == ctSpace || tok().CType == ctComment)) {
      }
      if (eof())
        break;
      if (tok().CType == ctIdent && SameText(tok().Name, u"important")) {
        v.Important = true;
        continue;
      }
      if (tok().CType == ctBlockEnd || tok().CType == ctSemicolon)
        break;
    }
    v.Tokens.push_back(std::move(Tokenizer.Token));
  }
  if (v.Tokens.empty())
    return;
  v.Name = v.NameToken.Name;
  v.Section = Section.get();
  Section->Values.push_back(std::move(v));
  TCSSValue& added = Section->Values.back();
  if (!PrepareValue(added, Section.get())) {
    Section->Values.pop_back();
    return;
  }
  // The last valid declaration of a name wins, !important or not. The loser
  // is only marked here and dropped when the block ends.
  auto [it, fresh] = FValueIndex.try_emplace(added.Name, Section->Values.size() - 1);
  if (!fresh) {
    Section->Values[it->second].Name.clear();
    it->second = Section->Values.size() - 1;
    FDropped = true;
  }
}

void TCSSParser::drop_overridden() {
  if (FDropped)
    std::erase_if(Section->Values, [](const TCSSValue& v) { return v.Name.empty(); });
  FDropped = false;
  FValueIndex.clear();
}

void TCSSParser::AddImport() {
  bool first = true;
  while (next() && tok().CType != ctSemicolon && tok().CType != ctBlockStart) {
    TCSSTokenType t = tok().CType;
    if (t == ctSpace || t == ctComment)
      continue;
    if (first || t == ctIdent || t == ctString || t == ctFunction)
      Imports.push_back(tok().Name);
    first = false;
  }
  if (!eof() && tok().CType == ctSemicolon)
    next();
}

void TCSSParser::AddAtKeyword() {
  hstring name = CSSLowerName(tok());
  if (name == u"@charset") {
    while (next() && tok().CType != ctSemicolon) {
    }
    next();
  } else if (name == u"@font-face" || name == u"@page") {
    if (name == u"@font-face")
      Section->FontFace = true;
    AddSelector();
  } else if (name == u"@import") {
    AddImport();
  } else if (name == u"@keyframes" || name == u"@-webkit-keyframes" || name == u"@-moz-keyframes") {
    read_keyframes();
  } else if (name == u"@media") {
    read_media();
  } else {
    // The skip ends at the first '}': a nested block is not skipped whole.
    SkipSection();
  }
}

void TCSSParser::read_keyframes() {
  hstring last;
  while (next() && tok().CType != ctBlockStart && tok().CType != ctSemicolon)
    if (tok().CType == ctIdent || tok().CType == ctString)
      last = tok().Name;
  if (eof())
    return;
  if (tok().CType == ctSemicolon) {
    next();
    return;
  }
  KeyFrameName = last.empty() ? hstring(u"-") : last;
  next();
}

void TCSSParser::read_media() {
  auto set = std::make_unique<TCSSMediaSet>();
  std::u16string running;
  hstring feature;
  int64_t value = 0;
  bool in_feature = false;
  auto store = [&] {
    if (!in_feature)
      return;
    if (feature == u"min-width")
      set->MinWidth = value;
    else if (feature == u"max-width")
      set->MaxWidth = value;
    else if (feature == u"min-device-width")
      set->MinDeviceWidth = value;
    else if (feature == u"max-device-width")
      set->MaxDeviceWidth = value;
    in_feature = false;
  };
  while (next()) {
    const TCSSToken& t = tok();
    if (t.CType == ctBlockStart || t.CType == ctSemicolon)
      break;
    if (t.CType != ctSpace || !set->Tokens.empty())
      set->Tokens.push_back(t);
    if (t.CType == ctOpenPar) {
      store();
      while (next() && (tok().CType == ctSpace || tok().CType == ctComment))
        set->Tokens.push_back(tok());
      if (eof())
        break;
      set->Tokens.push_back(tok());
      feature = CSSLowerName(tok());
      value = 0;
      in_feature = true;
      while (next() && tok().CType != ctColon && tok().CType != ctClosePar && tok().CType != ctBlockStart &&
             tok().CType != ctSemicolon)
        set->Tokens.push_back(tok());
      if (eof() || tok().CType == ctBlockStart || tok().CType == ctSemicolon)
        break;
      set->Tokens.push_back(tok());
      if (tok().CType == ctColon) {
        while (next() && (tok().CType == ctSpace || tok().CType == ctComment))
          set->Tokens.push_back(tok());
        if (eof())
          break;
        if (tok().CType == ctNumber || tok().CType == ctDimension)
          value = std::llround(tok().AsFloat);
        if (tok().CType == ctBlockStart || tok().CType == ctSemicolon)
          break;
        set->Tokens.push_back(tok());
        while (next() && tok().CType != ctClosePar && tok().CType != ctBlockStart &&
               tok().CType != ctSemicolon)
          set->Tokens.push_back(tok());
        if (eof() || tok().CType != ctClosePar)
          break;
        set->Tokens.push_back(tok());
      }
      store();
      continue;
    }
    if (t.CType == ctSpace || t.CType == ctComment || t.CType == ctComma)
      continue;
    if (SameText(t.Name, u"only") || SameText(t.Name, u"and"))
      continue;
    running += u' ';
    running += t.Name.view();
    int m;
    if (t.CType == ctIdent && IsEnum2(u"cm", t.Name.view(), TypeInfo<TCSSMedia>(), m) && m < 16)
      set->Media |= static_cast<uint16_t>(1u << m);
  }
  store();
  while (!set->Tokens.empty() && set->Tokens.back().CType == ctSpace)
    set->Tokens.pop_back();
  set->HasSizeQuery = set->MinWidth || set->MaxWidth || set->MinDeviceWidth || set->MaxDeviceWidth;
  hstring name = Trim(hstring(running.data(), running.size()));
  if (FMediaNameSet.insert(name).second)
    MediaNames.push_back(name);
  if (set->Media == 0 && !name.empty())
    set->Media = 1u << cmUnknown;
  bool block = !eof() && tok().CType == ctBlockStart;
  MediaSet = set.get();
  MediaSets.push_back(std::move(set));
  if (block)
    next();
  else
    MediaSet = nullptr; // "@media x;" opens nothing
}

} // namespace ht
