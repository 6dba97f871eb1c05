#include "foundation/temp_files.h"
#include "htcore/foundation/cached_file_stream.h"
#include "htcore/foundation/stream_types.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

using namespace ht;

namespace {

constexpr int64_t MiB = 0x100000;

// 5 MiB and a bit, with a pattern that differs in every position of every MiB.
class MappedFile : public ::testing::Test {
protected:
  void SetUp() override {
    FData.resize(5 * MiB + 123);
    for (size_t i = 0; i < FData.size(); ++i)
      FData[i] = static_cast<uint8_t>((i * 131) ^ (i >> 8) ^ (i >> 20) * 17);
    FPath = FDir.Path("big.bin");
    TPointerStream(static_cast<const void*>(FData.data()), static_cast<int64_t>(FData.size()))
        .SaveToFile(FPath);
  }

  int64_t Size() const { return static_cast<int64_t>(FData.size()); }
  bool Same(const void* p, int64_t pos, int64_t n) const {
    return std::memcmp(p, FData.data() + pos, n) == 0;
  }

  TempDir FDir;
  std::string FPath;
  TBytes FData;
};

} // namespace

TEST_F(MappedFile, ReadsAcrossViewBoundaries) {
  THtCachedFileStream f(FPath);
  EXPECT_EQ(f.GetSize(), Size());
  EXPECT_TRUE(f.IsMapped());
  EXPECT_EQ(f.ViewBase(), 0);
  EXPECT_EQ(f.ViewLength(), MiB);
  uint8_t buf[64];
  for (int64_t k = 1; k <= 5; ++k) {
    for (int64_t back : {1, 7, 32}) {
      int64_t pos = k * MiB - back;
      f.SetPosition(pos);
      int64_t want = std::min<int64_t>(sizeof buf, Size() - pos);
      ASSERT_EQ(f.Read(buf, sizeof buf), want) << pos;
      EXPECT_TRUE(Same(buf, pos, want)) << pos;
      EXPECT_EQ(f.GetPosition(), pos + want);
    }
  }
  // One read over several views.
  TBytes big(static_cast<size_t>(3 * MiB + 5));
  f.SetPosition(MiB / 2);
  ASSERT_EQ(f.Read(big.data(), static_cast<int64_t>(big.size())), static_cast<int64_t>(big.size()));
  EXPECT_TRUE(Same(big.data(), MiB / 2, static_cast<int64_t>(big.size())));
  // The whole file through the stream, and the short read at the end.
  TMemoryStream all;
  all.LoadFromStream(f);
  ASSERT_EQ(all.Size(), Size());
  EXPECT_TRUE(Same(all.Memory(), 0, Size()));
  f.Seek(-10, soEnd);
  EXPECT_EQ(f.Read(buf, sizeof buf), 10);
  EXPECT_EQ(f.Read(buf, sizeof buf), 0);
  f.SetPosition(Size() + 100);
  EXPECT_EQ(f.Read(buf, sizeof buf), 0);
}

TEST_F(MappedFile, RandomReadsMatchTheFile) {
  THtCachedFileStream f(FPath);
  std::mt19937_64 rng(42);
  TBytes buf(300000);
  for (int i = 0; i < 300; ++i) {
    int64_t pos = static_cast<int64_t>(rng() % static_cast<uint64_t>(Size()));
    int64_t len = static_cast<int64_t>(rng() % (i % 10 == 0 ? buf.size() : 5000));
    f.SetPosition(pos);
    int64_t want = std::min(len, Size() - pos);
    ASSERT_EQ(f.Read(buf.data(), len), want);
    ASSERT_TRUE(Same(buf.data(), pos, want)) << pos << " " << len;
  }
}

