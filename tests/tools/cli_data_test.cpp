// The data-document commands of the htcore tool: xml, json and xpath.
#include "cli_run.h"

#include <gtest/gtest.h>
#include <string>

namespace {

std::string example(const char* name) { return quote(std::string(HTCORE_SOURCE_DIR) + "/examples/" + name); }

class CliData : public ::testing::Test {
protected:
  void SetUp() override {
    if (!tool())
      GTEST_SKIP() << "HTCORE_TOOL is not set";
  }
};

} // namespace

TEST_F(CliData, JsonToXmlAndBack) {
  TRun r = run("json toxml " + example("settings.json"));
  ASSERT_EQ(r.Status, 0) << r.Err;
  // Scalars become attributes, objects and arrays children, array items <value>.
  const char* wanted[] = {
      "<?xml version=\"1.0\" encoding=\"UTF-8\"",
      "\n  <server host=\"example.org\" port=\"8080\"/>\n",
      "name=\"Ann &lt;admin&gt;\"",
      "\n    <value>json</value>\n",
  };
  for (const char* w : wanted)
    EXPECT_NE(r.Out.find(w), std::string::npos) << w << "\n" << r.Out;
  EXPECT_EQ(r.Out.find('\r'), std::string::npos);

  std::string xml = "<cfg mode=\"a\"><db name='x\"y'/></cfg>";
  r = run("xml tojson -", &xml);
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out, "{\n\"mode\":\"a\",\"db\":{\n\"name\":\"x\\\"y\"}}\n");
}

TEST_F(CliData, FormatIndentsAndKeepsText) {
  std::string xml = "<?xml version=\"1.0\"?><a><b x=\"1\">t &amp; u</b><c><d/></c></a>";
  TRun r = run("xml format -", &xml);
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_NE(r.Out.find("<a>\n  <b x=\"1\">t &amp; u</b>\n  <c>\n    <d/>\n  </c>\n</a>\n"), std::string::npos)
      << r.Out;
}

TEST_F(CliData, XPathOverHtmlAndXml) {
  TRun r = run("xpath " + example("sample.html") + " '//a/@href' --value");
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out, "https://example.org/a?x=1&y=2\n");

  std::string xml = "<a><b x=\"1\">t</b><b>u</b><b x=\"2\"/></a>";
  r = run("xpath --xml - 'b[@x]'", &xml);
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out, "<b x=\"1\">t</b>\n<b x=\"2\"/>\n");
  r = run("xpath --xml - 'b[1]' --value", &xml);
  EXPECT_EQ(r.Out, "u\n");
  // No match is a failure without a word, as for grep.
  for (const char* args :
       {"xpath --xml - nothing", "xpath --xml - nothing --value", "xpath --xml - //@y --value"}) {
    r = run(args, &xml);
    EXPECT_EQ(r.Status, 1) << args;
    EXPECT_EQ(r.Out, "") << args;
    EXPECT_EQ(r.Err, "") << args;
  }
  // A match with an empty value is a match.
  std::string empty = "<a><b x=\"\"/></a>";
  r = run("xpath --xml - //b/@x --value", &empty);
  EXPECT_EQ(r.Status, 0);
  EXPECT_EQ(r.Out, "\n");
}

TEST_F(CliData, XPathPrintsEachNodeOnceInDocumentOrder) {
  std::string html = "<ul id=1><li>a</li><li>b<ol id=2><li>c</li><li>d</li></ol></li></ul><p>e</p>";
  TRun r = run("xpath - '//li/..'", &html);
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out, "<ul id=\"1\"><li>a</li><li>b<ol id=\"2\"><li>c</li><li>d</li></ol></li></ul>\n"
                   "<ol id=\"2\"><li>c</li><li>d</li></ol>\n");
  // A path that reaches every node many times over: each once, and the
  // output stays the size of the document (it ran out of memory before).
  std::string page = "<html><body>";
  for (int i = 0; i < 300; ++i)
    page += "<div><p>para <b>" + std::to_string(i) + "</b> <i>x</i></p><ul><li>1</li><li>2</li></ul></div>";
  page += "</body></html>";
  r = run("xpath - '//*/..//*/..//*/..'", &page);
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_LT(r.Out.size(), 8 * page.size());
  EXPECT_EQ(r.Out.rfind("<html><body><div>", 0), 0u) << r.Out.substr(0, 80);
}

