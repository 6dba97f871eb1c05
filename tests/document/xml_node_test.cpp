#include "htcore/document/xml_node.h"
#include "htcore/foundation/stream_types.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <unistd.h>

using namespace ht;

namespace {

std::string u8(const hstring& s) { return s.toUtf8(); }

// A compact picture of a tree: tag(attr=value,...)"content"[children], a
// '*' behind the tag for arrays; text children as "text"; blocks as written.
void dump(const THtNode* n, std::string& out) {
  auto* x = static_cast<const THtXMLNode*>(n);
  switch (n->TagType) {
  case htComment:
    out += "<!--" + u8(n->FContent) + "-->";
    return;
  case htDirective:
    out += "<?" + u8(n->FContent) + "?>";
    return;
  case htCData:
    out += "<![CDATA[" + u8(n->FContent) + "]]>";
    return;
  default:
    break;
  }
  out += u8(n->FTag);
  if (x->IsArray)
    out += '*';
  if (n->FAttributes && n->FAttributes->Count) {
    out += '(';
    bool first = true;
    for (const THtAttribute& a : *n->FAttributes) {
      if (!first)
        out += ',';
      first = false;
      out += u8(a.Name) + "=" + u8(a.Value);
    }
    out += ')';
  }
  if (!n->FContent.empty() || n->FTag.empty())
    out += '"' + u8(n->FContent) + '"';
  if (n->FirstChild()) {
    out += '[';
    for (const THtNode* c = n->FirstChild(); c; c = c->FNextSibling) {
      if (c != n->FirstChild())
        out += ',';
      dump(c, out);
    }
    out += ']';
  }
}

std::string dump(const THtNode* n) {
  std::string s;
  dump(n, s);
  return s;
}

std::string xml_tree(const char16_t* xml) { return dump(std::make_unique<THtXMLNode>(hstring(xml)).get()); }

std::string json_tree(const char16_t* json) { return dump(THtXMLNode::CreatefromJSON(hstring(json)).get()); }

template <class F> std::string error_of(F&& f) {
  try {
    f();
  } catch (const Exception& e) {
    return e.what();
  }
  return "";
}

TBytesStream bytes_stream(std::string_view bytes) {
  TBytesStream s;
  s.WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
  s.SetPosition(0);
  return s;
}

} // namespace

TEST(XmlNode, DataModel) {
  struct {
    const char16_t* xml;
    const char* tree;
  } cases[] = {
      {u"<a>text</a>", "a\"text\""},
      {u"<a>x<b/>y</a>", "a\"x\"[b,\"y\"]"},
      {u"<a> <b/> </a>", "a\"  \"[b]"}, // blank text goes to FContent
      {u"<a xml:space=\"preserve\"> <b/> </a>", "a(xml:space=preserve)\" \"[b,\" \"]"},
      {u"<a><b>1</b><b>2</b></a>", "a[b\"1\",b\"2\"]"},
      {u"<a B=\"1\" a='2' c=\"x&amp;y\"/>", "a(B=1,a=2,c=x&y)"}, // case kept, sorted by units
      {u"<R><Child/></R>", "R[Child]"},
      {u"<r>a &amp; &lt;b&gt; &#x41;</r>", "r\"a & <b> A\""},
      {u"<r><!--c--><![CDATA[<x>]]><?pi data?></r>", "r[<!--c-->,<![CDATA[<x>]]>,<?pi data?>]"},
      {u"<r>t<!--c-->u</r>", "r\"t\"[<!--c-->,\"u\"]"},
      {u"junk <!-- before --><!DOCTYPE r><r/> trailing <x/>", "r"},
      {u"</x><r/>", "r"},  // a stray end tag before the root is not the root
      {u"<a><b>", "a[b]"}, // the end of the text ends all elements
      {u"", "\"\""},       // no root: an empty text node
      {u"<ns:a><ns:b/></ns:a>", "ns:a[ns:b]"},
  };
  for (auto& c : cases)
    EXPECT_EQ(xml_tree(c.xml), c.tree) << u8(c.xml);
}

