#include "htcore/style/style_indexer.h"

#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/text_utils.h"

namespace ht {

namespace {

constexpr const char16_t* kTextNames[] = {u"font-family", u"font-size", u"color", u"background-color",
                                          u"line-height"};
constexpr const char16_t* kTextLabels[] = {u"font-family: ", u"font-size:", u"color:", u"background-color:",
                                           u"line-height:"};
constexpr const char16_t* kSVGNames[] = {u"font-family", u"font-size", u"fill", u"font-weight", u"font-style"};
constexpr const char16_t* kSVGLabels[] = {u"font-family: ", u"font-size:", u"fill:", u"font-weight:",
                                          u"font-style:"};

} // namespace

TStyleIndexer::TStyleIndexer() : FIndex(129, false), FAliases(65, true) {}

TCSSStyleIndexerItem* TStyleIndexer::add_item(const hstring& Key, const hstring& Styles,
                                              const hstring& ClassName) {
  auto item = std::make_unique<TCSSStyleIndexerItem>();
  item->Key = Key;
  item->Styles = Styles;
  item->ClassName = ClassName.empty() ? u"f"_hs + IntToStr(static_cast<int32_t>(FCounter)) : ClassName;
  ++FCounter;
  FIndex.AddObject(item.get());
  FItems.push_back(std::move(item));
  return FItems.back().get();
}

void TStyleIndexer::get_class(TCSSStyleSet& Styles, hstring& AClass, const char16_t* const* Names,
                              const char16_t* const* Labels) {
  hstring values[5];
  std::u16string key;
  for (int i = 0; i < 5; ++i) {
    values[i] = Styles.GetValue(hstring(Names[i]));
    if (i)
      key += u';';
    key += values[i].view();
  }
  if (key == u";;;;") {
    AClass.clear();
    return;
  }
  hstring k(key.data(), key.size());
  TCSSStyleIndexerItem* item = FIndex.Get(k);
  if (!item) {
    std::u16string styles;
    for (int i = 0; i < 5; ++i)
      if (!values[i].empty()) {
        styles += Labels[i];
        styles += values[i].view();
        styles += u';';
      }
    item = add_item(k, hstring(styles.data(), styles.size()), hstring());
  }
  for (int i = 0; i < 5; ++i)
    Styles.Delete(hstring(Names[i]));
  AClass = item->ClassName;
}

void TStyleIndexer::GetClass(TCSSStyleSet& Styles, hstring& AClass) {
  get_class(Styles, AClass, kTextNames, kTextLabels);
}

void TStyleIndexer::GetSVGClass(TCSSStyleSet& Styles, hstring& AClass) {
  get_class(Styles, AClass, kSVGNames, kSVGLabels);
}

hstring TStyleIndexer::GetClass(const hstring& Style, const hstring& AClass) {
  if (TCSSStyleIndexerItem* item = FIndex.Get(Style)) {
    if (!AClass.empty() && AClass != item->ClassName && !FAliases.Get(AClass)) {
      auto* alias = new TStringRec2; // owned by FAliases
      alias->S1 = AClass;
      alias->S2 = item->ClassName;
      FAliases.AddObject(alias);
    }
    return item->ClassName;
  }
  return add_item(Style, Style, AClass)->ClassName;
}

hstring TStyleIndexer::FindStyleClass(const hstring& S) const {
  const TStringRec2* alias = FAliases.Get(S);
  return alias ? alias->S2 : S;
}

void TStyleIndexer::GenerateCSS(TFastString& FS) const {
  for (const auto& item : FItems)
    FS.Add(u".").Add(item->ClassName).Add(u"{").Add(item->Styles).Add(u"}\r\n");
}

hstring TStyleIndexer::GenerateCSS() const {
  TFastString fs(4096);
  GenerateCSS(fs);
  return fs.GetAsString();
}

} // namespace ht
