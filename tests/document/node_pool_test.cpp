// Trees built by the parsers live in the node pool; these tests hold the
// ownership rules to it. Run under AddressSanitizer (scripts/test.sh), any
// block freed too early or kept too long is reported.
#include "htcore/document/html_node.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/node_pool.h"
#include "foundation/node_pool_batch.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace ht;

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAsan = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kAsan = true;
#else
constexpr bool kAsan = false;
#endif
#else
constexpr bool kAsan = false;
#endif

hstring catalogue(int items) {
  std::string s = "<catalog>";
  for (int i = 0; i < items; ++i)
    s += "<item id=\"" + std::to_string(i) + "\" kind=\"k\"><name>Item " + std::to_string(i) +
         "</name><tags><tag>a</tag><tag>b</tag></tags></item>";
  return Utf8ToHString(s + "</catalog>");
}

// Takes Node out of its parent without freeing it.
THtNode* detach(THtNode* Node) {
  Node->Parent()->GetNodes()->RemoveItem(Node);
  Node->FParent = nullptr;
  return Node;
}

TEST(NodePool, ParsedNodesComeFromThePool) {
  size_t before = detail::NodePoolStats().ChunksHeld;
  {
    THtXMLNode doc(catalogue(2000));
    ASSERT_EQ(doc.GetCount(), 2000);
    if (detail::NodePoolStats().Enabled) {
      EXPECT_GT(detail::NodePoolStats().ChunksHeld, before + 4);
    }
  }
  // The thread keeps at most the chunk it is filling.
  EXPECT_LE(detail::NodePoolStats().ChunksHeld, before + 1);
}

TEST(NodePool, MovedNodeOutlivesItsDocument) {
  THtXMLNode target(u"<list/>"_hs);
  {
    auto source = std::make_unique<THtXMLNode>(catalogue(500));
    THtNode* item = detach(source->GetNode(250));
    item->FParent = &target;
    target.GetNodes()->Add(item);
    source.reset();
  }
  THtNode* item = target.FirstChild();
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->GetAttribute(u"id"), u"250");
  EXPECT_EQ(item->FindNode(u"name")->FContent, u"Item 250");
  item->SetAttribute(u"seen", u"1");
  item->GetNodes()->Add(new THtXMLNode());
  EXPECT_EQ(target.XPathValue(u"item/name"), u"Item 250");
}

TEST(NodePool, CopiedTextOutlivesItsDocument) {
  hstring name, id, tag;
  {
    THtXMLNode doc(catalogue(300));
    THtNode* item = doc.GetNode(123);
    name = item->FindNode(u"name")->FContent;
    id = item->GetAttribute(u"id");
    tag = item->FTag;
  }
  EXPECT_EQ(name, u"Item 123");
  EXPECT_EQ(id, u"123");
  EXPECT_EQ(tag, u"item");
  name += u"!";
  EXPECT_EQ(name, u"Item 123!");
}

// Tag, attribute and key names are interned for the process: taken out of a
// tree they stay valid after every tree and reader that used them is gone,
// and editing a copy leaves the shared name alone.
TEST(NodePool, InternedNamesOutliveTheirDocuments) {
  hstring xml_tag, xml_attr, json_key, html_tag, html_attr;
  {
    THtXMLNode doc(catalogue(10));
    THtNode* item = doc.GetNode(3);
    xml_tag = item->FTag;
    xml_attr = item->FAttributes->List[0].Name;
    auto json = THtXMLNode::CreatefromJSON(u"{\"some_key\":\"v\"}"_hs);
    json_key = json->FAttributes->List[0].Name;
    THtmlNode html;
    html.Parse(u"<section data-x=1>t</section>"_hs);
    THtNode* sec = html.FindNode(u"section");
    ASSERT_NE(sec, nullptr);
    html_tag = sec->FTag;
    html_attr = sec->FAttributes->List[0].Name;
  }
  EXPECT_EQ(xml_tag, u"item");
  EXPECT_EQ(xml_attr, u"id");
  EXPECT_EQ(json_key, u"some_key");
  EXPECT_EQ(html_tag, u"section");
  EXPECT_EQ(html_attr, u"data-x");
  hstring edit = xml_tag;
  edit.UniqueData()[0] = u'I';
  EXPECT_EQ(edit, u"Item");
  THtXMLNode again(catalogue(5));
  EXPECT_EQ(again.GetNode(0)->FTag, u"item");
  // The same text, unless other documents of this program have filled the table.
  if (xml_tag.RefCount() < 0) {
    EXPECT_EQ(again.GetNode(0)->FTag.Pointer(), xml_tag.Pointer());
  }
}

