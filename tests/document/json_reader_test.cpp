// JSON bytes into trees: the UTF-8 entry gives the tree (or the error) that
// the UTF-16 entry gives for the decoded text, and an object's attributes
// come out sorted with the last of a repeated key.
#include "document/json_fast_reader.h"
#include "htcore/document/json_reader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace ht;

namespace {

std::string dump(const THtXMLNode& top) {
  std::string r;
  for (const THtNode* n = &top; n; n = n->NextNode()) {
    int depth = 0;
    for (const THtNode* p = n; p != &top; p = p->FParent)
      ++depth;
    r += std::to_string(depth) + n->FTag.toUtf8() + "#" + std::to_string(n->FTagHash) + "/" +
         std::to_string(n->TagType) + (static_cast<const THtXMLNode*>(n)->IsArray ? "[]" : "");
    if (n->FAttributes) {
      r += " n=" + std::to_string(n->FAttributes->Count);
      for (const THtAttribute& a : *n->FAttributes)
        r += "(" + a.Name.toUtf8() + "=" + a.Value.toUtf8() + ")";
    }
    // units, so that lone surrogates and U+FFFD show as they are
    r += " \"";
    for (char16_t c : n->FContent.view())
      r += c < 0x80 ? std::string(1, static_cast<char>(c)) : "<" + std::to_string(c) + ">";
    r += "\"\n";
  }
  return r;
}

template <class F> std::string outcome(F&& read) {
  try {
    THtXMLNode node;
    read(node);
    return dump(node);
  } catch (const Exception& e) {
    return std::string("error: ") + e.what();
  }
}

// The bytes in a block of their exact size, so a read past the end is caught.
std::string from_bytes(const std::string& bytes) {
  std::unique_ptr<char[]> exact(new char[bytes.size()]);
  std::memcpy(exact.get(), bytes.data(), bytes.size());
  return outcome([&](THtXMLNode& n) { SetJSONUtf8(n, std::string_view(exact.get(), bytes.size())); });
}

std::string from_units(const std::string& bytes) {
  return outcome([&](THtXMLNode& n) { n.SetJSON(Utf8ToHString(bytes)); });
}

std::string repeat(const std::string& s, int n) {
  std::string r;
  for (int i = 0; i < n; ++i)
    r += s;
  return r;
}

} // namespace

