#include "graphics/recording_canvas.h"
#include "htcore/graphics/text_runs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

using namespace ht;

namespace {

std::string Escape(std::u16string_view s) {
  std::string out;
  for (char16_t c : s) {
    if (c == u'\r')
      out += "\\r";
    else if (c == u'\n')
      out += "\\n";
    else if (c == u'\t')
      out += "\\t";
    else if (c >= 0x20 && c < 0x7F)
      out += static_cast<char>(c);
    else {
      char buf[16];
      std::snprintf(buf, sizeof buf, "\\u%04X", static_cast<unsigned>(c));
      out += buf;
    }
  }
  return out;
}

// One run as 'text' FLAGS BIDI: S is the blank set (space, blank, break
// before and after), other flags by short names, "-" for none; the
// direction is L, N, W (weak left-to-right) or R.
std::string Describe(const hstring& s, const THtTextRuns& runs) {
  static const char* const names[] = {"sp",  "blank", "rtl", "bb",  "ba",  "lb",  "prb", "plb", "hid", "proc",
                                      "blk", "oof",   "is",  "ie",  "col", "txt", "spl", "hy",  "tab"};
  const THtTextRunFlags blank{trfSpace, trfBlank, trfBreakBefore, trfBreakAfter};
  std::string out;
  std::u16string_view text(s.c_str() ? s.c_str() : u"", s.size());
  for (THtTextRun* r : runs) {
    if (!out.empty())
      out += " | ";
    out += "'" + Escape(text.substr(static_cast<size_t>(r->Start - 1), static_cast<size_t>(r->Count))) + "' ";
    uint32_t bits = r->Flags.Bits;
    std::string flags;
    if ((bits & blank.Bits) == blank.Bits) {
      flags = "S";
      bits &= ~blank.Bits;
    }
    for (int i = 0; i < 19; ++i)
      if (bits >> i & 1)
        flags += (flags.empty() ? "" : "+") + std::string(names[i]);
    out += flags.empty() ? "-" : flags;
    out += " ";
    out += "LNWR"[r->Bidi];
  }
  return out;
}

std::string Split(std::u16string_view s) {
  hstring h(s.data(), s.size());
  THtTextRuns runs;
  HtSplitString(h, runs);
  return Describe(h, runs);
}

struct TSplitCase {
  std::u16string_view input;
  const char* expected;
};

void CheckTable(const TSplitCase* begin, const TSplitCase* end) {
  for (const TSplitCase* t = begin; t != end; ++t)
    EXPECT_EQ(Split(t->input), t->expected) << "input: " << Escape(t->input);
}

} // namespace

TEST(TextSplit, BlanksTabsAndLineEnds) {
  static const TSplitCase cases[] = {
      {u"", ""},
      {u"a b", "'a' - L | ' ' S N | 'b' - L"},
      {u"a   b", "'a' - L | '   ' S N | 'b' - L"},
      {u"  \t\t x", "'  ' S N | '\\t\\t' S+tab N | ' ' S N | 'x' - L"},
      {u"a\r\nb", "'a' - L | '\\r\\n' S+lb N | 'b' - L"},
      {u"\n\r", "'\\n\\r' S+lb N"},
      {u"\r\r", "'\\r' S+lb N | '\\r' S+lb N"},
      {u"\n\n", "'\\n' S+lb N | '\\n' S+lb N"},
      {u"\r\n\r\n", "'\\r\\n' S+lb N | '\\r\\n' S+lb N"},
      {u"\r\n\n", "'\\r\\n' S+lb N | '\\n' S+lb N"},
      // No-break spaces group and never allow a break.
      {u"a\u00A0\u00A0b", "'a' - L | '\\u00A0\\u00A0' sp N | 'b' - L"},
      {u"\u00A0 ", "'\\u00A0' sp N | ' ' S N"},
  };
  CheckTable(std::begin(cases), std::end(cases));
}

TEST(TextSplit, NumbersKeepTheirSeparatorsOnlyBetweenDigits) {
  static const TSplitCase cases[] = {
      {u"1,000.50", "'1,000.50' - W"},
      {u"1, 2", "'1' - W | ',' ba N | ' ' S N | '2' - W"},
      {u"3/4", "'3/4' - W"},
      {u"3/ 4", "'3' - W | '/' bb N | ' ' S N | '4' - W"},
      {u"1.", "'1' - W | '.' - N"},
      {u"12abc x", "'12abc' - W | ' ' S N | 'x' - L"},
      {u"1,a", "'1,a' - W"},
      // Letters of other left-to-right scripts go on; a right-to-left one stops.
      {u"5\u00E9", "'5\\u00E9' - W"},
      {u"12\u05D0", "'12' - W | '\\u05D0' - R"},
      {u"7%", "'7' - W | '%' ba N"},
      {u"2x3-4", "'2x3' - W | '-' - W | '4' - W"},
      {u"1-2", "'1' - W | '-' - W | '2' - W"},
      {u"-5", "'-' - W | '5' - W"},
      {u"x -5", "'x' - L | ' ' S N | '-' bb W | '5' - W"},
      {u"a,5", "'a' - L | ',' bb W | '5' - W"},
      // "+" and "." are no break punctuation, so they join the stretch rule.
      {u"+5", "'+' - N | '5' - W"},
      {u".5", "'.' - N | '5' - W"},
  };
  CheckTable(std::begin(cases), std::end(cases));
}

