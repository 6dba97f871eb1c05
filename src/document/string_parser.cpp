#include "htcore/document/string_parser.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace ht {

namespace {

inline bool is_digit(char16_t c) { return c >= u'0' && c <= u'9'; }

inline int hex_value(char16_t c) {
  if (c >= u'0' && c <= u'9')
    return c - u'0';
  if (c >= u'a' && c <= u'f')
    return c - u'a' + 10;
  if (c >= u'A' && c <= u'F')
    return c - u'A' + 10;
  return -1;
}

inline bool is_space(char16_t c) { return c == u' '; }

inline bool breaks_word(char16_t c) { return c == u' ' || c == u'-' || c == u'/' || IsIdeographic(c); }

const double kPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                         1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// mantissa * 10^exp10, with one correctly rounded step in the common range.
double scale10(double mantissa, int exp10) {
  if (mantissa == 0)
    return 0;
  if (exp10 >= 0)
    return exp10 <= 22 ? mantissa * kPow10[exp10] : mantissa * std::pow(10.0, exp10);
  return -exp10 <= 22 ? mantissa / kPow10[-exp10] : mantissa / std::pow(10.0, -exp10);
}

} // namespace

void TStringParser::Init(const hstring& A) {
  s = A;
  p = Start();
  pend = p + s.size();
}

int TStringParser::Line() const {
  int n = 0;
  for (const char16_t* q = Start(); q < p; ++q)
    n += *q == u'\n';
  return n;
}

void TStringParser::Skip(int n) {
  if (n <= 0)
    return;
  p = pend - p > n ? p + n : pend;
}

void TStringParser::Skipto(char16_t c) {
  while (p < pend && *p != c)
    ++p;
}

void TStringParser::SkipEndBlanks() {
  size_t len = s.size();
  size_t off = static_cast<size_t>(p - Start());
  const char16_t* t = Start();
  while (len > 0 && (t[len - 1] == u'\n' || t[len - 1] == u'\r' || t[len - 1] == u' '))
    --len;
  if (len == s.size())
    return;
  s.Truncate(len); // keeps the NUL behind the text
  p = Start() + (off < len ? off : len);
  pend = Start() + len;
}

int TStringParser::CharPos(char16_t c) const {
  for (const char16_t* q = p; q < pend; ++q)
    if (*q == c)
      return static_cast<int>(q - p) + 1;
  return 0;
}

bool TStringParser::StartsWith(std::u16string_view Lower) const {
  if (p >= pend || Lower.empty() || static_cast<size_t>(pend - p) < Lower.size())
    return false;
  for (size_t i = 0; i < Lower.size(); ++i) {
    char16_t c = p[i];
    if (c >= u'A' && c <= u'Z')
      c += 32;
    if (c != Lower[i])
      return false;
  }
  return true;
}

bool TStringParser::ReadWord(hstring& Res, bool DoSkipBlanks) {
  if (DoSkipBlanks)
    SkipBlanks();
  Res.clear();
  if (p >= pend)
    return false;
  const char16_t* b = p++;
  while (p < pend) {
    char16_t c = *p;
    if (c == u' ' || c == u'\r' || c == u'\n' || c == u'\t' || c == u',' || c == u'(' || c == u')')
      break;
    ++p;
  }
  Res = hstring(b, static_cast<size_t>(p - b));
  return true;
}

bool TStringParser::ReadParam(hstring& Res) {
  Res.clear();
  SkipBlanks();
  if (p < pend && (*p == u',' || *p == u'(')) {
    ++p;
    SkipBlanks();
  }
  if (p >= pend)
    return false;
  if (*p == u')') {
    ++p;
    return false;
  }
  const char16_t* b = p;
  while (p < pend && *p != u',' && *p != u'(' && *p != u')')
    ++p;
  Res = hstring(b, static_cast<size_t>(p - b));
  return true;
}

