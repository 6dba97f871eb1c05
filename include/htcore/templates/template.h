// THtTemplate: "{{ }}" templates rendered over XML (or JSON) data.
//
// A template is parsed once and rendered many times. Variables are looked up
// from the current data node ("{{name}}", "{{@attr}}", "{{a.b}}",
// "{{price(# ##0.00)}}", "{{when(dd.mm.yyyy)}}"); sections repeat over child
// nodes ("{{#rows}}...{{/rows}}") or test values ("{{^rows}}none{{/rows}}",
// "{{@name}}", "{{#-first}}", "{{#-last}}"). Values are HTML-escaped unless
// written "{{{name}}}" or "{{&name}}"; in JSON mode they are JSON-escaped.
//
//   ht::THtXMLNode data(u"<list><row>a</row><row>b&amp;c</row></list>"_hs);
//   ht::THtTemplate t(u"{{#list}}{{-index}}:{{.}} {{/list}}"_hs);
//   t.Render(&data);                            // "1:a 2:b&amp;c "
//   t.ThreadSafeRender(&data);                  // the same, safe from many threads
//   ht::THtTemplate::RenderTemplate(u"Hi {{who}}"_hs, names);  // names: "who=Ann" lines
//
// Rendering never fails: unknown names give empty text. Parsing and rendering
// use explicit stacks, so sections may nest as deeply as memory allows.
// Render shares one context per template and is for one thread; after Parse
// the template is read-only, and ThreadSafeRender keeps all its state in a
// context of its own, so one template may serve many threads at once as long
// as nobody writes the data nodes or the template's variables meanwhile.
#pragma once

#include "htcore/document/node_list.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/named_lists.h"
#include "htcore/foundation/object.h"
#include "htcore/foundation/object_list.h"
#include "htcore/foundation/string_list.h"
#include "htcore/templates/template_parser.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace ht {

class THtXMLNode;
class THtTemplate;
class THtTemplateContext;
class TFastString;

// One level of section rows.
struct THtContext {
  int IndexVar = 0;   // the current row, from 0
  int IndexCount = 0; // rows of the section
  THtXMLNode* Context = nullptr;
};

// The levels of the sections around the current one; Last is the nearest.
class THtContextStack {
public:
  // Saves a copy of Context.
  void Push(const THtContext& Context) { FItems.push_back(Context); }
  // Restores the level saved last.
  void Pop(THtContext& Context) {
    Context = FItems.back();
    FItems.pop_back();
  }
  const THtContext& Last() const { return FItems.back(); }
  const THtContext& Items(int Index) const { return FItems[static_cast<size_t>(Index)]; }
  int Count() const noexcept { return static_cast<int>(FItems.size()); }
  void Clear() noexcept { FItems.clear(); }

private:
  std::vector<THtContext> FItems;
};

// Asked before every variable lookup; answering true makes Value the result.
using THtGetVarEvent = std::function<bool(THtTemplateContext& Context, const hstring& Name, hstring& Value)>;
// Called for a section named "name(...)" before its rows are looked up, so the
// host can set the variable "name" (Context.SetVariable) to fresh data.
using THtUpdateSectionEvent =
    std::function<void(const THtTemplate& Template, THtTemplateContext& Context, const hstring& Section)>;

// All state of one rendering.
class THtTemplateContext : public TObject {
public:
  THtTemplateContext();
  ~THtTemplateContext() override;

  // Names a data node for "{{name}}" and "{{name.child}}". An Owned node is
  // freed with the context (or when the context is cleared).
  void SetVariable(const hstring& Name, THtXMLNode* Node, bool Owned = false);
  // The node of a variable here, else in Shared; null when there is none.
  THtXMLNode* GetVariable(const hstring& Name) const;
  // The same with the name's hash known (ShaPerfectHash, the dictionary's own).
  THtXMLNode* GetVariable(const hstring& Name, uint32_t Hash) const;
  // Drops variables, owned nodes and the section levels.
  void Clear();

