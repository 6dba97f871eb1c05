#include "htcore/foundation/stream_types.h"
#include "htcore/graphics/bitmap_data.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ht;

namespace {

// Expects a bitmap error with exactly this message.
template <class F> void ExpectError(F f, const std::string& message) {
  try {
    f();
    ADD_FAILURE() << "no exception, expected " << message;
  } catch (const EHtBitmapError& e) {
    EXPECT_EQ(e.what(), message);
  }
}

THtBitmapData Make32(int w, int h, std::initializer_list<uint32_t> px) {
  THtBitmapData b(w, h, 32);
  auto it = px.begin();
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x)
      b.SetPixel(x, y, *it++);
  return b;
}

std::vector<uint32_t> Pixels(const THtBitmapData& b) {
  std::vector<uint32_t> out;
  for (int y = 0; y < b.FHeight; ++y)
    for (int x = 0; x < b.FWidth; ++x)
      out.push_back(b.GetPixel(x, y));
  return out;
}

} // namespace

TEST(BitmapData, Strides) {
  struct {
    int width, bits, stride;
  } cases[] = {
      {1, 1, 4},  {5, 24, 16}, {32, 1, 4}, {33, 1, 8}, {3, 2, 4},    {17, 4, 12},
      {0, 32, 0}, {7, 8, 8},   {3, 16, 8}, {1, 48, 8}, {10, 32, 40}, {1, 3, 4},
  };
  for (const auto& c : cases)
    EXPECT_EQ(THtBitmapData::CalcStride(c.width, c.bits), c.stride) << c.width << "x" << c.bits;
  EXPECT_THROW(THtBitmapData::CalcStride(1, 0), EAssertionFailed);
  EXPECT_THROW(THtBitmapData::CalcStride(1, 49), EAssertionFailed);
  EXPECT_THROW(THtBitmapData::CalcStride(-1, 8), EHtBitmapError);
}

TEST(BitmapData, RefusesAbsurdSizes) {
  THtBitmapData b;
  EXPECT_THROW(b.Create(-1, 5, 32), EHtBitmapError);
  EXPECT_THROW(b.Create(THtBitmapData::kMaxSide + 1, 1, 8), EHtBitmapError);
  EXPECT_THROW(b.Create(100000, 100000, 32), EHtBitmapError); // 40 GB
  ExpectError([&] { b.Create(4, 4, 12); }, "Bitness not supported");
  EXPECT_THROW(b.SetData(TBytes(16), 0, 4, 32), EHtBitmapError);
  EXPECT_THROW(b.SetData(TBytes(3), 2, 4, 32), EAssertionFailed); // fewer bytes than rows
  b.Create(0, 0, 32);
  EXPECT_TRUE(b.Empty());
  EXPECT_THROW(b.GetScanLine(0), EAssertionFailed);
}

TEST(BitmapData, SetDataSharesOrCopies) {
  auto rows = std::make_shared<TBytes>(TBytes{1, 2, 3, 0, 4, 5, 6, 0}); // 1x2 at 24 bits, padded
  THtBitmapData b;
  b.SetData(rows, 1, 2, 24);
  EXPECT_EQ(b.DataArray(), rows); // strides match: no copy
  EXPECT_EQ(b.GetPixel(0, 1), 0x060504u);

  THtBitmapData packed; // 3x2 at 24 bits, rows of 9 bytes: copied to strides of 12
  packed.SetData(TBytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}, 3, 2, 24);
  EXPECT_EQ(packed.FStride, 12);
  EXPECT_EQ(packed.GetPixel(2, 0), 0x090807u);
  EXPECT_EQ(packed.GetPixel(0, 1), 0x0C0B0Au);

  // Rows longer than 4 bytes a pixel are taken as packed.
  THtBitmapData wide;
  wide.SetData(TBytes(2 * 100), 2, 2, 8);
  EXPECT_EQ(wide.FStride, 4);
}

