// Builds against the installed package only.
#include <cstdio>
#include <htcore/foundation/hstring.h>

int main() {
  ht::hstring s = ht::hstring(u"consumer ") + ht::hstring("ok");
  std::puts(s.toUtf8().c_str());
  return s.size() == 11 ? 0 : 1;
}