TEST(XmlNode, ProcessingInstructionsBeforeTheRoot) {
  THtXMLNode doc(u"<?xml version=\"1.0\"?>\n<?xml-stylesheet href=\"a.css\" type=\"text/css\"?><r/>"_hs);
  ASSERT_NE(doc.ProcessingInstructions(), nullptr);
  EXPECT_EQ(doc.ProcessingInstructions()->Count(), 2);
  EXPECT_EQ(u8(doc.GetPIAttribute(u"xml-stylesheet"_hs, u"href"_hs)), "a.css");
  EXPECT_EQ(u8(doc.GetPIAttribute(u"xml"_hs, u"version"_hs)), "1.0");
  EXPECT_EQ(u8(doc.GetPIAttribute(u"xml-style"_hs, u"href"_hs)), ""); // the name must be whole
  EXPECT_EQ(u8(doc.Code()),
            "<?xml version=\"1.0\"?>\r\n<?xml-stylesheet href=\"a.css\" type=\"text/css\"?>\r\n<r/>");
  // The header replaces the declaration instead of doubling it.
  EXPECT_EQ(std::string(doc.UTF8Code(true).view()),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
            "<?xml-stylesheet href=\"a.css\" type=\"text/css\"?>\r\n<r/>");
  doc.SetXML(u"<s/>"_hs); // a new parse starts a new list
  EXPECT_EQ(doc.ProcessingInstructions(), nullptr);
}

TEST(XmlNode, ErrorMessages) {
  struct {
    const char16_t* xml;
    const char* msg;
  } cases[] = {
      {u"<a></b>", "Tag order error: /a expected, /b found at position 3"},
      {u"<a>\n<b></a>", "Tag order error: /b expected, /a found at position 7"},
      {u"<a><b/></A>", "Tag order error: /a expected, /A found at position 7"},
      {u"<a x=1/>", "Attribute x value expected but 1 found. Line 0 position 7"},
      {u"<a>\n<b>< c/></b></a>", "Invalid tag name  . Line 1 position 8"},
  };
  for (auto& c : cases)
    EXPECT_EQ(error_of([&] { THtXMLNode n{hstring(c.xml)}; }), c.msg) << u8(c.xml);
  try {
    THtXMLNode n(u"<a></b>"_hs);
  } catch (const EHtXML&) {
    SUCCEED();
  }
}

TEST(XmlNode, Writers) {
  THtXMLNode doc(u"<r id=\"1\"><a>t&amp;&lt;</a><b x='q&quot;\t\u00a0'><c/>tail</b><e></e><!--n--></r>"_hs);
  EXPECT_EQ(u8(doc.Code()),
            "<r id=\"1\"><a>t&amp;&lt;</a><b x=\"q&quot;&#9;&#160;\"><c/>tail</b><e/><!--n--></r>");
  EXPECT_EQ(u8(doc.FormattedCode()), "<r id=\"1\">\r\n"
                                     "  <a>t&amp;&lt;</a>\r\n"
                                     "  <b x=\"q&quot;&#9;&#160;\">\r\n"
                                     "    <c/>tail\r\n"
                                     "  </b>\r\n"
                                     "  <e/>\r\n"
                                     "  <!--n-->\r\n"
                                     "</r>");
  EXPECT_EQ(u8(doc.InnerCode()), "<a>t&amp;&lt;</a><b x=\"q&quot;&#9;&#160;\"><c/>tail</b><e/><!--n-->");
  EXPECT_EQ(u8(doc.NodebyName(u"a"_hs)->InnerCode()), "t&<"); // content is not encoded here
  EXPECT_EQ(std::string(doc.UTF8Code().view()), doc.Code().toUtf8());
  EXPECT_EQ(std::string(doc.UTF8FormattedCode().view()), doc.FormattedCode().toUtf8());

  THtXMLNode blank(u"<r>  <a/>  </r>"_hs); // blank content is dropped when formatting
  EXPECT_EQ(u8(blank.FormattedCode()), "<r>\r\n  <a/>\r\n</r>");
  EXPECT_EQ(u8(blank.Code()), "<r>    <a/></r>");
}

