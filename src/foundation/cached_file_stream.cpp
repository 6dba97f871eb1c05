#include "htcore/foundation/cached_file_stream.h"

#include "foundation/sys_files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ht {

THtCachedFileStream::THtCachedFileStream(const hstring& file_name, int64_t view_window)
    : FFileName(file_name) {
  Open(file_name.toUtf8(), view_window);
}

THtCachedFileStream::THtCachedFileStream(std::string_view utf8_file_name, int64_t view_window)
    : FFileName(Utf8ToHString(utf8_file_name)) {
  Open(std::string(utf8_file_name), view_window);
}

void THtCachedFileStream::Open(const std::string& native_name, int64_t view_window) {
  // O_NONBLOCK only keeps a FIFO from blocking the open; it is refused below.
  do
    FHandle = ::open(native_name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  while (FHandle < 0 && errno == EINTR);
  if (FHandle < 0)
    throw EFOpenError(detail::WithSysError("Cannot open file \"" + native_name + "\".", errno));
  struct stat st;
  int error = 0;
  if (::fstat(FHandle, &st) != 0)
    error = errno;
  else if (S_ISDIR(st.st_mode))
    error = EISDIR;
  else if (!S_ISREG(st.st_mode))
    error = ENODEV;
  if (error) {
    ::close(FHandle);
    FHandle = -1;
    throw EStreamError(detail::WithSysError("Cannot create file mapping for " + native_name + ".", error));
  }
  FFileSize = st.st_size;
  try {
    SetViewWindow(view_window);
  } catch (...) {
    ::close(FHandle);
    FHandle = -1;
    throw;
  }
}

THtCachedFileStream::~THtCachedFileStream() {
  Unmap();
  if (FHandle >= 0)
    ::close(FHandle);
}

void THtCachedFileStream::Unmap() noexcept {
  if (FView)
    ::munmap(const_cast<uint8_t*>(FView), static_cast<size_t>(FViewLength));
  FView = nullptr;
  FViewBase = 0;
  FViewLength = 0;
}

void THtCachedFileStream::SetViewWindow(int64_t size) {
  FWindow = std::max(size, kViewGranularity);
  SetMapViewPos(0, FWindow);
}

void THtCachedFileStream::SetMapViewPos(int64_t pos, int64_t length) {
  if (FFileSize == 0)
    return;
  pos = std::clamp<int64_t>(pos, 0, FFileSize - 1);
  length = std::clamp<int64_t>(length, 0, FFileSize - pos);
  int64_t base = pos & ~(kViewGranularity - 1);
  int64_t view_length = std::min(std::max(pos + length - base, FWindow), FFileSize - base);
  Unmap();
  void* p = ::mmap(nullptr, static_cast<size_t>(view_length), PROT_READ, MAP_SHARED, FHandle,
                   static_cast<off_t>(base));
  if (p == MAP_FAILED)
    throw EStreamError(detail::WithSysError("Cannot create map view for " + FFileName.toUtf8() + ".", errno));
  FView = static_cast<const uint8_t*>(p);
  FViewBase = base;
  FViewLength = view_length;
}

const uint8_t* THtCachedFileStream::GetPointer(int64_t required_size) {
  if (FPosition >= FFileSize)
    return nullptr;
  int64_t need = std::clamp<int64_t>(required_size, 1, FFileSize - FPosition);
  if (!InView(FPosition, need))
    SetMapViewPos(FPosition, need);
  return FView + (FPosition - FViewBase);
}

int64_t THtCachedFileStream::Read(void* buffer, int64_t count) {
  if (count <= 0 || FPosition >= FFileSize)
    return 0;
  int64_t n = std::min(count, FFileSize - FPosition);
  auto* out = static_cast<uint8_t*>(buffer);
  int64_t left = n;
  while (left > 0) {
    if (!InView(FPosition, 1))
      SetMapViewPos(FPosition, std::min(left, FWindow));
    int64_t chunk = std::min(left, FViewBase + FViewLength - FPosition);
    std::memcpy(out, FView + (FPosition - FViewBase), static_cast<size_t>(chunk));
    out += chunk;
    FPosition += chunk;
    left -= chunk;
  }
  return n;
}

int64_t THtCachedFileStream::Write(const void*, int64_t) {
  throw EStreamError(std::string_view("Stream write not supported"));
}

int64_t THtCachedFileStream::Seek(int64_t offset, TSeekOrigin origin) {
  FPosition = detail::SeekTarget(FPosition, FFileSize, offset, origin);
  return FPosition;
}

} // namespace ht
