// The HTML tree builder: one activation of InternalParse per open element,
// with fixed repair rules for bad nesting.
#include "document/html_tag_sets.h"
#include "document/node_codepage.h"
#include "document/tag_name_table.h"
#include "htcore/document/html_node.h"
#include "htcore/document/html_parser.h"
#include "htcore/foundation/text_utils.h"

#include <climits>
#include <string>

namespace ht {

using namespace detail;

namespace {

constexpr int kMaxDepth = 256;
constexpr uint32_t kTableSections = Bit(tiTable) | Bit(tiThead) | Bit(tiTbody);

const hstring& TagTr() {
  static const hstring s(u"tr");
  return s;
}

// The limit itself may match: what closes then is one of its children, never
// the limit, so a parse cannot end itself early.
THtNode* up_to(THtNode* self, uint32_t ids, THtNode* limit) {
  THtNode* prev = nullptr;
  for (THtNode* n = self; n; prev = n, n = n->FParent) {
    if (ids & Bit(HtmlTagInfo(n).Id))
      return prev;
    if (n == limit)
      break;
  }
  return nullptr;
}

THtNode* up_over(THtNode* self, uint32_t ids, bool ignore_barrier, THtNode* limit) {
  for (THtNode* n = self; n && n != limit; n = n->FParent) {
    THtmlTagInfo info = HtmlTagInfo(n);
    if (!ignore_barrier && (info.Sets & tsTableBarrier))
      return nullptr;
    if (ids & Bit(info.Id))
      return n;
  }
  return nullptr;
}

// One name's test: cheaper than the table look-up of HtmlTagInfo.
bool TagIs(const THtNode* n, std::u16string_view lower) { return SameAsciiLower(n->FTag.view(), lower); }

bool TagIn(const THtNode* n, std::initializer_list<std::u16string_view> tags) {
  for (std::u16string_view t : tags)
    if (n->FTag.view() == t)
      return true;
  return false;
}

// A new child of `parent` of the class the tree chooses for `name`. Elements
// must be HTML nodes to be built; a class that is not one is dropped.
THtNode* NewChild(THtmlNode* self, THtNode* parent, THtmlParser& HP, const hstring& name) {
  return parent->InternalAddChild(self->GetElementClass(name, HP.GlobalRoot));
}

// The node as an HTML node, or null; plain THtmlNode nodes, most of a tree,
// are told by their class without a dynamic cast.
THtmlNode* AsHtmlNode(THtNode* n) {
  static const THtNodeClass plain = NodeClass<THtmlNode>();
  return n->ClassType() == plain ? static_cast<THtmlNode*>(n) : dynamic_cast<THtmlNode*>(n);
}

THtmlNode* NewElement(THtmlNode* self, THtNode* parent, THtmlParser& HP, const hstring& name) {
  THtNode* n = NewChild(self, parent, HP, name);
  if (!n)
    return nullptr;
  if (auto* h = AsHtmlNode(n))
    return h;
  parent->DeleteChild(n);
  return nullptr;
}

// The parser's list of formatting elements closed early by a misnested end tag.
int StackCount(THtmlParser& HP) { return HP.IncorrectStack.Count(); }
THtNode* StackItem(THtmlParser& HP, int i) { return static_cast<THtNode*>(HP.IncorrectStack.Get(i)); }
void StackDelete(THtmlParser& HP, int i) { HP.IncorrectStack.Delete(i); }
void StackPush(THtmlParser& HP, THtNode* n) { HP.IncorrectStack.Add(n); }

// The parser's count of open elements by tag. Unequal tags may share a slot,
// which only makes a close tag take the walk up the tree for nothing.
size_t open_slot(const hstring& tag) {
  uint32_t h = 2166136261u;
  for (char16_t c : tag.view())
    h = (h ^ c) * 16777619u;
  return (h ^ h >> 16) & 255;
}

// Counts an element as open for as long as its activation (or, for the row of
// the p repair, its inner element's) runs.
class TOpenTag {
public:
  TOpenTag(THtmlParser& HP, const hstring& tag) : FCount(HP.OpenTags[open_slot(tag)]) { ++FCount; }
  ~TOpenTag() { --FCount; }
  TOpenTag(const TOpenTag&) = delete;
  TOpenTag& operator=(const TOpenTag&) = delete;

private:
  int& FCount;
};

// Moves a node to the end of new_parent's children.
void MoveToEnd(THtNode* n, THtNode* new_parent) {
  n->FParent->FNodes->RemoveItem(n);
  new_parent->GetNodes()->Add(n);
  n->FParent = new_parent;
}

} // namespace

THtNode* THtmlNode::FloatUpTo(std::initializer_list<std::u16string_view> Tags, THtNode* Limit) {
  THtNode* prev = nullptr;
  for (THtNode* n = this; n; prev = n, n = n->FParent) {
    if (TagIn(n, Tags))
      return prev;
    if (n == Limit)
      break;
  }
  return nullptr;
}

THtNode* THtmlNode::FloatUpOver(std::initializer_list<std::u16string_view> Tags, bool IgnoreBarrier,
                                THtNode* Limit) {
  for (THtNode* n = this; n && n != Limit; n = n->FParent) {
    if (!IgnoreBarrier && (HtmlTagInfo(n).Sets & tsTableBarrier))
      return nullptr;
    if (TagIn(n, Tags))
      return n;
  }
  return nullptr;
}

THtNode* THtmlNode::CheckTagOrder(const hstring& ATag, THtNode* Limit) {
  THtmlTagInfo tag = HtmlTagInfo(ATag.view());
  if (TagIs(this, u"tr") && !(tag.Sets & tsRowContent))
    return up_over(this, Bit(tiTable), true, Limit);
  if (!ATag.empty() && ATag[0] == u't') {
    switch (tag.Id) {
    case tiThead:
    case tiTbody:
      return up_to(this, Bit(tiTable), Limit);
    case tiTr: {
      constexpr uint32_t sections = Bit(tiThead) | Bit(tiTbody) | Bit(tiTfoot) | Bit(tiTable);
      THtNode* r = up_to(this, sections, Limit);
      if (r || (sections & Bit(HtmlTagInfo(this).Id)))
        return r;
      return up_over(this, Bit(tiTr), true, Limit);
    }
    case tiTd:
    case tiTh:
      return up_to(this, Bit(tiTr), Limit);
    case tiTable:
      return TagIs(this, u"table") ? up_over(this, Bit(tiTable), true, Limit) : nullptr;
    default:
      return nullptr; // tfoot, textarea, ... imply no end
    }
  }
  switch (tag.Id) {
  case tiLi:
    return up_to(this, Bit(tiUl) | Bit(tiOl), Limit);
  case tiDt:
    return up_to(this, Bit(tiDl), Limit);
  case tiDd:
    if (THtNode* r = up_to(this, Bit(tiDl), Limit))
      return r;
    return up_over(this, Bit(tiDd), false, Limit);
  case tiBody:
    return up_over(this, Bit(tiHead), false, Limit);
  case tiA:
    return up_over(this, Bit(tiA), false, Limit); // anchors never nest
  default:
    break;
  }
  if (TagIs(this, u"head") && !(tag.Sets & tsHead))
    return up_over(this, Bit(tiHead), false, Limit);
  if (tag.Sets & tsBlock)
    return up_over(this, Bit(tiP), false, Limit);
  return nullptr;
}

THtNode* THtmlNode::InternalParse(THtmlParser& HP) {
  ++HP.FStackLevel; // the caller takes it back
  THtNode* result = nullptr;
  if (!HP.RepeatCurrent) {
    if (!HP.Tag.empty() && FTag.empty())
      SetTag(HP.Tag);
    TagType = HP.TagType;
    ParseAttributes(HP);
    if (HP.TagClosed)
      return nullptr;
  }
  TOpenTag open(HP, FTag);
  const THtmlTagInfo self = HtmlTagInfo(this); // the tag stays for the whole activation

  for (;;) {
    if (!HP.NextItem()) {
      AfterParse();
      return result;
    }

    if (HP.IsCloseTag) {
      if (HP.Tag == FTag)
        break;
      for (int i = StackCount(HP) - 1; i >= 0; --i)
        if (StackItem(HP, i)->FTag == HP.Tag)
          StackDelete(HP, i);
      // Most stray end tags name nothing open at all.
      if (HP.OpenTags[open_slot(HP.Tag)] == 0)
        continue;
      THtmlTagInfo tag = HtmlTagInfo(HP.Tag.view());
      const int noted = StackCount(HP);
      constexpr uint32_t cells = Bit(tiTr) | Bit(tiTd) | Bit(tiTh);
      constexpr uint32_t table_tags = Bit(tiTable) | cells;
      THtNode* p = this;
      bool found = false;
      while (p) {
        THtmlTagInfo pi = HtmlTagInfo(p);
        if ((Bit(tag.Id) & (cells | Bit(tiP))) && pi.Id == tiTable)
          break;
        if (!(Bit(tag.Id) & table_tags) && (Bit(pi.Id) & table_tags))
          break;
        if (tag.Id == tiSpan && pi.Id == tiDiv)
          break;
        if (pi.Id == tiBody || pi.Id == tiHtml)
          break;
        // The top of this parse is never closed from inside, so that inner
        // HTML cannot end its own container.
        if (p == HP.Root)
          break;
        if (tag.Id == tiTable) {
          if (pi.Id == tiTr && p->FParent)
            p = p->FParent;
          if (HtmlTagInfo(p).Id == tiTbody && p->FParent)
            p = p->FParent;
        }
        if (p->FTag == HP.Tag) {
          found = true;
          break;
        }
        if (HtmlTagInfo(p).Sets & tsFormatting)
          StackPush(HP, p);
        p = p->FParent;
      }
      if (found) {
        AfterParse();
        return p;
      }
      while (StackCount(HP) > noted)
        StackDelete(HP, StackCount(HP) - 1);
      continue; // a stray end tag is ignored
    }

    // An open item. Formatting elements closed early reopen first, outermost first.
    bool reopened = false;
    while (StackCount(HP) > 0 && !reopened) {
      THtNode* entry = StackItem(HP, StackCount(HP) - 1);
      THtmlNode* child = NewElement(this, this, HP, entry->FTag);
      if (child) {
        HP.RepeatCurrent = true;
        child->SetTag(entry->FTag);
        child->TagType = htIdent;
        child->CopyAttributesFrom(entry);
      }
      StackDelete(HP, StackCount(HP) - 1);
      if (child) {
        result = child->InternalParse(HP);
        --HP.FStackLevel;
        reopened = true;
      }
    }

    if (!reopened) {
      switch (HP.TagType) {
      case htScript:
      case htStyle:
        if (THtmlNode* c = NewElement(this, this, HP, HP.Tag)) {
          c->SetTag(HP.Tag);
          c->TagType = HP.TagType;
          c->FContent = HP.Value;
          c->ParseAttributes(HP);
        }
        continue;
      case htComment:
      case htDirective: {
        static const hstring comment(u"!"), directive(u"?");
        const hstring& name = HP.TagType == htComment ? comment : directive;
        if (THtmlNode* c = NewElement(this, this, HP, name)) {
          c->TagType = HP.TagType;
          c->FContent = HP.Value;
          c->SetTag(name);
          c->ParseAttributes(HP);
        }
        continue;
      }
      case htCData: {
        static const hstring cdata(u"!");
        if (THtNode* c = NewChild(this, this, HP, cdata)) {
          c->TagType = htCData;
          c->FContent = HP.Value;
        }
        continue;
      }
      case htIdent:
      case htString:
        break;
      default:
        continue; // a doctype and the like leave no node
      }

      THtmlTagInfo tag;
      bool handled = false;
      if (!HP.Tag.empty()) {
        tag = HtmlTagInfo(HP.Tag.view());
        if (tag.Sets & tsVoid) {
          HP.TagClosed = true;
        } else if ((kTableSections & Bit(self.Id)) && (tag.Id == tiTd || tag.Id == tiTh)) {
          // A cell straight in a table gets a row; no tbody is ever invented.
          THtmlNode* tr = NewElement(this, this, HP, TagTr());
          if (!tr)
            continue;
          tr->SetTag(TagTr());
          tr->TagType = htIdent;
          HP.RepeatCurrent = true;
          result = tr->InternalParse(HP);
          --HP.FStackLevel;
          handled = true;
        } else if ((kTableSections & Bit(self.Id)) && tag.Id == tiP && HP.FStackLevel >= kMaxDepth) {
          // The row made below has no activation of its own, so the depth
          // limit would hand the item straight back to this table, again and
          // again: here the limit applies to the table itself.
          HP.RepeatCurrent = true;
          return FParent;
        } else if ((kTableSections & Bit(self.Id)) && tag.Id == tiP) {
          // The inner element is a td by class and a tr by name; readers of
          // such trees rely on this shape.
          THtmlNode* tr = NewElement(this, this, HP, TagTr());
          if (!tr)
            continue;
          tr->SetTag(TagTr());
          tr->TagType = htIdent;
          static const hstring td(u"td");
          THtmlNode* inner = NewElement(this, tr, HP, td);
          if (!inner)
            continue;
          inner->SetTag(TagTr());
          inner->TagType = htIdent;
          HP.RepeatCurrent = true;
          {
            TOpenTag row(HP, tr->FTag);
            result = inner->InternalParse(HP);
          }
          --HP.FStackLevel;
          // Closing the inner element offers the item to the row, which has no
          // activation: this table takes it, as for the row itself.
          if (result == inner)
            result = tr;
          handled = true;
        } else {
          THtNode* r = nullptr;
          THtNode* limit = HP.Root;
          if (tag.Id == tiTd) {
            r = up_to(this, Bit(tiTr), limit);
          } else if (tag.Id == tiTr && self.Id == tiTr) {
            r = up_over(this, Bit(tiTr), true, limit);
          } else if (self.Id == tiTr && (Bit(tag.Id) & (Bit(tiP) | Bit(tiSpan) | Bit(tiUl) | Bit(tiDiv)))) {
            // Block content in a row goes into the row's last cell.
            THtmlNode* cell = nullptr;
            for (int i = GetCount() - 1; i >= 0 && !cell; --i) {
              THtNode* c = FNodes->GetNode(i);
              THtmlTagInfo ci = HtmlTagInfo(c);
              if (ci.Id == tiTd || ci.Id == tiTh)
                cell = dynamic_cast<THtmlNode*>(c);
            }
            if (cell) {
              HP.RepeatCurrent = true;
              result = cell->InternalParse(HP);
              --HP.FStackLevel;
              // No result rule here: the row takes the item again, unless the
              // row itself is to close (the depth limit in the cell says so),
              // which would send the item back into the same cell forever.
              if (result != this)
                continue;
              AfterParse();
              return result;
            }
          } else {
            r = CheckTagOrder(HP.Tag, limit);
          }
          // The only depth limit: deeper elements are put higher up.
          if (!r && HP.FStackLevel > kMaxDepth)
            r = FParent;
          if (r) {
            HP.RepeatCurrent = true;
            return r;
          }
        }
      }

      if (!handled) {
        // The child step. Content closed at once in a tbody leaves the table
        // and stands just before it.
        THtNode* parent = this;
        bool before_table = false;
        if (HP.TagClosed && !HP.Tag.empty() && self.Id == tiTbody && tag.Id != tiTr && FParent &&
            FParent->FParent) {
          parent = FParent->FParent;
          before_table = true;
        }
        THtNode* child = NewChild(this, parent, HP, HP.Tag);
        if (!child)
          continue;
        if (before_table) {
          THtNodeList* list = parent->FNodes;
          if (list->GetCount() >= 2)
            list->Move(list->GetCount() - 1, list->GetCount() - 2);
        }
        if (HP.TagType == htString) {
          child->SetContent(HP.Value);
          continue;
        }
        auto* element = AsHtmlNode(child);
        if (!element) {
          parent->DeleteChild(child);
          continue;
        }
        element->SetTag(HP.Tag);
        result = element->InternalParse(HP);
        --HP.FStackLevel;
      }
    }

    // The result rule.
    if (!result)
      continue;
    if (result->FParent == this) {
      result = nullptr; // the child was closed; this node takes the offered item
      continue;
    }
    AfterParse();
    return result;
  }

  // A matching end tag: repair the surroundings.
  for (int i = StackCount(HP) - 1; i >= 0; --i)
    if (StackItem(HP, i)->HasAsParent(this))
      StackDelete(HP, i);
  if (FParent && TagIs(FParent, u"table") && FParent->FParent && !(self.Sets & tsTableParts)) {
    // Content parsed inside a table moves behind it.
    MoveToEnd(this, FParent->FParent);
  } else if (FParent && TagIs(FParent, u"tr") && self.Id != tiTd && self.Id != tiTh) {
    THtNode* table = FParent;
    while (table && HtmlTagInfo(table).Id != tiTable)
      table = table->FParent;
    if (table && table->FParent)
      MoveToEnd(this, table->FParent);
  }
  AfterParse();
  return result;
}

void THtmlNode::ParseAttributes(THtmlParser& HP) {
  if (!HP.Attributes || HP.Attributes->Count == 0)
    return;
  delete FAttributes;
  FAttributes = HP.Attributes.release();
}

void THtmlNode::ParseAttributes(const hstring& s) {
  THtmlParser HP(u"<x "_hs + s + u"/>", false);
  HP.NextItem();
  ParseAttributes(HP);
}

namespace {

// The whole of a parse into `root`, whose children are gone already.
void BuildTree(THtmlNode& root, THtmlParser& HP) {
  HP.Root = &root;
  HP.GlobalRoot = &root;
  root.InternalParse(HP);
  if (!root.FParent && !root.FindNode(u"body") && !root.FindNode(u"html")) {
    root.SetTag(u"body");
    root.TagType = htIdent;
  }
}

} // namespace

void THtmlNode::Parse(const hstring& HTML, bool AIgnoreMetaEncoding) {
  TNodePoolScope pool;
  DeleteAllChildren();
  THtmlParser HP(HTML, false);
  HP.IgnoreMetaEncoding = AIgnoreMetaEncoding;
  BuildTree(*this, HP);
}

void THtmlNode::SetInnerHTML(const hstring& Value) {
  TNodePoolScope pool;
  DeleteAllChildren();
  static const hstring div(u"div");
  THtNode* made = AddChild(GetElementClass(div, nullptr));
  auto* temp = dynamic_cast<THtmlNode*>(made);
  if (!temp) {
    if (made)
      DeleteChild(made);
    return;
  }
  bool table = HtmlTagInfo(this).Id == tiTable;
  hstring text = table ? u"<tbody>"_hs + Value + u"</tbody>" : u"<div>"_hs + Value + u"</div>";
  THtmlParser HP(text, false);
  HP.Root = temp;
  auto* root = dynamic_cast<THtmlNode*>(Root());
  HP.GlobalRoot = root;
  HP.SetCaseSensitive(root ? !root->QuirksMode() : false);
  HP.NextItem();
  temp->InternalParse(HP);
  temp->MoveChildrentoParent(true);
  DeleteChild(temp);
}

void THtmlNode::SetOuterHTML(const hstring& Value) {
  TNodePoolScope pool;
  DeleteAllChildren();
  delete FAttributes;
  FAttributes = nullptr;
  THtmlParser HP(Value, false);
  HP.Root = this;
  HP.GlobalRoot = dynamic_cast<THtmlNode*>(Root());
  bool have = false;
  while (!have && HP.NextItem())
    have = HP.TagType != htCustom && !(HP.TagType == htString && BlankString(HP.Value.view()));
  SetTag(hstring());
  if (have)
    InternalParse(HP);
}

THtmlNode* THtmlNode::AddHTML(const hstring& HTML) {
  static const hstring div(u"div");
  THtNode* made = AddChild(GetElementClass(div, nullptr));
  auto* temp = dynamic_cast<THtmlNode*>(made);
  if (!temp) {
    if (made)
      DeleteChild(made);
    return nullptr;
  }
  temp->Parse(HTML, false);
  auto* first = dynamic_cast<THtmlNode*>(temp->FirstChild());
  temp->MoveChildrentoParent(true);
  DeleteChild(temp);
  return first;
}

namespace {

hstring Utf16Bytes(const unsigned char* p, size_t len, bool big_endian) {
  hstring s;
  char16_t* out = s.SetLength(len / 2);
  for (size_t i = 0; i < len / 2; ++i)
    out[i] = big_endian ? static_cast<char16_t>(p[2 * i] << 8 | p[2 * i + 1])
                        : static_cast<char16_t>(p[2 * i + 1] << 8 | p[2 * i]);
  return s;
}

// UTF-8 is read a window at a time, without a UTF-16 copy of the whole
// input; the tree is the one Parse(Utf8ToHString(bytes), true) builds.
void parse_utf8(THtmlNode& root, std::string_view bytes) {
  // What the text parser takes for a byte order mark read in code page 1251
  // recodes the rest of the text as a whole: that stays with it.
  if (bytes.starts_with("\xD0\xBF\xC2\xBB\xD1\x97")) {
    root.Parse(DecodeCodePage(bytes.data(), bytes.size(), kCodePageUtf8), true);
    return;
  }
  TNodePoolScope pool;
  root.DeleteAllChildren();
  THtmlParser HP(bytes);
  HP.IgnoreMetaEncoding = true;
  BuildTree(root, HP);
}

} // namespace

void THtmlNode::ParseBytes(const void* Data, size_t Len) {
  const auto* p = static_cast<const unsigned char*>(Data);
  const char* bytes = static_cast<const char*>(Data);
  if (Len >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF) {
    parse_utf8(*this, std::string_view(bytes + 3, Len - 3));
    return;
  }
  if (Len >= 2 && ((p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF))) {
    Parse(Utf16Bytes(p + 2, Len - 2, p[0] == 0xFE), true);
    return;
  }
  // Text decoded here must not be decoded again by a meta charset.
  int scan = Len > INT_MAX ? INT_MAX : static_cast<int>(Len);
  int codepage = GetHTMLEncoding(p, scan);
  if (!codepage && IsUTF8Bytes(p, scan))
    codepage = kCodePageUtf8;
  if (codepage == kCodePageUtf8) {
    parse_utf8(*this, std::string_view(bytes, Len));
    return;
  }
  if (codepage) {
    Parse(DecodeCodePage(bytes, Len, codepage), true);
    return;
  }
  Parse(DecodeCodePage(bytes, Len, 0), false);
}

} // namespace ht
