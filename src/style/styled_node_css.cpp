// The element's own style: the style attribute and FVirtualSelfStyle parsed
// into SelfStyleSheet, and the edits that keep the three in step.
//
// SelfStyleSheet is shared copy on write: RefCounter counts the holders
// beyond the first, so the last one to let go frees it.
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/styled_node.h"
#include "style/styled_node_walk.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ht {

namespace {

// The weight of inline style and of what AddCSS adds by default.
constexpr int kInlineWeight = static_cast<int>(kCSSImportantWeight);

// Calls f(name, declaration) for each "name: value" of a declaration list,
// cut at semicolons outside quotes and brackets; name is trimmed.
template <class F> void for_each_declaration(std::u16string_view t, F&& f) {
  auto trim = [](std::u16string_view v) {
    while (!v.empty() && v.front() <= u' ')
      v.remove_prefix(1);
    while (!v.empty() && v.back() <= u' ')
      v.remove_suffix(1);
    return v;
  };
  auto emit = [&](std::u16string_view d) {
    d = trim(d);
    if (!d.empty())
      f(trim(d.substr(0, std::min(d.find(u':'), d.size()))), d);
  };
  size_t start = 0;
  int depth = 0;
  char16_t quote = 0;
  for (size_t i = 0; i < t.size(); ++i) {
    char16_t c = t[i];
    if (quote) {
      if (c == u'\\')
        ++i;
      else if (c == quote)
        quote = 0;
    } else if (c == u'"' || c == u'\'') {
      quote = c;
    } else if (c == u'(') {
      ++depth;
    } else if (c == u')') {
      depth -= depth > 0;
    } else if (c == u';' && depth == 0) {
      emit(t.substr(start, i - start));
      start = i + 1;
    }
  }
  if (start < t.size())
    emit(t.substr(start));
}

// Drops from Text the declarations whose name Drop accepts; true when one went.
template <class P> bool erase_declarations(hstring& Text, P&& Drop) {
  std::u16string kept;
  bool dropped = false;
  for_each_declaration(Text.view(), [&](std::u16string_view name, std::u16string_view d) {
    if (Drop(name)) {
      dropped = true;
      return;
    }
    kept += d;
    kept += u';';
  });
  if (dropped)
    Text = hstring(kept.data(), kept.size());
  return dropped;
}

bool sheet_holds(const TCSSStyleSheet& Sheet, std::u16string_view Name) {
  for (const auto& s : Sheet.fSections)
    for (const TCSSValue& v : s->Values)
      if (SameText(v.Name.view(), Name))
        return true;
  return false;
}

// A universal rule parsed into an own sheet at the weight of the one there
// merges into it and leaves its section empty; the empty ones go, so that
// edits do not pile up sections. Their selectors were never filed.
void drop_merged_sections(TCSSStyleSheet& Sheet) {
  const TCSSSelectors* filed = Sheet.Main.Tags ? Sheet.Main.Tags->Get(u"*"_hs) : nullptr;
  auto is_filed = [&](const TCSSSection& s) {
    if (!filed)
      return false;
    for (const TCSSSelector* f : *filed)
      if (f->Section == &s)
        return true;
    return false;
  };
  std::erase_if(Sheet.fSections, [&](const std::unique_ptr<TCSSSection>& s) {
    return s->Values.empty() && s->CompiledValues.empty() && !s->FontFace && !is_filed(*s);
  });
}

void parse_into(TCSSStyleSheet& Sheet, const hstring& Text, int Weight) {
  if (BlankString(Text.view()))
    return;
  Sheet.ParseValues(Text, Weight);
  drop_merged_sections(Sheet);
}

} // namespace

// --- The own sheet ---

void TStyledHTMLNode::ClearSelfStyleSheet() {
  Flags &= ~EFBit(efSelfStyleProcessed);
  if (!SelfStyleSheet)
    return;
  if (SelfStyleSheet->RefCounter > 0)
    --SelfStyleSheet->RefCounter;
  else
    delete SelfStyleSheet; // the last holder
  SelfStyleSheet = nullptr;
}

