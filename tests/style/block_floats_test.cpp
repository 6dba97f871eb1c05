#include "htcore/style/block_floats.h"

#include "htcore/style/style_driver.h"
#include "htcore/style/styled_node.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace ht;

namespace {

std::string dump(const TBlockSide& s) {
  std::string out;
  for (const TBlockSideRec& b : s.Items)
    out += std::to_string(static_cast<int>(b.Top)) + "-" + std::to_string(static_cast<int>(b.Bottom)) + ":" +
           std::to_string(static_cast<int>(b.Offset)) + " ";
  return out;
}

struct TBand {
  float Top, Bottom, Offset;
};

TStyledHTMLNode* by_id(TStyledHTMLNode& doc, const char16_t* id) {
  for (THtNode* n = doc.FirstChild(); n; n = n->NextNode())
    if (n->GetAttribute(u"id"_hs) == id)
      return static_cast<TStyledHTMLNode*>(n);
  return nullptr;
}

// A block laid out by hand: its outer box in its container's inner
// coordinates, its inner width from the style's box numbers.
void place(TStyledHTMLNode* n, TRectF Outer) {
  n->OuterRect = Outer;
  n->CalcNonRelativeProps();
  n->CalcRects();
  n->FindContainer();
}

} // namespace

TEST(BlockSide, BandsStaySortedAndMerge) {
  const struct {
    std::vector<TBand> adds;
    const char* expected;
  } cases[] = {
      {{{0, 10, 5}}, "0-10:5 "},
      {{{10, 20, 5}, {0, 10, 7}}, "0-10:7 10-20:5 "},                  // in front
      {{{0, 10, 5}, {20, 30, 6}}, "0-10:5 20-30:6 "},                  // appended
      {{{0, 10, 5}, {0, 10, 9}}, "0-10:9 "},                           // same span: the larger
      {{{0, 10, 9}, {0, 10, 5}}, "0-10:9 "},                           // ... either way round
      {{{0, 10, 5}, {30, 40, 5}, {15, 20, 8}}, "0-10:5 15-20:8 30-40:5 "}, // into a gap
      {{{0, 20, 9}, {10, 30, 4}}, "0-10:9 10-30:4 "},                  // partial overlap: the newer wins
      {{{10, 30, 4}, {0, 20, 9}}, "0-20:9 20-30:4 "},
      {{{0, 40, 9}, {10, 20, 4}}, "0-10:9 10-20:4 20-40:9 "},          // inside: the old one around it
      {{{0, 10, 1}, {10, 20, 2}, {20, 30, 3}, {5, 25, 7}}, "0-5:1 5-25:7 25-30:3 "}, // covers and cuts
      {{{0, 10, 1}, {10, 20, 2}, {0, 20, 7}}, "0-20:7 "},              // covers both whole
      {{{-5, 10, 3}}, "0-10:3 "},                                      // a negative Top counts as 0
      {{{5, 5, 3}, {8, 2, 3}}, ""},                                    // no height: nothing
  };
  for (const auto& c : cases) {
    TBlockSide s;
    for (const TBand& b : c.adds)
      s.AddBlock(b.Top, b.Bottom, b.Offset, nullptr);
    EXPECT_EQ(dump(s), c.expected) << c.expected;
  }
  TBlockSide s;
  s.AddBlock(20, 30, 1, nullptr);
  s.AddBlock(0, 10, 1, nullptr);
  EXPECT_EQ(s.MaxTop, 20);
  EXPECT_EQ(s.ClearTop(), 30);
  s.Clear();
  EXPECT_TRUE(s.Empty());
  EXPECT_EQ(s.ClearTop(), 0);
}

TEST(BlockSide, MaxOffsetIgnoresTouchingBands) {
  TBlockSide s;
  THtNode a, b;
  s.AddBlock(0, 100, 50, &a);
  s.AddBlock(100, 200, 80, &b);
  EXPECT_EQ(s.MaxOffset(0, 100), 50);    // the next band only touches
  EXPECT_EQ(s.MaxOffset(100, 120), 80);  // the first one only touches
  EXPECT_EQ(s.MaxOffset(90, 110), 80);
  EXPECT_EQ(s.MaxOffsetBlock(90, 110), &b);
  EXPECT_EQ(s.MaxOffset(200, 300), 0);
  EXPECT_EQ(s.MaxOffsetBlock(200, 300), nullptr);
}

