// THtmlParser: the forgiving HTML (and strict-ish XML) item reader.
//
// Each NextItem delivers one item: an element tag with its attributes
// (TagType htIdent, Tag interned and lower case unless case-sensitive,
// IsCloseTag for </name>, TagClosed for <name/>), a text run (htString, Value),
// or a block (htComment, htScript, htStyle, htCData, htDirective, htCustom,
// Value). It also acts on <meta> charset declarations, re-decoding the rest of
// the source in the middle of a parse. HTML mode never raises; XML mode raises
// EHtParserError for a bad tag start and for an unquoted attribute value.
//
//   ht::THtmlParser hp(u"<p class=x>Hi<br/>"_hs);
//   while (hp.NextItem()) {
//     if (hp.TagType == ht::htIdent && !hp.IsCloseTag) open(hp.Tag, hp.Attributes.get());
//     else if (hp.TagType == ht::htString) text(hp.Value);
//   }
//
// Driving it from a tree builder: NextItem returns false once the input is
// exhausted (an item still being read at that point is not delivered). Set
// RepeatCurrent to have the next NextItem return the same item again. A node
// takes over the item's attributes with `node.FAttributes = hp.Attributes.release()`
// (the parser makes a fresh set for the next item that has attributes). Root
// and GlobalRoot are set by the builder; when a meta charset changes the
// encoding, the nodes built so far under Root are recoded. IncorrectStack and
// FStackLevel belong to the builder.
//
// From UTF-8 bytes (HTML mode, meta charsets ignored), the text is decoded a
// window at a time instead of whole; items, offsets and repairs are those of
// the parser over the decoded text:
//
//   ht::THtmlParser hp(std::string_view(bytes.data(), bytes.size()));
#pragma once

#include "htcore/document/attributes.h"
#include "htcore/document/html_tokenizer.h"
#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object_list.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

namespace ht {

HT_ENUM(THtmlEncoding, heDefault, heUTF8, heUTF16, heANSI);

class THtmlNode;

class THtmlParser {
public:
  explicit THtmlParser(const hstring& s, bool AXMLMode = false);
  // HTML from UTF-8 bytes without a byte order mark; the bytes must outlive the
  // parser. WindowBytes is how much is decoded at a time (any size gives the
  // same items; tests use tiny ones).
  explicit THtmlParser(std::string_view Utf8, size_t WindowBytes = 64 * 1024);
  ~THtmlParser();
  THtmlParser(const THtmlParser&) = delete;
  THtmlParser& operator=(const THtmlParser&) = delete;

  hstring FAttrname, FAttrvalue;
  THTMLTokenizer Tokenizer;
  bool FXMLMode;
  bool FEncodingProcessed = false; // a meta charset declaration was acted upon
  int FStackLevel = 0;
  bool FCaseSensitive; // starts as AXMLMode
  THTMLTokenType TagType = htUnknown;
  hstring Tag;
  hstring Value;
  bool TagClosed = false;
  bool IsCloseTag = false;
  bool RepeatCurrent = false;
  // Created at the first attribute; cleared, not freed, at each item.
  std::unique_ptr<THtAttributes> Attributes;
  THtmlNode* Root = nullptr;
  THtmlNode* GlobalRoot = nullptr;
  THtmlEncoding Encoding = heDefault;
  uint32_t Codepage = 0;                // goes with heANSI
  int StartPos = 0;                     // offset of the current item in the current text
  THtStringRecDictionary TagList{255};  // interned tag names
  THtStringRecDictionary AttrList{511}; // interned attribute names
  THtObjectList IncorrectStack{false};  // for the tree builder; does not own its nodes
  // For the tree builder: its open elements counted by a hash of their tag,
  // so that a close tag of a name that is not open needs no walk up the tree.
  std::array<int, 256> OpenTags{};
  bool IgnoreMetaEncoding = false;

  bool NextItem();
  void ChangeEncoding(THtmlEncoding NewEncoding, uint32_t NewCodePage);
  // Lower-cases A..Z unless FCaseSensitive (copies only when a capital is found).
  void vLower(hstring& s) const;
  void SetCaseSensitive(bool v);

  static THtmlEncoding GetFileEncoding(const hstring& AFileName, uint32_t& ACodePage);
  static int CharsettoCodepage(const hstring& ACharset);

private:
  THtAttributeBatch FTagAttributes; // the current tag's, into Attributes at its end
  std::string_view FRest;           // UTF-8 bytes not decoded yet
  size_t FWindowBytes = 0;

  bool ReadItem();
  bool ReadItemInWindow();
  void Refill(size_t Bytes);
  void ReadAttribute();
  void ApplyMetaCharset();
  [[noreturn]] void ValueExpected();
};

// Code page of the meta charset in the first bytes of an HTML file, or 0.
int GetHTMLEncoding(const void* p, int Len);
// True when at least one multi-byte UTF-8 sequence is seen and none is wrong.
// IsUTF8 narrows the NUL-terminated text by the system code page first.
bool IsUTF8(const char16_t* p);
bool IsUTF8Bytes(const void* p, int Len);

} // namespace ht
