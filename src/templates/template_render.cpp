// The render loop: items to text, with an explicit stack of open sections.
#include "htcore/document/html_encode.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/templates/template.h"
#include "htcore/templates/template_functions.h"
#include "templates/template_internal.h"

#include <memory>
#include <vector>

namespace ht {

namespace {

// One open section (or the top level) of the render loop.
struct TFrame {
  TFrame(const THtTemplateItem* ASection, const THtTemplateItem* AItem, TFastString* AOut)
      : Section(ASection), Item(AItem), Out(AOut) {}

  const THtTemplateItem* Section = nullptr; // null at the top
  const THtTemplateItem* Item = nullptr;    // the next child to render
  TFastString* Out = nullptr;               // where the children write
  IHtNodeList Rows;                         // rows of a repeating section
  int Row = 0;
  bool Pushed = false;                 // a context level to pop at the end
  std::unique_ptr<TFastString> Buffer; // a function section's children
};

enum TSectionMode { smSkip, smOnce, smRows };

bool is_text(const hstring& v, std::u16string_view word) {
  return v.size() == word.size() && SameText(v, word);
}

} // namespace

void THtTemplate::RenderItems(THtTemplateContext& C, TFastString& Out) const {
  std::vector<TFrame> frames;
  frames.reserve(16);
  frames.emplace_back(nullptr, Items, &Out);
  while (!frames.empty()) {
    TFrame& f = frames.back();
    if (!f.Item) {
      if (f.Rows && ++f.Row < f.Rows->GetCount()) {
        C.Context.IndexVar = f.Row;
        C.Context.Context = static_cast<THtXMLNode*>(f.Rows->GetNode(f.Row));
        f.Item = f.Section->Items;
        continue;
      }
      if (f.Buffer) {
        hstring result;
        f.Section->func(f.Buffer->GetAsString(), result);
        frames[frames.size() - 2].Out->Add(result);
      }
      if (f.Pushed)
        C.Stack.Pop(C.Context);
      frames.pop_back();
      continue;
    }
    const THtTemplateItem* it = f.Item;
    f.Item = it->Next;
    TFastString& out = *f.Out;
    switch (it->Kind) {
    case tiText:
      out.Add(it->Name);
      continue;
    case tiComment:
      continue;
    case tiVariable: {
      if (it->Lookup.Kind == THtTemplateName::tnIndex && !C.FOnGetVar) {
        out.Add(C.Context.IndexVar + 1); // digits need no escaping
        continue;
      }
      hstring v = detail::LookupVar(C, it->Name, it->Lookup, false);
      if (it->Nested && !v.empty()) {
        THtTemplateName n;
        CompileTemplateName(v, n);
        v = detail::LookupVar(C, v, n, false);
      }
      if (!it->Escape)
        out.Add(v);
      else if (FJSONMode)
        out.Add(JSONEncode(v));
      else
        HtmlEncodeAttrTo(out, v.view());
      continue;
    }
    case tiSection:
      break;
    }
    if (it->Name.empty())
      continue;
    if (it->func) {
      auto buffer = std::make_unique<TFastString>(4096);
      TFastString* target = buffer.get();
      frames.emplace_back(it, it->Items, target).Buffer = std::move(buffer);
      continue;
    }

    // Decide how the section renders: not at all, once here, or per row.
    TSectionMode mode = smOnce;
    IHtNodeList rows;
    std::u16string_view name = it->Name.view();
    if (name == u"-first" || name == u"-last") {
      int at = name == u"-first" ? 0 : C.Context.IndexCount - 1;
      if ((C.Context.IndexVar == at) == it->Inverted)
        mode = smSkip;
    } else {
      hstring value = detail::LookupVar(C, it->Name, it->Lookup, true);
      bool isFalse = is_text(value, u"false");
      bool isTrue = is_text(value, u"true");
      if (it->NonEmpty) {
        if (value.empty() != it->Inverted)
          mode = smSkip;
      } else if (isFalse && !it->Inverted && !IgnoreLogicalSections) {
        mode = smSkip;
      } else if (name[0] == u'?' && !IgnoreLogicalSections) {
        THtXMLNode* cur = C.Context.Context;
        if (!cur || cur->FTag.view() != name.substr(1))
          mode = smSkip;
      } else {
        bool hasList = detail::LookupSection(C, it->Name, it->Lookup, rows);
        if ((hasList || isTrue) ? it->Inverted : !it->Inverted)
          mode = smSkip;
        else if (!isTrue && !isFalse && !it->Inverted)
          mode = smRows;
      }
    }
    if (mode == smSkip || !it->Items)
      continue;
    TFastString* target = f.Out;
    if (mode == smOnce) {
      frames.emplace_back(it, it->Items, target);
      continue;
    }
    C.Stack.Push(C.Context);
    C.Context.IndexCount = rows->GetCount();
    C.Context.IndexVar = 0;
    C.Context.Context = static_cast<THtXMLNode*>(rows->GetNode(0));
    TFrame& loop = frames.emplace_back(it, it->Items, target);
    loop.Rows = std::move(rows);
    loop.Pushed = true;
  }
}

hstring THtTemplate::DoRender(THtTemplateContext& C, THtXMLNode* Root) const {
  if (Root)
    C.SetVariable(u"."_hs, Root);
  else
    Root = C.GetVariable(u"."_hs);
  C.SetVariable(u"context"_hs, Root);
  C.Stack.Clear();
  C.Context = THtContext{0, 0, Root};
  C.Template = this;
  C.IncludeBase = IncludeBase.empty() ? GetHtTemplateIncludeBase() : IncludeBase;
  detail::TCurrentTemplateContext current(&C);
  TFastString out(TemplateSize * 2 > 4096 ? TemplateSize * 2 : 4096);
  RenderItems(C, out);
  return out.GetAsString();
}

} // namespace ht
