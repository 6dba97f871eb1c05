// The list and callback walks against the recursion the path language is
// described by, on random trees and paths.
#include "htcore/document/node.h"
#include "htcore/document/xpath.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace ht;

namespace {

bool matches(THtNode* n, const TXPathNode* s) {
  return (s->Kind == xkAsterisk || n->FTag == s->Tag) && (s->Conditions.empty() || n->EvaluateCondition(s));
}

// A match comes before its descendants; a first-only walk ends at its match.
struct ListReference {
  std::vector<THtNode*> found;
  bool first_only;

  bool done() const { return first_only && !found.empty(); }
  void walk(THtNode* n, const TXPathNode* s) {
    if (done())
      return;
    if (s->Kind == xkAttr) {
      if (n->HasAttribute(s->Tag))
        found.push_back(n);
      return;
    }
    if (s->Kind == xkParent || s->Kind == xkCurrent) {
      THtNode* t = s->Kind == xkParent ? n->FParent : s->Processor->Current;
      if (t && s->Next)
        walk(t, s->Next);
      else if (t)
        found.push_back(t);
      return;
    }
    for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling) {
      if (matches(c, s)) {
        if (s->Next) {
          walk(c, s->Next);
        } else {
          found.push_back(c);
          if (first_only)
            return;
        }
      }
      if (s->All)
        walk(c, s);
      if (done())
        return;
    }
  }
};

// Descendants before the node; attribute and current steps give nothing; a
// last parent step gives the node itself.
struct CallbackReference {
  std::vector<THtNode*> found;
  int stop_after;

  bool call(THtNode* n) {
    found.push_back(n);
    return static_cast<int>(found.size()) != stop_after;
  }
  bool walk(THtNode* n, const TXPathNode* s) {
    if (s->Kind == xkAttr || s->Kind == xkCurrent)
      return true;
    if (s->Kind == xkParent) {
      if (!n->FParent)
        return true;
      return s->Next ? walk(n->FParent, s->Next) : call(n);
    }
    for (THtNode* c = n->FirstChild(); c; c = c->FNextSibling) {
      if (s->All && !walk(c, s))
        return false;
      if (matches(c, s) && !(s->Next ? walk(c, s->Next) : call(c)))
        return false;
    }
    return true;
  }
};

class RandomTrees {
public:
  explicit RandomTrees(unsigned seed) : rng(seed) {}

  void fill(THtNode* n, int depth, std::vector<THtNode*>& all) {
    int children = depth >= 5 ? 0 : pick(5);
    for (int i = 0; i < children; ++i) {
      THtNode* c = n->AddChild(NodeClass<THtNode>());
      all.push_back(c);
      if (pick(5) == 0) {
        c->SetContent(pick(2) ? u"t" : u"");
        continue;
      }
      c->SetTag(kTags[pick(3)]);
      if (pick(3) == 0)
        c->SetAttr(u"k", pick(2) ? u"1" : u"2");
      fill(c, depth + 1, all);
    }
  }

  hstring path() {
    static const char16_t* const steps[] = {u"x", u"y", u"z", u"*", u"..", u"text()", u"@k", u"current"};
    static const char16_t* const conditions[] = {u"[@k]", u"[@k='1']", u"[0]",           u"[last()]",
                                                 u"[y]",  u"[not @k]", u"[@k!='2' or z]"};
    std::u16string p = pick(3) == 0 ? u"/" : u"";
    int count = 1 + pick(4);
    for (int i = 0; i < count; ++i) {
      if (i > 0 || pick(2))
        p += i > 0 ? (pick(2) ? u"/" : u"//") : u"/";
      p += steps[pick(8)];
      if (pick(3) == 0)
        p += conditions[pick(7)];
    }
    return hstring(p);
  }

  int pick(int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); }

private:
  static constexpr const char16_t* kTags[] = {u"x", u"y", u"z"};
  std::mt19937 rng;
};

std::string describe(const hstring& path, int tree) {
  return path.toUtf8() + " on tree " + std::to_string(tree);
}

} // namespace

TEST(XPathWalk, ListAndCallbackFormsFollowTheRecursion) {
  RandomTrees r(11);
  for (int tree = 0; tree < 200; ++tree) {
    THtNode root;
    std::vector<THtNode*> all{&root};
    r.fill(&root, 0, all);
    for (int q = 0; q < 40; ++q) {
      hstring path = r.path();
      THtNode* from = all[static_cast<size_t>(r.pick(static_cast<int>(all.size())))];
      THtNode* current = all[static_cast<size_t>(r.pick(static_cast<int>(all.size())))];
      for (bool first_only : {false, true}) {
        TXPathProcessor xp(path);
        xp.Current = current;
        ListReference expected{{}, first_only};
        if (const TXPathNode* step = xp.FirstStep())
          expected.walk(from, step);
        IHtNodeList got = from->XPath(path, first_only, current);
        std::vector<THtNode*> list(got->begin(), got->end());
        EXPECT_EQ(list, expected.found) << describe(path, tree) << (first_only ? " first only" : "");
      }
      int stop_after = r.pick(3) == 0 ? 1 + r.pick(3) : -1;
      TXPathProcessor xp(path);
      CallbackReference expected{{}, stop_after};
      if (const TXPathNode* step = xp.FirstStep())
        expected.walk(xp.Root ? from->Root() : from, step);
      std::vector<THtNode*> calls;
      from->XPath(path, [&](THtNode* n, bool& more) {
        calls.push_back(n);
        more = static_cast<int>(calls.size()) != stop_after;
      });
      EXPECT_EQ(calls, expected.found) << describe(path, tree) << " stop after " << stop_after;
    }
  }
}

// A callback may change the tree behind the walk: a tag text freed and made
// again, perhaps at the same place, must not be taken for the one seen before.
TEST(XPathWalk, CallbackThatRenamesNodes) {
  THtNode root;
  for (int i = 0; i < 6; ++i)
    root.AddChild(NodeClass<THtNode>())->SetTag(hstring(u"item"));
  int calls = 0;
  root.XPath(u"item", [&](THtNode* n, bool&) {
    ++calls;
    n->SetTag(hstring(u"done"));
    if (THtNode* next = n->FNextSibling)
      next->SetTag(hstring(u"itex"));
  });
  EXPECT_EQ(calls, 3);
}
