// Variable and section lookups over the data nodes.
#include "htcore/document/xml_node.h"
#include "htcore/foundation/convert.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/number_format.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/templates/template.h"
#include "templates/template_internal.h"

namespace ht {

namespace {

// Stands for a node's XML text where only its truth matters: a tagged node's
// Code is never empty and never "true" or "false".
const hstring& probe_text() {
  static const hstring s = u"<>"_hs;
  return s;
}

hstring code_of(const THtXMLNode* n, bool Probe) {
  if (Probe && !n->FTag.empty())
    return probe_text();
  return n->Code();
}

// "." and "..": the XML of a node with children, else its value.
hstring node_text(const THtXMLNode* n, bool Probe) {
  if (!n)
    return hstring();
  return n->GetCount() > 0 ? code_of(n, Probe) : n->GetValue();
}

hstring last_step(THtXMLNode* n, const hstring& step, const THtTemplateName& N) {
  if (!n)
    return hstring();
  if (step[0] == u'@')
    return n->GetAttribute(N.Attr);
  if (N.LastPath)
    return n->XPathValue(step);
  if (const THtXMLNode* child = n->NodebyName(step))
    return child->GetValue();
  return n->GetAttribute(step);
}

hstring apply_format(const hstring& value, const THtTemplateName& N) {
  hstring v = Trim(value);
  if (v.empty())
    return value;
  if (N.NumberFormat) {
    try {
      return HtFormatFloat(N.Format.view(), StrtoFloatCheck(v.view(), u'.', 0));
    } catch (const EConvertError&) {
      return value; // not a number: shown as it is
    }
  }
  TDateTime d;
  if (!detail::ReadTemplateDate(v, d))
    return value;
  return HtFormatDateTime(N.Format.view(), d);
}

// DATAPACKET documents keep their rows under ROWDATA.
THtXMLNode* row_data(THtXMLNode* n) {
  if (n && n->FTag == u"DATAPACKET")
    return n->NodebyName(u"ROWDATA"_hs);
  return n;
}

IHtNodeList children_of(THtXMLNode* n) {
  if (!n || n->GetCount() == 0)
    return IHtNodeList();
  // The node's own child list; a handle never frees a list it did not count.
  return IHtNodeList(n->FNodes);
}

} // namespace

namespace detail {

hstring LookupVar(THtTemplateContext& C, const hstring& Name, const THtTemplateName& N, bool Probe) {
  if (C.FOnGetVar) {
    hstring r;
    if (C.FOnGetVar(C, Name, r))
      return r;
  }
  switch (N.Kind) {
  case THtTemplateName::tnPass:
    return N.Pass;
  case THtTemplateName::tnIndex:
    return IntToStr(C.Context.IndexVar + 1);
  case THtTemplateName::tnSelf:
    return node_text(C.Context.Context, Probe);
  default:
    break;
  }
  if (N.Simple && !Name.empty())
    if (const THtXMLNode* v = C.GetVariable(Name, N.Hash))
      return code_of(v, Probe);
  if (N.Kind == THtTemplateName::tnTag)
    return C.Context.Context ? C.Context.Context->FTag : hstring();

  THtXMLNode* node = C.Context.Context;
  if (N.Up) {
    int level = C.Stack.Count() - N.Up;
    if (level < 0)
      return hstring();
    node = C.Stack.Items(level).Context;
  }
  if (N.Steps.empty())
    return node_text(node, Probe);
  size_t last = N.Steps.size() - 1;
  for (size_t i = 0; i < last; ++i) {
    THtXMLNode* next = node ? node->NodebyName(N.Steps[i]) : nullptr;
    if (!next && i == 0)
      next = C.GetVariable(N.Steps[0]);
    if (!next)
      return hstring();
    node = next;
  }
  hstring value = last_step(node, N.Steps[last], N);
  return N.Format.empty() ? value : apply_format(value, N);
}

bool LookupSection(THtTemplateContext& C, const hstring& Name, const THtTemplateName& N, IHtNodeList& List) {
  List.reset();
  THtXMLNode* cur = C.Context.Context;
  if (N.HasSlash) {
    THtXMLNode* base = nullptr;
    const hstring& b = N.PathBase;
    if (b.empty() || b == u"." || (cur && cur->FTag == b))
      base = cur;
    else if (THtXMLNode* child = cur ? cur->NodebyName(b) : nullptr)
      base = child;
    else
      base = C.GetVariable(b);
    if (!base)
      return false;
    IHtNodeList found = base->XPath(N.PathRest);
    if (!found || found->GetCount() == 0)
      return false;
    List = std::move(found);
    return true;
  }
  if (N.HasParen && C.FOnUpdateSection && C.Template) {
    C.FOnUpdateSection(*C.Template, C, Name);
    THtXMLNode* n = row_data(C.GetVariable(N.UpdateVar));
    if (!n)
      return false;
    if (n->GetCount() == 0) {
      List = THtNodeList::CreateRef();
      List->Add(n);
      return true;
    }
    List = children_of(n);
    return true;
  }
  if (N.SectionSteps.empty())
    return false;
  const hstring& first = N.SectionSteps[0];
  THtXMLNode* n = nullptr;
  if (cur && cur->FTag == first)
    n = cur;
  else if (THtXMLNode* child = cur ? cur->NodebyName(first) : nullptr)
    n = child;
  else
    n = C.GetVariable(first);
  for (size_t i = 1; n && i < N.SectionSteps.size(); ++i)
    n = n->NodebyName(N.SectionSteps[i]);
  List = children_of(row_data(n));
  return static_cast<bool>(List);
}

} // namespace detail

hstring THtTemplate::GetVar(THtTemplateContext& AContext, const hstring& Name) const {
  THtTemplateName n;
  CompileTemplateName(Name, n);
  return detail::LookupVar(AContext, Name, n, false);
}

bool THtTemplate::GetSection(THtTemplateContext& AContext, const hstring& Name, IHtNodeList& List) const {
  THtTemplateName n;
  CompileTemplateName(Name, n);
  const THtTemplate* saved = AContext.Template;
  if (!saved)
    AContext.Template = this;
  bool r = detail::LookupSection(AContext, Name, n, List);
  AContext.Template = saved;
  return r;
}

} // namespace ht
