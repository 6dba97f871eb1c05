#include "htcore/foundation/stream_types.h"

#include "foundation/sys_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ht {

namespace {

// Read and write in slices the kernel takes in one call.
constexpr int64_t kMaxIo = 0x40000000;

} // namespace

// TCustomMemoryStream

int64_t TCustomMemoryStream::Read(void* buffer, int64_t count) {
  if (count <= 0 || FPosition >= FSize)
    return 0;
  int64_t n = std::min(count, FSize - FPosition);
  std::memcpy(buffer, FMemory + FPosition, static_cast<size_t>(n));
  FPosition += n;
  return n;
}

int64_t TCustomMemoryStream::Seek(int64_t offset, TSeekOrigin origin) {
  FPosition = detail::SeekTarget(FPosition, FSize, offset, origin);
  return FPosition;
}

void TCustomMemoryStream::SaveToStream(TStream& stream) const {
  if (FSize)
    stream.WriteBuffer(FMemory, FSize);
}

void TCustomMemoryStream::SaveToFile(const hstring& file_name) const {
  TFileStream f(file_name, fmCreate);
  SaveToStream(f);
}

void TCustomMemoryStream::SaveToFile(std::string_view utf8_file_name) const {
  TFileStream f(utf8_file_name, fmCreate);
  SaveToStream(f);
}

// TMemoryStream

TMemoryStream::~TMemoryStream() { std::free(FMemory); }

void TMemoryStream::SetCapacity(int64_t capacity) {
  if (capacity < FSize)
    capacity = FSize;
  if (capacity == FCapacity)
    return;
  if (capacity == 0) {
    std::free(FMemory);
    SetPointer(nullptr, 0);
    FCapacity = 0;
    return;
  }
  if (static_cast<uint64_t>(capacity) > SIZE_MAX / 2)
    throw EOutOfMemory();
  void* p = std::realloc(FMemory, static_cast<size_t>(capacity));
  if (!p)
    throw EOutOfMemory();
  FMemory = static_cast<uint8_t*>(p);
  FCapacity = capacity;
}

void TMemoryStream::Grow(int64_t needed) {
  if (needed <= FCapacity)
    return;
  int64_t cap = std::max<int64_t>(needed, FCapacity + FCapacity / 2);
  cap = std::max<int64_t>(cap, 256);
  SetCapacity((cap + 15) & ~int64_t(15));
}

int64_t TMemoryStream::Write(const void* buffer, int64_t count) {
  if (count <= 0)
    return 0;
  int64_t end;
  if (__builtin_add_overflow(FPosition, count, &end))
    return 0;
  if (end > FSize) {
    Grow(end);
    if (FPosition > FSize) // a gap left by seeking past the end reads as zeros
      std::memset(FMemory + FSize, 0, static_cast<size_t>(FPosition - FSize));
    FSize = end;
  }
  std::memcpy(FMemory + FPosition, buffer, static_cast<size_t>(count));
  FPosition = end;
  return count;
}

void TMemoryStream::SetSize(int64_t size) {
  if (size < 0)
    throw EStreamError(std::string_view("Invalid stream size"));
  if (size > FSize) {
    Grow(size);
    std::memset(FMemory + FSize, 0, static_cast<size_t>(size - FSize));
  }
  FSize = size;
  if (FPosition > size)
    FPosition = size;
}

void TMemoryStream::Clear() {
  std::free(FMemory);
  SetPointer(nullptr, 0);
  FCapacity = 0;
  FPosition = 0;
}

void TMemoryStream::LoadFromStream(TStream& stream) {
  stream.SetPosition(0);
  int64_t count = stream.GetSize();
  FSize = 0;
  FPosition = 0;
  Grow(count);
  if (count) {
    stream.ReadBuffer(FMemory, count);
    FSize = count;
  }
}

void TMemoryStream::LoadFromFile(const hstring& file_name) {
  TFileStream f(file_name, fmOpenRead | fmShareDenyWrite);
  LoadFromStream(f);
}

void TMemoryStream::LoadFromFile(std::string_view utf8_file_name) {
  TFileStream f(utf8_file_name, fmOpenRead | fmShareDenyWrite);
  LoadFromStream(f);
}

// TBytesStream

TBytesStream::TBytesStream(TBytes bytes) : FBytes(std::move(bytes)) { Sync(); }

int64_t TBytesStream::Write(const void* buffer, int64_t count) {
  if (count <= 0)
    return 0;
  int64_t end;
  if (__builtin_add_overflow(FPosition, count, &end))
    return 0;
  if (end > FSize) {
    if (static_cast<uint64_t>(end) > FBytes.capacity())
      FBytes.reserve(std::max<size_t>(static_cast<size_t>(end), FBytes.capacity() * 2));
    FBytes.resize(static_cast<size_t>(end)); // zero-fills a gap past the old end
  }
  std::memcpy(FBytes.data() + FPosition, buffer, static_cast<size_t>(count));
  Sync();
  FPosition = end;
  return count;
}

