#include "htcore/foundation/codepage.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/files.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using namespace ht;

namespace {

class FilesTest : public ::testing::Test {
protected:
  void SetUp() override {
    char tmpl[] = "/tmp/htcore_files_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
  }
  void TearDown() override { std::system(("rm -rf '" + dir_ + "'").c_str()); }

  hstring Path(const char* name) const { return hstring::FromUtf8(dir_ + "/" + name); }
  void Write(const char* name, const std::string& bytes) const {
    std::ofstream(dir_ + "/" + name, std::ios::binary) << bytes;
  }
  std::string Read(const char* name) const {
    std::ifstream in(dir_ + "/" + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  std::string dir_;
};

} // namespace

TEST_F(FilesTest, FileToStrByMark) {
  struct {
    std::string bytes;
    std::u16string text;
  } cases[] = {
      {std::string("\xFF\xFE"
                   "A\0\xAC\x20",
                   6),
       u"A\u20AC"},
      {std::string("\xFE\xFF"
                   "A\0",
                   4),
       u"A"},                            // machine order: not swapped
      {std::string("A\0B\0", 4), u"AB"}, // second byte 00, no mark
      {std::string("A\0B", 3), u"A"},    // odd byte dropped
      {"\xEF\xBB\xBF"
       "gr\xC3\xBC\xC3\x9F",
       u"gr\u00FC\u00DF"},
      {"\xEF\xBBXok", u"ok"}, // the third byte is skipped, whatever it is
      {"\xEF\xBB", u""},
      {"caf\xE9 \x80", u"caf\u00E9 \u20AC"}, // system code page 1252
      {"x", u"x"},
      {"", u""},
  };
  int i = 0;
  for (auto& c : cases) {
    std::string name = "f" + std::to_string(i++);
    Write(name.c_str(), c.bytes);
    EXPECT_EQ(FileToStr(Path(name.c_str())).view(), c.text) << name;
  }
}

TEST_F(FilesTest, RoundTrips) {
  hstring text = u"line 1\r\nZ\u00FC\u20AC\U0001F600";
  StrtoFile(text, Path("u.txt"));
  EXPECT_EQ(Read("u.txt").substr(0, 4), std::string("\xFF\xFE"
                                                    "l\0",
                                                    4));
  EXPECT_EQ(FileToStr(Path("u.txt")), text);
  StrtoFile(u"", Path("empty.txt"));
  EXPECT_EQ(Read("empty.txt"), "\xFF\xFE");
  EXPECT_TRUE(FileToStr(Path("empty.txt")).empty());

  std::string raw("\x00\xFF\r\n\x80", 5);
  StrtoFileR(raw, Path("r.bin"));
  EXPECT_EQ(FileToStrR(Path("r.bin")).view(), raw);
  StrtoFileA("ansi", Path("a.txt"));
  EXPECT_EQ(FileToStrA(Path("a.txt")).view(), "ansi");
  StrtoFileA("x", Path("a.txt")); // replaces
  EXPECT_EQ(Read("a.txt"), "x");
}

TEST_F(FilesTest, MissingFileMessage) {
  std::string name = dir_ + "/missing.txt";
  try {
    FileToStr(hstring::FromUtf8(name));
    FAIL();
  } catch (const EFOpenError& e) {
    EXPECT_EQ(std::string(e.what()), "Cannot open file \"" + name + "\". No such file or directory");
  }
  EXPECT_THROW(FileToStrR(hstring::FromUtf8(name)), EFOpenError);
  EXPECT_THROW(FileToStr(hstring::FromUtf8(dir_)), EFOpenError); // a directory
  try {
    StrtoFile(u"x", hstring::FromUtf8(dir_ + "/no/such/dir.txt"));
    FAIL();
  } catch (const EFOpenError& e) {
    EXPECT_EQ(std::string(e.what()),
              "Cannot create file \"" + dir_ + "/no/such/dir.txt\". No such file or directory");
  }
}
