// The "include" function and the directory that confines it.
#include "htcore/document/html_parser.h"
#include "htcore/foundation/codepage.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/files.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/templates/template.h"
#include "htcore/templates/template_functions.h"
#include "templates/template_internal.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <system_error>

namespace ht {

namespace fs = std::filesystem;

namespace {

std::mutex g_base_lock;
hstring g_base;

// Resolves links and "..", also for a file that does not exist yet.
fs::path canonical_of(const fs::path& p) {
  std::error_code ec;
  fs::path r = fs::weakly_canonical(p, ec);
  if (ec)
    r = p.lexically_normal();
  // "/a/b/" has an empty last element that would spoil the prefix test.
  if (!r.has_filename() && r.has_parent_path() && r != r.root_path())
    r = r.parent_path();
  return r;
}

} // namespace

void SetHtTemplateIncludeBase(const hstring& Dir) {
  std::lock_guard<std::mutex> g(g_base_lock);
  g_base = Dir;
}

hstring GetHtTemplateIncludeBase() {
  std::lock_guard<std::mutex> g(g_base_lock);
  return g_base;
}

hstring HtTemplateIncludePath(const hstring& Path, const hstring& Base) {
  hstring p = Trim(Path);
  if (p.empty() || Base.empty())
    return p;
  std::error_code ec;
  fs::path base = fs::absolute(fs::path(Base.toUtf8()), ec);
  if (ec)
    return hstring();
  base = canonical_of(base);
  fs::path given(p.toUtf8());
  fs::path target = canonical_of(given.is_absolute() ? given : base / given);
  auto [b, t] = std::mismatch(base.begin(), base.end(), target.begin(), target.end());
  if (b != base.end() || t == target.end())
    return hstring();
  return hstring::FromUtf8(target.string());
}

namespace detail {

hstring DecodeTemplateBytes(const RawByteString& Bytes) {
  std::string_view b = Bytes.view();
  if (b.size() >= 3 && b.substr(0, 3) == "\xEF\xBB\xBF")
    return Utf8ToHString(b.substr(3));
  if (b.size() >= 2 && ((b[0] == '\xFF' && b[1] == '\xFE') || (b[0] == '\xFE' && b[1] == '\xFF'))) {
    bool le = b[0] == '\xFF';
    size_t n = (b.size() - 2) / 2;
    hstring s;
    char16_t* d = s.SetLength(n);
    for (size_t i = 0; i < n; ++i) {
      auto lo = static_cast<unsigned char>(b[2 + 2 * i + (le ? 0 : 1)]);
      auto hi = static_cast<unsigned char>(b[2 + 2 * i + (le ? 1 : 0)]);
      d[i] = static_cast<char16_t>(lo | hi << 8);
    }
    return s;
  }
  if (IsUTF8Bytes(b.data(), static_cast<int>(b.size())))
    return Utf8ToHString(b);
  return HtCodePageToUnicode(b, CP_ACP);
}

void TemplateInclude(const hstring& Path, hstring& Result) {
  const THtTemplateContext* c = HtCurrentTemplateContext();
  hstring base = c ? c->IncludeBase : GetHtTemplateIncludeBase();
  Result = hstring();
  hstring file = HtTemplateIncludePath(Path, base);
  if (file.empty())
    return;
  try {
    Result = DecodeTemplateBytes(FileToStrR(file));
  } catch (const Exception&) {
    // A missing file includes nothing, like any unknown name.
  }
}

} // namespace detail

} // namespace ht
