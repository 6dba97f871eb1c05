// The image handle: its bytes, where they came from, and the document's cache.
#include "htcore/foundation/base64.h"
#include "htcore/foundation/files.h"
#include "htcore/foundation/stream_types.h"
#include "htcore/graphics/images.h"

#include <string_view>

namespace ht {

namespace {

// The bytes of a base64 "data:" URL; false for other URLs and plain data URLs.
bool DataUrlBytes(std::u16string_view url, TBytes& out) {
  if (url.size() < 5 || url.substr(0, 5) != u"data:")
    return false;
  size_t comma = url.find(u',');
  if (comma == std::u16string_view::npos)
    return false;
  std::u16string_view head = url.substr(0, comma);
  if (head.size() < 7 || head.substr(head.size() - 7) != u";base64")
    return false;
  out = Base64DecodetoBytes(url.substr(comma + 1));
  return true;
}

} // namespace

THtImage::~THtImage() = default;

void THtImage::Create(const hstring& Url) {
  Source = Url;
  if (!Url.empty())
    OnLoaded(Url);
}

void THtImage::Create(TBytes Bytes) {
  auto s = std::make_unique<TBytesStream>(std::move(Bytes));
  const TBytes& kept = s->Bytes();
  FImageData = std::move(s);
  OnLoaded(kept);
}

bool THtImage::GetLoaded() const { return FLoaded || HasRecording(); }

void THtImage::OnLoaded(const hstring& AFileName) {
  std::u16string_view name = AFileName.view();
  TBytes bytes;
  if (DataUrlBytes(name, bytes)) {
    Create(std::move(bytes));
    return;
  }
  if (name.size() >= 7 && name.substr(0, 7) == u"file://")
    name.remove_prefix(7);
  else if (name.find(u"://") != std::u16string_view::npos)
    return;
  if (name.empty())
    return;
  RawByteString raw;
  try {
    raw = FileToStrR(hstring(name));
  } catch (const EStreamError&) {
    return; // a missing file leaves the image unloaded, as an unreachable URL would
  }
  Create(TBytes(raw.begin(), raw.end()));
}

void THtImage::OnLoaded(const TBytes& ABytes) {
  FLoaded = !ABytes.empty();
  Format = GetFormat(ABytes, Format);
  int w = 0, h = 0;
  if (ReadImageSize(ABytes, w, h)) {
    Width = w;
    Height = h;
  }
}

void THtImage::SetImageData(std::unique_ptr<TStream> AData) { FImageData = std::move(AData); }

TBytes THtImage::AsBytes() const {
  TStream* s = GetImageData();
  if (!s)
    return {};
  if (auto* b = dynamic_cast<TBytesStream*>(s))
    return b->Bytes();
  if (auto* m = dynamic_cast<TCustomMemoryStream*>(s)) {
    auto* p = static_cast<const uint8_t*>(m->Memory());
    return p ? TBytes(p, p + m->Size()) : TBytes{};
  }
  int64_t pos = s->GetPosition();
  int64_t size = s->GetSize();
  TBytes out(static_cast<size_t>(size > 0 ? size : 0));
  s->SetPosition(0);
  s->ReadBuffer(out.data(), static_cast<int64_t>(out.size()));
  s->SetPosition(pos);
  return out;
}

THtImages::~THtImages() = default;

THtImage* THtImages::FindImage(const hstring& Url) const {
  auto it = FIndex.find(Url);
  return it == FIndex.end() ? nullptr : FList[it->second].Image.get();
}

THtImage* THtImages::Add(const hstring& Url, THtImage* Image) {
  std::unique_ptr<THtImage> owned(Image);
  auto it = FIndex.find(Url);
  if (it != FIndex.end()) {
    std::unique_ptr<THtImage>& slot = FList[it->second].Image;
    if (slot.get() == Image) // adding the same image again must not free it
      owned.release();
    else
      slot = std::move(owned);
    return Image;
  }
  FIndex.emplace(Url, FList.size());
  FList.push_back({Url, std::move(owned)});
  return Image;
}

bool THtImages::Remove(const hstring& Url) {
  auto it = FIndex.find(Url);
  if (it == FIndex.end())
    return false;
  size_t at = it->second;
  FIndex.erase(it);
  FList.erase(FList.begin() + static_cast<std::ptrdiff_t>(at));
  for (auto& [url, index] : FIndex)
    if (index > at)
      --index;
  return true;
}

void THtImages::Clear() {
  FIndex.clear();
  FList.clear();
}

} // namespace ht