TEST(BlockSide, YFindsRoom) {
  TBlockSide s;
  THtNode a, b;
  s.AddBlock(0, 100, 60, &a);
  s.AddBlock(100, 150, 20, &b);
  const struct {
    float top, height, width;
    const THtNode* block;
    float y, available;
  } cases[] = {
      {0, 20, 30, nullptr, 0, 60},     // fits beside the first band
      {0, 20, 50, nullptr, 100, 20},   // too wide for it: beside the second
      {0, 20, 90, nullptr, 150, 0},    // too wide for both: below them
      {0, 20, 200, nullptr, 150, 0},   // wider than the block: below all
      {0, 20, 50, &a, 0, 0},           // a float does not avoid itself
      {160, 20, 90, nullptr, 160, 0},  // below the floats already
  };
  for (const auto& c : cases) {
    float avail = -1;
    EXPECT_EQ(s.Y(c.top, c.height, c.width, c.block, 100, avail), c.y) << c.top << " " << c.width;
    EXPECT_EQ(avail, c.available) << c.top << " " << c.width;
  }
  TBlockSide empty;
  float avail = -1;
  EXPECT_EQ(empty.Y(7, 10, 500, nullptr, 100, avail), 7);
  EXPECT_EQ(avail, 0);
}

// The edge profile of a model that paints unit cells, against the bands.
TEST(BlockSide, RandomBandsMatchACellModel) {
  std::mt19937 rng(20261125);
  constexpr int kHeight = 64;
  for (int round = 0; round < 300; ++round) {
    TBlockSide s;
    struct TCell {
      int offset = -1, top = 0, bottom = 0;
    } cells[kHeight];
    const int adds = 1 + static_cast<int>(rng() % 12);
    for (int k = 0; k < adds; ++k) {
      const int top = static_cast<int>(rng() % kHeight), bottom = top + 1 + static_cast<int>(rng() % 20);
      const int offset = 1 + static_cast<int>(rng() % 50);
      const int b = std::min(bottom, kHeight);
      s.AddBlock(static_cast<float>(top), static_cast<float>(b), static_cast<float>(offset), nullptr);
      // The first band reaching beyond top decides: the same span merges by the larger offset.
      int first = -1;
      for (int y = top; y < kHeight && first < 0; ++y)
        if (cells[y].offset >= 0)
          first = y;
      if (first >= 0 && cells[first].top == top && cells[first].bottom == b) {
        for (int y = top; y < b; ++y)
          cells[y].offset = std::max(cells[y].offset, offset);
        continue;
      }
      if (top > 0 && cells[top - 1].offset >= 0 && cells[top - 1].bottom > top)
        for (int y = cells[top - 1].top; y < top; ++y)
          cells[y].bottom = top;
      if (b < kHeight && cells[b].offset >= 0 && cells[b].top < b)
        for (int y = b; y < cells[b].bottom; ++y)
          cells[y].top = b;
      for (int y = top; y < b; ++y)
        cells[y] = TCell{offset, top, b};
    }
    std::vector<TBlockSideRec> model;
    for (int y = 0; y < kHeight; ++y)
      if (cells[y].offset >= 0 && cells[y].top == y)
        model.push_back({static_cast<float>(y), static_cast<float>(cells[y].bottom),
                         static_cast<float>(cells[y].offset), nullptr});
    ASSERT_EQ(s.Items.size(), model.size()) << "round " << round << ": " << dump(s);
    for (size_t i = 0; i < model.size(); ++i) {
      EXPECT_EQ(s.Items[i].Top, model[i].Top) << round;
      EXPECT_EQ(s.Items[i].Bottom, model[i].Bottom) << round;
      EXPECT_EQ(s.Items[i].Offset, model[i].Offset) << round;
      EXPECT_LT(s.Items[i].Top, s.Items[i].Bottom);
      if (i) {
        EXPECT_LE(s.Items[i - 1].Bottom, s.Items[i].Top);
      }
    }
  }
}

