#include "htcore/document/doctype.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace ht {

bool HtDoctypeQuirks(std::string_view Bytes) {
  std::string head(Bytes.substr(0, std::min<size_t>(Bytes.size(), 2048)));
  for (char& c : head)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  size_t at = head.find("<!doctype");
  if (at == std::string::npos)
    return true;
  size_t end = head.find('>', at);
  std::string dt = head.substr(at, end == std::string::npos ? std::string::npos : end - at);
  bool legacy = dt.find("transitional") != std::string::npos || dt.find("frameset") != std::string::npos ||
                dt.find("html 3") != std::string::npos || dt.find("html 2") != std::string::npos;
  return legacy && dt.find("http") == std::string::npos;
}

} // namespace ht
