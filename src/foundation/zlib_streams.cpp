#include "htcore/foundation/zip.h"

#include <algorithm>
#include <climits>
#include <zlib.h>

namespace ht {

namespace {

constexpr size_t kBuffer = 0x10000;
// zlib counts in unsigned int; larger requests go through in slices.
constexpr int64_t kMaxSlice = 0x40000000;

[[noreturn]] void InvalidOperation() { throw EStreamError(std::string_view("Invalid stream operation")); }

} // namespace

// TFixedZDecompressionStream

struct TFixedZDecompressionStream::State {
  explicit State(TStream& source) : Source(source) {}
  TStream& Source;
  int64_t SourceStart = 0;
  int64_t Position = 0;
  bool Ended = false;
  z_stream Z{};
  Bytef Buffer[kBuffer];
};

TFixedZDecompressionStream::TFixedZDecompressionStream(TStream& Source) : F(std::make_unique<State>(Source)) {
  F->SourceStart = Source.GetPosition();
  int r = inflateInit(&F->Z);
  if (r != Z_OK)
    throw EZLibError(r, F->Z.msg);
}

TFixedZDecompressionStream::~TFixedZDecompressionStream() { inflateEnd(&F->Z); }

int64_t TFixedZDecompressionStream::Read(void* buffer, int64_t count) {
  State& s = *F;
  z_stream& z = s.Z;
  int64_t done = 0;
  auto* out = static_cast<Bytef*>(buffer);
  // Counts what inflate wrote, also before a raise, so the position stays true.
  auto settle = [&] {
    int64_t produced = static_cast<int64_t>(z.next_out - (out + done));
    done += produced;
    s.Position += produced;
  };
  while (done < count && !s.Ended) {
    z.next_out = out + done;
    z.avail_out = static_cast<uInt>(std::min(count - done, kMaxSlice));
    while (z.avail_out) {
      if (z.avail_in == 0) {
        int64_t n = s.Source.Read(s.Buffer, kBuffer);
        if (n <= 0) {
          settle();
          throw EZLibError(Z_DATA_ERROR, "unexpected end of data");
        }
        z.next_in = s.Buffer;
        z.avail_in = static_cast<uInt>(n);
      }
      int r = inflate(&z, Z_NO_FLUSH);
      if (r == Z_STREAM_END) {
        s.Ended = true;
        // Give back what was read beyond the zlib data.
        if (z.avail_in) {
          try {
            s.Source.Seek(-static_cast<int64_t>(z.avail_in), soCurrent);
          } catch (const EStreamError&) {
          }
          z.avail_in = 0;
        }
        break;
      }
      if (r == Z_OK || (r == Z_BUF_ERROR && z.avail_in == 0))
        continue;
      settle();
      throw EZLibError(r, r == Z_NEED_DICT ? "preset dictionary" : z.msg);
    }
    settle();
  }
  return done;
}

int64_t TFixedZDecompressionStream::Write(const void*, int64_t) { InvalidOperation(); }

int64_t TFixedZDecompressionStream::Seek(int64_t offset, TSeekOrigin origin) {
  State& s = *F;
  if (origin == soEnd)
    InvalidOperation();
  int64_t target = origin == soBeginning ? offset : s.Position + offset;
  if (target < 0)
    InvalidOperation();
  if (target < s.Position) {
    int r = inflateReset(&s.Z);
    if (r != Z_OK)
      throw EZLibError(r, s.Z.msg);
    s.Source.SetPosition(s.SourceStart);
    s.Z.avail_in = 0;
    s.Position = 0;
    s.Ended = false;
  }
  Bytef skip[4096];
  while (s.Position < target)
    if (Read(skip, std::min<int64_t>(target - s.Position, sizeof skip)) == 0)
      break;
  return s.Position;
}

int64_t TFixedZDecompressionStream::GetSize() { InvalidOperation(); }

// TZCompressionStream

struct TZCompressionStream::State {
  explicit State(TStream& dest) : Dest(dest) {}
  TStream& Dest;
  int64_t Position = 0;
  bool Finished = false;
  z_stream Z{};
  Bytef Buffer[kBuffer];

  // Runs deflate until it wants more input (or, finishing, until the end is out).
  void Pump(int flush) {
    int r;
    do {
      Z.next_out = Buffer;
      Z.avail_out = kBuffer;
      r = deflate(&Z, flush);
      if (r == Z_STREAM_ERROR)
        throw EZLibError(r, Z.msg);
      Dest.WriteBuffer(Buffer, static_cast<int64_t>(kBuffer - Z.avail_out));
    } while (Z.avail_out == 0 || (flush == Z_FINISH && r != Z_STREAM_END));
  }
};

TZCompressionStream::TZCompressionStream(TStream& Dest, int Level) : F(std::make_unique<State>(Dest)) {
  int r = deflateInit(&F->Z, Level);
  if (r != Z_OK)
    throw EZLibError(r, F->Z.msg);
}

TZCompressionStream::~TZCompressionStream() {
  if (!F->Finished) {
    try {
      Finish();
    } catch (...) { // a destructor cannot report; call Finish to see errors
    }
  }
  deflateEnd(&F->Z);
}

int64_t TZCompressionStream::Read(void*, int64_t) { InvalidOperation(); }

int64_t TZCompressionStream::Write(const void* buffer, int64_t count) {
  State& s = *F;
  if (s.Finished)
    InvalidOperation();
  auto* in = static_cast<const Bytef*>(buffer);
  int64_t done = 0;
  while (done < count) {
    int64_t slice = std::min(count - done, kMaxSlice);
    s.Z.next_in = const_cast<Bytef*>(in + done);
    s.Z.avail_in = static_cast<uInt>(slice);
    s.Pump(Z_NO_FLUSH);
    done += slice;
  }
  s.Position += done;
  return done;
}

int64_t TZCompressionStream::Seek(int64_t offset, TSeekOrigin origin) {
  if (offset == 0 && origin == soCurrent)
    return F->Position;
  InvalidOperation();
}

void TZCompressionStream::Finish() {
  State& s = *F;
  if (s.Finished)
    return;
  s.Finished = true;
  s.Z.next_in = nullptr;
  s.Z.avail_in = 0;
  s.Pump(Z_FINISH);
}

} // namespace ht