void TBytesStream::SetSize(int64_t size) {
  if (size < 0)
    throw EStreamError(std::string_view("Invalid stream size"));
  FBytes.resize(static_cast<size_t>(size));
  Sync();
  if (FPosition > size)
    FPosition = size;
}

TBytes TBytesStream::TakeBytes() {
  TBytes out = std::move(FBytes);
  FBytes = TBytes();
  Sync();
  FPosition = 0;
  return out;
}

// TStringStream

TStringStream::TStringStream(std::string_view data) : TBytesStream(TBytes(data.begin(), data.end())) {}

RawByteString TStringStream::DataString() const {
  return RawByteString(reinterpret_cast<const char*>(Bytes().data()), Bytes().size());
}

// TPointerStream

int64_t TPointerStream::Write(const void* buffer, int64_t count) {
  if (FReadOnly || count <= 0 || FPosition >= FSize)
    return 0;
  int64_t n = std::min(count, FSize - FPosition);
  std::memcpy(FMemory + FPosition, buffer, static_cast<size_t>(n));
  FPosition += n;
  return n;
}

// TFileStream

TFileStream::TFileStream(const hstring& file_name, uint16_t mode) : FFileName(file_name) {
  Open(file_name.toUtf8(), mode);
}

TFileStream::TFileStream(std::string_view utf8_file_name, uint16_t mode)
    : FFileName(Utf8ToHString(utf8_file_name)) {
  Open(std::string(utf8_file_name), mode);
}

void TFileStream::Open(const std::string& native_name, uint16_t mode) {
  bool create = (mode & fmCreate) == fmCreate;
  int flags = O_CLOEXEC;
  if (create)
    flags |= O_RDWR | O_CREAT | O_TRUNC;
  else if ((mode & 3) == fmOpenWrite)
    flags |= O_WRONLY;
  else if ((mode & 3) == fmOpenReadWrite)
    flags |= O_RDWR;
  else
    flags |= O_RDONLY;
  std::string what = (create ? "Cannot create file \"" : "Cannot open file \"") + native_name + "\".";
  if (!create && (mode & 3) == 3)
    throw EFOpenError(detail::WithSysError(what, EINVAL));
  do
    FHandle = ::open(native_name.c_str(), flags, 0666);
  while (FHandle < 0 && errno == EINTR);
  if (FHandle < 0)
    throw EFOpenError(detail::WithSysError(what, errno));
  // A directory opens read-only on POSIX but is no file to stream.
  struct stat st;
  if (::fstat(FHandle, &st) == 0 && S_ISDIR(st.st_mode)) {
    ::close(FHandle);
    FHandle = -1;
    throw EFOpenError(detail::WithSysError(what, EISDIR));
  }
}

TFileStream::~TFileStream() {
  if (FHandle >= 0)
    ::close(FHandle);
}

int64_t TFileStream::Read(void* buffer, int64_t count) {
  int64_t done = 0;
  auto* p = static_cast<char*>(buffer);
  while (done < count) {
    ssize_t n = ::read(FHandle, p + done, static_cast<size_t>(std::min(count - done, kMaxIo)));
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      break;
    done += n;
  }
  return done;
}

int64_t TFileStream::Write(const void* buffer, int64_t count) {
  int64_t done = 0;
  auto* p = static_cast<const char*>(buffer);
  while (done < count) {
    ssize_t n = ::write(FHandle, p + done, static_cast<size_t>(std::min(count - done, kMaxIo)));
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      break;
    done += n;
  }
  return done;
}

int64_t TFileStream::Seek(int64_t offset, TSeekOrigin origin) {
  int whence = origin == soBeginning ? SEEK_SET : origin == soCurrent ? SEEK_CUR : SEEK_END;
  off_t r = ::lseek(FHandle, static_cast<off_t>(offset), whence);
  if (r < 0)
    throw EStreamError(std::string_view("Invalid stream position"));
  return r;
}

int64_t TFileStream::GetSize() {
  struct stat st;
  if (::fstat(FHandle, &st) != 0)
    return TStream::GetSize();
  return st.st_size;
}

void TFileStream::SetSize(int64_t size) {
  int r;
  do
    r = ::ftruncate(FHandle, static_cast<off_t>(size));
  while (r < 0 && errno == EINTR);
  if (r < 0)
    throw EStreamError(
        detail::WithSysError("Cannot change the size of file \"" + FFileName.toUtf8() + "\".", errno));
  if (GetPosition() > size)
    Seek(0, soEnd);
}

} // namespace ht
