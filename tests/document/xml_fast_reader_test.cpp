// The direct XML and JSON readers against the item and token readers: both
// must give the same tree, the same processing instructions and the same
// errors for any text. A subclass of THtXMLNode always takes the older
// readers, so the pair of classes below compares the two paths.
#include "document/xml_reader_internal.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/codepage.h"
#include "htcore/foundation/node_pool.h"
#include "htcore/foundation/stream_types.h"

#include <cstdint>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using namespace ht;

namespace {

class TItemReaderNode : public THtXMLNode {
  HT_NODE_CLASS(TItemReaderNode)
};

// Everything the readers set: tag, tag hash, type, attributes in order,
// content, xml:space flag, children.
void dump(const THtNode* n, std::string& out) {
  auto* x = static_cast<const THtXMLNode*>(n);
  out += "{" + n->FTag.toUtf8() + "#" + std::to_string(n->FTagHash) + "/" + std::to_string(n->TagType);
  if (x->FPreserveSpace)
    out += "/preserve";
  if (x->IsArray)
    out += "[]";
  if (n->FAttributes) {
    out += "(";
    for (const THtAttribute& a : *n->FAttributes)
      out += a.Name.toUtf8() + "=" + a.Value.toUtf8() + ";";
    out += ")";
  }
  out += "\"" + n->FContent.toUtf8() + "\"";
  for (const THtNode* c = n->FirstChild(); c; c = c->FNextSibling) {
    if (c->FParent != n)
      out += "!parent";
    dump(c, out);
  }
  out += "}";
}

struct TOutcome {
  std::string tree, code, pis, error;
};

// The outcome of load(node) on a new node of class T.
template <class T, class Load> TOutcome outcome(Load load) {
  TOutcome r;
  try {
    T node;
    load(node);
    dump(&node, r.tree);
    r.code = node.Code().toUtf8();
    if (const TStringList* pi = node.ProcessingInstructions())
      for (int i = 0; i < pi->Count(); ++i)
        r.pis += pi->Strings(i).toUtf8() + "|";
  } catch (const EHtXML& e) {
    r.error = "EHtXML: " + std::string(e.what());
  } catch (const EHtParserError& e) {
    r.error = "EHtParserError: " + std::string(e.what());
  }
  return r;
}

template <class T> TOutcome parse(const hstring& text) {
  return outcome<T>([&](T& node) { node.SetXML(text); });
}

void expect_same(const hstring& text, const std::string& label) {
  TOutcome fast = parse<THtXMLNode>(text);
  TOutcome items = parse<TItemReaderNode>(text);
  EXPECT_EQ(fast.error, items.error) << label;
  EXPECT_EQ(fast.tree, items.tree) << label;
  EXPECT_EQ(fast.code, items.code) << label;
  EXPECT_EQ(fast.pis, items.pis) << label;
}

// SetUTF8XML on bytes against the item reader on the text they decode to.
TOutcome parse_bytes(std::string_view bytes) {
  return outcome<THtXMLNode>([&](THtXMLNode& node) { node.SetUTF8XML(bytes); });
}

void expect_same_bytes(std::string_view bytes, const std::string& label) {
  TOutcome fast = parse_bytes(bytes);
  TOutcome items = parse<TItemReaderNode>(Utf8ToHString(bytes));
  EXPECT_EQ(fast.error, items.error) << label;
  EXPECT_EQ(fast.tree, items.tree) << label;
  EXPECT_EQ(fast.code, items.code) << label;
  EXPECT_EQ(fast.pis, items.pis) << label;
}

// Whether the direct reader takes the bytes without giving up.
bool reads_bytes_directly(const std::string& bytes) {
  THtXMLNode node;
  TNodePoolScope pool;
  return detail::ReadXMLFast(node, std::string_view(bytes));
}

template <class T> TOutcome parse_json(const hstring& text) {
  TOutcome r;
  try {
    T node;
    node.SetJSON(text);
    dump(&node, r.tree);
    r.code = node.JSON().toUtf8();
  } catch (const EHtJSONParserException& e) {
    r.error = "EHtJSONParserException: " + std::string(e.what());
  } catch (const EHtParserError& e) {
    r.error = "EHtParserError: " + std::string(e.what());
  }
  return r;
}

void expect_same_json(const hstring& text, const std::string& label) {
  TOutcome fast = parse_json<THtXMLNode>(text);
  TOutcome tokens = parse_json<TItemReaderNode>(text);
  EXPECT_EQ(fast.error, tokens.error) << label;
  EXPECT_EQ(fast.tree, tokens.tree) << label;
  EXPECT_EQ(fast.code, tokens.code) << label;
}

std::string read_file(const char* path) {
  std::ifstream f(path, std::ios::binary);
  if (!f)
    return {};
  std::stringstream ss;
  ss << f.rdbuf();
  return ss.str();
}

// Real files, and whether to read each also as 8-bit text (slow in the
// item reader, so only for the smaller ones).
const struct {
  const char* path;
  bool narrow;
} kFiles[] = {{"/usr/share/mime/packages/freedesktop.org.xml", false},
              {"/usr/share/xml/iso-codes/iso_3166-2.xml", true},
              {"/usr/share/xml/iso-codes/iso_4217.xml", true},
              {"/usr/share/xml/iso-codes/iso_15924.xml", true}};

} // namespace

