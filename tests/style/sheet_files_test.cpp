#include "htcore/style/sheet_files.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(SheetFiles, LocalLoaderReadsFilesAndSkipsTheRest) {
  std::string path = testing::TempDir() + "sheet_files_test.css";
  FILE* f = std::fopen(path.c_str(), "wb");
  ASSERT_NE(f, nullptr);
  std::fputs("p { content: \"\xC3\xA9\" }", f);
  std::fclose(f);
  EXPECT_EQ(ht::HtLocalSheetLoader(ht::hstring::FromUtf8(path)), u"p { content: \"\u00e9\" }");
  std::remove(path.c_str());
  // Gone, empty, or with a scheme: an empty sheet, not an error.
  EXPECT_TRUE(ht::HtLocalSheetLoader(ht::hstring::FromUtf8(path)).empty());
  EXPECT_TRUE(ht::HtLocalSheetLoader(ht::hstring()).empty());
  EXPECT_TRUE(ht::HtLocalSheetLoader(u"http://example.org/a.css").empty());
}

} // namespace
