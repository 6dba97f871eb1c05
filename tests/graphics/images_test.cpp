#include "htcore/foundation/files.h"
#include "htcore/foundation/stream_types.h"
#include "htcore/graphics/images.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using namespace ht;
using namespace std::string_literals;

namespace {

TBytes B(std::string_view s) { return TBytes(s.begin(), s.end()); }

} // namespace

TEST(ImageFormat, SniffingTable) {
  struct {
    std::string bytes;
    THtImageFormat format;
    bool image;
  } cases[] = {
      {"\xFF\xD8\xFF\xE0\0\x10"s, hifJPEG, true},
      {"\xFF\xD8\xFF\xE0\0"s, hifUnknown, false}, // 5 bytes are no image of any kind
      {"\x89PNG\r\n\x1A\n"s, hifPNG, true},
      {"\x89PNG\n\n"s, hifUnknown, false}, // the fifth byte must be CR
      {"GIF89a"s, hifGIF, true},
      {"GIF8"s, hifUnknown, false},
      {"BM\x36\0\0\0"s, hifBitmap, true},
      {"<svg xmlns="s, hifSVG, false},
      {"<SVG>  "s, hifSVG, false},
      {"<sVg>  "s, hifSVG, false},
      {"<sVx>  "s, hifUnknown, false},                  // an upper-case V wants a g after it
      {"<svx>  "s, hifSVG, false},                      // a lower-case v is enough
      {"<?xml version='1.0'?><root/>"s, hifSVG, false}, // any XML passes the SVG test
      {"<html>"s, hifUnknown, false},
      {std::string("\0\0\1\0\1\0", 6), hifIcon, false},
      {"II*\0\x08\0\0\0\0\0"s, hifTIFF, true},
      {std::string("MM\0*\0\0\0\x08\0\0", 10), hifTIFF, true},
      {"II*\0\x08\0"s, hifTIFF, false}, // TIFF by GetFormat at 6 bytes, IsTIFF wants 10
      {"IIxx\x08\0\0\0\0\0"s, hifTIFF, false},
      {std::string("\1\0\0\1\0\0\0\0\0\0\0", 11), hifUnknown, true}, // enhanced metafile header
      {std::string("\1\0\0\1\0\0\0\0\0\0", 10), hifUnknown, false},
      {"plain text, nothing else"s, hifUnknown, false},
      {""s, hifUnknown, false},
  };
  for (const auto& c : cases) {
    TBytes b = B(c.bytes);
    EXPECT_EQ(THtImage::GetFormat(b), c.format) << c.bytes;
    EXPECT_EQ(THtImage::IsImage(b), c.image) << c.bytes;
  }
  EXPECT_EQ(THtImage::GetFormat(B("plain text"), hifMeta), hifMeta); // the format stays
}

TEST(ImageFormat, HeaderSizes) {
  std::string png("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\x01\x2C\0\0\0\x64\x08\x06\0\0\0", 29);
  std::string gif("GIF89a\x20\x03\x58\x02\0\0", 12);
  std::string bmp("BM\0\0\0\0\0\0\0\0\0\0\0\0\x28\0\0\0\x10\0\0\0\xF8\xFF\xFF\xFF", 26); // top-down
  std::string core("BM\0\0\0\0\0\0\0\0\0\0\0\0\x0C\0\0\0\x07\0\x05\0", 22);
  std::string jpeg("\xFF\xD8\xFF\xE0\0\x04\0\0\xFF\xFF\xC0\0\x11\x08\0\x30\0\x40\x03", 19);
  std::string sos("\xFF\xD8\xFF\xDA\0\x04\0\0\xFF\xC0\0\x11\x08\0\x30\0\x40\x03", 18);
  struct {
    std::string bytes;
    bool ok;
    int w, h;
  } cases[] = {
      {png, true, 300, 100},
      {png.substr(0, 23), false, 0, 0},
      {gif, true, 800, 600},
      {bmp, true, 16, 8},
      {core, true, 7, 5},
      {jpeg, true, 64, 48},
      {sos, false, 0, 0},                 // the scan starts before any frame header
      {"GIF89a\0\0\x10\0"s, false, 0, 0}, // zero width
      {"<svg width='3'>", false, 0, 0},
  };
  for (const auto& c : cases) {
    int w = 0, h = 0;
    EXPECT_EQ(THtImage::ReadImageSize(B(c.bytes), w, h), c.ok) << c.bytes.size();
    EXPECT_EQ(w, c.w);
    EXPECT_EQ(h, c.h);
  }
}

