// Loading a page as a host does: parse, gather the sheets, cascade.
#include "page_layout.h"

#include "htcore/document/doctype.h"
#include "htcore/style/element_style.h"
#include "htcore/style/sheet_files.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

using namespace ht;

namespace render_svg {

namespace {

// The viewport and document mode a node answers come from its page; one page
// is loaded at a time.
float g_width = 1024;
bool g_quirks = false;
const TStyleDriver* g_driver = nullptr;

class TPageStyle : public TBaseElementStyle {
public:
  using TBaseElementStyle::TBaseElementStyle;
  void GetCSSVariable(TCSSTokenSequence& Seq) override {
    if (g_driver)
      g_driver->ResolveVariable(Seq);
  }
};

class TPageNode : public TStyledHTMLNode {
  HT_NODE_CLASS(TPageNode)

public:
  float GetViewPortWidth() const override { return g_width; }
  float GetViewPortHeight() const override { return g_width * 0.75f; }
  bool QuirksMode() override { return g_quirks; }
  hstring DefaultFontFamily() const override { return u"sans-serif"_hs; }
  std::unique_ptr<TBaseElementStyle> CreateStyle() override { return std::make_unique<TPageStyle>(this); }
};

} // namespace

TStyledPage::TStyledPage() = default;
TStyledPage::~TStyledPage() {
  if (g_driver == FDriver.get())
    g_driver = nullptr;
}

void TStyledPage::Load(const std::string& Bytes, const std::string& BaseDir, const std::vector<std::string>& Sheets,
                       int Width) {
  g_width = static_cast<float>(Width);
  g_quirks = HtDoctypeQuirks(Bytes);
  FDriver.reset();
  FRoot = std::make_unique<TPageNode>();
  FRoot->ParseBytes(Bytes.data(), Bytes.size());
  FDriver = std::make_unique<TStyleDriver>(FRoot.get());
  g_driver = FDriver.get();
  FDriver->QuirksMode = g_quirks;
  // Linked sheets come from disk beside the page; other URLs are left out.
  FDriver->BaseURL = hstring::FromUtf8(BaseDir);
  FDriver->Loader = HtLocalSheetLoader;
  for (const std::string& s : Sheets)
    FDriver->AddSheet(hstring::FromUtf8(s));
  FDriver->SetViewport(Width);
  FDriver->Run();
}

} // namespace render_svg
