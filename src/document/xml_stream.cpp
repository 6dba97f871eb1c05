// Streams and files into THtXMLNode trees.
#include "htcore/document/xml_node.h"
#include "htcore/foundation/codepage.h"
#include "htcore/foundation/stream_types.h"

#include <cstring>
#include <string_view>
#include <vector>

namespace ht {

namespace {

hstring utf16_text(const uint8_t* p, size_t n) {
  hstring s;
  size_t units = n / 2;
  if (units == 0)
    return s;
  char16_t* d = s.SetLength(units);
  std::memcpy(d, p, units * 2); // little-endian units, as the files are written
  return s;
}

} // namespace

hstring StreamtoText(TStream& AStream, THtmlEncoding AEncoding) {
  int64_t start = AStream.GetPosition();
  int64_t size = AStream.GetSize() - start;
  uint8_t head[3];
  if (size < 3 || AStream.Read(head, 3) < 3)
    throw EHtXML(std::string_view("Cannot load empty stream"));
  std::vector<uint8_t> bytes(static_cast<size_t>(size));
  std::memcpy(bytes.data(), head, 3);
  AStream.ReadBuffer(bytes.data() + 3, size - 3);
  const uint8_t* p = bytes.data();
  size_t n = bytes.size();
  bool utf8_mark = p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF;
  if (AEncoding == heUTF8 || utf8_mark) {
    size_t skip = utf8_mark ? 3 : 0;
    return Utf8ToHString(std::string_view(reinterpret_cast<const char*>(p) + skip, n - skip));
  }
  // Both marks: the units behind them are taken as they are, without swapping.
  if ((p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF))
    return utf16_text(p + 2, n - 2);
  if (AEncoding == heUTF16 || p[0] == 0)
    return utf16_text(p, n);
  std::string_view narrow(reinterpret_cast<const char*>(p), n);
  if (IsUTF8Bytes(p, static_cast<int>(n)))
    return Utf8ToHString(narrow);
  return HtCodePageToUnicode(narrow, CP_ACP);
}

void THtXMLNode::LoadFromStream(TStream& AStream, THtmlEncoding AEncoding, bool IsJSON) {
  hstring text = StreamtoText(AStream, AEncoding);
  if (IsJSON)
    SetJSON(text);
  else
    SetXML(text);
}

void THtXMLNode::LoadFromFile(const hstring& FileName, THtmlEncoding Encoding) {
  TFileStream f(FileName, fmOpenRead | fmShareDenyWrite);
  LoadFromStream(f, Encoding, false);
}

std::unique_ptr<THtXMLNode> THtXMLNode::CreateFromStream(TStream& AStream, THtmlEncoding AEncoding,
                                                         bool IsJSON) {
  auto n = std::make_unique<THtXMLNode>();
  n->LoadFromStream(AStream, AEncoding, IsJSON);
  return n;
}

std::unique_ptr<THtXMLNode> THtXMLNode::CreateFromFile(const hstring& FileName, THtmlEncoding Encoding) {
  auto n = std::make_unique<THtXMLNode>();
  n->LoadFromFile(FileName, Encoding);
  return n;
}

} // namespace ht
