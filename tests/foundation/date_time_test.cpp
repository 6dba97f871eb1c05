#include "htcore/foundation/date_time.h"
#include "htcore/foundation/exception.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

struct TParts {
  int y, m, d, h, n, s, ms;
  bool operator==(const TParts&) const = default;
};

TParts Parts(TDateTime v) {
  TParts p;
  DecodeDateTime(v, p.y, p.m, p.d, p.h, p.n, p.s, p.ms);
  return p;
}

std::ostream& operator<<(std::ostream& os, const TParts& p) {
  return os << p.y << "-" << p.m << "-" << p.d << " " << p.h << ":" << p.n << ":" << p.s << "." << p.ms;
}

} // namespace

TEST(DateTime, AnchorDays) {
  struct {
    int y, m, d;
    double days;
  } cases[] = {{1899, 12, 30, 0},  {1899, 12, 31, 1},      {1900, 1, 1, 2},     {1899, 12, 29, -1},
               {1900, 3, 1, 61},   {2000, 1, 1, 36526},    {1970, 1, 1, 25569}, {2024, 2, 29, 45351},
               {1, 1, 1, -693593}, {9999, 12, 31, 2958465}};
  for (auto& c : cases) {
    EXPECT_EQ(EncodeDate(c.y, c.m, c.d), c.days) << c.y << "-" << c.m << "-" << c.d;
    int y, m, d;
    DecodeDate(c.days, y, m, d);
    EXPECT_EQ(y * 10000 + m * 100 + d, c.y * 10000 + c.m * 100 + c.d);
  }
}

TEST(DateTime, EveryDayFromYearOneOnRoundTrips) {
  // Walk the calendar independently of the conversion and compare day by day.
  int y = 1, m = 1, d = 1;
  for (int64_t day = -693593; day <= 2958465; ++day) {
    TDateTime v;
    ASSERT_TRUE(TryEncodeDate(y, m, d, v));
    ASSERT_EQ(v, static_cast<double>(day)) << y << "-" << m << "-" << d;
    if (day % 37 == 0 || (day > -800 && day < 800)) {
      int y2, m2, d2;
      DecodeDate(v, y2, m2, d2);
      ASSERT_EQ(y2 * 10000 + m2 * 100 + d2, y * 10000 + m * 100 + d) << day;
    }
    if (++d > DaysInMonth(y, m)) {
      d = 1;
      if (++m > 12) {
        m = 1;
        ++y;
      }
    }
  }
}

TEST(DateTime, TimeOfDayRoundTripsOnBothSidesOfDayZero) {
  const TParts cases[] = {
      {1899, 12, 30, 0, 0, 0, 0},      {1899, 12, 30, 23, 59, 59, 999}, {1899, 12, 29, 6, 0, 0, 0},
      {1899, 12, 29, 23, 59, 59, 999}, {1, 1, 1, 12, 30, 0, 1},         {1600, 2, 29, 1, 2, 3, 4},
      {2024, 2, 29, 13, 5, 9, 45},     {9999, 12, 31, 23, 59, 59, 999}, {1850, 7, 4, 0, 0, 0, 1},
  };
  for (auto& c : cases) {
    TDateTime v = EncodeDateTime(c.y, c.m, c.d, c.h, c.n, c.s, c.ms);
    EXPECT_EQ(Parts(v), c);
  }
  EXPECT_EQ(Parts(-1.25), (TParts{1899, 12, 29, 6, 0, 0, 0}));
  EXPECT_EQ(EncodeDateTime(1899, 12, 29, 6, 0, 0, 0), -1.25);
  EXPECT_EQ(Parts(-2.75), (TParts{1899, 12, 28, 18, 0, 0, 0}));
  // Every millisecond count of a day survives the double, far from day 0 too.
  for (double base : {-693593.0, -1.0, 0.0, 45351.0, 2958465.0})
    for (int ms = 0; ms < MSecsPerDay; ms += 86399) {
      TDateTime t = static_cast<double>(ms) / MSecsPerDay;
      TParts p = Parts(base < 0 ? base - t : base + t);
      EXPECT_EQ(((p.h * 60 + p.n) * 60 + p.s) * 1000 + p.ms, ms) << base;
    }
}

