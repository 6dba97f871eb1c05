// TStyleDriver: the cascade for a whole document, ready to use.
//
// Given the root of a TStyledHTMLNode tree, it gathers the document's sheets
// (<style> elements and <link rel=stylesheet> through the host's loader, with
// their @import), and styles every element in the order of the weights: the
// default sheet, the quirks sheet in quirks mode, the document's sheets and
// the host's, then the element's own style. Pseudo elements (::before,
// ::after, ::marker) are made where a rule gives them content.
//
//   ht::TStyledHTMLNode doc;
//   doc.Parse(html);
//   ht::TStyleDriver driver(&doc);
//   driver.Loader = [](const ht::hstring& url) { return read_css(url); };
//   driver.Run();                              // every element styled
//   p->AddClass(u"note"_hs);                   // or AddCSS, ClearCSS ...
//   driver.Run();                              // restyles what that touched
//   if (driver.SetViewport(480)) driver.Run(); // media queries switched
//
// Styles point into the sheets the driver owns: keep the driver as long as
// the styles are read. The walk is a loop, so trees of any depth are fine.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/style/css_cascade.h"
#include "htcore/style/css_sheet.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace ht {

class TStyledHTMLNode;

class TStyleDriver {
public:
  // The text of the sheet at URL (href resolved against BaseURL), or empty
  // when it cannot be had.
  using TSheetLoader = std::function<hstring(const hstring& URL)>;

  explicit TStyleDriver(TStyledHTMLNode* ARoot);
  ~TStyleDriver();
  TStyleDriver(const TStyleDriver&) = delete;
  TStyleDriver& operator=(const TStyleDriver&) = delete;

  TSheetLoader Loader;      // <link> and @import; without one they are left out
  hstring BaseURL;          // base of relative hrefs
  TCSSMedia Media = cmScreen;
  bool QuirksMode = false;  // adds the quirks sheet; the root's QuirksMode() at construction
  int MaxImportDepth = 8;   // @import chains deeper than this are cut

  // A sheet of the host's (a user sheet, a theme): after the document's
  // sheets, so that it wins ties. Takes effect at the next Run.
  void AddSheet(const hstring& Text, const hstring& URL = hstring());
  // Reads the document's sheets anew (Run does it the first time) and marks
  // every element for a new cascade.
  void CollectSheets();
  // Styles each element whose style is not calculated (efStyleCalculated
  // clear), and with it its subtree and its following siblings' subtrees,
  // which selectors may tie to it. Answers the number of elements styled.
  int Run();
  // Marks every element for a new cascade.
  void Invalidate();
  // Tests the media queries of all sheets against a new viewport width (and
  // device width; 0: the same). True when a rule switched on or off: every
  // element is then marked, and the next Run restyles.
  bool SetViewport(int Width, int DeviceWidth = 0);
  // One element's cascade, with its pseudo elements; its parent is taken as
  // styled.
  void StyleElement(TStyledHTMLNode* Node);

  // Replaces Seq, standing on a var( function, by the tokens of that variable
  // as the last sheet defining it has it, or by the fallback behind the comma;
  // nested var( are followed a few levels. A host's style class calls it
  // from its GetCSSVariable. False when Seq stands on no var( or nothing
  // replaces it.
  bool ResolveVariable(TCSSTokenSequence& Seq) const;

  // The sheets in cascade order after the default ones: the document's, then the host's.
  const std::vector<TCSSStyleSheet*>& Sheets() const noexcept { return FSheets; }
  TStyledHTMLNode* Root() const noexcept { return FRoot; }

private:
  TCSSStyleSheet* parse_sheet(const hstring& Text, const hstring& URL, int Depth,
                              std::vector<std::unique_ptr<TCSSStyleSheet>>& Into);
  void add_link(const hstring& Href, std::vector<std::unique_ptr<TCSSStyleSheet>>& Into);
  void rebuild_list();
  void clear_styles();
  // The rules of every sheet for Node into FList: its own pass (pcNone) or a pseudo element's.
  void collect_rules(TStyledHTMLNode* Node, TCSSPseudoClass Pseudo);
  void style_pseudo(TStyledHTMLNode* Node);

  TStyledHTMLNode* FRoot;
  std::vector<std::unique_ptr<TCSSStyleSheet>> FDocSheets; // in document order, imports first
  std::vector<std::unique_ptr<TCSSStyleSheet>> FHostSheets;
  std::vector<std::pair<hstring, hstring>> FHostTexts; // text and URL, parsed again with the document's
  std::vector<TCSSStyleSheet*> FSheets;
  std::vector<hstring> FLoading; // URLs on the import chain, against cycles
  TCSSWeightList FList;
  int FOrder = 10000; // selector orders run on across sheets: a later sheet wins ties
  int FWidth = 1024, FDeviceWidth = 0;
  bool FCollected = false;
};

} // namespace ht
