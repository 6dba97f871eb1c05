#include "foundation/temp_files.h"
#include "htcore/foundation/stream_types.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>
#include <unistd.h>

using namespace ht;

namespace {

std::string ReadAll(TStream& s) {
  s.SetPosition(0);
  std::string out(static_cast<size_t>(s.GetSize()), '\0');
  s.ReadBuffer(out.data(), static_cast<int64_t>(out.size()));
  return out;
}

// The same script of writes, seeks and reads on any growable stream.
template <class Stream> void CheckGrowable() {
  Stream s;
  EXPECT_EQ(s.GetSize(), 0);
  EXPECT_EQ(s.Write("hello", 5), 5);
  EXPECT_EQ(s.GetPosition(), 5);
  EXPECT_EQ(s.Seek(-3, soCurrent), 2);
  EXPECT_EQ(s.Write("LLOX", 4), 4); // overwrite and extend
  EXPECT_EQ(ReadAll(s), "heLLOX");
  // Writing past the end leaves zeros in the gap.
  s.Seek(3, soEnd);
  s.WriteBuffer("!", 1);
  EXPECT_EQ(ReadAll(s), std::string("heLLOX\0\0\0!", 10));
  // Growing zero-fills; shrinking pulls the position back.
  s.SetSize(12);
  EXPECT_EQ(ReadAll(s), std::string("heLLOX\0\0\0!\0\0", 12));
  s.SetPosition(11);
  s.SetSize(4);
  EXPECT_EQ(s.GetPosition(), 4);
  EXPECT_EQ(ReadAll(s), "heLL");
  // Reads stop at the end; past it they give nothing.
  char buf[8];
  s.SetPosition(2);
  EXPECT_EQ(s.Read(buf, 8), 2);
  s.SetPosition(100);
  EXPECT_EQ(s.Read(buf, 8), 0);
  s.SetPosition(2);
  EXPECT_THROW(s.ReadBuffer(buf, 3), EReadError);
  try {
    s.Seek(-5, soCurrent);
    FAIL();
  } catch (const EStreamError& e) {
    EXPECT_STREQ(e.what(), "Invalid stream position");
  }
  EXPECT_THROW(s.SetSize(-1), EStreamError);
}

} // namespace

TEST(MemoryStreams, WriteSeekReadScript) {
  CheckGrowable<TMemoryStream>();
  CheckGrowable<TBytesStream>();
  CheckGrowable<TStringStream>();
}

TEST(MemoryStreams, MemoryStreamGrowsAndClears) {
  TMemoryStream m;
  EXPECT_EQ(m.Memory(), nullptr);
  std::string big(100000, 'x');
  for (int i = 0; i < 10; ++i)
    m.WriteBuffer(big.data(), static_cast<int64_t>(big.size()));
  EXPECT_EQ(m.Size(), 1000000);
  EXPECT_GE(m.Capacity(), m.Size());
  EXPECT_EQ(static_cast<char*>(m.Memory())[999999], 'x');
  m.SetCapacity(10); // never below the size
  EXPECT_GE(m.Capacity(), m.Size());
  m.Clear();
  EXPECT_EQ(m.Size(), 0);
  EXPECT_EQ(m.GetPosition(), 0);
  EXPECT_EQ(m.Memory(), nullptr);
}

TEST(MemoryStreams, BytesStreamKeepsExactBytes) {
  TBytesStream b(TBytes{1, 2, 3});
  EXPECT_EQ(b.GetSize(), 3);
  EXPECT_EQ(b.GetPosition(), 0);
  b.Seek(0, soEnd);
  b.WriteBuffer("\x04", 1);
  EXPECT_EQ(b.Bytes(), (TBytes{1, 2, 3, 4}));
  TBytes taken = b.TakeBytes();
  EXPECT_EQ(taken.size(), 4u);
  EXPECT_EQ(b.GetSize(), 0);
  EXPECT_TRUE(b.Bytes().empty());

  TStringStream s("abc");
  s.Seek(0, soEnd);
  s.WriteBuffer("de", 2);
  EXPECT_EQ(s.DataString(), "abcde");
}

TEST(MemoryStreams, LoadAndCopyTakeTheWholeSource) {
  TStringStream src("0123456789");
  src.SetPosition(7);
  TMemoryStream m;
  m.LoadFromStream(src);
  EXPECT_EQ(m.GetPosition(), 0);
  EXPECT_EQ(ReadAll(m), "0123456789");

  TBytesStream dst;
  src.SetPosition(3);
  EXPECT_EQ(dst.CopyFrom(src, 4), 4);  // from the position
  EXPECT_EQ(dst.CopyFrom(src, 0), 10); // 0: everything from the start
  EXPECT_EQ(ReadAll(dst), "34560123456789");
  src.SetPosition(8);
  EXPECT_THROW(dst.CopyFrom(src, 5), EReadError);
}

