// The built-in text functions, the registry and the "include" confinement.
#include "htcore/foundation/files.h"
#include "htcore/templates/template_functions.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using namespace ht;
namespace fs = std::filesystem;

namespace {

std::string Call(const char16_t* name, const std::string& text) {
  const THtTemplateFunctionContainer* f = FindHtTemplateFunction(name);
  if (!f)
    return "<missing>";
  hstring r = u"stale"_hs;
  f->F(hstring::FromUtf8(text), r);
  return r.toUtf8();
}

// A scratch directory with a file inside and one beside it.
struct TIncludeDirs : ::testing::Test {
  fs::path root, inside, outside;
  void SetUp() override {
    root = fs::temp_directory_path() / ("htcore_tpl_" + std::to_string(::getpid()));
    fs::remove_all(root);
    inside = root / "site";
    outside = root / "secret";
    fs::create_directories(inside / "parts");
    fs::create_directories(outside);
    StrtoFileR("header \xC3\xA9", hstring::FromUtf8((inside / "parts" / "head.html").string()));
    StrtoFileR("caf\xE9", hstring::FromUtf8((inside / "latin1.txt").string()));
    StrtoFileR("top secret", hstring::FromUtf8((outside / "key.txt").string()));
    fs::create_symlink(outside / "key.txt", inside / "link.txt");
  }
  void TearDown() override {
    SetHtTemplateIncludeBase(hstring());
    fs::remove_all(root);
  }
  std::string Include(const std::string& path) { return Call(u"include", path); }
};

} // namespace

