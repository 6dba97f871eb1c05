// TFastString and TFastRawString: append-only text builders.
//
// A builder is a chain of chunks. Text goes into the current chunk while it
// fits; otherwise a new chunk of at least ADelta units is linked behind it.
// Buffers are never reallocated, so appending costs no copying of earlier text,
// and the short appends (AddChar, Add of a few units) are inline.
//
//   ht::TFastString fs(4096);
//   fs.Add(u"<p class=\"").Add(name).AddChar(u'"').Add(int64_t{42});
//   fs.Add(1.5, 2, true);                 // "1.5"
//   ht::hstring html = fs.GetAsString();
//
// TFastRawString is the byte twin (UTF-8 output through AddUTF8).
#pragma once

#include "htcore/foundation/hstring.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ht {

class TStream;
class TFastString;
class TFastRawString;

namespace detail {

template <class T>
concept IsCharLike = std::same_as<T, bool> || std::same_as<T, char> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t> || std::same_as<T, wchar_t>;

// "00" to "99" as pairs of UTF-16 units.
struct TDigitPair {
  char16_t d[2];
};
struct TDigitPairs {
  TDigitPair p[100];
  constexpr const TDigitPair& operator[](size_t i) const { return p[i]; }
};
inline constexpr TDigitPairs kDigitPairs = [] {
  TDigitPairs t{};
  for (int i = 0; i < 100; ++i)
    t.p[i] = {{static_cast<char16_t>(u'0' + i / 10), static_cast<char16_t>(u'0' + i % 10)}};
  return t;
}();

template <class CharT> struct TFastChunk {
  CharT* Text = nullptr;
  int32_t Capacity = 0;
  int32_t Used = 0;
  TFastChunk* Next = nullptr;
};

// The chunk chain shared by both builders. Derived is the builder class, so
// that every appending call returns it for chaining.
template <class Derived, class CharT> class TChunkBuilder {
public:
  using Chunk = TFastChunk<CharT>;
  using View = std::basic_string_view<CharT>;

  explicit TChunkBuilder(int ADelta) noexcept : FCurrent(&FHead), FCompleted(0), FDelta(ADelta) {}
  ~TChunkBuilder() { FreeChain(); }
  TChunkBuilder(const TChunkBuilder&) = delete;
  TChunkBuilder& operator=(const TChunkBuilder&) = delete;

  Derived& AddChar(CharT c) {
    Chunk* k = FCurrent;
    if (k->Used < k->Capacity) [[likely]] {
      k->Text[k->Used++] = c;
      return self();
    }
    AddCharSlow(c);
    return self();
  }

  Derived& Add2Char(CharT c1, CharT c2) {
    Chunk* k = FCurrent;
    if (k->Capacity - k->Used >= 2) [[likely]] {
      CharT* d = k->Text + k->Used;
      d[0] = c1;
      d[1] = c2;
      k->Used += 2;
      return self();
    }
    Add2CharSlow(c1, c2);
    return self();
  }

  Derived& AddSpaces(int SpaceCount);

  int GetTotalLen() const noexcept { return FCompleted + FCurrent->Used; }
  bool IsEmpty() const noexcept { return GetTotalLen() == 0; }

  // Frees all buffers; the builder is as new.
  void Clear() noexcept;
  // Keeps the head buffer for the next fill and frees the rest.
  void ClearandLeaveSpace() noexcept;
  void DeletefromEnd(int ACount);
  Derived& Prepend(View s);
  // Takes over the text of ASource at the end (see fast_string.cpp).
  void Grab(Derived& ASource);

  bool StartsWith(View s) const;
  bool EndsWith(View s) const;
  // 1-based position or 0. An occurrence spanning three or more chunks is not
  // found: the search looks at each pair of neighbouring chunks only.
  int PosOf(View s) const;
  CharT LastChar() const noexcept;

  void SavetoStream(TStream& AStream) const;
  // Writes the text without terminator; ABuffer must hold GetTotalLen() units.
  void SavetoBuffer(void* ABuffer) const noexcept;

  // The chain, for code that writes it out chunk by chunk.
  const Chunk* FirstChunk() const noexcept { return &FHead; }

protected:
  Derived& self() noexcept { return static_cast<Derived&>(*this); }

  Derived& AddUnits(const CharT* Src, ptrdiff_t L) {
    if (L < 1)
      return self();
    Chunk* k = FCurrent;
    if (L <= static_cast<ptrdiff_t>(k->Capacity - k->Used)) [[likely]] {
      CharT* d = k->Text + k->Used;
      k->Used += static_cast<int32_t>(L);
      switch (L) {
      case 4:
        d[3] = Src[3];
        [[fallthrough]];
      case 3:
        d[2] = Src[2];
        [[fallthrough]];
      case 2:
        d[1] = Src[1];
        [[fallthrough]];
      case 1:
        d[0] = Src[0];
        break;
      default:
        CopyShort(d, Src, static_cast<size_t>(L) * sizeof(CharT));
      }
      return self();
    }
    AddSlow(Src, L);
    return self();
  }

  // Texts up to 32 bytes move as two overlapping fixed-size blocks, which
  // compile to a few register moves instead of a call.
  // GCC 12 threads a constant short source into the branches for longer
  // texts and warns about reads past it that no path makes.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"
#pragma GCC diagnostic ignored "-Wstringop-overread"
#endif
  static void CopyShort(void* d, const void* s, size_t nb) {
    auto* dc = static_cast<char*>(d);
    auto* sc = static_cast<const char*>(s);
    if (nb <= 8) {
      uint32_t a, b;
      std::memcpy(&a, sc, 4);
      std::memcpy(&b, sc + nb - 4, 4);
      std::memcpy(dc, &a, 4);
      std::memcpy(dc + nb - 4, &b, 4);
    } else if (nb <= 16) {
      uint64_t a, b;
      std::memcpy(&a, sc, 8);
      std::memcpy(&b, sc + nb - 8, 8);
      std::memcpy(dc, &a, 8);
      std::memcpy(dc + nb - 8, &b, 8);
    } else if (nb <= 32) {
      struct B16 {
        char b[16];
      } a, b;
      std::memcpy(&a, sc, 16);
      std::memcpy(&b, sc + nb - 16, 16);
      std::memcpy(dc, &a, 16);
      std::memcpy(dc + nb - 16, &b, 16);
    } else {
      std::memcpy(dc, sc, nb);
    }
  }
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

  // Space for n units at the end of the current chunk; the caller fills them
  // and raises Used.
  CharT* Reserve(ptrdiff_t n) {
    if (n > static_cast<ptrdiff_t>(FCurrent->Capacity - FCurrent->Used))
      MakeSpace(n);
    return FCurrent->Text + FCurrent->Used;
  }

  void MakeSpace(ptrdiff_t n);
  void AddSlow(const CharT* Src, ptrdiff_t L);
  void AddCharSlow(CharT c);
  void Add2CharSlow(CharT c1, CharT c2);
  void AddInt64(int64_t Value);
  void AddFixed(double Value, ptrdiff_t Digits, bool Zero);
  // Flat copy of the units from 0-based offset from to the end.
  void FlattenTo(CharT* dst, int from = 0) const noexcept;
  basic_hstring<CharT> Flat(int from = 0) const;
  void FreeChain() noexcept;
  void TrimTrailing(bool blanks);

  Chunk FHead;
  Chunk* FCurrent;
  int32_t FCompleted;
  int32_t FDelta;
};

} // namespace detail

