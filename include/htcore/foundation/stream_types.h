// Concrete streams: memory, bytes, caller memory, files.
//
//   ht::TMemoryStream m;
//   m.WriteBuffer("abc", 3);
//   m.SaveToFile("/tmp/abc.bin");
//
//   ht::TFileStream f("/tmp/abc.bin", ht::fmOpenRead | ht::fmShareDenyWrite);
//   ht::TBytesStream b;
//   b.CopyFrom(f, 0);                    // b.Bytes() == {'a', 'b', 'c'}
//
//   uint8_t area[16];
//   ht::TPointerStream p(area, sizeof area);  // writes stay inside area
//
// Positions may be set past the end; reading there gives nothing, writing to a
// growable stream fills the gap with zeros. File names are UTF-16 (hstring) or
// UTF-8 (std::string_view).
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/stream.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ht {

// File open modes: one access mode, optionally or-ed with one share mode.
// Share modes are accepted for compatibility and have no effect on POSIX.
enum : uint16_t {
  fmOpenRead = 0x0000,
  fmOpenWrite = 0x0001,
  fmOpenReadWrite = 0x0002,
  fmShareCompat = 0x0000,
  fmShareExclusive = 0x0010,
  fmShareDenyWrite = 0x0020,
  fmShareDenyRead = 0x0030,
  fmShareDenyNone = 0x0040,
  // Creates or truncates the file and opens it for reading and writing.
  fmCreate = 0xFF00,
};

// Byte stream over one contiguous block; subclasses decide who owns the block.
class TCustomMemoryStream : public TStream {
public:
  int64_t Read(void* buffer, int64_t count) override;
  int64_t Seek(int64_t offset, TSeekOrigin origin) override;
  int64_t GetSize() override { return FSize; }

  // The block; null while the stream is empty.
  void* Memory() const noexcept { return FMemory; }
  int64_t Size() const noexcept { return FSize; }

  void SaveToStream(TStream& stream) const;
  void SaveToFile(const hstring& file_name) const;
  void SaveToFile(std::string_view utf8_file_name) const;

protected:
  void SetPointer(void* memory, int64_t size) noexcept {
    FMemory = static_cast<uint8_t*>(memory);
    FSize = size;
  }

  uint8_t* FMemory = nullptr;
  int64_t FSize = 0;
  int64_t FPosition = 0;
};

// Growable stream in its own heap block.
class TMemoryStream : public TCustomMemoryStream {
public:
  TMemoryStream() = default;
  TMemoryStream(const TMemoryStream&) = delete;
  TMemoryStream& operator=(const TMemoryStream&) = delete;
  ~TMemoryStream() override;

  int64_t Write(const void* buffer, int64_t count) override;
  // Growing keeps the content and zero-fills; the position stays unless it is past the new end.
  void SetSize(int64_t size) override;
  void Clear();
  int64_t Capacity() const noexcept { return FCapacity; }
  void SetCapacity(int64_t capacity);

  // Replace the content with the stream's (all of it, from its start) or the file's.
  void LoadFromStream(TStream& stream);
  void LoadFromFile(const hstring& file_name);
  void LoadFromFile(std::string_view utf8_file_name);

private:
  void Grow(int64_t needed);

  int64_t FCapacity = 0;
};

// Stream over a TBytes that it owns; Bytes() always has exactly Size() elements.
class TBytesStream : public TCustomMemoryStream {
public:
  TBytesStream() = default;
  explicit TBytesStream(TBytes bytes);

  int64_t Write(const void* buffer, int64_t count) override;
  void SetSize(int64_t size) override;

  const TBytes& Bytes() const noexcept { return FBytes; }
  // Hands the content over and leaves the stream empty.
  TBytes TakeBytes();

private:
  void Sync() noexcept { SetPointer(FBytes.data(), static_cast<int64_t>(FBytes.size())); }

  TBytes FBytes;
};

// Bytes in and out as an 8-bit string.
class TStringStream : public TBytesStream {
public:
  TStringStream() = default;
  explicit TStringStream(std::string_view data);

  RawByteString DataString() const;
};

// Stream over memory owned by the caller: nothing is freed, the size is fixed
// and writing stops at the end of the area.
class TPointerStream : public TCustomMemoryStream {
public:
  TPointerStream(void* p, int64_t size) { SetPointer(p, size < 0 ? 0 : size); }
  // Read-only view: writing raises.
  TPointerStream(const void* p, int64_t size) : TPointerStream(const_cast<void*>(p), size) {
    FReadOnly = true;
  }

  int64_t Write(const void* buffer, int64_t count) override;

private:
  bool FReadOnly = false;
};

// Unbuffered stream over an operating-system file.
class TFileStream : public TStream {
public:
  TFileStream(const hstring& file_name, uint16_t mode);
  TFileStream(std::string_view utf8_file_name, uint16_t mode);
  TFileStream(const TFileStream&) = delete;
  TFileStream& operator=(const TFileStream&) = delete;
  ~TFileStream() override;

  int64_t Read(void* buffer, int64_t count) override;
  int64_t Write(const void* buffer, int64_t count) override;
  int64_t Seek(int64_t offset, TSeekOrigin origin) override;
  int64_t GetSize() override;
  // Truncates or extends the file; raises EStreamError when the system refuses.
  void SetSize(int64_t size) override;

  int Handle() const noexcept { return FHandle; }
  const hstring& FileName() const noexcept { return FFileName; }

private:
  void Open(const std::string& native_name, uint16_t mode);

  int FHandle = -1;
  hstring FFileName;
};

} // namespace ht
