#include "htcore/foundation/stream_types.h"
#include "htcore/foundation/zip.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <zlib.h>

using namespace ht;

namespace {

constexpr size_t kBlock = 0x100000;

// Compressible but not trivial: text-like runs with random noise.
TBytes Sample(size_t n, uint32_t seed = 1) {
  std::mt19937 rng(seed);
  TBytes b(n);
  for (size_t i = 0; i < n; ++i)
    b[i] = static_cast<uint8_t>(rng() % 8 == 0 ? rng() : 'a' + (i / 7) % 26);
  return b;
}

template <class F> std::string ZMessageOf(F&& f) {
  try {
    f();
  } catch (const EZLibError& e) {
    return e.what();
  }
  return "no error";
}

// Counts the reads a decompression stream makes, to see where it stops.
class TCountingStream : public TPointerStream {
public:
  using TPointerStream::TPointerStream;
  int64_t Read(void* buffer, int64_t count) override {
    ++Reads;
    return TPointerStream::Read(buffer, count);
  }
  int Reads = 0;
};

} // namespace

TEST(Zip, CompressRoundTripsAndCutsToSize) {
  for (size_t n : {0u, 1u, 100u, 100000u}) {
    TBytes src = Sample(n);
    for (bool fast : {false, true}) {
      TBytes packed;
      THtZIP::Compress(src, packed, fast);
      ASSERT_GE(packed.size(), 8u);
      EXPECT_LE(packed.size(), compressBound(static_cast<uLong>(n)));
      EXPECT_EQ(packed[0], 0x78);
      EXPECT_EQ(packed[1], fast ? 0x01 : 0x9C); // level 1 vs zlib's default
      TBytes plain(n + 10, 0xEE);               // room to spare: cut to what came out
      THtZIP::Decompress(packed, plain);
      EXPECT_EQ(plain, src);
    }
  }
  RawByteString text("RawByteString text, RawByteString text, RawByteString text");
  RawByteString packed, plain;
  THtZIP::Compress(text, packed);
  plain.SetLength(text.size());
  THtZIP::Decompress(packed, plain);
  EXPECT_EQ(plain, text);
  // Src and Dest may be one object.
  TBytes same = Sample(1000);
  TBytes orig = same;
  THtZIP::ZCompress(same, same);
  THtZIP::ZDecompress(same, same);
  EXPECT_EQ(same, orig);
}

TEST(Zip, DecompressNeedsRoomAndSoundData) {
  TBytes src = Sample(5000);
  TBytes packed;
  THtZIP::Compress(src, packed);
  TBytes small(4999);
  EXPECT_EQ(ZMessageOf([&] { THtZIP::Decompress(packed, small); }),
            "zlib error: buffer error (output larger than the destination)");
  TBytes bad = packed;
  bad[0] ^= 0xFF;
  TBytes out(5000);
  EXPECT_EQ(ZMessageOf([&] { THtZIP::Decompress(bad, out); }),
            "zlib error: data error (incorrect header check)");
  // Cut short: told apart from too little room, whether or not the output was full.
  for (size_t cut : {size_t(0), size_t(2), packed.size() / 2, packed.size() - 5, packed.size() - 1}) {
    TBytes part(packed.begin(), packed.begin() + static_cast<ptrdiff_t>(cut));
    out.assign(5000, 0);
    EXPECT_EQ(ZMessageOf([&] { THtZIP::Decompress(part, out); }),
              "zlib error: data error (unexpected end of data)")
        << cut;
  }
  TBytes none;
  EXPECT_EQ(ZMessageOf([&] { THtZIP::Decompress(packed, none); }),
            "zlib error: buffer error (output larger than the destination)");
  TBytes empty_packed;
  THtZIP::Compress(TBytes(), empty_packed);
  THtZIP::Decompress(empty_packed, none);
  EXPECT_TRUE(none.empty());
}

TEST(Zip, ZCompressLevelsAndRoundTrips) {
  for (size_t n : {size_t(0), size_t(1), size_t(5000)}) {
    TBytes src = Sample(n, static_cast<uint32_t>(n));
    TBytes best, fast, back;
    THtZIP::ZCompress(src, best, false);
    THtZIP::ZCompress(src, fast, true);
    EXPECT_EQ(best[1], 0xDA); // level 9
    EXPECT_EQ(fast[1], 0x01); // level 1
    THtZIP::ZDecompress(best, back);
    ASSERT_EQ(back, src) << n;
    THtZIP::ZDecompress(fast, back);
    ASSERT_EQ(back, src) << n;
  }
  // Around the block size the reader works in.
  for (size_t n : {kBlock - 1, kBlock, kBlock + 1, 2 * kBlock}) {
    TBytes src = Sample(n, static_cast<uint32_t>(n));
    TBytes packed, back;
    THtZIP::ZCompress(src, packed, true);
    THtZIP::ZDecompress(packed, back);
    ASSERT_EQ(back, src) << n;
  }
  RawByteString text("hello hello hello"), packed, plain("old content");
  THtZIP::ZCompress(text, packed);
  THtZIP::ZDecompress(packed, plain);
  EXPECT_EQ(plain, text);
}