class TFastString : public detail::TChunkBuilder<TFastString, char16_t> {
  using Base = detail::TChunkBuilder<TFastString, char16_t>;

public:
  // ADelta: minimum capacity of a new chunk in units; no text memory is taken
  // before the first append.
  explicit TFastString(int ADelta = 4096) noexcept : Base(ADelta) {}

  TFastString& Add(const char16_t* Src, ptrdiff_t L) { return AddUnits(Src, L); }
  TFastString& Add(const hstring& s) { return AddUnits(s.c_str(), static_cast<ptrdiff_t>(s.size())); }
  TFastString& Add(std::u16string_view s) { return AddUnits(s.data(), static_cast<ptrdiff_t>(s.size())); }
  // NUL-terminated text. For a literal the length is found at compile time.
  template <class S>
  requires(std::same_as<std::decay_t<S>, const char16_t*> ||
           std::same_as<std::decay_t<S>, char16_t*>) TFastString& Add(S&& s) {
    using Bare = std::remove_reference_t<S>;
    if constexpr (std::is_array_v<Bare>) {
      constexpr size_t N = std::extent_v<Bare>;
      size_t n = 0;
      while (n < N && s[n])
        ++n;
      return AddUnits(s, static_cast<ptrdiff_t>(n));
    } else {
      return Add(std::u16string_view(s));
    }
  }
  // Decimal form of any integer (as Int64). Only the low 32 bits pick the one-
  // and two-digit shortcut, so 2^32 + 5 prints "5"; callers stay far below 2^32.
  template <std::integral T>
  requires(!detail::IsCharLike<T>) TFastString& Add(T Value) {
    uint64_t u = static_cast<uint64_t>(static_cast<int64_t>(Value));
    if (u < 10)
      return AddChar(static_cast<char16_t>(u'0' + u));
    if (u < 10000 && FCurrent->Capacity - FCurrent->Used >= 4) { // the common small counts, inline
      unsigned w = static_cast<unsigned>(u);
      int n = w < 100 ? 2 : (w < 1000 ? 3 : 4);
      char16_t* d = FCurrent->Text + FCurrent->Used + n;
      FCurrent->Used += n;
      if (w >= 100) {
        std::memcpy(d - 2, &detail::kDigitPairs[w % 100], 4);
        w /= 100;
        d -= 2;
      }
      if (w >= 10)
        std::memcpy(d - 2, &detail::kDigitPairs[w], 4);
      else
        d[-1] = static_cast<char16_t>(u'0' + w);
      return *this;
    }
    AddInt64(static_cast<int64_t>(Value));
    return *this;
  }
  // Shortest fixed form with at most Digits places (8 for Digits outside 0..7),
  // no exponent, trailing zeros dropped; Zero=false writes ".5" for 0.5.
  TFastString& Add(double Value, ptrdiff_t Digits, bool Zero) {
    AddFixed(Value, Digits, Zero);
    return *this;
  }
  // A single unit goes through AddChar; a lone double needs Digits and Zero.
  template <class T>
  requires(detail::IsCharLike<T> || std::floating_point<T>) TFastString& Add(T) = delete;