// Short texts of a parsed tree lie in the pool; a copy taken out keeps its
// block (and so its chunk) alive after the document has gone, and frees it
// when the last copy goes, on whichever thread.
TEST(NodePool, PooledTextsOutliveTheirDocument) {
  hstring name, value, blank, json_value, html_text, comment;
  size_t before = detail::NodePoolStats().ChunksHeld;
  {
    THtXMLNode doc(u"<r><!--note--><a k=\"a value of some length\">  <b>text</b>\n</a></r>"_hs);
    THtNode* a = doc.FindNode(u"a");
    ASSERT_NE(a, nullptr);
    value = a->GetAttribute(u"k");
    name = a->FTag;
    blank = a->FContent;
    comment = doc.FirstChild()->FContent;
    auto json = THtXMLNode::CreatefromJSON(u"{\"k\":\"json text\",\"n\":[12345]}"_hs);
    json_value = json->GetAttribute(u"k");
    THtmlNode html;
    html.Parse(u"<p title=t>html text &amp; more</p>"_hs);
    html_text = html.FindNode(u"p")->FirstChild()->FContent;
  }
  EXPECT_EQ(value, u"a value of some length");
  EXPECT_EQ(name, u"a");
  EXPECT_EQ(blank, u"  \n");
  EXPECT_EQ(comment, u"note");
  EXPECT_EQ(json_value, u"json text");
  EXPECT_EQ(html_text, u"html text & more");
  // Written through a copy: the pooled block is shared, so it is copied first.
  hstring edit = value;
  edit.UniqueData()[0] = u'A';
  EXPECT_EQ(value, u"a value of some length");
  edit += u"!";
  EXPECT_EQ(edit, u"A value of some length!");
  std::thread([&] { value.clear(); json_value = hstring(); }).join();
  name.clear(), blank.clear(), comment.clear(), html_text.clear();
  EXPECT_LE(detail::NodePoolStats().ChunksHeld, before + 1);
}

TEST(NodePool, TreeTextsComeFromThePoolOnlyInAScopeAndWhenShort) {
  const std::u16string longer(2000, u'x'); // beyond the largest pool block
  hstring outside = hstring::ForTree(u"abc", 3);
  hstring inside, big, trimmed;
  size_t before = detail::NodePoolStats().ChunksHeld;
  {
    TNodePoolScope pool;
    inside = hstring::ForTree(u"abc", 3);
    big = hstring::ForTree(longer);
    trimmed = hstring::ForTree(u"abcdef", 6);
  }
  if (detail::NodePoolStats().Enabled) {
    EXPECT_GE(detail::NodePoolStats().ChunksHeld, before);
  }
  EXPECT_EQ(outside, inside);
  EXPECT_EQ(big.view(), longer);
  EXPECT_TRUE(hstring::ForTree(u"", 0).empty());
  trimmed.Truncate(2); // in place, then freed with its shorter length
  EXPECT_EQ(trimmed, u"ab");
  trimmed.clear();
  inside.clear();
  big.clear();
}

TEST(NodePool, NodesAreFreedOneByOne) {
  THtmlNode doc;
  doc.Parse(u"<ul><li>a<li>b<li>c</ul><p class=x>text</p>"_hs);
  THtNode* ul = doc.FindNode(u"ul");
  ASSERT_NE(ul, nullptr);
  ul->DeleteChild(ul->GetNode(1));
  EXPECT_EQ(ul->GetCount(), 2);
  EXPECT_EQ(ul->FirstChild()->NextSibling()->TextContent(), u"c");
  delete detach(ul);
  EXPECT_EQ(doc.FindNode(u"p")->GetAttribute(u"class"), u"x");
}