TEST(XMLFastReader, TrickyTextsGiveTheSameTreeOrError) {
  static const char* const kTexts[] = {
      // plain shapes and text placement
      "<a>text</a>", "<a>x<b/>y</a>", "<a> <b/> </a>", "<a>\n  <b>1</b>\n  <c/>\n</a>", "<a/>", "<a></a>",
      "  <a/>  trailing", "<a>unterminated", "<a><b>deep", "<a><b x='1'", "<a><b/", "<a><b", "<a></",
      "<a></b", "<a></a", "<a>t</a >", "<a>t</a\n>", "<a>\t</a>", "<r><a>1</a> <a>2</a> x <a>3</a></r>",
      "<r> \n <a/> x </r>", "<r>  </r>", "<r>x</r>", "<r><!--c-->x</r>", "<r>x<!--c--></r>",
      // preserved space
      "<r xml:space=\"preserve\"> <a/> </r>", "<r xml:space='preserve'>  </r>",
      "<r xml:space='default'> </r>", "<r><p xml:space=\"preserve\"> a </p> </r>",
      // errors
      "<a></b>", "<a><b></a></b>", "<a>1 < 2</a>", "<1/>", "<a x=1/>", "<a x=/>", "<a x=", "<a x = >", "<a><",
      "<a>< b/></a>", "<r><a x></r>", "<#a/>", "<a>&</a>", "</a><b/>",
      // attributes
      "<a x=\"1\" y='2' z = \"3\"/>", "<a z='1' a='2' m='3'/>", "<a x='1' x='2'/>", "<a x x='2'/>",
      "<a x='1' x/>", "<a b c d/>",
      // runs of the same names, whose sorted order the reader remembers
      "<r><a z='1' m='2' a='3'/><a z='4' m='5' a='6'/><a a='7' z='8' m='9'/><a z='1' m='2' a='3' b/></r>",
      "<r><a z='1' z='2' a='3'/><a z='4' z='5' a='6'/><a z a='7' z='8'/><a z a='9' z='0'/></r>",
      "<r><a p='1' q='2' r='3' s='4' t='5' u='6' v='7' w='8' x='9' y='10' z='11' a='12' b='13' c='14' "
      "d='15' e='16' f='17'/><a p='1' q='2' r='3' s='4' t='5' u='6' v='7' w='8' x='9' y='10' z='11' "
      "a='12' b='13' c='14' d='15' e='16' a='17'/><a q='1' p='2'/><a q='3' p='4'/></r>", "<a x='&lt;&amp;&gt;&quot;&apos;'/>", "<a x='1'y='2'/>",
      "<a x=\"it's\" y='say \"hi\"'/>", "<a x='<b>'/>", "<a x='1' / y='2'>t</a>", "<a x='multi\nline'/>",
      "<a \"x\"='1'/>", "<a x='1''/>", "<a x='1' <!-- c --> y='2'/>", "<a x <!-- c -->='1'/>", "<a =x/>",
      "<a x='\x01'/>", "<a x:y='1' xmlns:x='u'/>",
      // names
      "<a.b-c_d:e/>", "<_x/>", "<-x/>", "<.x/>", "<:x/>", "<A/>", "<Abc><Abc/></Abc>", "<a/b>t</a/b>",
      "<a!b/>", "<a&b/>", "<\xC3\xA9t\xC3\xA9>x</\xC3\xA9t\xC3\xA9>", "<\xC3\xA9!x/>", "<a\xC3\xA9!x/>",
      "<a>t</a!>", "<a>t</\xC3\xA9>", "<a>t</ a>", "<a>t</'a'>", "<a>t</a x>", "<a>t</a/>",
      "<a x\xC3\xA9='1'/>", "<meta/>", "<meta charset='koi8-r'>x</meta>", "<r><META http-equiv='x'/></r>",
      "<r><meta a='1'/></r>", "<div <p>x</p>",
      // references
      "<a>&lt;&gt;&amp;&quot;&apos;&nbsp;&nbsp</a>", "<a>&#65;&#x42;&#X43;&#x1F600;&#xD800;&#1114112;</a>",
      "<a>&#65 x;</a>", "<a>&#;&#x;</a>", "<a>&#0;</a>", "<a>&#00065;</a>", "<a>&#x0000041;</a>",
      "<a>&#123456789;</a>", "<a>&#-5;</a>", "<a>&#+5;</a>", "<a>&# 5;</a>", "<a>&#,5;</a>",
      "<a>&unknown;</a>", "<a>&hellip;&copy;&euro;</a>", "<a>&lt</a>", "<a>&quox</a>", "<a>&amx</a>",
      "<a>&nbs</a>", "<a>&q</a>", "<a>&a", "<a>&", "<a>&lt;", "<a>& b ;</a>",
      "<a>&abcdefghijklmnopqrstuvwxyz0123;</a>", "<a>a&b;c</a>",
      // blocks
      "<!--c--><a/>", "<?xml version='1.0'?><?pi x?><a/>", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>",
      "<a><?pi?><!--c--><![CDATA[x<y]]><!DOCTYPE z></a>", "<a><![CDATA[]]]></a>", "<a><![CDATA[x]]]]></a>",
      "<a><![CDATA[open</a>", "<a><!-- open</a>", "<a><!----></a>", "<a><!---></a>", "<a><!--></a>",
      "<a><!-x></a>", "<a><!></a>", "<a><!", "<a><!-", "<a><![CD", "<a><![CDATA", "<a><?x", "<a><?x?",
      "<a><?x>y</a>", "<a><!x \"q>\" [>] ></a>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>", "<a><![cdata[x]]></a>",
      "text before<a/>", "</x><a/>", "<?pi?>", "", " ", "<", "<!-- only -->",
      // nesting and order
      "<a><b><c><d/></c></b></a>", "<a><b></b><b></b></a>", "<a>1<b/>2<c/>3</a>", "<a><b>x</b>y<b>z</b></a>",
      "<a><a><a/></a></a>", "<r/><s/>", "<r></r>after", "<r>\xEF\xBB\xBF</r>", "\xEF\xBB\xBF<r/>",
      // control units and NULs
      "<a>\x01\x02</a>", "<a\x01/>", "<a \x01/>", "<a x='1'\x01/>", "<a>\x7F</a>"};
  for (const char* t : kTexts) {
    expect_same(hstring::FromUtf8(t), t);
    expect_same_bytes(t, t);
  }
  // Embedded NULs and lone surrogates come only from UTF-16 text.
  static const std::u16string kUnits[] = {
      std::u16string(u"<a>x\0y</a>", 10), std::u16string(u"<a\0/>", 5),
      std::u16string(u"<a x='\0'/>", 10), std::u16string(u"<a>&#65\0;</a>", 13),
      std::u16string(u"<a>\xD800</a>"),   std::u16string(u"\xFEFF<a/>"),
      std::u16string(u"<?\0?><a/>", 9)};
  for (const std::u16string& t : kUnits)
    expect_same(hstring(t.data(), t.size()), "units");
}

