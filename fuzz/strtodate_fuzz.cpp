// Any text under any mask gives a date or EConvertError, never a crash. A date
// read by a built-in mask, written back by that mask, reads as the same value,
// and so does an ISO 8601 text written back by DateToISO8601.
#include "htcore/foundation/convert.h"
#include "htcore/foundation/date_time.h"
#include "htcore/foundation/exception.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

// Masks whose written form reads back: no weekday names, no "m" after "h".
constexpr std::u16string_view kMasks[] = {
    u"yyyy-mm-dd",          u"yyyy-mm-dd hh:nn:ss", u"dd-mm-yyyy hh:nn:ss",     u"dd-mmm-yy",
    u"dd-mmm-yyyy",         u"dd.mm.yy h:nn",       u"dd.mm.yyyy hh:nn:ss",     u"m/d/yyyy",
    u"hh:nn:ss mmm d yyyy", u"d mmmm yyyy",         u"dd.mm.yyyy hh:nn:ss.zzz", u"hh:nn",
    u"yyyy'T'hh",           u"d.m.yy h:n:s",
};
constexpr size_t kMaskCount = sizeof(kMasks) / sizeof(kMasks[0]);

void Check(bool ok) {
  if (!ok)
    __builtin_trap();
}

void CheckValue(ht::TDateTime v) {
  Check(std::isfinite(v));
  int y, m, d;
  ht::DecodeDate(v, y, m, d);
  Check((y >= 1 && y <= 9999) || (y == 1899 && m == 12 && d == 30));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  const unsigned selector = data[0];
  std::string_view rest(reinterpret_cast<const char*>(data + 1), size - 1);
  ht::hstring mask;
  ht::hstring text;
  bool known = false;
  if (selector < kMaskCount) {
    mask = ht::hstring(kMasks[selector]);
    known = true;
    text = ht::Utf8ToHString(rest);
  } else if (selector < 0xC0) {
    mask = ht::hstring(selector & 1 ? u"cisco" : u"");
    text = ht::Utf8ToHString(rest);
  } else {
    size_t nl = rest.find('\n');
    if (nl == std::string_view::npos)
      return 0;
    mask = ht::Utf8ToHString(rest.substr(0, nl));
    text = ht::Utf8ToHString(rest.substr(nl + 1));
  }

  try {
    ht::TDateTime v = ht::StrtoDateFmt(text, mask);
    CheckValue(v);
    if (known) {
      ht::hstring written = ht::HtFormatDateTime(mask, v);
      Check(ht::StrtoDateFmt(written, mask) == v);
    }
  } catch (const ht::EConvertError&) {
  }

  ht::TDateTime iso;
  if (ht::TryISO8601ToDate(text, iso)) {
    CheckValue(iso);
    Check(ht::ISO8601ToDate(ht::DateToISO8601(iso)) == iso);
  }
  return 0;
}
