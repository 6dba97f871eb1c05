// Arbitrary text into the JSON tokenizer and the name/value reader: only the
// documented parse errors may come out, tokens tile the text without gaps or
// overlaps, and tokens other than strings keep their source text.
#include "htcore/document/json_parser.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

void check_tokens(const ht::hstring& text) {
  ht::THtJSONTokenizer t(text);
  int last_end = t.Parser.Pos() - 1;
  try {
    while (t.NextToken()) {
      if (t.TokenStart != last_end || t.TokenEnd <= t.TokenStart || t.TokenEnd > text.Length())
        __builtin_trap();
      last_end = t.TokenEnd;
      std::u16string_view src(text.c_str() + t.TokenStart, static_cast<size_t>(t.TokenEnd - t.TokenStart));
      switch (t.TokenType) {
      case ht::jtString:
        if (src.find(u'\\') == src.npos && t.Token.view() != src.substr(1, src.size() - 2))
          __builtin_trap();
        break;
      case ht::jtIdent:
      case ht::jtValue:
      case ht::jtUnknown:
      case ht::jtInt:
      case ht::jtFloat:
        if (t.Token.view() != src)
          __builtin_trap();
        break;
      case ht::jtSpace:
        // An unknown token that starts with "/" may be a comment.
        break;
      default:
        if (src.size() != 1)
          __builtin_trap();
      }
      if (t.TokenType == ht::jtUnknown && src[0] == u'/' && t.ReadComment()) {
        if (t.TokenType != ht::jtComment || t.TokenStart != last_end - static_cast<int>(src.size()))
          __builtin_trap();
        last_end = t.TokenEnd;
        // CR and LF behind the comment are consumed without a token.
        last_end = t.Parser.Pos() - 1;
      }
    }
    if (last_end != text.Length())
      __builtin_trap();
  } catch (const ht::EHtParserError&) {
  }
}

void check_pairs(const ht::hstring& text) {
  ht::THtJSONParser jp(text);
  if (!jp.Tokenizer)
    return;
  try {
    // Reads a flat run of pairs: name: value, name: value ...
    while (jp.Tokenizer->NextNSToken()) {
      if (jp.Tokenizer->TokenType == ht::jtComma || jp.Tokenizer->TokenType == ht::jtObjectStart)
        continue;
      ht::THtJSONTokenType r = jp.NextNameValue();
      if (r == ht::jtString || r == ht::jtValue)
        __builtin_trap();
      if (jp.Names.Get(jp.Name) == nullptr && !jp.Name.empty())
        __builtin_trap();
    }
  } catch (const ht::EHtParserError&) {
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  ht::hstring utf8 = ht::hstring::FromUtf8(bytes);
  check_tokens(utf8);
  check_pairs(utf8);
  std::u16string wide(size / 2, u'\0');
  for (size_t i = 0; i < wide.size(); ++i)
    wide[i] = static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8);
  check_tokens(ht::hstring(wide));
  return 0;
}
