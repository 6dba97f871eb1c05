// THtXMLNode: construction helpers and tree operations.
#include "htcore/document/xml_node.h"

#include "document/node_walk.h"
#include "htcore/foundation/text_utils.h"

#include <string_view>
#include <vector>

namespace ht {

namespace {

using sv = std::u16string_view;

// Calls f for each part of a name split at '/'; empty parts are skipped.
template <class F> void for_each_part(sv name, F&& f) {
  size_t b = 0;
  while (b <= name.size()) {
    size_t e = name.find(u'/', b);
    if (e == sv::npos)
      e = name.size();
    if (e > b)
      f(name.substr(b, e - b));
    b = e + 1;
  }
}

bool is_block_type(THTMLTokenType t) { return t == htComment || t == htDirective || t == htCData; }

THtXMLNode* child_tagged(const THtNode* n, sv tag) {
  for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling)
    if (c->FTag.view() == tag)
      return static_cast<THtXMLNode*>(c);
  return nullptr;
}

} // namespace

THtXMLNode::THtXMLNode(const hstring& XML) { SetXML(XML); }

THtXMLNode::~THtXMLNode() = default;

std::unique_ptr<THtXMLNode> THtXMLNode::CreateWithTag(const hstring& XML, TObject* ATagObject) {
  auto n = std::make_unique<THtXMLNode>();
  n->TagObject = ATagObject;
  n->SetXML(XML);
  return n;
}

THtXMLNode* THtXMLNode::CreateFromName(const hstring& AName, const hstring& AValue, THtXMLNode* AParent) {
  auto* n = new THtXMLNode();
  n->SetTag(AName);
  n->TagType = htIdent;
  n->FContent = AValue;
  n->FParent = AParent;
  return n;
}

THtNodeClass THtXMLNode::GetElementClass(const hstring& TagName, THtNode* ARoot) {
  THtNodeClass c = THtNode::GetElementClass(TagName, ARoot);
  return c ? c : ClassType();
}

void THtXMLNode::CreateAttributes() {
  if (!FAttributes)
    FAttributes = new THtAttributes(true);
}

THtXMLNode* THtXMLNode::MakeNode(THtNode* ARoot, const hstring& ATag) {
  THtNode* n = CreateNode(ARoot->GetElementClass(ATag, nullptr));
  auto* x = dynamic_cast<THtXMLNode*>(n);
  if (!x) {
    delete n;
    HT_ASSERT(false); // an XML tree holds XML nodes only
  }
  if (!ATag.empty()) {
    x->SetTag(ATag);
    x->TagType = htIdent;
  }
  return x;
}

THtXMLNode* THtXMLNode::NewChild(THtNode* ARoot, const hstring& ATag) {
  THtXMLNode* x = MakeNode(ARoot, ATag);
  x->FParent = this;
  GetNodes()->Add(x);
  return x;
}

void THtXMLNode::ClearNode() {
  if (FNodes) {
    delete FNodes;
    FNodes = nullptr;
  }
  if (FAttributes) {
    delete FAttributes;
    FAttributes = nullptr;
  }
}

THtXMLNode* THtXMLNode::Add(const hstring& AName) {
  THtXMLNode* at = this;
  THtNode* root = Root();
  for_each_part(AName.view(), [&](sv part) { at = at->NewChild(root, hstring(part)); });
  return at;
}

THtXMLNode* THtXMLNode::GetCreateNode(const hstring& NodeName) {
  THtXMLNode* at = this;
  THtNode* root = nullptr;
  for_each_part(NodeName.view(), [&](sv part) {
    if (THtXMLNode* found = child_tagged(at, part)) {
      at = found;
      return;
    }
    if (!root)
      root = Root();
    at = at->NewChild(root, hstring(part));
  });
  return at;
}

THtXMLNode* THtXMLNode::AddNode(THtXMLNode* Node) {
  GetNodes()->Add(Node);
  Node->SetParent(this);
  return Node;
}

THtXMLNode* THtXMLNode::InsertNode(int Index, THtXMLNode* Node) {
  GetNodes()->Insert(Index, Node);
  Node->SetParent(this);
  return Node;
}

void THtXMLNode::Delete(int Index) {
  if (FNodes)
    FNodes->Delete(Index);
}

bool THtXMLNode::Extract(THtXMLNode* Node) {
  if (!FNodes || !FNodes->RemoveItem(Node))
    return false;
  Node->FParent = nullptr;
  Node->FNextSibling = nullptr;
  return true;
}

THtXMLNode* THtXMLNode::NodebyNameNS(const hstring& NodeName) const {
  sv name = NodeName.view();
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling) {
    sv tag = c->FTag.view();
    if (tag == name)
      return static_cast<THtXMLNode*>(c);
    size_t colon = tag.find(u':');
    if (colon != sv::npos && tag.substr(colon + 1) == name)
      return static_cast<THtXMLNode*>(c);
  }
  return nullptr;
}

hstring THtXMLNode::SafeNodeValue(const hstring& NodeName) const {
  THtXMLNode* n = NodebyName(NodeName);
  return n ? n->GetValue() : hstring();
}

hstring THtXMLNode::GetValue() const {
  if (FTag.empty() || !FirstChild())
    return FContent;
  hstring r = FContent;
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    if (c->FTag.empty() && c->TagType != htComment && c->TagType != htDirective)
      r += c->FContent;
  return r;
}

