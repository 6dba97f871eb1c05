// Image bytes and bitmap operations. The input is sniffed and kept by a
// THtImage, read as a DIB (or a .bmp file), and taken as raw rows by
// SetData at a depth and size from its first bytes; the bitmap then goes
// through a program of operations read from the input: conversions, masks,
// combination, resizing, cropping, blur. Sizes the input asks for are capped
// here so memory stays bounded; what the library must refuse by itself
// (zero, negative or absurd sizes, short rows, bad headers) it refuses with
// an exception.
#include "htcore/foundation/exception.h"
#include "htcore/foundation/stream_types.h"
#include "htcore/graphics/bitmap_data.h"
#include "htcore/graphics/images.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

using namespace ht;

struct TReader {
  const uint8_t* p;
  size_t n;
  uint8_t Byte() {
    if (n == 0)
      return 0;
    --n;
    return *p++;
  }
  int Small(int max) { return Byte() % (max + 1); }
  int Signed(int range) { return static_cast<int>(Byte() % (2 * range + 1)) - range; }
};

constexpr int kBits[] = {1, 2, 4, 8, 16, 24, 32, 48};

void Mutate(THtBitmapData& b, TReader& in) {
  for (int step = 0; step < 12 && in.n > 0; ++step) {
    try {
      switch (in.Byte() % 20) {
      case 0:
        b.Convertto32();
        break;
      case 1:
        b.Convertto8();
        break;
      case 2:
        if (b.FBits == 2)
          b.Convert2to8();
        else if (b.FBits == 4)
          b.Convert4to8();
        break;
      case 3: {
        THtBitmapData mask(in.Small(40), in.Small(40), kBits[in.Byte() % 8]);
        mask.Clear(in.Byte());
        if (in.Byte() & 1)
          b.ApplyMask(mask);
        else
          b.Convertto32Mask(mask);
        break;
      }
      case 4:
        b.ApplyColorMask(in.Byte() * 0x010101u);
        break;
      case 5:
        b.ApplyColorRangeMask(in.Byte(), in.Byte(), in.Byte(), in.Byte(), in.Byte(), in.Byte());
        break;
      case 6: {
        THtBitmapData src = b.Clone();
        src.Crop({in.Signed(20), in.Signed(20), in.Signed(80), in.Signed(80)});
        b.Combine(src, in.Signed(70), in.Signed(70), static_cast<THtPixelOperation>(in.Byte() % 5));
        break;
      }
      case 7:
        if (b.FBits == 32)
          (void)b.ConverttoMask();
        break;
      case 8:
        b.InvertComponents();
        break;
      case 9:
        b.BGRtoRGB();
        break;
      case 10:
        b.CMYKtoRGBA();
        break;
      case 11:
        b.FlipVertical();
        break;
      case 12:
        (void)b.IsSingleColor();
        break;
      case 13:
        b.Crop({in.Signed(40), in.Signed(40), in.Signed(120), in.Signed(120)});
        break;
      case 14:
        b.Resize(in.Small(200), in.Small(200));
        break;
      case 15:
        if (b.FBits == 32 && !b.Empty())
          FastBlur(b.Scanline32(0), b.FWidth, b.FHeight, in.Small(40),
                   {in.Signed(20), in.Signed(20), in.Signed(100), in.Signed(100)}, b.FStride);
        break;
      case 16:
        if (!b.Empty()) {
          int x = in.Small(255) % b.FWidth, y = in.Small(255) % b.FHeight;
          b.SetPixel(x, y, b.GetPixel(x, y) ^ in.Byte());
        }
        break;
      case 17:
        b.Clear(in.Byte() * 0x01010101u);
        break;
      case 18:
        b.SetWidth(in.Small(100));
        break;
      default: {
        THtBitmapData other(in.Small(30), in.Small(30), b.FBits ? b.FBits : 1);
        b.Combine(other, in.Signed(30), in.Signed(30), poXor);
      }
      }
    } catch (const Exception&) {
      // refused operations leave a usable bitmap
    }
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4 || size > 65536)
    return 0;
  std::span<const uint8_t> all(data, size);
  (void)THtImage::IsImage(all);
  THtImage img(TBytes(data, data + size));
  int w = 0, h = 0;
  if (THtImage::ReadImageSize(all, w, h) && (img.Width != w || img.Height != h))
    std::abort();
  if (img.AsBytes().size() != size)
    std::abort();

  TReader in{data + 4, size - 4};
  THtBitmapData b;
  uint8_t mode = data[0];
  try {
    if (mode & 1) {
      TPointerStream s(data + 1, static_cast<int64_t>(size - 1));
      int bits = 0;
      b.LoadfromDIB(s, {}, bits, (mode & 2) != 0);
      in = {data + size / 2, size - size / 2}; // the program from the second half
    } else {
      int width = 1 + data[1] % 64, height = 1 + data[2] % 64;
      b.SetData(TBytes(data + 4, data + size), width, height, kBits[data[3] % 8]);
    }
  } catch (const Exception&) {
    return 0;
  }
  Mutate(b, in);
  return 0;
}
