#include "htcore/foundation/object.h"
#include "htcore/foundation/string_list.h"
#include "htcore/foundation/text_utils.h"

#include <gtest/gtest.h>
#include <vector>

using namespace ht;

HT_ENUM(TTestDisplay, tdBlock, tdInline, tdInlineBlock, tdNone, tdTableRowGroup);

namespace {

struct TCounted : TObject {
  static inline int alive = 0;
  TCounted() { ++alive; }
  ~TCounted() override { --alive; }
};

} // namespace

TEST(TextUtils, LowerOnlyTouchesAsciiCapitals) {
  EXPECT_EQ(CharLower(u'A'), u'a');
  EXPECT_EQ(CharLower(u'Z'), u'z');
  EXPECT_EQ(CharLower(u'@'), u'@');
  EXPECT_EQ(CharLower(u'['), u'[');
  EXPECT_EQ(AnsiCharLower(0xC4), 0xC4); // no Unicode case mapping
  EXPECT_EQ(LowerCase(u"AbC\u00C4"), u"abc\u00C4");
  EXPECT_EQ(UpperCase(u"aBc\u00E4"), u"ABC\u00E4");
  EXPECT_TRUE(SameText(u"Content-Type", u"content-TYPE"));
  EXPECT_FALSE(SameText(u"\u00C4", u"\u00E4"));
  EXPECT_FALSE(SameText(u"ab", u"abc"));
}

TEST(TextUtils, hLowerCopiesOnlyWhenNeeded) {
  hstring a = u"div";
  hstring shared = a;
  hLower(a);
  EXPECT_EQ(a.Pointer(), shared.Pointer()); // nothing to change: still shared
  hstring b = u"DiV";
  hstring keep = b;
  hLower(b);
  EXPECT_EQ(b, u"div");
  EXPECT_EQ(keep, u"DiV");
  hstring c = u"abc";
  hstring c2 = c;
  vLower(c); // always unique
  EXPECT_NE(c.Pointer(), c2.Pointer());
  EXPECT_EQ(c, u"abc");
  hstring e;
  vLower(e);
  hLower(e);
  EXPECT_TRUE(e.empty());
}

TEST(TextUtils, FindCharAndPos) {
  struct {
    char16_t c;
    const char16_t* s;
    int start;
    int expected;
  } cases[] = {
      {u'b', u"abcb", 1, 2}, {u'b', u"abcb", 3, 4}, {u'b', u"abcb", 5, 0}, {u'b', u"abcb", 4, 4},
      {u'x', u"abcb", 1, 0}, {u'a', u"", 1, 0},     {u'a', u"abc", 0, 1},  {u'a', u"abc", 100, 0},
  };
  for (auto& c : cases)
    EXPECT_EQ(FindChar(c.c, c.s, c.start), c.expected) << c.start;
  RawByteString raw("a=b");
  EXPECT_EQ(FindChar('=', raw), 2);
  EXPECT_EQ(FindChar('=', raw, 3), 0);
  EXPECT_EQ(Pos(u"cd", u"abcdcd"), 3);
  EXPECT_EQ(Pos(u"cd", u"abcdcd", 4), 5);
  EXPECT_EQ(Pos(u"", u"abc"), 0);
  EXPECT_EQ(Pos(u"x", u"abc"), 0);
  EXPECT_EQ(Pos("b", "abc"), 2);
}

TEST(TextUtils, QStrTok) {
  struct {
    const char16_t* s;
    const char16_t* delims;
    bool flag;
    const char16_t* token;
    const char16_t* rest;
  } cases[] = {
      {u",a,b", u",", false, u",a", u",b"}, // leading delimiters stay with the token
      {u",a,b", u",", true, u"a", u"b"},
      {u"a;;b", u";", true, u"a", u";b"}, // only the one delimiter behind the token goes
      {u"abc", u",", true, u"abc", u""},
      {u"abc", u",", false, u"abc", u""},
      {u",,,", u",", false, u",,,", u""}, // nothing but delimiters
      {u",,,", u",", true, u"", u""},
      {u"", u",", true, u"", u""},
      {u"a b\tc", u" \t", true, u"a", u"b\tc"},
  };
  for (auto& c : cases) {
    hstring s = c.s;
    hstring t = Q_StrTok(s, c.delims, c.flag);
    EXPECT_EQ(t, c.token) << hstring(c.s).toUtf8() << " flag " << c.flag;
    EXPECT_EQ(s, c.rest) << hstring(c.s).toUtf8() << " flag " << c.flag;
  }
  hstring s = u"abc";
  EXPECT_TRUE(Q_StrTok(s, u"", true).empty()); // no delimiters: nothing cut
  EXPECT_EQ(s, u"abc");
}

