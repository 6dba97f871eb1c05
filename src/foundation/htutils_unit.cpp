// Start and stop of the htutils and htdictionary units.
#include "foundation/cpu_internal.h"
#include "foundation/crc32_internal.h"
#include "foundation/units.h"
#include "foundation/url_escapes.h"
#include "foundation/utf8_tables.h"
#include "foundation/zip_internal.h"

namespace ht::detail {

void StartHtUtils() {
  StartCpu();
  StartUrlEscapes();
  StartCRC32();
  StartZip();
  StartUtf8Tables();
}

void StopHtUtils() { StopZip(); }

void StartHtDictionary() {}

void StopHtDictionary() {}

} // namespace ht::detail
