// THtCachedFileStream: a read-only stream over a memory-mapped file.
//
// Only a window of the file is mapped at a time (1 MiB by default), so files of
// any size can be read on 32-bit hosts too. GetPointer lets a parser work on
// the mapped bytes without copying them:
//
//   ht::THtCachedFileStream f("big.xml");
//   while (const uint8_t* p = f.GetPointer(4096)) {
//     int64_t n = std::min<int64_t>(4096, f.GetSize() - f.GetPosition());
//     parse(p, n);
//     f.Seek(n, ht::soCurrent);
//   }
//
// An empty file gives a stream of size 0 with nothing mapped. Write raises.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/stream.h"

#include <cstdint>
#include <string_view>

namespace ht {

class THtCachedFileStream : public TStream {
public:
  // Views start at multiples of this and are at least this long.
  static constexpr int64_t kViewGranularity = 0x100000;

  // Raises EFOpenError when the file cannot be opened and EStreamError with
  // "Cannot create file mapping for %s." / "Cannot create map view for %s."
  // (and the system's text) when it cannot be mapped.
  explicit THtCachedFileStream(const hstring& file_name, int64_t view_window = kViewGranularity);
  explicit THtCachedFileStream(std::string_view utf8_file_name, int64_t view_window = kViewGranularity);
  THtCachedFileStream(const THtCachedFileStream&) = delete;
  THtCachedFileStream& operator=(const THtCachedFileStream&) = delete;
  ~THtCachedFileStream() override;

  int64_t Read(void* buffer, int64_t count) override;
  // Not supported: the file is mapped read-only. Raises EStreamError.
  int64_t Write(const void* buffer, int64_t count) override;
  // Any position from 0 on; past the end reads give nothing.
  int64_t Seek(int64_t offset, TSeekOrigin origin) override;
  int64_t GetSize() override { return FFileSize; }

  // The mapped bytes at the position, with at least min(required_size, bytes
  // left) of them mapped behind the pointer; the view moves when needed. Null
  // when no byte is left. The pointer stays valid until the view moves.
  const uint8_t* GetPointer(int64_t required_size);

  // Sets the usual view length (raised to at least kViewGranularity) and maps
  // the first view from position 0.
  void SetViewWindow(int64_t size);
  // Maps a view holding [pos, pos + length), clipped to the file: its base is
  // pos rounded down to kViewGranularity and it spans at least the view window.
  void SetMapViewPos(int64_t pos, int64_t length);

  const hstring& FileName() const noexcept { return FFileName; }
  bool IsMapped() const noexcept { return FView != nullptr; }
  int64_t ViewBase() const noexcept { return FViewBase; }
  int64_t ViewLength() const noexcept { return FViewLength; }

private:
  void Open(const std::string& native_name, int64_t view_window);
  void Unmap() noexcept;
  bool InView(int64_t pos, int64_t length) const noexcept {
    return FView && pos >= FViewBase && pos + length <= FViewBase + FViewLength;
  }

  int FHandle = -1;
  int64_t FFileSize = 0;
  int64_t FWindow = kViewGranularity;
  const uint8_t* FView = nullptr;
  int64_t FViewBase = 0;
  int64_t FViewLength = 0;
  int64_t FPosition = 0;
  hstring FFileName;
};

} // namespace ht
