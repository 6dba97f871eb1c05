// UTF-8 in, UTF-16 out, and back: never a crash, and valid text round-trips.
#include "htcore/foundation/hstring.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view in(reinterpret_cast<const char*>(data), size);
  ht::hstring h = ht::Utf8ToHString(in);
  std::string back = h.toUtf8();
  ht::hstring again = ht::Utf8ToHString(back);
  if (again != h)
    __builtin_trap();
  return 0;
}
