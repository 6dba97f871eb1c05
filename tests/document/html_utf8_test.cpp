// The UTF-8 reader decodes a window at a time; whatever the window, its items
// and trees must be those of the parser over the whole decoded text.
#include "htcore/document/html_node.h"
#include "htcore/document/html_parser.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

using namespace ht;
using namespace std::string_literals;

namespace {

// Every field a consumer of items reads, offsets included.
std::string items(THtmlParser& hp) {
  hp.IgnoreMetaEncoding = true;
  std::string out;
  for (int guard = 0; guard < 100000; ++guard) {
    bool more = hp.NextItem();
    out += std::to_string(hp.TagType) + (hp.IsCloseTag ? "/" : "") + (hp.TagClosed ? "." : "") + hp.Tag.toUtf8() +
           "@" + std::to_string(hp.StartPos) + ":" + std::to_string(hp.Tokenizer.Offset());
    if (hp.TagType != htIdent)
      out += "'" + hp.Value.toUtf8() + "'";
    if (hp.Attributes)
      for (int i = 0; i < hp.Attributes->Count; ++i)
        out += " " + hp.Attributes->GetName(i).toUtf8() + "=" + hp.Attributes->GetValue(i).toUtf8();
    out += "\n";
    if (!more)
      break;
  }
  return out;
}

void dump(const THtNode* n, std::string& out, int depth) {
  out += std::string(static_cast<size_t>(depth), ' ') + std::to_string(n->TagType) + n->FTag.toUtf8() + "'" +
         n->FContent.toUtf8() + "'";
  if (n->FAttributes)
    for (int i = 0; i < n->FAttributes->Count; ++i)
      out += " " + n->FAttributes->GetName(i).toUtf8() + "=" + n->FAttributes->GetValue(i).toUtf8();
  out += "\n";
  for (int i = 0; i < n->GetCount(); ++i)
    dump(n->GetNode(i), out, depth + 1);
}

std::string tree_from_text(const std::string& bytes) {
  THtmlNode doc;
  doc.Parse(Utf8ToHString(bytes), true);
  std::string out;
  dump(&doc, out, 0);
  return out;
}

// The tree ParseBytes builds from UTF-8, with a window of the given size.
std::string tree_from_bytes(const std::string& bytes, size_t window) {
  THtmlNode doc;
  {
    TNodePoolScope pool;
    THtmlParser hp(bytes, window);
    hp.IgnoreMetaEncoding = true;
    hp.Root = &doc;
    hp.GlobalRoot = &doc;
    doc.InternalParse(hp);
    if (!doc.FindNode(u"body") && !doc.FindNode(u"html")) {
      doc.SetTag(u"body");
      doc.TagType = htIdent;
    }
  }
  std::string out;
  dump(&doc, out, 0);
  return out;
}

// Hand-made hostile pieces: each is cut by windows of every small size.
const std::string kPieces[] = {
    "<p class=\"a\">x &amp; y &lt;z&gt; &nbsp &quot;q&quot; &#65;&#x42;&#X41; &unknown; &am"s,
    "text with \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 and broken \xC3 \xE2\x82 \xF0\x9F\x98 \x80\xBF \xFF\xFE bytes"s,
    "a\r\nb\rc\nd\0e<b\0c>f\0</b>"s,
    "<script type=\"x\"> if (a < b && c > d) { s = '</scr' + 'ipt>'; } </SCRIPT ><p>after"s,
    "<style><!-- p { color: red } --> <!-- q --></style><textarea><b>raw?</b></textarea>"s,
    "<script/ x><!-- hidden --></script><script <p>odd</script>"s,
    "<!-- comment -- with --> <!---->< !-- no --> <![CDATA[ a ]]> b ]]]> <!DOCTYPE html [ <!x> ]> <?pi x?>"s,
    "<div <p>a</div</p><a href=a/b.html title='t\"x'>l</a><img src=x/>"s,
    "<table><td>1<td>2<p>3</table><ul><li>a<li>b</ul><dl><dt>t<dd>d</dl>"s,
    "&\xC3\xA9t\xC3\xA9; &\xF0\x9F\x98\x80x; &#128512; &#xD800; &#1114112;"s,
    "<meta charset=\"windows-1251\"><p>\xD0\xBF\xD1\x80\xD0\xB8</p>"s,
    "<b><i>misnested</b></i><font><center>x</font></center></em></div>"s,
    "<p a=1 a=2 b b=3 c = 4 d=e=f/g {{X}}=Y>t</p>"s,
    "\xEF\xBB\xBF<p>second BOM</p>"s,
    "unclosed <!-- comment &amp"s,
    "<script>never closed &amp; <p>"s,
};

TEST(HtmlUtf8, WindowedItemsEqualDecodedItems) {
  for (const std::string& base : kPieces) {
    for (const std::string& bytes : {base, "<p>lead " + base + " tail</p>" + base}) {
      THtmlParser whole(Utf8ToHString(bytes), false);
      const std::string expected = items(whole);
      for (size_t window : {1, 2, 3, 5, 7, 13, 64, 1000}) {
        THtmlParser windowed(bytes, window);
        ASSERT_EQ(items(windowed), expected) << "window " << window << " input " << bytes;
      }
    }
  }
}

TEST(HtmlUtf8, WindowedTreeEqualsDecodedTree) {
  std::string all;
  for (const std::string& piece : kPieces)
    all += piece;
  for (const std::string& bytes : {all, all + all + all}) {
    const std::string expected = tree_from_text(bytes);
    for (size_t window : {1, 4, 9, 33, 100, 4096})
      EXPECT_EQ(tree_from_bytes(bytes, window), expected) << "window " << window;
  }
}

// Large items far beyond the default window: a long script, a long text, a
// long value and a comment that never ends (valid UTF-8, so that ParseBytes
// takes it for UTF-8 too).
TEST(HtmlUtf8, LongItemsAcrossDefaultWindows) {
  std::string script = "<script>" + std::string(150000, 'x') + "</script>";
  std::string text(100000, 'y');
  for (size_t i = 0; i < text.size(); i += 997)
    text.replace(i, 7, "&amp;\xC3\xA9");
  std::string bytes = "<p>" + script + text + "<p a=\"" + std::string(70000, 'v') + "\">" + "<!--" +
                      std::string(80000, '-') + "<p>end";
  EXPECT_EQ(tree_from_bytes(bytes, 64 * 1024), tree_from_text(bytes));
  THtmlNode doc;
  doc.ParseBytes(bytes.data(), bytes.size());
  std::string out;
  dump(&doc, out, 0);
  EXPECT_EQ(out, tree_from_text(bytes));
}

// ParseBytes takes the window reader for UTF-8 and the text parser otherwise.
TEST(HtmlUtf8, ParseBytesEntries) {
  struct {
    std::string bytes;
    std::string text; // the same input as the text parser is given it
  } cases[] = {
      {"\xEF\xBB\xBF<p>\xC3\xA9</p>", "<p>\xC3\xA9</p>"},
      {"\xEF\xBB\xBF\xEF\xBB\xBF<p>x</p>", "\xEF\xBB\xBF<p>x</p>"},
      {"<p>\xC3\xA9t\xC3\xA9 <b>caf\xC3\xA9</b>", "<p>\xC3\xA9t\xC3\xA9 <b>caf\xC3\xA9</b>"},
      {"\xD0\xBF\xC2\xBB\xD1\x97<p>\xD0\xBF</p>", "\xD0\xBF\xC2\xBB\xD1\x97<p>\xD0\xBF</p>"},
      {"<meta charset=utf-8><p>\xC3\xA9</p>", "<meta charset=utf-8><p>\xC3\xA9</p>"},
  };
  for (const auto& c : cases) {
    THtmlNode doc;
    doc.ParseBytes(c.bytes.data(), c.bytes.size());
    std::string out;
    dump(&doc, out, 0);
    EXPECT_EQ(out, tree_from_text(c.text)) << c.bytes;
  }
}

// Real documents, named one per line in the file HTCORE_HTML_FILES
// (scripts/html_utf8_sameness.sh collects them); skipped without it.
TEST(HtmlUtf8, RealFilesFromList) {
  const char* list = std::getenv("HTCORE_HTML_FILES");
  if (!list)
    GTEST_SKIP() << "HTCORE_HTML_FILES not set";
  std::ifstream names(list);
  int compared = 0;
  for (std::string name; std::getline(names, name);) {
    std::ifstream f(name, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    if (bytes.starts_with("\xD0\xBF\xC2\xBB\xD1\x97"))
      continue; // recoded as a whole by the text parser; ParseBytes gives it that one
    THtmlParser whole(Utf8ToHString(bytes), false);
    const std::string expected = items(whole);
    for (size_t window : {size_t{61}, size_t{64 * 1024}}) {
      THtmlParser windowed(bytes, window);
      EXPECT_TRUE(items(windowed) == expected) << name << " window " << window;
    }
    EXPECT_TRUE(tree_from_bytes(bytes, 64 * 1024) == tree_from_text(bytes)) << name;
    ++compared;
  }
  std::printf("%d files compared\n", compared);
}

} // namespace