TEST(JsonReaderUtf8, GivesTheTreeOfTheDecodedText) {
  const std::vector<std::string> inputs = {
      // plain documents and scalars at the top
      "{\"a\":1,\"b\":\"x\",\"c\":[1,\"two\",true,null,{\"d\":-0.5e+3}],\"e\":{}}",
      "[]", "{}", "  [ 1 , 2 ]  ", "\"top\"", "42", "-0", "true", "nul", "trueish",
      "{a: 'single', 'b': bare}",
      // numbers cut by the end of the text, and bad ones
      "1", "-", "1.", "1e", "1e+", "01", "[01]", "[1.5E-3]", "[-]", "[.5]", "1.5e3",
      // strings: escapes of each kind, at the end of the text as well
      "[\"\\n\\t\\r\\b\\f\\/\\\\\\\"\"]", "\"\\u0041\"", "\"\\u004\"", "\"\\u00e9t\\u00e9\"",
      "[\"\\x41\\x4g\"]", "\"\\x4", "\"\\", "\"abc", "[\"a\\qb\"]", "[\"tab\there\"]",
      "\"\\ud83d\\ude00\"", "\"\\ud83d\"", "\"\\ude00x\"", "[\"\\ud83d\\u0041\"]",
      "{\"k\\u0065y\":\"v\",\"key\":\"w\"}",
      // UTF-8 in strings, valid and not, next to quotes and escapes
      "{\"caf\xC3\xA9\":\"\xE2\x82\xAC 5\",\"x\":\"\xF0\x9F\x98\x80\"}",
      "[\"\xC3\"]", "[\"\xE2\x82\"]", "[\"\xE2\x82\\n\"]", "[\"\xFF\xFE\"]", "[\"\xED\xA0\x80\"]",
      "[\"\xC0\xAF\"]", "[\"\xF4\x90\x80\x80\"]", "[\"\\ud83d\xF0\x9F\x98\x80\"]",
      "[\"\\x\xC3\xA9\"]", "[\"\\x4\xC3\xA9\"]",
      "[\"" + repeat("\xC3\xA9", 20) + "\\n" + repeat("z\xE2\x82\xAC", 9) + "\"]",
      // UTF-8 and other bytes outside strings
      "\xEF\xBB\xBF{}", "{caf\xC3\xA9: 1}", "[\xC3\xA9]", "{} \xC3\xA9", "\xFF", std::string("\0[1]", 4),
      std::string("[\"a\0b\"]", 7), "{\"a\":1}//c", "{},{\"b\":2}", "[1,]", "{\"a\":1,}",
      // strings around the lengths where the readers change buffers
      "[\"" + std::string(15, 'a') + "\",\"" + std::string(16, 'b') + "\",\"" + std::string(17, 'c') + "\"]",
      "[\"" + std::string(32, 'd') + "\",\"" + std::string(33, 'e') + "\",\"" + std::string(200, 'f') + "\"]",
      "[\"" + std::string(31, 'g') + "\\\"" + std::string(40, 'h') + "\"]",
      "[" + std::string(40, '9') + "]", "{\"" + std::string(40, 'k') + "\":true}",
      // keys: repeated, reordered, many, empty
      "{\"b\":1,\"a\":2,\"b\":3}", "{\"b\":1,\"a\":{},\"b\":[2]}", "{\"\":1}", "{\"\":{}}",
      "[{\"y\":1,\"x\":2},{\"y\":3,\"x\":4},{\"x\":5,\"y\":6},{\"y\":7,\"y\":8,\"x\":9},{\"y\":1,\"x\":2,\"z\":3}]",
      "[{\"B\":1,\"a\":2,\"_\":3,\"\xC3\xA9\":4,\"A\":5,\"ab\":6,\"a\":7}]",
      // short texts met again are taken by their bytes: escaped, beyond
      // ASCII, in either quote, as keys and values, near the end of the text
      "[\"a\\nb\",\"a\\nb\",'a\\nb',{\"a\\nb\":\"a\\nb\"},\"\\u00e9\",\"\\u00e9\",\"\xC3\xA9\",\"\xC3\xA9\"]",
      "[\"\\ud83d\",\"\\ud83d\",\"\\ud83d\\ude00\",\"\\ud83d\\ude00\",\"x\\ude00\",\"x\\ude00\"]",
      "[\"a\\x\"1\",\"a\\x\"1\"]", "[\"\\x41\",\"\\x41\"]", "[\"ab\",'ab',\"ab\"]",
      "[\"" + repeat("\\n", 8) + "\",\"" + repeat("\\n", 8) + "\",\"" + repeat("\\n", 9) + "\"]",
      "[\"\\u00e9\\u00e9\\u00e9x\",\"\\u00e9\\u00e9\\u00e9x\"]", "[1,\"\\t\"]", "\"\\t\"",
      // literals, and names that start like them
      "[true,false,null,truex,nullish,false_]", "{\"t\":true}", "[true", "[fals]", "[nul]",
      // long keys met again
      "[{\"" + std::string(20, 'k') + "\":1},{\"" + std::string(20, 'k') + "\":2,\"" + std::string(19, 'k') +
          "\":3}]",
      // depth at the limit and beyond it
      std::string(1024, '[') + std::string(1024, ']'), std::string(1025, '[') + std::string(1025, ']'),
  };
  for (const std::string& in : inputs)
    EXPECT_EQ(from_bytes(in), from_units(in)) << in;
}