TEST(TextUtils, StartsEndsBlank) {
  EXPECT_FALSE(AnsiStartsWith(u"abc", u"")); // the asymmetry is intended
  EXPECT_TRUE(AnsiEndsWith(u"abc", u""));
  EXPECT_TRUE(AnsiStartsWith(u"abc", u"ab"));
  EXPECT_FALSE(AnsiStartsWith(u"abc", u"AB")); // ordinal
  EXPECT_FALSE(AnsiStartsWith(u"ab", u"abc"));
  EXPECT_TRUE(AnsiEndsWith(u"abc", u"bc"));
  EXPECT_FALSE(AnsiEndsWith(u"bc", u"abc"));
  EXPECT_FALSE(AnsiStartsWith("abc", ""));
  EXPECT_TRUE(AnsiEndsWith("abc", ""));
  EXPECT_TRUE(AnsiStartsWith(RawByteString("abc"), "a"));

  struct {
    std::u16string s;
    bool blank, nbsp;
  } cases[] = {
      {u"", true, true},      {u" \t\r\n", true, true}, {u"\u00A0 ", false, true},
      {u"\x01", true, false}, {u" x ", false, false},   {std::u16string(1, u'\0'), true, false},
  };
  for (auto& c : cases) {
    EXPECT_EQ(BlankString(c.s), c.blank);
    EXPECT_EQ(BlankOrNBSP(c.s), c.nbsp);
  }
  EXPECT_TRUE(BlankString(std::string_view(" \x1F")));
  EXPECT_FALSE(BlankString(std::string_view("\xA0")));
  EXPECT_TRUE(StrIn(u"b", {u"a", u"b"}));
  EXPECT_FALSE(StrIn(u"B", {u"a", u"b"}));
  std::vector<hstring> v{u"x", u"y"};
  EXPECT_TRUE(StrIn(u"y", v));
}

TEST(TextUtils, ReplaceCharAndStr) {
  hstring a = u"a.b.c";
  hstring shared = a;
  ReplaceChar(a, u'x', u'y');
  EXPECT_EQ(a.Pointer(), shared.Pointer()); // no hit: no copy
  ReplaceChar(a, u'.', u'/');
  EXPECT_EQ(a, u"a/b/c");
  EXPECT_EQ(shared, u"a.b.c");

  struct {
    const char16_t* s;
    const char16_t* search;
    const char16_t* repl;
    const char16_t* expected;
  } cases[] = {
      {u"aaa", u"a", u"", u""},
      {u"abcabc", u"bc", u"X", u"aXaX"},
      {u"aaaa", u"aa", u"b", u"bb"}, // left to right, no overlap
      {u"aaa", u"aa", u"b", u"ba"},
      {u"a.b", u".", u"::", u"a::b"},
      {u"x", u"x", u"longer text", u"longer text"},
      {u"a-b-c", u"-", u"+", u"a+b+c"},
      {u"abc", u"", u"x", u"abc"},
      {u"ab", u"abc", u"x", u"ab"},
      {u"abc", u"abc", u"", u""},
  };
  for (auto& c : cases)
    EXPECT_EQ(ReplaceStr(c.s, c.search, c.repl), c.expected) << hstring(c.s).toUtf8();
  hstring src = u"nothing here";
  EXPECT_EQ(ReplaceStr(src, u"zz", u"y").Pointer(), src.Pointer()); // shared when unchanged

  // Many growths past the first estimate.
  std::u16string big(5000, u'.');
  hstring r = ReplaceStr(hstring(big), u".", u"<dot>");
  EXPECT_EQ(r.size(), 25000u);
  EXPECT_EQ(r.substr(0, 10), u"<dot><dot>");
  EXPECT_EQ(r.c_str()[r.size()], u'\0');
}

