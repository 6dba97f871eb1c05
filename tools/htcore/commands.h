// Sub-commands of the htcore tool. Each group lives in its own cmd_*.cpp and
// is listed once in commands.cpp.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace ht {
class THtXMLNode;
}

namespace htcore_cli {

struct Command {
  const char* name;   // first word on the command line, or the first two ("xml text")
  const char* usage;  // shown in the help
  const char* help;
  int (*run)(int argc, char** argv); // arguments after the command word
};

const std::vector<Command>& Commands();

// Reads a whole file, or standard input for "-". Prints one line to stderr and
// returns false when it cannot.
bool ReadInput(const char* name, std::string& bytes);

// Writes text to standard output with a final line break; 1 when that fails.
int WriteOut(std::string text);

// The library ends lines with CR LF; a terminal wants LF.
std::string UnixLines(std::string text);

// Prints "htcore: MESSAGE" on stderr and returns 1, for `return Fail(...)`.
int Fail(const std::string& message);

// XML bytes (BOM, declaration or the bytes decide the encoding) into a tree;
// raises the reader's exceptions.
std::unique_ptr<ht::THtXMLNode> ReadXml(const std::string& bytes);

int CmdVersion(int argc, char** argv);
int CmdTokens(int argc, char** argv);
int CmdXmlText(int argc, char** argv);
int CmdRender(int argc, char** argv);
// html text|format|compact FILE|-
int CmdHtml(int argc, char** argv);
// xml format|tojson FILE|-
int CmdXml(int argc, char** argv);
// json toxml FILE|-
int CmdJson(int argc, char** argv);
// xpath [--xml] [--value] FILE PATH
int CmdXPath(int argc, char** argv);
// css format|minify|dark|selectors FILE|-
int CmdCss(int argc, char** argv);

} // namespace htcore_cli
