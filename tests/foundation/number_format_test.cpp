#include "htcore/foundation/number_format.h"

#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace ht;

namespace {

struct Case {
  const char* mask;
  double value;
  const char* expected;
};

void check(const Case* cases, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    const Case& c = cases[i];
    EXPECT_EQ(HtFormatFloat(hstring::FromUtf8(c.mask), c.value).toUtf8(), c.expected)
        << "mask \"" << c.mask << "\" value " << c.value;
  }
}

} // namespace

TEST(HtFormatFloat, DigitsPointAndRounding) {
  const Case cases[] = {
      {"0.00", 1234.567, "1234.57"},
      {"0.00", -1234.567, "-1234.57"},
      {"0.00", 0, "0.00"},
      {"0.00", 1.005, "1.01"}, // rounds the shortest decimal form, not the binary value
      {"0.00", 0.125, "0.13"}, // halves away from zero
      {"0.00", -0.125, "-0.13"},
      {"0.0", 0.05, "0.1"},
      {"0.0", 9.96, "10.0"},
      {"0.###", 1.5, "1.5"},
      {"0.###", 1, "1"}, // no point without fraction digits
      {"0.###", 1.23456, "1.235"},
      {"0.##0", 1.5, "1.500"}, // the last 0 makes every place before it show
      {"0.##########", 0.1 + 0.2, "0.3"},
      {"#", 0, ""}, // '#' shows only significant digits
      {"#", 12.5, "13"},
      {"#", 2.5, "3"},
      {"#", -2.5, "-3"},
      {"#.##", 0.5, ".5"},
      {"0", 0.4, "0"},
      {"0", -0.4, "0"}, // rounds to zero: no sign
      {"0", 0.5, "1"},
      {"00000", 42, "00042"},
      {"00", 12345, "12345"}, // digits beyond the placeholders are kept
      {"0.0", 1e20, "100000000000000000000.0"},
      {"0.000000", 1e-7, "0.000000"},
      {"0.000000", 5e-7, "0.000001"},
      {"0.00", 999.999, "1000.00"},
  };
  check(cases, std::size(cases));
}

TEST(HtFormatFloat, ThousandsAreBlanks) {
  const Case cases[] = {
      {"#,##0", 1234567, "1 234 567"},
      {"#,##0", 999, "999"},
      {"#,##0", 1000, "1 000"},
      {"#,##0", 0, "0"},
      {"#,##0", -1234, "-1 234"},
      {"#,##0.00", 1234.5, "1 234.50"},
      {"#,#", 1e21, "1 000 000 000 000 000 000 000"},
      {"0,000,000", 42, "0 000 042"},
      {",0", 1234, "1 234"}, // the comma anywhere asks for grouping
      {"# ### ##0.##", 1234567.891, "1 234 567.89"},
      {"# ### ##0.##", 1234.5, "1 234.5"},
      {"# ### ##0.##", 12, "12"}, // blanks between placeholders wait for a digit
      {"# ### ##0.##", 0.5, "0.5"},
      {"# ### ##0.##", 123456789, "123 456 789"},
      {"# ### ##0.##", -98765.4321, "-98 765.43"},
  };
  check(cases, std::size(cases));
}

TEST(HtFormatFloat, SectionsAndLiterals) {
  const Case cases[] = {
      {"0.00;(0.00)", -5, "(5.00)"},
      {"0.00;(0.00)", 5, "5.00"},
      {"0.00;(0.00);'zero'", 0, "zero"},
      {"0.00;(0.00);'zero'", 0.001, "zero"},
      {"0.00;(0.00);'zero'", -0.001, "zero"},
      {"0.0;(0.0)", -0.04, "0.0"},   // zero without its section: the first one, unsigned
      {"0.00;;'zero'", -3, "-3.00"}, // empty negative section falls back
      {"0;-0;zero;ignored", 0, "zero"},
      {"'$'#,##0.00", 1234.5, "$1 234.50"},
      {"'$'#,##0.00", -1234.5, "-$1 234.50"},
      {"0'%'", 12, "12%"},
      {"0 kg", 5, "5 kg"},
      {"\"a;b\"0", 5, "a;b5"},
      {"'0.#,E+0'0", 5, "0.#,E+05"},
      {"'open0", 5, "open0"}, // unterminated quote runs to the end
      {"x", 5, "x"},
      {"[0]", 7, "[7]"},
      {"0.0.0", 1.25, "1.2.5"}, // a second point is text between fraction digits
  };
  check(cases, std::size(cases));
}

