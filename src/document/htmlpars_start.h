// Start steps of the htmlpars unit, run in this order by StartHtmlPars.
#pragma once

namespace ht::detail {

void LowerColorNames();
void BuildEntityDictionaries();
// Overhead tables of the HTML writer; reads the entity dictionaries.
void BuildHtmlEncodeTables();
void BuildColorDictionary();
void BuildJSONCharClasses();

void FreeEntityTables();
void FreeColorTables();

} // namespace ht::detail