TEST(XmlNode, XMLEncode) {
  struct {
    std::u16string in;
    const char* out;
  } cases[] = {
      {u"plain text \u00e9\u4e2d", "plain text \u00e9\u4e2d"},
      {u"\u00a0", "&#160;"},
      {u"a<b>&\"c'", "a&lt;b&gt;&amp;&quot;c'"},
      {std::u16string(u"\x01\x08\t\n", 4), "&#1;&#8;\t\n"},
      {u"nb\u00a0sp", "nb&#160;sp"},
      {u"\U0001F600!", "&#x01F600;!"},
      {u"\U0010FFFF", "&#x10FFFF;"},
  };
  for (auto& c : cases)
    EXPECT_EQ(u8(XMLEncode(hstring(c.in))), c.out);
  for (std::u16string lone :
       {std::u16string(1, char16_t(0xD83D)) + u"x", std::u16string(1, char16_t(0xDE00))})
    EXPECT_EQ(XMLEncode(hstring(lone)).view(), lone); // lone halves stay
  hstring shared = u"nothing to do"_hs;
  EXPECT_EQ(XMLEncode(shared).Pointer(), shared.Pointer());
  EXPECT_EQ(XMLEncode(hstring()).Pointer(), nullptr);
  EXPECT_EQ(u8(XMLEncode(u"a&b"_hs, 4)), "a&amp;b"); // overhead given
}

TEST(XmlNode, TreeOperations) {
  THtXMLNode n;
  n.SetTag(u"r"_hs);
  THtXMLNode* b1 = n.Add(u"a/b"_hs);
  EXPECT_EQ(u8(b1->FTag), "b");
  THtXMLNode* b2 = n.Add(u"a/b"_hs);
  EXPECT_EQ(dump(&n), "r[a[b],a[b]]");
  EXPECT_EQ(n.GetCreateNode(u"a/b"_hs), b1);
  EXPECT_NE(b1, b2);
  EXPECT_EQ(dump(n.GetCreateNode(u"a/c/d"_hs)), "d");
  EXPECT_EQ(dump(&n), "r[a[b,c[d]],a[b]]");

  n.SetNode(u"v"_hs, u"1"_hs);
  EXPECT_EQ(u8(n.GetNode1(u"v"_hs)), "1");
  EXPECT_EQ(u8(n.SafeNodeValue(u"missing"_hs)), "");
  EXPECT_EQ(n.GetNode(2)->FTag, u"v"_hs);

  THtXMLNode doc(u"<r><x:item/><item2/><y:item k='2'/></r>"_hs);
  EXPECT_EQ(u8(doc.NodebyNameNS(u"item"_hs)->FTag), "x:item");
  EXPECT_EQ(u8(doc.NodebyName(u"x:item"_hs)->GetLocalName()), "item");
  EXPECT_EQ(u8(doc.NodebyName(u"x:item"_hs)->GetPrefix()), "x");
  EXPECT_EQ(u8(doc.NodebyName(u"item2"_hs)->GetPrefix()), "");
  EXPECT_EQ(u8(doc.NodebyAttr(u"k"_hs, u"2"_hs)->FTag), "y:item");
  doc.RemoveNamespaces();
  EXPECT_EQ(dump(&doc), "r[item,item2,item(k=2)]");
  THtXMLNode ns(u"<p:r><p:a><q:b/></p:a></p:r>"_hs);
  ns.RemoveNamespaces();
  EXPECT_EQ(dump(&ns), "p:r[a[b]]"); // the node's own tag stays

  THtXMLNode* item2 = doc.NodebyName(u"item2"_hs);
  EXPECT_TRUE(doc.Extract(item2));
  EXPECT_EQ(item2->FParent, nullptr);
  EXPECT_FALSE(doc.Extract(item2));
  doc.InsertNode(0, item2);
  EXPECT_EQ(item2->FParent, &doc);
  EXPECT_EQ(dump(&doc), "r[item2,item,item(k=2)]");
  doc.Delete(1);
  EXPECT_EQ(dump(&doc), "r[item2,item(k=2)]");
}