bool TStringParser::ReadtoChar(char16_t c, hstring& Res, bool DoSkipBlanks) {
  Res.clear();
  if (DoSkipBlanks)
    SkipBlanks();
  while (p < pend && *p == c)
    ++p;
  if (DoSkipBlanks)
    SkipBlanks();
  const char16_t* b = p;
  while (p < pend && *p != c)
    ++p;
  const char16_t* e = p;
  if (DoSkipBlanks) {
    while (e > b && e[-1] <= u' ')
      --e;
    if (p < pend)
      ++p;
  }
  Res = hstring(b, static_cast<size_t>(e - b));
  return !Res.empty();
}

bool TStringParser::ReadtoChars(std::u16string_view sc, hstring& Res) {
  const char16_t* b = p;
  while (p < pend && sc.find(*p) == std::u16string_view::npos)
    ++p;
  Res = hstring(b, static_cast<size_t>(p - b));
  return !Res.empty();
}

bool TStringParser::ReadLn(hstring& Res) {
  Res.clear();
  if (p >= pend)
    return false;
  const char16_t* b = p;
  while (p < pend && *p != u'\r' && *p != u'\n')
    ++p;
  Res = hstring(b, static_cast<size_t>(p - b));
  if (p < pend && *p == u'\r')
    ++p;
  if (p < pend && *p == u'\n')
    ++p;
  return true;
}

bool TStringParser::ReadtoWordBreak(hstring& Res) {
  Res.clear();
  if (p >= pend)
    return false;
  const char16_t* b = p;
  if (*p == u'-' || *p == u'/' || IsIdeographic(*p))
    ++p;
  while (p < pend && is_space(*p))
    ++p;
  for (;;) {
    while (p < pend && !breaks_word(*p))
      ++p;
    // An ideograph followed by closing punctuation stays with this piece, so
    // that the punctuation never starts a line.
    if (p + 1 < pend && IsIdeographic(*p) && IsClosingPunctuation(p[1])) {
      p += 2;
      while (p < pend && IsClosingPunctuation(*p))
        ++p;
      continue;
    }
    break;
  }
  Res = hstring(b, static_cast<size_t>(p - b));
  return true;
}

void TStringParser::BadNumber() { throw EHtParserError(std::string_view("Incorrect number")); }

bool TStringParser::NumberPrefix(bool comma) {
  SkipBlanks();
  if (comma && p < pend && *p == u',') {
    ++p;
    SkipBlanks();
  }
  if (p < pend && (*p == u'+' || *p == u'-'))
    return *p++ == u'-';
  return false;
}

int TStringParser::ReadInt() {
  bool neg = NumberPrefix(true);
  if (!is_digit(*p)) {
    if (RaiseException)
      BadNumber();
    return 0;
  }
  // Stopping at 0xCCCCCCC keeps value * 10 + 9 inside 32 bits; longer numbers
  // leave their rest unread.
  int v = 0;
  while (is_digit(*p) && v < 0xCCCCCCC)
    v = v * 10 + (*p++ - u'0');
  return neg ? -v : v;
}

int TStringParser::ReadInt1() {
  bool neg = NumberPrefix(true);
  if (!is_digit(*p)) {
    if (RaiseException)
      BadNumber();
    return 0;
  }
  int v = *p++ - u'0';
  return neg ? -v : v;
}

int64_t TStringParser::ReadHex() {
  bool neg = NumberPrefix(true);
  if (hex_value(*p) < 0) {
    if (RaiseException)
      BadNumber();
    return 0;
  }
  uint64_t v = 0;
  for (int d; (d = hex_value(*p)) >= 0; ++p)
    v = v * 16 + static_cast<uint64_t>(d);
  return static_cast<int64_t>(neg ? 0 - v : v);
}

int64_t TStringParser::ReadBin() {
  bool neg = NumberPrefix(false);
  if (*p != u'0' && *p != u'1') {
    if (RaiseException)
      BadNumber();
    return 0;
  }
  uint64_t v = 0;
  for (; *p == u'0' || *p == u'1'; ++p)
    v = v * 2 + static_cast<uint64_t>(*p - u'0');
  return static_cast<int64_t>(neg ? 0 - v : v);
}

