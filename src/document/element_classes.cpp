#include "htcore/document/element_classes.h"

#include "htcore/foundation/text_utils.h"

namespace ht {

namespace {

const hstring& ContainerName(const void* Value) {
  return static_cast<const THtElementClassContainer*>(static_cast<const TObject*>(Value))->Name;
}

} // namespace

TElementClasses::TElementClasses()
    : THtObjectDictionary(127, true, ContainerName), DefaultClass(NodeClass<THtmlNode>()) {}

void TElementClasses::Register(const hstring& Name, THtNodeClass AClass) {
  if (Name.empty()) {
    TextClass = AClass;
    return;
  }
  hstring key = Name;
  hLower(key);
  AddObject(new THtElementClassContainer(key, AClass));
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

} // namespace ht