TEST(XmlNode, ValuesAndAttributes) {
  THtXMLNode doc(u"<r><a>x<b/>y<c/>z</a><t>only</t><e><b/></e></r>"_hs);
  THtXMLNode* a = doc.NodebyName(u"a"_hs);
  EXPECT_EQ(u8(a->GetValue()), "xyz");
  EXPECT_FALSE(a->GetIsTextElement());
  EXPECT_TRUE(doc.NodebyName(u"t"_hs)->GetIsTextElement());
  // An element with content: the content changes.
  a->SetValue(u"new"_hs);
  EXPECT_EQ(dump(a), "a\"new\"[b,\"y\",c,\"z\"]");
  // No content but children: the first text child takes it, if any.
  THtXMLNode mixed(u"<m><b/>text</m>"_hs);
  mixed.SetValue(u"v"_hs);
  EXPECT_EQ(dump(&mixed), "m[b,\"v\"]");
  THtXMLNode* e = doc.NodebyName(u"e"_hs);
  e->SetValue(u"w"_hs);
  EXPECT_EQ(dump(e), "e\"w\"[b]");

  e->SetorRemoveAttribute(u"Key"_hs, u"1"_hs);
  e->SetorRemoveAttribute(u"key"_hs, u"2"_hs);
  EXPECT_EQ(dump(e), "e(Key=1,key=2)\"w\"[b]"); // names are case-sensitive
  e->SetorRemoveAttribute(u"Key"_hs, hstring());
  EXPECT_EQ(dump(e), "e(key=2)\"w\"[b]");

  THtXMLNode up(u"<r Z=\"1\" a=\"2\"><c B=\"3\"/></r>"_hs);
  up.LowerAttributes();
  EXPECT_EQ(dump(&up), "r(a=2,z=1)[c(b=3)]");
  THtXMLNode copy;
  copy.SetAttribute(u"old"_hs, u"x"_hs);
  copy.CopyAttributesFrom(&up);
  EXPECT_EQ(dump(&copy), "(a=2,z=1)\"\"");
}

TEST(XmlNode, AssignAndClone) {
  THtXMLNode src(u"<r k=\"v\">top<a x=\"1\">t<b/></a><!--c-->tail</r>"_hs);
  THtXMLNode dst(u"<old><gone/></old>"_hs);
  dst.Assign(&src);
  EXPECT_EQ(dump(&dst), "r(k=v)[a(x=1)\"t\"[b],<!--c-->,\"tail\"]"); // FContent is not copied

  std::unique_ptr<THtXMLNode> clone(src.Clone());
  EXPECT_EQ(dump(clone.get()), dump(&src));
  EXPECT_EQ(clone->FParent, nullptr);
  EXPECT_EQ(clone->NodebyName(u"a"_hs)->FParent, clone.get());

  auto js = THtXMLNode::CreatefromJSON(u"{\"a\":[{}]}"_hs);
  std::unique_ptr<THtXMLNode> jc(js->Clone());
  EXPECT_EQ(dump(jc.get()), "object[a*[object]]");
}

