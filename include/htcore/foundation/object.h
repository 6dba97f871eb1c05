// TObject: the root of classes that owning containers free.
//
// Owning lists and dictionaries hold TObject* and delete what they own, so any
// class stored in them derives from TObject (a virtual destructor is all it adds).
//
//   struct TItem : ht::TObject { ht::hstring Name; };
#pragma once

namespace ht {

class TObject {
public:
  TObject() = default;
  TObject(const TObject&) = default;
  TObject& operator=(const TObject&) = default;
  virtual ~TObject() = default;
};

} // namespace ht
