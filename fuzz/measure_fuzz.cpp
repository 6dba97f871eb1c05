// Any text read as a length (attribute form and token form, calc() included)
// and as a declaration list gives a defined result: no crash, no unbounded
// time, a text form that parses again, and the same set when its own text is
// read back for values without quotes and brackets.
#include "htcore/style/css_style_set.h"
#include "htcore/style/css_tokenizer.h"
#include "htcore/style/measure.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

struct TStyle : ht::TMeasureContext {
  TStyle() {
    IntFontSize = 16;
    Zoom = 1.25f;
  }
  bool HasParentElement() const override { return true; }
  float RootFontSize() const override { return 13; }
  ht::TRectF DrawRect() const override { return {0, 0, 1024, 768}; }
  float ScaleFactor() const override { return 2; }
};

void Resolve(ht::TMeasure m) {
  float px = m.GetFPixels();
  (void)m.GetPixels();
  ht::hstring s = m.AsString();
  ht::TMeasure again;
  again.Init(nullptr);
  again.Parse(s);
  (void)px;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const ht::hstring text = ht::hstring::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  static const TStyle style;
  float base = 333;

  ht::TMeasure m;
  m.Init(&style);
  m.Parent = &base;
  m.Parse(text);
  Resolve(m);

  ht::TCSSTokens tokens = ht::CSSValueTokens(text);
  ht::TCSSTokenSequence seq;
  seq.Init(&tokens);
  // Every position, bounded so that one input stays linear overall.
  for (int i = 0; !seq.Eof && i < 64; ++i) {
    m.Init(&style);
    m.Parent = &base;
    m.Decode(seq);
    Resolve(m);
    seq.Next();
  }

  ht::TCSSStyleSet set;
  set.SetAsString(text);
  ht::hstring out = set.GetAsString();
  for (const ht::TCSSStyleSetRec& r : set.Items)
    (void)set.GetPixels(r.Name);
  bool plain = true;
  for (char16_t c : out.view())
    if (c == u'"' || c == u'\'' || c == u'(' || c == u')' || c == u'\\')
      plain = false;
  if (plain) {
    ht::TCSSStyleSet back;
    back.SetAsString(out);
    if (!(back == set))
      __builtin_trap();
    back.SetAsString(set.AsStyleAttr());
    if (!(back == set))
      __builtin_trap();
  }
  return 0;
}