TEST(BitmapData, FortyEightBitsReduce) {
  TBytes px = {0x11, 0xAA, 0x22, 0xBB, 0x33, 0xCC, 0x44, 0xDD, 0x55, 0xEE, 0x66, 0xFF};
  THtBitmapData b;
  b.SetData(px, 2, 1, 48);
  EXPECT_EQ(b.FBits, 48);
  EXPECT_EQ(b.FStride, 8); // 32-bit rows
  EXPECT_EQ(b.GetPixel(0, 0), 0x00CCBBAAu);
  b.Convertto32();
  EXPECT_EQ(b.FBits, 32);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0xFFCCBBAAu, 0xFFFFEEDDu}));

  THtBitmapData full(1, 1, 48); // made at 48 bits: real 6-byte pixels
  full.SetPixel(0, 0, 0x123456);
  full.Convertto32();
  EXPECT_EQ(full.GetPixel(0, 0), 0xFF123456u);
}

TEST(BitmapData, ClearByDepth) {
  THtBitmapData one(9, 2, 1), eight(3, 2, 8), thirtyTwo(2, 2, 32), four(3, 1, 4);
  one.Clear(7);
  EXPECT_EQ(one.GetPixel(8, 1), 1u);
  eight.Clear(0x1234);
  EXPECT_EQ(eight.GetPixel(2, 1), 0x34u);
  thirtyTwo.Clear(0x80FF0000);
  EXPECT_EQ(Pixels(thirtyTwo), std::vector<uint32_t>(4, 0x80FF0000u));
  four.SetPixel(1, 0, 5);
  four.Clear(0xFFFFFFFF); // other depths stay
  EXPECT_EQ(four.GetPixel(1, 0), 5u);
}

TEST(BitmapData, ConvertEveryDepthTo32) {
  struct {
    int bits;
    std::vector<uint32_t> in, out;
  } cases[] = {
      {1, {1, 0, 1}, {0xFFFFFFFF, 0xFF000000, 0xFFFFFFFF}},
      {2, {0, 1, 3}, {0xFF000000, 0xFF555555, 0xFFFFFFFF}},
      {4, {0, 8, 15}, {0xFF000000, 0xFF888888, 0xFFFFFFFF}},
      {8, {0, 0x80, 0xFF}, {0xFF000000, 0xFF808080, 0xFFFFFFFF}},
      {16, {0x7C00, 0x03E0, 0x001F}, {0xFFFF0000, 0xFF00FF00, 0xFF0000FF}},
      {16, {0x4210, 0, 0x7FFF}, {0xFF848484, 0xFF000000, 0xFFFFFFFF}},
      {24, {0x123456, 0, 0xFFFFFF}, {0xFF123456, 0xFF000000, 0xFFFFFFFF}},
      {32, {0x00123456, 0x80000000, 1}, {0x00123456, 0x80000000, 1}}, // alpha kept
  };
  for (const auto& c : cases) {
    THtBitmapData b(3, 1, c.bits);
    for (int x = 0; x < 3; ++x)
      b.SetPixel(x, 0, c.in[x]);
    b.Convertto32();
    EXPECT_EQ(b.FBits, 32);
    EXPECT_EQ(b.FStride, 12);
    EXPECT_EQ(Pixels(b), c.out) << c.bits;
  }
}

namespace {

struct TInvert : THtColorSpace {
  bool IsIdentity() override { return false; }
  uint32_t ConvertColor(uint32_t c) override { return c ^ 0x00FFFFFF; }
};

struct TFast8 : TInvert {
  bool Convert8to32(const uint8_t* S, uint8_t* D, int W, int H, int Stride) override {
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x)
        reinterpret_cast<uint32_t*>(D + 4 * W * y)[x] = 0xFF0000FFu + S[y * Stride + x];
    return true;
  }
};

} // namespace

TEST(BitmapData, ColorSpaceHook) {
  THtColorSpace identity;
  EXPECT_EQ(identity.ConvertFloat(1, 0.5f, 0, 1), 0xFFFF8000u);
  EXPECT_EQ(identity.ConvertFloat(2, -1, 0, 0), 0x00FF0000u); // clamped

  THtBitmapData b(2, 1, 8);
  b.SetPixel(1, 0, 0x10);
  TInvert inv;
  THtBitmapData c = b.Clone();
  c.Convertto32(&inv);
  EXPECT_EQ(Pixels(c), (std::vector<uint32_t>{0xFFFFFFFF, 0xFFEFEFEF}));
  TFast8 fast;
  b.Convertto32(&fast); // the fast path replaces the per-pixel route
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0xFF0000FF, 0xFF00010F}));
  EXPECT_EQ(b.FBits, 32);
}

