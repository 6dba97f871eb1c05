// hstring: the library's text type.
//
// A one-pointer handle to reference-counted UTF-16 text with copy on write. The
// empty string is the null handle; every non-empty text is followed by a NUL
// unit that its length does not count, so scanners may walk a raw pointer.
//
//   ht::hstring s = u"Hello";              // from a UTF-16 literal
//   ht::hstring t = ht::hstring::FromUtf8("wörld");
//   std::string out = (s + u", " + t).toUtf8();
//   char16_t* p = s.UniqueData();          // private copy before writing
//
// Names a reader meets (tags, attribute names, keys) are made with Interned:
// one text per name for the whole process, whose copies cost no count.
//
// RawByteString is the 8-bit twin with the same sharing rules; UTF8String is a
// RawByteString whose bytes are UTF-8. Positions are 0-based in member
// functions and 1-based (0 = none) in the free functions of text_utils.h.
#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ht {

using TBytes = std::vector<uint8_t>;

namespace detail {

// refs counts the handles; a lasting text (Interned) has a negative count
// that never changes, so copying and releasing it touch nothing.
struct StrHeader {
  std::atomic<int32_t> refs;
  int32_t length;
};
inline constexpr int32_t kStrLasting = INT32_MIN / 2;

void* AllocStr(size_t unit_size, size_t length); // header + units + NUL, refs = 1
// As AllocStr, from the node pool inside a TNodePoolScope when short.
void* AllocTreeStr(size_t unit_size, size_t length);
void FreeStr(void* header, size_t unit_size) noexcept;
[[noreturn]] void StrTooLong();
// The lasting text of these units (header), made on first request; null for
// a long text or once the process-wide table is full.
void* InternStr(size_t unit_size, const void* units, size_t length) noexcept;

} // namespace detail

