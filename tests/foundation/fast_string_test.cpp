#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/stream.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace ht;

namespace {

std::string U8(const TFastString& fs) { return fs.GetAsString().toUtf8(); }

int ChunkCount(const TFastString& fs) {
  int n = 0;
  for (auto* k = fs.FirstChunk(); k; k = k->Next)
    ++n;
  return n;
}

// A stream that records what is written, enough for SavetoStream.
class TRecordStream : public TStream {
public:
  std::string bytes;
  int64_t Read(void*, int64_t) override { return 0; }
  int64_t Write(const void* b, int64_t n) override {
    bytes.append(static_cast<const char*>(b), static_cast<size_t>(n));
    return n;
  }
  int64_t Seek(int64_t, TSeekOrigin) override { return static_cast<int64_t>(bytes.size()); }
};

} // namespace

TEST(FastString, AppendsChainAndCount) {
  TFastString fs(16);
  EXPECT_EQ(fs.GetTotalLen(), 0);
  EXPECT_EQ(fs.FirstChunk()->Text, nullptr); // nothing taken before the first append
  fs.Add(u"ab").AddChar(u'c').Add2Char(u'd', u'e').AddSpaces(2).Add(hstring(u"f"));
  fs.Add(u"ghij", 2).Add(u"xyz", 0).Add(u"xyz", -3);
  EXPECT_EQ(U8(fs), "abcde  fgh");
  EXPECT_EQ(fs.GetTotalLen(), 10);
  EXPECT_EQ(fs.LastChar(), u'h');

  TFastString t(8);
  const char16_t buf[8] = u"ab"; // an array longer than its text
  const char16_t* p = u"xyz";
  t.Add(buf).Add(p).Add(u"0123456789abcdefghij").Add(std::u16string(u"klmnopqrstuvwxyz0123456789"));
  EXPECT_EQ(U8(t), "abxyz0123456789abcdefghijklmnopqrstuvwxyz0123456789");
}

TEST(FastString, SmallNumbersAtChunkEnds) {
  // Every free space from 0 to 4 units in front of numbers of 1 to 5 digits.
  for (int pad = 0; pad < 6; ++pad) {
    for (int64_t v : {7, 42, 999, 1000, 9999, 10000, -3, -9999}) {
      TFastString fs(6);
      std::u16string head(static_cast<size_t>(pad), u'.');
      fs.Add(std::u16string_view(head)).Add(v).AddChar(u'|');
      std::string expected = std::string(static_cast<size_t>(pad), '.') + std::to_string(v) + "|";
      EXPECT_EQ(U8(fs), expected) << pad << " " << v;
    }
  }
}

TEST(FastString, TextNeverSplitsAcrossChunks) {
  TFastString fs(4);
  fs.Add(u"abc"); // chunk of 4, one unit left
  fs.Add(u"de");  // does not fit: new chunk, the free unit stays unused
  EXPECT_EQ(ChunkCount(fs), 2);
  EXPECT_EQ(fs.FirstChunk()->Used, 3);
  EXPECT_EQ(fs.FirstChunk()->Capacity, 4);
  fs.Add(u"0123456789"); // longer than ADelta: a chunk of exactly its length
  EXPECT_EQ(ChunkCount(fs), 3);
  EXPECT_EQ(fs.FirstChunk()->Next->Next->Capacity, 10);
  EXPECT_EQ(U8(fs), "abcde0123456789");
  EXPECT_EQ(fs.GetTotalLen(), 15);
}

TEST(FastString, Add2CharAtChunkEnd) {
  TFastString fs(2);
  fs.AddChar(u'a');
  fs.Add2Char(u'b', u'c'); // one unit free is not enough: new chunk
  fs.Add2Char(u'd', u'e');
  EXPECT_EQ(U8(fs), "abcde");
  TFastString tiny(1); // below the documented minimum, still safe
  tiny.Add2Char(u'x', u'y').Add2Char(u'z', u'w');
  EXPECT_EQ(U8(tiny), "xyzw");
}

