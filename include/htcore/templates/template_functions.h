// Text functions of templates and the "include" base directory.
//
// A section whose name is a registered function ("{{#upper}}...{{/upper}}")
// renders its children into a buffer and writes what the function makes of
// that text. The built-ins are registered at library start: "upper", "lower",
// "trim", "include", "charstorects", "padleft", "date", "formatmoney",
// "formatdate" and "eq". Hosts add their own before parsing templates:
//
//   ht::RegisterHtTemplateFunction(u"Reverse"_hs, [](const ht::hstring& s, ht::hstring& r) {
//     r = ht::hstring(std::u16string(s.view().rbegin(), s.view().rend()));
//   });                                   // used as {{#reverse}}...{{/reverse}}
//   ht::SetHtTemplateIncludeBase(u"/srv/site/parts"_hs);  // confine "include"
//
// The registry is read without a lock: register functions before templates
// are parsed on other threads.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/templates/template_parser.h"

namespace ht {

class THtTemplateContext;

struct THtTemplateFunctionContainer : TObject {
  hstring Name; // lower case: the key
  THtTemplateFunction F;
  hstring Caption; // the name as registered
};

// Adds or replaces a function; names are matched without case.
void RegisterHtTemplateFunction(const hstring& Name, THtTemplateFunction Function);
// The function registered under Name (any case), or null.
const THtTemplateFunctionContainer* FindHtTemplateFunction(const hstring& Name);

// The base directory that confines "include": relative paths are taken from
// it, and a path that leads outside it (by "..", an absolute path or a
// symbolic link) includes nothing. Empty (the default) means no confinement:
// paths are opened as given. A template's own IncludeBase wins over this
// process-wide one.
void SetHtTemplateIncludeBase(const hstring& Dir);
hstring GetHtTemplateIncludeBase();

// The file an "include" of Path reads under Base (see above), or empty when
// the path is refused.
hstring HtTemplateIncludePath(const hstring& Path, const hstring& Base);

// The context rendering on this thread, for functions that need more than
// their text (TagObject, the include base); null outside a rendering.
THtTemplateContext* HtCurrentTemplateContext() noexcept;

} // namespace ht
