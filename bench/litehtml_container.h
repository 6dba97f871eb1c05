// A litehtml document container that draws nothing, for benchmarks that
// measure litehtml's parsing and styling beside htcore's:
//
//   bench::TNullContainer container;
//   litehtml::context ctx;
//   auto doc = litehtml::document::createFromUTF8(html, &container, &ctx);
#pragma once

#include <litehtml.h>

#include <string>

namespace bench {

// The least a litehtml document needs: nothing is drawn.
class TNullContainer : public litehtml::document_container {
public:
  litehtml::uint_ptr create_font(const litehtml::tchar_t*, int size, int, litehtml::font_style, unsigned int,
                                 litehtml::font_metrics* fm) override {
    if (fm) {
      fm->height = size;
      fm->ascent = size;
      fm->descent = 0;
      fm->x_height = size / 2;
    }
    return 1;
  }
  void delete_font(litehtml::uint_ptr) override {}
  int text_width(const litehtml::tchar_t* text, litehtml::uint_ptr) override {
    return static_cast<int>(std::char_traits<char>::length(text)) * 8;
  }
  void draw_text(litehtml::uint_ptr, const litehtml::tchar_t*, litehtml::uint_ptr, litehtml::web_color,
                 const litehtml::position&) override {}
  int pt_to_px(int pt) const override { return pt * 96 / 72; }
  int get_default_font_size() const override { return 16; }
  const litehtml::tchar_t* get_default_font_name() const override { return "serif"; }
  void draw_list_marker(litehtml::uint_ptr, const litehtml::list_marker&) override {}
  void load_image(const litehtml::tchar_t*, const litehtml::tchar_t*, bool) override {}
  void get_image_size(const litehtml::tchar_t*, const litehtml::tchar_t*, litehtml::size& sz) override {
    sz.width = sz.height = 0;
  }
  void draw_background(litehtml::uint_ptr, const litehtml::background_paint&) override {}
  void draw_borders(litehtml::uint_ptr, const litehtml::borders&, const litehtml::position&, bool) override {}
  void set_caption(const litehtml::tchar_t*) override {}
  void set_base_url(const litehtml::tchar_t*) override {}
  void link(const std::shared_ptr<litehtml::document>&, const litehtml::element::ptr&) override {}
  void on_anchor_click(const litehtml::tchar_t*, const litehtml::element::ptr&) override {}
  void set_cursor(const litehtml::tchar_t*) override {}
  void transform_text(litehtml::tstring&, litehtml::text_transform) override {}
  void import_css(litehtml::tstring&, const litehtml::tstring&, litehtml::tstring&) override {}
  void set_clip(const litehtml::position&, const litehtml::border_radiuses&, bool, bool) override {}
  void del_clip() override {}
  void get_client_rect(litehtml::position& client) const override {
    client.x = client.y = 0;
    client.width = 1024;
    client.height = 768;
  }
  std::shared_ptr<litehtml::element> create_element(const litehtml::tchar_t*, const litehtml::string_map&,
                                                    const std::shared_ptr<litehtml::document>&) override {
    return nullptr;
  }
  void get_media_features(litehtml::media_features& media) const override {
    media.type = litehtml::media_type_screen;
    media.width = media.device_width = 1024;
    media.height = media.device_height = 768;
    media.color = 8;
    media.resolution = 96;
  }
  void get_language(litehtml::tstring& language, litehtml::tstring& culture) const override {
    language = "en";
    culture.clear();
  }
};

} // namespace bench
