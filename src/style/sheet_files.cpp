#include "htcore/style/sheet_files.h"

#include <cstdio>
#include <string>

namespace ht {

hstring HtLocalSheetLoader(const hstring& URL) {
  std::string path = URL.toUtf8();
  if (path.empty() || path.find(':') != std::string::npos)
    return hstring();
  FILE* f = std::fopen(path.c_str(), "rb");
  if (!f)
    return hstring();
  std::string text;
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
    text.append(buf, n);
  std::fclose(f);
  return hstring::FromUtf8(text);
}

} // namespace ht
