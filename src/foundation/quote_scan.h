// The one scanner behind the small path languages (node paths, the path
// setter of XML trees, template names): it looks for a stop unit that stands
// outside quotes and outside square brackets.
//
// The places that use it have grown slightly different rules over time, and
// stored paths and templates rely on each of them, so the rules are
// parameters and each user's set is named here, side by side:
//
//   TQuoteScanner scan(kPathStepScan);
//   const char16_t* p = text;
//   while (*p && scan.Feed(*p) != TQuoteScanner::suStop)
//     ++p;                          // p: the `/` behind the step, or the NUL
#pragma once

#include <cstddef>
#include <string_view>

namespace ht::detail {

struct TQuoteScanRules {
  // True: a quote is closed only by the unit that opened it. False: `"` and
  // `'` both flip one quote state, so `"it's"` closes at the `'`.
  bool PairedQuotes;
  // False: a `]` with no `[` open is ignored. True: it takes the depth below
  // zero, where stop units still count, and a later `[` only brings it back.
  bool SignedDepth;
  // Units that end the scan outside quotes and brackets.
  std::u16string_view Stops;
};

// A step of a node path (THtNode::XPath): `/` ends it.
inline constexpr TQuoteScanRules kPathStepScan{false, false, u"/"};
// An operand of a node path condition: blanks (space, tab, CR, LF) and the
// operator units end it.
inline constexpr TQuoteScanRules kPathOperandScan{true, false, u" \t\r\n!<=>"};
// A step of THtXMLNode::XPathSet.
inline constexpr TQuoteScanRules kSetterStepScan{true, true, u"/"};
// An operand of an XPathSet condition: only the space counts as a blank.
inline constexpr TQuoteScanRules kSetterOperandScan{true, true, u" !<=>"};
// A step of a template name (`order.items[@p='1.5'].name`).
inline constexpr TQuoteScanRules kTemplateStepScan{true, false, u"."};
// The `(` that starts a template name's format (`price(0.00)`).
inline constexpr TQuoteScanRules kTemplateFormatScan{true, false, u"("};

class TQuoteScanner {
public:
  enum TUnit { suPlain, suOpen, suStop }; // suOpen: a `[` outside quotes

  explicit constexpr TQuoteScanner(const TQuoteScanRules& Rules) noexcept : FRules(Rules) {}

  // Takes the next unit and tells what it was.
  TUnit Feed(char16_t c) noexcept {
    if (FQuote) {
      if (FRules.PairedQuotes ? c == FQuote : c == u'"' || c == u'\'')
        FQuote = 0;
      return suPlain;
    }
    if (c == u'"' || c == u'\'') {
      FQuote = c;
      return suPlain;
    }
    if (c == u'[') {
      ++FDepth;
      return suOpen;
    }
    if (c == u']') {
      if (FDepth > 0 || FRules.SignedDepth)
        --FDepth;
      return suPlain;
    }
    return FDepth <= 0 && FRules.Stops.find(c) != std::u16string_view::npos ? suStop : suPlain;
  }

  // The position of the first stop in s at or after From, or s.size(). The
  // position of the first `[` outside quotes goes to FirstOpen (npos if none).
  size_t Find(std::u16string_view s, size_t From = 0, size_t* FirstOpen = nullptr) noexcept {
    if (FirstOpen)
      *FirstOpen = std::u16string_view::npos;
    for (size_t i = From; i < s.size(); ++i) {
      TUnit u = Feed(s[i]);
      if (u == suStop)
        return i;
      if (u == suOpen && FirstOpen && *FirstOpen == std::u16string_view::npos)
        *FirstOpen = i;
    }
    return s.size();
  }

private:
  TQuoteScanRules FRules;
  char16_t FQuote = 0;
  int FDepth = 0;
};

} // namespace ht::detail
