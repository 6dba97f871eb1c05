#include "htcore/document/node.h"

#include "htcore/foundation/convert.h"
#include "htcore/foundation/date_time.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/hash.h"
#include "htcore/foundation/number_format.h"
#include "htcore/foundation/text_utils.h"
#include "foundation/node_pool_batch.h"

#include <string>
#include <vector>

namespace ht {

namespace {

bool IsElementTag(const hstring& tag) { return !tag.empty() && tag[0] != u'!' && tag[0] != u'?'; }

// Strict decimal reader behind GetAttrI: blanks in front, one sign, digits.
bool TryParseInt(std::u16string_view s, int& value) {
  size_t i = 0;
  while (i < s.size() && s[i] == u' ')
    ++i;
  bool neg = false;
  if (i < s.size() && (s[i] == u'+' || s[i] == u'-'))
    neg = s[i++] == u'-';
  if (i == s.size())
    return false;
  int64_t v = 0;
  for (; i < s.size(); ++i) {
    if (s[i] < u'0' || s[i] > u'9')
      return false;
    v = v * 10 + (s[i] - u'0');
    if (v > 2147483648LL)
      return false;
  }
  if (neg)
    v = -v;
  if (v > 2147483647LL)
    return false;
  value = static_cast<int>(v);
  return true;
}

// The node that follows the subtree of n in document order, or null.
THtNode* SubtreeEnd(const THtNode* n) {
  for (; n; n = n->FParent)
    if (n->FNextSibling)
      return n->FNextSibling;
  return nullptr;
}

TDateTime ReadDate(const hstring& value, std::u16string_view mask) {
  if (value.empty())
    return 0;
  try {
    return StrtoDateFmt(value.view(), mask);
  } catch (const EConvertError&) {
    return 0; // dates read leniently: a bad value is no date
  }
}

} // namespace

THtNode::~THtNode() {
  if (!FNodes || FNodes->GetCount() == 0) {
    delete FAttributes;
    delete FNodes;
    return;
  }
  // One atomic step per pool chunk instead of one per freed block.
  detail::TPoolFreeBatch batch;
  delete FAttributes;
  // Free the subtree without recursion: pending nodes are chained through
  // FNextSibling, and each node's children join the chain before it is freed,
  // so its own destructor finds an empty list.
  THtNode* pending = nullptr;
  auto detach_children = [&pending](THtNodeList* list) {
    for (int i = list->GetCount() - 1; i >= 0; --i) {
      THtNode* c = list->GetNode(i);
      c->FNextSibling = pending;
      pending = c;
    }
    list->ClearNoFree();
  };
  detach_children(FNodes);
  while (pending) {
    THtNode* n = pending;
    pending = n->FNextSibling;
    if (n->FNodes)
      detach_children(n->FNodes);
    delete n;
  }
  delete FNodes;
}

THtNodeList* THtNode::GetNodes() {
  if (!FNodes)
    FNodes = new THtNodeList(true);
  return FNodes;
}

void THtNode::SetParent(THtNode* Value) { FParent = Value; }

void THtNode::SetContent(const hstring& Value) { FContent = Value; }

void THtNode::CallScriptFunction(const hstring&) {}

int THtNode::ScriptCompare(const hstring&, THtNode*) { return 0; }

THtNodeClass THtNode::GetElementClass(const hstring& TagName, THtNode* ARoot) {
  if (ARoot)
    return ARoot->GetElementClass(TagName, nullptr);
  if (FParent)
    return Root()->GetElementClass(TagName, nullptr);
  THtNodeClass own = ClassType();
  // A derived class without HT_NODE_CLASS would silently fill its tree with
  // nodes of its base class.
  HT_ASSERT(*own->Type == typeid(*this));
  return own;
}

THtNode* THtNode::InternalAddChild(THtNodeClass NodeClass) {
  if (!NodeClass)
    return nullptr;
  THtNode* n = NodeClass->Create();
  n->FParent = this;
  GetNodes()->Add(n);
  return n;
}

void THtNode::CreateAttributes() {
  if (!FAttributes)
    FAttributes = new THtAttributes(false);
}

THtNode* THtNode::AddChild(THtNodeClass NodeClass) {
  if (!NodeClass)
    return nullptr;
  THtNode* n = NodeClass->Create();
  GetNodes()->Add(n);
  n->SetParent(this);
  return n;
}

void THtNode::DeleteChild(THtNode* E) {
  int i = FNodes && E ? FNodes->IndexOf(E) : -1;
  if (i < 0)
    throw Exception(std::string_view("Child node not found"));
  FNodes->Delete(i);
}

void THtNode::DeleteAllChildren() {
  if (FNodes)
    FNodes->Clear();
}

THtNodeListRef THtNode::GetJQueryList(const hstring&, bool) { return nullptr; }

hstring THtNode::TextContent() {
  // Depth first without recursion: a tagged node (and this one) gives its
  // content and its children's; an untagged child only its own content.
  std::u16string out(FContent.view());
  const THtNode* n = FirstChild();
  while (n && n != this) {
    out += n->FContent.view();
    if (!n->FTag.empty() && n->FNodes && n->FNodes->GetCount()) {
      n = n->FNodes->FirstNode();
      continue;
    }
    while (n != this && !n->FNextSibling)
      n = n->FParent;
    if (n != this)
      n = n->FNextSibling;
  }
  return hstring(out);
}

bool THtNode::SetAttribute(const hstring& Name, const hstring& Value) {
  if (!FAttributes) {
    if (Value.empty())
      return false;
    CreateAttributes();
  }
  return FAttributes->SetAttributeEx(Name, Value);
}

void THtNode::SetTag(const hstring& Value) {
  FTag = Value;
  hstring lower = Value;
  hLower(lower);
  FTagHash = static_cast<int32_t>(RSHash(lower.c_str(), lower.Length()));
}

// --- Navigation ---

THtNode* THtNode::PreviousSibling() const {
  if (!FParent || !FParent->FNodes)
    return nullptr;
  int i = FParent->FNodes->IndexOf(this);
  return i > 0 ? FParent->FNodes->GetNode(i - 1) : nullptr;
}

THtNode* THtNode::NextNode() const {
  if (THtNode* c = FirstChild())
    return c;
  const THtNode* n = this;
  while (n && !n->FNextSibling)
    n = n->FParent;
  return n ? n->FNextSibling : nullptr;
}

THtNode* THtNode::PreviousNode() const {
  if (THtNode* prev = PreviousSibling())
    return prev->Last();
  return FParent;
}

THtNode* THtNode::Last() {
  THtNode* n = this;
  while (THtNode* c = n->LastChild())
    n = c;
  return n;
}

THtNode* THtNode::LastChild() const noexcept { return FNodes ? FNodes->LastNode() : nullptr; }

THtNode* THtNode::FirstChildTag() const {
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    if (!c->FTag.empty() && c->FTag != u"!")
      return c;
  return nullptr;
}

THtNode* THtNode::LastChildTag() const {
  for (int i = GetCount() - 1; i >= 0; --i) {
    THtNode* c = FNodes->GetNode(i);
    if (!c->FTag.empty())
      return c;
  }
  return nullptr;
}

THtNode* THtNode::Root() {
  THtNode* n = this;
  while (n->FParent)
    n = n->FParent;
  return n;
}

int THtNode::GetCount() const noexcept { return FNodes ? FNodes->GetCount() : 0; }

THtNode* THtNode::GetNode(int Index) const {
  return FNodes && Index >= 0 && Index < FNodes->GetCount() ? FNodes->GetNode(Index) : nullptr;
}

int THtNode::ChildIndex() const {
  if (!FParent)
    return 0;
  int count = 0;
  for (THtNode* c = FParent->FirstChild(); c && c != this; c = c->FNextSibling)
    if (IsElementTag(c->FTag))
      ++count;
  return count;
}

int THtNode::TagIndex() const {
  if (!FParent)
    return 0;
  int count = 0;
  for (THtNode* c = FParent->FirstChild(); c && c != this; c = c->FNextSibling)
    if (c->FTag == FTag)
      ++count;
  return count;
}

int THtNode::NodeIndex() const { return FParent && FParent->FNodes ? FParent->FNodes->IndexOf(this) : -1; }

int THtNode::AbsoluteTagIndex() {
  int count = 0;
  for (THtNode* n = Root(); n && n != this; n = n->NextNode())
    if (!n->FTag.empty())
      ++count;
  return count;
}

hstring THtNode::Path() const {
  std::vector<const THtNode*> chain;
  for (const THtNode* n = this; n; n = n->FParent)
    chain.push_back(n);
  std::u16string out;
  for (size_t i = chain.size(); i-- > 0;) {
    out += chain[i]->FTag.view();
    if (i)
      out += u'/';
  }
  return hstring(out);
}

bool THtNode::HasAsParent(const THtNode* E) const {
  for (const THtNode* p = FParent; p; p = p->FParent)
    if (p == E)
      return true;
  return false;
}

bool THtNode::HasParentTag(const hstring& ATag) const { return UpTo(ATag) != nullptr; }

THtNode* THtNode::UpTo(const hstring& ATag) const {
  for (THtNode* p = FParent; p; p = p->FParent)
    if (p->FTag == ATag)
      return p;
  return nullptr;
}

THtNode* THtNode::UpTo(std::initializer_list<std::u16string_view> ATags) const {
  for (THtNode* p = FParent; p; p = p->FParent)
    for (std::u16string_view t : ATags)
      if (p->FTag.view() == t)
        return p;
  return nullptr;
}

THtNode* THtNode::NodebyName(const hstring& NodeName) const {
  std::u16string_view name = NodeName.view();
  size_t slash = name.find(u'/');
  if (slash == std::u16string_view::npos) {
    for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
      if (c->FTag.view() == name)
        return c;
    return nullptr;
  }
  std::u16string_view head = name.substr(0, slash);
  hstring rest(name.substr(slash + 1));
  // A failed branch goes on with the next child of the same name.
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    if (c->FTag.view() == head)
      if (THtNode* found = c->NodebyName(rest))
        return found;
  return nullptr;
}

THtNode* THtNode::FindNode(const hstring& NodeName) const {
  THtNode* stop = SubtreeEnd(this);
  for (THtNode* n = FirstChild(); n && n != stop; n = n->NextNode())
    if (n->FTag == NodeName)
      return n;
  return nullptr;
}

THtNode* THtNode::NodebyAttr(const hstring& AttrName, const hstring& AttrValue) const {
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    if (c->FAttributes && c->FAttributes->HasAttribute(AttrName) && c->GetAttribute(AttrName) == AttrValue)
      return c;
  return nullptr;
}

THtNode* THtNode::NodebyNameAttr(const hstring& NodeName, const hstring& AttrName,
                                 const hstring& AttrValue) const {
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    if (c->FTag == NodeName && c->FAttributes && c->FAttributes->HasAttribute(AttrName) &&
        c->GetAttribute(AttrName) == AttrValue)
      return c;
  return nullptr;
}

THtNode* THtNode::FindNodebyAttr(const hstring& NodeName, const hstring& AttrName,
                                 const hstring& AttrValue) const {
  THtNode* stop = SubtreeEnd(this);
  for (THtNode* n = FirstChild(); n && n != stop; n = n->NextNode())
    if ((NodeName.empty() || n->FTag == NodeName) && n->FAttributes &&
        n->FAttributes->HasAttribute(AttrName) && n->GetAttribute(AttrName) == AttrValue)
      return n;
  return nullptr;
}

THtNode* THtNode::NodebyNameIndex(const hstring& AName, int Index) const {
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    if (c->FTag == AName && Index-- == 0)
      return c;
  return nullptr;
}

int THtNode::Countof(const hstring& ATag) const {
  int count = 0;
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    if (c->FTag == ATag)
      ++count;
  return count;
}

// --- Attributes ---

hstring THtNode::GetAttribute(const hstring& Name) const {
  return FAttributes ? FAttributes->GetAttribute(Name) : hstring();
}

bool THtNode::HasAttribute(const hstring& Name) const {
  return FAttributes && FAttributes->HasAttribute(Name);
}

bool THtNode::HasAttributeValue(const hstring& Name, const hstring& Value) const {
  int i = FAttributes ? FAttributes->Indexof(Name) : -1;
  if (i < 0)
    return Value.empty();
  return FAttributes->GetValue(i) == Value;
}

void THtNode::CopyAttributesFrom(const THtNode* Source) {
  if (!Source || !Source->FAttributes || Source == this)
    return;
  for (const THtAttribute& a : *Source->FAttributes) {
    if (!FAttributes)
      CreateAttributes();
    FAttributes->SetAttributeEx(a.Name, a.Value);
  }
}

int THtNode::GetAttrI(const hstring& Name) const {
  hstring s = GetAttribute(Name);
  int v = 0;
  if (!TryParseInt(s.view(), v))
    throw EConvertError(u"'"_hs + s + u"' is not a valid integer value");
  return v;
}

void THtNode::SetAttrI(const hstring& Name, int Value) { SetAttribute(Name, hstring(std::to_string(Value))); }

double THtNode::GetAttrF(const hstring& Name) const { return iStrtoFloat(GetAttribute(Name).view()); }

void THtNode::SetAttrF(const hstring& Name, double Value) {
  SetAttribute(Name, HtFormatFloat(u"0.#######", Value));
}

bool THtNode::GetAttrB(const hstring& Name) const {
  hstring v = GetAttribute(Name);
  return v == u"1" || v == u"true" || v == u"on";
}

void THtNode::SetAttrB(const hstring& Name, bool Value) { SetAttribute(Name, Value ? u"1"_hs : u"0"_hs); }

TDateTime THtNode::GetDate(const hstring& Name) const { return ReadDate(GetAttribute(Name), u"yyyy-mm-dd"); }

void THtNode::SetDate(const hstring& Name, TDateTime Value) {
  SetAttribute(Name, HtFormatDateTime(u"yyyy-mm-dd", Value));
}

TDateTime THtNode::GetTime(const hstring& Name) const { return ReadDate(GetAttribute(Name), u"hh:nn:ss"); }

void THtNode::SetTime(const hstring& Name, TDateTime Value) {
  SetAttribute(Name, HtFormatDateTime(u"hh:nn:ss", Value));
}

TDateTime THtNode::GetDateTime(const hstring& Name) const {
  return ReadDate(GetAttribute(Name), u"yyyy-mm-dd hh:nn:ss");
}

void THtNode::SetDateTime(const hstring& Name, TDateTime Value) {
  SetAttribute(Name, HtFormatDateTime(u"yyyy-mm-dd hh:nn:ss", Value));
}

void THtNode::Exchange(THtNode* Node1, THtNode* Node2) {
  if (!FNodes)
    return;
  int i1 = FNodes->IndexOf(Node1), i2 = FNodes->IndexOf(Node2);
  if (i1 >= 0 && i2 >= 0)
    FNodes->Exchange(i1, i2);
}

} // namespace ht
