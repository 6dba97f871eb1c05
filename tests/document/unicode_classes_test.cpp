#include "htcore/document/unicode_classes.h"

#include <gtest/gtest.h>

using namespace ht;

TEST(UnicodeClasses, BidiFollowsTheTestOrder) {
  const struct {
    char16_t c;
    THtTextRunBidi bidi;
  } cases[] = {
      {u'A', bdLTR},       {u'z', bdLTR},       {u'0', bdWeakLRT},   {u'9', bdWeakLRT},   {u' ', bdNeutral},
      {u'@', bdNeutral},   {u'[', bdNeutral},   {u'~', bdNeutral},   {0, bdNeutral},      {0x7F, bdLTR},
      {0xA0, bdLTR},       {0xE9, bdLTR},       {0x058F, bdLTR},     {0x0590, bdRTL},     {0x05D0, bdRTL},
      {0x05FF, bdRTL},     {0x0600, bdRTL},     {0x0627, bdRTL},     {0x06FF, bdRTL},     {0x0700, bdLTR},
      {0x074F, bdLTR},     {0x0750, bdRTL},     {0x077F, bdRTL},     {0x0780, bdLTR},     {0x089F, bdLTR},
      {0x08A0, bdRTL},     {0x08FF, bdRTL},     {0x0900, bdLTR},     {0x2000, bdLTR},     {0x2001, bdNeutral},
      {0x4E00, bdNeutral}, {0xFB1C, bdNeutral}, {0xFB1D, bdRTL},     {0xFB4F, bdRTL},     {0xFB50, bdNeutral},
      {0xFDFF, bdNeutral}, {0xFE70, bdNeutral}, {0xFEFF, bdNeutral}, {0xD800, bdNeutral}, {0xFFFF, bdNeutral},
  };
  for (const auto& c : cases)
    EXPECT_EQ(CharBidi(c.c), c.bidi) << std::hex << static_cast<int>(c.c);
  EXPECT_EQ(TypeInfo<THtTextRunBidi>()->NameOf(bdRTL), u"bdRTL");
  EXPECT_EQ(TypeInfo<THtTextRunBidi>()->Count(), 4);
}

TEST(UnicodeClasses, CjkRangesDifferByFunction) {
  const struct {
    char16_t c;
    bool cjk, chinese, has_chinese;
  } cases[] = {
      {0x2FFF, false, false, false}, {0x3000, true, true, false},   {0x3002, true, true, false},
      {0x30FF, true, true, false},   {0x3100, false, false, false}, {0x4DFF, false, false, false},
      {0x4E00, true, true, true},    {0x9FFF, true, true, true},    {0xA000, false, false, false},
      {0xF8FF, false, false, false}, {0xF900, true, true, true},    {0xFA00, true, true, true},
      {0xFA01, false, true, true},   {0xFAFF, false, true, true},   {0xFB00, false, false, false},
      {u'a', false, false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.c));
    EXPECT_EQ(IsCJK(c.c), c.cjk);
    EXPECT_EQ(IsChinese(c.c), c.chinese);
    char16_t text[] = {u'x', c.c, u'y'};
    EXPECT_EQ(HasChinese(std::u16string_view(text, 3)), c.has_chinese);
  }
  EXPECT_FALSE(HasChinese(u""));
}

TEST(UnicodeClasses, SurrogatesAndModifiers) {
  EXPECT_FALSE(IsHighSurrogate(0xD7FF));
  EXPECT_TRUE(IsHighSurrogate(0xD800));
  EXPECT_TRUE(IsHighSurrogate(0xDBFF));
  EXPECT_FALSE(IsHighSurrogate(0xDC00));
  EXPECT_FALSE(IsCharModifier(0x064A));
  EXPECT_TRUE(IsCharModifier(0x064B));
  EXPECT_TRUE(IsCharModifier(0x0653));
  EXPECT_FALSE(IsCharModifier(0x0654));
}