TEST(NodePool, TreeMadeOnOneThreadIsFreedOnAnother) {
  size_t before = detail::NodePoolStats().ChunksHeld;
  std::unique_ptr<THtXMLNode> doc;
  std::thread([&] { doc = std::make_unique<THtXMLNode>(catalogue(3000)); }).join();
  EXPECT_EQ(doc->GetCount(), 3000);
  doc.reset();
  // The maker has ended, so nothing of that parse is held any more.
  EXPECT_LE(detail::NodePoolStats().ChunksHeld, before);

  // Freed while the maker still fills its chunk, and then the other way round.
  std::unique_ptr<THtXMLNode> doc2 = std::make_unique<THtXMLNode>(catalogue(100));
  std::thread([&] { doc2.reset(); }).join();
  THtXMLNode again(catalogue(100));
  EXPECT_EQ(again.GetCount(), 100);
}

// Blocks of several chunks freed in one batch, in an order that comes back
// to each chunk twice: each chunk goes back once the count of its last block
// reaches it, and the chunk still waiting when the batch ends goes then.
TEST(NodePool, BatchedFreesReleaseEachChunkOnce) {
  if (!detail::NodePoolStats().Enabled)
    GTEST_SKIP() << "no pool on this machine";
  constexpr std::size_t kBlock = 512;
  constexpr std::size_t kPerChunk = detail::kPoolChunk / kBlock;
  const std::size_t before = detail::NodePoolStats().ChunksHeld;
  std::vector<void*> blocks;
  {
    TNodePoolScope scope;
    for (std::size_t i = 0; i < 6 * kPerChunk; ++i)
      blocks.push_back(detail::PoolAlloc(kBlock));
  }
  ASSERT_GE(detail::NodePoolStats().ChunksHeld, before + 6);
  {
    detail::TPoolFreeBatch batch;
    // Odd blocks first, from the last to the first, then the even ones.
    for (std::size_t i = blocks.size(); i-- > 0;)
      if (i % 2)
        detail::PoolFree(blocks[i], kBlock);
    {
      detail::TPoolFreeBatch inner; // nested batches end with the outermost
      for (std::size_t i = blocks.size(); i-- > 0;)
        if (i % 2 == 0)
          detail::PoolFree(blocks[i], kBlock);
    }
    // The first chunk's last frees still wait in the batch.
    EXPECT_GE(detail::NodePoolStats().ChunksHeld, before + 1);
  }
  EXPECT_LE(detail::NodePoolStats().ChunksHeld, before);
}

// Two trees made in turn share chunks; freeing nodes of both in one batch,
// then each tree on its own, leaves the rest of each intact and nothing held.
TEST(NodePool, InterleavedNodesOfTwoTreesAreFreed) {
  const std::size_t before = detail::NodePoolStats().ChunksHeld;
  {
    std::vector<std::unique_ptr<THtXMLNode>> docs;
    for (int i = 0; i < 6; ++i)
      docs.push_back(std::make_unique<THtXMLNode>(catalogue(300)));
    {
      detail::TPoolFreeBatch batch;
      for (int k = 0; k < 100; ++k)
        for (size_t d = 0; d < 2; ++d)
          docs[d]->DeleteChild(docs[d]->GetNode(k));
    }
    for (size_t d = 0; d < 2; ++d) {
      THtNode* root = docs[d].get();
      ASSERT_EQ(root->GetCount(), 200);
      EXPECT_EQ(root->GetNode(0)->GetAttribute(u"id"), u"1");
      EXPECT_EQ(root->GetNode(199)->FindNode(u"name")->TextContent(), u"Item 299");
    }
    // Every other document goes on another thread while this one frees the rest.
    std::thread other([&] {
      for (size_t d = 0; d < docs.size(); d += 2)
        docs[d].reset();
    });
    for (size_t d = 1; d < docs.size(); d += 2)
      docs[d].reset();
    other.join();
  }
  THtXMLNode again(catalogue(10));
  EXPECT_EQ(again.GetCount(), 10);
  EXPECT_LE(detail::NodePoolStats().ChunksHeld, before + 1);
}

