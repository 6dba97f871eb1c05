// The user-agent sheet and the quirks-mode sheet, parsed from their texts
// with the fixed weight 0.
#include "htcore/foundation/startup.h"
#include "htcore/style/css_sheet.h"
#include "style/default_sheets.h"
#include "style/htmlcss_start.h"

#include <algorithm>
#include <mutex>

namespace ht {

namespace {

std::mutex g_lock;
std::unique_ptr<TCSSStyleSheet> g_html4;
std::unique_ptr<TCSSStyleSheet> g_quirks;

std::unique_ptr<TCSSStyleSheet> build(std::u16string_view text, int counter) {
  auto s = std::make_unique<TCSSStyleSheet>();
  s->SelectorCounter = counter;
  s->Parse(hstring(text), 0, false);
  return s;
}

} // namespace

TCSSStyleSheet* HTML4StyleSheet() {
  Initialize();
  std::lock_guard<std::mutex> guard(g_lock);
  if (!g_html4)
    g_html4 = build(detail::kHTML4StyleSheetText, 0);
  return g_html4.get();
}

TCSSStyleSheet* HTML4QuirkStyleSheet() {
  Initialize();
  std::lock_guard<std::mutex> guard(g_lock);
  if (!g_quirks)
    g_quirks = build(detail::kHTML4QuirkStyleSheetText, 100);
  return g_quirks.get();
}

namespace detail {

void BuildDefaultSheets() {
  std::lock_guard<std::mutex> guard(g_lock);
  g_quirks = build(kHTML4QuirkStyleSheetText, 100);
}

void FreeDefaultSheets() {
  TCSSExtension::ClearExtensions();
  std::lock_guard<std::mutex> guard(g_lock);
  g_quirks.reset();
  g_html4.reset();
}

} // namespace detail

} // namespace ht

namespace ht {

namespace {

std::vector<std::unique_ptr<TCSSExtension>>& extensions() {
  static std::vector<std::unique_ptr<TCSSExtension>> list;
  return list;
}

} // namespace

void TCSSExtension::RegisterExtension(const std::vector<hstring>& KeyClasses, const hstring& Text) {
  auto e = std::make_unique<TCSSExtension>();
  e->KeyClasses = KeyClasses;
  e->CSS = std::make_unique<TCSSStyleSheet>();
  e->CSS->Parse(Text, -1, false);
  std::lock_guard<std::mutex> guard(g_lock);
  extensions().push_back(std::move(e));
}

void TCSSExtension::AddExtensions(const std::vector<hstring>& Names, std::vector<TCSSStyleSheet*>& Sheets) {
  std::lock_guard<std::mutex> guard(g_lock);
  for (const auto& e : extensions())
    for (const hstring& k : e->KeyClasses)
      if (std::find(Names.begin(), Names.end(), k) != Names.end()) {
        Sheets.push_back(e->CSS.get());
        break; // one key is enough for an extension
      }
}

void TCSSExtension::ClearExtensions() {
  std::lock_guard<std::mutex> guard(g_lock);
  extensions().clear();
}

} // namespace ht