void TStyledHTMLNode::BuildSelfStyleSheet() {
  ClearSelfStyleSheet();
  SelfStyleSheet = new TCSSStyleSheet(); // freed by ClearSelfStyleSheet
  // The presentational values come second, so that they replace a style
  // value of the same name in the merged rule.
  parse_into(*SelfStyleSheet, GetSelfStyle(), kInlineWeight);
  parse_into(*SelfStyleSheet, FVirtualSelfStyle, kInlineWeight);
  Flags |= EFBit(efSelfStyleProcessed);
}

TCSSStyleSheet* TStyledHTMLNode::PrepareSelfStyle() {
  if (!HasFlag(efSelfStyleProcessed)) {
    if (!FVirtualSelfStyle.empty() || !BlankString(GetSelfStyle().view())) {
      BuildSelfStyleSheet();
    } else {
      ClearSelfStyleSheet();
      Flags |= EFBit(efSelfStyleProcessed);
    }
  }
  return SelfStyleSheet;
}

void TStyledHTMLNode::UniqueSelfStyle() {
  if (!SelfStyleSheet || SelfStyleSheet->RefCounter <= 0)
    return;
  // A copy of the rules themselves, each at its weight: what an earlier
  // AddCSS put in without writing it to the document stays.
  auto copy = std::make_unique<TCSSStyleSheet>();
  for (const auto& s : SelfStyleSheet->fSections)
    if (!s->Values.empty() && s->Selectors.Count() > 0)
      parse_into(*copy, s->AsInlineString(), static_cast<int>(s->Selectors.GetSelector(0)->Weight));
  --SelfStyleSheet->RefCounter;
  SelfStyleSheet = copy.release(); // freed by ClearSelfStyleSheet
}

void TStyledHTMLNode::ShareSelfStyleSheet(TStyledHTMLNode& Source) {
  TCSSStyleSheet* sheet = Source.PrepareSelfStyle();
  if (sheet == SelfStyleSheet && HasFlag(efSelfStyleProcessed))
    return;
  ClearSelfStyleSheet();
  if (sheet) {
    ++sheet->RefCounter;
    SelfStyleSheet = sheet;
  }
  Flags |= EFBit(efSelfStyleProcessed);
  StyleChanged(true);
}

// --- Edits ---

void TStyledHTMLNode::SnapshotStyle() {
  if (FStyle && FStyle->FLastProps.empty())
    FStyle->SaveLastProps();
}

void TStyledHTMLNode::SelfStyleEdited(bool Persist) {
  if (Persist) {
    hstring text = SelfStyleSheet->AsInlineString();
    // Written past ParseAttribute: the sheet already holds it.
    if (!text.empty())
      THtmlNode::SetAttribute(u"style"_hs, text);
    else if (FAttributes)
      FAttributes->ClearAttr(u"style"_hs);
  }
  StyleChanged(true);
  if (FStyle) {
    FStyle->FProps.clear();
    FStyle->PropertySet.Clear();
  }
}

void TStyledHTMLNode::AddCSS(const hstring& Text, bool Persist, uint32_t Weight) {
  if (FTag.empty())
    return;
  SnapshotStyle();
  if (!SelfStyleSheet || !HasFlag(efSelfStyleProcessed))
    BuildSelfStyleSheet();
  else
    UniqueSelfStyle();
  parse_into(*SelfStyleSheet, Text, Weight ? static_cast<int>(Weight) : kInlineWeight);
  SelfStyleEdited(Persist);
}

bool TStyledHTMLNode::RemoveVirtualCSS(std::u16string_view Name) {
  if (FVirtualSelfStyle.empty() ||
      !erase_declarations(FVirtualSelfStyle, [&](std::u16string_view n) { return SameText(n, Name); }))
    return false;
  // The sheet is built anew before the next cascade reads it.
  Flags &= ~EFBit(efSelfStyleProcessed);
  StyleChanged(true);
  return true;
}