TEST(DateTime, RoundingCarriesIntoTheNextDay) {
  TDateTime almost = EncodeDate(2020, 12, 31) + 0.99999999999;
  EXPECT_EQ(Parts(almost), (TParts{2021, 1, 1, 0, 0, 0, 0}));
}

TEST(DateTime, BadValuesDecodeAsZeros) {
  for (double v : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e12})
    EXPECT_EQ(Parts(v), (TParts{0, 0, 0, 0, 0, 0, 0}));
}

TEST(DateTime, CalendarRules) {
  struct {
    int year;
    bool leap;
  } years[] = {{1900, false}, {2000, true}, {2023, false}, {2024, true}, {2100, false}, {1600, true}};
  for (auto& c : years) {
    EXPECT_EQ(IsLeapYear(c.year), c.leap) << c.year;
    EXPECT_EQ(DaysInMonth(c.year, 2), c.leap ? 29 : 28);
  }
  EXPECT_EQ(DaysInMonth(2023, 4), 30);
  EXPECT_EQ(DaysInMonth(2023, 13), 0);
  EXPECT_EQ(DaysInMonth(EncodeDate(2024, 2, 10)), 29);
  struct {
    int y, m, d, dow;
  } days[] = {{1899, 12, 30, 7}, {1899, 12, 31, 1}, {1899, 12, 29, 6}, {2024, 2, 29, 5}, {1, 1, 1, 2}};
  for (auto& c : days)
    EXPECT_EQ(DayOfWeek(EncodeDateTime(c.y, c.m, c.d, 12, 0, 0, 0)), c.dow)
        << c.y << "-" << c.m << "-" << c.d;
  EXPECT_EQ(DayOfWeek(-1.75), 6);
}

TEST(DateTime, EncodeRejectsBadArguments) {
  for (auto f :
       {+[] { EncodeDate(0, 1, 1); }, +[] { EncodeDate(10000, 1, 1); }, +[] { EncodeDate(2023, 2, 29); },
        +[] { EncodeDate(2023, 0, 1); }, +[] { EncodeDate(2023, 1, 0); }}) {
    try {
      f();
      ADD_FAILURE() << "no error";
    } catch (const EConvertError& e) {
      EXPECT_STREQ(e.what(), "Invalid argument to date encode");
    }
  }
  EXPECT_THROW(EncodeTime(24, 0, 0, 0), EConvertError);
  EXPECT_THROW(EncodeTime(0, 60, 0, 0), EConvertError);
  EXPECT_THROW(EncodeTime(0, 0, 0, 1000), EConvertError);
  TDateTime v = 7;
  EXPECT_FALSE(TryEncodeTime(-1, 0, 0, 0, v));
  EXPECT_EQ(v, 7);
}

TEST(DateTime, ClockIsLocalAndSane) {
  TDateTime now = Now();
  EXPECT_GT(now, EncodeDate(2024, 1, 1));
  EXPECT_LT(now, EncodeDate(2200, 1, 1));
  EXPECT_NEAR(Date(), std::trunc(now), 1.0);
  TDateTime t = Time();
  EXPECT_GE(t, 0);
  EXPECT_LT(t, 1);
}

