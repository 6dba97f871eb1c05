#include "htcore/style/css_selector.h"

#include "htcore/foundation/hash.h"
#include "htcore/foundation/text_utils.h"

#include <cmath>

namespace ht {

namespace {

inline bool is_named(const THtNode* n) {
  return !n->FTag.empty() && n->FTag[0] != u'!' && n->FTag[0] != u'?';
}

// The pseudo states that only a host can know and TestPCClass takes as given.
constexpr TCSSPseudoClasses kPositionStates = 0xF600;

bool has_all(TCSSPseudoClasses need, TCSSPseudoClasses have) { return (need & ~have) == 0; }

std::u16string_view attr_value(const TCSSElement* n, const hstring& name, bool& found) {
  const THtAttributes* a = n->Attributes();
  int i = a ? a->Indexof(name) : -1;
  found = i >= 0;
  return found ? a->GetValue(i).view() : std::u16string_view();
}

bool has_attributes(const TCSSElement* n) { return n->Attributes() && n->Attributes()->Count > 0; }

bool word_in(std::u16string_view attr, std::u16string_view word) {
  // " word " in " attr ": a match at the text's ends counts as bounded.
  if (word.empty())
    return attr.find(u"  ") != std::u16string_view::npos || attr.empty() || attr.front() == u' ' ||
           attr.back() == u' ';
  for (size_t at = attr.find(word); at != std::u16string_view::npos; at = attr.find(word, at + 1)) {
    bool left = at == 0 || attr[at - 1] == u' ';
    size_t end = at + word.size();
    bool right = end == attr.size() || attr[end] == u' ';
    if (left && right)
      return true;
  }
  return false;
}

const TCSSElement* as_element(const THtNode* n) { return static_cast<const TCSSElement*>(n); }

const THtNode* previous_named(const THtNode* n) {
  const THtNode* p = n->Parent();
  if (!p)
    return nullptr;
  const THtNode* last = nullptr;
  for (const THtNode* c = p->FirstChild(); c && c != n; c = c->NextSibling())
    if (is_named(c))
      last = c;
  return last;
}

} // namespace

TCSSClassRec MakeCSSClass(const hstring& Name) {
  TCSSClassRec r;
  r.s = Trim(Name);
  hLower(r.s);
  r.hash = static_cast<int32_t>(RSHash(r.s.view()));
  return r;
}

// --- TCSSElement ---

void TCSSElement::ParseAttributes(THtmlParser& HP) {
  THtmlNode::ParseAttributes(HP);
  GetClassesHashes();
}

bool TCSSElement::SetAttribute(const hstring& Name, const hstring& Value) {
  bool changed = THtmlNode::SetAttribute(Name, Value);
  if (SameText(Name, u"class"))
    GetClassesHashes();
  return changed;
}

bool TCSSElement::HasClass(const hstring& CSSClass) {
  TCSSClassRec c = MakeCSSClass(CSSClass);
  for (const TCSSClassRec& h : FClassHashes)
    if (h.hash == c.hash && h.s == c.s)
      return true;
  return false;
}

void TCSSElement::AddClass(const hstring& CSSClass) {
  if (Trim(CSSClass).empty() || HasClass(CSSClass))
    return;
  hstring cls = Trim(GetAttribute(u"class"));
  SetAttribute(u"class", cls.empty() ? Trim(CSSClass) : cls + u" " + Trim(CSSClass));
}

void TCSSElement::RemoveClass(const hstring& CSSClass) {
  TCSSClassRec c = MakeCSSClass(CSSClass);
  std::u16string out;
  for (const TCSSClassRec& h : FClassHashes)
    if (!h.s.empty() && !(h.hash == c.hash && h.s == c.s)) {
      if (!out.empty())
        out += u' ';
      out += h.s.view();
    }
  SetAttribute(u"class", hstring(out.data(), out.size()));
}

void TCSSElement::GetClassesHashes() {
  FClassHashes.clear();
  hstring cls = Trim(GetAttribute(u"class"));
  MultiClass = false;
  if (cls.empty())
    return;
  hLower(cls);
  std::u16string_view v = cls.view();
  if (v.find(u' ') == std::u16string_view::npos) {
    FClassHashes.push_back({cls, static_cast<int32_t>(RSHash(v))});
    return;
  }
  MultiClass = true;
  // A double blank gives an empty record: the words are cut at each blank.
  size_t b = 0;
  for (size_t i = 0; i <= v.size(); ++i)
    if (i == v.size() || v[i] == u' ') {
      std::u16string_view w = v.substr(b, i - b);
      FClassHashes.push_back({hstring(w), w.empty() ? 0 : static_cast<int32_t>(RSHash(w))});
      b = i + 1;
    }
}

// --- TCSSSelector ---

TCSSSelector::~TCSSSelector() {
  // The chain is freed in a loop: a long one must not recurse.
  TCSSSelector* p = Parent;
  while (p) {
    TCSSSelector* next = p->Parent;
    p->Parent = nullptr;
    delete p;
    p = next;
  }
}

void TCSSSelector::AddClass(const hstring& Name) { Classes.push_back(MakeCSSClass(Name)); }

void TCSSSelector::AddPseudo(const hstring& Name, const TCSSToken* Arg) {
  int v = -1;
  TCSSPseudoClass pc = IsEnum2(u"pc", Name.view(), TypeInfo<TCSSPseudoClass>(), v)
                           ? static_cast<TCSSPseudoClass>(v)
                           : pcUnknown;
  if (PseudoClasses & PCBit(pc))
    return;
  PseudoClasses |= PCBit(pc);
  ++PseudoCount;
  if (FirstPseudo == pcNone)
    FirstPseudo = pc;
  if (Arg) {
    if (SameText(Arg->Name, u"odd"))
      NthValue = -1;
    else if (SameText(Arg->Name, u"even"))
      NthValue = -2;
    else
      NthValue = static_cast<int32_t>(std::lround(Arg->AsFloat));
  }
}

void TCSSSelector::ParseCondition() {
  Conditions.clear();
  std::u16string_view all = Condition.view();
  size_t b = 0;
  while (b <= all.size()) {
    size_t e = all.find(u'\x01', b);
    if (e == std::u16string_view::npos)
      e = all.size();
    std::u16string_view piece = all.substr(b, e - b);
    TCSSCondition c;
    size_t eq = piece.find(u'=');
    if (eq == std::u16string_view::npos) {
      c.Name = hstring(piece);
    } else {
      c.Name = Trim(hstring(piece.substr(0, eq)));
      c.Value = Trim(hstring(piece.substr(eq + 1)));
      if (!c.Name.empty()) {
        switch (c.Name[c.Name.size() - 1]) {
        case u'^':
          c.Compare = acStarts;
          break;
        case u'$':
          c.Compare = acEnds;
          break;
        case u'*':
          c.Compare = acContains;
          break;
        case u'~':
          c.Compare = acWord;
          break;
        case u'|':
          c.Compare = acStarts2;
          break;
        case u'!':
          c.Compare = acNotEq;
          break;
        default:
          break;
        }
        if (c.Compare != acMatch)
          c.Name = Trim(c.Name.substr(0, c.Name.size() - 1));
      }
    }
    Conditions.push_back(std::move(c));
    b = e + 1;
  }
}

void TCSSSelector::DetermineTestProc() {
  for (TCSSSelector* s = this; s; s = s->Parent) {
    if (!s->Condition.empty())
      s->ParseCondition();
    const bool pc = (s->PseudoClasses & ~kPseudoElements) != 0;
    const bool u = s->Universal, tag = !s->Tag.empty(), id = !s->ID.empty(), cond = !s->Condition.empty(),
               cls = !s->Classes.empty();
    if (u && !id && !cond && !cls && !pc)
      s->Test = &TCSSSelector::TestUniversal;
    else if (tag && !u && !id && !cond && !cls && !pc)
      s->Test = &TCSSSelector::TestTag;
    else if (id && !u && !tag && !cond && !cls && !pc)
      s->Test = &TCSSSelector::TestID;
    else if (cls && !u && !tag && !id && !cond && !pc)
      s->Test = &TCSSSelector::TestClass;
    else if (tag && cls && !u && !id && !cond && !pc)
      s->Test = &TCSSSelector::TestTagClass;
    else if (cond && pc && !u && !tag && !id && !cls)
      s->Test = &TCSSSelector::TestPCCondition;
    else if (cond && !u && !tag && !id && !cls && !pc)
      s->Test = &TCSSSelector::TestCondition;
    else if (cls && pc && !u && !tag && !id && !cond)
      s->Test = &TCSSSelector::TestPCClass;
    else
      s->Test = &TCSSSelector::TestAll;
  }
}

uint32_t TCSSSelector::CalcWeight() const {
  uint32_t w = 0;
  for (const TCSSSelector* s = this; s; s = s->Parent) {
    if (!s->Tag.empty() && !s->Universal)
      w += 1;
    w += 16 * static_cast<uint32_t>(s->Classes.size());
    w += 16 * static_cast<uint32_t>(s->PseudoCount);
    if (!s->ID.empty())
      w += 256;
    if (!s->Condition.empty())
      w += 16;
  }
  return w;
}

namespace {

void write_compound(const TCSSSelector* s, std::u16string& out) {
  if (s->Parent) {
    static const char16_t* const kCombinators[] = {u" ", u">", u"+", u"~"};
    out += kCombinators[s->Position];
  }
  out += s->Tag.view();
  if (!s->ID.empty())
    out += u"#" + s->ID;
  for (const TCSSClassRec& c : s->Classes)
    out += u"." + c.s;
  if (!s->Condition.empty()) {
    out += u'[';
    for (char16_t c : s->Condition.view())
      if (c == u'\x01')
        out += u"][";
      else
        out += c;
    out += u']';
  }
  if (s->PseudoCount > 0)
    for (int pc = 0; pc <= pcUnknown; ++pc)
      if (s->PseudoClasses & (1u << pc)) {
        out += u":" + TypeInfo<TCSSPseudoClass>()->NameOf(pc).substr(2);
        if ((pc == pcNthChild || pc == pcNthOfType) && s->NthValue != 0)
          out += s->NthValue == -1   ? hstring(u"(odd)")
                 : s->NthValue == -2 ? hstring(u"(even)")
                                     : u"(" + IntToStr(s->NthValue) + u")";
      }
  for (const auto& n : s->NotSelectors) {
    out += u":not(";
    write_compound(n.get(), out);
    out += u')';
  }
}

} // namespace

hstring TCSSSelector::AsString() const {
  std::vector<const TCSSSelector*> chain;
  for (const TCSSSelector* s = this; s; s = s->Parent)
    chain.push_back(s);
  std::u16string out;
  for (size_t i = chain.size(); i-- > 0;)
    write_compound(chain[i], out);
  return hstring(out.data(), out.size());
}

// --- Tests ---

bool TCSSSelector::TestNth(int Index, TCSSPseudoClasses Active) const {
  int pos = Index + 1;
  if (NthValue == -1)
    return pos % 2 == 1;
  if (NthValue == -2)
    return pos % 2 == 0;
  if (pos != NthValue)
    return false;
  return has_all(PseudoClasses & ~(PCBit(pcNthChild) | PCBit(pcNthOfType)), Active);
}

bool TCSSSelector::TestPseudo(const TCSSElement* Node, TCSSPseudoClasses Active) const {
  if (PseudoClasses & PCBit(pcNthChild))
    return TestNth(Node->ChildIndex(), Active);
  if (PseudoClasses & PCBit(pcNthOfType))
    return TestNth(Node->TagIndex(), Active);
  return has_all(PseudoClasses, Active);
}

namespace {

bool classes_match(const TClassesArray& need, const TCSSElement* n) {
  const TClassesArray& have = n->FClassHashes;
  if (have.size() < need.size())
    return false;
  for (const TCSSClassRec& c : need) {
    bool found = false;
    for (const TCSSClassRec& h : have)
      if (h.hash == c.hash && h.s == c.s) {
        found = true;
        break;
      }
    if (!found)
      return false;
  }
  return true;
}

} // namespace

bool TCSSSelector::TestUniversal(const TCSSElement*, TCSSPseudoClasses) const { return true; }

bool TCSSSelector::TestTag(const TCSSElement* Node, TCSSPseudoClasses) const { return Tag == Node->FTag; }

bool TCSSSelector::TestID(const TCSSElement* Node, TCSSPseudoClasses) const {
  bool found;
  return has_attributes(Node) && attr_value(Node, u"id"_hs, found) == ID.view() && found;
}

bool TCSSSelector::TestCondition(const TCSSElement* Node, TCSSPseudoClasses) const {
  return has_attributes(Node) && XTestCondition(Node);
}

bool TCSSSelector::TestClass(const TCSSElement* Node, TCSSPseudoClasses) const {
  return classes_match(Classes, Node);
}

bool TCSSSelector::TestTagClass(const TCSSElement* Node, TCSSPseudoClasses) const {
  return !Node->FClassHashes.empty() && Tag == Node->FTag && classes_match(Classes, Node);
}

bool TCSSSelector::TestPCCondition(const TCSSElement* Node, TCSSPseudoClasses Active) const {
  if (!has_attributes(Node))
    return false;
  if (PseudoClasses & PCBit(pcNthChild)) {
    if (!TestNth(Node->ChildIndex(), Active))
      return false;
  } else if (!has_all(PseudoClasses, Active)) {
    return false;
  }
  return XTestCondition(Node);
}

bool TCSSSelector::TestPCClass(const TCSSElement* Node, TCSSPseudoClasses Active) const {
  // First/last/of-type states count as given here; a known simplification.
  if (!has_all(PseudoClasses & ~kPositionStates, Active))
    return false;
  if (!classes_match(Classes, Node))
    return false;
  return !(PseudoClasses & PCBit(pcNthChild)) || TestNth(Node->ChildIndex(), Active);
}

bool TCSSSelector::TestAll(const TCSSElement* Node, TCSSPseudoClasses Active) const {
  if (!Universal && !Tag.empty() && Tag != Node->FTag)
    return false;
  if (!ID.empty()) {
    bool found;
    if (!has_attributes(Node) || attr_value(Node, u"id"_hs, found) != ID.view() || !found)
      return false;
  }
  if (!Classes.empty() && !classes_match(Classes, Node))
    return false;
  if (!TestPseudo(Node, Active))
    return false;
  return Condition.empty() || (has_attributes(Node) && XTestCondition(Node));
}

bool TCSSSelector::XTestCondition(const TCSSElement* Node) const {
  for (const TCSSCondition& c : Conditions) {
    bool found;
    std::u16string_view a = attr_value(Node, c.Name, found);
    if (!found)
      return c.Compare == acNotEq;
    std::u16string_view v = c.Value.view();
    bool ok = false;
    switch (c.Compare) {
    case acMatch:
      ok = v.empty() || a == v;
      break;
    case acStarts:
      ok = !v.empty() && a.starts_with(v);
      break;
    case acEnds:
      ok = a.ends_with(v);
      break;
    case acContains:
      ok = a.find(v) != std::u16string_view::npos;
      break;
    case acWord:
      ok = word_in(a, v);
      break;
    case acStarts2:
      ok = a == v || (a.size() > v.size() && a.starts_with(v) && a[v.size()] == u'-');
      break;
    case acNotEq:
      ok = a != v;
      break;
    }
    if (!ok)
      return false;
  }
  return true;
}

// --- The whole match ---

namespace {

bool not_passes(const TCSSSelector* s, const TCSSElement* n, TCSSPseudoClasses active) {
  for (const auto& op : s->NotSelectors)
    if (op->RunTest(n, active))
      return true;
  return false;
}

bool walk(const TCSSSelector* S, const THtNode* N, TSelectorPosition M, TCSSPseudoClasses Required);

bool all_siblings(const TCSSSelector* S, const THtNode* N, TCSSPseudoClasses Required, bool include_self) {
  const THtNode* p = N->Parent();
  if (!p || !p->FNodes)
    return false;
  int i = p->FNodes->IndexOf(N);
  if (!include_self)
    --i;
  for (; i >= 0; --i) {
    const THtNode* c = p->FNodes->GetNode(i);
    if (is_named(c) && walk(S, c, spAllSiblings, Required))
      return true;
  }
  return false;
}

bool walk(const TCSSSelector* S, const THtNode* N, TSelectorPosition M, TCSSPseudoClasses Required) {
  for (;;) {
    const TCSSElement* e = as_element(N);
    TCSSPseudoClasses active = e->CurrentPC | Required;
    if (S->RunTest(e, active)) {
      if (not_passes(S, e, active))
        return false;
      if (!S->Parent)
        return true;
      if (N->Parent() && (S->Position == spDescendant || S->Position == spChild) &&
          walk(S->Parent, N->Parent(), S->Position, Required))
        return true;
    }
    if (M == spChild)
      return false;
    // Reached also when S did not pass on N: the sibling is then tried
    // without it. Intended; sheets in use depend on the looser match.
    if (S->Parent && S->Position == spSibling) {
      const THtNode* sib = previous_named(N);
      return sib && walk(S->Parent, sib, spSibling, Required);
    }
    if (S->Parent && S->Position == spAllSiblings)
      return all_siblings(S->Parent, N, Required, true);
    N = N->Parent();
    if (!N)
      return false;
  }
}

} // namespace

bool TestSelector(const TCSSElement* Node, const TCSSSelector* Selector, TCSSPseudoClasses Required) {
  if (!has_all(Required, Selector->PseudoClasses))
    return false;
  TCSSPseudoClasses active = Node->CurrentPC | Required;
  if (!Selector->RunTest(Node, active) || not_passes(Selector, Node, active))
    return false;
  if (!Selector->Parent)
    return true;
  switch (Selector->Position) {
  case spDescendant:
  case spChild:
    return Node->Parent() && walk(Selector->Parent, Node->Parent(), Selector->Position, Required);
  case spSibling: {
    const THtNode* sib = previous_named(Node);
    return sib && walk(Selector->Parent, sib, spSibling, Required);
  }
  case spAllSiblings:
    return all_siblings(Selector->Parent, Node, Required, false);
  }
  return false;
}

// --- Reading a prelude ---

namespace {

struct TReader {
  std::span<const TCSSToken> t;
  size_t i = 0;