TEST(XMLFastReader, RealFilesGiveTheSameTree) {
  int found = 0;
  for (const auto& f : kFiles) {
    std::string bytes = read_file(f.path);
    if (bytes.empty())
      continue;
    ++found;
    hstring text = Utf8ToHString(bytes);
    expect_same(text, f.path);
    expect_same_bytes(bytes, f.path);
    EXPECT_TRUE(reads_bytes_directly(bytes)) << f.path;
    // Written and read again, the file gives the same tree.
    THtXMLNode doc(text);
    hstring code = doc.Code();
    THtXMLNode again(code);
    std::string a, b;
    dump(&doc, a);
    dump(&again, b);
    EXPECT_EQ(a, b) << f.path;
    EXPECT_EQ(again.Code(), code) << f.path;
    // The same bytes taken as 8-bit text: the UTF-8 declaration then has the
    // rest re-decoded.
    if (f.narrow)
      expect_same(HtCodePageToUnicode(bytes, 1252), std::string(f.path) + " as 1252");
  }
  if (!found)
    GTEST_SKIP() << "no XML files from /usr/share";
}

TEST(XMLFastReader, MutatedTextsGiveTheSameTreeOrError) {
  static const char* const kSeeds[] = {
      ("<?xml version=\"1.0\" encoding=\"utf-8\"?><!-- c --><r a=\"1\" b='x &amp; y'>\n <i "
       "id=\"1\">caf\xC3\xA9 "
       "&#233;</i>\n <j/><![CDATA[z]]><?p q?>t<k x='\xC3\xA9'>&lt;</k></r>"),
      "<r xml:space=\"preserve\"> <a> </a> <b x=\"1\" x=\"2\" y /> &nbsp;&quot; </r>",
      "<a><b><c>1</c><c>2</c></b><!DOCTYPE d><d e='&#x41;'/></a>"};
  uint32_t seed = 12345;
  auto rnd = [&] {
    seed = seed * 1103515245u + 12345u;
    return seed >> 8;
  };
  static const char kPieces[] = "<>/='\"&;!?-[] \n#xa\x00\xC3\xA9";
  for (const char* s : kSeeds) {
    for (int round = 0; round < 400; ++round) {
      std::string t = s;
      int edits = 1 + static_cast<int>(rnd() % 4);
      for (int e = 0; e < edits && !t.empty(); ++e) {
        size_t at = rnd() % t.size();
        char piece = kPieces[rnd() % (sizeof(kPieces) - 1)];
        switch (rnd() % 3) {
        case 0:
          t[at] = piece;
          break;
        case 1:
          t.insert(t.begin() + static_cast<ptrdiff_t>(at), piece);
          break;
        default:
          t.erase(at, 1 + rnd() % 3);
          break;
        }
      }
      expect_same(HtCodePageToUnicode(t, 1252), t);
      expect_same(Utf8ToHString(t), t);
      expect_same_bytes(t, t);
    }
  }
}

