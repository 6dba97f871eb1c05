// Helpers shared by the template sources.
#pragma once

#include "htcore/document/node_list.h"
#include "htcore/foundation/date_time.h"
#include "htcore/foundation/hstring.h"

namespace ht {
class THtTemplateContext;
struct THtTemplateName;
class TFastString;
} // namespace ht

namespace ht::detail {

// Makes C the context of this thread for the lifetime of the guard; nested
// renderings (a function rendering a template) restore the outer one.
class TCurrentTemplateContext {
public:
  explicit TCurrentTemplateContext(THtTemplateContext* C) noexcept;
  ~TCurrentTemplateContext();
  TCurrentTemplateContext(const TCurrentTemplateContext&) = delete;
  TCurrentTemplateContext& operator=(const TCurrentTemplateContext&) = delete;

private:
  THtTemplateContext* FSaved;
};

// A date read leniently: ISO 8601 first, then any of the built-in masks.
bool ReadTemplateDate(const hstring& S, TDateTime& Value);

// Text bytes of an included file: a byte-order mark or valid UTF-8 decide,
// anything else is read by the system code page.
hstring DecodeTemplateBytes(const RawByteString& Bytes);

// The "include" function: the text of the file the text names.
void TemplateInclude(const hstring& Path, hstring& Result);

// The lookups behind GetVar and GetSection, on a name taken apart already.
// Probe: the value only decides a section, so a node's XML text is not built.
hstring LookupVar(THtTemplateContext& C, const hstring& Name, const THtTemplateName& N, bool Probe);
bool LookupSection(THtTemplateContext& C, const hstring& Name, const THtTemplateName& N, IHtNodeList& List);

// Start and stop of the httemplates unit: the built-in functions.
void RegisterBuiltinTemplateFunctions();
void FreeTemplateFunctions();

} // namespace ht::detail
