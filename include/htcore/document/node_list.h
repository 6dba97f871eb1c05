// THtNodeList: a node's owning child list, and the non-owning list that
// queries return.
//
// An owning list (every THtNode::FNodes) frees the nodes it removes and keeps
// each child's FNextSibling equal to the next item. A query list holds nodes
// it does not own; it is reference counted and travels as IHtNodeList, and
// its set operations chain:
//
//   ht::IHtNodeList list = ht::THtNodeList::CreateRef();
//   list->Add(a);
//   list->Add(b);
//   list->Parent().SetAttr(u"class", u"seen");   // both parents get the class
//   for (ht::THtNode* n : *list) use(n);
//
// A query list becomes invalid when the nodes it holds are freed.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/node_pool.h"
#include "htcore/foundation/object_list.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace ht {

class THtNode;
class THtNodeList;

enum THtSortCompareType { scCaseSensitive, scCaseInsensitive, scFloat, scDate };

// A counted handle to a query list. Copies share the list; the last handle
// frees it. A list made without reference counting is never freed by handles.
class THtNodeListRef {
public:
  THtNodeListRef() noexcept = default;
  THtNodeListRef(std::nullptr_t) noexcept {}
  explicit THtNodeListRef(THtNodeList* list) noexcept;
  THtNodeListRef(const THtNodeListRef& o) noexcept;
  THtNodeListRef(THtNodeListRef&& o) noexcept : FList(std::exchange(o.FList, nullptr)) {}
  ~THtNodeListRef();
  THtNodeListRef& operator=(const THtNodeListRef& o) noexcept;
  THtNodeListRef& operator=(THtNodeListRef&& o) noexcept;

  THtNodeList* get() const noexcept { return FList; }
  THtNodeList* operator->() const noexcept { return FList; }
  THtNodeList& operator*() const noexcept { return *FList; }
  explicit operator bool() const noexcept { return FList != nullptr; }
  void reset() noexcept { *this = THtNodeListRef(); }

private:
  THtNodeList* FList = nullptr;
};

// The interface name under which query results are handed out.
using IHtNodeList = THtNodeListRef;

// Walks a list by index. Also a forward iterator, so range-for works on a list.
struct THtNodeListEnumerator {
  using iterator_category = std::forward_iterator_tag;
  using value_type = THtNode*;
  using difference_type = std::ptrdiff_t;
  using pointer = THtNode* const*;
  using reference = THtNode*;

  const THtNodeList* FList = nullptr;
  int FIndex = -1;

  static THtNodeListEnumerator Create(const THtNodeList* AList) { return {AList, -1}; }
  bool MoveNext();
  THtNode* GetCurrent() const;

  THtNode* operator*() const;
  THtNodeListEnumerator& operator++() {
    ++FIndex;
    return *this;
  }
  THtNodeListEnumerator operator++(int) {
    THtNodeListEnumerator old = *this;
    ++FIndex;
    return old;
  }
  bool operator==(const THtNodeListEnumerator& o) const { return FIndex == o.FIndex; }
  bool operator!=(const THtNodeListEnumerator& o) const { return FIndex != o.FIndex; }
};

class THtNodeList : public THtObjectList {
public:
  HT_POOLED_CLASS

  explicit THtNodeList(bool AOwnsObjects = true, bool AIsRefCounted = false);
  ~THtNodeList() override;

  // A new reference-counted list, non-owning unless asked.
  static THtNodeListRef CreateRef(bool AOwnsObjects = false);

  int GetCount() const noexcept { return Count(); }
  THtNode* GetNode(int Index) const;
  THtNode* FirstNode() const noexcept;
  THtNode* LastNode() const noexcept;
  THtNodeListEnumerator GetEnumerator() const { return THtNodeListEnumerator::Create(this); }
  THtNodeListEnumerator begin() const { return {this, 0}; }
  THtNodeListEnumerator end() const { return {this, Count()}; }

