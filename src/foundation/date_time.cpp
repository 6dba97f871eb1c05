#include "htcore/foundation/date_time.h"

#include "htcore/foundation/exception.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>

namespace ht {

namespace {

// 1899-12-30 counted from 1970-01-01.
constexpr int64_t kEpochShift = 25569;

// Days since 1970-01-01 of a proleptic Gregorian date (H. Hinnant's algorithm).
constexpr int64_t DaysFromCivil(int64_t y, int m, int d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

constexpr void CivilFromDays(int64_t z, int64_t& y, int& m, int& d) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = yoe + era * 400 + (m <= 2);
}

static_assert(DaysFromCivil(1899, 12, 30) == -kEpochShift);

// Splits a value into whole days (signed) and milliseconds into the day.
bool SplitValue(TDateTime value, int64_t& days, int64_t& msec) {
  if (!std::isfinite(value) || std::fabs(value) > 3e9)
    return false;
  auto total = static_cast<int64_t>(std::llround(std::fabs(value) * MSecsPerDay));
  days = total / MSecsPerDay;
  msec = total % MSecsPerDay;
  if (value < 0)
    days = -days;
  return true;
}

// A negative day carries its time of day as a further negative fraction.
TDateTime Combine(TDateTime date, TDateTime time) { return date < 0 ? date - time : date + time; }

} // namespace

bool IsLeapYear(int Year) noexcept { return Year % 4 == 0 && (Year % 100 != 0 || Year % 400 == 0); }

int DaysInMonth(int Year, int Month) noexcept {
  static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (Month < 1 || Month > 12)
    return 0;
  return Month == 2 && IsLeapYear(Year) ? 29 : kDays[Month - 1];
}

int DaysInMonth(TDateTime Value) noexcept {
  int y, m, d;
  DecodeDate(Value, y, m, d);
  return DaysInMonth(y, m);
}

bool TryEncodeDate(int Year, int Month, int Day, TDateTime& Value) noexcept {
  if (Year < 1 || Year > 9999 || Month < 1 || Month > 12 || Day < 1 || Day > DaysInMonth(Year, Month))
    return false;
  Value = static_cast<TDateTime>(DaysFromCivil(Year, Month, Day) + kEpochShift);
  return true;
}

bool TryEncodeTime(int Hour, int Min, int Sec, int MSec, TDateTime& Value) noexcept {
  if (Hour < 0 || Hour >= 24 || Min < 0 || Min >= 60 || Sec < 0 || Sec >= 60 || MSec < 0 || MSec >= 1000)
    return false;
  Value = static_cast<TDateTime>(((Hour * 60 + Min) * 60 + Sec) * 1000 + MSec) / MSecsPerDay;
  return true;
}

bool TryEncodeDateTime(int Year, int Month, int Day, int Hour, int Min, int Sec, int MSec,
                       TDateTime& Value) noexcept {
  TDateTime date, time;
  if (!TryEncodeDate(Year, Month, Day, date) || !TryEncodeTime(Hour, Min, Sec, MSec, time))
    return false;
  Value = Combine(date, time);
  return true;
}

TDateTime EncodeDate(int Year, int Month, int Day) {
  TDateTime v;
  if (!TryEncodeDate(Year, Month, Day, v))
    throw EConvertError(std::string_view("Invalid argument to date encode"));
  return v;
}

TDateTime EncodeTime(int Hour, int Min, int Sec, int MSec) {
  TDateTime v;
  if (!TryEncodeTime(Hour, Min, Sec, MSec, v))
    throw EConvertError(std::string_view("Invalid argument to time encode"));
  return v;
}

TDateTime EncodeDateTime(int Year, int Month, int Day, int Hour, int Min, int Sec, int MSec) {
  return Combine(EncodeDate(Year, Month, Day), EncodeTime(Hour, Min, Sec, MSec));
}

void DecodeDateTime(TDateTime Value, int& Year, int& Month, int& Day, int& Hour, int& Min, int& Sec,
                    int& MSec) noexcept {
  int64_t days, ms;
  if (!SplitValue(Value, days, ms)) {
    Year = Month = Day = Hour = Min = Sec = MSec = 0;
    return;
  }
  int64_t y;
  CivilFromDays(days - kEpochShift, y, Month, Day);
  Year = static_cast<int>(y);
  MSec = static_cast<int>(ms % 1000);
  ms /= 1000;
  Sec = static_cast<int>(ms % 60);
  ms /= 60;
  Min = static_cast<int>(ms % 60);
  Hour = static_cast<int>(ms / 60);
}

void DecodeDate(TDateTime Value, int& Year, int& Month, int& Day) noexcept {
  int h, n, s, z;
  DecodeDateTime(Value, Year, Month, Day, h, n, s, z);
}

void DecodeTime(TDateTime Value, int& Hour, int& Min, int& Sec, int& MSec) noexcept {
  int y, m, d;
  DecodeDateTime(Value, y, m, d, Hour, Min, Sec, MSec);
}

int DayOfWeek(TDateTime Value) noexcept {
  int64_t days, ms;
  if (!SplitValue(Value, days, ms))
    return 0;
  // Day 0, 1899-12-30, was a Saturday.
  return static_cast<int>(((days % 7) + 13) % 7) + 1;
}

TDateTime Now() {
  using namespace std::chrono;
  auto now = system_clock::now();
  std::time_t secs = system_clock::to_time_t(now);
  auto ms = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
  if (ms < 0)
    ms += 1000;
  std::tm tm{};
  localtime_r(&secs, &tm);
  TDateTime date, time;
  if (!TryEncodeDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, date) ||
      !TryEncodeTime(tm.tm_hour, tm.tm_min, tm.tm_sec < 60 ? tm.tm_sec : 59, static_cast<int>(ms), time))
    return 0;
  return Combine(date, time);
}

TDateTime Date() { return std::trunc(Now()); }

TDateTime Time() {
  TDateTime n = Now();
  return std::fabs(n - std::trunc(n));
}

} // namespace ht
