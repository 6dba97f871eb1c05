#include "htcore/document/doctype.h"

#include <gtest/gtest.h>

namespace {

TEST(Doctype, QuirksFromTheHeadOfThePage) {
  struct {
    const char* bytes;
    bool quirks;
  } cases[] = {
      {"<p>no doctype", true},
      {"<!DOCTYPE html><p>", false},
      {"<!doctype HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">", true},
      {"<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\" "
       "\"http://www.w3.org/TR/html4/loose.dtd\">",
       false},
      {"<!DOCTYPE HTML PUBLIC \"-//IETF//DTD HTML 2.0//EN\">", true},
      {"<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Frameset//EN\"", true}, // cut before '>'
      {"", true},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ht::HtDoctypeQuirks(c.bytes), c.quirks) << c.bytes;
  // Only the first 2 KiB count: a doctype further down is not seen.
  std::string late(3000, ' ');
  late += "<!DOCTYPE html>";
  EXPECT_TRUE(ht::HtDoctypeQuirks(late));
}

} // namespace
