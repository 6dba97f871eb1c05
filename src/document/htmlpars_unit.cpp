// Start and stop of the htmlpars unit: the character tables of the document
// model. After start they are read-only.
#include "document/html_char_classes.h"
#include "document/htmlpars_start.h"
#include "foundation/units.h"

namespace ht::detail {

void StartHtmlPars() {
  LowerColorNames();
  BuildHtmlCharClasses();
  BuildEntityDictionaries();
  BuildHtmlEncodeTables();
  BuildColorDictionary();
  BuildJSONCharClasses();
  // The theme procedure needs no start step: an empty slot means the built-in
  // system colours, and a procedure a host set before start stays in place.
}

void StopHtmlPars() {
  FreeColorTables();
  FreeEntityTables();
}

} // namespace ht::detail
