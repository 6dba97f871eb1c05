// Caches shared by the readers that build trees straight from UTF-8 bytes
// (xml_fast_reader.cpp, json_fast_reader.cpp):
// - TByteNames: names interned by their bytes, so that a name met again
//   costs a hash and a compare of its bytes, no decoding;
// - TShortTexts: short texts (values, scalars) shared by their bytes;
// - TNameOrders: the sorted order of a run of attribute names, remembered by
//   the run, so that elements or records that repeat their names get their
//   attribute set built without a sort.
#pragma once

#include "document/xml_reader_internal.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace ht::detail {

// Widens the ASCII bytes in front of s into d; the count widened, n when
// all are ASCII. Whole vectors go at a time: d has room for n units.
template <class B> inline size_t widen_ascii(const B* s, size_t n, char16_t* d) {
  static_assert(sizeof(B) == 1);
  size_t i = 0;
#ifdef __SSE2__
  const __m128i zero = _mm_setzero_si128();
  for (; i + 16 <= n; i += 16) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    if (_mm_movemask_epi8(v))
      break;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_unpacklo_epi8(v, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i + 8), _mm_unpackhi_epi8(v, zero));
  }
  if (i + 8 <= n) {
    __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + i));
    if (!(_mm_movemask_epi8(v) & 0xFF)) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_unpacklo_epi8(v, zero));
      i += 8;
    }
  }
#endif
  for (; i < n && static_cast<uint8_t>(s[i]) < 0x80; ++i)
    d[i] = static_cast<uint8_t>(s[i]);
  return i;
}

// Up to 16 bytes as two words with their length and hash: the key of the
// caches below, compared without going back to the source.
struct TShortBytes {
  uint64_t Lo = 0, Hi = 0;
  uint32_t Len = 0;
  uint32_t Hash = 0;

  bool operator==(const TShortBytes& o) const { return Lo == o.Lo && Hi == o.Hi && Len == o.Len; }
};

// b..b+n with 1 <= n <= 16; end bounds what may be read (a whole vector
// when there is room, a padded copy otherwise).
template <class B> inline TShortBytes short_bytes(const B* b, size_t n, const B* end) {
  TShortBytes k;
  if (end - b >= 16) {
    std::memcpy(&k.Lo, b, 8);
    std::memcpy(&k.Hi, b + 8, 8);
    if (n < 8) {
      k.Lo &= (uint64_t(1) << (8 * n)) - 1;
      k.Hi = 0;
    } else if (n < 16) {
      k.Hi &= (uint64_t(1) << (8 * (n - 8))) - 1;
    }
  } else {
    uint8_t pad[16] = {};
    std::memcpy(pad, b, n);
    std::memcpy(&k.Lo, pad, 8);
    std::memcpy(&k.Hi, pad + 8, 8);
  }
  k.Len = static_cast<uint32_t>(n);
  uint64_t h = (k.Lo * 0x9E3779B97F4A7C15ull) ^ (k.Hi * 0xC2B2AE3D27D4EB4Full) ^ n;
  h ^= h >> 31;
  k.Hash = static_cast<uint32_t>(h >> 32);
  return k;
}

// The 16 bytes of k (zeros beyond its length) widened into d[0..16).
inline void widen_short(const TShortBytes& k, char16_t* d) {
#ifdef __SSE2__
  const __m128i v = _mm_set_epi64x(static_cast<long long>(k.Hi), static_cast<long long>(k.Lo));
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_unpacklo_epi8(v, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 8), _mm_unpackhi_epi8(v, zero));
#else
  for (int i = 0; i < 8; ++i) {
    d[i] = static_cast<char16_t>((k.Lo >> (8 * i)) & 0xFF);
    d[i + 8] = static_cast<char16_t>((k.Hi >> (8 * i)) & 0xFF);
  }
#endif
}

// The names of a byte reader by their bytes, in front of the name table.
// Names of up to 16 bytes are compared as words held in the slot; longer
// ones against their first occurrence in the source.
class TByteNames {
public:
  TByteNames() : FSlots(512) {}

