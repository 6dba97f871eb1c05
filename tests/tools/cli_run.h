// Runs the built htcore tool (path in HTCORE_TOOL) as a user would, with
// stdout and stderr kept apart.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace clirun {

struct TRun {
  int Status = -1;
  std::string Out, Err;
};

inline std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline std::string quote(const std::string& s) {
  std::string q = "'";
  for (char c : s)
    q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

inline const char* tool() { return std::getenv("HTCORE_TOOL"); }

#if defined(__SANITIZE_ADDRESS__)
#define HTCORE_CLI_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HTCORE_CLI_ASAN 1
#endif
#endif

// The tool runs with its memory capped, so that a regression on hostile input
// fails the test instead of exhausting the machine. The address sanitizer
// reserves far more address space than it uses: there the cap is on resident
// memory.
inline std::string limited(const std::string& command) {
#ifdef HTCORE_CLI_ASAN
  return "ASAN_OPTIONS=\"${ASAN_OPTIONS:+$ASAN_OPTIONS:}hard_rss_limit_mb=1024\" " + command;
#else
  return "ulimit -v 1048576; " + command;
#endif
}

// Runs `tool ARGS`, with Stdin piped in when given.
inline TRun run(const std::string& args, const std::string* stdin_text = nullptr) {
  // Named by process: test programs of several builds may run at once.
  std::string dir = ::testing::TempDir() + "htcore_cli_" + std::to_string(getpid());
  std::string out = dir + "_out", err = dir + "_err", in = dir + "_in";
  std::string cmd = limited(quote(tool()) + " " + args);
  if (stdin_text) {
    std::ofstream(in, std::ios::binary) << *stdin_text;
    cmd += " <" + quote(in);
  }
  cmd += " >" + quote(out) + " 2>" + quote(err);
  TRun r;
  int rc = std::system(cmd.c_str());
  r.Status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
  r.Out = slurp(out);
  r.Err = slurp(err);
  return r;
}

// Runs the shell command line `tool ARGS` (redirections allowed) and keeps
// its standard output only.
inline TRun RunTool(const std::string& args) {
  const char* t = tool();
  std::string cmd = limited(std::string(t ? t : "htcore") + " " + args);
  TRun r;
  FILE* p = popen(cmd.c_str(), "r");
  if (!p)
    return r;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0)
    r.Out.append(buf, n);
  int st = pclose(p);
  r.Status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
  return r;
}

inline int lines(const std::string& s) {
  int n = 0;
  for (char c : s)
    n += c == '\n';
  return n;
}

} // namespace clirun

using namespace clirun;
