// The tool's help, version and output failures, for every command in its table.
#include "cli_run.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

class CliHelp : public ::testing::Test {
protected:
  void SetUp() override {
    if (!tool())
      GTEST_SKIP() << "HTCORE_TOOL is not set";
  }
};

struct TRow {
  std::string Usage; // as listed: "xml text FILE|-"
  size_t Column;     // where its summary starts
};

// The rows of the command table in `htcore --help`; a usage too long for the
// column has its summary on the next line.
std::vector<TRow> table(const std::string& help) {
  std::vector<TRow> rows;
  size_t at = help.find("\ncommands:\n");
  if (at == std::string::npos)
    return rows;
  std::string body = help.substr(at + 11);
  size_t start = 0;
  while (start < body.size()) {
    size_t end = body.find('\n', start);
    std::string line = body.substr(start, end - start);
    start = end + 1;
    if (line.size() < 3 || line[2] == ' ') {
      if (!rows.empty() && rows.back().Column == 0)
        rows.back().Column = line.find_first_not_of(' ');
      continue;
    }
    size_t gap = line.find("  ", 2);
    rows.push_back({line.substr(2, gap == std::string::npos ? std::string::npos : gap - 2),
                    gap == std::string::npos ? 0 : line.find_first_not_of(' ', gap)});
  }
  return rows;
}

// The command words of a usage: "xml text FILE|-" gives "xml text",
// "json toxml FILE|-" gives "json toxml" (an argument the group reads).
std::string words(const std::string& usage) {
  std::string out;
  size_t start = 0;
  while (start < usage.size()) {
    size_t end = usage.find(' ', start);
    std::string w = usage.substr(start, end == std::string::npos ? std::string::npos : end - start);
    if (w.empty() || w.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") != std::string::npos || w[0] == '-')
      break;
    out += (out.empty() ? "" : " ") + w;
    if (end == std::string::npos)
      break;
    start = end + 1;
  }
  return out;
}

} // namespace

TEST_F(CliHelp, TopLevelHelpListsAnAlignedTable) {
  for (const char* form : {"--help", "-h", "help"}) {
    TRun r = run(form);
    ASSERT_EQ(r.Status, 0) << form << r.Err;
    EXPECT_EQ(r.Out.rfind("usage: htcore COMMAND", 0), 0u) << form;
    EXPECT_EQ(r.Err, "");
    std::vector<TRow> rows = table(r.Out);
    ASSERT_GE(rows.size(), 8u) << r.Out;
    for (const TRow& row : rows)
      EXPECT_EQ(row.Column, rows[0].Column) << row.Usage;
    EXPECT_NE(r.Out.find("\n  xml text [--max-item MIB] FILE|-  "), std::string::npos);
  }
  // Without a command the usage goes to stderr, as a failure.
  TRun bare = run("");
  EXPECT_EQ(bare.Status, 1);
  EXPECT_EQ(bare.Out, "");
  EXPECT_NE(bare.Err.find("commands:"), std::string::npos);
}

TEST_F(CliHelp, EveryCommandHasHelpWithUsageAndExample) {
  std::vector<TRow> rows = table(run("--help").Out);
  ASSERT_FALSE(rows.empty());
  for (const TRow& row : rows) {
    std::string name = words(row.Usage);
    std::string first = name.substr(0, name.find(' '));
    for (const std::string& args : {name + " --help", name + " -h", "help " + name}) {
      TRun r = run(args);
      EXPECT_EQ(r.Status, 0) << args << r.Err;
      EXPECT_EQ(r.Err, "") << args;
      EXPECT_EQ(r.Out.rfind("usage: htcore " + name, 0), 0u) << args << "\n" << r.Out;
      EXPECT_NE(r.Out.find("\nexample:\n  htcore " + first), std::string::npos) << args << "\n" << r.Out;
      EXPECT_EQ(r.Out.find("\n\n\n"), std::string::npos) << args;
      EXPECT_NE(r.Out.substr(r.Out.size() - 2), "\n\n") << args << ": ends in a blank line";
    }
  }
}

TEST_F(CliHelp, GroupsNameTheirTwoWordCommands) {
  TRun r = run("xml --help");
  ASSERT_EQ(r.Status, 0);
  EXPECT_NE(r.Out.find("see also:\n  htcore xml text [--max-item MIB] FILE|-\n"), std::string::npos) << r.Out;
  // A wrong call of the group lists every form of it.
  TRun bad = run("xml");
  EXPECT_EQ(bad.Status, 1);
  EXPECT_EQ(bad.Out, "");
  EXPECT_EQ(bad.Err,
            "htcore: usage: htcore xml text [--max-item MIB] FILE|- or htcore xml format|tojson FILE|-\n");
  TRun unknown = run("help no-such-command");
  EXPECT_EQ(unknown.Status, 1);
  EXPECT_NE(unknown.Err.find("htcore: unknown command 'no-such-command'"), std::string::npos);
}

TEST_F(CliHelp, VersionInBothForms) {
  TRun a = run("--version"), b = run("version");
  EXPECT_EQ(a.Status, 0);
  EXPECT_EQ(a.Out.rfind("htcore ", 0), 0u);
  EXPECT_EQ(a.Out.back(), '\n');
  EXPECT_EQ(a.Out, b.Out);
}

TEST_F(CliHelp, OutputThatCannotBeWrittenFailsEveryCommand) {
  const std::string ex = quote(std::string(HTCORE_SOURCE_DIR) + "/examples/");
  const std::string commands[] = {
      "version",
      "--version",
      "--help",
      "xml --help",
      "tokens " + ex + "page.html",
      "html text " + ex + "sample.html",
      "html format " + ex + "sample.html",
      "xml text " + ex + "catalogue.xml",
      "xml format " + ex + "catalogue.xml",
      "xml tojson " + ex + "catalogue.xml",
      "json toxml " + ex + "settings.json",
      "xpath " + ex + "sample.html //p",
      "xpath --value " + ex + "sample.html //p",
      "render " + ex + "catalogue.tpl.html " + ex + "catalogue.xml",
  };
  for (const std::string& c : commands) {
    TRun r = RunTool(c + " 2>&1 >/dev/full");
    EXPECT_EQ(r.Status, 1) << c;
    EXPECT_EQ(r.Out, "htcore: cannot write the output: No space left on device\n") << c;
  }
}
