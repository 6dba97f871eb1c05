#include "document/codepage_pending.h"

#include <iconv.h>

#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>

namespace ht::detail {

namespace {

std::atomic<int> g_system_cp{1252};

std::string iconv_name(int cp) {
  if (cp >= 1250 && cp <= 1258)
    return "CP" + std::to_string(cp);
  if (cp >= 28591 && cp <= 28599)
    return "ISO-8859-" + std::to_string(cp - 28590);
  switch (cp) {
  case 866:
    return "CP866";
  case 20866:
    return "KOI8-R";
  case 936:
    return "GBK";
  case 950:
    return "BIG5";
  case 65001:
    return "UTF-8";
  default:
    return {};
  }
}

bool single_byte(int cp) { return cp != 936 && cp != 950 && cp != 65001; }

struct TTable {
  char16_t to_unicode[256];
  std::unordered_map<char16_t, char> from_unicode;
};

const TTable* table_for(int cp) {
  static std::mutex m;
  static std::map<int, TTable> tables;
  std::lock_guard<std::mutex> g(m);
  auto it = tables.find(cp);
  if (it != tables.end())
    return &it->second;
  std::string name = iconv_name(cp);
  if (name.empty() || !single_byte(cp))
    return nullptr;
  iconv_t cd = iconv_open("UTF-16LE", name.c_str());
  if (cd == reinterpret_cast<iconv_t>(-1))
    return nullptr;
  TTable& t = tables[cp];
  for (int b = 0; b < 256; ++b) {
    char in = static_cast<char>(b);
    char out[8];
    char* ip = &in;
    char* op = out;
    size_t il = 1, ol = sizeof out;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    // Bytes the page leaves undefined keep their value, so narrowing round-trips.
    if (iconv(cd, &ip, &il, &op, &ol) == static_cast<size_t>(-1) || op - out != 2)
      t.to_unicode[b] = static_cast<char16_t>(b);
    else
      t.to_unicode[b] = static_cast<char16_t>(static_cast<uint8_t>(out[0]) | (static_cast<uint8_t>(out[1]) << 8));
  }
  iconv_close(cd);
  for (int b = 255; b >= 0; --b)
    t.from_unicode[t.to_unicode[b]] = static_cast<char>(b);
  return &t;
}

}  // namespace

void PendingSetSystemCodePage(int CodePage) { g_system_cp = CodePage; }
int PendingGetSystemCodePage() { return g_system_cp; }

hstring PendingCodePageToUnicode(std::string_view Bytes, int CodePage) {
  if (Bytes.empty())
    return hstring();
  if (CodePage == 65001)
    return Utf8ToHString(Bytes);
  if (const TTable* t = table_for(CodePage)) {
    hstring r;
    char16_t* w = r.SetLength(Bytes.size());
    for (size_t i = 0; i < Bytes.size(); ++i)
      w[i] = t->to_unicode[static_cast<uint8_t>(Bytes[i])];
    return r;
  }
  std::string name = iconv_name(CodePage);
  iconv_t cd = name.empty() ? reinterpret_cast<iconv_t>(-1) : iconv_open("UTF-16LE", name.c_str());
  if (cd == reinterpret_cast<iconv_t>(-1))
    return hstring();
  std::u16string out;
  std::string buf(Bytes.size() * 4 + 16, '\0');
  char* ip = const_cast<char*>(Bytes.data());
  size_t il = Bytes.size();
  while (il > 0) {
    char* op = buf.data();
    size_t ol = buf.size();
    size_t r = iconv(cd, &ip, &il, &op, &ol);
    for (char* q = buf.data(); q + 1 < op; q += 2)
      out += static_cast<char16_t>(static_cast<uint8_t>(q[0]) | (static_cast<uint8_t>(q[1]) << 8));
    if (r == static_cast<size_t>(-1)) {
      out += u'\uFFFD';
      ++ip;
      --il;
    }
  }
  iconv_close(cd);
  return hstring(out.data(), out.size());
}

RawByteString PendingUnicodeToCodePage(std::u16string_view Text, int CodePage) {
  if (Text.empty())
    return RawByteString();
  if (CodePage == 65001) {
    std::string s = HStringToUtf8(Text);
    return RawByteString(s.data(), s.size());
  }
  if (const TTable* t = table_for(CodePage)) {
    RawByteString r;
    char* w = r.SetLength(Text.size());
    for (size_t i = 0; i < Text.size(); ++i) {
      auto it = t->from_unicode.find(Text[i]);
      w[i] = it == t->from_unicode.end() ? '?' : it->second;
    }
    return r;
  }
  // Multi-byte pages are not needed for narrowing here.
  RawByteString r;
  char* w = r.SetLength(Text.size());
  for (size_t i = 0; i < Text.size(); ++i)
    w[i] = Text[i] < 128 ? static_cast<char>(Text[i]) : '?';
  return r;
}

}  // namespace ht::detail
