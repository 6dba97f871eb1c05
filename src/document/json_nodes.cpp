// JSON into THtXMLNode trees and back out.
#include "document/json_fast_reader.h"
#include "document/node_walk.h"
#include "document/xml_reader_internal.h"
#include "htcore/document/json_reader.h"
#include "htcore/document/xml_node.h"

#include <string_view>
#include <typeinfo>
#include <vector>

namespace ht {

namespace {

constexpr int kMaxJSONDepth = 1024;

const hstring& tag_array() {
  static const hstring s(u"array");
  return s;
}
const hstring& tag_object() {
  static const hstring s(u"object");
  return s;
}
const hstring& tag_value() {
  static const hstring s(u"value");
  return s;
}

[[noreturn]] void json_error(std::string_view msg) { throw EHtJSONParserException(msg); }
[[noreturn]] void token_expected() { json_error("Incorrect JSON, token expected."); }

bool is_scalar(THtJSONTokenType t) {
  return t == jtString || t == jtValue || t == jtInt || t == jtFloat || t == jtIdent;
}

// Moves to the next token that is not space; a missing one is an error.
void next_required(THtJSONTokenizer& t) {
  if (!t.NextNSToken())
    token_expected();
}

// Reads what follows a complete JSON value at the top: nothing, space and
// comments. Returns false at the end, true on a comma.
bool after_value(THtJSONTokenizer& t) {
  while (t.NextToken()) {
    switch (t.TokenType) {
    case jtSpace:
    case jtComment:
      break;
    case jtComma:
      return true;
    case jtUnknown:
      if (t.ReadComment())
        break;
      [[fallthrough]];
    default:
      json_error("JSON is not terminated properly");
    }
  }
  return false;
}

// The direct readers fill a new node of this very class.
bool takes_direct_reader(const THtXMLNode& n) {
  return typeid(n) == typeid(THtXMLNode) && n.FTag.empty() && !n.FNodes && !n.FAttributes && n.FContent.empty() &&
         !n.IsArray;
}

} // namespace

std::unique_ptr<THtXMLNode> THtXMLNode::CreatefromJSON(const hstring& JSON) {
  auto n = std::make_unique<THtXMLNode>();
  n->SetJSON(JSON);
  return n;
}

std::unique_ptr<THtXMLNode> JSONUtf8toXMLNode(std::string_view Utf8) {
  auto n = std::make_unique<THtXMLNode>();
  SetJSONUtf8(*n, Utf8);
  return n;
}

void SetJSONUtf8(THtXMLNode& Node, std::string_view Utf8) {
  if (takes_direct_reader(Node) && !Utf8.empty()) {
    TNodePoolScope pool;
    THTMLTokenType type = Node.TagType;
    if (detail::ReadJSONFastUtf8(Node, Utf8))
      return;
    Node.TagType = type;
  }
  // What the byte reader leaves (errors among them) goes the usual way.
  Node.SetJSON(Utf8ToHString(Utf8));
}

void THtXMLNode::SetJSON(const hstring& JSON) {
  TNodePoolScope pool;
  if (takes_direct_reader(*this) && !JSON.empty()) {
    THTMLTokenType type = TagType;
    if (detail::ReadJSONFast(*this, JSON))
      return;
    TagType = type;
  }
  THtJSONParser jp(JSON);
  if (!jp.Tokenizer)
    json_error("JSON is empty");
  THtJSONTokenizer& t = *jp.Tokenizer;
  next_required(t);
  ParseJSON(jp);
  if (!after_value(t))
    return;
  // Concatenated objects: what was read so far becomes the first of them.
  THtNode* root = Root();
  THtXMLNode* first = MakeNode(root, FTag);
  first->TagType = TagType;
  first->IsArray = IsArray;
  first->FContent = std::move(FContent);
  std::swap(first->FAttributes, FAttributes);
  if (FNodes) {
    std::vector<THtNode*> moved(FNodes->begin(), FNodes->end());
    FNodes->ClearNoFree();
    for (THtNode* c : moved) {
      first->GetNodes()->Add(c);
      c->FParent = first;
    }
  }
  GetNodes()->Add(first);
  first->FParent = this;
  SetTag(tag_array());
  TagType = htIdent;
  IsArray = true;
  do {
    next_required(t);
    if (t.TokenType != jtObjectStart)
      token_expected();
    NewChild(root, tag_object())->ParseJSON(jp);
  } while (after_value(t));
}

void THtXMLNode::ParseJSON(THtJSONParser& HP) {
  THtJSONTokenizer& t = *HP.Tokenizer;
  IsArray = t.TokenType == jtArrayStart;
  if (is_scalar(t.TokenType)) {
    SetValue(t.Token);
    return;
  }
  if (t.TokenType != jtObjectStart && !IsArray)
    token_expected();
  next_required(t);
  if (++HP.Depth > kMaxJSONDepth)
    json_error("JSON contains too many nested nodes");
  THtNode* root = Root();
  if (IsArray) {
    if (FTag.empty()) {
      SetTag(tag_array());
      TagType = htIdent;
    }
    while (t.TokenType != jtArrayEnd) {
      switch (t.TokenType) {
      case jtString:
      case jtValue:
      case jtInt:
      case jtFloat:
        NewChild(root, tag_value())->SetValue(t.Token);
        break;
      case jtObjectStart:
        NewChild(root, tag_object())->ParseJSON(HP);
        break;
      case jtArrayStart:
        NewChild(root, tag_array())->ParseJSON(HP);
        break;
      default:
        token_expected();
      }
      next_required(t);
      if (t.TokenType == jtComma) {
        next_required(t);
        if (t.TokenType == jtArrayEnd)
          token_expected();
      } else if (t.TokenType != jtArrayEnd) {
        token_expected();
      }
    }
  } else {
    if (FTag.empty()) {
      SetTag(tag_object());
      TagType = htIdent;
    }
    // The scalars go into the set once the object ends (or fails), in one
    // sort; an empty string is a value too, and a repeated key replaces.
    THtAttributeBatch scalars;
    auto flush = [&] {
      if (!scalars.Empty()) {
        CreateAttributes();
        scalars.MoveTo(*FAttributes);
      }
    };
    try {
      while (t.TokenType != jtObjectEnd) {
        THtJSONTokenType kind = HP.NextNameValue();
        if (kind == jtObjectStart || kind == jtArrayStart) {
          NewChild(root, HP.Name)->ParseJSON(HP);
        } else {
          if (HP.Name.empty())
            token_expected();
          scalars.Add(HP.Name, t.Token, THtAttributeBatch::abReplace);
        }
        if (!t.NextNSToken())
          token_expected();
        if (t.TokenType == jtComma) {
          if (!t.NextNSToken() || t.TokenType == jtObjectEnd)
            json_error("Name/Value expected after comma");
        } else if (t.TokenType != jtObjectEnd) {
          token_expected();
        }
      }
    } catch (...) {
      flush();
      throw;
    }
    flush();
  }
  --HP.Depth;
}

hstring JSONEncode(const hstring& s) {
  std::u16string_view v = s.view();
  size_t i = 0;
  for (; i < v.size(); ++i) {
    char16_t c = v[i];
    if (c == u'"' || c == u'\\' || c == 8 || c == 9 || c == 10 || c == 13)
      break;
  }
  if (i == v.size())
    return s;
  TFastString fs(s.Length() + 16);
  fs.Add(v.substr(0, i));
  for (; i < v.size(); ++i) {
    char16_t c = v[i];
    switch (c) {
    case u'"':
      fs.Add2Char(u'\\', u'"');
      break;
    case u'\\':
      fs.Add2Char(u'\\', u'\\');
      break;
    case 8:
      fs.Add2Char(u'\\', u'b');
      break;
    case 9:
      fs.Add2Char(u'\\', u't');
      break;
    // LF and CR are written as each other's escape: intended, readers of
    // this output depend on it.
    case 10:
      fs.Add2Char(u'\\', u'r');
      break;
    case 13:
      fs.Add2Char(u'\\', u'n');
      break;
    default:
      fs.AddChar(c);
    }
  }
  return fs.GetAsString();
}

hstring THtXMLNode::JSON() const {
  TFastString fs(65535);
  FastJSON(fs);
  return fs.GetAsString();
}

// Comments, directives, CData and text write nothing, and take no separator.
void THtXMLNode::FastJSON(TFastString& FS) const {
  auto writes = [](const THtNode* n) {
    return !n->FTag.empty() && n->TagType != htComment && n->TagType != htDirective && n->TagType != htCData;
  };
  auto is_array = [](const THtNode* n) { return static_cast<const THtXMLNode*>(n)->IsArray; };
  detail::WalkSubtree(
      static_cast<const THtNode*>(this),
      [&](const THtNode* n) {
        if (!writes(n))
          return false;
        const THtNode* p = n->FParent;
        if (n != this && !is_array(p)) {
          FS.AddChar(u'"').Add(JSONEncode(n->FTag)).Add2Char(u'"', u':');
        }
        if (is_array(n)) {
          FS.AddChar(u'[').Add2Char(u'\r', u'\n');
          return true;
        }
        FS.AddChar(u'{').Add2Char(u'\r', u'\n');
        if (n->FAttributes)
          for (const THtAttribute& a : *n->FAttributes) {
            FS.AddChar(u'"').Add(JSONEncode(a.Name)).Add2Char(u'"', u':').AddChar(u'"');
            FS.Add(JSONEncode(a.Value)).Add2Char(u'"', u',');
          }
        return true;
      },
      [&](const THtNode* n) {
        if (!writes(n))
          return;
        if (is_array(n)) {
          if (FS.EndsWith(u",\r\n")) // some child was written
            FS.DeletefromEnd(3);
          FS.AddChar(u']').Add2Char(u'\r', u'\n');
        } else {
          if (FS.LastChar() == u',')
            FS.DeletefromEnd(1);
          FS.AddChar(u'}');
        }
        if (n != this) {
          FS.AddChar(u',');
          if (is_array(n->FParent))
            FS.Add2Char(u'\r', u'\n');
        }
      });
}

} // namespace ht