TEST(FastString, Int64Forms) {
  struct {
    int64_t v;
    const char* text;
  } cases[] = {
      {0, "0"},
      {7, "7"},
      {-7, "-7"},
      {10, "10"},
      {99, "99"},
      {100, "100"},
      {1234567, "1234567"},
      {-1000, "-1000"},
      {4294967295LL, "4294967295"},
      {4294967296LL + 5, "5"}, // low 32 bits below 10: the one-digit shortcut
      {4294967296LL + 42, "42"},
      {4294967296LL + 100, "4294967396"},
      {-(4294967296LL + 5), "-5"},
      {INT64_MAX, "9223372036854775807"},
      {INT64_MIN, "-0"}, // 2^63 has zero low bits: the shortcut applies
  };
  for (auto& c : cases) {
    TFastString fs(64);
    fs.Add(c.v);
    EXPECT_EQ(U8(fs), c.text) << c.v;
  }
  TFastString fs(64);
  fs.Add(5).Add(5u).Add(int16_t{-3}).Add(uint64_t{12});
  EXPECT_EQ(U8(fs), "55-312");
}

TEST(FastString, DoubleFixedForms) {
  struct {
    double v;
    int digits;
    bool zero;
    const char* text;
  } cases[] = {
      {0.5, 2, false, ".5"},
      {0.5, 2, true, "0.5"},
      {2.0, 2, true, "2"},
      {-0.25, 1, true, "-0.2"}, // -2.5 rounds to even
      {-0.25, 1, false, "-.2"},
      {1.5, 2, true, "1.5"},
      {1.25, 2, true, "1.25"},
      {1.005, 2, true, "1"}, // 1.00499999... is within half a place of 1
      {3.14159, 3, true, "3.142"},
      {0.05, 2, true, "0.05"},
      {-12.75, 1, true, "-12.8"},
      {2.5, 0, true, "2"}, // no places: Int64 rounding, ties to even
      {3.5, 0, true, "4"},
      {0.123456789, 9, true, "0.12345679"}, // more than 7: 8 places
      {0.123456789, -1, true, "0.12345679"},
      {100.0, 3, false, "100"},
      {-0.0, 2, true, "0"},
      {0.005, 2, true, "0"}, // 0.5 scaled ties to 0
      {123456.5, 1, true, "123456.5"},
      {1e19, 2, true, "10000000000000000000"}, // beyond Int64: the general formatter
      {-9223372036854775808.0, 2, true, "-9223372036854775808"},
      {1e12 + 0.25, 8, true, "1000000000000.25"},
  };
  for (auto& c : cases) {
    TFastString fs(64);
    fs.Add(c.v, c.digits, c.zero);
    EXPECT_EQ(U8(fs), c.text) << c.v << " digits " << c.digits;
  }
}

TEST(FastString, ToStringFrom) {
  TFastString fs(3);
  fs.Add(u"abc").Add(u"def").Add(u"g");
  hstring s;
  struct {
    int from;
    const char* text;
  } cases[] = {{1, "abcdefg"}, {0, "abcdefg"}, {3, "cdefg"}, {4, "defg"}, {7, "g"}, {8, ""}, {100, ""}};
  for (auto& c : cases) {
    fs.ToStringFrom(s, c.from);
    EXPECT_EQ(s.toUtf8(), c.text) << c.from;
  }
  fs.ToString(s);
  EXPECT_EQ(s, u"abcdefg");
  TFastString empty;
  empty.ToString(s);
  EXPECT_TRUE(s.empty());
}

