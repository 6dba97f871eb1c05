#include "foundation/quote_scan.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht::detail;

namespace {

constexpr size_t npos = std::u16string_view::npos;

std::string u8(std::u16string_view s) {
  std::string out;
  for (char16_t c : s)
    out += c < 0x80 ? static_cast<char>(c) : '?';
  return out;
}

} // namespace

// Each user's rules on the same inputs: where the scan stops (the size when
// it does not) and where the first bracket opens.
TEST(QuoteScan, EachUserKeepsItsRules) {
  const TQuoteScanRules* rules[] = {&kPathStepScan,      &kPathOperandScan,  &kSetterStepScan,
                                    &kSetterOperandScan, &kTemplateStepScan, &kTemplateFormatScan};
  const char* names[] = {"path step",      "path operand",  "setter step",
                         "setter operand", "template step", "template format"};
  const struct {
    const char16_t* text;
    size_t stop[6]; // in the order of rules above
    size_t open;
  } cases[] = {
      // One quote state for both units in a path step: the apostrophe closes
      // the double quote, which the next `"` opens again for good.
      {u"\"it's\" /.(=", {11, 6, 7, 6, 8, 9}, npos},
      {u"'x\"/", {3, 4, 4, 4, 4, 4}, npos},
      // A stray `]` is ignored, except by the setter, whose depth goes below
      // zero and comes back to zero at the `[`.
      {u"][/ .(=", {7, 7, 2, 3, 7, 7}, 1},
      {u"]]x[/ ", {6, 6, 4, 5, 6, 6}, 3},
      // Only node path operands end at a tab.
      {u"a\tb/c.d(e", {3, 1, 3, 9, 5, 7}, npos},
      // Brackets hide stops, quotes hide brackets.
      {u"[x/y.z(w ]/v.u(t!", {10, 16, 10, 16, 12, 14}, 0},
      {u"'[' /.(", {4, 3, 4, 3, 5, 6}, npos},
      {u"a[b[c]]/d.e(", {7, 12, 7, 12, 9, 11}, 1},
      {u"'a/b.c(d e", {10, 10, 10, 10, 10, 10}, npos},
      {u"", {0, 0, 0, 0, 0, 0}, npos},
  };
  for (const auto& c : cases) {
    std::u16string_view s(c.text);
    for (int r = 0; r < 6; ++r) {
      TQuoteScanner scan(*rules[r]);
      size_t open = 0;
      EXPECT_EQ(scan.Find(s, 0, &open), c.stop[r]) << names[r] << ": " << u8(s);
      if (c.open == npos || c.stop[r] > c.open) {
        EXPECT_EQ(open, c.open) << names[r] << ": " << u8(s);
      }
    }
  }
}

TEST(QuoteScan, FeedTellsOpeningBrackets) {
  TQuoteScanner scan(kPathStepScan);
  EXPECT_EQ(scan.Feed(u'a'), TQuoteScanner::suPlain);
  EXPECT_EQ(scan.Feed(u'['), TQuoteScanner::suOpen);
  EXPECT_EQ(scan.Feed(u'/'), TQuoteScanner::suPlain);
  EXPECT_EQ(scan.Feed(u']'), TQuoteScanner::suPlain);
  EXPECT_EQ(scan.Feed(u'/'), TQuoteScanner::suStop);
  EXPECT_EQ(scan.Feed(u'\''), TQuoteScanner::suPlain);
  EXPECT_EQ(scan.Feed(u'['), TQuoteScanner::suPlain); // quoted
}

// A scanner that stopped goes on from behind the stop with its state: the
// template steps are cut that way.
TEST(QuoteScan, FindGoesOnFromAPosition) {
  std::u16string_view s = u"a.b['.'].c";
  TQuoteScanner scan(kTemplateStepScan);
  EXPECT_EQ(scan.Find(s), 1u);
  EXPECT_EQ(scan.Find(s, 2), 8u);
  EXPECT_EQ(scan.Find(s, 9), s.size());
}
