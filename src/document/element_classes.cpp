#include "htcore/document/element_classes.h"

#include "htcore/foundation/text_utils.h"

namespace ht {

TElementClasses::TElementClasses()
    : THtObjectDictionary(127, true, offsetof(THtElementClassContainer, Name)),
      DefaultClass(NodeClass<THtmlNode>()) {}

void TElementClasses::Register(const hstring& Name, THtNodeClass AClass) {
  if (Name.empty()) {
    TextClass = AClass;
    return;
  }
  hstring key = Name;
  hLower(key);
  AddObject(key, new THtElementClassContainer(key, AClass));
}

THtNodeClass TElementClasses::GetElementClass(const hstring& Name) const {
  if (Name.empty())
    return TextClass ? TextClass : DefaultClass;
  hstring key = Name;
  hLower(key);
  if (auto* c = static_cast<THtElementClassContainer*>(Get(key)))
    return c->NodeClass;
  return UnknownClass ? UnknownClass : DefaultClass;
}

}  // namespace ht
