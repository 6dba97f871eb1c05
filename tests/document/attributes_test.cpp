#include "htcore/document/attributes.h"
#include "htcore/document/html_node.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/fast_string.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace ht;

namespace {

// A subclass of THtXMLNode is read by the item and token readers, not the
// direct ones.
class TItemReaderNode : public THtXMLNode {
  HT_NODE_CLASS(TItemReaderNode)
};

std::string names(const THtAttributes& a) {
  std::string r;
  for (const THtAttribute& at : a) {
    if (!r.empty())
      r += ' ';
    r += at.Name.toUtf8() + "=" + at.Value.toUtf8();
  }
  return r;
}

} // namespace

TEST(HtAttributes, KeptSortedByNameNotSourceOrder) {
  THtAttributes a;
  a.Add(u"b"_hs, u"2"_hs);
  a.Add(u"a"_hs, u"1"_hs);
  a.Add(u"c"_hs, u"3"_hs);
  a.Add(u"ab"_hs, u"4"_hs);
  EXPECT_EQ(names(a), "a=1 ab=4 b=2 c=3");
  EXPECT_EQ(a.Count, 4);
}

TEST(HtAttributes, CaseInsensitiveLowersStoredNames) {
  THtAttributes a;
  hstring lower = u"href"_hs;
  a.SetAttribute(u"HRef"_hs, u"x"_hs);
  a.SetAttribute(lower, u"y"_hs); // same attribute
  EXPECT_EQ(a.Count, 1);
  EXPECT_EQ(a.GetName(0), u"href");
  EXPECT_EQ(a.GetAttribute(u"HREF"_hs), u"y");
  // A name already in lower case is stored shared, not copied.
  a.Clear();
  a.Add(lower, u"z"_hs);
  EXPECT_EQ(a.GetName(0).Pointer(), lower.Pointer());
}

TEST(HtAttributes, CaseSensitiveKeepsNamesApart) {
  THtAttributes a(true);
  a.SetAttribute(u"Id"_hs, u"1"_hs);
  a.SetAttribute(u"id"_hs, u"2"_hs);
  a.SetAttribute(u"ID"_hs, u"3"_hs);
  EXPECT_EQ(names(a), "ID=3 Id=1 id=2"); // ordinal order: capitals first
  EXPECT_EQ(a.Indexof(u"iD"_hs), -1);
}

TEST(HtAttributes, FindGivesInsertionPlace) {
  THtAttributes a;
  int i = -5;
  EXPECT_FALSE(a.Find(u"x"_hs, i));
  EXPECT_EQ(i, 0);
  for (const char16_t* n : {u"b", u"d", u"f"})
    a.Add(n, u"v"_hs);
  struct {
    const char16_t* name;
    bool found;
    int index;
  } cases[] = {{u"a", false, 0}, {u"b", true, 0}, {u"c", false, 1}, {u"D", true, 1},
               {u"e", false, 2}, {u"f", true, 2}, {u"g", false, 3}, {u"", false, 0}};
  for (auto& c : cases) {
    EXPECT_EQ(a.Find(c.name, i), c.found) << ToUtf8(c.name);
    EXPECT_EQ(i, c.index) << ToUtf8(c.name);
  }
}

TEST(HtAttributes, AddDoesNotTestForDuplicates) {
  THtAttributes a;
  a.Add(u"x"_hs, u"1"_hs);
  a.Add(u"X"_hs, u"2"_hs);
  EXPECT_EQ(a.Count, 2);
  EXPECT_EQ(a.GetName(1), u"x");
}

TEST(HtAttributes, SetAttributeExTellsChange) {
  THtAttributes a;
  EXPECT_TRUE(a.SetAttributeEx(u"a"_hs, u"1"_hs));
  EXPECT_FALSE(a.SetAttributeEx(u"A"_hs, u"1"_hs));
  EXPECT_TRUE(a.SetAttributeEx(u"a"_hs, u"2"_hs));
  EXPECT_TRUE(a.SetAttributeEx(u"b"_hs, hstring())); // an empty value is a value
  EXPECT_TRUE(a.HasAttribute(u"b"_hs));
  EXPECT_EQ(a.GetAttribute(u"missing"_hs), hstring());
}

TEST(HtAttributes, ClearKeepsSpareEntriesAndReusesThem) {
  THtAttributes a;
  a.Add(u"a"_hs, u"1"_hs);
  a.Add(u"b"_hs, u"2"_hs);
  a.Clear();
  EXPECT_EQ(a.Count, 0);
  EXPECT_EQ(a.List.size(), 2u);
  EXPECT_EQ(a.GetAttribute(u"a"_hs), hstring());
  EXPECT_EQ(a.begin(), a.end());
  a.Add(u"z"_hs, u"3"_hs);
  a.Add(u"y"_hs, u"4"_hs);
  a.Add(u"x"_hs, u"5"_hs);
  EXPECT_EQ(names(a), "x=5 y=4 z=3");
  EXPECT_EQ(a.List.size(), 3u);
}

