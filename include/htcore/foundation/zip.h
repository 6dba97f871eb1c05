// zlib compression behind a replaceable implementation.
//
//   ht::TBytes packed, plain;
//   ht::THtZIP::ZCompress(data, packed);           // zlib format, best compression
//   ht::THtZIP::ZDecompress(packed, plain);        // plain == data
//
//   plain.resize(known_size);                      // Decompress needs the size up front
//   ht::THtZIP::Decompress(packed, plain);
//
//   ht::TMemoryStream out;                         // streaming
//   {
//     ht::TZCompressionStream z(out, 1);      // level 1: fastest
//     z.WriteBuffer(p, n);
//   }                                              // finished when destroyed (or by Finish)
//   out.SetPosition(0);
//   ht::TFixedZDecompressionStream in(out);
//   in.Read(buf, sizeof buf);
//
// THtZIP forwards to one IHtZipImplementation: the zlib one is registered when
// the library starts; RegisterImplementation puts another in its place.
// Damaged or truncated data raises EZLibError and never reads outside the input.
// Byte strings come as TBytes or RawByteString; output replaces Dest.
#pragma once

#include "htcore/foundation/exception.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/stream.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ht {

// A zlib failure: "zlib error: <zlib's text>" with zlib's detail in brackets when
// it gave one, e.g. "zlib error: data error (incorrect header check)".
class EZLibError : public Exception {
public:
  EZLibError(int code, const char* detail);
  // zlib's code (Z_DATA_ERROR, Z_BUF_ERROR, ...).
  int ErrorCode() const noexcept { return FCode; }

private:
  int FCode;
};

class IHtZipImplementation {
public:
  virtual ~IHtZipImplementation() = default;
  // zlib format of Src in Dest (replaced).
  virtual void Compress(const void* Src, size_t SrcLen, TBytes& Dest, bool BestSpeed) = 0;
  // Decompresses into Dest[0, DestLen) and sets DestLen to the bytes produced.
  virtual void Decompress(const void* Src, size_t SrcLen, void* Dest, size_t& DestLen) = 0;
  virtual void ZCompress(const void* Src, size_t SrcLen, TBytes& Dest, bool BestSpeed) = 0;
  virtual void ZDecompress(const void* Src, size_t SrcLen, TBytes& Dest) = 0;
};

// The zlib implementation.
//   Compress   one compress() call into a compressBound() buffer; BestSpeed asks
//              for level 1, otherwise zlib's default level.
//   Decompress what uncompress() does: inflate limited to the size given.
//   ZCompress  a deflate stream at level 9, or 1 with BestSpeed.
//   ZDecompress reads a TFixedZDecompressionStream in blocks of 0x100000 bytes
//              until a block comes back short.
class TDefZipImplementation : public IHtZipImplementation {
public:
  void Compress(const void* Src, size_t SrcLen, TBytes& Dest, bool BestSpeed) override;
  void Decompress(const void* Src, size_t SrcLen, void* Dest, size_t& DestLen) override;
  void ZCompress(const void* Src, size_t SrcLen, TBytes& Dest, bool BestSpeed) override;
  void ZDecompress(const void* Src, size_t SrcLen, TBytes& Dest) override;
};

class THtZIP {
public:
  THtZIP() = delete;

  static void Compress(const TBytes& Src, TBytes& Dest, bool BestSpeed = false);
  static void Compress(const RawByteString& Src, RawByteString& Dest, bool BestSpeed = false);
  // Dest comes sized to the expected output and leaves cut to what was produced.
  static void Decompress(const TBytes& Src, TBytes& Dest);
  static void Decompress(const RawByteString& Src, RawByteString& Dest);
  static void ZCompress(const TBytes& Src, TBytes& Dest, bool BestSpeed = false);
  static void ZCompress(const RawByteString& Src, RawByteString& Dest, bool BestSpeed = false);
  static void ZDecompress(const TBytes& Src, TBytes& Dest);
  static void ZDecompress(const RawByteString& Src, RawByteString& Dest);

  // Replaces the implementation (null puts the zlib one back). Calls already
  // running finish on the one they started with.
  static void RegisterImplementation(std::shared_ptr<IHtZipImplementation> Impl);
  static std::shared_ptr<IHtZipImplementation> Implementation();
};

// Forward-reading inflate over a source stream, from the source's position.
// Seeking goes forward by decompressing and skipping; going back restarts from
// the first position; soEnd is refused. When the zlib data ends, the source is
// left just after it, so data may follow it in the same stream.
class TFixedZDecompressionStream : public TStream {
public:
  explicit TFixedZDecompressionStream(TStream& Source);
  TFixedZDecompressionStream(const TFixedZDecompressionStream&) = delete;
  TFixedZDecompressionStream& operator=(const TFixedZDecompressionStream&) = delete;
  ~TFixedZDecompressionStream() override;

  // Raises EZLibError on damaged data, or when the source ends before the zlib data.
  int64_t Read(void* buffer, int64_t count) override;
  // Raises EStreamError: the stream is read-only.
  int64_t Write(const void* buffer, int64_t count) override;
  int64_t Seek(int64_t offset, TSeekOrigin origin) override;
  // Not known before the end: raises EStreamError.
  int64_t GetSize() override;

private:
  struct State;
  std::unique_ptr<State> F;
};

// Deflate into a destination stream. Finish (or the destructor) writes the end
// of the zlib data; writing after Finish raises.
class TZCompressionStream : public TStream {
public:
  // Level: 0-9 or Z_DEFAULT_COMPRESSION (-1).
  explicit TZCompressionStream(TStream& Dest, int Level = -1);
  TZCompressionStream(const TZCompressionStream&) = delete;
  TZCompressionStream& operator=(const TZCompressionStream&) = delete;
  ~TZCompressionStream() override;

  int64_t Read(void* buffer, int64_t count) override;
  int64_t Write(const void* buffer, int64_t count) override;
  // Only reports the position (bytes taken in); moving raises EStreamError.
  int64_t Seek(int64_t offset, TSeekOrigin origin) override;
  void Finish();

private:
  struct State;
  std::unique_ptr<State> F;
};

} // namespace ht