  void ToString(hstring& s) const { s = Flat(); }
  hstring ToString() const { return Flat(); }
  hstring GetAsString() const { return Flat(); }
  // From 1-based StartPos to the end; empty beyond the end.
  void ToStringFrom(hstring& s, int StartPos) const;

  // Units below 33 (Blanks) or U+0020 (Spaces) at the end of the current chunk.
  void TrimTrailingSpaces() { TrimTrailing(false); }
  void TrimTrailingBlanks() { TrimTrailing(true); }

  // Carried along for the writer's use; the builder never reads it.
  hstring Charset;
};

class TFastRawString : public detail::TChunkBuilder<TFastRawString, char> {
  using Base = detail::TChunkBuilder<TFastRawString, char>;

public:
  explicit TFastRawString(int ADelta = 4096) noexcept : Base(ADelta) {}

  TFastRawString& Add(const void* Src, ptrdiff_t Len) { return AddUnits(static_cast<const char*>(Src), Len); }
  TFastRawString& Add(const RawByteString& s) {
    return AddUnits(s.c_str(), static_cast<ptrdiff_t>(s.size()));
  }
  TFastRawString& Add(std::string_view s) { return AddUnits(s.data(), static_cast<ptrdiff_t>(s.size())); }
  TFastRawString& Add(const char* s) { return Add(std::string_view(s)); }
  TFastRawString& AddInt(int64_t Value) {
    AddInt64(Value);
    return *this;
  }
  // UTF-16 to UTF-8. Surrogates pair with whatever unit follows them (either
  // order); a lone surrogate at the end is dropped.
  TFastRawString& AddUTF8(std::u16string_view s);

  void ToString(RawByteString& s) const { s = Flat(); }
  RawByteString ToString() const { return Flat(); }
  void ToUTF8String(UTF8String& s) const { s = Flat(); }
  TBytes AsBytes() const;
};

extern template class detail::TChunkBuilder<TFastString, char16_t>;
extern template class detail::TChunkBuilder<TFastRawString, char>;

} // namespace ht
