#include "htcore/foundation/text_utils.h"

#include "htcore/foundation/object.h"
#include "htcore/foundation/string_list.h"

#include <algorithm>
#include <charconv>

namespace ht {

namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

// 0-based start for a 1-based position, or kNone when it lies behind the text.
size_t StartIndex(int StartPos, size_t len) {
  size_t i = StartPos < 1 ? 0 : static_cast<size_t>(StartPos) - 1;
  return i < len ? i : kNone;
}

template <class CharT> bool IsBlank(CharT c) { return static_cast<std::make_unsigned_t<CharT>>(c) <= 32; }

hstring Ascii(const char* p, const char* e) {
  hstring s;
  char16_t* d = s.SetLength(static_cast<size_t>(e - p));
  while (p < e)
    *d++ = static_cast<char16_t>(*p++);
  return s;
}

template <class T> hstring DecimalText(T v) {
  char buf[24];
  auto r = std::to_chars(buf, buf + sizeof buf, v);
  return Ascii(buf, r.ptr);
}

hstring HexText(uint64_t v, int Digits) {
  char buf[80];
  auto r = std::to_chars(buf, buf + 16, v, 16);
  size_t n = static_cast<size_t>(r.ptr - buf);
  size_t want = Digits > 64 ? 64 : (Digits > 0 ? static_cast<size_t>(Digits) : 0);
  hstring s;
  size_t total = std::max(n, want);
  char16_t* d = s.SetLength(total);
  for (size_t i = n; i < total; ++i)
    *d++ = u'0';
  for (size_t i = 0; i < n; ++i) {
    char c = buf[i];
    *d++ = static_cast<char16_t>(c >= 'a' ? c - 32 : c);
  }
  return s;
}

template <class Str> Str CopyOf(const Str& s, int Index, int Count) {
  if (Count <= 0)
    return Str();
  size_t i = Index < 1 ? 0 : static_cast<size_t>(Index) - 1;
  return s.substr(i, static_cast<size_t>(Count));
}

} // namespace

void vLower(hstring& s) {
  char16_t* p = s.UniqueData();
  if (!p)
    return;
  for (size_t i = 0, n = s.size(); i < n; ++i)
    p[i] = CharLower(p[i]);
}

void hLower(hstring& s) {
  size_t n = s.size();
  const char16_t* r = s.c_str();
  size_t i = 0;
  while (i < n && !(r[i] >= u'A' && r[i] <= u'Z'))
    ++i;
  if (i == n)
    return;
  char16_t* p = s.UniqueData();
  for (; i < n; ++i)
    p[i] = CharLower(p[i]);
}

hstring LowerCase(std::u16string_view s) {
  hstring r(s);
  hLower(r);
  return r;
}

hstring UpperCase(std::u16string_view s) {
  hstring r(s);
  char16_t* p = r.UniqueData();
  for (size_t i = 0; i < s.size(); ++i)
    p[i] = CharUpper(p[i]);
  return r;
}

bool SameText(std::u16string_view a, std::u16string_view b) noexcept {
  if (a.size() != b.size())
    return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && CharLower(a[i]) != CharLower(b[i]))
      return false;
  return true;
}

int FindChar(char16_t c, std::u16string_view s, int StartPos) noexcept {
  size_t i = StartIndex(StartPos, s.size());
  if (i == kNone)
    return 0;
  size_t hit = s.find(c, i);
  return hit == std::u16string_view::npos ? 0 : static_cast<int>(hit) + 1;
}

int FindChar(char c, std::string_view s, int StartPos) noexcept {
  size_t i = StartIndex(StartPos, s.size());
  if (i == kNone)
    return 0;
  size_t hit = s.find(c, i);
  return hit == std::string_view::npos ? 0 : static_cast<int>(hit) + 1;
}

int Pos(std::u16string_view sub, std::u16string_view s, int Offset) noexcept {
  size_t i = StartIndex(Offset, s.size());
  if (sub.empty() || i == kNone)
    return 0;
  size_t hit = s.find(sub, i);
  return hit == std::u16string_view::npos ? 0 : static_cast<int>(hit) + 1;
}

