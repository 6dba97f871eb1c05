// A styled element's computed values as CSS text, in the forms a browser's
// computed style writes: colours "rgb(r, g, b)" or "rgba(r, g, b, a)",
// lengths "12px" (at most two decimals), keywords as CSS keywords ("block",
// "inline-block", "none"), font weights as numbers ("700").
//
//   ht::TStyleDriver(&doc).Run();
//   ht::ComputedCSSValue(p, u"margin-top"_hs, text);   // text "16px"
//   ht::ComputedCSSValue(p, u"color"_hs, text);        // "rgb(0, 0, 0)"
//
// What needs the layout stays as declared: a percentage of the container
// ("50%"), a calc() of one, and "auto". line-height is always pixels.
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstdint>

namespace ht {

class TStyledHTMLNode;

// False when the element has no style yet or the engine does not answer the
// property (an unknown name, a value kind it keeps as text only); Text is
// then empty.
bool ComputedCSSValue(TStyledHTMLNode* Node, const hstring& Name, hstring& Text);

// 0xAARRGGBB as CSS text; any colour of alpha 0 is "rgba(0, 0, 0, 0)".
hstring CSSColorText(uint32_t Color);
// Pixels with at most two decimals, no trailing zeros, never "-0px".
hstring CSSPixelText(float Pixels);

} // namespace ht