TEST(TemplateFunctions, CaseAndTrim) {
  struct {
    const char16_t* f;
    const char* in;
    const char* out;
  } cases[] = {
      {u"upper", "abc xyz", "ABC XYZ"},
      {u"upper", "\xC3\xA4rger \xC3\xBF \xC3\x9F", "\xC3\x84RGER \xC5\xB8 \xC3\x9F"}, // ärger ÿ ß
      {u"upper", "\xD0\xBF\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82 \xD1\x91",         // привет ё
       "\xD0\x9F\xD0\xA0\xD0\x98\xD0\x92\xD0\x95\xD0\xA2 \xD0\x81"},
      {u"upper", "\xCE\xB1\xCF\x82\xCE\xAC", "\xCE\x91\xCE\xA3\xCE\x86"}, // αςά
      {u"upper",
       "\xC5\x82\xC3\xB3"
       "d\xC5\xBA",
       "\xC5\x81\xC3\x93"
       "D\xC5\xB9"}, // łódź
      {u"lower", "ABC \xC3\x84 \xC5\xB8 \xD0\x81\xD0\xAF", "abc \xC3\xA4 \xC3\xBF \xD1\x91\xD1\x8F"},
      {u"lower",
       "\xC5\x81\xC3\x93"
       "D\xC5\xB9 \xC3\x97",
       "\xC5\x82\xC3\xB3"
       "d\xC5\xBA \xC3\x97"}, // × stays
      {u"trim", "  a b \r\n", "a b"},
      {u"trim", "", ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Call(c.f, c.in), c.out) << c.in;
}

TEST(TemplateFunctions, LayoutHelpers) {
  struct {
    const char16_t* f;
    const char* in;
    const char* out;
  } cases[] = {
      {u"charstorects", "ab", "<div class=\"charrect\">a</div><div class=\"charrect\">b</div>"},
      {u"charstorects", "\xF0\x9F\x98\x80", "<div class=\"charrect\">\xF0\x9F\x98\x80</div>"},
      {u"charstorects", "", ""},
      {u"padleft", "5 ab", "   ab"},
      {u"padleft", "2 abcd", "abcd"},
      {u"padleft", "4 a b", " a b"},
      {u"padleft", "3 ", "   "},
      {u"padleft", "x abc", "abc"},
      {u"padleft", "-4 abc", "abc"},
      {u"padleft", "-2147483648 abc", "abc"},
      {u"formatmoney", "1234567.891", "1 234 567.89"},
      {u"formatmoney", " 1 234,5 ", "1 234.5"},
      {u"formatmoney", "-0.004", "0"},
      {u"formatmoney", "", ""},
      {u"formatdate", "2024-02-29|dd.mm.yyyy", "29.02.2024"},
      {u"formatdate", "2024-02-29 d mmmm yyyy", "29 February 2024"},
      {u"formatdate", "2024-02-29T13:05:00|hh:nn", "13:05"},
      {u"formatdate", "05.03.2020|yyyy-mm-dd", "2020-03-05"},
      {u"formatdate", "someday|dd.mm.yyyy", "someday"},
      {u"eq", "a|a|yes", "yes"},
      {u"eq", "a|b|yes", ""},
      {u"eq", "a|a|x|y", "x|y"},
      {u"eq", "|||", "|"},
      {u"eq", "A|a|yes", ""},
      {u"eq", "a|a", ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Call(c.f, c.in), c.out) << static_cast<const void*>(c.f) << " " << c.in;
  EXPECT_EQ(Call(u"padleft", "2147483647 x").size(), 65536u);
  std::string today = Call(u"date", "ignored");
  ASSERT_EQ(today.size(), 10u);
  EXPECT_EQ(today[4], '-');
  EXPECT_EQ(today[7], '-');
  EXPECT_EQ(today.substr(0, 2), "20");
}

TEST(TemplateFunctions, RegistryIgnoresCaseAndKeepsCaption) {
  EXPECT_NE(FindHtTemplateFunction(u"UPPER"_hs), nullptr);
  EXPECT_EQ(FindHtTemplateFunction(u"nosuch"_hs), nullptr);
  EXPECT_EQ(FindHtTemplateFunction(hstring()), nullptr);
  RegisterHtTemplateFunction(u"Twice"_hs, [](const hstring& s, hstring& r) { r = s + s; });
  const THtTemplateFunctionContainer* f = FindHtTemplateFunction(u"twice"_hs);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Name, u"twice");
  EXPECT_EQ(f->Caption, u"Twice");
  EXPECT_EQ(Call(u"TWICE", "ab"), "abab");
  RegisterHtTemplateFunction(u"twice"_hs, [](const hstring& s, hstring& r) { r = s; });
  EXPECT_EQ(Call(u"twice", "ab"), "ab");
}

TEST_F(TIncludeDirs, PlainIncludeOpensAnyPath) {
  EXPECT_EQ(Include((inside / "parts" / "head.html").string()), "header \xC3\xA9");
  EXPECT_EQ(Include(" " + (inside / "latin1.txt").string() + "\n"), "caf\xC3\xA9");
  EXPECT_EQ(Include((outside / "key.txt").string()), "top secret");
  EXPECT_EQ(Include((root / "missing.txt").string()), "");
  EXPECT_EQ(Include(""), "");
}

TEST_F(TIncludeDirs, BaseDirectoryConfines) {
  SetHtTemplateIncludeBase(hstring::FromUtf8(inside.string()));
  struct {
    std::string path;
    const char* out;
  } cases[] = {
      {"parts/head.html", "header \xC3\xA9"},
      {"./parts/../parts/head.html", "header \xC3\xA9"},
      {(inside / "latin1.txt").string(), "caf\xC3\xA9"},
      {"../secret/key.txt", ""},
      {"parts/../../secret/key.txt", ""},
      {(outside / "key.txt").string(), ""},
      {"link.txt", ""}, // a link out of the base is refused too
      {"/etc/passwd", ""},
      {"..", ""},
      {".", ""},
      {"missing.html", ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Include(c.path), c.out) << c.path;
  // A base given with a trailing separator confines the same way.
  SetHtTemplateIncludeBase(hstring::FromUtf8(inside.string() + "/"));
  EXPECT_EQ(Include("parts/head.html"), "header \xC3\xA9");
  EXPECT_EQ(Include("../secret/key.txt"), "");
  // A sibling directory whose name starts like the base is outside it.
  fs::create_directories(root / "site2");
  StrtoFileR("x", hstring::FromUtf8((root / "site2" / "a.txt").string()));
  EXPECT_EQ(Include("../site2/a.txt"), "");
}