TEST_F(MappedFile, GetPointerMovesTheViewWhenNeeded) {
  THtCachedFileStream f(FPath);
  // Inside the first view: no move.
  f.SetPosition(100);
  const uint8_t* p = f.GetPointer(1000);
  ASSERT_NE(p, nullptr);
  EXPECT_TRUE(Same(p, 100, 1000));
  EXPECT_EQ(f.ViewBase(), 0);
  EXPECT_EQ(f.GetPosition(), 100); // GetPointer does not advance

  // Straddling a boundary: the view covers all that was asked.
  f.SetPosition(MiB - 16);
  p = f.GetPointer(2 * MiB);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(f.ViewBase(), 0);
  EXPECT_GE(f.ViewBase() + f.ViewLength(), 3 * MiB - 16);
  EXPECT_TRUE(Same(p, MiB - 16, 2 * MiB));

  // Near the end: the request is cut to the bytes left.
  f.Seek(-10, soEnd);
  p = f.GetPointer(1000);
  ASSERT_NE(p, nullptr);
  EXPECT_TRUE(Same(p, Size() - 10, 10));
  EXPECT_EQ(f.ViewBase(), 5 * MiB);
  EXPECT_EQ(f.ViewLength(), 123);
  f.Seek(0, soEnd);
  EXPECT_EQ(f.GetPointer(1), nullptr);

  // Parsing the whole file from memory in steps that cross every boundary.
  f.SetPosition(0);
  int64_t checked = 0;
  while (const uint8_t* q = f.GetPointer(70000)) {
    int64_t n = std::min<int64_t>(70000, Size() - f.GetPosition());
    ASSERT_TRUE(Same(q, f.GetPosition(), n)) << f.GetPosition();
    f.Seek(n, soCurrent);
    checked += n;
  }
  EXPECT_EQ(checked, Size());
}

TEST_F(MappedFile, ViewGeometry) {
  THtCachedFileStream f(FPath);
  struct {
    int64_t pos, length;
    int64_t base, view_length;
  } cases[] = {
      {0x150000, 10, MiB, MiB},    // base rounded down, at least 1 MiB
      {MiB, 0, MiB, MiB},          // exactly on a boundary
      {0x1FFFFF, 2, MiB, MiB + 1}, // grows to hold the bytes asked for
      {0x180000, 3 * MiB, MiB, 3 * MiB + 0x80000},
      {5 * MiB + 100, 1000, 5 * MiB, 123}, // clipped to the file
      {Size() + 5000, 10, 5 * MiB, 123},   // past the end: the last view
  };
  for (auto& c : cases) {
    f.SetMapViewPos(c.pos, c.length);
    EXPECT_EQ(f.ViewBase(), c.base) << c.pos;
    EXPECT_EQ(f.ViewLength(), c.view_length) << c.pos;
  }
  f.SetViewWindow(3 * MiB);
  EXPECT_EQ(f.ViewBase(), 0);
  EXPECT_EQ(f.ViewLength(), 3 * MiB);
  f.SetMapViewPos(0x150000, 10);
  EXPECT_EQ(f.ViewLength(), 3 * MiB); // the window is the least a view spans
  f.SetViewWindow(10);
  EXPECT_EQ(f.ViewLength(), MiB);

  THtCachedFileStream whole(FPath, 64 * MiB);
  EXPECT_EQ(whole.ViewLength(), Size());
}

TEST(CachedFileStream, EmptyFileMapsNothing) {
  TempDir dir;
  std::string path = dir.Path("empty.bin");
  { TFileStream create(path, fmCreate); }
  THtCachedFileStream f(path);
  EXPECT_EQ(f.GetSize(), 0);
  EXPECT_FALSE(f.IsMapped());
  EXPECT_EQ(f.GetPointer(10), nullptr);
  char c;
  EXPECT_EQ(f.Read(&c, 1), 0);
  f.SetMapViewPos(0, 10);
  EXPECT_FALSE(f.IsMapped());
}

TEST(CachedFileStream, ErrorsAndUnsupportedOperations) {
  TempDir dir;
  std::string missing = dir.Path("missing.bin");
  try {
    THtCachedFileStream f(missing);
    FAIL();
  } catch (const EFOpenError& e) {
    EXPECT_EQ(std::string(e.what()), "Cannot open file \"" + missing + "\". No such file or directory");
  }
  try {
    THtCachedFileStream f(dir.Path(""));
    FAIL();
  } catch (const EStreamError& e) {
    EXPECT_EQ(std::string(e.what()), "Cannot create file mapping for " + dir.Path("") + ". Is a directory");
  }
  std::string path = dir.Path("small.bin");
  TStringStream("abc").SaveToFile(path);
  THtCachedFileStream f(Utf8ToHString(path));
  EXPECT_EQ(f.FileName().toUtf8(), path);
  try {
    f.Write("x", 1);
    FAIL();
  } catch (const EStreamError& e) {
    EXPECT_STREQ(e.what(), "Stream write not supported");
  }
  EXPECT_THROW(f.SetSize(1), EStreamError);
  EXPECT_THROW(f.Seek(-1, soBeginning), EStreamError);
  EXPECT_EQ(f.Seek(-1, soEnd), 2);
}