int Pos(std::string_view sub, std::string_view s, int Offset) noexcept {
  size_t i = StartIndex(Offset, s.size());
  if (sub.empty() || i == kNone)
    return 0;
  size_t hit = s.find(sub, i);
  return hit == std::string_view::npos ? 0 : static_cast<int>(hit) + 1;
}

hstring Q_StrTok(hstring& s, std::u16string_view Delims, bool Flag) {
  if (s.empty() || Delims.empty())
    return hstring();
  const char16_t* p = s.c_str();
  size_t n = s.size();
  size_t i = 0;
  while (i < n && Delims.find(p[i]) != std::u16string_view::npos)
    ++i;
  hstring r;
  if (i == n) {
    if (!Flag)
      r = s;
    s.clear();
    return r;
  }
  size_t j = i;
  while (j < n && Delims.find(p[j]) == std::u16string_view::npos)
    ++j;
  if (Flag) {
    r = s.substr(i, j - i);
    s = j < n ? s.substr(j + 1) : hstring();
  } else {
    r = s.substr(0, j);
    s = s.substr(j);
  }
  return r;
}

bool StrIn(std::u16string_view s, std::initializer_list<std::u16string_view> list) noexcept {
  for (std::u16string_view e : list)
    if (e == s)
      return true;
  return false;
}

bool StrIn(std::u16string_view s, std::span<const hstring> list) noexcept {
  for (const hstring& e : list)
    if (e.view() == s)
      return true;
  return false;
}

bool AnsiStartsWith(std::u16string_view s, std::u16string_view prefix) noexcept {
  return !prefix.empty() && s.substr(0, prefix.size()) == prefix;
}

bool AnsiStartsWith(std::string_view s, std::string_view prefix) noexcept {
  return !prefix.empty() && s.substr(0, prefix.size()) == prefix;
}