void THtXMLNode::SetValue(const hstring& Value) {
  if (!FTag.empty() && FContent.empty() && FirstChild()) {
    for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
      if (c->FTag.empty()) {
        c->SetContent(Value);
        return;
      }
  }
  SetContent(Value);
}

bool THtXMLNode::GetIsTextElement() const {
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    if (!c->FTag.empty())
      return false;
  return true;
}

hstring THtXMLNode::GetLocalName() const {
  size_t colon = FTag.view().find(u':');
  return colon == sv::npos ? FTag : FTag.substr(colon + 1);
}

hstring THtXMLNode::GetPrefix() const {
  size_t colon = FTag.view().find(u':');
  return colon == sv::npos ? hstring() : FTag.substr(0, colon);
}

void THtXMLNode::SetorRemoveAttribute(const hstring& AttrName, const hstring& AttrValue) {
  if (!AttrValue.empty())
    SetAttribute(AttrName, AttrValue);
  else if (FAttributes)
    FAttributes->ClearAttr(AttrName);
}

void THtXMLNode::LowerAttributes() {
  detail::WalkSubtree(
      static_cast<THtNode*>(this),
      [](THtNode* n) {
        if (THtAttributes* a = n->FAttributes) {
          // Lowering reorders the names: sorted again in one go.
          THtAttributeBatch lowered;
          for (const THtAttribute& at : *a) {
            hstring name = at.Name;
            hLower(name);
            lowered.Add(name, at.Value, THtAttributeBatch::abReplace);
          }
          a->Clear();
          lowered.MoveTo(*a);
        }
        return true;
      },
      [](THtNode*) {});
}

void THtXMLNode::CopyAttributesFrom(const THtXMLNode* XN) {
  CreateAttributes();
  FAttributes->Clear();
  if (XN && XN->FAttributes)
    for (const THtAttribute& a : *XN->FAttributes)
      FAttributes->SetAttribute(a.Name, a.Value);
}

void THtXMLNode::Assign(const THtXMLNode* Source) {
  if (Source == this)
    return;
  ClearNode();
  if (Source->FAttributes)
    CopyAttributesFrom(Source);
  for (THtNode* c = Source->FirstChild(); c; c = c->FNextSibling) {
    auto* xc = static_cast<THtXMLNode*>(c);
    THtNode* made = CreateNode(xc->ClassType());
    auto* copy = static_cast<THtXMLNode*>(made);
    if (!c->FTag.empty() && !is_block_type(c->TagType)) {
      copy->SetXML(xc->Code());
    } else {
      copy->TagType = c->TagType;
      copy->FContent = c->FContent;
    }
    AddNode(copy);
  }
  SetTag(Source->FTag);
  TagType = Source->TagType;
}

THtXMLNode* THtXMLNode::Clone() const {
  THtXMLNode* top = nullptr;
  THtXMLNode* at = nullptr; // the copy of the node being entered
  detail::WalkSubtree(
      static_cast<const THtNode*>(this),
      [&](const THtNode* n) {
        auto* src = static_cast<const THtXMLNode*>(n);
        auto* copy = static_cast<THtXMLNode*>(CreateNode(src->ClassType()));
        copy->FTag = src->FTag;
        copy->FTagHash = src->FTagHash;
        copy->TagType = src->TagType;
        copy->FContent = src->FContent;
        copy->IsArray = src->IsArray;
        copy->FPreserveSpace = src->FPreserveSpace;
        if (src->FAttributes) {
          copy->CreateAttributes();
          copy->FAttributes->Assign(*src->FAttributes);
        }
        if (src->FProcessingInstructions)
          copy->FProcessingInstructions = std::make_unique<TStringList>(*src->FProcessingInstructions);
        if (at) {
          at->GetNodes()->Add(copy);
          copy->FParent = at;
        } else {
          top = copy;
        }
        at = copy;
        return true;
      },
      [&](const THtNode*) { at = static_cast<THtXMLNode*>(at->FParent); });
  return top;
}

void THtXMLNode::RemoveNamespaces() {
  detail::WalkSubtree(
      static_cast<THtNode*>(this),
      [this](THtNode* n) {
        if (n != this) {
          size_t colon = n->FTag.view().find(u':');
          if (colon != sv::npos)
            n->SetTag(n->FTag.substr(colon + 1));
        }
        return true;
      },
      [](THtNode*) {});
}

void THtXMLNode::SortbyAttr(const hstring& AttrName, bool Asc) {
  if (FNodes)
    FNodes->SortbyAttr(AttrName, scCaseSensitive, Asc);
}

void THtXMLNode::AddProcessingInstruction(const hstring& PI) {
  if (!FProcessingInstructions)
    FProcessingInstructions = std::make_unique<TStringList>();
  FProcessingInstructions->Add(PI);
}

hstring THtXMLNode::GetPIAttribute(const hstring& PIName, const hstring& AttrName) const {
  if (!FProcessingInstructions)
    return hstring();
  for (const TStringItem& pi : *FProcessingInstructions) {
    sv text = pi.FString.view();
    if (text.size() > PIName.size() && text.starts_with(PIName.view()) && text[PIName.size()] <= u' ') {
      try {
        THtXMLNode tag(u"<"_hs + pi.FString + u"/>");
        return tag.GetAttribute(AttrName);
      } catch (const EHtParserError&) {
        return hstring();
      }
    }
  }
  return hstring();
}

} // namespace ht