TEST(TextSplit, WordsEndAtDelimitersAndDirectionChanges) {
  static const TSplitCase cases[] = {
      {u"well-known", "'well' - L | '-' ba N | 'known' - L"},
      {u"don't", "'don't' - L"},
      {u"snake_case`x", "'snake_case`x' - L"},
      {u"abc123", "'abc123' - L"},
      {u"a@b", "'a' - L | '@' - N | 'b' - L"},
      {u"a.b", "'a' - L | '.' - N | 'b' - L"},
      {u"a\u2014b", "'a' - L | '\\u2014' - N | 'b' - L"},
      {u"\u05D0\u05D1 \u05D2", "'\\u05D0\\u05D1' - R | ' ' S N | '\\u05D2' - R"},
      {u"\u05D0x", "'\\u05D0' - R | 'x' - L"},
      {u"\u05D01", "'\\u05D0' - R | '1' - W"},
      {u"\u05D0'", "'\\u05D0' - R | ''' - N"},
      {u"x\u05D0", "'x' - L | '\\u05D0' - R"},
      {u"\u00A9\u00AE", "'\\u00A9\\u00AE' - L"},
      {u"\u20AC\u2122a", "'\\u20AC\\u2122' - N | 'a' - L"},
  };
  CheckTable(std::begin(cases), std::end(cases));
}

TEST(TextSplit, SurrogatePairsAreNeverCut) {
  static const TSplitCase cases[] = {
      {u"a\U0001F600b", "'a\\uD83D\\uDE00b' - L"},
      {u"\U0001F600", "'\\uD83D\\uDE00' - N"},
      {u"\U0001F600a", "'\\uD83D\\uDE00' - N | 'a' - L"},
      {u"\u05D0\U0001F600\u05D1", "'\\u05D0\\uD83D\\uDE00\\u05D1' - R"},
      {u"\u05D0\U0001F600 x", "'\\u05D0\\uD83D\\uDE00' - R | ' ' S N | 'x' - L"},
      {u"1\U0001F600", "'1' - W | '\\uD83D\\uDE00' - N"},
  };
  CheckTable(std::begin(cases), std::end(cases));
}

TEST(TextSplit, IdeographsBreakAroundEachOneUnlessProhibited) {
  static const TSplitCase cases[] = {
      {u"\u6F22\u5B57\u3002", "'\\u6F22' bb+ba L | '\\u5B57' bb L | '\\u3002' ba L"},
      {u"\u6F22\u5B57\u3001\u6F22", "'\\u6F22' bb+ba L | '\\u5B57' bb L | '\\u3001' ba L | '\\u6F22' bb+ba L"},
      {u"\u6F22!", "'\\u6F22' bb L | '!' ba N"},
      {u"\u6F22\u0401", "'\\u6F22' bb L | '\\u0401' - L"},
      {u"ab\u6F22c", "'ab' - L | '\\u6F22' bb+ba L | 'c' - L"},
      {u"\u30AB\u30CA", "'\\u30AB' bb+ba L | '\\u30CA' bb+ba L"},
      {u"\uF900\u3005", "'\\uF900' bb L | '\\u3005' ba L"},
      // The opening bracket before an ideograph is a plain stretch run.
      {u"(\u6F22)", "'(' - N | '\\u6F22' bb L | ')' - N"},
      {u"\u6F22\uFF0C", "'\\u6F22' bb L | '\\uFF0C' - N"},
  };
  CheckTable(std::begin(cases), std::end(cases));
}

TEST(TextSplit, PunctuationStretchesAndBreakPunctuation) {
  static const TSplitCase cases[] = {
      {u"(((", "'(((' - N"},
      {u"$#a", "'$#' - N | 'a' - L"},
      {u"((5", "'((' - N | '5' - W"},
      {u"[x]", "'[' - N | 'x' - L | ']' - N"},
      {u"<=>~", "'<=>~' - N"},
      {u"/x", "'/' bb N | 'x' - L"},
      {u"a!!", "'a' - L | '!' ba N | '!' ba N"},
      {u"?!", "'?' ba N | '!' ba N"},
      {u"#\t", "'#' - N | '\\t' S+tab N"},
      {u"#\x01", "'#\\u0001' - N"},
      {u"@@", "'@' - N | '@' - N"},
  };
  CheckTable(std::begin(cases), std::end(cases));
}

