// Stand-in for the name dictionary until the foundation one is available:
// just enough for interning THtStringRec by text.
#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include "htcore/document/html_tokenizer.h"

namespace ht {

class THtObjectList : public TObject {
public:
  explicit THtObjectList(bool AOwnsObjects) : OwnsObjects(AOwnsObjects) {}
  ~THtObjectList() override {
    if (OwnsObjects)
      for (TObject* o : FItems)
        delete o;
  }
  bool OwnsObjects;
  int Count() const { return static_cast<int>(FItems.size()); }

private:
  std::vector<TObject*> FItems;
};

}  // namespace ht