template <class CharT> class basic_hstring {
public:
  using value_type = CharT;
  using view_type = std::basic_string_view<CharT>;

  basic_hstring() noexcept = default;
  basic_hstring(const CharT* s) { Assign(s, s ? std::char_traits<CharT>::length(s) : 0); }
  basic_hstring(const CharT* s, size_t n) { Assign(s, n); }
  basic_hstring(view_type v) { Assign(v.data(), v.size()); }
  basic_hstring(size_t n, CharT c) {
    Assign(nullptr, n);
    for (size_t i = 0; i < n; ++i)
      data_[i] = c;
  }
  // UTF-8 text into UTF-16 (hstring only; invalid bytes become U+FFFD).
  template <class T>
  requires(std::is_same_v<CharT, char16_t>&&
               std::is_convertible_v<const T&, std::string_view>) explicit basic_hstring(const T& utf8) {
    *this = FromUtf8(std::string_view(utf8));
  }
  basic_hstring(const basic_hstring& o) noexcept : data_(o.data_) { AddRef(); }
  basic_hstring(basic_hstring&& o) noexcept : data_(o.data_) { o.data_ = nullptr; }
  ~basic_hstring() { Release(); }

  basic_hstring& operator=(const basic_hstring& o) noexcept {
    if (o.data_ != data_) {
      o.AddRef();
      Release();
      data_ = o.data_;
    }
    return *this;
  }
  basic_hstring& operator=(basic_hstring&& o) noexcept {
    if (this != &o) {
      Release();
      data_ = o.data_;
      o.data_ = nullptr;
    }
    return *this;
  }

  // Length in code units; the null handle has length 0.
  size_t size() const noexcept { return data_ ? static_cast<size_t>(Header()->length) : 0; }
  size_t length() const noexcept { return size(); }
  int Length() const noexcept { return static_cast<int>(size()); }
  bool empty() const noexcept { return data_ == nullptr; }
  explicit operator bool() const noexcept { return data_ != nullptr; }

  // Never null: the empty string yields a pointer to a NUL unit.
  const CharT* c_str() const noexcept { return data_ ? data_ : EmptyText(); }
  const CharT* data() const noexcept { return c_str(); }
  // The raw handle: null for the empty string.
  const CharT* Pointer() const noexcept { return data_; }
  const CharT* begin() const noexcept { return c_str(); }
  const CharT* end() const noexcept { return c_str() + size(); }
  CharT operator[](size_t i) const noexcept { return data_[i]; }
  view_type view() const noexcept { return view_type(c_str(), size()); }
  operator view_type() const noexcept { return view(); }

  // Makes the text private to this handle and returns its writable units.
  CharT* UniqueData() {
    if (data_ && Header()->refs.load(std::memory_order_acquire) != 1) {
      basic_hstring copy(data_, size());
      *this = std::move(copy);
    }
    return data_;
  }
  bool IsUnique() const noexcept { return !data_ || Header()->refs.load(std::memory_order_acquire) == 1; }
  // The handles sharing the text; negative for a lasting (interned) text.
  int RefCount() const noexcept { return data_ ? Header()->refs.load(std::memory_order_relaxed) : 0; }

  // Resizes to n units, keeping the common prefix; new units are not initialised.
  // Always leaves a private buffer (or the null handle for n == 0).
  CharT* SetLength(size_t n) {
    if (n == 0) {
      Release();
      data_ = nullptr;
      return nullptr;
    }
    if (data_ && IsUnique() && static_cast<size_t>(Header()->length) == n)
      return data_;
    basic_hstring fresh;
    fresh.Assign(nullptr, n);
    size_t keep = size() < n ? size() : n;
    if (keep)
      std::memcpy(fresh.data_, data_, keep * sizeof(CharT));
    *this = std::move(fresh);
    return data_;
  }

  // Shortens in place when private, else takes a shortened copy. The buffer is
  // not reallocated, so this is cheap for results sized generously first.
  void Truncate(size_t n) {
    if (n >= size())
      return;
    if (n == 0) {
      SetLength(0);
      return;
    }
    if (!IsUnique()) {
      *this = basic_hstring(data_, n);
      return;
    }
    Header()->length = static_cast<int32_t>(n);
    data_[n] = 0;
  }

  void clear() noexcept {
    Release();
    data_ = nullptr;
  }

  basic_hstring& operator+=(const basic_hstring& o) { return Append(o.c_str(), o.size()); }
  basic_hstring& operator+=(view_type v) { return Append(v.data(), v.size()); }
  basic_hstring& operator+=(const CharT* s) { return Append(s, std::char_traits<CharT>::length(s)); }
  basic_hstring& operator+=(CharT c) { return Append(&c, 1); }

  basic_hstring& Append(const CharT* s, size_t n) {
    if (n == 0)
      return *this;
    size_t old = size();
    const std::less<const CharT*> before;
    if (data_ && !before(s, data_) && before(s, data_ + old)) {
      // A part of itself: SetLength may move the buffer, the offset stays.
      size_t from = static_cast<size_t>(s - data_);
      CharT* p = SetLength(old + n);
      std::memmove(p + old, p + from, n * sizeof(CharT));
    } else {
      CharT* p = SetLength(old + n);
      std::memcpy(p + old, s, n * sizeof(CharT));
    }
    return *this;
  }

  friend bool operator==(const basic_hstring& a, const basic_hstring& b) noexcept {
    return a.data_ == b.data_ || a.view() == b.view();
  }
  friend bool operator==(const basic_hstring& a, view_type b) noexcept { return a.view() == b; }
  friend bool operator==(const basic_hstring& a, const CharT* b) noexcept { return a.view() == view_type(b); }
  friend std::strong_ordering operator<=>(const basic_hstring& a, const basic_hstring& b) noexcept {
    return a.view() <=> b.view();
  }
  friend std::strong_ordering operator<=>(const basic_hstring& a, view_type b) noexcept {
    return a.view() <=> b;
  }
  friend std::strong_ordering operator<=>(const basic_hstring& a, const CharT* b) noexcept {
    return a.view() <=> view_type(b);
  }

  friend basic_hstring operator+(const basic_hstring& a, view_type b) { return Concat(a.view(), b); }
  friend basic_hstring operator+(view_type a, const basic_hstring& b) { return Concat(a, b.view()); }
  friend basic_hstring operator+(const basic_hstring& a, const basic_hstring& b) {
    if (b.empty())
      return a;
    if (a.empty())
      return b;
    return Concat(a.view(), b.view());
  }
  friend basic_hstring operator+(const basic_hstring& a, const CharT* b) {
    return Concat(a.view(), view_type(b));
  }
  friend basic_hstring operator+(const CharT* a, const basic_hstring& b) {
    return Concat(view_type(a), b.view());
  }
  friend basic_hstring operator+(const basic_hstring& a, CharT c) {
    return Concat(a.view(), view_type(&c, 1));
  }
  friend basic_hstring operator+(CharT c, const basic_hstring& b) {
    return Concat(view_type(&c, 1), b.view());
  }

  static basic_hstring FromUtf8(std::string_view utf8);
  std::string toUtf8() const;

  // A copy of s for a tree a reader builds: inside a TNodePoolScope a short
  // text lies in the node pool beside the nodes; otherwise as the constructor.
  static basic_hstring ForTree(const CharT* s, size_t n) {
    basic_hstring r;
    if (n == 0)
      return r;
    if (n > 0x7FFFFFF0u / sizeof(CharT))
      detail::StrTooLong();
    void* h = detail::AllocTreeStr(sizeof(CharT), n);
    r.data_ = reinterpret_cast<CharT*>(static_cast<char*>(h) + sizeof(detail::StrHeader));
    std::memcpy(r.data_, s, n * sizeof(CharT));
    return r;
  }
  static basic_hstring ForTree(view_type v) { return ForTree(v.data(), v.size()); }

  // The one text of these units for the whole process, kept until it ends:
  // for names, which repeat in every document and across documents. Copies
  // and releases are free. A long name, or any name once the table holds its
  // fixed maximum (hostile input), is made as ForTree instead.
  static basic_hstring Interned(const CharT* s, size_t n) {
    if (n == 0)
      return basic_hstring();
    if (void* h = detail::InternStr(sizeof(CharT), s, n)) {
      basic_hstring r;
      r.data_ = reinterpret_cast<CharT*>(static_cast<char*>(h) + sizeof(detail::StrHeader));
      return r;
    }
    return ForTree(s, n);
  }
  static basic_hstring Interned(view_type v) { return Interned(v.data(), v.size()); }

  // Substring by 0-based offset, clamped to the text.
  basic_hstring substr(size_t pos, size_t n = static_cast<size_t>(-1)) const {
    size_t len = size();
    if (pos >= len)
      return basic_hstring();
    if (n > len - pos)
      n = len - pos;
    if (pos == 0 && n == len)
      return *this;
    return basic_hstring(data_ + pos, n);
  }

private:
  static const CharT* EmptyText() noexcept {
    static const CharT zero = 0;
    return &zero;
  }
  detail::StrHeader* Header() const noexcept {
    return reinterpret_cast<detail::StrHeader*>(reinterpret_cast<char*>(data_) - sizeof(detail::StrHeader));
  }
  // A lasting text is told by a plain load, so its counter's cache line is
  // only ever read, however many threads copy it.
  void AddRef() const noexcept {
    if (data_ && Header()->refs.load(std::memory_order_relaxed) >= 0)
      Header()->refs.fetch_add(1, std::memory_order_relaxed);
  }
  void Release() noexcept {
    if (!data_)
      return;
    std::atomic<int32_t>& refs = Header()->refs;
    if (refs.load(std::memory_order_relaxed) >= 0 && refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
      detail::FreeStr(Header(), sizeof(CharT));
  }
  // Replaces the content with n units from s (uninitialised when s is null).
  void Assign(const CharT* s, size_t n) {
    Release();
    data_ = nullptr;
    if (n == 0)
      return;
    if (n > 0x7FFFFFF0u / sizeof(CharT))
      detail::StrTooLong();
    void* h = detail::AllocStr(sizeof(CharT), n);
    data_ = reinterpret_cast<CharT*>(static_cast<char*>(h) + sizeof(detail::StrHeader));
    if (s)
      std::memcpy(data_, s, n * sizeof(CharT));
  }
  static basic_hstring Concat(view_type a, view_type b) {
    basic_hstring r;
    r.Assign(nullptr, a.size() + b.size());
    if (r.data_) {
      if (!a.empty())
        std::memcpy(r.data_, a.data(), a.size() * sizeof(CharT));
      if (!b.empty())
        std::memcpy(r.data_ + a.size(), b.data(), b.size() * sizeof(CharT));
    }
    return r;
  }

  CharT* data_ = nullptr;
};

using hstring = basic_hstring<char16_t>;
using RawByteString = basic_hstring<char>;
using UTF8String = RawByteString;

// UTF-8 <-> UTF-16. Invalid UTF-8 bytes become U+FFFD; lone surrogates become
// U+FFFD on the way out.
hstring Utf8ToHString(std::string_view utf8);
std::string HStringToUtf8(std::u16string_view text);

template <class CharT> basic_hstring<CharT> basic_hstring<CharT>::FromUtf8(std::string_view utf8) {
  if constexpr (std::is_same_v<CharT, char16_t>)
    return Utf8ToHString(utf8);
  else
    return basic_hstring(utf8.data(), utf8.size());
}

template <class CharT> std::string basic_hstring<CharT>::toUtf8() const {
  if constexpr (std::is_same_v<CharT, char16_t>)
    return HStringToUtf8(view());
  else
    return std::string(view());
}

// Convenience for C++ hosts and tests.
inline hstring operator""_hs(const char16_t* s, size_t n) { return hstring(s, n); }
inline hstring FromUtf8(std::string_view utf8) { return Utf8ToHString(utf8); }
inline std::string ToUtf8(const hstring& s) { return HStringToUtf8(s.view()); }

} // namespace ht

template <class CharT> struct std::hash<ht::basic_hstring<CharT>> {
  size_t operator()(const ht::basic_hstring<CharT>& s) const noexcept {
    return std::hash<std::basic_string_view<CharT>>()(s.view());
  }
};
