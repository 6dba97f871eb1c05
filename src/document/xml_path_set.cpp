// THtXMLNode::XPathSet: writes a value at a path and creates what is missing.
//
// The path is cut into steps the way the node query language does it (child
// and `//` descendant steps, `..`, `current`, `@name`, `text()`, `*`, and one
// bracket of conditions per step); only what a write needs is here.
#include "document/node_walk.h"
#include "foundation/quote_scan.h"
#include "htcore/document/xml_node.h"
#include "htcore/foundation/text_utils.h"

#include <charconv>
#include <string_view>
#include <vector>

namespace ht {

namespace {

using sv = std::u16string_view;

enum TStepKind { skTag, skAttr, skAsterisk, skParent, skCurrent };
enum TCondType { ctEQ, ctNotEQ, ctLess, ctLessEQ, ctAboveEQ, ctIndex };
enum TBoolOp { boAnd, boOr, boNot };

struct TOperand {
  hstring text;
  bool str = false;
  bool attr = false;
};

struct TCondition {
  TOperand left, right;
  bool has_right = false;
  TCondType ctype = ctEQ;
  int index = 0;
  TBoolOp op = boAnd;
};

struct TStep {
  TStepKind kind = skTag;
  bool all = false;
  hstring tag;
  std::vector<TCondition> conditions;
};

sv trim(sv s) {
  while (!s.empty() && s.front() <= u' ')
    s.remove_prefix(1);
  while (!s.empty() && s.back() <= u' ')
    s.remove_suffix(1);
  return s;
}

bool starts_with_word(sv s, sv lower_word) {
  if (s.size() < lower_word.size())
    return false;
  for (size_t i = 0; i < lower_word.size(); ++i)
    if (CharLower(s[i]) != lower_word[i])
      return false;
  return true;
}

bool to_int(sv s, int& v) {
  s = trim(s);
  if (s.empty())
    return false;
  std::string a;
  for (char16_t c : s) {
    if (c > 127)
      return false;
    a += static_cast<char>(c);
  }
  auto r = std::from_chars(a.data(), a.data() + a.size(), v);
  return r.ec == std::errc() && r.ptr == a.data() + a.size();
}

// Up to a space or an operator unit outside quotes and brackets.
TOperand read_operand(sv& s) {
  size_t i = detail::TQuoteScanner(detail::kSetterOperandScan).Find(s);
  TOperand o;
  sv t = trim(s.substr(0, i));
  s.remove_prefix(i);
  if (!t.empty() && (t[0] == u'"' || t[0] == u'\'')) {
    o.str = true;
    t = t.size() >= 2 ? t.substr(1, t.size() - 2) : sv();
  } else if (!t.empty() && t[0] == u'@') {
    o.attr = true;
    t.remove_prefix(1);
  }
  o.text = hstring(t);
  return o;
}

std::vector<TCondition> parse_conditions(sv s) {
  std::vector<TCondition> list;
  if (trim(s).empty())
    return list;
  int index;
  if (s[0] >= u'0' && s[0] <= u'9' && to_int(s, index)) {
    list.emplace_back().ctype = ctIndex;
    list.back().index = index;
    return list;
  }
  if (trim(s).size() == 6 && starts_with_word(trim(s), u"last()")) {
    list.emplace_back().ctype = ctIndex;
    list.back().index = -1;
    return list;
  }
  auto skip_blanks = [&] {
    while (!s.empty() && s.front() <= u' ')
      s.remove_prefix(1);
  };
  while (true) {
    skip_blanks();
    if (s.empty())
      break;
    TCondition c;
    if (starts_with_word(s, u"and ")) {
      s.remove_prefix(4);
      skip_blanks();
      if (starts_with_word(s, u"not ")) {
        s.remove_prefix(4);
        c.op = boNot;
      }
    } else if (starts_with_word(s, u"or ")) {
      s.remove_prefix(3);
      c.op = boOr;
    } else if (starts_with_word(s, u"not ")) {
      s.remove_prefix(4);
      c.op = boNot;
    }
    skip_blanks();
    size_t before = s.size();
    c.left = read_operand(s);
    skip_blanks();
    if (!s.empty()) {
      bool op = true;
      if (s[0] == u'=') {
        c.ctype = ctEQ;
        s.remove_prefix(1);
      } else if (s[0] == u'!' && s.size() > 1) {
        c.ctype = ctNotEQ;
        s.remove_prefix(2);
      } else if (s[0] == u'<' || s[0] == u'>') {
        bool eq = s.size() > 1 && s[1] == u'=';
        // A lone '>' reads as less-than: the node query language does the same.
        c.ctype = eq ? (s[0] == u'<' ? ctLessEQ : ctAboveEQ) : ctLess;
        s.remove_prefix(eq ? 2 : 1);
      } else {
        op = false;
      }
      if (op) {
        skip_blanks();
        c.right = read_operand(s);
        c.has_right = true;
      }
    }
    list.push_back(c);
    if (s.size() == before) // nothing consumed: drop the rest
      break;
  }
  return list;
}

std::vector<TStep> compile(sv p) {
  std::vector<TStep> steps;
  if (!p.empty() && p[0] == u'/') {
    p.remove_prefix(1);
    if (p.starts_with(u"./"))
      p.remove_prefix(2);
  }
  while (!p.empty()) {
    TStep st;
    if (p[0] == u'/') {
      st.all = true;
      p.remove_prefix(1);
    }
    size_t bracket;
    size_t i = detail::TQuoteScanner(detail::kSetterStepScan).Find(p, 0, &bracket);
    sv text = p.substr(0, i);
    sv name = text.substr(0, bracket == sv::npos ? text.size() : bracket);
    if (bracket != sv::npos) {
      sv cond = text.substr(bracket + 1);
      if (!cond.empty() && cond.back() == u']')
        cond.remove_suffix(1);
      st.conditions = parse_conditions(cond);
    }
    if (name == u"*") {
      st.kind = skAsterisk;
    } else if (name == u"..") {
      st.kind = skParent;
    } else if (name.size() == 7 && starts_with_word(name, u"current")) {
      st.kind = skCurrent;
    } else if (name == u"text()") {
      st.kind = skTag;
    } else if (!name.empty() && name[0] == u'@') {
      st.kind = skAttr;
      st.tag = hstring(name.substr(1));
    } else {
      st.tag = hstring(name);
    }
    steps.push_back(std::move(st));
    p.remove_prefix(i);
    if (!p.empty())
      p.remove_prefix(1); // the '/' behind the step
  }
  return steps;
}

class TPathSetter {
public:
  TPathSetter(THtXMLNode* current, const hstring& value, std::vector<TStep> steps)
      : FCurrent(current), FValue(value), FSteps(std::move(steps)) {}

