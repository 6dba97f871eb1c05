// The default line-breaking splitter: cuts a text into blanks, line ends,
// numbers, words, single ideographs and punctuation, each run carrying the
// places where a line may break.
#include "htcore/document/string_parser.h"
#include "htcore/document/unicode_classes.h"
#include "htcore/graphics/canvas.h"
#include "htcore/graphics/text_runs.h"

#include <string_view>

namespace ht {

THtTextStyle HtDefaultTextStyle;

void THtCanvas::SplitString(const hstring& s, THtTextRuns& Runs, THtTextRunClass RunClass) {
  HtSplitString(s, Runs, RunClass);
}

namespace {

// A set of units below U+0100.
class TCharSet256 {
public:
  constexpr TCharSet256(std::u16string_view ranges) {
    // Pairs of first and last unit.
    for (size_t i = 0; i + 1 < ranges.size(); i += 2)
      for (unsigned c = ranges[i]; c <= ranges[i + 1]; ++c)
        w[c >> 6] |= uint64_t{1} << (c & 63);
  }
  constexpr bool Has(char16_t c) const noexcept { return c < 256 && (w[c >> 6] >> (c & 63) & 1) != 0; }

private:
  uint64_t w[4] = {};
};

constexpr TCharSet256 kAsciiAlnum(u"09AZaz");
// Units that start a punctuation run.
constexpr TCharSet256 kPunctuation(u"!/:@[`{~\u00AD\u00AD");
// A single punctuation unit may start a line ("/") or end one (the rest).
constexpr TCharSet256 kBreakBeforePunct(u"\n\n\r\r  //");
constexpr TCharSet256 kBreakAfterPunct(u"\n\n\r\r  !!%%,-??\u00AD\u00AD");
// Units that carry on a stretch of other punctuation (digits are tested apart).
constexpr TCharSet256 kPunctStretch(std::u16string_view(u"\x00\x08\x0B\x0C\x0E\x1F!?[`{~", 12));
// Units that end a word: the apostrophe is not among them, so "don't" stays whole.
constexpr TCharSet256 kWordEnd(u"\t\t\n\n\r\r &(/:?\u00A0\u00A0");
// Units a left-to-right word takes on although their direction differs.
constexpr TCharSet256 kLTRWordGlue(u"''--09__``");
// Number separators, kept only between two letters or digits.
constexpr TCharSet256 kNumberSeparator(u",,..//");

// Must not start a line; the same list serves the closing punctuation test.
constexpr bool ProhibitedStart(char16_t c) noexcept { return IsClosingPunctuation(c); }
// Must not end a line.
constexpr bool ProhibitedEnd(char16_t c) noexcept {
  return c == u'(' || c == u'[' || c == u'{' || c == 0x2018 || c == 0x201C;
}

constexpr bool IsDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }
constexpr bool IsLowSurrogate(char16_t c) noexcept { return c >= 0xDC00 && c <= 0xDFFF; }

const THtTextRunFlags kBlank{trfSpace, trfBlank, trfBreakBefore, trfBreakAfter};

// Each reader starts with p on the run's first unit (before pend) and
// returns the unit behind the run; end is the end of the text, *end is NUL.

const char16_t* ReadStretch(const char16_t* p, const char16_t* end) {
  char16_t c = *p;
  while (p < end && *p == c)
    ++p;
  return p;
}

const char16_t* ReadNumber(const char16_t* p, const char16_t* end) {
  for (; p < end && *p != 0; ++p) {
    char16_t c = *p;
    if (kAsciiAlnum.Has(c))
      continue;
    if (kNumberSeparator.Has(c)) {
      if (!kAsciiAlnum.Has(p[-1]) || !kAsciiAlnum.Has(p[1]))
        break;
    } else if (CharBidi(c) != bdLTR) {
      break;
    }
  }
  return p;
}

const char16_t* ReadWord(const char16_t* p, const char16_t* end, THtTextRun& run) {
  THtTextRunBidi bidi = CharBidi(*p);
  run.Bidi = bidi;
  for (;;) {
    char16_t consumed = *p++;
    if (consumed == 0x00AD) {
      run.Flags.Include(trfBreakAfter);
      break;
    }
    if (p >= end)
      break;
    char16_t c = *p;
    // A pair is never cut, whatever the direction of the word.
    if (IsLowSurrogate(c) && IsHighSurrogate(consumed))
      continue;
    if (kWordEnd.Has(c) || IsIdeographic(c))
      break;
    if (CharBidi(c) != bidi) {
      bool glue = IsHighSurrogate(c) || (bidi == bdLTR && kLTRWordGlue.Has(c));
      if (!glue)
        break;
    }
  }
  return p;
}

const char16_t* ReadPunctuation(const char16_t* p, const char16_t* end, const char16_t* begin,
                                THtTextRun& run) {
  char16_t c = *p;
  run.Bidi = bdNeutral;
  bool before = kBreakBeforePunct.Has(c);
  if (!before && !kBreakAfterPunct.Has(c)) {
    // "(((" or "$#" stay one run; letters and digits end it.
    ++p;
    while (p < end && *p != 0 && kPunctStretch.Has(*p) && !IsDigit(*p))
      ++p;
    return p;
  }
  run.Flags = before ? THtTextRunFlags{trfBreakBefore} : THtTextRunFlags{trfBreakAfter};
  if ((c == u'+' || c == u',' || c == u'-' || c == u'.') && IsDigit(p[1])) {
    // The sign or separator of a number: it breaks only where a number may start.
    run.Bidi = bdWeakLRT;
    run.Flags = p == begin || IsDigit(p[-1]) ? THtTextRunFlags{} : THtTextRunFlags{trfBreakBefore};
  }
  return p + 1;
}

} // namespace

