// HtFormatFloat (format masks) and HtFormatDecimal (short fixed form).
#include "htcore/foundation/number_format.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace ht {

namespace {

// A non-negative decimal: digits[0..pt) are the integer part, digits[pt..) the
// fraction; pt may lie before the first digit or past the last. No digits
// means zero.
struct Decimal {
  std::string digits;
  int pt = 0;

  char at(int i) const { return i >= 0 && i < static_cast<int>(digits.size()) ? digits[i] : '0'; }
  bool zero() const { return digits.empty(); }
};

// The shortest digits that read back as v (v finite and >= 0).
Decimal shortest(double v) {
  Decimal d;
  if (v == 0)
    return d;
  char buf[40];
  auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific);
  const char* p = buf;
  for (; p < res.ptr && *p != 'e'; ++p)
    if (*p != '.')
      d.digits += *p;
  *res.ptr = 0;
  int exp10 = std::atoi(p + 1);
  d.pt = exp10 + 1;
  while (!d.digits.empty() && d.digits.back() == '0')
    d.digits.pop_back();
  return d;
}

// Keeps the first `keep` digits, rounding half away from zero.
void round_to(Decimal& d, int keep) {
  if (keep >= static_cast<int>(d.digits.size()))
    return;
  if (keep < 0) {
    d.digits.clear();
    return;
  }
  bool up = d.digits[keep] >= '5';
  d.digits.resize(keep);
  if (up) {
    int i = keep - 1;
    while (i >= 0 && d.digits[i] == '9')
      d.digits[i--] = '0';
    if (i >= 0) {
      ++d.digits[i];
    } else {
      d.digits.insert(d.digits.begin(), '1');
      ++d.pt;
    }
  }
  while (!d.digits.empty() && d.digits.back() == '0')
    d.digits.pop_back();
}

enum TokenKind { tkLiteral, tkInt, tkPoint, tkFrac, tkExp };

struct Token {
  TokenKind kind;
  int index;                // placeholder number for tkInt / tkFrac
  std::u16string_view text; // for tkLiteral
};

struct Section {
  std::vector<Token> tokens;
  int nInt = 0, firstZero = -1, fracMax = 0, fracMin = 0;
  int firstIntTok = -1, lastIntTok = -1;
  bool grouping = false;
  bool sci = false, expPlus = false;
  int expDigits = 0;
  char16_t expChar = u'E';
};

Section parse_section(std::u16string_view s) {
  Section sec;
  bool inFrac = false;
  size_t i = 0;
  auto literal = [&](size_t from, size_t len) { sec.tokens.push_back({tkLiteral, 0, s.substr(from, len)}); };
  while (i < s.size()) {
    char16_t c = s[i];
    if (c == u'\'' || c == u'"') {
      size_t close = s.find(c, i + 1);
      if (close == std::u16string_view::npos)
        close = s.size();
      if (close > i + 1)
        literal(i + 1, close - i - 1);
      i = close + 1;
      continue;
    }
    if (sec.sci) {
      literal(i++, 1);
      continue;
    }
    if (c == u'0' || c == u'#') {
      if (!inFrac) {
        if (c == u'0' && sec.firstZero < 0)
          sec.firstZero = sec.nInt;
        if (sec.firstIntTok < 0)
          sec.firstIntTok = static_cast<int>(sec.tokens.size());
        sec.lastIntTok = static_cast<int>(sec.tokens.size());
        sec.tokens.push_back({tkInt, sec.nInt++, {}});
      } else {
        sec.tokens.push_back({tkFrac, sec.fracMax++, {}});
        if (c == u'0')
          sec.fracMin = sec.fracMax;
      }
    } else if (c == u'.' && !inFrac) {
      sec.tokens.push_back({tkPoint, 0, {}});
      inFrac = true;
    } else if (c == u',') {
      sec.grouping = true;
    } else if ((c == u'E' || c == u'e') && i + 1 < s.size() && (s[i + 1] == u'+' || s[i + 1] == u'-')) {
      sec.sci = true;
      sec.expChar = c;
      sec.expPlus = s[i + 1] == u'+';
      i += 2;
      while (i < s.size() && s[i] == u'0' && sec.expDigits < 4) {
        ++sec.expDigits;
        ++i;
      }
      sec.tokens.push_back({tkExp, 0, {}});
      continue;
    } else {
      literal(i, 1);
    }
    ++i;
  }
  return sec;
}