TEST(BitmapData, ConvertTo8AndWiden) {
  THtBitmapData b = Make32(3, 1, {0xFFFFFFFF, 0xFFFF0000, 0xFF000000});
  b.Convertto8();
  EXPECT_EQ(b.FBits, 8);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{255, 76, 0}));
  THtBitmapData rgb(2, 2, 24);
  ExpectError([&] { rgb.Convertto8(); }, "Bitness not supported");

  THtBitmapData two(5, 1, 2), four(3, 1, 4);
  for (int x = 0; x < 5; ++x)
    two.SetPixel(x, 0, x % 4);
  two.Convert2to8();
  EXPECT_EQ(Pixels(two), (std::vector<uint32_t>{0, 85, 170, 255, 0}));
  four.SetPixel(2, 0, 15);
  four.Convert4to8();
  EXPECT_EQ(Pixels(four), (std::vector<uint32_t>{0, 0, 255}));
  ExpectError([&] { four.Convert4to8(); }, "Bitness not supported");
}

TEST(BitmapData, Masks) {
  // Each mask depth on a 2x2 image; a 1x1 mask is first resized to the image.
  struct {
    int bits;
    std::vector<uint32_t> mask;
    std::vector<uint32_t> alpha;
  } cases[] = {
      {1, {1, 0, 0, 1}, {255, 0, 0, 255}},
      {2, {3, 0, 1, 2}, {255, 0, 85, 170}},
      {4, {15, 0, 1, 8}, {255, 0, 17, 136}},
      {8, {7, 200, 0, 255}, {7, 200, 0, 255}},
      {32, {0xFF000010, 0x20, 0x30, 0x40}, {0x10, 0x20, 0x30, 0x40}}, // the low byte
  };
  for (const auto& c : cases) {
    for (int depth : {24, 32, 8}) {
      THtBitmapData img(2, 2, depth), mask(2, 2, c.bits);
      for (int i = 0; i < 4; ++i)
        mask.SetPixel(i % 2, i / 2, c.mask[i]);
      if (depth == 24 && (c.bits == 1 || c.bits == 8))
        img.Convertto32Mask(mask);
      else
        img.ApplyMask(mask);
      ASSERT_EQ(img.FBits, 32);
      for (int i = 0; i < 4; ++i)
        EXPECT_EQ(img.GetPixel(i % 2, i / 2) >> 24, c.alpha[i]) << c.bits << " on " << depth;
    }
  }
  THtBitmapData img(4, 2, 32), small(1, 1, 8);
  small.SetPixel(0, 0, 9);
  img.ApplyMask(small);
  EXPECT_EQ(small.FWidth, 4); // resized to the image
  EXPECT_EQ(img.GetPixel(3, 1) >> 24, 9u);

  THtBitmapData rgb(2, 2, 24), m16(2, 2, 16), m4(2, 2, 4);
  ExpectError([&] { rgb.Convertto32Mask(m4); }, "Mask bits 4");
  ExpectError([&] { rgb.ApplyMask(m16); }, "Mask bits 16");
}

TEST(BitmapData, ColorMasks) {
  THtBitmapData b = Make32(4, 1, {0xFF102030, 0x80102030, 0xFF112233, 0xFF505050});
  b.ApplyColorMask(0xFF102030);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0x00102030, 0x00102030, 0xFF112233, 0xFF505050}));
  b.ApplyColorRangeMask(0x11, 0x11, 0x20, 0x22, 0x30, 0x33); // inclusive bounds
  EXPECT_EQ(b.GetPixel(2, 0), 0x00112233u);
  EXPECT_EQ(b.GetPixel(3, 0), 0xFF505050u);
  THtBitmapData m = b.ConverttoMask();
  EXPECT_EQ(m.FBits, 8);
  EXPECT_EQ(Pixels(m), (std::vector<uint32_t>{0, 0, 0, 255}));
  THtBitmapData grey(1, 1, 8);
  EXPECT_THROW(grey.ConverttoMask(), EAssertionFailed);
}