// What only bytes can hold: invalid sequences in kept texts and around
// references, sequences cut by the end, markup beyond ASCII, a declaration
// whose re-decoding test runs on bytes, and texts that do not end in NUL.
TEST(XMLFastReader, BytesGiveTheTreeOfTheirDecodedText) {
  static const struct {
    const char* text;
    bool direct; // the byte reader keeps it rather than giving up
  } kCases[] = {
      {"<a>caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80</a>", true},
      {"<a x='\xC3\xA9\xC3'>\x80\xFF\xC0\xAF\xED\xA0\x80</a>", true},
      {"<a>\xC3&amp;\xA9</a>", true},
      {"<a>\xC3&#xE9;\xE2\x82&#x80;</a>", true},
      {"<a>&#xD800;&#x110000;&#0;x</a>", true},
      {"<a><!--\xC3\xA9--><![CDATA[\xE2\x82]]><?p \xC3\xA9?><!x \xC3\xA9></a>", true},
      {"<a>\xE2\x82", true},
      {"<a>\xC3", true},
      {"\xEF\xBB\xBF<a>x</a>", true},
      {"\xEF\xBB\xBF", true},
      {"\xD0\xBF\xC2\xBB\xD1\x97<a/>", false},
      {"<\xC3\xA9/>", false},
      {"<a \xC3\xA9='1'/>", false},
      {"<a>x</\xC3\xA9>", false},
      {"<a>&nbs\xC3\xA9</a>", false},
      {"<a>&quo\xC3\xA9x</a>", false},
      {"<a>&x\xC3\xA9;</a>", false},
      {"<a><!-\xC3\xA9></a>", false},
      {"<a><![CDA\xC3\xA9xx]]></a>", false},
      // Declarations: text the item reader re-decodes, and text it keeps.
      {"<?xml version='1.0' encoding='utf-8'?><a>\xC3\x83\xC2\xA9</a>", false},
      {"<?xml version='1.0' encoding='utf-8'?><a>caf\xC3\xA9 \xC3\xA9\xE2\x82\xAC</a>", true},
      {"<?xml version='1.0' encoding='utf-8'?><a>\xC3\xA9\xC3\x83</a>", true},
      {"<?xml version='1.0' encoding='UTF-8'?><a>\xC3\x83\xC2\xA9<!--</head>-->\xC3\xA9x</a>", true},
      {"<a><!--x\xC3\xA9", false},
      {"<a><![CDATA[x\xC3\xA9]", false},
      {"<a><!--\xC3\xA9--", true},
      // Close tags compared with their start tag's bytes: names the direct
      // compare must not take (a slash, a mark the name scan stops at), names
      // that only start alike, and blank runs kept as bytes between them.
      {"<a/b>x</a/b>", true},
      {"<a[b>x</a[b>", true},
      {"<ab><abc/>\n  <a>x</a>\n</ab >", true},
      {"<ab>\n \t<c>\n</c>\n<c x='\n  '> </c>\n  \n</ab>", true},
      {"<abcdefghijklmnopq><abcdefghijklmnopq>y</abcdefghijklmnopq></abcdefghijklmnopq>", true},
      {"<r>\n                    <a>\n                      <b/>\n                    </a>\n                    <a>\n"
       "                      <b/>\n                    </a>\n</r>",
       true},
      {"<a>x</ab>", false},
      {"<ab>x</a>", false},
  };
  for (const auto& c : kCases) {
    std::string bytes = c.text;
    expect_same_bytes(bytes, c.text);
    EXPECT_EQ(reads_bytes_directly(bytes), c.direct) << c.text;
    // No terminator behind the bytes: every cut of the text reads the same.
    for (size_t n = 0; n < bytes.size(); ++n) {
      std::vector<char> cut(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(n));
      expect_same_bytes(std::string_view(cut.data(), n), std::string(c.text) + " cut at " + std::to_string(n));
    }
  }
}

