#include "htcore/foundation/codepage.h"

#include <atomic>
#include <bit>
#include <cerrno>
#include <cstring>
#include <iconv.h>
#include <iterator>
#include <mutex>
#include <string>

namespace ht {

namespace {

struct TPage {
  int cp;
  const char* names; // converter names to try, '|'-separated
  bool single;
};

// 1252 first: the fallback for every page that is not listed.
constexpr TPage kPages[] = {
    {1252, "CP1252", true},       {1250, "CP1250", true},          {1251, "CP1251", true},
    {1253, "CP1253", true},       {1254, "CP1254", true},          {1255, "CP1255", true},
    {1256, "CP1256", true},       {1257, "CP1257", true},          {1258, "CP1258", true},
    {874, "CP874", true},         {866, "CP866|IBM866", true},     {20866, "KOI8-R", true},
    {21866, "KOI8-U", true},      {20127, "ASCII", true},          {28591, "ISO-8859-1", true},
    {28592, "ISO-8859-2", true},  {28593, "ISO-8859-3", true},     {28594, "ISO-8859-4", true},
    {28595, "ISO-8859-5", true},  {28596, "ISO-8859-6", true},     {28597, "ISO-8859-7", true},
    {28598, "ISO-8859-8", true},  {28599, "ISO-8859-9", true},     {28603, "ISO-8859-13", true},
    {28605, "ISO-8859-15", true}, {932, "CP932|SHIFT_JIS", false}, {936, "CP936|GBK", false},
    {949, "CP949|EUC-KR", false}, {950, "CP950|BIG5", false},      {65001, "UTF-8", false},
};
constexpr size_t kPageCount = std::size(kPages);

constexpr const char* kUtf16 = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

std::atomic<int> g_system_cp{1252};

size_t Slot(int cp) {
  if (cp == CP_ACP)
    cp = g_system_cp.load(std::memory_order_relaxed);
  for (size_t i = 0; i < kPageCount; ++i)
    if (kPages[i].cp == cp)
      return i;
  return 0;
}

// Opens a converter under the first name the C library knows.
iconv_t OpenConverter(const char* to, const char* from_names, bool names_are_source) {
  std::string names(from_names);
  size_t start = 0;
  while (start <= names.size()) {
    size_t bar = names.find('|', start);
    std::string name = names.substr(start, bar == std::string::npos ? std::string::npos : bar - start);
    iconv_t cd = names_are_source ? iconv_open(to, name.c_str()) : iconv_open(name.c_str(), to);
    if (cd != reinterpret_cast<iconv_t>(-1))
      return cd;
    if (bar == std::string::npos)
      break;
    start = bar + 1;
  }
  return reinterpret_cast<iconv_t>(-1);
}

class TConverter {
public:
  TConverter(const TPage& page, bool decode)
      : cd_(decode ? OpenConverter(kUtf16, page.names, true) : OpenConverter(kUtf16, page.names, false)) {}
  ~TConverter() {
    if (ok())
      iconv_close(cd_);
  }
  TConverter(const TConverter&) = delete;
  TConverter& operator=(const TConverter&) = delete;
  bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
  iconv_t get() const { return cd_; }

private:
  iconv_t cd_;
};

// --- Single-byte pages ---

struct TByteTable {
  char16_t to[256];
  uint8_t from[65536]; // 0 = not in the page (except for U+0000)
};

constexpr char16_t k1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

std::atomic<const TByteTable*> g_tables[kPageCount];
std::mutex g_build_lock;

// Decodes one byte alone; 0 when the page leaves it undefined.
char16_t DecodeByte(iconv_t cd, uint8_t b) {
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char in = static_cast<char>(b);
  char* ip = &in;
  size_t il = 1;
  char16_t out[4];
  char* op = reinterpret_cast<char*>(out);
  size_t ol = sizeof out;
  if (iconv(cd, &ip, &il, &op, &ol) == static_cast<size_t>(-1))
    return 0;
  iconv(cd, nullptr, nullptr, &op, &ol); // pages that compose hold the last character back
  return sizeof out - ol == sizeof(char16_t) ? out[0] : 0;
}

const TByteTable* BuildTable(const TPage& page) {
  auto* t = new TByteTable();
  bool defined[256] = {};
  for (int b = 0; b < 128; ++b) {
    t->to[b] = static_cast<char16_t>(b);
    defined[b] = true;
  }
  if (page.cp == 1252) {
    for (int b = 0x80; b < 0x100; ++b) {
      t->to[b] = b < 0xA0 ? k1252High[b - 0x80] : static_cast<char16_t>(b);
      defined[b] = true;
    }
  } else {
    TConverter conv(page, true);
    for (int b = conv.ok() ? 1 : 256; b < 256; ++b) {
      char16_t u = DecodeByte(conv.get(), static_cast<uint8_t>(b));
      if (u != 0 && !(u >= 0xD800 && u <= 0xDFFF)) {
        t->to[b] = u;
        defined[b] = true;
      }
    }
  }
  // Undefined bytes map to the unit of the same value, so that every byte
  // survives a round trip; a private-use unit stands in if that one is taken.
  bool taken[256] = {};
  for (int b = 0; b < 256; ++b)
    if (defined[b] && t->to[b] < 256)
      taken[t->to[b]] = true;
  for (int b = 0; b < 256; ++b)
    if (!defined[b])
      t->to[b] = taken[b] ? static_cast<char16_t>(0xF700 + b) : static_cast<char16_t>(b);
  for (int b = 255; b > 0; --b) // the lowest byte wins where two share a unit
    t->from[t->to[b]] = static_cast<uint8_t>(b);
  t->from[0] = 0;
  return t;
}

const TByteTable& TableFor(size_t slot) {
  const TByteTable* t = g_tables[slot].load(std::memory_order_acquire);
  if (t)
    return *t;
  std::lock_guard<std::mutex> guard(g_build_lock);
  t = g_tables[slot].load(std::memory_order_relaxed);
  if (!t) {
    t = BuildTable(kPages[slot]); // kept for the life of the process
    g_tables[slot].store(t, std::memory_order_release);
  }
  return *t;
}

hstring DecodeSingle(const TByteTable& t, const char* bytes, size_t len) {
  hstring r;
  char16_t* d = r.SetLength(len);
  auto* s = reinterpret_cast<const uint8_t*>(bytes);
  for (size_t i = 0; i < len; ++i)
    d[i] = t.to[s[i]];
  return r;
}

RawByteString EncodeSingle(const TByteTable& t, std::u16string_view s) {
  RawByteString r;
  char* d = r.SetLength(s.size());
  char* start = d;
  for (size_t i = 0; i < s.size(); ++i) {
    char16_t c = s[i];
    uint8_t b = t.from[c];
    if (b == 0 && c != 0) {
      b = '?';
      if (c >= 0xD800 && c < 0xDC00 && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] <= 0xDFFF)
        ++i; // one '?' for the whole pair
    }
    *d++ = static_cast<char>(b);
  }
  r.Truncate(static_cast<size_t>(d - start));
  return r;
}

// --- Multi-byte pages ---

// Runs the converter over the input; on a sequence it cannot convert,
// on_error appends a replacement and returns how many input bytes to skip
// (0: stop).
template <class Out, class OnError>
void RunConverter(iconv_t cd, const char* in, size_t len, Out& out, OnError on_error) {
  using Unit = typename Out::value_type;
  size_t used = 0;
  out.resize(len + 16);
  char* ip = const_cast<char*>(in);
  size_t il = len;
  for (;;) {
    char* op = reinterpret_cast<char*>(out.data() + used);
    size_t ol = (out.size() - used) * sizeof(Unit);
    size_t r = il ? iconv(cd, &ip, &il, &op, &ol) : iconv(cd, nullptr, nullptr, &op, &ol);
    int err = errno;
    used = out.size() - ol / sizeof(Unit);
    if (r != static_cast<size_t>(-1)) {
      if (il == 0 && ip != nullptr) {
        ip = nullptr; // flush what the converter holds back
        continue;
      }
      break;
    }
    if (err == E2BIG) {
      out.resize(out.size() * 2 + 16);
      continue;
    }
    if (out.size() - used < 8)
      out.resize(out.size() * 2 + 16);
    size_t skip = on_error(ip, il, out, used, err == EINVAL);
    if (skip == 0 || skip >= il)
      break;
    ip += skip;
    il -= skip;
  }
  out.resize(used);
}

hstring DecodeMulti(const TPage& page, const char* bytes, size_t len) {
  TConverter conv(page, true);
  if (!conv.ok())
    return DecodeSingle(TableFor(0), bytes, len);
  std::u16string out;
  RunConverter(conv.get(), bytes, len, out,
               [](const char*, size_t, std::u16string& o, size_t& used, bool) -> size_t {
                 o[used++] = 0xFFFD;
                 return 1;
               });
  return hstring(out);
}

RawByteString EncodeMulti(const TPage& page, std::u16string_view s) {
  TConverter conv(page, false);
  if (!conv.ok())
    return EncodeSingle(TableFor(0), s);
  std::string out;
  RunConverter(conv.get(), reinterpret_cast<const char*>(s.data()), s.size() * sizeof(char16_t), out,
               [](const char* at, size_t left, std::string& o, size_t& used, bool incomplete) -> size_t {
                 o[used++] = '?';
                 if (incomplete || left < 2)
                   return 0;
                 char16_t c, next = 0;
                 std::memcpy(&c, at, 2);
                 if (left >= 4)
                   std::memcpy(&next, at + 2, 2);
                 bool pair = c >= 0xD800 && c < 0xDC00 && next >= 0xDC00 && next <= 0xDFFF;
                 return pair ? 4 : 2;
               });
  return RawByteString(out.data(), out.size());
}

} // namespace

