#include "htcore/style/style_indexer.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {
std::string u8(const hstring& s) { return s.toUtf8(); }
} // namespace

TEST(StyleIndexer, TextClassesShareAndLeaveTheRest) {
  TStyleIndexer ix;
  struct {
    const char16_t* styles;
    const char* cls;
    const char* rest;
  } cases[] = {
      {u"font-size: 12px; color: red; margin-left: 2px", "f0", "margin-left:2px;"},
      {u"color: red; font-size: 12px", "f0", ""},
      {u"font-family: Arial; line-height: 2; background-color: #fff", "f1", ""},
      {u"margin: 0", "", "margin:0;"}, // nothing to share: no class
      {u"font-size: 13px; fill: blue", "f2", "fill:blue;"},
  };
  for (auto& c : cases) {
    TCSSStyleSet s;
    s.SetAsString(hstring(c.styles));
    hstring cls = u"old"_hs;
    ix.GetClass(s, cls);
    EXPECT_EQ(u8(cls), c.cls) << u8(hstring(c.styles));
    EXPECT_EQ(u8(s.GetAsString()), c.rest) << u8(hstring(c.styles));
  }
  EXPECT_EQ(u8(ix.GenerateCSS()), ".f0{font-size:12px;color:red;}\r\n"
                                  ".f1{font-family: Arial;background-color:#fff;line-height:2;}\r\n"
                                  ".f2{font-size:13px;}\r\n");
}

TEST(StyleIndexer, SVGClasses) {
  TStyleIndexer ix;
  TCSSStyleSet s;
  s.SetAsString(u"font-style: italic; fill: #000; x: 4; font-weight: bold; font-family: Sans"_hs);
  hstring cls;
  ix.GetSVGClass(s, cls);
  EXPECT_EQ(u8(cls), "f0");
  EXPECT_EQ(u8(s.GetAsString()), "x:4;");
  EXPECT_EQ(u8(ix.GenerateCSS()), ".f0{font-family: Sans;fill:#000;font-weight:bold;font-style:italic;}\r\n");
}

TEST(StyleIndexer, ReadyTextsAndAliases) {
  TStyleIndexer ix;
  EXPECT_EQ(u8(ix.GetClass(u"color:red;"_hs, hstring())), "f0");
  EXPECT_EQ(u8(ix.GetClass(u"color:blue;"_hs, u"blue"_hs)), "blue");
  // A known text under another name: the first name answers, the new one is an alias.
  EXPECT_EQ(u8(ix.GetClass(u"color:red;"_hs, u"warn"_hs)), "f0");
  EXPECT_EQ(u8(ix.GetClass(u"color:green;"_hs, hstring())), "f2"); // the counter rose for "blue" too
  EXPECT_EQ(u8(ix.FindStyleClass(u"warn"_hs)), "f0");
  EXPECT_EQ(u8(ix.FindStyleClass(u"other"_hs)), "other");
  EXPECT_EQ(u8(ix.GenerateCSS()), ".f0{color:red;}\r\n.blue{color:blue;}\r\n.f2{color:green;}\r\n");
}
