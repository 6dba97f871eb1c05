// THtmlNode: the HTML node, with the forgiving tree builder and the hooks
// that styled nodes and host classes override.
//
//   ht::THtmlNode doc;
//   doc.Parse(u"<p>a<p>b<table><td>x</table>");   // never fails; repairs nesting
//   ht::THtNode* td = doc.FindNode(u"td");         // table > tr > td
//   doc.ParseBytes(bytes.data(), bytes.size());    // BOM, meta charset, UTF-8 or system code page
//
// Parse builds one activation of InternalParse per open element; deeper than
// 256 levels, new elements are attached higher up instead. Every node is made
// with the class that the tree's root chooses in GetElementClass.
//
// Note for derived classes: overriding one overload of ParseAttributes hides
// the other, so add `using THtmlNode::ParseAttributes;` where both are wanted.
#pragma once

#include "htcore/document/html_parser.h"
#include "htcore/document/node.h"

#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace ht {

class TFastString;

class THtmlNode : public THtNode {
  HT_NODE_CLASS(THtmlNode)

public:
  THtmlNode() = default;
  // Sets the tag and, for a non-empty one, TagType htIdent.
  explicit THtmlNode(const hstring& ATag);

  // Tree construction hooks.
  // Null when the element ended normally; otherwise the open ancestor that has
  // to be closed, the current item then being offered again to its parent.
  virtual THtNode* InternalParse(THtmlParser& HP);
  virtual void AfterParse();
  // Serialisation.
  virtual hstring GetInnerHTML();
  virtual void SetInnerHTML(const hstring& Value);
  virtual hstring GetOuterHTML();
  virtual void SetOuterHTML(const hstring& Value);
  virtual void SetStyleClass(const hstring& Value);
  // Implied end tags: the open ancestor to close before ATag can be taken, or null.
  virtual THtNode* CheckTagOrder(const hstring& ATag, THtNode* Limit);
  virtual void SetSelfStyle(const hstring& Value);
  virtual hstring GetInnerText();
  virtual void SetInnerText(const hstring& Value);
  virtual hstring GetRawInnerText();
  virtual bool QuirksMode();
  virtual void Parse(const hstring& HTML, bool AIgnoreMetaEncoding = false);
  // Writes this node with its subtree (the outer form, despite the name).
  virtual void FastInnerHTML(TFastString& FS);
  virtual void FastInnerText(TFastString& FS);
  virtual void FastFormattedHTML(TFastString& FS, int Level, int Spaces, bool& AfterBlock);
  // Takes over the parser's attribute object for the current item.
  virtual void ParseAttributes(THtmlParser& HP);
  virtual void MoveChildrentoParent(bool ABefore);
  // Parses HTML and appends the nodes as children; returns the first or null.
  virtual THtmlNode* AddHTML(const hstring& HTML);
  virtual void CSS(const hstring& Text);
  virtual void AddClass(const hstring& CSSClass);
  virtual void RemoveClass(const hstring& CSSClass);
  virtual bool HasClass(const hstring& CSSClass);
  // The computed value of a CSS property in CSS text ("rgb(255, 0, 0)",
  // "12px"); empty here: styled nodes answer it once their style is known.
  virtual hstring ComputedCSS(const hstring& Name);

  // Parses HTML into a temporary tree and returns its GetInnerText.
  static hstring HTMLtoText(const hstring& HTML);

  // Parses attribute text such as `a="1" b` into this node's attributes.
  void ParseAttributes(const hstring& s);
  // Decodes bytes of unknown encoding, then parses: a byte-order mark, a meta
  // charset in the first kilobyte, valid UTF-8, else the system code page.
  void ParseBytes(const void* Data, size_t Len);
  // Recodes the texts of this subtree after an encoding declaration: each
  // text is narrowed by the system code page and decoded as UTF-8 (heUTF8)
  // or in Codepage (heANSI). Other encodings leave the texts alone.
  void ChangeEncoding(THtmlEncoding NewEncoding, uint32_t Codepage);

  hstring GetId() const { return GetAttribute(u"id"); }
  void SetId(const hstring& Value) { SetAttribute(u"id", Value); }
  hstring GetSelfStyle() const { return GetAttribute(u"style"); }
  hstring GetStyleClassStr() const { return GetAttribute(u"class"); }
  void ToggleClass(const hstring& CSSClass);
  // Numbers the elements of this subtree in document order into "_id".
  void EnumerateElements();
  // Moves the child NewNode to the index of the child OldNode.
  void MoveNode(THtNode* OldNode, THtNode* NewNode);
  // Moves all children except E itself into E's list from Index on (-1: at the end).
  void MoveChildrento(THtNode* E, int Index);

  // The two walks of the implied-end rules. FloatUpTo answers the open child
  // of the nearest Tags element on the way up (null if this node is one);
  // FloatUpOver answers the nearest Tags element itself, and unless
  // IgnoreBarrier is set it never crosses a table element.
  THtNode* FloatUpTo(std::initializer_list<std::u16string_view> Tags, THtNode* Limit);
  THtNode* FloatUpOver(std::initializer_list<std::u16string_view> Tags, bool IgnoreBarrier, THtNode* Limit);
};

} // namespace ht