  bool end() const { return i >= t.size(); }
  const TCSSToken& cur() const { return t[i]; }
  void skip_spaces() {
    while (!end() && cur().CType == ctSpace)
      ++i;
  }
  void skip_past(TCSSTokenType close) {
    while (!end() && cur().CType != close)
      ++i;
    if (!end())
      ++i;
  }
  void texts_to(TCSSTokenType close, std::u16string& out) {
    while (!end() && cur().CType != close)
      out += cur().Name.view(), ++i;
    if (!end())
      ++i;
  }

  // The rest of a compound; in a :not( operand an identifier ends it.
  // Conditions gather in one buffer: a compound of many of them stays linear.
  void compound(TCSSSelector* s, bool operand) {
    std::u16string cond(s->Condition.view());
    compound_loop(s, operand, cond);
    if (cond.size() != s->Condition.size())
      s->Condition = hstring(cond.data(), cond.size());
  }

  void compound_loop(TCSSSelector* s, bool operand, std::u16string& cond) {
    while (!end()) {
      const TCSSToken& k = cur();
      switch (k.CType) {
      case ctColon:
        pseudo(s, operand);
        continue;
      case ctHash:
        s->ID = k.Name;
        ++i;
        continue;
      case ctFunction:
      case ctOpenPar:
        texts_to(ctClosePar, cond);
        continue;
      case ctOpenBr:
        ++i;
        if (!cond.empty())
          cond += u'\x01';
        texts_to(ctCloseBr, cond);
        continue;
      default:
        break;
      }
      if (k.CType == ctDelimiter && k.Name == u".") {
        ++i;
        if (!end() && cur().CType == ctIdent) {
          s->AddClass(cur().Name);
          ++i;
        }
        continue;
      }
      if ((k.CType == ctClosePar && !operand) || k.CType == ctCloseBr || k.CType == ctSlash)
        ++i;
      return;
    }
  }

