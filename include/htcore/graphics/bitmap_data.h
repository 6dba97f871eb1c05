// THtBitmapData: a device-independent pixel array at 1, 2, 4, 8, 16, 24, 32
// or 48 bits a pixel, with what image decoders and exporters need: depth
// conversions, alpha masks, bitwise combination, nearest-neighbour resizing,
// cropping and reading Windows DIBs. FastBlur is the box blur that raster
// canvases use for BlurRect; THtColorSpace lets a decoder convert colours.
//
//   ht::THtBitmapData bmp(640, 480, 24);      // rows padded to 4 bytes
//   bmp.SetData(std::move(rows), 640, 480, 24); // shares rows when the padding matches
//   bmp.Convertto32();                        // BGRA, alpha 255, stride 4 * width
//   bmp.ApplyMask(alpha8);                    // alpha from an 8-bit mask
//   bmp.Resize(320, 240);
//   ht::FastBlur(bmp.Scanline32(0), 320, 240, 4, {0, 0, 320, 240}, bmp.FStride);
//
// Pixels of 32 bits are the colour cardinal 0xAARRGGBB (blue in the low
// byte); 24-bit pixels are its three low bytes; 1, 2 and 4-bit pixels are
// packed from the most significant bit of each byte; 16-bit pixels are
// 5-5-5 RGB words. Without a colour table, 1 to 8-bit values are greys.
//
// Sizes that come from data are checked: a negative or absurd size, a stride
// that cannot hold the width, or rows shorter than the height raise
// EHtBitmapError; depths the operation does not know raise it with the
// messages "Bitness not supported", "Mask bits N" and "Only 32 bit image is
// supported". Programmer errors raise EAssertionFailed.
#pragma once

#include "htcore/foundation/exception.h"
#include "htcore/foundation/geometry.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/foundation/stream.h"

#include <cstdint>
#include <memory>
#include <span>

namespace ht {

class EHtBitmapError : public Exception {
public:
  using Exception::Exception;
};

enum THtPixelOperation : uint8_t { poOr, poAnd, poXor, poNXor, poCopy };

// A decoder's colour conversion. The base is the identity and has no fast path.
class THtColorSpace : public TObject {
public:
  virtual uint32_t ConvertColor(uint32_t c) { return c; }
  // Packs red a, green b, blue c and alpha d, each 0..1, into a colour cardinal.
  virtual uint32_t ConvertFloat(float a, float b, float c, float d);
  virtual int InComponentCount() { return 3; }
  virtual int OutComponentCount() { return 3; }
  virtual bool IsIdentity() { return true; }
  // Fills DestData (4 * SourceWidth bytes a row) from 8-bit rows; false when
  // the space has no fast path, and the pixels then go through ConvertColor.
  virtual bool Convert8to32(const uint8_t* SourceData, uint8_t* DestData, int SourceWidth, int SourceHeight,
                            int SourceStride) {
    (void)SourceData, (void)DestData, (void)SourceWidth, (void)SourceHeight, (void)SourceStride;
    return false;
  }
};

class THtBitmapData : public TObject {
public:
  // Widths and heights above this, or arrays above kMaxBytes, are refused.
  static constexpr int kMaxSide = 1 << 20;
  static constexpr int64_t kMaxBytes = int64_t(1) << 30;

  THtBitmapData() = default;
  THtBitmapData(int AWidth, int AHeight, int ABits) { Create(AWidth, AHeight, ABits); }
  // The array is shared between copies made by copying; Clone copies it.
  THtBitmapData(const THtBitmapData&) = default;
  THtBitmapData& operator=(const THtBitmapData&) = default;
  THtBitmapData Clone() const;

  int FWidth = 0, FHeight = 0, FBits = 0, FStride = 0;
  bool IsClear = false;

  // Bytes a row: ceil(AWidth * ABits / 8) rounded up to a multiple of 4.
  static int CalcStride(int AWidth, int ABits);

  // A zero-filled array of the size; earlier content is dropped.
  void Create(int AWidth, int AHeight, int ABits);
  // Takes over foreign rows: Length(AData) div AHeight is the source row
  // length, unless that is more than 4 bytes a pixel, when rows are taken as
  // packed. Shared without a copy when the row length is already the
  // stride; otherwise copied. A 48-bit source keeps the high byte of each
  // 16-bit sample (machine order) in 32-bit rows while FBits stays 48:
  // follow it by Convertto32.
  void SetData(std::shared_ptr<TBytes> AData, int AWidth, int AHeight, int ABits);
  void SetData(TBytes AData, int AWidth, int AHeight, int ABits) {
    SetData(std::make_shared<TBytes>(std::move(AData)), AWidth, AHeight, ABits);
  }
  // 1 bit: all set when AColor is not 0; 8 bits: its low byte; 32 bits: the
  // colour. Other depths are left alone.
  void Clear(uint32_t AColor);