TEST(TextUtils, SmallStringHelpers) {
  hstring s;
  AddStr(s, u"a", u", ");
  AddStr(s, u"b", u", ");
  EXPECT_EQ(s, u"a, b");
  EXPECT_EQ(Coalesce(hstring(), u"b"), u"b");
  EXPECT_EQ(Coalesce(u"a", u"b"), u"a");
  EXPECT_EQ(Copy(u"abcdef", 2, 3), u"bcd");
  EXPECT_EQ(Copy(u"abcdef", 0, 2), u"ab");
  EXPECT_EQ(Copy(u"abcdef", 5, 100), u"ef");
  EXPECT_TRUE(Copy(u"abcdef", 7, 1).empty());
  EXPECT_TRUE(Copy(u"abcdef", 2, -1).empty());
  EXPECT_EQ(Copy(RawByteString("xyz"), 3, 1), RawByteString("z"));
  EXPECT_EQ(Trim(u" \t a b \r\n"), u"a b");
  EXPECT_EQ(TrimLeft(u"  a "), u"a ");
  EXPECT_EQ(TrimRight(u"  a "), u"  a");
  EXPECT_TRUE(Trim(u"   ").empty());
  EXPECT_EQ(Trim(u"\u00A0a"), u"\u00A0a"); // only units up to U+0020
  EXPECT_EQ(StringOfChar(u'-', 3), u"---");
  EXPECT_TRUE(StringOfChar(u'-', 0).empty());
}

TEST(TextUtils, Numbers) {
  EXPECT_EQ(IntToStr(-42), u"-42");
  EXPECT_EQ(IntToStr(int64_t{-9223372036854775807 - 1}), u"-9223372036854775808");
  EXPECT_EQ(IntToStr(4000000000u), u"4000000000");
  EXPECT_EQ(IntToHex(255, 4), u"00FF");
  EXPECT_EQ(IntToHex(0x1ABC, 2), u"1ABC");
  EXPECT_EQ(IntToHex(-1, 2), u"FFFFFFFF");
  EXPECT_EQ(IntToHex(int64_t{-1}, 1), u"FFFFFFFFFFFFFFFF");
  EXPECT_EQ(IntToHex(0, 0), u"0");
  EXPECT_EQ(CompCardinal(1, 1), 0);
  EXPECT_EQ(CompCardinal(2, 1), 1);
  EXPECT_EQ(CompCardinal(1, 0xFFFFFFFFu), -1); // unsigned, not signed
  EXPECT_EQ(SwapWord(0x1234), 0x3412);
  EXPECT_EQ(SwapSmallInt(int16_t{0x0180}), int16_t{-32767});
  EXPECT_EQ(SwapCardinal(0x11223344u), 0x44332211u);
}

TEST(TextUtils, IsEnumDropsHyphens) {
  TTestDisplay d = tdBlock;
  EXPECT_TRUE(IsEnum2(u"td", u"inline-block", d));
  EXPECT_EQ(d, tdInlineBlock);
  EXPECT_TRUE(IsEnum2(u"td", u"table-row-group", d));
  EXPECT_EQ(d, tdTableRowGroup);
  EXPECT_TRUE(IsEnum2(u"td", u"NONE", d)); // the table ignores ASCII case
  EXPECT_EQ(d, tdNone);
  EXPECT_FALSE(IsEnum2(u"td", u"flex", d));
  EXPECT_LT(static_cast<int>(d), 0);
  EXPECT_TRUE(IsEnum(u"td-inline", d));
  EXPECT_EQ(d, tdInline);
  int v = 7;
  EXPECT_TRUE(IsEnum2(u"td", u"-block-", TypeInfo<TTestDisplay>(), v));
  EXPECT_EQ(v, 0);
  EXPECT_FALSE(IsEnum(u"block", TypeInfo<TTestDisplay>(), v)); // no prefix
  EXPECT_LT(v, 0);
  EXPECT_FALSE(IsEnum(u"x", nullptr, v));
  EXPECT_LT(v, 0);
}

TEST(TextUtils, FreeObjectsLeavesTheList) {
  std::vector<TCounted*> list{new TCounted, nullptr, new TCounted};
  FreeListObjects(list);
  EXPECT_EQ(TCounted::alive, 0);
  EXPECT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0], nullptr);

  TStringList sl;
  sl.AddObject(u"a", new TCounted);
  sl.AddObject(u"b", new TCounted);
  FreeStringListObjects(sl);
  EXPECT_EQ(TCounted::alive, 0);
  EXPECT_EQ(sl.Count(), 2);
  EXPECT_EQ(sl.Objects(1), nullptr);
}
