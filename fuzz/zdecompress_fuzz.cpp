// Damaged zlib data raises EZLibError and nothing else; both decoders agree on
// what they accept; any bytes round-trip through ZCompress.
#include "htcore/foundation/stream_types.h"
#include "htcore/foundation/zip.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

// Reads in uneven pieces, to cross the inflate buffer at odd places.
bool ReadByStream(const uint8_t* data, size_t size, ht::TBytes& out) {
  out.clear();
  ht::TPointerStream src(static_cast<const void*>(data), static_cast<int64_t>(size));
  ht::TFixedZDecompressionStream z(src);
  uint8_t buf[777];
  for (size_t step = 1;; step = step * 3 % 777 + 1) {
    int64_t n = z.Read(buf, static_cast<int64_t>(step));
    out.insert(out.end(), buf, buf + n);
    if (n < static_cast<int64_t>(step))
      return true;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // An odd first byte puts a valid zlib header in front of the rest, so that
  // mutations reach the deflate data instead of dying at the header check.
  ht::TBytes in;
  if (size && (data[0] & 1)) {
    in = {0x78, 0x9C};
    in.insert(in.end(), data + 1, data + size);
  } else {
    in.assign(data, data + size);
  }
  data = in.data();
  size = in.size();
  ht::TBytes a, b;
  bool ok_a = true, ok_b = true;
  try {
    ht::THtZIP::ZDecompress(in, a);
  } catch (const ht::EZLibError&) {
    ok_a = false;
  }
  try {
    ReadByStream(data, size, b);
  } catch (const ht::EZLibError&) {
    ok_b = false;
  }
  if (ok_a != ok_b || (ok_a && a != b))
    __builtin_trap();

  // Decompress into exactly the room needed agrees too.
  if (ok_a) {
    ht::TBytes c(a.size());
    ht::THtZIP::Decompress(in, c);
    if (c != a)
      __builtin_trap();
  } else {
    ht::TBytes c(64);
    try {
      ht::THtZIP::Decompress(in, c);
    } catch (const ht::EZLibError&) {
    }
  }

  ht::TBytes packed, back;
  ht::THtZIP::ZCompress(in, packed, true);
  ht::THtZIP::ZDecompress(packed, back);
  if (back != in)
    __builtin_trap();
  return 0;
}
