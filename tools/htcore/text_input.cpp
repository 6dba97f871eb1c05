// Input bytes of the data commands: UTF-16 in either byte order (the library
// takes UTF-16 units in machine order only), UTF-8, and the check that an XML
// document holds nothing besides its root element that the tree would drop.
#include "commands.h"
#include "htcore/document/html_parser.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/stream_types.h"
#include "htcore/foundation/utf8.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace htcore_cli {

TUtf16Order Utf16Order(std::string_view head, size_t& mark) {
  auto at = [&](size_t i) { return i < head.size() ? static_cast<unsigned char>(head[i]) : 0x100u; };
  mark = 0;
  if ((at(0) == 0 && at(1) == 0 && at(2) == 0xFE && at(3) == 0xFF) ||
      (at(0) == 0xFF && at(1) == 0xFE && at(2) == 0 && at(3) == 0))
    throw std::runtime_error("UTF-32 input is not supported; convert it to UTF-8 first");
  if (at(0) == 0xFE && at(1) == 0xFF) {
    mark = 2;
    return uoBig;
  }
  if (at(0) == 0xFF && at(1) == 0xFE) {
    mark = 2;
    return uoLittle;
  }
  // Without a mark, an XML document starts with '<' (or a blank) as one unit.
  if (at(0) == 0 && at(1) != 0 && at(1) < 0x80)
    return uoBig;
  if (at(0) != 0 && at(0) < 0x80 && at(1) == 0)
    return uoLittle;
  return uoNone;
}

ht::hstring Utf16Text(std::string_view bytes, TUtf16Order order) {
  ht::hstring s;
  size_t units = (bytes.size() + 1) / 2;
  if (units == 0)
    return s;
  char16_t* d = s.SetLength(units);
  const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
  for (size_t i = 0; i + 1 < bytes.size(); i += 2)
    d[i / 2] = static_cast<char16_t>(order == uoBig ? b[i] << 8 | b[i + 1] : b[i + 1] << 8 | b[i]);
  if (bytes.size() % 2)
    d[units - 1] = 0xFFFD; // half a unit at the end
  return s;
}

bool Utf8OfBytes(std::string_view bytes, std::string_view& utf8) {
  size_t mark;
  if (Utf16Order(bytes, mark) != uoNone)
    return false;
  utf8 = bytes.substr(0, 3) == "\xEF\xBB\xBF" ? bytes.substr(3) : bytes;
  return true;
}

ht::hstring TextOfBytes(std::string_view bytes) {
  std::string_view utf8;
  if (Utf8OfBytes(bytes, utf8))
    return ht::Utf8ToHString(utf8);
  size_t mark;
  TUtf16Order order = Utf16Order(bytes, mark);
  return Utf16Text(bytes.substr(mark), order);
}

TUtf8Stream::TUtf8Stream(ht::TStream& source) : FSource(source) {
  // The order is read from the first bytes, which stay to be delivered.
  char head[4];
  int64_t n = 0;
  while (n < 4) {
    int64_t got = FSource.Read(head + n, 4 - n);
    if (got <= 0)
      break;
    n += got;
  }
  size_t mark;
  FOrder = Utf16Order(std::string_view(head, static_cast<size_t>(n)), mark);
  FRaw.assign(head + mark, static_cast<size_t>(n) - mark);
  if (FOrder == uoNone)
    FOut.swap(FRaw);
}

int64_t TUtf8Stream::Read(void* buffer, int64_t count) {
  while (FAt == FOut.size() && !FEnd) {
    FOut.clear();
    FAt = 0;
    Refill();
  }
  size_t n = std::min(static_cast<size_t>(count), FOut.size() - FAt);
  std::memcpy(buffer, FOut.data() + FAt, n);
  FAt += n;
  return static_cast<int64_t>(n);
}

void TUtf8Stream::Refill() {
  char chunk[65536];
  int64_t got = FSource.Read(chunk, sizeof chunk);
  if (got <= 0) {
    FEnd = true;
    if (FOrder == uoNone)
      return;
  } else if (FOrder == uoNone) {
    FOut.assign(chunk, static_cast<size_t>(got));
    return;
  } else {
    FRaw.append(chunk, static_cast<size_t>(got));
  }
  // Whole units only; a high surrogate waits for its partner unless the
  // input has ended.
  size_t whole = FEnd ? FRaw.size() : FRaw.size() / 2 * 2;
  ht::hstring units = Utf16Text(std::string_view(FRaw).substr(0, whole), FOrder);
  size_t keep = 0;
  if (!FEnd && !units.empty() && units[units.size() - 1] >= 0xD800 && units[units.size() - 1] < 0xDC00)
    keep = 1;
  auto text = ht::HtUTF8Encode(units.view().substr(0, units.size() - keep));
  FOut.append(text.data(), text.size());
  FRaw.erase(0, whole - 2 * keep);
}

namespace {

std::string snippet(const ht::hstring& text) {
  std::string s = text.toUtf8();
  for (char& c : s)
    if (static_cast<unsigned char>(c) < 32)
      c = ' ';
  if (s.size() > 40)
    s = s.substr(0, 37) + "...";
  return "'" + s + "'";
}

// What the tree reader drops silently: it takes the first element and leaves
// out text and elements around it. Comments, processing instructions and the
// document type outside the root are not content, and are let go.
std::string outside_root(const ht::hstring& xml) {
  ht::THtmlParser hp(xml, true);
  hp.SetCaseSensitive(true);
  int depth = 0;
  bool seen_root = false;
  while (hp.NextItem()) {
    if (hp.Tag.empty() && (hp.TagType == ht::htString || hp.TagType == ht::htCData)) {
      bool blank = true;
      for (char16_t c : hp.Value.view())
        blank = blank && c <= u' ';
      if (!blank && depth == 0)
        return std::string("text ") + (seen_root ? "after" : "before") +
               " the root element: " + snippet(hp.Value);
    }
    if (hp.TagType != ht::htIdent || hp.Tag.empty())
      continue;
    if (hp.IsCloseTag) {
      if (--depth < 0)
        return "an end tag </" + hp.Tag.toUtf8() + "> outside the root element";
      continue;
    }
    if (depth == 0 && seen_root)
      return "a second root element <" + hp.Tag.toUtf8() + ">";
    seen_root = true;
    if (!hp.TagClosed)
      ++depth;
  }
  return {};
}

} // namespace

std::unique_ptr<ht::THtXMLNode> ReadXml(const std::string& bytes) {
  size_t mark;
  std::unique_ptr<ht::THtXMLNode> doc;
  ht::hstring text;
  if (TUtf16Order order = Utf16Order(bytes, mark); order != uoNone) {
    text = Utf16Text(std::string_view(bytes).substr(mark), order);
    doc = std::make_unique<ht::THtXMLNode>();
    doc->SetXML(text);
  } else {
    ht::TPointerStream in(bytes.data(), static_cast<int64_t>(bytes.size()));
    doc = ht::THtXMLNode::CreateFromStream(in);
    ht::TPointerStream again(bytes.data(), static_cast<int64_t>(bytes.size()));
    text = ht::StreamtoText(again, ht::heDefault);
  }
  if (std::string dropped = outside_root(text); !dropped.empty())
    throw std::runtime_error("not one XML document: " + dropped);
  return doc;
}

} // namespace htcore_cli