TEST(HtFormatDateTime, MaskTokens) {
  TDateTime v = EncodeDateTime(2024, 2, 29, 13, 5, 9, 45);
  struct {
    std::u16string_view mask, out;
  } cases[] = {
      {u"yyyy-mm-dd hh:nn:ss.zzz", u"2024-02-29 13:05:09.045"},
      {u"yy/m/d h:n:s z", u"24/2/29 13:5:9 45"},
      {u"dddd d mmmm yyyy", u"Thursday 29 February 2024"},
      {u"ddd, dd mmm", u"Thu, 29 Feb"},
      {u"YYYY-MM-DD HH:NN", u"2024-02-29 13:05"},
      {u"hh:mm", u"13:05"}, // m right after h is minutes
      {u"hh dd mm", u"13 29 02"},
      {u"h:nn am/pm", u"1:05 pm"},
      {u"hh AM/PM", u"01 PM"},
      {u"h a/p", u"1 p"},
      {u"A/P", u"P"},
      {u"'yyyy' yyyy", u"yyyy 2024"},
      {u"\"mm\"/mm", u"mm/02"},
      {u"'unclosed", u"unclosed"},
      {u"yyyy-mm-dd'T'hh:nn:ss", u"2024-02-29T13:05:09"},
      {u"", u""},
      {u"x, y!", u"x, 24!"},
  };
  for (auto& c : cases)
    EXPECT_EQ(HtFormatDateTime(c.mask, v).view(), c.out) << HStringToUtf8(c.mask);
  EXPECT_EQ(HtFormatDateTime(u"h am/pm", EncodeDateTime(2024, 1, 1, 0, 0, 0, 0)), u"12 am");
  EXPECT_EQ(HtFormatDateTime(u"h am/pm", EncodeDateTime(2024, 1, 1, 12, 0, 0, 0)), u"12 pm");
  EXPECT_EQ(HtFormatDateTime(u"yyyy-mm-dd hh:nn dddd", -1.25), u"1899-12-29 06:00 Friday");
  EXPECT_EQ(HtFormatDateTime(u"yyyy", EncodeDate(12, 1, 1)), u"0012");
}

TEST(ISO8601, WriteAndRead) {
  TDateTime v = EncodeDateTime(2024, 2, 29, 13, 5, 9, 45);
  EXPECT_EQ(DateToISO8601(v), u"2024-02-29T13:05:09.045");
  EXPECT_EQ(DateToISO8601(EncodeDateTime(2024, 2, 29, 13, 5, 9, 0)), u"2024-02-29T13:05:09");
  EXPECT_EQ(DateToISO8601(v, false), u"2024-02-29");
  EXPECT_EQ(DateToISO8601(-1.25), u"1899-12-29T06:00:00");

  struct {
    std::u16string_view text;
    TParts parts;
  } cases[] = {
      {u"2024-02-29", {2024, 2, 29, 0, 0, 0, 0}},
      {u"2024-02-29T13:05:09", {2024, 2, 29, 13, 5, 9, 0}},
      {u"2024-02-29 13:05", {2024, 2, 29, 13, 5, 0, 0}},
      {u"2024-02-29T13:05:09.5", {2024, 2, 29, 13, 5, 9, 500}},
      {u"2024-02-29T13:05:09.123456", {2024, 2, 29, 13, 5, 9, 123}},
      {u"2024-02-29T13:05:09Z", {2024, 2, 29, 13, 5, 9, 0}},
      {u"2024-02-29T13:05:09+02:00", {2024, 2, 29, 11, 5, 9, 0}},
      {u"2024-02-29T01:00:00+0200", {2024, 2, 28, 23, 0, 0, 0}},
      {u"2024-02-29T23:30:00-01", {2024, 3, 1, 0, 30, 0, 0}},
      {u"1899-12-29T06:00:00", {1899, 12, 29, 6, 0, 0, 0}},
      {u"1899-12-30T03:00:00+07:00", {1899, 12, 29, 20, 0, 0, 0}},
      {u"1899-12-29T23:00:00-02:00", {1899, 12, 30, 1, 0, 0, 0}},
  };
  for (auto& c : cases)
    EXPECT_EQ(Parts(ISO8601ToDate(c.text)), c.parts) << HStringToUtf8(c.text);
  EXPECT_EQ(ISO8601ToDate(DateToISO8601(v)), v);

  for (std::u16string_view bad :
       {u"2024-2-29", u"2024-02-30", u"2024-02-29T", u"2024-02-29T25:00", u"2024-02-29T10:00+",
        u"2024-02-29T10:00+02:", u"x", u"", u"0001-01-01T00:30+01:00"}) {
    TDateTime out = 3;
    EXPECT_FALSE(TryISO8601ToDate(bad, out)) << HStringToUtf8(bad);
    EXPECT_EQ(out, 3);
    try {
      ISO8601ToDate(bad);
      ADD_FAILURE() << "no error";
    } catch (const EConvertError& e) {
      EXPECT_EQ(std::string(e.what()), "'" + HStringToUtf8(bad) + "' is not a valid ISO 8601 date");
    }
  }
}
