// The SAX reader over a generated document that never exists in memory as a
// whole: the peak resident size must not follow the document's size.
//
// HTCORE_SAX_STREAM_MB sets the size; the default is 200 MB, and 64 MB in
// sanitizer builds, where the same work takes several times as long. There
// freed blocks sit in a quarantine that the resident size counts, so the
// measure is the heap in use instead, sampled along the way.
#include "htcore/document/sax_parser.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

#if defined(__SANITIZE_ADDRESS__)
#define HT_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HT_TEST_ASAN 1
#endif
#endif
#ifdef HT_TEST_ASAN
// From the sanitizer runtime (its header is not installed with every compiler).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

using namespace ht;

namespace {

#ifdef HT_TEST_ASAN
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// Peak memory of the process in KB: the resident high-water mark, or under
// the address sanitizer the highest heap in use seen by Sample.
class TPeakMemory {
public:
  TPeakMemory() {
    // Lets VmHWM start again from the present size (Linux 4.0 on); harmless elsewhere.
    std::ofstream("/proc/self/clear_refs") << "5";
    FBefore = Now();
    FPeak = FBefore;
  }
  void Sample() {
#ifdef HT_TEST_ASAN
    FPeak = std::max(FPeak, Now());
#endif
  }
  int64_t Growth() {
    Sample();
#ifndef HT_TEST_ASAN
    FPeak = Now();
#endif
    return FPeak - FBefore;
  }
  int64_t Before() const { return FBefore; }
  int64_t Peak() const { return FPeak; }

private:
  static int64_t Now() {
#ifdef HT_TEST_ASAN
    return static_cast<int64_t>(__sanitizer_get_current_allocated_bytes() >> 10);
#else
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line))
      if (line.rfind("VmHWM:", 0) == 0)
        return std::atoll(line.c_str() + 6);
    return 0;
#endif
  }
  int64_t FBefore, FPeak;
};

// Produces <root> with numbered records up to about Size bytes, on demand.
class TRecordStream : public TStream {
public:
  explicit TRecordStream(int64_t size) : FSize(size) {
    FChunk = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<root>\n";
  }

  int64_t Read(void* buffer, int64_t count) override {
    auto out = static_cast<char*>(buffer);
    int64_t done = 0;
    while (done < count) {
      if (FOffset == FChunk.size() && !NextChunk())
        break;
      size_t n = std::min(FChunk.size() - FOffset, static_cast<size_t>(count - done));
      std::memcpy(out + done, FChunk.data() + FOffset, n);
      FOffset += n;
      done += static_cast<int64_t>(n);
    }
    FProduced += done;
    return done;
  }
  int64_t Write(const void*, int64_t) override { return 0; }
  int64_t Seek(int64_t, TSeekOrigin) override { return FProduced; }

  int64_t Records() const { return FRecords; }
  int64_t Produced() const { return FProduced; }

private:
  bool NextChunk() {
    FOffset = 0;
    FChunk.clear();
    if (FDone)
      return false;
    if (FProduced >= FSize) {
      FChunk = "</root>\n";
      FDone = true;
      return true;
    }
    // A few hundred records at a time; texts and values vary in length.
    for (int i = 0; i < 200; ++i, ++FRecords) {
      std::string id = std::to_string(FRecords);
      FChunk += "  <rec id=\"" + id + "\" kind=\"k" + std::to_string(FRecords % 7) + "\">\n    <name>Item " +
                id + " &amp; co</name>\n    <note>" + std::string(static_cast<size_t>(FRecords % 61), 'n') +
                "</note>\n    <empty flag=\"1\"/>\n  </rec>\n";
    }
    return true;
  }

  int64_t FSize;
  std::string FChunk;
  size_t FOffset = 0;
  int64_t FProduced = 0;
  int64_t FRecords = 0;
  bool FDone = false;
};

int64_t DocumentBytes() {
  if (const char* mb = std::getenv("HTCORE_SAX_STREAM_MB"))
    return std::atoll(mb) << 20;
  return (kSanitized ? 64LL : 200LL) << 20;
}

} // namespace

TEST(SaxStream, LargeDocumentInConstantMemory) {
  TRecordStream stream(DocumentBytes());
  TPeakMemory memory;
  THtSAXXMLParser sax(stream, heUTF8);
  int64_t records = 0, id_sum = 0, names = 0, max_level = 0, events = 0;
  const hstring id = u"id"_hs;
  while (sax.Next()) {
    if ((++events & 4095) == 0)
      memory.Sample();
    max_level = std::max<int64_t>(max_level, sax.Level);
    if (sax.FLastEvent == seTagStart && sax.FTag == u"rec") {
      ++records;
      int64_t v = 0;
      for (char16_t c : sax.GetAttr(id).view())
        v = v * 10 + (c - u'0');
      id_sum += v;
    } else if (sax.FLastEvent == seText && sax.Level == 3 && sax.FText.view().starts_with(u"Item ") &&
               sax.FText.view().ends_with(u" & co")) {
      ++names;
    }
  }
  int64_t growth = memory.Growth();
  EXPECT_EQ(sax.Level, 0);
  EXPECT_EQ(max_level, 3);
  EXPECT_EQ(records, stream.Records());
  EXPECT_EQ(names, records);
  EXPECT_EQ(id_sum, records * (records - 1) / 2);
  EXPECT_EQ(sax.Position(), stream.Produced());
  std::printf("[ sax ] %lld MB, %lld records, peak memory %lld KB before, %lld KB at most (%s)\n",
              static_cast<long long>(stream.Produced() >> 20), static_cast<long long>(records),
              static_cast<long long>(memory.Before()), static_cast<long long>(memory.Peak()),
              kSanitized ? "heap in use" : "VmHWM");
  EXPECT_LT(growth, 16 * 1024);
}

TEST(SaxStream, ExtractTextInConstantMemory) {
  TRecordStream stream(DocumentBytes() / 4);
  TPeakMemory memory;
  THtSAXXMLParser sax(stream, heUTF8);
  TFastString fs;
  int64_t units = 0, calls = 0;
  sax.ExtractText(fs, [&](THtSAXXMLParser&, TFastString& text) {
    units += text.GetTotalLen();
    if ((++calls & 63) == 0)
      memory.Sample();
    text.Clear();
  });
  EXPECT_GT(calls, 1);
  EXPECT_GT(units, stream.Produced() / 8);
  EXPECT_LT(memory.Growth(), 16 * 1024);
}