TEST(Zip, ExactMultipleOfABlockEndsAtAnEmptyBlock) {
  TBytes src = Sample(2 * kBlock, 9);
  TBytes packed;
  THtZIP::ZCompress(src, packed, true);
  TPointerStream in(static_cast<const void*>(packed.data()), static_cast<int64_t>(packed.size()));
  TFixedZDecompressionStream z(in);
  TBytes block(kBlock);
  EXPECT_EQ(z.Read(block.data(), kBlock), static_cast<int64_t>(kBlock));
  EXPECT_EQ(z.Read(block.data(), kBlock), static_cast<int64_t>(kBlock));
  EXPECT_EQ(z.Read(block.data(), kBlock), 0);
  EXPECT_EQ(z.GetPosition(), static_cast<int64_t>(2 * kBlock));
}

TEST(Zip, TruncatedOrCorruptDataRaises) {
  TBytes src = Sample(600, 4);
  TBytes packed, out;
  THtZIP::ZCompress(src, packed);
  // Every proper prefix, down to nothing, is an error, never a short result.
  for (size_t cut = 0; cut < packed.size(); ++cut) {
    TBytes part(packed.begin(), packed.begin() + static_cast<ptrdiff_t>(cut));
    ASSERT_EQ(ZMessageOf([&] { THtZIP::ZDecompress(part, out); }),
              "zlib error: data error (unexpected end of data)")
        << cut;
  }
  struct {
    size_t at;
    const char* message;
  } cases[] = {
      {0, "zlib error: data error (incorrect header check)"},
      {packed.size() - 1, "zlib error: data error (incorrect data check)"},
  };
  for (auto& c : cases) {
    TBytes bad = packed;
    bad[c.at] ^= 0x01;
    EXPECT_EQ(ZMessageOf([&] { THtZIP::ZDecompress(bad, out); }), c.message);
  }
  // Flipping any byte of the body is caught one way or another.
  for (size_t at = 2; at < packed.size(); at += 7) {
    TBytes bad = packed;
    bad[at] ^= 0x5A;
    EXPECT_NE(ZMessageOf([&] { THtZIP::ZDecompress(bad, out); }), "no error") << at;
  }
  TBytes dict = {0x78, 0xBB, 0, 0, 0, 1}; // asks for a preset dictionary
  EXPECT_EQ(ZMessageOf([&] { THtZIP::ZDecompress(dict, out); }),
            "zlib error: need dictionary (preset dictionary)");
}

TEST(Zip, DecompressionStreamLeavesTrailingDataAndSeeks) {
  TBytes src = Sample(200000, 5);
  TBytes packed;
  THtZIP::ZCompress(src, packed);
  TMemoryStream in;
  in.WriteBuffer("HEAD", 4);
  in.WriteBuffer(packed.data(), static_cast<int64_t>(packed.size()));
  in.WriteBuffer("TAIL", 4);
  in.SetPosition(4);
  TFixedZDecompressionStream z(in);

  TBytes buf(1000);
  z.ReadBuffer(buf.data(), 1000);
  EXPECT_TRUE(std::equal(buf.begin(), buf.end(), src.begin()));
  EXPECT_EQ(z.Seek(50000, soCurrent), 51000); // forward: skips
  z.ReadBuffer(buf.data(), 1000);
  EXPECT_TRUE(std::equal(buf.begin(), buf.end(), src.begin() + 51000));
  EXPECT_EQ(z.Seek(10, soBeginning), 10); // back: restarts from the first position
  z.ReadBuffer(buf.data(), 1000);
  EXPECT_TRUE(std::equal(buf.begin(), buf.end(), src.begin() + 10));
  EXPECT_THROW(z.Seek(0, soEnd), EStreamError);
  EXPECT_THROW(z.GetSize(), EStreamError);
  EXPECT_THROW(z.Write("x", 1), EStreamError);
  EXPECT_THROW(z.Seek(-100000, soCurrent), EStreamError);

  // Reading to the end leaves the source just after the zlib data.
  TBytes rest(src.size());
  EXPECT_EQ(z.Read(rest.data(), static_cast<int64_t>(rest.size())), static_cast<int64_t>(src.size() - 1010));
  char tail[4];
  in.ReadBuffer(tail, 4);
  EXPECT_EQ(std::string(tail, 4), "TAIL");
  EXPECT_EQ(z.Read(rest.data(), 10), 0);
}