class BlockFloats : public ::testing::Test {
protected:
  void Load(const char16_t* Html) {
    doc.Parse(hstring(Html));
    driver = std::make_unique<TStyleDriver>(&doc);
    driver->Run();
  }
  TStyledHTMLNode doc;
  std::unique_ptr<TStyleDriver> driver;
};

TEST_F(BlockFloats, FloatInPlainDivPushesTheParentsText) {
  Load(u"<body><div id=outer style='padding: 10px'><div id=inner style='margin-left: 5px'>"
       u"<span id=f style='float: left'>x</span></div><p id=after>text</p></div>"
       u"<div id=hidden style='overflow: hidden'><span id=g style='float: right'>y</span></div></body>");
  TStyledHTMLNode* body = static_cast<TStyledHTMLNode*>(doc.FindNode(u"body"_hs));
  TStyledHTMLNode *outer = by_id(doc, u"outer"), *inner = by_id(doc, u"inner"), *f = by_id(doc, u"f");
  place(body, {0, 0, 500, 1000});
  place(outer, {0, 0, 500, 300});         // inner width 480, content at 10, 10
  place(inner, {0, 0, 480, 20});          // margin 5: inner box from 5 to 480
  place(f, {0, 0, 100, 50});              // taller than its block
  ASSERT_EQ(inner->Container, outer);
  inner->GetFloatMap()->AddBlock(f, true);
  EXPECT_EQ(inner->GetLeft(0, 10), 100);
  EXPECT_EQ(inner->GetRight(0, 10), 0);
  EXPECT_EQ(inner->GetLeftClearTop(), 50);
  // In outer's coordinates the band starts after inner's margin.
  ASSERT_TRUE(outer->FFloatMap);
  EXPECT_EQ(outer->GetLeft(30, 40), 105);
  EXPECT_EQ(outer->GetLeftClearTop(), 50);
  // The paragraph after the inner div starts at 20 and meets the float there.
  float l, r;
  EXPECT_EQ(outer->FFloatMap->Y(20, 16, 300, nullptr, l, r), 20);
  EXPECT_EQ(l, 105);
  EXPECT_EQ(outer->FFloatMap->Y(20, 16, 400, nullptr, l, r), 50); // too wide beside it
  EXPECT_EQ(l, 0);
  EXPECT_TRUE(outer->HasFlag(efHasFloatElements));
  // outer is a plain block too: body gets the band, and keeps it, being a context.
  EXPECT_EQ(body->GetLeft(20, 30), 115);
  TStyledHTMLNode* html = static_cast<TStyledHTMLNode*>(doc.FindNode(u"html"_hs));
  EXPECT_TRUE(!html || !html->FFloatMap);

  // A block of its own under overflow: hidden keeps the float.
  TStyledHTMLNode *hidden = by_id(doc, u"hidden"), *g = by_id(doc, u"g");
  place(hidden, {0, 300, 500, 340});
  place(g, {400, 0, 500, 30});
  hidden->GetFloatMap()->AddBlock(g, true);
  EXPECT_EQ(hidden->GetRight(0, 10), 100);
  EXPECT_TRUE(TBlockFloats::FormsContext(hidden));
  EXPECT_FALSE(TBlockFloats::FormsContext(inner));
  EXPECT_EQ(body->GetRightClearTop(), 0);
}

