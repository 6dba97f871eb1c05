// Start and stop of the httemplates unit.
#include "foundation/units.h"
#include "templates/template_internal.h"

namespace ht::detail {

void StartHtTemplates() { RegisterBuiltinTemplateFunctions(); }

void StopHtTemplates() { FreeTemplateFunctions(); }

} // namespace ht::detail
