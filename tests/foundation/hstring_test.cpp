#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/startup.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

using namespace ht;

TEST(HString, EmptyIsNullAndTerminated) {
  hstring e;
  EXPECT_TRUE(e.empty());
  EXPECT_EQ(e.Pointer(), nullptr);
  EXPECT_EQ(e.c_str()[0], u'\0');
  hstring fromEmpty(u"");
  EXPECT_EQ(fromEmpty.Pointer(), nullptr);
  hstring s(u"ab");
  EXPECT_EQ(s.size(), 2u);
  EXPECT_EQ(s.c_str()[2], u'\0');
}

TEST(HString, CopyOnWriteSharesUntilUnique) {
  hstring a(u"abc");
  hstring b = a;
  EXPECT_EQ(a.Pointer(), b.Pointer());
  EXPECT_EQ(a.RefCount(), 2);
  b.UniqueData()[0] = u'X';
  EXPECT_EQ(a, u"abc");
  EXPECT_EQ(b, u"Xbc");
  EXPECT_NE(a.Pointer(), b.Pointer());
  const char16_t* before = b.Pointer();
  b.UniqueData();
  EXPECT_EQ(b.Pointer(), before); // already private: no copy
}

// Interned names: one text per name for the process, copies uncounted,
// writes through a copy never reach the shared text.
TEST(HString, InternedNamesAreSharedAndLasting) {
  hstring a = hstring::Interned(u"interned-name-a", 15);
  hstring b = hstring::Interned(std::u16string_view(u"interned-name-a"));
  EXPECT_EQ(a.Pointer(), b.Pointer());
  EXPECT_EQ(a.c_str()[15], u'\0');
  const int count = a.RefCount();
  EXPECT_LT(count, 0);
  {
    std::vector<hstring> copies(100, a);
    hstring moved = std::move(copies.back());
    EXPECT_EQ(a.RefCount(), count);
  }
  EXPECT_EQ(a.RefCount(), count);
  EXPECT_FALSE(a.IsUnique());
  hstring edit = a;
  edit.UniqueData()[0] = u'I';
  edit += u"!";
  EXPECT_EQ(edit, u"Interned-name-a!");
  EXPECT_EQ(a, u"interned-name-a");
  hstring cut = b;
  cut.Truncate(3);
  EXPECT_EQ(cut, u"int");
  EXPECT_EQ(b, u"interned-name-a");
  EXPECT_NE(hstring::Interned(u"interned-name-b").Pointer(), a.Pointer());
  EXPECT_TRUE(hstring::Interned(u"", 0).empty());
  // Byte strings keep their own entries, even for the same bytes.
  RawByteString r = RawByteString::Interned("interned-name-a", 15);
  EXPECT_EQ(r, "interned-name-a");
  EXPECT_NE(static_cast<const void*>(r.Pointer()), static_cast<const void*>(a.Pointer()));
  // Long names are counted texts.
  hstring long_name = hstring::Interned(std::u16string(65, u'x'));
  EXPECT_EQ(long_name.RefCount(), 1);
  // Many threads copying and dropping one name: nothing is written.
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([a] {
      for (int i = 0; i < 10000; ++i) {
        hstring c = a;
        (void)c;
      }
    });
  for (auto& t : threads)
    t.join();
  EXPECT_EQ(a.RefCount(), count);
}

