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
  r = run("xpath --xml - nothing", &xml);
  EXPECT_EQ(r.Status, 0);
  EXPECT_EQ(r.Out, "");
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
