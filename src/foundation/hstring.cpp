#include "htcore/foundation/hstring.h"
#include "htcore/foundation/hash.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "htcore/foundation/exception.h"
#include "htcore/foundation/node_pool.h"
#include "foundation/utf8_decode.h"

namespace ht {
namespace detail {

void* AllocStr(size_t unit_size, size_t length) {
  void* p = std::malloc(sizeof(StrHeader) + (length + 1) * unit_size);
  if (!p)
    throw std::bad_alloc();
  auto* h = new (p) StrHeader;
  h->refs.store(1, std::memory_order_relaxed);
  h->length = static_cast<int32_t>(length);
  char* text = static_cast<char*>(p) + sizeof(StrHeader);
  std::memset(text + length * unit_size, 0, unit_size);
  return p;
}

void* AllocTreeStr(size_t unit_size, size_t length) {
  size_t bytes = sizeof(StrHeader) + (length + 1) * unit_size;
  void* p = PoolAllocOrNull(bytes);
  if (!p)
    return AllocStr(unit_size, length);
  auto* h = new (p) StrHeader;
  h->refs.store(1, std::memory_order_relaxed);
  h->length = static_cast<int32_t>(length);
  std::memset(static_cast<char*>(p) + sizeof(StrHeader) + length * unit_size, 0, unit_size);
  return p;
}

void FreeStr(void* header, size_t unit_size) noexcept {
  auto* h = static_cast<StrHeader*>(header);
  // A text shortened in place reports fewer units than its block holds:
  // the pool only poisons what it is told.
  size_t bytes = sizeof(StrHeader) + (static_cast<size_t>(h->length) + 1) * unit_size;
  h->~StrHeader();
  if (!PoolFreeIfPooled(header, bytes))
    std::free(header);
}

void StrTooLong() { throw EOutOfMemory(); }

namespace {

// The lasting texts: one process-wide table, so a name copied out of a tree
// stays valid whatever happens to the tree or the parse that made it. Its
// size is capped: hostile input full of distinct names fills it once (about
// 2.5 MB at most) and then gets counted texts, as before the table existed.
constexpr size_t kInternMaxUnits = 64;
constexpr size_t kInternMaxNames = 16384;

struct TInternSlot {
  StrHeader* Text = nullptr;
  uint32_t Hash = 0;
  uint32_t UnitSize = 0;
};

struct TInternTable {
  std::mutex Lock;
  std::vector<TInternSlot> Slots = std::vector<TInternSlot>(1024);
  size_t Count = 0;
};

TInternTable& intern_table() {
  static TInternTable* t = new TInternTable; // never freed: its texts last until exit
  return *t;
}

void place(std::vector<TInternSlot>& slots, const TInternSlot& s) noexcept {
  size_t mask = slots.size() - 1;
  size_t i = s.Hash & mask;
  while (slots[i].Text)
    i = (i + 1) & mask;
  slots[i] = s;
}

} // namespace

void* InternStr(size_t unit_size, const void* units, size_t length) noexcept {
  if (length == 0 || length > kInternMaxUnits)
    return nullptr;
  const size_t bytes = length * unit_size;
  const uint32_t hash = JenkinsHashANSI(static_cast<const char*>(units), static_cast<int>(bytes));
  TInternTable& t = intern_table();
  std::lock_guard<std::mutex> lock(t.Lock);
  size_t mask = t.Slots.size() - 1;
  size_t i = hash & mask;
  for (; t.Slots[i].Text; i = (i + 1) & mask) {
    const TInternSlot& s = t.Slots[i];
    if (s.Hash == hash && s.UnitSize == unit_size && static_cast<size_t>(s.Text->length) == length &&
        std::memcmp(s.Text + 1, units, bytes) == 0)
      return s.Text;
  }
  if (t.Count >= kInternMaxNames)
    return nullptr;
  void* p = std::malloc(sizeof(StrHeader) + bytes + unit_size);
  if (!p)
    return nullptr;
  auto* h = new (p) StrHeader;
  h->refs.store(kStrLasting, std::memory_order_relaxed);
  h->length = static_cast<int32_t>(length);
  char* text = static_cast<char*>(p) + sizeof(StrHeader);
  std::memcpy(text, units, bytes);
  std::memset(text + bytes, 0, unit_size);
  t.Slots[i] = {h, hash, static_cast<uint32_t>(unit_size)};
  if (++t.Count * 2 > t.Slots.size()) {
    std::vector<TInternSlot> grown(t.Slots.size() * 2);
    for (const TInternSlot& s : t.Slots)
      if (s.Text)
        place(grown, s);
    t.Slots.swap(grown);
  }
  return h;
}

char16_t* DecodeUtf8(const uint8_t* s, const uint8_t* end, char16_t* d) noexcept {
  while (s < end) {
    uint32_t c = *s;
    if (c < 0x80) {
      // Markup is mostly ASCII: widen whole runs of it.
#ifdef __SSE2__
      const __m128i zero = _mm_setzero_si128();
      while (end - s >= 16) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        if (_mm_movemask_epi8(v))
          break;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_unpacklo_epi8(v, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 8), _mm_unpackhi_epi8(v, zero));
        s += 16;
        d += 16;
      }
#else
      while (end - s >= 8) {
        uint64_t w;
        std::memcpy(&w, s, 8);
        if (w & 0x8080808080808080ull)
          break;
        for (int i = 0; i < 8; ++i)
          d[i] = s[i];
        s += 8;
        d += 8;
      }
#endif
      while (s < end && *s < 0x80)
        *d++ = *s++;
      continue;
    }
    int extra;
    uint32_t min;
    if ((c & 0xE0) == 0xC0) {
      extra = 1, min = 0x80, c &= 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
      extra = 2, min = 0x800, c &= 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
      extra = 3, min = 0x10000, c &= 0x07;
    } else {
      *d++ = 0xFFFD;
      ++s;
      continue;
    }
    if (end - s <= extra) {
      extra = static_cast<int>(end - s) - 1;
      min = 0xFFFFFFFF; // truncated: force the replacement below
    }
    int i = 1;
    for (; i <= extra; ++i) {
      if ((s[i] & 0xC0) != 0x80)
        break;
      c = (c << 6) | (s[i] & 0x3F);
    }
    if (i <= extra || c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      *d++ = 0xFFFD;
      s += i;
      continue;
    }
    s += extra + 1;
    if (c >= 0x10000) {
      c -= 0x10000;
      *d++ = static_cast<char16_t>(0xD800 + (c >> 10));
      *d++ = static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
      *d++ = static_cast<char16_t>(c);
    }
  }
  return d;
}

} // namespace detail