// Hostile input with endless distinct names fills the table once; later
// names are counted texts and still compare and live as usual. Run in a child
// process, so the rest of the program keeps an unfilled table.
TEST(HStringDeathTest, InternTableIsCapped) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        hstring kept = hstring::Interned(u"kept-name");
        bool ok = true;
        int counted = 0;
        for (int i = 0; i < 40000; ++i) {
          const std::string digits = std::to_string(i);
          const std::u16string n = u"n" + std::u16string(digits.begin(), digits.end());
          hstring s = hstring::Interned(n);
          ok = ok && s == std::u16string_view(n);
          counted += s.RefCount() == 1;
        }
        ok = ok && counted > 20000 && counted < 40000;
        ok = ok && hstring::Interned(u"kept-name").Pointer() == kept.Pointer();
        std::exit(ok ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(HString, AppendsPartsOfItselfWhateverTheSharing) {
  // A unique buffer grows in place or moves; a shared one is copied first:
  // either way the appended part must be read from the text as it was.
  for (bool shared : {false, true}) {
    hstring s(u"abcdef");
    s += u"";  // make the buffer its own, not a literal's
    hstring other = shared ? s : hstring();
    s.Append(s.c_str() + 2, 3);
    EXPECT_EQ(s, u"abcdefcde") << shared;
    s.Append(s.c_str(), s.size());
    EXPECT_EQ(s, u"abcdefcdeabcdefcde") << shared;
    if (shared) {
      EXPECT_EQ(other, u"abcdef");
    }
  }
}

TEST(HString, Utf8RoundTripAndRepair) {
  struct {
    const char* utf8;
    std::u16string utf16;
  } cases[] = {
      {"plain", u"plain"},
      {"w\xC3\xB6rld", u"w\u00F6rld"},
      {"\xE2\x82\xAC", u"\u20AC"},
      {"\xF0\x9F\x98\x80", u"\U0001F600"},
  };
  for (auto& c : cases) {
    hstring h(c.utf8);
    EXPECT_EQ(h.view(), c.utf16);
    EXPECT_EQ(h.toUtf8(), c.utf8);
  }
  // Bad bytes, overlong forms, encoded surrogates and truncation all repair to U+FFFD.
  EXPECT_EQ(hstring("a\xFF"
                    "b")
                .view(),
            u"a\uFFFDb");
  EXPECT_EQ(hstring("\xC0\xAF").view(), u"\uFFFD");
  EXPECT_EQ(hstring("\xED\xA0\x80").view(), u"\uFFFD");
  EXPECT_EQ(hstring("x\xE2\x82").view(), u"x\uFFFD");
  // A lone surrogate cannot go out as UTF-8.
  EXPECT_EQ(HStringToUtf8(u"a\xD800"), "a\xEF\xBF\xBD");
}

TEST(HString, OperatorsAndHashing) {
  hstring a(u"ab");
  EXPECT_EQ(a + u"c", u"abc");
  EXPECT_EQ(u'x' + a, u"xab");
  EXPECT_LT(hstring(u"ab"), hstring(u"b"));
  EXPECT_LT(hstring(u"\u00E9"), hstring(u"\xD800")); // ordinal by code unit
  hstring c = a;
  c += c;
  EXPECT_EQ(c, u"abab");
  EXPECT_EQ(a, u"ab");
  std::unordered_set<hstring> set{hstring(u"k1"), hstring(u"k2")};
  EXPECT_TRUE(set.count(hstring(u"k2")));
  EXPECT_EQ(hstring(u"hello").substr(1, 3), u"ell");
  EXPECT_TRUE(hstring(u"hello").substr(9).empty());
  RawByteString r("bytes");
  EXPECT_EQ(r.size(), 5u);
  EXPECT_EQ(r.toUtf8(), "bytes");
}

TEST(HString, SharedAcrossThreads) {
  hstring shared(u"shared text");
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 10000; ++i) {
        hstring local = shared;
        ASSERT_EQ(local.size(), 11u);
      }
    });
  for (auto& t : threads)
    t.join();
  EXPECT_EQ(shared.RefCount(), 1);
}

TEST(HString, ExceptionCarriesUtf8Message) {
  try {
    throw Exception(hstring(u"caf\u00E9"));
  } catch (const std::exception& e) {
    EXPECT_STREQ(e.what(), "caf\xC3\xA9");
  }
  EXPECT_THROW(HT_ASSERT(1 == 2), EAssertionFailed);
}

namespace demo {
HT_ENUM(TDemoDisplay, dsBlock, dsInline, dsInlineBlock, dsNone)
}

TEST(EnumInfo, NamesAndValues) {
  PTypeInfo info = TypeInfo<demo::TDemoDisplay>();
  EXPECT_EQ(info->Count(), 4);
  EXPECT_EQ(info->ValueOf(u"dsInlineBlock"), demo::dsInlineBlock);
  EXPECT_EQ(info->ValueOf(u"DSINLINEBLOCK"), demo::dsInlineBlock);
  EXPECT_EQ(info->ValueOf(u"dsMissing"), -1);
  EXPECT_EQ(info->NameOf(3), u"dsNone");
  EXPECT_TRUE(info->NameOf(4).empty());
  EXPECT_EQ(info->Name(), "TDemoDisplay");
}

TEST(Startup, RunsOnceAndRestartsAfterFinalize) {
  Initialize();
  EXPECT_TRUE(IsInitialized());
  Initialize();
  Finalize();
  EXPECT_FALSE(IsInitialized());
  EnsureStarted();
  EXPECT_TRUE(IsInitialized());
}
