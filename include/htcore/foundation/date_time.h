// TDateTime: a date and time as a double.
//
// The integral part counts days from 1899-12-30 and the fraction is the time
// of day. Before that date the integral part is negative and the fraction is
// still the time of day, read by its absolute value: -1.25 is 1899-12-29 06:00.
//
//   ht::TDateTime t = ht::EncodeDateTime(2024, 2, 29, 13, 5, 0, 0);
//   ht::HtFormatDateTime(u"dddd d mmmm yyyy, hh:nn", t);  // "Thursday 29 February 2024, 13:05"
//   ht::DateToISO8601(t);                                 // "2024-02-29T13:05:00"
//
// Formatting uses English names and fixed separators, never the locale.
#pragma once

#include "htcore/foundation/hstring.h"

#include <string_view>

namespace ht {

using TDateTime = double;

constexpr int HoursPerDay = 24;
constexpr int MinsPerDay = 24 * 60;
constexpr int SecsPerDay = 24 * 60 * 60;
constexpr int MSecsPerDay = SecsPerDay * 1000;

bool IsLeapYear(int Year) noexcept;
int DaysInMonth(int Year, int Month) noexcept; // 0 for a month outside 1..12
int DaysInMonth(TDateTime Value) noexcept;

// Years 1..9999. The Try forms answer false for a bad argument; the others
// raise EConvertError.
bool TryEncodeDate(int Year, int Month, int Day, TDateTime& Value) noexcept;
bool TryEncodeTime(int Hour, int Min, int Sec, int MSec, TDateTime& Value) noexcept;
bool TryEncodeDateTime(int Year, int Month, int Day, int Hour, int Min, int Sec, int MSec,
                       TDateTime& Value) noexcept;
TDateTime EncodeDate(int Year, int Month, int Day);
TDateTime EncodeTime(int Hour, int Min, int Sec, int MSec);
TDateTime EncodeDateTime(int Year, int Month, int Day, int Hour, int Min, int Sec, int MSec);

// The value is rounded to the millisecond first, so 23:59:59.9996 is the next
// day's midnight. A value that is not finite or lies beyond ±3e9 days decodes
// as all zeros.
void DecodeDate(TDateTime Value, int& Year, int& Month, int& Day) noexcept;
void DecodeTime(TDateTime Value, int& Hour, int& Min, int& Sec, int& MSec) noexcept;
void DecodeDateTime(TDateTime Value, int& Year, int& Month, int& Day, int& Hour, int& Min, int& Sec,
                    int& MSec) noexcept;
// 1 for Sunday to 7 for Saturday.
int DayOfWeek(TDateTime Value) noexcept;

// The system clock in local time.
TDateTime Now();
TDateTime Date();
TDateTime Time();

// Mask tokens (any case): yyyy yy, mmmm mmm mm m, dddd ddd dd d, hh h, nn n,
// ss s, zzz z, am/pm and a/p (12-hour clock, written in the mask's case).
// An m or mm right after an h token means minutes, as in "hh:mm". Text in
// single or double quotes is copied; any other unit stands for itself.
hstring HtFormatDateTime(std::u16string_view Mask, TDateTime Value);

// "yyyy-mm-ddThh:nn:ss", with ".zzz" when the milliseconds are not zero, or
// "yyyy-mm-dd" alone.
hstring DateToISO8601(TDateTime Value, bool WithTime = true);
// Reads "yyyy-mm-dd", optionally followed by "T" or a blank and hh:nn[:ss[.fff]],
// and by "Z" or an offset ±hh[:nn]; a value with an offset is moved to UTC.
bool TryISO8601ToDate(std::u16string_view S, TDateTime& Value) noexcept;
// The same; raises EConvertError "'<S>' is not a valid ISO 8601 date".
TDateTime ISO8601ToDate(std::u16string_view S);

} // namespace ht