TEST(XMLFastReader, StreamsOfUTF8AreReadAsBytes) {
  const std::string bytes = "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><r a='\xC3\xA9'>x</r>";
  TBytesStream s(TBytes(bytes.begin(), bytes.end()));
  auto doc = THtXMLNode::CreateFromStream(s);
  EXPECT_EQ(doc->GetAttribute(u"a"_hs), u"\u00E9");
  EXPECT_EQ(doc->FContent, u"x");
  // A subclass keeps its own reader.
  TBytesStream s2(TBytes(bytes.begin(), bytes.end()));
  TItemReaderNode sub;
  sub.LoadFromStream(s2);
  EXPECT_EQ(sub.Code(), doc->Code());
}

TEST(XMLFastReader, DeepNestingNeedsNoStack) {
  const int depth = 100000;
  std::u16string s;
  for (int i = 0; i < depth; ++i)
    s += u"<a x='1'>";
  s += u"t";
  for (int i = 0; i < depth; ++i)
    s += u"</a>";
  THtXMLNode doc(hstring(s.data(), s.size()));
  int levels = 1;
  const THtNode* n = &doc;
  while (n->FirstChild()) {
    n = n->FirstChild();
    ++levels;
  }
  EXPECT_EQ(levels, depth);
  EXPECT_EQ(n->FContent.toUtf8(), "t");
  EXPECT_EQ(n->GetAttribute(u"x"_hs).toUtf8(), "1");
}