  void pseudo(TCSSSelector* s, bool operand) {
    ++i; // ':'
    if (!end() && cur().CType == ctColon)
      ++i;
    if (end())
      return;
    hstring name = cur().Name;
    ++i;
    if (end() || cur().CType != ctOpenPar) {
      s->AddPseudo(name, nullptr);
      return;
    }
    ++i; // '('
    skip_spaces();
    if (!end() && cur().CType == ctClosePar) {
      ++i;
      s->AddPseudo(name, nullptr);
      return;
    }
    if (!operand && SameText(name, u"not")) {
      auto op = std::make_unique<TCSSSelector>();
      while (!end() && cur().CType != ctClosePar && cur().CType != ctIdent) {
        size_t before = i;
        compound(op.get(), true);
        skip_spaces();
        if (i == before)
          break;
      }
      skip_past(ctClosePar);
      s->NotSelectors.push_back(std::move(op));
      return;
    }
    // A :not( inside an operand is read as an unknown pseudo-class: operands
    // do not nest, so hostile nesting costs no stack.
    s->AddPseudo(operand && SameText(name, u"not") ? hstring(u"-") : name, end() ? nullptr : &cur());
    skip_past(ctClosePar);
  }
};

bool takes_tag(const TCSSToken& k) {
  switch (k.CType) {
  case ctIdent:
  case ctAtKeyword:
  case ctString:
  case ctNumber:
  case ctPercentage:
  case ctDimension:
    return true;
  default:
    return k.Name == u"*";
  }
}

} // namespace

TCSSSelector* TCSSSelector::FromTokens(std::span<const TCSSToken> Tokens) {
  size_t n = Tokens.size();
  while (n > 0 && Tokens[n - 1].CType == ctSpace)
    --n;
  if (n == 0)
    return nullptr;
  TReader r{Tokens.first(n)};
  TCSSSelector* cur = nullptr;
  int compounds = 0;
  while (!r.end()) {
    cur = new TCSSSelector(cur);
    if (++compounds > kMaxSelectorCompounds) {
      delete cur; // a chain this long is not matched; drop the rule
      return nullptr;
    }
    size_t before = r.i;
    r.skip_spaces();
    const TCSSToken& k = r.cur();
    if (k.CType == ctDelimiter && k.Name != u"." && k.Name != u"*") {
      if (k.Name == u"+")
        cur->Position = spSibling;
      else if (k.Name == u">")
        cur->Position = spChild;
      else if (k.Name == u"~")
        cur->Position = spAllSiblings;
      ++r.i;
      r.skip_spaces();
      if (r.end())
        break;
    }
    if (cur->Tag.empty() && takes_tag(r.cur())) {
      cur->Tag = r.cur().Name;
      hLower(cur->Tag);
      ++r.i;
    }
    r.compound(cur, false);
    if (r.i == before)
      ++r.i;
  }
  cur->StartPos = Tokens[0].StartPos;
  cur->EndPos = Tokens[n - 1].EndPos;
  cur->Universal = cur->Tag == u"*";
  cur->DetermineTestProc();
  return cur;
}

std::unique_ptr<TCSSSelector> TCSSSelector::Parse(const hstring& Text) {
  TCSSTokens toks;
  for (TCSSToken& t : CSSTokenize(Text)) {
    if (t.CType == ctComment || t.CType == ctSlash || t.CType == ctUnknown)
      continue;
    if (t.CType == ctBlockStart || t.CType == ctComma)
      break;
    if (t.CType == ctBlockEnd || t.CType == ctURI || t.CType == ctSemicolon)
      return nullptr;
    toks.push_back(std::move(t));
  }
  return std::unique_ptr<TCSSSelector>(FromTokens(toks));
}

} // namespace ht