TEST(HtFormatFloat, Scientific) {
  const Case cases[] = {
      {"0.00E+00", 1234.5, "1.23E+03"},  {"0.00E+00", 0.00012345, "1.23E-04"},
      {"0.00E+00", 0, "0.00E+00"},       {"0.00E+00", -1234.5, "-1.23E+03"},
      {"0.00E-00", 1234.5, "1.23E03"},   {"0.00E-00", 0.0123, "1.23E-02"},
      {"00.0e+0", 12345, "12.3e+3"},     // two integer placeholders, two mantissa digits
      {"0.00E+00", 9.999e9, "1.00E+10"}, // rounding carries into the exponent
      {"0.##E+0", 1.5e300, "1.5E+300"},  {"#.##E+0", 0, "E+0"},
      {"0E+0000", 5e-5, "5E-0005"},      {"0E+00000", 5, "5E+00000"}, // a fifth zero is text
  };
  check(cases, std::size(cases));
}

TEST(HtFormatFloat, GeneralFormAndSpecialValues) {
  const Case cases[] = {
      {"", 1234.5, "1234.5"},
      {"", 1e20, "1E20"},
      {"", 1e-5, "1E-5"},
      {"", 0.0001, "0.0001"},
      {"", -0.0, "0"},
      {"", 0.1, "0.1"},
      {"", 1.0 / 3, "0.333333333333333"},
      {"", -2.5e15, "-2.5E15"},
      {";(0)", 3, "3"},
      {"0.00", std::numeric_limits<double>::quiet_NaN(), "NAN"},
      {"0.00", std::numeric_limits<double>::infinity(), "INF"},
      {"", -std::numeric_limits<double>::infinity(), "-INF"},
  };
  check(cases, std::size(cases));
}

TEST(HtFormatFloat, IgnoresTheCLocale) {
  const char* old = std::setlocale(LC_ALL, nullptr);
  std::string saved = old ? old : "C";
  // A comma-decimal locale if the system has one; the test holds either way.
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_EQ(HtFormatFloat(u"#,##0.00", 1234.5).toUtf8(), "1 234.50");
  EXPECT_EQ(HtFormatDecimal(0.5, 2).toUtf8(), "0.5");
  std::setlocale(LC_ALL, saved.c_str());
}

TEST(HtFormatDecimal, ShortFixedForm) {
  struct {
    double value;
    int digits;
    const char* expected;
  } cases[] = {
      {2.0, 2, "2"},
      {0.5, 2, "0.5"},
      {-0.25, 1, "-0.2"}, // -2.5 goes to even
      {0.25, 1, "0.2"},
      {0.35, 1, "0.4"}, // the product 3.5 goes to even
      {1.5, 2, "1.5"},
      {128.0 / 255, 2, "0.5"},
      {0.05, 2, "0.05"},
      {1.996, 2, "2"}, // within half a place of an integer
      {-1.996, 2, "-2"},
      {12.3456, 0, "12"},
      {-3.7, 0, "-4"},
      {2.5, 0, "2"},
      {3.5, 0, "4"},
      {123.456, 8, "123.456"},
      {1.23456789012, 9, "1.23456789"}, // beyond 7 means 8 places
      {1.23456789012, -1, "1.23456789"},
      {-0.04, 1, "0"},
      {-0.05, 1, "0"},
      {1e20, 2, "100000000000000000000"},
      {1234567.25, 7, "1234567.25"},
      {1e12 + 0.25, 8, "1000000000000.25"},
      {0.001, 2, "0"},
      {0.001, 3, "0.001"},
      {std::numeric_limits<double>::quiet_NaN(), 2, "NAN"},
      {-std::numeric_limits<double>::infinity(), 2, "-INF"},
  };
  for (auto& c : cases)
    EXPECT_EQ(HtFormatDecimal(c.value, c.digits).toUtf8(), c.expected) << c.value << " " << c.digits;
}
