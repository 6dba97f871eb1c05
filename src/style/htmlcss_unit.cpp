// Start and stop of the htmlcss unit: the property table. After start it is
// read-only, except for rows a host adds before its first parse.
#include "foundation/units.h"
#include "style/htmlcss_start.h"

namespace ht::detail {

void StartHtmlCss() {
  BuildCSSPropDictionary();
  BuildDefaultSheets();
}

void StopHtmlCss() {
  FreeDefaultSheets();
  FreeCSSPropDictionary();
}

} // namespace ht::detail
