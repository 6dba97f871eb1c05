// THtNode: the document node shared by HTML, XML and JSON trees.
//
// A node has a tag (empty for text), an owning child list and an attribute
// set, both made on first need, and one text slot. Children are linked by
// FNextSibling, so walking them needs no index:
//
//   ht::THtmlNode doc;
//   doc.Parse(u"<ul><li>a<li>b</ul>");
//   for (ht::THtNode* li = doc.FindNode(u"ul")->FirstChild(); li; li = li->NextSibling())
//     std::cout << li->TextContent().toUtf8();
//
// Node classes are made through THtNodeClass factories: a class derived from
// THtNode names itself with HT_NODE_CLASS, and a tree's root decides the class
// of each new node in GetElementClass (see element_classes.h).
#pragma once

#include "htcore/document/attributes.h"
#include "htcore/document/html_tokenizer.h"
#include "htcore/document/node_list.h"
#include "htcore/foundation/date_time.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/node_pool.h"
#include "htcore/foundation/object.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace ht {

class THtNode;
struct TXPathNode;

// The factory behind a node class: what a Delphi-style class reference does.
struct THtNodeClassInfo {
  THtNode* (*Create)();
  const std::type_info* Type;
};
using THtNodeClass = const THtNodeClassInfo*;

template <class T> THtNodeClass NodeClass() noexcept {
  static const THtNodeClassInfo info{[]() -> THtNode* { return new T(); }, &typeid(T)};
  return &info;
}

// Declares the class of a node type; one line at the top of each class body
// (it leaves the body in private access, as a class body starts):
//   class TMyDiv : public ht::THtmlNode { HT_NODE_CLASS(TMyDiv) public: ... };
// A root without it fails with "Assertion failure" in GetElementClass rather
// than filling its tree with nodes of its base class.
#define HT_NODE_CLASS(T)                                                                                     \
public:                                                                                                      \
  ::ht::THtNodeClass ClassType() const override { return ::ht::NodeClass<T>(); }                             \
                                                                                                             \
private:

// Called for each match of a path walk; clear Continue to stop the walk.
using THtNodeProcRef = std::function<void(THtNode* Node, bool& Continue)>;

class THtNode : public TObject {
public:
  HT_POOLED_CLASS

  // Fields are open to the library's parsers, writers and path walkers.
  // FNextSibling and FParent are kept by the owning lists and the builders;
  // code outside them changes the tree through the operations below.
  hstring FTag;
  int32_t FTagHash = 0;
  THTMLTokenType TagType = htUnknown;
  THtNodeList* FNodes = nullptr;        // owned; made by GetNodes
  THtAttributes* FAttributes = nullptr; // owned; made by CreateAttributes
  hstring FContent;
  THtNode* FNextSibling = nullptr;
  THtNode* FParent = nullptr;
  TObject* TagObject = nullptr; // free for the host, not owned

  THtNode() = default;
  THtNode(const THtNode&) = delete;
  THtNode& operator=(const THtNode&) = delete;
  // Frees the subtree without recursion, so any depth can be freed. Does not
  // unlink the node from its parent: remove children with DeleteChild.
  ~THtNode() override;

  virtual THtNodeClass ClassType() const { return NodeClass<THtNode>(); }

  // Virtual operations.
  virtual THtNodeList* GetNodes();
  virtual void SetParent(THtNode* Value);
  virtual void SetContent(const hstring& Value);
  virtual void CallScriptFunction(const hstring& Func);
  virtual int ScriptCompare(const hstring& Func, THtNode* Node);
  // The class for a new node named TagName. The tree's root decides: a root
  // class overrides this to map names to classes.
  virtual THtNodeClass GetElementClass(const hstring& TagName, THtNode* ARoot);
  virtual THtNode* InternalAddChild(THtNodeClass NodeClass);
  virtual void CreateAttributes();
  virtual THtNode* AddChild(THtNodeClass NodeClass);
  virtual void DeleteChild(THtNode* E);
  virtual void DeleteAllChildren();
  virtual THtNodeListRef GetJQueryList(const hstring& Query, bool FirstOnly);
  virtual hstring TextContent();
  virtual bool SetAttribute(const hstring& Name, const hstring& Value);

  // Tag and content.
  const hstring& Tag() const noexcept { return FTag; }
  void SetTag(const hstring& Value);
  const hstring& Content() const noexcept { return FContent; }
  THtNode* Parent() const noexcept { return FParent; }
  THtAttributes* Attributes() const noexcept { return FAttributes; }

