// Streams and files into THtXMLNode trees.
#include "htcore/document/json_reader.h"
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

// Both marks: the units behind them are taken as they are, without swapping.
bool utf16_marked(const uint8_t* p) { return (p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF); }

// A whole stream's bytes, and whether they are read as UTF-8 (from Skip on).
struct TStreamBytes {
  std::vector<uint8_t> Bytes;
  bool Utf8 = false;
  size_t Skip = 0;
  std::string_view Utf8Text() const {
    return std::string_view(reinterpret_cast<const char*>(Bytes.data()) + Skip, Bytes.size() - Skip);
  }
};

TStreamBytes read_stream(TStream& AStream, THtmlEncoding AEncoding) {
  int64_t start = AStream.GetPosition();
  int64_t size = AStream.GetSize() - start;
  uint8_t head[3];
  if (size < 3 || AStream.Read(head, 3) < 3)
    throw EHtXML(std::string_view("Cannot load empty stream"));
  TStreamBytes r;
  r.Bytes.resize(static_cast<size_t>(size));
  std::memcpy(r.Bytes.data(), head, 3);
  AStream.ReadBuffer(r.Bytes.data() + 3, size - 3);
  const uint8_t* p = r.Bytes.data();
  bool utf8_mark = p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF;
  if (AEncoding == heUTF8 || utf8_mark) {
    r.Utf8 = true;
    r.Skip = utf8_mark ? 3 : 0;
  } else if (!utf16_marked(p) && AEncoding != heUTF16 && p[0] != 0) {
    r.Utf8 = IsUTF8Bytes(p, static_cast<int>(r.Bytes.size()));
  }
  return r;
}

hstring decode(const TStreamBytes& r, THtmlEncoding AEncoding) {
  if (r.Utf8)
    return Utf8ToHString(r.Utf8Text());
  const uint8_t* p = r.Bytes.data();
  size_t n = r.Bytes.size();
  if (utf16_marked(p))
    return utf16_text(p + 2, n - 2);
  if (AEncoding == heUTF16 || p[0] == 0)
    return utf16_text(p, n);
  return HtCodePageToUnicode(std::string_view(reinterpret_cast<const char*>(p), n), CP_ACP);
}

} // namespace

hstring StreamtoText(TStream& AStream, THtmlEncoding AEncoding) {
  return decode(read_stream(AStream, AEncoding), AEncoding);
}

void THtXMLNode::LoadFromStream(TStream& AStream, THtmlEncoding AEncoding, bool IsJSON) {
  TStreamBytes bytes = read_stream(AStream, AEncoding);
  // UTF-8 is read from the bytes, without a decoded copy of the whole.
  if (bytes.Utf8) {
    if (IsJSON)
      SetJSONUtf8(*this, bytes.Utf8Text());
    else
      SetUTF8XML(bytes.Utf8Text());
    return;
  }
  hstring text = decode(bytes, AEncoding);
  bytes.Bytes = {};
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
