// Telling an image's format and pixel size from its first bytes.
#include "htcore/graphics/images.h"

#include <climits>

namespace ht {

namespace {

using TByteSpan = THtImage::TByteSpan;

bool Starts(TByteSpan B, std::initializer_list<uint8_t> Head) noexcept {
  if (B.size() < Head.size())
    return false;
  size_t i = 0;
  for (uint8_t c : Head)
    if (B[i++] != c)
      return false;
  return true;
}

uint32_t BE16(const uint8_t* p) noexcept { return uint32_t(p[0]) << 8 | p[1]; }
uint32_t BE32(const uint8_t* p) noexcept { return BE16(p) << 16 | BE16(p + 2); }
uint32_t LE16(const uint8_t* p) noexcept { return uint32_t(p[1]) << 8 | p[0]; }
uint32_t LE32(const uint8_t* p) noexcept { return LE16(p + 2) << 16 | LE16(p); }

bool Store(uint32_t w, uint32_t h, int& W, int& H) noexcept {
  if (w == 0 || h == 0 || w > INT_MAX || h > INT_MAX)
    return false;
  W = static_cast<int>(w);
  H = static_cast<int>(h);
  return true;
}

// Walks the marker segments up to the first start-of-frame; each step moves
// forward, so the walk is linear in the input.
bool JPEGSize(TByteSpan B, int& W, int& H) noexcept {
  size_t i = 2, n = B.size();
  while (i + 1 < n) {
    if (B[i] != 0xFF)
      return false;
    uint8_t m = B[i + 1];
    if (m == 0xFF) { // fill byte
      ++i;
      continue;
    }
    i += 2;
    if (m == 0x01 || (m >= 0xD0 && m <= 0xD8))
      continue; // markers without a length
    if (m == 0xD9 || m == 0xDA || i + 2 > n)
      return false; // image data or the end comes before any frame header
    uint32_t len = BE16(&B[i]);
    if (len < 2)
      return false;
    bool frame = m >= 0xC0 && m <= 0xCF && m != 0xC4 && m != 0xC8 && m != 0xCC;
    if (frame)
      return i + 7 <= n && Store(BE16(&B[i + 5]), BE16(&B[i + 3]), W, H);
    i += len;
  }
  return false;
}

} // namespace

bool THtImage::IsBMP(TByteSpan B) noexcept { return B.size() >= 6 && Starts(B, {'B', 'M'}); }

bool THtImage::IsGIF(TByteSpan B) noexcept { return B.size() >= 6 && Starts(B, {'G', 'I', 'F'}); }

bool THtImage::IsJPEG(TByteSpan B) noexcept { return B.size() >= 6 && Starts(B, {0xFF, 0xD8}); }

bool THtImage::IsPNG(TByteSpan B) noexcept { return B.size() >= 6 && Starts(B, {0x89, 'P', 'N', 'G', 0x0D}); }

bool THtImage::IsSVG(TByteSpan B) noexcept {
  if (B.size() < 6)
    return false;
  if (Starts(B, {'<', '?', 'x', 'm', 'l'}))
    return true;
  if (B[0] != '<' || (B[1] != 's' && B[1] != 'S'))
    return false;
  if (B[2] == 'v')
    return true;
  return B[2] == 'V' && (B[3] == 'g' || B[3] == 'G');
}

// Both byte orders: "II*\0" and "MM\0*".
bool THtImage::IsTIFF(TByteSpan B) noexcept {
  if (B.size() < 10)
    return false;
  return (Starts(B, {'I', 'I'}) && B[2] == '*') || (Starts(B, {'M', 'M'}) && B[3] == '*');
}

bool THtImage::IsImage(TByteSpan B) noexcept {
  return IsJPEG(B) || IsPNG(B) || IsGIF(B) || IsBMP(B) || IsTIFF(B) ||
         (B.size() >= 11 && Starts(B, {1, 0, 0, 1}));
}

THtImageFormat THtImage::GetFormat(TByteSpan B, THtImageFormat Current) noexcept {
  if (IsJPEG(B))
    return hifJPEG;
  if (IsPNG(B))
    return hifPNG;
  if (IsGIF(B))
    return hifGIF;
  if (IsBMP(B))
    return hifBitmap;
  if (IsSVG(B))
    return hifSVG;
  if (B.size() >= 6 && Starts(B, {0, 0, 1, 0}))
    return hifIcon;
  if (B.size() >= 6 && (Starts(B, {'I', 'I'}) || Starts(B, {'M', 'M'})))
    return hifTIFF;
  return Current;
}

bool THtImage::ReadImageSize(TByteSpan B, int& W, int& H) noexcept {
  const uint8_t* p = B.data();
  if (IsPNG(B))
    return B.size() >= 24 && Starts(B.subspan(12), {'I', 'H', 'D', 'R'}) &&
           Store(BE32(p + 16), BE32(p + 20), W, H);
  if (IsGIF(B))
    return B.size() >= 10 && Store(LE16(p + 6), LE16(p + 8), W, H);
  if (IsBMP(B)) {
    if (B.size() < 22)
      return false;
    uint32_t header = LE32(p + 14);
    if (header == 12) // the old core header has 16-bit sizes
      return Store(LE16(p + 18), LE16(p + 20), W, H);
    if (B.size() < 26 || header < 40)
      return false;
    int32_t h = static_cast<int32_t>(LE32(p + 22)); // negative: rows top-down
    return h != INT32_MIN && Store(LE32(p + 18), static_cast<uint32_t>(h < 0 ? -h : h), W, H);
  }
  if (IsJPEG(B))
    return JPEGSize(B, W, H);
  return false;
}

} // namespace ht
