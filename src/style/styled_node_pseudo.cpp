// Pseudo elements and CSS counters of a styled node.
#include "htcore/foundation/hash.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/styled_node.h"

namespace ht {

// --- Pseudo elements ---

namespace {

std::unique_ptr<TStyledHTMLNode>* pseudo_slot(TStyledHTMLNode& N, TCSSPseudoClass Pseudo) {
  switch (Pseudo) {
  case pcBefore:
    return &N.Before;
  case pcAfter:
    return &N.After;
  case pcMarker:
    return &N.Marker;
  default:
    return nullptr;
  }
}

} // namespace

TStyledHTMLNode* TStyledHTMLNode::PseudoElement(TCSSPseudoClass Pseudo) const {
  auto* slot = pseudo_slot(const_cast<TStyledHTMLNode&>(*this), Pseudo);
  return slot ? slot->get() : nullptr;
}

TStyledHTMLNode* TStyledHTMLNode::CreatePseudo(TCSSPseudoClass Pseudo) {
  auto* slot = pseudo_slot(*this, Pseudo);
  if (!slot)
    return nullptr;
  if (!*slot) {
    auto* made = dynamic_cast<TStyledHTMLNode*>(CreateNode(ClassType()));
    if (!made)
      return nullptr;
    slot->reset(made);
    // A tag no element can have, so that no selector takes it for one.
    static const hstring kTags[] = {u"::before"_hs, u"::after"_hs, u"::marker"_hs};
    made->SetTag(kTags[Pseudo == pcBefore ? 0 : Pseudo == pcAfter ? 1 : 2]);
    made->TagType = htIdent;
    made->FParent = this; // inherits from this node; not in its child list
  }
  return slot->get();
}

void TStyledHTMLNode::FreePseudo(TCSSPseudoClass Pseudo) {
  if (auto* slot = pseudo_slot(*this, Pseudo))
    slot->reset();
}

// --- Counters ---

namespace {

uint32_t counter_hash(const hstring& Name) { return RSHash(Name.view()); }

TCSSCounter* find_counter(TStyledHTMLNode* N, uint32_t Hash) {
  if (!N->HasFlag(efHasCounters))
    return nullptr;
  for (TCSSCounter& c : N->Counters)
    if (c.NameHash == Hash)
      return &c;
  return nullptr;
}

// The counter that Name means at N: N's own, then those of its previous
// siblings from the nearest, then the same from the parent on.
TCSSCounter* counter_in_scope(TStyledHTMLNode* N, uint32_t Hash) {
  for (TStyledHTMLNode* n = N; n;) {
    if (TCSSCounter* c = find_counter(n, Hash))
      return c;
    TStyledHTMLNode* parent = n->ParentElement();
    if (parent && parent->FNodes && parent->HasChildCounters()) {
      THtNodeList* list = parent->FNodes;
      for (int i = list->IndexOf(n) - 1; i >= 0; --i)
        if (auto* s = dynamic_cast<TStyledHTMLNode*>(list->GetNode(i)))
          if (TCSSCounter* c = find_counter(s, Hash))
            return c;
    }
    n = parent;
  }
  return nullptr;
}

} // namespace

void TStyledHTMLNode::ResetCSSCounter(const hstring& Name, int Value) {
  const uint32_t h = counter_hash(Name);
  Flags |= EFBit(efHasCounters);
  if (TStyledHTMLNode* p = ParentElement())
    p->FChildCounters = true;
  for (TCSSCounter& c : Counters)
    if (c.NameHash == h) {
      c.Value = Value;
      return;
    }
  Counters.push_back({h, Value});
}

void TStyledHTMLNode::IncrementCSSCounter(const hstring& Name, int By) {
  if (TCSSCounter* c = counter_in_scope(this, counter_hash(Name)))
    c->Value += By;
}

int TStyledHTMLNode::CSSCounterValue(const hstring& Name) const {
  const TCSSCounter* c = counter_in_scope(const_cast<TStyledHTMLNode*>(this), counter_hash(Name));
  return c ? c->Value : 0;
}

hstring ListCountertoString(TListStyleType ListType, int Value) {
  char16_t first = 0;
  switch (ListType) {
  case lstLowerAlpha:
  case lstLowerLatin:
    first = u'a';
    break;
  case lstUpperAlpha:
  case lstUpperLatin:
    first = u'A';
    break;
  case lstUpperRoman:
  case lstLowerRoman: {
    // Past 3999 the numerals have no letters; such values are written in digits.
    if (Value < 0 || Value > 3999)
      return IntToStr(static_cast<int32_t>(Value));
    static const struct {
      int Value;
      std::u16string_view Text;
    } kRoman[] = {{1, u"I"},   {4, u"IV"},   {5, u"V"},   {9, u"IX"},  {10, u"X"},   {40, u"XL"},  {50, u"L"},
                  {90, u"XC"}, {100, u"C"}, {400, u"CD"}, {500, u"D"}, {900, u"CM"}, {1000, u"M"}};
    std::u16string out;
    for (int i = static_cast<int>(std::size(kRoman)) - 1; i >= 0; --i)
      while (Value >= kRoman[i].Value) {
        out += kRoman[i].Text;
        Value -= kRoman[i].Value;
      }
    hstring r(out.data(), out.size());
    if (ListType == lstLowerRoman)
      hLower(r);
    return r;
  }
  default:
    return IntToStr(static_cast<int32_t>(Value));
  }
  // One letter per value and no wrap: 27 gives the character after "z". A
  // value that would leave the letters' plane for control codes or surrogates
  // is written in digits.
  const int64_t code = static_cast<int64_t>(first) + Value - 1;
  if (Value < 1 || code >= 0xD800)
    return IntToStr(static_cast<int32_t>(Value));
  char16_t c = static_cast<char16_t>(code);
  return hstring(&c, 1);
}

} // namespace ht
