// Any text as SVG path data: parse, write both forms, read the written text
// back (it must parse without error), flatten at a resolution taken from the
// first byte, and measure. Flattening must stay bounded by the records read.
#include "htcore/foundation/exception.h"
#include "htcore/graphics/path.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size > 65536)
    return 0;
  static const float kTolerances[] = {0, 1e-9f, 0.25f, 1, 4, 100, 1e6f, NAN};
  float tol = kTolerances[data[0] % 8];
  std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  ht::THtCustomPath path;
  try {
    path.Parse(ht::hstring::FromUtf8(text));
  } catch (const ht::Exception&) {
    // an unknown command letter ends the parse; what came before stays
  }
  for (bool absolute : {false, true}) {
    ht::hstring written = absolute ? path.AsAbsoluteString() : path.AsString();
    ht::THtCustomPath again;
    again.Parse(written); // must not raise: the writer only writes path commands
    (void)again.AsString();
  }
  ht::THtCustomPath lines;
  path.Flatten(tol, lines);
  size_t points = 0;
  for (int i = 0; i < path.Count(); ++i)
    points += path.GetRec(i).Points.size() + 1;
  if (static_cast<size_t>(lines.Count()) > 1100 * points + 1)
    std::abort();
  ht::TRectF box;
  path.GetBounds(box, nullptr);
  (void)path.ContainsPoint((box.Left + box.Right) / 2, (box.Top + box.Bottom) / 2);
  (void)path.Length(tol);
  path.Transform(ht::THtMatrixData::CreateRotation(30));
  (void)path.AsString();
  return 0;
}
