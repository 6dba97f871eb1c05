#include "htcore/templates/template.h"

#include "htcore/document/xml_node.h"
#include "htcore/foundation/text_utils.h"

namespace ht {

namespace {

// The node "v" of the string-list forms: one attribute per name=value line.
THtXMLNode* values_node(const TStringList& Strings) {
  auto* v = new THtXMLNode();
  v->SetTag(u"v"_hs);
  for (int i = 0; i < Strings.Count(); ++i) {
    hstring name = Strings.Names(i);
    if (!name.empty())
      v->SetAttribute(name, Strings.ValueFromIndex(i));
  }
  return v;
}

} // namespace

THtTemplateContext::THtTemplateContext() : FObjects(true), Vars(16, false) {}

THtTemplateContext::~THtTemplateContext() = default;

void THtTemplateContext::SetVariable(const hstring& Name, THtXMLNode* Node, bool Owned) {
  Vars.Add(Name, Node);
  if (Owned && Node && FObjects.IndexOf(Node) < 0)
    FObjects.Add(Node);
}

THtXMLNode* THtTemplateContext::GetVariable(const hstring& Name) const {
  if (THtNameObjectPair* pair = Vars.GetPair(Name))
    return static_cast<THtXMLNode*>(pair->Value);
  return Shared ? Shared->GetVariable(Name) : nullptr;
}

THtXMLNode* THtTemplateContext::GetVariable(const hstring& Name, uint32_t Hash) const {
  if (TObject* pair = Vars.GetHashed(Hash, Name))
    return static_cast<THtXMLNode*>(static_cast<THtNameObjectPair*>(pair)->Value);
  return Shared ? Shared->GetVariable(Name, Hash) : nullptr;
}

void THtTemplateContext::Clear() {
  Vars.Clear();
  FObjects.Clear();
  Stack.Clear();
  Context = THtContext();
}

THtTemplate::THtTemplate() = default;

THtTemplate::THtTemplate(const hstring& Text, bool AJSONMode) : FJSONMode(AJSONMode) { Parse(Text); }

THtTemplate::~THtTemplate() = default;

std::unique_ptr<THtTemplate> THtTemplate::Create(const hstring& Text, bool AJSONMode) {
  return std::make_unique<THtTemplate>(Text, AJSONMode);
}

void THtTemplate::Parse(const hstring& Text) {
  FTemplate = Text;
  TemplateSize = Text.Length();
  Items = nullptr;
  FArena.Clear();
  NoTemplate = Pos(u"{{", Text.view()) == 0;
  if (NoTemplate)
    return;
  THtTemplateTokenizer tokenizer(Text, ProcessScript);
  Items = ParseTemplateItems(tokenizer, FArena);
}

hstring THtTemplate::Render(THtXMLNode* Root) {
  if (NoTemplate)
    return FTemplate;
  FTemplateContext.FOnUpdateSection = OnUpdateSection;
  if (!FTemplateContext.TagObject)
    FTemplateContext.TagObject = TagObject;
  return DoRender(FTemplateContext, Root);
}

hstring THtTemplate::ThreadSafeRender(THtXMLNode* Node, TObject* ATagObject, const THtGetVarEvent& OnGetVar,
                                      const THtUpdateSectionEvent& AOnUpdateSection) const {
  if (NoTemplate)
    return FTemplate;
  THtTemplateContext c;
  c.Shared = &FTemplateContext;
  c.TagObject = ATagObject;
  c.FOnGetVar = OnGetVar;
  c.FOnUpdateSection = AOnUpdateSection;
  return DoRender(c, Node);
}

hstring THtTemplate::ThreadSafeRender(const TStringList& Strings, TObject* ATagObject,
                                      const THtGetVarEvent& OnGetVar,
                                      const THtUpdateSectionEvent& AOnUpdateSection) const {
  if (NoTemplate)
    return FTemplate;
  THtTemplateContext c;
  c.Shared = &FTemplateContext;
  c.TagObject = ATagObject;
  c.FOnGetVar = OnGetVar;
  c.FOnUpdateSection = AOnUpdateSection;
  THtXMLNode* v = values_node(Strings);
  c.SetVariable(u"v"_hs, v, true);
  return DoRender(c, v);
}

hstring THtTemplate::RenderTemplate(const hstring& Text, THtXMLNode* Node, bool JSONMode,
                                    TObject* ATagObject) {
  THtTemplate t(Text, JSONMode);
  t.TagObject = ATagObject;
  return t.Render(Node);
}

hstring THtTemplate::RenderTemplate(const hstring& Text, const TStringList& Strings, TObject* ATagObject,
                                    bool JSONMode) {
  THtTemplate t(Text, JSONMode);
  t.TagObject = ATagObject;
  THtXMLNode* v = values_node(Strings);
  t.SetVariable(u"v"_hs, v, true);
  return t.Render(v);
}

} // namespace ht
