// The decoders of complex style values from arbitrary value text: background
// and gradients, transform and origin, box and text shadows, reflection and
// column rule, each from the first token, and each resolved to pixels.
#include "htcore/foundation/hstring.h"
#include "htcore/style/measure.h"
#include "htcore/style/style_values.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

struct TContext : ht::TMeasureContext {
  TContext() { IntFontSize = 16; }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const ht::hstring text = ht::hstring::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  ht::TCSSTokens toks = ht::CSSValueTokens(text);
  TContext ctx;
  float base = 300;
  auto seq = [&toks] {
    ht::TCSSTokenSequence s;
    s.Init(&toks);
    return s;
  };
  {
    auto s = seq();
    ht::TElementBackground bg(&ctx);
    bg.Parse(s);
    for (ht::TGradientStop& stop : bg.Gradient.Stops) {
      stop.Position.Parent = &base;
      stop.Position.GetFPixels();
    }
    bg.PositionX.Parent = &base;
    bg.PositionX.GetPixels();
  }
  {
    auto s = seq();
    ht::TTransform t;
    t.Style = &ctx;
    t.Decode(s);
    t.TranslateX(), t.TranslateY(), t.ScaleX(), t.ScaleY(), t.Rotate(), t.RotateX();
    auto o = seq();
    t.DecodeOrigin(o);
  }
  {
    auto s = seq();
    ht::TElementShadow sh;
    sh.Style = &ctx;
    sh.Parse(s);
    sh.OffsetX.GetFPixels();
    auto u = seq();
    sh.ParseTextShadow(u);
    sh.NoShadow();
  }
  {
    auto s = seq();
    ht::TBoxReflect r;
    r.Decode(s);
    auto c = seq();
    ht::TCSSColumnRule rule;
    rule.Decode(c, &ctx);
  }
  return 0;
}