TEST(XmlNode, SortByAttribute) {
  THtXMLNode doc(u"<r><i n=\"b\"/><i n=\"C\"/><i n=\"a\"/></r>"_hs);
  doc.SortbyAttr(u"n"_hs);
  EXPECT_EQ(dump(&doc), "r[i(n=C),i(n=a),i(n=b)]"); // case-sensitive order
  doc.SortbyAttr(u"n"_hs, false);
  EXPECT_EQ(dump(&doc), "r[i(n=b),i(n=a),i(n=C)]");
}

TEST(XmlNode, XPathSetCreatesPaths) {
  struct {
    const char16_t* xml;
    const char16_t* path;
    const char* code;
  } cases[] = {
      {u"<r/>", u"a/b", "<r><a><b>v</b></a></r>"},
      {u"<r/>", u"a/@x", "<r><a x=\"v\"/></r>"},
      {u"<r/>", u"@x", "<r x=\"v\"/>"},
      {u"<r><a/><a/></r>", u"a", "<r><a>v</a><a/></r>"}, // the first match on the last step ends it
      {u"<r><a/><a/></r>", u"a/@x", "<r><a x=\"v\"/><a x=\"v\"/></r>"}, // inner steps go on
      {u"<r><a id=\"1\"/><a id=\"2\"/></r>", u"a[@id='2']/b", "<r><a id=\"1\"/><a id=\"2\"><b>v</b></a></r>"},
      {u"<r><a id=\"1\"/></r>", u"a[@id='3']/b", "<r><a id=\"1\"/></r>"}, // conditions create nothing
      {u"<r><a/><b/></r>", u"*[1]/@k", "<r><a/><b k=\"v\"/></r>"},
      {u"<r><a/></r>", u"*/c", "<r><a><c>v</c></a></r>"},
      {u"<r/>", u"*/c", "<r/>"}, // nothing to match and no name to create
      {u"<r><a><b/></a><b/></r>", u"//b/@x", "<r><a><b x=\"v\"/></a><b x=\"v\"/></r>"},
      {u"<r><a><b>old</b></a></r>", u"a/b/../@y", "<r><a y=\"v\"><b>old</b></a></r>"},
      {u"<r/>", u"current/@z", "<r z=\"v\"/>"},
      {u"<r><a><n>1</n></a><a><n>2</n></a></r>", u"a[n='2']/@hit",
       "<r><a><n>1</n></a><a hit=\"v\"><n>2</n></a></r>"},
      {u"<r/>", u"/a", "<r><a>v</a></r>"},
      // Unlike a node path, the setter closes a quote only with the same unit,
      // and only a space ends an operand.
      {u"<r><a k=\"it's\"/></r>", u"a[@k=\"it's\"]/b", "<r><a k=\"it's\"><b>v</b></a></r>"},
      {u"<r><a k=\"2\"/></r>", u"a[@k='1'\tor @k='2']/b", "<r><a k=\"2\"/></r>"},
      {u"<r><a k=\"2\"/></r>", u"a[@k='1' or @k='2']/b", "<r><a k=\"2\"><b>v</b></a></r>"},
  };
  for (auto& c : cases) {
    THtXMLNode doc{hstring(c.xml)};
    doc.XPathSet(hstring(c.path), u"v"_hs);
    EXPECT_EQ(u8(doc.Code()), c.code) << u8(c.xml) << " " << u8(c.path);
  }
}

TEST(XmlNode, JsonDataModel) {
  struct {
    const char16_t* json;
    const char* tree;
  } cases[] = {
      {u"{\"a\":1,\"b\":[1,2]}", "object(a=1)[b*[value\"1\",value\"2\"]]"},
      {u"{},{}", "array*[object,object]"},
      {u" {\"k\":1} , {\"k\":2} ,{} ", "array*[object(k=1),object(k=2),object]"},
      {u"[1,\"x\",true,null,-2.5e1,{\"k\":\"v\"},[]]",
       "array*[value\"1\",value\"x\",value\"true\",value\"null\",value\"-2.5e1\",object(k=v),array*]"},
      {u"{a:'b', c : bare}", "object(a=b,c=bare)"},
      {u"{\"o\":{\"p\":{}},\"e\":[]}", "object[o[p],e*]"},
      {u"{\"a\":1,\"a\":2}", "object(a=2)"},
      {u"{\"s\":\"x\\ny\\u00e9\"}", "object(s=x\ny\u00e9)"},
      {u"\"str\"", "\"str\""},
      {u"42", "\"42\""},
      {u"{} // trailing note", "object"},
      {u"{}\r\n", "object"},
  };
  for (auto& c : cases)
    EXPECT_EQ(json_tree(c.json), c.tree) << u8(c.json);
}

