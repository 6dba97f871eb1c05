// Stand-in for the name dictionary until the foundation one is available:
// just enough for interning THtStringRec by text.
#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include "htcore/document/html_tokenizer.h"

namespace ht {

class THtObjectDictionary {
public:
  explicit THtObjectDictionary(int ACapacity) { FMap.reserve(static_cast<size_t>(ACapacity)); }
  THtObjectDictionary(const THtObjectDictionary&) = delete;
  THtObjectDictionary& operator=(const THtObjectDictionary&) = delete;
  ~THtObjectDictionary() {
    for (auto& kv : FMap)
      delete kv.second;
  }
  THtStringRec* Find(const char16_t* p, int Len) const {
    auto it = FMap.find(std::u16string_view(p, static_cast<size_t>(Len)));
    return it == FMap.end() ? nullptr : it->second;
  }
  // Owns rec; its Value is the key.
  void AddObject(THtStringRec* rec) { FMap.emplace(rec->Value.view(), rec); }

private:
  std::unordered_map<std::u16string_view, THtStringRec*> FMap;
};

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