  void Run() {
    if (!FSteps.empty())
      Set(FCurrent, 0);
  }

private:
  hstring OperandValue(THtXMLNode* n, const TOperand& o) const {
    if (o.str)
      return o.text;
    if (o.attr)
      return n->GetAttribute(o.text);
    if (o.text == u"text()")
      return n->TextContent();
    THtXMLNode* c = n->NodebyName(o.text);
    return c ? c->TextContent() : hstring();
  }

  bool Evaluate(THtXMLNode* n, const std::vector<TCondition>& conditions) const {
    bool result = true;
    for (const TCondition& c : conditions) {
      bool b;
      if (c.ctype == ctIndex) {
        if (!n->FParent)
          b = false;
        else if (c.index == -1)
          b = n->FParent->LastChildTag() == n;
        else
          b = n->ChildIndex() == c.index;
      } else if (c.left.str || c.has_right) {
        hstring l = OperandValue(n, c.left);
        if (!c.has_right) {
          b = !l.empty();
        } else {
          hstring r = OperandValue(n, c.right);
          int a = 0, z = 0;
          switch (c.ctype) {
          case ctEQ:
            b = l == r;
            break;
          case ctNotEQ:
            b = l != r;
            break;
          case ctLess:
            b = to_int(l.view(), a) && to_int(r.view(), z) && a < z;
            break;
          case ctLessEQ:
            b = to_int(l.view(), a) && to_int(r.view(), z) && a <= z;
            break;
          case ctAboveEQ:
            b = to_int(l.view(), a) && to_int(r.view(), z) && a >= z;
            break;
          default:
            b = false;
          }
        }
      } else if (c.left.attr) {
        b = n->HasAttribute(c.left.text);
      } else if (c.left.text == u"text()") {
        b = !n->TextContent().empty();
      } else {
        b = n->NodebyName(c.left.text) != nullptr;
      }
      switch (c.op) {
      case boAnd:
        result = result && b;
        break;
      case boOr:
        result = result || b;
        break;
      case boNot:
        result = result && !b;
        break;
      }
    }
    return result;
  }

  bool Matches(const TStep& st, THtNode* n) const {
    if (st.kind == skTag && n->FTag != st.tag)
      return false;
    return st.conditions.empty() || Evaluate(static_cast<THtXMLNode*>(n), st.conditions);
  }

  void Finish(THtXMLNode* n, size_t i) {
    if (i + 1 == FSteps.size())
      n->SetValue(FValue);
    else
      Set(n, i + 1);
  }

  // True when the step matched (or created) a node.
  bool Set(THtXMLNode* n, size_t i) {
    const TStep& st = FSteps[i];
    bool last = i + 1 == FSteps.size();
    switch (st.kind) {
    case skAttr:
      n->SetAttribute(st.tag, FValue);
      return true;
    case skParent:
    case skCurrent: {
      auto* target = st.kind == skParent ? static_cast<THtXMLNode*>(n->FParent) : FCurrent;
      if (!target)
        return false;
      Finish(target, i);
      return true;
    }
    default:
      break;
    }
    bool matched = false;
    auto visit = [&](THtNode* c) { // true ends the walk
      if (!Matches(st, c))
        return false;
      matched = true;
      Finish(static_cast<THtXMLNode*>(c), i);
      return last && !st.all;
    };
    if (st.all) {
      // Descendants come before their ancestors; no recursion, any depth.
      std::vector<THtNode*> order;
      for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling)
        detail::WalkSubtree(
            c, [](THtNode*) { return true; }, [&](THtNode* d) { order.push_back(d); });
      for (THtNode* d : order)
        visit(d);
    } else {
      for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling)
        if (visit(c))
          break;
    }
    if (!matched && st.conditions.empty() && st.kind == skTag) {
      Finish(n->Add(st.tag), i);
      matched = true;
    }
    return matched;
  }

  THtXMLNode* FCurrent;
  hstring FValue;
  std::vector<TStep> FSteps;
};

} // namespace

void THtXMLNode::XPathSet(const hstring& APath, const hstring& AValue) {
  TPathSetter(this, AValue, compile(APath.view())).Run();
}

} // namespace ht