TEST(FastString, PosOfLooksAtNeighbouringChunksOnly) {
  TFastString fs(2);
  fs.Add(u"ab").Add(u"cd").Add(u"ef").Add(u"gh"); // one chunk each
  ASSERT_EQ(ChunkCount(fs), 4);
  struct {
    const char16_t* what;
    int pos;
  } cases[] = {
      {u"a", 1},
      {u"ab", 1},
      {u"bc", 2},
      {u"cd", 3},
      {u"bcd", 2},
      {u"h", 8},
      {u"fgh", 6},
      {u"x", 0},
      {u"", 0},
      {u"bcde", 0},      // spans three chunks: not found although the
                         // text has it
      {u"abcdefghi", 0}, // longer than the text
  };
  for (auto& c : cases)
    EXPECT_EQ(fs.PosOf(c.what), c.pos) << std::u16string(c.what).size();
  EXPECT_NE(fs.GetAsString().view().find(u"bcde"), std::u16string_view::npos);

  TFastString one(64);
  one.Add(u"hello world");
  EXPECT_EQ(one.PosOf(u"world"), 7);
  EXPECT_EQ(one.PosOf(u"o"), 5);
}

TEST(FastString, StartsAndEndsWith) {
  TFastString fs(4);
  EXPECT_FALSE(fs.StartsWith(u"a"));
  EXPECT_FALSE(fs.EndsWith(u""));
  fs.Add(u"abc").Add(u"defg"); // two chunks: "abc" | "defg"
  EXPECT_TRUE(fs.StartsWith(u"ab"));
  EXPECT_TRUE(fs.StartsWith(u"abcde")); // longer than the head: flat compare
  EXPECT_FALSE(fs.StartsWith(u"abd"));
  EXPECT_TRUE(fs.EndsWith(u"fg"));
  EXPECT_TRUE(fs.EndsWith(u"cdefg")); // longer than the current chunk
  EXPECT_FALSE(fs.EndsWith(u"xabcdefg"));
  EXPECT_FALSE(fs.StartsWith(u"abcdefgh"));
  EXPECT_TRUE(fs.StartsWith(u""));
}

TEST(FastString, PrependGoesInFrontWithoutFreeSpace) {
  TFastString fs(16);
  fs.Add(u"world");
  fs.Prepend(u"hello ");
  EXPECT_EQ(U8(fs), "hello world");
  EXPECT_EQ(fs.GetTotalLen(), 11);
  EXPECT_EQ(fs.FirstChunk()->Capacity, 6); // exactly the prepended text
  fs.AddChar(u'!');                        // still appends behind "world"
  EXPECT_EQ(U8(fs), "hello world!");
  EXPECT_TRUE(fs.StartsWith(u"hello "));
  fs.Prepend(u">");
  EXPECT_EQ(U8(fs), ">hello world!");
  EXPECT_EQ(fs.PosOf(u"o w"), 6);

  TFastString empty(8);
  empty.Prepend(u"x");
  empty.Add(u"yz");
  EXPECT_EQ(U8(empty), "xyz");
}

TEST(FastString, GrabCopiesOrTakesOver) {
  { // one chunk, less than half full: copied, the source keeps its text
    TFastString src(100), dst(100);
    src.Add(u"abc");
    dst.Add(u"12");
    dst.Grab(src);
    EXPECT_EQ(U8(dst), "12abc");
    EXPECT_EQ(U8(src), "abc");
  }
  { // more than half full: the chain moves, the source is left empty
    TFastString src(4), dst(100);
    src.Add(u"abc");
    dst.Add(u"12");
    dst.Grab(src);
    EXPECT_EQ(U8(dst), "12abc");
    EXPECT_EQ(src.GetTotalLen(), 0);
    EXPECT_EQ(U8(src), "");
    dst.Add(u"Z");
    EXPECT_EQ(U8(dst), "12abcZ");
    EXPECT_EQ(dst.GetTotalLen(), 6);
    src.Add(u"again"); // safe after a grab
    EXPECT_EQ(U8(src), "again");
  }
  { // several chunks: all of them move, appending continues in the last one
    TFastString src(2), dst(8);
    src.Add(u"ab").Add(u"cd").Add(u"e");
    dst.Grab(src);
    EXPECT_EQ(U8(dst), "abcde");
    EXPECT_EQ(dst.GetTotalLen(), 5);
    EXPECT_EQ(dst.LastChar(), u'e');
    EXPECT_EQ(dst.PosOf(u"cd"), 3);
    dst.AddChar(u'f');
    EXPECT_EQ(U8(dst), "abcdef");
    EXPECT_EQ(src.GetTotalLen(), 0);
  }
  {
    TFastString src(8), dst(8);
    dst.Add(u"x");
    dst.Grab(src); // empty source: nothing happens
    EXPECT_EQ(U8(dst), "x");
  }
}

