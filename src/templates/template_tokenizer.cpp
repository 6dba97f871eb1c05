#include "htcore/templates/template_parser.h"

namespace ht {

namespace {

// Case-insensitive (ASCII) match of lower-case Lower at p; the text is
// NUL-terminated, so a mismatch stops the walk at its end.
bool starts_with_lower(const char16_t* p, std::u16string_view Lower) {
  for (char16_t c : Lower) {
    char16_t u = *p++;
    if (u >= u'A' && u <= u'Z')
      u = static_cast<char16_t>(u + 32);
    if (u != c)
      return false;
  }
  return true;
}

bool starts_with(const char16_t* p, std::u16string_view s) {
  for (char16_t c : s)
    if (*p++ != c)
      return false;
  return true;
}

} // namespace

THtTemplateTokenizer::THtTemplateTokenizer(const hstring& Text, bool AProcessScript)
    : ProcessScript(AProcessScript) {
  Init(Text);
}

void THtTemplateTokenizer::Init(const hstring& Text) {
  SP.Init(Text);
  Token = THtTemplateToken();
  Empty = SP.Empty();
}

bool THtTemplateTokenizer::AtBlockStart(const char16_t* p) const {
  if (p[0] != u'<')
    return false;
  if (starts_with(p, u"<template-"))
    return true;
  return !ProcessScript && starts_with_lower(p, u"<script");
}

// A protected block runs from its start tag through the matching end tag and
// is kept whole, tags included, as one text.
void THtTemplateTokenizer::ReadBlock() {
  const char16_t* p = SP.p;
  const char16_t* end = SP.pend;
  const char16_t* q = p + 1;
  while (q<end&& * q> u' ' && *q != u'>')
    ++q;
  std::u16string_view tag(p + 1, static_cast<size_t>(q - p - 1));
  bool script = !starts_with(p, u"<template-");
  for (; q < end; ++q) {
    if (q[0] != u'<' || q[1] != u'/')
      continue;
    bool hit = true;
    for (size_t i = 0; i < tag.size() && hit; ++i) {
      char16_t a = q[2 + i], b = tag[i];
      if (script) {
        a = a >= u'A' && a <= u'Z' ? static_cast<char16_t>(a + 32) : a;
        b = b >= u'A' && b <= u'Z' ? static_cast<char16_t>(b + 32) : b;
      }
      hit = a == b;
    }
    if (!hit)
      continue;
    q += 2 + tag.size();
    while (q < end && *q != u'>')
      ++q;
    if (q < end)
      ++q;
    break;
  }
  Token.Kind = ttkTemplate;
  Token.Name = hstring(p, static_cast<size_t>(q - p));
  SP.p = q;
}

bool THtTemplateTokenizer::NextToken() {
  const char16_t* p = SP.p;
  const char16_t* end = SP.pend;
  if (p >= end) {
    Empty = true;
    return false;
  }
  const char16_t* base = SP.Start();
  Token.StartPos = static_cast<int>(p - base) + 1;
  if (p[0] == u'{' && p[1] == u'{') {
    bool html = p[2] == u'{';
    const char16_t* q = p + (html ? 3 : 2);
    const char16_t* name = q;
    while (q < end && *q != u'}')
      ++q;
    Token.Kind = html ? ttkVarHTML : ttkVariable;
    Token.Name = hstring(name, static_cast<size_t>(q - name));
    // The closing units are taken on trust, whatever they are.
    for (int i = html ? 3 : 2; i > 0 && q < end; --i)
      ++q;
    SP.p = q;
  } else if (AtBlockStart(p)) {
    ReadBlock();
  } else {
    const char16_t* q = p + 1;
    while (q < end && !(q[0] == u'{' && q[1] == u'{') && !AtBlockStart(q))
      ++q;
    Token.Kind = ttkText;
    Token.Name = hstring(p, static_cast<size_t>(q - p));
    SP.p = q;
  }
  Token.EndPos = static_cast<int>(SP.p - base) + 1;
  Empty = SP.p >= end;
  return true;
}

} // namespace ht
