// Arbitrary masks and values into HtFormatFloat and HtFormatDecimal: never a
// crash or hang, and the text stays within what the mask can produce.
#include "htcore/foundation/number_format.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 9)
    return 0;
  double value;
  std::memcpy(&value, data, sizeof value);
  int digits = static_cast<int8_t>(data[8]);
  std::string_view mask(reinterpret_cast<const char*>(data + 9), size - 9);
  ht::hstring format = ht::Utf8ToHString(mask);

  ht::hstring text = ht::HtFormatFloat(format.view(), value);
  // Each mask unit writes at most one unit, plus a group blank per integer
  // placeholder, plus the overflow digits of a double with their blanks.
  if (text.size() > 2 * format.size() + 450)
    __builtin_trap();

  ht::hstring dec = ht::HtFormatDecimal(value, digits);
  if (dec.empty() || dec.size() > 330)
    __builtin_trap();
  return 0;
}
