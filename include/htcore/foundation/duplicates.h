// TDuplicates: what a sorted list does when an added key is already there.
// Each list says how it reads the three values.
#pragma once

#include "htcore/foundation/enum_info.h"

namespace ht {

HT_ENUM(TDuplicates, dupIgnore, dupAccept, dupError)

} // namespace ht
