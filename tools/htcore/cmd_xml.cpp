// htcore xml format|tojson FILE|-, htcore json toxml FILE|-
//
// XML is read strictly (a byte-order mark or the bytes decide the encoding);
// JSON becomes the same node tree, so the two commands are each other's way
// back. Output is UTF-8 with LF line ends.
#include "commands.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/stream_types.h"

#include <exception>
#include <memory>
#include <string>

namespace htcore_cli {

std::unique_ptr<ht::THtXMLNode> ReadXml(const std::string& bytes) {
  ht::TPointerStream in(bytes.data(), static_cast<int64_t>(bytes.size()));
  return ht::THtXMLNode::CreateFromStream(in);
}

namespace {

std::string formatted_xml(const ht::THtXMLNode& doc) {
  return UnixLines(std::string(doc.UTF8FormattedCode(true).view()));
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
    return WriteOut(UnixLines(doc->JSON().toUtf8()));
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
    auto doc = ht::THtXMLNode::CreatefromJSON(ht::hstring::FromUtf8(bytes));
    return WriteOut(formatted_xml(*doc));
  } catch (const std::exception& e) {
    return Fail(std::string(argv[1]) + ": " + e.what());
  }
}

} // namespace htcore_cli
