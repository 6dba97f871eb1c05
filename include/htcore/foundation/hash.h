// Text hash functions of the dictionaries.
//
// All give unsigned 32-bit results with wrap-around arithmetic and 0 for an
// empty text. The UTF-16 and byte forms of one function agree on ASCII text,
// so a key hashed from an 8-bit source finds the same entry.
//
//   uint32_t h = ht::ShaPerfectHash(p, len);      // default of the dictionaries
//   uint32_t r = ht::RSHash(u"table", 5);         // large keyword tables
//   assert(ht::ShaPerfectHashANSI("div", 3) == ht::ShaPerfectHash(u"div", 3));
//
// ShaPerfectHashAsm computes the same number as ShaPerfectHash, four units per
// step with the multiplications taken out of the dependency chain.
#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

namespace ht {

namespace detail {
inline constexpr uint32_t kShaMul = 0x3E0F83E1u;
inline constexpr uint32_t kShaAdd = 0x59D65D2Fu;
inline constexpr uint32_t kShaFinal = 0x90C03487u;
} // namespace detail

inline uint32_t ShaPerfectHash(const char16_t* p, int Len) noexcept {
  uint32_t h = 0;
  for (int i = 0; i < Len; ++i)
    h = h * detail::kShaMul + p[i] + detail::kShaAdd;
  return h * detail::kShaFinal;
}

inline uint32_t ShaPerfectHashAsm(const char16_t* p, int Len) noexcept {
  using namespace detail;
  // Four steps of h = h*A + c + B folded into one: h*A^4 + c0*A^3 + c1*A^2 + c2*A + c3 + B*(A^3+A^2+A+1).
  constexpr uint32_t a2 = kShaMul * kShaMul;
  constexpr uint32_t a3 = a2 * kShaMul;
  constexpr uint32_t a4 = a3 * kShaMul;
  constexpr uint32_t k4 = kShaAdd * (a3 + a2 + kShaMul + 1u);
  uint32_t h = 0;
  int i = 0;
  for (; i + 4 <= Len; i += 4)
    h = h * a4 + p[i] * a3 + p[i + 1] * a2 + p[i + 2] * kShaMul + p[i + 3] + k4;
  for (; i < Len; ++i)
    h = h * kShaMul + p[i] + kShaAdd;
  return h * kShaFinal;
}

inline uint32_t ShaPerfectHashANSI(const char* p, int Len) noexcept {
  uint32_t h = 0;
  for (int i = 0; i < Len; ++i)
    h = h * detail::kShaMul + static_cast<unsigned char>(p[i]) + detail::kShaAdd;
  return h * detail::kShaFinal;
}

namespace detail {
template <class Unit> inline uint32_t jenkins_one_at_a_time(const Unit* p, int Len) noexcept {
  uint32_t h = 0;
  for (int i = 0; i < Len; ++i) {
    h += static_cast<std::make_unsigned_t<Unit>>(p[i]);
    h *= 1025u;
    h ^= h >> 6;
  }
  h *= 9u;
  h ^= h >> 11;
  return h * 32769u;
}
} // namespace detail

inline uint32_t JenkinsHash(const char16_t* p, int Len) noexcept {
  return detail::jenkins_one_at_a_time(p, Len);
}

inline uint32_t JenkinsHashANSI(const char* p, int Len) noexcept {
  return detail::jenkins_one_at_a_time(p, Len);
}

inline uint32_t RSHash(const char16_t* p, int Len) noexcept {
  uint32_t a = 63689u;
  uint32_t h = 0;
  for (int i = 0; i < Len; ++i) {
    h = h * a + p[i];
    a *= 378551u;
  }
  return h;
}

// View forms for callers that hold a std::u16string_view or an hstring.
inline uint32_t ShaPerfectHash(std::u16string_view s) noexcept {
  return ShaPerfectHashAsm(s.data(), static_cast<int>(s.size()));
}
inline uint32_t RSHash(std::u16string_view s) noexcept {
  return RSHash(s.data(), static_cast<int>(s.size()));
}
inline uint32_t JenkinsHash(std::u16string_view s) noexcept {
  return JenkinsHash(s.data(), static_cast<int>(s.size()));
}

} // namespace ht