TEST(Image, KeepsBytesAndSource) {
  std::string gif("GIF89a\x02\0\x03\0\0\0", 12);
  THtImage img(B(gif));
  EXPECT_TRUE(img.GetLoaded());
  EXPECT_EQ(img.Format, hifGIF);
  EXPECT_EQ(img.Width, 2);
  EXPECT_EQ(img.Height, 3);
  EXPECT_EQ(img.AsBytes(), B(gif));
  EXPECT_TRUE(img.Source.empty());

  THtImage none;
  EXPECT_FALSE(none.GetLoaded());
  EXPECT_TRUE(none.AsBytes().empty());
  EXPECT_EQ(none.GetImageData(), nullptr);

  // A stream of another kind is read from its start, and its position kept.
  auto ms = std::make_unique<TMemoryStream>();
  ms->WriteBuffer("abc", 3);
  none.SetImageData(std::move(ms));
  EXPECT_EQ(none.AsBytes(), B("abc"));
  EXPECT_EQ(none.GetImageData()->GetPosition(), 3);
}

TEST(Image, LoadsFilesAndDataUrls) {
  std::string path = testing::TempDir() + "htcore_image_" + std::to_string(getpid()) + ".png";
  std::string png("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\x05\0\0\0\x06\x08\x06\0\0\0", 29);
  StrtoFileR(png, hstring::FromUtf8(path));
  THtImage file(hstring::FromUtf8(path));
  EXPECT_TRUE(file.GetLoaded());
  EXPECT_EQ(file.Format, hifPNG);
  EXPECT_EQ(file.Width, 5);
  EXPECT_EQ(file.Source, hstring::FromUtf8(path));
  THtImage url(hstring::FromUtf8("file://" + path));
  EXPECT_EQ(url.Height, 6);
  std::remove(path.c_str());

  THtImage missing(hstring::FromUtf8(path)); // gone now: unloaded, the reference kept
  EXPECT_FALSE(missing.GetLoaded());
  EXPECT_EQ(missing.Source, hstring::FromUtf8(path));
  THtImage remote(u"https://example.org/a.png"_hs); // the host fetches
  EXPECT_FALSE(remote.GetLoaded());

  THtImage data(u"data:image/gif;base64,R0lGODlhAgADAAAA"_hs);
  EXPECT_EQ(data.Format, hifGIF);
  EXPECT_EQ(data.Width, 2);
  EXPECT_EQ(data.Height, 3);
}

namespace {

// A decoding subclass: hooks run when it calls Create itself.
struct TCountingImage : THtImage {
  int Calls = 0;
  void OnLoaded(const TBytes& ABytes) override {
    ++Calls;
    THtImage::OnLoaded(ABytes);
  }
};

} // namespace

TEST(Image, SubclassHooks) {
  TCountingImage img;
  img.Create(B("BM\0\0\0\0"s));
  EXPECT_EQ(img.Calls, 1);
  EXPECT_EQ(img.Format, hifBitmap);
  EXPECT_EQ(img.NextFrame(0), 0);
}

TEST(Images, CacheOwnsAndFinds) {
  THtImages cache;
  THtImage* a = cache.Add(u"a.png"_hs, new THtImage);
  THtImage* b = cache.Add(u"b.png"_hs, new THtImage);
  EXPECT_EQ(cache.FindImage(u"a.png"_hs), a);
  EXPECT_EQ(cache.FindImage(u"b.png"_hs), b);
  EXPECT_EQ(cache.FindImage(u"c.png"_hs), nullptr);
  EXPECT_EQ(cache.Add(u"a.png"_hs, a), a); // the same image again is kept, not freed
  THtImage* a2 = cache.Add(u"a.png"_hs, new THtImage);
  EXPECT_EQ(cache.FindImage(u"a.png"_hs), a2);
  EXPECT_EQ(cache.Count(), 2);
  EXPECT_TRUE(cache.Remove(u"a.png"_hs));
  EXPECT_FALSE(cache.Remove(u"a.png"_hs));
  EXPECT_EQ(cache.FindImage(u"b.png"_hs), b);
  EXPECT_EQ(cache.Urls(0), u"b.png"_hs);
  cache.Clear();
  EXPECT_EQ(cache.Count(), 0);
}
