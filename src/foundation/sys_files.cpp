#include "foundation/sys_files.h"

#include <cstring>

namespace ht::detail {

std::string SysErrorText(int error) {
  char buf[256];
  // The GNU strerror_r may return a static text instead of filling buf.
#if defined(__GLIBC__) && defined(_GNU_SOURCE)
  return strerror_r(error, buf, sizeof buf);
#else
  if (strerror_r(error, buf, sizeof buf) != 0)
    return "Unknown error " + std::to_string(error);
  return buf;
#endif
}

hstring WithSysError(std::string_view message, int error) {
  std::string text(message);
  text += ' ';
  text += SysErrorText(error);
  return Utf8ToHString(text);
}

int64_t SeekTarget(int64_t position, int64_t size, int64_t offset, TSeekOrigin origin) {
  int64_t base = origin == soBeginning ? 0 : origin == soCurrent ? position : size;
  int64_t target;
  if (__builtin_add_overflow(base, offset, &target) || target < 0)
    throw EStreamError(std::string_view("Invalid stream position"));
  return target;
}

} // namespace ht::detail
