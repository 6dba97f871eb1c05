// THtXMLNode: the strict XML (and JSON) document tree.
//
// XML is read through the HTML reader in XML mode; JSON through the JSON
// tokenizer into the same node shape (objects give attributes for scalars and
// children for objects and arrays). A text that stands alone in an element is
// kept in the element's FContent rather than in a text child.
//
//   ht::THtXMLNode doc(u"<cfg><item id=\"1\">on</item></cfg>"_hs);
//   ht::THtXMLNode* item = doc.NodebyName(u"item"_hs);     // FContent "on"
//   doc.XPathSet(u"server/@port"_hs, u"80"_hs);            // creates <server port="80"/>
//   std::string xml = doc.UTF8Code(true).toUtf8();
//   doc.SetUTF8XML(xml);                                   // the same tree from the bytes
//
//   auto js = ht::THtXMLNode::CreatefromJSON(u"{\"a\":1,\"b\":[1,2]}"_hs);
//   js->GetAttribute(u"a"_hs);                              // "1"
//
// Reading and writing do not recurse per level, so any nesting depth that
// fits in memory is handled; JSON input is limited to 1024 levels. Faults
// raise EHtXML (XML), EHtJSONParserException (JSON) or EHtParserError (both
// readers' grammar errors).
#pragma once

#include "htcore/document/html_parser.h"
#include "htcore/document/json_parser.h"
#include "htcore/document/node.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/stream.h"
#include "htcore/foundation/string_list.h"

#include <memory>

namespace ht {

class EHtXML : public Exception {
public:
  using Exception::Exception;
};

class THtXMLNode : public THtNode {
  HT_NODE_CLASS(THtXMLNode)
public:
  bool IsArray = false;        // came from a JSON array and is written back as one
  bool FPreserveSpace = false; // the element has xml:space="preserve"

  THtXMLNode() = default;
  // Parses XML (see SetXML). Virtual calls do not reach a subclass from
  // here: a subclass constructor calls SetXML itself.
  explicit THtXMLNode(const hstring& XML);
  ~THtXMLNode() override;

  // Made with TagObject set before the parse.
  static std::unique_ptr<THtXMLNode> CreateWithTag(const hstring& XML, TObject* ATagObject);
  // A node with tag and content whose parent is AParent; it is not added to
  // the parent's children.
  static THtXMLNode* CreateFromName(const hstring& AName, const hstring& AValue, THtXMLNode* AParent);
  static std::unique_ptr<THtXMLNode> CreateFromStream(TStream& AStream, THtmlEncoding AEncoding = heDefault,
                                                      bool IsJSON = false);
  static std::unique_ptr<THtXMLNode> CreateFromFile(const hstring& FileName,
                                                    THtmlEncoding Encoding = heDefault);
  static std::unique_ptr<THtXMLNode> CreatefromJSON(const hstring& JSON);

  // Replaces children and attributes by the parse of XML; the stand-in for a
  // virtual constructor, used to copy nodes of a subclass.
  virtual void SetXML(const hstring& XML);
  // SetXML of the text UTF8 decodes to, read from the bytes without a
  // decoded copy of the whole text (a subclass gets its own SetXML).
  void SetUTF8XML(std::string_view UTF8);
  // Builds this node from the current item of HP (an element start) and the
  // items that follow, up to its end tag.
  virtual void Parse(THtmlParser& HP);
  // Fills this (new) node from a JSON text: see CreatefromJSON.
  void SetJSON(const hstring& JSON);
  // Builds this node from the current token of a JSON parser.
  void ParseJSON(THtJSONParser& HP);
  void LoadFromStream(TStream& AStream, THtmlEncoding AEncoding = heDefault, bool IsJSON = false);
  void LoadFromFile(const hstring& FileName, THtmlEncoding Encoding = heDefault);

  // Children of a subclass are of the subclass.
  THtNodeClass GetElementClass(const hstring& TagName, THtNode* ARoot) override;
  // XML attribute names keep their case.
  void CreateAttributes() override;

