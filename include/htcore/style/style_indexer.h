// TStyleIndexer: pulls the declarations that many elements share out of their
// style sets into generated classes, and writes those classes as CSS.
//
//   ht::TStyleIndexer ix;
//   ht::TCSSStyleSet s;
//   s.SetAsString(u"font-size: 12px; color: red; margin-left: 2px"_hs);
//   ht::hstring cls;
//   ix.GetClass(s, cls);     // cls "f0"; s keeps only "margin-left:2px;"
//   ix.GenerateCSS();        // ".f0{font-size:12px;color:red;}\r\n"
//
// GetSVGClass does the same with the properties of SVG text (fill instead of
// color); GetClass(Style, Class) files a ready declaration text. Classes come
// out in the order they were made.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/foundation/string_dictionary.h"
#include "htcore/style/css_style_set.h"

#include <memory>
#include <vector>

namespace ht {

class TFastString;

class TCSSStyleIndexerItem : public TObject {
public:
  hstring Key;
  hstring Styles; // declarations as CSS text
  hstring ClassName;
};

// A pair of texts keyed by the first.
class TStringRec2 : public TObject {
public:
  hstring S1;
  hstring S2;
};

class TStyleIndexer {
public:
  TStyleIndexer();
  TStyleIndexer(const TStyleIndexer&) = delete;
  TStyleIndexer& operator=(const TStyleIndexer&) = delete;

  // Moves font-family, font-size, color, background-color and line-height out
  // of Styles into a class; AClass is its name, empty when Styles held none.
  void GetClass(TCSSStyleSet& Styles, hstring& AClass);
  // The same for font-family, font-size, fill, font-weight and font-style.
  void GetSVGClass(TCSSStyleSet& Styles, hstring& AClass);
  // The class of a declaration text, made on first sight (named AClass when
  // given, "f" and a number otherwise). A second name for a known text
  // becomes an alias of the first.
  hstring GetClass(const hstring& Style, const hstring& AClass);
  // The class an alias stands for; S itself when it is none.
  hstring FindStyleClass(const hstring& S) const;
  // ".name{declarations}" and CR LF for each class.
  hstring GenerateCSS() const;
  void GenerateCSS(TFastString& FS) const;

  int Count() const noexcept { return static_cast<int>(FItems.size()); }

private:
  void get_class(TCSSStyleSet& Styles, hstring& AClass, const char16_t* const* Names,
                 const char16_t* const* Labels);
  TCSSStyleIndexerItem* add_item(const hstring& Key, const hstring& Styles, const hstring& ClassName);

  std::vector<std::unique_ptr<TCSSStyleIndexerItem>> FItems;                 // in the order made
  THtObjectDictionaryOf<TCSSStyleIndexerItem, &TCSSStyleIndexerItem::Key> FIndex; // not owning
  THtObjectDictionaryOf<TStringRec2, &TStringRec2::S1> FAliases;                  // owning
  int FCounter = 0;
};

} // namespace ht