TEST(Zip, DecompressionStreamReadsOnlyWhatItNeeds) {
  TBytes packed;
  THtZIP::ZCompress(Sample(100), packed);
  TCountingStream in(static_cast<const void*>(packed.data()), static_cast<int64_t>(packed.size()));
  TFixedZDecompressionStream z(in);
  char c;
  EXPECT_EQ(z.Read(&c, 0), 0);
  EXPECT_EQ(in.Reads, 0);
}

TEST(Zip, CompressionStreamFinishesOnce) {
  TBytes src = Sample(300000, 6);
  TBytesStream out;
  {
    TZCompressionStream z(out, 6);
    for (size_t i = 0; i < src.size(); i += 999)
      z.WriteBuffer(src.data() + i, static_cast<int64_t>(std::min<size_t>(999, src.size() - i)));
    EXPECT_EQ(z.GetPosition(), static_cast<int64_t>(src.size()));
    char c;
    EXPECT_THROW(z.Read(&c, 1), EStreamError);
    EXPECT_THROW(z.Seek(0, soBeginning), EStreamError);
  } // the destructor finishes
  TBytes back;
  THtZIP::ZDecompress(out.Bytes(), back);
  EXPECT_EQ(back, src);

  TBytesStream out2;
  TZCompressionStream z(out2);
  z.WriteBuffer("abc", 3);
  z.Finish();
  int64_t size = out2.GetSize();
  z.Finish();
  EXPECT_EQ(out2.GetSize(), size);
  EXPECT_THROW(z.WriteBuffer("d", 1), EStreamError);
  EXPECT_THROW(TZCompressionStream(out2, 42), EZLibError);
}

namespace {

// Stores bytes reversed: enough to see that THtZIP goes through it.
class TReverseZip : public IHtZipImplementation {
public:
  void Compress(const void* Src, size_t SrcLen, TBytes& Dest, bool) override { Reverse(Src, SrcLen, Dest); }
  void Decompress(const void* Src, size_t SrcLen, void* Dest, size_t& DestLen) override {
    TBytes r;
    Reverse(Src, SrcLen, r);
    DestLen = std::min(DestLen, r.size());
    std::copy_n(r.begin(), DestLen, static_cast<uint8_t*>(Dest));
  }
  void ZCompress(const void* Src, size_t SrcLen, TBytes& Dest, bool) override { Reverse(Src, SrcLen, Dest); }
  void ZDecompress(const void* Src, size_t SrcLen, TBytes& Dest) override { Reverse(Src, SrcLen, Dest); }
  int Calls = 0;

private:
  void Reverse(const void* Src, size_t SrcLen, TBytes& Dest) {
    ++Calls;
    auto* p = static_cast<const uint8_t*>(Src);
    Dest.assign(std::reverse_iterator(p + SrcLen), std::reverse_iterator(p));
  }
};

struct TRestoreZip {
  ~TRestoreZip() { THtZIP::RegisterImplementation(nullptr); }
};

} // namespace

TEST(Zip, RegisteredImplementationReplacesZlib) {
  TRestoreZip restore;
  auto impl = std::make_shared<TReverseZip>();
  THtZIP::RegisterImplementation(impl);
  EXPECT_EQ(THtZIP::Implementation().get(), impl.get());
  TBytes src = {1, 2, 3}, out;
  THtZIP::Compress(src, out);
  EXPECT_EQ(out, (TBytes{3, 2, 1}));
  THtZIP::ZCompress(src, out);
  THtZIP::ZDecompress(out, out);
  EXPECT_EQ(out, src);
  RawByteString raw("abc"), rawOut;
  THtZIP::ZCompress(raw, rawOut);
  EXPECT_EQ(rawOut, "cba");
  rawOut.SetLength(2);
  THtZIP::Decompress(RawByteString("xyz"), rawOut);
  EXPECT_EQ(rawOut, "zy");
  EXPECT_EQ(impl->Calls, 5);

  THtZIP::RegisterImplementation(nullptr); // back to zlib
  EXPECT_NE(dynamic_cast<TDefZipImplementation*>(THtZIP::Implementation().get()), nullptr);
  THtZIP::ZCompress(src, out);
  EXPECT_EQ(out[0], 0x78);
}