void HtSplitString(const hstring& s, THtTextRuns& Runs, THtTextRunClass RunClass) {
  TStringParser sp(s);
  const char16_t* begin = sp.Start();
  const char16_t* end = sp.pend;
  while (!sp.Empty()) {
    const char16_t* p = sp.p;
    THtTextRun* run = RunClass.Create();
    Runs.Add(run);
    run->Start = sp.Pos();
    char16_t c = *p;
    const char16_t* next;
    switch (c) {
    case u' ':
      next = ReadStretch(p, end);
      run->Flags = kBlank;
      run->Bidi = bdNeutral;
      break;
    case u'\t':
      next = ReadStretch(p, end);
      run->Flags = kBlank | THtTextRunFlags{trfTab};
      run->Bidi = bdNeutral;
      break;
    case u'\r':
    case u'\n':
      // CR LF and LF CR are one line end; CR CR are two.
      next = p + ((p[1] == u'\r' || p[1] == u'\n') && p[1] != c ? 2 : 1);
      run->Flags = kBlank | THtTextRunFlags{trfLineBreak};
      run->Bidi = bdNeutral;
      break;
    case 0x00A0:
      next = ReadStretch(p, end);
      run->Flags = {trfSpace};
      run->Bidi = bdNeutral;
      break;
    default:
      if (IsDigit(c)) {
        next = ReadNumber(p, end);
        run->Bidi = bdWeakLRT;
      } else if (kPunctuation.Has(c)) {
        next = ReadPunctuation(p, end, begin, *run);
      } else if (IsIdeographic(c)) {
        next = p + 1;
        run->Bidi = bdLTR;
        if (!ProhibitedStart(c))
          run->Flags.Include(trfBreakBefore);
        if (!ProhibitedEnd(c) && !ProhibitedStart(p[1]))
          run->Flags.Include(trfBreakAfter);
      } else {
        next = ReadWord(p, end, *run);
      }
    }
    sp.Skip(static_cast<int>(next - p));
    run->Count = static_cast<int>(next - p);
  }
}

} // namespace ht