TEST(HtAttributes, DeleteAndClearAttr) {
  THtAttributes a;
  for (const char16_t* n : {u"a", u"b", u"c", u"d"})
    a.Add(n, n);
  EXPECT_TRUE(a.ClearAttr(u"B"_hs));
  EXPECT_FALSE(a.ClearAttr(u"b"_hs));
  a.Delete(0);
  EXPECT_EQ(names(a), "c=c d=d");
  a.Delete(1);
  EXPECT_EQ(names(a), "c=c");
  EXPECT_THROW(a.Delete(1), EAssertionFailed);
  EXPECT_THROW(a.GetItem(-1), EAssertionFailed);
}

TEST(HtAttributes, IndexedAccessAndAssign) {
  THtAttributes a;
  a.Add(u"k"_hs, u"v"_hs);
  a.SetValue(0, u"w"_hs);
  EXPECT_EQ(a.GetValue(0), u"w");
  EXPECT_EQ(a.GetItem(0).Name, u"k");
  THtAttributes b(true);
  b.Add(u"Q"_hs, u"1"_hs);
  b.Assign(a);
  EXPECT_FALSE(b.CaseSensitive);
  EXPECT_EQ(names(b), "k=w");
}

TEST(HtAttributes, ManyNamesStaySorted) {
  THtAttributes a;
  for (int i = 999; i >= 0; --i)
    a.SetAttribute(hstring(std::to_string(i * 7919 % 1000)), hstring(std::to_string(i)));
  ASSERT_EQ(a.Count, 1000);
  for (int i = 1; i < a.Count; ++i)
    EXPECT_LT(a.GetName(i - 1).view(), a.GetName(i).view());
  EXPECT_EQ(a.GetAttribute(u"0"_hs), u"0");
}

TEST(HtAttributes, TextForms) {
  THtAttributes a;
  a.Add(u"title"_hs, u"a<b> & \"c\"\u00A0\t"_hs);
  a.Add(u"checked"_hs, u"checked"_hs);
  a.Add(u"b"_hs, u"x"_hs);
  EXPECT_EQ(a.AsString().toUtf8(),
            "b=\"x\" checked=\"checked\" title=\"a&lt;b&gt; &amp; &quot;c&quot;&nbsp;&#9;\"");
  TFastString fs(4096);
  a.FastAsString(fs);
  EXPECT_EQ(fs.GetAsString().toUtf8(), " b=\"x\" checked title=\"a&lt;b&gt; &amp; &quot;c&quot;&nbsp;&#9;\"");
  TFastRawString raw(4096);
  a.FastAsUTF8String(raw);
  RawByteString bytes;
  raw.ToString(bytes);
  EXPECT_EQ(bytes.toUtf8(),
            " b=\"x\" checked=\"checked\" title=\"a&lt;b&gt; &amp; &quot;c&quot;&nbsp;&#9;\"");
  // XML sets keep name="name" and write a no-break space by number.
  THtAttributes x(true);
  x.Add(u"Sel"_hs, u"Sel"_hs);
  x.Add(u"v"_hs, u"1\u00A02"_hs);
  TFastString xs(4096);
  x.FastAsString(xs);
  EXPECT_EQ(xs.GetAsString().toUtf8(), " Sel=\"Sel\" v=\"1&#160;2\"");
  EXPECT_EQ(THtAttributes().AsString(), hstring());
}

namespace {

struct TBatchItem {
  hstring name, value;
  THtAttributeBatch::TRule rule;
  bool keep;
};

// What the readers did before batches: one Find and insert per attribute.
void apply_one_by_one(THtAttributes& a, const std::vector<TBatchItem>& items) {
  for (const TBatchItem& it : items) {
    int i;
    if (it.rule == THtAttributeBatch::abReplace)
      a.SetAttribute(it.name, it.value);
    else if (!a.Find(it.name, i))
      a.Add(it.name, it.value);
    else
      continue;
    if (it.keep && !a.CaseSensitive) {
      i = a.Indexof(it.name);
      if (i >= 0)
        a.List[static_cast<size_t>(i)].Name = it.name;
    }
  }
}

} // namespace

