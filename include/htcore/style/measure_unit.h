// TMeasureUnit: the units a CSS length, time or angle carries.
//
// The CSS tokenizer decides a dimension's unit while it reads the number, so
// the enumeration lives apart from the measures that compute with it:
//
//   ht::TMeasureUnit u;
//   ht::IsEnum2(u"mu", u"px", u);   // u == ht::muPX
#pragma once

#include "htcore/foundation/enum_info.h"

namespace ht {

HT_ENUM(TMeasureUnit, muPX, muPercent, muIN, muMM, muPt, muCM, muEM, muEX, muPC, muMS, muS, muREM, muVW, muVH,
        muDeg, muNone);

} // namespace ht