TEST(FastString, DeletefromEnd) {
  TFastString fs(4);
  fs.Add(u"abc").Add(u"def");
  fs.DeletefromEnd(1); // within the current chunk
  EXPECT_EQ(U8(fs), "abcde");
  fs.DeletefromEnd(3); // reaches into the sealed chunk
  EXPECT_EQ(U8(fs), "ab");
  EXPECT_EQ(fs.GetTotalLen(), 2);
  fs.AddChar(u'z');
  EXPECT_EQ(U8(fs), "abz");
  fs.DeletefromEnd(0);
  EXPECT_EQ(U8(fs), "abz");
  fs.DeletefromEnd(3);
  EXPECT_EQ(fs.GetTotalLen(), 0);
  EXPECT_EQ(fs.LastChar(), u'\0');
}

TEST(FastString, TrimsWithFallback) {
  {
    TFastString fs(64);
    fs.Add(u"a \t \r\n");
    fs.TrimTrailingBlanks();
    EXPECT_EQ(U8(fs), "a");
  }
  {
    TFastString fs(64);
    fs.Add(u"a\t  ");
    fs.TrimTrailingSpaces(); // the tab stays: only U+0020 in the fast path
    EXPECT_EQ(U8(fs), "a\t");
  }
  {
    TFastString fs(4);
    fs.Add(u"ab\t ").Add(u"  "); // the current chunk holds only spaces
    fs.TrimTrailingSpaces();     // fallback: the general trim takes the tab too
    EXPECT_EQ(U8(fs), "ab");
    fs.AddChar(u'c');
    EXPECT_EQ(U8(fs), "abc");
  }
  {
    TFastString fs(2);
    fs.Add(u"  ").Add(u" \n");
    fs.TrimTrailingBlanks();
    EXPECT_EQ(fs.GetTotalLen(), 0);
  }
}

TEST(FastString, LastCharAcrossEmptyCurrentChunk) {
  TFastString fs(2);
  fs.Add(u"ab").Add(u"cd");
  fs.DeletefromEnd(2); // current chunk now empty
  EXPECT_EQ(fs.LastChar(), u'b');
  EXPECT_TRUE(fs.EndsWith(u"ab"));
}

TEST(FastString, ClearAndLeaveSpace) {
  TFastString fs(4);
  fs.Charset = u"utf-8";
  fs.Add(u"abcd").Add(u"efgh");
  const char16_t* head = fs.FirstChunk()->Text;
  fs.ClearandLeaveSpace();
  EXPECT_EQ(fs.GetTotalLen(), 0);
  EXPECT_EQ(fs.FirstChunk()->Text, head);
  EXPECT_EQ(fs.FirstChunk()->Next, nullptr);
  fs.Add(u"xy");
  EXPECT_EQ(fs.FirstChunk()->Text, head); // refilled in place
  EXPECT_EQ(U8(fs), "xy");
  fs.Clear();
  EXPECT_EQ(fs.FirstChunk()->Text, nullptr);
  EXPECT_EQ(fs.Charset, u"utf-8"); // Clear keeps the slot
}

TEST(FastString, SaveChunkByChunk) {
  TFastString fs(2);
  fs.Add(u"ab").AddChar(0x20AC);
  TRecordStream st;
  fs.SavetoStream(st);
  EXPECT_EQ(st.bytes, std::string("a\0b\0\xAC\x20", 6));
  char16_t buf[3];
  fs.SavetoBuffer(buf);
  EXPECT_EQ(std::u16string(buf, 3), u"ab\u20AC");
}