hstring Utf8ToHString(std::string_view utf8) {
  if (utf8.empty())
    return hstring();
  hstring out;
  char16_t* start = out.SetLength(utf8.size()); // never more units than bytes
  auto s = reinterpret_cast<const uint8_t*>(utf8.data());
  char16_t* d = detail::DecodeUtf8(s, s + utf8.size(), start);
  out.Truncate(static_cast<size_t>(d - start));
  return out;
}

std::string HStringToUtf8(std::u16string_view text) {
  std::string out;
  out.resize(text.size() * 3);
  char* d = out.data();
  const char16_t* s = text.data();
  const char16_t* end = s + text.size();
  while (s < end) {
    uint32_t c = *s++;
    if (c < 0x80) {
      *d++ = static_cast<char>(c);
      continue;
    }
    if (c >= 0xD800 && c <= 0xDFFF) {
      if (c < 0xDC00 && s < end && *s >= 0xDC00 && *s <= 0xDFFF) {
        c = 0x10000 + ((c - 0xD800) << 10) + (*s++ - 0xDC00);
      } else {
        c = 0xFFFD;
      }
    }
    if (c < 0x800) {
      *d++ = static_cast<char>(0xC0 | (c >> 6));
    } else if (c < 0x10000) {
      *d++ = static_cast<char>(0xE0 | (c >> 12));
      *d++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    } else {
      *d++ = static_cast<char>(0xF0 | (c >> 18));
      *d++ = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      *d++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    }
    *d++ = static_cast<char>(0x80 | (c & 0x3F));
  }
  out.resize(static_cast<size_t>(d - out.data()));
  return out;
}

} // namespace ht