void HtSetSystemCodePage(int CodePage) noexcept {
  g_system_cp.store(CodePage == CP_ACP ? 1252 : CodePage, std::memory_order_relaxed);
}

int HtGetSystemCodePage() noexcept { return g_system_cp.load(std::memory_order_relaxed); }

bool HtCodePageSupported(int CodePage) noexcept {
  if (CodePage == CP_ACP)
    return true;
  for (const TPage& p : kPages)
    if (p.cp == CodePage)
      return true;
  return false;
}

bool HtIsSingleByteCodePage(int CodePage) noexcept { return kPages[Slot(CodePage)].single; }

hstring HtCodePageToUnicode(const char* bytes, size_t len, int CodePage) {
  if (len == 0)
    return hstring();
  size_t slot = Slot(CodePage);
  const TPage& page = kPages[slot];
  if (page.single)
    return DecodeSingle(TableFor(slot), bytes, len);
  if (page.cp == CP_UTF8)
    return Utf8ToHString(std::string_view(bytes, len));
  return DecodeMulti(page, bytes, len);
}

RawByteString HtUnicodeToCodePage(std::u16string_view s, int CodePage) {
  if (s.empty())
    return RawByteString();
  size_t slot = Slot(CodePage);
  const TPage& page = kPages[slot];
  if (page.single)
    return EncodeSingle(TableFor(slot), s);
  if (page.cp == CP_UTF8) {
    std::string u = HStringToUtf8(s);
    return RawByteString(u.data(), u.size());
  }
  return EncodeMulti(page, s);
}

} // namespace ht
