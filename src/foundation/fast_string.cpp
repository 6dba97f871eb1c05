#include "htcore/foundation/fast_string.h"

#include "htcore/foundation/exception.h"
#include "htcore/foundation/stream.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <new>
#include <type_traits>

namespace ht {
namespace detail {

namespace {

// Same ceiling as hstring, so a flattened builder always fits one.
constexpr int64_t kMaxLen = 0x7FFFFFF0 / 2;

template <class CharT> struct TPair { CharT d[2]; };

// The pairs as units, so that one copy writes two digits.
template <class CharT> constexpr auto MakePairUnits() {
  std::array<TPair<CharT>, 100> t{};
  for (int i = 0; i < 100; ++i)
    t[static_cast<size_t>(i)] = {{static_cast<CharT>('0' + i / 10), static_cast<CharT>('0' + i % 10)}};
  return t;
}
template <class CharT> constexpr std::array<TPair<CharT>, 100> kPairUnits = MakePairUnits<CharT>();

inline int DigitCount32(uint32_t w) {
  if (w < 10000)
    return w < 100 ? (w < 10 ? 1 : 2) : (w < 1000 ? 3 : 4);
  if (w < 100000000)
    return w < 1000000 ? (w < 100000 ? 5 : 6) : (w < 10000000 ? 7 : 8);
  return w < 1000000000 ? 9 : 10;
}

inline int DigitCount(uint64_t v) {
  int n = 0;
  while (v > 0xFFFFFFFFu) {
    v /= 10000;
    n += 4;
  }
  return n + DigitCount32(static_cast<uint32_t>(v));
}

// Writes the digits of v right-aligned so that they end at end; returns the start.
template <class CharT> [[gnu::always_inline]] inline CharT* DigitsBefore(CharT* end, uint64_t v) {
  CharT* p = end;
  while (v > 0xFFFFFFFFu) {
    p -= 2;
    std::memcpy(p, &kPairUnits<CharT>[v % 100], sizeof(TPair<CharT>));
    v /= 100;
  }
  uint32_t w = static_cast<uint32_t>(v); // 32-bit steps are cheaper
  while (w >= 100) {
    p -= 2;
    std::memcpy(p, &kPairUnits<CharT>[w % 100], sizeof(TPair<CharT>));
    w /= 100;
  }
  if (w < 10) {
    *--p = static_cast<CharT>('0' + w);
  } else {
    p -= 2;
    std::memcpy(p, &kPairUnits<CharT>[w], sizeof(TPair<CharT>));
  }
  return p;
}

template <class CharT> bool IsBlankUnit(CharT c) { return static_cast<std::make_unsigned_t<CharT>>(c) <= 32; }

template <class Chunk> const Chunk* NextFilled(const Chunk* k) {
  while (k && k->Used == 0)
    k = k->Next;
  return k;
}

} // namespace

template <class D, class C> void TChunkBuilder<D, C>::MakeSpace(ptrdiff_t n) {
  Chunk* k = FCurrent;
  int64_t completed = FCompleted;
  if (k->Text)
    completed += k->Used;
  if (n > kMaxLen - completed)
    throw EOutOfMemory();
  int64_t cap = n > FDelta ? n : FDelta;
  if (cap > kMaxLen - completed)
    cap = kMaxLen - completed;
  auto* buf = static_cast<C*>(std::malloc(static_cast<size_t>(cap) * sizeof(C)));
  if (!buf)
    throw std::bad_alloc();
  if (k->Text) {
    // Seal the full chunk; its free tail stays unused.
    Chunk* fresh = new (std::nothrow) Chunk;
    if (!fresh) {
      std::free(buf);
      throw std::bad_alloc();
    }
    FCompleted = static_cast<int32_t>(completed);
    k->Next = fresh;
    FCurrent = k = fresh;
  }
  k->Text = buf;
  k->Capacity = static_cast<int32_t>(cap);
  k->Used = 0;
}

template <class D, class C> void TChunkBuilder<D, C>::AddSlow(const C* Src, ptrdiff_t L) {
  MakeSpace(L);
  std::memcpy(FCurrent->Text, Src, static_cast<size_t>(L) * sizeof(C));
  FCurrent->Used = static_cast<int32_t>(L);
}

template <class D, class C> void TChunkBuilder<D, C>::AddCharSlow(C c) {
  MakeSpace(1);
  FCurrent->Text[FCurrent->Used++] = c;
}

template <class D, class C> void TChunkBuilder<D, C>::Add2CharSlow(C c1, C c2) {
  // A new chunk holds at least ADelta units; asking for 2 rather than 1 keeps a
  // builder made with ADelta below 2 from overflowing.
  MakeSpace(2);
  C* d = FCurrent->Text + FCurrent->Used;
  d[0] = c1;
  d[1] = c2;
  FCurrent->Used += 2;
}

template <class D, class C> D& TChunkBuilder<D, C>::AddSpaces(int SpaceCount) {
  if (SpaceCount < 1)
    return self();
  C* d = Reserve(SpaceCount);
  for (int i = 0; i < SpaceCount; ++i)
    d[i] = C(' ');
  FCurrent->Used += SpaceCount;
  return self();
}

template <class D, class C> void TChunkBuilder<D, C>::AddInt64(int64_t Value) {
  uint64_t v = static_cast<uint64_t>(Value);
  int sign = 0;
  if (Value < 0) {
    v = 0 - v;
    sign = 1;
  }
  // The short forms look at the low 32 bits only.
  uint32_t low = static_cast<uint32_t>(v);
  if (low < 100) {
    C* d = Reserve(3);
    d[0] = C('-');
    if (low < 10) {
      d[sign] = static_cast<C>('0' + low);
      FCurrent->Used += sign + 1;
    } else {
      std::memcpy(d + sign, &kPairUnits<C>[low], sizeof(TPair<C>));
      FCurrent->Used += sign + 2;
    }
    return;
  }
  // Straight into the chunk: count the digits, then fill from the end.
  int n = (v >> 32 ? DigitCount(v) : DigitCount32(low)) + sign;
  C* d = Reserve(n);
  d[0] = C('-');
  DigitsBefore(d + n, v);
  FCurrent->Used += n;
}

template <class D, class C> void TChunkBuilder<D, C>::AddFixed(double Value, ptrdiff_t Digits, bool Zero) {
  static constexpr double kPow[] = {1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7};
  double mult = 1e8;
  int places = 8;
  if (Digits >= 0 && Digits <= 7) {
    mult = kPow[Digits];
    places = static_cast<int>(Digits);
  }
  if (!std::isfinite(Value)) {
    AddChar(C('0'));
    return;
  }
  // Beyond the Int64 range (and where Value * mult would leave it) the
  // decimal text comes from the general formatter with the same places.
  constexpr double kLimit = 9.2e18;
  auto general = [&](int prec) {
    char buf[400];
    auto res = std::to_chars(buf, buf + sizeof buf, Value, std::chars_format::fixed, prec);
    char* e = res.ptr;
    if (prec > 0) {
      while (e[-1] == '0')
        --e;
      if (e[-1] == '.')
        --e;
    }
    for (char* p = buf; p < e; ++p)
      AddChar(C(*p));
  };
  if (std::fabs(Value) >= kLimit) {
    general(0);
    return;
  }
  double r = std::nearbyint(Value); // the default mode: to nearest, ties to even
  double diff = std::fabs(Value - r) * mult;
  if (Digits == 0 || !(diff >= 0.5)) {
    AddInt64(static_cast<int64_t>(r));
    return;
  }
  double sv = Value * mult;
  if (std::fabs(sv) >= kLimit) {
    general(places);
    return;
  }
  int64_t scaled = static_cast<int64_t>(std::nearbyint(sv));
  if (scaled == 0) { // a tie rounded to even, e.g. 0.005 with two places
    AddChar(C('0'));
    return;
  }
  C digits[21];
  uint64_t u = scaled < 0 ? 0 - static_cast<uint64_t>(scaled) : static_cast<uint64_t>(scaled);
  C* first = DigitsBefore(digits + 21, u);
  int n = static_cast<int>(digits + 21 - first);
  C out[40];
  C* o = out;
  if (scaled < 0)
    *o++ = C('-');
  if (n <= places) {
    if (Zero)
      *o++ = C('0');
    *o++ = C('.');
    for (int i = n; i < places; ++i)
      *o++ = C('0');
    for (int i = 0; i < n; ++i)
      *o++ = first[i];
  } else {
    for (int i = 0; i < n - places; ++i)
      *o++ = first[i];
    *o++ = C('.');
    for (int i = n - places; i < n; ++i)
      *o++ = first[i];
  }
  while (o[-1] == C('0'))
    --o;
  if (o[-1] == C('.'))
    --o;
  AddUnits(out, o - out);
}

template <class D, class C> void TChunkBuilder<D, C>::FreeChain() noexcept {
  std::free(FHead.Text);
  Chunk* k = FHead.Next;
  while (k) {
    Chunk* next = k->Next;
    std::free(k->Text);
    delete k;
    k = next;
  }
  FHead = Chunk{};
  FCurrent = &FHead;
  FCompleted = 0;
}

template <class D, class C> void TChunkBuilder<D, C>::Clear() noexcept { FreeChain(); }

template <class D, class C> void TChunkBuilder<D, C>::ClearandLeaveSpace() noexcept {
  Chunk* k = FHead.Next;
  while (k) {
    Chunk* next = k->Next;
    std::free(k->Text);
    delete k;
    k = next;
  }
  FHead.Next = nullptr;
  FHead.Used = 0;
  FCurrent = &FHead;
  FCompleted = 0;
}

template <class D, class C> void TChunkBuilder<D, C>::FlattenTo(C* dst, int from) const noexcept {
  for (const Chunk* k = &FHead; k; k = k->Next) {
    int n = k->Used;
    if (from >= n) {
      from -= n;
      continue;
    }
    std::memcpy(dst, k->Text + from, static_cast<size_t>(n - from) * sizeof(C));
    dst += n - from;
    from = 0;
  }
}

template <class D, class C> basic_hstring<C> TChunkBuilder<D, C>::Flat(int from) const {
  if (from < 0)
    from = 0;
  int total = GetTotalLen();
  basic_hstring<C> s;
  if (from >= total)
    return s;
  C* d = s.SetLength(static_cast<size_t>(total - from));
  FlattenTo(d, from);
  return s;
}

template <class D, class C> void TChunkBuilder<D, C>::DeletefromEnd(int ACount) {
  if (ACount <= 0)
    return;
  if (ACount <= FCurrent->Used) {
    FCurrent->Used -= ACount;
    return;
  }
  int keep = GetTotalLen() - ACount;
  basic_hstring<C> flat = keep > 0 ? Flat() : basic_hstring<C>();
  Clear();
  AddUnits(flat.c_str(), keep);
}

template <class D, class C> D& TChunkBuilder<D, C>::Prepend(View s) {
  if (s.empty())
    return self();
  if (static_cast<int64_t>(s.size()) > kMaxLen - GetTotalLen())
    throw EOutOfMemory();
  auto* buf = static_cast<C*>(std::malloc(s.size() * sizeof(C)));
  if (!buf)
    throw std::bad_alloc();
  std::memcpy(buf, s.data(), s.size() * sizeof(C));
  Chunk* moved = new (std::nothrow) Chunk(FHead);
  if (!moved) {
    std::free(buf);
    throw std::bad_alloc();
  }
  if (FCurrent == &FHead)
    FCurrent = moved;
  FHead.Text = buf;
  FHead.Capacity = FHead.Used = static_cast<int32_t>(s.size());
  FHead.Next = moved;
  FCompleted += static_cast<int32_t>(s.size());
  return self();
}

template <class D, class C> void TChunkBuilder<D, C>::Grab(D& ASource) {
  TChunkBuilder& src = ASource;
  if (&src == this || src.GetTotalLen() == 0)
    return;
  if (src.FCurrent == &src.FHead && src.FHead.Used < src.FHead.Capacity / 2) {
    AddUnits(src.FHead.Text, src.FHead.Used); // cheaper to copy a mostly empty chunk
    return;
  }
  if (src.GetTotalLen() > kMaxLen - GetTotalLen())
    throw EOutOfMemory();
  Chunk* rec = new Chunk(src.FHead);
  FCompleted += FCurrent->Used;
  FCurrent->Next = rec;
  FCurrent = src.FCurrent == &src.FHead ? rec : src.FCurrent;
  FCompleted += src.FCompleted;
  // The buffers belong to this builder now. The source's head capacity goes to
  // 0 as well, so that appending to the source afterwards is safe.
  src.FHead = Chunk{};
  src.FCurrent = &src.FHead;
  src.FCompleted = 0;
}

template <class D, class C> void TChunkBuilder<D, C>::TrimTrailing(bool blanks) {
  Chunk* k = FCurrent;
  int u = k->Used;
  if (blanks) {
    while (u > 0 && static_cast<std::make_unsigned_t<C>>(k->Text[u - 1]) < 33)
      --u;
  } else {
    while (u > 0 && k->Text[u - 1] == C(' '))
      --u;
  }
  k->Used = u;
  if (u > 0)
    return;
  // The blanks may go on in sealed chunks: trim a flat copy. This general trim
  // removes every unit up to U+0020, also for TrimTrailingSpaces.
  basic_hstring<C> flat = Flat();
  size_t n = flat.size();
  while (n > 0 && IsBlankUnit(flat[n - 1]))
    --n;
  Clear();
  AddUnits(flat.c_str(), static_cast<ptrdiff_t>(n));
}

template <class D, class C> bool TChunkBuilder<D, C>::StartsWith(View s) const {
  int total = GetTotalLen();
  if (total == 0 || static_cast<int64_t>(s.size()) > total)
    return false;
  if (s.size() <= static_cast<size_t>(FHead.Used))
    return View(FHead.Text, s.size()) == s;
  return Flat().view().substr(0, s.size()) == s;
}

template <class D, class C> bool TChunkBuilder<D, C>::EndsWith(View s) const {
  int total = GetTotalLen();
  if (total == 0 || static_cast<int64_t>(s.size()) > total)
    return false;
  const Chunk* k = FCurrent;
  if (s.size() <= static_cast<size_t>(k->Used))
    return View(k->Text + k->Used - s.size(), s.size()) == s;
  return Flat().view().substr(static_cast<size_t>(total) - s.size()) == s;
}

template <class D, class C> int TChunkBuilder<D, C>::PosOf(View s) const {
  const int64_t m = static_cast<int64_t>(s.size());
  if (m == 0 || m > GetTotalLen())
    return 0;
  int base = 0;
  const Chunk* a = NextFilled(&FHead);
  while (a) {
    View va(a->Text, static_cast<size_t>(a->Used));
    size_t hit = va.find(s);
    if (hit != View::npos)
      return base + static_cast<int>(hit) + 1;
    const Chunk* b = NextFilled(a->Next);
    if (!b)
      return 0;
    // Occurrences that start in a and end in b.
    int64_t first = a->Used - m + 1 > 0 ? a->Used - m + 1 : 0;
    for (int64_t i = first; i < a->Used; ++i) {
      size_t head = static_cast<size_t>(a->Used - i);
      size_t rest = static_cast<size_t>(m) - head;
      if (rest <= static_cast<size_t>(b->Used) && View(a->Text + i, head) == s.substr(0, head) &&
          View(b->Text, rest) == s.substr(head))
        return base + static_cast<int>(i) + 1;
    }
    base += a->Used;
    a = b;
  }
  return 0;
}

template <class D, class C> C TChunkBuilder<D, C>::LastChar() const noexcept {
  if (FCurrent->Used > 0)
    return FCurrent->Text[FCurrent->Used - 1];
  const Chunk* last = nullptr;
  for (const Chunk* k = &FHead; k; k = k->Next)
    if (k->Used > 0)
      last = k;
  return last ? last->Text[last->Used - 1] : C(0);
}

template <class D, class C> void TChunkBuilder<D, C>::SavetoStream(TStream& AStream) const {
  for (const Chunk* k = &FHead; k; k = k->Next)
    if (k->Used > 0)
      AStream.WriteBuffer(k->Text, static_cast<int64_t>(k->Used) * static_cast<int64_t>(sizeof(C)));
}

template <class D, class C> void TChunkBuilder<D, C>::SavetoBuffer(void* ABuffer) const noexcept {
  FlattenTo(static_cast<C*>(ABuffer));
}

template class TChunkBuilder<TFastString, char16_t>;
template class TChunkBuilder<TFastRawString, char>;

} // namespace detail

void TFastString::ToStringFrom(hstring& s, int StartPos) const { s = Flat(StartPos < 1 ? 0 : StartPos - 1); }

TFastRawString& TFastRawString::AddUTF8(std::u16string_view s) {
  size_t len = s.size();
  if (len == 0)
    return *this;
  if (len > static_cast<size_t>(detail::kMaxLen / 3))
    throw EOutOfMemory();
  // Three bytes per unit always suffice: a pair of units gives at most four.
  char* start = Reserve(static_cast<ptrdiff_t>(len * 3));
  auto* d = reinterpret_cast<uint8_t*>(start);
  uint8_t* limit = d + len * 3;
  const char16_t* p = s.data();
  const char16_t* e = p + len;
  while (e - p >= 2 && p[0] < 0x80 && p[1] < 0x80) {
    d[0] = static_cast<uint8_t>(p[0]);
    d[1] = static_cast<uint8_t>(p[1]);
    d += 2;
    p += 2;
  }
  while (p < e) {
    uint32_t c = *p++;
    if (c >= 0xD800 && c <= 0xDFFF) {
      if (p == e)
        break; // a lone surrogate at the end is dropped
      // The neighbour completes the pair whatever it is, and a low surrogate
      // first is taken as a reversed pair.
      uint32_t n = *p++;
      uint32_t hi = c < 0xDC00 ? c : n;
      uint32_t lo = c < 0xDC00 ? n : c;
      c = (((hi & 0x3FF) << 10) | (lo & 0x3FF)) + 0x10000;
    }
    if (c < 0x80) {
      if (limit - d < 1)
        break;
      *d++ = static_cast<uint8_t>(c);
      continue;
    }
    int extra;
    uint8_t lead;
    if (c < 0x800)
      extra = 1, lead = 0xC0;
    else if (c < 0x10000)
      extra = 2, lead = 0xE0;
    else if (c < 0x200000)
      extra = 3, lead = 0xF0;
    else if (c < 0x4000000)
      extra = 4, lead = 0xF8;
    else
      extra = 5, lead = 0xFC;
    if (limit - d < extra + 1)
      break;
    for (int i = extra; i > 0; --i) {
      d[i] = static_cast<uint8_t>(0x80 | (c & 0x3F));
      c >>= 6;
    }
    d[0] = static_cast<uint8_t>(lead | c);
    d += extra + 1;
  }
  FCurrent->Used += static_cast<int32_t>(reinterpret_cast<char*>(d) - start);
  return *this;
}

TBytes TFastRawString::AsBytes() const {
  TBytes b(static_cast<size_t>(GetTotalLen()));
  if (!b.empty())
    FlattenTo(reinterpret_cast<char*>(b.data()));
  return b;
}

} // namespace ht