TEST(PointerStream, WritesStayInsideTheArea) {
  char area[12];
  std::memset(area, '.', sizeof area);
  {
    TPointerStream p(area + 2, 8);
    EXPECT_EQ(p.GetSize(), 8);
    EXPECT_EQ(p.Write("ABCDEFGHIJ", 10), 8);
    EXPECT_EQ(p.Write("K", 1), 0);
    p.SetPosition(6);
    EXPECT_THROW(p.WriteBuffer("xyz", 3), EWriteError);
    EXPECT_THROW(p.SetSize(20), EStreamError);
    char buf[4];
    p.SetPosition(1);
    EXPECT_EQ(p.Read(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "BCDE");
  }
  // The stream freed nothing and touched nothing outside.
  EXPECT_EQ(std::string(area, 12), "..ABCDEFxy..");

  const char fixed[] = "const";
  TPointerStream ro(static_cast<const void*>(fixed), 5);
  EXPECT_EQ(ro.Write("X", 1), 0);
  EXPECT_EQ(ReadAll(ro), "const");
}

TEST(FileStream, CreateWriteReopenRead) {
  TempDir dir;
  std::string path = dir.Path("a.bin");
  {
    TFileStream f(path, fmCreate);
    f.WriteBuffer("hello world", 11);
    EXPECT_EQ(f.GetSize(), 11);
    f.SetSize(5);
    EXPECT_EQ(f.GetPosition(), 5);
  }
  {
    TFileStream f(path, fmOpenRead | fmShareDenyNone);
    EXPECT_EQ(ReadAll(f), "hello");
    EXPECT_EQ(f.Write("x", 1), 0); // read-only handle
  }
  {
    TFileStream f(path, fmOpenReadWrite | fmShareExclusive);
    f.Seek(0, soEnd);
    f.WriteBuffer("!", 1);
  }
  {
    TFileStream f(path, fmOpenWrite);
    char c;
    EXPECT_EQ(f.Read(&c, 1), 0); // write-only handle
    f.WriteBuffer("J", 1);
  }
  TMemoryStream m;
  m.LoadFromFile(path);
  EXPECT_EQ(ReadAll(m), "Jello!");
  // fmCreate truncates an existing file.
  { TFileStream f(path, fmCreate | fmShareDenyWrite); }
  TFileStream f(path, fmOpenRead);
  EXPECT_EQ(f.GetSize(), 0);
}

TEST(FileStream, Utf16NamesAndSaveToFile) {
  TempDir dir;
  hstring name = Utf8ToHString(dir.Path("gr\xC3\xBC\xC3\x9F"
                                        "e \xE2\x82\xAC.txt"));
  TStringStream s("content");
  s.SaveToFile(name);
  EXPECT_TRUE(std::filesystem::exists(name.toUtf8()));
  TFileStream f(name, fmOpenRead);
  EXPECT_EQ(ReadAll(f), "content");
  EXPECT_EQ(f.FileName(), name);
}

TEST(FileStream, ErrorsNameTheFileAndTheCause) {
  TempDir dir;
  struct {
    std::string path;
    uint16_t mode;
    std::string message;
  } cases[] = {
      {dir.Path("missing.bin"), fmOpenRead,
       "Cannot open file \"" + dir.Path("missing.bin") + "\". No such file or directory"},
      {dir.Path("no/such/dir.bin"), fmCreate,
       "Cannot create file \"" + dir.Path("no/such/dir.bin") + "\". No such file or directory"},
      {dir.Path(""), fmOpenRead, "Cannot open file \"" + dir.Path("") + "\". Is a directory"},
      {dir.Path(""), fmOpenReadWrite, "Cannot open file \"" + dir.Path("") + "\". Is a directory"},
  };
  for (auto& c : cases) {
    try {
      TFileStream f(c.path, c.mode);
      ADD_FAILURE() << c.path;
    } catch (const EFOpenError& e) {
      EXPECT_EQ(std::string(e.what()), c.message);
    }
  }
  TMemoryStream m;
  EXPECT_THROW(m.LoadFromFile(dir.Path("missing.bin")), EFOpenError);
}