TEST_F(CliData, MalformedPathsFail) {
  const struct {
    const char* path;
    const char* error;
  } rows[] = {
      {"//a[", "htcore: '[' without ']' in the path: //a[\n"},
      {"[[[", "htcore: '[' without ']' in the path: [[[\n"},
      {"//a]", "htcore: ']' without '[' in the path: //a]\n"},
      {"//a[@x='1]", "htcore: unterminated quote in the path: //a[@x='1]\n"},
      {"//a[1][2]", "htcore: one [condition] per step: 'a[1][2]': //a[1][2]\n"},
      {"//a[1]b", "htcore: text behind ']' in step 'a[1]b': //a[1]b\n"},
      {"//[1]", "htcore: a step without a name in the path: //[1]\n"},
      {"a//", "htcore: a step without a name in the path: a//\n"},
      {"a/", "htcore: the path ends with '/': a/\n"},
      {"/", "htcore: empty path: /\n"},
  };
  std::string html = "<a x='1'>t</a>";
  for (const auto& row : rows) {
    TRun r = run(std::string("xpath - ") + quote(row.path), &html);
    EXPECT_EQ(r.Status, 1) << row.path;
    EXPECT_EQ(r.Out, "") << row.path;
    EXPECT_EQ(r.Err, row.error) << row.path;
  }
  // Quotes and brackets hide '/' and each other.
  for (const char* path : {"//a[@x='/']", "//a[@x=\"]\"]/..", "/./a", "//a[b[1]]/..", "//a/text()"}) {
    TRun r = run(std::string("xpath - ") + quote(path), &html);
    EXPECT_EQ(r.Err, "") << path;
    EXPECT_LE(r.Status, 1) << path;
  }
}

TEST_F(CliData, OutputIsAlwaysAValidDocument) {
  // Control characters in JSON strings are escaped; JSON has no raw form of them.
  std::string xml = "<a x=\"\x01\x1F\">t\x0B</a>";
  TRun r = run("xml tojson -", &xml);
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out, "{\n\"x\":\"\\u0001\\u001F\"}\n");

  // What the tree would drop silently is refused.
  const struct {
    std::string input, error;
  } rows[] = {
      {"<a>1</a><b>2</b>", "htcore: -: not one XML document: a second root element <b>\n"},
      {"<a>1</a>tail", "htcore: -: not one XML document: text after the root element: 'tail'\n"},
      {"lead<a>1</a>", "htcore: -: not one XML document: text before the root element: 'lead'\n"},
      {"<a>1</a></a>", "htcore: -: not one XML document: an end tag </a> outside the root element\n"},
      {"{\"a\": \"<b>\"}", "htcore: -: not one XML document: text before the root element: '{\"a\": \"'\n"},
  };
  for (const auto& row : rows)
    for (const char* cmd : {"xml format -", "xml tojson -", "xpath --xml - a"}) {
      TRun bad = run(cmd, &row.input);
      EXPECT_EQ(bad.Status, 1) << cmd << " " << row.input;
      EXPECT_EQ(bad.Out, "") << cmd;
      EXPECT_EQ(bad.Err, row.error) << cmd;
    }
  // Comments, processing instructions and blanks around the root are fine.
  std::string fine = "<?xml version=\"1.0\"?>\n<!-- c -->\n<!DOCTYPE a>\n<a>1</a>\n<!-- d -->\n";
  r = run("xml format -", &fine);
  EXPECT_EQ(r.Status, 0) << r.Err;

  // The string length cap, named: 25000 levels indent past it.
  std::string deep;
  for (int i = 0; i < 25000; ++i)
    deep += "<a>";
  for (int i = 0; i < 25000; ++i)
    deep += "</a>";
  r = run("xml format -", &deep);
  EXPECT_EQ(r.Status, 1);
  EXPECT_EQ(r.Err, "htcore: -: the indented output of 25000 nested elements passes the string length limit "
                   "of 1073741816 characters\n");
  r = run("xml tojson -", &deep);
  EXPECT_EQ(r.Status, 0) << r.Err;
}

TEST_F(CliData, JsonInUtf16) {
  std::string json = "\xFE\xFF";
  for (char c : std::string("{\"a\":\"b\"}"))
    json += std::string{'\0', c};
  TRun r = run("json toxml -", &json);
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_NE(r.Out.find("a=\"b\""), std::string::npos) << r.Out;
}

TEST_F(CliData, StrictReadersFailWithOneLine) {
  const struct {
    std::string args, input;
    const char* start;
  } rows[] = {
      {"xml format -", "<a><b></a>", "htcore: -: Tag order error"},
      {"json toxml -", "{\"a\":", "htcore: -: "},
      {"json toxml -", "", "htcore: -: JSON is empty"},
      {"xml tojson /nonexistent/x.xml", "", "htcore: cannot open '/nonexistent/x.xml'"},
      {"xpath --bogus a b", "", "htcore: unknown option '--bogus'"},
      {"json fromxml -", "", "htcore: unknown json command 'fromxml'"},
  };
  for (const auto& row : rows) {
    TRun r = run(row.args, &row.input);
    EXPECT_EQ(r.Status, 1) << row.args;
    EXPECT_EQ(r.Out, "") << row.args;
    EXPECT_EQ(lines(r.Err), 1) << r.Err;
    EXPECT_EQ(r.Err.rfind(row.start, 0), 0u) << r.Err;
  }
}
