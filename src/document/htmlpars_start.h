// Start steps of the htmlpars unit, run in this order by StartHtmlPars.
#pragma once

namespace ht::detail {

void LowerColorNames();
void BuildEntityDictionaries();
void BuildColorDictionary();
void BuildJSONCharClasses();

void FreeEntityTables();
void FreeColorTables();

}  // namespace ht::detail
