#include "htcore/style/style_driver.h"

#include "htcore/foundation/convert.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/element_style.h"
#include "htcore/style/styled_node.h"
#include "tree_walk.h"

#include <algorithm>

namespace ht {

namespace {

// Root and the nodes below it, in document order.
template <class F> void each_node(THtNode* Root, F&& f) {
  f(Root);
  detail::ForEachBelow(Root, [&](THtNode* n) {
    f(n);
    return true;
  });
}

TStyledHTMLNode* styled(THtNode* n) {
  return detail::IsStyledTag(n) ? dynamic_cast<TStyledHTMLNode*>(n) : nullptr;
}

void shift_orders(TCSSStyleSheet& Sheet, int Delta) {
  for (auto& sec : Sheet.fSections)
    for (TCSSSelector* s : sec->Selectors)
      s->Order += Delta;
}

bool has_word(const hstring& Text, std::u16string_view Word) {
  hstring t = Text;
  hLower(t);
  std::u16string_view v = t.view();
  size_t b = 0;
  for (size_t i = 0; i <= v.size(); ++i)
    if (i == v.size() || v[i] == u' ' || v[i] == u'\t' || v[i] == u'\n' || v[i] == u'\r') {
      if (v.substr(b, i - b) == Word)
        return true;
      b = i + 1;
    }
  return false;
}

// A pseudo element is generated only when its content is something.
bool has_content(const TCSSWeightList& List) {
  for (int i = List.Count(); i-- > 0;) {
    const TCSSValue* v = List.GetValue(i);
    if (v->Prop && v->Prop->Prop == cspContent) {
      if (v->Tokens.empty())
        return false;
      const hstring& t = v->Tokens[0].Name;
      return v->Tokens.size() > 1 || !(SameText(t, u"none") || SameText(t, u"normal"));
    }
  }
  return false;
}

} // namespace

TStyleDriver::TStyleDriver(TStyledHTMLNode* ARoot) : FRoot(ARoot) {
  if (FRoot)
    QuirksMode = FRoot->QuirksMode();
}

TStyleDriver::~TStyleDriver() = default;

TCSSStyleSheet* TStyleDriver::parse_sheet(const hstring& Text, const hstring& URL, int Depth,
                                          std::vector<std::unique_ptr<TCSSStyleSheet>>& Into) {
  auto sheet = std::make_unique<TCSSStyleSheet>();
  sheet->URL = URL;
  const int start = FOrder;
  sheet->SelectorCounter = start;
  sheet->Parse(Text);
  const int own = sheet->SelectorCounter - start;
  FOrder = sheet->SelectorCounter;
  // Imported rules come before the importing sheet's: they are read after
  // it, so the two order ranges trade places.
  const size_t first_import = Into.size();
  if (Loader && Depth < MaxImportDepth)
    for (const hstring& url : sheet->Imports()) {
      if (std::find(FLoading.begin(), FLoading.end(), url) != FLoading.end())
        continue;
      FLoading.push_back(url);
      hstring text = Loader(url);
      if (!text.empty())
        parse_sheet(text, url, Depth + 1, Into);
      FLoading.pop_back();
    }
  const int imported = FOrder - start - own;
  if (imported > 0) {
    shift_orders(*sheet, imported);
    for (size_t i = first_import; i < Into.size(); ++i)
      shift_orders(*Into[i], -own);
  }
  sheet->TestMediaSets(Media, FWidth, FDeviceWidth);
  Into.push_back(std::move(sheet));
  return Into.back().get();
}

void TStyleDriver::add_link(const hstring& Href, std::vector<std::unique_ptr<TCSSStyleSheet>>& Into) {
  if (!Loader || Trim(Href).empty())
    return;
  hstring href = Trim(Href);
  std::u16string_view v = href.view();
  const bool absolute = v.find(u':') < v.find(u'/'); // a scheme: "http:", "data:"
  hstring url = BaseURL.empty() || absolute ? href : CombineUrl(BaseURL, href);
  FLoading.assign(1, url);
  hstring text = Loader(url);
  if (!text.empty())
    parse_sheet(text, url, 0, Into);
  FLoading.clear();
}

void TStyleDriver::AddSheet(const hstring& Text, const hstring& URL) {
  FHostTexts.emplace_back(Text, URL);
  if (!FCollected)
    return;
  parse_sheet(Text, URL, 0, FHostSheets);
  rebuild_list();
  Invalidate();
}

void TStyleDriver::rebuild_list() {
  FSheets.clear();
  for (auto& s : FDocSheets)
    FSheets.push_back(s.get());
  for (auto& s : FHostSheets)
    FSheets.push_back(s.get());
}

void TStyleDriver::clear_styles() {
  if (!FRoot)
    return;
  each_node(FRoot, [](THtNode* n) {
    if (TStyledHTMLNode* e = styled(n)) {
      if (e->Style())
        e->Style()->Reset(false);
      for (TCSSPseudoClass pc : {pcBefore, pcAfter, pcMarker})
        e->FreePseudo(pc);
      e->Flags &= ~(EFBit(efStyleCalculated) | EFBit(efPseudoCalculated));
    }
  });
}

void TStyleDriver::CollectSheets() {
  FCollected = true;
  if (!FRoot)
    return;
  // The old sheets go: no style may keep pointing into them.
  clear_styles();
  std::vector<std::unique_ptr<TCSSStyleSheet>> sheets;
  FOrder = 10000;
  each_node(FRoot, [&](THtNode* n) {
    auto* e = dynamic_cast<THtmlNode*>(n);
    if (!e || n->FTag.empty())
      return;
    if (SameText(n->FTag, u"style")) {
      hstring type = Trim(e->GetAttribute(u"type"));
      if (!type.empty() && !SameText(type, u"text/css"))
        return;
      hstring text = n->TextContent();
      hstring media = Trim(e->GetAttribute(u"media"));
      if (!media.empty() && !SameText(media, u"all"))
        text = u"@media "_hs + media + u"{" + text + u"\n}";
      parse_sheet(text, BaseURL, 0, sheets);
    } else if (SameText(n->FTag, u"link")) {
      hstring rel = e->GetAttribute(u"rel");
      if (has_word(rel, u"stylesheet") && !has_word(rel, u"alternate"))
        add_link(e->GetAttribute(u"href"), sheets);
    }
  });
  FDocSheets = std::move(sheets);
  // The host's sheets are read again behind the document's, so that their
  // orders follow.
  FHostSheets.clear();
  for (const auto& [text, url] : FHostTexts)
    parse_sheet(text, url, 0, FHostSheets);
  rebuild_list();
}

void TStyleDriver::Invalidate() {
  if (!FRoot)
    return;
  each_node(FRoot, [](THtNode* n) {
    if (TStyledHTMLNode* e = styled(n))
      e->Flags &= ~EFBit(efStyleCalculated);
  });
}

bool TStyleDriver::SetViewport(int Width, int DeviceWidth) {
  FWidth = Width;
  FDeviceWidth = DeviceWidth;
  bool changed = false;
  for (TCSSStyleSheet* s : FSheets)
    changed = s->TestMediaSets(Media, Width, DeviceWidth) || changed;
  if (changed)
    Invalidate();
  return changed;
}

void TStyleDriver::collect_rules(TStyledHTMLNode* Node, TCSSPseudoClass Pseudo) {
  const TCSSPseudoClasses required = Pseudo == pcNone ? 0 : PCBit(Pseudo);
  auto from = [&](const TCSSStyleSheet* s) { s->GetElementSelectors(Node, FList, s->Maps(Pseudo), required); };
  from(HTML4StyleSheet());
  if (QuirksMode)
    from(HTML4QuirkStyleSheet());
  for (const TCSSStyleSheet* s : FSheets)
    from(s);
}

void TStyleDriver::StyleElement(TStyledHTMLNode* Node) {
  TBaseElementStyle* style = Node ? Node->EnsureStyle() : nullptr;
  if (!style)
    return;
  // The snapshot stays, so that the host can tell what the new cascade changed.
  style->Reset(true);
  FList.Clear();
  collect_rules(Node, pcNone);
  if (TCSSStyleSheet* own = Node->PrepareSelfStyle())
    own->GetAllSelectors(FList);
  style->ApplyValue(FList, false);
  if (TStyledHTMLNode* parent = Node->ParentElement(); parent && parent->Style())
    style->Inherit(parent->Style());
  Node->CalcNonRelativeProps();
  Node->Flags |= EFBit(efStyleCalculated);
  style_pseudo(Node);
}

void TStyleDriver::style_pseudo(TStyledHTMLNode* Node) {
  TCSSPseudoClasses found = 0;
  HTML4StyleSheet()->GetElementPseudoClasses(Node, found);
  if (QuirksMode)
    HTML4QuirkStyleSheet()->GetElementPseudoClasses(Node, found);
  for (const TCSSStyleSheet* s : FSheets)
    s->GetElementPseudoClasses(Node, found);
  for (TCSSPseudoClass pc : {pcBefore, pcAfter, pcMarker}) {
    if (!(found & PCBit(pc))) {
      Node->FreePseudo(pc);
      continue;
    }
    FList.Clear();
    collect_rules(Node, pc);
    // ::marker belongs to list items whatever their content; the others
    // exist only with content.
    if (FList.Empty() || (pc != pcMarker && !has_content(FList))) {
      Node->FreePseudo(pc);
      continue;
    }
    TStyledHTMLNode* p = Node->CreatePseudo(pc);
    TBaseElementStyle* ps = p ? p->EnsureStyle() : nullptr;
    if (!ps)
      continue;
    ps->Reset(true);
    ps->ApplyValue(FList, false);
    ps->Inherit(Node->Style());
    p->CalcNonRelativeProps();
    p->Flags |= EFBit(efStyleCalculated);
  }
  Node->Flags |= EFBit(efPseudoCalculated);
  Node->UpdatePseudo();
}

int TStyleDriver::Run() {
  if (!FRoot)
    return 0;
  if (!FCollected)
    CollectSheets();
  SetStructuralPseudoClasses(FRoot);
  // A restyled element takes its parent's subtree from there on with it:
  // selectors may tie its descendants and its later siblings to it.
  bool in_scope = false;
  THtNode* scope_end = nullptr;
  int count = 0;
  each_node(FRoot, [&](THtNode* n) {
    if (in_scope && n == scope_end)
      in_scope = false;
    TStyledHTMLNode* e = styled(n);
    if (!e || (!in_scope && e->HasFlag(efStyleCalculated) && e->Style()))
      return;
    StyleElement(e);
    ++count;
    if (!in_scope) {
      in_scope = true;
      scope_end = detail::AfterSubtree(n->FParent ? n->FParent : n);
    }
  });
  return count;
}

bool TStyleDriver::ResolveVariable(TCSSTokenSequence& Seq) const {
  bool replaced = false;
  for (int level = 0; level < 8; ++level) {
    if (!Seq.T || !Seq.FPTokens || Seq.T->CType != ctFunction || !SameText(Seq.T->Name, u"var"))
      break;
    const TCSSTokens& toks = *Seq.FPTokens;
    size_t i = static_cast<size_t>(Seq.Index) + 1;
    if (i < toks.size() && toks[i].CType == ctOpenPar) // a function's bracket is a token of its own
      ++i;
    if (i >= toks.size())
      break;
    std::u16string_view name = toks[i].Name.view();
    if (name.starts_with(u"--"))
      name.remove_prefix(2);
    std::shared_ptr<TCSSTokens> with;
    const hstring key(name);
    for (auto s = FSheets.rbegin(); s != FSheets.rend() && !with; ++s)
      if (auto it = (*s)->Variables.find(key); it != (*s)->Variables.end())
        with = std::make_shared<TCSSTokens>(it->second.Tokens);
    if (!with) {
      // The fallback: behind the first comma, up to the bracket that closes var(.
      ++i;
      if (i >= toks.size() || toks[i].CType != ctComma)
        break;
      with = std::make_shared<TCSSTokens>();
      int depth = 0;
      for (++i; i < toks.size(); ++i) {
        const TCSSToken& t = toks[i];
        if (t.CType == ctClosePar && depth-- == 0)
          break;
        if (t.CType == ctOpenPar)
          ++depth;
        with->push_back(t);
      }
    }
    if (with->empty())
      break;
    Seq.InitStore(std::move(with));
    replaced = true;
  }
  return replaced;
}

} // namespace ht
