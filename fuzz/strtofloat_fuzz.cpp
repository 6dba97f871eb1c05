// The number readers on any text: the lenient ones answer a value, the strict
// one a value or EConvertError. Where the strict reader accepts plain ASCII
// with "." and no thousands separator, the C library must read the same value.
#include "htcore/foundation/convert.h"
#include "htcore/foundation/exception.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void Check(bool ok) {
  if (!ok)
    __builtin_trap();
}

bool IsAscii(std::string_view s) {
  for (char c : s)
    if (static_cast<unsigned char>(c) >= 0x80 || c == 0)
      return false;
  return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2)
    return 0;
  static const char16_t kSeps[] = {u'.', u',', u' ', 0, u'\'', u'e', u'1', u'-'};
  const char16_t dec = kSeps[data[0] & 7];
  const char16_t thousand = kSeps[(data[0] >> 3) & 7];
  const bool plain = (data[0] >> 6) == 0;
  std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  ht::hstring text = ht::Utf8ToHString(bytes);

  double lenient = ht::iStrtoFloat(text);
  if (IsAscii(bytes)) {
    double narrow = ht::iStrtoFloat(bytes);
    Check(narrow == lenient || (std::isnan(narrow) && std::isnan(lenient)));
    Check(ht::iStrtoInt(bytes) == ht::iStrtoInt(text));
  }
  Check(!std::isnan(lenient));
  (void)ht::HexToDec(text);

  const char16_t used_dec = plain ? u'.' : dec;
  const char16_t used_thousand = plain ? 0 : thousand;
  try {
    double strict = ht::StrtoFloatCheck(text, used_dec, used_thousand);
    Check(std::isfinite(strict));
    if (plain && IsAscii(bytes)) {
      std::string copy(bytes);
      double ref = std::strtod(copy.c_str(), nullptr);
      double scale = std::fmax(std::fabs(ref), std::fabs(strict));
      if (std::fabs(ref) > 1e-290 && std::fabs(ref) < 1e308)
        Check(std::fabs(ref - strict) <= scale * 1e-13);
    }
  } catch (const ht::EConvertError&) {
  }
  return 0;
}
