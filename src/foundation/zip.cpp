#include "htcore/foundation/zip.h"

#include "foundation/zip_internal.h"
#include "htcore/foundation/startup.h"
#include "htcore/foundation/stream_types.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <mutex>
#include <string>
#include <zlib.h>

namespace ht {

namespace {

std::mutex g_lock;
std::shared_ptr<IHtZipImplementation> g_impl;

constexpr int64_t kBlock = 0x100000;

std::string ZMessage(int code, const char* detail) {
  std::string m = "zlib error: ";
  m += zError(code);
  if (detail && *detail) {
    m += " (";
    m += detail;
    m += ')';
  }
  return m;
}

RawByteString ToRaw(const TBytes& b) {
  return RawByteString(reinterpret_cast<const char*>(b.data()), b.size());
}

} // namespace

EZLibError::EZLibError(int code, const char* detail)
    : Exception(std::string_view(ZMessage(code, detail))), FCode(code) {}

namespace detail {

void StartZip() {
  std::lock_guard<std::mutex> guard(g_lock);
  g_impl = std::make_shared<TDefZipImplementation>();
}

void StopZip() {
  std::shared_ptr<IHtZipImplementation> old;
  {
    std::lock_guard<std::mutex> guard(g_lock);
    old.swap(g_impl);
  }
}

} // namespace detail

// TDefZipImplementation

void TDefZipImplementation::Compress(const void* Src, size_t SrcLen, TBytes& Dest, bool BestSpeed) {
  uLongf len = compressBound(static_cast<uLong>(SrcLen));
  Dest.resize(len);
  auto* src = static_cast<const Bytef*>(Src);
  int r = BestSpeed ? compress2(Dest.data(), &len, src, static_cast<uLong>(SrcLen), Z_BEST_SPEED)
                    : compress(Dest.data(), &len, src, static_cast<uLong>(SrcLen));
  if (r != Z_OK) {
    Dest.clear();
    throw EZLibError(r, nullptr);
  }
  Dest.resize(len);
}

// uncompress() unrolled, so that errors carry zlib's detail and a cut-off
// input is told apart from a destination that is too small.
void TDefZipImplementation::Decompress(const void* Src, size_t SrcLen, void* Dest, size_t& DestLen) {
  z_stream z{};
  int r = inflateInit(&z);
  if (r != Z_OK)
    throw EZLibError(r, z.msg);
  Bytef dummy; // inflate wants somewhere to write even when there is no room
  z.next_in = static_cast<Bytef*>(const_cast<void*>(Src));
  z.next_out = DestLen ? static_cast<Bytef*>(Dest) : &dummy;
  size_t in_left = SrcLen, out_left = DestLen;
  do {
    if (z.avail_out == 0) {
      z.avail_out = static_cast<uInt>(std::min<size_t>(out_left, UINT_MAX));
      out_left -= z.avail_out;
    }
    if (z.avail_in == 0) {
      z.avail_in = static_cast<uInt>(std::min<size_t>(in_left, UINT_MAX));
      in_left -= z.avail_in;
    }
    r = inflate(&z, Z_NO_FLUSH);
  } while (r == Z_OK);
  size_t produced = DestLen - out_left - z.avail_out;
  bool input_done = z.avail_in == 0 && in_left == 0;
  std::string detail = z.msg ? z.msg : "";
  inflateEnd(&z);
  if (r == Z_STREAM_END) {
    DestLen = produced;
    return;
  }
  if (r == Z_BUF_ERROR && input_done)
    throw EZLibError(Z_DATA_ERROR, "unexpected end of data");
  if (r == Z_BUF_ERROR)
    throw EZLibError(r, "output larger than the destination");
  throw EZLibError(r, r == Z_NEED_DICT ? "preset dictionary" : detail.c_str());
}

void TDefZipImplementation::ZCompress(const void* Src, size_t SrcLen, TBytes& Dest, bool BestSpeed) {
  Dest.clear();
  TBytesStream out;
  {
    TZCompressionStream z(out, BestSpeed ? Z_BEST_SPEED : Z_BEST_COMPRESSION);
    z.WriteBuffer(Src, static_cast<int64_t>(SrcLen));
    z.Finish();
  }
  Dest = out.TakeBytes();
}

void TDefZipImplementation::ZDecompress(const void* Src, size_t SrcLen, TBytes& Dest) {
  Dest.clear();
  TPointerStream in(Src, static_cast<int64_t>(SrcLen));
  TFixedZDecompressionStream z(in);
  std::unique_ptr<uint8_t[]> block(new uint8_t[kBlock]); // not zero-filled, unlike a vector
  for (;;) {
    int64_t n = z.Read(block.get(), kBlock);
    Dest.insert(Dest.end(), block.get(), block.get() + n);
    if (n < kBlock)
      break;
  }
}

// THtZIP

void THtZIP::RegisterImplementation(std::shared_ptr<IHtZipImplementation> Impl) {
  // Start first, or the start code would put the zlib implementation over this one.
  EnsureStarted();
  if (!Impl)
    Impl = std::make_shared<TDefZipImplementation>();
  std::shared_ptr<IHtZipImplementation> old;
  std::lock_guard<std::mutex> guard(g_lock);
  old.swap(g_impl);
  g_impl = std::move(Impl);
}

std::shared_ptr<IHtZipImplementation> THtZIP::Implementation() {
  EnsureStarted();
  std::lock_guard<std::mutex> guard(g_lock);
  if (!g_impl) // stopped: serve the default rather than fail
    return std::make_shared<TDefZipImplementation>();
  return g_impl;
}

// Output goes to a fresh buffer first, so Src and Dest may be one object.

void THtZIP::Compress(const TBytes& Src, TBytes& Dest, bool BestSpeed) {
  TBytes out;
  Implementation()->Compress(Src.data(), Src.size(), out, BestSpeed);
  Dest = std::move(out);
}

void THtZIP::Compress(const RawByteString& Src, RawByteString& Dest, bool BestSpeed) {
  TBytes out;
  Implementation()->Compress(Src.data(), Src.size(), out, BestSpeed);
  Dest = ToRaw(out);
}

void THtZIP::Decompress(const TBytes& Src, TBytes& Dest) {
  if (&Src == &Dest) {
    TBytes copy = Src;
    Decompress(copy, Dest);
    return;
  }
  size_t len = Dest.size();
  Implementation()->Decompress(Src.data(), Src.size(), Dest.data(), len);
  Dest.resize(std::min(len, Dest.size()));
}

void THtZIP::Decompress(const RawByteString& Src, RawByteString& Dest) {
  if (&Src == &Dest) {
    RawByteString copy(Src.view());
    Decompress(copy, Dest);
    return;
  }
  size_t len = Dest.size();
  Implementation()->Decompress(Src.data(), Src.size(), Dest.UniqueData(), len);
  Dest.Truncate(len);
}

void THtZIP::ZCompress(const TBytes& Src, TBytes& Dest, bool BestSpeed) {
  TBytes out;
  Implementation()->ZCompress(Src.data(), Src.size(), out, BestSpeed);
  Dest = std::move(out);
}

void THtZIP::ZCompress(const RawByteString& Src, RawByteString& Dest, bool BestSpeed) {
  TBytes out;
  Implementation()->ZCompress(Src.data(), Src.size(), out, BestSpeed);
  Dest = ToRaw(out);
}

void THtZIP::ZDecompress(const TBytes& Src, TBytes& Dest) {
  TBytes out;
  Implementation()->ZDecompress(Src.data(), Src.size(), out);
  Dest = std::move(out);
}

void THtZIP::ZDecompress(const RawByteString& Src, RawByteString& Dest) {
  TBytes out;
  Implementation()->ZDecompress(Src.data(), Src.size(), out);
  Dest = ToRaw(out);
}

} // namespace ht