  // Navigation.
  THtNode* NextSibling() const noexcept { return FNextSibling; }
  THtNode* PreviousSibling() const;
  THtNode* FirstChild() const noexcept;
  THtNode* NextNode() const;
  THtNode* PreviousNode() const;
  THtNode* Last();
  THtNode* LastChild() const noexcept;
  THtNode* FirstChildTag() const;
  THtNode* LastChildTag() const;
  THtNode* Root();
  int GetCount() const noexcept;
  THtNode* GetNode(int Index) const;
  int ChildIndex() const;
  int TagIndex() const;
  int NodeIndex() const;
  int AbsoluteTagIndex();
  hstring Path() const;
  bool HasAsParent(const THtNode* E) const;
  bool HasParentTag(const hstring& ATag) const;
  THtNode* UpTo(const hstring& ATag) const;
  THtNode* UpTo(std::initializer_list<std::u16string_view> ATags) const;
  THtNode* NodebyName(const hstring& NodeName) const;
  THtNode* FindNode(const hstring& NodeName) const;
  THtNode* NodebyAttr(const hstring& AttrName, const hstring& AttrValue) const;
  THtNode* NodebyNameAttr(const hstring& NodeName, const hstring& AttrName, const hstring& AttrValue) const;
  THtNode* FindNodebyAttr(const hstring& NodeName, const hstring& AttrName, const hstring& AttrValue) const;
  THtNode* NodebyNameIndex(const hstring& AName, int Index) const;
  int Countof(const hstring& ATag) const;

  // Attributes.
  hstring GetAttribute(const hstring& Name) const;
  void SetAttr(const hstring& Name, const hstring& Value) { SetAttribute(Name, Value); }
  bool HasAttribute(const hstring& Name) const;
  bool HasAttributeValue(const hstring& Name, const hstring& Value) const;
  void CopyAttributesFrom(const THtNode* Source);
  int GetAttrI(const hstring& Name) const;
  void SetAttrI(const hstring& Name, int Value);
  double GetAttrF(const hstring& Name) const;
  void SetAttrF(const hstring& Name, double Value);
  double GetFloat(const hstring& Name) const { return GetAttrF(Name); }
  void SetFloat(const hstring& Name, double Value) { SetAttrF(Name, Value); }
  bool GetAttrB(const hstring& Name) const;
  void SetAttrB(const hstring& Name, bool Value);
  TDateTime GetDate(const hstring& Name) const;
  void SetDate(const hstring& Name, TDateTime Value);
  TDateTime GetTime(const hstring& Name) const;
  void SetTime(const hstring& Name, TDateTime Value);
  TDateTime GetDateTime(const hstring& Name) const;
  void SetDateTime(const hstring& Name, TDateTime Value);

  // Path queries (the language is described in xpath.h). The list form
  // starts at this node even for a path with a leading `/`; the other two
  // start at Root then. Current (default: this node) is the `current` step.
  IHtNodeList XPath(const hstring& APath, bool FirstOnly = false, THtNode* Current = nullptr);
  // Proc gets each match; clearing its Continue argument ends the walk.
  void XPath(const hstring& APath, const THtNodeProcRef& Proc);
  template <class F>
  requires(std::is_invocable_v<F&, THtNode*, bool&> &&
           !std::is_same_v<std::remove_cvref_t<F>, THtNodeProcRef>) void XPath(const hstring& APath,
                                                                               F&& Proc) {
    XPath(APath, THtNodeProcRef(std::forward<F>(Proc))); // a lambda would also convert to bool
  }
  // The text of the first match, or the value of a last `@name` step.
  hstring XPathValue(const hstring& APath, THtNode* Current = nullptr);
  // The walkers behind them, for code that compiles a TXPathProcessor itself.
  bool EvaluateCondition(const TXPathNode* Step);
  void InternalXPath(const TXPathNode* Step, THtNodeList* List, bool FirstOnly);
  bool InternalXPathRef(const TXPathNode* Step, const THtNodeProcRef& Proc);

  // Swaps two children; nothing happens unless both are children.
  void Exchange(THtNode* Node1, THtNode* Node2);

  // Makes a node of the given class, standing alone.
  static THtNode* CreateNode(THtNodeClass NodeClass) { return NodeClass ? NodeClass->Create() : nullptr; }
};

// Walks call these once per node: inline, they cost no call.
inline THtNode* THtNodeList::Item(int Index) const noexcept { return static_cast<THtNode*>(List()[Index]); }
inline THtNode* THtNodeList::FirstNode() const noexcept { return Count() ? Item(0) : nullptr; }
inline THtNode* THtNode::FirstChild() const noexcept { return FNodes ? FNodes->FirstNode() : nullptr; }

} // namespace ht