TEST(HtAttributeBatch, AppliesAsOneByOne) {
  std::mt19937 rng(10);
  const char* pool[] = {"a", "A", "b", "ab", "aB", "x{", "X{", "", "z9", "Z9", "m"};
  for (bool cs : {false, true})
    for (size_t existing : {0, 3, 30})
      for (size_t n : {0, 1, 5, 16, 17, 40, 300}) {
        THtAttributes ref(cs), got(cs);
        std::vector<TBatchItem> items;
        auto random_item = [&] {
          std::string name = pool[rng() % std::size(pool)];
          if (rng() % 2)
            name += std::to_string(rng() % (n / 2 + 2));
          bool keep = name.find('{') != std::string::npos;
          if (!cs && !keep) // the readers lower such names before
            for (char& c : name)
              c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
          return TBatchItem{hstring::FromUtf8(name), hstring(std::to_string(rng() % 1000)),
                            rng() % 3 ? THtAttributeBatch::abKeepFirst : THtAttributeBatch::abReplace, keep};
        };
        std::vector<TBatchItem> before;
        for (size_t i = 0; i < existing; ++i)
          before.push_back(random_item());
        apply_one_by_one(ref, before);
        apply_one_by_one(got, before);
        for (size_t i = 0; i < n; ++i)
          items.push_back(random_item());
        apply_one_by_one(ref, items);
        THtAttributeBatch batch;
        for (const TBatchItem& it : items)
          batch.Add(it.name, it.value, it.rule, it.keep);
        batch.MoveTo(got);
        EXPECT_TRUE(batch.Empty());
        EXPECT_EQ(names(got), names(ref)) << "cs=" << cs << " existing=" << existing << " n=" << n;
      }
}

// A parsed XML tag or JSON object: a few attributes into a new
// case-sensitive set, the shape that takes the insertion-sort path. Many
// small random batches with repeats and empty names.
TEST(HtAttributeBatch, SmallBatchIntoEmptySetAppliesAsOneByOne) {
  std::mt19937 rng(11);
  const char* pool[] = {"a", "b", "ab", "", "z", "xml:space", "B", "a0"};
  for (int round = 0; round < 3000; ++round) {
    size_t n = 1 + rng() % 16;
    std::vector<TBatchItem> items;
    for (size_t i = 0; i < n; ++i)
      items.push_back(TBatchItem{hstring::FromUtf8(pool[rng() % std::size(pool)]),
                                 hstring(std::to_string(rng() % 100)),
                                 rng() % 2 ? THtAttributeBatch::abKeepFirst : THtAttributeBatch::abReplace,
                                 false});
    THtAttributes ref(true), got(true);
    if (round % 3 == 0) { // a set emptied by Clear keeps its spare entries
      got.SetAttribute(u"q"_hs, u"1"_hs);
      got.SetAttribute(u"r"_hs, u"2"_hs);
      got.Clear();
    }
    apply_one_by_one(ref, items);
    THtAttributeBatch batch;
    for (const TBatchItem& it : items)
      batch.Add(it.name, it.value, it.rule, it.keep);
    batch.MoveTo(got);
    ASSERT_EQ(names(got), names(ref)) << "round " << round;
  }
}

// n attributes or keys in random order, each read once: the sort is done once
// per tag, not per attribute. Repeats at the end test the first-wins rule of
// valued attributes, the replace rule of bare ones and the last-wins rule of
// JSON keys.
TEST(HtAttributeBatch, ReadersTakeManyAttributesInOneSort) {
  constexpr int n = 20000;
  std::vector<int> order(n);
  for (int i = 0; i < n; ++i)
    order[static_cast<size_t>(i)] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937(3));
  std::string html = "<p", xml = "<r", json = "{";
  for (int i : order) {
    std::string name = "a" + std::to_string(i);
    html += " " + name + "=" + std::to_string(i);
    xml += " " + name + "=\"" + std::to_string(i) + "\"";
    json += "\"" + name + "\":" + std::to_string(i) + ",";
  }
  html += " a5=x a7>t</p>";
  xml += " a5=\"x\" a7/>";
  json += "\"a5\":\"x\"}";
  auto check = [&](const THtNode& node, const char* what, const char* a5, const char* a7) {
    const THtAttributes* a = node.FAttributes;
    ASSERT_NE(a, nullptr) << what;
    ASSERT_EQ(a->Count, n) << what;
    for (int i = 1; i < a->Count; ++i)
      ASSERT_LT(a->GetName(i - 1).view(), a->GetName(i).view()) << what;
    EXPECT_EQ(a->GetAttribute(u"a5"_hs).toUtf8(), a5) << what;
    EXPECT_EQ(a->GetAttribute(u"a7"_hs).toUtf8(), a7) << what;
    EXPECT_EQ(a->GetAttribute(u"a19999"_hs), u"19999") << what;
  };
  THtmlNode doc;
  doc.Parse(hstring::FromUtf8(html));
  check(*doc.FindNode(u"p"_hs), "html", "5", "a7");
  THtXMLNode x(hstring::FromUtf8(xml));
  check(x, "xml", "5", "a7");
  TItemReaderNode xi;
  xi.SetXML(hstring::FromUtf8(xml));
  check(xi, "xml items", "5", "a7");
  THtXMLNode j;
  j.SetJSON(hstring::FromUtf8(json));
  check(j, "json", "x", "7");
  TItemReaderNode ji;
  ji.SetJSON(hstring::FromUtf8(json));
  check(ji, "json tokens", "x", "7");
}
