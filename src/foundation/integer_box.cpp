// TShaIntegerBox on the shared slot table.
#include "htcore/foundation/integer_box.h"

namespace ht {

static_assert(TShaIntegerBox::UnmixKey(TShaIntegerBox::MixKey(0xDEADBEEFu)) == 0xDEADBEEFu);

TShaIntegerBox::TShaIntegerBox(int ACapacity, bool Mix) : FMix(Mix) { SetCapacity(ACapacity); }

void TShaIntegerBox::Clear(int ACapacity) { ResetTable(detail::HtTableLength(ACapacity, 0), false); }

uint32_t* TShaIntegerBox::Add(uint32_t Key) {
  PrepareAdd();
  const int i = InternalFind(Key);
  if (i >= 0)
    return &FItems[i].Value;
  const uint32_t slot = static_cast<uint32_t>(~i);
  InsertAt(slot, TShaIntegerBoxItem{FLastHash, 0});
  return &FItems[slot].Value;
}

bool TShaIntegerBox::Remove(uint32_t Key) noexcept {
  const int i = ProbeId(HashOf(Key));
  if (i < 0)
    return false;
  RemoveAt(static_cast<uint32_t>(i));
  return true;
}

} // namespace ht
