// Start steps of the htmlcss unit, run in this order by StartHtmlCss.
#pragma once

namespace ht::detail {

void BuildCSSPropDictionary();

void FreeCSSPropDictionary();

} // namespace ht::detail
