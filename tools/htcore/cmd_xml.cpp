// htcore xml format|tojson FILE|-, htcore json toxml FILE|-
//
// XML is read strictly (a byte-order mark or the bytes decide the encoding),
// and refused when the tree would drop text or elements around the root;
// JSON becomes the same node tree, so the two commands are each other's way
// back. Output is UTF-8 with LF line ends.
#include "commands.h"
#include "htcore/document/json_reader.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/stream_types.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

namespace htcore_cli {

namespace {

// The library's longest string, in units; the indented form of a deeply
// nested document passes it long before memory runs out.
constexpr int64_t kStringLimit = 0x7FFFFFF0 / 2;

// The indentation alone of the indented form: two blanks a level before each
// start tag, and before each end tag of an element with children.
int64_t indentation(const ht::THtNode* root) {
  int64_t total = 0;
  int depth = 0, deepest = 1;
  const ht::THtNode* n = root;
  while (n) {
    if (const ht::THtNode* c = n->FirstChild()) {
      total += 4 * static_cast<int64_t>(depth);
      n = c;
      deepest = std::max(deepest, ++depth + 1);
      continue;
    }
    total += 2 * static_cast<int64_t>(depth);
    while (n != root && !n->FNextSibling) {
      n = n->FParent;
      --depth;
    }
    n = n == root ? nullptr : n->FNextSibling;
  }
  if (total > kStringLimit)
    throw std::runtime_error("the indented output of " + std::to_string(deepest) +
                             " nested elements passes the string length limit of " +
                             std::to_string(kStringLimit) + " characters");
  return total;
}

std::string formatted_xml(const ht::THtXMLNode& doc) {
  indentation(&doc);
  return UnixLines(std::string(doc.UTF8FormattedCode(true).view()));
}

// The writer leaves control characters other than BS, TAB, LF and CR as they
// are, inside strings, which no JSON reader accepts. Outside strings it
// writes only CR LF, which UnixLines has made LF.
std::string valid_json(std::string json) {
  std::string out;
  out.reserve(json.size());
  for (char c : json) {
    auto u = static_cast<unsigned char>(c);
    if (u < 0x20 && c != '\n') {
      char esc[8];
      std::snprintf(esc, sizeof esc, "\\u%04X", u);
      out += esc;
    } else {
      out += c;
    }
  }
  return out;
}

} // namespace

int CmdXml(int argc, char** argv) {
  if (argc != 2)
    return FailUsage("xml");
  std::string mode = argv[0];
  if (mode != "format" && mode != "tojson")
    return FailUsage("xml", "unknown xml command '" + mode + "'");
  std::string bytes;
  if (!ReadInput(argv[1], bytes))
    return 1;
  try {
    auto doc = ReadXml(bytes);
    if (mode == "format")
      return WriteOut(formatted_xml(*doc));
    return WriteOut(valid_json(UnixLines(doc->JSON().toUtf8())));
  } catch (const std::exception& e) {
    return Fail(std::string(argv[1]) + ": " + e.what());
  }
}

int CmdJson(int argc, char** argv) {
  if (argc != 2)
    return FailUsage("json");
  if (std::string(argv[0]) != "toxml")
    return FailUsage("json", "unknown json command '" + std::string(argv[0]) + "'");
  std::string bytes;
  if (!ReadInput(argv[1], bytes))
    return 1;
  try {
    // UTF-8 (the usual case) is read as bytes, without a UTF-16 copy.
    std::string_view utf8;
    auto doc = Utf8OfBytes(bytes, utf8) ? ht::JSONUtf8toXMLNode(utf8)
                                        : ht::THtXMLNode::CreatefromJSON(TextOfBytes(bytes));
    return WriteOut(formatted_xml(*doc));
  } catch (const std::exception& e) {
    return Fail(std::string(argv[1]) + ": " + e.what());
  }
}

} // namespace htcore_cli
