#include "commands.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

namespace htcore_cli {

const std::vector<Command>& Commands() {
  static const std::vector<Command> list = {
      {"version", "version", "print the library version", CmdVersion},
      {"tokens", "tokens FILE|-", "HTML item stream (tags, text, blocks), one a line", CmdTokens},
  };
  return list;
}

bool ReadInput(const char* name, std::string& bytes) {
  if (std::strcmp(name, "-") == 0) {
    std::ostringstream ss;
    ss << std::cin.rdbuf();
    bytes = ss.str();
    return true;
  }
  std::ifstream in(name, std::ios::binary);
  if (!in) {
    Fail(std::string("cannot open '") + name + "': " + std::strerror(errno));
    return false;
  }
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  if (in.bad()) {
    Fail(std::string("cannot read '") + name + "'");
    return false;
  }
  return true;
}

int Fail(const std::string& message) {
  std::fprintf(stderr, "htcore: %s\n", message.c_str());
  return 1;
}

int CmdVersion(int, char**) {
  std::puts("htcore 0.1.0");
  return 0;
}

}  // namespace htcore_cli