TEST(FastString, MatchesPlainStringOnRandomAppends) {
  std::mt19937 rng(7);
  for (int delta : {2, 3, 7, 64}) {
    TFastString fs(delta);
    std::u16string ref;
    for (int step = 0; step < 400; ++step) {
      switch (rng() % 5) {
      case 0: {
        char16_t c = static_cast<char16_t>(u'a' + rng() % 26);
        fs.AddChar(c);
        ref += c;
        break;
      }
      case 1: {
        std::u16string piece(rng() % 9, static_cast<char16_t>(u'A' + rng() % 26));
        fs.Add(std::u16string_view(piece));
        ref += piece;
        break;
      }
      case 2: {
        int64_t v = static_cast<int64_t>(rng() % 100000) - 50000;
        fs.Add(v);
        for (char c : std::to_string(v))
          ref += static_cast<char16_t>(c);
        break;
      }
      case 3: {
        int n = static_cast<int>(rng() % 4);
        if (n <= static_cast<int>(ref.size())) {
          fs.DeletefromEnd(n);
          ref.resize(ref.size() - static_cast<size_t>(n));
        }
        break;
      }
      default:
        fs.Add2Char(u'<', u'>');
        ref += u"<>";
      }
      ASSERT_EQ(fs.GetTotalLen(), static_cast<int>(ref.size()));
    }
    EXPECT_EQ(fs.GetAsString().view(), ref);
  }
}

TEST(FastRawString, BytesAndNumbers) {
  TFastRawString rs(4);
  rs.Add("ab").AddChar('c').Add2Char('d', 'e').AddSpaces(1).AddInt(-42).Add(RawByteString("xyz"));
  rs.Add("\x01\x02", 2);
  RawByteString s;
  rs.ToString(s);
  EXPECT_EQ(s.view(), std::string_view("abcde -42xyz\x01\x02", 14));
  EXPECT_EQ(rs.GetTotalLen(), 14);
  EXPECT_TRUE(rs.StartsWith("abc"));
  EXPECT_EQ(rs.PosOf("-42"), 7);
  TBytes b = rs.AsBytes();
  EXPECT_EQ(b.size(), 14u);
  EXPECT_EQ(b[13], 2);
  rs.Clear();
  EXPECT_EQ(rs.GetTotalLen(), 0);
  EXPECT_TRUE(rs.AsBytes().empty());
}

TEST(FastRawString, AddUTF8) {
  struct {
    std::u16string in;
    std::string out;
  } cases[] = {
      {u"plain ascii", "plain ascii"},
      {u"a\u00E9\u20AC", "a\xC3\xA9\xE2\x82\xAC"},
      {u"\U0001F600", "\xF0\x9F\x98\x80"},
      {std::u16string{0xDE00, 0xD83D}, "\xF0\x9F\x98\x80"}, // reversed pair is accepted
      {std::u16string{u'x', 0xD83D}, "x"},                  // lone surrogate at the end dropped
      {std::u16string{0xDE00}, ""},
      {std::u16string{0xD800, u'A'}, "\xF0\x90\x81\x81"}, // the neighbour completes the pair
      {std::u16string(u"ab\0cd", 5), std::string("ab\0cd", 5)},
  };
  for (auto& c : cases) {
    TFastRawString rs(8);
    rs.AddUTF8(c.in);
    UTF8String s;
    rs.ToUTF8String(s);
    EXPECT_EQ(s.view(), c.out);
  }
  TFastRawString rs(4); // reserving three bytes per unit opens a new chunk
  rs.Add("xy");
  rs.AddUTF8(u"\u20AC\u20AC");
  EXPECT_EQ(rs.ToString().view(), "xy\xE2\x82\xAC\xE2\x82\xAC");
  EXPECT_EQ(rs.GetTotalLen(), 8);
}