// The value laid out for one section: integer digits (no leading zeros),
// fraction digits after trimming, and the exponent in scientific form.
struct Layout {
  std::string intDigits, frac;
  int minInt = 0;
  int exponent = 0;
  bool zero = true;
};

Layout lay_out(const Section& sec, Decimal d) {
  Layout l;
  l.minInt = sec.firstZero < 0 ? 0 : sec.nInt - sec.firstZero;
  if (sec.sci) {
    int significant = sec.nInt + sec.fracMax;
    round_to(d, significant < 1 ? 1 : significant);
    l.zero = d.zero();
    if (!l.zero) {
      l.exponent = d.pt - sec.nInt;
      for (int k = 0; k < sec.nInt; ++k)
        l.intDigits += d.at(k);
      for (int f = 0; f < sec.fracMax; ++f)
        l.frac += d.at(sec.nInt + f);
    }
  } else {
    round_to(d, d.pt + sec.fracMax);
    l.zero = d.zero();
    if (!l.zero) {
      for (int k = 0; k < d.pt; ++k)
        l.intDigits += d.at(k);
      for (int f = 0; f < sec.fracMax; ++f)
        l.frac += d.at(d.pt + f);
    }
  }
  if (l.zero)
    l.frac.assign(sec.fracMax, '0');
  while (static_cast<int>(l.frac.size()) > sec.fracMin && l.frac.back() == '0')
    l.frac.pop_back();
  return l;
}

void emit(const Section& sec, const Layout& l, std::u16string& out) {
  const int len = static_cast<int>(l.intDigits.size());
  bool started = false;
  auto digit = [&](char c) {
    out += static_cast<char16_t>(c);
    started = true;
  };
  for (int ti = 0; ti < static_cast<int>(sec.tokens.size()); ++ti) {
    const Token& t = sec.tokens[ti];
    switch (t.kind) {
    case tkLiteral:
      // Literals inside the integer placeholders belong to digits; with no
      // digit written yet they would only pad the front.
      if (started || ti < sec.firstIntTok || ti > sec.lastIntTok)
        out += t.text;
      break;
    case tkInt: {
      int place = sec.nInt - 1 - t.index;
      if (t.index == 0) {
        for (int q = len - 1; q >= sec.nInt; --q) {
          digit(l.intDigits[len - 1 - q]);
          if (sec.grouping && q % 3 == 0)
            out += u' ';
        }
      }
      if (place < len)
        digit(l.intDigits[len - 1 - place]);
      else if (place < l.minInt)
        digit('0');
      else
        break;
      if (sec.grouping && place > 0 && place % 3 == 0)
        out += u' ';
      break;
    }
    case tkPoint:
      if (!l.frac.empty())
        out += u'.';
      break;
    case tkFrac:
      if (t.index < static_cast<int>(l.frac.size()))
        out += static_cast<char16_t>(l.frac[t.index]);
      break;
    case tkExp: {
      out += sec.expChar;
      if (l.exponent < 0)
        out += u'-';
      else if (sec.expPlus)
        out += u'+';
      std::string e = std::to_string(std::abs(l.exponent));
      for (int k = static_cast<int>(e.size()); k < sec.expDigits; ++k)
        out += u'0';
      for (char c : e)
        out += static_cast<char16_t>(c);
      break;
    }
    }
  }
}

hstring ascii(std::string_view s) {
  std::u16string u(s.begin(), s.end());
  return hstring(std::u16string_view(u));
}

hstring special(double v) {
  if (std::isnan(v))
    return ascii("NAN");
  return ascii(v < 0 ? "-INF" : "INF");
}

// Up to 15 significant digits; exponent form as "1.5E-5" and "1E20".
hstring general(double v) {
  if (v == 0)
    return ascii("0");
  char buf[64];
  auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 15);
  std::string s(buf, res.ptr);
  size_t e = s.find('e');
  if (e != std::string::npos) {
    int exp10 = std::atoi(s.c_str() + e + 1);
    s.resize(e);
    s += 'E';
    s += std::to_string(exp10);
  }
  return ascii(s);
}

