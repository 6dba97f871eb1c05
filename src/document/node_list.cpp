#include "htcore/document/node_list.h"

#include "htcore/document/html_node.h"
#include "htcore/document/node.h"
#include "htcore/foundation/convert.h"
#include "htcore/foundation/exception.h"
#include "foundation/node_pool_batch.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <typeinfo>
#include <unordered_set>

namespace ht {

namespace {

int CompareTextAscii(std::u16string_view a, std::u16string_view b) {
  size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    char16_t x = a[i] >= u'A' && a[i] <= u'Z' ? a[i] + 32 : a[i];
    char16_t y = b[i] >= u'A' && b[i] <= u'Z' ? b[i] + 32 : b[i];
    if (x != y)
      return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

double DateValue(const hstring& s) {
  if (s.empty())
    return 0;
  try {
    return StrtoDateFmt(s.view(), u"");
  } catch (const EConvertError&) {
    return 0;
  }
}

template <class T> int Sign(T a, T b) { return a < b ? -1 : (b < a ? 1 : 0); }

struct TSortKey {
  hstring Name;
  bool Reversed;
};

THtmlNode* AsHtml(THtNode* n) { return dynamic_cast<THtmlNode*>(n); }

} // namespace

// --- Enumerator ---

bool THtNodeListEnumerator::MoveNext() { return FList && ++FIndex < FList->GetCount(); }

THtNode* THtNodeListEnumerator::GetCurrent() const { return FList->GetNode(FIndex); }

THtNode* THtNodeListEnumerator::operator*() const { return FList->GetNode(FIndex); }

// --- Life time ---

THtNodeList::THtNodeList(bool AOwnsObjects, bool AIsRefCounted)
    : THtObjectList(AOwnsObjects), FIsRefCounted(AIsRefCounted) {}

THtNodeList::~THtNodeList() {
  if (FIsRefCounted && FRefCount != 0) {
    // Freeing a list that handles still point to.
    std::fputs("Invalid pointer operation: THtNodeList freed while referenced\n", stderr);
    std::abort();
  }
  Clear();
}

THtNodeListRef THtNodeList::CreateRef(bool AOwnsObjects) {
  return THtNodeListRef(new THtNodeList(AOwnsObjects, true));
}

void THtNodeList::_AddRef() noexcept {
  if (FIsRefCounted)
    ++FRefCount;
}

void THtNodeList::_Release() noexcept {
  if (FIsRefCounted && --FRefCount == 0) {
    FIsRefCounted = false;
    delete this;
  }
}

// --- Items ---

THtNode* THtNodeList::GetNode(int Index) const {
  if (Index < 0 || Index >= Count())
    throw EListError(std::string_view("SListIndexError"));
  return Item(Index);
}

THtNode* THtNodeList::LastNode() const noexcept { return Count() ? Item(Count() - 1) : nullptr; }

int THtNodeList::IndexOf(const THtNode* Node) const { return THtObjectList::IndexOf(Node); }

// Sets FNextSibling of the item at Index and of the one before it.
void THtNodeList::Relink(int Index) {
  if (!OwnsObjects() || Index < 0 || Index >= Count())
    return;
  THtNode* n = Item(Index);
  n->FNextSibling = Index + 1 < Count() ? Item(Index + 1) : nullptr;
  if (Index > 0)
    Item(Index - 1)->FNextSibling = n;
}

int THtNodeList::Add(THtNode* Node) {
  int i = THtObjectList::Add(Node);
  Relink(i);
  return i;
}

void THtNodeList::Insert(int Index, THtNode* Item) {
  if (Index < 0 || Index > Count())
    throw EListError(std::string_view("SListIndexError"));
  THtObjectList::Insert(Index, Item);
  Relink(Index);
}

void THtNodeList::Delete(int Index) {
  if (Index < 0 || Index >= Count())
    throw EListError(std::string_view("SListIndexError"));
  if (OwnsObjects()) {
    THtNode* prev = Index > 0 ? Item(Index - 1) : nullptr;
    THtNode* next = Index + 1 < Count() ? Item(Index + 1) : nullptr;
    if (prev)
      prev->FNextSibling = next;
    Item(Index)->FNextSibling = nullptr;
  }
  THtObjectList::Delete(Index);
}

bool THtNodeList::RemoveItem(THtNode* Item) {
  int i = IndexOf(Item);
  if (i < 0)
    return false;
  if (OwnsObjects()) {
    THtNode* prev = i > 0 ? this->Item(i - 1) : nullptr;
    if (prev)
      prev->FNextSibling = Item->FNextSibling;
    Item->FNextSibling = nullptr;
  }
  THtObjectList::Extract(Item);
  return true;
}

void THtNodeList::Exchange(int Index1, int Index2) {
  if (Index1 < 0 || Index1 >= Count() || Index2 < 0 || Index2 >= Count())
    throw EListError(std::string_view("SListIndexError"));
  THtObjectList::Exchange(Index1, Index2);
  Relink(Index1);
  Relink(Index2);
}

void THtNodeList::Move(int CurIndex, int NewIndex) {
  if (CurIndex < 0 || CurIndex >= Count() || NewIndex < 0 || NewIndex >= Count())
    throw EListError(std::string_view("SListIndexError"));
  if (CurIndex == NewIndex)
    return;
  THtObjectList::Move(CurIndex, NewIndex);
  if (OwnsObjects()) {
    int lo = std::min(CurIndex, NewIndex), hi = std::max(CurIndex, NewIndex);
    for (int i = std::max(lo - 1, 0); i <= hi; ++i)
      Item(i)->FNextSibling = i + 1 < Count() ? Item(i + 1) : nullptr;
  }
}

// Each freed node frees its own subtree, without recursion.
void THtNodeList::Clear() {
  detail::TPoolFreeBatch batch;
  THtObjectList::Clear();
}

// Puts the items back in a new order, freeing and notifying nothing.
void THtNodeList::Reorder(const std::vector<THtNode*>& Items) {
  bool owns = OwnsObjects();
  SetOwnsObjects(false);
  for (int i = 0; i < Count(); ++i)
    Put(i, Items[static_cast<size_t>(i)]);
  SetOwnsObjects(owns);
  SetSiblings();
}

void THtNodeList::ClearNoFree() {
  // A plain list has no one to tell: a tree being freed empties each of its
  // lists without a call per item.
  if (typeid(*this) == typeid(THtNodeList)) {
    ForgetAll();
    return;
  }
  bool owns = OwnsObjects();
  SetOwnsObjects(false);
  THtObjectList::Clear();
  SetOwnsObjects(owns);
}

void THtNodeList::SetSiblings() {
  if (!OwnsObjects())
    return;
  for (int i = 0; i < Count(); ++i)
    Item(i)->FNextSibling = i + 1 < Count() ? Item(i + 1) : nullptr;
}

void THtNodeList::ReplaceItems(std::vector<THtNode*>&& Items) {
  HT_ASSERT(!OwnsObjects());
  THtObjectList::Clear();
  for (THtNode* n : Items)
    THtObjectList::Add(n);
}

// --- Set operations ---

THtNodeList& THtNodeList::First() {
  while (Count() > 1)
    Delete(Count() - 1);
  return *this;
}

THtNodeList& THtNodeList::Last() {
  while (Count() > 1)
    Delete(0);
  return *this;
}

THtNodeList& THtNodeList::Parent() {
  std::vector<THtNode*> items;
  for (THtNode* n : *this)
    if (n->FParent)
      items.push_back(n->FParent);
  ReplaceItems(std::move(items));
  return *this;
}

THtNodeList& THtNodeList::Children() {
  std::vector<THtNode*> items;
  for (THtNode* n : *this)
    for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling)
      items.push_back(c);
  ReplaceItems(std::move(items));
  return *this;
}

THtNodeList& THtNodeList::Append(const hstring& Tag) {
  std::vector<THtNode*> items;
  for (THtNode* n : *this)
    if (THtNode* c = n->AddChild(n->GetElementClass(Tag, nullptr))) {
      c->SetTag(Tag);
      c->TagType = htIdent;
      items.push_back(c);
    }
  ReplaceItems(std::move(items));
  return *this;
}

THtNodeList& THtNodeList::SetText(const hstring& Value) {
  std::vector<THtNode*> items;
  for (THtNode* n : *this)
    if (THtNode* c = n->AddChild(n->GetElementClass(hstring(), nullptr))) {
      c->SetContent(Value);
      items.push_back(c);
    }
  ReplaceItems(std::move(items));
  return *this;
}

THtNodeList& THtNodeList::Remove() {
  HT_ASSERT(!OwnsObjects());
  std::vector<THtNode*> items;
  for (THtNode* n : *this)
    items.push_back(n);
  THtObjectList::Clear();
  // A node that goes with a listed ancestor, or is listed twice, is freed
  // once: decide everything before freeing anything.
  std::unordered_set<THtNode*> doomed;
  for (THtNode* n : items)
    if (n->FParent)
      doomed.insert(n);
  std::vector<THtNode*> victims;
  std::unordered_set<THtNode*> taken;
  for (size_t i = items.size(); i-- > 0;) {
    THtNode* n = items[i];
    if (!doomed.count(n))
      continue;
    bool inside = false;
    for (THtNode* p = n->FParent; p && !inside; p = p->FParent)
      inside = doomed.count(p) != 0;
    if (!inside && taken.insert(n).second)
      victims.push_back(n);
  }
  for (THtNode* n : victims)
    n->FParent->DeleteChild(n);
  return *this;
}

THtNodeList& THtNodeList::SetAttr(const hstring& Name, const hstring& Value) {
  for (THtNode* n : *this)
    n->SetAttribute(Name, Value);
  return *this;
}

hstring THtNodeList::GetAttr(const hstring& Name) const {
  hstring s;
  for (THtNode* n : *this) {
    hstring v = n->GetAttribute(Name);
    s = s.empty() ? v : v + u"," + s;
  }
  return s;
}

THtNodeList& THtNodeList::SetCSS(const hstring& Name, const hstring& Value) {
  hstring text = Name + u": " + Value;
  for (THtNode* n : *this)
    if (THtmlNode* h = AsHtml(n))
      h->CSS(text);
  return *this;
}

hstring THtNodeList::GetCSS(const hstring& Name) const {
  THtmlNode* h = Count() ? AsHtml(Item(0)) : nullptr;
  return h ? h->ComputedCSS(Name) : hstring();
}

THtNodeList& THtNodeList::on(const hstring& EventName, const hstring& Func) {
  hstring name = u"on"_hs + EventName;
  for (THtNode* n : *this)
    n->SetAttribute(name, Func);
  return *this;
}

THtNodeList& THtNodeList::AddClass(const hstring& CSSClass) {
  for (THtNode* n : *this)
    if (THtmlNode* h = AsHtml(n))
      h->AddClass(CSSClass);
  return *this;
}

THtNodeList& THtNodeList::RemoveClass(const hstring& CSSClass) {
  for (THtNode* n : *this)
    if (THtmlNode* h = AsHtml(n))
      h->RemoveClass(CSSClass);
  return *this;
}

THtNodeList& THtNodeList::ToggleClass(const hstring& CSSClass) {
  for (THtNode* n : *this)
    if (THtmlNode* h = AsHtml(n))
      h->ToggleClass(CSSClass);
  return *this;
}

THtNodeList& THtNodeList::Each(const hstring& Func) {
  for (THtNode* n : *this)
    n->CallScriptFunction(Func);
  return *this;
}

hstring THtNodeList::GetHTML() const {
  THtmlNode* h = Count() ? AsHtml(Item(0)) : nullptr;
  return h ? h->GetInnerHTML() : hstring();
}

THtNodeList& THtNodeList::SetHTML(const hstring& Value) {
  for (THtNode* n : *this)
    if (THtmlNode* h = AsHtml(n))
      h->SetInnerHTML(Value);
  return *this;
}

hstring THtNodeList::GetText() const {
  std::u16string out;
  for (THtNode* n : *this)
    if (THtmlNode* h = AsHtml(n))
      out += h->GetInnerText().view();
  return hstring(out);
}

// --- Sorting ---

THtNodeList& THtNodeList::SortbyAttr(const hstring& AttrName, THtSortCompareType Compare, bool Asc) {
  std::vector<TSortKey> keys;
  std::u16string names;
  for (char16_t c : AttrName.view())
    if (c != u'\r')
      names += c;
  size_t start = 0;
  while (start <= names.size()) {
    size_t comma = names.find(u',', start);
    if (comma == std::u16string::npos)
      comma = names.size();
    std::u16string_view key(names.data() + start, comma - start);
    while (!key.empty() && key.front() == u' ')
      key.remove_prefix(1);
    while (!key.empty() && key.back() == u' ')
      key.remove_suffix(1);
    bool reversed = !key.empty() && key.front() == u'^';
    if (reversed)
      key.remove_prefix(1);
    if (!key.empty())
      keys.push_back({hstring(key), reversed});
    start = comma + 1;
  }
  auto compare = [&](THtNode* a, THtNode* b) {
    for (const TSortKey& k : keys) {
      hstring va = a->GetAttribute(k.Name), vb = b->GetAttribute(k.Name);
      int r = 0;
      switch (Compare) {
      case scCaseSensitive:
        r = Sign(va.view(), vb.view());
        break;
      case scCaseInsensitive:
        r = CompareTextAscii(va.view(), vb.view());
        break;
      case scFloat:
        r = Sign(iStrtoFloat(va.view()), iStrtoFloat(vb.view()));
        break;
      case scDate:
        r = Sign(DateValue(va), DateValue(vb));
        break;
      }
      if (r)
        return k.Reversed ? -r : r;
    }
    return 0;
  };
  std::vector<THtNode*> items(begin(), end());
  std::stable_sort(items.begin(), items.end(),
                   [&](THtNode* a, THtNode* b) { return Asc ? compare(a, b) < 0 : compare(a, b) > 0; });
  Reorder(items);
  return *this;
}

THtNodeList& THtNodeList::SortElements(const hstring& Compare, bool Asc) {
  std::vector<THtNode*> items(begin(), end());
  std::stable_sort(items.begin(), items.end(), [&](THtNode* a, THtNode* b) {
    int r = a->ScriptCompare(Compare, b);
    return Asc ? r < 0 : r > 0;
  });
  Reorder(items);
  return *this;
}

} // namespace ht
