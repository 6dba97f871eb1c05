// Locale-free number to text: format masks and short fixed-point decimals.
//
//   ht::HtFormatFloat(u"# ### ##0.##", 1234567.891);   // "1 234 567.89"
//   ht::HtFormatFloat(u"#,##0.00", -1234.5);            // "-1 234.50"
//   ht::HtFormatFloat(u"0.0;(0.0);'nil'", -2.25);       // "(2.3)"
//   ht::HtFormatDecimal(0.125, 2);                      // "0.12": ties go to even
//
// The decimal point is always "." and the thousands separator a blank,
// whatever the C or system locale says.
//
// HtFormatFloat mask syntax, per section:
//   0       digit, shown even when it is a leading or trailing zero
//   #       digit, shown only when significant
//   .       the decimal point (the first one; later ones are plain text). It is
//           written only when fraction digits follow it
//   ,       anywhere in the section: group the integer digits by three with a
//           blank. The comma itself is not written
//   E+0 E-0 e+0 e-0 (one to four 0): scientific notation. "+" writes the
//           exponent's sign always, "-" only when negative. The mantissa has as
//           many integer digits as the mask has integer placeholders
//   '...' "..."  literal text
//   ;       separates sections: positive;negative;zero. A negative value with
//           its own section is written without a minus sign; otherwise "-"
//           goes in front of the whole result. The zero section serves values
//           that round to zero in the section chosen, which never get a sign.
//           Empty sections fall back to the first one
// Any other character is literal. A literal between two integer placeholders
// is written only once a digit has been written before it, so that
// "# ### ##0" gives "1 234" and "12" alike. Digits beyond the placeholders
// are written in front of the first one. Rounding is half away from zero on
// the shortest decimal form of the value, so 2.5 gives "3" and 1.005 with
// "0.00" gives "1.01". An empty first section writes the general form: up to
// 15 significant digits, with an exponent ("1.5E-5", "1E20") below 1e-4 and
// from 1e15. NaN and infinities give "NAN", "INF" and "-INF".
#pragma once

#include "htcore/foundation/hstring.h"

#include <string_view>

namespace ht {

hstring HtFormatFloat(std::u16string_view Format, double Value);

// The shortest fixed form with at most Digits places (0..7; other values mean
// 8), no exponent: "2" for 2.0, "0.5", "-0.2" for -0.25 with 1 place. A value
// within half a last place of an integer writes the integer; otherwise
// Value * 10^Digits is rounded to nearest with ties to even, the point put in
// and trailing zeros removed. NaN and infinities give "NAN", "INF", "-INF".
hstring HtFormatDecimal(double Value, int Digits);

} // namespace ht