TEST(XmlNode, JsonErrors) {
  struct {
    std::u16string json;
    const char* msg;
  } cases[] = {
      {u"", "JSON is empty"},
      {u"  \r\n", "Incorrect JSON, token expected."},
      {u"[1,]", "Incorrect JSON, token expected."},
      {u"[1,", "Incorrect JSON, token expected."},
      {u"[1", "Incorrect JSON, token expected."},
      {u"[1 2]", "Incorrect JSON, token expected."},
      {u"[abc]", "Incorrect JSON, token expected."},
      {u"{\"a\":1,}", "Name/Value expected after comma"},
      {u"{\"a\":1,", "Name/Value expected after comma"},
      {u"{\"a\":1", "Incorrect JSON, token expected."},
      {u"{\"a\":1 \"b\":2}", "Incorrect JSON, token expected."},
      {u"{\"\":1}", "Incorrect JSON, token expected."},
      {u"{\"a\" 1}", "Name expected"},
      {u"{1:2}", "Name expected"},
      {u"{\"a\":}", "Value expected"},
      {u"}", "Incorrect JSON, token expected."},
      {u"{},1", "Incorrect JSON, token expected."},
      {u"{},", "Incorrect JSON, token expected."},
      {u"{} }", "JSON is not terminated properly"},
      {u"{} x", "JSON is not terminated properly"},
      {u"{} / x", "JSON is not terminated properly"},
      {u"[01]", "Incorrect number"},
      {u"{\"a\":\"b}", "Unterminated string"},
      {std::u16string(1025, u'[') + std::u16string(1025, u']'), "JSON contains too many nested nodes"},
  };
  for (auto& c : cases)
    EXPECT_EQ(error_of([&] { THtXMLNode::CreatefromJSON(hstring(c.json)); }), c.msg) << u8(hstring(c.json));
  // 1024 levels are fine.
  auto deep = THtXMLNode::CreatefromJSON(hstring(std::u16string(1024, u'[') + std::u16string(1024, u']')));
  EXPECT_TRUE(deep->IsArray);
  try {
    THtXMLNode::CreatefromJSON(u"[1,]"_hs);
  } catch (const EHtJSONParserException&) {
    SUCCEED();
  }
}

TEST(XmlNode, JsonWriter) {
  auto doc = THtXMLNode::CreatefromJSON(u"{\"a\":1,\"s\":\"x\\ny\",\"b\":{\"c\":\"2\"},\"d\":[{},[],5]}"_hs);
  EXPECT_EQ(u8(doc->JSON()),
            "{\r\n\"a\":\"1\",\"s\":\"x\\ry\",\"b\":{\r\n\"c\":\"2\"},\"d\":[\r\n{\r\n},\r\n[\r\n]\r\n,\r\n"
            "{\r\n}]\r\n}");
  // Objects and attributes come back; types and text do not, so a scalar in
  // an array comes back as an empty object.
  auto back = THtXMLNode::CreatefromJSON(doc->JSON());
  EXPECT_EQ(dump(back.get()), "object(a=1,s=x\ry)[b(c=2),d*[object,array*,object]]");

  struct {
    std::u16string in;
    const char* out;
  } cases[] = {
      {u"plain", "plain"},
      {u"q\"b\\s", "q\\\"b\\\\s"},
      {std::u16string(u"\b\t\n\r\f\x01", 6), "\\b\\t\\r\\n\f\x01"}, // LF and CR swap, by design
  };
  for (auto& c : cases)
    EXPECT_EQ(u8(JSONEncode(hstring(c.in))), c.out);
  hstring shared = u"no escapes"_hs;
  EXPECT_EQ(JSONEncode(shared).Pointer(), shared.Pointer());
}