double TStringParser::ReadNum() { return ReadDecimal(false); }

double TStringParser::ReadNumEx() { return ReadDecimal(true); }

double TStringParser::ReadDecimal(bool exponent) {
  bool neg = NumberPrefix(true);
  bool digits = false;
  int64_t mant = 0;
  while (is_digit(*p) && mant < 0xCCCCCCD) {
    mant = mant * 10 + (*p++ - u'0');
    digits = true;
  }
  int scale = 0;
  if (*p == u'.' && is_digit(p[1])) {
    ++p;
    digits = true;
    for (; is_digit(*p); ++p)
      if (scale > -7) {
        mant = mant * 10 + (*p - u'0');
        --scale;
      }
  }
  if (!digits) {
    if (RaiseException)
      BadNumber();
    return 0;
  }
  if (exponent && (*p == u'e' || *p == u'E')) {
    const char16_t* q = p + 1;
    bool eneg = false;
    if (*q == u'+' || *q == u'-')
      eneg = *q++ == u'-';
    if (is_digit(*q)) {
      int e = 0;
      for (; is_digit(*q); ++q)
        if (e < 100000)
          e = e * 10 + (*q - u'0');
      scale += eneg ? -e : e;
      p = q;
    } else if (RaiseException) {
      BadNumber();
    }
  }
  double v = scale10(static_cast<double>(mant), scale);
  return neg ? -v : v;
}

bool TStringParser::ReadIntOrFloat(int64_t& IntValue, double& ExtValue) {
  IntValue = 0;
  ExtValue = 0;
  SkipBlanks();
  const char16_t* b = p;
  bool neg = false;
  if (*p == u'-' || (*p == u'+' && !RaiseException))
    neg = *p++ == u'-';
  if (RaiseException && (!is_digit(*p) || (*p == u'0' && is_digit(p[1]))))
    BadNumber();
  uint64_t mag = 0;
  bool overflow = false, is_float = false;
  for (; is_digit(*p); ++p) {
    unsigned d = *p - u'0';
    if (mag > (std::numeric_limits<uint64_t>::max() - d) / 10)
      overflow = true;
    else
      mag = mag * 10 + d;
  }
  if (*p == u'.') {
    if (is_digit(p[1])) {
      is_float = true;
      for (++p; is_digit(*p); ++p) {
      }
    } else if (RaiseException && p[1] != u'.') { // "1..2" is a range in scripts
      BadNumber();
    }
  }
  if (*p == u'e' || *p == u'E') {
    const char16_t* q = p + 1;
    if (*q == u'+' || *q == u'-')
      ++q;
    if (is_digit(*q)) {
      is_float = true;
      while (is_digit(*q))
        ++q;
      p = q;
    } else if (RaiseException) {
      BadNumber();
    }
  }
  if (!is_float && !overflow) {
    constexpr uint64_t kMax = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    if (mag <= kMax || (neg && mag == kMax + 1)) {
      IntValue = neg ? static_cast<int64_t>(0 - mag) : static_cast<int64_t>(mag);
      ExtValue = static_cast<double>(IntValue);
      return true;
    }
  }
  // All units here are ASCII: narrow them for the standard converter.
  std::string text;
  text.reserve(static_cast<size_t>(p - b));
  for (const char16_t* q = b; q < p; ++q)
    if (*q != u'+' || q != b)
      text += static_cast<char>(*q);
  double v = 0;
  auto r = std::from_chars(text.data(), text.data() + text.size(), v);
  if (r.ec == std::errc::result_out_of_range) {
    // Either overflow to infinity or underflow to zero; the exponent tells which.
    bool tiny = text.find_first_of("eE") != std::string::npos &&
                text.find('-', text.find_first_of("eE")) != std::string::npos;
    v = tiny ? 0.0 : std::numeric_limits<double>::infinity();
    if (neg)
      v = -v;
  }
  ExtValue = v;
  return false;
}

} // namespace ht
