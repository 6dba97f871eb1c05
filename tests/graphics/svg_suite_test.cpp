// Every document of the drawing suite is well-formed XML with an svg root of
// the scene's size; real renderers are checked outside ctest (svg_check.sh).
#include "htcore/document/xml_node.h"
#include "svg_scenes.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

using namespace ht;

TEST(SVGSuite, EveryDocumentIsWellFormed) {
  std::set<std::string> names;
  int documents = 0;
  for (const htcore_svg::TSvgScene& s : htcore_svg::Scenes()) {
    EXPECT_TRUE(names.insert(s.Name).second) << "scene names are file names: " << s.Name;
    std::vector<hstring> pages = htcore_svg::RenderScene(s);
    ASSERT_EQ(static_cast<int>(pages.size()), s.Pages) << s.Name;
    for (const hstring& svg : pages) {
      std::unique_ptr<THtXMLNode> root;
      ASSERT_NO_THROW(root = std::make_unique<THtXMLNode>(svg)) << s.Name << "\n" << svg.toUtf8();
      THtXMLNode* top = root.get(); // the tree's root is the svg element
      EXPECT_EQ(top->GetAttribute(u"width"_hs).toUtf8(), std::to_string(s.Width)) << s.Name;
      EXPECT_EQ(top->GetAttribute(u"height"_hs).toUtf8(), std::to_string(s.Height)) << s.Name;
      ++documents;
    }
  }
  EXPECT_GE(documents, 30);
}
