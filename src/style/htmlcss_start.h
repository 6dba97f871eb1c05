// Start steps of the htmlcss unit, run in this order by StartHtmlCss.
#pragma once

namespace ht::detail {

void BuildCSSPropDictionary();

void FreeCSSPropDictionary();

// The quirks sheet is built at start; the user-agent sheet on first use.
void BuildDefaultSheets();
void FreeDefaultSheets();

} // namespace ht::detail
