// htcore: command-line front end of the library.
#include "commands.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

void Usage(FILE* out) {
  std::fputs("usage: htcore COMMAND [ARGS]\n"
             "commands:\n",
             out);
  for (const htcore_cli::Command& c : htcore_cli::Commands())
    std::fprintf(out, "  %-28s %s\n", c.usage, c.help);
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h")) {
    Usage(argc < 2 ? stderr : stdout);
    return argc < 2 ? 1 : 0;
  }
  // A two-word name ("xml text") wins over a one-word group of the same first word.
  if (argc >= 3) {
    std::string two = std::string(argv[1]) + " " + argv[2];
    for (const htcore_cli::Command& c : htcore_cli::Commands())
      if (c.name == two)
        return c.run(argc - 3, argv + 3);
  }
  for (const htcore_cli::Command& c : htcore_cli::Commands()) {
    if (c.name == std::string(argv[1]))
      return c.run(argc - 2, argv + 2);
  }
  std::fprintf(stderr, "htcore: unknown command '%s'\n", argv[1]);
  Usage(stderr);
  return 1;
}
