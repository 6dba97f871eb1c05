// The template language's reader: tokens and the item tree.
//
// THtTemplateTokenizer cuts a template into `{{name}}`, `{{{name}}}`, plain
// text, and protected blocks (`<template-x>...</template-x>` and, unless
// ProcessScript is set, `<script>...</script>`) whose "{{" is left alone.
// THtTemplateItem::Parse turns one token into an item, and ParseTemplateItems
// links the items into a tree, sections holding their children:
//
//   ht::THtTemplateItemArena arena;
//   ht::THtTemplateTokenizer tk(u"{{#rows}}<b>{{name}}</b>{{/rows}}"_hs);
//   ht::THtTemplateItem* first = ht::ParseTemplateItems(tk, arena);
//   // first: tiSection "rows" -> Items: tiText "<b>", tiVariable "name", tiText "</b>"
//
// Reading never fails: an unterminated tag runs to the end of the text, and a
// section without its "{{/name}}" takes everything behind it. The tree is
// built without recursion, so any nesting depth that fits in memory is read.
#pragma once

#include "htcore/document/string_parser.h"
#include "htcore/foundation/hstring.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

namespace ht {

enum THtTemplateTokenKind { ttkVariable, ttkVarHTML, ttkText, ttkTemplate };

struct THtTemplateToken {
  THtTemplateTokenKind Kind = ttkText;
  hstring Name;     // the name between the braces, or the text itself
  int StartPos = 0; // 1-based position of the token's first unit
  int EndPos = 0;   // 1-based position of the unit behind the token
};

class THtTemplateTokenizer {
public:
  explicit THtTemplateTokenizer(const hstring& Text = hstring(), bool AProcessScript = false);
  THtTemplateTokenizer(const THtTemplateTokenizer&) = delete;
  THtTemplateTokenizer& operator=(const THtTemplateTokenizer&) = delete;

  // Restarts on a new text.
  void Init(const hstring& Text);
  // Reads the next token into Token; false (and Empty set) at the end.
  bool NextToken();

  TStringParser SP;
  THtTemplateToken Token;
  bool Empty = true;
  // When false, "{{" inside <script> blocks is text.
  bool ProcessScript = false;

private:
  bool AtBlockStart(const char16_t* p) const;
  void ReadBlock();
};

// The text function behind a section like "{{#upper}}...{{/upper}}": it gets
// the rendered children and gives the text to write.
using THtTemplateFunction = std::function<void(const hstring& AText, hstring& AResult)>;

// A variable or section name taken apart once when the template is read, so
// rendering cuts no strings. Filled by CompileTemplateName.
struct THtTemplateName {
  enum TKind : uint8_t { tnPath, tnPass, tnIndex, tnSelf, tnTag };
  TKind Kind = tnPath;
  bool Simple = false;        // no '.' in the name: it may name a variable
  bool NumberFormat = false;  // Format is a number pattern (else a date pattern)
  int Up = 0;                 // context levels to climb first ("..name")
  uint32_t Hash = 0;          // of the whole name, for variable lookups
  hstring Pass;               // tnPass: the text written for a second pass
  hstring Format;             // the "(format)" behind the name, without brackets
  std::vector<hstring> Steps; // the path; the last step gives the value
  hstring Attr;               // the last step "@name": the attribute name
  bool LastPath = false;      // the last step holds a '/': a path query
  // Section lists.
  std::vector<hstring> SectionSteps; // the name split at every '.'
  hstring PathBase, PathRest;        // a name with '/': base before, path behind
  hstring UpdateVar;                 // a name with '(': the variable before it
  bool HasSlash = false;
  bool HasParen = false;
};

void CompileTemplateName(const hstring& Name, THtTemplateName& Result);

enum THtTemplateItemKind { tiSection, tiVariable, tiText, tiComment };

struct THtTemplateItem {
  THtTemplateItemKind Kind = tiSection;
  bool Escape = false;              // a variable is encoded on output
  bool Inverted = false;            // a section is taken when its test fails
  bool Nested = false;              // the variable's value is itself a variable name
  bool NonEmpty = false;            // a section is a plain test for a non-empty value
  hstring Name;                     // variable or section name, or the text of tiText
  THtTemplateFunction func;         // section function, or empty
  THtTemplateItem* Items = nullptr; // first child
  THtTemplateItem* Next = nullptr;  // next sibling
  THtTemplateName Lookup;           // Name taken apart (variables and sections)

  // Fills this item from a token. A section's children are linked by the
  // caller (ParseTemplateItems).
  void Parse(const THtTemplateToken& Token);
  // True for a section that takes children: every section but "{{}}".
  bool OpensBlock() const noexcept { return Kind == tiSection && !Name.empty(); }
};

// Owns the items of one template. They are freed all at once with the arena,
// which keeps deep trees from recursing in destructors.
class THtTemplateItemArena {
public:
  THtTemplateItem* New() { return &FItems.emplace_back(); }
  size_t Count() const noexcept { return FItems.size(); }
  void Clear() { FItems.clear(); }

private:
  std::deque<THtTemplateItem> FItems;
};

// Reads all tokens of Tokenizer into a tree; answers the first top-level item
// (null for an empty text). A section ends at "{{/" + its name + "}}" exactly;
// any other closing tag is an ordinary variable.
THtTemplateItem* ParseTemplateItems(THtTemplateTokenizer& Tokenizer, THtTemplateItemArena& Arena);

} // namespace ht