TEST_F(BlockFloats, PlacementBetweenBothSides) {
  Load(u"<div id=b style='overflow: auto'><i id=l style='float:left'>a</i><i id=l2 style='float:left'>b</i>"
       u"<i id=r style='float:right'>c</i><i id=z style='float:left'>d</i><i id=n>e</i></div>");
  TStyledHTMLNode *b = by_id(doc, u"b"), *l = by_id(doc, u"l"), *l2 = by_id(doc, u"l2"), *r = by_id(doc, u"r");
  place(b, {0, 0, 400, 500});
  place(l, {0, 0, 150, 40});
  place(l2, {0, 40, 50, 80});
  place(r, {300, 0, 400, 60});
  TBlockFloats* m = b->GetFloatMap();
  m->AddBlock(l, true);
  m->AddBlock(l2, true);
  m->AddBlock(r, true);
  TStyledHTMLNode* z = by_id(doc, u"z");
  place(z, {0, 0, 100, 0}); // zero height: nothing
  m->AddBlock(z, true);
  TStyledHTMLNode* n = by_id(doc, u"n");
  place(n, {0, 0, 100, 100}); // not a float: nothing
  m->AddBlock(n, true);
  EXPECT_EQ(m->Left.Items.size(), 2u);
  EXPECT_EQ(m->MaxTop(), 80);
  EXPECT_EQ(m->MaxWidth(0, 10), 150);
  EXPECT_EQ(m->MaxWidth(45, 55), 250);
  const struct {
    float top, height, width, y, l, r;
  } cases[] = {
      {0, 10, 150, 0, 150, 100},   // exactly the room between them
      {0, 10, 151, 40, 50, 100},   // below the wide left float
      {0, 10, 260, 60, 50, 0},     // below the right one too
      {0, 30, 200, 40, 50, 100},   // a tall box meets both bands below 40 and fits
      {45, 30, 260, 60, 50, 0},    // ... or not, until the right float ends
      {0, 10, 360, 80, 0, 0},      // wider than any room beside a float
      {0, 10, 401, 80, 0, 0},      // wider than the block: below all floats
      {90, 10, 401, 90, 0, 0},     // already below them
  };
  for (const auto& c : cases) {
    float lo = -1, ro = -1;
    EXPECT_EQ(m->Y(c.top, c.height, c.width, nullptr, lo, ro), c.y) << c.width;
    EXPECT_EQ(lo, c.l) << c.width;
    EXPECT_EQ(ro, c.r) << c.width;
  }
}

TEST_F(BlockFloats, RelativeFloatMovesAndChildCopiesTheContainersBands) {
  Load(u"<div id=b style='overflow: hidden'><i id=f style='float:left; position: relative; left: 10px; top: 5px'>"
       u"a</i><div id=c style='margin-left: 20px'>x</div></div>");
  TStyledHTMLNode *b = by_id(doc, u"b"), *f = by_id(doc, u"f"), *c = by_id(doc, u"c");
  place(b, {0, 0, 300, 200});
  place(f, {0, 0, 100, 50});
  b->GetFloatMap()->AddBlock(f, true);
  EXPECT_EQ(dump(b->FFloatMap->Left), "5-55:110 ");
  place(c, {0, 30, 300, 60});
  c->GetFloatMap()->AddContainerFloats();
  EXPECT_EQ(dump(c->FFloatMap->Left), "0-25:90 ");
  b->GetFloatMap()->AddBlock(f, false);
  EXPECT_EQ(dump(b->FFloatMap->Left), "0-50:100 50-55:110 "); // the newer band wins where they overlap
}

TEST(BlockFloatsBadInput, NonFiniteBandsAreDropped) {
  TBlockSide s;
  s.AddBlock(0, std::numeric_limits<float>::infinity(), 5, nullptr);
  s.AddBlock(std::numeric_limits<float>::quiet_NaN(), 10, 5, nullptr);
  s.AddBlock(0, 10, std::numeric_limits<float>::quiet_NaN(), nullptr);
  EXPECT_TRUE(s.Empty());
  // Many thin bands: the search stays bounded.
  TStyledHTMLNode doc;
  doc.Parse(u"<div>x</div>"_hs);
  TBlockFloats m(&doc);
  doc.InnerWidth = 100;
  for (int i = 0; i < 10000; ++i)
    m.Left.AddBlock(static_cast<float>(i), static_cast<float>(i + 1), 90, nullptr);
  float l, r;
  EXPECT_EQ(m.Y(0, 1, 50, nullptr, l, r), 10000); // the search gives up past 3000 and goes below all
}