  THtGetVarEvent FOnGetVar;
  THtUpdateSectionEvent FOnUpdateSection;
  THtObjectList FObjects; // nodes owned by the context
  THtStringList Vars;     // names to THtXMLNode, not owned
  THtContextStack Stack;
  THtContext Context;
  TObject* TagObject = nullptr;
  hstring IncludeBase;                        // confines "include" (see template_functions.h)
  const THtTemplateContext* Shared = nullptr; // read-only variables behind Vars
  const THtTemplate* Template = nullptr;      // the template being rendered
};

class THtTemplate : public TObject {
public:
  THtTemplate();
  // Parses Text; JSONMode escapes values for JSON instead of HTML.
  explicit THtTemplate(const hstring& Text, bool AJSONMode = false);
  ~THtTemplate() override;
  THtTemplate(const THtTemplate&) = delete;
  THtTemplate& operator=(const THtTemplate&) = delete;
  static std::unique_ptr<THtTemplate> Create(const hstring& Text, bool AJSONMode = false);

  // Replaces the template. A text without "{{" is not parsed and renders as
  // it stands. Set ProcessScript before parsing.
  void Parse(const hstring& Text);

  // Renders over Root (or, without one, over the variable "."), using the
  // template's own context: variables set with SetVariable are seen.
  hstring Render(THtXMLNode* Root = nullptr);
  // The same on a private context; the template's variables are seen but not
  // changed. Safe to call from several threads at once.
  hstring ThreadSafeRender(THtXMLNode* Node, TObject* ATagObject = nullptr,
                           const THtGetVarEvent& OnGetVar = {},
                           const THtUpdateSectionEvent& AOnUpdateSection = {}) const;
  // Over a node "v" with one attribute per "name=value" line of Strings.
  hstring ThreadSafeRender(const TStringList& Strings, TObject* ATagObject = nullptr,
                           const THtGetVarEvent& OnGetVar = {},
                           const THtUpdateSectionEvent& AOnUpdateSection = {}) const;

  static hstring RenderTemplate(const hstring& Text, THtXMLNode* Node, bool JSONMode = false,
                                TObject* ATagObject = nullptr);
  static hstring RenderTemplate(const hstring& Text, const TStringList& Strings,
                                TObject* ATagObject = nullptr, bool JSONMode = false);

  THtTemplateContext& Context() noexcept { return FTemplateContext; }
  void SetVariable(const hstring& Name, THtXMLNode* Node, bool Owned = false) {
    FTemplateContext.SetVariable(Name, Node, Owned);
  }
  void SetOnGetVar(THtGetVarEvent Event) { FTemplateContext.FOnGetVar = std::move(Event); }

  // The lookups of rendering, open for hosts and events.
  hstring GetVar(THtTemplateContext& AContext, const hstring& Name) const;
  // The rows a section of this name iterates over; false (and List null)
  // when there are none.
  bool GetSection(THtTemplateContext& AContext, const hstring& Name, IHtNodeList& List) const;

  bool JSONMode() const noexcept { return FJSONMode; }
  void SetJSONMode(bool Value) noexcept { FJSONMode = Value; }
  const hstring& Text() const noexcept { return FTemplate; }

  THtUpdateSectionEvent OnUpdateSection;
  bool NoTemplate = true; // the text has no "{{"
  THtTemplateItem* Items = nullptr;
  int TemplateSize = 0;
  int Tag = 0;
  TObject* TagObject = nullptr;
  bool IgnoreLogicalSections = false; // "true"/"false" values and "?tag" sections are plain data
  bool ProcessScript = false;         // expand "{{" inside <script> blocks too
  hstring IncludeBase;                // confines "include"; empty: the process-wide base

private:
  hstring DoRender(THtTemplateContext& C, THtXMLNode* Root) const;
  void RenderItems(THtTemplateContext& C, TFastString& Out) const;

  bool FJSONMode = false;
  hstring FTemplate;
  THtTemplateContext FTemplateContext;
  THtTemplateItemArena FArena;
};

} // namespace ht
