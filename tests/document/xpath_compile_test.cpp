#include "htcore/document/xpath.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

const char* kind_name(TXPathNodeKind k) {
  static const char* names[] = {"tag", "attr", "*", "..", "current"};
  return names[k];
}

const char* op_name(TXConditionType t) {
  static const char* names[] = {"=", "!=", "<", ">", "<=", ">=", "#"};
  return names[t];
}

std::string operand(const hstring& s, bool str, bool attr) {
  return (str ? "'" : attr ? "@" : "") + s.toUtf8() + (str ? "'" : "");
}

// One line per compiled path: `R|` for a rooted path, then the steps joined by
// ` / `, each as [//]kind:tag{conditions}, a condition as [op ]left[ ct right].
std::string dump(const hstring& path) {
  TXPathProcessor xp(path);
  std::string out = xp.Root ? "R|" : "";
  for (size_t i = 0; i < xp.Nodes.size(); ++i) {
    const TXPathNode& s = xp.Nodes[i];
    EXPECT_EQ(s.Processor, &xp);
    EXPECT_EQ(s.Next, i + 1 < xp.Nodes.size() ? &xp.Nodes[i + 1] : nullptr);
    if (i)
      out += " / ";
    out += std::string(s.All ? "//" : "") + kind_name(s.Kind) + ":" + s.Tag.toUtf8();
    if (s.Conditions.empty())
      continue;
    out += "{";
    for (size_t j = 0; j < s.Conditions.size(); ++j) {
      const TXCondition& c = s.Conditions[j];
      if (j)
        out += ", ";
      if (c.ctype == ctIndex) {
        out += "#" + std::to_string(c.index);
        continue;
      }
      out += c.Op == boOr ? "or " : c.Op == boNot ? "not " : "";
      out += operand(c.left, c.leftstr, c.leftattr);
      if (!c.right.empty() || c.rightstr || c.rightattr || c.ctype != ctEQ)
        out += std::string(" ") + op_name(c.ctype) + " " + operand(c.right, c.rightstr, c.rightattr);
    }
    out += "}";
  }
  return out;
}

} // namespace

TEST(XPathCompile, StepsAndKinds) {
  const struct {
    const char16_t* path;
    const char* expected;
  } cases[] = {
      {u"", ""},
      {u"/", "R|"},
      {u"a", "tag:a"},
      {u"a/b/c", "tag:a / tag:b / tag:c"},
      {u"/a", "R|tag:a"},
      {u"//a", "R|//tag:a"},
      {u"/./a", "R|tag:a"},
      {u"./a", "tag:a"},
      {u".//a", "//tag:a"},
      {u"a//b", "tag:a / //tag:b"},
      {u"a/", "tag:a"},
      {u"a//", "tag:a / //tag:"}, // a trailing `//` is a descendant text step
      {u"*/..", "*: / ..:"},
      {u"CURRENT/b", "current: / tag:b"},
      {u"Current", "current:"},
      {u"text()", "tag:"},
      {u"TEXT()", "tag:TEXT()"}, // only current ignores case
      {u"a/@href", "tag:a / attr:href"},
      {u"@", "attr:"},
      {u".", "tag:."}, // no self step
      {u"a b", "tag:a b"},
      {u"A", "tag:A"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(dump(c.path), c.expected) << hstring(c.path).toUtf8();
}

TEST(XPathCompile, StepTextEndsOutsideQuotesAndBrackets) {
  const struct {
    const char16_t* path;
    const char* expected;
  } cases[] = {
      {u"a[b/c]/d", "tag:a{b/c} / tag:d"},
      {u"a[@x='1/2']/d", "tag:a{@x = '1/2'} / tag:d"},
      {u"a[@x=\"]\"]/d", "tag:a{@x = ']'} / tag:d"},
      // One quote state for both units: the apostrophe closes the double quote,
      // so the bracket stays open and the step runs to the end.
      {u"a[@x=\"it's\"]/d", "tag:a{@x = 'it's\"]/'}"},
      {u"a[x][y]", "tag:a{x][y}"},
      {u"a[b[c]]/d", "tag:a{b[c]} / tag:d"},
      {u"a[x", "tag:a{x}"},
      {u"a[x/y", "tag:a{x/y}"},
      {u"a]/b", "tag:a] / tag:b"},
      {u"a[]", "tag:a"},
      {u"a'/'b/c", "tag:a'/'b / tag:c"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(dump(c.path), c.expected) << hstring(c.path).toUtf8();
}

TEST(XPathCompile, Conditions) {
  const struct {
    const char16_t* path;
    const char* expected;
  } cases[] = {
      {u"a[0]", "tag:a{#0}"},
      {u"a[12]", "tag:a{#12}"},
      {u"a[last()]", "tag:a{#-1}"},
      {u"a[LAST()]", "tag:a{#-1}"},
      {u"a[1 and 2]", "tag:a{1, 2}"}, // not an index
      {u"a[99999999999]", "tag:a{99999999999}"},
      {u"a[-1]", "tag:a{-1}"},
      {u"a[@x]", "tag:a{@x}"},
      {u"a[b]", "tag:a{b}"},
      {u"a[text()]", "tag:a{text()}"},
      {u"a[@x='1']", "tag:a{@x = '1'}"},
      {u"a[@x = \"1\"]", "tag:a{@x = '1'}"},
      {u"a[b='t']", "tag:a{b = 't'}"},
      {u"a[text()='t']", "tag:a{text() = 't'}"},
      {u"a[@x=@y]", "tag:a{@x = @y}"},
      {u"a[@x!='1']", "tag:a{@x != '1'}"},
      {u"a[@x!1]", "tag:a{@x != }"}, // `!` takes the next unit, whatever it is
      {u"a[@n<5]", "tag:a{@n < 5}"},
      {u"a[@n<=5]", "tag:a{@n <= 5}"},
      {u"a[@n>5]", "tag:a{@n < 5}"}, // `>` is less-than
      {u"a[@n>=5]", "tag:a{@n >= 5}"},
      {u"a[@x and @y]", "tag:a{@x, @y}"},
      {u"a[@x or @y]", "tag:a{@x, or @y}"},
      {u"a[not @x]", "tag:a{not @x}"},
      {u"a[@x and not @y]", "tag:a{@x, not @y}"},
      {u"a[@x AND NOT @y OR @z]", "tag:a{@x, not @y, or @z}"},
      {u"a[@x='a b' and b[c='1 2']='z']", "tag:a{@x = 'a b', b[c='1 2'] = 'z'}"},
      {u"a['xy]", "tag:a{'x'}"}, // first and last unit dropped, quote or not
      {u"a[']", "tag:a{''}"},
      {u"a[@x=]", "tag:a{@x}"}, // an empty right side is no right side
      {u"a[@x!]", "tag:a{@x != }"},
      {u"a[= 1]", "tag:a{ = 1}"},
      {u"a[x y]", "tag:a{x, y}"},
      {u"a[@x='1'\tor @y]", "tag:a{@x = '1', or @y}"}, // any blank ends an operand
      {u"a[x][y=1]", "tag:a{x][y=1}"},                 // a stray `]` does not close the `[`
      {u"a[  ]", "tag:a"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(dump(c.path), c.expected) << hstring(c.path).toUtf8();
}
