// Start steps of the htmlpars unit, run in this order by StartHtmlPars.
#pragma once

namespace ht::detail {

void LowerColorNames();
void BuildEntityDictionaries();
void BuildColorDictionary();
void BuildJSONCharClasses();
// Lets a parser recode the nodes built so far when a declaration changes the encoding.
void InstallNodeRecoder();

void FreeEntityTables();
void FreeColorTables();

}  // namespace ht::detail