TEST(JSONFastReader, TrickyTextsGiveTheSameTreeOrError) {
  static const char* const kTexts[] = {
      // shapes
      "{}", "[]", "{\"a\":1}", "[1,2]", "{\"a\":1,\"b\":[1,2]}", "{\"a\":{\"b\":{\"c\":[]}}}", "[[[]]]",
      "[{}, {}]", "{\"a\":[{\"b\":1},[2]]}", " \t\n{ \"a\" : 1 , \"b\" : 2 } \r\n", "\x01{}", "{}\x01",
      // scalars at the top
      "1", "\"s\"", "true", "null", "abc", "-0", "1.5e3", "  7  ", "'x'",
      // names and values
      "{'a': 1}", "{a: 1}", "{\"\": 1}", "{\"\": {}}", "{\"\": []}", "{\"a\": x}", "{\"a\": null}",
      "{true: 1}", "{null: 1}", "{1: 1}", "{\"a\":1,\"a\":2}", "{\"b\":1,\"a\":2,\"c\":3}",
      "{\"a\":{},\"a\":{}}", "{\"a-b\": 1, a_b: 2, \"\u00e9\": 3}", "{\"x\":\"\"}", "{\"v\":[\"\",1,true]}",
      // strings
      "[\"\\\"\\\\/\\b\\f\\n\\r\\t\"]", "[\"\\u0041\\u00e9\\ud83d\\ude00\"]", "[\"\\u004\"]",
      "[\"\\x41\\xzz\"]", "[\"\\x4\"]", "[\"\\q\"]", "[\"a\tb\"]", "[\"abc", "[\"\\", "['it\"s']",
      "[\"caf\xC3\xA9\"]", "[\"a\\/b\"]", "[\"\\udc00x\\ud800\"]", "[\"\\ud800\\ud800\\udc00\"]",
      // numbers
      "[0, -1, 1.25, 1e10, 1E-3, -0.5e+2]", "[01]", "[-]", "[1.]", "[.5]", "[1..2]", "[1e]", "[1e+]",
      "[12345678901234567890]", "[1a]", "[-a]", "[+1]", "[1 2]",
      // errors and the wider grammar
      "", " ", "[1,]", "{\"a\":1,}", "[,1]", "{,}", "{\"a\"}", "{\"a\" 1}", "{\"a\":}", "[", "{", "[1",
      "{\"a\":1", "]", "}", ":", "[1]]", "{}}", "[1] x", "[1] // c", "[1] //c\r\n", "{},{}", "{},{},",
      "{},[]", "[],{}", "{} , {\"a\":1}", "[true, trueish, nul]", "[ident]", "/", "[/]", "{\"a\":1 \"b\":2}",
      "[1,,2]"};
  for (const char* t : kTexts)
    expect_same_json(hstring::FromUtf8(t), t);
  std::string deep(1025, '[');
  expect_same_json(hstring::FromUtf8(deep + std::string(1025, ']')), "1025 levels");
  deep.pop_back();
  expect_same_json(hstring::FromUtf8(deep + std::string(1024, ']')), "1024 levels");
  static const std::u16string kUnits[] = {std::u16string(u"[\"a\0b\"]", 7), std::u16string(u"\0[1]", 4),
                                          std::u16string(u"[1]\0", 4), std::u16string(u"{\"\xD800\":1}")};
  for (const std::u16string& t : kUnits)
    expect_same_json(hstring(t.data(), t.size()), "units");
}