TEST(BitmapData, CombineOneBitAtEveryOffset) {
  // Against a pixel-by-pixel reference, for sources placed at every bit
  // offset, partly outside, with every operation.
  for (int op = poOr; op <= poCopy; ++op)
    for (int X = -9; X < 20; X += 1) {
      THtBitmapData dst(21, 3, 1), src(13, 2, 1);
      for (int x = 0; x < 21; ++x)
        for (int y = 0; y < 3; ++y)
          dst.SetPixel(x, y, (x * 7 + y) % 3 == 0);
      for (int x = 0; x < 13; ++x)
        for (int y = 0; y < 2; ++y)
          src.SetPixel(x, y, (x + y * 5) % 2);
      THtBitmapData expect = dst.Clone();
      for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 13; ++x) {
          int dx = X + x, dy = 1 + y;
          if (dx < 0 || dx >= 21 || dy >= 3)
            continue;
          uint32_t d = expect.GetPixel(dx, dy), s = src.GetPixel(x, y);
          uint32_t v = op == poOr     ? d | s
                       : op == poAnd  ? d & s
                       : op == poXor  ? d ^ s
                       : op == poNXor ? !(d ^ s)
                                      : s;
          expect.SetPixel(dx, dy, v);
        }
      dst.Combine(src, X, 1, static_cast<THtPixelOperation>(op));
      ASSERT_EQ(Pixels(dst), Pixels(expect)) << "op " << op << " at " << X;
    }
}

TEST(BitmapData, CombineOtherDepths) {
  THtBitmapData d24(3, 2, 24), s24(2, 2, 24);
  d24.Clear(0);
  d24.SetPixel(1, 1, 0x0F0F0F);
  s24.SetPixel(0, 0, 0xF0F0F0);
  s24.SetPixel(0, 1, 0xFFFFFF);
  d24.Combine(s24, 1, 0, poXor);
  EXPECT_EQ(d24.GetPixel(1, 0), 0xF0F0F0u);
  EXPECT_EQ(d24.GetPixel(1, 1), 0xF0F0F0u);
  d24.Combine(s24, 1, -1, poNXor); // the source's row 1 at row 0
  EXPECT_EQ(d24.GetPixel(1, 0), 0xF0F0F0u);
  EXPECT_EQ(d24.GetPixel(2, 0), 0xFFFFFFu);

  THtBitmapData d32 = Make32(1, 1, {5}), s32 = Make32(1, 1, {3});
  d32.Combine(s32, 0, 0, poOr); // 8 and 32 bits do nothing
  EXPECT_EQ(d32.GetPixel(0, 0), 5u);
  THtBitmapData d8(1, 1, 8);
  EXPECT_THROW(d8.Combine(s32, 0, 0, poOr), EAssertionFailed);
}

TEST(BitmapData, PixelOperations) {
  THtBitmapData b = Make32(2, 2, {0xFF010203, 0xFF010203, 0xFF010203, 0xFF010203});
  EXPECT_TRUE(b.IsSingleColor());
  b.SetPixel(1, 1, 0xFF010204);
  EXPECT_FALSE(b.IsSingleColor());
  b.BGRtoRGB();
  EXPECT_EQ(b.GetPixel(0, 0), 0xFF030201u);
  b.FlipVertical();
  EXPECT_EQ(b.GetPixel(1, 0), 0xFF040201u);
  b.InvertComponents();
  EXPECT_EQ(b.GetPixel(1, 0), 0x00FBFDFEu);
  THtBitmapData rgb(1, 1, 24);
  rgb.SetPixel(0, 0, 0x112233);
  rgb.BGRtoRGB();
  EXPECT_EQ(rgb.GetPixel(0, 0), 0x332211u);
  THtBitmapData empty(0, 0, 32), one(1, 1, 1);
  EXPECT_TRUE(empty.IsSingleColor());
  ExpectError([&] { one.IsSingleColor(); }, "Only 32 bit image is supported");
}