TEST(JsonReaderUtf8, ReadsWellFormedBytesWithoutDecodingTheWholeText) {
  // The byte reader itself takes these; only the rest falls back to the text.
  const std::vector<std::pair<std::string, bool>> cases = {
      {"{\"a\":1,\"b\":[\"x\\n\",{\"c\":null}],\"d\":\"caf\xC3\xA9\"}", true},
      {"[\"\\u00e9\"]", true},
      {"[\"a\\nb\",\"a\\nb\",\"\xC3\xA9\",\"\xC3\xA9\",true,false,null]", true},
      {"{a: 'b'}", true},
      {"[\"\xC3\"]", true}, // decoded as the text would be
      {"{caf\xC3\xA9: 1}", false},
      {"\xEF\xBB\xBF{}", false},
      {"[1,]", false},
  };
  for (const auto& [in, direct] : cases) {
    THtXMLNode n;
    EXPECT_EQ(detail::ReadJSONFastUtf8(n, in), direct) << in;
  }
}

TEST(JsonReaderUtf8, ObjectsOfManyKeys) {
  // Beyond the remembered key orders, and records that repeat one order.
  std::string big = "{";
  for (int i = 99; i >= 0; --i)
    big += "\"k" + std::to_string(i % 70) + "\":" + std::to_string(i) + (i ? "," : "}");
  std::string records = "[";
  for (int i = 0; i < 300; ++i)
    records += std::string(i ? "," : "") + "{\"id\":" + std::to_string(i) + ",\"n\":\"r" + std::to_string(i % 7) +
               "\",\"" + (i % 3 ? "a" : "z") + "\":" + std::to_string(i % 5) + "}";
  records += "]";
  for (const std::string& in : {big, records})
    EXPECT_EQ(from_bytes(in), from_units(in)) << in.substr(0, 60);
  auto doc = JSONUtf8toXMLNode(big);
  ASSERT_EQ(doc->FAttributes->Count, 70);
  EXPECT_EQ(doc->GetAttribute(u"k0"), u"0");  // of i = 70 and 0, the later one
  EXPECT_EQ(doc->GetAttribute(u"k29"), u"29"); // of 99 and 29
  EXPECT_EQ(doc->FAttributes->GetName(1), u"k1");
  EXPECT_EQ(doc->FAttributes->GetName(2), u"k10");
}

TEST(JsonReaderUtf8, ErrorsAreThoseOfTheTextEntry) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "JSON is empty"},
      {"  \r\n", "Incorrect JSON, token expected."},
      {"[1,]", "Incorrect JSON, token expected."},
      {"{} x", "JSON is not terminated properly"},
      {"\"abc", "Unterminated string"},
  };
  for (const auto& [in, msg] : cases)
    EXPECT_EQ(from_bytes(in), "error: " + msg) << in;
  // Texts cut inside an escape, at the very end of the bytes.
  for (std::string in : {"\"abc\\", "{\"k\": \"eslint \\", "[\"\\u12", "[\"\\x4", "[\"\xC3\xA9\\"}) {
    EXPECT_EQ(from_bytes(in).rfind("error: ", 0), 0u) << in;
    EXPECT_EQ(from_bytes(in), from_units(in)) << in;
  }
}

TEST(JsonReaderUtf8, TextsOutliveTheirDocument) {
  hstring name, tag, item;
  {
    auto doc = JSONUtf8toXMLNode("{\"name\":\"caf\xC3\xA9 au lait\",\"list\":[\"x\\ty\"]}");
    name = doc->GetAttribute(u"name");
    tag = doc->FirstChild()->FTag;
    item = doc->FirstChild()->FirstChild()->FContent;
  }
  std::thread([&] { item = hstring(); }).join();
  EXPECT_EQ(name, u"caf\u00e9 au lait");
  EXPECT_EQ(tag, u"list");
  EXPECT_TRUE(item.empty());
}

namespace {
class TOwnNode : public THtXMLNode {
  HT_NODE_CLASS(TOwnNode)
};
} // namespace

TEST(JsonReaderUtf8, SubclassesGoTheUsualWay) {
  TOwnNode own;
  SetJSONUtf8(own, "{\"a\":[1]}");
  EXPECT_EQ(own.GetAttribute(u"a"), u"");
  ASSERT_NE(own.FirstChild(), nullptr);
  EXPECT_EQ(own.FirstChild()->FirstChild()->FContent, u"1");
}