  int GetPixelBytes() const noexcept { return FBits / 8; }
  uint8_t* GetScanLine(int Index);
  const uint8_t* GetScanLine(int Index) const;
  uint32_t* Scanline32(int Index) { return reinterpret_cast<uint32_t*>(GetScanLine(Index)); }
  // The stored value: a grey or index below 8 bits, a 5-5-5 word, the three
  // or four colour bytes.
  uint32_t GetPixel(int X, int Y) const;
  void SetPixel(int X, int Y, uint32_t Value);
  void SetWidth(int Value);
  void SetHeight(int Value);
  uint8_t* Data() noexcept { return FData ? FData->data() : nullptr; }
  const uint8_t* Data() const noexcept { return FData ? FData->data() : nullptr; }
  size_t DataSize() const noexcept { return FData ? FData->size() : 0; }
  const std::shared_ptr<TBytes>& DataArray() const noexcept { return FData; }
  bool Empty() const noexcept { return FWidth == 0 || FHeight == 0; }

  // To 32 bits with stride 4 * width, alpha 255 unless the source has one;
  // colours through AColorSpace when it is not the identity.
  void Convertto32(THtColorSpace* AColorSpace = nullptr);
  // Grey from 32 bits; other depths raise "Bitness not supported".
  void Convertto8();
  // Spread packed samples over bytes, scaled to 0..255.
  void Convert2to8();
  void Convert4to8();

  // Alpha from a mask of the image's size (the mask is resized first): 1-bit
  // set is opaque, 2, 4 and 8 bits are the opacity, 32 bits its low byte.
  // A 24-bit image with a 1 or 8-bit mask is converted in one pass.
  void Convertto32Mask(THtBitmapData& AMask);
  void ApplyMask(THtBitmapData& AMask);
  // Pixels of that colour (alpha not compared) become transparent.
  void ApplyColorMask(uint32_t AColor);
  // Pixels whose red, green and blue all lie in the inclusive ranges become transparent.
  void ApplyColorRangeMask(uint8_t R1, uint8_t R2, uint8_t G1, uint8_t G2, uint8_t B1, uint8_t B2);
  // ASource placed at (X, Y) and clipped; only 1 and 24 bits do anything.
  void Combine(const THtBitmapData& ASource, int X, int Y, THtPixelOperation AOperation);
  // The alpha of a 32-bit image as an 8-bit bitmap.
  THtBitmapData ConverttoMask() const;

  void InvertComponents();
  void BGRtoRGB();
  // CMYK pixels (cyan in the low byte) to opaque colours.
  void CMYKtoRGBA();
  void FlipVertical();
  // Only for 32 bits; an empty bitmap is one colour.
  bool IsSingleColor() const;
  // Keeps the part inside CropRect (clipped to the bitmap).
  void Crop(const TRect& CropRect);
  // Nearest neighbour at 1, 4, 8 and 32 bits; other depths stay as they are.
  void Resize(int NewWidth, int NewHeight);

  // Reads a BITMAPINFOHEADER (or the old 12-byte core header) and the
  // colour table from ST, then the rows from AData when it is not empty,
  // else from ST. Depths 1, 4, 8, 16, 24 and 32, uncompressed or with bit
  // fields. The result is 32 bits, top row first (AFlip: bottom row first);
  // 32-bit rows whose alpha is all 0 are made opaque. ABits receives the
  // file's depth. Malformed headers and short data raise EHtBitmapError.
  void LoadfromDIB(TStream& ST, std::span<const uint8_t> AData, int& ABits, bool AFlip);

private:
  std::shared_ptr<TBytes> FData;

  // Bits a pixel as stored: a 48-bit bitmap made by SetData has 32-bit rows.
  int StoredBits() const noexcept;
  void Replace(TBytes AData, int AStride, int ABits);
  void ApplyAlpha(const THtBitmapData& AMask);
};

// CMYK bytes (cyan low) to an opaque colour by interpolating over the
// corners of the CMYK cube.
uint32_t CMYKtoARGB(uint32_t C) noexcept;

// Box blur of the 32-bit pixels inside Rect (clipped to the bitmap), in
// place, twice over rows then columns, edges repeated outward. Stride is in
// bytes. The radius is cut to half the rectangle's smaller side less one
// (and to 32000); below 1 nothing moves.
void FastBlur(uint32_t* Data, int Width, int Height, int Radius, const TRect& Rect, int Stride);

} // namespace ht
