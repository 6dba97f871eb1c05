// Locale-free number readers: iStrtoFloat, iStrtoInt, StrtoFloatCheck, HexToDec.
#include "htcore/foundation/convert.h"
#include "htcore/foundation/exception.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace ht {

namespace {

// Every power of ten up to 1e22 is exact in a double, so a mantissa below 2^53
// scaled by one of them is correctly rounded.
constexpr double kPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                             1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr uint64_t kExactLimit = uint64_t(1) << 53;
constexpr int kExpCap = 100000; // far beyond the range of double; keeps the sum from overflowing

template <class C> bool IsDigit(C c) { return c >= C('0') && c <= C('9'); }

// mantissa * 10^exp10. Exponents beyond the exact table are applied in steps
// of 1e22 (within a few units in the last place), saturating at infinity or 0.
double Scale(uint64_t mantissa, int exp10) {
  double v = static_cast<double>(mantissa);
  if (mantissa == 0 || exp10 == 0)
    return v;
  if (exp10 > 0) {
    if (mantissa < kExactLimit && exp10 <= 22)
      return v * kPow10[exp10];
    while (exp10 > 22 && std::isfinite(v)) {
      v *= 1e22;
      exp10 -= 22;
    }
    return std::isfinite(v) ? v * kPow10[exp10] : v;
  }
  exp10 = -exp10;
  if (mantissa < kExactLimit && exp10 <= 22)
    return v / kPow10[exp10];
  while (exp10 > 22 && v != 0) {
    v /= 1e22;
    exp10 -= 22;
  }
  return v == 0 ? v : v / kPow10[exp10];
}

// Significant digits are gathered into a 64-bit mantissa; digits past 19 only
// move the decimal exponent.
struct TMantissa {
  uint64_t value = 0;
  int digits = 0; // significant digits taken
  int exp10 = 0;

  void AddInteger(int d) {
    if (digits < 19) {
      value = value * 10 + static_cast<unsigned>(d);
      if (value)
        ++digits;
    } else {
      ++exp10;
    }
  }
  void AddFraction(int d) {
    if (digits < 19) {
      value = value * 10 + static_cast<unsigned>(d);
      if (value)
        ++digits;
      --exp10;
    }
  }
};

template <class C> double LenientFloat(const C* p, const C* end) {
  while (p < end && *p == C(' '))
    ++p;
  if (p == end)
    return 0;
  bool negative = false;
  if (*p == C('+') || *p == C('-')) {
    negative = *p == C('-');
    ++p;
  } else if (!IsDigit(*p) && *p != C('.') && *p != C(',')) {
    return 0;
  }
  TMantissa m;
  while (p < end && IsDigit(*p))
    m.AddInteger(*p++ - C('0'));
  if (p < end && (*p == C('.') || *p == C(','))) {
    ++p;
    // Seven fraction digits at most; the rest are read and dropped.
    for (int taken = 0; p < end && IsDigit(*p); ++p)
      if (taken++ < 7)
        m.AddFraction(*p - C('0'));
  }
  int exp10 = 0;
  if (p < end && (*p == C('e') || *p == C('E'))) {
    ++p;
    // Only "-" is read as an exponent sign: "1e+3" is 1.
    bool exp_negative = p < end && *p == C('-');
    if (exp_negative)
      ++p;
    for (; p < end && IsDigit(*p); ++p)
      if (exp10 < kExpCap)
        exp10 = exp10 * 10 + (*p - C('0'));
    if (exp_negative)
      exp10 = -exp10;
  }
  double v = Scale(m.value, m.exp10 + exp10);
  return negative ? -v : v;
}

template <class C> int LenientInt(const C* p, const C* end) {
  while (p < end && *p == C(' '))
    ++p;
  bool negative = false;
  if (p < end && (*p == C('+') || *p == C('-'))) {
    negative = *p == C('-');
    ++p;
  }
  int64_t v = 0;
  for (; p < end && IsDigit(*p); ++p)
    if (v <= INT_MAX + int64_t(1))
      v = v * 10 + (*p - C('0'));
  if (negative)
    v = -v;
  if (v > INT_MAX)
    return INT_MAX;
  if (v < INT_MIN)
    return INT_MIN;
  return static_cast<int>(v);
}

[[noreturn]] void InvalidNumber(std::u16string_view s) {
  throw EConvertError(u"Invalid number " + hstring(s));
}

} // namespace