  // List changes; an owning list keeps FNextSibling right.
  int Add(THtNode* Node);
  void AddNode(THtNode* Node) { Add(Node); }
  void AddProc(THtNode* Node) { Add(Node); }
  void Insert(int Index, THtNode* Item);
  void Delete(int Index);
  // Takes the node out without freeing it; false when it is not in the list.
  bool RemoveItem(THtNode* Item);
  void Exchange(int Index1, int Index2);
  // Moves the item at CurIndex to NewIndex.
  void Move(int CurIndex, int NewIndex);
  int IndexOf(const THtNode* Node) const;
  void Clear() override;
  // Empties the list without freeing its nodes, owning or not.
  void ClearNoFree();
  // Recomputes FNextSibling of every item (owning lists only).
  void SetSiblings();

  // Set operations, mostly for query lists. Those returning the list chain.
  THtNodeList& First();
  THtNodeList& Last();
  THtNodeList& Parent();
  THtNodeList& Children();
  THtNodeList& Append(const hstring& Tag);
  THtNodeList& SetText(const hstring& Value);
  THtNodeList& Remove();
  THtNodeList& Attribute(const hstring& Name, const hstring& Value) { return SetAttr(Name, Value); }
  THtNodeList& SetAttr(const hstring& Name, const hstring& Value);
  hstring GetAttr(const hstring& Name) const;
  THtNodeList& Style(const hstring& StyleName, const hstring& StyleValue) {
    return SetCSS(StyleName, StyleValue);
  }
  THtNodeList& SetCSS(const hstring& Name, const hstring& Value);
  hstring GetCSS(const hstring& Name) const;
  THtNodeList& on(const hstring& EventName, const hstring& Func);
  THtNodeList& AddClass(const hstring& CSSClass);
  THtNodeList& RemoveClass(const hstring& CSSClass);
  THtNodeList& ToggleClass(const hstring& CSSClass);
  void AddClass2(const hstring& CSSClass) { AddClass(CSSClass); }
  void RemoveClass2(const hstring& CSSClass) { RemoveClass(CSSClass); }
  void ToggleClass2(const hstring& CSSClass) { ToggleClass(CSSClass); }
  THtNodeList& Each(const hstring& Func);
  hstring GetHTML() const;
  THtNodeList& SetHTML(const hstring& Value);
  hstring GetText() const;

  // AttrName: names separated by ',', a leading '^' reverses that key.
  THtNodeList& SortbyAttr(const hstring& AttrName, THtSortCompareType Compare, bool Asc = true);
  THtNodeList& SortElements(const hstring& Compare, bool Asc = true);

  bool IsRefCounted() const noexcept { return FIsRefCounted; }
  int RefCount() const noexcept { return FRefCount; }
  void _AddRef() noexcept;
  void _Release() noexcept;

private:
  THtNode* Item(int Index) const noexcept;
  void Relink(int Index);
  void ReplaceItems(std::vector<THtNode*>&& Items);
  void Reorder(const std::vector<THtNode*>& Items);

  int FRefCount = 0;
  bool FIsRefCounted;
};

inline THtNodeListRef::THtNodeListRef(THtNodeList* list) noexcept : FList(list) {
  if (FList)
    FList->_AddRef();
}
inline THtNodeListRef::THtNodeListRef(const THtNodeListRef& o) noexcept : FList(o.FList) {
  if (FList)
    FList->_AddRef();
}
inline THtNodeListRef::~THtNodeListRef() {
  if (FList)
    FList->_Release();
}
inline THtNodeListRef& THtNodeListRef::operator=(const THtNodeListRef& o) noexcept {
  THtNodeListRef copy(o);
  std::swap(FList, copy.FList);
  return *this;
}
inline THtNodeListRef& THtNodeListRef::operator=(THtNodeListRef&& o) noexcept {
  THtNodeListRef moved(std::move(o));
  std::swap(FList, moved.FList);
  return *this;
}

} // namespace ht

// The inline members that need THtNode complete.
#include "htcore/document/node.h"