  // Tree operations. A '/' in a name of Add and GetCreateNode makes a chain.
  THtXMLNode* Add(const hstring& AName);
  THtXMLNode* AddNode(THtXMLNode* Node);
  THtXMLNode* InsertNode(int Index, THtXMLNode* Node);
  void Delete(int Index);
  // Takes a child out without freeing it; false when it is no child.
  bool Extract(THtXMLNode* Node);
  THtXMLNode* GetCreateNode(const hstring& NodeName);
  THtXMLNode* NodebyName(const hstring& NodeName) const {
    return static_cast<THtXMLNode*>(THtNode::NodebyName(NodeName));
  }
  // A child tagged NodeName or prefix:NodeName.
  THtXMLNode* NodebyNameNS(const hstring& NodeName) const;
  THtXMLNode* NodebyAttr(const hstring& AttrName, const hstring& AttrValue) const {
    return static_cast<THtXMLNode*>(THtNode::NodebyAttr(AttrName, AttrValue));
  }
  hstring SafeNodeValue(const hstring& NodeName) const;
  THtXMLNode* GetNode(int Index) const { return static_cast<THtXMLNode*>(THtNode::GetNode(Index)); }
  hstring GetNode1(const hstring& Name) const { return SafeNodeValue(Name); }
  void SetNode(const hstring& Name, const hstring& Value) { GetCreateNode(Name)->SetValue(Value); }

  // FContent, and for an element the text of all text children behind it.
  hstring GetValue() const;
  void SetValue(const hstring& Value);
  bool GetHasChildNodes() const noexcept { return GetCount() > 0; }
  // No children but text.
  bool GetIsTextElement() const;
  hstring GetLocalName() const;
  hstring GetPrefix() const;

  void SetorRemoveAttribute(const hstring& AttrName, const hstring& AttrValue);
  void LowerAttributes();
  void CopyAttributesFrom(const THtXMLNode* XN);
  // Clears this node, then copies attributes, children (written and parsed
  // again with each child's class) and tag; FContent is not copied.
  void Assign(const THtXMLNode* Source);
  // Deep copy: tag, attributes, content, flags and children.
  THtXMLNode* Clone() const;
  // Cuts the prefix of the tags of all descendants; this node keeps its own.
  void RemoveNamespaces();
  void SortbyAttr(const hstring& AttrName, bool Asc = true);
  // Sets a value at a path, creating missing elements on the way:
  // "a/b/@x", "a/b[@id='2']/c", "//item[0]".
  void XPathSet(const hstring& APath, const hstring& AValue);

  // Processing instructions: the <?...?> texts before the root element.
  const TStringList* ProcessingInstructions() const noexcept { return FProcessingInstructions.get(); }
  void AddProcessingInstruction(const hstring& PI);
  hstring GetPIAttribute(const hstring& PIName, const hstring& AttrName) const;

  // Writers.
  hstring Code() const;
  hstring FormattedCode() const;
  hstring InnerCode() const;
  RawByteString UTF8Code(bool AddHeader = false) const;
  RawByteString UTF8FormattedCode(bool AddHeader = false) const;
  hstring JSON() const;
  void FastCode(TFastString& FS) const;
  void FastFormatCode(TFastString& FS, int Level = 0) const;
  void FastUTF8Code(TFastRawString& FS) const;
  void FastUTF8FormatCode(TFastRawString& FS, int Level = 0) const;
  void FastJSON(TFastString& FS) const;
  void SaveToFileANSI(const hstring& FileName) const;
  void SaveToFileUTF8(const hstring& FileName) const;
  void SaveToFileUTF8Format(const hstring& FileName) const;

private:
  void ClearNode();
  // The direct reader, of XML or else of the bytes UTF8; false when it gave
  // up, with this node as before.
  bool ReadDirect(const hstring* XML, std::string_view UTF8);
  // A node of the class ARoot chooses for ATag; NewChild also appends it.
  static THtXMLNode* MakeNode(THtNode* ARoot, const hstring& ATag);
  THtXMLNode* NewChild(THtNode* ARoot, const hstring& ATag);

  std::unique_ptr<TStringList> FProcessingInstructions;
};

// Reads a whole stream as text: a UTF-8 or UTF-16 byte-order mark, AEncoding,
// or a guess between UTF-8 and the system code page decides.
hstring StreamtoText(TStream& AStream, THtmlEncoding AEncoding = heDefault);

// XML text encoding; a text that needs none is returned shared. NewLength is
// the known overhead, or -1 to compute it.
hstring XMLEncode(const hstring& s, int NewLength = -1);
// The string escapes of the JSON writer. LF is written as \r and CR as \n;
// the swap is intended and kept.
hstring JSONEncode(const hstring& s);

} // namespace ht