TEST(BitmapData, CMYKCorners) {
  struct {
    uint32_t cmyk, argb;
  } cases[] = {
      {0x00000000, 0xFFFFFFFF}, // white
      {0xFFFFFFFF, 0xFF000000}, // every ink
      {0xFF000000, 0xFF231F20}, // black alone: 0.1373, 0.1216, 0.1255
      {0x000000FF, 0xFF00ACEF}, // cyan: 0.6784 * 255 truncates to 172
      {0x0000FF00, 0xFFEC008B}, // magenta
      {0x00FF0000, 0xFFFFF100}, // yellow
      {0x00FFFFFF, 0xFF363638}, // cyan, magenta and yellow
  };
  for (const auto& c : cases)
    EXPECT_EQ(CMYKtoARGB(c.cmyk), c.argb) << std::hex << c.cmyk;
  THtBitmapData b = Make32(3, 1, {0, 0, 0xFF000000});
  b.CMYKtoRGBA();
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0xFFFFFFFF, 0xFFFFFFFF, 0xFF231F20}));
}

TEST(BitmapData, ResizeNearest) {
  THtBitmapData b = Make32(2, 2, {1, 2, 3, 4});
  b.Resize(4, 3);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4}));
  b.Resize(1, 1);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{1}));
  for (int bits : {1, 4, 8}) {
    THtBitmapData p(3, 1, bits);
    p.SetPixel(2, 0, 1);
    p.Resize(6, 2);
    EXPECT_EQ(Pixels(p), (std::vector<uint32_t>{0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 1})) << bits;
  }
  THtBitmapData rgb(2, 2, 24);
  rgb.Resize(5, 5); // 24 bits are not resized
  EXPECT_EQ(rgb.FWidth, 2);
  THtBitmapData none(0, 0, 8);
  none.Resize(2, 1); // nothing to sample: zeros
  EXPECT_EQ(Pixels(none), (std::vector<uint32_t>{0, 0}));
  EXPECT_THROW(b.Resize(-1, 2), EHtBitmapError);
}

TEST(BitmapData, CropClipsToTheBitmap) {
  THtBitmapData b = Make32(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  THtBitmapData c = b.Clone();
  c.Crop({1, 1, 10, 10});
  EXPECT_EQ(Pixels(c), (std::vector<uint32_t>{5, 6, 8, 9}));
  c = b.Clone();
  c.Crop({-5, -5, 1, 2});
  EXPECT_EQ(Pixels(c), (std::vector<uint32_t>{1, 4}));
  c = b.Clone();
  c.Crop({5, 5, 9, 9});
  EXPECT_TRUE(c.Empty());
  EXPECT_EQ(c.FBits, 32);
  THtBitmapData bits(10, 2, 1);
  bits.SetPixel(3, 1, 1);
  bits.SetPixel(9, 1, 1);
  bits.Crop({3, 1, 10, 2});
  EXPECT_EQ(Pixels(bits), (std::vector<uint32_t>{1, 0, 0, 0, 0, 0, 1}));
}

namespace {

// A DIB: header, optional table, rows as given.
TBytes Dib(int w, int h, int bits, const std::vector<uint32_t>& table, const TBytes& rows,
           int compression = 0, int colorsUsed = 0) {
  TBytes d;
  auto put32 = [&](uint32_t v) {
    for (int k = 0; k < 4; ++k)
      d.push_back(static_cast<uint8_t>(v >> 8 * k));
  };
  auto put16 = [&](uint32_t v) {
    d.push_back(static_cast<uint8_t>(v));
    d.push_back(static_cast<uint8_t>(v >> 8));
  };
  put32(40), put32(w), put32(h), put16(1), put16(bits), put32(compression), put32(0), put32(0), put32(0);
  put32(colorsUsed), put32(0);
  for (uint32_t c : table)
    put32(c);
  d.insert(d.end(), rows.begin(), rows.end());
  return d;
}

THtBitmapData LoadDib(const TBytes& d, int& bits, bool flip = false) {
  TBytesStream s(d);
  THtBitmapData b;
  b.LoadfromDIB(s, {}, bits, flip);
  return b;
}

} // namespace

TEST(BitmapData, LoadfromDIBDepths) {
  int bits = 0;
  // 2x2 at 1 bit, bottom-up: the first row in the file is the bottom one.
  THtBitmapData b = LoadDib(Dib(2, 2, 1, {0x000000, 0xFFFFFF}, {0x40, 0, 0, 0, 0x80, 0, 0, 0}), bits);
  EXPECT_EQ(bits, 1);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0xFFFFFFFF, 0xFF000000, 0xFF000000, 0xFFFFFFFF}));
  b = LoadDib(Dib(2, 2, 1, {0x000000, 0xFFFFFF}, {0x40, 0, 0, 0, 0x80, 0, 0, 0}), bits, true);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0xFF000000, 0xFFFFFFFF, 0xFFFFFFFF, 0xFF000000}));
  // Top-down 4 bits with a short table: indexes past it are black.
  b = LoadDib(Dib(3, -1, 4, {0x112233, 0x445566}, {0x01, 0x20, 0, 0}, 0, 2), bits);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0xFF112233, 0xFF445566, 0xFF000000}));
  b = LoadDib(Dib(1, 1, 8, std::vector<uint32_t>(256, 0xABCDEF), {0, 0, 0, 0}), bits);
  EXPECT_EQ(b.GetPixel(0, 0), 0xFFABCDEFu);
  b = LoadDib(Dib(2, 1, 16, {}, {0x00, 0x7C, 0x1F, 0x00}), bits);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0xFFFF0000, 0xFF0000FF}));
  b = LoadDib(Dib(1, 1, 16, {0xF800, 0x07E0, 0x001F}, {0xE0, 0x07, 0, 0}, 3), bits); // 5-6-5 fields
  EXPECT_EQ(b.GetPixel(0, 0), 0xFF00FF00u);
  b = LoadDib(Dib(1, 1, 24, {}, {1, 2, 3, 0}), bits);
  EXPECT_EQ(b.GetPixel(0, 0), 0xFF030201u);
  b = LoadDib(Dib(2, 1, 32, {}, {1, 2, 3, 0, 4, 5, 6, 0}), bits); // alpha all 0: opaque
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0xFF030201, 0xFF060504}));
  b = LoadDib(Dib(2, 1, 32, {}, {1, 2, 3, 0x80, 4, 5, 6, 0}), bits);
  EXPECT_EQ(Pixels(b), (std::vector<uint32_t>{0x80030201, 0x00060504}));

  // Rows given apart from the header; a whole .bmp file with its offset.
  TBytes header = Dib(1, 1, 24, {}, {});
  TBytesStream hs(header);
  TBytes rows = {9, 8, 7, 0};
  THtBitmapData apart;
  apart.LoadfromDIB(hs, rows, bits, false);
  EXPECT_EQ(apart.GetPixel(0, 0), 0xFF070809u);
  TBytes file = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 58, 0, 0, 0};
  TBytes dib = Dib(1, 1, 24, {}, {});
  file.insert(file.end(), dib.begin(), dib.end());
  file.insert(file.end(), {0, 0, 0, 0, 0x10, 0x20, 0x30, 0}); // 4 bytes of gap, then the row
  EXPECT_EQ(LoadDib(file, bits).GetPixel(0, 0), 0xFF302010u);
}

