// TElementClasses: a table from tag name to node class, for roots that decide
// the class of every node of their tree.
//
// The root class overrides GetElementClass and answers from its table; each
// class takes one line to register:
//
//   struct TMyClasses : ht::TElementClasses {
//     TMyClasses() {
//       Register<TMyDiv>(u"div");
//       Register<TMyText>(u"");              // the empty name is the text class
//     }
//   };
//   class TMyDoc : public ht::THtmlNode {
//     HT_NODE_CLASS(TMyDoc)
//   public:
//     ht::THtNodeClass GetElementClass(const ht::hstring& tag, ht::THtNode*) override {
//       static TMyClasses classes;
//       return classes.GetElementClass(tag);
//     }
//   };
#pragma once

#include "htcore/document/html_node.h"
#include "htcore/foundation/string_dictionary.h"

#include <string_view>

namespace ht {

class THtElementClassContainer : public TObject {
public:
  THtElementClassContainer(const hstring& AName, THtNodeClass AClass) : Name(AName), NodeClass(AClass) {}
  hstring Name; // lower case; the key
  THtNodeClass NodeClass;
};

class TElementClasses : public THtObjectDictionary {
public:
  TElementClasses();

  // Registers a class for a name (lower-cased). The empty name sets the text class.
  void Register(const hstring& Name, THtNodeClass AClass);
  template <class T> void Register(std::u16string_view Name) { Register(hstring(Name), NodeClass<T>()); }

  // The empty name gives the text class; a registered name its class; any
  // other name the class for unknown names if set, else the default class.
  THtNodeClass GetElementClass(const hstring& Name) const;

  THtNodeClass TextClass = nullptr;    // null: the default class serves text too
  THtNodeClass UnknownClass = nullptr; // null: the default class serves unknown names
  THtNodeClass DefaultClass;           // THtmlNode unless changed
};

} // namespace ht