// A lone half of a surrogate pair must not swallow the character behind it
// on the way out as UTF-8.
TEST(JSONFastReader, LoneSurrogateEscapesKeepTheNextCharacter) {
  const hstring json = u"{\"a\":\"\\udc00x\",\"b\":\"\\ud800y\",\"c\":\"\\ud83d\\ude00\"}"_hs;
  THtXMLNode fast;
  TItemReaderNode tokens;
  for (THtXMLNode* n : {static_cast<THtXMLNode*>(&fast), static_cast<THtXMLNode*>(&tokens)}) {
    n->SetJSON(json);
    EXPECT_EQ(n->GetAttribute(u"a"_hs), u"\uFFFDx"_hs);
    EXPECT_EQ(n->GetAttribute(u"b"_hs), u"\uFFFDy"_hs);
    EXPECT_EQ(n->GetAttribute(u"c"_hs), u"\U0001F600"_hs);
    std::string out(n->UTF8Code(false).view());
    EXPECT_NE(out.find("a=\"\xEF\xBF\xBDx\" b=\"\xEF\xBF\xBDy\" c=\"\xF0\x9F\x98\x80\""), std::string::npos)
        << out;
  }
}

TEST(JSONFastReader, RealFilesGiveTheSameTree) {
  int found = 0;
  for (const char* path :
       {"/usr/share/iso-codes/json/iso_639-3.json", "/usr/share/iso-codes/json/iso_3166-2.json",
        "/usr/share/iso-codes/json/iso_4217.json"}) {
    std::string bytes = read_file(path);
    if (bytes.empty())
      continue;
    ++found;
    expect_same_json(Utf8ToHString(bytes), path);
  }
  if (!found)
    GTEST_SKIP() << "no JSON files from /usr/share/iso-codes";
}

TEST(JSONFastReader, MutatedTextsGiveTheSameTreeOrError) {
  static const char* const kSeeds[] = {
      "{\"a\":1,\"b\":[1,2.5e-3,\"x\\ny\",true,null,{}],\"c\":{\"d\":'q',e:f}}",
      "[{\"id\":1,\"name\":\"caf\xC3\xA9 \\u00e9\"},{\"id\":-2,\"tags\":[[],[\"a\"]]}]"};
  uint32_t seed = 777;
  auto rnd = [&] {
    seed = seed * 1103515245u + 12345u;
    return seed >> 8;
  };
  static const char kPieces[] = "{}[],:\"'\\ -.0123eEtrunl/\n\x01";
  for (const char* s : kSeeds) {
    for (int round = 0; round < 600; ++round) {
      std::string t = s;
      int edits = 1 + static_cast<int>(rnd() % 3);
      for (int e = 0; e < edits && !t.empty(); ++e) {
        size_t at = rnd() % t.size();
        char piece = kPieces[rnd() % (sizeof(kPieces) - 1)];
        switch (rnd() % 3) {
        case 0:
          t[at] = piece;
          break;
        case 1:
          t.insert(t.begin() + static_cast<ptrdiff_t>(at), piece);
          break;
        default:
          t.erase(at, 1 + rnd() % 2);
          break;
        }
      }
      expect_same_json(Utf8ToHString(t), t);
    }
  }
}
