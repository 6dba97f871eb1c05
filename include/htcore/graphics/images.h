// Images: the handle a canvas draws (THtImage), format sniffing on the first
// bytes, and a document's image cache (THtImages). THtImage keeps the image's
// bytes and where they came from; decoding pixels is the business of a
// canvas's own subclass (THtCanvas::ImageClass), which overrides the hooks.
//
//   ht::THtImage img(ht::TBytes(png.begin(), png.end()));
//   img.Format;                 // hifPNG, from the first bytes
//   img.Width, img.Height;      // from the header when it tells them (PNG, GIF, BMP, JPEG)
//   ht::TBytes raw = img.AsBytes();
//   ht::THtImage::GetFormat(bytes);   // hifUnknown for plain text
//
//   ht::THtImages cache;        // owns its images
//   cache.Add(u"logo.png"_hs, new ht::THtImage(bytes));
//   ht::THtImage* hit = cache.FindImage(u"logo.png"_hs);
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/foundation/stream.h"

#include <cstdint>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

namespace ht {

class THtCanvas;

enum THtImageFormat : uint8_t {
  hifUnknown,
  hifMeta,
  hifBitmap,
  hifJPEG,
  hifPNG,
  hifGIF,
  hifSVG,
  hifIcon,
  hifTIFF
};

// Size and state common to every image kind.
class TBaseHtImage : public TObject {
public:
  int Width = 0, Height = 0;
  bool FLoaded = false;

  virtual bool GetLoaded() const { return FLoaded; }
};

class THtImage : public TBaseHtImage {
public:
  using TByteSpan = std::span<const uint8_t>;

  THtImage() = default;
  // The constructors run the base hooks only; a subclass that overrides
  // OnLoaded constructs empty and then calls Create itself.
  explicit THtImage(const hstring& Url) { Create(Url); }
  explicit THtImage(TBytes Bytes) { Create(std::move(Bytes)); }
  THtImage(const THtImage&) = delete;
  THtImage& operator=(const THtImage&) = delete;
  ~THtImage() override;

  THtImageFormat Format = hifUnknown;
  // Where the image came from, as the document names it (an URL or a file
  // name); a canvas that draws by reference writes it out.
  hstring Source;

  // Records Url as the source and, when it is not empty, calls OnLoaded(Url).
  void Create(const hstring& Url);
  // Keeps the bytes and calls OnLoaded(Bytes).
  void Create(TBytes Bytes);

  // The raw stream, or null when the image holds no bytes.
  virtual TStream* GetImageData() const { return FImageData.get(); }
  // True when the image holds bytes, a recording or was marked loaded.
  bool GetLoaded() const override;
  // The base reads a local file (a plain path or a file: URL) and passes its
  // bytes on; a file that cannot be read leaves the image unloaded. Other
  // schemes are the host's to fetch.
  virtual void OnLoaded(const hstring& AFileName);
  // The base sniffs the format and the size the header tells.
  virtual void OnLoaded(const TBytes& ABytes);
  // Animation hooks: the delay of the frame in milliseconds, 0 for a still image.
  virtual int NextFrame(int AFrame) {
    (void)AFrame;
    return 0;
  }
  virtual void CheckFrame() {}

  // Whether the image carries a recorded picture (drawing calls, not pixels).
  virtual bool HasRecording() const { return false; }
  // Replays the recording on Canvas in the image's own units.
  virtual void PlayRecording(THtCanvas& Canvas, float Opacity) {
    (void)Canvas;
    (void)Opacity;
  }

  // Replaces the stored stream (null drops it); the image owns it.
  void SetImageData(std::unique_ptr<TStream> AData);
  // The stream's bytes, read from its start; empty without a stream.
  TBytes AsBytes() const;

  // Format tests on the first bytes. Each wants at least 6 bytes, IsTIFF 10.
  static bool IsBMP(TByteSpan B) noexcept;
  static bool IsGIF(TByteSpan B) noexcept;
  static bool IsJPEG(TByteSpan B) noexcept;
  static bool IsPNG(TByteSpan B) noexcept;
  // "<svg" in any case of s and g, "<sV" only with a g after it, or "<?xml":
  // any XML document passes, on purpose, as the decoder tells the rest.
  static bool IsSVG(TByteSpan B) noexcept;
  static bool IsTIFF(TByteSpan B) noexcept;
  // JPEG, PNG, GIF, BMP, TIFF, or an enhanced metafile header (1, 0, 0, 1 and 11 bytes).
  static bool IsImage(TByteSpan B) noexcept;
  // JPEG, PNG, GIF, BMP, SVG, icon (0, 0, 1, 0), TIFF by its byte order mark
  // alone, in this order; anything else answers Current.
  static THtImageFormat GetFormat(TByteSpan B, THtImageFormat Current = hifUnknown) noexcept;
  // The pixel size the header of a PNG, GIF, BMP or JPEG file tells; false
  // (and W, H untouched) when the bytes do not say.
  static bool ReadImageSize(TByteSpan B, int& W, int& H) noexcept;

private:
  std::unique_ptr<TStream> FImageData;
};

// The images of a document by URL. The cache owns what it holds.
class THtImages : public TObject {
public:
  THtImages() = default;
  THtImages(const THtImages&) = delete;
  THtImages& operator=(const THtImages&) = delete;
  ~THtImages() override;

  // The image stored for the URL, or null.
  THtImage* FindImage(const hstring& Url) const;
  // Stores Image under Url; an image already there for it is freed.
  THtImage* Add(const hstring& Url, THtImage* Image);
  // Frees the image of Url; false when there was none.
  bool Remove(const hstring& Url);
  void Clear();
  int Count() const noexcept { return static_cast<int>(FList.size()); }
  const hstring& Urls(int Index) const { return FList.at(static_cast<size_t>(Index)).Url; }
  THtImage* Images(int Index) const { return FList.at(static_cast<size_t>(Index)).Image.get(); }

private:
  struct TItem {
    hstring Url;
    std::unique_ptr<THtImage> Image;
  };
  std::vector<TItem> FList;                   // in the order of adding
  std::unordered_map<hstring, size_t> FIndex; // URL to position in FList
};

} // namespace ht
