#include "htcore/document/html_node.h"

#include "document/htmlpars_start.h"
#include "document/node_codepage.h"

#include <string>
#include <vector>

namespace ht {

namespace {

bool IsTextNode(const THtNode* n) { return n->FTag.empty() && n->TagType == htUnknown; }

// ASCII reads the same in every code page the parser switches to.
bool IsAscii(const hstring& s) {
  for (char16_t c : s)
    if (c >= 0x80)
      return false;
  return true;
}

void Recode(hstring& s, int codepage) {
  if (IsAscii(s))
    return;
  RawByteString bytes = detail::NarrowToSystemCodePage(s.view());
  s = detail::DecodeCodePage(bytes.c_str(), bytes.size(), codepage);
}

} // namespace

THtmlNode::THtmlNode(const hstring& ATag) {
  SetTag(ATag);
  if (!ATag.empty())
    TagType = htIdent;
}

void THtmlNode::AfterParse() {}

void THtmlNode::SetStyleClass(const hstring& Value) {
  if (Value.empty()) {
    if (FAttributes)
      FAttributes->ClearAttr(u"class");
    return;
  }
  SetAttribute(u"class", Value);
}

void THtmlNode::SetSelfStyle(const hstring& Value) { SetAttribute(u"style", Value); }

void THtmlNode::SetInnerText(const hstring& Value) {
  for (int i = GetCount() - 1; i >= 0; --i)
    if (i > 0 || !IsTextNode(FNodes->GetNode(0)))
      FNodes->Delete(i);
  THtNode* text = FirstChild();
  if (!text)
    text = AddChild(GetElementClass(hstring(), nullptr));
  if (text)
    text->SetContent(Value);
}

bool THtmlNode::QuirksMode() { return true; }

void THtmlNode::MoveChildrentoParent(bool ABefore) {
  if (!FParent || !FNodes || !FNodes->GetCount())
    return;
  THtNodeList* target = FParent->GetNodes();
  int at = target->IndexOf(this);
  if (at < 0)
    return;
  if (!ABefore)
    ++at;
  for (int i = 0; i < FNodes->GetCount(); ++i) {
    THtNode* c = FNodes->GetNode(i);
    target->Insert(at++, c);
    c->SetParent(FParent);
  }
  FNodes->ClearNoFree();
}

void THtmlNode::ChangeEncoding(THtmlEncoding NewEncoding, uint32_t Codepage) {
  if (NewEncoding != heUTF8 && NewEncoding != heANSI)
    return;
  int codepage = NewEncoding == heUTF8 ? detail::kCodePageUtf8 : static_cast<int>(Codepage);
  THtNode* stop = nullptr;
  for (THtNode* n = this; n; n = n->FParent)
    if (n->FNextSibling) {
      stop = n->FNextSibling;
      break;
    }
  for (THtNode* n = this; n && n != stop; n = n->NextNode()) {
    Recode(n->FContent, codepage);
    if (n->FAttributes)
      for (int i = 0; i < n->FAttributes->Count; ++i) {
        hstring value = n->FAttributes->GetValue(i);
        Recode(value, codepage);
        n->FAttributes->SetValue(i, value);
      }
  }
}

void THtmlNode::CSS(const hstring&) {}

void THtmlNode::AddClass(const hstring&) {}

void THtmlNode::RemoveClass(const hstring&) {}

bool THtmlNode::HasClass(const hstring&) { return false; }

hstring THtmlNode::ComputedCSS(const hstring&) { return hstring(); }

void THtmlNode::ToggleClass(const hstring& CSSClass) {
  if (HasClass(CSSClass))
    RemoveClass(CSSClass);
  else
    AddClass(CSSClass);
}

void THtmlNode::EnumerateElements() {
  int number = 0;
  THtNode* stop = nullptr;
  for (THtNode* n = this; n; n = n->FParent)
    if (n->FNextSibling) {
      stop = n->FNextSibling;
      break;
    }
  for (THtNode* n = this; n && n != stop; n = n->NextNode()) {
    if (n->FTag.empty() || n->FTag == u"!" || n->FTag == u"?" || n->TagType == htComment ||
        n->TagType == htDirective)
      continue;
    hstring id(std::to_string(number++));
    n->SetAttribute(u"_id", id);
    if (n->FTag == u"datapacket" && n->GetAttribute(u"id").empty())
      n->SetAttribute(u"id", id);
  }
}

void THtmlNode::MoveNode(THtNode* OldNode, THtNode* NewNode) {
  if (!FNodes)
    return;
  int from = FNodes->IndexOf(NewNode), to = FNodes->IndexOf(OldNode);
  if (from >= 0 && to >= 0)
    FNodes->Move(from, to);
}

void THtmlNode::MoveChildrento(THtNode* E, int Index) {
  if (!E || !FNodes)
    return;
  THtNodeList* target = E->GetNodes();
  int at = Index < 0 || Index > target->GetCount() ? target->GetCount() : Index;
  std::vector<THtNode*> moving;
  for (THtNode* c = FirstChild(); c; c = c->FNextSibling)
    // E and its ancestors stay: moving them into E would make a cycle.
    if (c != E && !E->HasAsParent(c))
      moving.push_back(c);
  for (THtNode* c : moving) {
    FNodes->RemoveItem(c);
    target->Insert(at++, c);
    c->SetParent(E);
  }
}

} // namespace ht
