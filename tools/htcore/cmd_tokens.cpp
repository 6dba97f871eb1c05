// htcore tokens: the item stream of the HTML reader, one item a line.
#include "commands.h"
#include "htcore/document/html_parser.h"
#include "htcore/foundation/codepage.h"

#include <cstdio>
#include <string>

namespace htcore_cli {

namespace {

// Bytes of unknown encoding to text: byte-order mark, a UTF-8 declaration or a
// UTF-8 check; anything else goes in through the system code page, and the
// reader re-decodes the rest itself when it meets a meta charset.
ht::hstring DecodeHtml(const std::string& bytes) {
  if (bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
    return ht::Utf8ToHString(std::string_view(bytes).substr(3));
  size_t mark;
  if (TUtf16Order order = Utf16Order(bytes, mark); order != uoNone)
    return Utf16Text(std::string_view(bytes).substr(mark), order);
  int len = static_cast<int>(bytes.size());
  int cp = ht::GetHTMLEncoding(bytes.data(), len);
  if (cp == 65001 || (cp == 0 && ht::IsUTF8Bytes(bytes.data(), len)))
    return ht::Utf8ToHString(bytes);
  return ht::HtCodePageToUnicode(bytes, 0);
}

// Control characters and line breaks made visible, so one item stays on one line.
std::string Quote(const ht::hstring& s) {
  std::string out = "\"";
  for (char c : s.toUtf8()) {
    switch (c) {
    case '\n':
      out += "\\n";
      break;
    case '\r':
      out += "\\r";
      break;
    case '\t':
      out += "\\t";
      break;
    case '"':
      out += "\\\"";
      break;
    case '\\':
      out += "\\\\";
      break;
    default:
      out += c;
    }
  }
  return out + "\"";
}

const char* KindName(ht::THTMLTokenType t) {
  switch (t) {
  case ht::htString:
    return "text";
  case ht::htScript:
    return "script";
  case ht::htStyle:
    return "style";
  case ht::htComment:
    return "comment";
  case ht::htDirective:
    return "directive";
  case ht::htCData:
    return "cdata";
  case ht::htCustom:
    return "custom";
  default:
    return "item";
  }
}

} // namespace

int CmdTokens(int argc, char** argv) {
  if (argc != 1)
    return FailUsage("tokens");
  std::string bytes;
  if (!ReadInput(argv[0], bytes))
    return 1;
  ht::THtmlParser hp(DecodeHtml(bytes));
  std::string line;
  while (hp.NextItem()) {
    line.clear();
    // Tag items keep the text of the item before them in Value; only blocks own it.
    bool block = hp.TagType != ht::htIdent;
    if (!hp.Tag.empty()) {
      line.append(hp.IsCloseTag ? "</" : "<").append(hp.Tag.toUtf8());
      if (hp.Attributes)
        for (const ht::THtAttribute& a : *hp.Attributes)
          line.append(" ").append(a.Name.toUtf8()).append("=").append(Quote(a.Value));
      line.append(hp.TagClosed && !hp.IsCloseTag ? "/>" : ">");
      if (block)
        line.append(" ").append(KindName(hp.TagType)).append(" ").append(Quote(hp.Value));
    } else {
      line.append(KindName(hp.TagType)).append(" ").append(Quote(hp.Value));
    }
    line += '\n';
    Emit(line);
  }
  return 0;
}

} // namespace htcore_cli