bool AnsiEndsWith(std::u16string_view s, std::u16string_view suffix) noexcept {
  return s.size() >= suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

bool AnsiEndsWith(std::string_view s, std::string_view suffix) noexcept {
  return s.size() >= suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

bool BlankString(std::u16string_view s) noexcept {
  return std::all_of(s.begin(), s.end(), IsBlank<char16_t>);
}

bool BlankString(std::string_view s) noexcept { return std::all_of(s.begin(), s.end(), IsBlank<char>); }

bool BlankOrNBSP(std::u16string_view s) noexcept {
  for (char16_t c : s)
    if (c != u' ' && c != 0xA0 && c != u'\t' && c != u'\r' && c != u'\n')
      return false;
  return true;
}

void ReplaceChar(hstring& s, char16_t Old, char16_t New) {
  int at = FindChar(Old, s.view());
  if (at == 0)
    return;
  char16_t* p = s.UniqueData();
  for (size_t i = static_cast<size_t>(at) - 1, n = s.size(); i < n; ++i)
    if (p[i] == Old)
      p[i] = New;
}

hstring ReplaceStr(const hstring& s, std::u16string_view Search, std::u16string_view Replacement) {
  const size_t n = s.size();
  const size_t sl = Search.size();
  const size_t rl = Replacement.size();
  if (sl == 0 || n < sl)
    return s;
  if (sl == 1 && rl == 1) {
    hstring r = s;
    ReplaceChar(r, Search[0], Replacement[0]);
    return r;
  }
  std::u16string_view text = s.view();
  auto next = [&](size_t from) { return sl == 1 ? text.find(Search[0], from) : text.find(Search, from); };
  size_t hit = next(0);
  if (hit == std::u16string_view::npos)
    return s;
  // Sized for one replacement; grows by half (at most 65535 units) or by what
  // the next piece needs.
  hstring out;
  size_t cap = n - sl + rl;
  char16_t* o = out.SetLength(cap);
  size_t used = 0;
  auto ensure = [&](size_t need) {
    if (need <= cap)
      return;
    size_t grown = cap + std::min<size_t>(65535, cap / 2);
    cap = std::max(grown, need);
    o = out.SetLength(cap);
  };
  size_t from = 0;
  while (hit != std::u16string_view::npos) {
    size_t keep = hit - from;
    ensure(used + keep + rl);
    if (keep)
      std::memcpy(o + used, text.data() + from, keep * sizeof(char16_t));
    used += keep;
    if (rl)
      std::memcpy(o + used, Replacement.data(), rl * sizeof(char16_t));
    used += rl;
    from = hit + sl;
    hit = from < n ? next(from) : std::u16string_view::npos;
  }
  size_t tail = n - from;
  ensure(used + tail);
  if (tail)
    std::memcpy(o + used, text.data() + from, tail * sizeof(char16_t));
  used += tail;
  out.Truncate(used);
  return out;
}

void AddStr(hstring& s, const hstring& Value, std::u16string_view Separator) {
  if (s.empty()) {
    s = Value;
    return;
  }
  size_t old = s.size();
  char16_t* p = s.SetLength(old + Separator.size() + Value.size());
  std::memcpy(p + old, Separator.data(), Separator.size() * sizeof(char16_t));
  std::memcpy(p + old + Separator.size(), Value.c_str(), Value.size() * sizeof(char16_t));
}

hstring Copy(const hstring& s, int Index, int Count) { return CopyOf(s, Index, Count); }

RawByteString Copy(const RawByteString& s, int Index, int Count) { return CopyOf(s, Index, Count); }

hstring Trim(const hstring& s) {
  const char16_t* p = s.c_str();
  size_t b = 0, e = s.size();
  while (b < e && IsBlank(p[b]))
    ++b;
  while (e > b && IsBlank(p[e - 1]))
    --e;
  return s.substr(b, e - b);
}

hstring TrimLeft(const hstring& s) {
  const char16_t* p = s.c_str();
  size_t b = 0, e = s.size();
  while (b < e && IsBlank(p[b]))
    ++b;
  return s.substr(b);
}

hstring TrimRight(const hstring& s) {
  const char16_t* p = s.c_str();
  size_t e = s.size();
  while (e > 0 && IsBlank(p[e - 1]))
    --e;
  return s.substr(0, e);
}

hstring StringOfChar(char16_t c, int Count) {
  return Count > 0 ? hstring(static_cast<size_t>(Count), c) : hstring();
}

hstring IntToStr(int32_t Value) { return DecimalText(Value); }
hstring IntToStr(int64_t Value) { return DecimalText(Value); }
hstring IntToStr(uint32_t Value) { return DecimalText(Value); }
hstring IntToStr(uint64_t Value) { return DecimalText(Value); }

hstring IntToHex(int32_t Value, int Digits) { return HexText(static_cast<uint32_t>(Value), Digits); }
hstring IntToHex(int64_t Value, int Digits) { return HexText(static_cast<uint64_t>(Value), Digits); }
hstring IntToHex(uint32_t Value, int Digits) { return HexText(Value, Digits); }
hstring IntToHex(uint64_t Value, int Digits) { return HexText(Value, Digits); }

void FreeStringListObjects(TStringList& list) {
  for (int i = 0; i < list.Count(); ++i) {
    delete list.Objects(i);
    list.SetObject(i, nullptr);
  }
}

bool IsEnum(std::u16string_view s, PTypeInfo TypeInfo, int& Value) {
  return IsEnum2(u"", s, TypeInfo, Value);
}

bool IsEnum2(std::u16string_view Prefix, std::u16string_view s, PTypeInfo TypeInfo, int& Value) {
  Value = -1;
  if (!TypeInfo)
    return false;
  std::u16string name(Prefix);
  name.reserve(Prefix.size() + s.size());
  for (char16_t c : s)
    if (c != u'-')
      name += c;
  Value = TypeInfo->ValueOf(name);
  return Value >= 0;
}

} // namespace ht