TEST(XmlNode, StreamsAndEncodings) {
  struct {
    std::string bytes;
    THtmlEncoding enc;
    std::u16string text;
  } cases[] = {
      {"\xEF\xBB\xBF<a>\xC3\xA9</a>", heDefault, u"<a>\u00e9</a>"},
      {std::string("\xFF\xFE<\0a\0>\0", 8), heDefault, u"<a>"},
      {std::string("\xFE\xFF\0<\0a", 6), heDefault, u"\u3c00\u6100"}, // taken as it is: no swap
      {std::string("<\0a\0>\0", 6), heUTF16, u"<a>"},
      {std::string("\0<\0a", 4), heDefault, u"\u3c00\u6100"}, // a first NUL means UTF-16
      {"<a>\xC3\xA9</a>", heDefault, u"<a>\u00e9</a>"},       // UTF-8 found without a mark
      {"<a>\xE9</a>", heDefault, u"<a>\u00e9</a>"},           // else the 8-bit code page
      {"<a>\xE9</a>", heUTF8, u"<a>\uFFFD</a>"},
  };
  for (auto& c : cases) {
    TBytesStream s = bytes_stream(c.bytes);
    EXPECT_EQ(StreamtoText(s, c.enc).view(), c.text);
  }
  for (std::string_view tiny : {"", "<a"}) {
    TBytesStream s = bytes_stream(tiny);
    EXPECT_EQ(error_of([&] { StreamtoText(s); }), "Cannot load empty stream");
  }

  TBytesStream json = bytes_stream("\xEF\xBB\xBF{\"k\":\"\xC3\xA9\"}");
  EXPECT_EQ(dump(THtXMLNode::CreateFromStream(json, heDefault, true).get()), "object(k=\u00e9)");
  // UTF-8 JSON is read from its bytes: the errors are those of the text.
  TBytesStream cut = bytes_stream("{\"k\":[1,\"\xC3\xA9\"");
  std::string from_text = error_of([] { THtXMLNode::CreatefromJSON(u"{\"k\":[1,\"\u00e9\""_hs); });
  EXPECT_FALSE(from_text.empty());
  EXPECT_EQ(error_of([&] { THtXMLNode::CreateFromStream(cut, heUTF8, true); }), from_text);
  TBytesStream xml = bytes_stream(std::string("\xFF\xFE<\0r\0/\0>\0", 10));
  EXPECT_EQ(dump(THtXMLNode::CreateFromStream(xml).get()), "r");
}

TEST(XmlNode, EncodingFromTheDeclaration) {
  // UTF-8 bytes that arrived as 8-bit units: the declaration re-decodes them.
  std::string bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><r a=\"\xC3\xA9\">\xE4\xB8\xAD</r>";
  std::u16string units;
  for (unsigned char b : bytes)
    units += static_cast<char16_t>(b);
  THtXMLNode doc{hstring(units)};
  EXPECT_EQ(dump(&doc), "r(a=\u00e9)\"\u4e2d\"");
  // Without the declaration the units stay as they came.
  std::u16string plain = units.substr(units.find(u'<', 1));
  THtXMLNode raw{hstring(plain)};
  EXPECT_EQ(u8(raw.GetValue()), "\u00e4\u00b8\u00ad");
}

