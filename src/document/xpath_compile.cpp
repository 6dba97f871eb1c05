// Path text to TXPathNode steps. Nothing here fails: text that does not fit
// the grammar ends up as a tag name or an operand that matches nothing.
#include "foundation/quote_scan.h"
#include "htcore/document/xpath.h"
#include "htcore/foundation/text_utils.h"
#include "xpath_internal.h"

#include <cstdint>

namespace ht {

namespace {

bool is_blank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

void skip_blanks(const char16_t*& p) {
  while (is_blank(*p))
    ++p;
}

// Case-insensitive keyword at p, including its trailing blank (`and `).
bool take_word(const char16_t*& p, std::u16string_view word) {
  for (size_t i = 0; i < word.size(); ++i)
    if (CharLower(p[i]) != word[i]) // stops at NUL too: word holds none
      return false;
  p += word.size();
  return true;
}

// An operand ends at a blank or an operator unit outside quotes and brackets.
// Unlike step text, a quote here is closed only by the same quote unit.
hstring read_operand(const char16_t*& p, bool& str, bool& attr) {
  const char16_t* start = p;
  detail::TQuoteScanner scan(detail::kPathOperandScan);
  while (*p && scan.Feed(*p) != detail::TQuoteScanner::suStop)
    ++p;
  hstring s = Trim(hstring(start, static_cast<size_t>(p - start)));
  if (!s.empty() && (s[0] == u'"' || s[0] == u'\'')) {
    str = true;
    // First and last unit go, whatever the last one is.
    return s.size() > 2 ? s.substr(1, s.size() - 2) : hstring();
  }
  if (!s.empty() && s[0] == u'@') {
    attr = true;
    return s.substr(1);
  }
  return s;
}

} // namespace

bool detail::XPathToInt(std::u16string_view s, int& value) noexcept {
  size_t i = 0, n = s.size();
  while (i < n && is_blank(s[i]))
    ++i;
  while (n > i && is_blank(s[n - 1]))
    --n;
  bool neg = false;
  if (i < n && (s[i] == u'+' || s[i] == u'-'))
    neg = s[i++] == u'-';
  if (i == n)
    return false;
  int64_t v = 0;
  for (; i < n; ++i) {
    if (s[i] < u'0' || s[i] > u'9')
      return false;
    v = v * 10 + (s[i] - u'0');
    if (v > int64_t(INT32_MAX) + 1)
      return false;
  }
  if (neg)
    v = -v;
  if (v > INT32_MAX)
    return false;
  value = static_cast<int>(v);
  return true;
}

TXPathProcessor::TXPathProcessor(const hstring& APath) {
  const char16_t* p = APath.c_str();
  if (*p == u'/') {
    Root = true;
    ++p;
  }
  if (p[0] == u'.' && p[1] == u'/')
    p += 2;
  while (*p) {
    Nodes.emplace_back();
    ExtractPathPart(p, Nodes.back());
  }
  // Linked only now: the vector has stopped moving.
  for (size_t i = 0; i < Nodes.size(); ++i) {
    Nodes[i].Processor = this;
    Nodes[i].Next = i + 1 < Nodes.size() ? &Nodes[i + 1] : nullptr;
  }
}

void TXPathProcessor::ExtractPathPart(const char16_t*& p, TXPathNode& Step) {
  Step.Processor = this;
  if (*p == u'/') {
    Step.All = true;
    ++p;
  }
  // One quote state for both quote units, and brackets counted outside it.
  const char16_t* start = p;
  const char16_t* bracket = nullptr;
  detail::TQuoteScanner scan(detail::kPathStepScan);
  for (; *p; ++p) {
    detail::TQuoteScanner::TUnit u = scan.Feed(*p);
    if (u == detail::TQuoteScanner::suStop)
      break;
    if (u == detail::TQuoteScanner::suOpen && !bracket)
      bracket = p;
  }
  hstring name;
  if (bracket) {
    name = hstring(start, static_cast<size_t>(bracket - start));
    std::u16string_view cond(bracket + 1, static_cast<size_t>(p - bracket - 1));
    // `a[x][y]` arrives as the one text `x][y`.
    if (!cond.empty() && cond.back() == u']')
      cond.remove_suffix(1);
    ParseConditions(hstring(cond), Step);
  } else {
    name = hstring(start, static_cast<size_t>(p - start));
  }

  if (name == u"*") {
    Step.Kind = xkAsterisk;
  } else if (name == u"..") {
    Step.Kind = xkParent;
  } else if (SameText(name, u"current")) {
    Step.Kind = xkCurrent;
  } else if (name == u"text()") {
    Step.Kind = xkTag; // the empty tag: text nodes
  } else if (!name.empty() && name[0] == u'@') {
    Step.Kind = xkAttr;
    Step.Tag = name.substr(1);
  } else {
    Step.Kind = xkTag;
    Step.Tag = name;
  }
  if (*p == u'/')
    ++p;
}

void TXPathProcessor::ParseConditions(const hstring& s, TXPathNode& Step) {
  if (s.empty())
    return;
  int index;
  if (s[0] >= u'0' && s[0] <= u'9' && detail::XPathToInt(s, index)) {
    TXCondition& c = Step.Conditions.emplace_back();
    c.ctype = ctIndex;
    c.index = index;
    return;
  }
  if (SameText(s, u"last()")) {
    TXCondition& c = Step.Conditions.emplace_back();
    c.ctype = ctIndex;
    c.index = -1;
    return;
  }

  const char16_t* p = s.c_str();
  while (*p) {
    const char16_t* before = p;
    TXCondition c;
    skip_blanks(p);
    if (!*p)
      break;
    if (take_word(p, u"and ")) {
      skip_blanks(p);
      if (take_word(p, u"not "))
        c.Op = boNot;
    } else if (take_word(p, u"or ")) {
      c.Op = boOr;
    } else if (take_word(p, u"not ")) {
      c.Op = boNot;
    }
    skip_blanks(p);
    c.left = read_operand(p, c.leftstr, c.leftattr);
    skip_blanks(p);

    bool has_op = true;
    switch (*p) {
    case u'=':
      c.ctype = ctEQ;
      ++p;
      break;
    case u'!':
      c.ctype = ctNotEQ;
      p += p[1] ? 2 : 1; // the unit after `!` is taken whatever it is
      break;
    case u'<':
    case u'>':
      // A lone `>` is less-than too, and ctAbove never comes out: fixed
      // behaviour that stored queries are written against.
      c.ctype = p[1] == u'=' ? (*p == u'<' ? ctLessEQ : ctAboveEQ) : ctLess;
      p += p[1] == u'=' ? 2 : 1;
      break;
    default:
      has_op = false;
    }
    if (has_op) {
      skip_blanks(p);
      c.right = read_operand(p, c.rightstr, c.rightattr);
    }
    Step.Conditions.push_back(std::move(c));
    if (p == before) // cannot happen with the rules above; keeps the loop finite regardless
      ++p;
  }
}

} // namespace ht
