#include "htcore/document/entities.h"

#include <gtest/gtest.h>
#include <map>

using namespace ht;

namespace {

std::u16string lower(std::u16string_view s) {
  std::u16string r(s);
  for (char16_t& c : r)
    if (c >= u'A' && c <= u'Z')
      c = static_cast<char16_t>(c + 32);
  return r;
}

} // namespace

TEST(Entities, TableCountsAndEnds) {
  auto table = HtEntityTable();
  ASSERT_EQ(table.size(), 2125u);
  int above = 0, below = 0;
  for (const THtEntityRec& e : table) {
    above += e.code > 0xFFFF;
    below += e.code < 256;
  }
  EXPECT_EQ(above, 133);
  EXPECT_EQ(below, 162);

  const struct {
    size_t index;
    const char16_t* name;
    uint32_t code;
  } ends[] = {
      {0, u"Aacute", 193},     {1, u"aacute", 225},     {2, u"Abreve", 258},   {3, u"abreve", 259},
      {4, u"ac", 8766},        {5, u"acd", 8767},       {2119, u"Zopf", 8484}, {2120, u"zopf", 120171},
      {2121, u"Zscr", 119989}, {2122, u"zscr", 120015}, {2123, u"zwj", 8205},  {2124, u"zwnj", 8204},
  };
  for (const auto& e : ends) {
    EXPECT_EQ(table[e.index].name, e.name) << e.index;
    EXPECT_EQ(table[e.index].code, e.code) << e.index;
  }
}

TEST(Entities, OrderIsCaseInsensitiveWithCapitalsFirst) {
  auto table = HtEntityTable();
  for (size_t i = 1; i < table.size(); ++i) {
    std::u16string a = lower(table[i - 1].name.view()), b = lower(table[i].name.view());
    bool ordered = a < b || (a == b && table[i - 1].name.view() < table[i].name.view());
    EXPECT_TRUE(ordered) << table[i - 1].name.toUtf8() << " before " << table[i].name.toUtf8();
  }
}

TEST(Entities, EveryNameFindsItsCode) {
  for (const THtEntityRec& e : HtEntityTable()) {
    EXPECT_EQ(FindEntity(e.name.view()), e.code) << e.name.toUtf8();
    EXPECT_EQ(HtEntityDictionary()->FindEntity(e.name.c_str(), e.name.Length()), e.code);
  }
}

TEST(Entities, NameLookups) {
  const struct {
    std::u16string_view name;
    uint32_t code;
  } cases[] = {
      {u"amp", '&'},
      {u"AMP", '&'},
      {u"Amp", 0}, // case matters
      {u"lt", '<'},
      {u"nbsp", 0xA0},
      {u"hellip", 0x2026},
      {u"frac12", 0xBD},
      {u"Afr", 0x1D504},
      {u"acE", 0x223E}, // two code points: the first stays
      {u"NotEqualTilde", 0x2242},
      {u"nvlt", '<'},
      {u"amp;", 0},
      {u"&amp", 0},
      {u"", 0},
      {u"zwnjx", 0},
      {u"zwn", 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(FindEntity(c.name), c.code) << std::string(c.name.begin(), c.name.end());
  // A slice of a larger text, as the HTML reader passes it.
  const char16_t* text = u"&hellip;x";
  EXPECT_EQ(FindEntity(text + 1, 6), 0x2026u);
  EXPECT_EQ(FindEntity(text + 1, 7), 0u);
  EXPECT_EQ(FindEntity(text + 1, 0), 0u);
}

TEST(Entities, ReverseTakesTheFirstNameOfACode) {
  std::map<uint32_t, hstring> first;
  for (const THtEntityRec& e : HtEntityTable())
    first.emplace(e.code, e.name);
  int named = 0;
  for (const auto& [code, name] : first) {
    const THtEntityRec* r = FindEntity(code);
    if (THtEntityReverseDictionary::Excluded(code)) {
      EXPECT_EQ(r, nullptr) << code;
      continue;
    }
    ASSERT_NE(r, nullptr) << code;
    EXPECT_EQ(r->name, name);
    EXPECT_EQ(r->code, code);
    // The record is the table's own, not a copy.
    EXPECT_GE(r, HtEntityTable().data());
    EXPECT_LT(r, HtEntityTable().data() + HtEntityTable().size());
    ++named;
  }
  EXPECT_EQ(named, 995); // distinct codes outside the left-out ranges

  const struct {
    uint32_t code;
    const char16_t* name;
  } cases[] = {{0x2192, u"rarr"}, {0x2211, u"Sum"}, {0x2260, u"ne"}, {0x2A0C, u"iiiint"}, {0x1D504, u"Afr"}};
  for (const auto& c : cases) {
    const THtEntityRec* r = FindEntity(c.code);
    ASSERT_NE(r, nullptr) << c.code;
    EXPECT_EQ(r->name, c.name);
  }
}

TEST(Entities, ReverseLeavesOutScriptRanges) {
  const struct {
    uint32_t code;
    bool excluded;
  } bounds[] = {
      {0, true},    {'&', true},   {255, true},   {256, true},   {591, true},   {592, false},
      {879, false}, {880, true},   {1279, true},  {1280, false}, {1327, false}, {1328, true},
      {1871, true}, {1872, false}, {8191, false}, {8192, true},  {8351, true},  {8352, false},
  };
  for (const auto& b : bounds)
    EXPECT_EQ(THtEntityReverseDictionary::Excluded(b.code), b.excluded) << b.code;
  // Named in the table, but never written by name.
  for (uint32_t c : {0x26u, 0xA0u, 0x100u /* Amacr */, 0x391u /* Alpha */, 0x410u /* Acy */,
                     0x2014u /* mdash */, 0x2026u /* hellip */})
    EXPECT_EQ(FindEntity(c), nullptr) << c;
  EXPECT_EQ(FindEntity(0u), nullptr);
  EXPECT_EQ(FindEntity(0x110000u), nullptr);
}

TEST(Entities, DictionariesAreSizedForTheTable) {
  const THtEntityDictionary* names = HtEntityDictionary();
  const THtEntityReverseDictionary* codes = HtEntityReverseDictionary();
  ASSERT_NE(names, nullptr);
  ASSERT_NE(codes, nullptr);
  EXPECT_EQ(names->Count(), 2125);
  EXPECT_EQ(names->HashFunc(), static_cast<THtHashFunc>(&RSHash));
  EXPECT_EQ(codes->Count(), 995);
  // Room for every record without growing: 2,125 entries fill 4,096 slots to
  // just over half, below the three-quarter mark.
  EXPECT_EQ(names->Capacity(), 4096);
  EXPECT_EQ(codes->Capacity(), 4096);
}