void TStyledHTMLNode::AddVirtualText(std::u16string_view Added, const std::vector<std::u16string_view>& Names) {
  // A name not in the text at all needs no pass over its declarations.
  if (!FVirtualSelfStyle.empty() &&
      std::any_of(Names.begin(), Names.end(), [&](std::u16string_view n) { return Pos(n, FVirtualSelfStyle.view()); }))
    erase_declarations(FVirtualSelfStyle, [&](std::u16string_view n) {
      return std::any_of(Names.begin(), Names.end(), [&](std::u16string_view a) { return SameText(a, n); });
    });
  FVirtualSelfStyle += Added;
  if (SelfStyleSheet && HasFlag(efSelfStyleProcessed)) {
    SnapshotStyle();
    UniqueSelfStyle();
    parse_into(*SelfStyleSheet, hstring(Added), kInlineWeight);
    SelfStyleEdited(false);
  } else {
    Flags &= ~EFBit(efSelfStyleProcessed);
    StyleChanged(true);
  }
}

void TStyledHTMLNode::AddVirtualCSS(const hstring& Text) {
  if (FTag.empty())
    return;
  std::vector<std::u16string_view> names;
  std::u16string added;
  for_each_declaration(Text.view(), [&](std::u16string_view name, std::u16string_view d) {
    names.push_back(name);
    added += d;
    added += u';';
  });
  if (!added.empty())
    AddVirtualText(added, names);
}

// The way of every presentational attribute while a page is parsed: one
// declaration, no text to cut up.
void TStyledHTMLNode::AddVirtualCSS2(const hstring& Name, const hstring& Value) {
  if (FTag.empty() || Name.empty())
    return;
  // One value: what an attribute has behind a semicolon declares nothing.
  std::u16string_view value;
  bool first = true;
  for_each_declaration(Value.view(), [&](std::u16string_view, std::u16string_view d) {
    if (first)
      value = d, first = false;
  });
  if (value.empty())
    return;
  std::u16string added;
  added.reserve(Name.size() + value.size() + 2);
  added += Name.view();
  added += u':';
  added += value;
  added += u';';
  AddVirtualText(added, {Name.view()});
}

void TStyledHTMLNode::CSS(const hstring& Text) { AddVirtualCSS(Text); }

void TStyledHTMLNode::ClearCSS(const hstring& Name, bool Persist) {
  std::u16string_view name = Trim(Name).view();
  TCSSStyleSheet* sheet = PrepareSelfStyle();
  // Out of the virtual text too, or the next build of the sheet brings it back.
  if (!FVirtualSelfStyle.empty())
    erase_declarations(FVirtualSelfStyle, [&](std::u16string_view n) { return SameText(n, name); });
  if (!sheet || !sheet_holds(*sheet, name))
    return;
  SnapshotStyle();
  UniqueSelfStyle();
  SelfStyleSheet->ClearProp(hstring(name));
  SelfStyleEdited(Persist);
}

namespace {

// Calls f on each styled element of the subtree of Root, Root first, in
// document order; f answers false to pass over an element's subtree.
template <class F> void walk_elements(TStyledHTMLNode* Root, F&& f) {
  std::vector<TStyledHTMLNode*> stack{Root};
  while (!stack.empty()) {
    TStyledHTMLNode* n = stack.back();
    stack.pop_back();
    if (n->IsText() || !f(n))
      continue;
    size_t at = stack.size();
    detail::PushStyledChildren(stack, n, false);
    std::reverse(stack.begin() + static_cast<std::ptrdiff_t>(at), stack.end());
  }
}

} // namespace

void TStyledHTMLNode::AddCSSRecursive(const hstring& Text, bool Persist) {
  walk_elements(this, [&](TStyledHTMLNode* n) {
    // Only an element styled inline is known to be inline.
    if (n->HasFlag(efStyleCalculated) && n->Display() == dsInline)
      return false;
    n->AddCSS(Text, Persist);
    return true;
  });
}

void TStyledHTMLNode::ClearCSSRecursive(const hstring& Name, bool Persist) {
  walk_elements(this, [&](TStyledHTMLNode* n) {
    n->ClearCSS(Name, Persist);
    return true;
  });
}

} // namespace ht