  // The index in Names of the ASCII name b..b+n (n >= 1), interned there on
  // first sight; end bounds what may be read.
  template <class B> [[gnu::always_inline]] int Find(TNameTable& Names, const B* b, size_t n, const B* end) {
    const auto* u = reinterpret_cast<const uint8_t*>(b);
    TShortBytes key;
    if (n <= 16) [[likely]]
      key = short_bytes(u, n, reinterpret_cast<const uint8_t*>(end));
    else
      key.Len = static_cast<uint32_t>(n), key.Hash = HashWords(u, n);
    size_t mask = FSlots.size() - 1;
    for (size_t i = key.Hash & mask;; i = (i + 1) & mask) {
      const TSlot& s = FSlots[i];
      if (s.Key == key && (n <= 16 || SameWords(s.Bytes, u, n)))
        return s.Index;
      if (s.Index < 0)
        return Add(Names, key, u, i);
    }
  }

private:
  struct TSlot {
    TShortBytes Key;                // Lo and Hi stay 0 beyond 16 bytes
    const uint8_t* Bytes = nullptr; // the first occurrence, in the source
    int Index = -1;
  };

  // A name met for the first time, into the free slot i.
  [[gnu::noinline]] int Add(TNameTable& Names, const TShortBytes& key, const uint8_t* u, size_t i) {
    FWide.resize(key.Len);
    widen_ascii(u, key.Len, FWide.data());
    int index = Names.Intern(FWide.data(), key.Len);
    FSlots[i] = TSlot{key, u, index};
    if (++FCount * 2 > FSlots.size())
      Grow();
    return index;
  }

  void Grow() {
    std::vector<TSlot> slots(FSlots.size() * 2);
    size_t mask = slots.size() - 1;
    for (const TSlot& s : FSlots) {
      if (s.Index < 0)
        continue;
      size_t i = s.Key.Hash & mask;
      while (slots[i].Index >= 0)
        i = (i + 1) & mask;
      slots[i] = s;
    }
    FSlots.swap(slots);
  }

  std::vector<TSlot> FSlots;
  size_t FCount = 0;
  std::u16string FWide; // a new name widened
};

// Texts of up to 16 bytes that repeat (attribute values, scalars) as one
// shared string each, looked up by their bytes: a direct-mapped cache, so
// its size stays fixed.
class TShortTexts {
public:
  TShortTexts() : FSlots(2048) {}

  // The text of b..b+n (1 <= n <= 16), made by Make(key) on a miss.
  template <class B, class F> const hstring& Get(const B* b, size_t n, const B* end, F&& Make) {
    TShortBytes key = short_bytes(b, n, end);
    TSlot& s = FSlots[key.Hash & (FSlots.size() - 1)];
    if (!(s.Key == key)) {
      s.Key = key;
      s.Text = Make(key);
    }
    return s.Text;
  }

private:
  struct TSlot {
    TShortBytes Key; // Len 0: empty
    hstring Text;
  };
  std::vector<TSlot> FSlots;
};

// The sorted order of a run of attribute names (indices into a TNameTable),
// remembered by the run: for each attribute of the set, the position in
// the run of the name that gives it.
class TNameOrders {
public:
  struct TOrder {
    std::vector<int> Names;
    std::vector<uint32_t> Sorted;
  };

  TNameOrders() : FSlots(256) {}

  // The order remembered for the run of n names name(0), name(1)...; null
  // when there is none.
  template <class N> const TOrder* Find(size_t n, N&& name) {
    TOrder& o = Slot(n, name);
    if (o.Names.size() != n || !n)
      return nullptr;
    for (size_t i = 0; i < n; ++i)
      if (o.Names[i] != name(i))
        return nullptr;
    return &o;
  }
  // The slot that remembers the run, with its names set; the caller fills
  // in Sorted.
  template <class N> TOrder& Learn(size_t n, N&& name) {
    TOrder& o = Slot(n, name);
    o.Names.resize(n);
    for (size_t i = 0; i < n; ++i)
      o.Names[i] = name(i);
    return o;
  }

private:
  // Long runs share one slot that is never found.
  static constexpr size_t kLongest = 64;

  template <class N> TOrder& Slot(size_t n, N& name) {
    if (n > kLongest) {
      FLong.Names.clear();
      return FLong;
    }
    uint64_t h = n;
    for (size_t i = 0; i < n; ++i)
      h = (h ^ static_cast<uint64_t>(name(i))) * 0x9E3779B97F4A7C15ull;
    return FSlots[(h >> 56) & (FSlots.size() - 1)];
  }

  std::vector<TOrder> FSlots;
  TOrder FLong;
};

} // namespace ht::detail
