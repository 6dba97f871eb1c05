// StrtoDateFmt: dates and times read by a mask.
#include "foundation/date_names.h"
#include "htcore/foundation/convert.h"
#include "htcore/foundation/exception.h"

#include <string_view>

namespace ht {

namespace {

// The masks an empty mask chooses from, first fit wins.
constexpr std::u16string_view kKnownMasks[] = {
    u"yyyy-mm-dd",         u"yyyy-mm-dd hh:nn:ss", u"dd-mm-yyyy hh:nn:ss",
    u"dd-mmm-yy",          u"dd-mmm-yyyy",         u"dd-mmm-yyyy hh:nn:ss",
    u"dd.mm.yy",           u"dd.mm.yy h:nn",       u"dd.mm.yy hh:nn",
    u"dd.mm.yyyy",         u"dd.mm.yyyy h:nn",     u"dd.mm.yyyy h:nn:ss",
    u"dd.mm.yyyy hh:nn",   u"dd.mm.yyyy hh:nn:ss", u"mm/dd/yyyy",
    u"m/dd/yyyy",          u"mm/d/yyyy",           u"m/d/yyyy",
    u"hh:nn:ss mmm d yyyy"};
constexpr std::u16string_view kLogMask = u"hh:nn:ss mmm d yyyy";

struct TDateParts {
  int year = 0, month = 1, day = 1;
  int hour = 0, min = 0, sec = 0, msec = 0;
  bool has_year = false, has_date = false;
};

char16_t LowerAscii(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

// Lower case for ASCII and Cyrillic letters, the ones month names use.
char16_t LowerLetter(char16_t c) {
  if (c >= u'A' && c <= u'Z')
    return static_cast<char16_t>(c + 32);
  if (c >= 0x410 && c <= 0x42F)
    return static_cast<char16_t>(c + 0x20);
  if (c >= 0x400 && c <= 0x40F)
    return static_cast<char16_t>(c + 0x50);
  return c;
}

bool IsLetter(char16_t c) {
  c = LowerAscii(c);
  return (c >= u'a' && c <= u'z') || (c >= 0x400 && c <= 0x45F);
}

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// Month 1..12 for a name, by its first three letters; 0 when none fits.
int MonthOfName(std::u16string_view word) {
  if (word.size() < 3)
    return 0;
  char16_t w[3] = {LowerLetter(word[0]), LowerLetter(word[1]), LowerLetter(word[2])};
  for (int m = 0; m < 12; ++m) {
    std::u16string_view en = detail::kMonthNames[m];
    if (w[0] == LowerAscii(en[0]) && w[1] == en[1] && w[2] == en[2])
      return m + 1;
    std::u16string_view ru = detail::kRussianMonths[m];
    if (w[0] == ru[0] && w[1] == ru[1] && w[2] == ru[2])
      return m + 1;
  }
  if (w[0] == u'м' && w[1] == u'а' && w[2] == u'я') // "мая", May in the genitive
    return 5;
  return 0;
}

// Walks a mask and a text side by side, filling the parts. Only the form is
// checked here; the ranges of the values are checked when they are encoded.
class TMaskScanner {
public:
  TMaskScanner(std::u16string_view text, bool lenient) : FText(text), FLenient(lenient) {}

  bool Scan(std::u16string_view mask, TDateParts& parts) {
    size_t i = 0;
    while (i < mask.size()) {
      char16_t c = mask[i];
      if (c == u'\'' || c == u'"') {
        size_t close = mask.find(c, i + 1);
        if (close == std::u16string_view::npos)
          close = mask.size();
        std::u16string_view literal = mask.substr(i + 1, close - i - 1);
        if (FText.substr(FPos, literal.size()) != literal)
          return false;
        FPos += literal.size();
        i = close + 1;
        continue;
      }
      size_t n = 1;
      char16_t lc = LowerAscii(c);
      while (i + n < mask.size() && LowerAscii(mask[i + n]) == lc)
        ++n;
      bool ok = true;
      switch (lc) {
      case u'y':
        if (n >= 3) {
          ok = Digits(4, 4, parts.year);
        } else if ((ok = Digits(2, 2, parts.year)))
          parts.year += parts.year < 50 ? 2000 : 1900; // two-digit years: 1950..2049
        parts.has_year = parts.has_date = true;
        break;
      case u'm':
        ok = n >= 3 ? MonthName(parts.month) : Digits(n == 1 ? 1 : 2, 2, parts.month);
        parts.has_date = true;
        break;
      case u'd':
        if (n >= 3) {
          ok = Word(); // a weekday name: read and not checked
        } else {
          ok = Digits(n == 1 ? 1 : 2, 2, parts.day);
          parts.has_date = true;
        }
        break;
      case u'h':
        ok = Digits(n == 1 ? 1 : 2, 2, parts.hour);
        break;
      case u'n':
        ok = Digits(n == 1 ? 1 : 2, 2, parts.min);
        break;
      case u's':
        ok = Digits(n == 1 ? 1 : 2, 2, parts.sec);
        if (ok && FLenient && Peek(u'.'))
          ok = Fraction(parts.msec);
        break;
      case u'z':
        ok = Digits(n >= 3 ? 3 : 1, 3, parts.msec);
        break;
      case u' ':
        ok = Blanks();
        break;
      default:
        for (size_t k = 0; k < n && ok; ++k, ++FPos)
          ok = FPos < FText.size() && LowerAscii(FText[FPos]) == lc;
        break;
      }
      if (!ok)
        return false;
      i += n;
    }
    return FPos == FText.size();
  }

private:
  bool Peek(char16_t c) const { return FPos < FText.size() && FText[FPos] == c; }

  bool Digits(int min, int max, int& value) {
    int count = 0;
    value = 0;
    while (count < max && FPos < FText.size() && IsDigit(FText[FPos])) {
      value = value * 10 + (FText[FPos++] - u'0');
      ++count;
    }
    return count >= min;
  }

  // ".ddd…" behind the seconds of a log clock; digits past milliseconds are dropped.
  bool Fraction(int& msec) {
    ++FPos;
    int scale = 100, count = 0;
    msec = 0;
    for (; FPos < FText.size() && IsDigit(FText[FPos]); ++FPos, ++count) {
      msec += (FText[FPos] - u'0') * scale;
      scale /= 10;
    }
    return count > 0;
  }

  bool Blanks() {
    size_t start = FPos;
    while (Peek(u' '))
      ++FPos;
    return FPos > start;
  }

  bool Word() {
    size_t start = FPos;
    while (FPos < FText.size() && IsLetter(FText[FPos]))
      ++FPos;
    return FPos > start;
  }

  bool MonthName(int& month) {
    while (true) {
      size_t start = FPos;
      if (!FLenient) {
        Word();
        month = MonthOfName(FText.substr(start, FPos - start));
        return month != 0;
      }
      // The log clock may carry a time zone and a weekday before the month.
      while (FPos < FText.size() && FText[FPos] != u' ')
        ++FPos;
      std::u16string_view token = FText.substr(start, FPos - start);
      bool letters_only = !token.empty();
      for (char16_t c : token)
        letters_only = letters_only && IsLetter(c);
      if (letters_only && (month = MonthOfName(token)) != 0)
        return true;
      if (token.empty() || !Blanks())
        return false;
    }
  }

  std::u16string_view FText;
  size_t FPos = 0;
  bool FLenient;
};

bool ScanMask(std::u16string_view text, std::u16string_view mask, bool lenient, TDateParts& parts) {
  parts = TDateParts();
  return TMaskScanner(text, lenient).Scan(mask, parts);
}

bool Encode(const TDateParts& p, TDateTime& value) {
  if (!p.has_date)
    return TryEncodeTime(p.hour, p.min, p.sec, p.msec, value);
  int year = p.year;
  if (!p.has_year) {
    int m, d;
    DecodeDate(Now(), year, m, d);
  }
  return TryEncodeDateTime(year, p.month, p.day, p.hour, p.min, p.sec, p.msec, value);
}

bool IsCiscoMask(std::u16string_view mask) {
  if (mask.size() != 5)
    return false;
  for (size_t i = 0; i < 5; ++i)
    if (LowerAscii(mask[i]) != u"cisco"[i])
      return false;
  return true;
}

} // namespace

TDateTime StrtoDateFmt(std::u16string_view S, std::u16string_view Mask) {
  std::u16string_view text = S;
  while (!text.empty() && text.front() == u' ')
    text.remove_prefix(1);
  while (!text.empty() && text.back() == u' ')
    text.remove_suffix(1);

  TDateParts parts;
  std::u16string_view used = Mask;
  bool fits;
  if (Mask.empty()) {
    fits = false;
    for (std::u16string_view mask : kKnownMasks)
      if (ScanMask(text, mask, false, parts)) {
        used = mask;
        fits = true;
        break;
      }
  } else if (IsCiscoMask(Mask)) {
    if (!text.empty() && text.front() == u'*')
      text.remove_prefix(1);
    fits = ScanMask(text, kLogMask, true, parts);
  } else {
    fits = ScanMask(text, Mask, false, parts);
  }
  TDateTime value;
  if (!fits || !Encode(parts, value))
    throw EConvertError(u'\'' + hstring(S) + u"' does not match mask '" + hstring(used) + u'\'');
  return value;
}

} // namespace ht