TEST(TextSplit, SoftHyphenEndsTheWordItIsIn) {
  static const TSplitCase cases[] = {
      {u"co\u00ADop", "'co\\u00AD' ba L | 'op' - L"},
      {u"a\u00AD\u00ADb", "'a\\u00AD' ba L | '\\u00AD' ba N | 'b' - L"},
      {u" \u00ADx", "' ' S N | '\\u00AD' ba N | 'x' - L"},
      {u"\u05D0\u00AD", "'\\u05D0' - R | '\\u00AD' ba N"},
  };
  CheckTable(std::begin(cases), std::end(cases));
}

TEST(TextSplit, AppendsRunsOfTheCallersClassAndKeepsExistingOnes) {
  struct TMyRun : THtTextRun {
    int Tag = 7;
  };
  testing_canvas::TRecordingCanvas canvas;
  THtTextRuns runs;
  runs.Add(new THtTextRun);
  runs[0]->Line = 3;
  canvas.SplitString(u"ab cd"_hs, runs, HtTextRunClass<TMyRun>());
  ASSERT_EQ(runs.Count(), 4);
  EXPECT_EQ(runs[0]->Line, 3);
  int starts[] = {1, 3, 4}, counts[] = {2, 1, 2};
  for (int i = 0; i < 3; ++i) {
    auto* r = dynamic_cast<TMyRun*>(runs.GetRun(i + 1));
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->Start, starts[i]);
    EXPECT_EQ(r->Count, counts[i]);
    EXPECT_EQ(r->Line, 0);
    EXPECT_EQ(r->LogicalWidth, 0);
  }
}

// Whatever the text, the runs cover every unit once, in order, none empty.
TEST(TextSplit, RunsTileAnyText) {
  static const char16_t alphabet[] = {u'a',    u'Z',    u'0',    u'9',    u' ',    u'\t',   u'\r',   u'\n',
                                      u',',    u'.',    u'/',    u'-',    u'+',    u'\'',   u'(',    u'!',
                                      u'@',    u'_',    u'%',    0x00A0,  0x00AD,  0x05D0,  0x0627,  0x6F22,
                                      0x3002,  0x3001,  0x30AB,  0xD83D,  0xDE00,  0xDC00,  0x0401,  0x2018,
                                      0xFF0C,  0x00E9,  0x0000,  0x0001,  0xFFFF,  0x2014};
  std::mt19937 rng(12345);
  std::uniform_int_distribution<size_t> pick(0, std::size(alphabet) - 1), len(0, 40);
  for (int round = 0; round < 3000; ++round) {
    std::u16string s(len(rng), u'a');
    for (char16_t& c : s)
      c = alphabet[pick(rng)];
    hstring h(s.data(), s.size());
    THtTextRuns runs;
    HtSplitString(h, runs);
    int next = 1;
    for (THtTextRun* r : runs) {
      ASSERT_EQ(r->Start, next) << Escape(s);
      ASSERT_GT(r->Count, 0) << Escape(s);
      next += r->Count;
      // A pair is never cut.
      char16_t last = s[static_cast<size_t>(next - 2)];
      if (last >= 0xD800 && last <= 0xDBFF && static_cast<size_t>(next - 1) < s.size() &&
          s[static_cast<size_t>(next - 1)] >= 0xDC00 && s[static_cast<size_t>(next - 1)] <= 0xDFFF)
        ADD_FAILURE() << "pair cut in " << Escape(s);
    }
    ASSERT_EQ(next, static_cast<int>(s.size()) + 1) << Escape(s);
  }
}

TEST(TextStyle, ResetZeroFillsWithFullOpacityAndAssignSharesTheFeatures) {
  THtTextStyle st;
  st.Color = 0xFF112233;
  st.WordSpacing = 2;
  st.Overflow = toEllipsis;
  st.WritingMode = wmVerticalRL;
  st.FontFeatures = u"\"liga\" 0"_hs;
  THtTextStyle copy;
  copy.Assign(st);
  EXPECT_EQ(copy.Color, 0xFF112233u);
  EXPECT_EQ(copy.WritingMode, wmVerticalRL);
  EXPECT_EQ(copy.FontFeatures.c_str(), st.FontFeatures.c_str()); // shared, not copied
  st.Reset();
  EXPECT_EQ(st.Color, 0u);
  EXPECT_EQ(st.WordSpacing, 0);
  EXPECT_EQ(st.Opacity, 1);
  EXPECT_EQ(st.Overflow, toClip);
  EXPECT_EQ(st.WritingMode, wmHorizontalTB);
  EXPECT_TRUE(st.FontFeatures.empty());
  copy.Default();
  EXPECT_EQ(copy.Opacity, 1);
  EXPECT_EQ(copy.Color, 0u);
  EXPECT_EQ(HtDefaultTextStyle.Opacity, 1);
}
