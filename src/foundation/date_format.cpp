// Date formatting by mask, and the ISO 8601 text form.
#include "foundation/date_names.h"
#include "htcore/foundation/date_time.h"
#include "htcore/foundation/exception.h"

#include <cmath>
#include <cstdint>
#include <string>

namespace ht {

namespace {

char16_t Lower(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

void AppendNumber(std::u16string& out, int value, int width) {
  char16_t buf[12];
  int n = 0;
  unsigned v = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
  do {
    buf[n++] = static_cast<char16_t>(u'0' + v % 10);
    v /= 10;
  } while (v);
  if (value < 0)
    out += u'-';
  for (int i = n; i < width; ++i)
    out += u'0';
  while (n)
    out += buf[--n];
}

bool StartsWithNoCase(std::u16string_view s, size_t pos, std::u16string_view word) {
  if (s.size() - pos < word.size())
    return false;
  for (size_t i = 0; i < word.size(); ++i)
    if (Lower(s[pos + i]) != word[i])
      return false;
  return true;
}

// True when the mask asks for a 12-hour clock (am/pm or a/p outside quotes).
bool HasHalfDayMarker(std::u16string_view mask) {
  char16_t quote = 0;
  for (size_t i = 0; i < mask.size(); ++i) {
    char16_t c = mask[i];
    if (quote) {
      if (c == quote)
        quote = 0;
    } else if (c == u'\'' || c == u'"') {
      quote = c;
    } else if (StartsWithNoCase(mask, i, u"am/pm") || StartsWithNoCase(mask, i, u"a/p")) {
      return true;
    }
  }
  return false;
}

size_t RunLength(std::u16string_view mask, size_t i) {
  char16_t c = Lower(mask[i]);
  size_t n = 1;
  while (i + n < mask.size() && Lower(mask[i + n]) == c)
    ++n;
  return n;
}

} // namespace

hstring HtFormatDateTime(std::u16string_view Mask, TDateTime Value) {
  int year, month, day, hour, min, sec, msec;
  DecodeDateTime(Value, year, month, day, hour, min, sec, msec);
  int dow = DayOfWeek(Value);
  const bool half_day = HasHalfDayMarker(Mask);
  int hour_shown = hour;
  if (half_day) {
    hour_shown = hour % 12;
    if (hour_shown == 0)
      hour_shown = 12;
  }

  std::u16string out;
  out.reserve(Mask.size() + 16);
  bool after_hour = false; // the last token was h: an m now means minutes
  size_t i = 0;
  while (i < Mask.size()) {
    char16_t c = Mask[i];
    if (c == u'\'' || c == u'"') {
      size_t close = Mask.find(c, i + 1);
      if (close == std::u16string_view::npos)
        close = Mask.size();
      out.append(Mask.substr(i + 1, close - i - 1));
      i = close + 1;
      continue;
    }
    const size_t n = RunLength(Mask, i);
    switch (Lower(c)) {
    case u'y':
      if (n <= 2)
        AppendNumber(out, year % 100, 2);
      else
        AppendNumber(out, year, 4);
      after_hour = false;
      break;
    case u'm':
      if (after_hour && n <= 2)
        AppendNumber(out, min, static_cast<int>(n));
      else if (n <= 2)
        AppendNumber(out, month, static_cast<int>(n));
      else if (month >= 1)
        out += n == 3 ? detail::kMonthNames[month - 1].substr(0, 3) : detail::kMonthNames[month - 1];
      after_hour = false;
      break;
    case u'd':
      if (n <= 2)
        AppendNumber(out, day, static_cast<int>(n));
      else if (dow >= 1)
        out += n == 3 ? detail::kDayNames[dow - 1].substr(0, 3) : detail::kDayNames[dow - 1];
      after_hour = false;
      break;
    case u'h':
      AppendNumber(out, hour_shown, n >= 2 ? 2 : 1);
      after_hour = true;
      i += n < 2 ? n : 2;
      continue;
    case u'n':
      AppendNumber(out, min, n >= 2 ? 2 : 1);
      after_hour = false;
      i += n < 2 ? n : 2;
      continue;
    case u's':
      AppendNumber(out, sec, n >= 2 ? 2 : 1);
      after_hour = false;
      i += n < 2 ? n : 2;
      continue;
    case u'z':
      AppendNumber(out, msec, n >= 3 ? 3 : 1);
      after_hour = false;
      i += n < 3 ? n : 3;
      continue;
    case u'a':
      if (StartsWithNoCase(Mask, i, u"am/pm")) {
        out.append(Mask.substr(hour < 12 ? i : i + 3, 2));
        i += 5;
        continue;
      }
      if (StartsWithNoCase(Mask, i, u"a/p")) {
        out += Mask[hour < 12 ? i : i + 2];
        i += 3;
        continue;
      }
      out += c;
      i += 1;
      continue;
    default:
      out += c;
      i += 1;
      continue;
    }
    i += n;
  }
  return hstring(out.data(), out.size());
}

hstring DateToISO8601(TDateTime Value, bool WithTime) {
  int year, month, day, hour, min, sec, msec;
  DecodeDateTime(Value, year, month, day, hour, min, sec, msec);
  std::u16string out;
  AppendNumber(out, year, 4);
  out += u'-';
  AppendNumber(out, month, 2);
  out += u'-';
  AppendNumber(out, day, 2);
  if (WithTime) {
    out += u'T';
    AppendNumber(out, hour, 2);
    out += u':';
    AppendNumber(out, min, 2);
    out += u':';
    AppendNumber(out, sec, 2);
    if (msec) {
      out += u'.';
      AppendNumber(out, msec, 3);
    }
  }
  return hstring(out.data(), out.size());
}

namespace {

bool ReadDigits(std::u16string_view s, size_t& pos, int count, int& value) {
  if (s.size() - pos < static_cast<size_t>(count))
    return false;
  value = 0;
  for (int i = 0; i < count; ++i) {
    char16_t c = s[pos + i];
    if (c < u'0' || c > u'9')
      return false;
    value = value * 10 + (c - u'0');
  }
  pos += count;
  return true;
}

bool Peek(std::u16string_view s, size_t pos, char16_t c) { return pos < s.size() && s[pos] == c; }

} // namespace

bool TryISO8601ToDate(std::u16string_view S, TDateTime& Value) noexcept {
  size_t p = 0;
  int year, month, day, hour = 0, min = 0, sec = 0, msec = 0;
  if (!ReadDigits(S, p, 4, year) || !Peek(S, p++, u'-') || !ReadDigits(S, p, 2, month) ||
      !Peek(S, p++, u'-') || !ReadDigits(S, p, 2, day))
    return false;
  int offset = 0; // minutes east of UTC
  if (p < S.size()) {
    if (S[p] != u'T' && S[p] != u't' && S[p] != u' ')
      return false;
    ++p;
    if (!ReadDigits(S, p, 2, hour) || !Peek(S, p++, u':') || !ReadDigits(S, p, 2, min))
      return false;
    if (Peek(S, p, u':')) {
      ++p;
      if (!ReadDigits(S, p, 2, sec))
        return false;
      if (Peek(S, p, u'.') || Peek(S, p, u',')) {
        ++p;
        int digits = 0, scale = 100;
        while (p < S.size() && S[p] >= u'0' && S[p] <= u'9') {
          msec += (S[p] - u'0') * scale; // past milliseconds the digits are dropped
          scale /= 10;
          ++digits;
          ++p;
        }
        if (!digits)
          return false;
      }
    }
    if (Peek(S, p, u'Z') || Peek(S, p, u'z')) {
      ++p;
    } else if (Peek(S, p, u'+') || Peek(S, p, u'-')) {
      int sign = S[p++] == u'-' ? -1 : 1;
      int oh, om = 0;
      if (!ReadDigits(S, p, 2, oh))
        return false;
      bool colon = Peek(S, p, u':');
      if (colon)
        ++p;
      if ((colon || p < S.size()) && !ReadDigits(S, p, 2, om))
        return false;
      if (oh > 23 || om > 59)
        return false;
      offset = sign * (oh * 60 + om);
    }
    if (p != S.size())
      return false;
  }
  TDateTime v;
  if (!TryEncodeDateTime(year, month, day, hour, min, sec, msec, v))
    return false;
  if (offset) {
    // Move to UTC in whole milliseconds on a linear axis, then split again.
    TDateTime date;
    TryEncodeDate(year, month, day, date);
    int64_t ms = static_cast<int64_t>(date) * MSecsPerDay + ((hour * 60 + min) * 60 + sec) * 1000 + msec -
                 static_cast<int64_t>(offset) * 60000;
    int64_t days = ms / MSecsPerDay, rest = ms % MSecsPerDay;
    if (rest < 0) {
      rest += MSecsPerDay;
      --days;
    }
    double time = static_cast<double>(rest) / MSecsPerDay;
    v = days < 0 ? days - time : days + time;
    int y, m, d;
    DecodeDate(v, y, m, d);
    if (y < 1 || y > 9999)
      return false;
  }
  Value = v;
  return true;
}

TDateTime ISO8601ToDate(std::u16string_view S) {
  TDateTime v;
  if (!TryISO8601ToDate(S, v))
    throw EConvertError(u'\'' + hstring(S) + u"' is not a valid ISO 8601 date");
  return v;
}

} // namespace ht
