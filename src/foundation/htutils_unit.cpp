// Start and stop of the htutils and htdictionary units.
#include "foundation/cpu_internal.h"
#include "foundation/units.h"
#include "foundation/url_escapes.h"

namespace ht::detail {

void StartHtUtils() {
  StartCpu();
  StartUrlEscapes();
}

void StopHtUtils() {}

void StartHtDictionary() {}

void StopHtDictionary() {}

} // namespace ht::detail