TEST(BitmapData, LoadfromDIBRefusesBadInput) {
  int bits = 0;
  struct {
    TBytes dib;
    std::string message;
  } cases[] = {
      {Dib(0, 1, 24, {}, {0, 0, 0, 0}), "Bitmap size not supported"},
      {Dib(1, 0, 24, {}, {0, 0, 0, 0}), "Bitmap size not supported"},
      {Dib(1 << 21, 1, 24, {}, {}), "Bitmap size not supported"},
      {Dib(1, 1, 7, {}, {0, 0, 0, 0}), "Bitness not supported"},
      {Dib(1, 1, 8, {}, {0}, 1), "Bitmap compression not supported"}, // RLE
      {Dib(1, 1, 8, {}, {0}, 0, 1000), "Invalid bitmap header"},      // table of 1000 colours
      {Dib(1000, 1000, 32, {}, {1, 2, 3}), "Bitmap data too short"},  // no 4 MB in 3 bytes
      {Dib(4, 1, 24, {}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), "Bitmap data too short"},
      {TBytes{10, 0, 0, 0, 0, 0, 0, 0}, "Invalid bitmap header"},
      {TBytes{40, 0}, "Bitmap data too short"},
  };
  for (const auto& c : cases)
    ExpectError([&] { LoadDib(c.dib, bits); }, c.message);
  // The last row may lack its padding.
  EXPECT_EQ(LoadDib(Dib(1, 2, 24, {}, {1, 1, 1, 0, 2, 2, 2}), bits).GetPixel(0, 0), 0xFF020202u);
}