TEST(UnicodeClasses, LettersAndNumbersByCategory) {
  const struct {
    char16_t c;
    bool letter, number;
  } cases[] = {
      {u'a', true, false},    {u'Z', true, false},   {u'@', false, false},   {u'[', false, false},
      {u'`', false, false},   {u'{', false, false},  {u'0', false, true},    {u'_', false, false},
      {0xAA, true, false},    {0xB2, false, true},   {0xB5, true, false},    {0xBD, false, true},
      {0xD7, false, false},   {0xF7, false, false},  {0xFF, true, false},    {0x02B0, true, false},
      {0x0300, false, false}, {0x0627, true, false}, {0x0660, false, true},  {0x064B, false, false},
      {0x2160, false, true},  {0x3007, false, true}, {0x3005, true, false},  {0x4E00, true, false},
      {0x9FFF, true, false},  {0xAC00, true, false}, {0xD800, false, false}, {0xDFFF, false, false},
      {0xE000, false, false}, {0xFF10, false, true}, {0xFF21, true, false},  {0xFFFF, false, false},
      {0, false, false},      {u' ', false, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsLetter(c.c), c.letter) << std::hex << static_cast<int>(c.c);
    EXPECT_EQ(IsNumber(c.c), c.number) << std::hex << static_cast<int>(c.c);
  }
}

TEST(UnicodeClasses, ClosingPunctuation) {
  EXPECT_EQ(HtClosingPunctuation.size(), 28u);
  for (char16_t c :
       std::u16string_view(u"!),.:;?]}\uFF0C\u3001\u3002\u2014\u02C7\u0401\u3003\u3005\uFF5E\u2026"
                           u"\u2019\u201D\u3015\u3009\u300B\u300D\u300F\u3017\u3011"))
    EXPECT_TRUE(IsClosingPunctuation(c)) << static_cast<int>(c);
  for (char16_t c : std::u16string_view(u"([{\"'-a0 \u3008\u300C\u2018\u201C\u3010\u0000", 15))
    EXPECT_FALSE(IsClosingPunctuation(c)) << static_cast<int>(c);
}

TEST(UnicodeClasses, ReplaceTextURLs) {
  auto link = [](std::u16string_view url) { return u"<" + hstring(url) + u">"; };
  const struct {
    const char16_t* in;
    const char16_t* out;
  } cases[] = {
      {u"", u""},
      {u"no links here.", u"no links here."},
      {u"see http://a.org/x now", u"see <http://a.org/x> now"},
      {u"HTTPS://A.ORG", u"<HTTPS://A.ORG>"},
      {u"www.example.org, and ftp://f.net.", u"<www.example.org>, and <ftp://f.net>."},
      {u"ftps://s.net mailto:me@x.org", u"<ftps://s.net> <mailto:me@x.org>"},
      {u"write to me@example.com!", u"write to <me@example.com>!"},
      {u"example.com/path?q=1", u"<example.com/path?q=1>"},
      {u"a.company is not one", u"a.company is not one"},
      {u".com alone", u".com alone"},
      {u"http:// www.", u"http:// www."},
      {u"(see www.a.org)", u"(see <www.a.org>)"},
      {u"http://en.wiki.org/Foo_(bar)", u"<http://en.wiki.org/Foo_(bar)>"},
      {u"\"http://q.org\"", u"\"<http://q.org>\""},
      {u"tab\twww.a.org\nline", u"tab\t<www.a.org>\nline"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ReplaceTextURLs(hstring(c.in), link), c.out) << hstring(c.in).toUtf8();

  hstring plain(u"nothing to see");
  EXPECT_EQ(ReplaceTextURLs(plain, link).Pointer(), plain.Pointer()); // shared, not copied
  EXPECT_EQ(ReplaceTextURLs(u"x www.a.org y"_hs, [](std::u16string_view) { return hstring(); }), u"x  y");
}