TEST(NodePool, JsonAndHtmlTreesUseThePoolToo) {
  auto json = THtXMLNode::CreatefromJSON(u"{\"a\":[1,2,{\"b\":\"c\"}],\"d\":true}"_hs);
  THtNode* a = json->FindNode(u"a");
  ASSERT_NE(a, nullptr);
  ASSERT_EQ(a->GetCount(), 3);
  hstring c = a->LastChild()->GetAttribute(u"b"); // scalars are attributes
  THtmlNode html;
  html.Parse(u"<div id=a><span>x</span></div>"_hs);
  hstring x = html.FindNode(u"span")->TextContent();
  json.reset();
  html.DeleteAllChildren();
  EXPECT_EQ(c, u"c");
  EXPECT_EQ(x, u"x");
}

// A host class with a stricter alignment than the pool gives.
class alignas(64) TWideNode : public THtXMLNode {
  HT_NODE_CLASS(TWideNode)
public:
  char Extra[200] = {};
  THtNodeClass GetElementClass(const hstring&, THtNode*) override { return NodeClass<TWideNode>(); }
};

class TBigNode : public THtmlNode {
  HT_NODE_CLASS(TBigNode)
public:
  char Extra[4000] = {}; // beyond the pool's largest block
  THtNodeClass GetElementClass(const hstring&, THtNode*) override { return NodeClass<TBigNode>(); }
};

TEST(NodePool, HostClassesOfAnySizeAndAlignment) {
  {
    TWideNode doc;
    doc.SetXML(catalogue(50));
    ASSERT_EQ(doc.GetCount(), 50);
    for (THtNode* n : *doc.FNodes) {
      EXPECT_EQ(reinterpret_cast<uintptr_t>(n) % 64, 0u);
      EXPECT_NE(dynamic_cast<TWideNode*>(n), nullptr);
    }
  }
  TBigNode html;
  html.Parse(u"<p>a<b>b</b></p>"_hs);
  THtNode* b = html.FindNode(u"b");
  ASSERT_NE(b, nullptr);
  EXPECT_NE(dynamic_cast<TBigNode*>(b), nullptr);
  EXPECT_EQ(b->TextContent(), u"b");
}

TEST(NodePool, AllocatorOutsideAScopeUsesTheHeap) {
  size_t before = detail::NodePoolStats().ChunksHeld;
  std::vector<THtNode*> made;
  for (int i = 0; i < 2000; ++i)
    made.push_back(new THtXMLNode());
  EXPECT_LE(detail::NodePoolStats().ChunksHeld, before + 1);
  for (THtNode* n : made)
    delete n;
}

using TNodePoolDeathTest = ::testing::Test;

TEST(TNodePoolDeathTest, UseAfterFreeOfAPooledNodeIsReported) {
  if (!kAsan)
    GTEST_SKIP() << "needs AddressSanitizer";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        THtXMLNode doc(catalogue(10));
        THtNode* item = doc.GetNode(5);
        doc.DeleteChild(item);
        volatile int hash = item->FTagHash;
        (void)hash;
      },
      "use-after-poison|use-after-free");
}

} // namespace

// More chunks than the pool keeps resident: the rest go back to the system in
// batches, and chunks of every kind (resident, waiting, given back) serve the
// next parse with clean, writable blocks.
TEST(NodePool, ChunksBeyondTheResidentReserveAreGivenBackAndReused) {
  constexpr std::size_t kBlock = detail::kPoolMaxBlock;
  constexpr std::size_t kBlocks = 1300 * (detail::kPoolChunk / kBlock);
  const std::size_t before = detail::NodePoolStats().ChunksHeld;
  for (int round = 0; round < 2; ++round) {
    std::vector<unsigned char*> blocks(kBlocks);
    {
      TNodePoolScope scope;
      for (std::size_t i = 0; i < kBlocks; ++i) {
        blocks[i] = static_cast<unsigned char*>(detail::PoolAlloc(kBlock));
        blocks[i][0] = static_cast<unsigned char>(i);
        blocks[i][kBlock - 1] = static_cast<unsigned char>(i >> 8);
      }
    }
    for (std::size_t i = 0; i < kBlocks; ++i) {
      ASSERT_EQ(blocks[i][0], static_cast<unsigned char>(i));
      ASSERT_EQ(blocks[i][kBlock - 1], static_cast<unsigned char>(i >> 8));
      detail::PoolFree(blocks[i], kBlock);
    }
  }
  EXPECT_LE(detail::NodePoolStats().ChunksHeld, before);
}
