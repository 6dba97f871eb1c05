#include "htcore/foundation/zip.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>

#include "foundation/zip_internal.h"
#include "htcore/foundation/startup.h"
#include "htcore/foundation/stream_types.h"

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

template <class Str>
const void* DataOf(const Str& s) {
  return s.data();
}

RawByteString ToRaw(const TBytes& b) { return RawByteString(reinterpret_cast<const char*>(b.data()), b.size()); }

}  // namespace

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

}  // namespace detail

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

void TDefZipImplementation::Decompress(const void* Src, size_t SrcLen, void* Dest, size_t& DestLen) {
  uLongf len = static_cast<uLongf>(DestLen);
  int r = uncompress(static_cast<Bytef*>(Dest), &len, static_cast<const Bytef*>(Src), static_cast<uLong>(SrcLen));
  if (r != Z_OK)
    throw EZLibError(r, r == Z_BUF_ERROR ? "output larger than the destination" : nullptr);
  DestLen = len;
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
  for (;;) {
    size_t old = Dest.size();
    Dest.resize(old + kBlock);
    int64_t n = z.Read(Dest.data() + old, kBlock);
    Dest.resize(old + static_cast<size_t>(n));
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
  if (!g_impl)  // stopped: serve the default rather than fail
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
  Implementation()->Compress(DataOf(Src), Src.size(), out, BestSpeed);
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
  Implementation()->Decompress(DataOf(Src), Src.size(), Dest.UniqueData(), len);
  Dest.Truncate(len);
}

void THtZIP::ZCompress(const TBytes& Src, TBytes& Dest, bool BestSpeed) {
  TBytes out;
  Implementation()->ZCompress(Src.data(), Src.size(), out, BestSpeed);
  Dest = std::move(out);
}

void THtZIP::ZCompress(const RawByteString& Src, RawByteString& Dest, bool BestSpeed) {
  TBytes out;
  Implementation()->ZCompress(DataOf(Src), Src.size(), out, BestSpeed);
  Dest = ToRaw(out);
}

void THtZIP::ZDecompress(const TBytes& Src, TBytes& Dest) {
  TBytes out;
  Implementation()->ZDecompress(Src.data(), Src.size(), out);
  Dest = std::move(out);
}

void THtZIP::ZDecompress(const RawByteString& Src, RawByteString& Dest) {
  TBytes out;
  Implementation()->ZDecompress(DataOf(Src), Src.size(), out);
  Dest = ToRaw(out);
}

}  // namespace ht