TEST(XmlNode, FilesRoundTrip) {
  auto dir = std::filesystem::temp_directory_path() / ("htcore_xml_" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  hstring f8 = hstring::FromUtf8((dir / "u8.xml").string());
  hstring fa = hstring::FromUtf8((dir / "ansi.xml").string());
  hstring ff = hstring::FromUtf8((dir / "fmt.xml").string());
  THtXMLNode doc(u"<r><a k=\"\u00e9\">\u4e2d</a><b/></r>"_hs);
  doc.SaveToFileUTF8(f8);
  doc.SaveToFileANSI(fa);
  doc.SaveToFileUTF8Format(ff);
  std::ifstream in((dir / "u8.xml").string(), std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(bytes.substr(0, 3), "\xEF\xBB\xBF");
  EXPECT_EQ(dump(THtXMLNode::CreateFromFile(f8).get()), dump(&doc));
  // The line breaks of the formatted form come back as blank content.
  EXPECT_EQ(dump(THtXMLNode::CreateFromFile(ff).get()), "r\"\r\n  \r\n  \r\n\"[a(k=\u00e9)\"\u4e2d\",b]");
  // Narrowed by the system code page: the ideograph cannot survive.
  EXPECT_EQ(u8(THtXMLNode::CreateFromFile(fa)->NodebyName(u"a"_hs)->GetAttribute(u"k"_hs)), "\u00e9");
  EXPECT_THROW(THtXMLNode::CreateFromFile(hstring::FromUtf8((dir / "missing.xml").string())), Exception);
  std::filesystem::remove_all(dir);
}

TEST(XmlNode, SystemFilesRoundTrip) {
  const char* candidates[] = {
      "/usr/share/xml/schema/xml-core/catalog.xml",
      "/usr/share/xml/iso-codes/iso_15924.xml",
      "/usr/share/xml/iso-codes/iso_639-5.xml",
      "/usr/share/xml/iso-codes/iso_3166-1.xml",
  };
  int tried = 0;
  for (const char* path : candidates) {
    std::error_code ec;
    auto size = std::filesystem::file_size(path, ec);
    if (ec || size == 0 || size > 200000)
      continue;
    ++tried;
    auto doc = THtXMLNode::CreateFromFile(hstring::FromUtf8(path));
    ASSERT_FALSE(doc->FTag.empty()) << path;
    hstring code = doc->Code();
    THtXMLNode again(code);
    EXPECT_EQ(dump(&again), dump(doc.get())) << path;
    EXPECT_EQ(again.Code(), code) << path;
    THtXMLNode formatted(doc->FormattedCode());
    EXPECT_EQ(formatted.Code(), THtXMLNode(formatted.Code()).Code()) << path;
  }
  if (tried == 0)
    GTEST_SKIP() << "no XML files of the system found";
}

TEST(XmlNode, DeepNestingUsesNoRecursion) {
  constexpr int kDepth = 100000;
  std::u16string xml;
  xml.reserve(kDepth * 8);
  for (int i = 0; i < kDepth; ++i)
    xml += u"<a>";
  xml += u"x";
  for (int i = 0; i < kDepth; ++i)
    xml += u"</a>";
  auto doc = std::make_unique<THtXMLNode>(hstring(xml));
  int depth = 0;
  const THtNode* n = doc.get();
  while (n->FirstChild()) {
    n = n->FirstChild();
    ++depth;
  }
  EXPECT_EQ(depth, kDepth - 1);
  EXPECT_EQ(u8(n->FContent), "x");
  EXPECT_EQ(doc->Code().view(), xml);
  std::unique_ptr<THtXMLNode> clone(doc->Clone());
  EXPECT_EQ(clone->Code().view(), xml);
  EXPECT_EQ(doc->JSON().Length() > 0, true);
  doc->RemoveNamespaces();
  doc->XPathSet(u"//a/@d"_hs, u"1"_hs);
  EXPECT_EQ(static_cast<const THtXMLNode*>(n)->GetAttribute(u"d"_hs), u"1"_hs);
}