double iStrtoFloat(std::u16string_view S) noexcept { return LenientFloat(S.data(), S.data() + S.size()); }
double iStrtoFloat(std::string_view S) noexcept { return LenientFloat(S.data(), S.data() + S.size()); }
int iStrtoInt(std::u16string_view S) noexcept { return LenientInt(S.data(), S.data() + S.size()); }
int iStrtoInt(std::string_view S) noexcept { return LenientInt(S.data(), S.data() + S.size()); }

double StrtoFloatCheck(std::u16string_view S, char16_t DecimalSep, char16_t ThousandSep) {
  const char16_t* p = S.data();
  const char16_t* end = p + S.size();
  while (p < end && *p == u' ')
    ++p;
  while (end > p && end[-1] == u' ')
    --end;
  bool negative = false;
  if (p < end && (*p == u'+' || *p == u'-')) {
    negative = *p == u'-';
    ++p;
  }
  if (p == end || (!IsDigit(*p) && *p != DecimalSep))
    InvalidNumber(S);
  TMantissa m;
  bool any_digit = false;
  for (; p < end && *p != DecimalSep; ++p) {
    if (IsDigit(*p)) {
      m.AddInteger(*p - u'0');
      any_digit = true;
    } else if (*p == ThousandSep && ThousandSep != 0) {
      continue;
    } else {
      break;
    }
  }
  if (p < end && *p == DecimalSep) {
    for (++p; p < end && IsDigit(*p); ++p) {
      m.AddFraction(*p - u'0');
      any_digit = true;
    }
  }
  if (!any_digit)
    InvalidNumber(S);
  int exp10 = 0;
  if (p < end && (*p == u'e' || *p == u'E')) {
    ++p;
    bool exp_negative = false;
    if (p < end && (*p == u'+' || *p == u'-'))
      exp_negative = *p++ == u'-';
    if (p == end || !IsDigit(*p))
      InvalidNumber(S);
    for (; p < end && IsDigit(*p); ++p)
      if (exp10 < kExpCap)
        exp10 = exp10 * 10 + (*p - u'0');
    if (exp_negative)
      exp10 = -exp10;
  }
  if (p != end)
    InvalidNumber(S);
  double v = Scale(m.value, m.exp10 + exp10);
  // Exponents past the exact table can overflow; a strict reader says so.
  if (std::isinf(v))
    InvalidNumber(S);
  return negative ? -v : v;
}

int64_t HexToDec(std::u16string_view S) noexcept {
  static constexpr std::u16string_view kDigits = u"0123456789abcdefghijklmnopqrstuvwxyz";
  while (!S.empty() && S.front() == u' ')
    S.remove_prefix(1);
  while (!S.empty() && S.back() == u' ')
    S.remove_suffix(1);
  if (S.size() >= 2 && S[0] == u'0' && (S[1] == u'x' || S[1] == u'X'))
    S.remove_prefix(2);
  if (!S.empty() && (S.back() == u'h' || S.back() == u'H'))
    S.remove_suffix(1);
  // Unsigned arithmetic: a long text wraps around instead of overflowing.
  uint64_t v = 0;
  for (char16_t c : S) {
    if (c >= u'A' && c <= u'Z')
      c = static_cast<char16_t>(c + 32);
    size_t digit = kDigits.find(c);
    if (digit == std::u16string_view::npos)
      return 0;
    v = v * 16 + digit;
  }
  return static_cast<int64_t>(v);
}

} // namespace ht
