// htcore: command-line front end of the library.
#include "commands.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace {

using htcore_cli::Command;
using htcore_cli::Commands;

// Usages longer than this put their summary on the next line.
constexpr size_t kUsageColumn = 36;

void Usage(FILE* out) {
  std::fputs("usage: htcore COMMAND [ARGS]\n"
             "       htcore COMMAND --help | htcore --help | htcore --version\n"
             "\n"
             "commands:\n",
             out);
  size_t width = 0;
  for (const Command& c : Commands())
    if (std::strlen(c.usage) <= kUsageColumn)
      width = std::max(width, std::strlen(c.usage));
  for (const Command& c : Commands()) {
    int w = static_cast<int>(width);
    if (std::strlen(c.usage) > width)
      std::fprintf(out, "  %s\n  %-*s  %s\n", c.usage, w, "", c.summary);
    else
      std::fprintf(out, "  %-*s  %s\n", w, c.usage, c.summary);
  }
}

void Help(const Command& c) {
  std::printf("usage: htcore %s\n\n", c.usage);
  if (c.help)
    std::fputs(c.help, stdout);
  else
    std::printf("%s.\n", c.summary);
  // A group names its two-word commands ("xml" lists "xml text").
  std::string_view name = c.name;
  bool first = true;
  for (const Command& o : Commands()) {
    std::string_view n = o.name;
    if (&o != &c && n.size() > name.size() && n.substr(0, name.size()) == name && n[name.size()] == ' ') {
      std::printf("%s  htcore %s\n", first ? "\nsee also:\n" : "", o.usage);
      first = false;
    }
  }
}

const Command* Find(int argc, char** argv) {
  // A two-word name ("xml text") wins over a one-word group of the same first word.
  if (argc >= 3) {
    std::string two = std::string(argv[1]) + " " + argv[2];
    for (const Command& c : Commands())
      if (c.name == two)
        return &c;
  }
  for (const Command& c : Commands())
    if (c.name == std::string_view(argv[1]))
      return &c;
  return nullptr;
}

int Dispatch(int argc, char** argv) {
  if (argc < 2) {
    Usage(stderr);
    return 1;
  }
  std::string_view first = argv[1];
  if (htcore_cli::IsHelpOption(argv[1]) || (first == "help" && argc == 2)) {
    Usage(stdout);
    return 0;
  }
  if (first == "--version")
    return htcore_cli::CmdVersion(0, nullptr);
  bool help = first == "help";
  if (help) {
    ++argv;
    --argc;
  }
  const Command* c = Find(argc, argv);
  if (!c) {
    std::fprintf(stderr, "htcore: unknown command '%s'\n", argv[1]);
    Usage(stderr);
    return 1;
  }
  int skip = std::strchr(c->name, ' ') ? 3 : 2;
  for (int i = skip; i < argc && !help; ++i)
    help = htcore_cli::IsHelpOption(argv[i]);
  if (help) {
    Help(*c);
    return 0;
  }
  return c->run(argc - skip, argv + skip);
}

} // namespace

int main(int argc, char** argv) {
  int status;
  try {
    status = Dispatch(argc, argv);
  } catch (const htcore_cli::TOutputError& e) {
    return htcore_cli::Fail(e.what());
  } catch (const std::bad_alloc&) {
    return htcore_cli::Fail("out of memory");
  } catch (const std::exception& e) {
    return htcore_cli::Fail(e.what());
  }
  // Output still buffered, or a failure a command did not see, must not end in
  // success: a full disk loses the document.
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    int err = errno;
    htcore_cli::Fail(htcore_cli::TOutputError(err).what());
    return 1;
  }
  return status;
}
