#include "htcore/document/unicode_classes.h"

#include <algorithm>
#include <cstdint>

namespace ht {

namespace {

struct TCharRange {
  char16_t lo, hi;
};

#include "document/unicode_class_data.inc"

bool InRanges(const TCharRange* first, const TCharRange* last, char16_t c) noexcept {
  // First range whose upper end is not below c.
  const TCharRange* r =
      std::lower_bound(first, last, c, [](const TCharRange& a, char16_t v) { return a.hi < v; });
  return r != last && r->lo <= c;
}

} // namespace

THtTextRunBidi CharBidi(char16_t c) noexcept {
  if ((c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'))
    return bdLTR;
  if (c >= u'0' && c <= u'9')
    return bdWeakLRT;
  if (c <= u'~')
    return bdNeutral;
  if ((c >= 0x0590 && c <= 0x05FF) || (c >= 0xFB1D && c <= 0xFB4F))
    return bdRTL;
  // Arabic presentation forms (U+FB50.., U+FE70..) land here and count as
  // neutral; text runs depend on that.
  if (c > 0x2000)
    return bdNeutral;
  if ((c >= 0x0600 && c <= 0x06FF) || (c >= 0x0750 && c <= 0x077F) || (c >= 0x08A0 && c <= 0x08FF))
    return bdRTL;
  return bdLTR;
}

bool HasChinese(std::u16string_view s) noexcept {
  for (char16_t c : s) {
    unsigned h = c >> 8;
    if ((h >= 0x4E && h <= 0x9F) || h == 0xF9 || h == 0xFA)
      return true;
  }
  return false;
}

bool IsLetter(char16_t c) noexcept {
  if (c < 0x80)
    return (c | 0x20) >= u'a' && (c | 0x20) <= u'z';
  return InRanges(std::begin(kLetterRanges), std::end(kLetterRanges), c);
}

bool IsNumber(char16_t c) noexcept {
  if (c < 0x80)
    return c >= u'0' && c <= u'9';
  return InRanges(std::begin(kNumberRanges), std::end(kNumberRanges), c);
}

} // namespace ht