std::vector<std::u16string_view> split_sections(std::u16string_view f) {
  std::vector<std::u16string_view> out;
  size_t start = 0;
  char16_t quote = 0;
  for (size_t i = 0; i < f.size() && out.size() < 2; ++i) {
    char16_t c = f[i];
    if (quote) {
      if (c == quote)
        quote = 0;
    } else if (c == u'\'' || c == u'"') {
      quote = c;
    } else if (c == u';') {
      out.push_back(f.substr(start, i - start));
      start = i + 1;
    }
  }
  // A third section ends at the next separator; anything after it is ignored.
  std::u16string_view rest = f.substr(start < f.size() ? start : f.size());
  if (out.size() == 2) {
    quote = 0;
    for (size_t i = 0; i < rest.size(); ++i) {
      char16_t c = rest[i];
      if (quote) {
        if (c == quote)
          quote = 0;
      } else if (c == u'\'' || c == u'"') {
        quote = c;
      } else if (c == u';') {
        rest = rest.substr(0, i);
        break;
      }
    }
  }
  out.push_back(rest);
  return out;
}

} // namespace

hstring HtFormatFloat(std::u16string_view Format, double Value) {
  if (!std::isfinite(Value))
    return special(Value);
  std::vector<std::u16string_view> parts = split_sections(Format);
  if (parts[0].empty())
    return general(Value);

  bool negative = Value < 0;
  Decimal d = shortest(std::fabs(Value));
  bool ownNegative = negative && parts.size() > 1 && !parts[1].empty();
  Section sec = parse_section(ownNegative ? parts[1] : parts[0]);
  Layout l = lay_out(sec, d);
  std::u16string out;
  if (l.zero) {
    bool hasZero = parts.size() > 2 && !parts[2].empty();
    if (hasZero || ownNegative) {
      sec = parse_section(hasZero ? parts[2] : parts[0]);
      l = lay_out(sec, Decimal());
    }
  } else if (negative && !ownNegative) {
    out += u'-';
  }
  emit(sec, l, out);
  return hstring(std::u16string_view(out));
}

hstring HtFormatDecimal(double Value, int Digits) {
  if (!std::isfinite(Value))
    return special(Value);
  const bool inRange = Digits >= 0 && Digits <= 7;
  const int places = inRange ? Digits : 8;
  double multiplier = 1;
  for (int i = 0; i < places; ++i)
    multiplier *= 10;

  char buf[400];
  // Beyond the 64-bit range every double is integral.
  if (std::fabs(Value) >= 9.2e18) {
    auto res = std::to_chars(buf, buf + sizeof buf, Value, std::chars_format::fixed, 0);
    return ascii(std::string_view(buf, res.ptr - buf));
  }
  int64_t rounded = std::llrint(Value);
  if (Digits == 0 || std::fabs(Value - static_cast<double>(rounded)) * multiplier < 0.5) {
    auto res = std::to_chars(buf, buf + sizeof buf, rounded);
    return ascii(std::string_view(buf, res.ptr - buf));
  }

  double scaledValue = Value * multiplier;
  std::string digits;
  bool negative = Value < 0;
  if (std::fabs(scaledValue) < 9.2e18) {
    int64_t scaled = std::llrint(scaledValue);
    if (scaled == 0)
      return ascii("0");
    negative = scaled < 0;
    uint64_t mag = negative ? 0 - static_cast<uint64_t>(scaled) : static_cast<uint64_t>(scaled);
    auto res = std::to_chars(buf, buf + sizeof buf, mag);
    digits.assign(buf, res.ptr);
    if (static_cast<int>(digits.size()) <= places)
      digits.insert(0, places + 1 - digits.size(), '0');
    digits.insert(digits.size() - places, 1, '.');
  } else {
    // Too large to scale in 64 bits: the exact fixed form rounded by the library.
    auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(Value), std::chars_format::fixed, places);
    digits.assign(buf, res.ptr);
  }
  while (digits.back() == '0')
    digits.pop_back();
  if (digits.back() == '.')
    digits.pop_back();
  if (negative)
    digits.insert(0, 1, '-');
  return ascii(digits);
}

} // namespace ht
